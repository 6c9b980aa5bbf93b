// Asking a certificate for what a user of it asks for.
#include "bench.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <ctime>

namespace karil_bench {

namespace {

using Query = void (*)(Bytes der);

// Every area is as large as what any certificate of the corpus answers.
void queryWithKaril(Bytes der) {
    constexpr int32_t Ids[] = {
        CERT_SUBJECT_DN,          CERT_ISSUER_DN,
        CERT_SERIALNUMBER,        CERT_SUBJECTPUBLICKEYINFO,
        CERTEX_KEYUSAGE,          CERTEX_EXTKEY_USAGE,
        CERT_SUBJECT_ALT_DNSNAME, CERT_SUBJECT_ALT_RFC822NAME,
        CERT_SUBJECT_ALT_URI,     CERT_SUBJECT_ALT_IPADDRESS,
    };
    uint8_t answer[8192];
    uint32_t length = 0;
    int32_t from = 0;
    int32_t to = 0;
    CertDecodeCtx *ctx = nullptr;
    must(KACert_CreateCertDecodeCtx(&ctx) == KACERT_Ok, "karil makes a context");
    const CertPtr certificate(ctx);
    must(KACert_DecodeCert(ctx, der.data(), static_cast<uint32_t>(der.size())) == KACERT_Ok, "karil decodes");
    for (int32_t id : Ids)
        must(KACert_GetCertAttributeChar(ctx, id, answer, &length) == KACERT_Ok, "karil answers");
    must(KACert_GetCertAttributeInt(ctx, CERT_VALIDFROM, &from) == KACERT_Ok, "karil has the first date");
    must(KACert_GetCertAttributeInt(ctx, CERT_VALIDTO, &to) == KACERT_Ok, "karil has the last date");
    benchmark::DoNotOptimize(from + to);
}

using X509Ptr = Owned<X509, X509_free>;

X509Ptr decoded(Bytes der) {
    const uint8_t *at = der.data();
    X509Ptr certificate(d2i_X509(nullptr, &at, static_cast<long>(der.size())));
    must(certificate != nullptr, "libcrypto decodes");
    return certificate;
}

template <class T> T *extensionOf(const X509 *certificate, int nid) {
    return static_cast<T *>(X509_get_ext_d2i(certificate, nid, nullptr, nullptr));
}

void queryWithLibcrypto(Bytes der) {
    char text[8192];
    tm from = {};
    tm to = {};
    const X509Ptr certificate = decoded(der);
    const X509 *x509 = certificate.get();
    must(X509_NAME_oneline(X509_get_subject_name(x509), text, sizeof text) != nullptr, "libcrypto has the subject");
    must(X509_NAME_oneline(X509_get_issuer_name(x509), text, sizeof text) != nullptr, "libcrypto has the issuer");
    must(ASN1_STRING_length(X509_get0_serialNumber(x509)) > 0, "libcrypto has the serial number");
    must(EVP_PKEY_get_bits(X509_get0_pubkey(x509)) > 0, "libcrypto has the key");
    must(ASN1_TIME_to_tm(X509_get0_notBefore(x509), &from) == 1, "libcrypto has the first date");
    must(ASN1_TIME_to_tm(X509_get0_notAfter(x509), &to) == 1, "libcrypto has the last date");
    Owned<ASN1_BIT_STRING, ASN1_BIT_STRING_free> usage(extensionOf<ASN1_BIT_STRING>(x509, NID_key_usage));
    Owned<EXTENDED_KEY_USAGE, EXTENDED_KEY_USAGE_free> purposes(
        extensionOf<EXTENDED_KEY_USAGE>(x509, NID_ext_key_usage));
    Owned<GENERAL_NAMES, GENERAL_NAMES_free> names(extensionOf<GENERAL_NAMES>(x509, NID_subject_alt_name));
    benchmark::DoNotOptimize(usage.get());
    benchmark::DoNotOptimize(purposes.get());
    benchmark::DoNotOptimize(names.get());
}

Bytes magnitude(Bytes number) {
    return {std::find_if(number.begin(), number.end(), [](uint8_t octet) { return octet != 0; }), number.end()};
}

// Both must have read the same: serial numbers and dates are compared before anything is timed.
void mustAgree(Bytes der) {
    uint8_t serial[64] = {};
    uint32_t length = 0;
    int32_t from = 0;
    tm expected = {};
    CertDecodeCtx *ctx = nullptr;
    must(KACert_CreateCertDecodeCtx(&ctx) == KACERT_Ok, "karil makes a context");
    const CertPtr certificate(ctx);
    must(KACert_DecodeCert(ctx, der.data(), static_cast<uint32_t>(der.size())) == KACERT_Ok, "karil decodes");
    must(KACert_GetCertAttributeChar(ctx, CERT_SERIALNUMBER, nullptr, &length) == KACERT_Ok && length <= sizeof serial,
         "a serial number has at most 64 octets");
    must(KACert_GetCertAttributeChar(ctx, CERT_SERIALNUMBER, serial, &length) == KACERT_Ok, "karil has the serial");
    must(KACert_GetCertAttributeInt(ctx, CERT_VALIDFROM, &from) == KACERT_Ok, "karil has the first date");
    const X509Ptr peer = decoded(der);
    const ASN1_INTEGER *number = X509_get0_serialNumber(peer.get());
    const Bytes expectedSerial(ASN1_STRING_get0_data(number), static_cast<size_t>(ASN1_STRING_length(number)));
    must(std::ranges::equal(magnitude({serial, length}), magnitude(expectedSerial)),
         "both read the same serial number");
    must(ASN1_TIME_to_tm(X509_get0_notBefore(peer.get()), &expected) == 1, "libcrypto has the first date");
    must(mktime(&expected) == from, "both read the same date");
}

void queryAll(benchmark::State &state, Query query) {
    for (auto _ : state)
        for (const Octets &der : corpus())
            query(der);
    state.counters["items"] = static_cast<double>(corpus().size());
}

} // namespace

void registerQuery() {
    for (const Octets &der : corpus())
        mustAgree(der);
    benchmark::RegisterBenchmark("query-cert/karil", queryAll, queryWithKaril);
    benchmark::RegisterBenchmark("query-cert/libcrypto", queryAll, queryWithLibcrypto);
}

} // namespace karil_bench
