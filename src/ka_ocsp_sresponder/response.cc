#include "ka_ocsp_sresponder.h"

namespace karil {

namespace {

using Ctx = ResponseCtx;

void prepare(Ctx &ctx) {
    prepareExtensions(ctx.basic.data.extensions);
    ctx.basic.signatureAlgorithm.id = 1;
    ctx.basic.signature.algorithm.id = 1;
}

void clearContext(Ctx &ctx) {
    freeData(ctx.status);
    freeData(ctx.type);
    clearBasicResponse(ctx.basic);
    freeKept(ctx.kept);
}

// A context that cannot be made is null, and no failure.
Status makeResponse(ResponseCtx **out) {
    KA_PASS(checkItems({out}));
    if (makeContext(out, prepare) != KACERT_Ok)
        *out = nullptr;
    return KACERT_Ok;
}

// OCSPResponse ::= SEQUENCE { responseStatus ENUMERATED, responseBytes [0] EXPLICIT SEQUENCE { responseType OBJECT
// IDENTIFIER, response OCTET STRING } }
Status writeResponse(Writer &out, Ctx &ctx) {
    if (!isGiven(ctx.status) || ctx.hasBody == 0 || !isGiven(ctx.type))
        return refuseItem();
    const Construct response(out, TagSequence);
    out.element(TagEnumerated, bytesOf(ctx.status));
    const Construct tagged(out, 0xA0);
    const Construct body(out, TagSequence);
    out.objectId(bytesOf(ctx.type));
    const Construct octets(out, TagOctetString);
    bool isWritten = false;
    KA_STEP_AS("------------>KI_EncodeBasicResponse", writeBasicResponse(out, ctx.basic, isWritten));
    return isWritten ? out.status() : refuseItem();
}

// ResponseBytes ::= [0] EXPLICIT SEQUENCE { responseType OBJECT IDENTIFIER, response OCTET STRING }
Status readBody(const Element &element, Ctx &ctx) {
    ctx.hasBody = 1;
    Element body;
    KA_PASS(readOpened(element, body));
    if (element.tag != 0xA0)
        return refuseItem();
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(body, fields));
    Element field;
    KA_PASS(takeItem(fields, field));
    Element type;
    KA_STEP_AS("------------>KAsn1_ReadObjectId", readValue(field, type));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.type, type));
    KA_PASS(takeItem(fields, field));
    Element response;
    KA_STEP_AS("------------>KAsn1_ReadOctetString", readValue(field, response));
    writeDiagnosticFile(response.bytes);
    KA_STEP_AS("------------>KI_DecodeBasicResponse", readBasicResponse(response, ctx.basic));
    return KACERT_Ok;
}

Status readResponse(const Element &whole, Ctx &ctx) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(whole, fields));
    Element field;
    KA_PASS(takeItem(fields, field));
    Element status;
    KA_STEP_AS("------------>KAsn1_ReadEnumerated", readValue(field, status));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.status, status));
    return fields.empty() ? KACERT_Ok : readBody(fields.take(), ctx);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_OCSP_CreateEncodeResponse(ResponseCtx **out) {
    return KA_FRAMED("KA_OCSP_CreateEncodeResponse", makeResponse(out));
}

int32_t KA_OCSP_CreateDecodeResponse(ResponseCtx **out) {
    return KA_TWIN("KA_OCSP_CreateDecodeResponse", KA_OCSP_CreateEncodeResponse(out));
}

int32_t KA_OCSP_DestoryEncodeResponse(ResponseCtx *ctx) {
    return KA_FRAMED("KA_OCSP_DestoryEncodeResponse", endContext(ctx, clearContext));
}

int32_t KA_OCSP_DestoryDecodeResponse(ResponseCtx *ctx) {
    return KA_TWIN("KA_OCSP_DestoryDecodeResponse", KA_OCSP_DestoryEncodeResponse(ctx));
}

int32_t KA_OCSP_SetResponseSingleResponse(ResponseCtx *ctx, const uint8_t *value, int32_t length) {
    KA_FRAME("KA_OCSP_SetResponseSingleResponse");
    if (ctx == nullptr || value == nullptr || length < 1)
        return KA_DONE();
    OcspResponseData &data = ctx->basic.data;
    KA_PASS(addElement(data.responses, data.responseMarks,
                       {shortTag(value[0]), Bytes(value, static_cast<size_t>(length))}));
    ++data.responseCount;
    return KA_DONE();
}

int32_t KA_OCSP_SetResponseSignFunc(ResponseCtx *ctx, KAHookFunc hook, const uint8_t *parameter, int32_t length) {
    KA_FRAME("KA_OCSP_SetResponseSignFunc");
    KA_PASS(checkItems({ctx, reinterpret_cast<const void *>(hook)}));
    OcspSignature &signature = ctx->basic.signature;
    KA_PASS(setHook(signature.signFunc, signature.signParameter, hook, parameter, length, KACERT_MemoryErr));
    return KA_DONE();
}

int32_t KA_OCSP_SetResponseHashFunc(ResponseCtx *ctx, KAHookFunc hook, const uint8_t *parameter, int32_t length) {
    KA_FRAME("KA_OCSP_SetResponseHashFunc");
    KA_PASS(checkItems({ctx, reinterpret_cast<const void *>(hook)}));
    ResponseId &responder = ctx->basic.data.responder;
    KA_PASS(setHook(responder.hashFunc, responder.hashParameter, hook, parameter, length, KACERT_MemoryErr));
    return KA_DONE();
}

int32_t KA_OCSP_SetResponsePrivateAttribute(void) {
    KA_FRAME("KA_OCSP_SetResponsePrivateAttribute");
    return KA_DONE();
}

int32_t KA_OCSP_GetResponsePrivateAttribute(void) {
    KA_FRAME("KA_OCSP_GetResponsePrivateAttribute");
    return KA_DONE();
}

int32_t KA_OCSP_EncodeResponse(ResponseCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_OCSP_EncodeResponse", encodeItem(ctx, result, resultLength, writeResponse));
}

int32_t KA_OCSP_DecodeResponse(ResponseCtx *ctx, const uint8_t *der, uint32_t length) {
    KA_FRAME("KA_OCSP_DecodeResponse");
    KA_PASS(checkItems({ctx}));
    Element whole;
    if (const Status status = keepWhole(ctx->kept, der, length, whole); status != KACERT_Ok)
        return status == KACERT_MemoryErr ? KACERT_Ok : status;
    KA_PASS(readResponse(whole, *ctx));
    return KA_DONE();
}

int32_t KA_OCSP_GetResponseSingleResponse(const ResponseCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                          uint32_t index) {
    KA_FRAME("KA_OCSP_GetResponseSingleResponse");
    KA_PASS(checkItems({ctx, result, resultLength}));
    const OcspResponseData &data = ctx->basic.data;
    const auto *last = static_cast<const Anybuf *>(data.responseMarks.last);
    if (index <= data.responseCount && last != nullptr)
        handOut(*last, result, resultLength);
    return KA_DONE();
}
