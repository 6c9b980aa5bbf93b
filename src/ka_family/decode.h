// The frames around what is decoded: exported calls, and the structures that objects have in common.
#pragma once

#include "ka_name.h"

#include "karil/cert_types.h"

namespace karil {

// Within an exported decoder's frame: of octets with a length, or with the length 0, which trusts the element's header,
// ...
[[nodiscard]] Status checkWhole(const void *ctx, const uint8_t *der, uint32_t &length);
template <class Ctx>
[[nodiscard]] Status decodeWhole(Ctx *ctx, const uint8_t *der, uint32_t length, Status (*decode)(Bytes, Ctx &)) {
    KA_PASS(checkWhole(ctx, der, length));
    return decode(Bytes(der, length), *ctx);
}
// ... and of one element, into a context or a block of it. The decoder reads a copy: the source may be one of the
// block's records.
[[nodiscard]] Status checkPart(const Anybuf *source, const void *target);
[[nodiscard]] Status copyPart(const Anybuf *source, const void *target, Scratch &copy);
template <class Target>
[[nodiscard]] Status decodePart(const Anybuf *source, Target *target, Status (*decode)(const Element &, Target &)) {
    Scratch copy;
    KA_PASS(copyPart(source, target, copy));
    return decode(elementOf(copy.record), *target);
}
// The same for octets that the context's records will hold parts of.
[[nodiscard]] Status keepPart(KeptOctets *&kept, const Anybuf &source, Element &out);
template <class Ctx>
[[nodiscard]] Status decodeKept(const Anybuf *source, Ctx *ctx, Status (*decode)(const Element &, Ctx &)) {
    KA_PASS(checkPart(source, ctx));
    Element kept;
    KA_PASS(keepPart(ctx->kept, *source, kept));
    return decode(kept, *ctx);
}

// The next field, which must be there. It is in each decoder's path, and inline there: calls cost 3 % of a certificate.
[[nodiscard]] Status missingField(Status missing, const char *words);
[[nodiscard, gnu::always_inline]] inline Status takeField(Level &fields, Element &out, Status missing,
                                                          const char *words) {
    if (fields.empty())
        return missingField(missing, words);
    out = fields.take();
    return KACERT_Ok;
}

// The parts of an object, SIGNED ::= SEQUENCE { toBeSigned, algorithm, signature BIT STRING }, whose octets the context
// keeps; `encoded` becomes the whole. `noMemory`: the status if the first allocation finds none.
[[nodiscard]] Status openObject(Bytes der, KeptOctets *&kept, Anybuf &encoded, Level &parts,
                                Status noMemory = KACERT_MemoryErr);
// The content of a BIT STRING: a signature or a key.
[[nodiscard]] Status readBits(const Element &element, Anybuf &signature);

// AlgorithmIdentifier, of which the object identifier alone is taken, into `out`.
[[nodiscard]] Status readAlgorithm(const Element &element, AlgorithmRecord &out);
// SubjectPublicKeyInfo: the whole OID element and the content of the BIT STRING.
[[nodiscard]] Status readPublicKey(const Element &element, AlgorithmRecord &algorithm, Anybuf &key);

// Time ::= CHOICE { UTCTime, GeneralizedTime }, into the slot of its kind. The kind of `first` is tried first; the
// status is that of the other.
[[nodiscard]] Status readEitherTime(const Element &element, Tag first, LocalClock &clock, CertTime &time);

// [n] EXPLICIT SEQUENCE OF Extension, whatever the tag; an empty tagged value is an empty list.
[[nodiscard]] Status openExtensions(const Element &element, Level &extensions);

// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
struct ExtensionParts {
    bool isOwn = false; // the object identifier is the reader's own
    Level fields;       // after the object identifier
    Element value;      // of the OCTET STRING
};
// How a reader tells that a critical flag stands before the value.
enum class CriticalFlag { ByTag, BySuccessor };
[[nodiscard]] Status readExtensionOid(const Element &extension, Bytes own, ExtensionParts &out);
[[nodiscard]] Status readExtensionValue(ExtensionParts &parts, CriticalFlag flag, uint8_t &critical, Status missing);

} // namespace karil
