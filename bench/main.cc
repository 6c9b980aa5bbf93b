// All measures of time, in one process. scripts/bench.sh runs it and makes the table.
#include "bench.h"

#include <benchmark/benchmark.h>
#include <gnutls/gnutls.h>
#include <malloc.h>
#include <mbedtls/version.h>
#include <openssl/crypto.h>

#include <climits>
#include <string>

using namespace karil_bench;

int main(int argc, char **argv) {
    // Freed memory stays with the process, for every measure and library: what a page costs that the kernel hands out
    // anew depends on the machine, and would be most of what growth-crl shows.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
    char mbedtls[32] = {};
    mbedtls_version_get_string_full(mbedtls);
    benchmark::AddCustomContext("peers", std::string("libcrypto ") + OpenSSL_version(OPENSSL_VERSION_STRING) + ", " +
                                             mbedtls + ", GnuTLS " + gnutls_check_version(nullptr));
    benchmark::AddCustomContext("certificates", std::to_string(corpus().size()));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    registerDecode();
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
    return benchmark::RunSpecifiedBenchmarks() > 0 ? 0 : 1;
}
