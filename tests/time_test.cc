// Times under several zones. The C library's own conversions are the measure.
#include "rows.h"

using namespace karil_test;

namespace {

constexpr int32_t Untouched = -77;
// The last two change at midnight: Havana by its own clock, Nuuk by UTC, so that an evening ends with another offset.
const char *const zones[] = {"UTC",         "Asia/Shanghai", "Europe/Berlin", "America/New_York", "America/Havana",
                             "America/Nuuk"};

struct Kind {
    uint8_t octet;
    int32_t (*write)(const int32_t *, Anybuf **);
    int32_t (*read)(const Anybuf *, int32_t *);
};
const Kind kinds[] = {{0x17, KAsn1_WriteUtcTime, KAsn1_ReadUtcTime},
                      {0x18, KAsn1_WriteGeneralizedTime, KAsn1_ReadGeneralizedTime}};

// The element in hex.
std::string written(const Kind &kind, int32_t time) {
    Anybuf *record = nullptr;
    EXPECT_EQ(TRIED(kind.write(&time, &record)), KACERT_Ok);
    EXPECT_EQ(record->tag, kind.octet);
    EXPECT_EQ(record->form, 2u);
    return answerOf(KACERT_Ok, record);
}

ROWS(Time, TwoDigits) {
    Octets digits(2);
    EXPECT_EQ(KAsn1_Low_TimeIntToChar(row.number("value"), digits.data()), row.number("status"));
    EXPECT_EQ(toHex(digits), row.hex("digits"));
    digits[1] = row.number("status") != KACERT_Ok ? '0' : digits[1];
    int32_t value = Untouched;
    EXPECT_EQ(KAsn1_Low_TimeCharToInt(digits.data(), &value), KACERT_Ok);
    EXPECT_EQ(value, row.number("value"));
}

SWEPT_ROWS(Time, WritersGiveTheLocalClock) {
    const Zone zone(row("zone").c_str());
    for (const Kind &kind : kinds)
        EXPECT_EQ(written(kind, row.number("time")), toHex(tlv(kind.octet, text(row("want")))));
    uint8_t *characters = nullptr;
    uint32_t *length = nullptr;
    ASSERT_EQ(TRIED(KAsn1_Low_ItoCTime(row.number("time"), &characters, &length)), KACERT_Ok);
    const Block<uint8_t> owner(characters);
    EXPECT_EQ(std::string(characters, characters + *Block<uint32_t>(length)), row("want"));
}

// The fields as a broken-down time, normalised by the C library; -1 if the library has to refuse.
int64_t expected(const std::string &text) {
    const auto two = [&](size_t at) { return 10 * (text[at] - '0') + (text[at + 1] - '0'); };
    tm local = {};
    local.tm_year = two(0) < 70 ? two(0) + 100 : two(0);
    local.tm_mon = two(2) - 1;
    local.tm_mday = two(4);
    local.tm_hour = two(6);
    local.tm_min = two(8);
    local.tm_sec = two(10);
    local.tm_isdst = -1;
    const int64_t seconds = mktime(&local);
    return seconds < 0 || seconds > INT32_MAX ? -1 : seconds;
}

void expectRead(const Octets &characters) {
    const int64_t want = expected({characters.begin(), characters.end()});
    for (const Kind &kind : kinds) {
        const Exact source(tlv(kind.octet, characters), kind.octet);
        int32_t time = Untouched;
        const Trace trace;
        EXPECT_EQ(kind.read(&source.record, &time), want < 0 ? KACERT_MemoryErr : KACERT_Ok);
        EXPECT_EQ(time, want < 0 ? Untouched : want);
        for (const char *words : {"------>mktime", "------>KAsn1_Low_CtoITime", "------>KAsn1_Low_ReadLongTime"})
            EXPECT_EQ(trace.has(words), want < 0);
    }
}

ROWS(Time, ReadersTakeTheLocalClock) {
    for (const std::string &characters : row.list("texts"))
        for (const char *name : zones) {
            SCOPED_TRACE(std::string(name) + ' ' + characters);
            const Zone zone(name);
            expectRead(row.parse(characters));
        }
}

std::string textAt(time_t seconds, tm *(*breakDown)(const time_t *, tm *)) {
    tm at = {};
    char digits[16];
    strftime(digits, sizeof digits, "%y%m%d%H%M%SZ", breakDown(&seconds, &at));
    return digits;
}

// Around the changes of 2007, and one of 2012.
TEST(Time, EveryHourAroundAChange) {
    for (const char *name : zones)
        for (const char *const day : {"070311", "070325", "071028", "071104", "120401"})
            for (int hour = -30; hour <= 54; ++hour) {
                const Zone zone(name);
                tm at = {};
                strptime(day, "%y%m%d", &at);
                const std::string digits = textAt(timegm(&at) + hour * 3600, gmtime_r);
                SCOPED_TRACE(std::string(name) + ' ' + digits);
                expectRead(text(digits));
            }
}

// The dates of one list, of which most share what was asked for another: in order through the changes of two years,
// and with other years between. Of a text that two moments have, either is good.
TEST(Time, DatesOfAList) {
    constexpr int32_t Start = 1164000000;
    for (const char *name : zones) {
        const Zone zone(name);
        std::vector<std::string> texts;
        Octets entries;
        for (int32_t i = 0; i < 12000; ++i) {
            texts.push_back(textAt(Start + i * 5400 + (i % 7 == 0 ? i * 20000 : 0), gmtime_r));
            std::ranges::copy(seq({hex("020105"), tlv(0x17, text(texts.back()))}), std::back_inserter(entries));
        }
        // Of each zone an hour that its clock skips, after a date in winter.
        for (const char *gap : {"180325023000Z", "180311023000Z", "180311003000Z", "180324223000Z"})
            for (const char *characters : {"180115000000Z", gap}) {
                texts.emplace_back(characters);
                std::ranges::copy(seq({hex("020105"), tlv(0x17, text(characters))}), std::back_inserter(entries));
            }
        const Exact list(seq({entries}), 0x30);
        const CrlPtr ctx = create<CrlEncodeCtx>();
        ASSERT_EQ(KI_CRL_DecodeRevokedCerts(&list.record, ctx.get()), KACERT_Ok);
        const RevokedEntry *entry = ctx->firstRevoked;
        for (const std::string &characters : texts) {
            ASSERT_NE(entry, nullptr);
            const time_t read = entry->revocationDate.utcValue;
            EXPECT_TRUE(textAt(read, localtime_r) == characters || read == expected(characters))
                << name << ' ' << characters;
            entry = entry->next;
        }
    }
}

SWEPT_ROWS(Time, BoundsInUtc) {
    const Zone zone("UTC");
    const Exact source(row.octets("text"));
    int32_t *cell = nullptr;
    EXPECT_EQ(TRIED(KAsn1_Low_CtoITime(source.data(), source.record.length, &cell)), row.number("status"));
    EXPECT_EQ(cell == nullptr ? Untouched : *Block<int32_t>(cell), row.number("time"));
}

ROWS(Time, Malformed) {
    const Octets octets = row.octets("element");
    const Exact source(octets, octets[0]);
    int32_t time = Untouched;
    const Trace trace;
    EXPECT_EQ(kinds[octets[0] - 0x17].read(&source.record, &time), row.number("status"));
    EXPECT_TRUE(trace.has(row("words")));
    EXPECT_EQ(KAsn1_Low_ReadLongTime(&source.record, &time), row.number("status"));
    EXPECT_EQ(time, Untouched);
}

TEST(Time, ElementLengthIsNotCompared) {
    const Zone zone("UTC");
    const Exact odd(cat({hex("55 02"), text("070101000000Z and more")}));
    int32_t time = Untouched;
    EXPECT_EQ(KAsn1_Low_ReadLongTime(&odd.record, &time), KACERT_Ok);
    EXPECT_EQ(time, 1167609600);
}

TEST(Time, NegativeTimesAreRefused) {
    for (const int32_t time : {-1, INT32_MIN}) {
        const Trace trace;
        uint8_t *characters = nullptr;
        uint32_t *length = nullptr;
        Anybuf *record = nullptr;
        EXPECT_EQ(KAsn1_Low_ItoCTime(time, &characters, &length), KACERT_InvalidTimeErr);
        EXPECT_TRUE(trace.has("------>invalid Time"));
        EXPECT_EQ(KAsn1_Low_WriteLongTime(time, 0x17, &record), KACERT_InvalidTimeErr);
        for (const Kind &kind : kinds)
            EXPECT_EQ(kind.write(&time, &record), KACERT_InvalidTimeErr);
        EXPECT_TRUE(trace.has("------>KAsn1_Low_WriteLongTime"));
        EXPECT_TRUE(characters == nullptr && length == nullptr && record == nullptr);
    }
}

} // namespace
