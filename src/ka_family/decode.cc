#include "decode.h"

namespace karil {

Status checkWhole(const void *ctx, const uint8_t *der, uint32_t &length) {
    if (ctx == nullptr || der == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (length == 0)
        KA_STEP(KAsn1_GetCertLength(der, &length));
    return KACERT_Ok;
}

Status checkPart(const Anybuf *source, const void *target) {
    if (source == nullptr || source->data == nullptr || target == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    return KACERT_Ok;
}

Status copyPart(const Anybuf *source, const void *target, Scratch &copy) {
    KA_PASS(checkPart(source, target));
    KA_STEP(KI_CopyAnybuf(&copy.record, source));
    return KACERT_Ok;
}

Status keepPart(KeptOctets *&kept, const Anybuf &source, Element &out) {
    KA_STEP_AS("------>KI_CopyAnybuf", keep(kept, elementOf(source), out));
    return KACERT_Ok;
}

Status missingField(Status missing, const char *words) {
    return KA_FAIL(missing, words);
}

Status openObject(Bytes der, KeptOctets *&kept, Anybuf &encoded, Level &parts, Status noMemory) {
    Element whole;
    KA_STEP_AS("------>KAsn1_GetCertLength",
               next(der, whole, KACERT_LengthNotEqualErr, "------>KACERT_LengthNotEqualErr"));
    if (const Status status = keep(kept, whole, whole); status != KACERT_Ok)
        return KA_FAIL(status == KACERT_MemoryErr ? noMemory : status, "------>KI_CopyAnybuf");
    KA_STEP_AS("------>KI_CopyAnybuf", store(encoded, whole));
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(whole, parts));
    return KACERT_Ok;
}

Status readBits(const Element &element, Anybuf &signature) {
    Element bits;
    KA_STEP_AS("------>KAsn1_ReadBitString", readValue(element, bits));
    KA_STEP_AS("------>KI_CopyAnybuf", store(signature, bits));
    return KACERT_Ok;
}

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
    return readBits(fields.take(), key);
}

namespace {

Status readTimeOf(const Element &element, Tag kind, LocalClock &clock, CertTime &time) {
    const bool isUtc = kind == TagUtcTime;
    KA_PASS(readTime(element, kind, clock, isUtc ? time.utcValue : time.generalizedValue));
    time.isUtc = isUtc ? 1 : 0;
    return KACERT_Ok;
}

} // namespace

Status readEitherTime(const Element &element, Tag first, LocalClock &clock, CertTime &time) {
    if (readTimeOf(element, first, clock, time) == KACERT_Ok)
        return KACERT_Ok;
    if (first == TagUtcTime)
        KA_STEP_AS("------>KAsn1_ReadGeneralizedTime", readTimeOf(element, TagGeneralizedTime, clock, time));
    else
        KA_STEP_AS("------>KAsn1_ReadUtcTime", readTimeOf(element, TagUtcTime, clock, time));
    return KACERT_Ok;
}

Status openExtensions(const Element &element, Level &extensions) {
    Element content;
    KA_STEP_AS("------>KAsn1_ReadExplicit", readValue(element, content));
    if (content.present())
        KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(content, extensions));
    return KACERT_Ok;
}

Status readExtensionOid(const Element &extension, Bytes own, ExtensionParts &out) {
    Element oid;
    KA_PASS(readTyped(extension, oid, out.fields, KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr"));
    if (out.fields.empty())
        return KA_FAIL(KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr");
    out.isOwn = equal(oid.bytes, own);
    return KACERT_Ok;
}

Status readExtensionValue(ExtensionParts &parts, CriticalFlag flag, uint8_t &critical, Status missing) {
    Element field = parts.fields.take();
    if (flag == CriticalFlag::ByTag ? field.startsWith(TagBoolean) : !parts.fields.empty()) {
        KA_STEP_AS("------>KAsn1_ReadBoolean", readBoolean(field, critical));
        field = parts.fields.take();
        if (!field.present())
            return KA_FAIL(missing, "------>KACERT_CertNotEndErr");
    }
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(field, parts.value));
    return KACERT_Ok;
}

} // namespace karil
