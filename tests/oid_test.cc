// Object identifiers from dotted text, which has no terminator.
#include "karil/oid.h"
#include "rows.h"

namespace karil_test {
namespace {

ROWS(Oid, Good) {
    const Exact source(text(row("text")));
    const auto *characters = reinterpret_cast<const char *>(source.record.data);
    const auto length = static_cast<int32_t>(source.record.length);
    const auto size = static_cast<uint32_t>(row.octets("want").size());
    for (const bool lengthAlone : {false, true}) {
        Octets result(size);
        uint32_t resultLength = 77;
        EXPECT_EQ(KACert_GetOIDValue(characters, length, lengthAlone ? nullptr : result.data(), &resultLength), 0);
        EXPECT_EQ(resultLength, size);
        EXPECT_EQ(toHex(result), lengthAlone ? toHex(Octets(size)) : row.hex("want"));
    }
    Octets result(size, 0xEE); // one octet short: nothing is written
    EXPECT_EQ(KACert_OidTextToDer(result.data(), size - 1, characters, length), 0);
    EXPECT_EQ(result, Octets(size, 0xEE));
    EXPECT_EQ(KACert_OidTextToDer(result.data(), size, characters, length), static_cast<int32_t>(size));
    EXPECT_EQ(toHex(result), row.hex("want"));
}

ROWS(Oid, Bad) {
    const Exact source(row.octets("text"));
    const auto *characters = reinterpret_cast<const char *>(source.record.data);
    const auto length = static_cast<int32_t>(source.record.length);
    uint8_t result = 9;
    uint32_t resultLength = 77;
    EXPECT_EQ(KACert_GetOIDValue(characters, length, &result, &resultLength), KACERT_AlgorithmNotSupportErr);
    EXPECT_EQ(KACert_OidTextToDer(nullptr, 0, characters, length), 0);
    EXPECT_EQ(KACert_OidTextToDer(&result, 1, characters, length), 0);
    EXPECT_TRUE(result == 9 && resultLength == 77);
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
    const std::string late = text + ".1.1x"; // found to be bad behind more octets than there is room for
    EXPECT_EQ(KACert_GetOIDValue(late.data(), static_cast<int32_t>(late.size()), nullptr, &length),
              KACERT_AlgorithmNotSupportErr);
    text += " 1";
    EXPECT_EQ(KACert_GetOIDValue(text.data(), static_cast<int32_t>(text.size()), nullptr, &length),
              KACERT_AlgorithmNotSupportErr);
    EXPECT_EQ(length, 1024u);
    EXPECT_EQ(KACert_OidTextToDer(nullptr, 0, text.data(), -1), 1025); // counting has no bound
}

} // namespace
} // namespace karil_test
