#include "ka_cert.h"

namespace karil {

namespace {

Status takeField(Level &fields, Element &out) {
    return takeField(fields, out, KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
}

// Version and serial number. The first field is the version only if it is tagged [0].
Status readVersionAndSerial(CertDecodeCtx &ctx, Level &fields) {
    Element field = fields.take();
    Element content;
    KA_STEP_AS("------>KAsn1_ReadExplicit", readValue(field, content));
    if (content.tag == 0xA0) {
        uint32_t version = 0;
        KA_STEP_AS("------>KAsn1_ReadInteger", readInteger(content, version));
        ctx.version = static_cast<int32_t>(version);
        ctx.hasVersion = 1;
        KA_PASS(takeField(fields, field));
    } else {
        ctx.version = 0;
    }
    Element serial;
    KA_STEP_AS("------>KAsn1_ReadIntegerArray", readValue(field, serial));
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.serialNumber, serial));
    return KACERT_Ok;
}

Status readName(const Element &element, Anybuf &der, NameRecord &head) {
    KA_STEP_AS("------>KI_CopyAnybuf", store(der, element));
    KA_STEP_AS("------>KI_DecodeIssuerSubject", decodeName(element, head));
    return KACERT_Ok;
}

Status readCertTime(Level &times, LocalClock &clock, CertTime &time) {
    if (times.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadUtcTime");
    return readEitherTime(times.take(), TagGeneralizedTime, clock, time);
}

// Validity ::= SEQUENCE { notBefore Time, notAfter Time }
Status readValidity(const Element &element, CertDecodeCtx &ctx) {
    Level times;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, times));
    LocalClock clock;
    KA_PASS(readCertTime(times, clock, ctx.notBefore));
    return readCertTime(times, clock, ctx.notAfter);
}

// TBSCertificate ::= SEQUENCE { version [0] DEFAULT v1, serialNumber, signature, issuer, validity, subject,
//                               subjectPublicKeyInfo, extensions [3] OPTIONAL }
// `tbs` is kept: the octets that a caller gave may be those that a record of the context loses.
Status decodeTbs(const Element &tbs, CertDecodeCtx &ctx) {
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.tbs, tbs));
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(tbs, fields));
    if (fields.empty())
        return KACERT_Ok;
    KA_PASS(readVersionAndSerial(ctx, fields));
    Element field;
    KA_PASS(takeField(fields, field));
    KA_PASS(readAlgorithm(field, ctx.innerSignatureAlgorithm));
    KA_PASS(takeField(fields, field));
    KA_PASS(readName(field, ctx.issuerDer, ctx.issuer));
    KA_PASS(takeField(fields, field));
    KA_PASS(readValidity(field, ctx));
    KA_PASS(takeField(fields, field));
    KA_PASS(readName(field, ctx.subjectDer, ctx.subject));
    KA_PASS(takeField(fields, field));
    KA_STEP_AS("------>KI_DecodePubKey", readPublicKey(field, ctx.publicKeyAlgorithm, ctx.publicKey));
    if (fields.empty())
        return KACERT_Ok;
    ctx.hasExtensions = 1;
    KA_STEP_AS("------>KI_Cert_DecodeExtensions",
               decodeExtensions(fields.take(), ctx.extensions, ctx.privateExtensionMarks));
    return KACERT_Ok;
}

// Certificate ::= SEQUENCE { tbsCertificate, signatureAlgorithm, signatureValue BIT STRING }, perhaps cut off after
// one of the first two
Status decodeCertificate(Bytes der, CertDecodeCtx &ctx) {
    Level parts;
    KA_PASS(openObject(der, ctx.kept, ctx.encoded, parts));
    if (parts.empty())
        return KACERT_Ok;
    KA_STEP_AS("------>KI_Cert_DecodeTBS", decodeTbs(parts.take(), ctx));
    if (parts.empty())
        return KACERT_Ok;
    KA_STEP_AS("------>KI_Cert_DecodeTBS", readAlgorithm(parts.take(), ctx.outerSignatureAlgorithm));
    return parts.empty() ? KACERT_Ok : readBits(parts.take(), ctx.signature);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KI_Cert_DecodeTBS(CertDecodeCtx *ctx, const Anybuf *tbs) {
    return KA_FRAMED("KI_Cert_DecodeTBS", decodeKept(tbs, ctx, decodeTbs));
}

int32_t KACert_DecodeCert(CertDecodeCtx *ctx, const uint8_t *der, uint32_t length) {
    return KA_FRAMED("KACert_DecodeCert", decodeWhole(ctx, der, length, decodeCertificate));
}

int32_t KI_DecodePubKey(const Anybuf *source, AlgorithmRecord *algorithm, Anybuf *key) {
    KA_FRAME("KI_DecodePubKey");
    KA_PASS(checkPointers({key}));
    Scratch copy;
    KA_PASS(copyPart(source, algorithm, copy));
    KA_PASS(readPublicKey(elementOf(copy.record), *algorithm, *key));
    return KA_DONE();
}
