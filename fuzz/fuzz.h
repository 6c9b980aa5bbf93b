// What the targets share: input that is taken piece by piece, blocks that end at a red zone, owning handles, claims.
#pragma once

#include "karil/karil.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int *count, char ***arguments);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace karil_fuzz {

using Octets = std::vector<uint8_t>;
using Bytes = std::span<const uint8_t>;

// Ends the process where a claim does not hold, so that the fuzzer keeps the input.
inline void must(bool holds, const char *claim) {
    if (holds)
        return;
    fprintf(stderr, "broken claim: %s\n", claim);
    abort();
}

inline bool equal(Bytes one, Bytes other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end());
}
inline Bytes bytesOf(const Anybuf &record) {
    return {record.data, record.length};
}
inline uint32_t sizeOf(Bytes bytes) {
    return static_cast<uint32_t>(bytes.size());
}
inline int32_t lengthOf(Bytes bytes) {
    return static_cast<int32_t>(bytes.size());
}

// Room for `size` octets with a red zone right behind them. The allocator makes a block of no octets one octet long,
// hence those in front.
class Area {
public:
    explicit Area(size_t size) : block(new uint8_t[Front + size]()), size(size) {}
    explicit Area(Bytes octets) : Area(octets.size()) { std::copy(octets.begin(), octets.end(), data()); }
    uint8_t *data() const { return block.get() + Front; }
    Bytes bytes() const { return {data(), size}; }
    Anybuf record(uint32_t tag = 0) const { return {data(), sizeOf(bytes()), 0, 0, tag, nullptr, nullptr}; }

private:
    static constexpr size_t Front = 8;
    std::unique_ptr<uint8_t[]> block;
    size_t size;
};

// The fuzzer's input; past its end there are zeros and empty pieces.
struct Input {
    Bytes rest;

    Bytes take(size_t size) {
        const Bytes piece = rest.first(std::min(size, rest.size()));
        rest = rest.subspan(piece.size());
        return piece;
    }
    uint8_t octet() {
        const Bytes piece = take(1);
        return piece.empty() ? uint8_t{0} : piece[0];
    }
};

template <auto F> struct By {
    void operator()(auto *p) const { F(p); }
};
using Chain = std::unique_ptr<Anybuf, By<KI_FreeAnybuf>>;
using CertPtr = std::unique_ptr<CertEncodeCtx, By<KACert_DestroyCertEncodeCtx>>;
template <class T> using Block = std::unique_ptr<T, By<KAPR_Free>>;

inline CertPtr newCert() {
    CertEncodeCtx *ctx = nullptr;
    must(KACert_CreateCertEncodeCtx(&ctx) == KACERT_Ok, "a context can be made");
    return CertPtr(ctx);
}

// Calls WRITE(arguments..., &out) and owns what it stored; a failed call must have stored nothing.
template <class Write, class... Arguments> int32_t made(Chain &out, Write write, Arguments... arguments) {
    Anybuf *record = nullptr;
    const int32_t status = write(arguments..., &record);
    must(status == KACERT_Ok || record == nullptr, "a failed call stores nothing");
    out.reset(record);
    return status;
}

// A head with the list that it owns.
struct Name {
    NameRecord head = {};

    Name() = default;
    Name(const Name &) = delete;
    Name &operator=(const Name &) = delete;
    ~Name() { KI_FreeName(head.next); }
};

} // namespace karil_fuzz
