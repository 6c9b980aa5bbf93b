#include "ka_cert.h"

namespace karil {

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
Status openOid(const Element &extension, Bytes own, Opened &out) {
    Element oid;
    KA_PASS(readTyped(extension, oid, out.fields, KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr"));
    if (out.fields.empty())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    out.isOwn = equal(oid.bytes, own);
    return KACERT_Ok;
}

Status openValue(Opened &opened, Flag flag, uint8_t &critical, Status missing) {
    Element field = opened.fields.take();
    if (flag == Flag::ByTag ? field.startsWith(TagBoolean) : !opened.fields.empty()) {
        KA_STEP_AS("------>KAsn1_ReadBoolean", readBoolean(field, critical));
        field = opened.fields.take();
        if (!field.present())
            return KA_FAIL(missing, "------>KACERT_CertNotEndErr");
    }
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(field, opened.value));
    return KACERT_Ok;
}

namespace {

// The decoders are given an extension with their own object identifier, which was read, and with what stands behind.
Status decodeBasicConstraints(Opened &opened, CertExtensions &block) {
    BasicConstraintsExtension &field = block.basicConstraints;
    block.hasBasicConstraints = 1;
    KA_PASS(openValue(opened, Flag::ByTag, field.critical, KACERT_CertNotEndErr));
    if (!opened.value.present())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    // BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER OPTIONAL }
    Level constraints;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(opened.value, constraints));
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
Status decodeAuthorityKeyId(Opened &opened, CertExtensions &block) {
    AuthorityKeyIdExtension &field = block.authorityKeyId;
    block.hasAuthorityKeyId = 1;
    KA_PASS(openValue(opened, Flag::ByTag, field.critical, KACERT_CertNotEndErr));
    if (!opened.value.present())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    Level parts;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(opened.value, parts));
    while (!parts.empty()) {
        Implicit part;
        KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(parts.take(), part));
        if (part.number != 0)
            continue;
        if (part.constructed && part.level.empty())
            return KA_FAIL(KACERT_InvalidParamErr, "------>KI_CopyAnybuf");
        KA_STEP_AS("------>KI_CopyAnybuf", store(field.keyId, part.constructed ? part.level.take() : part.content));
        field.hasKeyId = 1;
    }
    return KACERT_Ok;
}

Status decodeSubjectKeyId(Opened &opened, CertExtensions &block) {
    SubjectKeyIdExtension &field = block.subjectKeyId;
    block.hasSubjectKeyId = 1;
    KA_PASS(openValue(opened, Flag::ByTag, field.critical, KACERT_InvalidParamErr));
    Element keyId;
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(opened.value, keyId));
    KA_STEP_AS("------>KI_CopyAnybuf", store(field.keyId, keyId));
    return KACERT_Ok;
}

Status decodeKeyUsage(Opened &opened, CertExtensions &block) {
    KeyUsageExtension &field = block.keyUsage;
    block.hasKeyUsage = 1;
    KA_PASS(openValue(opened, Flag::ByTag, field.critical, KACERT_CertNotEndErr));
    // The value comes out of an OCTET STRING, so its tag is not that of a BIT STRING: the reader keeps the
    // unused-bits octet as the first octet of the content.
    Element bits;
    KA_STEP_AS("------>KAsn1_ReadBitString", readValue(opened.value, bits));
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

Status decodeExtKeyUsage(Opened &opened, CertExtensions &block) {
    ExtKeyUsageExtension &field = block.extKeyUsage;
    block.hasExtKeyUsage = 1;
    KA_PASS(openValue(opened, Flag::ByTag, field.critical, KACERT_CertNotEndErr));
    uint32_t mask = 0;
    Level usages;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(opened.value, usages));
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

Status decodeCrlDistPoints(Opened &opened, CertExtensions &block) {
    CrlDistPointsExtension &field = block.crlDistPoints;
    block.hasCrlDistPoints = 1;
    KA_PASS(openValue(opened, Flag::ByTag, field.critical, KACERT_CertNotEndErr));
    Level points;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(opened.value, points));
    DistributionPointNode *last = nullptr;
    while (!points.empty()) {
        NodePtr<DistributionPointNode> node(KA_CREATE(DistributionPointNode));
        if (node == nullptr)
            return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
        node->hasDistributionPoint = 1;
        KA_PASS(readDistributionPoint(points.take(), *node));
        if (field.first == nullptr)
            field.cursor = node.get();
        append<&DistributionPointNode::next>(field.first, last, node.release());
    }
    return KACERT_Ok;
}

Status decodeAltName(Opened &opened, uint8_t &flag, AltNameExtension &field) {
    flag = 1;
    KA_PASS(openValue(opened, Flag::BySuccessor, field.critical, KACERT_CertNotEndErr));
    if (decodeGeneralNames(opened.value, field.names, flag) != KACERT_Ok)
        KA_TRACE("------>KI_DecodeGeneralNameS");
    return KACERT_Ok;
}

Status decodeSubjectAltName(Opened &opened, CertExtensions &block) {
    return decodeAltName(opened, block.hasSubjectAltName, block.subjectAltName);
}

