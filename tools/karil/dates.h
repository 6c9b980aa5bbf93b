// Dates as they are written. The library writes and reads local time under the letter Z (karil/asn1_low.h).
#ifndef KARIL_TOOL_DATES_H
#define KARIL_TOOL_DATES_H

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

// While it lives the zone of this process is UTC, so that all others read the dates as they were meant.
class DatesInUtc {
public:
    DatesInUtc();
    ~DatesInUtc();
    DatesInUtc(const DatesInUtc &) = delete;
    DatesInUtc &operator=(const DatesInUtc &) = delete;

private:
    std::optional<std::string> zone; // before
};

// `days`, or the fewer that are left until 19 January 2038: for what is taken by default.
int daysUpTo(int days);

// Now and `days` later. A Failure if that is past what the library's times hold, 19 January 2038.
struct Validity {
    std::int32_t from;
    std::int32_t to;
};
Validity validFor(int days);

} // namespace tool

#endif
