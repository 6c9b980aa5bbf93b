#include "ka_cert.h"

namespace karil {

Status openExtension(const Element &extension, Status empty, const char *emptyWords, Bytes &oid, Level &fields) {
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence, extension, fields);
    if (fields.empty())
        return KA_FAIL(empty, emptyWords);
    Element value;
    KA_STEP_AS("------>KAsn1_ReadObjectId", readValue, fields.take(), value);
    oid = value.bytes;
    return KACERT_Ok;
}

Status openSingle(const Element &extension, Bytes own, bool &isOwn, Level &fields) {
    Bytes oid;
    KA_PASS(openExtension, extension, KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr", oid, fields);
    isOwn = equal(oid, own);
    return fields.empty() ? KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr") : KACERT_Ok;
}

Status openValue(Level &fields, Flag flag, uint8_t &critical, Status missing, Element &value) {
    Element field = fields.take();
    if (flag == Flag::ByTag ? field.startsWith(TagBoolean) : !fields.empty()) {
        KA_STEP_AS("------>KAsn1_ReadBoolean", readBoolean, field, critical);
        field = fields.take();
        if (!field.present())
            return KA_FAIL(missing, "------>KACERT_CertNotEndErr");
    }
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue, field, value);
    return KACERT_Ok;
}

namespace {

// The decoders are given the fields behind their own object identifier, of which there is one at the least.
Status decodeBasicConstraints(Level fields, CertExtensions &block) {
    BasicConstraintsExtension &field = block.basicConstraints;
    block.hasBasicConstraints = 1;
    Element value;
    KA_PASS(openValue, fields, Flag::ByTag, field.critical, KACERT_CertNotEndErr, value);
    if (!value.present())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    // BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER OPTIONAL }
    Level constraints;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence, value, constraints);
    if (constraints.empty())
        return KACERT_Ok;
    KA_STEP_AS("------>KAsn1_ReadBoolean", readBoolean, constraints.take(), field.isCa);
    if (constraints.empty())
        return KACERT_Ok;
    field.hasPathLen = 1;
    Element pathLen;
    KA_STEP_AS("------>KAsn1_ReadIntegerArray", readValue, constraints.take(), pathLen);
    KA_STEP_AS("------>KI_CopyAnybuf", store, field.pathLen, pathLen);
    return KACERT_Ok;
}

// AuthorityKeyIdentifier ::= SEQUENCE { keyIdentifier [0], authorityCertIssuer [1], authorityCertSerialNumber [2] }
Status decodeAuthorityKeyId(Level fields, CertExtensions &block) {
    AuthorityKeyIdExtension &field = block.authorityKeyId;
    block.hasAuthorityKeyId = 1;
    Element value;
    KA_PASS(openValue, fields, Flag::ByTag, field.critical, KACERT_CertNotEndErr, value);
    if (!value.present())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    Level parts;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence, value, parts);
    while (!parts.empty()) {
        Implicit part;
        KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit, parts.take(), part);
        if (part.number != 0)
            continue;
        if (part.constructed && part.level.empty())
            return KA_FAIL(KACERT_InvalidParamErr, "------>KI_CopyAnybuf");
        KA_STEP_AS("------>KI_CopyAnybuf", store, field.keyId, part.constructed ? part.level.take() : part.content);
        field.hasKeyId = 1;
    }
    return KACERT_Ok;
}

Status decodeSubjectKeyId(Level fields, CertExtensions &block) {
    SubjectKeyIdExtension &field = block.subjectKeyId;
    block.hasSubjectKeyId = 1;
    Element value;
    KA_PASS(openValue, fields, Flag::ByTag, field.critical, KACERT_InvalidParamErr, value);
    Element keyId;
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue, value, keyId);
    KA_STEP_AS("------>KI_CopyAnybuf", store, field.keyId, keyId);
    return KACERT_Ok;
}

Status decodeKeyUsage(Level fields, CertExtensions &block) {
    KeyUsageExtension &field = block.keyUsage;
    block.hasKeyUsage = 1;
    Element value;
    KA_PASS(openValue, fields, Flag::ByTag, field.critical, KACERT_CertNotEndErr, value);
    // The value comes out of an OCTET STRING, so its tag is not that of a BIT STRING: the reader keeps the
    // unused-bits octet as the first octet of the content.
    Element bits;
    KA_STEP_AS("------>KAsn1_ReadBitString", readValue, value, bits);
    KA_STEP_AS("------>KI_CopyAnybuf", store, field.bits, bits);
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

Status decodeExtKeyUsage(Level fields, CertExtensions &block) {
    ExtKeyUsageExtension &field = block.extKeyUsage;
    block.hasExtKeyUsage = 1;
    Element value;
    KA_PASS(openValue, fields, Flag::ByTag, field.critical, KACERT_CertNotEndErr, value);
    uint32_t mask = 0;
    Level usages;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence, value, usages);
    while (!usages.empty()) {
        Element usage;
        KA_STEP_AS("------>KAsn1_ReadObjectId", readValue, usages.take(), usage);
        mask |= usageBit(usage.bytes);
    }
    storeMask(field.mask, mask);
    return KACERT_Ok;
}

