// RSA and digests on libcrypto and nettle. No other folder includes a crypto library's header.
#pragma once

#include "karil/crypt.h"

#include "ka_low.h"

namespace karil {

// A digest algorithm: its id, size, DigestInfo prefix (RFC 8017 9.2, note 1) and the streaming calls.
struct DigestAlgorithm {
    int32_t id;
    uint32_t size;
    Bytes prefix;
    void (*digest)(Bytes input, uint8_t *output);
};
constexpr uint32_t LongestDigest = 20;
constexpr uint32_t LongestDigestInfo = 35;

// Null for an id that is not known.
const DigestAlgorithm *digestAlgorithm(int32_t id);

} // namespace karil
