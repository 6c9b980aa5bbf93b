#include "ka_ocsp_srequest.h"

namespace karil {

namespace {

using Ctx = RequestCtx;

void prepare(Ctx &ctx) {
    prepareExtensions(ctx.extensions);
    ctx.signature.algorithm.id = 1;
}

void clearContext(Ctx &ctx) {
    freeData(ctx.requestorDer);
    freeData(ctx.tbs);
    KI_FreeName(ctx.requestor.next);
    freeElements(ctx.requests);
    freeExtensions(ctx.extensions);
    clearSignature(ctx.signature);
    freeKept(ctx.kept);
}

Status addSingleRequest(Ctx &ctx, Bytes value) {
    if (addElement(ctx.requests, ctx.requestMarks, {shortTag(value[0]), value}) != KACERT_Ok)
        return refuseItem("------------>KI_SetAttributeCharValue");
    ++ctx.requestCount;
    return KACERT_Ok;
}

// [1] EXPLICIT Name
Status writeRequestor(Writer &out, const Ctx &ctx) {
    const Construct tagged(out, 0xA1);
    if (ctx.hasDerName == 0) {
        KA_STEP_AS("------------>KI_EncodeIssuerSuject", encodeName(out, ctx.requestor));
        return KACERT_Ok;
    }
    if (!isGiven(ctx.requestorDer))
        return refuseItem("------------>The issuer name is invalid");
    out.octets(bytesOf(ctx.requestorDer));
    return KACERT_Ok;
}

// TBSRequest ::= SEQUENCE { version [0] EXPLICIT INTEGER, requestorName [1] EXPLICIT Name, requestList SEQUENCE OF
// Request, requestExtensions [2] EXPLICIT extensions OPTIONAL }
Status writeTbs(Writer &out, const Ctx &ctx) {
    const Construct tbs(out, TagSequence);
    {
        const Construct version(out, 0xA0);
        out.integer(ctx.version);
    }
    KA_PASS(writeRequestor(out, ctx));
    writeElements(out, ctx.requests);
    if (ctx.hasExtensions != 0) {
        const Construct tagged(out, 0xA2);
        KA_STEP_AS("------------>KI_EncodeOCSPExtension", writeExtensions(out, ctx.extensions));
    }
    return out.status();
}

// OCSPRequest ::= SEQUENCE { tbsRequest, optionalSignature [0] EXPLICIT signature OPTIONAL }
Status writeRequest(Writer &out, Ctx &ctx) {
    if (ctx.hasVersion == 0)
        return refuseItem();
    const Construct request(out, TagSequence);
    const uint32_t start = out.size();
    KA_PASS(writeTbs(out, ctx));
    KA_PASS(out.status());
    KA_PASS(setOctets(ctx.tbs, out.since(start)));
    if (ctx.isSigned == 0)
        return KACERT_Ok;
    const Construct tagged(out, 0xA0);
    KA_STEP_AS("------------>KI_EncodeOCSPSignature", writeSignature(out, ctx.signature, bytesOf(ctx.tbs)));
    return KACERT_Ok;
}

Status readRequestor(const Element &element, Ctx &ctx) {
    Element name;
    KA_PASS(readOpened(element, name));
    if (element.tag != 0xA1 || !name.present())
        return KACERT_Ok;
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.requestorDer, name));
    KA_STEP_AS("------------>KI_DecodeIssuerSubject", decodeName(name, ctx.requestor));
    ctx.hasDerName = 1;
    return KACERT_Ok;
}

Status readTbs(const Element &element, Ctx &ctx) {
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.tbs, element));
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeItem(fields, field));
    Element content;
    KA_PASS(readOpened(field, content));
    if (field.tag == 0xA0)
        KA_STEP_AS("------------>KAsn1_ReadInteger", readInteger(content, ctx.version));
    KA_PASS(takeItem(fields, field));
    KA_PASS(readRequestor(field, ctx));
    KA_PASS(takeItem(fields, field));
    KA_PASS(readElements(field, ctx.requests, ctx.requestMarks, &ctx.requestCount));
    if (fields.empty())
        return KACERT_Ok;
    if (readOpened(fields.take(), content) != KACERT_Ok)
        return refuseItem();
    ctx.hasExtensions = 1;
    KA_STEP_AS("------------>KI_DecodeOCSPExtension", readExtensions(content, ctx.extensions));
    return KACERT_Ok;
}

