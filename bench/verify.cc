// Verifying one certificate with a key of 2,048 bits, in one call and by a user who holds a prepared key, beside the
// digest and the public operation alone.
// The operation on a prepared key is in the deprecated low-level interface alone.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "party.h"

#include <benchmark/benchmark.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>

#include <cstring>

namespace karil_bench {

namespace {

using RsaPtr = Owned<RSA, RSA_free>;
constexpr uint32_t SignatureLength = 256;

Octets answer(CertDecodeCtx *ctx, int32_t id) {
    uint32_t length = 0;
    must(KACert_GetCertAttributeChar(ctx, id, nullptr, &length) == KACERT_Ok, "karil tells a length");
    Octets octets(length);
    must(KACert_GetCertAttributeChar(ctx, id, octets.data(), &length) == KACERT_Ok, "karil answers");
    return octets;
}

void set(CertEncodeCtx *ctx, int32_t id, const Octets &value) {
    must(KACert_SetCertAttributeChar(ctx, id, value.data(), static_cast<int32_t>(value.size())) == KACERT_Ok,
         "karil takes a value");
}

// A certificate with every extension, and the one of its issuer, which has none.
struct Link {
    Octets issuer;
    Octets subject;
    Octets tbs;
    Octets signature;
};

Octets issuerOf(CertDecodeCtx *subject) {
    CertEncodeCtx *raw = nullptr;
    must(KACert_CreateCertEncodeCtx(&raw) == KACERT_Ok, "karil makes a context");
    const CertPtr ctx(raw);
    for (const int32_t id : {CERT_SERIALNUMBER, CERT_INNER_SIGNATUREALGORITHM, CERT_OUTER_SIGNATUREALGORITHM})
        set(raw, id, answer(subject, id));
    for (const int32_t id : {CERT_ISSUER_DERDN, CERT_SUBJECT_DERDN})
        set(raw, id, answer(subject, CERT_ISSUER_DERDN));
    set(raw, CERT_PUBLICKEY_ALGORITHM, answer(subject, CERT_INNER_SIGNATUREALGORITHM));
    Octets key(300);
    uint32_t length = 0;
    must(KA_Encode_PublicKey(keyPair().open.modulus, key.data(), &length) == KACERT_Ok, "karil writes a key");
    key.resize(length);
    set(raw, CERT_SUBJECTPUBLICKEYINFO, key);
    for (const int32_t id : {CERT_VALIDFROM, CERT_VALIDTO}) {
        int32_t value = 0;
        must(KACert_GetCertAttributeInt(subject, id, &value) == KACERT_Ok &&
                 KACert_SetCertAttributeInt(raw, id, value) == KACERT_Ok,
             "karil takes a time");
    }
    KACert_SetCertSignFunc(raw, copyingHook, nullptr, 0);
    return encodeWithKaril(raw);
}

const Link &sample() {
    static const Link link = [] {
        const RsaPrivateKeyRecord *key = &keyPair().secret;
        Link made;
        made.subject = encodeWithKaril(buildWithKaril(signingHook, &key, sizeof key).get());
        CertDecodeCtx *raw = nullptr;
        must(KACert_CreateCertDecodeCtx(&raw) == KACERT_Ok, "karil makes a context");
        const CertPtr ctx(raw);
        must(KACert_DecodeCert(raw, made.subject.data(), static_cast<uint32_t>(made.subject.size())) == KACERT_Ok,
             "karil decodes it");
        made.issuer = issuerOf(raw);
        made.tbs = answer(raw, CERT_TBS_CERTIFICATE);
        made.signature = answer(raw, CERT_CA_SIGNATURE);
        return made;
    }();
    return link;
}

void withKaril(benchmark::State &state) {
    const Link &link = sample();
    for (auto _ : state)
        must(KA_VerifyCert(link.issuer.data(), static_cast<uint32_t>(link.issuer.size()), link.subject.data(),
                           static_cast<uint32_t>(link.subject.size())) == KACERT_Ok,
             "karil verifies it");
}

// What the check ends in, without certificates.
void withOperationAlone(benchmark::State &state) {
    const Link &link = sample();
    for (auto _ : state) {
        int32_t verdict = 0;
        must(KA_PKCS7_VerifySignature(KA_DIGEST_SHA1, link.tbs.data(), static_cast<uint32_t>(link.tbs.size()),
                                      link.signature.data(), SignatureLength, &keyPair().open, &verdict) == KACERT_Ok &&
                 verdict == 1,
             "karil verifies the signature");
    }
}

BIGNUM *number(std::span<const uint8_t> octets) {
    return BN_bin2bn(octets.data(), static_cast<int>(octets.size()), nullptr);
}

void withPreparedKey(benchmark::State &state) {
    const Link &link = sample();
    const RsaPtr key(RSA_new());
    must(RSA_set0_key(key.get(), number(keyPair().open.modulus), number(keyPair().open.exponent), nullptr) == 1,
         "libcrypto takes the key");
    uint8_t block[SignatureLength];
    uint8_t digest[SHA_DIGEST_LENGTH];
    for (auto _ : state) {
        SHA_CTX sha1;
        SHA1_Init(&sha1);
        SHA1_Update(&sha1, link.tbs.data(), link.tbs.size());
        SHA1_Final(digest, &sha1);
        const int size =
            RSA_public_decrypt(SignatureLength, link.signature.data(), block, key.get(), RSA_PKCS1_PADDING);
        must(size == 35 && memcmp(block + 15, digest, sizeof digest) == 0, "libcrypto opens the signature");
    }
}

// Decoded by karil, verified by libcrypto with the key of the issuer that a user has prepared.
void decodedAndVerified(benchmark::State &state) {
    const Link &link = sample();
    EVP_PKEY *key = party().key.get();
    for (auto _ : state) {
        const CertPtr ctx = create<CertDecodeCtx>();
        must(karil_test::decode(*ctx, link.subject) == KACERT_Ok, "karil decodes it");
        const Owned<EVP_MD_CTX, EVP_MD_CTX_free> digest(EVP_MD_CTX_new());
        must(EVP_DigestVerifyInit(digest.get(), nullptr, EVP_sha1(), nullptr, key) == 1 &&
                 EVP_DigestVerify(digest.get(), ctx->signature.data, ctx->signature.length, ctx->tbs.data,
                                  ctx->tbs.length) == 1,
             "libcrypto verifies the signature");
    }
}

void verifiedByLibcrypto(benchmark::State &state) {
    const Link &link = sample();
    for (auto _ : state) {
        const uint8_t *at = link.subject.data();
        const Owned<X509, X509_free> x509(d2i_X509(nullptr, &at, static_cast<long>(link.subject.size())));
        must(x509 != nullptr && X509_verify(x509.get(), party().key.get()) == 1, "libcrypto verifies it");
    }
}

// As with signing, these take turns more often than the others do.
struct Row {
    const char *name;
    void (*measure)(benchmark::State &);
};
constexpr Row Rows[] = {
    {"verify-cert/karil", withKaril},
    {"verify-cert/public-operation", withOperationAlone},
    {"verify-cert/libcrypto", withPreparedKey},
    {"verify-cert-prepared/karil", decodedAndVerified},
    {"verify-cert-prepared/libcrypto", verifiedByLibcrypto},
};

} // namespace

void registerVerify() {
    for (const Row &row : Rows)
        benchmark::RegisterBenchmark(row.name, row.measure)->Repetitions(21)->MinTime(0.1);
}

} // namespace karil_bench
