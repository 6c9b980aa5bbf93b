// What all PKCS#7 messages are made of: the ContentInfo frame, lists of elements, attributes and digest algorithms,
// encrypted content, recipients, signers.
//
// A message is written with one Writer, in the order of the wire, and handed out by handOut(). What is written
// here does not open or close anything of the caller's, so calls can be mixed with the Writer's own. A message is
// decoded from one kept copy of the input: takeWhole(), keep(), readContentInfo(); the elements that are taken from it
// are kept ones, and what the functions here store of them are parts of that copy.
#pragma once

#include "karil/pkcs7_encrypted_content.h"
#include "karil/pkcs7_recipient.h"
#include "karil/pkcs7_signer.h"

#include "ka_family.h"

namespace karil {

// What PKCS#7 functions answer to null pointers and unknown ids. A value may be empty.
constexpr Refusals MessageRefusals = {.pointer = KACERT_InvalidItemErr, .shortest = 0};
[[nodiscard]] inline Status checkArguments(std::initializer_list<const void *> pointers) {
    return checkPointers(pointers, KACERT_InvalidItemErr);
}

// Content types by their number, from PKCS7_TYPE_DATA to PKCS7_TYPE_ENCRYPTEDDATA.
constexpr uint32_t ContentTypeSize = 9; // octets of each identifier
Bytes contentTypeOid(int32_t type);
int32_t contentTypeOf(Bytes oid); // PKCS7_TYPE_OTHER for none of the six
inline bool isContentType(Bytes oid, int32_t type) {
    return equal(oid, contentTypeOid(type));
}

// Bounds of an element within a message, for the functions that have one as a parameter. A larger element is
// KACERT_InvalidLengthErr, after it was written.
constexpr uint32_t ElementBound = 10240;
constexpr uint32_t NoBound = UINT32_MAX;

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY }
// What is written while it lives is the content. `expected`: about how many octets that will be, so that a large
// content need not be moved.
class ContentFrame {
public:
    ContentFrame(Writer &out, Bytes oid, uint64_t expected = 0, uint32_t number = 0);

private:
    Construct info;
    Construct content;
};

// [number] { elements }, or SET { elements }, in list order. The second one is for elements that are written while the
// Construct lives: Construct set(out, TagSet).
constexpr uint8_t taggedSet(uint32_t number) {
    return static_cast<uint8_t>(0xA0 | number);
}

// The element at `der`. A length above 0 bounds what its header claims (KACERT_LengthNotEqualErr), 0 trusts the header,
// and one below 0 is KACERT_InvalidLengthErr. The octets are the caller's: see keep().
[[nodiscard]] Status takeWhole(const uint8_t *der, int32_t length, Element &out);

// A ContentInfo that was split.
struct ContentInfo {
    Bytes oid;
    uint32_t number = PKCS7_NO_CONTENT; // the tag's low five bits
    Implicit tagged;                    // what the tag holds
    Element content;                    // its first element, or the octets of a primitive one; nothing if it is empty

    bool is(int32_t type) const { return isContentType(oid, type); }
};
// An identifier above 20 octets is KACERT_InvalidLengthErr.
[[nodiscard]] Status readContentInfo(const Element &whole, ContentInfo &out);

// A counted list of whole elements in a context: certificates, CRLs. An append and the next of a walk take one step.
struct ElementList {
    Anybuf *&first;
    uint32_t &count;
    ListMarks &marks;
};
[[nodiscard]] Status addElement(ElementList list, const Element &element); // a copy, or a part if it is kept
[[nodiscard]] Status addElements(ElementList list, Level elements);
const Anybuf *elementAt(ElementList list, int32_t position); // from 1; null if there is none
void clearElements(ElementList list);
void writeElements(Writer &out, uint8_t tag, const Anybuf *first);
uint64_t sizeOfElements(const Anybuf *first);

// digestAlgorithms ::= SET OF SEQUENCE { OBJECT IDENTIFIER, NULL }
struct DigestAlgorithmList {
    DigestAlgorithmNode *&first;
    uint32_t &count;
    ListMarks &marks;
};
[[nodiscard]] Status addDigestAlgorithm(DigestAlgorithmList list, Bytes oid);
const DigestAlgorithmNode *digestAlgorithmAt(DigestAlgorithmList list, int32_t position);
void clearDigestAlgorithms(DigestAlgorithmList list);
void writeDigestAlgorithms(Writer &out, const DigestAlgorithmNode *first);
// What was read before a failure stays in the list. An algorithm without identifier is `missing`.
[[nodiscard]] Status readDigestAlgorithms(const Element &set, DigestAlgorithmList list, Status missing);

