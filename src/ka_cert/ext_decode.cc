#include "ka_cert.h"

namespace karil {

namespace {

// The decoders are given the fields after their own object identifier.
Status decodeBasicConstraints(ExtensionParts &parts, CertExtensions &block) {
    BasicConstraintsExtension &field = block.basicConstraints;
    block.hasBasicConstraints = 1;
    KA_PASS(readExtensionValue(parts, CriticalFlag::ByTag, field.critical, KACERT_CertNotEndErr));
    if (!parts.value.present())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    // BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER OPTIONAL }
    Level constraints;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(parts.value, constraints));
    if (constraints.empty())
        return KACERT_Ok;
    KA_STEP_AS("------>KAsn1_ReadBoolean", readBoolean(constraints.take(), field.isCa));
    if (constraints.empty())
        return KACERT_Ok;
    field.hasPathLen = 1;
    Element pathLen;
    KA_STEP_AS("------>KAsn1_ReadIntegerArray", readValue(constraints.take(), pathLen));
    KA_STEP_AS("------>KI_CopyAnybuf", store(field.pathLen, pathLen));
    return KACERT_Ok;
}

// AuthorityKeyIdentifier ::= SEQUENCE { keyIdentifier [0], authorityCertIssuer [1], authorityCertSerialNumber [2] }
Status decodeAuthorityKeyId(ExtensionParts &parts, CertExtensions &block) {
    AuthorityKeyIdExtension &field = block.authorityKeyId;
    block.hasAuthorityKeyId = 1;
    KA_PASS(readExtensionValue(parts, CriticalFlag::ByTag, field.critical, KACERT_CertNotEndErr));
    if (!parts.value.present())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    Level identifier;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(parts.value, identifier));
    while (!identifier.empty()) {
        Implicit part;
        KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(identifier.take(), part));
        if (part.number != 0)
            continue;
        if (part.constructed && part.level.empty())
            return KA_FAIL(KACERT_InvalidParamErr, "------>KI_CopyAnybuf");
        KA_STEP_AS("------>KI_CopyAnybuf", store(field.keyId, part.constructed ? part.level.take() : part.content));
        field.hasKeyId = 1;
    }
    return KACERT_Ok;
}

Status decodeSubjectKeyId(ExtensionParts &parts, CertExtensions &block) {
    SubjectKeyIdExtension &field = block.subjectKeyId;
    block.hasSubjectKeyId = 1;
    KA_PASS(readExtensionValue(parts, CriticalFlag::ByTag, field.critical, KACERT_InvalidParamErr));
    Element keyId;
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(parts.value, keyId));
    KA_STEP_AS("------>KI_CopyAnybuf", store(field.keyId, keyId));
    return KACERT_Ok;
}

Status decodeKeyUsage(ExtensionParts &parts, CertExtensions &block) {
    KeyUsageExtension &field = block.keyUsage;
    block.hasKeyUsage = 1;
    KA_PASS(readExtensionValue(parts, CriticalFlag::ByTag, field.critical, KACERT_CertNotEndErr));
    // The value comes out of an OCTET STRING, so its tag is not that of a BIT STRING: the reader keeps the
    // unused-bits octet as the first octet of the content.
    Element bits;
    KA_STEP_AS("------>KAsn1_ReadBitString", readValue(parts.value, bits));
    KA_STEP_AS("------>KI_CopyAnybuf", store(field.bits, bits));
    return KACERT_Ok;
}

uint32_t usageBit(Bytes oid) {
    constexpr size_t arc = sizeof OidKeyPurpose;
    if (oid.size() != arc + 1 || !equal(oid.first(arc), OidKeyPurpose) || oid[arc] < 1 || oid[arc] > KeyPurposes)
        return 0;
    return keyPurposeBit(oid[arc]);
}

// A failed allocation leaves the mask as it is.
void storeMask(Anybuf &field, uint32_t mask) {
    const uint8_t octets[] = {static_cast<uint8_t>(mask), static_cast<uint8_t>(mask >> 8),
                              static_cast<uint8_t>(mask >> 16), static_cast<uint8_t>(mask >> 24)};
    if (replace(field, octets) != KACERT_Ok)
        KA_TRACE("------>KI_SetAttributeCharValue");
}

Status decodeExtKeyUsage(ExtensionParts &parts, CertExtensions &block) {
    ExtKeyUsageExtension &field = block.extKeyUsage;
    block.hasExtKeyUsage = 1;
    KA_PASS(readExtensionValue(parts, CriticalFlag::ByTag, field.critical, KACERT_CertNotEndErr));
    uint32_t mask = 0;
    Level usages;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(parts.value, usages));
    while (!usages.empty()) {
        Element usage;
        KA_STEP_AS("------>KAsn1_ReadObjectId", readValue(usages.take(), usage));
        mask |= usageBit(usage.bytes);
    }
    storeMask(field.mask, mask);
    return KACERT_Ok;
}

