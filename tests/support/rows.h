// Cases in data files. tests/vectors/FAMILY.txt holds a section for each test that goes by rows:
//
//     $Sha1 = 06{2A864886F70D010105}          octets that further rows may name
//     [Test] name | element | status          the test's name, then its columns; "name" only tells the reader
//     empty | 30 00 | 0                       a case; short ones may share a line, with " ; " between them
//
// Octets are hex digits, "characters", 30{ an element's content }, (AB)*3 for AB AB AB, and $Names.
#pragma once

#include "support.h"

#include <gtest/gtest.h>

#include <iosfwd>
#include <map>
#include <type_traits>
#include <utility>

namespace karil_test {

// One case. A column that the section lacks and a field that cannot be read are failures of the test.
class Row {
public:
    const std::string &operator()(std::string_view column) const;
    Octets octets(std::string_view column) const;
    // The octets as toHex() writes them. What starts with a small letter or "-" is an answer in words and stays.
    std::string hex(std::string_view column) const;
    template <class T = int32_t> T number(std::string_view column) const { return static_cast<T>(wide(column)); }
    // "5 = 80, 7 = 30 00" in order; what has no "=" has no octets.
    std::vector<std::pair<std::string, Octets>> settings(std::string_view column) const;
    // The parts between commas.
    std::vector<std::string> list(std::string_view column) const;
    Octets parse(std::string_view octets) const;

    std::string place; // file and line, for messages
    std::map<std::string, std::string, std::less<>> fields;
    std::shared_ptr<std::map<std::string, Octets, std::less<>>> names;
    mutable std::map<std::string, bool, std::less<>> read;

private:
    int64_t wide(std::string_view column) const;
};

// The cases of a section; none, and a failure, where the file cannot be taken as it stands.
std::vector<Row> rowsOf(const std::string &family, const std::string &section);
// Runs the test's body on each case. A column that no case looked at is a failure.
void runRows(const std::string &family, const std::string &section, void (*body)(const Row &));
bool addSection(const char *family, const char *section);
// What is wrong with a family's file, or nothing. Sections that no test takes are wrong, too.
std::string faultOf(const std::string &family, std::istream &stream);

// A test whose body, with `row` in it, is run on every case of its section.
#define ROWS(FAMILY, NAME)                                                                                             \
    static void FAMILY##NAME(const karil_test::Row &row);                                                              \
    [[maybe_unused]] static const bool FAMILY##NAME##Added = karil_test::addSection(#FAMILY, #NAME);                   \
    TEST(FAMILY, NAME) { karil_test::runRows(#FAMILY, #NAME, FAMILY##NAME); }                                          \
    static void FAMILY##NAME(const karil_test::Row &row)

} // namespace karil_test
