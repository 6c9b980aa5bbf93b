// Times under three zones. The C library's own conversions are the measure.
#include "der.h"
#include "karil/asn1.h"
#include "karil/asn1_low.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <tuple>

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

Octets element(uint8_t tag, std::string_view characters) { return tlv(tag, text(characters)); }

std::string written(const Kind &kind, int32_t time) {
    Anybuf *record = nullptr;
    EXPECT_EQ(kind.write(&time, &record), KACERT_Ok);
    const Chain owner(record);
    EXPECT_EQ(record->tag, kind.octet);
    EXPECT_EQ(record->form, 2u);
    EXPECT_EQ(toHex(record->data, 2), toHex({kind.octet, 13}));
    return {record->data + 2, record->data + record->length};
}

TEST(Time, WritersGiveTheLocalClock) {
    const std::tuple<const char *, int32_t, const char *> rows[] = {
        {"UTC", 0, "700101000000Z"},
        {"Asia/Shanghai", 0, "700101080000Z"},
        {"Europe/Berlin", 0, "700101010000Z"},
        {"America/New_York", 0, "691231190000Z"},
        {"UTC", 946684799, "991231235959Z"},
        {"UTC", 946684800, "000101000000Z"},
        {"UTC", 0x7FFFFFFF, "380119031407Z"},
        {"Asia/Shanghai", 0x7FFFFFFF, "380119111407Z"},
        {"Europe/Berlin", 1174784399, "070325015959Z"}, // the last second of winter time,
        {"Europe/Berlin", 1174784400, "070325030000Z"}, // the first of summer time
        {"Europe/Berlin", 1193529600, "071028020000Z"}, // two hours with one name
        {"Europe/Berlin", 1193533200, "071028020000Z"},
    };
    for (const auto &[name, time, want] : rows) {
        const Zone zone(name);
        for (const Kind &kind : kinds) EXPECT_EQ(written(kind, time), want) << name << ' ' << kind.name;
    }
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

TEST(Time, ReadersTakeTheLocalClock) {
    // Refused east of Greenwich, being before 1970 UTC; the end of 32 bits; 2069; December 1969.
    // Berlin's gap and overlap, Shanghai's summer time. Fields that roll over, and what are no digits.
    const char *const texts[] = {"700101000000Z", "700101010000Z", "700101080000Z", "700102000000Z", "380119031407Z",
                                 "380119031408Z", "380119041407Z", "380119111407Z", "380119111408Z", "691231235959Z",
                                 "700001000000Z", "991231235959Z", "000229120000Z", "070325023000Z", "070325030000Z",
                                 "071028023000Z", "860504003000Z", "860914003000Z", "070012000000Z", "071312000000Z",
                                 "070100000000Z", "070231250000Z", "070101256199Z", ":00101000000Z", "07:101000000Z",
                                 "0A0101000000Z", "07 1 1 0 0 0Z", "      000000Z", "~~~~~~~~~~~~Z"};
    for (const char *name : zones) {
        const Zone zone(name);
        for (const char *characters : texts) {
            SCOPED_TRACE(std::string(name) + ' ' + characters);
            const int64_t want = expected(characters);
            const int32_t status = want < 0 ? KACERT_MemoryErr : KACERT_Ok;
            for (const Kind &kind : kinds) {
                const Exact source(element(kind.octet, characters), kind.octet);
                int32_t time = Untouched;
                const Trace trace;
                EXPECT_EQ(kind.read(&source.record, &time), status);
                EXPECT_EQ(time, want < 0 ? Untouched : want);
                EXPECT_EQ(trace.has("------>mktime"), want < 0);
                EXPECT_EQ(trace.has("------>KAsn1_Low_CtoITime"), want < 0);
                EXPECT_EQ(trace.has("------>KAsn1_Low_ReadLongTime"), want < 0);
            }
        }
    }
}

TEST(Time, BoundsInUtc) {
    const Zone zone("UTC");
    const std::tuple<const char *, int32_t, int32_t> rows[] = {
        {"700101000000Z", 0, 0},
        {"380119031407Z", 0, 0x7FFFFFFF},
        {"380119031408Z", KACERT_MemoryErr, Untouched},
        {"691231235959Z", KACERT_MemoryErr, Untouched},
        {"700001000000Z", KACERT_MemoryErr, Untouched},
        {"071301000000Z", 0, 1199145600}, // month 13 is January 2008
        {":00101000000Z", 0, 946684800},  // ":0" is ten times ten: 2000
    };
    for (const auto &[characters, status, time] : rows) {
        const Exact source(text(characters));
        int32_t *cell = nullptr;
        EXPECT_EQ(KAsn1_Low_CtoITime(source.record.data, source.record.length, &cell), status) << characters;
        const Block<int32_t> owner(cell);
        EXPECT_EQ(cell == nullptr ? Untouched : *cell, time) << characters;
    }
}

TEST(Time, Malformed) {
    const char *const noEnd = "------>KACERT_InvalidTimeEndErr";
    const char *const noLength = "------>KAsn1_Low_GetLengthInfo";
    const std::tuple<const char *, Octets, int32_t, const char *> rows[] = {
        {"four-digit year", element(0x18, "20071231235959Z"), 104, noEnd},
        {"no seconds", element(0x17, "0712312359Z"), 104, noEnd},
        {"offset", element(0x17, "071231235959+0100"), 104, "------>KAsn1_Low_CtoITime"},
        {"small z", element(0x17, "071231235959z"), 104, "------>KAsn1_Low_ReadLongTime"},
        {"no text", element(0x17, ""), 104, noEnd},
        {"five length octets", hex("17 85 00 00 00 00 0D"), 101, noLength},
        {"0x80 at the end", hex("17 80"), 101, noLength},
        {"length cut off", hex("17 82 00"), 102, noLength},
    };
    for (const auto &[name, octets, status, words] : rows) {
        const Exact source(octets, octets[0]);
        int32_t time = Untouched;
        const Trace trace;
        EXPECT_EQ(kinds[octets[0] - 0x17].read(&source.record, &time), status) << name;
        EXPECT_TRUE(trace.has(words)) << name;
        EXPECT_EQ(KAsn1_Low_ReadLongTime(&source.record, &time), status) << name;
        EXPECT_EQ(time, Untouched) << name;
    }
}

TEST(Time, ElementLengthIsNotCompared) {
    const Zone zone("UTC");
    Octets odd = element(0x55, "070101000000Z and more");
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
