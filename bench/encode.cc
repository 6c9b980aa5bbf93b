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

// The least certificate that can be encoded, with so many private extensions: what they add is measured.
Octets encodeWithExtensions(int32_t count) {
    const Bytes value = bytesOf(sample::PrivateDer);
    const CertPtr ctx = karil_test::filled<CertEncodeCtx>(copyingHook);
    for (int32_t i = 0; i < count; ++i)
        must(KACert_SetCertAttributePrivate(ctx.get(), sample::PrivateOid, sizeof sample::PrivateOid, 0, value.data(),
                                            static_cast<int32_t>(value.size())) == KACERT_Ok,
             "karil takes a private extension");
    return encodeWithKaril(ctx.get());
}

// Built, encoded, decoded and destroyed.
void grow(benchmark::State &state, int32_t count) {
    for (auto _ : state)
        must(decodeWithKaril(encodeWithExtensions(count)), "karil decodes what it encoded");
    state.counters["items"] = count;
}

// Each extension asked for by its index, from the first to the last.
void index(benchmark::State &state, uint32_t count) {
    const Octets der = encodeWithExtensions(static_cast<int32_t>(count));
    const CertPtr ctx = create<CertDecodeCtx>();
    must(karil_test::decode(*ctx, der) == KACERT_Ok, "karil decodes what it encoded");
    uint8_t oid[32];
    uint8_t value[32];
    for (auto _ : state)
        for (uint32_t i = 1; i <= count; ++i) {
            uint32_t at = i;
            uint32_t oidLength = 0;
            uint32_t valueLength = 0;
            uint32_t critical = 0;
            must(KACert_GetCertAttributePrivate(ctx.get(), &at, oid, &oidLength, &critical, value, &valueLength) ==
                         KACERT_Ok &&
                     valueLength == sample::PrivateDer.size(),
                 "karil answers");
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
    benchmark::RegisterBenchmark("index-extensions/karil", index, 10000u);
    benchmark::RegisterBenchmark("index-extensions/itself", index, 100u);
}

} // namespace karil_bench
