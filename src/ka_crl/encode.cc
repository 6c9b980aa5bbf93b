#include "ka_crl.h"

using namespace karil;

namespace {

// INTEGER
Status writeNumber(const CrlNumberExtension &field, Anybuf **out) {
    KA_STEP(KAsn1_WriteIntegerArray(&field.value, out));
    return KACERT_Ok;
}

// IssuingDistributionPoint ::= SEQUENCE { distributionPoint [0] { fullName [0] { uniformResourceIdentifier [6] } } }
Status writeIssuingDist(const IssuingDistExtension &field, Anybuf **out) {
    Chain fullName;
    KA_PASS(writeFullName(field.fullName, fullName.slot()));
    KA_STEP(KAsn1_WriteSequence(fullName.head(), out));
    return KACERT_Ok;
}

// Extensions ::= [0] EXPLICIT SEQUENCE OF Extension, or nothing
Status writeExtensions(const CrlEncodeCtx &ctx, Anybuf **out) {
    if (ctx.hasExtensions == 0)
        return KACERT_Ok;
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
    return writeExtensionList(list, 0, out);
}

// TBSCertList ::= SEQUENCE { version, signature, issuer, thisUpdate, nextUpdate OPTIONAL, revokedCertificates,
//                            crlExtensions [0] OPTIONAL }
Status writeTbs(const CrlEncodeCtx &ctx, Anybuf **out) {
    Chain fields;
    KA_STEP(KAsn1_WriteInteger(static_cast<uint32_t>(ctx.version), fields.slot()));
    KA_PASS(writeAlgorithm(ctx.innerSignatureAlgorithm, fields.slot()));
    KA_PASS(writeName(ctx.issuer, ctx.issuerDer, fields.slot()));
    KA_PASS(writeTime(ctx.thisUpdate.isUtc != 0, secondsOf(ctx.thisUpdate), fields.slot()));
    if (ctx.hasNextUpdate != 0)
        KA_PASS(writeTime(ctx.nextUpdate.isUtc != 0, secondsOf(ctx.nextUpdate), fields.slot()));
    KA_STEP(KI_CRL_EncodeRevokedCRL(&ctx, fields.slot()));
    KA_STEP(KI_Crl_EncodeExtensions(&ctx, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

// CertificateList ::= SEQUENCE { tbsCertList, signatureAlgorithm, signatureValue BIT STRING }
Status writeCrl(CrlEncodeCtx &ctx, Anybuf **out) {
    Chain parts;
    KA_PASS(writeTbs(ctx, parts.slot()));
    KA_PASS(keepEncoded(ctx.tbs, *parts.head()));
    HookOutput signature;
    KA_PASS(callForSize(ctx.signFunc, ctx.signKey, ctx.tbs, signature));
    KA_STEP(KACert_SetCrlAttributeChar(&ctx, CRL_CA_SIGNATURE, signature.octets.get(),
                                       static_cast<int32_t>(signature.length)));
    return writeSigned(parts, ctx.outerSignatureAlgorithm, ctx.signature, out);
}

} // namespace

int32_t KACert_EncodeCrl(CrlEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_EncodeCrl", encodeOnce(ctx, writeCrl, result, resultLength));
}

int32_t KI_Crl_EncodeExtensions(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Crl_EncodeExtensions", encodePart(ctx, out, writeExtensions));
}

int32_t KI_Crl_EncodeCRLNumber(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Crl_EncodeCRLNumber",
                     encodePart(ctx, out, writeFieldExtension<OidCrlNumber, &CrlExtensions::crlNumber, writeNumber>));
}

int32_t KI_Crl_EncodeDelCRLIdentifier(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Crl_EncodeDelCRLIdentifier",
                     encodePart(ctx, out, writeFieldExtension<OidDeltaCrl, &CrlExtensions::deltaCrl, writeNumber>));
}

int32_t KI_Crl_EncodeExtension_AuthorityKeyIdentifyer(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Crl_EncodeExtension_AuthorityKeyIdentifyer",
        encodePart(ctx, out,
                   writeFieldExtension<OidAuthorityKeyId, &CrlExtensions::authorityKeyId, writeAuthorityKeyId>));
}

int32_t KI_Crl_EncodeCRLDPs(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED(
        "KI_Crl_EncodeCRLDPs",
        encodePart(ctx, out, writeFieldExtension<OidIssuingDist, &CrlExtensions::issuingDist, writeIssuingDist>));
}
