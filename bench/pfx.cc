// PFX files: one key with three certificates, 2,000 rounds, under the old ciphers; and how the time grows with the
// certificates.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "bench.h"

#include <benchmark/benchmark.h>
#include <openssl/des.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/rc2.h>
#include <openssl/sha.h>

namespace karil_bench {

namespace {

constexpr std::string_view Password = "a good password";
constexpr int Rounds = 2000;
constexpr int Certificates = 3;

using PfxPtr = Owned<PfxCtx, KA_PKCS12_DestroyEncodePFX>;
using P12 = Owned<PKCS12, PKCS12_free>;
using KeyPtr = Owned<EVP_PKEY, EVP_PKEY_free>;

// libcrypto with its old ciphers, in a context of its own.
OSSL_LIB_CTX *legacy() {
    static OSSL_LIB_CTX *const context = [] {
        OSSL_LIB_CTX *made = OSSL_LIB_CTX_new();
        must(OSSL_PROVIDER_load(made, "default") != nullptr && OSSL_PROVIDER_load(made, "legacy") != nullptr,
             "the old ciphers are there");
        return made;
    }();
    return context;
}

void freeCertificates(STACK_OF(X509) * all) {
    sk_X509_pop_free(all, X509_free);
}
using CertificateList = Owned<STACK_OF(X509), freeCertificates>;

// The same key and certificates for both.
struct Sample {
    KeyPtr key = KeyPtr(EVP_RSA_gen(2048));
    Octets keyDer;
    CertificateList list = CertificateList(sk_X509_new_null());

