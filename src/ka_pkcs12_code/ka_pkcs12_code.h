// Bags and safes of PKCS#12: what a PFX is assembled from and taken apart into.
//
// The writers here take octets and lists, and the readers borrow from what they read, so that no context is needed.
// What holds a plain key is written with a Writer that wipes.
#pragma once

#include "karil/pkcs12_key_bag.h"
#include "karil/pkcs12_safe.h"
#include "karil/pkcs12_typed_bags.h"

#include "ka_pkcs12_base.h"
#include "ka_pkcs7_base.h"

namespace karil {

// The kind of an attribute that a caller set.
constexpr int32_t AttributeOfCaller = 1;

// Octets of a caller that have just the element's length. One below 0 is no octets.
inline Element exactElement(const uint8_t *der, int32_t length) {
    return {NormalSequence, {der, length < 0 ? 0 : static_cast<size_t>(length)}};
}

// The list behind the embedded head of a context.
template <class Ctx> AttributeList attributesOf(Ctx &ctx) {
    return {ctx.attributes.next, ctx.attributeMarks};
}
inline uint32_t countOf(const AttributeRecord *first) {
    return first != nullptr ? first->count : 0;
}

// Attributes that were read. See moveAttributes() for a context that takes them.
struct OwnedAttributes {
    AttributeRecord *first = nullptr;
    ListMarks marks = {};

    OwnedAttributes() = default;
    OwnedAttributes(const OwnedAttributes &) = delete;
    OwnedAttributes &operator=(const OwnedAttributes &) = delete;
    ~OwnedAttributes() { clearAttributes(list()); }
    AttributeList list() { return {first, marks}; }
};

// KeyBag ::= SEQUENCE { version INTEGER, SEQUENCE { OBJECT IDENTIFIER, NULL }, privateKey OCTET STRING,
//     attributes [0] IMPLICIT SET OF Attribute OPTIONAL }
struct KeyBagParts {
    int32_t version = 0;
    Element algorithm;
    Element key;
    OwnedAttributes attributes;
};
void writeKeyBag(Writer &out, int32_t version, Bytes algorithm, Bytes key, const AttributeRecord *attributes);
[[nodiscard]] Status readKeyBag(const Element &element, KeyBagParts &out);

// EncKeyBag ::= SEQUENCE { SEQUENCE { OBJECT IDENTIFIER, parameter ANY OPTIONAL }, encryptedKey OCTET STRING }
// An empty parameter is written as NULL.
struct EncKeyBagParts {
    Element algorithm;
    Element parameter; // a whole element, or none
    Element encKey;
};
void writeEncKeyBag(Writer &out, Bytes algorithm, Bytes parameter, Bytes encKey);
[[nodiscard]] Status readEncKeyBag(const Element &element, EncKeyBagParts &out);
// The same with the parameter opened. One above 100 octets is KACERT_InvalidLengthErr, one that is none
// KACERT_InvalidParamErr.
struct ShroudedKey {
    Bytes algorithm;
    Bytes encKey;
    Bytes salt;
    uint32_t iterations = 0;
};
[[nodiscard]] Status readShroudedKey(const Element &element, ShroudedKey &out);

// CertBag ::= SEQUENCE { certId OBJECT IDENTIFIER, certValue [0] EXPLICIT OCTET STRING or IA5String }
struct CertBagParts {
    Element id;
    Element value;
};
void writeCertBag(Writer &out, Bytes id, Bytes value, bool isText);
// What follows the bag is ignored.
[[nodiscard]] Status readCertBag(const Element &element, CertBagParts &out);

// SafeBag ::= SEQUENCE { bagId OBJECT IDENTIFIER, bagValue [0] EXPLICIT ANY, bagAttributes SET OF Attribute OPTIONAL }
// `writeContent` writes the bag, which has about `expected` octets.
template <class WriteContent>
void writeSafeBag(Writer &out, Bytes id, const AttributeRecord *attributes, const WriteContent &writeContent,
                  uint64_t expected = 0) {
    const Construct bag(out, TagSequence, expected);
    out.objectId(id);
    {
        const Construct content(out, taggedSet(0), expected);
        writeContent();
    }
    if (attributes != nullptr)
        writeAttributes(out, TagSet, attributes);
}
struct SafeBagParts {
    Element id;
    Element content; // all that [0] holds
    OwnedAttributes attributes;
};
[[nodiscard]] Status readSafeBag(const Element &element, SafeBagParts &out);

// SafeContents ::= SEQUENCE OF SafeBag
// The bags, each whole. They are written into a Construct with TagSequence.
[[nodiscard]] Status readSafeContents(const Element &element, Level &bags);

// PFX ::= SEQUENCE { version INTEGER, authSafe ContentInfo, macData MacData OPTIONAL }
// Under a MAC over the AuthenticatedSafe, which is the MAC's input.
constexpr int32_t PfxVersion = 3;
[[nodiscard]] Status writePfx(Writer &out, int32_t version, MacRecord &mac);
struct PfxParts {
    int32_t version = 0;
    Element authSafe; // a whole ContentInfo
    Element macData;  // nothing if there is none
};
[[nodiscard]] Status readPfx(const Element &element, PfxParts &out);
// AuthenticatedSafe ::= SEQUENCE OF ContentInfo
[[nodiscard]] Status readAuthenticatedSafe(const Element &element, Level &contentInfos);

} // namespace karil
