// The OCSP messages that the benchmarks make and read. karil's are in a dialect of their own, so each library reads
// what it wrote; both hold the same.
#pragma once

#include "party.h"

namespace karil_bench {

// What both say of certificate and responder.
constexpr std::string_view Nonce = "sixteen octets..";
constexpr int32_t ArchiveCutoff = 1600000000;
constexpr int32_t ThisUpdate = 1700000000;
constexpr int32_t NextUpdate = 1700086400;
constexpr size_t SignatureSize = 256;
Octets serialOf(int32_t index);

// Single requests with their hashes, the requestor's name, a nonce and another extension; not signed.
Octets requestByKaril(int32_t count);
Octets requestByLibcrypto(int32_t count);
void readRequestWithKaril(Bytes der);
void readRequestWithLibcrypto(Bytes der);

// Good entries for identities that are ready, the responder's name and certificate, and a signature by a hook that
// copies: libcrypto's key has a method that does the same.
Octets responseByKaril(int32_t count);
Octets responseByLibcrypto(int32_t count);
void readResponseWithKaril(Bytes der);
void readResponseWithFile(Bytes der); // by a library that writes the diagnostic file
void readResponseWithLibcrypto(Bytes der);

// So many copies of one entry: made, decoded, and walked.
void growRequests(int32_t count);
void growResponses(int32_t count);

} // namespace karil_bench
