// The frames around what is encoded: exported calls, and the structures that objects have in common.
#pragma once

#include "answer.h"
#include "context.h"

#include "karil/cert_types.h"

namespace karil {

// Keeps a written object in the context.
[[nodiscard]] Status keepEncoded(Anybuf &encoded, const Anybuf &object);
// Within an exported encoder's frame: writes the object the first time, and hands out what was written.
template <class Ctx>
[[nodiscard]] Status encodeOnce(Ctx *ctx, Status (*write)(Ctx &, Anybuf **), uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkPointers({ctx, resultLength}));
    if (ctx->encoded.length == 0) {
        Chain object;
        KA_PASS(write(*ctx, object.slot()));
        KA_PASS(keepEncoded(ctx->encoded, *object.head()));
    }
    handOut(ctx->encoded, result, resultLength);
    return KACERT_Ok;
}
// The same for a part of the object, as a heap record for the caller.
template <class Ctx> [[nodiscard]] Status encodePart(Ctx *ctx, Anybuf **out, Status (*write)(Ctx &, Anybuf **)) {
    KA_PASS(checkPointers({ctx, out}));
    return write(*ctx, out);
}

// Issuer or subject, from the one form that was given.
[[nodiscard]] Status writeName(const NameRecord &head, const Anybuf &der, Anybuf **out);
// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
[[nodiscard]] Status writePublicKey(const AlgorithmRecord &algorithm, const Anybuf &key, Anybuf **out);
// SIGNED ::= SEQUENCE { toBeSigned, algorithm, signature BIT STRING }; `parts` holds the first.
[[nodiscard]] Status writeSigned(Chain &parts, const AlgorithmRecord &algorithm, const Anybuf &signature, Anybuf **out);

// Time ::= CHOICE { UTCTime, GeneralizedTime }
[[nodiscard]] Status writeTime(bool isUtc, int32_t seconds, Anybuf **out);
// The slot of the time's own kind.
inline int32_t secondsOf(const CertTime &time) {
    return time.isUtc != 0 ? time.utcValue : time.generalizedValue;
}

constexpr uint8_t OidAuthorityKeyId[] = {0x55, 0x1D, 0x23};
constexpr uint32_t FormUri = 6;
// Extension ::= SEQUENCE { extnID, critical BOOLEAN DEFAULT FALSE, extnValue }, without extnValue.
[[nodiscard]] Status writeExtensionHead(Bytes oid, uint8_t critical, Chain &fields);
// The whole, `value` being what goes into the extnValue OCTET STRING.
[[nodiscard]] Status writeExtension(Bytes oid, uint8_t critical, const Anybuf &value, Anybuf **out);
// The same for a field of the context's extensions, whose value `Write` writes.
template <const auto &Oid, auto Field, auto Write, class Ctx>
[[nodiscard]] Status writeFieldExtension(Ctx &ctx, Anybuf **out) {
    auto &field = ctx.extensions.*Field;
    Chain value;
    KA_PASS(Write(field, value.slot()));
    return writeExtension(Oid, field.critical, *value.head(), out);
}
// [number] EXPLICIT SEQUENCE OF Extension
[[nodiscard]] Status writeExtensionList(const Chain &extensions, uint32_t number, Anybuf **out);
// SEQUENCE { [0] IMPLICIT keyId }
[[nodiscard]] Status writeAuthorityKeyId(const AuthorityKeyIdExtension &field, Anybuf **out);
// [0] { fullName [0] { uniformResourceIdentifier [6] } }
[[nodiscard]] Status writeFullName(const Anybuf &uri, Anybuf **out);

} // namespace karil
