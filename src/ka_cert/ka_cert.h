// Certificates: the context, its attributes, the extensions both ways.
#pragma once

#include "karil/cert.h"
#include "karil/cert_ext.h"

#include "ka_name.h"

namespace karil {

// Object identifiers of the extensions (RFC 5280 4.2) and what stands in them.
constexpr uint8_t OidSubjectKeyId[] = {0x55, 0x1D, 0x0E};
constexpr uint8_t OidKeyUsage[] = {0x55, 0x1D, 0x0F};
constexpr uint8_t OidSubjectAltName[] = {0x55, 0x1D, 0x11};
constexpr uint8_t OidIssuerAltName[] = {0x55, 0x1D, 0x12};
constexpr uint8_t OidBasicConstraints[] = {0x55, 0x1D, 0x13};
constexpr uint8_t OidCrlDistPoints[] = {0x55, 0x1D, 0x1F};
constexpr uint8_t OidCertPolicies[] = {0x55, 0x1D, 0x20};
constexpr uint8_t OidAuthorityKeyId[] = {0x55, 0x1D, 0x23};
constexpr uint8_t OidExtKeyUsage[] = {0x55, 0x1D, 0x25};
constexpr uint8_t OidAuthorityInfo[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x01, 0x01};
constexpr uint8_t OidCps[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x02, 0x01};
constexpr uint8_t OidOcsp[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01};
constexpr uint8_t OidCaIssuers[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x02};

// The eight extended key usages of the mask: 1.3.6.1.5.5.7.3.n is the bit 0x20 << n, n from 1.
constexpr uint8_t OidKeyPurpose[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x03};
constexpr uint32_t KeyPurposes = 8;
constexpr uint32_t keyPurposeBit(uint32_t n) {
    return 0x20u << n;
}

constexpr uint8_t MethodOcsp = 0x88;
constexpr uint8_t MethodCaIssuers = 0x89;
constexpr uint32_t FormRfc822Name = 1;
constexpr uint32_t FormDirectoryName = 4;
constexpr uint32_t FormUri = 6;

// What a list node owns, so that NodePtr and freeList can release it.
inline void clearNode(PolicyQualifierNode &node) {
    freeData(node.uri);
}
inline void clearNode(DefinedUsageNode &node) {
    freeData(node.dotted);
}
inline void clearNode(DistributionPointNode &node) {
    freeGeneralNames(node.fullName);
}
inline void clearNode(AccessNode &node) {
    freeData(node.location);
}
inline void clearNode(PrivateExtensionNode &node) {
    freeData(node.oid);
    freeData(node.value);
}
void clearNode(PolicyNode &node);

struct FreeNode {
    template <class Node> void operator()(Node *node) const noexcept {
        clearNode(*node);
        KAPR_Free(node);
    }
};
template <class Node> using NodePtr = std::unique_ptr<Node, FreeNode>;

template <class Node> void freeList(Node *&first) {
    while (first != nullptr) {
        const NodePtr<Node> node(first);
        first = node->next;
    }
}

// One answer of a Get function.
struct Answer {
    uint8_t *result;
    uint32_t *length;
    const char *words;
    const char *lengthWords;
};
// Stores the length and, with a buffer, the octets.
[[nodiscard]] Status give(const Answer &answer, Bytes value);
// The same for an answer that has no length-only form.
[[nodiscard]] Status giveFilled(const Answer &answer, Bytes value);
// The octets of a field that is there only with its flag.
[[nodiscard]] Status giveIf(bool isThere, const Answer &answer, Bytes value);
// The octets of one field with the length of another, zeros behind them where it is longer.
[[nodiscard]] Status giveCrossed(const Answer &answer, const Anybuf &octets, const Anybuf &length);
[[nodiscard]] Status giveName(const NameRecord &head, uint32_t kind, const Answer &answer);
[[nodiscard]] Status giveUnits(const NameRecord &head, const Answer &answer);
[[nodiscard]] Status giveText(Anybuf &cache, const NameRecord &head, const Answer &answer);

// Setters of a field: a copy of the value that gets a tag, a ready Name element, a flag of one octet.
[[nodiscard]] Status setTagged(Anybuf &field, Bytes value, uint32_t tag);
[[nodiscard]] Status setDerName(Anybuf &field, Bytes value);
[[nodiscard]] Status setFlag(uint8_t &flag, Bytes value);
// A value that is set once; `flag` tells that it was.
constexpr char AlreadySet[] = "------>KACERT_AttributeAlreadySet";
[[nodiscard]] Status setOnce(uint8_t &flag, Anybuf &field, Bytes value, const char *words = AlreadySet);

// What is known of an attribute id of a family's Char functions. One more is one row of its attributes.cc.
template <class Ctx> struct Attribute {
    int32_t id;
    const char *setWords;
    const char *getWords;
    const char *getLengthWords;
    Status (*set)(Ctx &ctx, Bytes value);          // null: not set
    Status (*get)(Ctx &ctx, const Answer &answer); // null: not asked for
};
template <class Ctx> using Attributes = std::span<const Attribute<Ctx>>;
Attributes<CertEncodeCtx> certAttributes();

template <class Ctx> const Attribute<Ctx> *findAttribute(Attributes<Ctx> attributes, int32_t id) {
    for (const Attribute<Ctx> &attribute : attributes)
        if (attribute.id == id)
            return &attribute;
    return nullptr;
}

// The Set and the Get of a Char function, within its frame. `badLength`: the family's status for a length below 1.
template <class Ctx>
[[nodiscard]] Status setAttribute(Attributes<Ctx> attributes, Ctx *ctx, int32_t id, const uint8_t *value,
                                  int32_t length, Status badLength) {
    if (length < 1)
        return KA_FAIL(badLength, "------>KACERT_InvalidLengthErr");
    if (ctx == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const Attribute<Ctx> *attribute = findAttribute(attributes, id);
    if (attribute == nullptr || attribute->set == nullptr)
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Set KACERT_AttributeNotSupportErr");
    KA_TRACE(attribute->setWords);
    return attribute->set(*ctx, Bytes(value, static_cast<size_t>(length)));
}

template <class Ctx>
[[nodiscard]] Status getAttribute(Attributes<Ctx> attributes, Ctx *ctx, int32_t id, uint8_t *result,
                                  uint32_t *resultLength) {
    if (ctx == nullptr || resultLength == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const Attribute<Ctx> *attribute = findAttribute(attributes, id);
    if (attribute == nullptr || attribute->get == nullptr)
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Get KACERT_AttributeNotSupportErr");
    return attribute->get(*ctx, {result, resultLength, attribute->getWords, attribute->getLengthWords});
}

// The context's copy of the hook's parameter, beside the hook.
[[nodiscard]] Status setHook(KAHookFunc &hook, Anybuf &key, KAHookFunc value, const void *parameter, uint32_t length);

// Stores the length and, with a buffer, the octets.
void handOut(const Anybuf &source, uint8_t *result, uint32_t *resultLength);
// The node numbered `index`, from 1; without one `index` becomes their number.
template <class Node> const Node *numbered(const Node *first, uint32_t &index) {
    uint32_t count = 0;
    for (const Node *node = first; node != nullptr; node = node->next)
        if (++count == index)
            return node;
    index = count;
    return nullptr;
}
// Writes the object the first time, and hands out what was written.
template <class Ctx>
[[nodiscard]] Status encodeOnce(Ctx *ctx, Status (*write)(Ctx &, Anybuf **), uint8_t *result, uint32_t *resultLength) {
    if (ctx == nullptr || resultLength == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (ctx->encoded.length == 0) {
        Chain object;
        KA_PASS(write(*ctx, object.slot()));
        KI_ClearAnybuf(&ctx->encoded);
        KA_STEP(KI_CopyAnybuf(&ctx->encoded, object.head()));
    }
    handOut(ctx->encoded, result, resultLength);
    return KACERT_Ok;
}

// The subject of an issuer's certificate, which becomes the issuer of what is seeded with it.
struct SeedName {
    uint8_t octets[2048];
    uint32_t length = 0;
};
using CertPtr = std::unique_ptr<CertDecodeCtx, By<KACert_DestroyCertDecodeCtx>>;
[[nodiscard]] Status readSeed(Bytes der, CertPtr &cert, SeedName &name);

// Issuer or subject, from the one form that was given.
[[nodiscard]] Status writeName(const NameRecord &head, const Anybuf &der, Anybuf **out);
// SubjectPublicKeyInfo ::= SEQUENCE { algorithm AlgorithmIdentifier, subjectPublicKey BIT STRING }
[[nodiscard]] Status writePublicKey(const AlgorithmRecord &algorithm, const Anybuf &key, Anybuf **out);
// SIGNED ::= SEQUENCE { toBeSigned, algorithm, signature BIT STRING }; `parts` holds the first.
[[nodiscard]] Status writeSigned(Chain &parts, const AlgorithmRecord &algorithm, const Anybuf &signature, Anybuf **out);

// The signing hook of CRLs and requests, which tells the signature's size first and gets its parameter in both calls.
struct Signature {
    Owned<uint8_t> octets;
    uint32_t length = 0;
};
[[nodiscard]] Status signBySize(KAHookFunc hook, const Anybuf &key, const Anybuf &tbs, Signature &out);

// Extension ::= SEQUENCE { extnID, critical BOOLEAN DEFAULT FALSE, extnValue }, without extnValue.
[[nodiscard]] Status writeExtensionHead(Bytes oid, uint8_t critical, Chain &fields);
// The whole, `value` being what goes into the extnValue OCTET STRING.
[[nodiscard]] Status writeExtension(Bytes oid, uint8_t critical, const Anybuf &value, Anybuf **out);
// SEQUENCE { [0] IMPLICIT keyId }
[[nodiscard]] Status writeAuthorityKeyId(const AuthorityKeyIdExtension &field, Anybuf **out);
// [0] { fullName [0] { uniformResourceIdentifier [6] } }
[[nodiscard]] Status writeFullName(const Anybuf &uri, Anybuf **out);

// What the reader of an extension takes from it: the value, if the object identifier is the reader's own.
// Extension ::= SEQUENCE { extnID OBJECT IDENTIFIER, critical BOOLEAN DEFAULT FALSE, extnValue OCTET STRING }
struct Opened {
    bool isOwn = false;
    Level fields; // behind the object identifier
    Element value;
};
[[nodiscard]] Status openOid(const Element &extension, Bytes own, Opened &out);
// How a reader tells that a critical flag stands before the value.
enum class Flag { ByTag, BySuccessor };
[[nodiscard]] Status openValue(Opened &opened, Flag flag, uint8_t &critical, Status missing);

// `last`: see append().
[[nodiscard]] Status decodeExtensions(const Element &extensions, CertExtensions &block, PrivateExtensionNode *&last);

// AlgorithmIdentifier, of which the object identifier alone is taken, into `out`.
[[nodiscard]] Status readAlgorithm(const Element &element, AlgorithmRecord &out);
// SubjectPublicKeyInfo: the whole OID element and the content of the BIT STRING.
[[nodiscard]] Status readPublicKey(const Element &element, AlgorithmRecord &algorithm, Anybuf &key);

// The next field, which must be there.
[[nodiscard]] inline Status takeOr(Level &fields, Element &out, Status missing, const char *words) {
    if (fields.empty())
        return KA_FAIL(missing, words);
    out = fields.take();
    return KACERT_Ok;
}
// Within an exported decoder's frame: of octets with a length, where 0 trusts the element's header, ...
template <class Ctx>
[[nodiscard]] Status decodeWhole(Ctx *ctx, const uint8_t *der, uint32_t length, Status (*decode)(Bytes, Ctx &)) {
    if (ctx == nullptr || der == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (length == 0)
        KA_STEP(KAsn1_GetCertLength(der, &length));
    return decode(Bytes(der, length), *ctx);
}
// ... and of one element, into a context or a block of it.
template <class Target>
[[nodiscard]] Status decodePart(const Anybuf *source, Target *target, Status (*decode)(const Element &, Target &)) {
    if (source == nullptr || source->data == nullptr || target == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    return decode(elementOf(*source), *target);
}

// The same for octets that the context's records will hold parts of.
template <class Ctx>
[[nodiscard]] Status decodeKept(const Anybuf *source, Ctx *ctx, Status (*decode)(const Element &, Ctx &)) {
    if (source == nullptr || source->data == nullptr || ctx == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Element kept;
    KA_STEP_AS("------>KI_CopyAnybuf", keep(ctx->kept, elementOf(*source), kept));
    return decode(kept, *ctx);
}

// SIGNED ::= SEQUENCE { toBeSigned, algorithm, signature BIT STRING }, as CRLs and requests have it: all must be there.
struct SignedFrame {
    Status missing;
    const char *missingWords;
    const char *tbsWords;
    Status firstAllocation; // that finds no memory
};
template <class Ctx>
[[nodiscard]] Status decodeSigned(Bytes der, Ctx &ctx, const SignedFrame &frame,
                                  Status (*decodeTbs)(const Element &, Ctx &)) {
    Element whole;
    KA_STEP_AS("------>KAsn1_GetCertLength",
               next(der, whole, KACERT_LengthNotEqualErr, "------>KACERT_LengthNotEqualErr"));
    if (keep(ctx.kept, whole, whole) != KACERT_Ok)
        return KA_FAIL(frame.firstAllocation, "------>KI_CopyAnybuf");
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.encoded, whole));
    Level parts;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(whole, parts));
    Element part;
    KA_PASS(takeOr(parts, part, frame.missing, frame.missingWords));
    KA_STEP_AS(frame.tbsWords, decodeTbs(part, ctx));
    KA_PASS(takeOr(parts, part, frame.missing, frame.missingWords));
    KA_PASS(readAlgorithm(part, ctx.outerSignatureAlgorithm));
    KA_PASS(takeOr(parts, part, frame.missing, frame.missingWords));
    Element signature;
    KA_STEP_AS("------>KAsn1_ReadBitString", readValue(part, signature));
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.signature, signature));
    return KACERT_Ok;
}

} // namespace karil