Status readRequest(const Element &whole, Ctx &ctx) {
    Level parts;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(whole, parts));
    Element part;
    KA_PASS(takeItem(parts, part));
    KA_PASS(readTbs(part, ctx));
    if (parts.empty())
        return KACERT_Ok;
    if (readOpened(parts.take(), part) != KACERT_Ok)
        return refuseItem();
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(part, fields));
    KA_PASS(readSignatureFields(fields, ctx.signature));
    ctx.isSigned = ctx.signature.isSigned = 1;
    return KACERT_Ok;
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_OCSP_CreateEncodeRequest(RequestCtx **out) {
    return KA_FRAMED("KA_OCSP_CreateEncodeRequest", makeContext(out, prepare));
}

int32_t KA_OCSP_CreateDecodeRequest(RequestCtx **out) {
    return KA_TWIN("KA_OCSP_CreateDecodeRequest", KA_OCSP_CreateEncodeRequest(out));
}

int32_t KA_OCSP_DestoryEncodeRequest(RequestCtx *ctx) {
    return KA_FRAMED("KA_OCSP_DestoryEncodeRequest", endContext(ctx, clearContext));
}

int32_t KA_OCSP_DestoryDecodeRequest(RequestCtx *ctx) {
    return KA_TWIN("KA_OCSP_DestoryDecodeRequest", KA_OCSP_DestoryEncodeRequest(ctx));
}

int32_t KA_OCSP_SetRequestSingleRequest(RequestCtx *ctx, const uint8_t *value, int32_t length) {
    KA_FRAME("KA_OCSP_SetRequestSingleRequest");
    KA_PASS(checkItems({ctx, value}));
    if (length < 1)
        return refuseItem();
    KA_PASS(addSingleRequest(*ctx, Bytes(value, static_cast<size_t>(length))));
    return KA_DONE();
}

int32_t KA_OCSP_SetRequestSignFunc(RequestCtx *ctx, KAHookFunc hook, const uint8_t *parameter, int32_t length) {
    KA_FRAME("KA_OCSP_SetRequestSignFunc");
    KA_PASS(checkItems({ctx, reinterpret_cast<const void *>(hook)}));
    OcspSignature &signature = ctx->signature;
    KA_PASS(setHook(signature.signFunc, signature.signParameter, hook, parameter, length, KACERT_MemoryErr));
    return KA_DONE();
}

int32_t KA_OCSP_SetRequestPrivateAttribute(RequestCtx *ctx, const uint8_t *oid, int32_t oidLength, const uint8_t *value,
                                           int32_t valueLength, uint8_t critical) {
    KA_FRAME("KA_OCSP_SetRequestPrivateAttribute");
    KA_PASS(checkItems({ctx, oid, value}));
    if (oidLength < 1 || valueLength < 1)
        return refuseItem();
    if (addPrivate(ctx->extensions, Bytes(oid, static_cast<size_t>(oidLength)),
                   Bytes(value, static_cast<size_t>(valueLength)), critical) != KACERT_Ok)
        return refuseItem("------------>KI_SetAttributeCharValue");
    return KA_DONE();
}

int32_t KA_OCSP_EncodeRequest(RequestCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_OCSP_EncodeRequest", encodeItem(ctx, result, resultLength, writeRequest));
}

int32_t KA_OCSP_DecodeRequest(RequestCtx *ctx, const uint8_t *der, uint32_t length) {
    return KA_FRAMED("KA_OCSP_DecodeRequest", decodeItem(ctx, der, length, readRequest));
}

int32_t KA_OCSP_GetRequestSingleRequest(RequestCtx *ctx, uint8_t *result, uint32_t *resultLength, uint32_t index) {
    KA_FRAME("KA_OCSP_GetRequestSingleRequest");
    KA_PASS(checkItems({ctx, result, resultLength}));
    if (index > ctx->requestCount)
        return KA_DONE();
    const Anybuf *node = nodeAt<&Anybuf::next>(ctx->requests.next, ctx->requestMarks, static_cast<int32_t>(index));
    if (node == nullptr || !isGiven(*node))
        return refuseItem();
    handOut(*node, result, resultLength);
    return KA_DONE();
}

int32_t KA_OCSP_GetRequestSingleRequestNum(const RequestCtx *ctx, uint32_t *count) {
    KA_FRAME("KA_OCSP_GetRequestSingleRequestNum");
    KA_PASS(checkItems({ctx, count}));
    *count = ctx->requestCount;
    return KA_DONE();
}

int32_t KA_OCSP_GetRequestPrivateAttribute(void) {
    KA_FRAME("KA_OCSP_GetRequestPrivateAttribute");
    return KA_DONE();
}
