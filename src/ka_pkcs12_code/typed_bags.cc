// CertBag, CrlBag and SecretContentsBag: a value with its type.
#include "bag.h"

namespace karil {

namespace {

using Ctx = TypedBagCtx;

// What tells the decoders apart.
struct Kind {
    const char *begin;
    const char *end;
    uint32_t wrapper; // the tag around the value; 0: any
};
constexpr Kind CertKind = {"=============>KA_PKCS12_DecodeCertBag  Begin", "=============>KA_PKCS12_DecodeCertBag  End",
                           0};
constexpr Kind CrlKind = {"=============>KA_PKCS12_DecodeCrlBag  Begin", "=============>KA_PKCS12_DecodeCrlBag  End",
                          0x50};
constexpr Kind SecretKind = {"=============>KA_PKCS12_DecodeSecretContentsBag  Begin",
                             "=============>KA_PKCS12_DecodeSecretContentsBag  End", 0x50};

void clearContext(Ctx &ctx) {
    KI_ClearAnybuf(&ctx.id.oid);
    clearSecret(ctx.value);
    ctx = {};
}

struct ClearAndFree {
    void operator()(Ctx *ctx) const noexcept {
        clearContext(*ctx);
        KAPR_Free(ctx);
    }
};
using ContextPtr = std::unique_ptr<Ctx, ClearAndFree>;

// Of the calls that need no context of the caller's.
Status createOwned(ContextPtr &out) {
    Ctx *ctx = nullptr;
    if (createContext(&ctx, {&Ctx::id}) != KACERT_Ok)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KAPR_Malloc");
    out.reset(ctx);
    return KACERT_Ok;
}

Status setValue(Ctx *ctx, const uint8_t *value, int32_t length, int32_t isText = 0) {
    KA_PASS(setOctets<&Ctx::value>(ctx, value, length, 0, &Ctx::valueSet));
    ctx->valueIsText = isText < 1 ? 0 : 1;
    return KACERT_Ok;
}

Status getValue(const Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    return getOctets<&Ctx::value>(ctx, result, resultLength, &Ctx::valueSet);
}

Status getCertificate(const Ctx *ctx, uint8_t *result, uint32_t *resultLength, int32_t *isText) {
    KA_PASS(checkPointers({isText}));
    KA_PASS(getValue(ctx, result, resultLength));
    *isText = -1;
    return KACERT_Ok;
}

Status setId(Ctx *ctx, const uint8_t *oid, int32_t length) {
    return setOctets<&Ctx::id, &AlgorithmRecord::oid>(ctx, oid, length);
}

Status getId(const Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    return getOctets<&Ctx::id, &AlgorithmRecord::oid>(ctx, result, resultLength);
}

Status write(Writer &out, const Ctx &ctx) {
    if (ctx.valueSet == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>The field is not set");
    writeCertBag(out, bytesOf(ctx.id.oid), bytesOf(ctx.value), ctx.valueIsText != 0);
    return KACERT_Ok;
}

// `wrapper`: as in Kind.
Status read(const Element &element, uint32_t wrapper, CertBagParts &out) {
    Level fields;
    KA_PASS(readTyped(element, out.id, fields));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, "------------>The value of the bag is null"));
    Element inner;
    KA_STEP_AS("------->KAsn1_ReadExplicit", readValue(field, inner));
    if (wrapper != 0 && inner.tag != wrapper)
        return KA_FAIL(KACERT_InvalidItemErr, "------->KAsn1_ReadExplicit");
    KA_STEP_AS("------->KAsn1_ReadOctetString", readValue(inner, out.value));
    return KACERT_Ok;
}

Status fill(const Element &element, const Kind &kind, Ctx &ctx) {
    CertBagParts parts;
    KA_PASS(read(element, kind.wrapper, parts));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.id.oid, parts.id));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.value, parts.value));
    ctx.id.id = 1;
    ctx.valueSet = 1;
    return KACERT_Ok;
}

