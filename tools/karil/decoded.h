// What the library decoded, for the commands that read.
#ifndef KARIL_TOOL_DECODED_H
#define KARIL_TOOL_DECODED_H

#include "der.h"
#include "failure.h"

#include <cstdint>
#include <string>

namespace tool {

inline karil::Bytes bytesOf(const Anybuf &record) {
    return {record.data, record.length};
}

// The fields of a to-be-signed certificate that the library's records hold in part.
struct CertificateParts {
    Element serial;
    Element issuer;
    Element subject;
    Element publicKey;
    Element extensions; // the SEQUENCE, if there is one
};
CertificateParts partsOf(const karil::Certificate &certificate);

karil::Certificate decodeCertificate(karil::Bytes der, const std::string &where);
karil::RevocationList decodeRevocationList(karil::Bytes der, const std::string &where);
karil::CertificationRequest decodeRequest(karil::Bytes der, const std::string &where);

// CERT_VALIDFROM or CERT_VALIDTO.
std::int64_t dateOf(const karil::Certificate &certificate, std::int32_t id);

} // namespace tool

#endif