// The identifier of an AlgorithmIdentifier. Without one: `missing`, with the words.
[[nodiscard]] Status readAlgorithmOid(const Element &element, Anybuf &oid, Status missing, const char *words);

// SET OF Attribute, or [number] IMPLICIT, by the tag octet.
void writeAttributes(Writer &out, uint8_t tag, const AttributeRecord *head);
struct AttributeList {
    AttributeRecord *&head;
    ListMarks &marks;
};
[[nodiscard]] Status addAttribute(AttributeList list, int32_t kind, Bytes oid, Bytes value);
// The attributes in a SET's content, into an empty list, which is empty after a failure as well.
[[nodiscard]] Status readAttributes(const Implicit &set, AttributeList list);
// To the end of another list.
void moveAttributes(AttributeList from, AttributeList to);
void clearAttributes(AttributeList list);

// DigestInfo ::= SEQUENCE { digestAlgorithm, digest OCTET STRING }. Above 512 octets: KACERT_InvalidLengthErr.
constexpr uint32_t DigestInfoBound = 512;
[[nodiscard]] Status writeDigestInfo(Writer &out, Bytes oid, Bytes digest);

// IssuerAndSerialNumber ::= SEQUENCE { issuer Name, serialNumber INTEGER }, in a context with the fields of signers and
// recipients. An empty serial number is KACERT_InvalidItemErr.
[[nodiscard]] Status writeIssuerAndSerial(Writer &out, const NameRecord &issuer, const Anybuf *dn,
                                          const Anybuf &serial);
// An element that is not there is `missing`.
[[nodiscard]] Status readIssuerAndSerial(const Element &element, NameRecord &issuer, Anybuf &serial, Status missing);

// A whole Name in the place of the one that was set.
[[nodiscard]] Status setIssuerDn(Anybuf *&dn, int32_t &isSet, Bytes value);

// Sets a record that holds a secret: what stood there is wiped.
[[nodiscard]] Status replaceSecret(Anybuf &record, Bytes value);

// A content that a message shares with its signers: the last one to let go frees it, wiped first if it is secret. The
// message keeps the block beside its content record, which is a part of it: setPart(ctx.content, content.octets, tag).
struct SharedContent {
    SharedOctets *block = nullptr; // null: the octets are part of what the message keeps as long as its signers live
    Bytes octets;
};
[[nodiscard]] Status shareContent(Bytes value, bool isSecret, SharedContent &out);
SharedOctets *holdContent(SharedOctets *block);
void releaseContent(SharedOctets *&block);

// Stores a hook of a context with the fields of a message's hook; see keepHook().
template <class Length>
[[nodiscard]] Status setHook(KAHookFunc &hook, void *&copy, Length &copyLength, KAHookFunc value, const void *parameter,
                             int32_t length) {
    if (length > 0)
        KA_PASS(checkArguments({parameter}));
    return keepHook(hook, copy, copyLength, value, parameter, length);
}

// Begins a decoding in the place of what the context holds. `whole`: the context's copy of the element. The input may
// be part of what the context holds, so it is copied first.
template <class Ctx>
[[nodiscard]] Status beginDecoding(Ctx &ctx, const uint8_t *der, int32_t length, void (*clear)(Ctx &), Element &whole) {
    KeptOctets *fresh = nullptr;
    Status status = takeWhole(der, length, whole);
    if (status == KACERT_Ok)
        status = keep(fresh, whole, whole);
    clear(ctx);
    ctx.kept = fresh;
    return status;
}

// Within an exported function's frame: the element at `der` into a context whose records hold parts of it.
template <class Ctx>
[[nodiscard]] Status decodeAlone(Ctx *ctx, const uint8_t *der, int32_t length, void (*clear)(Ctx &),
                                 Status (*read)(const Element &, Ctx &)) {
    KA_PASS(checkArguments({ctx, der}));
    Element whole;
    KA_PASS(beginDecoding(*ctx, der, length, clear, whole));
    return read(whole, *ctx);
}
// The context is written into the caller's buffer, which must be there.
template <class Ctx>
[[nodiscard]] Status encodeAlone(Ctx *ctx, uint8_t *result, uint32_t *resultLength,
                                 Status (*write)(Writer &, Ctx &, uint32_t)) {
    KA_PASS(checkArguments({ctx, result, resultLength}));
    Writer out;
    KA_PASS(write(out, *ctx, NoBound));
    return handOut(out, result, resultLength);
}
// Within the bound of an element that starts at `start`.
[[nodiscard]] Status checkBound(const Writer &out, uint32_t start, uint32_t bound);

