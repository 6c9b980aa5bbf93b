// EncryptedContentInfo: the context, and the cipher's hook.
#include "ka_pkcs7_base.h"

namespace karil {

namespace {

using Ctx = EncryptedContentCtx;

Status setContent(Ctx &ctx, Bytes value) {
    return replaceSecret(ctx.content, value);
}

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(PKCS7_ENCRYPT_CONTENT_TYPE, (setField<TagObjectId, &Ctx::contentType, &AlgorithmRecord::oid>),
           (answerField<&Ctx::contentType, &AlgorithmRecord::oid>)),
    KA_ROW(PKCS7_ENCRYPT_ALGO, (setField<TagObjectId, &Ctx::encryptionAlgorithm, &AlgorithmIdentifierRecord::oid>),
           (answerField<&Ctx::encryptionAlgorithm, &AlgorithmIdentifierRecord::oid>)),
    KA_ROW(PKCS7_ENCRYPT_PARAMETER, (setField<0, &Ctx::encryptionAlgorithm, &AlgorithmIdentifierRecord::parameters>),
           (answerField<&Ctx::encryptionAlgorithm, &AlgorithmIdentifierRecord::parameters>)),
    KA_ROW(PKCS7_ENCRYPT_ENCRYPTEDCONTENT, (setField<TagOctetString, &Ctx::encryptedContent>),
           (answerField<&Ctx::encryptedContent>)),
    KA_ROW(PKCS7_ENCRYPT_CONTENT, setContent, (answerField<&Ctx::content>)),
};

constexpr char NotSupported[] = "------------>Attribute Not surport";
constexpr Refusals ContentRefusals = {.pointer = KACERT_InvalidItemErr,
                                      .id = KAPKCS7_ContentTypeErr,
                                      .setWords = NotSupported,
                                      .getWords = NotSupported,
                                      .shortest = 0};

// What decoding fills, and what was made of it.
void clearDecoded(Ctx &ctx) {
    for (Anybuf *field : {&ctx.contentType.oid, &ctx.encryptionAlgorithm.oid, &ctx.encryptionAlgorithm.parameters,
                          &ctx.encryptedContent})
        KI_ClearAnybuf(field);
    clearSecret(ctx.content);
    ctx.decoded = 0;
    freeKept(ctx.kept);
    ctx.kept = nullptr;
}

// The area for a hook's output: larger than its input by a block and whatever else a cipher may add.
constexpr uint32_t LeastArea = 10240;
constexpr uint32_t Growth = 1024;

Status runCipher(const Ctx &ctx, const Anybuf &input, HookArea &output) {
    const uint64_t grown = uint64_t{input.length} + Growth;
    const Hook hook = {ctx.cipherFunc, ctx.cipherFuncParam, static_cast<uint32_t>(ctx.cipherFuncParamLen)};
    return callWithCopy(hook, bytesOf(input), grown > LeastArea ? grown : LeastArea, output, "------>func");
}

// The cipher text: what the hook makes of the plain text, or what is there.
Status cipherText(const Ctx &ctx, HookArea &area, Bytes &out) {
    if (ctx.content.length > 0 && ctx.cipherFunc != nullptr) {
        KA_PASS(runCipher(ctx, ctx.content, area));
        out = area.octets();
        return KACERT_Ok;
    }
    if (ctx.encryptedContent.length == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>EncryptedContent is NULL");
    if (ctx.encryptedContent.data == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_WriteOctetString");
    out = bytesOf(ctx.encryptedContent);
    return KACERT_Ok;
}

// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters ANY OPTIONAL }
Status readCipher(const Element &element, AlgorithmIdentifierRecord &cipher) {
    Level fields;
    Element oid;
    KA_PASS(readTyped(element, oid, fields, KACERT_InvalidItemErr));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(cipher.oid, oid));
    if (!fields.empty())
        KA_STEP_AS("------>KI_CopyAnybuf", store(cipher.parameters, fields.take()));
    return KACERT_Ok;
}

// [0] IMPLICIT OCTET STRING; of a constructed one the first element
Status readCipherText(const Element &element, Ctx &ctx) {
    Implicit value;
    KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(element, value));
    if (value.constructed && value.level.empty())
        return KA_FAIL(KACERT_InvalidItemErr, "------>KAsn1_ReadImplicit");
    KA_STEP_AS("------>KI_CopyAnybuf",
               store(ctx.encryptedContent, value.constructed ? value.level.take() : value.content));
    ctx.decoded = 1;
    return KACERT_Ok;
}

Status decipher(Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, result, resultLength}));
    if (ctx->cipherFunc == nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, "------>func is NULL");
    HookArea area;
    KA_PASS(runCipher(*ctx, ctx->encryptedContent, area));
    area.moveTo(ctx->content);
    handOut(ctx->content, result, resultLength);
    return KACERT_Ok;
}

Status setCipher(Ctx *ctx, KAHookFunc hook, const void *parameter, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    return setHook(ctx->cipherFunc, ctx->cipherFuncParam, ctx->cipherFuncParamLen, hook, parameter, length);
}

Status getAttributeOf(Ctx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({result}));
    return getAttribute(Rows, ctx, id, result, resultLength, ContentRefusals);
}

Status createFor(Ctx **out) {
    KA_PASS(checkArguments({out}));
    EncryptedContentPtr ctx;
    KA_PASS(createEncryptedContent(ctx));
    *out = ctx.release();
    return KACERT_Ok;
}

} // namespace

