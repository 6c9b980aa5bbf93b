// RSA, digests and ciphers on libcrypto and nettle. No other folder includes a crypto library's header.
#pragma once

#include "karil/crypt.h"

#include "ka_low.h"

#include <initializer_list>

namespace karil {

// A digest algorithm: its id, size, DigestInfo prefix (RFC 8017 9.2, note 1) and what is done with it.
struct DigestAlgorithm {
    int32_t id;
    uint32_t size;
    Bytes prefix;
    void (*digest)(std::initializer_list<Bytes> parts, uint8_t *output); // of the parts, one after the other
    void (*repeat)(uint8_t *octets, uint32_t times);                     // of a digest, in its place
};
constexpr uint32_t LongestDigest = 20;
constexpr uint32_t LongestDigestInfo = 35;

// Null for an id that is not known.
const DigestAlgorithm *digestAlgorithm(int32_t id);

// Takes the same time wherever they differ.
bool sameOctets(Bytes left, Bytes right);

} // namespace karil