    Sample() {
        uint8_t *der = nullptr;
        const int size = i2d_PrivateKey(key.get(), &der);
        must(size > 0, "libcrypto writes a key");
        keyDer.assign(der, der + size);
        OPENSSL_free(der);
        for (int i = 0; i < Certificates; ++i) {
            const uint8_t *at = corpus()[static_cast<size_t>(i)].data();
            const auto length = static_cast<long>(corpus()[static_cast<size_t>(i)].size());
            must(sk_X509_push(list.get(), d2i_X509(nullptr, &at, length)) > 0, "libcrypto reads a certificate");
        }
    }
};
const Sample &sample() {
    static const Sample one;
    return one;
}

PfxPtr created() {
    PfxCtx *ctx = nullptr;
    must(KA_PKCS12_CreateEncodePfx(&ctx) == KACERT_Ok, "karil makes a context");
    return PfxPtr(ctx);
}

// Into octets that have the room.
uint32_t makeWithKaril(Octets &file) {
    const PfxPtr ctx = created();
    bool isDone = KA_PKCS12_SetPrivateKey(ctx.get(), sample().keyDer.data(),
                                          static_cast<int32_t>(sample().keyDer.size())) == KACERT_Ok;
    for (size_t i = 0; i < Certificates; ++i)
        isDone &= KA_PKCS12_SetCertificate(ctx.get(), corpus()[i].data(), static_cast<int32_t>(corpus()[i].size())) ==
                  KACERT_Ok;
    uint32_t length = 0;
    const Bytes password = bytesOf(Password);
    isDone &= KA_PKCS12_EncodePFX(ctx.get(), password.data(), static_cast<int32_t>(password.size()), file.data(),
                                  &length) == KACERT_Ok;
    must(isDone, "karil makes a file");
    return length;
}

uint32_t makeWithLibcrypto(Octets &file) {
    const P12 p12(PKCS12_create_ex(Password.data(), nullptr, sample().key.get(), nullptr, sample().list.get(),
                                   NID_pbe_WithSHA1And3_Key_TripleDES_CBC, NID_pbe_WithSHA1And40BitRC2_CBC, Rounds, -1,
                                   0, legacy(), nullptr));
    must(p12 != nullptr && PKCS12_set_mac(p12.get(), Password.data(), -1, nullptr, 20, Rounds, EVP_sha1()) == 1,
         "libcrypto makes a file");
    uint8_t *at = file.data();
    return static_cast<uint32_t>(i2d_PKCS12(p12.get(), &at));
}

// The digests of six derived blocks (two for the key of triple DES, one for each other key and IV), and the ciphers.
uint32_t workAlone(Octets &file) {
    uint8_t digest[SHA_DIGEST_LENGTH] = {};
    for (int i = 0; i < 6 * Rounds; ++i) {
        SHA_CTX state;
        SHA1_Init(&state);
        SHA1_Update(&state, digest, sizeof digest);
        SHA1_Final(digest, &state);
        benchmark::DoNotOptimize(digest);
    }
    DES_cblock iv = {};
    DES_key_schedule schedules[3] = {};
    DES_ede3_cbc_encrypt(file.data(), file.data(), static_cast<long>(sample().keyDer.size()) & ~7, &schedules[0],
                         &schedules[1], &schedules[2], &iv, DES_ENCRYPT);
    RC2_KEY key;
    RC2_set_key(&key, 5, digest, 40);
    long size = 0;
    for (size_t i = 0; i < Certificates; ++i)
        size += static_cast<long>(corpus()[i].size());
    RC2_cbc_encrypt(file.data(), file.data(), size & ~7, &key, iv, RC2_ENCRYPT);
    return static_cast<uint32_t>(size);
}

uint32_t openWithKaril(Octets &file) {
    const PfxPtr ctx = created();
    const Bytes password = bytesOf(Password);
    int32_t verdict = 0;
    must(KA_PKCS12_DecodePFX(ctx.get(), password.data(), static_cast<int32_t>(password.size()), file.data(),
                             static_cast<int32_t>(file.size()), &verdict) == KACERT_Ok &&
             verdict == PKCS7_VERDICT_GOOD && ctx->certificateCount == Certificates,
         "karil opens a file");
    return ctx->privateKey.length;
}

uint32_t openWithLibcrypto(Octets &file) {
    PKCS12 *p12 = PKCS12_init_ex(NID_pkcs7_data, legacy(), nullptr);
    const uint8_t *at = file.data();
    EVP_PKEY *key = nullptr;
    X509 *certificate = nullptr;
    STACK_OF(X509) *others = nullptr;
    must(d2i_PKCS12(&p12, &at, static_cast<long>(file.size())) != nullptr, "libcrypto reads a file");
    const P12 owned(p12);
    must(PKCS12_parse(p12, Password.data(), &key, &certificate, &others) == 1, "libcrypto opens a file");
    const KeyPtr ownedKey(key);
    const CertificateList list(others);
    must(sk_X509_num(others) == Certificates, "libcrypto finds the certificates");
    return 1;
}

void run(benchmark::State &state, uint32_t (*work)(Octets &), bool isOpening) {
    Octets file(16384);
    if (isOpening)
        file.resize(makeWithKaril(file));
    for (auto _ : state)
        benchmark::DoNotOptimize(work(file));
}

// Certificates set with an attribute each by index, and both got by index.
void grow(benchmark::State &state, int32_t count) {
    const uint8_t octets[] = {0x05, 0x00};
    uint8_t area[64];
    uint32_t length = 0;
    for (auto _ : state) {
        const PfxPtr ctx = created();
        bool isDone = true;
        for (int32_t i = 1; i <= count; ++i)
            isDone &= KA_PKCS12_SetCertificate(ctx.get(), octets, sizeof octets) == KACERT_Ok &&
                      KA_PKCS12_SetCertificateBag_Attribute(ctx.get(), octets, 1, octets, 2, i) == KACERT_Ok;
        for (int32_t i = 1; i <= count; ++i)
            isDone &= KA_PKCS12_GetCertificate(ctx.get(), area, &length, i) == KACERT_Ok &&
                      KA_PKCS12_GetCertificateBag_Attribute(ctx.get(), area, &length, area, &length, i, 1) == KACERT_Ok;
        must(isDone && length == 2, "certificates are set and got");
    }
    state.counters["items"] = count;
}

} // namespace

void registerPfx() {
    benchmark::RegisterBenchmark("make-pfx/karil", run, makeWithKaril, false);
    benchmark::RegisterBenchmark("make-pfx/libcrypto", run, makeWithLibcrypto, false);
    benchmark::RegisterBenchmark("make-pfx/work", run, workAlone, false);
    benchmark::RegisterBenchmark("open-pfx/karil", run, openWithKaril, true);
    benchmark::RegisterBenchmark("open-pfx/libcrypto", run, openWithLibcrypto, true);
    benchmark::RegisterBenchmark("growth-pfx/karil", grow, 10000);
    benchmark::RegisterBenchmark("growth-pfx/itself", grow, 100);
}

} // namespace karil_bench
