// What mbedTLS leaves undone: it takes a date apart, karil hands out seconds of local time.
#pragma once

#include <mbedtls/x509.h>

#include <ctime>

namespace karil_bench {

inline time_t secondsOf(const mbedtls_x509_time &date) {
    tm parts = {};
    parts.tm_year = date.year - 1900;
    parts.tm_mon = date.mon - 1;
    parts.tm_mday = date.day;
    parts.tm_hour = date.hour;
    parts.tm_min = date.min;
    parts.tm_sec = date.sec;
    parts.tm_isdst = -1;
    return mktime(&parts);
}

} // namespace karil_bench
