// The PFX around ContentInfos: contexts, encoding and decoding of both kinds.
#include "auth_safe.h"

namespace karil {

Status checkContext(const AuthSafeCtx *ctx, const AuthSafeKind &kind) {
    KA_PASS(checkPointers({ctx}));
    return ctx->kind == kind.type ? KACERT_Ok : KA_FAIL(KACERT_InvalidParamErr, RefusedArgument);
}

Status checkOctets(const AuthSafeCtx *ctx, const AuthSafeKind &kind, const uint8_t *value, int32_t length) {
    KA_PASS(checkContext(ctx, kind));
    KA_PASS(checkPointers({value}));
    return length > 0 ? KACERT_Ok : KA_FAIL(KACERT_InvalidParamErr, RefusedArgument);
}

namespace {

using Ctx = AuthSafeCtx;

ElementList contentInfosOf(Ctx &ctx) {
    return {ctx.contentInfoList, ctx.contentInfoCount, ctx.contentInfoMarks};
}

// Of all that decoding fills. What the MAC is computed with stays.
void clearDecoded(Ctx &ctx) {
    clearElements(contentInfosOf(ctx));
    forgetMac(ctx.mac);
    KI_ClearAnybuf(&ctx.mac.macInput);
    KI_ClearAnybuf(&ctx.content);
    ctx.contentDecoded = ctx.macParameterSet = 0;
}

void destroyRecord(Ctx *ctx, const AuthSafeKind &kind) {
    clearDecoded(*ctx);
    clearMac(ctx->mac);
    KI_ClearAnybuf(&ctx->contentType);
    kind.destroy(ctx->pkcs7);
    KAPR_Free(ctx);
}

Status create(Ctx **out, const AuthSafeKind &kind) {
    void *record = nullptr;
    KA_PASS(createRecord(out, sizeof(Ctx), record));
    Owned<Ctx> ctx(static_cast<Ctx *>(record));
    KA_PASS(kind.create(&ctx->pkcs7));
    initMac(ctx->mac);
    ctx->kind = kind.type;
    ctx->version = PfxVersion;
    ctx->versionSet = ctx->contentTypeSet = 1;
    ctx->contentTypeFlag = 1;
    setPart(ctx->contentType, contentTypeOid(PKCS7_TYPE_DATA), TagObjectId);
    *out = ctx.release();
    return KACERT_Ok;
}

Status destroy(Ctx *ctx, const AuthSafeKind &kind) {
    if (ctx == nullptr)
        return KACERT_Ok;
    KA_PASS(checkContext(ctx, kind));
    destroyRecord(ctx, kind);
    return KACERT_Ok;
}

Status addContentInfo(Ctx *ctx, const AuthSafeKind &kind, const uint8_t *der, int32_t length) {
    KA_PASS(checkOctets(ctx, kind, der, length));
    return addElement(contentInfosOf(*ctx), {NormalSequence, {der, static_cast<size_t>(length)}});
}

Status getContentInfo(Ctx *ctx, const AuthSafeKind &kind, uint8_t *result, uint32_t *resultLength, int32_t index) {
    KA_PASS(checkContext(ctx, kind));
    KA_PASS(checkPointers({result, resultLength}));
    if (index < 1)
        return KA_FAIL(KACERT_InvalidParamErr, RefusedArgument);
    if (const Anybuf *info = elementAt(contentInfosOf(*ctx), index); info != nullptr)
        handOut(*info, result, resultLength);
    return KACERT_Ok;
}

bool canWrite(const Ctx &ctx) {
    if (ctx.kind == PKCS7_TYPE_DATA && (ctx.genMacSet == 0 || ctx.macParameterSet == 0 || ctx.contentTypeSet == 0))
        return false;
    return ctx.versionSet != 0;
}

Status encode(Ctx *ctx, const AuthSafeKind &kind, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkContext(ctx, kind));
    KA_PASS(checkPointers({resultLength}));
    if (!canWrite(*ctx))
        return KA_FAIL(KACERT_InvalidParamErr, RefusedArgument);
    Writer safe(0);
    writeElements(safe, TagSequence, ctx->contentInfoList);
    KA_STEP_AS("------------>KAsn1_WriteSequence", safe.moveTo(ctx->content));
    setPart(ctx->mac.macInput, bytesOf(ctx->content), TagOctetString);
    Writer out;
    KA_PASS(kind.write(out, *ctx));
    return handOut(out, result, resultLength);
}

// The input may be part of what the context holds, which goes when a copy is there.
struct Copy {
    KeptOctets *kept = nullptr;
    Element element;