Status decodeIssuerAltName(Opened &opened, CertExtensions &block) {
    return decodeAltName(opened, block.hasIssuerAltName, block.issuerAltName);
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

Status decodePrivate(const Element &extension, CertExtensions &block, PrivateExtensionNode *&last) {
    NodePtr<PrivateExtensionNode> node(KA_CREATE(PrivateExtensionNode));
    if (node == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    KA_PASS(readPrivate(extension, *node));
    append<&PrivateExtensionNode::next>(block.privateExtensions, last, node.release());
    block.hasPrivate = 1;
    return KACERT_Ok;
}

using Decode = Status (*)(Opened &opened, CertExtensions &block);

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

Status decodeKnown(Decode decode, Opened &opened, CertExtensions &block) {
    if (opened.fields.empty())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    return decode(opened, block);
}

Status decodeOne(const Element &extension, CertExtensions &block, PrivateExtensionNode *&last) {
    Opened opened;
    Element oid;
    KA_PASS(readTyped(extension, oid, opened.fields));
    const KnownExtension *known = knownExtension(oid.bytes);
    if (known == nullptr)
        KA_STEP_AS("------>KI_Cert_DecodeExtension_Private", decodePrivate(extension, block, last));
    else if (block.*known->flag == 0)
        KA_STEP_AS(known->words, decodeKnown(known->decode, opened, block));
    return KACERT_Ok;
}

// One extension by itself. Most leave another one alone.
template <const auto &Oid, Decode Own> Status decodeSingle(const Element &extension, CertExtensions &block) {
    Opened opened;
    KA_PASS(openOid(extension, Oid, opened));
    return opened.isOwn ? Own(opened, block) : KACERT_Ok;
}

Status decodeSingleBasicConstraints(const Element &extension, CertExtensions &block) {
    Opened opened;
    if (readSequence(extension, opened.fields) != KACERT_Ok)
        return KA_FAIL(KACERT_MemoryErr, "------>KAsn1_ReadSequence");
    KA_PASS(openOid(extension, OidBasicConstraints, opened));
    return opened.isOwn ? decodeBasicConstraints(opened, block)
                        : KA_FAIL(KACERT_InvalidParamErr, "------>KACERT_InvalidParamErr");
}

Status decodeSingleExtKeyUsage(const Element &extension, CertExtensions &block) {
    Opened opened;
    KA_PASS(openOid(extension, OidExtKeyUsage, opened));
    if (opened.isOwn)
        return decodeExtKeyUsage(opened, block);
    storeMask(block.extKeyUsage.mask, 0);
    return KACERT_Ok;
}

} // namespace

Status decodeExtensions(const Element &extensions, CertExtensions &block, PrivateExtensionNode *&last) {
    Element content;
    KA_STEP_AS("------>KAsn1_ReadExplicit", readValue(extensions, content));
    if (!content.present())
        return KACERT_Ok;
    Level level;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(content, level));
    while (!level.empty())
        KA_PASS(decodeOne(level.take(), block, last));
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_Cert_DecodeExtensions(const Anybuf *extensions, CertExtensions *block) {
    KA_FRAME("KI_Cert_DecodeExtensions");
    if (extensions == nullptr || extensions->data == nullptr || block == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    PrivateExtensionNode *last = nullptr;
    KA_PASS(decodeExtensions(elementOf(*extensions), *block, last));
    return KA_DONE();
}

int32_t KI_Cert_DecodeExtension_Private(const Anybuf *extension, CertExtensions *block) {
    KA_FRAME("KI_Cert_DecodeExtension_Private");
    if (extension == nullptr || extension->data == nullptr || block == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    PrivateExtensionNode *last = nullptr;
    KA_PASS(decodePrivate(elementOf(*extension), *block, last));
    return KA_DONE();
}

#define KA_EXTENSION(NAME, DECODE)                                                                                     \
    int32_t NAME(const Anybuf *extension, CertExtensions *block) {                                                     \
        return KA_FRAMED(#NAME, decodePart(extension, block, DECODE));                                                 \
    }

KA_EXTENSION(KI_Cert_DecodeExtension_BasicConstraint, decodeSingleBasicConstraints)
KA_EXTENSION(KI_Cert_DecodeExtension_AuthorityKeyIdentifyer, (decodeSingle<OidAuthorityKeyId, decodeAuthorityKeyId>))
KA_EXTENSION(KI_Cert_DecodeExtension_SubjectKeyIdentifier, (decodeSingle<OidSubjectKeyId, decodeSubjectKeyId>))
KA_EXTENSION(KI_Cert_DecodeExtension_KeyUsage, (decodeSingle<OidKeyUsage, decodeKeyUsage>))
KA_EXTENSION(KI_Cert_DecodeExtension_ExtKeyUsage, decodeSingleExtKeyUsage)
KA_EXTENSION(KI_Cert_DecodeExtension_CrlDistributionPoint, (decodeSingle<OidCrlDistPoints, decodeCrlDistPoints>))
KA_EXTENSION(KI_Cert_DecodeExtension_SubjectAltName, (decodeSingle<OidSubjectAltName, decodeSubjectAltName>))
KA_EXTENSION(KI_Cert_DecodeExtension_IssuerAltName, (decodeSingle<OidIssuerAltName, decodeIssuerAltName>))
