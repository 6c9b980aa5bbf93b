// What tests alone need: answers as text, the recorded trace, time zones.
#pragma once

#include "memory.h"

#include "objects.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace karil_test {

// What a call answered: its element in hex, "status N", which has none, or "nothing". The element is freed.
inline std::string answerOf(int32_t status, Anybuf *element) {
    const Chain owner(element);
    if (status != KACERT_Ok)
        return "status " + std::to_string(status) + (element != nullptr ? " and an element" : "");
    return element != nullptr ? toHex(*element) : "nothing";
}

// A block of the library's memory, under failing allocations as its own calls are.
inline void *newBlock(size_t size) {
    void *block = nullptr;
    TRIED((block = KAPR_Malloc("test", __LINE__, static_cast<uint32_t>(size))) != nullptr ? KACERT_Ok
                                                                                          : KACERT_MemoryErr);
    return block;
}

// No strict prefix decodes. Each octet becomes one that makes a length lie or a tag another, or 80 is put before it.
inline void cutAndChange(const Octets &der, int32_t (*decode)(Bytes)) {
    EXPECT_EQ(decode(der), KACERT_Ok);
    for (size_t size = 1; size < der.size(); ++size)
        EXPECT_NE(decode(Bytes(der).first(size)), KACERT_Ok) << size;
    for (size_t at = 0; at < der.size(); ++at) {
        Octets changed = der;
        for (const uint8_t value : hex("00 30 7F 81 84 FF 80")) {
            changed[at] = value;
            decode(changed);
        }
        if (at + 1 < der.size())
            changed[at + 1] = der[at];
        decode(changed);
    }
}

// Puts the process into a time zone while it lives.
struct Zone {
    const char *before = std::getenv("TZ");

    explicit Zone(const char *name) { change(name); }
    ~Zone() { change(before != nullptr ? before : "UTC"); }
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;
    static void change(const char *name) {
        setenv("TZ", std::string(name).c_str(), 1);
        tzset();
    }
};

// Records the trace of its thread while it lives; the test program's own KAPR_DebugMessage feeds the innermost.
struct Trace {
    static inline thread_local Trace *current = nullptr;
    std::vector<std::string> recorded;
    Trace *outer = std::exchange(current, this);

    Trace() = default;
    ~Trace() { current = outer; }
    Trace(const Trace &) = delete;
    Trace &operator=(const Trace &) = delete;
    const std::vector<std::string> &lines() const { return recorded; }
    // "" is always there.
    bool has(std::string_view words) const {
        return words.empty() || std::find(recorded.begin(), recorded.end(), words) != recorded.end();
    }
};

} // namespace karil_test
