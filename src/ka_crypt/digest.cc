// The streaming low-level digests: the one-shot calls look their algorithm up in the provider layer each time.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "ka_crypt.h"

#include <nettle/md2.h>
#include <nettle/version.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

namespace karil {

namespace {

void digestMd2(Bytes input, uint8_t *output) {
    md2_ctx state;
    md2_init(&state);
    md2_update(&state, input.size(), input.data());
#if NETTLE_VERSION_MAJOR >= 4
    md2_digest(&state, output);
#else
    md2_digest(&state, MD2_DIGEST_SIZE, output);
#endif
    wipe(&state, sizeof state);
}

void digestMd5(Bytes input, uint8_t *output) {
    MD5_CTX state;
    MD5_Init(&state);
    MD5_Update(&state, input.data(), input.size());
    MD5_Final(output, &state);
    wipe(&state, sizeof state);
}

void digestSha1(Bytes input, uint8_t *output) {
    SHA_CTX state;
    SHA1_Init(&state);
    SHA1_Update(&state, input.data(), input.size());
    SHA1_Final(output, &state);
    wipe(&state, sizeof state);
}

constexpr uint8_t PrefixMd2[] = {0x30, 0x20, 0x30, 0x0C, 0x06, 0x08, 0x2A, 0x86, 0x48,
                                 0x86, 0xF7, 0x0D, 0x02, 0x02, 0x05, 0x00, 0x04, 0x10};
constexpr uint8_t PrefixMd5[] = {0x30, 0x20, 0x30, 0x0C, 0x06, 0x08, 0x2A, 0x86, 0x48,
                                 0x86, 0xF7, 0x0D, 0x02, 0x05, 0x05, 0x00, 0x04, 0x10};
constexpr uint8_t PrefixSha1[] = {0x30, 0x21, 0x30, 0x09, 0x06, 0x05, 0x2B, 0x0E,
                                  0x03, 0x02, 0x1A, 0x05, 0x00, 0x04, 0x14};

constexpr DigestAlgorithm Algorithms[] = {
    {KA_DIGEST_MD2, 16, PrefixMd2, digestMd2},
    {KA_DIGEST_MD5, 16, PrefixMd5, digestMd5},
    {KA_DIGEST_SHA1, 20, PrefixSha1, digestSha1},
};

} // namespace

const DigestAlgorithm *digestAlgorithm(int32_t id) {
    for (const DigestAlgorithm &algorithm : Algorithms)
        if (algorithm.id == id)
            return &algorithm;
    return nullptr;
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
    algorithm->digest({input, inputLength}, output);
    *outputLength = algorithm->size;
    return KACERT_Ok;
}
