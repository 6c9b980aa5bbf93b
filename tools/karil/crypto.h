// Digests and signatures by libcrypto.
#ifndef KARIL_TOOL_CRYPTO_H
#define KARIL_TOOL_CRYPTO_H

#include "karil/karil.hpp"

#include <openssl/evp.h>

#include <memory>

namespace tool {

using KeyPtr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

// The digest of octets.
karil::Octets digestOf(const EVP_MD *digest, karil::Bytes octets);

} // namespace tool

#endif
