// What contexts of bags do alike: setting, answering, encoding, decoding. Their status for null pointers and bad
// lengths is KACERT_InvalidParamErr.
#pragma once

#include "ka_pkcs12_code.h"

#include <utility>

namespace karil {

// Octets of a caller, of at least the shortest length.
[[nodiscard]] Status checkOctets(const uint8_t *value, int32_t length, int32_t shortest = 0);
inline Bytes octetsOf(const uint8_t *value, int32_t length) {
    return {value, static_cast<size_t>(length)};
}
// A length that cannot be read is refused before the tag is looked at.
[[nodiscard]] Status checkHeader(const Element &element);

// Frees a context and what it holds.
template <class Ctx> [[nodiscard]] Status destroyBag(Ctx *ctx, void (*clear)(Ctx &)) {
    KA_PASS(checkPointers({ctx}));
    return destroyContext(ctx, clear);
}

// Sets a field to a copy in the place of what it holds, and its flag, if it has one.
template <auto... Path, class Ctx>
[[nodiscard]] Status setOctets(Ctx *ctx, const uint8_t *value, int32_t length, int32_t shortest = 0,
                               uint8_t Ctx::*flag = nullptr) {
    KA_PASS(checkPointers({ctx}));
    KA_PASS(checkOctets(value, length, shortest));
    KA_PASS(replaceSecret(fieldOf<Path...>(*ctx), octetsOf(value, length)));
    if (flag != nullptr)
        ctx->*flag = 1;
    return KACERT_Ok;
}
// Answers a field, which must be set if it has a flag.
template <auto... Path, class Ctx>
[[nodiscard]] Status getOctets(const Ctx *ctx, uint8_t *result, uint32_t *resultLength, uint8_t Ctx::*flag = nullptr) {
    KA_PASS(checkPointers({ctx, result, resultLength}));
    if (flag != nullptr && ctx->*flag == 0)
        return refuseId(KACERT_InvalidParamErr, "------------>The field is not set");
    handOut(fieldOf<Path...>(*ctx), result, resultLength);
    return KACERT_Ok;
}

// Adds an attribute, with octets of at least the shortest length.
template <class Ctx>
[[nodiscard]] Status appendAttribute(Ctx *ctx, const uint8_t *name, int32_t nameLength, const uint8_t *value,
                                     int32_t valueLength, int32_t shortest) {
    KA_PASS(checkPointers({ctx}));
    KA_PASS(checkOctets(name, nameLength, shortest));
    KA_PASS(checkOctets(value, valueLength, shortest));
    KA_PASS(
        addAttribute(attributesOf(*ctx), AttributeOfCaller, octetsOf(name, nameLength), octetsOf(value, valueLength)));
    ++ctx->attributeCount;
    return KACERT_Ok;
}
template <class Ctx> void takeAttributes(OwnedAttributes &attributes, Ctx &ctx) {
    ctx.attributeCount = countOf(attributes.first);
    moveAttributes(attributes.list(), attributesOf(ctx));
}
template <class Ctx> const AttributeRecord *attributeAt(Ctx &ctx, int32_t position) {
    return nodeAt<&AttributeRecord::next>(ctx.attributes.next, ctx.attributeMarks, position);
}
template <class Ctx> [[nodiscard]] Status answerAttributeCount(const Ctx *ctx, uint32_t *count) {
    KA_PASS(checkPointers({ctx, count}));
    *count = ctx->attributeCount;
    return KACERT_Ok;
}
// Where an attribute goes.
struct AttributeAnswer {
    uint8_t *name;
    uint32_t *nameLength;
    uint8_t *value;
    uint32_t *valueLength;

    [[nodiscard]] Status check(const void *ctx) const {
        return checkPointers({ctx, name, nameLength, value, valueLength});
    }
    template <class Attribute> void take(const Attribute &attribute) const {
        handOut(attribute.oid, name, nameLength);
        handOut(attribute.value, value, valueLength);
    }
};

template <class Ctx>
[[nodiscard]] Status encodeBag(const Ctx *ctx, uint8_t *result, uint32_t *resultLength,
                               Status (*write)(Writer &, const Ctx &), Status refusal = KACERT_InvalidParamErr) {
    KA_PASS(checkPointers({ctx, result, resultLength}, refusal));
    Writer out(1024, true);
    KA_PASS(write(out, *ctx));
    return handOut(out, result, resultLength);
}

// Has a fresh context filled, which takes the place of what the context holds if all is there.
template <auto Clear, class Ctx, class Fill>
[[nodiscard]] Status decodeBag(Ctx &ctx, const Element &element, const Fill &fill) {
    Ctx fresh = {};
    const Status status = fill(element, fresh);
    if (status == KACERT_Ok)
        std::swap(ctx, fresh);
    Clear(fresh);
    return status;
}

} // namespace karil
