// What a decoded certificate takes of the heap at its peak, and what a decoded CRL holds of it, by each library, as one
// JSON object. Counted are all blocks that malloc hands out, whoever asks, with all that malloc spends on them. A
// program of its own: its malloc stands in place of libc's and would slow the measures of time down.
#include "crl.h"

#include <malloc.h>

#include <algorithm>
#include <cstring>

extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void __libc_free(void *block);
}

namespace {

struct Heap {
    size_t now;
    size_t peak;
    size_t blocks; // handed out in all
};
Heap heap;

// The block and the word before it.
size_t sizeOf(void *block) {
    return block == nullptr ? 0 : malloc_usable_size(block) + sizeof(size_t);
}

void *handedOut(void *block) {
    heap.now += sizeOf(block);
    heap.peak = std::max(heap.peak, heap.now);
    ++heap.blocks;
    return block;
}

} // namespace

void *malloc(size_t size) noexcept {
    return handedOut(__libc_malloc(size));
}
void *calloc(size_t count, size_t size) noexcept {
    return handedOut(__libc_calloc(count, size));
}
void *realloc(void *block, size_t size) noexcept {
    heap.now -= sizeOf(block);
    return handedOut(__libc_realloc(block, size));
}
void free(void *block) noexcept {
    heap.now -= sizeOf(block);
    __libc_free(block);
}

namespace {

using namespace karil_bench;

struct Taken {
    double peak;
    double blocks;
};

// The first time, a library may make what it keeps for all objects.
Taken takenBy(Decode decode, Bytes der) {
    must(decode(der), "the certificate decodes");
    const Heap before = heap;
    heap.peak = heap.now;
    must(decode(der), "the certificate decodes");
    must(heap.now == before.now && heap.blocks > before.blocks, "the blocks are counted, and freed");
    return {static_cast<double>(heap.peak - before.now), static_cast<double>(heap.blocks - before.blocks)};
}

// Over the octets of the DER, and a certificate.
Taken takenBy(Decode decode) {
    Taken sum = {};
    double octets = 0;
    for (const Octets &der : corpus()) {
        const Taken one = takenBy(decode, der);
        sum.peak += one.peak;
        sum.blocks += one.blocks;
        octets += static_cast<double>(der.size());
    }
    return {sum.peak / octets, sum.blocks / static_cast<double>(corpus().size())};
}

// Octets an entry. None of the libraries needs much more on the way.
double heldBy(HoldCrl hold, Bytes der, int32_t entries) {
    const size_t before = heap.now;
    const HeldCrl crl = hold(der);
    const size_t held = heap.now - before;
    crl.release(crl.object);
    must(held > der.size(), "the blocks are counted");
    return static_cast<double>(held) / entries;
}

struct Peer {
    const char *name;
    Decode decode;
    HoldCrl hold;
};
constexpr Peer Peers[] = {
    {"karil", decodeWithKaril, holdWithKaril},
    {"mbedtls", decodeWithMbedtls, holdWithMbedtls},
    {"libcrypto", decodeWithLibcrypto, holdWithLibcrypto},
};

} // namespace

int main() {
    const Octets large = buildCrlWithKaril(CrlEntries);
    const Octets small = buildCrlWithKaril(30);
    const char *before = "{";
    for (const Peer &peer : Peers) {
        const Taken certificate = takenBy(peer.decode);
        std::printf("%s\"memory/%s\": %.6f, \"blocks/%s\": %.3f, \"memory-crl/%s\": %.6f, \"memory-crl-30/%s\": %.6f",
                    before, peer.name, certificate.peak, peer.name, certificate.blocks, peer.name,
                    heldBy(peer.hold, large, CrlEntries), peer.name, heldBy(peer.hold, small, 30));
        before = ",\n ";
    }
    std::puts("}");
    return 0;
}
