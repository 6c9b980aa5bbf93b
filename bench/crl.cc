// CRLs: decoding, building, and what an entry costs in a list of a million.
#include "crl.h"

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace karil_bench {

namespace {

struct List {
    const char *measure;
    int32_t entries;
    Dates dates;
};
constexpr List Lists[] = {
    {"decode-crl", CrlEntries, Dates::InOrder},  {"decode-crl-random", CrlEntries, Dates::Random},
    {"decode-crl-1000", 1000, Dates::InOrder},   {"decode-crl-1000-random", 1000, Dates::Random},
    {"decode-crl-30", 30, Dates::InOrder},       {"decode-crl-30-random", 30, Dates::Random},
    {"decode-crl-10000", 10000, Dates::InOrder}, {"decode-crl-1000000", 1000000, Dates::InOrder},
};
struct Peer {
    const char *name;
    HoldCrl hold;
};
constexpr Peer Peers[] = {
    {"karil", holdWithKaril},
    {"mbedtls", holdWithMbedtls},
    {"mbedtls-mktime", holdWithMbedtlsAndMktime},
};

const Octets &madeOnce(const List &list) {
    static std::map<std::string, Octets> made;
    Octets &der = made[list.measure];
    if (der.empty())
        der = buildCrlWithKaril(list.entries, list.dates);
    return der;
}

void decode(benchmark::State &state, List list, HoldCrl hold) {
    const Octets &der = madeOnce(list);
    for (auto _ : state) {
        const HeldCrl crl = hold(der);
        crl.release(crl.object);
    }
    state.counters["items"] = list.entries;
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

void registerDecodeCrl() {
    for (const List &list : Lists)
        for (const Peer &peer : Peers)
            benchmark::RegisterBenchmark((std::string(list.measure) + '/' + peer.name).c_str(), decode, list,
                                         peer.hold);
    benchmark::RegisterBenchmark("decode-crl/libcrypto", decode, Lists[0], holdWithLibcrypto);
}

void registerCrl() {
    must(crlTbsOf(buildCrlWithKaril(10)) == buildCrlTbsWithLibcrypto(10), "both build the same to-be-signed octets");
    benchmark::RegisterBenchmark(
        "build-crl/karil", build, +[](int32_t entries) { return buildCrlWithKaril(entries); });
    benchmark::RegisterBenchmark("build-crl/libcrypto", build, buildCrlTbsWithLibcrypto);
    benchmark::RegisterBenchmark("growth-crl/karil", grow, 1000000);
    benchmark::RegisterBenchmark("growth-crl/itself", grow, 10000);
}

} // namespace karil_bench
