// Building and encoding one certificate, and what its private extensions add to that.
#include "bench.h"
#include "sample.h"

#include <benchmark/benchmark.h>

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

// A certificate with so many private extensions is built, encoded, decoded and destroyed.
void grow(benchmark::State &state, int32_t count) {
    const Bytes value = bytesOf(sample::PrivateDer);
    for (auto _ : state) {
        // The least certificate that can be encoded: what is measured is what the extensions add.
        const CertPtr ctx = karil_test::filled<CertEncodeCtx>(copyingHook);
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