Status decode(const Kind &kind, Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_FRAME_AS(kind.begin, kind.end);
    KA_PASS(checkPointers({ctx, der}));
    Element whole;
    KA_STEP_AS("------->KAsn1_GetCertLength ", takeWhole(der, length, whole));
    KA_PASS(
        decodeBag<clearContext>(*ctx, whole, [&](const Element &bag, Ctx &fresh) { return fill(bag, kind, fresh); }));
    return KA_DONE();
}

Status generate(const uint8_t *value, int32_t length, const uint8_t *oid, int32_t oidLength, int32_t isText,
                uint8_t *result, uint32_t *resultLength) {
    ContextPtr ctx;
    KA_PASS(createOwned(ctx));
    KA_PASS(setValue(ctx.get(), value, length, isText));
    KA_PASS(setId(ctx.get(), oid, oidLength));
    return encodeBag(ctx.get(), result, resultLength, write);
}

Status parse(const Kind &kind, uint8_t *value, uint32_t *valueLength, uint8_t *oid, uint32_t *oidLength,
             const uint8_t *der, int32_t length) {
    KA_PASS(checkPointers({value, valueLength, oid, oidLength}));
    ContextPtr ctx;
    KA_PASS(createOwned(ctx));
    KA_PASS(decode(kind, ctx.get(), der, length));
    KA_PASS(getValue(ctx.get(), value, valueLength));
    return getId(ctx.get(), oid, oidLength);
}

Status parseCertificate(uint8_t *value, uint32_t *valueLength, uint8_t *oid, uint32_t *oidLength, int32_t *isText,
                        const uint8_t *der, int32_t length) {
    KA_PASS(checkPointers({isText}));
    KA_PASS(parse(CertKind, value, valueLength, oid, oidLength, der, length));
    *isText = -1;
    return KACERT_Ok;
}

} // namespace

void writeCertBag(Writer &out, Bytes id, Bytes value, bool isText) {
    const Construct bag(out, TagSequence, value.size() + id.size());
    out.objectId(id);
    const Construct wrapper(out, taggedSet(0), value.size());
    out.element(isText ? TagIa5String : TagOctetString, value);
}

Status readCertBag(const Element &element, CertBagParts &out) {
    Bytes rest = element.bytes;
    Element whole;
    KA_STEP_AS("------->KAsn1_GetCertLength ",
               next(rest, whole, KACERT_LengthNotEqualErr, "------->KACERT_LengthNotEqualErr"));
    return read(whole, CertKind.wrapper, out);
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_CreateEncodeCertBag(CertBagCtx **out) {
    return KA_FRAMED("KA_PKCS12_CreateEncodeCertBag", createContext(out, {&TypedBagCtx::id}));
}
KA_ALIAS(KA_PKCS12_CreateDecodeCertBag, KA_PKCS12_CreateEncodeCertBag);
KA_ALIAS(KA_PKCS12_CreateEncodeCrlBag, KA_PKCS12_CreateEncodeCertBag);
KA_ALIAS(KA_PKCS12_CreateDecodeCrlBag, KA_PKCS12_CreateEncodeCertBag);
KA_ALIAS(KA_PKCS12_CreateEncodeSecretContentsBag, KA_PKCS12_CreateEncodeCertBag);
KA_ALIAS(KA_PKCS12_CreateDecodeSecretContentsBag, KA_PKCS12_CreateEncodeCertBag);

int32_t KA_PKCS12_DestoryEncodeCertBag(CertBagCtx *ctx) {
    return KA_FRAMED("KA_PKCS12_DestoryEncodeCertBag", destroyBag(ctx, clearContext));
}
KA_ALIAS(KA_PKCS12_DestoryDecodeCertBag, KA_PKCS12_DestoryEncodeCertBag);
KA_ALIAS(KA_PKCS12_DestoryEncodeCrlBag, KA_PKCS12_DestoryEncodeCertBag);
KA_ALIAS(KA_PKCS12_DestoryDecodeCrlBag, KA_PKCS12_DestoryEncodeCertBag);
KA_ALIAS(KA_PKCS12_DestoryEncodeSecretContentsBag, KA_PKCS12_DestoryEncodeCertBag);
KA_ALIAS(KA_PKCS12_DestoryDecodeSecretContentsBag, KA_PKCS12_DestoryEncodeCertBag);

int32_t KA_PKCS12_SetCertBagCertificate(CertBagCtx *ctx, const uint8_t *value, int32_t length, int32_t isText) {
    return KA_FRAMED("KA_PKCS12_SetCertBagCertificate", setValue(ctx, value, length, isText));
}

int32_t KA_PKCS12_GetCertBagCertificate(const CertBagCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                        int32_t *isText) {
    return KA_FRAMED("KA_PKCS12_GetCertBagCertificate", getCertificate(ctx, result, resultLength, isText));
}

int32_t KA_PKCS12_GenCertBag(const uint8_t *value, int32_t length, const uint8_t *oid, int32_t oidLength,
                             int32_t isText, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GenCertBag", generate(value, length, oid, oidLength, isText, result, resultLength));
}

int32_t KA_PKCS12_ParseCertBag(uint8_t *value, uint32_t *valueLength, uint8_t *oid, uint32_t *oidLength,
                               int32_t *isText, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_ParseCertBag",
                     parseCertificate(value, valueLength, oid, oidLength, isText, der, length));
}

