#include "testkit.h"

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <malloc.h>

namespace karil_test {

namespace {

struct Meter {
    long untilFailure = 0; // 0: none fails
    bool forGood = false;
    bool failed = false;
    long live = 0;
};
struct OutOfMemory {};

thread_local Meter meters[2];
thread_local void (*releaseLook)(const void *block, size_t size) = nullptr;
thread_local const Sweep *running = nullptr;
thread_local bool callsAgain = false;
thread_local bool hindered = false;

Meter &meter(Pool pool) {
    return meters[static_cast<size_t>(pool)];
}

bool isToFail(Pool pool) {
    Meter &state = meter(pool);
    if (state.untilFailure == 0 || --state.untilFailure > 0)
        return false;
    state.untilFailure = state.forGood ? 1 : 0;
    return state.failed = hindered = true;
}

void *give(Pool pool, size_t size) {
    void *block = isToFail(pool) ? nullptr : std::calloc(1, size == 0 ? 1 : size);
    meter(pool).live += block != nullptr ? 1 : 0;
    return block;
}

void take(Pool pool, void *block) {
    meter(pool).live -= block != nullptr ? 1 : 0;
    if (releaseLook != nullptr && block != nullptr)
        releaseLook(block, malloc_usable_size(block));
    std::free(block);
}

void *cryptoMalloc(size_t size, const char *, int) {
    return size == 0 ? nullptr : give(Pool::Crypto, size);
}
void cryptoFree(void *block, const char *, int) {
    take(Pool::Crypto, block);
}
void *cryptoRealloc(void *block, size_t size, const char *, int) {
    if (block != nullptr && size != 0)
        return isToFail(Pool::Crypto) ? nullptr : std::realloc(block, size);
    take(Pool::Crypto, block);
    return size == 0 ? nullptr : give(Pool::Crypto, size);
}

// Before main(): libcrypto takes other functions only until its first allocation.
const bool isCryptoHooked = CRYPTO_set_mem_functions(cryptoMalloc, cryptoRealloc, cryptoFree) == 1;

// True if an allocation failed.
bool runOnce(const std::function<void()> &body, long nth, bool forGood) {
    const long before = liveBlocks(Pool::Library);
    failAllocation(running->pool, nth, forGood);
    spareRoom = 4096;
    try {
        body();
    } catch (const OutOfMemory &) {
    }
    spareRoom = 0;
    endFailing();
    EXPECT_EQ(liveBlocks(Pool::Library), before);
    EXPECT_EQ(ERR_peek_error(), 0u);
    return hindered;
}

bool runAll(const std::function<void()> &body, bool forGood) {
    long failures = 0;
    bool failed = true;
    for (long nth = 1; failed && !testing::Test::HasFailure(); ++nth) {
        SCOPED_TRACE("allocation " + std::to_string(nth) + (forGood ? " and all after it" : " alone") +
                     (callsAgain ? ", calling again" : ""));
        failed = runOnce(body, nth, forGood);
        failures += failed ? 1 : 0;
    }
    return failures > 0;
}

} // namespace

long liveBlocks(Pool pool) {
    return meter(pool).live;
}

void onRelease(void (*look)(const void *block, size_t size)) {
    releaseLook = look;
}

int releasedWith(const std::vector<Octets> &secrets, int least, const std::function<void()> &work) {
    static thread_local const std::vector<Octets> *wanted;
    static thread_local int blocks, found;
    wanted = &secrets;
    blocks = found = 0;
    onRelease([](const void *block, size_t size) {
        const auto *first = static_cast<const uint8_t *>(block);
        const auto isIn = [&](const Octets &one) {
            return std::search(first, first + size, one.begin(), one.end()) != first + size;
        };
        ++blocks;
        found += std::any_of(wanted->begin(), wanted->end(), isIn) ? 1 : 0;
    });
    work();
    onRelease(nullptr);
    return blocks < least ? -1 : found;
}

void failAllocation(Pool pool, long nth, bool forGood) {
    hindered = false;
    meter(pool) = {nth, forGood, false, meter(pool).live};
}

bool endFailing() {
    for (Meter &state : meters)
        state = {0, false, false, state.live};
    return hindered;
}

bool isHindered() {
    return running != nullptr && hindered;
}

bool sweep(const std::function<void()> &body, const Sweep &how) {
    EXPECT_TRUE(isCryptoHooked);
    body();
    running = &how;
    bool isFailed = false;
    for (const bool again : {false, true})
        for (const bool forGood : {false, true}) {
            callsAgain = again;
            if (how.again || !again)
                isFailed = runAll(body, forGood) || isFailed;
        }
    running = nullptr;
    hindered = false;
    body();
    return isFailed;
}

bool isToCallAgain(int32_t status) {
    const bool isFromHere =
        isHindered() && status != KACERT_Ok &&
        std::find(running->statuses.begin(), running->statuses.end(), status) != running->statuses.end() &&
        (meter(running->pool).failed || !callsAgain);
    if (isFromHere && !callsAgain)
        throw OutOfMemory();
    if (isFromHere)
        endFailing();
    return isFromHere;
}

} // namespace karil_test

#define KIT_VISIBLE extern "C" __attribute__((visibility("default")))

// In place of the library's own: the library reaches these through the dynamic symbol.
KIT_VISIBLE void *KAPR_Malloc(const char *, int32_t, uint32_t size) {
    return karil_test::give(karil_test::Pool::Library, size);
}
KIT_VISIBLE void KAPR_Free(void *block) {
    karil_test::take(karil_test::Pool::Library, block);
}
KIT_VISIBLE void KAPR_DebugMessage(const char *logName, const char *, int32_t, const char *message) {
    if (karil_test::Trace::current != nullptr && std::string_view(logName) == "kacert.log")
        karil_test::Trace::current->recorded.emplace_back(message);
}