// DistributionPoint ::= SEQUENCE { distributionPoint [0] { fullName [0] GeneralNames }, reasons [1], cRLIssuer [2] }
Status readDistributionPoint(const Element &point, DistributionPointNode &node) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(point, fields));
    while (!fields.empty()) {
        Element content;
        KA_STEP_AS("------>KAsn1_ReadExplicit", readValue(fields.take(), content));
        if ((content.tag & 0x1F) != 0)
            continue;
        node.hasFullName = 1;
        Implicit fullName;
        KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(content, fullName));
        node.fullName.present[FormUri] = 1;
        if (fullName.constructed && fullName.level.empty())
            return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadImplicit");
        KA_STEP_AS("------>KI_CopyAnybuf", store(node.fullName.uniformResourceIdentifier,
                                                 fullName.constructed ? fullName.level.take() : fullName.content));
    }
    return KACERT_Ok;
}

Status decodeCrlDistPoints(ExtensionParts &parts, CertExtensions &block) {
    CrlDistPointsExtension &field = block.crlDistPoints;
    block.hasCrlDistPoints = 1;
    KA_PASS(readExtensionValue(parts, CriticalFlag::ByTag, field.critical, KACERT_CertNotEndErr));
    Level points;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(parts.value, points));
    DistributionPointNode *last = nullptr;
    while (!points.empty()) {
        NodePtr<DistributionPointNode> node;
        KA_PASS(createNode(node));
        node->hasDistributionPoint = 1;
        KA_PASS(readDistributionPoint(points.take(), *node));
        if (field.first == nullptr)
            field.cursor = node.get();
        append<&DistributionPointNode::next>(field.first, last, node.release());
    }
    return KACERT_Ok;
}

Status decodeAltName(ExtensionParts &parts, uint8_t &flag, AltNameExtension &field) {
    flag = 1;
    KA_PASS(readExtensionValue(parts, CriticalFlag::BySuccessor, field.critical, KACERT_CertNotEndErr));
    if (decodeGeneralNames(parts.value, field.names, flag) != KACERT_Ok)
        KA_TRACE("------>KI_DecodeGeneralNameS");
    return KACERT_Ok;
}

Status decodeSubjectAltName(ExtensionParts &parts, CertExtensions &block) {
    return decodeAltName(parts, block.hasSubjectAltName, block.subjectAltName);
}

Status decodeIssuerAltName(ExtensionParts &parts, CertExtensions &block) {
    return decodeAltName(parts, block.hasIssuerAltName, block.issuerAltName);
}

Status readPrivate(const Element &extension, PrivateExtensionNode &node) {
    Level fields;
    Element oid;
    KA_PASS(readTyped(extension, oid, fields));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(node.oid, oid));
    Element field = fields.take();
    if (field.startsWith(TagBoolean)) {
        KA_STEP_AS("------>KAsn1_ReadBoolean", readBoolean(field, node.critical));
        field = fields.take();
    }
    if (!field.present())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadOctetString");
    Element value;
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(field, value));
    KA_STEP_AS("------>KI_CopyAnybuf", store(node.value, value));
    return KACERT_Ok;
}

Status decodePrivate(const Element &extension, CertExtensions &block, ListMarks &privateMarks) {
    NodePtr<PrivateExtensionNode> node;
    KA_PASS(createNode(node));
    KA_PASS(readPrivate(extension, *node));
    appendMarked<&PrivateExtensionNode::next>(block.privateExtensions, privateMarks, node.release());
    block.hasPrivate = 1;
    return KACERT_Ok;
}

using Decode = Status (*)(ExtensionParts &parts, CertExtensions &block);

struct KnownExtension {
    Bytes oid;
    uint8_t CertExtensions::*flag;
    Decode decode;
    const char *words;
};
constexpr KnownExtension Known[] = {
    {OidBasicConstraints, &CertExtensions::hasBasicConstraints, decodeBasicConstraints,
     "------>KI_Cert_DecodeExtension_BasicConstraint"},
    {OidAuthorityKeyId, &CertExtensions::hasAuthorityKeyId, decodeAuthorityKeyId,
     "------>KI_Cert_DecodeExtension_AuthorityKeyIdentifyer"},
    {OidSubjectKeyId, &CertExtensions::hasSubjectKeyId, decodeSubjectKeyId,
     "------>KI_Cert_DecodeExtension_SubjectKeyIdentifier"},
    {OidKeyUsage, &CertExtensions::hasKeyUsage, decodeKeyUsage, "------>KI_Cert_DecodeExtension_KeyUsage"},
    {OidExtKeyUsage, &CertExtensions::hasExtKeyUsage, decodeExtKeyUsage, "------>KI_Cert_DecodeExtension_ExtKeyUsage"},
    {OidCrlDistPoints, &CertExtensions::hasCrlDistPoints, decodeCrlDistPoints,
     "------>KI_Cert_DecodeExtension_CrlDistributionPoint"},
    {OidSubjectAltName, &CertExtensions::hasSubjectAltName, decodeSubjectAltName,
     "------>KI_Cert_DecodeExtension_SubjectAltName"},
    {OidIssuerAltName, &CertExtensions::hasIssuerAltName, decodeIssuerAltName,
     "------>KI_Cert_DecodeExtension_IssuerAltName"},
};