    Copy() = default;
    Copy(const Copy &) = delete;
    Copy &operator=(const Copy &) = delete;
    ~Copy() { freeKept(kept); }
};
Status copyWhole(const uint8_t *der, int32_t length, Copy &out) {
    Element whole;
    KA_STEP_AS("------------>KAsn1_GetCertLength", takeWhole(der, length, whole));
    KA_PASS(keep(out.kept, whole, out.element));
    out.element.isKept = false; // not by the context
    return KACERT_Ok;
}

Status readMacData(const Element &element, MacRecord &mac) {
    KA_STEP_AS("------------>KA_PKCS12_DecodeMac", readMac(element, mac));
    if (mac.macFunc != nullptr)
        KA_STEP_AS("------------>KA_PKCS12_DecodeMac", checkMac(mac));
    return KACERT_Ok;
}

Status readParts(const PfxParts &parts, Ctx &ctx, const AuthSafeKind &kind) {
    ctx.versionSet = 1;
    ctx.version = parts.version;
    Bytes content;
    if (const Status status = kind.read(ctx, parts.authSafe, content); status != KACERT_Ok)
        return status == KACERT_MemoryErr ? KA_FAIL(kind.noMemory, "------------>KAPR_Malloc") : status;
    Level infos;
    KA_PASS(readAuthenticatedSafe({TagOctetString, content, true}, infos));
    KA_PASS(addElements(contentInfosOf(ctx), infos));
    ctx.contentDecoded = 1;
    setPart(ctx.content, content, TagOctetString);
    setPart(ctx.mac.macInput, content, TagOctetString);
    if (kind.type != PKCS7_TYPE_DATA || !parts.macData.present())
        return KACERT_Ok;
    KA_PASS(readMacData(parts.macData, ctx.mac));
    ctx.macParameterSet = 1;
    return KACERT_Ok;
}

Status decode(Ctx *ctx, const AuthSafeKind &kind, const uint8_t *der, int32_t length) {
    KA_PASS(checkContext(ctx, kind));
    KA_PASS(checkPointers({der}));
    Copy whole;
    const Status status = copyWhole(der, length, whole);
    clearDecoded(*ctx);
    KA_PASS(status);
    PfxParts parts;
    KA_PASS(readPfx(whole.element, parts));
    return readParts(parts, *ctx, kind);
}

} // namespace

Status writePfx(Writer &out, int32_t version, MacRecord &mac) {
    out.reserve(uint64_t{mac.macInput.length} + 256);
    const Construct pfx(out, TagSequence, uint64_t{mac.macInput.length} + 128);
    out.integer(static_cast<uint32_t>(version));
    {
        const ContentFrame frame(out, contentTypeOid(PKCS7_TYPE_DATA), uint64_t{mac.macInput.length} + 6);
        out.octetString(bytesOf(mac.macInput));
    }
    KA_STEP_AS("------------>KA_PKCS7_EncodePKCS7Data", out.status());
    KA_STEP_AS("------------>KA_PKCS12_EncodeMac", writeMac(out, mac));
    return KACERT_Ok;
}

Status readPfx(const Element &element, PfxParts &out) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, "------------>KAsn1_ReadInteger"));
    uint32_t version = 0;
    KA_STEP_AS("------------>KAsn1_ReadInteger", readInteger(field, version));
    out.version = static_cast<int32_t>(version);
    KA_PASS(takeField(fields, out.authSafe, KACERT_InvalidItemErr, "------------>KACERT_InvalidItemErr"));
    out.macData = fields.take();
    return KACERT_Ok;
}

Status readAuthenticatedSafe(const Element &element, Level &contentInfos) {
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, contentInfos));
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

// What the two kinds do alike.
#define KA_AUTH_SAFE(TYPE, KIND)                                                                                       \
    int32_t KA_PKCS12_CreateEncodeAuthSafeOf##TYPE(AuthSafeCtx **out) {                                                \
        return KA_FRAMED("KA_PKCS12_CreateEncodeAuthSafeOf" #TYPE, create(out, KIND));                                 \
    }                                                                                                                  \
    int32_t KA_PKCS12_DestoryEncodeAuthSafeOf##TYPE(AuthSafeCtx *ctx) {                                                \
        return KA_FRAMED("KA_PKCS12_DestoryEncodeAuthSafeOf" #TYPE, destroy(ctx, KIND));                               \
    }                                                                                                                  \
    int32_t KA_PKCS12_SetAuthSafeOf##TYPE##_ContentInfo(AuthSafeCtx *ctx, const uint8_t *der, int32_t length) {        \
        return KA_FRAMED("KA_PKCS12_SetAuthSafeOf" #TYPE "_ContentInfo", addContentInfo(ctx, KIND, der, length));      \
    }                                                                                                                  \
    int32_t KA_PKCS12_GetAuthSafeOf##TYPE##_ContentInfo(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength,     \
                                                        int32_t index) {                                               \
        return KA_FRAMED("KA_PKCS12_GetAuthSafeOf" #TYPE "_ContentInfo",                                               \
                         getContentInfo(ctx, KIND, result, resultLength, index));                                      \
    }                                                                                                                  \
    int32_t KA_PKCS12_EncodeAuthSafeOf##TYPE(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength) {              \
        return KA_FRAMED("KA_PKCS12_EncodeAuthSafeOf" #TYPE, encode(ctx, KIND, result, resultLength));                 \
    }                                                                                                                  \
    int32_t KA_PKCS12_DecodeAuthSafeOf##TYPE(AuthSafeCtx *ctx, const uint8_t *der, int32_t length) {                   \
        return KA_FRAMED("KA_PKCS12_DecodeAuthSafeOf" #TYPE, decode(ctx, KIND, der, length));                          \
    }                                                                                                                  \
    KA_ALIAS(KA_PKCS12_CreateDecodeAuthSafeOf##TYPE, KA_PKCS12_CreateEncodeAuthSafeOf##TYPE);                          \
    KA_ALIAS(KA_PKCS12_DestoryDecodeAuthSafeOf##TYPE, KA_PKCS12_DestoryEncodeAuthSafeOf##TYPE)

KA_AUTH_SAFE(DataType, UnderMac);
KA_AUTH_SAFE(SignedType, UnderSignatures);
