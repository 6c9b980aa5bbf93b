// Object identifiers from dotted text, which has no terminator.
#include "rows.h"

using namespace karil_test;

namespace {

const char *charactersOf(const Exact &text) {
    return reinterpret_cast<const char *>(text.data());
}

ROWS(Oid, Good) {
    const Exact source(bytesOf(row("text")));
    const Octets want = row.octets("want");
    const auto length = lengthOf(source.bytes());
    for (const bool lengthAlone : {false, true}) {
        Octets result(want.size());
        uint32_t resultLength = 77;
        EXPECT_EQ(
            KACert_GetOIDValue(charactersOf(source), length, lengthAlone ? nullptr : result.data(), &resultLength), 0);
        EXPECT_EQ(resultLength, want.size());
        EXPECT_EQ(result, lengthAlone ? Octets(want.size()) : want);
    }
    Octets result(want.size(), 0xEE); // one octet short: nothing is written
    EXPECT_EQ(KACert_OidTextToDer(result.data(), sizeOf(want) - 1, charactersOf(source), length), 0);
    EXPECT_EQ(result, Octets(want.size(), 0xEE));
    EXPECT_EQ(KACert_OidTextToDer(result.data(), sizeOf(want), charactersOf(source), length), lengthOf(want));
    EXPECT_EQ(result, want);
}

ROWS(Oid, Bad) {
    for (const std::string &text : row.list("texts")) {
        const Exact source(row.parse(text));
        const auto length = lengthOf(source.bytes());
        uint8_t result = 9;
        uint32_t resultLength = 77;
        EXPECT_EQ(KACert_GetOIDValue(charactersOf(source), length, &result, &resultLength),
                  KACERT_AlgorithmNotSupportErr)
            << text;
        EXPECT_EQ(KACert_OidTextToDer(nullptr, 0, charactersOf(source), length), 0) << text;
        EXPECT_EQ(KACert_OidTextToDer(&result, 1, charactersOf(source), length), 0) << text;
        EXPECT_TRUE(result == 9 && resultLength == 77) << text;
    }
}

TEST(Oid, ContentOfAtMost1024Octets) {
    std::string arcs = "1.2";
    for (int i = 1; i < 1024; ++i)
        arcs += ".1";
    Octets result(1024);
    uint32_t length = 0;
    EXPECT_EQ(KACert_GetOIDValue(arcs.data(), static_cast<int32_t>(arcs.size()), result.data(), &length), KACERT_Ok);
    EXPECT_EQ(length, 1024u);
    EXPECT_EQ(result, cat({{0x2A}, Octets(1023, 1)}));
    // Found to be bad after more octets than there is room for, and good but too long.
    for (const std::string &text : {arcs + ".1.1x", arcs + " 1"})
        EXPECT_EQ(KACert_GetOIDValue(text.data(), static_cast<int32_t>(text.size()), nullptr, &length),
                  KACERT_AlgorithmNotSupportErr);
    EXPECT_EQ(length, 1024u);
    EXPECT_EQ(KACert_OidTextToDer(nullptr, 0, (arcs + " 1").c_str(), -1), 1025); // counting has no bound
}

} // namespace
