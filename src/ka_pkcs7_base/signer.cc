// SignerInfo: the context, its attributes and hooks.
#include "ka_pkcs7_base.h"

namespace karil {

namespace {

using Ctx = SignerInfoCtx;

Status setDn(Ctx &ctx, Bytes value) {
    return setIssuerDn(ctx.issuerDn, ctx.dnSet, value);
}

Status setContentType(Ctx &ctx, Bytes value) {
    KA_PASS(setTagged(ctx.contentType, value, TagObjectId));
    ctx.contentTypeSet = 1;
    return KACERT_Ok;
}

// The content may be part of what a message shares.
Status setContent(Ctx &ctx, Bytes value) {
    KA_PASS(setTagged(ctx.content, value, TagOctetString));
    releaseContent(ctx.messageContent);
    return KACERT_Ok;
}

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(PKCS7_SIGNER_DN, setDn, nullptr),
    KA_ISSUER(PKCS7_ISSUER_COUNTRY, KA_NAME_COUNTRY),
    KA_ISSUER(PKCS7_ISSUER_STATEORPROVINCE, KA_NAME_STATEORPROVINCE),
    KA_ISSUER(PKCS7_ISSUER_LOCALITY, KA_NAME_LOCALITY),
    KA_ISSUER(PKCS7_ISSUER_ORGANIZATION, KA_NAME_ORGANIZATION),
    KA_ISSUER(PKCS7_ISSUER_ORGANIZATIONALUNIT, KA_NAME_ORGANIZATIONALUNIT),
    KA_ISSUER(PKCS7_ISSUER_COMMONNAME, KA_NAME_COMMONNAME),
    KA_ISSUER(PKCS7_ISSUER_EMAIL, KA_NAME_EMAIL),
    KA_ISSUER(PKCS7_ISSUER_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_ROW(PKCS7_SIGNER_SERIAL, (setField<TagInteger, &Ctx::serial>), (answerField<&Ctx::serial>)),
    KA_ROW_AS(PKCS7_SIGNER_DIGEST_ALGO, "PKCS7_DIGEST_ALGO",
              (setField<TagObjectId, &Ctx::digestAlgorithm, &AlgorithmIdentifierRecord::oid>),
              (answerField<&Ctx::digestAlgorithm, &AlgorithmIdentifierRecord::oid>)),
    KA_ROW(PKCS7_SIGNER_DIGEST_ENC_ALG,
           (setField<TagObjectId, &Ctx::digestEncAlgorithm, &AlgorithmIdentifierRecord::oid>),
           (answerField<&Ctx::digestEncAlgorithm, &AlgorithmIdentifierRecord::oid>)),
    KA_ROW(PKCS7_SIGNER_SIGNATURE, nullptr, (answerField<&Ctx::encryptedDigest>)),
    KA_ROW(PKCS7_SIGNER_CONTENTTYPE, setContentType, nullptr),
    KA_ROW(PKCS7_SIGNER_CONTENT, setContent, nullptr),
};

void noteSet(Ctx &ctx) {
    ctx.versionSet = 1;
    ctx.version = 1;
}

AttributeList listOf(Ctx &ctx) {
    return {ctx.attributes, ctx.attributeMarks};
}
AttributeList unListOf(Ctx &ctx) {
    return {ctx.unAttributes, ctx.unAttributeMarks};
}

constexpr int32_t KindSet = 52;

Status addPair(Ctx *ctx, bool isAuthenticated, Bytes oid, Bytes value) {
    KA_PASS(addAttribute(isAuthenticated ? listOf(*ctx) : unListOf(*ctx), KindSet, oid, value));
    (isAuthenticated ? ctx->attributesSet : ctx->unAttributesSet) = 1;
    noteSet(*ctx);
    return KACERT_Ok;
}

Status setPair(Ctx *ctx, bool isAuthenticated, const uint8_t *oid, int32_t oidLength, const uint8_t *value,
               int32_t valueLength) {
    KA_PASS(checkPair(ctx, oid, oidLength, value, valueLength, KACERT_InvalidItemErr));
    return addPair(ctx, isAuthenticated, {oid, static_cast<size_t>(oidLength)},
                   {value, static_cast<size_t>(valueLength)});
}

Status answerPair(Ctx *ctx, AttributeList (*listIn)(Ctx &), int32_t position, uint8_t *oid, uint32_t *oidLength,
                  uint8_t *value, uint32_t *valueLength) {
    KA_PASS(checkArguments({ctx, oidLength, valueLength}));
    const AttributeList list = listIn(*ctx);
    const AttributeRecord *node = nodeAt<&AttributeRecord::next>(list.head, list.marks, position);
    if (node == nullptr)
        return KACERT_Ok;
    handOut(node->oid, oid, oidLength);
    handOut(node->value, value, valueLength);
    return KACERT_Ok;
}

Status answerCount(const Ctx *ctx, AttributeRecord *const Ctx::*list, uint32_t *count) {
    KA_PASS(checkArguments({ctx, count}));
    const AttributeRecord *head = ctx->*list;
    *count = head != nullptr ? head->count : 0;
    return KACERT_Ok;
}

Status setSignHook(Ctx *ctx, KAHookFunc hook, const void *parameter, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    KA_PASS(setHook(ctx->signFunc, ctx->signFuncParam, ctx->signFuncParamLen, hook, parameter, length));
    noteSet(*ctx);
    return KACERT_Ok;
}

Status setDigestHook(Ctx *ctx, KAHookFunc hook, const void *parameter, int32_t length) {
    KA_PASS(setHook(ctx->digestFunc, ctx->digestFuncParam, ctx->digestFuncParamLen, hook, parameter, length));
    noteSet(*ctx);
    return KACERT_Ok;
}

// A null context is no failure here.
Status setIfThere(Ctx *ctx, Status (*set)(Ctx *, KAHookFunc, const void *, int32_t), KAHookFunc hook,
                  const void *parameter, int32_t length) {
    if (ctx == nullptr)
        return KA_FAIL(KACERT_Ok, "------>pPKCS7SignerInfo is NULL");
    return set(ctx, hook, parameter, length);
}

Status setAttributeOf(Ctx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    KA_PASS(setAttribute(Rows, ctx, id, value, length, MessageRefusals));
    noteSet(*ctx);
    return KACERT_Ok;
}

Status getAttributeOf(Ctx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    if (ctx == nullptr)
        return KACERT_Ok;
    return getAttribute(Rows, ctx, id, result, resultLength, MessageRefusals);
}

Status createFor(Ctx **out) {
    KA_PASS(checkArguments({out}));
    SignerPtr ctx;
    KA_PASS(createSigner(ctx));
    *out = ctx.release();
    return KACERT_Ok;
}

} // namespace

Status createSigner(SignerPtr &out) {
    void *record = nullptr;
    KA_PASS(createRecord(&out, sizeof(Ctx), record));
    out.reset(static_cast<Ctx *>(record));
    out->digestAlgorithm.id = out->digestEncAlgorithm.id = 1;
    return KACERT_Ok;
}

void clearSigner(SignerInfoCtx &ctx) {
    KI_FreeName(ctx.issuer.next);
    ctx.issuer.next = nullptr;
    KI_FreeAnybuf(ctx.issuerDn);
    ctx.issuerDn = nullptr;
    for (Anybuf *field : {&ctx.serial, &ctx.digestAlgorithm.oid, &ctx.digestAlgorithm.parameters,
                          &ctx.digestEncAlgorithm.oid, &ctx.digestEncAlgorithm.parameters, &ctx.encryptedDigest})
        KI_ClearAnybuf(field);
    clearAttributes(listOf(ctx));
    clearAttributes(unListOf(ctx));
    ctx.versionSet = ctx.attributesSet = ctx.unAttributesSet = ctx.verified = 0;
    ctx.version = ctx.dnSet = ctx.attributesDigested = 0;
    freeKept(ctx.kept);
    ctx.kept = nullptr;
}

void destroySigner(SignerInfoCtx *ctx) {
    if (ctx == nullptr)
        return;
    clearSigner(*ctx);
    KI_ClearAnybuf(&ctx->contentType);
    KI_ClearAnybuf(&ctx->content);
    releaseContent(ctx->messageContent);
    freeParameter(ctx->digestFuncParam, ctx->digestFuncParamLen);
    freeParameter(ctx->signFuncParam, ctx->signFuncParamLen);
    KAPR_Free(ctx);
}

Status lendContent(SignerInfoCtx &ctx, const Element &contentType, const SharedContent *content) {
    KA_STEP_AS("------>KA_PKCS7_SetSignerInfoAttributeChar", store(ctx.contentType, contentType));
    ctx.contentTypeSet = 1;
    noteSet(ctx);
    if (content == nullptr)
        return KACERT_Ok;
    // A content of no octets is there all the same.
    setPart(ctx.content, content->octets.empty() ? contentType.bytes.first(0) : content->octets, TagOctetString);
    SharedOctets *block = holdContent(content->block);
    releaseContent(ctx.messageContent);
    ctx.messageContent = block;
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateEncodeSignerInfo(SignerInfoCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateEncodeSignerInfo", createFor(out));
}

int32_t KA_PKCS7_CreateDecodeSignerInfo(SignerInfoCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateDecodeSignerInfo", KA_PKCS7_CreateEncodeSignerInfo(out));
}

int32_t KA_PKCS7_DestoryEncodeSignerInfo(SignerInfoCtx *ctx) {
    KA_FRAME("KA_PKCS7_DestoryEncodeSignerInfo");
    destroySigner(ctx);
    return KA_DONE();
}

int32_t KA_PKCS7_DestoryDecodeSignerInfo(SignerInfoCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestoryDecodeSignerInfo", KA_PKCS7_DestoryEncodeSignerInfo(ctx));
}

int32_t KA_PKCS7_SetSignerInfoAttributeChar(SignerInfoCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetSignerInfoAttributeChar", setAttributeOf(ctx, id, value, length));
}

int32_t KA_PKCS7_GetSignerInfoAttributeChar(SignerInfoCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_GetSignerInfoAttributeChar", getAttributeOf(ctx, id, result, resultLength));
}

int32_t KA_PKCS7_SetSignerAttribute(SignerInfoCtx *ctx, const uint8_t *oid, int32_t oidLength, const uint8_t *value,
                                    int32_t valueLength) {
    return KA_FRAMED("KA_PKCS7_SetSignerAttribute", setPair(ctx, true, oid, oidLength, value, valueLength));
}

int32_t KA_PKCS7_SetSignerUnAttribute(SignerInfoCtx *ctx, const uint8_t *oid, int32_t oidLength, const uint8_t *value,
                                      int32_t valueLength) {
    return KA_FRAMED("KA_PKCS7_SetSignerUnAttribute", setPair(ctx, false, oid, oidLength, value, valueLength));
}

int32_t KA_PKCS7_GetSignerAttribute(SignerInfoCtx *ctx, int32_t position, uint8_t *oid, uint32_t *oidLength,
                                    uint8_t *value, uint32_t *valueLength) {
    return KA_FRAMED("KA_PKCS7_GetSignerAttribute",
                     answerPair(ctx, listOf, position, oid, oidLength, value, valueLength));
}

int32_t KA_PKCS7_GetSignerUnAttribute(SignerInfoCtx *ctx, int32_t position, uint8_t *oid, uint32_t *oidLength,
                                      uint8_t *value, uint32_t *valueLength) {
    return KA_FRAMED("KA_PKCS7_GetSignerUnAttribute",
                     answerPair(ctx, unListOf, position, oid, oidLength, value, valueLength));
}

int32_t KA_PKCS7_GetSignerInfoAttributesNum(const SignerInfoCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignerInfoAttributesNum", answerCount(ctx, &SignerInfoCtx::attributes, count));
}

int32_t KA_PKCS7_GetSignerInfoUnAttributesNum(const SignerInfoCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignerInfoUnAttributesNum", answerCount(ctx, &SignerInfoCtx::unAttributes, count));
}

int32_t KA_PKCS7_SetSignerInfoEncSignFunc(SignerInfoCtx *ctx, KAHookFunc hook, const void *parameter, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetSignerInfoEncSignFunc", setSignHook(ctx, hook, parameter, length));
}

int32_t KA_PKCS7_SetSignerInfoDecSignFunc(SignerInfoCtx *ctx, KAHookFunc hook, const void *parameter, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetSignerInfoDecSignFunc", setIfThere(ctx, setSignHook, hook, parameter, length));
}

int32_t KA_PKCS7_SetSignerInfoDigestFunc(SignerInfoCtx *ctx, KAHookFunc hook, const void *parameter, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetSignerInfoDigestFunc", setIfThere(ctx, setDigestHook, hook, parameter, length));
}
