// KeyBag: a private key as it is.
#include "bag.h"

namespace karil {

namespace {

using Ctx = KeyBagCtx;

void clearContext(Ctx &ctx) {
    for (Anybuf *field : {&ctx.algorithm.oid, &ctx.parameters, &ctx.reserved})
        KI_ClearAnybuf(field);
    clearSecret(ctx.key);
    clearAttributes(attributesOf(ctx));
    ctx = {};
}

Status setVersion(Ctx *ctx, int32_t version) {
    KA_PASS(checkPointers({ctx}));
    ctx->version = version;
    ctx->versionSet = 1;
    return KACERT_Ok;
}

Status getVersion(const Ctx *ctx, int32_t *version) {
    KA_PASS(checkPointers({ctx, version}));
    if (ctx->versionSet == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>The field is not set");
    *version = ctx->version;
    return KACERT_Ok;
}

template <auto... Path> Status setOctetsOnce(Ctx *ctx, const uint8_t *value, int32_t length, uint8_t Ctx::*flag) {
    KA_PASS(checkPointers({ctx}));
    if (ctx->*flag != 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>The field is set already");
    return setOctets<Path...>(ctx, value, length, 0, flag);
}

// Past the end is the last one; one without name or value is not answered.
Status getAttribute(Ctx *ctx, const AttributeAnswer &answer, int32_t index) {
    KA_PASS(answer.check(ctx));
    const auto count = static_cast<int32_t>(ctx->attributeCount);
    const AttributeRecord *attribute = attributeAt(*ctx, index < count ? index : count);
    if (attribute != nullptr && attribute->oid.data != nullptr && attribute->value.data != nullptr)
        answer.take(*attribute);
    return KACERT_Ok;
}

Status write(Writer &out, const Ctx &ctx) {
    if (ctx.versionSet == 0 || ctx.algorithmSet == 0 || ctx.keySet == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>The field is not set");
    writeKeyBag(out, ctx.version, bytesOf(ctx.algorithm.oid), bytesOf(ctx.key), ctx.attributes.next);
    return KACERT_Ok;
}

Status fill(const Element &element, Ctx &ctx) {
    KeyBagParts parts;
    KA_PASS(readKeyBag(element, parts));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.algorithm.oid, parts.algorithm));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.key, parts.key));
    takeAttributes(parts.attributes, ctx);
    ctx.version = parts.version;
    ctx.algorithm.id = 1;
    ctx.versionSet = ctx.algorithmSet = ctx.keySet = 1;
    return KACERT_Ok;
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkPointers({ctx, der}));
    return decodeBag<clearContext>(*ctx, exactElement(der, length), fill);
}

Status generate(int32_t version, const uint8_t *oid, int32_t oidLength, const uint8_t *key, int32_t keyLength,
                uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkOctets(oid, oidLength));
    KA_PASS(checkOctets(key, keyLength));
    KA_PASS(checkPointers({result, resultLength}));
    Writer out(1024, true);
    writeKeyBag(out, version, octetsOf(oid, oidLength), octetsOf(key, keyLength), nullptr);
    return handOut(out, result, resultLength);
}

Status parse(int32_t *version, uint8_t *oid, uint32_t *oidLength, uint8_t *key, uint32_t *keyLength, const uint8_t *der,
             int32_t length) {
    KA_PASS(checkPointers({version, oid, oidLength, key, keyLength, der}));
    KeyBagParts parts;
    KA_PASS(readKeyBag(exactElement(der, length), parts));
    *version = parts.version;
    handOut(borrow(parts.algorithm.bytes), oid, oidLength);
    handOut(borrow(parts.key.bytes), key, keyLength);
    return KACERT_Ok;
}

} // namespace

void writeKeyBag(Writer &out, int32_t version, Bytes algorithm, Bytes key, const AttributeRecord *attributes) {
    const Construct bag(out, TagSequence, key.size());
    out.integer(static_cast<uint32_t>(version));
    writeAlgorithm(out, algorithm);
    out.octetString(key);
    if (attributes != nullptr)
        writeAttributes(out, taggedSet(0), attributes);
}

