// The low-level calls of RC4, triple DES and RC2, which need no provider.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "cipher.h"

#include <openssl/des.h>
#include <openssl/rc2.h>
#include <openssl/rc4.h>

namespace karil {

namespace {

// pkcs-12PbeIds and pkcs-5
constexpr uint8_t Oids12[][10] = {
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01, 1},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01, 2},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01, 3},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01, 4},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01, 5},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01, 6},
};
constexpr uint8_t Oids5[][9] = {
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x05, 1},  {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x05, 4},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x05, 3},  {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x05, 6},
    {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x05, 10}, {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x05, 11},
};

constexpr PbeAlgorithm rc4(Bytes oid, uint32_t size) {
    return {oid, KA_DIGEST_SHA1, size, CipherKind::Rc4, 1, 256, 0};
}
constexpr PbeAlgorithm tripleDes(Bytes oid, int32_t digestId, uint32_t size, uint8_t thirdKey) {
    return {oid, digestId, size, CipherKind::TripleDes, thirdKey == 0 ? 16u : 24u, UINT32_MAX, thirdKey};
}
constexpr PbeAlgorithm rc2(Bytes oid, int32_t digestId, uint32_t size, uint8_t bits) {
    return {oid, digestId, size, CipherKind::Rc2, 1, 128, bits};
}

constexpr PbeAlgorithm Algorithms[] = {
    rc4(Oids12[0], 16),
    rc4(Oids12[1], 5),
    tripleDes(Oids12[2], KA_DIGEST_SHA1, 24, 16),
    tripleDes(Oids12[3], KA_DIGEST_SHA1, 16, 0),
    rc2(Oids12[4], KA_DIGEST_SHA1, 16, 128),
    rc2(Oids12[5], KA_DIGEST_SHA1, 5, 40),
    tripleDes(Oids5[0], KA_DIGEST_MD2, 24, 0),
    rc2(Oids5[1], KA_DIGEST_MD2, 16, 40),
    tripleDes(Oids5[2], KA_DIGEST_MD5, 24, 0),
    rc2(Oids5[3], KA_DIGEST_MD5, 16, 40),
    tripleDes(Oids5[4], KA_DIGEST_SHA1, 24, 0),
    rc2(Oids5[5], KA_DIGEST_SHA1, 16, 40),
};

struct DesKeys {
    DES_key_schedule part[3];
};

template <class Schedule, size_t Size> Schedule &as(uint8_t (&octets)[Size]) {
    static_assert(sizeof(Schedule) <= Size && alignof(Schedule) <= 8);
    return *reinterpret_cast<Schedule *>(octets);
}

} // namespace

const PbeAlgorithm *pbeAlgorithm(Bytes oid) {
    for (const PbeAlgorithm &algorithm : Algorithms)
        if (equal(algorithm.oid, oid))
            return &algorithm;
    return nullptr;
}

PbeCipher::~PbeCipher() {
    wipe(schedule, sizeof schedule);
    wipe(vector, sizeof vector);
}

Status PbeCipher::setKey(Bytes key, Bytes iv) {
    if (key.size() < algorithm.leastKey || key.size() > algorithm.longestKey ||
        (!isStream() && (iv.data() == nullptr || iv.size() < PbeBlock)))
        return KACERT_InvalidParamErr;
    const auto size = static_cast<int>(key.size());
    switch (algorithm.cipher) {
    case CipherKind::Rc4:
        RC4_set_key(&as<RC4_KEY>(schedule), size, key.data());
        return KACERT_Ok;
    case CipherKind::Rc2:
        RC2_set_key(&as<RC2_KEY>(schedule), size, key.data(), algorithm.keyUse);
        break;
    case CipherKind::TripleDes:
        for (const uint32_t at : {uint32_t{0}, uint32_t{8}, uint32_t{16}}) {
            const uint8_t *part = key.data() + (at < 16 ? at : algorithm.keyUse);
            DES_set_key_unchecked(reinterpret_cast<const_DES_cblock *>(const_cast<uint8_t *>(part)),
                                  &as<DesKeys>(schedule).part[at / 8]);
        }
        break;
    }
    setIv(iv);
    return KACERT_Ok;
}

void PbeCipher::setIv(Bytes iv) {
    memcpy(vector, iv.data(), PbeBlock);
}

Status PbeCipher::setPassword(Bytes password, Bytes salt, uint32_t iterations) {
    const PasswordDerivation from = {algorithm.digestId, password, salt, iterations};
    Secret<LongestPbeKey> key;
    Secret<PbeBlock> iv;
    KA_PASS(derive(from, KA_PKCS12_PURPOSE_KEY, {key.octets, algorithm.keySize}));
    if (!isStream())
        KA_PASS(derive(from, KA_PKCS12_PURPOSE_IV, iv.octets));
    return setKey({key.octets, algorithm.keySize}, iv.octets);
}

void PbeCipher::run(Bytes input, uint8_t *output) {
    const auto size = static_cast<long>(input.size());
    auto *keys = &as<DesKeys>(schedule);
    switch (algorithm.cipher) {
    case CipherKind::Rc4:
        RC4(&as<RC4_KEY>(schedule), input.size(), input.data(), output);
        break;
    case CipherKind::Rc2:
        RC2_cbc_encrypt(input.data(), output, size, &as<RC2_KEY>(schedule), vector, direction == Direction::Encrypt);
        break;
    case CipherKind::TripleDes:
        DES_ede3_cbc_encrypt(input.data(), output, size, &keys->part[0], &keys->part[1], &keys->part[2], &vector,
                             direction == Direction::Encrypt);
        break;
    }
}

} // namespace karil