// DistributionPoint ::= SEQUENCE { distributionPoint [0] { fullName [0] GeneralNames }, reasons [1], cRLIssuer [2] }
Status readDistributionPoint(const Element &point, DistributionPointNode &node) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence, point, fields);
    while (!fields.empty()) {
        Element content;
        KA_STEP_AS("------>KAsn1_ReadExplicit", readValue, fields.take(), content);
        if ((content.tag & 0x1F) != 0)
            continue;
        node.hasFullName = 1;
        Implicit fullName;
        KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit, content, fullName);
        node.fullName.present[FormUri] = 1;
        if (fullName.constructed && fullName.level.empty())
            return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadImplicit");
        KA_STEP_AS("------>KI_CopyAnybuf", store, node.fullName.uniformResourceIdentifier,
                   fullName.constructed ? fullName.level.take() : fullName.content);
    }
    return KACERT_Ok;
}

Status decodeCrlDistPoints(Level fields, CertExtensions &block) {
    CrlDistPointsExtension &field = block.crlDistPoints;
    block.hasCrlDistPoints = 1;
    Element value;
    KA_PASS(openValue, fields, Flag::ByTag, field.critical, KACERT_CertNotEndErr, value);
    Level points;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence, value, points);
    DistributionPointNode *last = nullptr;
    while (!points.empty()) {
        NodePtr<DistributionPointNode> node(KA_CREATE(DistributionPointNode));
        if (node == nullptr)
            return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
        node->hasDistributionPoint = 1;
        KA_PASS(readDistributionPoint, points.take(), *node);
        if (field.first == nullptr)
            field.cursor = node.get();
        append<&DistributionPointNode::next>(field.first, last, node.release());
    }
    return KACERT_Ok;
}

Status decodeAltName(Level fields, uint8_t &flag, AltNameExtension &field) {
    flag = 1;
    Element value;
    KA_PASS(openValue, fields, Flag::BySuccessor, field.critical, KACERT_CertNotEndErr, value);
    if (decodeGeneralNames(value, field.names, flag) != KACERT_Ok)
        KA_TRACE("------>KI_DecodeGeneralNameS");
    return KACERT_Ok;
}

Status decodeSubjectAltName(Level fields, CertExtensions &block) {
    return decodeAltName(fields, block.hasSubjectAltName, block.subjectAltName);
}

Status decodeIssuerAltName(Level fields, CertExtensions &block) {
    return decodeAltName(fields, block.hasIssuerAltName, block.issuerAltName);
}

Status readPrivate(const Element &extension, PrivateExtensionNode &node) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence, extension, fields);
    if (fields.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadObjectId");
    Element oid;
    KA_STEP_AS("------>KAsn1_ReadObjectId", readValue, fields.take(), oid);
    KA_STEP_AS("------>KI_CopyAlgorithm", store, node.oid, oid);
    Element field = fields.take();
    if (field.startsWith(TagBoolean)) {
        KA_STEP_AS("------>KAsn1_ReadBoolean", readBoolean, field, node.critical);
        field = fields.take();
    }
    if (!field.present())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadOctetString");
    Element value;
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue, field, value);
    KA_STEP_AS("------>KI_CopyAnybuf", store, node.value, value);
    return KACERT_Ok;
}

