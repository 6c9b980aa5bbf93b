// How a command ends other than well: a Failure is thrown where it happens, and reported by guarded (report.h) alone.
#ifndef KARIL_TOOL_FAILURE_H
#define KARIL_TOOL_FAILURE_H

#include "karil/karil.hpp"

#include <string>
#include <utility>

namespace tool {

// The exit statuses, which scripts rely on.
enum class Exit { Good = 0, BadVerdict = 1, Misuse = 2, Unreadable = 3 };

struct Failure {
    Exit exit;
    std::string message;
};

// "WHAT: NAME: Sentence."
inline std::string inWords(karil::StatusCode status, const std::string &what) {
    return what + ": " + status.name() + ": " + status.text();
}

inline void check(karil::StatusCode status, const std::string &what, Exit exit = Exit::Unreadable) {
    if (!status)
        throw Failure{exit, inWords(status, what)};
}

template <class T> T valueOf(karil::Result<T> result, const std::string &what, Exit exit = Exit::Unreadable) {
    check(result.status(), what, exit);
    return std::move(*result);
}

} // namespace tool

#endif
