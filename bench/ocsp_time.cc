// Making and decoding OCSP requests and responses.
#include "ocsp_messages.h"

#include <benchmark/benchmark.h>

namespace karil_bench {

namespace {

using Make = Octets (*)(int32_t count);
using Read = void (*)(Bytes der);

void make(benchmark::State &state, Make make, int32_t count) {
    for (auto _ : state)
        benchmark::DoNotOptimize(make(count).data());
}

void read(benchmark::State &state, Make make, int32_t count, Read read) {
    const Octets der = make(count);
    for (auto _ : state)
        read(der);
}

void grow(benchmark::State &state, void (*grow)(int32_t), int32_t count) {
    for (auto _ : state)
        grow(count);
    state.counters["items"] = count;
}

} // namespace

void registerOcsp() {
    constexpr int32_t Few = 3;
    benchmark::RegisterBenchmark("build-request/karil", make, requestByKaril, Few);
    benchmark::RegisterBenchmark("build-request/libcrypto", make, requestByLibcrypto, Few);
    benchmark::RegisterBenchmark("decode-request/karil", read, requestByKaril, Few, readRequestWithKaril);
    benchmark::RegisterBenchmark("decode-request/libcrypto", read, requestByLibcrypto, Few, readRequestWithLibcrypto);
    benchmark::RegisterBenchmark("encode-response/karil", make, responseByKaril, 1);
    benchmark::RegisterBenchmark("encode-response/libcrypto", make, responseByLibcrypto, 1);
    for (const int32_t count : {1, 100}) {
        const std::string name = "decode-response-" + std::to_string(count);
        benchmark::RegisterBenchmark((name + "/karil").c_str(), read, responseByKaril, count, readResponseWithKaril);
        benchmark::RegisterBenchmark((name + "/libcrypto").c_str(), read, responseByLibcrypto, count,
                                     readResponseWithLibcrypto);
        benchmark::RegisterBenchmark((name + "-file/karil").c_str(), read, responseByKaril, count,
                                     readResponseWithFile);
        benchmark::RegisterBenchmark((name + "-file/libcrypto").c_str(), read, responseByLibcrypto, count,
                                     readResponseWithLibcrypto);
    }
    benchmark::RegisterBenchmark("growth-requests/karil", grow, growRequests, 10000);
    benchmark::RegisterBenchmark("growth-requests/itself", grow, growRequests, 100);
    benchmark::RegisterBenchmark("growth-responses/karil", grow, growResponses, 10000);
    benchmark::RegisterBenchmark("growth-responses/itself", grow, growResponses, 100);
}

} // namespace karil_bench