// The functions that have the same arguments for all three.
#define KA_ID_AND_CODE(BAG, KIND)                                                                                      \
    int32_t KA_PKCS12_Set##BAG##ID(TypedBagCtx *ctx, const uint8_t *oid, int32_t length) {                             \
        return KA_FRAMED("KA_PKCS12_Set" #BAG "ID", setId(ctx, oid, length));                                          \
    }                                                                                                                  \
    int32_t KA_PKCS12_Get##BAG##ID(const TypedBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {                  \
        return KA_FRAMED("KA_PKCS12_Get" #BAG "ID", getId(ctx, result, resultLength));                                 \
    }                                                                                                                  \
    int32_t KA_PKCS12_Encode##BAG(const TypedBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {                   \
        return KA_FRAMED("KA_PKCS12_Encode" #BAG, encodeBag(ctx, result, resultLength, write));                        \
    }                                                                                                                  \
    int32_t KA_PKCS12_Decode##BAG(TypedBagCtx *ctx, const uint8_t *der, int32_t length) {                              \
        return decode(KIND, ctx, der, length);                                                                         \
    }
// The functions of a bag whose value has no selector.
#define KA_VALUE(BAG, VALUE, KIND)                                                                                     \
    int32_t KA_PKCS12_Set##VALUE(TypedBagCtx *ctx, const uint8_t *value, int32_t length) {                             \
        return KA_FRAMED("KA_PKCS12_Set" #VALUE, setValue(ctx, value, length));                                        \
    }                                                                                                                  \
    int32_t KA_PKCS12_Get##VALUE(const TypedBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {                    \
        return KA_FRAMED("KA_PKCS12_Get" #VALUE, getValue(ctx, result, resultLength));                                 \
    }                                                                                                                  \
    int32_t KA_PKCS12_Gen##BAG(const uint8_t *value, int32_t length, const uint8_t *oid, int32_t oidLength,            \
                               uint8_t *result, uint32_t *resultLength) {                                              \
        return KA_FRAMED("KA_PKCS12_Gen" #BAG, generate(value, length, oid, oidLength, 0, result, resultLength));      \
    }                                                                                                                  \
    int32_t KA_PKCS12_Parse##BAG(uint8_t *value, uint32_t *valueLength, uint8_t *oid, uint32_t *oidLength,             \
                                 const uint8_t *der, int32_t length) {                                                 \
        return KA_FRAMED("KA_PKCS12_Parse" #BAG, parse(KIND, value, valueLength, oid, oidLength, der, length));        \
    }

KA_ID_AND_CODE(CertBag, CertKind)
KA_ID_AND_CODE(CrlBag, CrlKind)
KA_ID_AND_CODE(SecretContentsBag, SecretKind)
KA_VALUE(CrlBag, CrlBagCrl, CrlKind)
KA_VALUE(SecretContentsBag, SecretContentsBagContents, SecretKind)
