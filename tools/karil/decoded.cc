#include "decoded.h"

namespace tool {
namespace {

template <class Handle, class Decode> Handle decoded(Decode decode, karil::Bytes der, const std::string &where) {
    Handle object = valueOf(Handle::make(), where);
    check(karil::call(decode, object, der), where);
    return object;
}

} // namespace

CertificateParts partsOf(const karil::Certificate &certificate) {
    const Elements fields(elementOf(bytesOf(certificate->tbs)).content);
    const std::size_t first = fields[0].tag == TagContext0 ? 1 : 0;
    CertificateParts parts{fields[first], fields[first + 2], fields[first + 4], fields[first + 5], {}};
    for (const Element &field : fields)
        if (field.tag == TagContext0 + 3)
            parts.extensions = elementOf(field.content);
    return parts;
}

karil::Certificate decodeCertificate(karil::Bytes der, const std::string &where) {
    auto certificate = decoded<karil::Certificate>(KACert_DecodeCert, der, where);
    // The library takes a certificate without content for one.
    if (certificate->publicKey.length == 0)
        throw Failure{Exit::Unreadable, inWords(KACERT_CertNotEndErr, where)};
    return certificate;
}

karil::RevocationList decodeRevocationList(karil::Bytes der, const std::string &where) {
    return decoded<karil::RevocationList>(KACert_DecodeCrl, der, where);
}

karil::CertificationRequest decodeRequest(karil::Bytes der, const std::string &where) {
    return decoded<karil::CertificationRequest>(KACert_DecodeCsr, der, where);
}

std::int64_t dateOf(const karil::Certificate &certificate, std::int32_t id) {
    std::int32_t seconds = 0;
    check(KACert_GetCertAttributeInt(certificate.get(), id, &seconds), "the date");
    return seconds;
}

} // namespace tool
