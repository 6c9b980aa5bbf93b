// libcrypto's keys for tests: handles, DER, signatures.
#pragma once

#include "support.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>

namespace karil_test {

template <auto F> struct By {
    void operator()(auto *object) const { F(object); }
};
using Pkey = std::unique_ptr<EVP_PKEY, By<EVP_PKEY_free>>;
using PkeyCtx = std::unique_ptr<EVP_PKEY_CTX, By<EVP_PKEY_CTX_free>>;
using MdCtx = std::unique_ptr<EVP_MD_CTX, By<EVP_MD_CTX_free>>;

// What one of libcrypto's i2d functions writes.
template <class T> Octets derOf(int (*write)(const T *, unsigned char **), const T *value) {
    unsigned char *der = nullptr;
    const int size = write(value, &der);
    Octets octets(der, der + size);
    OPENSSL_free(der);
    return octets;
}

// PKCS#1 v1.5 over `input`, or, without a digest, over the octets as they are.
inline Octets signWith(const Pkey &key, const EVP_MD *md, const Octets &input) {
    const MdCtx ctx(EVP_MD_CTX_new());
    const PkeyCtx bare(EVP_PKEY_CTX_new(key.get(), nullptr));
    Octets signature(1024);
    size_t size = signature.size();
    const bool isDone = md != nullptr
                            ? EVP_DigestSignInit(ctx.get(), nullptr, md, nullptr, key.get()) == 1 &&
                                  EVP_DigestSign(ctx.get(), signature.data(), &size, input.data(), input.size()) == 1
                            : EVP_PKEY_sign_init(bare.get()) == 1 &&
                                  EVP_PKEY_sign(bare.get(), signature.data(), &size, input.data(), input.size()) == 1;
    signature.resize(isDone ? size : 0);
    return signature;
}

} // namespace karil_test
