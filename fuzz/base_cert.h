// A certificate with all that encoding needs, for targets and seeds.
#pragma once

#include "fuzz.h"

#include <string_view>
#include <utility>

namespace karil_fuzz {

inline Bytes bytesOf(std::string_view text) {
    return {reinterpret_cast<const uint8_t *>(text.data()), text.size()};
}

inline int32_t setChar(CertEncodeCtx &ctx, int32_t id, Bytes value) {
    return KACert_SetCertAttributeChar(&ctx, id, value.data(), lengthOf(value));
}

inline constexpr uint8_t Sha1WithRsa[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x05};

inline constexpr std::pair<int32_t, int32_t> BaseNumbers[] = {
    {CERT_VERSION, 2}, {CERT_VALIDFROM, 1577836800}, {CERT_VALIDTO, 1893456000}};

inline void fillBase(CertEncodeCtx &ctx) {
    constexpr uint8_t serial[] = {0x81, 0x02};
    constexpr uint8_t key[] = {0x30, 0x03, 0x02, 0x01, 0x07};
    const std::pair<int32_t, Bytes> fields[] = {
        {CERT_SERIALNUMBER, serial},
        {CERT_OUTER_SIGNATUREALGORITHM, Sha1WithRsa},
        {CERT_INNER_SIGNATUREALGORITHM, Sha1WithRsa},
        {CERT_PUBLICKEY_ALGORITHM, Sha1WithRsa},
        {CERT_SUBJECTPUBLICKEYINFO, key},
        {CERT_ISSUER_COMMONNAME, bytesOf("Root")},
        {CERT_SUBJECT_COMMONNAME, bytesOf("Leaf")},
    };
    for (const auto &[id, value] : fields)
        must(setChar(ctx, id, value) == KACERT_Ok, "a base field can be set");
    for (const auto &[id, value] : BaseNumbers)
        must(KACert_SetCertAttributeInt(&ctx, id, value) == KACERT_Ok, "a base number can be set");
}

} // namespace karil_fuzz
