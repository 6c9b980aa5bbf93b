// The reader of the data files: a case that no test takes, or that cannot be read, must not pass for a good one.
#include "der.h"
#include "rows.h"

#include <gtest/gtest-spi.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace karil_test {
namespace {

TEST(Rows, EveryFileIsWholeAndEverySectionHasItsTest) {
    size_t families = 0;
    for (const auto &entry : std::filesystem::directory_iterator(KARIL_VECTORS)) {
        std::ifstream stream(entry.path());
        EXPECT_EQ(faultOf(entry.path().stem().string(), stream), "");
        ++families;
    }
    EXPECT_GT(families, 0u);
}

TEST(Rows, Faults) {
    for (const char *file :
         {"", "# no section\n", "[Octets] in | out\n", "[Octets in | out\na | b\n", "a | b\n", "[Octets] in | out\na\n",
          "[Octets] in | out\na | b | c\n", "[Octets] in | in\na | b\n", "[Octets] in\na\n[Octets] in\nb\n",
          "[Nobody] in | out\na | b\n", "$A 41\n[Octets] in\na\n", "$A = 4\n[Octets] in\na\n",
          "$A = 41\n$A = 42\n[Octets] in\na\n"}) {
        std::istringstream stream(file);
        EXPECT_NE(faultOf("Rows", stream), "") << file;
    }
    std::istringstream good("# so be it\n$A = 41\n[Octets] in | out\n\"a;|\" | $A ; 41 |\n");
    EXPECT_EQ(faultOf("Rows", good), "");
}

// Notations of the same octets, or of none.
ROWS(Rows, Octets) {
    const Row copy = {"copy", row.fields, row.names, {}};
    if (row("octets") == "-") {
        testing::TestPartResultArray failures;
        const testing::ScopedFakeTestPartResultReporter reporter(&failures);
        copy.octets("text");
        copy.number("text");
        EXPECT_EQ(failures.size(), 2);
        return;
    }
    EXPECT_EQ(toHex(row.octets("text")), toHex(hex(row("octets"))));
}

} // namespace
} // namespace karil_test
