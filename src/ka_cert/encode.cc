#include "ka_cert.h"

using namespace karil;

namespace {

// Version ::= [0] EXPLICIT INTEGER
Status writeVersion(int32_t version, Anybuf **out) {
    Chain integer;
    KA_STEP(KAsn1_WriteInteger(static_cast<uint32_t>(version), integer.slot()));
    KA_STEP(KAsn1_WriteExplicit(integer.head(), 0, out));
    return KACERT_Ok;
}

Status writeTime(const CertTime &time, Anybuf **out) {
    if (time.isUtc != 0)
        KA_STEP(KAsn1_WriteUtcTime(&time.generalizedValue, out));
    else
        KA_STEP(KAsn1_WriteGeneralizedTime(&time.generalizedValue, out));
    return KACERT_Ok;
}

// TBSCertificate ::= SEQUENCE { version, serialNumber, signature, issuer, validity, subject, subjectPublicKeyInfo,
//                               extensions [3] OPTIONAL }
Status writeTbs(CertEncodeCtx &ctx, Anybuf **out) {
    Chain fields;
    KA_PASS(writeVersion(ctx.version, fields.slot()));
    KA_STEP(KAsn1_WriteIntegerArray(&ctx.serialNumber, fields.slot()));
    KA_PASS(writeAlgorithm(ctx.innerSignatureAlgorithm, fields.slot()));
    KA_PASS(writeName(ctx.issuer, ctx.issuerDer, fields.slot()));
    KA_STEP(KI_Cert_EncodeValidity(&ctx, fields.slot()));
    KA_PASS(writeName(ctx.subject, ctx.subjectDer, fields.slot()));
    KA_PASS(writePublicKey(ctx.publicKeyAlgorithm, ctx.publicKey, fields.slot()));
    KA_STEP(KI_Cert_EncodeExtensions(&ctx, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

Status sign(CertEncodeCtx &ctx, const Anybuf &tbs) {
    if (ctx.signFunc == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KACertSignFunc");
    uint32_t length = 0;
    KA_STEP_AS("------>KACertSignFunc", ctx.signFunc(tbs.data, tbs.length, nullptr, &length, nullptr));
    uint8_t signature[512] = {};
    length = sizeof signature;
    KA_STEP_AS("------>KACertSignFunc", ctx.signFunc(tbs.data, tbs.length, signature, &length, ctx.signKey.data));
    if (length > sizeof signature)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACertSignFunc");
    KA_STEP(KACert_SetCertAttributeChar(&ctx, CERT_CA_SIGNATURE, signature, static_cast<int32_t>(length)));
    return KACERT_Ok;
}

// Certificate ::= SEQUENCE { tbsCertificate, signatureAlgorithm, signatureValue BIT STRING }
Status writeCertificate(CertEncodeCtx &ctx, Anybuf **out) {
    Chain fields;
    KA_PASS(writeTbs(ctx, fields.slot()));
    KA_PASS(sign(ctx, *fields.head()));
    return writeSigned(fields, ctx.outerSignatureAlgorithm, ctx.signature, out);
}

} // namespace

int32_t KI_Cert_EncodeValidity(const CertEncodeCtx *ctx, Anybuf **out) {
    KA_FRAME("KI_Cert_EncodeValidity");
    if (ctx == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Chain times;
    KA_PASS(writeTime(ctx->notBefore, times.slot()));
    KA_PASS(writeTime(ctx->notAfter, times.slot()));
    KA_STEP(KAsn1_WriteSequence(times.head(), out));
    return KA_DONE();
}

int32_t KACert_EncodeCert(CertEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_EncodeCert", encodeOnce(ctx, writeCertificate, result, resultLength));
}
