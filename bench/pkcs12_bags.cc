// What a bag costs in SafeContents of 10,000, beside one of 100.
#include "bench.h"

#include <benchmark/benchmark.h>

namespace karil_bench {

namespace {

using ContentsPtr = Owned<SafeContentsCtx, KA_PKCS12_DestoryEncodeSafeContents>;

ContentsPtr createContents() {
    SafeContentsCtx *ctx = nullptr;
    must(KA_PKCS12_CreateEncodeSafeContents(&ctx) == KACERT_Ok, "karil makes a context");
    return ContentsPtr(ctx);
}

// A bag of 200 octets.
const Octets &sampleBag() {
    static const Octets bag = karil_test::seq({karil_test::oid("2A 86 48 86 F7 0D 01 0C 0A 01 03"),
                                               karil_test::tlv(0xA0, karil_test::tlv(0x04, Octets(180)))});
    return bag;
}

Octets buildContents(int32_t bags) {
    const ContentsPtr ctx = createContents();
    const Octets &bag = sampleBag();
    for (int32_t i = 0; i < bags; ++i)
        must(KA_PKCS12_SetSafeContents_SafeBag(ctx.get(), bag.data(), karil_test::lengthOf(bag)) == KACERT_Ok,
             "karil takes a bag");
    Octets der(bag.size() * static_cast<size_t>(bags) + 16);
    uint32_t length = 0;
    must(KA_PKCS12_EncodeSafeContent(ctx.get(), der.data(), &length) == KACERT_Ok, "karil encodes the bags");
    der.resize(length);
    return der;
}

void build(benchmark::State &state, int32_t bags) {
    for (auto _ : state)
        benchmark::DoNotOptimize(buildContents(bags).data());
    state.counters["items"] = bags;
}

void read(benchmark::State &state, int32_t bags) {
    const Octets der = buildContents(bags);
    for (auto _ : state) {
        const ContentsPtr ctx = createContents();
        must(KA_PKCS12_DecodeSafeContent(ctx.get(), der.data(), karil_test::lengthOf(der)) == KACERT_Ok,
             "karil decodes the bags");
        uint8_t bag[512];
        uint32_t length = 0;
        for (int32_t i = 1; i <= bags; ++i)
            must(KA_PKCS12_GetSafeContents_SafeBag(ctx.get(), bag, &length, i) == KACERT_Ok && length > 0,
                 "karil has the bag");
    }
    state.counters["items"] = bags;
}

} // namespace

void registerBags() {
    benchmark::RegisterBenchmark("growth-bags-built/karil", build, 10000);
    benchmark::RegisterBenchmark("growth-bags-built/itself", build, 100);
    benchmark::RegisterBenchmark("growth-bags-read/karil", read, 10000);
    benchmark::RegisterBenchmark("growth-bags-read/itself", read, 100);
}

} // namespace karil_bench
