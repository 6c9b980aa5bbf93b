// The streaming low-level digests: the one-shot calls look their algorithm up in the provider layer each time.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "ka_crypt.h"

#include <nettle/md2.h>
#include <nettle/version.h>
#include <openssl/crypto.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

#include <bit>

namespace karil {

namespace {

// The three digests under names of one kind; each state is wiped at the end of its scope.
struct Md2 {
    md2_ctx state;

    Md2() { md2_init(&state); }
    ~Md2() { wipe(&state, sizeof state); }
    void add(Bytes octets) { md2_update(&state, octets.size(), octets.data()); }
    void finish(uint8_t *output) {
#if NETTLE_VERSION_MAJOR >= 4
        md2_digest(&state, output);
#else
        md2_digest(&state, MD2_DIGEST_SIZE, output);
#endif
    }
};

struct Md5 {
    MD5_CTX state;

    Md5() { MD5_Init(&state); }
    ~Md5() { wipe(&state, sizeof state); }
    void add(Bytes octets) { MD5_Update(&state, octets.data(), octets.size()); }
    void finish(uint8_t *output) { MD5_Final(output, &state); }
};

struct Sha1 {
    SHA_CTX state;

    Sha1() { SHA1_Init(&state); }
    ~Sha1() { wipe(&state, sizeof state); }
    void add(Bytes octets) { SHA1_Update(&state, octets.data(), octets.size()); }
    void finish(uint8_t *output) { SHA1_Final(output, &state); }
};

template <class Digest> void digestOf(std::initializer_list<Bytes> parts, uint8_t *output) {
    Digest digest;
    for (const Bytes part : parts)
        digest.add(part);
    digest.finish(output);
}

void repeatMd2(uint8_t *octets, uint32_t times) {
    for (; times > 0; --times)
        digestOf<Md2>({Bytes(octets, MD2_DIGEST_SIZE)}, octets);
}

// A word of a digest, one by one: a processor waits for what was stored in parts and is loaded as a whole.
template <std::endian Order> void putWord(uint8_t *to, const uint8_t *from) {
    uint32_t word;
    memcpy(&word, from, sizeof word);
    if constexpr (std::endian::native != Order)
        word = __builtin_bswap32(word);
    memcpy(to, &word, sizeof word);
}

// The octets of a digest are one block with its padding, of which they are all that changes: the compression function
// is called on it without the rest, which is an eighth of the time. The words of the digest come first in the state.
template <class Digest, uint32_t Size, std::endian Order, auto Transform> void repeat(uint8_t *octets, uint32_t times) {
    Secret<64> block;
    memcpy(block.octets, octets, Size);
    block.octets[Size] = 0x80;
    block.octets[Order == std::endian::big ? 63 : 56] = Size * 8;
    Digest digest;
    for (const auto start = digest.state; times > 0; --times) {
        memcpy(&digest.state, &start, Size);
        Transform(&digest.state, block.octets);
        const auto *words = reinterpret_cast<const uint8_t *>(&digest.state);
        for (uint32_t at = 0; at < Size; at += 4)
            putWord<Order>(block.octets + at, words + at);
    }
    memcpy(octets, block.octets, Size);
}
constexpr auto repeatMd5 = repeat<Md5, MD5_DIGEST_LENGTH, std::endian::little, MD5_Transform>;
constexpr auto repeatSha1 = repeat<Sha1, SHA_DIGEST_LENGTH, std::endian::big, SHA1_Transform>;

constexpr uint8_t PrefixMd2[] = {0x30, 0x20, 0x30, 0x0C, 0x06, 0x08, 0x2A, 0x86, 0x48,
                                 0x86, 0xF7, 0x0D, 0x02, 0x02, 0x05, 0x00, 0x04, 0x10};
constexpr uint8_t PrefixMd5[] = {0x30, 0x20, 0x30, 0x0C, 0x06, 0x08, 0x2A, 0x86, 0x48,
                                 0x86, 0xF7, 0x0D, 0x02, 0x05, 0x05, 0x00, 0x04, 0x10};
constexpr uint8_t PrefixSha1[] = {0x30, 0x21, 0x30, 0x09, 0x06, 0x05, 0x2B, 0x0E,
                                  0x03, 0x02, 0x1A, 0x05, 0x00, 0x04, 0x14};

constexpr DigestAlgorithm Algorithms[] = {
    {KA_DIGEST_MD2, 16, PrefixMd2, digestOf<Md2>, repeatMd2},
    {KA_DIGEST_MD5, 16, PrefixMd5, digestOf<Md5>, repeatMd5},
    {KA_DIGEST_SHA1, 20, PrefixSha1, digestOf<Sha1>, repeatSha1},
};

} // namespace

const DigestAlgorithm *digestAlgorithm(int32_t id) {
    for (const DigestAlgorithm &algorithm : Algorithms)
        if (algorithm.id == id)
            return &algorithm;
    return nullptr;
}

bool sameOctets(Bytes left, Bytes right) {
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_DigestMessage(int32_t digestId, const uint8_t *input, uint32_t inputLength, uint8_t *output,
                               uint32_t *outputLength) {
    const DigestAlgorithm *algorithm = digestAlgorithm(digestId);
    if (algorithm == nullptr)
        return KAPKCS7_DigestAlgErr;
    if ((input == nullptr && inputLength > 0) || output == nullptr || outputLength == nullptr)
        return KACERT_InvalidItemErr;
    algorithm->digest({Bytes(input, inputLength)}, output);
    *outputLength = algorithm->size;
    return KACERT_Ok;
}