Status readKeyBag(const Element &element, KeyBagParts &out) {
    KA_PASS(checkHeader(element));
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidParamErr, "------------>The content of key bag is null"));
    uint32_t version = 0;
    KA_STEP_AS("------------>KAsn1_ReadInteger", readInteger(field, version));
    KA_PASS(takeField(fields, field, KACERT_InvalidParamErr, "------------>The algorithm of key bag is null"));
    Level rest;
    KA_PASS(readTyped(field, out.algorithm, rest));
    KA_PASS(takeField(fields, field, KACERT_InvalidParamErr, "------------>The key of key bag is null"));
    KA_STEP_AS("------------>KAsn1_ReadOctetString", readValue(field, out.key));
    out.version = static_cast<int32_t>(version);
    if (fields.empty())
        return KACERT_Ok;
    Implicit set;
    KA_STEP_AS("------------>KAsn1_ReadImplicit", readImplicit(fields.take(), set));
    if (set.number != 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KAsn1_ReadImplicit");
    KA_STEP_AS("------------>KI_PKCS7_DecodeAttributes", readAttributes(set, out.attributes.list()));
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_CreateEncodeKeyBag(KeyBagCtx **out) {
    return KA_FRAMED("KA_PKCS12_CreateEncodeKeyBag", createContext(out, {&KeyBagCtx::algorithm}));
}
KA_ALIAS(KA_PKCS12_CreateDecodeKeyBag, KA_PKCS12_CreateEncodeKeyBag);

int32_t KA_PKCS12_DestroyEncodeKeyBag(KeyBagCtx *ctx) {
    return KA_FRAMED("KA_PKCS12_DestroyEncodeKeyBag", destroyBag(ctx, clearContext));
}
KA_ALIAS(KA_PKCS12_DestroyDecodeKeyBag, KA_PKCS12_DestroyEncodeKeyBag);

int32_t KA_PKCS12_SetKeyBagVersion(KeyBagCtx *ctx, int32_t version) {
    return KA_FRAMED("KA_PKCS12_SetKeyBagVersion", setVersion(ctx, version));
}

int32_t KA_PKCS12_GetKeyBagVersion(const KeyBagCtx *ctx, int32_t *version) {
    return KA_FRAMED("KA_PKCS12_GetKeyBagVersion", getVersion(ctx, version));
}

int32_t KA_PKCS12_SetKeyBagAlgorithm(KeyBagCtx *ctx, const uint8_t *oid, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetKeyBagAlgorithm", setOctetsOnce<&KeyBagCtx::algorithm, &AlgorithmRecord::oid>(
                                                         ctx, oid, length, &KeyBagCtx::algorithmSet));
}

int32_t KA_PKCS12_GetKeyBagAlgorithm(const KeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetKeyBagAlgorithm", getOctets<&KeyBagCtx::algorithm, &AlgorithmRecord::oid>(
                                                         ctx, result, resultLength, &KeyBagCtx::algorithmSet));
}

int32_t KA_PKCS12_SetKeyBagKey(KeyBagCtx *ctx, const uint8_t *key, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetKeyBagKey", setOctetsOnce<&KeyBagCtx::key>(ctx, key, length, &KeyBagCtx::keySet));
}

int32_t KA_PKCS12_GetKeyBagKey(const KeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetKeyBagKey",
                     getOctets<&KeyBagCtx::key>(ctx, result, resultLength, &KeyBagCtx::keySet));
}

int32_t KA_PKCS12_SetKeyBagAttribute(KeyBagCtx *ctx, const uint8_t *name, int32_t nameLength, const uint8_t *value,
                                     int32_t valueLength) {
    return KA_FRAMED("KA_PKCS12_SetKeyBagAttribute", appendAttribute(ctx, name, nameLength, value, valueLength, 0));
}

int32_t KA_PKCS12_GetKeyBagAttribute(KeyBagCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                     uint32_t *valueLength, int32_t index) {
    return KA_FRAMED("KA_PKCS12_GetKeyBagAttribute", getAttribute(ctx, {name, nameLength, value, valueLength}, index));
}

int32_t KA_PKCS12_GetKeyBagAttributeNum(const KeyBagCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS12_GetKeyBagAttributeNum", answerAttributeCount(ctx, count));
}

int32_t KA_PKCS12_EncodeKeyBag(const KeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_EncodeKeyBag", encodeBag(ctx, result, resultLength, write));
}

int32_t KA_PKCS12_DecodeKeyBag(KeyBagCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_DecodeKeyBag", decode(ctx, der, length));
}

int32_t KA_PKCS12_GenKeyBag(int32_t version, const uint8_t *oid, int32_t oidLength, const uint8_t *key,
                            int32_t keyLength, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GenKeyBag", generate(version, oid, oidLength, key, keyLength, result, resultLength));
}

int32_t KA_PKCS12_ParseKeyBag(int32_t *version, uint8_t *oid, uint32_t *oidLength, uint8_t *key, uint32_t *keyLength,
                              const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_ParseKeyBag", parse(version, oid, oidLength, key, keyLength, der, length));
}
