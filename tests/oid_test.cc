// Object identifiers from dotted text.
#include "karil/oid.h"
#include "support.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>

namespace karil_test {
namespace {

using Row = std::pair<const char *, const char *>;

const Row good[] = {
    {"2.5.29.35", "55 1D 23"},
    {"2.5 29.35", "55 1D 23"},
    {"1.2.840.113549.1.1.1", "2A 86 48 86 F7 0D 01 01 01"},
    {"2.100.3", "81 34 03"},
    {"0.0", "00"},
    {"1.2", "2A"},
    {"0.39.1", "27 01"},
    {"1.40.1", "50 01"},
    {"2.40.1", "78 01"},
    {"1.88.1", "81 00 01"},
    {"2.48", "81 00"},
    {"1.2.127.128", "2A 7F 81 00"},
    {"1.2.16383.16384", "2A FF 7F 81 80 00"},
    {"1.2.268435455.268435456", "2A FF FF FF 7F 81 80 80 80 00"},
    {"1.2.4294967295", "2A 8F FF FF FF 7F"},
    {"1.2.4294967297", "2A 01"},
    {"2.4294967295", "4F"},
    {"1.2.007", "2A 07"},
};

// Text without a terminator.
std::unique_ptr<char[]> bare(std::string_view characters) {
    std::unique_ptr<char[]> block(new char[characters.size()]);
    std::copy(characters.begin(), characters.end(), block.get());
    return block;
}

TEST(Oid, GoodText) {
    for (const auto &[characters, content] : good) {
        SCOPED_TRACE(characters);
        const auto text = bare(characters);
        const auto length = static_cast<int32_t>(strlen(characters));
        const auto size = static_cast<uint32_t>(hex(content).size());
        for (const bool lengthAlone : {false, true}) {
            Octets result(size);
            uint32_t resultLength = 77;
            EXPECT_EQ(KACert_GetOIDValue(text.get(), length, lengthAlone ? nullptr : result.data(), &resultLength), 0);
            EXPECT_EQ(resultLength, size);
            EXPECT_EQ(lengthAlone ? content : toHex(result), content);
        }
        Octets result(size, 0xEE); // one octet short: nothing is written
        EXPECT_EQ(KACert_OidTextToDer(result.data(), size - 1, text.get(), length), 0);
        EXPECT_EQ(result, Octets(size, 0xEE));
        EXPECT_EQ(KACert_OidTextToDer(result.data(), size, text.get(), length), static_cast<int32_t>(size));
        EXPECT_EQ(toHex(result), content);
    }
}

TEST(Oid, BadText) {
    const std::string_view rows[] = {
        "0.40.1", "0.4294967295", "1",    "1.",    "1.2.",  "1.2 ",   "1..2",
        "1.2. 3", ".1.2",         " 1.2", "3.1.2", "/.1.2", "12.3",   "1,2.3",
        "1.2,3",  "1.2.3a",       "1.-2", "1.2./", "1.2.:", "1.2\t3", std::string_view("1.2\0", 4)};
    for (const std::string_view characters : rows) {
        SCOPED_TRACE(characters);
        const auto text = bare(characters);
        const auto length = static_cast<int32_t>(characters.size());
        uint8_t result = 9;
        uint32_t resultLength = 77;
        EXPECT_EQ(KACert_GetOIDValue(text.get(), length, &result, &resultLength), KACERT_AlgorithmNotSupportErr);
        EXPECT_EQ(KACert_OidTextToDer(nullptr, 0, text.get(), length), 0);
        EXPECT_TRUE(result == 9 && resultLength == 77);
        EXPECT_EQ(KACert_OidTextToDer(&result, 1, text.get(), length), 0);
        EXPECT_EQ(result, 9);
    }
    std::string late = "1.2"; // found to be bad behind more octets than there is room for
    for (int i = 0; i < 1100; ++i) late += ".1";
    late += 'x';
    uint32_t size = 77;
    EXPECT_EQ(KACert_GetOIDValue(late.data(), static_cast<int32_t>(late.size()), nullptr, &size),
              KACERT_AlgorithmNotSupportErr);
}

TEST(Oid, ContentOfAtMost1024Octets) {
    std::string text = "1.2";
    for (int i = 1; i < 1024; ++i) text += ".1";
    Octets result(1024);
    uint32_t length = 0;
    EXPECT_EQ(KACert_GetOIDValue(text.data(), static_cast<int32_t>(text.size()), result.data(), &length), KACERT_Ok);
    EXPECT_EQ(length, 1024u);
    Octets want(1024, 1);
    want[0] = 0x2A;
    EXPECT_EQ(result, want);
    text += " 1";
    EXPECT_EQ(KACert_GetOIDValue(text.data(), static_cast<int32_t>(text.size()), nullptr, &length),
              KACERT_AlgorithmNotSupportErr);
    EXPECT_EQ(length, 1024u);
    EXPECT_EQ(KACert_OidTextToDer(nullptr, 0, text.data(), -1), 1025); // counting has no bound
}

} // namespace
} // namespace karil_test
