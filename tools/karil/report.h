// What goes to stderr: one line for each failure.
#ifndef KARIL_TOOL_REPORT_H
#define KARIL_TOOL_REPORT_H

#include "failure.h"

#include <functional>

namespace tool {

// Writes "karil: MESSAGE" as one line, with what a terminal would obey escaped.
void report(const std::string &message);

// Runs a piece of work. A Failure in it is reported, and becomes the status. `onFailure`: gets the message as well.
Exit guarded(const std::function<Exit()> &work, const std::function<void(const std::string &)> &onFailure = {});

// Of two statuses the one that the whole has: what cannot be read comes before a bad verdict.
inline Exit worse(Exit one, Exit other) {
    return one > other ? one : other;
}

} // namespace tool

#endif
