#include "ka_cert.h"

namespace karil {

// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY OPTIONAL }
Status readAlgorithm(const Element &element, AlgorithmRecord &out) {
    Level fields;
    Element oid;
    KA_PASS(readTyped(element, oid, fields));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(out.oid, oid));
    out.id = 0;
    return KACERT_Ok;
}

// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
Status readPublicKey(const Element &element, AlgorithmRecord &algorithm, Anybuf &key) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    if (fields.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadSequence");
    Level identifier;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(fields.take(), identifier));
    if (identifier.empty() || fields.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadBitString");
    KA_STEP_AS("------>KI_CopyAnybuf", store(algorithm.oid, identifier.take()));
    Element bits;
    KA_STEP_AS("------>KAsn1_ReadBitString", readValue(fields.take(), bits));
    KA_STEP_AS("------>KI_CopyAnybuf", store(key, bits));
    return KACERT_Ok;
}

namespace {

Status takeField(Level &fields, Element &out) {
    return takeOr(fields, out, KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
}

// Version and serial number. `first` is the version only where it is tagged [0].
Status readVersionAndSerial(CertDecodeCtx &ctx, Level &fields) {
    Element field = fields.take();
    Element content;
    KA_STEP_AS("------>KAsn1_ReadExplicit", readValue(field, content));
    ctx.version = 0;
    if (content.tag == 0xA0) {
        uint32_t version = 0;
        KA_STEP_AS("------>KAsn1_ReadInteger", readInteger(content, version));
        ctx.version = static_cast<int32_t>(version);
        ctx.hasVersion = 1;
        KA_PASS(takeField(fields, field));
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
    const Element element = times.take();
    time.isUtc = readTime(element, TagGeneralizedTime, clock, time.generalizedValue) == KACERT_Ok ? 0 : 1;
    if (time.isUtc != 0)
        KA_STEP_AS("------>KAsn1_ReadUtcTime", readTime(element, TagUtcTime, clock, time.utcValue));
    return KACERT_Ok;
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
               decodeExtensions(fields.take(), ctx.extensions, ctx.privateExtensionsLast));
    return KACERT_Ok;
}

// Certificate ::= SEQUENCE { tbsCertificate, signatureAlgorithm, signatureValue BIT STRING }, perhaps cut off behind
// one of the first two
Status decodeCertificate(Bytes der, CertDecodeCtx &ctx) {
    Element whole;
    KA_STEP_AS("------>KAsn1_GetCertLength",
               next(der, whole, KACERT_LengthNotEqualErr, "------>KACERT_LengthNotEqualErr"));
    KA_STEP_AS("------>KI_CopyAnybuf", keep(ctx.kept, whole, whole));
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.encoded, whole));
    Level parts;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(whole, parts));
    if (parts.empty())
        return KACERT_Ok;
    KA_STEP_AS("------>KI_Cert_DecodeTBS", decodeTbs(parts.take(), ctx));
    if (parts.empty())
        return KACERT_Ok;
    KA_STEP_AS("------>KI_Cert_DecodeTBS", readAlgorithm(parts.take(), ctx.outerSignatureAlgorithm));
    if (parts.empty())
        return KACERT_Ok;
    Element signature;
    KA_STEP_AS("------>KAsn1_ReadBitString", readValue(parts.take(), signature));
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.signature, signature));
    return KACERT_Ok;
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
