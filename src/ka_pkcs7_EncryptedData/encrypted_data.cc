#include "ka_pkcs7_EncryptedData.h"

namespace karil {

namespace {

using Ctx = EncryptedDataCtx;

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW_WORDS(PKCS7_ENCRYPTEDDATA_CONTENTTYPE, "PKCS7_CONTENTTYPE", "PKCS7_CONTENTTYPE",
                 (setField<TagObjectId, &Ctx::contentType, &AlgorithmRecord::oid>),
                 (answerPresent<&Ctx::contentType, &AlgorithmRecord::oid>)),
    KA_ROW_WORDS(PKCS7_ENCRYPTEDDATA_CONTENTENCRYPTION_PARAMETER, "PKCS7_CONTENTENCRYPTION_PARAMETER",
                 "PKCS7_CONTENTENCRYPTION_PARAMETER", setSecret<&Ctx::content>, answerPresent<&Ctx::content>),
};

constexpr IntAttribute<Ctx> IntRows[] = {
    {PKCS7_ENCRYPTEDDATA_VERSION, "======>Set PKCS7_VERSION", "======>Get PKCS7_VERSION", setVersion, answerVersion},
};

constexpr Refusals EncryptedRefusals = {.pointer = KACERT_InvalidItemErr, .length = KACERT_InvalidItemErr};

void clearContext(Ctx &ctx) {
    dropEncryptedContent(ctx.encryptedContent);
    KI_ClearAnybuf(&ctx.contentType.oid);
    clearSecret(ctx.content);
    ctx.versionSet = 0;
    ctx.version = 0;
    freeKept(ctx.kept);
    ctx.kept = nullptr;
}

Status encode(Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, resultLength}));
    Writer out;
    KA_PASS(writeEncryptedData(out, *ctx, ElementBound));
    return handOut(out, result, resultLength);
}

Status open(Ctx &ctx, const uint8_t *der, int32_t length, Element &content) {
    if (der == nullptr || length < 1) {
        clearContext(ctx);
        return KA_FAIL(KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr");
    }
    Element whole;
    Status status = beginDecoding(ctx, der, length, clearContext, whole);
    if (status == KACERT_Ok)
        status = openMessage(whole, PKCS7_TYPE_ENCRYPTEDDATA, content);
    if (status == KACERT_Ok || status == KACERT_MemoryErr)
        return status;
    return KA_FAIL(KACERT_InvalidItemErr, "------>KI_MakeSequenceToContent");
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    Element content;
    KA_PASS(open(*ctx, der, length, content));
    return readEncryptedData(content, *ctx);
}

} // namespace

Status writeEncryptedData(Writer &out, EncryptedDataCtx &ctx, uint32_t bound) {
    if (ctx.versionSet == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------> The version is null");
    if (ctx.content.length == 0 || ctx.contentType.oid.length == 0 || ctx.encryptedContent == nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr");
    const uint64_t expected = uint64_t{ctx.content.length} + 256;
    out.reserve(expected + 64);
    {
        const ContentFrame frame(out, contentTypeOid(PKCS7_TYPE_ENCRYPTEDDATA), expected);
        const Construct message(out, TagSequence, expected);
        out.integer(ctx.version);
        KA_PASS(writeEncrypted(out, *ctx.encryptedContent, bytesOf(ctx.contentType.oid), bytesOf(ctx.content), bound));
    }
    KA_STEP_AS("------>KI_MakeContentToSequence", out.status());
    return KACERT_Ok;
}

// EncryptedData ::= SEQUENCE { version, encryptedContentInfo }
Status readEncryptedData(const Element &element, EncryptedDataCtx &ctx) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    KA_PASS(takeVersion(fields, KACERT_InvalidItemErr, ctx));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr"));
    return readEncrypted(field, ctx.encryptedContent, &ctx);
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateEncryptedDataEncodeCtx(EncryptedDataCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateEncryptedDataEncodeCtx", createMessage(out));
}

int32_t KA_PKCS7_CreateEncryptedDataDecodeCtx(EncryptedDataCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateEncryptedDataDecodeCtx", KA_PKCS7_CreateEncryptedDataEncodeCtx(out));
}

int32_t KA_PKCS7_DestoryEncryptedDataEncodeCtx(EncryptedDataCtx *ctx) {
    return KA_FRAMED("KA_PKCS7_DestoryEncryptedDataEncodeCtx", destroyContext(ctx, clearContext));
}

int32_t KA_PKCS7_DestoryEncryptedDataDecodeCtx(EncryptedDataCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestoryEncryptedDataDecodeCtx", KA_PKCS7_DestoryEncryptedDataEncodeCtx(ctx));
}

int32_t KA_PKCS7_SetEncryptedDataAttributeInt(EncryptedDataCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KA_PKCS7_SetEncryptedDataAttributeInt", setInt(IntRows, ctx, id, value, EncryptedRefusals));
}

int32_t KA_PKCS7_GetEncryptedDataAttributeInt(const EncryptedDataCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KA_PKCS7_GetEncryptedDataAttributeInt", getInt(IntRows, ctx, id, value, EncryptedRefusals));
}

int32_t KA_PKCS7_SetEncryptedDataAttributeChar(EncryptedDataCtx *ctx, int32_t id, const uint8_t *value,
                                               int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetEncryptedDataAttributeChar",
                     setAttribute(Rows, ctx, id, value, length, EncryptedRefusals));
}

int32_t KA_PKCS7_GetEncryptedDataAttributeChar(EncryptedDataCtx *ctx, int32_t id, uint8_t *result,
                                               uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_GetEncryptedDataAttributeChar", getIntoBuffer(Rows, ctx, id, result, resultLength));
}

int32_t KA_PKCS7_SetEncrytpedData_EncryptedContent(EncryptedDataCtx *ctx, EncryptedContentCtx *content) {
    return KA_FRAMED("KA_PKCS7_SetEncrytpedData_EncryptedContent", giveEncrypted(ctx, content));
}

int32_t KA_PKCS7_GetEncrytpedData_EncryptedContent(const EncryptedDataCtx *ctx, EncryptedContentCtx **content) {
    return KA_FRAMED("KA_PKCS7_GetEncrytpedData_EncryptedContent", getEncrypted(ctx, content));
}

int32_t KA_PKCS7_EncodePKCS7EncryptedData(EncryptedDataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodePKCS7EncryptedData", encode(ctx, result, resultLength));
}

int32_t KA_PKCS7_DecodePKCS7EncryptedData(EncryptedDataCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodePKCS7EncryptedData", decode(ctx, der, length));
}
