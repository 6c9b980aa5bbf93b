#include "allocation.h"

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <dlfcn.h>
#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace karil_test {

namespace {

struct Meter {
    long untilFailure = 0; // 0: none fails
    bool forGood = false;
    bool failed = false;
    long live = 0;
};
thread_local Meter meters[3];
thread_local void (*releaseLook)(const void *block) = nullptr;

Meter &meter(Pool pool) { return meters[static_cast<size_t>(pool)]; }

bool isToFail(Pool pool) {
    Meter &state = meter(pool);
    if (state.untilFailure == 0) return false;
    if (state.untilFailure > 1) {
        --state.untilFailure;
        return false;
    }
    state.untilFailure = state.forGood ? 1 : 0;
    return state.failed = true;
}

void *give(Pool pool, size_t size) {
    void *block = isToFail(pool) ? nullptr : std::calloc(1, size == 0 ? 1 : size);
    meter(pool).live += block != nullptr ? 1 : 0;
    return block;
}

void take(Pool pool, void *block) {
    meter(pool).live -= block != nullptr ? 1 : 0;
    if (releaseLook != nullptr && block != nullptr) releaseLook(block);
    std::free(block);
}

void *cryptoMalloc(size_t size, const char *, int) { return size == 0 ? nullptr : give(Pool::Crypto, size); }

void *cryptoRealloc(void *block, size_t size, const char *file, int line) {
    if (block == nullptr) return cryptoMalloc(size, file, line);
    if (size == 0) {
        take(Pool::Crypto, block);
        return nullptr;
    }
    return isToFail(Pool::Crypto) ? nullptr : std::realloc(block, size);
}

void cryptoFree(void *block, const char *, int) { take(Pool::Crypto, block); }

// Before main(): libcrypto takes other functions only until its first allocation.
const bool isCryptoHooked = CRYPTO_set_mem_functions(cryptoMalloc, cryptoRealloc, cryptoFree) == 1;

void expectAnswers(const Run &run, const Scenario &scenario, const std::map<std::string, Octets> &want) {
    EXPECT_EQ(run.answers().size(), want.size());
    for (const auto &[name, octets] : run.answers()) {
        const bool isLost = octets.empty() && std::count(scenario.mayBeEmpty.begin(), scenario.mayBeEmpty.end(), name);
        EXPECT_TRUE(isLost || octets == want.at(name)) << name << ": " << toHex(octets);
    }
}

void expectUnhindered(const Scenario &scenario, std::map<std::string, Octets> &answers) {
    Run run(false);
    scenario.run(run);
    ASSERT_EQ(run.status(), KACERT_Ok);
    answers = run.answers();
}

struct Mode {
    bool forGood;
    bool callsAgain;
};

// True where an allocation failed.
bool runOnce(const Scenario &scenario, Pool pool, const Mode &mode, long nth,
             const std::map<std::string, Octets> &want) {
    const long before = liveBlocks(Pool::Library);
    Run run(mode.callsAgain);
    failAllocation(pool, nth, mode.forGood);
    scenario.run(run);
    const bool failed = endFailing();
    EXPECT_EQ(liveBlocks(Pool::Library), before);
    EXPECT_EQ(ERR_peek_error(), 0u);
    const auto &statuses = scenario.statuses;
    EXPECT_TRUE(failed ? std::count(statuses.begin(), statuses.end(), run.status()) > 0 : run.status() == KACERT_Ok)
        << "status " << run.status();
    if (run.isWhole()) expectAnswers(run, scenario, want);
    return failed;
}

// Gives how many allocations there are, less where a check failed.
long runAll(const Scenario &scenario, Pool pool, const Mode &mode, const std::map<std::string, Octets> &want) {
    long nth = 1;
    bool failed = true;
    for (; failed && !testing::Test::HasFailure(); ++nth) {
        SCOPED_TRACE("allocation " + std::to_string(nth) + (mode.forGood ? " and all behind it" : " alone") +
                     (mode.callsAgain ? ", calling again" : ""));
        failed = runOnce(scenario, pool, mode, nth, want);
    }
    return nth - 2;
}

} // namespace

void failAllocation(Pool pool, long nth, bool forGood) {
    for (Meter &state : meters) state.failed = false;
    meter(pool).untilFailure = nth;
    meter(pool).forGood = forGood;
}

bool endFailing() {
    bool failed = false;
    for (Meter &state : meters) {
        failed = failed || state.failed;
        state.untilFailure = 0;
    }
    return failed;
}

long liveBlocks(Pool pool) { return meter(pool).live; }

void onRelease(void (*look)(const void *block)) { releaseLook = look; }

void sweep(const Scenario &scenario, Pool pool) {
    if (testing::Test::HasFailure()) return;
    SCOPED_TRACE(scenario.name);
    ASSERT_TRUE(isCryptoHooked);
    std::map<std::string, Octets> want;
    expectUnhindered(scenario, want);
    for (const Mode mode : {Mode{false, false}, Mode{true, false}, Mode{false, true}, Mode{true, true}}) {
        if (mode.callsAgain && !scenario.callsAgain) continue;
        ASSERT_GT(runAll(scenario, pool, mode, want), 0) << "nothing failed";
    }
    std::map<std::string, Octets> after;
    expectUnhindered(scenario, after);
    EXPECT_EQ(after, want);
}

} // namespace karil_test

using namespace karil_test;

#define SWEEP_VISIBLE extern "C" __attribute__((visibility("default")))

// In place of the library's own and the C library's: the library reaches these through the dynamic symbol.
SWEEP_VISIBLE void *KAPR_Malloc(const char *, int32_t, uint32_t size) { return give(Pool::Library, size); }

SWEEP_VISIBLE void KAPR_Free(void *block) { take(Pool::Library, block); }

SWEEP_VISIBLE iconv_t iconv_open(const char *to, const char *from) {
    static const auto open = reinterpret_cast<decltype(&iconv_open)>(dlsym(RTLD_NEXT, "iconv_open"));
    if (!isToFail(Pool::Converter)) return open(to, from);
    errno = ENOMEM;
    return reinterpret_cast<iconv_t>(-1);
}
