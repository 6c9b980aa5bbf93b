#include "karil/text.h"

#include "rows.h"

#include <iconv.h>
#include <stdexcept>

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
    if (found == conversions.end())
        return "no call " + name;
    const Conversion conversion = found->second;
    uint32_t length = 0xFFFF;
    const Exact exact(source);
    const auto size = static_cast<int32_t>(source.size());
    const int32_t status = conversion(exact.record.data, size, nullptr, &length);
    if (status != KACERT_Ok)
        return "status " + std::to_string(status);
    if (length == 0xFFFF)
        return "-";
    Octets result(length);
    uint32_t again = 0;
    EXPECT_EQ(conversion(exact.record.data, size, result.data(), &again), KACERT_Ok);
    EXPECT_EQ(again, length);
    return toHex(result);
}

size_t failureLines(const Trace &trace) {
    size_t count = 0;
    for (const std::string &line : trace.lines())
        count += line.rfind("------>", 0) == 0 ? 1 : 0;
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

// What the C library's converter makes of a few octets; nothing if it refuses them.
Octets oracle(const char *to, const char *from, Octets source) {
    const iconv_t converter = iconv_open(to, from);
    if (converter == reinterpret_cast<iconv_t>(-1))
        throw std::runtime_error("no oracle");
    Octets result(8);
    char *in = reinterpret_cast<char *>(source.data());
    char *out = reinterpret_cast<char *>(result.data());
    size_t inLeft = source.size();
    size_t outLeft = result.size();
    const bool isWhole = iconv(converter, &in, &inLeft, &out, &outLeft) == 0;
    iconv_close(converter);
    result.resize(isWhole ? result.size() - outLeft : 0);
    return result;
}
Octets bmpOf(const Octets &source) {
    return oracle("UTF-16BE", "CP936", source);
}
Octets chineseOf(const Octets &source) {
    return oracle("CP936", "UTF-16BE", source);
}

Octets word(uint32_t value) {
    return {static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
}
Octets operator+(Octets left, const Octets &right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// Where the code page differs from the oracle, which has no character in these cells: private-use characters, that
// count up through the cells of a rectangle in order of the pairs. A cell is in the first rectangle that holds it.
struct PrivateUse {
    uint32_t firstLead, lastLead, firstTrail, lastTrail, code, lastCode;
    const char *why;
};
constexpr PrivateUse privateUses[] = {
    {0xAA, 0xAF, 0xA1, 0xFE, 0xE000, 0xE233, "user-defined area 1"},
    {0xF8, 0xFE, 0xA1, 0xFE, 0xE234, 0xE4C5, "user-defined area 2"},
    {0xA1, 0xA7, 0x40, 0xA0, 0xE4C6, 0xE765, "user-defined area 3"},
    {0xA2, 0xFE, 0x40, 0xFE, 0xE766, 0xE864, "cells that GBK leaves empty"},
};

TEST(Text, EveryPairAndEveryCodePoint) {
    std::vector<PrivateUse> areas(std::begin(privateUses), std::end(privateUses));
    std::map<Octets, Octets> privatePairs;
    // One "?" stands for what the page lacks: FF, a lead octet alone, a lead octet with no trail octet of a pair.
    const auto orMark = [](const Octets &unit) { return unit.empty() ? word('?') : unit; };
    for (uint32_t pair = 0; pair <= 0xFFFF; ++pair) {
        const uint32_t lead = pair >> 8;
        const uint32_t trail = pair & 0xFF;
        Octets want = bmpOf(word(pair));
        if (lead <= 0x80 || lead == 0xFF)
            want = orMark(bmpOf({static_cast<uint8_t>(lead)})) + orMark(bmpOf({static_cast<uint8_t>(trail)}));
        for (PrivateUse &area : areas)
            if (want.empty() && lead >= area.firstLead && lead <= area.lastLead && trail >= area.firstTrail &&
                trail <= area.lastTrail && trail != 0x7F)
                privatePairs[want = word(area.code++)] = word(pair);
        ASSERT_EQ(convert("936>BMP", word(pair)), toHex(orMark(want))) << std::hex << pair;
    }
    for (const PrivateUse &area : areas)
        EXPECT_EQ(area.code, area.lastCode + 1) << area.why;
    for (uint32_t code = 0; code <= 0xFFFF; ++code) {
        Octets want = chineseOf(word(code));
        if (want.empty())
            want = privatePairs.count(word(code)) != 0 ? privatePairs[word(code)] : Octets{'?'};
        ASSERT_EQ(convert("BMP>936", word(code)), toHex(want)) << std::hex << code;
    }
}

// Canonical compositions of Unicode whose letter is in the code page, as Perl's Unicode::Normalize has them.
TEST(Text, Compositions) {
    const struct {
        char16_t mark;
        std::u16string_view bases, letters;
    } rows[] = {
        {0x0300, u"aeiouü", u"àèìòùǜ"},
        {0x0301, u"aeinouü", u"áéíńóúǘ"},
        {0x0302, u"e", u"ê"},
        {0x0304, u"aeiouü", u"āēīōūǖ"},
        {0x0306, u"Ии", u"Йй"},
        {0x0308, u"uЕе", u"üЁё"},
        {0x030C, u"aeinouü", u"ǎěǐňǒǔǚ"},
        {0x0338, u"<=>", u"≮≠≯"},
        {0x3099, u"かきくけこさしすせそたちつてとはひふへほゝ", u"がぎぐげござじずぜぞだぢづでどばびぶべぼゞ"},
        {0x3099, u"ウカキクケコサシスセソタチツテトハヒフヘホヽ", u"ヴガギグゲゴザジズゼゾダヂヅデドバビブベボヾ"},
        {0x309A, u"はひふへほハヒフヘホ", u"ぱぴぷぺぽパピプペポ"}};
    for (const auto &[mark, bases, letters] : rows)
        for (size_t at = 0; at < bases.size(); ++at)
            EXPECT_EQ(convert("BMP>936", word(bases[at]) + word(mark)), toHex(chineseOf(word(letters[at]))));
}

TEST(Text, NothingToConvert) {
    for (const auto &[name, conversion] : conversions)
        for (const int32_t none : {0, -1, INT32_MIN}) {
            uint8_t result = 9;
            uint32_t length = 77;
            const uint8_t source[] = {0, 'A'};
            EXPECT_EQ(conversion(source, none, &result, &length), KACERT_Ok) << name;
            EXPECT_EQ(conversion(nullptr, none, &result, &length), KACERT_Ok) << name;
            EXPECT_EQ(length + result, 77u + 9u) << name;
        }
}

} // namespace
