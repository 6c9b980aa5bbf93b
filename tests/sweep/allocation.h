// Allocations that fail on demand, and the sweep that makes each one of a scenario fail.
#pragma once

#include "support.h"

#include <gtest/gtest.h>

#include <map>

namespace karil_test {

// Whose allocations fail: the library's, through this program's own KAPR_Malloc; libcrypto's, through the functions
// it was given at the start; the openings of the C library's text converter. Each thread has counts of its own.
enum class Pool { Library, Crypto, Converter };

// The nth from here on fails, the first being 1, and where `forGood` is set every one behind it as well.
void failAllocation(Pool pool, long nth, bool forGood);
// Ends the failing. True if an allocation failed since failAllocation().
bool endFailing();
// Blocks that were given out and are not released.
long liveBlocks(Pool pool);
// Shows the thread's blocks as they are released; null: no more.
void onRelease(void (*look)(const void *block));

// One run of a scenario: its calls in steps, and what they answered.
class Run {
public:
    explicit Run(bool callsAgain) : repeats(callsAgain) {}

    // Makes a call unless one before it failed. A run that calls again makes a failed call once more, unhindered:
    // it must succeed then, and the scenario goes on.
    template <class Call> void step(Call call) {
        if (firstFailure != KACERT_Ok && !repeats) return;
        const int32_t status = call();
        if (status == KACERT_Ok) return;
        if (firstFailure == KACERT_Ok) firstFailure = status;
        if (repeats) {
            endFailing();
            EXPECT_EQ(call(), KACERT_Ok) << "called again";
        }
    }
    void answer(const std::string &name, const Octets &octets) { given[name] = octets; }
    void answer(const std::string &name, const Anybuf &record) {
        given[name] = Octets(record.data, record.data + record.length);
    }
    // A node that a call stored: one whose call failed must have stored none.
    void answer(const std::string &name, const Anybuf *node) {
        EXPECT_EQ(node != nullptr, isWhole()) << name;
        answer(name, node != nullptr ? *node : Anybuf{});
    }

    // The library still has all it was asked for: every answer counts.
    bool isWhole() const { return firstFailure == KACERT_Ok || repeats; }
    int32_t status() const { return firstFailure; }
    const std::map<std::string, Octets> &answers() const { return given; }

private:
    bool repeats;
    int32_t firstFailure = KACERT_Ok;
    std::map<std::string, Octets> given;
};

struct Scenario {
    const char *name;
    void (*run)(Run &run);
    std::vector<int32_t> statuses = {KACERT_MemoryErr}; // that a failed allocation may end in
    std::vector<std::string> mayBeEmpty = {};           // answers that may be lost with status 0
    bool callsAgain = true;
};

// Runs the scenario with the nth allocation failing, once and from then on, for n = 1, 2, ... until none fails.
void sweep(const Scenario &scenario, Pool pool);

} // namespace karil_test
