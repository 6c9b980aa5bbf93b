// The PKCS#7 messages that the benchmarks make and open.
#pragma once

#include "party.h"

namespace karil_bench {

struct Content {
    const char *name;
    size_t size;
};
constexpr Content Small = {"1k", 1024};
constexpr Content Eight = {"8k", 8000}; // karil's bound is 10,240 octets with all around it
constexpr Content Middle = {"1m", 1 << 20};
constexpr Content Large = {"100m", 100 << 20};
Bytes contentOf(Content content);

// Signed with attributes: the signing time, and those that are always there. The message is the length that was
// written into the room.
size_t signWithKaril(Bytes content, Octets &room);
size_t signWithLibcrypto(Bytes content, Octets &room);
size_t signWithGnutls(Bytes content, Octets &room);
// Decodes the message, verifies its signer and compares messageDigest with the content's.
void verifyWithKaril(Bytes message);
void verifyWithLibcrypto(Bytes message);
void verifyWithGnutls(Bytes message);
// Three certificates, a CRL and two signers.
Octets fullMessage();
void decodeMessageWithKaril(Bytes message);
void decodeMessageWithLibcrypto(Bytes message);
void decodeMessageWithGnutls(Bytes message);

// Enveloped for one, with a new key each time.
size_t envelopWithKaril(Bytes content, Octets &room);
size_t envelopWithLibcrypto(Bytes content, Octets &room);
// Opened by the one. libcrypto writes the messages.
enum class Cipher { TripleDes, Aes };
Octets envelopFor(Cipher cipher, Bytes content);
void openWithKaril(Bytes message, Bytes content);
void openWithLibcrypto(Bytes message, Bytes content);

// A message with so many signers, whose hooks cost nothing: made, decoded, and walked.
void growSigners(int32_t count);

} // namespace karil_bench
