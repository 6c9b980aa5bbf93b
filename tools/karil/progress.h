// A line on stderr for work that takes longer than a second, if stderr is a terminal.
#ifndef KARIL_TOOL_PROGRESS_H
#define KARIL_TOOL_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace tool {

class Progress {
public:
    // `words`: what is counted, such as "entries". `count`: how many there are, 0 if it is not known.
    Progress(std::string words, std::uint64_t count);
    // Clears the line.
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // One more is done.
    void step() {
        if (visible && (++done & 0x3FF) == 0)
            show();
    }
    // One more is done that took some time by itself.
    void slowStep() {
        ++done;
        if (visible)
            show();
    }

private:
    void show();

    std::string what;
    std::uint64_t total;
    std::uint64_t done = 0;
    bool visible;
    bool shown = false;
    std::chrono::steady_clock::time_point next;
};

} // namespace tool

#endif
