#include "ka_cert.h"

using namespace karil;

namespace {

// Version ::= [0] EXPLICIT INTEGER
void writeVersion(Writer &out, int32_t version) {
    const Construct wrapper(out, 0xA0);
    out.integer(static_cast<uint32_t>(version));
}

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
Status writeValidity(Writer &out, const CertEncodeCtx &ctx) {
    const Construct validity(out, TagSequence);
    LocalClock clock;
    for (const CertTime *time : {&ctx.notBefore, &ctx.notAfter})
        KA_PASS(writeTime(out, time->isUtc != 0, time->generalizedValue, clock));
    return KACERT_Ok;
}

// TBSCertificate ::= SEQUENCE { version, serialNumber, signature, issuer, validity, subject, subjectPublicKeyInfo,
//                               extensions [3] OPTIONAL }
Status writeTbs(Writer &out, CertEncodeCtx &ctx) {
    const Construct tbs(out, TagSequence);
    writeVersion(out, ctx.version);
    KA_STEP_AS("------>KAsn1_WriteIntegerArray", out.number(bytesOf(ctx.serialNumber)));
    writeAlgorithm(out, ctx.innerSignatureAlgorithm);
    KA_PASS(writeName(out, ctx.issuer, ctx.issuerDer));
    KA_STEP_AS("------>KI_Cert_EncodeValidity", writeValidity(out, ctx));
    KA_PASS(writeName(out, ctx.subject, ctx.subjectDer));
    writePublicKey(out, ctx.publicKeyAlgorithm, ctx.publicKey);
    KA_STEP_AS("------>KI_Cert_EncodeExtensions", writeExtensions(out, ctx));
    return KACERT_Ok;
}

Status sign(CertEncodeCtx &ctx, Bytes tbs) {
    HookOutput signature;
    KA_PASS(callWithFixedArea(ctx.signFunc, ctx.signKey, tbs, signature));
    KA_STEP(KACert_SetCertAttributeChar(&ctx, CERT_CA_SIGNATURE, signature.octets.get(),
                                        static_cast<int32_t>(signature.length)));
    return KACERT_Ok;
}

// Certificate ::= SEQUENCE { tbsCertificate, signatureAlgorithm, signatureValue BIT STRING }
Status writeCertificate(Writer &out, CertEncodeCtx &ctx) {
    return writeSigned(
        out, ctx, [&] { return writeTbs(out, ctx); }, [&](Bytes tbs) { return sign(ctx, tbs); });
}

} // namespace

int32_t KI_Cert_EncodeValidity(const CertEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Cert_EncodeValidity", encodePart(ctx, out, writeValidity));
}

int32_t KACert_EncodeCert(CertEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_EncodeCert", encodeOnce(ctx, writeCertificate, result, resultLength));
}
