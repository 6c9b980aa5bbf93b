// Times: local time under the letter Z, as the dialect has it.
#pragma once

#include "reader.h"

namespace karil {

// The local zone, looked up once for all times of an object: mktime asks the file system at each call. With `days` the
// offsets of days are kept as well, for objects of many times.
struct DayOffset {
    int32_t day; // counted from 1970-01-01, plus 1; 0: not known
    int32_t offset;
};
struct LocalClock {
    bool isLookedUp = false;
    std::span<DayOffset> days = {};
};
// `tag`: 23 or 24, the only one accepted.
[[nodiscard]] Status readTime(const Element &source, uint32_t tag, LocalClock &clock, int32_t &time);
// The text of a time: YYMMDDhhmmssZ.
constexpr uint32_t TimeLength = 13;
[[nodiscard]] Status timeText(int32_t time, LocalClock &clock, uint8_t (&text)[TimeLength]);

} // namespace karil
