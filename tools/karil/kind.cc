#include "kind.h"

#include "der.h"

#include <algorithm>
#include <iterator>

namespace tool {
namespace {

constexpr KindFacts facts[] = {
    {"certificate", "CERTIFICATE", "X509 CERTIFICATE", Kind::Certificate, false},
    {"CRL", "X509 CRL", "CRL", Kind::RevocationList, false},
    {"certification request", "CERTIFICATE REQUEST", "NEW CERTIFICATE REQUEST", Kind::Request, false},
    {"RSA public key", "RSA PUBLIC KEY", "", Kind::RsaPublicKey, false},
    {"RSA private key", "RSA PRIVATE KEY", "", Kind::RsaPrivateKey, true},
    {"public key", "PUBLIC KEY", "", Kind::PublicKeyInfo, false},
    {"private key", "PRIVATE KEY", "", Kind::PrivateKeyInfo, true},
    {"encrypted private key", "ENCRYPTED PRIVATE KEY", "", Kind::EncryptedPrivateKeyInfo, true},
    {"OCSP request", "OCSP REQUEST", "", Kind::OcspRequest, false},
    {"OCSP response", "OCSP RESPONSE", "", Kind::OcspResponse, false},
    {"PKCS#7 message", "PKCS7", "CMS", Kind::Message, false},
    {"PFX", "PKCS12", "", Kind::Pfx, true},
};

// What is signed: certificate, CRL or request. A CRL has its dates beside the names, where the others have none.
Kind kindOfSigned(karil::Bytes tbs) {
    constexpr std::size_t fields = 6;
    const Elements parts(tbs, fields);
    const bool hasDate = std::any_of(parts.begin(), parts.end(), [](const Element &part) {
        return part.tag == TagUtcTime || part.tag == TagGeneralizedTime;
    });
    if (hasDate)
        return Kind::RevocationList;
    // INTEGER, Name, key, [0] attributes. A certificate of version 1 begins INTEGER, algorithm, Name.
    const bool isRequest = parts[0].tag == TagInteger && parts[1].tag == TagSequence &&
                           elementOf(parts[1].content).tag != TagOid && elementOf(parts[2].content).tag == TagSequence;
    return isRequest ? Kind::Request : Kind::Certificate;
}

// What begins with a version.
Kind kindOfVersioned(const Elements &parts, bool &known) {
    const std::uint8_t inner = elementOf(parts[1].content).tag;
    if (parts[1].tag == TagInteger)
        return parts.size() == 2 ? Kind::RsaPublicKey : Kind::RsaPrivateKey;
    if (parts[1].tag == TagSequence && parts[2].tag == TagOctetString && inner == TagOid)
        return Kind::PrivateKeyInfo;
    known = parts[1].tag == TagSequence && inner == TagOid;
    return Kind::Pfx;
}

Kind kindOfElement(const Element &whole, bool &known) {
    constexpr std::size_t enough = 4;
    const Elements parts(whole.content, enough);
    const std::uint8_t second = parts[1].tag;
    switch (parts[0].tag) {
    case TagOid:
        return Kind::Message;
    case TagEnumerated:
        return Kind::OcspResponse;
    case TagInteger:
        return kindOfVersioned(parts, known);
    case TagSequence:
        if (second == TagBitString)
            return Kind::PublicKeyInfo;
        if (second == TagOctetString)
            return Kind::EncryptedPrivateKeyInfo;
        if (second == TagNone || second == TagContext0)
            return Kind::OcspRequest;
        known = second == TagSequence && parts[2].tag == TagBitString;
        return kindOfSigned(parts[0].content);
    default:
        known = false;
        return Kind::Certificate;
    }
}

} // namespace

const KindFacts &factsOf(Kind kind) {
    return *std::find_if(std::begin(facts), std::end(facts), [&](const KindFacts &row) { return row.kind == kind; });
}

Kind kindOf(const Document &document) {
    if (document.octets.empty())
        throw Failure{Exit::Unreadable, document.file + " is empty"};
    const auto *labelled = std::find_if(std::begin(facts), std::end(facts), [&](const KindFacts &row) {
        return !document.label.empty() && (row.label == document.label || row.oldLabel == document.label);
    });
    if (labelled != std::end(facts))
        return labelled->kind;
    const Element whole = elementOf(document.octets);
    if (!whole && document.octets[0] == TagSequence)
        throw Failure{Exit::Unreadable, inWords(KACERT_LengthNotEqualErr, document.file)};
    bool known = whole.tag == TagSequence;
    const Kind kind = kindOfElement(whole, known);
    if (!known)
        throw Failure{Exit::Unreadable, document.file + " is neither PEM nor DER of a kind that is known"};
    return kind;
}

} // namespace tool
