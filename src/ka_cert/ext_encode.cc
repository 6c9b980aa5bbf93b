#include "ka_cert.h"

#include <string.h>

namespace karil {

namespace {

// policyQualifiers ::= SEQUENCE OF SEQUENCE { OID id-qt-cps, IA5String }, one for each CPS
Status writeQualifiers(Writer &out, const PolicyNode &policy) {
    const Construct qualifiers(out, TagSequence);
    bool hasCps = false;
    for (const PolicyQualifierNode *node = policy.cps; node != nullptr; node = node->next) {
        if (node->isCps == 0)
            continue;
        hasCps = true;
        const Construct qualifier(out, TagSequence);
        out.objectId(OidCps);
        out.element(TagIa5String, bytesOf(node->uri));
    }
    return hasCps ? KACERT_Ok : KA_FAIL(KACERT_InvalidParamErr, "------>NO CPS INFO");
}

// CertificatePolicies ::= SEQUENCE { SEQUENCE { policyIdentifier, policyQualifiers } }
Status writePolicies(Writer &out, const PolicyNode *policy) {
    if (policy == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>NO CPS INFO");
    const Construct policies(out, TagSequence);
    const Construct information(out, TagSequence);
    out.objectId(bytesOf(policy->oid));
    return writeQualifiers(out, *policy);
}

// The octets fill the end of a little-endian word; more than four are not read.
uint32_t maskWord(Bytes mask) {
    uint8_t word[4] = {};
    if (!mask.empty() && mask.size() <= sizeof word)
        memcpy(word + sizeof word - mask.size(), mask.data(), mask.size());
    return word[0] | uint32_t{word[1]} << 8 | uint32_t{word[2]} << 16 | uint32_t{word[3]} << 24;
}

void writeMaskUsages(Writer &out, uint32_t mask) {
    uint8_t oid[sizeof OidKeyPurpose + 1];
    memcpy(oid, OidKeyPurpose, sizeof OidKeyPurpose);
    for (uint32_t n = 1; n <= KeyPurposes; ++n) {
        oid[sizeof OidKeyPurpose] = static_cast<uint8_t>(n);
        if ((mask & keyPurposeBit(n)) != 0)
            out.objectId(oid);
    }
}

// ExtKeyUsageSyntax ::= SEQUENCE OF OBJECT IDENTIFIER
Status writeUsages(Writer &out, const ExtKeyUsageExtension &field) {
    const Construct usages(out, TagSequence);
    writeMaskUsages(out, maskWord(bytesOf(field.mask)));
    for (const DefinedUsageNode *node = field.definedOids; node != nullptr; node = node->next) {
        uint8_t oid[1024];
        uint32_t size = 0;
        KA_STEP(KACert_GetOIDValue(reinterpret_cast<const char *>(node->dotted.data),
                                   static_cast<int32_t>(node->dotted.length), oid, &size));
        out.objectId({oid, size});
    }
    return KACERT_Ok;
}

// CRLDistributionPoints ::= SEQUENCE OF SEQUENCE { distributionPoint [0] { fullName [0] { URI [6] } } }
void writePoints(Writer &out, const DistributionPointNode *first) {
    const Construct points(out, TagSequence);
    for (const DistributionPointNode *node = first; node != nullptr; node = node->next) {
        const Construct point(out, TagSequence);
        if (node->hasDistributionPoint != 0 && node->hasFullName != 0 && node->fullName.present[FormUri] != 0)
            writeFullName(out, node->fullName.uniformResourceIdentifier);
    }
}

// BasicConstraints ::= SEQUENCE { cA BOOLEAN DEFAULT FALSE, pathLenConstraint INTEGER OPTIONAL }
void writeConstraints(Writer &out, const BasicConstraintsExtension &field) {
    const Construct constraints(out, TagSequence);
    if (field.isCa != 0)
        out.boolean(true);
    if (field.hasPathLen != 0)
        out.integer(field.pathLen.length > 0 ? field.pathLen.data[0] : 0u);
}

// GeneralNames with the directory name alone
Status writeIssuerNames(Writer &out, const NameRecord &head) {
    const Construct names(out, TagSequence);
    const Construct directoryName(out, 0xA0 | FormDirectoryName);
    KA_STEP_AS("------>KI_EncodeIssuerSuject", encodeName(out, head));
    return KACERT_Ok;
}

// OCTET STRING { SEQUENCE OF AccessDescription { accessMethod OBJECT IDENTIFIER, accessLocation [6] } }
void writeDescriptions(Writer &out, const AccessNode *first) {
    const Construct value(out, TagOctetString);
    const Construct descriptions(out, TagSequence);
    for (const AccessNode *node = first; node != nullptr; node = node->next) {
        const Construct description(out, TagSequence);
        out.objectId(node->method == MethodOcsp ? Bytes(OidOcsp) : Bytes(OidCaIssuers));
        out.element(0x80 | FormUri, bytesOf(node->location));
    }
}

// SEQUENCE { NULL }
void writeNullSequence(Writer &out) {
    const Construct sequence(out, TagSequence);
    out.null();
}

// The extensions one by one.

Status writeAuthority(Writer &out, CertEncodeCtx &ctx) {
    return writeAuthorityKeyId(out, ctx.extensions.authorityKeyId);
}

Status writeSubjectKeyId(Writer &out, CertEncodeCtx &ctx) {
    const SubjectKeyIdExtension &field = ctx.extensions.subjectKeyId;
    return writeExtension(out, OidSubjectKeyId, field.critical, [&] {
        out.octetString(bytesOf(field.keyId));
        return out.status();
    });
}

Status writeCertPolicies(Writer &out, CertEncodeCtx &ctx) {
    const CertPolicyExtension &field = ctx.extensions.certPolicy;
    return writeExtension(out, OidCertPolicies, field.critical, [&] { return writePolicies(out, field.policy); });
}

Status writeIssuerAltName(Writer &out, CertEncodeCtx &ctx) {
    const AltNameExtension &field = ctx.extensions.issuerAltName;
    return writeExtension(out, OidIssuerAltName, field.critical,
                          [&] { return writeIssuerNames(out, field.names.directoryName); });
}

Status writeSubjectAltName(Writer &out, CertEncodeCtx &ctx) {
    AltNameExtension &field = ctx.extensions.subjectAltName;
    return writeExtension(out, OidSubjectAltName, field.critical, [&]() -> Status {
        KA_STEP_AS("------>KI_EncodeGeneralNameS", encodeGeneralNames(out, field.names));
        return KACERT_Ok;
    });
}

Status writeBasicConstraints(Writer &out, CertEncodeCtx &ctx) {
    const BasicConstraintsExtension &field = ctx.extensions.basicConstraints;
    return writeExtension(out, OidBasicConstraints, field.critical, [&] {
        writeConstraints(out, field);
        return out.status();
    });
}

Status writeKeyUsage(Writer &out, CertEncodeCtx &ctx) {
    const KeyUsageExtension &field = ctx.extensions.keyUsage;
    return writeExtension(out, OidKeyUsage, field.critical, [&] {
        out.bitString(bytesOf(field.bits), field.bits.unusedBits);
        return out.status();
    });
}

Status writeExtKeyUsage(Writer &out, CertEncodeCtx &ctx) {
    const ExtKeyUsageExtension &field = ctx.extensions.extKeyUsage;
    return writeExtension(out, OidExtKeyUsage, field.critical, [&] { return writeUsages(out, field); });
}

Status writeCrlDistPoints(Writer &out, CertEncodeCtx &ctx) {
    const CrlDistPointsExtension &field = ctx.extensions.crlDistPoints;
    return writeExtension(out, OidCrlDistPoints, field.critical, [&] {
        writePoints(out, field.first);
        return out.status();
    });
}

// Without a description, SEQUENCE { NULL } stands in the place of extnValue.
Status writeAuthorityInfo(Writer &out, CertEncodeCtx &ctx) {
    const AuthorityInfoExtension &field = ctx.extensions.authorityInfo;
    const Construct extension(out, TagSequence);
    writeExtensionHead(out, OidAuthorityInfo, field.critical);
    if (field.first != nullptr)
        writeDescriptions(out, field.first);
    else
        writeNullSequence(out);
    return out.status();
}

Status writePrivate(Writer &out, const PrivateExtensionNode &node) {
    return writeExtension(out, bytesOf(node.oid), node.critical, [&] {
        out.octets(bytesOf(node.value));
        return out.status();
    });
}

Status writePrivateExtensions(Writer &out, CertEncodeCtx &ctx) {
    for (const PrivateExtensionNode *node = ctx.extensions.privateExtensions; node != nullptr; node = node->next)
        KA_PASS(writePrivate(out, *node));
    return KACERT_Ok;
}

// The extensions in the order in which they are written.
struct Position {
    uint8_t CertExtensions::*flag;
    Status (*write)(Writer &, CertEncodeCtx &);
    const char *words; // of a failure; null for none
};
constexpr Position Order[] = {
    {&CertExtensions::hasAuthorityKeyId, writeAuthority, "------>KI_Cert_EncodeExtension_AuthorityKeyIdentifyer"},
    {&CertExtensions::hasSubjectKeyId, writeSubjectKeyId, "------>KI_Cert_EncodeExtension_SubjectKeyIdentifier"},
    {&CertExtensions::hasCertPolicies, writeCertPolicies, "------>KI_Cert_EncodeExtension_CertificatePolicies"},
    {&CertExtensions::hasIssuerAltName, writeIssuerAltName, "------>KI_Cert_EncodeExtension_IssuerAltName"},
    {&CertExtensions::hasSubjectAltName, writeSubjectAltName, "------>KI_Cert_EncodeExtension_SubjectAltName"},
    {&CertExtensions::hasBasicConstraints, writeBasicConstraints, "------>KI_Cert_EncodeExtension_BasicConstraint"},
    {&CertExtensions::hasKeyUsage, writeKeyUsage, "------>KI_Cert_EncodeExtension_KeyUsage"},
    {&CertExtensions::hasExtKeyUsage, writeExtKeyUsage, nullptr},
    {&CertExtensions::hasCrlDistPoints, writeCrlDistPoints, "------>KI_Cert_EncodeExtension_CrlDistributePoint"},
    {&CertExtensions::hasAuthorityInfo, writeAuthorityInfo, "------>KI_Cert_EncodeExtension_AIA"},
    {&CertExtensions::hasPrivate, writePrivateExtensions, "------>KI_Cert_EncodeExtension_Private"},
};

} // namespace

// extensions [3] EXPLICIT SEQUENCE OF Extension
Status writeExtensions(Writer &out, CertEncodeCtx &ctx) {
    if (ctx.hasExtensions == 0)
        return KACERT_Ok;
    const Construct wrapper(out, 0xA3);
    const Construct extensions(out, TagSequence);
    for (const Position &position : Order) {
        if (ctx.extensions.*position.flag == 0)
            continue;
        if (position.words != nullptr)
            KA_STEP_AS(position.words, position.write(out, ctx));
        else
            KA_PASS(position.write(out, ctx));
    }
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_Cert_EncodeExtensions(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtensions", encodePart(ctx, out, writeExtensions));
}

int32_t KI_Cert_EncodeExtension_AuthorityKeyIdentifyer(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_AuthorityKeyIdentifyer", encodePart(ctx, out, writeAuthority));
}

int32_t KI_Cert_EncodeExtension_SubjectKeyIdentifier(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_SubjectKeyIdentifier", encodePart(ctx, out, writeSubjectKeyId));
}

int32_t KI_Cert_EncodeExtension_CertificatePolicies(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_CertificatePolicies", encodePart(ctx, out, writeCertPolicies));
}

int32_t KI_Cert_EncodeExtension_IssuerAltName(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_IssuerAltName", encodePart(ctx, out, writeIssuerAltName));
}

int32_t KI_Cert_EncodeExtension_SubjectAltName(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_SubjectAltName", encodePart(ctx, out, writeSubjectAltName));
}

int32_t KI_Cert_EncodeExtension_BasicConstraint(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_BasicConstraint", encodePart(ctx, out, writeBasicConstraints));
}

int32_t KI_Cert_EncodeExtension_KeyUsage(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_KeyUsage", encodePart(ctx, out, writeKeyUsage));
}

int32_t KI_Cert_EncodeExtension_ExtKeyUsage(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_ExtKeyUsage", encodePart(ctx, out, writeExtKeyUsage));
}

int32_t KI_Cert_EncodeExtension_CrlDistributePoint(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_CrlDistributePoint", encodePart(ctx, out, writeCrlDistPoints));
}

int32_t KI_Cert_EncodeExtension_AIA(CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeExtension_AIA", encodePart(ctx, out, writeAuthorityInfo));
}

int32_t KI_Cert_EncodeExtension_Private(CertEncodeCtx *ctx, Anybuf **out) {
    KA_FRAME("KI_Cert_EncodeExtension_Unknown");
    KA_PASS(checkPointers({ctx, out}));
    Chain extensions;
    for (const PrivateExtensionNode *node = ctx->extensions.privateExtensions; node != nullptr; node = node->next) {
        Writer extension;
        KA_PASS(writePrivate(extension, *node));
        KA_PASS(extension.moveTo(extensions.slot()));
    }
    if (extensions.head() != nullptr)
        extensions.moveTo(out);
    return KA_DONE();
}

int32_t KI_CERT_EncodeDiscriptList(const AccessNode *first, Anybuf **out) {
    KA_FRAME("KI_CERT_EncodeDiscriptList");
    KA_PASS(checkPointers({out}));
    if (first == nullptr) {
        if (WriteNullSequence(out) != KACERT_Ok)
            KA_TRACE("------>WriteNullSequence");
        return KA_DONE();
    }
    Writer list;
    writeDescriptions(list, first);
    KA_PASS(list.moveTo(out));
    return KA_DONE();
}

int32_t WriteNullSequence(Anybuf **out) {
    KA_FRAME("WriteNullSequence");
    KA_PASS(checkPointers({out}));
    Writer sequence(0);
    writeNullSequence(sequence);
    KA_PASS(sequence.moveTo(out));
    return KA_DONE();
}
