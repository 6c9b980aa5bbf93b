// The frames around what is encoded: exported calls, and the structures that objects have in common.
#pragma once

#include "answer.h"
#include "context.h"

#include "karil/cert_types.h"

namespace karil {

// Within an exported encoder's frame: writes the object the first time, and hands out what was written.
template <class Ctx>
[[nodiscard]] Status encodeOnce(Ctx *ctx, Status (*write)(Writer &, Ctx &), uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkPointers({ctx, resultLength}));
    if (ctx->encoded.length == 0) {
        Writer object;
        KA_PASS(write(object, *ctx));
        KA_PASS(object.moveTo(ctx->encoded));
    }
    handOut(ctx->encoded, result, resultLength);
    return KACERT_Ok;
}
// The same for a part of the object, as a heap record for the caller. Nothing is stored if nothing is written.
template <class Ctx> [[nodiscard]] Status encodePart(Ctx *ctx, Anybuf **out, Status (*write)(Writer &, Ctx &)) {
    KA_PASS(checkPointers({ctx, out}));
    Writer part;
    KA_PASS(write(part, *ctx));
    return part.size() > 0 ? part.moveTo(out) : part.status();
}

// AlgorithmIdentifier ::= SEQUENCE { algorithm OBJECT IDENTIFIER, parameters NULL }
void writeAlgorithm(Writer &out, Bytes oid);
inline void writeAlgorithm(Writer &out, const AlgorithmRecord &algorithm) {
    writeAlgorithm(out, bytesOf(algorithm.oid));
}
// Issuer or subject, from the one form that was given.
[[nodiscard]] Status writeName(Writer &out, const NameRecord &head, const Anybuf &der);
// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
void writePublicKey(Writer &out, const AlgorithmRecord &algorithm, const Anybuf &key);

// SIGNED ::= SEQUENCE { toBeSigned, algorithm, signature BIT STRING }. `sign` gets the octets that `writeTbs` wrote and
// sets the context's signature. `expected`: about how many octets there will be, if that is many.
template <class Ctx, class WriteTbs, class Sign>
[[nodiscard]] Status writeSigned(Writer &out, const Ctx &ctx, const WriteTbs &writeTbs, const Sign &sign,
                                 uint32_t expected = 0) {
    const Construct object(out, TagSequence, expected);
    const uint32_t start = out.size();
    KA_PASS(writeTbs());
    KA_PASS(out.status());
    KA_PASS(sign(out.since(start)));
    writeAlgorithm(out, ctx.outerSignatureAlgorithm);
    out.bitString(bytesOf(ctx.signature), ctx.signature.unusedBits);
    return KACERT_Ok;
}

// Time ::= CHOICE { UTCTime, GeneralizedTime }
[[nodiscard]] Status writeTime(Writer &out, bool isUtc, int32_t seconds, LocalClock &clock);
// The slot of the time's own kind.
inline int32_t secondsOf(const CertTime &time) {
    return time.isUtc != 0 ? time.utcValue : time.generalizedValue;
}

constexpr uint8_t OidAuthorityKeyId[] = {0x55, 0x1D, 0x23};
constexpr uint32_t FormUri = 6;
// extnID and critical of an Extension.
void writeExtensionHead(Writer &out, Bytes oid, uint8_t critical);
// Extension ::= SEQUENCE { extnID, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }; `write` writes what goes
// into the extnValue.
template <class Write>
[[nodiscard]] Status writeExtension(Writer &out, Bytes oid, uint8_t critical, const Write &write) {
    KA_PASS(out.status());
    const Construct extension(out, TagSequence);
    writeExtensionHead(out, oid, critical);
    const Construct value(out, TagOctetString);
    return write();
}
// AuthorityKeyIdentifier ::= SEQUENCE { keyIdentifier [0] IMPLICIT OCTET STRING }, as an Extension
[[nodiscard]] Status writeAuthorityKeyId(Writer &out, const AuthorityKeyIdExtension &field);
// [0] { fullName [0] { uniformResourceIdentifier [6] } }
void writeFullName(Writer &out, const Anybuf &uri);

} // namespace karil
