// Certificates as messages and PFX files refer to them.
#ifndef KARIL_TOOL_PARTY_H
#define KARIL_TOOL_PARTY_H

#include "files.h"
#include "key.h"

namespace tool {

struct Party {
    std::string file;
    karil::Octets certificate;
    karil::Octets issuer; // a whole Name
    karil::Octets serial;
    KeyPtr publicKey; // null if it cannot be used
};

Party partyOf(const Document &document);
inline Party readParty(const std::string &path) {
    return partyOf(readDocument(path));
}

// Whether the private key is that of the certificate.
bool belongs(EVP_PKEY *key, const Party &party);

// A certificate with its private key. A Failure if they do not belong together.
struct KeyedParty {
    Party party;
    KeyPtr key;
};
KeyedParty readKeyedParty(const std::string &certificate, const KeyFile &key);

// The certificates in a file; none for "".
std::vector<Party> readChain(const std::string &path);

} // namespace tool

#endif
