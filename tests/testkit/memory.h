// Allocations that fail on demand, and the sweep that makes each one of a test's body fail.
#pragma once

#include "octets.h"

#include <functional>

namespace karil_test {

// Whose allocations fail: the library's, through the test program's own KAPR_Malloc, or libcrypto's, through the
// functions that it was given at the start. Each thread has counts of its own.
enum class Pool { Library, Crypto };

// Blocks that were given out and are not released.
long liveBlocks(Pool pool);
// Shows the thread's blocks as they are released; null: no more.
void onRelease(void (*look)(const void *block, size_t size));
// How many of the blocks that the thread releases in `work` hold one of the secrets; -1 if it releases fewer than
// `least`.
int releasedWith(const std::vector<Octets> &secrets, int least, const std::function<void()> &work);
// The nth allocation from here on fails, the first being 1, and every one after it if `forGood` is set.
void failAllocation(Pool pool, long nth, bool forGood);
// Ends the failing. True if an allocation has failed.
bool endFailing();
// True if an allocation has failed in the run of a sweep: what may get lost without a word is not looked at then.
bool isHindered();

struct Sweep {
    std::vector<int32_t> statuses = {KACERT_MemoryErr}; // what a call may return when an allocation failed
    bool again = true;                                  // a call that failed can be made once more
    Pool pool = Pool::Library;
};
// Runs the body unhindered; then with the nth allocation failing, once and from then on, for n = 1, 2, ... until none
// fails. The body ends at the first call of TRIED that fails for it, or makes that call again and must hold as a whole.
// Nothing may leak, and libcrypto's queue of errors stays empty. True if an allocation failed at all.
bool sweep(const std::function<void()> &body, const Sweep &how = {});

// True if a call's status comes from a failed allocation and the call is to be made again; a run that does not call
// again ends here.
bool isToCallAgain(int32_t status);
template <class Call> int32_t tried(Call call) {
    const int32_t status = call();
    return isToCallAgain(status) ? call() : status;
}
// The status of a call that may fail for want of memory.
#define TRIED(CALL) karil_test::tried([&] { return CALL; })

} // namespace karil_test
