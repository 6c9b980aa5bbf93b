// Who takes part in the messages of the benchmarks: one key, prepared for both, behind the hooks of karil and in
// libcrypto.
#pragma once

#include "bench.h"

#include <openssl/x509.h>

namespace karil_bench {

// One who signs and receives. libcrypto has read the key out of the certificate already.
struct Party {
    Octets certificate;
    Octets issuer;    // a Name element
    Octets serial;    // octets of the INTEGER
    Octets publicKey; // content of the BIT STRING
    Owned<EVP_PKEY, EVP_PKEY_free> key;
    Owned<X509, X509_free> x509;
};
const Party &party();

// A prepared operation of the party's key, and the hook that runs it: its parameter is the operation's address.
struct Operation {
    Owned<EVP_PKEY_CTX, EVP_PKEY_CTX_free> ctx;
    int (*run)(EVP_PKEY_CTX *, unsigned char *, size_t *, const unsigned char *, size_t);
};
const Operation &operation(int (*prepare)(EVP_PKEY_CTX *), decltype(Operation::run) run);
int32_t runOperation(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                     void *parameter);

} // namespace karil_bench
