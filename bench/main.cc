// All measures of time, in one process. scripts/bench.sh runs it and makes the table.
#include "bench.h"

#include <benchmark/benchmark.h>
#include <gnutls/gnutls.h>
#include <mbedtls/version.h>
#include <openssl/crypto.h>

#include <cstdlib>
#include <string>
#include <string_view>

using namespace karil_bench;

int main(int argc, char **argv) {
    char mbedtls[32] = {};
    mbedtls_version_get_string_full(mbedtls);
    benchmark::AddCustomContext("peers", std::string("libcrypto ") + OpenSSL_version(OPENSSL_VERSION_STRING) + ", " +
                                             mbedtls + ", GnuTLS " + gnutls_check_version(nullptr));
    benchmark::AddCustomContext("certificates", std::to_string(corpus().size()));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    registerDecode();
    registerDecodeCrl();
    const char *zone = getenv("TZ");
    if (zone == nullptr || std::string_view(zone) != "UTC")
        return benchmark::RunSpecifiedBenchmarks() > 0 ? 0 : 1;
    registerQuery();
    registerEncode();
    registerSign();
    registerVerify();
    registerPem();
    registerGrowth();
    registerCrl();
    registerCsr();
    registerPkcs12Crypt();
    registerPfx();
    registerBags();
    registerMessages();
    registerOcsp();
    return benchmark::RunSpecifiedBenchmarks() > 0 ? 0 : 1;
}
