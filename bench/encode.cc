// Building and encoding one certificate, and what its private extensions add to that.
#include "bench.h"
#include "sample.h"

#include <benchmark/benchmark.h>

#include <utility>

namespace karil_bench {

namespace {

void encodeKaril(benchmark::State &state) {
    for (auto _ : state) {
        const CertPtr ctx = buildWithKaril(copyingHook, nullptr, 0);
        benchmark::DoNotOptimize(encodeWithKaril(ctx.get()).data());
    }
}

void encodeLibcrypto(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(encodeTbsWithLibcrypto().data());
}

// The least certificate that can be encoded: what is measured is what the extensions add.
CertPtr buildLeast() {
    const Bytes name = octetsOf("A");
    const std::pair<int32_t, Bytes> values[] = {
        {CERT_SERIALNUMBER, sample::Serial},
        {CERT_INNER_SIGNATUREALGORITHM, sample::Sha1WithRsa},
        {CERT_OUTER_SIGNATUREALGORITHM, sample::Sha1WithRsa},
        {CERT_PUBLICKEY_ALGORITHM, sample::RsaEncryption},
        {CERT_SUBJECTPUBLICKEYINFO, name},
        {CERT_ISSUER_COMMONNAME, name},
        {CERT_SUBJECT_COMMONNAME, name},
    };
    CertEncodeCtx *ctx = nullptr;
    must(KACert_CreateCertEncodeCtx(&ctx) == KACERT_Ok, "karil makes a context");
    CertPtr certificate(ctx);
    for (const auto &[id, value] : values)
        must(KACert_SetCertAttributeChar(ctx, id, value.data(), static_cast<int32_t>(value.size())) == KACERT_Ok,
             "karil takes the value");
    must(KACert_SetCertAttributeInt(ctx, CERT_VALIDFROM, sample::NotBefore) == KACERT_Ok, "karil takes a date");
    must(KACert_SetCertAttributeInt(ctx, CERT_VALIDTO, sample::NotAfter) == KACERT_Ok, "karil takes a date");
    must(KACert_SetCertSignFunc(ctx, copyingHook, nullptr, 0) == KACERT_Ok, "karil takes a hook");
    return certificate;
}

// A certificate with so many private extensions is built, encoded, decoded and destroyed.
void grow(benchmark::State &state, int32_t count) {
    const Bytes value = octetsOf(sample::PrivateDer);
    for (auto _ : state) {
        const CertPtr ctx = buildLeast();
        for (int32_t i = 0; i < count; ++i)
            must(KACert_SetCertAttributePrivate(ctx.get(), sample::PrivateOid, sizeof sample::PrivateOid, 0,
                                                value.data(), static_cast<int32_t>(value.size())) == KACERT_Ok,
                 "karil takes a private extension");
        must(decodeWithKaril(encodeWithKaril(ctx.get())), "karil decodes what it encoded");
    }
    state.counters["items"] = count;
}

} // namespace

void registerEncode() {
    const CertPtr ctx = buildWithKaril(copyingHook, nullptr, 0);
    must(tbsOf(encodeWithKaril(ctx.get())) == encodeTbsWithLibcrypto(), "both build the same to-be-signed octets");
    benchmark::RegisterBenchmark("encode-cert/karil", encodeKaril);
    benchmark::RegisterBenchmark("encode-cert/libcrypto", encodeLibcrypto);
}

void registerGrowth() {
    benchmark::RegisterBenchmark("growth-extensions/karil", grow, 10000);
    benchmark::RegisterBenchmark("growth-extensions/itself", grow, 100);
}

} // namespace karil_bench
