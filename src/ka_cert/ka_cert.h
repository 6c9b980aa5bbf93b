// Certificates: the context, its attributes, the extensions both ways.
#pragma once

#include "karil/cert.h"
#include "karil/cert_ext.h"

#include "ka_name.h"

namespace karil {

// Object identifiers of the extensions (RFC 5280 4.2) and what stands in them.
constexpr uint8_t OidSubjectKeyId[] = {0x55, 0x1D, 0x0E};
constexpr uint8_t OidKeyUsage[] = {0x55, 0x1D, 0x0F};
constexpr uint8_t OidSubjectAltName[] = {0x55, 0x1D, 0x11};
constexpr uint8_t OidIssuerAltName[] = {0x55, 0x1D, 0x12};
constexpr uint8_t OidBasicConstraints[] = {0x55, 0x1D, 0x13};
constexpr uint8_t OidCrlDistPoints[] = {0x55, 0x1D, 0x1F};
constexpr uint8_t OidCertPolicies[] = {0x55, 0x1D, 0x20};
constexpr uint8_t OidAuthorityKeyId[] = {0x55, 0x1D, 0x23};
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
constexpr uint32_t FormUri = 6;

// What a list node owns, so that NodePtr and freeList can release it.
inline void clearNode(PolicyQualifierNode &node) {
    freeData(node.uri);
}
inline void clearNode(DefinedUsageNode &node) {
    freeData(node.dotted);
}
inline void clearNode(DistributionPointNode &node) {
    clearGeneralNames(node.fullName);
}
inline void clearNode(AccessNode &node) {
    freeData(node.location);
}
inline void clearNode(PrivateExtensionNode &node) {
    freeData(node.oid);
    freeData(node.value);
}
void clearNode(PolicyNode &node);

struct FreeNode {
    template <class Node> void operator()(Node *node) const noexcept {
        clearNode(*node);
        KAPR_Free(node);
    }
};
template <class Node> using NodePtr = std::unique_ptr<Node, FreeNode>;

template <class Node> void freeList(Node *&first) {
    while (first != nullptr) {
        const NodePtr<Node> node(first);
        first = node->next;
    }
}

// One answer of KACert_GetCertAttributeChar.
struct Answer {
    uint8_t *result;
    uint32_t *length;
    const char *words;
    const char *lengthWords;
};
// Stores the length and, with a buffer, the octets.
[[nodiscard]] Status give(const Answer &answer, Bytes value);
// The same for an answer that has no length-only form.
[[nodiscard]] Status giveFilled(const Answer &answer, Bytes value);

// What is known of an attribute id of the Char functions. One more is one row of attributes.cc.
struct CertAttribute {
    int32_t id;
    const char *setWords;
    const char *getWords;
    const char *getLengthWords;
    Status (*set)(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value);          // null: not set
    Status (*get)(CertEncodeCtx &ctx, CertExtensions &ext, const Answer &answer); // null: not asked for
};
const CertAttribute *certAttribute(int32_t id);

enum class NameList { Issuer, Subject, SubjectAlt, IssuerAlt };
[[nodiscard]] Status setName(CertEncodeCtx &ctx, NameList list, uint32_t kind, Bytes value);
[[nodiscard]] Status giveName(const NameRecord &head, uint32_t kind, const Answer &answer);
[[nodiscard]] Status giveUnits(const NameRecord &head, const Answer &answer);
[[nodiscard]] Status giveText(Anybuf &cache, const NameRecord &head, const Answer &answer);

// What a successful Encode hands out.
[[nodiscard]] Status handOut(const Anybuf &encoded, uint8_t *result, uint32_t *resultLength);

// Extension ::= SEQUENCE { extnID, critical BOOLEAN DEFAULT FALSE, extnValue }, without extnValue.
[[nodiscard]] Status writeExtensionHead(Bytes oid, uint8_t critical, Chain &fields);
// The whole, `value` being what goes into the extnValue OCTET STRING.
[[nodiscard]] Status writeExtension(Bytes oid, uint8_t critical, const Anybuf &value, Anybuf **out);
// SEQUENCE { [0] IMPLICIT keyId }
[[nodiscard]] Status writeAuthorityKeyId(const AuthorityKeyIdExtension &field, Anybuf **out);

// `last`: see append().
[[nodiscard]] Status decodeExtensions(const Element &extensions, CertExtensions &block, PrivateExtensionNode *&last);

// AlgorithmIdentifier, of which the object identifier alone is taken, into `out`.
[[nodiscard]] Status readAlgorithm(const Element &element, AlgorithmRecord &out);
// SubjectPublicKeyInfo: the whole OID element and the content of the BIT STRING.
[[nodiscard]] Status readPublicKey(const Element &element, AlgorithmRecord &algorithm, Anybuf &key);

} // namespace karil
