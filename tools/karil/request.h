// Requests as the tool makes and trusts them.
#ifndef KARIL_TOOL_REQUEST_H
#define KARIL_TOOL_REQUEST_H

#include "files.h"
#include "key.h"
#include "subject.h"

namespace tool {

// A request, signed by the key that it is for. `names`: DNS names.
karil::Octets makeRequest(EVP_PKEY *key, const Digest &digest, const std::vector<NamePart> &subject,
                          const std::vector<std::string> &names);

// What a request asks for, once its signature was found good.
struct Wanted {
    karil::Octets subject;   // a whole Name
    karil::Octets publicKey; // RSAPublicKey
    std::vector<std::string> dnsNames;
};

// Reads and verifies a request. A Failure with Exit::BadVerdict if its own key did not sign it.
Wanted readRequest(const Document &document);

} // namespace tool

#endif
