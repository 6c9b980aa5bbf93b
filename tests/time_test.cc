// Times under three zones. The C library's own conversions are the measure.
#include "der.h"
#include "karil/asn1.h"
#include "karil/asn1_low.h"
#include "rows.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace karil_test {
namespace {

constexpr int32_t Untouched = -77;
const char *const zones[] = {"UTC", "Asia/Shanghai", "Europe/Berlin", "America/New_York"};

struct Kind {
    const char *name;
    uint8_t octet;
    int32_t (*write)(const int32_t *, Anybuf **);
    int32_t (*read)(const Anybuf *, int32_t *);
};
const Kind kinds[] = {{"UtcTime", 0x17, KAsn1_WriteUtcTime, KAsn1_ReadUtcTime},
                      {"GeneralizedTime", 0x18, KAsn1_WriteGeneralizedTime, KAsn1_ReadGeneralizedTime}};

std::string written(const Kind &kind, int32_t time) {
    Anybuf *record = nullptr;
    EXPECT_EQ(kind.write(&time, &record), KACERT_Ok);
    const Chain owner(record);
    EXPECT_EQ(record->tag, kind.octet);
    EXPECT_EQ(record->form, 2u);
    EXPECT_EQ(toHex(record->data, 2), toHex({kind.octet, 13}));
    return {record->data + 2, record->data + record->length};
}

ROWS(Time, TwoDigits) {
    Octets digits(2);
    EXPECT_EQ(KAsn1_Low_TimeIntToChar(row.number("value"), digits.data()), row.number("status"));
    EXPECT_EQ(toHex(digits), row.hex("digits"));
    if (row.number("status") != KACERT_Ok) digits[1] = '0';
    int32_t value = Untouched;
    EXPECT_EQ(KAsn1_Low_TimeCharToInt(digits.data(), &value), KACERT_Ok);
    EXPECT_EQ(value, row.number("value"));
    EXPECT_EQ(KAsn1_Low_TimeCharToInt(nullptr, &value), KACERT_InvalidParamErr);
}

ROWS(Time, WritersGiveTheLocalClock) {
    const Zone zone(row("zone").c_str());
    for (const Kind &kind : kinds) EXPECT_EQ(written(kind, row.number("time")), row("want")) << kind.name;
}

// The fields as a broken-down time, normalised by the C library; -1 where the library has to refuse.
int64_t expected(const char *text) {
    const auto two = [text](int at) { return 10 * (text[at] - '0') + (text[at + 1] - '0'); };
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

ROWS(Time, ReadersTakeTheLocalClock) {
    const Octets characters = row.octets("text");
    const std::string local(characters.begin(), characters.end());
    for (const char *name : zones) {
        const Zone zone(name);
        const int64_t want = expected(local.c_str());
        for (const Kind &kind : kinds) {
            SCOPED_TRACE(std::string(name) + ' ' + kind.name);
            const Exact source(tlv(kind.octet, characters), kind.octet);
            int32_t time = Untouched;
            const Trace trace;
            EXPECT_EQ(kind.read(&source.record, &time), want < 0 ? KACERT_MemoryErr : KACERT_Ok);
            EXPECT_EQ(time, want < 0 ? Untouched : want);
            for (const char *words : {"------>mktime", "------>KAsn1_Low_CtoITime", "------>KAsn1_Low_ReadLongTime"})
                EXPECT_EQ(trace.has(words), want < 0);
        }
    }
}

ROWS(Time, BoundsInUtc) {
    const Zone zone("UTC");
    const Exact source(row.octets("text"));
    int32_t *cell = nullptr;
    EXPECT_EQ(KAsn1_Low_CtoITime(source.record.data, source.record.length, &cell), row.number("status"));
    const Block<int32_t> owner(cell);
    EXPECT_EQ(cell == nullptr ? Untouched : *cell, row.number("time"));
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
    Octets odd = tlv(0x55, text("070101000000Z and more"));
    odd[1] = 2;
    const Exact source(odd);
    int32_t time = Untouched;
    EXPECT_EQ(KAsn1_Low_ReadLongTime(&source.record, &time), KACERT_Ok);
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
        for (const Kind &kind : kinds) EXPECT_EQ(kind.write(&time, &record), KACERT_InvalidTimeErr);
        EXPECT_TRUE(trace.has("------>KAsn1_Low_WriteLongTime"));
        EXPECT_TRUE(characters == nullptr && length == nullptr && record == nullptr);
    }
}

} // namespace
} // namespace karil_test
