#include "rows.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>

namespace karil_test {

namespace {

using Names = std::map<std::string, Octets, std::less<>>;

std::string trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(' ');
    return std::string(first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1));
}

// The parts between separators that stand outside of quotes and braces.
std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts(1);
    bool isQuoted = false;
    int depth = 0;
    for (const char c : text) {
        isQuoted ^= c == '"';
        if (!isQuoted)
            depth += (c == '{') - (c == '}');
        if (c == separator && !isQuoted && depth == 0)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    for (std::string &part : parts)
        part = trimmed(part);
    return parts;
}

// Octets in the notation of rows.h. `isGood` goes down at the first fault.
struct OctetText {
    std::string_view rest;
    const Names &names;
    bool isGood = true;

    char peek() {
        rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
        return rest.empty() ? '\0' : rest[0];
    }
    bool take(char wanted) {
        if (peek() != wanted)
            return false;
        rest.remove_prefix(1);
        return true;
    }
    std::string_view takeFirst(size_t size) {
        const std::string_view taken = rest.substr(0, size);
        rest.remove_prefix(taken.size());
        return taken;
    }
    std::string_view takeName() {
        size_t size = 0;
        while (size < rest.size() && std::isalnum(static_cast<unsigned char>(rest[size])) != 0)
            ++size;
        return takeFirst(size);
    }
    Octets sequence(char end) {
        Octets all;
        while (isGood && peek() != end)
            one(all);
        if (end != '\0')
            isGood = isGood && take(end);
        return all;
    }
    void one(Octets &all) {
        if (take('"')) {
            const size_t end = rest.find('"');
            isGood = end != rest.npos;
            all = cat({all, text(takeFirst(end))});
            takeFirst(1);
        } else if (take('(')) {
            const Octets unit = sequence(')');
            isGood = isGood && take('*') && isNumber(peek());
            for (int i = isGood ? std::stoi(std::string(takeName())) : 0; i > 0; --i)
                all = cat({all, unit});
        } else if (take('$')) {
            const auto named = names.find(takeName());
            isGood = named != names.end();
            if (isGood)
                all = cat({all, named->second});
        } else if (!all.empty() && take('{')) {
            const uint8_t tag = all.back();
            all.pop_back();
            all = cat({all, tlv(tag, sequence('}'))});
        } else {
            const std::string pair(takeFirst(2));
            isGood = pair.size() == 2 && pair.find_first_not_of("0123456789ABCDEF") == pair.npos;
            if (isGood)
                all.push_back(static_cast<uint8_t>(std::stoi(pair, nullptr, 16)));
        }
    }
    static bool isNumber(char c) { return c >= '0' && c <= '9'; }
};

bool parseOctets(std::string_view octets, const Names &names, Octets &out) {
    OctetText text{octets, names};
    out = text.sequence('\0');
    return text.isGood;
}

struct File {
    std::map<std::string, std::vector<Row>> sections;
    std::shared_ptr<Names> names = std::make_shared<Names>();
    std::string fault;
    std::string section;
    std::vector<std::string> columns;

    bool addHeader(const std::string &line) {
        const size_t end = line.find(']');
        if (end == line.npos)
            return false;
        section = line.substr(1, end - 1);
        columns = split(line.substr(end + 1), '|');
        const std::set<std::string> different(columns.begin(), columns.end());
        return different.count("") == 0 && different.size() == columns.size() && sections.try_emplace(section).second;
    }
    bool addName(const std::string &line) {
        const size_t end = line.find('=');
        Octets octets;
        return parseOctets(std::string_view(line).substr(end + 1), *names, octets) &&
               names->emplace(trimmed(line.substr(1, end - 1)), octets).second;
    }
    bool addCases(const std::string &line, const std::string &place) {
        for (const std::string &one : split(line, ';')) {
            const std::vector<std::string> fields = split(one, '|');
            if (section.empty() || fields.size() != columns.size())
                return false;
            Row row = {place + one, {}, names};
            for (size_t i = 0; i < fields.size(); ++i)
                row.fields[columns[i]] = fields[i];
            sections[section].push_back(row);
        }
        return true;
    }
};

