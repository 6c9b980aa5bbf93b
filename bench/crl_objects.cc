// CRLs built and decoded by each library in its own way.
#include "crl.h"
#include "mbedtls_time.h"
#include "sample.h"

#include <benchmark/benchmark.h>
#include <mbedtls/x509_crl.h>
#include <openssl/x509v3.h>

namespace karil_bench {

namespace {

constexpr uint64_t FirstSerial = 0x5102030405060708;
constexpr int32_t FirstDate = 1500000000;
constexpr int32_t DateStep = 1789; // seconds; 100,000 entries lie in some six years

int32_t dateOf(int32_t entry) {
    return FirstDate + entry % 200000 * DateStep + entry / 200000;
}
// The same ones each time, in no order: multiples of a large odd number, of which the low 32 bits are taken.
int32_t randomDateOf(int32_t entry) {
    constexpr uint32_t First = 1100000000; // in 2004
    constexpr uint32_t Range = 600000000;
    return static_cast<int32_t>(First + static_cast<uint32_t>(entry) * 0x9E3779B1u % Range);
}
// keyCompromise to cessationOfOperation (RFC 5280 5.3.1)
uint8_t reasonOf(int32_t entry) {
    return static_cast<uint8_t>(1 + entry % 5);
}

void set(CrlEncodeCtx *ctx, int32_t id, Bytes value) {
    must(KACert_SetCrlAttributeChar(ctx, id, value.data(), static_cast<int32_t>(value.size())) == KACERT_Ok,
         "karil takes the value");
}

void addEntry(CrlEncodeCtx *ctx, int32_t entry, int32_t date) {
    uint8_t serial[8];
    for (int i = 0; i < 8; ++i)
        serial[i] = static_cast<uint8_t>((FirstSerial + static_cast<uint64_t>(entry)) >> (56 - 8 * i));
    const uint8_t reason = reasonOf(entry);
    set(ctx, CRL_CERT_SERIALNUMBER, serial);
    must(KACert_SetCrlAttributeInt(ctx, CRL_CERT_REVOCATIONDATE, date) == KACERT_Ok, "karil takes a date");
    set(ctx, CRLEX_CRLREASON, Bytes(&reason, 1));
}

template <class T, void (*Free)(T *)> using Ssl = std::unique_ptr<T, By<Free>>;

void addEntry(X509_CRL *crl, int32_t entry) {
    X509_REVOKED *revoked = X509_REVOKED_new();
    const Ssl<ASN1_INTEGER, ASN1_INTEGER_free> serial(ASN1_INTEGER_new());
    ASN1_INTEGER_set_uint64(serial.get(), FirstSerial + static_cast<uint64_t>(entry));
    X509_REVOKED_set_serialNumber(revoked, serial.get());
    const Ssl<ASN1_TIME, ASN1_TIME_free> date(ASN1_TIME_set(nullptr, dateOf(entry)));
    X509_REVOKED_set_revocationDate(revoked, date.get());
    const Ssl<ASN1_ENUMERATED, ASN1_ENUMERATED_free> reason(ASN1_ENUMERATED_new());
    ASN1_ENUMERATED_set(reason.get(), reasonOf(entry));
    must(X509_REVOKED_add1_ext_i2d(revoked, NID_crl_reason, reason.get(), 0, 0) == 1, "libcrypto takes a reason");
    must(X509_CRL_add0_revoked(crl, revoked) == 1, "libcrypto takes an entry");
}

void releaseKaril(void *object) {
    KACert_DestroyCrlDecodeCtx(static_cast<CrlDecodeCtx *>(object));
}
void releaseLibcrypto(void *object) {
    X509_CRL_free(static_cast<X509_CRL *>(object));
}
void releaseMbedtls(void *object) {
    mbedtls_x509_crl_free(static_cast<mbedtls_x509_crl *>(object));
    delete static_cast<mbedtls_x509_crl *>(object);
}

} // namespace

Octets buildCrlWithKaril(int32_t entries, Dates dates) {
    const CrlPtr owned = karil_test::filled<CrlEncodeCtx>(copyingHook);
    CrlEncodeCtx *ctx = owned.get();
    KACert_SetCrlAttributeInt(ctx, CRL_VERSION, 1);
    KACert_SetCrlAttributeInt(ctx, CRL_THISUPDATE, sample::NotBefore);
    KACert_SetCrlAttributeInt(ctx, CRL_NEXTUPDATE, sample::NotAfter);
    for (int32_t entry = 0; entry < entries; ++entry)
        addEntry(ctx, entry, dates == Dates::InOrder ? dateOf(entry) : randomDateOf(entry));
    const Octets der = karil_test::encode(*ctx);
    must(!der.empty(), "karil encodes the CRL");
    return der;
}

Octets buildCrlTbsWithLibcrypto(int32_t entries) {
    // A CRL without entries brings what stands around them.
    static const Octets frame = buildCrlWithKaril(0);
    const uint8_t *at = frame.data();
    const Ssl<X509_CRL, X509_CRL_free> crl(d2i_X509_CRL(nullptr, &at, static_cast<long>(frame.size())));
    must(crl != nullptr, "libcrypto decodes a CRL without entries");
    for (int32_t entry = 0; entry < entries; ++entry)
        addEntry(crl.get(), entry);
    uint8_t *der = nullptr;
    const int length = i2d_re_X509_CRL_tbs(crl.get(), &der);
    must(length > 0, "libcrypto encodes the CRL");
    const Octets octets(der, der + length);
    OPENSSL_free(der);
    return octets;
}

HeldCrl holdWithKaril(Bytes der) {
    CrlDecodeCtx *ctx = nullptr;
    must(KACert_CreateCrlDecodeCtx(&ctx) == KACERT_Ok, "karil makes a context");
    must(KACert_DecodeCrl(ctx, der.data(), static_cast<uint32_t>(der.size())) == KACERT_Ok, "karil decodes the CRL");
    return {ctx, releaseKaril};
}

HeldCrl holdWithLibcrypto(Bytes der) {
    const uint8_t *at = der.data();
    X509_CRL *crl = d2i_X509_CRL(nullptr, &at, static_cast<long>(der.size()));
    must(crl != nullptr, "libcrypto decodes the CRL");
    return {crl, releaseLibcrypto};
}

HeldCrl holdWithMbedtls(Bytes der) {
    auto *crl = new mbedtls_x509_crl;
    mbedtls_x509_crl_init(crl);
    must(mbedtls_x509_crl_parse_der(crl, der.data(), der.size()) == 0, "mbedTLS decodes the CRL");
    return {crl, releaseMbedtls};
}

HeldCrl holdWithMbedtlsAndMktime(Bytes der) {
    const HeldCrl held = holdWithMbedtls(der);
    const auto *crl = static_cast<const mbedtls_x509_crl *>(held.object);
    benchmark::DoNotOptimize(secondsOf(crl->this_update) + secondsOf(crl->next_update));
    for (const mbedtls_x509_crl_entry *entry = &crl->entry; entry != nullptr; entry = entry->next)
        benchmark::DoNotOptimize(secondsOf(entry->revocation_date));
    return held;
}

} // namespace karil_bench
