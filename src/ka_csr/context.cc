#include "ka_csr.h"

namespace karil {

namespace {

void clearContext(CsrEncodeCtx &ctx) {
    for (Anybuf *field : {&ctx.encoded, &ctx.tbs, &ctx.outerSignatureAlgorithm.oid, &ctx.signature,
                          &ctx.publicKeyAlgorithm.oid, &ctx.publicKey})
        freeData(*field);
    clearSecret(ctx.signKey);
    KI_FreeName(ctx.subject.next);
    while (ctx.attributes != nullptr) {
        const CsrAttributePtr node(ctx.attributes);
        ctx.attributes = node->next;
    }
    freeKept(ctx.kept);
}

Status setPrivate(CsrEncodeCtx &ctx, Bytes oid, Bytes value) {
    CsrAttributePtr node(KA_CREATE(CsrAttributeNode));
    if (node == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    node->id = 52;
    node->oid.tag = TagObjectId;
    KA_STEP_AS("------>KAPR_Malloc", replace(node->oid, oid));
    KA_STEP_AS("------>KAPR_Malloc", replace(node->value, value));
    appendAttribute(ctx, std::move(node));
    return KACERT_Ok;
}

} // namespace

void freeAttribute(CsrAttributeNode *node) {
    freeData(node->oid);
    freeData(node->value);
    KAPR_Free(node);
}

void appendAttribute(CsrEncodeCtx &ctx, CsrAttributePtr node) {
    append<&CsrAttributeNode::next>(ctx.attributes, ctx.attributesLast, node.release());
    ctx.hasAttributes = 1;
}

} // namespace karil

using namespace karil;

int32_t KACert_CreateCsrEncodeCtx(CsrEncodeCtx **out) {
    KA_FRAME("KACert_CreateCsrEncodeCtx");
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    CsrEncodeCtx *ctx = KA_CREATE(CsrEncodeCtx);
    if (ctx == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    ctx->outerSignatureAlgorithm.id = 1;
    ctx->publicKeyAlgorithm.id = 1;
    *out = ctx;
    return KA_DONE();
}

int32_t KACert_CreateCsrDecodeCtx(CsrDecodeCtx **out) {
    KA_FRAME("KACert_CreateCsrDecodeCtx");
    KA_STEP(KACert_CreateCsrEncodeCtx(out));
    return KA_DONE();
}

int32_t KACert_DestroyCsrEncodeCtx(CsrEncodeCtx *ctx) {
    KA_FRAME("KACert_DestroyCsrEncodeCtx");
    if (ctx != nullptr) {
        clearContext(*ctx);
        KAPR_Free(ctx);
    }
    return KA_DONE();
}

int32_t KACert_DestroyCsrDecodeCtx(CsrDecodeCtx *ctx) {
    KA_FRAME("KACert_DestroyCsrDecodeCtx");
    KA_STEP(KACert_DestroyCsrEncodeCtx(ctx));
    return KA_DONE();
}

int32_t KACert_SetCsrSignFunc(CsrEncodeCtx *ctx, KAHookFunc hook, const void *parameter, uint32_t length) {
    KA_FRAME("KACert_SetCsrSignFunc");
    if (ctx == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(setHook(ctx->signFunc, ctx->signKey, hook, parameter, length));
    return KA_DONE();
}

int32_t KACert_SetCsrAttributeInt(CsrEncodeCtx *ctx, int32_t id, int32_t value) {
    KA_FRAME("KACert_SetCsrAttributeInt");
    if (ctx == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (id != CSR_VERSION)
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Set KACERT_AttributeNotSupportErr");
    KA_TRACE("======>Set CSR_VERSION");
    ctx->version = value;
    return KA_DONE();
}

int32_t KACert_GetCsrAttributeInt(const CsrDecodeCtx *ctx, int32_t id, int32_t *value) {
    KA_FRAME("KACert_GetCsrAttributeInt");
    if (ctx == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (id != CSR_VERSION)
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Get KACERT_AttributeNotSupportErr");
    KA_TRACE("======>Get CSR_VERSION");
    *value = ctx->version;
    return KA_DONE();
}

int32_t KACert_SetCsrAttributePrivate(CsrEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength, const uint8_t *value,
                                      int32_t valueLength) {
    KA_FRAME("KACert_SetCsrAttributePrivate");
    if (oidLength < 1 || valueLength < 1)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    if (ctx == nullptr || oid == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(
        setPrivate(*ctx, Bytes(oid, static_cast<size_t>(oidLength)), Bytes(value, static_cast<size_t>(valueLength))));
    return KA_DONE();
}

int32_t KACert_GetCsrAttributePrivate(const CsrDecodeCtx *ctx, uint32_t *index, uint8_t *oid, uint32_t *oidLength,
                                      uint8_t *value, uint32_t *valueLength) {
    KA_FRAME("KACert_GetCsrAttributePrivate");
    if (ctx == nullptr || index == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const CsrAttributeNode *node = numbered(ctx->attributes, *index);
    if (node == nullptr)
        return KA_DONE();
    if (oidLength == nullptr || valueLength == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    handOut(node->oid, oid, oidLength);
    handOut(node->value, value, valueLength);
    return KA_DONE();
}
