#include "karil/text.h"

#include "rows.h"

using namespace karil_test;

namespace {

using Conversion = int32_t (*)(const uint8_t *, int32_t, uint8_t *, uint32_t *);
const std::map<std::string, Conversion> conversions = {
    {"936>BMP", KI_Chinese2BmpString}, {"BMP>936", KI_BmpString2Chinese},   {"BMP>UTF8", KI_BmpString2UTF8},
    {"UTF8>BMP", KI_UTF82BmpString},   {"936>UTF8", KI_Chinese2UTF8String}, {"UTF8>936", KI_UTF8String2Chinese}};

// The converted octets in hex, "-" for a length that was not stored, or "status N". The size comes first, as callers
// ask for it, and the octets go to a block of just that size.
std::string convert(const std::string &name, const Octets &source) {
    const auto found = conversions.find(name);
    if (found == conversions.end()) return "no call " + name;
    const Conversion conversion = found->second;
    uint32_t length = 0xFFFF;
    const Exact exact(source);
    const auto size = static_cast<int32_t>(source.size());
    const int32_t status = conversion(exact.record.data, size, nullptr, &length);
    if (status != KACERT_Ok) return "status " + std::to_string(status);
    if (length == 0xFFFF) return "-";
    Octets result(length);
    uint32_t again = 0;
    EXPECT_EQ(conversion(exact.record.data, size, result.data(), &again), KACERT_Ok);
    EXPECT_EQ(again, length);
    return toHex(result);
}

size_t failureLines(const Trace &trace) {
    size_t count = 0;
    for (const std::string &line : trace.lines()) count += line.rfind("------>", 0) == 0 ? 1 : 0;
    return count;
}

ROWS(Text, Conversions) {
    std::string call = row("call");
    const size_t both = call.find('=');
    const Trace trace;
    if (both != call.npos) {
        EXPECT_EQ(convert(call.substr(both + 1) + '>' + call.substr(0, both), row.octets("want")), row.hex("source"));
        call[both] = '>';
    }
    EXPECT_EQ(convert(call, row.octets("source")), row.hex("want"));
    EXPECT_EQ(failureLines(trace), 0u);
}

ROWS(Text, Failures) {
    const Trace trace;
    EXPECT_EQ(convert(row("call"), row.octets("source")), row("want"));
    EXPECT_TRUE(row("words").empty() || trace.has(row("words")));
    EXPECT_EQ(failureLines(trace) > 0, !row("words").empty());
}

// A row of the first two areas has 94 cells, one of the third 96: A1 to FE, and 40 to A0 without 7F.
ROWS(Text, PrivateUseCells) {
    const auto octets = [](uint32_t word) {
        return Octets{static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word)};
    };
    const auto first = row.number<uint32_t>("first");
    const auto last = row.number<uint32_t>("last");
    const bool isWide = last >> 8 != first >> 8;
    const uint32_t lowest = isWide ? first & 0xFF : 0;
    const uint32_t highest = isWide ? last & 0xFF : 0xFF;
    auto code = row.number<uint32_t>("code");
    for (uint32_t pair = first; pair <= last; ++pair) {
        if ((pair & 0xFF) < lowest || (pair & 0xFF) > highest || (pair & 0xFF) == 0x7F) continue;
        ASSERT_EQ(convert("936>BMP", octets(pair)), toHex(octets(code)));
        ASSERT_EQ(convert("BMP>936", octets(code)), toHex(octets(pair)));
        ++code;
    }
    EXPECT_EQ(code, row.number<uint32_t>("lastCode") + 1);
}

// Every pair that has a character comes back as it was.
TEST(Text, EveryPairOfTheCodePage) {
    int assigned = 0;
    for (uint32_t lead = 0x81; lead <= 0xFE; ++lead) {
        for (uint32_t trail = 0x40; trail <= 0xFE; ++trail) {
            const Octets pair = {static_cast<uint8_t>(lead), static_cast<uint8_t>(trail)};
            uint8_t bmp[8];
            uint32_t length = 0;
            ASSERT_EQ(KI_Chinese2BmpString(pair.data(), 2, bmp, &length), KACERT_Ok);
            ASSERT_EQ(length, 2u) << toHex(pair);
            if (bmp[0] == 0 && bmp[1] == '?') continue;
            ++assigned;
            uint8_t back[8];
            uint32_t backLength = 0;
            ASSERT_EQ(KI_BmpString2Chinese(bmp, 2, back, &backLength), KACERT_Ok);
            ASSERT_EQ(toHex(back, backLength), toHex(pair));
        }
    }
    // 21,791 characters of the published table and the 2,149 private-use cells: U+E000 to U+E864.
    EXPECT_EQ(assigned, 21791 + 0x865);
}

TEST(Text, Arguments) {
    for (const auto &[name, conversion] : conversions) {
        const uint8_t source[] = {0, 'A'};
        uint8_t result[16] = {9};
        uint32_t length = 77;
        EXPECT_EQ(conversion(nullptr, 2, result, &length), KACERT_InvalidParamErr);
        EXPECT_EQ(conversion(source, 2, result, nullptr), KACERT_InvalidParamErr);
        for (const int32_t none : {0, -1, INT32_MIN}) {
            EXPECT_EQ(conversion(source, none, result, &length), KACERT_Ok);
            EXPECT_EQ(conversion(nullptr, none, result, &length), KACERT_Ok);
        }
        EXPECT_EQ(length, 77u);
        EXPECT_EQ(result[0], 9);
    }
}

} // namespace
