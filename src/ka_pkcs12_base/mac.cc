// MacData.
#include "ka_pkcs12_base.h"

#include "ka_crypt.h"

namespace karil {

namespace {

constexpr uint32_t MacBound = 60;

Status runHook(const MacRecord &mac, HookArea &out) {
    const Hook hook = {mac.macFunc, mac.macFuncParameter.data, mac.macFuncParameter.length};
    return callWithCopy(hook, bytesOf(mac.macInput), MacBound, out, "------------>macFunc");
}

// MacData whose fields are still the input's.
struct MacParts {
    Element oid;
    Element digest;
    Element salt;
    uint32_t iterations = 1;
};

// DigestInfo ::= SEQUENCE { digestAlgorithm AlgorithmIdentifier, digest OCTET STRING }
Status readDigestInfo(const Element &element, MacParts &out) {
    Level info;
    Level algorithm;
    Element field;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, info));
    KA_PASS(takeField(info, field, KACERT_InvalidParamErr, "------------>KAsn1_ReadSequence"));
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(field, algorithm));
    KA_PASS(takeField(algorithm, field, KACERT_InvalidParamErr, "------------>KAsn1_ReadObjectId"));
    KA_STEP_AS("------------>KAsn1_ReadObjectId", readValue(field, out.oid));
    const Element digest = info.take();
    if (!digest.present())
        return KA_FAIL(KACERT_InvalidItemErr, "------------>digest is null");
    if (!digest.startsWith(TagOctetString) || readValue(digest, out.digest) != KACERT_Ok)
        return KA_FAIL(KACERT_InvalidItemErr, "------------>KAsn1_ReadOctetString");
    return KACERT_Ok;
}

Status readParts(const Element &element, MacParts &out) {
    Level fields;
    Element info;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    KA_PASS(takeField(fields, info, KACERT_InvalidParamErr, "------------>KAsn1_ReadSequence"));
    KA_PASS(readDigestInfo(info, out));
    const Element salt = fields.take();
    if (!salt.present())
        return KA_FAIL(KACERT_InvalidItemErr, "------------>salt is null");
    KA_STEP_AS("------------>KAsn1_ReadOctetString", readValue(salt, out.salt));
    if (!fields.empty())
        KA_STEP_AS("------------>KAsn1_ReadInteger", readInteger(fields.take(), out.iterations));
    return KACERT_Ok;
}

Status encodeMac(MacRecord *mac, Anybuf **out) {
    if (mac == nullptr || out == nullptr || mac->macFunc == nullptr || mac->macInput.data == nullptr ||
        mac->macInput.length == 0 || mac->digestAlgorithm.oid.data == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KACERT_InvalidParamErr");
    Writer data;
    KA_PASS(writeMac(data, *mac));
    KA_STEP_AS("------------>KAsn1_WriteSequence", data.moveTo(out));
    return KACERT_Ok;
}

Status decodeMac(MacRecord *mac, const Anybuf *source) {
    if (mac == nullptr || source == nullptr || source->data == nullptr || source->length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KACERT_InvalidParamErr");
    KA_PASS(readMac(elementOf(*source), *mac));
    return mac->macFunc != nullptr ? checkMac(*mac) : KACERT_Ok;
}

} // namespace

void initMac(MacRecord &mac) {
    mac.present = 1;
    mac.digestAlgorithm.id = 1;
}

// MacData ::= SEQUENCE { mac DigestInfo, macSalt OCTET STRING, iterations INTEGER DEFAULT 1 }
Status writeMac(Writer &out, MacRecord &mac) {
    HookArea area;
    KA_PASS(runHook(mac, area));
    KA_STEP_AS("------------>KI_CopyAnybuf", replace(mac.digest, area.octets()));
    const Construct data(out, TagSequence);
    {
        const Construct info(out, TagSequence);
        writeAlgorithm(out, mac.digestAlgorithm);
        out.octetString(bytesOf(mac.digest));
    }
    out.octetString(bytesOf(mac.salt));
    out.integer(mac.iterations);
    KA_STEP_AS("------------>KAsn1_WriteOctetString", out.status());
    return KACERT_Ok;
}

Status readMac(const Element &element, MacRecord &mac) {
    MacParts parts;
    KA_PASS(readParts(element, parts));
    // The element may be what a record holds: all copies are made before any is released.
    Scratch oid;
    Scratch digest;
    Scratch salt;
    KA_STEP_AS("------------>KI_CopyAlgorithm", store(oid.record, parts.oid));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(digest.record, parts.digest));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(salt.record, parts.salt));
    std::swap(mac.digestAlgorithm.oid, oid.record);
    std::swap(mac.digest, digest.record);
    std::swap(mac.salt, salt.record);
    mac.iterations = parts.iterations;
    return KACERT_Ok;
}

Status checkMac(MacRecord &mac) {
    mac.verified = 0;
    HookArea area;
    KA_PASS(runHook(mac, area));
    mac.verified = sameOctets(area.octets(), bytesOf(mac.digest)) ? 1 : 0;
    return KACERT_Ok;
}

void forgetMac(MacRecord &mac) {
    mac.verified = 0;
    mac.iterations = 0;
    for (Anybuf *field : {&mac.digestAlgorithm.oid, &mac.digest, &mac.salt})
        KI_ClearAnybuf(field);
}

void clearMac(MacRecord &mac) {
    forgetMac(mac);
    KI_ClearAnybuf(&mac.digestParameters);
    clearSecret(mac.macInput);
    clearSecret(mac.macFuncParameter);
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_EncodeMac(MacRecord *mac, Anybuf **out) {
    KA_FRAME_AS("============>KA_PKCS12_EncodeMac Begin ", "============>KA_PKCS12_EncodeMac End ");
    KA_PASS(encodeMac(mac, out));
    return KA_DONE();
}

int32_t KA_PKCS12_DecodeMac(MacRecord *mac, const Anybuf *source) {
    KA_FRAME_AS("============>KA_PKCS12_DecodeMac Begin ", "============>KA_PKCS12_DecodeMac End ");
    KA_PASS(decodeMac(mac, source));
    return KA_DONE();
}