File readFile(const std::string &family, std::istream &stream) {
    File file;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        const std::string place = family + ".txt:" + std::to_string(++number) + ' ';
        if (line.empty() || line[0] == '#')
            continue;
        const bool isName = line[0] == '$' && line.find('=') < line.find('|');
        const bool isGood = line[0] == '[' ? file.addHeader(line)
                            : isName       ? file.addName(line)
                                           : file.addCases(line, place);
        if (!isGood)
            file.fault += place + "cannot be taken: " + line + '\n';
    }
    if (file.sections.empty())
        file.fault += family + ".txt is missing or empty\n";
    for (const auto &[name, rows] : file.sections)
        if (rows.empty())
            file.fault += family + ".txt: no case in " + name + '\n';
    return file;
}

std::set<std::pair<std::string, std::string>> &registered() {
    static std::set<std::pair<std::string, std::string>> all;
    return all;
}

} // namespace

const std::string &Row::operator()(std::string_view column) const {
    static const std::string none;
    const auto found = fields.find(column);
    if (found == fields.end()) {
        ADD_FAILURE() << place << ": there is no column " << column;
        return none;
    }
    read[found->first] = true;
    return found->second;
}

Octets Row::parse(std::string_view octets) const {
    Octets out;
    if (!parseOctets(octets, *names, out))
        ADD_FAILURE() << place << ": no octets: " << octets;
    return out;
}

std::string Row::hex(std::string_view column) const {
    const std::string &field = (*this)(column);
    const bool isInWords = !field.empty() && (field[0] == '-' || (field[0] >= 'a' && field[0] <= 'z'));
    return isInWords ? field : toHex(parse(field));
}

int64_t Row::wide(std::string_view column) const {
    const std::string &field = (*this)(column);
    size_t end = 0;
    const bool isNumber = !field.empty() && field.find_first_not_of("-x0123456789ABCDEF") == field.npos;
    const int64_t value = isNumber ? std::stoll(field, &end, 0) : 0;
    if (end != field.size() || !isNumber)
        ADD_FAILURE() << place << ": no number in " << column;
    return value;
}

std::vector<std::string> Row::list(std::string_view column) const {
    const std::string &field = (*this)(column);
    return field.empty() ? std::vector<std::string>() : split(field, ',');
}

std::vector<std::pair<std::string, Octets>> Row::settings(std::string_view column) const {
    std::vector<std::pair<std::string, Octets>> all;
    for (const std::string &part : list(column)) {
        const size_t end = std::min(part.find('='), part.size());
        all.emplace_back(trimmed(part.substr(0, end)),
                         parse(std::string_view(part).substr(std::min(end + 1, part.size()))));
    }
    return all;
}

std::vector<Row> rowsOf(const std::string &family, const std::string &section) {
    std::ifstream stream(std::string(KARIL_VECTORS) + "/" + family + ".txt");
    File file = readFile(family, stream);
    if (!file.fault.empty() || file.sections.count(section) == 0) {
        ADD_FAILURE() << family << ".txt, section " << section << '\n' << file.fault;
        return {};
    }
    return file.sections[section];
}

void runRows(const std::string &family, const std::string &section, void (*body)(const Row &), const Sweep *how) {
    std::set<std::string> unread;
    std::set<std::string> read = {"name"};
    bool isFailed = how == nullptr;
    for (const Row &row : rowsOf(family, section)) {
        SCOPED_TRACE(row.place);
        if (how != nullptr)
            isFailed = sweep([&] { body(row); }, *how) || isFailed;
        else
            body(row);
        for (const auto &[column, field] : row.fields)
            unread.insert(column);
        for (const auto &[column, isRead] : row.read)
            read.insert(column);
    }
    EXPECT_TRUE(isFailed) << "no case allocates";
    for (const std::string &column : unread)
        EXPECT_EQ(read.count(column), 1u) << family << ".txt: " << section << " never looks at " << column;
}

bool addSection(const char *family, const char *section) {
    return registered().emplace(family, section).second;
}

std::string faultOf(const std::string &family, std::istream &stream) {
    const File file = readFile(family, stream);
    std::string fault = file.fault;
    for (const auto &[section, rows] : file.sections)
        if (registered().count({family, section}) == 0)
            fault += family + ".txt: nothing reads " + section + '\n';
    return fault;
}

} // namespace karil_test
