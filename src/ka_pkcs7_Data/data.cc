// Data: octets in a frame.
#include "karil/pkcs7_data.h"

#include "message.h"

namespace karil {

namespace {

void clearContext(DataCtx &ctx) {
    KI_ClearAnybuf(&ctx.content);
}

Status create(DataCtx **out) {
    KA_PASS(checkArguments({out}));
    return createContext(out, {});
}

Status setContent(DataCtx *ctx, const uint8_t *value, int32_t length) {
    KA_PASS(checkValue(ctx, value, length, MessageRefusals));
    return setTagged(ctx->content, {value, static_cast<size_t>(length)}, TagOctetString);
}

Status getContent(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, result, resultLength}));
    handOut(ctx->content, result, resultLength);
    return KACERT_Ok;
}

Status encode(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, resultLength}));
    const Bytes content = bytesOf(ctx->content);
    if (content.data() == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Content is NULL");
    Writer out;
    out.reserve(content.size() + 64);
    {
        const ContentFrame frame(out, contentTypeOid(PKCS7_TYPE_DATA), content.size() + 6);
        out.octetString(content);
    }
    KA_STEP_AS("------>KI_MakeContentToSequence", out.status());
    return handOut(out, result, resultLength);
}

Status readContent(const uint8_t *der, int32_t length, Anybuf &content) {
    Element whole;
    KA_STEP_AS("------>KI_MakeSequenceToContent", takeWhole(der, length, whole));
    Element value;
    KA_PASS(openMessage(whole, PKCS7_TYPE_DATA, value));
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(value, value));
    KA_STEP_AS("------>KI_CopyAnybuf", store(content, value));
    return KACERT_Ok;
}

// The input may be part of what the context holds, so that goes when all is read.
Status decode(DataCtx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkArguments({ctx, der}));
    const Status status = readContent(der, length, ctx->content);
    if (status != KACERT_Ok)
        clearContext(*ctx);
    return status;
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateDataEncodeCtx(DataCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateDataEncodeCtx", create(out));
}

int32_t KA_PKCS7_CreateDataDecodeCtx(DataCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateDataDecodeCtx", KA_PKCS7_CreateDataEncodeCtx(out));
}

int32_t KA_PKCS7_DestoryDataEncodeCtx(DataCtx *ctx) {
    return KA_FRAMED("KA_PKCS7_DestoryDataEncodeCtx", destroyContext(ctx, clearContext));
}

int32_t KA_PKCS7_DestoryDataDecodeCtx(DataCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestoryDataDecodeCtx", KA_PKCS7_DestoryDataEncodeCtx(ctx));
}

int32_t KA_PKCS7_SetDataContent(DataCtx *ctx, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetDataContent", setContent(ctx, value, length));
}

int32_t KA_PKCS7_GetDataContent(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_GetDataContent", getContent(ctx, result, resultLength));
}

int32_t KA_PKCS7_EncodePKCS7Data(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodePKCS7Data", encode(ctx, result, resultLength));
}

int32_t KA_PKCS7_DecodePKCS7Data(DataCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodePKCS7Data", decode(ctx, der, length));
}
