// SafeContents: a sequence of bags.
#include "bag.h"

namespace karil {

namespace {

using Ctx = SafeContentsCtx;

ElementList bagsOf(Ctx &ctx) {
    return {ctx.anchor.next, ctx.count, ctx.marks};
}

void clearContext(Ctx &ctx) {
    for (const Anybuf *bag = ctx.anchor.next; bag != nullptr; bag = bag->next)
        if (!isPart(*bag))
            wipe(bag->data, bag->length);
    clearElements(bagsOf(ctx));
    clearSecret(ctx.decoded);
}

Status create(Ctx **out) {
    KA_PASS(checkArguments({out}));
    return createContext(out, {});
}

Status destroy(Ctx *ctx) {
    KA_PASS(checkArguments({ctx}));
    return destroyContext(ctx, clearContext);
}

Status addBag(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkArguments({ctx, der}));
    if (length < 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------------>KACERT_InvalidItemErr");
    return addElement(bagsOf(*ctx), {NormalSequence, octetsOf(der, length)});
}

// Index 0 is the anchor, which is empty.
Status getBag(Ctx *ctx, uint8_t *result, uint32_t *resultLength, int32_t index) {
    KA_PASS(checkArguments({ctx, result, resultLength}));
    if (index < 0 || static_cast<uint32_t>(index) > ctx->count)
        return KACERT_Ok;
    const Anybuf *bag = index == 0 ? &ctx->anchor : elementAt(bagsOf(*ctx), index);
    KA_PASS(checkArguments({bag}));
    handOut(*bag, result, resultLength);
    return KACERT_Ok;
}

Status getCount(const Ctx *ctx, uint32_t *count) {
    KA_PASS(checkArguments({ctx, count}));
    *count = ctx->count;
    return KACERT_Ok;
}

Status write(Writer &out, const Ctx &ctx) {
    KA_PASS(checkArguments({ctx.anchor.next}));
    writeElements(out, TagSequence, ctx.anchor.next);
    return KACERT_Ok;
}

Status fill(const Element &element, Ctx &ctx) {
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.decoded, element));
    Level bags;
    KA_PASS(readSafeContents({NormalSequence, bytesOf(ctx.decoded), true}, bags));
    return addElements(bagsOf(ctx), bags);
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkArguments({ctx, der}));
    return decodeBag<clearContext>(*ctx, exactElement(der, length), fill);
}

} // namespace

Status readSafeContents(const Element &element, Level &bags) {
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, bags));
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_CreateEncodeSafeContents(SafeContentsCtx **out) {
    return KA_FRAMED("KA_PKCS12_CreateEncodeSafeContents", create(out));
}
KA_ALIAS(KA_PKCS12_CreateDecodeSafeContents, KA_PKCS12_CreateEncodeSafeContents);

int32_t KA_PKCS12_DestoryEncodeSafeContents(SafeContentsCtx *ctx) {
    return KA_FRAMED("KA_PKCS12_DestoryEncodeSafeContents", destroy(ctx));
}
KA_ALIAS(KA_PKCS12_DestoryDecodeSafeContents, KA_PKCS12_DestoryEncodeSafeContents);

int32_t KA_PKCS12_SetSafeContents_SafeBag(SafeContentsCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetSafeContents_SafeBag", addBag(ctx, der, length));
}

int32_t KA_PKCS12_GetSafeContents_SafeBag(SafeContentsCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                          int32_t index) {
    return KA_FRAMED("KA_PKCS12_GetSafeContents_SafeBag", getBag(ctx, result, resultLength, index));
}

int32_t KA_PKCS12_GetSafeContents_SafeBagNum(const SafeContentsCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS12_GetSafeContents_SafeBagNum", getCount(ctx, count));
}

int32_t KA_PKCS12_EncodeSafeContent(const SafeContentsCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_EncodeSafeContent", encodeBag(ctx, result, resultLength, write, KACERT_InvalidItemErr));
}

int32_t KA_PKCS12_DecodeSafeContent(SafeContentsCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_DecodeSafeContent", decode(ctx, der, length));
}