const KnownExtension *knownExtension(Bytes oid) {
    for (const KnownExtension &known : Known)
        if (equal(known.oid, oid))
            return &known;
    return nullptr;
}

Status decodeKnown(Decode decode, ExtensionParts &parts, CertExtensions &block) {
    if (parts.fields.empty())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    return decode(parts, block);
}

Status decodeOne(const Element &extension, CertExtensions &block, ListMarks &privateMarks) {
    ExtensionParts parts;
    Element oid;
    KA_PASS(readTyped(extension, oid, parts.fields));
    const KnownExtension *known = knownExtension(oid.bytes);
    if (known == nullptr)
        KA_STEP_AS("------>KI_Cert_DecodeExtension_Private", decodePrivate(extension, block, privateMarks));
    else if (block.*known->flag == 0)
        KA_STEP_AS(known->words, decodeKnown(known->decode, parts, block));
    return KACERT_Ok;
}

} // namespace

Status decodeExtensions(const Element &extensions, CertExtensions &block, ListMarks &privateMarks) {
    Level list;
    KA_PASS(openExtensions(extensions, list));
    while (!list.empty())
        KA_PASS(decodeOne(list.take(), block, privateMarks));
    return KACERT_Ok;
}

namespace {

// A list without a hint to its end: a caller's block has none.
Status decodeIntoBlock(const Element &extensions, CertExtensions &block) {
    ListMarks privateMarks = {};
    return decodeExtensions(extensions, block, privateMarks);
}

Status decodeSinglePrivate(const Element &extension, CertExtensions &block) {
    ListMarks privateMarks = {};
    return decodePrivate(extension, block, privateMarks);
}

// One extension by itself. Most leave another one alone.
template <const auto &Oid, Decode Own> Status decodeSingle(const Element &extension, CertExtensions &block) {
    ExtensionParts parts;
    KA_PASS(readExtensionOid(extension, Oid, parts));
    return parts.isOwn ? Own(parts, block) : KACERT_Ok;
}

Status decodeSingleBasicConstraints(const Element &extension, CertExtensions &block) {
    ExtensionParts parts;
    if (readSequence(extension, parts.fields) != KACERT_Ok)
        return KA_FAIL(KACERT_MemoryErr, "------>KAsn1_ReadSequence");
    KA_PASS(readExtensionOid(extension, OidBasicConstraints, parts));
    return parts.isOwn ? decodeBasicConstraints(parts, block)
                       : KA_FAIL(KACERT_InvalidParamErr, "------>KACERT_InvalidParamErr");
}

Status decodeSingleExtKeyUsage(const Element &extension, CertExtensions &block) {
    ExtensionParts parts;
    KA_PASS(readExtensionOid(extension, OidExtKeyUsage, parts));
    if (parts.isOwn)
        return decodeExtKeyUsage(parts, block);
    storeMask(block.extKeyUsage.mask, 0);
    return KACERT_Ok;
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KI_Cert_DecodeExtensions(const Anybuf *extensions, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtensions", decodePart(extensions, block, decodeIntoBlock));
}

int32_t KI_Cert_DecodeExtension_Private(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_Private", decodePart(extension, block, decodeSinglePrivate));
}

int32_t KI_Cert_DecodeExtension_BasicConstraint(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_BasicConstraint",
                     decodePart(extension, block, decodeSingleBasicConstraints));
}

int32_t KI_Cert_DecodeExtension_AuthorityKeyIdentifyer(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_AuthorityKeyIdentifyer",
                     decodePart(extension, block, decodeSingle<OidAuthorityKeyId, decodeAuthorityKeyId>));
}

int32_t KI_Cert_DecodeExtension_SubjectKeyIdentifier(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_SubjectKeyIdentifier",
                     decodePart(extension, block, decodeSingle<OidSubjectKeyId, decodeSubjectKeyId>));
}

int32_t KI_Cert_DecodeExtension_KeyUsage(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_KeyUsage",
                     decodePart(extension, block, decodeSingle<OidKeyUsage, decodeKeyUsage>));
}

int32_t KI_Cert_DecodeExtension_ExtKeyUsage(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_ExtKeyUsage", decodePart(extension, block, decodeSingleExtKeyUsage));
}

int32_t KI_Cert_DecodeExtension_CrlDistributionPoint(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_CrlDistributionPoint",
                     decodePart(extension, block, decodeSingle<OidCrlDistPoints, decodeCrlDistPoints>));
}

int32_t KI_Cert_DecodeExtension_SubjectAltName(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_SubjectAltName",
                     decodePart(extension, block, decodeSingle<OidSubjectAltName, decodeSubjectAltName>));
}

int32_t KI_Cert_DecodeExtension_IssuerAltName(const Anybuf *extension, CertExtensions *block) {
    return KA_FRAMED("KI_Cert_DecodeExtension_IssuerAltName",
                     decodePart(extension, block, decodeSingle<OidIssuerAltName, decodeIssuerAltName>));
}
