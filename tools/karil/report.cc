#include "report.h"

#include "text.h"

#include <cstdio>
#include <new>

namespace tool {

void report(const std::string &message) {
    const std::string line = "karil: " + escaped(message) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

Exit guarded(const std::function<Exit()> &work, const std::function<void(const std::string &)> &onFailure) {
    Failure failure{Exit::Unreadable, "there is not enough memory"};
    try {
        return work();
    } catch (Failure &thrown) {
        failure = std::move(thrown);
    } catch (const std::bad_alloc &) {
        // The message stands.
    }
    report(failure.message);
    if (onFailure)
        onFailure(failure.message);
    return failure.exit;
}

} // namespace tool
