// The reader of the data files: a case that no test takes, or that cannot be read, must not pass for a good one.
#include "rows.h"

#include <gtest/gtest-spi.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace karil_test;

namespace {

// Sections that rowsOf() is asked for.
[[maybe_unused]] const bool areAsked = addSection("Samples", "EverySetting") && addSection("Samples", "Oracle") &&
                                       addSection("Samples", "Crl") && addSection("Samples", "Request") &&
                                       addSection("Samples", "OcspRequest") && addSection("Samples", "OcspResponse");

TEST(Rows, EveryFileIsWholeAndEverySectionHasItsTest) {
    for (const auto &entry : std::filesystem::directory_iterator(KARIL_VECTORS)) {
        std::ifstream stream(entry.path());
        EXPECT_EQ(faultOf(entry.path().stem().string(), stream), "");
    }
}

TEST(Rows, Faults) {
    for (const char *file :
         {"", "# no section\n", "[Octets] in | out\n", "[Octets in | out\na | b\n", "a | b\n", "[Octets] in | out\na\n",
          "[Octets] in | out\na | b | c\n", "[Octets] in | in\na | b\n", "[Octets] in\na\n[Octets] in\nb\n",
          "[Nobody] in | out\na | b\n", "$A 41\n[Octets] in\na\n", "$A = 4\n[Octets] in\na\n"}) {
        std::istringstream stream(file);
        EXPECT_NE(faultOf("Rows", stream), "") << file;
    }
}

// Notations of the same octets, or of none.
ROWS(Rows, Octets) {
    if (row("octets") != "-") {
        EXPECT_EQ(toHex(row.octets("text")), toHex(hex(row("octets"))));
        return;
    }
    const Row copy = {"copy", row.fields, row.names};
    testing::TestPartResultArray failures;
    const testing::ScopedFakeTestPartResultReporter reporter(&failures);
    copy.octets("text");
    copy.number("text");
    EXPECT_EQ(failures.size(), 2);
}

} // namespace
