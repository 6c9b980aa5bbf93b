// What a document is.
#ifndef KARIL_TOOL_KIND_H
#define KARIL_TOOL_KIND_H

#include "files.h"

#include <string_view>

namespace tool {

enum class Kind {
    Certificate,
    RevocationList,
    Request,
    RsaPublicKey,
    RsaPrivateKey,
    PublicKeyInfo,
    PrivateKeyInfo,
    EncryptedPrivateKeyInfo,
    OcspRequest,
    OcspResponse,
    Message,
    Pfx
};

// What is known about a kind.
struct KindFacts {
    std::string_view name;     // in words
    std::string_view label;    // of its PEM blocks
    std::string_view oldLabel; // another label that is read; empty if there is none
    Kind kind;
    bool isSecret;
};

const KindFacts &factsOf(Kind kind);

// By the label of its PEM block, else by the elements that it begins with. Throws a Failure for what is nothing that is
// known, which tells why.
Kind kindOf(const Document &document);

} // namespace tool

#endif
