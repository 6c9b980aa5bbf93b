#include "printer.h"

#include "failure.h"
#include "text.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace tool {
namespace {

constexpr std::size_t Chunk = 65536;

bool wantsColours() {
    const char *refused = std::getenv("NO_COLOR");
    const char *terminal = std::getenv("TERM");
    const bool isDumb = terminal == nullptr || std::strcmp(terminal, "dumb") == 0;
    return isatty(STDOUT_FILENO) == 1 && (refused == nullptr || *refused == '\0') && !isDumb;
}

std::string textOf(const Value &value) {
    if (const auto *text = std::get_if<std::string>(&value))
        return escaped(*text);
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return std::to_string(*number);
    if (const auto *flag = std::get_if<bool>(&value))
        return *flag ? "yes" : "no";
    if (const auto *identifier = std::get_if<Identifier>(&value)) {
        const std::string name = oidName(identifier->oid);
        const std::string digits = dotted(identifier->oid);
        return name == digits ? digits : name + " (" + digits + ")";
    }
    return timeText(std::get<Moment>(value).seconds);
}

std::string jsonOf(const Value &value) {
    if (const auto *text = std::get_if<std::string>(&value))
        return jsonString(*text);
    if (const auto *number = std::get_if<std::int64_t>(&value))
        return std::to_string(*number);
    if (const auto *flag = std::get_if<bool>(&value))
        return *flag ? "true" : "false";
    if (const auto *identifier = std::get_if<Identifier>(&value))
        return jsonString(oidName(identifier->oid));
    return "\"" + timeIso(std::get<Moment>(value).seconds) + "\"";
}

// "SHA-1 fingerprint" is "sha1Fingerprint".
std::string keyOf(std::string_view label) {
    std::string key;
    bool isFirstWord = true;
    bool isStart = false;
    for (const char character : label) {
        if (character == ' ' || character == '-') {
            isFirstWord = isFirstWord && character == '-';
            isStart = character == ' ';
            continue;
        }
        const auto octet = static_cast<unsigned char>(character);
        key += static_cast<char>(isStart ? std::toupper(octet) : isFirstWord ? std::tolower(octet) : octet);
        isStart = false;
    }
    return jsonString(key) + ": ";
}

} // namespace

Printer::Printer(Form chosen) : form(chosen), colours(chosen == Form::Text && wantsColours()) {
}

Printer::~Printer() {
    if (!pending.empty())
        std::fwrite(pending.data(), 1, pending.size(), stdout);
    std::fflush(stdout);
}

void Printer::flush() {
    const bool written = std::fwrite(pending.data(), 1, pending.size(), stdout) == pending.size();
    pending.clear();
    if (!written || std::fflush(stdout) != 0)
        throw Failure{Exit::Unreadable, std::string("standard output cannot be written: ") + std::strerror(errno)};
}

// What stands before a member: in JSON the comma, the indentation and the key.
void Printer::begin(std::string_view label) {
    if (pending.size() >= Chunk)
        flush();
    if (levels.empty())
        return;
    Open &level = levels.back();
    if (form == Form::Json) {
        pending += level.hasMembers ? ",\n" : "\n";
        pending.append(levels.size() * 2, ' ');
        if (!level.isList)
            pending += keyOf(label);
    }
    level.hasMembers = true;
}

void Printer::textLine(std::string_view label, std::string_view value) {
    if (!levels.empty()) {
        Open &level = levels.back();
        const int dash = level.newItem ? 2 : 0;
        pending.append(static_cast<std::size_t>(level.indent - dash), ' ');
        if (level.newItem)
            pending += "- ";
        level.newItem = false;
    }
    if (!label.empty()) {
        if (colours)
            pending += "\033[36m";
        pending += escaped(label);
        pending += colours ? "\033[0m:" : ":";
        if (!value.empty())
            pending += ' ';
    }
    pending += value;
    pending += '\n';
}

Printer::Level Printer::open(std::string_view label, char bracket) {
    begin(label);
    const bool isOutermost = levels.empty();
    int indent = 0;
    if (form == Form::Json)
        pending += bracket;
    else if (!isOutermost) {
        textLine(label, "");
        indent = levels.back().indent + 2;
    }
    levels.push_back({bracket == '[', false, indent, false});
    return Level(*this);
}

Printer::Level Printer::object(std::string_view label) {
    return open(label, '{');
}

Printer::Level Printer::list(std::string_view label) {
    return open(label, '[');
}

Printer::Level Printer::item() {
    const Open parent = levels.back();
    begin("");
    const bool isOutermost = levels.size() == 1;
    if (form == Form::Json)
        pending += '{';
    else if (isOutermost && parent.hasMembers)
        pending += '\n';
    levels.push_back({false, false, isOutermost ? 0 : parent.indent + 2, !isOutermost});
    return Level(*this);
}

void Printer::close() {
    const Open level = levels.back();
    levels.pop_back();
    if (form == Form::Text)
        return;
    if (level.hasMembers) {
        pending += '\n';
        pending.append(levels.size() * 2, ' ');
    }
    pending += level.isList ? ']' : '}';
    if (levels.empty())
        pending += '\n';
}

void Printer::field(std::string_view label, const Value &value) {
    begin(label);
    if (form == Form::Json)
        pending += jsonOf(value);
    else
        textLine(label, textOf(value));
}

void Printer::words(std::string_view label, const std::vector<std::string> &values) {
    begin(label);
    std::string line;
    for (const std::string &value : values) {
        if (!line.empty())
            line += ", ";
        line += form == Form::Json ? jsonString(value) : escaped(value);
    }
    if (form == Form::Json)
        pending += "[" + line + "]";
    else
        textLine(label, line);
}

void Printer::row(std::initializer_list<std::pair<std::string_view, Value>> cells) {
    begin("");
    std::string line;
    for (const auto &[label, value] : cells) {
        if (form == Form::Json)
            line += (line.empty() ? "" : ", ") + keyOf(label) + jsonOf(value);
        else
            line += (line.empty() ? "" : "  ") + textOf(value);
    }
    if (form == Form::Json)
        pending += "{" + line + "}";
    else
        textLine("", line);
}

void Printer::pair(std::pair<std::string_view, std::string> name, std::pair<std::string_view, std::string> value) {
    if (form == Form::Json) {
        row({{name.first, name.second}, {value.first, value.second}});
        return;
    }
    begin("");
    textLine(name.second, escaped(value.second));
}

} // namespace tool
