// The PFX under a MAC.
#include "auth_safe.h"

#include "karil/pkcs7_data.h"

namespace karil {

namespace {

using Ctx = AuthSafeCtx;

DataCtx *dataOf(const Ctx &ctx) {
    return static_cast<DataCtx *>(ctx.pkcs7);
}

Status createData(void **message) {
    DataCtx *data = nullptr;
    KA_STEP_AS("------------>KA_PKCS7_CreateDataEncodeCtx", KA_PKCS7_CreateDataEncodeCtx(&data));
    *message = data;
    return KACERT_Ok;
}

void destroyData(void *message) {
    (void)KA_PKCS7_DestoryDataEncodeCtx(static_cast<DataCtx *>(message));
}

Status writeUnderMac(Writer &out, Ctx &ctx) {
    if (ctx.mac.macFunc == nullptr || ctx.mac.salt.length == 0 || ctx.mac.digestAlgorithm.oid.length == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------------>KACERT_InvalidItemErr");
    return writePfx(out, ctx.version, ctx.mac);
}

Status readData(Ctx &ctx, const Element &message, Bytes &content) {
    KA_STEP(KA_PKCS7_DecodePKCS7Data(dataOf(ctx), message.bytes.data(), static_cast<int32_t>(message.bytes.size())));
    content = bytesOf(dataOf(ctx)->content);
    return KACERT_Ok;
}

Status setDigest(Ctx *ctx, const uint8_t *oid, int32_t length) {
    KA_PASS(checkContext(ctx, UnderMac));
    if (length < 0 || (oid == nullptr && length > 0))
        return KA_FAIL(KACERT_InvalidParamErr, RefusedArgument);
    return setTagged(ctx->mac.digestAlgorithm.oid, {oid, static_cast<size_t>(length)}, TagObjectId);
}

// Both are there with the MAC's parameter.
Status checkMacParameter(const Ctx *ctx) {
    KA_PASS(checkContext(ctx, UnderMac));
    return ctx->macParameterSet != 0 ? KACERT_Ok : KA_FAIL(KACERT_InvalidParamErr, RefusedArgument);
}

Status getDigest(const Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkMacParameter(ctx));
    KA_PASS(checkPointers({result, resultLength}));
    handOut(ctx->mac.digestAlgorithm.oid, result, resultLength);
    return KACERT_Ok;
}

Status setMacParameter(Ctx *ctx, const uint8_t *salt, uint32_t saltLength, uint32_t iterations) {
    KA_PASS(checkContext(ctx, UnderMac));
    KA_PASS(setTagged(ctx->mac.salt, {salt, saltLength}, TagOctetString));
    ctx->mac.iterations = iterations;
    ctx->macParameterSet = 1;
    return KACERT_Ok;
}

Status getMacParameter(const Ctx *ctx, uint8_t *salt, uint32_t *saltLength, uint32_t *iterations) {
    KA_PASS(checkMacParameter(ctx));
    KA_PASS(checkPointers({salt, saltLength, iterations}));
    handOut(ctx->mac.salt, salt, saltLength);
    *iterations = ctx->mac.iterations;
    return KACERT_Ok;
}

Status setMacHook(Ctx *ctx, uint8_t Ctx::*flag, KAHookFunc hook, const void *parameter, int32_t length) {
    KA_PASS(checkContext(ctx, UnderMac));
    Anybuf copy = {};
    if (length > 0)
        KA_STEP(
            KI_SetAttributeCharValue(&copy, static_cast<const uint8_t *>(parameter), static_cast<uint32_t>(length)));
    clearSecret(ctx->mac.macFuncParameter);
    ctx->mac.macFuncParameter = copy;
    ctx->mac.macFunc = hook;
    ctx->*flag = 1;
    return KACERT_Ok;
}

Status verifyMac(Ctx *ctx, int32_t *result) {
    if (ctx == nullptr)
        return KACERT_Ok;
    KA_PASS(checkContext(ctx, UnderMac));
    KA_PASS(checkPointers({result}));
    if (ctx->mac.verified != 1 && ctx->mac.macFunc == nullptr) {
        *result = PKCS7_VERDICT_NO_HOOK;
        return KACERT_Ok;
    }
    if (ctx->mac.verified != 1)
        KA_STEP_AS("------------>func", checkMac(ctx->mac));
    *result = ctx->mac.verified == 1 ? PKCS7_VERDICT_GOOD : PKCS7_VERDICT_BAD;
    return KACERT_Ok;
}

} // namespace

const AuthSafeKind UnderMac = {PKCS7_TYPE_DATA, createData, destroyData, writeUnderMac, readData, KACERT_Ok};

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_SetAuthSafeOfDataType_DigestAlgorithm(AuthSafeCtx *ctx, const uint8_t *oid, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetAuthSafeOfDataType_DigestAlgorithm", setDigest(ctx, oid, length));
}

int32_t KA_PKCS12_GetAuthSafeOfDataType_DigestAlgorithm(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetAuthSafeOfDataType_DigestAlgorithm", getDigest(ctx, result, resultLength));
}

int32_t KA_PKCS12_SetAuthSafeOfDataType_MacParameter(AuthSafeCtx *ctx, const uint8_t *salt, uint32_t saltLength,
                                                     uint32_t iterations) {
    return KA_FRAMED("KA_PKCS12_SetAuthSafeOfDataType_MacParameter",
                     setMacParameter(ctx, salt, saltLength, iterations));
}

int32_t KA_PKCS12_GetAuthSafeOfDataType_MacParameter(AuthSafeCtx *ctx, uint8_t *salt, uint32_t *saltLength,
                                                     uint32_t *iterations) {
    return KA_FRAMED("KA_PKCS12_GetAuthSafeOfDataType_MacParameter",
                     getMacParameter(ctx, salt, saltLength, iterations));
}

int32_t KA_PKCS12_SetAuthSafeOfDataType_GenMacFunc(AuthSafeCtx *ctx, KAHookFunc hook, const void *parameter,
                                                   int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetAuthSafeOfDataType_GenMacFunc",
                     setMacHook(ctx, &AuthSafeCtx::genMacSet, hook, parameter, length));
}

int32_t KA_PKCS12_SetAuthSafeOfDataType_ParseMacFunc(AuthSafeCtx *ctx, KAHookFunc hook, const void *parameter,
                                                     int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetAuthSafeOfDataType_ParseMacFunc",
                     setMacHook(ctx, &AuthSafeCtx::parseMacSet, hook, parameter, length));
}

int32_t KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult(AuthSafeCtx *ctx, int32_t *result) {
    return KA_FRAMED("KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult", verifyMac(ctx, result));
}
