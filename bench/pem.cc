// One certificate's PEM text to DER.
#include "bench.h"

#include <benchmark/benchmark.h>
#include <openssl/bio.h>
#include <openssl/pem.h>

#include <algorithm>

namespace karil_bench {

namespace {

using Read = void (*)(Bytes pem, Octets &der);

void readWithKaril(Bytes pem, Octets &der) {
    uint32_t length = 0;
    der.resize(pem.size());
    must(PEM2DER_data_format(pem.data(), static_cast<uint32_t>(pem.size()), der.data(), &length) == 0, "karil reads");
    der.resize(length);
}

void freeBlock(void *block) {
    OPENSSL_free(block);
}

void readWithLibcrypto(Bytes pem, Octets &der) {
    const Owned<BIO, BIO_free> source(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    char *label = nullptr;
    char *headers = nullptr;
    uint8_t *data = nullptr;
    long length = 0;
    must(PEM_read_bio(source.get(), &label, &headers, &data, &length) == 1, "libcrypto reads");
    const Owned<char, freeBlock> ownedLabel(label);
    const Owned<char, freeBlock> ownedHeaders(headers);
    const Owned<uint8_t, freeBlock> octets(data);
    der.assign(data, data + length);
}

Octets pemOf(const Octets &der) {
    const Owned<BIO, BIO_free> sink(BIO_new(BIO_s_mem()));
    must(PEM_write_bio(sink.get(), "CERTIFICATE", "", der.data(), static_cast<long>(der.size())) > 0,
         "libcrypto writes");
    char *text = nullptr;
    const long length = BIO_get_mem_data(sink.get(), &text);
    return {text, text + length};
}

const std::vector<Octets> &texts() {
    static const auto all = [] {
        std::vector<Octets> made;
        std::ranges::transform(corpus(), std::back_inserter(made), pemOf);
        return made;
    }();
    return all;
}

// Into the same octets, so that their memory is not what is measured.
void readAll(benchmark::State &state, Read read) {
    Octets der;
    for (auto _ : state)
        for (const Octets &pem : texts()) {
            read(pem, der);
            benchmark::DoNotOptimize(der.data());
        }
    state.counters["items"] = static_cast<double>(texts().size());
}

} // namespace

void registerPem() {
    for (const Read read : {readWithKaril, readWithLibcrypto})
        for (size_t i = 0; i < texts().size(); ++i) {
            Octets der;
            read(texts()[i], der);
            must(der == corpus()[i], "the octets come back");
        }
    benchmark::RegisterBenchmark("pem/karil", readAll, readWithKaril);
    benchmark::RegisterBenchmark("pem/libcrypto", readAll, readWithLibcrypto);
}

} // namespace karil_bench
