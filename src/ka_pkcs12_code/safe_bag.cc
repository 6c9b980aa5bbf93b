// SafeBag: a bag with its type and attributes.
#include "bag.h"

namespace karil {

namespace {

using Ctx = SafeBagCtx;

constexpr uint32_t WrapperTag = 0xA0;

void clearContext(Ctx &ctx) {
    KI_ClearAnybuf(&ctx.bagId.oid);
    clearSecret(ctx.content);
    clearAttributes(attributesOf(ctx));
    ctx = {};
}

// Index 0 is the head, which is empty.
Status getAttribute(Ctx *ctx, const AttributeAnswer &answer, int32_t index) {
    KA_PASS(answer.check(ctx));
    if (index == 0)
        answer.take(ctx->attributes);
    else if (const AttributeRecord *attribute = attributeAt(*ctx, index); attribute != nullptr)
        answer.take(*attribute);
    return KACERT_Ok;
}

Status write(Writer &out, const Ctx &ctx) {
    if (ctx.bagId.oid.length == 0 || ctx.content.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>The field is not set");
    out.reserve(uint64_t{ctx.content.length} + 64);
    const Bytes content = bytesOf(ctx.content);
    writeSafeBag(
        out, bytesOf(ctx.bagId.oid), ctx.attributes.next, [&] { out.octets(content); }, content.size());
    return KACERT_Ok;
}

Status fill(const Element &element, Ctx &ctx) {
    SafeBagParts parts;
    KA_PASS(readSafeBag(element, parts));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.bagId.oid, parts.id));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.content, parts.content));
    takeAttributes(parts.attributes, ctx);
    ctx.bagId.id = 1;
    return KACERT_Ok;
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkPointers({ctx}));
    KA_PASS(checkOctets(der, length, 1));
    Element whole;
    KA_STEP_AS("------------>KAsn1_GetCertLength", takeWhole(der, length, whole));
    return decodeBag<clearContext>(*ctx, whole, fill);
}

} // namespace

Status readSafeBag(const Element &element, SafeBagParts &out) {
    Level fields;
    KA_PASS(readTyped(element, out.id, fields));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidParamErr, "------------>KAsn1_ReadExplicit"));
    KA_STEP_AS("------------>KAsn1_ReadExplicit", readValue(field, out.content));
    if (out.content.tag != WrapperTag || !out.content.present())
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KAsn1_ReadExplicit");
    if (fields.empty())
        return KACERT_Ok;
    Implicit set;
    set.constructed = true;
    KA_STEP_AS("------------>KAsn1_ReadSet", readSet(fields.take(), set.level));
    KA_STEP_AS("------------>KI_PKCS7_DecodeAttributes", readAttributes(set, out.attributes.list()));
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_CreateEncodeSafeBag(SafeBagCtx **out) {
    return KA_FRAMED("KA_PKCS12_CreateEncodeSafeBag", createContext(out, {&SafeBagCtx::bagId}));
}
KA_ALIAS(KA_PKCS12_CreateDecodeSafeBag, KA_PKCS12_CreateEncodeSafeBag);

int32_t KA_PKCS12_DestoryEncodeSafeBag(SafeBagCtx *ctx) {
    return KA_FRAMED("KA_PKCS12_DestoryEncodeSafeBag", destroyBag(ctx, clearContext));
}
KA_ALIAS(KA_PKCS12_DestoryDecodeSafeBag, KA_PKCS12_DestoryEncodeSafeBag);

int32_t KA_PKCS12_SetSafeBagOID(SafeBagCtx *ctx, const uint8_t *oid, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetSafeBagOID",
                     setOctets<&SafeBagCtx::bagId, &AlgorithmRecord::oid>(ctx, oid, length, 1));
}

int32_t KA_PKCS12_GetSafeBagOID(const SafeBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetSafeBagOID",
                     getOctets<&SafeBagCtx::bagId, &AlgorithmRecord::oid>(ctx, result, resultLength));
}

int32_t KA_PKCS12_SetSafeBagContent(SafeBagCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetSafeBagContent", setOctets<&SafeBagCtx::content>(ctx, der, length, 1));
}

int32_t KA_PKCS12_GetSafeBagContent(const SafeBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetSafeBagContent", getOctets<&SafeBagCtx::content>(ctx, result, resultLength));
}

int32_t KA_PKCS12_SetSafeBagAttribute(SafeBagCtx *ctx, const uint8_t *name, int32_t nameLength, const uint8_t *value,
                                      int32_t valueLength) {
    return KA_FRAMED("KA_PKCS12_SetSafeBagAttribute", appendAttribute(ctx, name, nameLength, value, valueLength, 1));
}

int32_t KA_PKCS12_GetSafeBagAttribute(SafeBagCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                      uint32_t *valueLength, int32_t index) {
    return KA_FRAMED("KA_PKCS12_GetSafeBagAttribute", getAttribute(ctx, {name, nameLength, value, valueLength}, index));
}

int32_t KA_PKCS12_GetSafeBagAttributeNum(const SafeBagCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS12_GetSafeBagAttributeNum", answerAttributeCount(ctx, count));
}

int32_t KA_PKCS12_EncodeSafeBag(const SafeBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_EncodeSafeBag", encodeBag(ctx, result, resultLength, write));
}

int32_t KA_PKCS12_DecodeSafeBag(SafeBagCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_DecodeSafeBag", decode(ctx, der, length));
}
