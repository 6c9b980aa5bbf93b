// Password-based encryption and the same ciphers with a given key; the hooks.
#include "ka_crypt_pkcs12.h"

using namespace karil;

namespace {

struct Job {
    Direction direction;
    Bytes oid;
    Bytes input;
    uint8_t *output;
    uint32_t *outputLength;
};

void encryptBlocks(PbeCipher &cipher, Bytes input, uint8_t *output) {
    const size_t whole = input.size() / PbeBlock * PbeBlock;
    const Bytes tail = input.subspan(whole);
    Secret<PbeBlock> last;
    memset(last.octets, static_cast<int>(PbeBlock - tail.size()), PbeBlock);
    if (!tail.empty())
        memcpy(last.octets, tail.data(), tail.size());
    cipher.run(input.first(whole), output);
    cipher.run(last.octets, output + whole);
}

// The last block comes first: with its count the octets that come out are known before any is written.
Status decryptBlocks(PbeCipher &cipher, Bytes input, uint8_t *output, uint32_t &outputLength) {
    Secret<PbeBlock> iv;
    memcpy(iv.octets, cipher.iv().data(), PbeBlock);
    Secret<PbeBlock> block;
    const size_t lastAt = input.size() - PbeBlock;
    if (lastAt > 0)
        cipher.setIv(input.subspan(lastAt - PbeBlock));
    cipher.run(input.subspan(lastAt), block.octets);
    const uint8_t count = block.octets[PbeBlock - 1];
    if (count >= input.size())
        return KA_FAIL(KACERT_InvalidLengthErr, "----------->KA_PKCS12_DecPad");
    outputLength = static_cast<uint32_t>(input.size() - count);
    const uint32_t whole = outputLength - outputLength % PbeBlock;
    cipher.setIv(iv.octets);
    cipher.run(input.first(whole), output);
    if (whole == outputLength)
        return KACERT_Ok;
    cipher.run(input.subspan(whole, PbeBlock), block.octets);
    memcpy(output + whole, block.octets, outputLength - whole);
    return KACERT_Ok;
}

Status runBlocks(PbeCipher &cipher, const Job &job) {
    const auto size = static_cast<uint32_t>(job.input.size());
    if (job.direction == Direction::Decrypt)
        return decryptBlocks(cipher, job.input, job.output, *job.outputLength);
    encryptBlocks(cipher, job.input, job.output);
    *job.outputLength = size + PbeBlock - size % PbeBlock;
    return KACERT_Ok;
}

// What can be known before a key is derived.
Status checkSize(const PbeAlgorithm &algorithm, const Job &job) {
    if (algorithm.cipher == CipherKind::Rc4)
        return KACERT_Ok;
    if (job.direction == Direction::Encrypt && job.input.size() > UINT32_MAX - PbeBlock)
        return KA_FAIL(KACERT_InvalidLengthErr, "------------>KA_PKCS12_AddPad");
    if (job.direction == Direction::Decrypt && (job.input.empty() || job.input.size() % PbeBlock != 0))
        return KA_FAIL(KACERT_InvalidLengthErr, "----------->KA_PKCS12_DecPad");
    return KACERT_Ok;
}

// `given`: what else is read with every cipher; nothing of it may be null. `setKey` gives the cipher its key.
template <class SetKey> Status run(const Job &job, std::initializer_list<Bytes> given, const SetKey &setKey) {
    if (job.oid.data() == nullptr && !job.oid.empty())
        return KACERT_InvalidParamErr;
    const PbeAlgorithm *algorithm = pbeAlgorithm(job.oid);
    if (algorithm == nullptr)
        return KACERT_AlgorithmNotSupportErr;
    KA_PASS(checkBuffers(job.input, job.output, job.outputLength));
    for (const Bytes octets : given)
        if (octets.data() == nullptr && !octets.empty())
            return KACERT_InvalidParamErr;
    KA_PASS(checkSize(*algorithm, job));
    PbeCipher cipher(*algorithm, job.direction);
    KA_PASS(setKey(cipher));
    if (!cipher.isStream())
        return runBlocks(cipher, job);
    cipher.run(job.input, job.output);
    *job.outputLength = static_cast<uint32_t>(job.input.size());
    return KACERT_Ok;
}

Status runWithPassword(const Job &job, Bytes password, Bytes salt, uint32_t iterations) {
    return run(job, {password, salt},
               [&](PbeCipher &cipher) { return cipher.setPassword(password, salt, iterations); });
}

Status runWithKey(const Job &job, Bytes key, Bytes iv) {
    return run(job, {key}, [&](PbeCipher &cipher) { return cipher.setKey(key, iv); });
}

} // namespace

