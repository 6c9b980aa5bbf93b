// Decoding the system's certificates, by each library in its own way.
#include "bench.h"

#include <benchmark/benchmark.h>
#include <gnutls/x509.h>
#include <mbedtls/x509_crt.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace karil_bench {

bool decodeWithKaril(Bytes der) {
    CertDecodeCtx *ctx = nullptr;
    must(KACert_CreateCertDecodeCtx(&ctx) == KACERT_Ok, "karil makes a context");
    const int32_t status = KACert_DecodeCert(ctx, der.data(), static_cast<uint32_t>(der.size()));
    KACert_DestroyCertDecodeCtx(ctx);
    return status == KACERT_Ok;
}

bool decodeWithLibcrypto(Bytes der) {
    const uint8_t *at = der.data();
    X509 *certificate = d2i_X509(nullptr, &at, static_cast<long>(der.size()));
    X509_free(certificate);
    return certificate != nullptr;
}

bool decodeWithMbedtls(Bytes der) {
    mbedtls_x509_crt certificate;
    mbedtls_x509_crt_init(&certificate);
    const int status = mbedtls_x509_crt_parse_der(&certificate, der.data(), der.size());
    mbedtls_x509_crt_free(&certificate);
    return status == 0;
}

bool decodeWithGnutls(Bytes der) {
    gnutls_x509_crt_t certificate = nullptr;
    must(gnutls_x509_crt_init(&certificate) == GNUTLS_E_SUCCESS, "gnutls makes a certificate");
    const gnutls_datum_t source = {const_cast<uint8_t *>(der.data()), static_cast<unsigned>(der.size())};
    const int status = gnutls_x509_crt_import(certificate, &source, GNUTLS_X509_FMT_DER);
    gnutls_x509_crt_deinit(certificate);
    return status == GNUTLS_E_SUCCESS;
}

namespace {

struct Row {
    const char *name;
    Decode decode;
};
constexpr Row Rows[] = {
    {"decode-cert/karil", decodeWithKaril},
    {"decode-cert/mbedtls", decodeWithMbedtls},
    {"decode-cert/gnutls", decodeWithGnutls},
    {"decode-cert/libcrypto", decodeWithLibcrypto},
};

Octets readPem(const std::filesystem::path &path) {
    Owned<BIO, BIO_free> file(BIO_new_file(path.c_str(), "r"));
    must(file != nullptr, "a certificate file opens");
    uint8_t *der = nullptr;
    long length = 0;
    must(PEM_bytes_read_bio(&der, &length, nullptr, PEM_STRING_X509, file.get(), nullptr, nullptr) == 1,
         "a certificate file is PEM");
    Octets octets(der, der + length);
    OPENSSL_free(der);
    return octets;
}

std::vector<Octets> readCorpus() {
    std::vector<Octets> found;
    for (const auto &entry : std::filesystem::directory_iterator("/usr/share/ca-certificates/mozilla")) {
        Octets der = readPem(entry.path());
        if (std::all_of(std::begin(Rows), std::end(Rows), [&](const Row &row) { return row.decode(der); }))
            found.push_back(std::move(der));
    }
    ERR_clear_error();
    std::sort(found.begin(), found.end());
    must(found.size() >= 50, "there are 50 certificates that all decode");
    return found;
}

void decodeAll(benchmark::State &state, Decode decode) {
    for (auto _ : state)
        for (const Octets &der : corpus())
            must(decode(der), "the certificate decodes");
    state.counters["items"] = static_cast<double>(corpus().size());
}

} // namespace

const std::vector<Octets> &corpus() {
    static const std::vector<Octets> all = readCorpus();
    return all;
}

void registerDecode() {
    for (const Row &row : Rows)
        benchmark::RegisterBenchmark(row.name, decodeAll, row.decode);
}

} // namespace karil_bench
