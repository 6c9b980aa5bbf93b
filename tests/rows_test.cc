// The reader of the data files: a case that no test takes, or that cannot be read, must not pass for a good one.
#include "rows.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

using namespace karil_test;

namespace {

// Sections that rowsOf() is asked for.
[[maybe_unused]] const bool areAsked = addSection("Samples", "EverySetting") && addSection("Samples", "Oracle") &&
                                       addSection("Samples", "Crl") && addSection("Samples", "Request");

TEST(Rows, EveryFileIsWholeAndEverySectionHasItsTest) {
    for (const auto &entry : std::filesystem::directory_iterator(KARIL_VECTORS)) {
        std::ifstream stream(entry.path());
        EXPECT_NO_THROW(checkFile(entry.path().stem().string(), stream)) << entry.path();
    }
}

TEST(Rows, Faults) {
    for (const char *file :
         {"", "# no section\n", "[Crl] in | out\n", "[Crl in | out\na | b\n", "a | b\n", "[Crl] in | out\na\n",
          "[Crl] in | out\na | b | c\n", "[Crl] in | in\na | b\n", "[Crl] in\na\n[Crl] in\nb\n", "[Nobody] in\na\n",
          "$A = 4\n[Crl] in\na\n", "$A = 30{\n[Crl] in\na\n", "$A = {05}\n[Crl] in\na\n", "$A = (41)*x\n[Crl] in\na\n",
          "$A = (41\n[Crl] in\na\n", "$A = $B\n[Crl] in\na\n", "$A = 7f\n[Crl] in\na\n", "$A = \"a\n[Crl] in\na\n"}) {
        std::istringstream stream(file);
        EXPECT_THROW(checkFile("Samples", stream), std::invalid_argument) << file;
    }
    std::istringstream whole("$A = (41)*2\n$B = 30{$A} \"a{|;\"\n[Crl] in | out\na | b\n");
    EXPECT_NO_THROW(checkFile("Samples", whole));
}

} // namespace
