// Response data and the basic response around them.
#include "ka_ocsp_base.h"

namespace karil {

// ResponseData ::= SEQUENCE { version [0] EXPLICIT INTEGER, ResponseId, producedAt time, SEQUENCE OF response,
// extensions }
Status writeResponseData(Writer &out, OcspResponseData &data) {
    const Construct sequence(out, TagSequence);
    {
        const Construct version(out, 0xA0);
        out.integer(static_cast<uint32_t>(data.version));
    }
    KA_STEP_AS("------------>KI_EncodeResponseId", writeResponseId(out, data.responder));
    LocalClock clock;
    KA_PASS(writeTime(out, data.producedAt.isUtc != 0, secondsOf(data.producedAt), clock));
    writeElements(out, data.responses);
    KA_STEP_AS("------------>KI_EncodeOCSPExtension", writeExtensions(out, data.extensions));
    return out.status();
}

Status readResponseData(const Element &element, OcspResponseData &data) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeItem(fields, field));
    KA_PASS(readOpened(field, field));
    uint32_t version = 0;
    KA_STEP_AS("------------>KAsn1_ReadInteger", readInteger(field, version));
    data.version = static_cast<int32_t>(version);
    KA_PASS(takeItem(fields, field, "------------>The pResponse id is null"));
    KA_STEP_AS("------------>KI_DecodeResponseId", readResponseId(field, data.responder));
    KA_PASS(takeItem(fields, field, "------------>The produceAt is null"));
    LocalClock clock;
    KA_STEP_AS("------------>KAsn1_ReadUtcTime", readEitherTime(field, TagGeneralizedTime, clock, data.producedAt));
    KA_PASS(takeItem(fields, field, "------------>The responses is null"));
    KA_PASS(readElements(field, data.responses, data.responseMarks, &data.responseCount));
    if (!fields.empty())
        KA_STEP_AS("------------>KI_DecodeOCSPExtension", readExtensions(fields.take(), data.extensions));
    return KACERT_Ok;
}

namespace {

// `input`: what the signature covers. Without the copy of the parameter there is no result, and no failure.
Status signResponse(OcspSignature &signature, Bytes input, HookArea &area, bool &isSigned) {
    isSigned = false;
    if (signature.signFunc == nullptr) {
        KA_TRACE("------------>The function is null");
        return KACERT_Ok;
    }
    const Status status = callWithCopy(hookOf(signature.signFunc, signature.signParameter), input, SignatureBound, area,
                                       "------------>The function is error");
    isSigned = status == KACERT_Ok;
    if (status == KACERT_MemoryErr && area.lacksParameter()) {
        KA_TRACE("------------>KAPR_Malloc");
        return KACERT_Ok;
    }
    return status;
}

} // namespace

// BasicOCSPResponse ::= SEQUENCE { response data, algorithm, signature, certificates OPTIONAL }
Status writeBasicResponse(Writer &out, OcspBasicResponse &response, bool &isWritten) {
    isWritten = false;
    const Construct sequence(out, TagSequence);
    const uint32_t start = out.size();
    KA_STEP_AS("------------>KI_EncodeResponseData", writeResponseData(out, response.data));
    if (replace(response.signedOctets, out.since(start)) != KACERT_Ok) {
        KA_TRACE("------------>KAPR_Malloc");
        return KACERT_Ok;
    }
    HookArea area;
    bool isSigned = false;
    KA_PASS(signResponse(response.signature, bytesOf(response.signedOctets), area, isSigned));
    if (!isSigned)
        return KACERT_Ok;
    KA_PASS(writeSignatureFields(out, response.signature, area.octets()));
    isWritten = true;
    return KACERT_Ok;
}

Status readBasicResponse(const Element &element, OcspBasicResponse &response) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element data;
    KA_PASS(takeItem(fields, data));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(response.signedOctets, data));
    KA_STEP_AS("------------>KI_DecodeResponseData", readResponseData(data, response.data));
    return readSignatureFields(fields, response.signature);
}

void clearBasicResponse(OcspBasicResponse &response) {
    ResponseId &responder = response.data.responder;
    for (Anybuf *field : {&responder.derName, &responder.keyHash, &responder.key, &response.signatureAlgorithm.oid,
                          &response.signatureValue, &response.signedOctets})
        freeData(*field);
    clearSecret(responder.hashParameter);
    clearSecret(response.signParameter);
    KI_FreeName(responder.name.next);
    freeElements(response.data.responses);
    freeExtensions(response.data.extensions);
    clearSignature(response.signature);
}

} // namespace karil

using namespace karil;

int32_t KI_EncodeResponseData(OcspResponseData *data, Anybuf *out) {
    KA_FRAME("KI_EncodeResponseData");
    KA_PASS(checkItems({data, out}));
    Writer whole;
    KA_PASS(writeResponseData(whole, *data));
    if (setOctets(*out, whole.since(0)) != KACERT_Ok) {
        KA_TRACE("------------>KAPR_Malloc");
        KI_ClearAnybuf(out);
        return KACERT_Ok;
    }
    out->tag = NormalSequence;
    return KA_DONE();
}

int32_t KI_DecodeResponseData(OcspResponseData *data, const Anybuf *source) {
    KA_FRAME("KI_DecodeResponseData");
    Scratch copy;
    KA_PASS(copySource(data, source, copy));
    KA_PASS(readResponseData(elementOf(copy.record), *data));
    return KA_DONE();
}

int32_t KI_EncodeBasicResponse(OcspBasicResponse *response, Anybuf **out) {
    KA_FRAME("KI_EncodeBasicResponse");
    KA_PASS(checkItems({response, out}));
    Writer whole;
    bool isWritten = false;
    KA_PASS(writeBasicResponse(whole, *response, isWritten));
    if (!isWritten) {
        *out = nullptr;
        return KACERT_Ok;
    }
    KA_STEP_AS("------------>KAsn1_WriteSequence", whole.moveTo(out));
    return KA_DONE();
}

int32_t KI_DecodeBasicResponse(OcspBasicResponse *response, const Anybuf *source) {
    KA_FRAME("KI_DecodeBasicResponse");
    KA_PASS(checkSource(response, source));
    writeDiagnosticFile(bytesOf(*source));
    Scratch copy;
    KA_PASS(copySource(response, source, copy));
    KA_PASS(readBasicResponse(elementOf(copy.record), *response));
    return KA_DONE();
}