// A message's list of signers or recipients. `owner`: the message.
template <class Ctx> struct MemberList {
    Ctx *&first;
    uint32_t &count;
    ListMarks &marks;
    const void *owner;
};
[[nodiscard]] Status takeOver(const void *&owner, const void *message);
// Takes the context. One that a message has already is KACERT_InvalidItemErr.
template <class Ctx> [[nodiscard]] Status addMember(MemberList<Ctx> list, Ctx *ctx) {
    KA_PASS(takeOver(ctx->owner, list.owner));
    appendMarked<&Ctx::next>(list.first, list.marks, ctx);
    ++list.count;
    return KACERT_Ok;
}
template <auto Destroy, class Ctx> void clearMembers(MemberList<Ctx> list) {
    while (list.first != nullptr) {
        Ctx *const ctx = list.first;
        list.first = ctx->next;
        Destroy(ctx);
    }
    list.count = 0;
    list.marks = {};
}

// EncryptedContentInfo ::= SEQUENCE { contentType, AlgorithmIdentifier, [0] IMPLICIT OCTET STRING }
void destroyEncryptedContent(EncryptedContentCtx *ctx);
using EncryptedContentPtr = std::unique_ptr<EncryptedContentCtx, By<destroyEncryptedContent>>;
[[nodiscard]] Status createEncryptedContent(EncryptedContentPtr &out);
// What a message hands to its encrypted content before encoding: ids 21 and 17.
[[nodiscard]] Status setPlainContent(EncryptedContentCtx &ctx, Bytes contentType, Bytes content);
// Enciphers and writes.
[[nodiscard]] Status writeEncryptedContent(Writer &out, EncryptedContentCtx &ctx, uint32_t bound);
// Missing fields are status 0: `decoded` tells.
[[nodiscard]] Status readEncryptedContent(const Element &element, EncryptedContentCtx &ctx);

// RecipientInfo ::= SEQUENCE { version, issuerAndSerialNumber, keyEncryptionAlgorithm, encryptedKey OCTET STRING }
void destroyRecipient(RecipientInfoCtx *ctx); // not the next one
using RecipientPtr = std::unique_ptr<RecipientInfoCtx, By<destroyRecipient>>;
[[nodiscard]] Status createRecipient(RecipientPtr &out);
[[nodiscard]] Status writeRecipient(Writer &out, RecipientInfoCtx &ctx, uint32_t bound);
[[nodiscard]] Status readRecipient(const Element &element, RecipientInfoCtx &ctx);
// The contexts of a SET's elements. What was read before a failure stays in the list.
using RecipientList = MemberList<RecipientInfoCtx>;
[[nodiscard]] Status readRecipients(Level set, RecipientList list);
inline void clearRecipients(RecipientList list) {
    clearMembers<destroyRecipient>(list);
}

// SignerInfo ::= SEQUENCE { version, issuerAndSerialNumber, digestAlgorithm, [0] attributes OPTIONAL,
//     digestEncryptionAlgorithm, encryptedDigest OCTET STRING, [1] attributes OPTIONAL }
void destroySigner(SignerInfoCtx *ctx); // not the next one
void clearSigner(SignerInfoCtx &ctx);   // of all that decoding fills
using SignerPtr = std::unique_ptr<SignerInfoCtx, By<destroySigner>>;
[[nodiscard]] Status createSigner(SignerPtr &out);
// What a message hands to a signer, ids 15 and 16. The type is copied, or a part if it is kept; the content is shared,
// or left if it is null.
[[nodiscard]] Status lendContent(SignerInfoCtx &ctx, const Element &contentType, const SharedContent *content);
[[nodiscard]] Status writeSigner(Writer &out, SignerInfoCtx &ctx, uint32_t bound);
[[nodiscard]] Status readSigner(const Element &element, SignerInfoCtx &ctx);
using SignerList = MemberList<SignerInfoCtx>;
// The contexts of a SET's elements, each with the message's content type and content; see lendContent(). What was read
// before a failure stays in the list.
[[nodiscard]] Status readSigners(Level set, SignerList list, const Element &contentType, const SharedContent *content);
inline void clearSigners(SignerList list) {
    clearMembers<destroySigner>(list);
}

} // namespace karil
