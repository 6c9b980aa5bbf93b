#include "ka_crl.h"

using namespace karil;

namespace {

Status writeTime(const CertTime &time, Anybuf **out) {
    if (time.isUtc != 0)
        KA_STEP(KAsn1_WriteUtcTime(&time.utcValue, out));
    else
        KA_STEP(KAsn1_WriteGeneralizedTime(&time.generalizedValue, out));
    return KACERT_Ok;
}

// INTEGER in an Extension
Status writeNumber(Bytes oid, const CrlNumberExtension &field, Anybuf **out) {
    Chain number;
    KA_STEP(KAsn1_WriteIntegerArray(&field.value, number.slot()));
    return writeExtension(oid, field.critical, *number.head(), out);
}

// AuthorityKeyIdentifier ::= SEQUENCE { keyIdentifier [0] }
Status writeAuthority(const AuthorityKeyIdExtension &field, Anybuf **out) {
    Chain identifier;
    KA_PASS(writeAuthorityKeyId(field, identifier.slot()));
    return writeExtension(OidAuthorityKeyId, field.critical, *identifier.head(), out);
}

// IssuingDistributionPoint ::= SEQUENCE { distributionPoint [0] { fullName [0] { uniformResourceIdentifier [6] } } }
Status writeIssuingDist(const IssuingDistExtension &field, Anybuf **out) {
    Chain fullName;
    KA_PASS(writeFullName(field.fullName, fullName.slot()));
    Chain point;
    KA_STEP(KAsn1_WriteSequence(fullName.head(), point.slot()));
    return writeExtension(OidIssuingDist, field.critical, *point.head(), out);
}

// Extensions ::= [0] EXPLICIT SEQUENCE OF Extension
Status writeExtensions(const CrlEncodeCtx &ctx, Anybuf **out) {
    const CrlExtensions &ext = ctx.extensions;
    Chain list;
    if (ext.hasCrlNumber != 0)
        KA_STEP(KI_Crl_EncodeCRLNumber(&ctx, list.slot()));
    if (ext.hasDeltaCrl != 0)
        KA_STEP(KI_Crl_EncodeDelCRLIdentifier(&ctx, list.slot()));
    if (ext.hasAuthorityKeyId != 0)
        KA_STEP(KI_Crl_EncodeExtension_AuthorityKeyIdentifyer(&ctx, list.slot()));
    if (ext.hasIssuingDist != 0)
        KA_STEP(KI_Crl_EncodeCRLDPs(&ctx, list.slot()));
    Chain extensions;
    KA_STEP(KAsn1_WriteSequence(list.head(), extensions.slot()));
    KA_STEP(KAsn1_WriteExplicit(extensions.head(), 0, out));
    return KACERT_Ok;
}

// TBSCertList ::= SEQUENCE { version, signature, issuer, thisUpdate, nextUpdate OPTIONAL, revokedCertificates,
//                            crlExtensions [0] OPTIONAL }
Status writeTbs(const CrlEncodeCtx &ctx, Anybuf **out) {
    Chain fields;
    KA_STEP(KAsn1_WriteInteger(static_cast<uint32_t>(ctx.version), fields.slot()));
    KA_PASS(writeAlgorithm(ctx.innerSignatureAlgorithm, fields.slot()));
    KA_PASS(writeName(ctx.issuer, ctx.issuerDer, fields.slot()));
    KA_PASS(writeTime(ctx.thisUpdate, fields.slot()));
    if (ctx.hasNextUpdate != 0)
        KA_PASS(writeTime(ctx.nextUpdate, fields.slot()));
    KA_STEP(KI_CRL_EncodeRevokedCRL(&ctx, fields.slot()));
    KA_STEP(KI_Crl_EncodeExtensions(&ctx, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

// CertificateList ::= SEQUENCE { tbsCertList, signatureAlgorithm, signatureValue BIT STRING }
Status writeCrl(CrlEncodeCtx &ctx, Anybuf **out) {
    Chain parts;
    KA_PASS(writeTbs(ctx, parts.slot()));
    KI_ClearAnybuf(&ctx.tbs);
    KA_STEP(KI_CopyAnybuf(&ctx.tbs, parts.head()));
    Signature signature;
    KA_PASS(signBySize(ctx.signFunc, ctx.signKey, ctx.tbs, signature));
    KA_STEP(KACert_SetCrlAttributeChar(&ctx, CRL_CA_SIGNATURE, signature.octets.get(),
                                       static_cast<int32_t>(signature.length)));
    return writeSigned(parts, ctx.outerSignatureAlgorithm, ctx.signature, out);
}

} // namespace

int32_t KACert_EncodeCrl(CrlEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_EncodeCrl", encodeOnce(ctx, writeCrl, result, resultLength));
}

int32_t KI_Crl_EncodeExtensions(const CrlEncodeCtx *ctx, Anybuf **out) {
    KA_FRAME("KI_Crl_EncodeExtensions");
    if (ctx == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (ctx->hasExtensions != 0)
        KA_PASS(writeExtensions(*ctx, out));
    return KA_DONE();
}

// What writes one part of the context.
#define KA_PART(NAME, WRITE, ...)                                                                                      \
    int32_t NAME(const CrlEncodeCtx *ctx, Anybuf **out) {                                                              \
        KA_FRAME(#NAME);                                                                                               \
        if (ctx == nullptr || out == nullptr)                                                                          \
            return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");                                          \
        KA_PASS(WRITE(__VA_ARGS__, out));                                                                              \
        return KA_DONE();                                                                                              \
    }

KA_PART(KI_Crl_EncodeCRLNumber, writeNumber, OidCrlNumber, ctx->extensions.crlNumber)
KA_PART(KI_Crl_EncodeDelCRLIdentifier, writeNumber, OidDeltaCrl, ctx->extensions.deltaCrl)
KA_PART(KI_Crl_EncodeExtension_AuthorityKeyIdentifyer, writeAuthority, ctx->extensions.authorityKeyId)
KA_PART(KI_Crl_EncodeCRLDPs, writeIssuingDist, ctx->extensions.issuingDist)