Status createEncryptedContent(EncryptedContentPtr &out) {
    void *record = nullptr;
    KA_PASS(createRecord(&out, sizeof(Ctx), record));
    out.reset(static_cast<Ctx *>(record));
    out->contentType.id = out->encryptionAlgorithm.id = 1;
    return KACERT_Ok;
}

void destroyEncryptedContent(EncryptedContentCtx *ctx) {
    if (ctx == nullptr)
        return;
    clearDecoded(*ctx);
    freeParameter(ctx->cipherFuncParam, static_cast<uint32_t>(ctx->cipherFuncParamLen));
    KAPR_Free(ctx);
}

Status setPlainContent(EncryptedContentCtx &ctx, Bytes contentType, Bytes content) {
    KA_STEP_AS("------>KA_PKCS7_SetEncryptedContentAttributeChar", replaceSecret(ctx.content, content));
    KA_STEP_AS("------>KA_PKCS7_SetEncryptedContentAttributeChar", replace(ctx.contentType.oid, contentType));
    return KACERT_Ok;
}

Status writeEncryptedContent(Writer &out, EncryptedContentCtx &ctx, uint32_t bound) {
    KA_PASS(out.status());
    HookArea area;
    Bytes text;
    const uint32_t start = out.size();
    KA_PASS(cipherText(ctx, area, text));
    {
        const Construct info(out, TagSequence, static_cast<uint32_t>(text.size()));
        out.objectId(bytesOf(ctx.contentType.oid));
        {
            const Construct algorithm(out, TagSequence);
            out.objectId(bytesOf(ctx.encryptionAlgorithm.oid));
            out.octets(bytesOf(ctx.encryptionAlgorithm.parameters));
        }
        KA_STEP_AS("------>KAsn1_WriteObjectId", out.status());
        out.element(0x80, text);
    }
    if (out.status() != KACERT_Ok)
        return KA_FAIL(KACERT_MemoryErr, "------>KAsn1_WriteSequence");
    return checkBound(out, start, bound);
}

Status readEncryptedContent(const Element &element, EncryptedContentCtx &ctx) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    if (takeField(fields, field, KACERT_CertNotEndErr, "------>EncryptedContentInfo is NULL") != KACERT_Ok)
        return KACERT_Ok;
    Element type;
    KA_STEP_AS("------>KAsn1_ReadObjectId", readValue(field, type));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(ctx.contentType.oid, type));
    if (takeField(fields, field, KACERT_CertNotEndErr, "------>content encryption info is NULL") != KACERT_Ok)
        return KACERT_Ok;
    KA_PASS(readCipher(field, ctx.encryptionAlgorithm));
    if (takeField(fields, field, KACERT_CertNotEndErr, "------>Encrypted  key is NULL") != KACERT_Ok)
        return KACERT_Ok;
    return readCipherText(field, ctx);
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateEnocdeEncryptedContent(EncryptedContentCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateEnocdeEncryptedContent", createFor(out));
}

int32_t KA_PKCS7_CreateDeocdeEncryptedContent(EncryptedContentCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateDeocdeEncryptedContent", KA_PKCS7_CreateEnocdeEncryptedContent(out));
}

int32_t KA_PKCS7_DestoryEncodeEncryptedContent(EncryptedContentCtx *ctx) {
    KA_FRAME("KA_PKCS7_DestoryEncodeEncryptedContent");
    destroyEncryptedContent(ctx);
    return KA_DONE();
}

int32_t KA_PKCS7_DestoryDecodeEncryptedContent(EncryptedContentCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestoryDecodeEncryptedContent", KA_PKCS7_DestoryEncodeEncryptedContent(ctx));
}

int32_t KA_PKCS7_SetEncryptedContentAttributeChar(EncryptedContentCtx *ctx, int32_t id, const uint8_t *value,
                                                  int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetEncryptedContentAttributeChar",
                     setAttribute(Rows, ctx, id, value, length, ContentRefusals));
}

int32_t KA_PKCS7_GetEncryptedContentAttributeChar(EncryptedContentCtx *ctx, int32_t id, uint8_t *result,
                                                  uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_GetEncryptedContentAttributeChar", getAttributeOf(ctx, id, result, resultLength));
}

int32_t KA_PKCS7_SetEncryptContentEncFunc(EncryptedContentCtx *ctx, KAHookFunc hook, const void *parameter,
                                          int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetEncryptContentEncFunc", setCipher(ctx, hook, parameter, length));
}

int32_t KA_PKCS7_SetEncryptContentDecFunc(EncryptedContentCtx *ctx, KAHookFunc hook, const void *parameter,
                                          int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetEncryptContentDecFunc", setCipher(ctx, hook, parameter, length));
}

int32_t KA_PKCS7_EncodeEncryptedContent(EncryptedContentCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodeEncryptedContent", encodeAlone(ctx, result, resultLength, writeEncryptedContent));
}

int32_t KA_PKCS7_DecodeEncryptedContent(EncryptedContentCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodeEncryptedContent",
                     decodeAlone(ctx, der, length, clearDecoded, readEncryptedContent));
}

int32_t KA_PKCS7_GetEncryptedContentInformation(EncryptedContentCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_GetEncryptedContentInformation", decipher(ctx, result, resultLength));
}
