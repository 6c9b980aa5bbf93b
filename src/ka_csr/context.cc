#include "ka_csr.h"

namespace karil {

namespace {

void clearContext(CsrEncodeCtx &ctx) {
    for (Anybuf *field : {&ctx.encoded, &ctx.tbs, &ctx.outerSignatureAlgorithm.oid, &ctx.signature,
                          &ctx.publicKeyAlgorithm.oid, &ctx.publicKey})
        freeData(*field);
    clearSecret(ctx.signKey);
    KI_FreeName(ctx.subject.next);
    freeList(ctx.attributes);
    freeKept(ctx.kept);
}

Status setPrivate(CsrEncodeCtx &ctx, Bytes oid, Bytes value) {
    NodePtr<CsrAttributeNode> node;
    KA_PASS(createPair(node, oid, value));
    appendAttribute(ctx, std::move(node));
    return KACERT_Ok;
}

Status setVersion(CsrEncodeCtx &ctx, int32_t value) {
    ctx.version = value;
    return KACERT_Ok;
}
void getVersion(const CsrEncodeCtx &ctx, int32_t &value) {
    value = ctx.version;
}

constexpr IntAttribute<CsrEncodeCtx> IntRows[] = {KA_INT_ROW(CSR_VERSION, setVersion, getVersion)};

} // namespace

void appendAttribute(CsrEncodeCtx &ctx, NodePtr<CsrAttributeNode> node) {
    appendMarked<&CsrAttributeNode::next>(ctx.attributes, ctx.attributeMarks, node.release());
    ctx.hasAttributes = 1;
}

} // namespace karil

using namespace karil;

int32_t KACert_CreateCsrEncodeCtx(CsrEncodeCtx **out) {
    return KA_FRAMED("KACert_CreateCsrEncodeCtx",
                     createContext(out, {&CsrEncodeCtx::outerSignatureAlgorithm, &CsrEncodeCtx::publicKeyAlgorithm}));
}

int32_t KACert_CreateCsrDecodeCtx(CsrDecodeCtx **out) {
    return KA_TWIN("KACert_CreateCsrDecodeCtx", KACert_CreateCsrEncodeCtx(out));
}

int32_t KACert_DestroyCsrEncodeCtx(CsrEncodeCtx *ctx) {
    return KA_FRAMED("KACert_DestroyCsrEncodeCtx", destroyContext(ctx, clearContext));
}

int32_t KACert_DestroyCsrDecodeCtx(CsrDecodeCtx *ctx) {
    return KA_TWIN("KACert_DestroyCsrDecodeCtx", KACert_DestroyCsrEncodeCtx(ctx));
}

int32_t KACert_SetCsrSignFunc(CsrEncodeCtx *ctx, KAHookFunc hook, const void *parameter, uint32_t length) {
    return KA_FRAMED("KACert_SetCsrSignFunc", setSignHook(ctx, hook, parameter, length));
}

int32_t KACert_SetCsrAttributeInt(CsrEncodeCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KACert_SetCsrAttributeInt", setInt(IntRows, ctx, id, value));
}

int32_t KACert_GetCsrAttributeInt(const CsrDecodeCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KACert_GetCsrAttributeInt", getInt(IntRows, ctx, id, value));
}

int32_t KACert_SetCsrAttributePrivate(CsrEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength, const uint8_t *value,
                                      int32_t valueLength) {
    KA_FRAME("KACert_SetCsrAttributePrivate");
    KA_PASS(checkPair(ctx, oid, oidLength, value, valueLength));
    KA_PASS(
        setPrivate(*ctx, Bytes(oid, static_cast<size_t>(oidLength)), Bytes(value, static_cast<size_t>(valueLength))));
    return KA_DONE();
}

int32_t KACert_GetCsrAttributePrivate(const CsrDecodeCtx *ctx, uint32_t *index, uint8_t *oid, uint32_t *oidLength,
                                      uint8_t *value, uint32_t *valueLength) {
    KA_FRAME("KACert_GetCsrAttributePrivate");
    KA_PASS(checkPointers({ctx, index}));
    const CsrAttributeNode *node = numbered(ctx->attributes, const_cast<ListMarks &>(ctx->attributeMarks), *index);
    if (node == nullptr)
        return KA_DONE();
    KA_PASS(checkPointers({oidLength, valueLength}));
    handOut(node->oid, oid, oidLength);
    handOut(node->value, value, valueLength);
    return KA_DONE();
}
