// CRLs: decoding, building, and what an entry costs in a list of a million.
#include "crl.h"

#include <benchmark/benchmark.h>

namespace karil_bench {

namespace {

void decode(benchmark::State &state, HoldCrl hold) {
    static const Octets der = buildCrlWithKaril(CrlEntries);
    for (auto _ : state) {
        const HeldCrl crl = hold(der);
        crl.release(crl.object);
    }
    state.counters["items"] = CrlEntries;
}

void build(benchmark::State &state, Octets (*build)(int32_t)) {
    for (auto _ : state)
        benchmark::DoNotOptimize(build(CrlEntries).data());
    state.counters["items"] = CrlEntries;
}

// A CRL of so many entries is built, encoded, decoded and destroyed.
void grow(benchmark::State &state, int32_t entries) {
    for (auto _ : state) {
        const HeldCrl crl = holdWithKaril(buildCrlWithKaril(entries));
        crl.release(crl.object);
    }
    state.counters["items"] = entries;
}

Octets crlTbsOf(Bytes der) {
    const HeldCrl crl = holdWithKaril(der);
    const Anybuf &tbs = static_cast<const CrlDecodeCtx *>(crl.object)->tbs;
    const Octets octets(tbs.data, tbs.data + tbs.length);
    crl.release(crl.object);
    return octets;
}

} // namespace

void registerCrl() {
    must(crlTbsOf(buildCrlWithKaril(10)) == buildCrlTbsWithLibcrypto(10), "both build the same to-be-signed octets");
    benchmark::RegisterBenchmark("decode-crl/karil", decode, holdWithKaril);
    benchmark::RegisterBenchmark("decode-crl/mbedtls", decode, holdWithMbedtls);
    benchmark::RegisterBenchmark("decode-crl/libcrypto", decode, holdWithLibcrypto);
    benchmark::RegisterBenchmark("build-crl/karil", build, buildCrlWithKaril);
    benchmark::RegisterBenchmark("build-crl/libcrypto", build, buildCrlTbsWithLibcrypto);
    benchmark::RegisterBenchmark("growth-crl/karil", grow, 1000000);
    benchmark::RegisterBenchmark("growth-crl/itself", grow, 10000);
}

} // namespace karil_bench
