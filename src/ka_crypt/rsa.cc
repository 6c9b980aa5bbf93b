// The low-level RSA interface: a key object for each call, without provider or library context.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "ka_crypt.h"

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

#include <limits.h>
#include <string.h>

using namespace karil;

namespace {

using RsaPtr = std::unique_ptr<RSA, By<RSA_free>>;
using Number = std::unique_ptr<BIGNUM, By<BN_clear_free>>;

constexpr uint32_t LargestModulus = 256;
constexpr uint32_t OperationFailed = UINT32_MAX;

Number load(Bytes field) {
    while (!field.empty() && field[0] == 0)
        field = field.subspan(1);
    return Number(BN_bin2bn(field.data(), static_cast<int>(field.size()), nullptr));
}

// The RSA_set0 functions take the numbers over; they refuse null alone.
RsaPtr loadKey(const RsaPublicKeyRecord &record) {
    RsaPtr key(RSA_new());
    Number n = load(record.modulus);
    Number e = load(record.exponent);
    if (key == nullptr || n == nullptr || e == nullptr)
        return nullptr;
    RSA_set0_key(key.get(), n.release(), e.release(), nullptr);
    return key;
}

bool loadPrimes(RSA *key, const RsaPrivateKeyRecord &record) {
    Number p = load(record.prime1);
    Number q = load(record.prime2);
    Number dp = load(record.primeExponent1);
    Number dq = load(record.primeExponent2);
    Number inverse = load(record.coefficient);
    if (p == nullptr || q == nullptr || dp == nullptr || dq == nullptr || inverse == nullptr)
        return false;
    RSA_set0_factors(key, p.release(), q.release());
    RSA_set0_crt_params(key, dp.release(), dq.release(), inverse.release());
    return true;
}

RsaPtr loadKey(const RsaPrivateKeyRecord &record) {
    RsaPtr key(RSA_new());
    Number n = load(record.modulus);
    Number e = load(record.publicExponent);
    Number d = load(record.exponent);
    if (key == nullptr || n == nullptr || e == nullptr || d == nullptr)
        return nullptr;
    RSA_set0_key(key.get(), n.release(), e.release(), d.release());
    return loadPrimes(key.get(), record) ? std::move(key) : nullptr;
}

using Operation = int (*)(int, const unsigned char *, unsigned char *, RSA *, int);

// A modulus that is even or shorter than the padding has no operation, nor has a public exponent of zero, with which a
// private operation could not be blinded; libcrypto is not asked.
bool isUsable(const RSA *key) {
    const BIGNUM *n = RSA_get0_n(key);
    return BN_is_odd(n) && BN_num_bytes(n) >= RSA_PKCS1_PADDING_SIZE && !BN_is_zero(RSA_get0_e(key));
}

// The operation's result: the octets written, or OperationFailed.
uint32_t operate(Operation operation, RSA *key, Bytes input, uint8_t *output) {
    if (!isUsable(key) || input.size() > INT_MAX)
        return OperationFailed;
    static constexpr uint8_t nothing = 0;
    const int result = operation(static_cast<int>(input.size()), input.data() != nullptr ? input.data() : &nothing,
                                 output, key, RSA_PKCS1_PADDING);
    ERR_clear_error();
    return result < 0 ? OperationFailed : static_cast<uint32_t>(result);
}

// RSA_private_decrypt that refuses a bad block. From libcrypto 3.2 on the function itself returns random octets for
// one, unless it is asked to leave the padding alone.
int privateDecrypt(int size, const unsigned char *input, unsigned char *output, RSA *key, int) {
    Secret<LargestModulus> block;
    const int length = RSA_private_decrypt(size, input, block.octets, key, RSA_NO_PADDING);
    return length < 0 ? length : RSA_padding_check_PKCS1_type_2(output, length, block.octets, length, length);
}

template <class Record>
Status runRsa(Operation operation, uint8_t *output, uint32_t *outputLength, const uint8_t *input, uint32_t inputLength,
              const Record *record) {
    if (output == nullptr || outputLength == nullptr || (input == nullptr && inputLength > 0) || record == nullptr)
        return KACERT_InvalidItemErr;
    const RsaPtr key = loadKey(*record);
    if (key == nullptr) {
        ERR_clear_error();
        return KAPKCS7_RsaOperationErr;
    }
    *outputLength = operate(operation, key.get(), {input, inputLength}, output);
    return *outputLength <= LargestModulus ? KACERT_Ok : KAPKCS7_RsaOperationErr;
}

// False, with the field as it was, for a number that does not fit or is zero.
bool store(const BIGNUM *number, std::span<uint8_t> field) {
    const auto size = static_cast<size_t>(BN_num_bytes(number));
    if (size > field.size() || size == 0)
        return false;
    memset(field.data(), 0, field.size());
    BN_bn2bin(number, field.data() + field.size() - size);
    return true;
}

bool storePublic(const RSA *key, RsaPublicKeyRecord &record) {
    record.bits = static_cast<uint32_t>(BN_num_bits(RSA_get0_n(key)));
    return store(RSA_get0_n(key), record.modulus) && store(RSA_get0_e(key), record.exponent);
}

void storePrivate(const RSA *key, RsaPrivateKeyRecord &record) {
    record.bits = static_cast<uint32_t>(BN_num_bits(RSA_get0_n(key)));
    // In the order of the record; the first number that does not fit ends it.
    static_cast<void>(store(RSA_get0_n(key), record.modulus) && store(RSA_get0_e(key), record.publicExponent) &&
                      store(RSA_get0_d(key), record.exponent) && store(RSA_get0_p(key), record.prime1) &&
                      store(RSA_get0_q(key), record.prime2) && store(RSA_get0_dmp1(key), record.primeExponent1) &&
                      store(RSA_get0_dmq1(key), record.primeExponent2) &&
                      store(RSA_get0_iqmp(key), record.coefficient));
}

Status generate(int bits, RsaPublicKeyRecord *publicKey, RsaPrivateKeyRecord *privateKey) {
    if (publicKey == nullptr || privateKey == nullptr)
        return KACERT_InvalidItemErr;
    const RsaPtr key(RSA_new());
    const Number e(BN_new());
    const bool made = key != nullptr && e != nullptr && BN_set_word(e.get(), RSA_F4) == 1 &&
                      RSA_generate_key_ex(key.get(), bits, e.get(), nullptr) == 1;
    ERR_clear_error();
    if (!made || !storePublic(key.get(), *publicKey))
        return KAPKCS7_GenKeyErr;
    storePrivate(key.get(), *privateKey);
    return KACERT_Ok;
}

} // namespace

