// Expected octets come from Microsoft's table of code page 936, the Unicode standard and calculation by hand.
#include "karil/text.h"

#include "support.h"

#include <gtest/gtest.h>

using namespace karil_test;

namespace {

using Conversion = int32_t (*)(const uint8_t *, int32_t, uint8_t *, uint32_t *);

// The converted octets in hex, "-" for a length that was not stored, or "status N". The size comes first, as callers
// ask for it, and the octets go to a block of just that size.
std::string convert(Conversion conversion, const Octets &source) {
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

std::string convert(Conversion conversion, std::string_view source) { return convert(conversion, hex(source)); }

Octets repeat(std::string_view unit, size_t times) {
    Octets all;
    const Octets octets = hex(unit);
    for (size_t i = 0; i < times; ++i) all.insert(all.end(), octets.begin(), octets.end());
    return all;
}

TEST(Text, ChineseAndBmp) {
    struct Row {
        const char *name;
        const char *chinese;
        const char *bmp;
        bool isBack; // the same the other way round
    };
    const Row rows[] = {
        {"ASCII", "41", "00 41", true},
        {"ASCII with a zero octet", "41 00 42", "00 41 00 00 00 42", true},
        {"two characters", "D6 D0 B9 FA", "4E 2D 56 FD", true},
        {"mixed", "41 D6 D0 7E", "00 41 4E 2D 00 7E", true},
        {"first pair of the page", "81 40", "4E 02", true},
        {"last assigned pair", "FE 4F", "FA 29", true},
        {"euro sign", "80", "20 AC", true},
        {"middle dot", "A1 A4", "00 B7", true},
        {"dash", "A1 AA", "20 14", true},
        {"bar", "A8 44", "20 15", true},
        {"composed letter", "A8 A4", "00 E0", true},
        {"private-use cell before a letter", "A2 A0 41", "E5 85 00 41", true},
        {"trail octets around 7F", "81 7E 81 80", "4E 8A 4E 90", true},
        {"trail octet out of range, both octets pass", "81 20 41", "00 3F 00 41", false},
        {"trail octet 7F", "81 7F", "00 3F", false},
        {"lead octet FF stands alone", "FF 41", "00 3F 00 41", false},
        {"pair cut off", "41 D6", "00 41 00 3F", false},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(convert(KI_Chinese2BmpString, row.chinese), row.bmp) << row.name;
        if (row.isBack) { EXPECT_EQ(convert(KI_BmpString2Chinese, row.bmp), row.chinese) << row.name; }
    }
}

TEST(Text, BmpWithoutAPlaceInTheCodePage) {
    struct Row {
        const char *name;
        const char *bmp;
        const char *chinese;
    };
    const Row rows[] = {
        {"Hangul", "AC 00 00 41", "3F 41"},
        {"surrogate pair, one for each unit", "D8 40 DC 0B 00 41", "3F 3F 41"},
        {"lone surrogate", "DC 00 D6 D0", "3F 3F"},
        {"lone surrogate last", "00 41 D8 00", "41 3F"},
        {"private use beyond the page", "E8 65 00 41", "3F 41"},
        {"a letter and its mark", "00 61 03 00", "A8 A4"},
        {"two marks", "00 75 03 08 03 04", "A8 B5"}, // U+01D6
        {"a mark that does not compose", "00 61 03 27", "61 3F"},
        {"a letter that the page lacks composed", "00 67 03 02", "67 3F"},
        {"a mark alone", "03 00 00 61", "3F 61"},
        {"Cyrillic", "04 35 03 08", "A7 D7"},               // U+0451
        {"kana", "30 AB 30 99 30 CF 30 9A", "A5 AC A5 D1"}, // U+30AC U+30D1
    };
    for (const Row &row : rows) EXPECT_EQ(convert(KI_BmpString2Chinese, row.bmp), row.chinese) << row.name;
}

TEST(Text, PrivateUseCells) {
    struct Row {
        uint32_t firstPair;
        uint32_t lastPair;
        uint32_t firstCode;
        uint32_t lastCode;
    };
    const Row rows[] = {
        {0xAAA1, 0xAFFE, 0xE000, 0xE233}, {0xF8A1, 0xFEFE, 0xE234, 0xE4C5}, {0xA140, 0xA7A0, 0xE4C6, 0xE765},
        {0xA2AB, 0xA2B0, 0xE766, 0xE76B}, {0xA2E3, 0xA2E4, 0xE76C, 0xE76D}, {0xA2EF, 0xA2F0, 0xE76E, 0xE76F},
        {0xA2FD, 0xA2FE, 0xE770, 0xE771}, {0xA4F4, 0xA4FE, 0xE772, 0xE77C}, {0xA5F7, 0xA5FE, 0xE77D, 0xE784},
        {0xA6B9, 0xA6C0, 0xE785, 0xE78C}, {0xA6D9, 0xA6DF, 0xE78D, 0xE793}, {0xA6EC, 0xA6ED, 0xE794, 0xE795},
        {0xA6F3, 0xA6F3, 0xE796, 0xE796}, {0xA6F6, 0xA6FE, 0xE797, 0xE79F}, {0xA7C2, 0xA7D0, 0xE7A0, 0xE7AE},
        {0xA7F2, 0xA7FE, 0xE7AF, 0xE7BB}, {0xA896, 0xA8A0, 0xE7BC, 0xE7C6}, {0xA8BC, 0xA8BC, 0xE7C7, 0xE7C7},
        {0xA8BF, 0xA8BF, 0xE7C8, 0xE7C8}, {0xA8C1, 0xA8C4, 0xE7C9, 0xE7CC}, {0xA8EA, 0xA8FE, 0xE7CD, 0xE7E1},
        {0xA958, 0xA958, 0xE7E2, 0xE7E2}, {0xA95B, 0xA95B, 0xE7E3, 0xE7E3}, {0xA95D, 0xA95F, 0xE7E4, 0xE7E6},
        {0xA989, 0xA995, 0xE7E7, 0xE7F3}, {0xA997, 0xA9A3, 0xE7F4, 0xE800}, {0xA9F0, 0xA9FE, 0xE801, 0xE80F},
        {0xD7FA, 0xD7FE, 0xE810, 0xE814}, {0xFE50, 0xFE7E, 0xE815, 0xE843}, {0xFE80, 0xFEA0, 0xE844, 0xE864},
    };
    const auto octets = [](uint32_t word) {
        return Octets{static_cast<uint8_t>(word >> 8), static_cast<uint8_t>(word)};
    };
    for (const Row &row : rows) {
        // A row of the first two areas has 94 cells, one of the third 96: A1 to FE, and 40 to A0 without 7F.
        const bool isWide = row.lastPair >> 8 != row.firstPair >> 8;
        const uint32_t lowest = isWide ? row.firstPair & 0xFF : 0;
        const uint32_t highest = isWide ? row.lastPair & 0xFF : 0xFF;
        uint32_t code = row.firstCode;
        for (uint32_t pair = row.firstPair; pair <= row.lastPair; ++pair) {
            if ((pair & 0xFF) < lowest || (pair & 0xFF) > highest || (pair & 0xFF) == 0x7F) continue;
            ASSERT_EQ(convert(KI_Chinese2BmpString, octets(pair)), toHex(octets(code)));
            ASSERT_EQ(convert(KI_BmpString2Chinese, octets(code)), toHex(octets(pair)));
            ++code;
        }
        EXPECT_EQ(code, row.lastCode + 1) << std::hex << row.firstPair;
    }
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

TEST(Text, Utf8AndBmp) {
    struct Row {
        const char *name;
        const char *utf8;
        const char *bmp;
        bool isBack;
    };
    const Row rows[] = {
        {"ASCII", "41 7F", "00 41 00 7F", true},
        {"two octets", "C2 80 DF BF", "00 80 07 FF", true},
        {"three octets", "E0 A0 80 EF BF BD", "08 00 FF FD", true},
        {"around the surrogates", "ED 9F BF EE 80 80", "D7 FF E0 00", true},
        {"byte order mark", "EF BB BF 41", "FE FF 00 41", true},
        {"four octets", "F0 90 80 80 F4 8F BF BF", "D8 00 DC 00 DB FF DF FF", true},
        {"lone continuation", "80 41", "FF FD 00 41", false},
        {"overlong forms", "C0 AF E0 80 BF F0 81 82 41", "FF FD FF FD FF FD FF FD FF FD FF FD FF FD FF FD 00 41",
         false},
        {"encoded surrogates", "ED A0 80 ED BF BF 41", "FF FD FF FD FF FD FF FD FF FD FF FD 00 41", false},
        {"beyond U+10FFFF", "F4 91 92 93 FF 41 80 BF 42", "FF FD FF FD FF FD FF FD FF FD 00 41 FF FD FF FD 00 42",
         false},
        {"truncated sequences", "E1 80 E2 F0 91 92 F1 BF 41", "FF FD FF FD FF FD FF FD 00 41", false},
        {"cut off at the end", "41 E2 82", "00 41 FF FD", false},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(convert(KI_UTF82BmpString, row.utf8), row.bmp) << row.name;
        if (row.isBack) { EXPECT_EQ(convert(KI_BmpString2UTF8, row.bmp), row.utf8) << row.name; }
    }
    EXPECT_EQ(convert(KI_BmpString2UTF8, "DC 00 00 41"), "EF BF BD 41");
    EXPECT_EQ(convert(KI_BmpString2UTF8, "D8 00 00 41 D8 00"), "EF BF BD 41 EF BF BD");
}

TEST(Text, ChineseAndUtf8) {
    EXPECT_EQ(convert(KI_Chinese2UTF8String, "D6 D0 41 80"), "E4 B8 AD 41 E2 82 AC");
    EXPECT_EQ(convert(KI_UTF8String2Chinese, "E4 B8 AD 41 E2 82 AC"), "D6 D0 41 80");
    EXPECT_EQ(convert(KI_Chinese2UTF8String, "D6 D0 D6"), "E4 B8 AD 3F");
    EXPECT_EQ(convert(KI_UTF8String2Chinese, "61 CC 80 F0 9F 98 80"), "A8 A4 3F 3F");
}

TEST(Text, Limits) {
    struct Row {
        const char *name;
        Conversion conversion;
        Octets source;
        const char *want; // "-": status 0 and nothing stored
        const char *words;
    };
    const std::vector<Row> rows = {
        {"936 above", KI_Chinese2BmpString, repeat("41", 1025), "status 101", nullptr},
        {"BMP above", KI_BmpString2Chinese, repeat("41", 2049), "status 101", nullptr},
        {"BMP above, to UTF-8", KI_BmpString2UTF8, repeat("41", 2049), "status 101",
         "------>KI_BmpString2UTF8函数输入长度太长"},
        {"UTF-8 above", KI_UTF82BmpString, repeat("41", 1025), "status 101",
         "------>KI_UTF82BmpString函数输入长度太长"},
        {"936 above, to UTF-8", KI_Chinese2UTF8String, repeat("41", 1025), "status 101",
         "------>MKI_Chinese2BmpString函数失败"},
        {"UTF-8 above, to 936", KI_UTF8String2Chinese, repeat("41", 1025), "status 101",
         "------>KI_UTF82BmpString函数失败"},
        {"result above 1,024 in 936", KI_BmpString2Chinese, repeat("4E 2D", 513), "-", "------>WideCharToMultiByte"},
        {"result above 1,024 in UTF-8", KI_BmpString2UTF8, repeat("4E 2D", 342), "-",
         "------>WideCharToMultiByte函数失败"},
        {"result above 1,024 in UTF-8 by way of BMP", KI_Chinese2UTF8String, repeat("D6 D0", 342), "-",
         "------>WideCharToMultiByte函数失败"},
        {"result above 1,024 by what stands for broken octets", KI_BmpString2UTF8, repeat("DC 00", 342), "-",
         "------>WideCharToMultiByte函数失败"},
        {"nothing, 936", KI_Chinese2BmpString, {}, "-", "------>MultiByteToWideChar"},
        {"nothing, BMP", KI_BmpString2Chinese, {}, "-", "------>WideCharToMultiByte"},
        {"half a unit", KI_BmpString2UTF8, hex("41"), "-", "------>WideCharToMultiByte函数失败"},
        {"nothing, UTF-8", KI_UTF82BmpString, {}, "-", "------>MultiByteToWideChar函数失败"},
        {"nothing, both steps", KI_UTF8String2Chinese, {}, "-", "------>WideCharToMultiByte"},
        {"odd octet ignored", KI_BmpString2Chinese, hex("00 41 4E"), "41", nullptr},
    };
    for (const Row &row : rows) {
        Trace trace;
        EXPECT_EQ(convert(row.conversion, row.source), row.want) << row.name;
        if (row.words != nullptr) { EXPECT_TRUE(trace.has(row.words)) << row.name; }
        int failureLines = 0;
        for (const std::string &line : trace.recorded) failureLines += line.rfind("------>", 0) == 0 ? 1 : 0;
        EXPECT_EQ(failureLines > 0, row.words != nullptr) << row.name;
    }
}

TEST(Text, AtTheLimits) {
    struct Row {
        Conversion conversion;
        Octets source;
        size_t length;
    };
    const std::vector<Row> rows = {
        {KI_Chinese2BmpString, repeat("41", 1024), 2048},   {KI_Chinese2BmpString, repeat("D6 D0", 512), 1024},
        {KI_Chinese2BmpString, repeat("80", 1024), 2048},   {KI_BmpString2Chinese, repeat("00 41", 1024), 1024},
        {KI_BmpString2Chinese, repeat("4E 2D", 512), 1024}, {KI_BmpString2UTF8, repeat("00 41", 1024), 1024},
        {KI_BmpString2UTF8, repeat("4E 2D", 341), 1023},    {KI_UTF82BmpString, repeat("41", 1024), 2048},
        {KI_UTF82BmpString, repeat("FF", 1024), 2048},      {KI_UTF8String2Chinese, repeat("41", 1024), 1024},
    };
    for (const Row &row : rows)
        EXPECT_EQ(convert(row.conversion, row.source).size() + 1, 3 * row.length) << toHex(row.source).substr(0, 11);
}

TEST(Text, Arguments) {
    for (const Conversion conversion : {KI_Chinese2BmpString, KI_BmpString2Chinese, KI_BmpString2UTF8,
                                        KI_UTF82BmpString, KI_Chinese2UTF8String, KI_UTF8String2Chinese}) {
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
