#include "ka_ocsp_base.h"

namespace karil {

namespace {

Status writeResponderName(Writer &out, ResponseId &responder) {
    if (responder.hasDerName != 0) {
        if (responder.hasName != 0)
            return KA_FAIL(KACERT_InvalidParamErr, InvalidItem);
        if (!isGiven(responder.derName))
            return refuseItem();
        out.octets(bytesOf(responder.derName));
        return out.status();
    }
    if (responder.hasName == 0 && responder.hasKeyHash == 0)
        return refuseItem("------------>The name and the key are null");
    if (responder.hasName != 0)
        KA_STEP_AS("------------>KI_EncodeIssuerSuject", encodeName(out, responder.name));
    return out.status();
}

Status hashKey(ResponseId &responder) {
    if (responder.hashFunc == nullptr)
        return refuseItem();
    HookArea area;
    KA_PASS(callWithCopy(hookOf(responder.hashFunc, responder.hashParameter), bytesOf(responder.key), DigestBound, area,
                         "------------>The hash function is error"));
    return setOctets(responder.keyHash, area.octets());
}

} // namespace

// ResponseId ::= SEQUENCE { name Name OPTIONAL, keyHash OCTET STRING OPTIONAL }
Status writeResponseId(Writer &out, ResponseId &responder) {
    const Construct identity(out, TagSequence);
    KA_PASS(writeResponderName(out, responder));
    if (responder.hasKey != 0 && responder.hasKeyHash != 0)
        return refuseItem();
    if (responder.hasKey != 0)
        KA_PASS(hashKey(responder));
    if (responder.hasKey != 0 || responder.hasKeyHash != 0)
        out.octetString(bytesOf(responder.keyHash));
    return out.status();
}

Status readResponseId(const Element &element, ResponseId &responder) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeItem(fields, field));
    if (Level name; readSequence(field, name) == KACERT_Ok) {
        KA_STEP_AS("------------>KI_DecodeIssuerSubject", decodeName(field, responder.name));
        KA_STEP_AS("------------>KI_CopyAnybuf", store(responder.derName, field));
        responder.hasDerName = responder.hasName = 1;
        if (fields.empty())
            return KACERT_Ok;
        field = fields.take();
    }
    KA_PASS(readOctets(field, responder.keyHash));
    responder.hasKeyHash = 1;
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_EncodeResponseId(ResponseId *responder, Anybuf *out) {
    KA_FRAME("KI_EncodeResponseId");
    KA_PASS(checkItems({responder, out}));
    Writer identity;
    KA_PASS(writeResponseId(identity, *responder));
    KA_STEP_AS("------------>KAsn1_WriteSequence", identity.moveTo(*out));
    return KA_DONE();
}

int32_t KI_DecodeResponseId(ResponseId *responder, const Anybuf *source) {
    KA_FRAME("KI_DecodeResponseId");
    Scratch copy;
    KA_PASS(copySource(responder, source, copy));
    KA_PASS(readResponseId(elementOf(copy.record), *responder));
    return KA_DONE();
}
