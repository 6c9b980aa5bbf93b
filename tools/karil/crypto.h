// Digests and signatures by libcrypto.
#ifndef KARIL_TOOL_CRYPTO_H
#define KARIL_TOOL_CRYPTO_H

#include "der.h"

#include <openssl/evp.h>

#include <memory>

namespace tool {

struct KeyFree {
    void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
};
using KeyPtr = std::unique_ptr<EVP_PKEY, KeyFree>;

// The digest of octets.
karil::Octets digestOf(const EVP_MD *digest, karil::Bytes octets);

// The digest that an object identifier names, or null.
const EVP_MD *digestNamed(karil::Bytes oid);

// The key in a SubjectPublicKeyInfo, or null.
KeyPtr publicKeyOf(const Element &info);

// Whether the key signed the octets. Throws a Failure for an algorithm that is not known or not the key's.
bool isSignedBy(const Element &publicKeyInfo, karil::Bytes algorithm, karil::Bytes octets, karil::Bytes signature);

} // namespace tool

#endif
