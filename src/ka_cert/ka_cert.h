// Certificates: the context, its attributes, the extensions both ways.
#pragma once

#include "karil/cert.h"
#include "karil/cert_ext.h"

#include "ka_family.h"

namespace karil {

// Object identifiers of the extensions (RFC 5280 4.2) and what stands in them.
constexpr uint8_t OidSubjectKeyId[] = {0x55, 0x1D, 0x0E};
constexpr uint8_t OidKeyUsage[] = {0x55, 0x1D, 0x0F};
constexpr uint8_t OidSubjectAltName[] = {0x55, 0x1D, 0x11};
constexpr uint8_t OidIssuerAltName[] = {0x55, 0x1D, 0x12};
constexpr uint8_t OidBasicConstraints[] = {0x55, 0x1D, 0x13};
constexpr uint8_t OidCrlDistPoints[] = {0x55, 0x1D, 0x1F};
constexpr uint8_t OidCertPolicies[] = {0x55, 0x1D, 0x20};
constexpr uint8_t OidExtKeyUsage[] = {0x55, 0x1D, 0x25};
constexpr uint8_t OidAuthorityInfo[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x01, 0x01};
constexpr uint8_t OidCps[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x02, 0x01};
constexpr uint8_t OidOcsp[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01};
constexpr uint8_t OidCaIssuers[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x02};

// The eight extended key usages of the mask: 1.3.6.1.5.5.7.3.n is the bit 0x20 << n, n from 1.
constexpr uint8_t OidKeyPurpose[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x03};
constexpr uint32_t KeyPurposes = 8;
constexpr uint32_t keyPurposeBit(uint32_t n) {
    return 0x20u << n;
}

constexpr uint8_t MethodOcsp = 0x88;
constexpr uint8_t MethodCaIssuers = 0x89;
constexpr uint32_t FormRfc822Name = 1;
constexpr uint32_t FormDirectoryName = 4;

// What the nodes of the lists own.
template <> inline void clearNode(PolicyQualifierNode &node) {
    freeData(node.uri);
}
template <> inline void clearNode(PolicyNode &node) {
    freeData(node.oid);
    freeList(node.cps);
}
template <> inline void clearNode(DefinedUsageNode &node) {
    freeData(node.dotted);
}
template <> inline void clearNode(DistributionPointNode &node) {
    freeGeneralNames(node.fullName);
}
template <> inline void clearNode(AccessNode &node) {
    freeData(node.location);
}
template <> inline void clearNode(PrivateExtensionNode &node) {
    freeData(node.oid);
    freeData(node.value);
}

// extensions [3] EXPLICIT SEQUENCE OF Extension, if there are any
[[nodiscard]] Status writeExtensions(Writer &out, CertEncodeCtx &ctx);

// `last`: see append().
[[nodiscard]] Status decodeExtensions(const Element &extensions, CertExtensions &block, ListMarks &privateMarks);

} // namespace karil
