// Times: local time under the letter Z, as the dialect has it.
#pragma once

#include "reader.h"

namespace karil {

// Seconds that local time is ahead of UTC, if it is not known how many.
constexpr int32_t UnknownOffset = INT32_MIN;
// Some days, and the offset in them if it is known and the same in all.
struct DaysOffset {
    int32_t days; // their number, counted from 1970 and plus 1; 0: none
    int32_t offset;
};
// The local zone, looked up once for all times of an object: mktime asks the file system at each call. With `kept` the
// offsets of some days are kept as well, for objects of many times.
struct LocalClock {
    bool isLookedUp = false;
    bool isUtc = false;              // TZ is UTC: nothing has to be asked for
    int32_t last = UnknownOffset;    // of the time before
    std::span<DaysOffset> kept = {}; // zeroed at first; a power of two of them
};
// `tag`: 23 or 24, the only one accepted.
[[nodiscard]] Status readTime(const Element &source, uint32_t tag, LocalClock &clock, int32_t &time);
// The text of a time: YYMMDDhhmmssZ.
constexpr uint32_t TimeLength = 13;
[[nodiscard]] Status timeText(int32_t time, LocalClock &clock, uint8_t (&text)[TimeLength]);

} // namespace karil
