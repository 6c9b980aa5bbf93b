// Cases in data files. tests/vectors/FAMILY.txt holds a section for each test that goes by rows:
//
//     $Sha1 = 06{2A864886F70D010105}          octets that further rows may name
//     [Test] name | element | status          the test's name, then its columns; "name" only tells the reader
//     empty | 30 00 | 0                       a case
//
// Octets are hex digits, "characters", 30{ an element's content }, (AB)*3 for AB AB AB, and $Names.
#pragma once

#include "testkit.h"

#include <iosfwd>
#include <map>

namespace karil_test {

// One case. A column that the section lacks and a field that cannot be read throw.
struct Row {
    std::string place; // file and line, for messages
    std::map<std::string, std::string, std::less<>> fields;
    std::shared_ptr<std::map<std::string, Octets, std::less<>>> names;

    const std::string &operator()(std::string_view column) const;
    Octets octets(std::string_view column) const { return parse((*this)(column)); }
    // The octets as toHex() writes them. What starts with a small letter or "-" is an answer in words and stays.
    std::string hex(std::string_view column) const;
    template <class T = int32_t> T number(std::string_view column) const { return static_cast<T>(wide(column)); }
    // The parts between commas; "5 = 80, 7 = 30 00" as pairs.
    std::vector<std::string> list(std::string_view column) const;
    std::vector<std::pair<std::string, Octets>> settings(std::string_view column) const;
    Octets parse(std::string_view octets) const;
    int64_t wide(std::string_view column) const;
};

// The cases of a section.
std::vector<Row> rowsOf(const std::string &family, const std::string &section);
// Runs the test's body on each case, under failing allocations if `how` is given.
void runRows(const std::string &family, const std::string &section, void (*body)(const Row &), const Sweep *how);
bool addSection(const char *family, const char *section);
// Throws if a file cannot be taken as it stands, or has a section that no test takes.
void checkFile(const std::string &family, std::istream &stream);

// Takes the steps of a column on a context, "id=octets" or "int id=number"; all but the last must succeed. The status
// of the last.
template <class Ctx> int32_t takeAll(Ctx &ctx, const Row &row, std::string_view column) {
    int32_t status = KACERT_Ok;
    for (const std::string &step : row.list(column)) {
        EXPECT_EQ(status, KACERT_Ok) << "before " << step;
        const std::string value = step.substr(step.find('=') + 1);
        status = step.rfind("int ", 0) == 0
                     ? TRIED(Family<Ctx>::setInt(&ctx, std::stoi(step.substr(4)), std::stoi(value)))
                     : set(ctx, std::stoi(step), row.parse(value));
    }
    return status;
}

#define KIT_ROWS(FAMILY, NAME, HOW)                                                                                    \
    static void FAMILY##NAME(const karil_test::Row &row);                                                              \
    [[maybe_unused]] static const bool FAMILY##NAME##Added = karil_test::addSection(#FAMILY, #NAME);                   \
    TEST(FAMILY, NAME) {                                                                                               \
        karil_test::runRows(#FAMILY, #NAME, FAMILY##NAME, HOW);                                                        \
    }                                                                                                                  \
    static void FAMILY##NAME(const karil_test::Row &row)

// A test whose body, with `row` in it, is run on every case of its section.
#define ROWS(FAMILY, NAME) KIT_ROWS(FAMILY, NAME, nullptr)
// The same under failing allocations; what follows is the initializer of a Sweep.
#define SWEPT_ROWS(FAMILY, NAME, ...)                                                                                  \
    static const karil_test::Sweep FAMILY##NAME##Sweep = {__VA_ARGS__};                                                \
    KIT_ROWS(FAMILY, NAME, &FAMILY##NAME##Sweep)

} // namespace karil_test
