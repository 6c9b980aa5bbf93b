#include "ka_asn2.h"

#include <stdlib.h>
#include <string.h>
#include <time.h>

using namespace karil;

namespace {

constexpr int64_t Day = 86400;

// Without TZ, libc keeps the zone that it found first: it would ask the file system again for each object.
void lookUp(LocalClock &clock) {
    if (clock.isLookedUp)
        return;
    const char *zone = getenv("TZ");
    if (zone != nullptr)
        tzset();
    clock.isLookedUp = true;
    clock.isUtc = zone != nullptr && strcmp(zone, "UTC") == 0;
}

int32_t pair(const uint8_t *text) {
    return text[0] * 10 + text[1] - 528;
}

// Days from 1970-01-01 to the first of a month, which may lie outside its year.
int64_t daysBefore(int64_t year, int64_t month) {
    static constexpr int32_t BeforeMonth[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    year += (month - (month < 0 ? 11 : 0)) / 12;
    month = (month % 12 + 12) % 12;
    const int64_t leapYear = month > 1 ? year : year - 1;
    const int64_t leapDays = leapYear / 4 - leapYear / 100 + leapYear / 400 - 477;
    return (year - 1970) * 365 + leapDays + BeforeMonth[month];
}

int32_t offsetAt(int64_t seconds) {
    const auto at = static_cast<time_t>(seconds);
    tm local = {};
    // The days around the end of a time_t of 32 bits reach past it.
    return at == seconds && localtime_r(&at, &local) != nullptr ? static_cast<int32_t>(local.tm_gmtoff) : UnknownOffset;
}

// The offset that holds in the four days around the day of `asUtc`, and a day before and after them, or UnknownOffset
// if it changes. It is asked for at the ends: no zone has changed twice in six days since 1970.
constexpr int64_t DaysTogether = 4;
int32_t offsetOfDays(int64_t days) {
    const int32_t offset = offsetAt((days * DaysTogether - 1) * Day);
    return offset == offsetAt(((days + 1) * DaysTogether + 1) * Day) ? offset : UnknownOffset;
}

// The offset of a local time if it is that of the date before, or the one that a look with that finds; or
// UnknownOffset.
int32_t offsetLike(int64_t asUtc, LocalClock &clock) {
    for (int looks = 0; looks < 2 && clock.last != UnknownOffset; ++looks) {
        const int32_t found = offsetAt(asUtc - clock.last);
        if (found == clock.last)
            return found;
        clock.last = found;
    }
    return UnknownOffset;
}

// The offset of a local time, or UnknownOffset if mktime has to tell it. Whole days are asked for at the first date,
// and at the second one in the same days.
int32_t offsetOf(int64_t asUtc, LocalClock &clock) {
    lookUp(clock);
    if (clock.isUtc)
        return 0;
    const int64_t days = asUtc / (DaysTogether * Day);
    DaysOffset none = {};
    DaysOffset &kept = clock.kept.empty() ? none : clock.kept[static_cast<size_t>(days) & (clock.kept.size() - 1)];
    const bool isSeen = kept.days == days + 1;
    if (isSeen && kept.offset != UnknownOffset)
        return kept.offset;
    if (!isSeen && clock.last != UnknownOffset) {
        kept = {static_cast<int32_t>(days + 1), UnknownOffset};
        return offsetLike(asUtc, clock);
    }
    const int32_t offset = offsetOfDays(days);
    kept = {static_cast<int32_t>(days + 1), offset};
    if (offset != UnknownOffset)
        clock.last = offset;
    return offset;
}

// mktime, which is asked itself about a date whose offset is not known.
int64_t localToSeconds(tm &local, LocalClock &clock) {
    const int64_t asUtc = (daysBefore(local.tm_year + int64_t{1900}, local.tm_mon) + local.tm_mday - 1) * Day +
                          local.tm_hour * int64_t{3600} + local.tm_min * int64_t{60} + local.tm_sec;
    // No time after 2038 is good, so days have 32 bits.
    const bool isInRange = asUtc >= 0 && asUtc <= INT32_MAX + Day;
    const int32_t offset = isInRange ? offsetOf(asUtc, clock) : UnknownOffset;
    return offset == UnknownOffset ? mktime(&local) : asUtc - offset;
}

Status textTime(Bytes text, LocalClock &clock, int32_t &time) {
    if (text.size() < TimeLength || text[TimeLength - 1] != 'Z')
        return KA_FAIL(KACERT_InvalidTimeEndErr, "------>KACERT_InvalidTimeEndErr");
    tm local = {};
    local.tm_year = pair(&text[0]) + (pair(&text[0]) < 70 ? 100 : 0);
    local.tm_mon = pair(&text[2]) - 1;
    local.tm_mday = pair(&text[4]);
    local.tm_hour = pair(&text[6]);
    local.tm_min = pair(&text[8]);
    local.tm_sec = pair(&text[10]);
    local.tm_isdst = -1;
    const int64_t seconds = localToSeconds(local, clock);
    if (seconds < 0 || seconds > INT32_MAX)
        return KA_FAIL(KACERT_MemoryErr, "------>mktime");
    time = static_cast<int32_t>(seconds);
    return KACERT_Ok;
}

// The text after tag and length field. The element's own length is not looked at.
Status readText(const Element &source, LocalClock &clock, int32_t &time) {
    Bytes text;
    KA_PASS(afterHeader(source.bytes, text));
    KA_STEP_AS("------>KAsn1_Low_CtoITime", textTime(text, clock, time));
    return KACERT_Ok;
}

Status writeTime(const int32_t *time, Tag tag, Anybuf **out) {
    if (time == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_STEP(KAsn1_Low_WriteLongTime(*time, tag, out));
    (*out)->tag = tag;
    return KACERT_Ok;
}

Status checkedTime(const Anybuf *source, uint32_t tag, int32_t *time) {
    if (source == nullptr || source->data == nullptr || time == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    LocalClock clock;
    return readTime(elementOf(*source), tag, clock, *time);
}

} // namespace

namespace karil {

Status timeText(int32_t time, LocalClock &clock, uint8_t (&text)[TimeLength]) {
    if (time < 0)
        return KA_FAIL(KACERT_InvalidTimeErr, "------>invalid Time");
    const time_t seconds = time;
    tm local = {};
    lookUp(clock);
    localtime_r(&seconds, &local);
    const int32_t fields[] = {local.tm_year > 99 ? local.tm_year - 100 : local.tm_year,
                              local.tm_mon + 1,
                              local.tm_mday,
                              local.tm_hour,
                              local.tm_min,
                              local.tm_sec};
    uint8_t *at = text;
    for (const int32_t field : fields) {
        *at++ = static_cast<uint8_t>('0' + field / 10);
        *at++ = static_cast<uint8_t>('0' + field % 10);
    }
    *at = 'Z';
    return KACERT_Ok;
}

Status readTime(const Element &source, uint32_t tag, LocalClock &clock, int32_t &time) {
    if ((source.tag & 0xFF) != tag)
        return KACERT_InvalidTagErr;
    KA_STEP_AS("------>KAsn1_Low_ReadLongTime", readText(source, clock, time));
    return KACERT_Ok;
}

} // namespace karil

int32_t KAsn1_Low_TimeIntToChar(int32_t value, uint8_t *text) {
    KA_FRAME("KAsn1_Low_TimeIntToChar");
    if (text == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const int32_t tens = value / 10 + '0';
    text[0] = static_cast<uint8_t>(tens);
    if (tens > '9')
        return KA_FAIL(KACERT_InvalidTimeDigitErr, "------>KACERT_InvalidTimeDigitErr");
    text[1] = static_cast<uint8_t>(value % 10 + '0');
    return KA_DONE();
}

int32_t KAsn1_Low_TimeCharToInt(const uint8_t *text, int32_t *value) {
    KA_FRAME("KAsn1_Low_TimeCharToInt");
    if (text == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    *value = pair(text);
    return KA_DONE();
}

int32_t KAsn1_Low_ItoCTime(int32_t time, uint8_t **text, uint32_t **length) {
    KA_FRAME("KAsn1_Low_ItoCTime");
    if (text == nullptr || length == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    uint8_t work[TimeLength];
    LocalClock clock;
    KA_PASS(timeText(time, clock, work));
    Owned<uint8_t> block = KA_BLOCK(TimeLength);
    Owned<uint32_t> cell(KA_CREATE(uint32_t));
    if (block == nullptr || cell == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    memcpy(block.get(), work, TimeLength);
    *cell = TimeLength;
    *text = block.release();
    *length = cell.release();
    return KA_DONE();
}

int32_t KAsn1_Low_CtoITime(const uint8_t *text, uint32_t length, int32_t **time) {
    KA_FRAME("KAsn1_Low_CtoITime");
    if (text == nullptr || time == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    LocalClock clock;
    int32_t seconds = 0;
    KA_PASS(textTime({text, length == 0 ? TimeLength : length}, clock, seconds));
    Owned<int32_t> cell(KA_CREATE(int32_t));
    if (cell == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    *cell = seconds;
    *time = cell.release();
    return KA_DONE();
}

int32_t KAsn1_Low_WriteLongTime(int32_t time, uint32_t tag, Anybuf **out) {
    KA_FRAME("KAsn1_Low_WriteLongTime");
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    uint8_t text[TimeLength];
    LocalClock clock;
    KA_STEP_AS("------>KAsn1_Low_ItoCTime", timeText(time, clock, text));
    Writer element(0);
    element.element(static_cast<uint8_t>(tag), text);
    Anybuf *node = nullptr;
    KA_STEP_AS("------>KAPR_Malloc", element.moveTo(&node));
    node->tag = tag & 0x1F;
    *out = node;
    return KA_DONE();
}

int32_t KAsn1_Low_ReadLongTime(const Anybuf *source, int32_t *time) {
    KA_FRAME("KAsn1_Low_ReadLongTime");
    if (source == nullptr || source->data == nullptr || time == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    LocalClock clock;
    KA_PASS(readText(elementOf(*source), clock, *time));
    return KA_DONE();
}

int32_t KAsn1_WriteUtcTime(const int32_t *time, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteUtcTime", writeTime(time, TagUtcTime, out));
}

int32_t KAsn1_WriteGeneralizedTime(const int32_t *time, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteGeneralizedTime", writeTime(time, TagGeneralizedTime, out));
}

int32_t KAsn1_ReadUtcTime(const Anybuf *source, int32_t *time) {
    return KA_FRAMED("KAsn1_ReadUtcTime", checkedTime(source, TagUtcTime, time));
}

int32_t KAsn1_ReadGeneralizedTime(const Anybuf *source, int32_t *time) {
    return KA_FRAMED("KAsn1_ReadGeneralizedTime", checkedTime(source, TagGeneralizedTime, time));
}
