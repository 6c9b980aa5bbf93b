// Decoding a certification request.
#include "bench.h"
#include "sample.h"

#include <benchmark/benchmark.h>
#include <openssl/x509.h>

#include <utility>

namespace karil_bench {

namespace {

Octets makeRequest() {
    const CsrPtr ctx = karil_test::filled<CsrEncodeCtx>(copyingHook);
    const std::pair<int32_t, std::string_view> values[] = {
        {CSR_SUBJECT_COUNTRYNAME, "CN"},
        {CSR_SUBJECT_ORGANIZATIONNAME, "Example Company"},
        {CSR_SUBJECT_EMAIL, "web@example.com"},
    };
    for (const auto &[id, value] : values)
        must(karil_test::set(*ctx, id, value) == KACERT_Ok, "karil takes the value");
    must(karil_test::set(*ctx, CSR_SUBJECTPUBLICKEYINFO, sample::PublicKey) == KACERT_Ok, "karil takes the key");
    const Octets der = karil_test::encode(*ctx);
    must(!der.empty(), "karil encodes the request");
    return der;
}

void decodeWithKaril(Bytes der) {
    const CsrPtr ctx = create<CsrDecodeCtx>();
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
