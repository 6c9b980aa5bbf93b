// Decoding a certification request.
#include "bench.h"
#include "sample.h"

#include <benchmark/benchmark.h>
#include <openssl/x509.h>

#include <utility>

namespace karil_bench {

namespace {

using CsrPtr = Owned<CsrEncodeCtx, KACert_DestroyCsrEncodeCtx>;

CsrPtr newRequest() {
    CsrEncodeCtx *ctx = nullptr;
    must(KACert_CreateCsrEncodeCtx(&ctx) == KACERT_Ok, "karil makes a context");
    return CsrPtr(ctx);
}

Octets makeRequest() {
    const std::pair<int32_t, Bytes> values[] = {
        {CSR_OUTER_SIGNATUREALGORITHM, sample::Sha1WithRsa},
        {CSR_PUBLICKEY_ALGORITHM, sample::RsaEncryption},
        {CSR_SUBJECTPUBLICKEYINFO, sample::PublicKey},
        {CSR_SUBJECT_COUNTRYNAME, octetsOf("CN")},
        {CSR_SUBJECT_ORGANIZATIONNAME, octetsOf("Example Company")},
        {CSR_SUBJECT_COMMONNAME, octetsOf("www.example.com")},
        {CSR_SUBJECT_EMAIL, octetsOf("web@example.com")},
    };
    const CsrPtr ctx = newRequest();
    for (const auto &[id, value] : values)
        must(KACert_SetCsrAttributeChar(ctx.get(), id, value.data(), static_cast<int32_t>(value.size())) == KACERT_Ok,
             "karil takes the value");
    KACert_SetCsrSignFunc(ctx.get(), copyingHook, nullptr, 0);
    uint32_t length = 0;
    must(KACert_EncodeCsr(ctx.get(), nullptr, &length) == KACERT_Ok, "karil encodes the request");
    Octets der(length);
    must(KACert_EncodeCsr(ctx.get(), der.data(), &length) == KACERT_Ok, "karil hands the request out");
    return der;
}

void decodeWithKaril(Bytes der) {
    const CsrPtr ctx = newRequest();
    must(KACert_DecodeCsr(ctx.get(), der.data(), static_cast<uint32_t>(der.size())) == KACERT_Ok, "karil decodes it");
}

void decodeWithLibcrypto(Bytes der) {
    const uint8_t *at = der.data();
    X509_REQ *request = d2i_X509_REQ(nullptr, &at, static_cast<long>(der.size()));
    must(request != nullptr, "libcrypto decodes it");
    X509_REQ_free(request);
}

void decode(benchmark::State &state, void (*decode)(Bytes)) {
    static const Octets der = makeRequest();
    for (auto _ : state)
        decode(der);
}

} // namespace

void registerCsr() {
    benchmark::RegisterBenchmark("decode-csr/karil", decode, static_cast<void (*)(Bytes)>(decodeWithKaril));
    benchmark::RegisterBenchmark("decode-csr/libcrypto", decode, static_cast<void (*)(Bytes)>(decodeWithLibcrypto));
}

} // namespace karil_bench
