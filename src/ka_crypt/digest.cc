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

// A digest is one block with its padding, of which the digest itself is all that changes: the compression function is
// called on it without the rest, which is an eighth of the time.
struct OneBlock : Secret<64> {
    OneBlock(Bytes digest, size_t lengthAt) {
        memcpy(octets, digest.data(), digest.size());
        octets[digest.size()] = 0x80;
        octets[lengthAt] = static_cast<uint8_t>(digest.size() * 8);
    }
};

// A word of a digest, first octet highest or lowest. Octet by octet it takes as long as a tenth of a digest.
template <std::endian Order> void put(uint8_t *at, uint32_t word) {
    if constexpr (std::endian::native != Order)
        word = __builtin_bswap32(word);
    memcpy(at, &word, sizeof word);
}

void repeatMd5(uint8_t *octets, uint32_t times) {
    OneBlock block({octets, MD5_DIGEST_LENGTH}, MD5_CBLOCK - 8);
    Md5 digest;
    MD5_CTX &state = digest.state;
    for (const MD5_CTX start = state; times > 0; --times) {
        memcpy(&state, &start, offsetof(MD5_CTX, Nl));
        MD5_Transform(&state, block.octets);
        put<std::endian::little>(block.octets, state.A);
        put<std::endian::little>(block.octets + 4, state.B);
        put<std::endian::little>(block.octets + 8, state.C);
        put<std::endian::little>(block.octets + 12, state.D);
    }
    memcpy(octets, block.octets, MD5_DIGEST_LENGTH);
}

void repeatSha1(uint8_t *octets, uint32_t times) {
    OneBlock block({octets, SHA_DIGEST_LENGTH}, SHA_CBLOCK - 1);
    Sha1 digest;
    SHA_CTX &state = digest.state;
    for (const SHA_CTX start = state; times > 0; --times) {
        memcpy(&state, &start, offsetof(SHA_CTX, Nl));
        SHA1_Transform(&state, block.octets);
        put<std::endian::big>(block.octets, state.h0);
        put<std::endian::big>(block.octets + 4, state.h1);
        put<std::endian::big>(block.octets + 8, state.h2);
        put<std::endian::big>(block.octets + 12, state.h3);
        put<std::endian::big>(block.octets + 16, state.h4);
    }
    memcpy(octets, block.octets, SHA_DIGEST_LENGTH);
}

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
