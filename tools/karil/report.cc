#include "report.h"

#include "text.h"

#include <cstdio>
#include <new>

namespace tool {

void report(const std::string &message) {
    const std::string line = "karil: " + escaped(message) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

Exit guarded(const std::function<Exit()> &work) {
    try {
        return work();
    } catch (const Failure &failure) {
        report(failure.message);
        return failure.exit;
    } catch (const std::bad_alloc &) {
        report("there is not enough memory");
        return Exit::Unreadable;
    }
}

} // namespace tool
