#include "rows.h"

#include <cctype>
#include <fstream>
#include <set>
#include <stdexcept>

namespace karil_test {

namespace {

using Names = std::map<std::string, Octets, std::less<>>;

void demand(bool holds, const std::string &what) {
    if (!holds)
        throw std::invalid_argument(what);
}

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

// Octets in the notation of rows.h.
struct OctetText {
    std::string_view rest;
    const Names &names;

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
        while (peek() != end)
            one(all);
        if (end != '\0')
            take(end);
        return all;
    }
    void one(Octets &all) {
        if (take('"')) {
            const size_t end = rest.find('"');
            demand(end != rest.npos, "a quote that stays open");
            all = cat({all, text(takeFirst(end))});
            takeFirst(1);
        } else if (take('(')) {
            const Octets unit = sequence(')');
            demand(take('*'), "a group without a count");
            for (int i = std::stoi(std::string(takeName())); i > 0; --i)
                all = cat({all, unit});
        } else if (take('$')) {
            const auto named = names.find(takeName());
            demand(named != names.end(), "a name that nothing defines");
            all = cat({all, named->second});
        } else if (!all.empty() && take('{')) {
            const uint8_t tag = all.back();
            all.pop_back();
            all = cat({all, tlv(tag, sequence('}'))});
        } else {
            const std::string pair(takeFirst(2));
            demand(pair.size() == 2 && pair.find_first_not_of("0123456789ABCDEF") == pair.npos, "no octet: " + pair);
            all.push_back(static_cast<uint8_t>(std::stoi(pair, nullptr, 16)));
        }
    }
};

struct File {
    std::map<std::string, std::vector<Row>> sections = {};
    std::shared_ptr<Names> names = std::make_shared<Names>();
    std::vector<std::string> columns = {};
    std::vector<Row> *section = nullptr;

    void take(const std::string &line, const std::string &place) {
        if (line[0] == '[') {
            const size_t end = line.find(']');
            demand(end != line.npos, place + "no end of the section's name");
            columns = split(line.substr(end + 1), '|');
            demand(std::set<std::string>(columns.begin(), columns.end()).size() == columns.size(), place + "columns");
            const auto [added, isNew] = sections.try_emplace(line.substr(1, end - 1));
            demand(isNew, place + "the section is there already");
            section = &added->second;
        } else if (line[0] == '$' && line.find('=') < line.find('|')) {
            const size_t end = line.find('=');
            OctetText octets = {std::string_view(line).substr(end + 1), *names};
            demand(names->emplace(trimmed(line.substr(1, end - 1)), octets.sequence('\0')).second,
                   place + "named twice");
        } else {
            for (const std::string &one : split(line, ';')) {
                const std::vector<std::string> fields = split(one, '|');
                demand(section != nullptr && fields.size() == columns.size(), place + "other columns than its section");
                Row &row = section->emplace_back(Row{place + one, {}, names});
                for (size_t i = 0; i < fields.size(); ++i)
                    row.fields[columns[i]] = fields[i];
            }
        }
    }
};

File readFile(const std::string &family, std::istream &stream) {
    File file;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        const std::string place = family + ".txt:" + std::to_string(++number) + ' ';
        if (!line.empty() && line[0] != '#')
            file.take(line, place);
    }
    demand(!file.sections.empty(), family + ".txt is missing or empty");
    for (const auto &[name, rows] : file.sections)
        demand(!rows.empty(), family + ".txt: no case in " + name);
    return file;
}

std::set<std::pair<std::string, std::string>> &registered() {
    static std::set<std::pair<std::string, std::string>> all;
    return all;
}

} // namespace

const std::string &Row::operator()(std::string_view column) const {
    const auto found = fields.find(column);
    demand(found != fields.end(), place + ": there is no column " + std::string(column));
    return found->second;
}

Octets Row::parse(std::string_view octets) const {
    return OctetText{octets, *names}.sequence('\0');
}

std::string Row::hex(std::string_view column) const {
    const std::string &field = (*this)(column);
    const bool isInWords = !field.empty() && (field[0] == '-' || (field[0] >= 'a' && field[0] <= 'z'));
    return isInWords ? field : toHex(parse(field));
}

int64_t Row::wide(std::string_view column) const {
    const std::string &field = (*this)(column);
    size_t end = 0;
    const int64_t value = std::stoll(field, &end, 0);
    demand(end == field.size(), place + ": no number in " + std::string(column));
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
    return readFile(family, stream).sections.at(section);
}

void runRows(const std::string &family, const std::string &section, void (*body)(const Row &), const Sweep *how) {
    bool isFailed = how == nullptr;
    for (const Row &row : rowsOf(family, section)) {
        SCOPED_TRACE(row.place);
        if (how != nullptr)
            isFailed = sweep([&] { body(row); }, *how) || isFailed;
        else
            body(row);
    }
    EXPECT_TRUE(isFailed) << "no case allocates";
}

bool addSection(const char *family, const char *section) {
    return registered().emplace(family, section).second;
}

void checkFile(const std::string &family, std::istream &stream) {
    for (const auto &[section, rows] : readFile(family, stream).sections)
        demand(registered().count({family, section}) == 1, family + ".txt: nothing reads " + section);
}

} // namespace karil_test
