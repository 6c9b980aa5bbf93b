#include "progress.h"

#include <cstdio>
#include <unistd.h>

namespace tool {

using std::chrono::steady_clock;

// Text that streams to the same terminal shows by itself that work goes on.
Progress::Progress(std::string words, std::uint64_t count)
    : what(std::move(words)), total(count), visible(isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) == 0),
      next(steady_clock::now() + std::chrono::seconds(1)) {
}

Progress::~Progress() {
    if (shown)
        std::fputs("\r\033[K", stderr);
}

void Progress::show() {
    const auto now = steady_clock::now();
    if (now < next)
        return;
    next = now + std::chrono::milliseconds(200);
    shown = true;
    std::fprintf(stderr, "\r\033[K%llu", static_cast<unsigned long long>(done));
    if (total > 0)
        std::fprintf(stderr, " of %llu", static_cast<unsigned long long>(total));
    std::fprintf(stderr, " %s", what.c_str());
    std::fflush(stderr);
}

} // namespace tool
