// Signing one certificate with a key of 2,048 bits, by the reference hook and by one that holds a prepared key, beside
// the private operation alone.
// The operation on a prepared key is in the deprecated low-level interface alone.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "party.h"

#include <benchmark/benchmark.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <algorithm>

namespace karil_bench {

const KeyPair &keyPair() {
    static const KeyPair pair = [] {
        KeyPair made;
        must(KA_PKCS7_GenRSAKeyPair_2048(&made.open, &made.secret) == KACERT_Ok, "karil makes a key");
        return made;
    }();
    return pair;
}

// A hook's parameter is copied octet by octet: the key goes by its address.
int32_t signingHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                    void *parameter) {
    if (output == nullptr)
        return 0;
    return KA_PKCS7_SignedData(KA_DIGEST_SHA1, input, inputLength, output, outputLength,
                               *static_cast<const RsaPrivateKeyRecord **>(parameter));
}

namespace {

using RsaPtr = Owned<RSA, RSA_free>;
constexpr uint32_t SignatureLength = 256;

const RsaPrivateKeyRecord &privateKey() {
    return keyPair().secret;
}

Octets signCertificate() {
    const RsaPrivateKeyRecord *key = &privateKey();
    return encodeWithKaril(buildWithKaril(signingHook, &key, sizeof key).get());
}

// What the hook does, without the certificate.
void signOctets(Bytes tbs, uint8_t *signature) {
    uint32_t length = 0;
    must(KA_PKCS7_SignedData(KA_DIGEST_SHA1, tbs.data(), static_cast<uint32_t>(tbs.size()), signature, &length,
                             &privateKey()) == KACERT_Ok &&
             length == SignatureLength,
         "karil signs");
}

BIGNUM *number(std::span<const uint8_t> octets) {
    return BN_bin2bn(octets.data(), static_cast<int>(octets.size()), nullptr);
}

RsaPtr preparedKey() {
    const RsaPrivateKeyRecord &key = privateKey();
    RsaPtr rsa(RSA_new());
    must(RSA_set0_key(rsa.get(), number(key.modulus), number(key.publicExponent), number(key.exponent)) == 1 &&
             RSA_set0_factors(rsa.get(), number(key.prime1), number(key.prime2)) == 1 &&
             RSA_set0_crt_params(rsa.get(), number(key.primeExponent1), number(key.primeExponent2),
                                 number(key.coefficient)) == 1,
         "libcrypto takes the key");
    return rsa;
}

void withKaril(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(signCertificate().data());
}

void withOperationAlone(benchmark::State &state) {
    const Octets tbs = tbsOf(signCertificate());
    uint8_t signature[SignatureLength];
    for (auto _ : state)
        signOctets(tbs, signature);
}

void withPreparedKey(benchmark::State &state) {
    const RsaPtr key = preparedKey();
    const uint8_t digestInfo[35] = {0x30, 0x21};
    uint8_t signature[SignatureLength];
    for (auto _ : state)
        must(RSA_private_encrypt(sizeof digestInfo, digestInfo, signature, key.get(), RSA_PKCS1_PADDING) ==
                 static_cast<int>(SignatureLength),
             "libcrypto signs");
}

// Digest and private operation of a key that both libraries' users have at hand.
void signPrepared(Bytes tbs, uint8_t *signature, EVP_PKEY *key) {
    const Owned<EVP_MD_CTX, EVP_MD_CTX_free> ctx(EVP_MD_CTX_new());
    size_t length = SignatureLength;
    must(EVP_DigestSignInit(ctx.get(), nullptr, EVP_sha1(), nullptr, key) == 1 &&
             EVP_DigestSign(ctx.get(), signature, &length, tbs.data(), tbs.size()) == 1 && length == SignatureLength,
         "libcrypto signs");
}

// A hook of a user's: its parameter is the address of the prepared key.
int32_t preparedHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                     void *parameter) {
    *outputLength = SignatureLength;
    if (output != nullptr)
        signPrepared({input, inputLength}, output, *static_cast<EVP_PKEY **>(parameter));
    return 0;
}

Octets signCertificateWithHook() {
    const EVP_PKEY *key = party().key.get();
    return encodeWithKaril(buildWithKaril(preparedHook, &key, sizeof key).get());
}

void withHook(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(signCertificateWithHook().data());
}

void withHookAlone(benchmark::State &state) {
    const Octets tbs = tbsOf(signCertificate());
    uint8_t signature[SignatureLength];
    for (auto _ : state)
        signPrepared(tbs, signature, party().key.get());
}

// What karil adds is a fiftieth of the whole: these take turns more often than the others do.
struct Row {
    const char *name;
    void (*measure)(benchmark::State &);
};
constexpr Row Rows[] = {
    {"sign-cert/karil", withKaril},
    {"sign-cert/private-operation", withOperationAlone},
    {"sign-cert/libcrypto", withPreparedKey},
    {"sign-cert-prepared/karil", withHook},
    {"sign-cert-prepared/libcrypto", withHookAlone},
};

} // namespace

void registerSign() {
    const Octets certificate = signCertificate();
    uint8_t signature[SignatureLength];
    signOctets(tbsOf(certificate), signature);
    must(std::equal(std::begin(signature), std::end(signature), certificate.end() - SignatureLength),
         "the certificate ends in the signature of its to-be-signed part");
    must(signCertificateWithHook() == certificate, "both hooks sign alike");
    for (const Row &row : Rows)
        benchmark::RegisterBenchmark(row.name, row.measure)->Repetitions(21)->MinTime(0.1);
}

} // namespace karil_bench