int32_t KA_PKCS7_GenRSAKeyPair(RsaPublicKeyRecord *publicKey, RsaPrivateKeyRecord *privateKey) {
    return generate(1024, publicKey, privateKey);
}

int32_t KA_PKCS7_GenRSAKeyPair_2048(RsaPublicKeyRecord *publicKey, RsaPrivateKeyRecord *privateKey) {
    return generate(2048, publicKey, privateKey);
}

int32_t KA_PKCS7_RSAPublicEncrypt(uint8_t *output, uint32_t *outputLength, const uint8_t *input, uint32_t inputLength,
                                  const RsaPublicKeyRecord *key) {
    return runRsa(RSA_public_encrypt, output, outputLength, input, inputLength, key);
}

int32_t KA_PKCS7_RSAPublicDecrypt(uint8_t *output, uint32_t *outputLength, const uint8_t *input, uint32_t inputLength,
                                  const RsaPublicKeyRecord *key) {
    return runRsa(RSA_public_decrypt, output, outputLength, input, inputLength, key);
}

int32_t KA_PKCS7_RSAPrivateEncrypt(uint8_t *output, uint32_t *outputLength, const uint8_t *input, uint32_t inputLength,
                                   const RsaPrivateKeyRecord *key) {
    return runRsa(RSA_private_encrypt, output, outputLength, input, inputLength, key);
}

int32_t KA_PKCS7_RSAPrivateDecrypt(uint8_t *output, uint32_t *outputLength, const uint8_t *input, uint32_t inputLength,
                                   const RsaPrivateKeyRecord *key) {
    return runRsa(privateDecrypt, output, outputLength, input, inputLength, key);
}

int32_t KA_PKCS7_GenerateBytes(uint8_t *output, const uint32_t *length) {
    if (length == nullptr || (output == nullptr && *length > 0))
        return KACERT_InvalidItemErr;
    uint32_t done = 0;
    while (done < *length) {
        const uint32_t part = *length - done > INT_MAX ? uint32_t{INT_MAX} : *length - done;
        if (RAND_bytes(output + done, static_cast<int>(part)) != 1) {
            ERR_clear_error();
            return KAPKCS7_RsaOperationErr;
        }
        done += part;
    }
    return KACERT_Ok;
}

int32_t KA_PKCS7_SignedData(int32_t digestId, const uint8_t *input, uint32_t inputLength, uint8_t *signature,
                            uint32_t *signatureLength, const RsaPrivateKeyRecord *key) {
    const DigestAlgorithm *algorithm = digestAlgorithm(digestId);
    if (algorithm == nullptr)
        return KAPKCS7_DigestAlgErr;
    if ((input == nullptr && inputLength > 0) || signature == nullptr || signatureLength == nullptr || key == nullptr)
        return KACERT_InvalidItemErr;
    Secret<LongestDigestInfo> digestInfo;
    memcpy(digestInfo.octets, algorithm->prefix.data(), algorithm->prefix.size());
    algorithm->digest({Bytes(input, inputLength)}, digestInfo.octets + algorithm->prefix.size());
    const RsaPtr rsa = loadKey(*key);
    if (rsa == nullptr) {
        ERR_clear_error();
        return KAPKCS7_SignErr;
    }
    *signatureLength = operate(RSA_private_encrypt, rsa.get(),
                               Bytes(digestInfo.octets, algorithm->prefix.size() + algorithm->size), signature);
    return *signatureLength != OperationFailed ? KACERT_Ok : KAPKCS7_RsaOperationErr;
}

int32_t KA_PKCS7_VerifySignature(int32_t digestId, const uint8_t *input, uint32_t inputLength, const uint8_t *signature,
                                 uint32_t signatureLength, const RsaPublicKeyRecord *key, int32_t *verdict) {
    const DigestAlgorithm *algorithm = digestAlgorithm(digestId);
    if (algorithm == nullptr)
        return KAPKCS7_DigestAlgErr;
    if ((input == nullptr && inputLength > 0) || (signature == nullptr && signatureLength > 0) || key == nullptr ||
        verdict == nullptr)
        return KACERT_InvalidItemErr;
    Secret<LongestDigest> digest;
    algorithm->digest({Bytes(input, inputLength)}, digest.octets);
    const RsaPtr rsa = loadKey(*key);
    if (rsa == nullptr) {
        ERR_clear_error();
        return KACERT_VerifySignatureErr;
    }
    Secret<LargestModulus> block;
    const uint32_t length = operate(RSA_public_decrypt, rsa.get(), {signature, signatureLength}, block.octets);
    *verdict = length != OperationFailed && length >= algorithm->size &&
                       memcmp(block.octets + length - algorithm->size, digest.octets, algorithm->size) == 0
                   ? 1
                   : 0;
    return KACERT_Ok;
}
