// One certificate's PEM text to DER, and its base64 alone.
#include "bench.h"

#include <benchmark/benchmark.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
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

// It takes one line without header and footer, and counts the padding as octets.
void readWithDecodeBlock(Bytes base64, Octets &der) {
    der.resize(base64.size());
    const int length = EVP_DecodeBlock(der.data(), base64.data(), static_cast<int>(base64.size()));
    must(length > 0, "libcrypto reads");
    der.resize(static_cast<size_t>(length));
}

Octets pemOf(const Octets &der) {
    const Owned<BIO, BIO_free> sink(BIO_new(BIO_s_mem()));
    must(PEM_write_bio(sink.get(), "CERTIFICATE", "", der.data(), static_cast<long>(der.size())) > 0,
         "libcrypto writes");
    char *text = nullptr;
    const long length = BIO_get_mem_data(sink.get(), &text);
    return {text, text + length};
}

Octets base64Of(const Octets &der) {
    Octets text(4 * ((der.size() + 2) / 3) + 1);
    text.resize(static_cast<size_t>(EVP_EncodeBlock(text.data(), der.data(), static_cast<int>(der.size()))));
    return text;
}

template <Octets (*Of)(const Octets &)> const std::vector<Octets> &texts() {
    static const auto all = [] {
        std::vector<Octets> made;
        std::ranges::transform(corpus(), std::back_inserter(made), Of);
        return made;
    }();
    return all;
}

struct Row {
    const char *name;
    Read read;
    const std::vector<Octets> &(*texts)();
};
constexpr Row Rows[] = {
    {"pem/karil", readWithKaril, texts<pemOf>},
    {"pem/libcrypto", readWithLibcrypto, texts<pemOf>},
    {"pem/evp-decodeblock", readWithDecodeBlock, texts<base64Of>},
};

// Into the same octets, so that their memory is not what is measured.
void readAll(benchmark::State &state, Read read, const std::vector<Octets> &texts) {
    Octets der;
    for (auto _ : state)
        for (const Octets &text : texts) {
            read(text, der);
            benchmark::DoNotOptimize(der.data());
        }
    state.counters["items"] = static_cast<double>(texts.size());
}

} // namespace

void registerPem() {
    for (const Row &row : Rows) {
        for (size_t i = 0; i < corpus().size(); ++i) {
            Octets der;
            row.read(row.texts()[i], der);
            const size_t padding = der.size() - corpus()[i].size();
            must(padding <= 2 && std::ranges::equal(corpus()[i], Bytes(der).first(der.size() - padding)),
                 "the octets come back");
        }
        benchmark::RegisterBenchmark(row.name, readAll, row.read, row.texts());
    }
}

} // namespace karil_bench
