#include "ka_pkcs7_DigestedData.h"

namespace karil {

namespace {

using Ctx = DigestedDataCtx;

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(PKCS7_DIGESTED_DIGEST_ALGO, (setField<TagObjectId, &Ctx::digestAlgorithm, &AlgorithmIdentifierRecord::oid>),
           (answerField<&Ctx::digestAlgorithm, &AlgorithmIdentifierRecord::oid>)),
    KA_ROW(PKCS7_DIGESTED_CONTENTTYPE, (setField<TagObjectId, &Ctx::contentType, &AlgorithmRecord::oid>),
           (answerField<&Ctx::contentType, &AlgorithmRecord::oid>)),
    KA_ROW(PKCS7_DIGESTED_CONTENT, (setField<TagOctetString, &Ctx::content>), (answerField<&Ctx::content>)),
    KA_ROW(PKCS7_DIGESTED_DIGEST, nullptr, (answerField<&Ctx::digest>)),
};

constexpr IntAttribute<Ctx> IntRows[] = {
    {PKCS7_DIGESTED_VERSION, "======>Set PKCS7_VERSION", "======>Get PKCS7_VERSION", setVersion, answerVersion},
};

constexpr Refusals DigestedRefusals = {.pointer = KACERT_InvalidItemErr, .length = KACERT_InvalidItemErr};

void clearContext(Ctx &ctx) {
    clearDecoded(ctx);
    freeParameter(ctx.digestFuncParam, ctx.digestFuncParamLen);
}

Status create(Ctx **out) {
    KA_PASS(createMessage(out));
    (*out)->digestAlgorithm.id = 1;
    return KACERT_Ok;
}

Status setDigest(Ctx *ctx, KAHookFunc hook, const void *parameter, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    return keepHook(ctx->digestFunc, ctx->digestFuncParam, ctx->digestFuncParamLen, hook, parameter, length);
}

} // namespace

void clearDecoded(DigestedDataCtx &ctx) {
    for (Anybuf *field :
         {&ctx.digestAlgorithm.oid, &ctx.digestAlgorithm.parameters, &ctx.contentType.oid, &ctx.content, &ctx.digest})
        KI_ClearAnybuf(field);
    ctx.versionSet = 0;
    ctx.version = ctx.verifyResult = 0;
    freeKept(ctx.kept);
    ctx.kept = nullptr;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateDigestedDataEncodeCtx(DigestedDataCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateDigestedDataEncodeCtx", create(out));
}

int32_t KA_PKCS7_CreateDigestedDataDecodeCtx(DigestedDataCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateDigestedDataDecodeCtx", KA_PKCS7_CreateDigestedDataEncodeCtx(out));
}

int32_t KA_PKCS7_DestoryDigestedDataEncodeCtx(DigestedDataCtx *ctx) {
    return KA_FRAMED("KA_PKCS7_DestoryDigestedDataEncodeCtx", destroyContext(ctx, clearContext));
}

int32_t KA_PKCS7_DestoryDigestedDataDecodeCtx(DigestedDataCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestoryDigestedDataDecodeCtx", KA_PKCS7_DestoryDigestedDataEncodeCtx(ctx));
}

int32_t KA_PKCS7_SetDigestedDataAttributeInt(DigestedDataCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KA_PKCS7_SetDigestedDataAttributeInt", setInt(IntRows, ctx, id, value, DigestedRefusals));
}

int32_t KA_PKCS7_GetDigestedDataAttributeInt(const DigestedDataCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KA_PKCS7_GetDigestedDataAttributeInt", getInt(IntRows, ctx, id, value, DigestedRefusals));
}

int32_t KA_PKCS7_SetDigestedDataAttributeChar(DigestedDataCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetDigestedDataAttributeChar",
                     setAttribute(Rows, ctx, id, value, length, DigestedRefusals));
}

int32_t KA_PKCS7_GetDigestedDataAttributeChar(DigestedDataCtx *ctx, int32_t id, uint8_t *result,
                                              uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_GetDigestedDataAttributeChar", getIntoBuffer(Rows, ctx, id, result, resultLength));
}

int32_t KA_PKCS7_SetDigestedDataHashFunc(DigestedDataCtx *ctx, KAHookFunc hook, const void *parameter, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetDigestedDataHashFunc", setDigest(ctx, hook, parameter, length));
}

int32_t KA_PKCS7_GetDigestedDataHashResult(const DigestedDataCtx *ctx, uint32_t *verdict) {
    return KA_FRAMED("KA_PKCS7_GetDigestedDataHashResult", answerCount(ctx, &DigestedDataCtx::verifyResult, verdict));
}
