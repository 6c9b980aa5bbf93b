// What the tests share: octets from hex, owning handles, the recorded trace.
#pragma once

#include "karil/base.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace karil_test {

using Octets = std::vector<uint8_t>;

// "30 03 02 01 05" as five octets; blanks are free.
Octets hex(std::string_view text);
// Octets as "30 03 02 01 05".
std::string toHex(const uint8_t *data, size_t size);
inline std::string toHex(const Octets &octets) { return toHex(octets.data(), octets.size()); }
inline std::string toHex(const Anybuf &record) { return toHex(record.data, record.length); }
Octets text(std::string_view characters);

struct FreeChain {
    void operator()(Anybuf *first) const { KI_FreeAnybuf(first); }
};
using Chain = std::unique_ptr<Anybuf, FreeChain>;
struct FreeBlock {
    void operator()(void *block) const { KAPR_Free(block); }
};
// What a call answered: its element in hex, or "status N", which has none. The element is freed.
std::string answerOf(int32_t status, Anybuf *element);

template <class T> using Block = std::unique_ptr<T, FreeBlock>;

// A record over octets that the test owns: a reader's source.
inline Anybuf view(Octets &octets, uint32_t tag = 0) {
    return Anybuf{octets.data(), static_cast<uint32_t>(octets.size()), 0, 0, tag, nullptr, nullptr};
}

// A source record over a heap block of just its size, so that ASan sees a read past its end.
struct Exact {
    std::unique_ptr<uint8_t[]> block;
    Anybuf record;

    explicit Exact(const Octets &octets, uint32_t tag = 0);
};

// Puts the process into a time zone while it lives.
class Zone {
public:
    explicit Zone(const char *name);
    ~Zone();
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;

private:
    std::optional<std::string> before;
};

// Records the trace while it lives; the test program's own KAPR_DebugMessage feeds it.
class Trace {
public:
    Trace();
    ~Trace();
    Trace(const Trace &) = delete;
    Trace &operator=(const Trace &) = delete;
    bool has(std::string_view words) const;
    const std::vector<std::string> &lines() const { return recorded; }

    std::vector<std::string> recorded;

private:
    Trace *outer;
};

} // namespace karil_test
