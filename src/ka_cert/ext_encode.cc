#include "ka_cert.h"

#include <string.h>

namespace karil {

namespace {

// SEQUENCE { OID id-qt-cps, IA5String }, one for each CPS
Status writeQualifiers(const PolicyNode &policy, Anybuf **out) {
    Chain qualifiers;
    for (const PolicyQualifierNode *node = policy.cps; node != nullptr; node = node->next) {
        if (node->isCps == 0)
            continue;
        Chain fields;
        KA_STEP_AS("------>KAsn1_WriteObjectId", writeOid(OidCps, fields.slot()));
        KA_STEP(KAsn1_WriteIa5String(&node->uri, fields.slot()));
        KA_STEP(KAsn1_WriteSequence(fields.head(), qualifiers.slot()));
    }
    if (qualifiers.head() == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>NO CPS INFO");
    KA_STEP(KAsn1_WriteSequence(qualifiers.head(), out));
    return KACERT_Ok;
}

// CertificatePolicies ::= SEQUENCE { SEQUENCE { policyIdentifier, policyQualifiers } }
Status writePolicies(const CertPolicyExtension &field, Anybuf **out) {
    const PolicyNode *policy = field.policy;
    if (policy == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>NO CPS INFO");
    const AlgorithmRecord oid = {policy->id, policy->oid};
    Chain fields;
    KA_STEP(KAsn1_WriteObjectId(&oid, fields.slot()));
    KA_PASS(writeQualifiers(*policy, fields.slot()));
    Chain information;
    KA_STEP(KAsn1_WriteSequence(fields.head(), information.slot()));
    KA_STEP(KAsn1_WriteSequence(information.head(), out));
    return KACERT_Ok;
}

// The octets fill the end of a little-endian word; more than four are not read.
uint32_t maskWord(Bytes mask) {
    uint8_t word[4] = {};
    if (!mask.empty() && mask.size() <= sizeof word)
        memcpy(word + sizeof word - mask.size(), mask.data(), mask.size());
    return word[0] | uint32_t{word[1]} << 8 | uint32_t{word[2]} << 16 | uint32_t{word[3]} << 24;
}

Status writeMaskUsages(uint32_t mask, Chain &usages) {
    uint8_t oid[sizeof OidKeyPurpose + 1];
    memcpy(oid, OidKeyPurpose, sizeof OidKeyPurpose);
    for (uint32_t n = 1; n <= KeyPurposes; ++n) {
        if ((mask & keyPurposeBit(n)) == 0)
            continue;
        oid[sizeof OidKeyPurpose] = static_cast<uint8_t>(n);
        KA_STEP_AS("------>KAsn1_WriteObjectId", writeOid(oid, usages.slot()));
    }
    return KACERT_Ok;
}

// ExtKeyUsageSyntax ::= SEQUENCE OF OBJECT IDENTIFIER
Status writeExtKeyUsage(const ExtKeyUsageExtension &field, Anybuf **out) {
    Chain usages;
    KA_PASS(writeMaskUsages(maskWord(bytesOf(field.mask)), usages));
    for (const DefinedUsageNode *node = field.definedOids; node != nullptr; node = node->next) {
        uint8_t oid[1024];
        uint32_t size = 0;
        KA_STEP(KACert_GetOIDValue(reinterpret_cast<const char *>(node->dotted.data),
                                   static_cast<int32_t>(node->dotted.length), oid, &size));
        KA_STEP_AS("------>KAsn1_WriteObjectId", writeOid(Bytes(oid, size), usages.slot()));
    }
    KA_STEP(KAsn1_WriteSequence(usages.head(), out));
    return KACERT_Ok;
}

// DistributionPoint ::= SEQUENCE { distributionPoint [0] { fullName [0] { uniformResourceIdentifier [6] } } }
Status writeDistributionPoint(const DistributionPointNode &node, Anybuf **out) {
    Chain point;
    if (node.hasDistributionPoint != 0 && node.hasFullName != 0 && node.fullName.present[FormUri] != 0)
        KA_PASS(writeFullName(node.fullName.uniformResourceIdentifier, point.slot()));
    KA_STEP(KAsn1_WriteSequence(point.head(), out));
    return KACERT_Ok;
}

Status writeDistributionPoints(const CrlDistPointsExtension &field, Anybuf **out) {
    Chain points;
    for (const DistributionPointNode *node = field.first; node != nullptr; node = node->next)
        KA_PASS(writeDistributionPoint(*node, points.slot()));
    KA_STEP(KAsn1_WriteSequence(points.head(), out));
    return KACERT_Ok;
}

// BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER OPTIONAL }
Status writeBasicConstraints(const BasicConstraintsExtension &field, Anybuf **out) {
    Chain fields;
    if (field.isCa != 0)
        KA_STEP(KAsn1_WriteBoolean(&field.isCa, fields.slot()));
    if (field.hasPathLen != 0)
        KA_STEP(KAsn1_WriteInteger(field.pathLen.length > 0 ? field.pathLen.data[0] : 0u, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

// GeneralNames with the directory name alone
Status writeIssuerAltName(const AltNameExtension &field, Anybuf **out) {
    Chain name;
    KA_STEP(KI_EncodeIssuerSuject(&field.names.directoryName, name.slot()));
    Chain directoryName;
    KA_STEP(KAsn1_WriteExplicit(name.head(), FormDirectoryName, directoryName.slot()));
    KA_STEP(KAsn1_WriteSequence(directoryName.head(), out));
    return KACERT_Ok;
}

Status writeSubjectKeyId(const SubjectKeyIdExtension &field, Anybuf **out) {
    KA_STEP(KAsn1_WriteOctetString(&field.keyId, out));
    return KACERT_Ok;
}

Status writeSubjectAltName(AltNameExtension &field, Anybuf **out) {
    KA_STEP(KI_EncodeGeneralNameS(&field.names, out));
    return KACERT_Ok;
}

Status writeKeyUsage(const KeyUsageExtension &field, Anybuf **out) {
    KA_STEP(KAsn1_WriteBitString(&field.bits, out));
    return KACERT_Ok;
}

// AccessDescription ::= SEQUENCE { accessMethod OBJECT IDENTIFIER, accessLocation [6] }
Status writeAccess(const AccessNode &node, Anybuf **out) {
    Chain fields;
    KA_STEP_AS("------>KAsn1_WriteObjectId",
               writeOid(node.method == MethodOcsp ? Bytes(OidOcsp) : Bytes(OidCaIssuers), fields.slot()));
    KA_PASS(writeTaggedIa5(node.location, FormUri, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

Status writeAuthorityInfo(CertEncodeCtx &ctx, Anybuf **out) {
    const AuthorityInfoExtension &field = ctx.extensions.authorityInfo;
    Chain fields;
    KA_PASS(writeExtensionHead(OidAuthorityInfo, field.critical, fields));
    KA_STEP(KI_CERT_EncodeDiscriptList(field.first, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

Status writePrivate(CertEncodeCtx &ctx, Anybuf **out) {
    Chain extensions;
    for (const PrivateExtensionNode *node = ctx.extensions.privateExtensions; node != nullptr; node = node->next)
        KA_PASS(writeExtension(bytesOf(node->oid), node->critical, node->value, extensions.slot()));
    if (extensions.head() != nullptr)
        extensions.moveTo(out);
    return KACERT_Ok;
}

// The extensions in the order in which they are written.
struct Position {
    uint8_t CertExtensions::*flag;
    int32_t (*encode)(CertEncodeCtx *, Anybuf **);
    const char *words; // of a failure; null for none
};
constexpr Position Order[] = {
    {&CertExtensions::hasAuthorityKeyId, KI_Cert_EncodeExtension_AuthorityKeyIdentifyer,
     "------>KI_Cert_EncodeExtension_AuthorityKeyIdentifyer"},
    {&CertExtensions::hasSubjectKeyId, KI_Cert_EncodeExtension_SubjectKeyIdentifier,
     "------>KI_Cert_EncodeExtension_SubjectKeyIdentifier"},
    {&CertExtensions::hasCertPolicies, KI_Cert_EncodeExtension_CertificatePolicies,
     "------>KI_Cert_EncodeExtension_CertificatePolicies"},
    {&CertExtensions::hasIssuerAltName, KI_Cert_EncodeExtension_IssuerAltName,
     "------>KI_Cert_EncodeExtension_IssuerAltName"},
    {&CertExtensions::hasSubjectAltName, KI_Cert_EncodeExtension_SubjectAltName,
     "------>KI_Cert_EncodeExtension_SubjectAltName"},
    {&CertExtensions::hasBasicConstraints, KI_Cert_EncodeExtension_BasicConstraint,
     "------>KI_Cert_EncodeExtension_BasicConstraint"},
    {&CertExtensions::hasKeyUsage, KI_Cert_EncodeExtension_KeyUsage, "------>KI_Cert_EncodeExtension_KeyUsage"},
    {&CertExtensions::hasExtKeyUsage, KI_Cert_EncodeExtension_ExtKeyUsage, nullptr},
    {&CertExtensions::hasCrlDistPoints, KI_Cert_EncodeExtension_CrlDistributePoint,
     "------>KI_Cert_EncodeExtension_CrlDistributePoint"},
    {&CertExtensions::hasAuthorityInfo, KI_Cert_EncodeExtension_AIA, "------>KI_Cert_EncodeExtension_AIA"},
    {&CertExtensions::hasPrivate, KI_Cert_EncodeExtension_Private, "------>KI_Cert_EncodeExtension_Private"},
};

// Extensions ::= [3] EXPLICIT SEQUENCE OF Extension, or nothing
Status writeExtensions(CertEncodeCtx &ctx, Anybuf **out) {
    if (ctx.hasExtensions == 0)
        return KACERT_Ok;
    Chain extensions;
    for (const Position &position : Order) {
        if (ctx.extensions.*position.flag == 0)
            continue;
        if (position.words != nullptr)
            KA_STEP_AS(position.words, position.encode(&ctx, extensions.slot()));
        else
            KA_PASS(position.encode(&ctx, extensions.slot()));
    }
    return writeExtensionList(extensions, 3, out);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KI_Cert_EncodeExtensions(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtensions", encodePart(ctx, out, writeExtensions));
}

int32_t KI_Cert_EncodeExtension_AuthorityKeyIdentifyer(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Cert_EncodeExtension_AuthorityKeyIdentifyer",
        encodePart(ctx, out,
                   writeFieldExtension<OidAuthorityKeyId, &CertExtensions::authorityKeyId, writeAuthorityKeyId>));
}

int32_t KI_Cert_EncodeExtension_SubjectKeyIdentifier(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Cert_EncodeExtension_SubjectKeyIdentifier",
        encodePart(ctx, out, writeFieldExtension<OidSubjectKeyId, &CertExtensions::subjectKeyId, writeSubjectKeyId>));
}

int32_t KI_Cert_EncodeExtension_CertificatePolicies(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Cert_EncodeExtension_CertificatePolicies",
        encodePart(ctx, out, writeFieldExtension<OidCertPolicies, &CertExtensions::certPolicy, writePolicies>));
}

int32_t KI_Cert_EncodeExtension_IssuerAltName(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Cert_EncodeExtension_IssuerAltName",
        encodePart(ctx, out,
                   writeFieldExtension<OidIssuerAltName, &CertExtensions::issuerAltName, writeIssuerAltName>));
}

int32_t KI_Cert_EncodeExtension_SubjectAltName(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Cert_EncodeExtension_SubjectAltName",
        encodePart(ctx, out,
                   writeFieldExtension<OidSubjectAltName, &CertExtensions::subjectAltName, writeSubjectAltName>));
}

int32_t KI_Cert_EncodeExtension_BasicConstraint(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Cert_EncodeExtension_BasicConstraint",
        encodePart(ctx, out,
                   writeFieldExtension<OidBasicConstraints, &CertExtensions::basicConstraints, writeBasicConstraints>));
}

int32_t KI_Cert_EncodeExtension_KeyUsage(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_KeyUsage",
                     encodePart(ctx, out, writeFieldExtension<OidKeyUsage, &CertExtensions::keyUsage, writeKeyUsage>));
}

int32_t KI_Cert_EncodeExtension_ExtKeyUsage(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Cert_EncodeExtension_ExtKeyUsage",
        encodePart(ctx, out, writeFieldExtension<OidExtKeyUsage, &CertExtensions::extKeyUsage, writeExtKeyUsage>));
}

int32_t KI_Cert_EncodeExtension_CrlDistributePoint(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Cert_EncodeExtension_CrlDistributePoint",
        encodePart(ctx, out,
                   writeFieldExtension<OidCrlDistPoints, &CertExtensions::crlDistPoints, writeDistributionPoints>));
}

int32_t KI_Cert_EncodeExtension_AIA(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_AIA", encodePart(ctx, out, writeAuthorityInfo));
}

int32_t KI_Cert_EncodeExtension_Private(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_Unknown", encodePart(ctx, out, writePrivate));
}

int32_t KI_CERT_EncodeDiscriptList(const AccessNode *first, Anybuf **out) {
    KA_FRAME("KI_CERT_EncodeDiscriptList");
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (first == nullptr) {
        if (WriteNullSequence(out) != KACERT_Ok)
            KA_TRACE("------>WriteNullSequence");
        return KA_DONE();
    }
    Chain descriptions;
    for (const AccessNode *node = first; node != nullptr; node = node->next)
        KA_PASS(writeAccess(*node, descriptions.slot()));
    Chain sequence;
    KA_STEP(KAsn1_WriteSequence(descriptions.head(), sequence.slot()));
    KA_STEP(KAsn1_WriteOctetString(sequence.head(), out));
    return KA_DONE();
}

int32_t WriteNullSequence(Anybuf **out) {
    KA_FRAME("WriteNullSequence");
    Chain null;
    KA_STEP(KAsn1_WriteNull(null.slot()));
    KA_STEP(KAsn1_WriteSequence(null.head(), out));
    return KA_DONE();
}
