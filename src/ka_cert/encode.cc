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

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
Status writeValidity(const CertEncodeCtx &ctx, Anybuf **out) {
    Chain times;
    KA_PASS(writeTime(ctx.notBefore.isUtc != 0, ctx.notBefore.generalizedValue, times.slot()));
    KA_PASS(writeTime(ctx.notAfter.isUtc != 0, ctx.notAfter.generalizedValue, times.slot()));
    KA_STEP(KAsn1_WriteSequence(times.head(), out));
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

// Certificate ::= SEQUENCE { tbsCertificate, signatureAlgorithm, signatureValue BIT STRING }
Status writeCertificate(CertEncodeCtx &ctx, Anybuf **out) {
    Chain fields;
    KA_PASS(writeTbs(ctx, fields.slot()));
    HookOutput signature;
    KA_PASS(callWithFixedArea(ctx.signFunc, ctx.signKey, *fields.head(), signature));
    KA_STEP(KACert_SetCertAttributeChar(&ctx, CERT_CA_SIGNATURE, signature.octets.get(),
                                        static_cast<int32_t>(signature.length)));
    return writeSigned(fields, ctx.outerSignatureAlgorithm, ctx.signature, out);
}

} // namespace

int32_t KI_Cert_EncodeValidity(const CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeValidity", encodePart(ctx, out, writeValidity));
}

int32_t KACert_EncodeCert(CertEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_EncodeCert", encodeOnce(ctx, writeCertificate, result, resultLength));
}
