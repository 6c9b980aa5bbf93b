#include "dates.h"

#include "failure.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <ctime>

namespace tool {
namespace {

constexpr std::int64_t SecondsADay = 86400;

std::int64_t daysLeft(std::int64_t now) {
    return (INT_MAX - now) / SecondsADay;
}

} // namespace

DatesInUtc::DatesInUtc() {
    if (const char *before = std::getenv("TZ"); before != nullptr)
        zone = before;
    setenv("TZ", "UTC", 1);
    tzset();
}

DatesInUtc::~DatesInUtc() {
    if (zone)
        setenv("TZ", zone->c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

int daysUpTo(int days) {
    return static_cast<int>(std::min<std::int64_t>(days, daysLeft(time(nullptr))));
}

Validity validFor(int days) {
    const std::int64_t now = time(nullptr);
    const std::int64_t end = now + days * SecondsADay;
    if (end > INT_MAX)
        throw Failure{Exit::Misuse, std::to_string(days) +
                                        " days from now are past 19 January 2038, where the dates "
                                        "that can be written end: at most " +
                                        std::to_string(daysLeft(now)) + " days are possible today"};
    return {static_cast<std::int32_t>(now), static_cast<std::int32_t>(end)};
}

} // namespace tool
