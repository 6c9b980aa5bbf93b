// What decoding takes of memory at its peak, by karil and by libcrypto, as one JSON object. A program of its own: its
// counting functions stand in place of the libraries' and would slow the measures of time down.
#include "bench.h"

#include <openssl/crypto.h>
#include <openssl/x509.h>

#include <algorithm>
#include <cstddef>

namespace {

struct Count {
    size_t now;
    size_t peak;
    size_t blocks; // allocated in all
};
Count karilCount;
Count libcryptoCount;

// Each block stands behind its size.
constexpr size_t HeadSize = alignof(std::max_align_t);

void *allocate(Count &count, size_t size) {
    auto *head = static_cast<uint8_t *>(std::calloc(1, HeadSize + size));
    if (head == nullptr)
        return nullptr;
    *reinterpret_cast<size_t *>(head) = size;
    count.now += size;
    count.peak = std::max(count.peak, count.now);
    ++count.blocks;
    return head + HeadSize;
}

size_t sizeOf(const void *block) {
    return *reinterpret_cast<const size_t *>(static_cast<const uint8_t *>(block) - HeadSize);
}

void release(Count &count, void *block) {
    if (block == nullptr)
        return;
    count.now -= sizeOf(block);
    std::free(static_cast<uint8_t *>(block) - HeadSize);
}

void *libcryptoMalloc(size_t size, const char *, int) {
    return size == 0 ? nullptr : allocate(libcryptoCount, size);
}

void libcryptoFree(void *block, const char *, int) {
    release(libcryptoCount, block);
}

// Counted as if every block grew in its place, which is the least that it can take.
void *libcryptoRealloc(void *block, size_t size, const char *file, int line) {
    if (block == nullptr)
        return libcryptoMalloc(size, file, line);
    const size_t old = sizeOf(block);
    auto *head = static_cast<uint8_t *>(std::realloc(static_cast<uint8_t *>(block) - HeadSize, HeadSize + size));
    if (head == nullptr)
        return nullptr;
    *reinterpret_cast<size_t *>(head) = size;
    libcryptoCount.now += size - old;
    libcryptoCount.peak = std::max(libcryptoCount.peak, libcryptoCount.now);
    return head + HeadSize;
}

} // namespace

void *KAPR_Malloc(const char *, int32_t, uint32_t size) {
    return allocate(karilCount, size);
}

void KAPR_Free(void *block) {
    release(karilCount, block);
}

namespace {

using namespace karil_bench;

// Adds up the peaks of all certificates over what was held before each.
struct Sum {
    double peak;
    double blocks;
};

Sum measure(Decode decode, Count &count) {
    Sum sum = {};
    for (const Octets &der : corpus()) {
        const size_t held = count.now;
        const size_t blocks = count.blocks;
        count.peak = held;
        must(decode(der), "the certificate decodes");
        must(count.peak > held, "the allocations are counted");
        must(count.now == held, "what was allocated is freed");
        sum.peak += static_cast<double>(count.peak - held);
        sum.blocks += static_cast<double>(count.blocks - blocks);
    }
    return sum;
}

} // namespace

int main() {
    must(CRYPTO_set_mem_functions(libcryptoMalloc, libcryptoRealloc, libcryptoFree) == 1, "libcrypto has used none");
    double size = 0;
    for (const Octets &der : corpus())
        size += static_cast<double>(der.size());
    const Sum karil = measure(decodeWithKaril, karilCount);
    const Sum libcrypto = measure(decodeWithLibcrypto, libcryptoCount);
    const auto all = static_cast<double>(corpus().size());
    std::printf("{\"memory/karil\": %.6f, \"memory/libcrypto\": %.6f,\n", karil.peak / size, libcrypto.peak / size);
    std::printf(" \"blocks/karil\": %.3f, \"blocks/libcrypto\": %.3f}\n", karil.blocks / all, libcrypto.blocks / all);
    return 0;
}