Status decodePrivate(const Element &extension, CertExtensions &block, PrivateExtensionNode *&last) {
    NodePtr<PrivateExtensionNode> node(KA_CREATE(PrivateExtensionNode));
    if (node == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    KA_PASS(readPrivate, extension, *node);
    append<&PrivateExtensionNode::next>(block.privateExtensions, last, node.release());
    block.hasPrivate = 1;
    return KACERT_Ok;
}

using Decode = Status (*)(Level fields, CertExtensions &block);

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

Status decodeFields(Decode decode, Level fields, CertExtensions &block) {
    if (fields.empty())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    return decode(fields, block);
}

Status decodeOne(const Element &extension, CertExtensions &block, PrivateExtensionNode *&last) {
    Bytes oid;
    Level fields;
    KA_PASS(openExtension, extension, KACERT_InvalidParamErr, "------>KAsn1_ReadObjectId", oid, fields);
    const KnownExtension *known = knownExtension(oid);
    if (known == nullptr)
        KA_STEP_AS("------>KI_Cert_DecodeExtension_Private", decodePrivate, extension, block, last);
    else if (block.*known->flag == 0)
        KA_STEP_AS(known->words, decodeFields, known->decode, fields, block);
    return KACERT_Ok;
}

Status decodeSingle(const Element &extension, Bytes own, Decode decode, CertExtensions &block) {
    bool isOwn = false;
    Level fields;
    KA_PASS(openSingle, extension, own, isOwn, fields);
    return isOwn ? decode(fields, block) : KACERT_Ok;
}

Status decodeSingleBasicConstraints(const Element &extension, Bytes own, Decode decode, CertExtensions &block) {
    bool isOwn = false;
    Level fields;
    if (readSequence(extension, fields) != KACERT_Ok)
        return KA_FAIL(KACERT_MemoryErr, "------>KAsn1_ReadSequence");
    KA_PASS(openSingle, extension, own, isOwn, fields);
    return isOwn ? decode(fields, block) : KA_FAIL(KACERT_InvalidParamErr, "------>KACERT_InvalidParamErr");
}

Status decodeSingleExtKeyUsage(const Element &extension, Bytes own, Decode decode, CertExtensions &block) {
    bool isOwn = false;
    Level fields;
    KA_PASS(openSingle, extension, own, isOwn, fields);
    if (isOwn)
        return decode(fields, block);
    storeMask(block.extKeyUsage.mask, 0);
    return KACERT_Ok;
}

} // namespace

Status decodeExtensions(const Element &extensions, CertExtensions &block, PrivateExtensionNode *&last) {
    Element content;
    KA_STEP_AS("------>KAsn1_ReadExplicit", readValue, extensions, content);
    if (!content.present())
        return KACERT_Ok;
    Level level;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence, content, level);
    while (!level.empty())
        KA_PASS(decodeOne, level.take(), block, last);
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_Cert_DecodeExtensions(const Anybuf *extensions, CertExtensions *block) {
    KA_FRAME("KI_Cert_DecodeExtensions");
    if (extensions == nullptr || extensions->data == nullptr || block == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    PrivateExtensionNode *last = nullptr;
    KA_PASS(decodeExtensions, elementOf(*extensions), *block, last);
    return KA_DONE();
}

int32_t KI_Cert_DecodeExtension_Private(const Anybuf *extension, CertExtensions *block) {
    KA_FRAME("KI_Cert_DecodeExtension_Private");
    if (extension == nullptr || extension->data == nullptr || block == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    PrivateExtensionNode *last = nullptr;
    KA_PASS(decodePrivate, elementOf(*extension), *block, last);
    return KA_DONE();
}

#define KA_EXTENSION(NAME, SINGLE, OID, DECODE)                                                                        \
    int32_t NAME(const Anybuf *extension, CertExtensions *block) {                                                     \
        KA_FRAME(#NAME);                                                                                               \
        if (extension == nullptr || extension->data == nullptr || block == nullptr)                                    \
            return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");                                          \
        KA_PASS(SINGLE, elementOf(*extension), OID, DECODE, *block);                                                   \
        return KA_DONE();                                                                                              \
    }

KA_EXTENSION(KI_Cert_DecodeExtension_BasicConstraint, decodeSingleBasicConstraints, OidBasicConstraints,
             decodeBasicConstraints)
KA_EXTENSION(KI_Cert_DecodeExtension_AuthorityKeyIdentifyer, decodeSingle, OidAuthorityKeyId, decodeAuthorityKeyId)
KA_EXTENSION(KI_Cert_DecodeExtension_SubjectKeyIdentifier, decodeSingle, OidSubjectKeyId, decodeSubjectKeyId)
KA_EXTENSION(KI_Cert_DecodeExtension_KeyUsage, decodeSingle, OidKeyUsage, decodeKeyUsage)
KA_EXTENSION(KI_Cert_DecodeExtension_ExtKeyUsage, decodeSingleExtKeyUsage, OidExtKeyUsage, decodeExtKeyUsage)
KA_EXTENSION(KI_Cert_DecodeExtension_CrlDistributionPoint, decodeSingle, OidCrlDistPoints, decodeCrlDistPoints)
KA_EXTENSION(KI_Cert_DecodeExtension_SubjectAltName, decodeSingle, OidSubjectAltName, decodeSubjectAltName)
KA_EXTENSION(KI_Cert_DecodeExtension_IssuerAltName, decodeSingle, OidIssuerAltName, decodeIssuerAltName)
