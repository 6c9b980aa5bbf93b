// Decoding certificates, the system's and some with Chinese names, by each library in its own way.
#include "bench.h"
#include "mbedtls_time.h"

#include <benchmark/benchmark.h>
#include <gnutls/x509.h>
#include <mbedtls/x509_crt.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <algorithm>
#include <filesystem>
#include <map>
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

namespace {

// `use` looks at what was decoded.
template <class Use> bool parseWithMbedtls(Bytes der, Use use) {
    mbedtls_x509_crt certificate;
    mbedtls_x509_crt_init(&certificate);
    const int status = mbedtls_x509_crt_parse_der(&certificate, der.data(), der.size());
    if (status == 0)
        use(certificate);
    mbedtls_x509_crt_free(&certificate);
    return status == 0;
}

} // namespace

bool decodeWithMbedtls(Bytes der) {
    return parseWithMbedtls(der, [](const mbedtls_x509_crt &) {});
}

bool decodeWithMbedtlsAndMktime(Bytes der) {
    return parseWithMbedtls(der, [](const mbedtls_x509_crt &certificate) {
        benchmark::DoNotOptimize(secondsOf(certificate.valid_from) + secondsOf(certificate.valid_to));
    });
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

// What each certificate has to be decoded by, to be in the corpus.
constexpr Decode Decoders[] = {decodeWithKaril, decodeWithMbedtls, decodeWithGnutls, decodeWithLibcrypto};

// All certificates of a file.
void readPem(const std::filesystem::path &path, std::vector<Octets> &all) {
    Owned<BIO, BIO_free> file(BIO_new_file(path.c_str(), "r"));
    must(file != nullptr, "a certificate file opens");
    uint8_t *der = nullptr;
    long length = 0;
    const size_t before = all.size();
    while (PEM_bytes_read_bio(&der, &length, nullptr, PEM_STRING_X509, file.get(), nullptr, nullptr) == 1) {
        all.emplace_back(der, der + length);
        OPENSSL_free(der);
    }
    ERR_clear_error();
    must(all.size() > before, "a certificate file is PEM");
}

std::vector<Octets> readCorpus() {
    std::vector<Octets> found;
    for (const auto &entry : std::filesystem::directory_iterator("/usr/share/ca-certificates/mozilla"))
        readPem(entry.path(), found);
    std::erase_if(found, [](const Octets &der) {
        return !std::ranges::all_of(Decoders, [&](Decode decode) { return decode(der); });
    });
    ERR_clear_error();
    std::sort(found.begin(), found.end());
    must(found.size() >= 50, "there are 50 certificates that all decode");
    return found;
}

const std::vector<Octets> &chinese(const char *file) {
    static std::map<std::string, std::vector<Octets>> read;
    std::vector<Octets> &all = read[file];
    if (all.empty())
        readPem(std::filesystem::path(KARIL_BENCH_DATA) / file, all);
    return all;
}
const std::vector<Octets> &withUtf8Names() {
    return chinese("utf8.pem");
}
const std::vector<Octets> &withBmpNames() {
    return chinese("bmp.pem");
}

struct Row {
    const char *name;
    Decode decode;
    const std::vector<Octets> &(*certificates)();
};
constexpr Row Rows[] = {
    {"decode-cert/karil", decodeWithKaril, corpus},
    {"decode-cert/mbedtls", decodeWithMbedtls, corpus},
    {"decode-cert/mbedtls-mktime", decodeWithMbedtlsAndMktime, corpus},
    {"decode-cert/gnutls", decodeWithGnutls, corpus},
    {"decode-cert/libcrypto", decodeWithLibcrypto, corpus},
    {"decode-cert-utf8/karil", decodeWithKaril, withUtf8Names},
    {"decode-cert-utf8/mbedtls", decodeWithMbedtls, withUtf8Names},
    {"decode-cert-bmp/karil", decodeWithKaril, withBmpNames},
    {"decode-cert-bmp/mbedtls", decodeWithMbedtls, withBmpNames},
};

void decodeAll(benchmark::State &state, Decode decode, const std::vector<Octets> &certificates) {
    for (auto _ : state)
        for (const Octets &der : certificates)
            must(decode(der), "the certificate decodes");
    state.counters["items"] = static_cast<double>(certificates.size());
}

} // namespace

const std::vector<Octets> &corpus() {
    static const std::vector<Octets> all = readCorpus();
    return all;
}

void registerDecode() {
    for (const Row &row : Rows)
        benchmark::RegisterBenchmark(row.name, decodeAll, row.decode, row.certificates());
}

} // namespace karil_bench