int32_t KA_PKCS12_PbeWithDigestAlgoAndEncrypt(const uint8_t *oid, uint32_t oidLength, const uint8_t *password,
                                              uint32_t passwordLength, const uint8_t *salt, uint32_t saltLength,
                                              uint32_t iterations, const uint8_t *input, uint32_t inputLength,
                                              uint8_t *output, uint32_t *outputLength) {
    return runWithPassword({Direction::Encrypt, {oid, oidLength}, {input, inputLength}, output, outputLength},
                           {password, passwordLength}, {salt, saltLength}, iterations);
}

int32_t KA_PKCS12_PbeWithDigestAlgoAndDecrypt(const uint8_t *oid, uint32_t oidLength, const uint8_t *password,
                                              uint32_t passwordLength, const uint8_t *salt, uint32_t saltLength,
                                              uint32_t iterations, const uint8_t *input, uint32_t inputLength,
                                              uint8_t *output, uint32_t *outputLength) {
    return runWithPassword({Direction::Decrypt, {oid, oidLength}, {input, inputLength}, output, outputLength},
                           {password, passwordLength}, {salt, saltLength}, iterations);
}

int32_t KA_PKCS12_DESEncrypt(const uint8_t *oid, uint32_t oidLength, const uint8_t *key, uint32_t keyLength,
                             const uint8_t *iv, uint32_t ivLength, const uint8_t *input, uint32_t inputLength,
                             uint8_t *output, uint32_t *outputLength) {
    return runWithKey({Direction::Encrypt, {oid, oidLength}, {input, inputLength}, output, outputLength},
                      {key, keyLength}, {iv, ivLength});
}

int32_t KA_PKCS12_DESDecrypt(const uint8_t *oid, uint32_t oidLength, const uint8_t *key, uint32_t keyLength,
                             const uint8_t *iv, uint32_t ivLength, const uint8_t *input, uint32_t inputLength,
                             uint8_t *output, uint32_t *outputLength) {
    return runWithKey({Direction::Decrypt, {oid, oidLength}, {input, inputLength}, output, outputLength},
                      {key, keyLength}, {iv, ivLength});
}

#define KA_PBE_HOOK(NAME, OPERATION)                                                                                   \
    int32_t NAME(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *pbe) {     \
        if (pbe == nullptr)                                                                                            \
            return KACERT_InvalidItemErr;                                                                              \
        const PbeHookParam &from = *static_cast<const PbeHookParam *>(pbe);                                            \
        return OPERATION(from.oid, from.oidLen, from.password, from.passwordLen, from.salt, from.saltLen,              \
                         from.iterations, input, inputLength, output, outputLength);                                   \
    }

KA_PBE_HOOK(KA_EncryptFunc_Ref, KA_PKCS12_PbeWithDigestAlgoAndEncrypt)
KA_PBE_HOOK(KA_DecryptFunc_Ref, KA_PKCS12_PbeWithDigestAlgoAndDecrypt)

// A key above this length has no use in a PKCS#12 file, where it is a digest.
constexpr uint32_t LongestHmacKey = 124;

int32_t KA_HMACFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                        void *hmac) {
    if (hmac == nullptr)
        return KACERT_InvalidItemErr;
    const HmacHookParam &from = *static_cast<const HmacHookParam *>(hmac);
    if (from.keyLen > LongestHmacKey)
        return KACERT_InvalidParamErr;
    return KA_PKCS12_HMAC(from.digestId, from.key, from.keyLen, input, inputLength, output, outputLength);
}
