// What the message families do alike: frames, versions, contents, and what two of them hold.
#pragma once

#include "ka_pkcs7_base.h"

namespace karil {

// Stores a zeroed context.
template <class Ctx> [[nodiscard]] Status createMessage(Ctx **out) {
    KA_PASS(checkArguments({out}));
    return createContext(out, {&Ctx::contentType});
}

inline bool hasContent(const ContentInfo &info) {
    return info.number == 0 && info.content.present();
}
// The content of a message of that type. Another type is KAPKCS7_ContentTypeErr, no content KACERT_InvalidItemErr.
[[nodiscard]] Status openMessage(const Element &whole, int32_t type, Element &content);

// [0] EXPLICIT content: an OCTET STRING for data, else one whole element. A tag without element is `missing`.
void writeTaggedContent(Writer &out, bool isData, Bytes content);
[[nodiscard]] Status readTaggedContent(const Element &field, bool isData, Status missing, Anybuf &content);

// The version of every message but data.
template <class Ctx> Status setVersion(Ctx &ctx, int32_t value) {
    ctx.version = static_cast<uint32_t>(value);
    ctx.versionSet = 1;
    return KACERT_Ok;
}
template <class Ctx> void answerVersion(const Ctx &ctx, int32_t &value) {
    value = static_cast<int32_t>(ctx.version);
}
[[nodiscard]] Status readVersion(Level &fields, Status missing, uint32_t &version);
template <class Ctx> [[nodiscard]] Status takeVersion(Level &fields, Status missing, Ctx &ctx) {
    KA_PASS(readVersion(fields, missing, ctx.version));
    ctx.versionSet = 1;
    return KACERT_Ok;
}

// Functions for rows: a field that is answered if it has octets; and a secret one that is set.
template <auto... Path, class Ctx> Status answerPresent(Ctx &ctx, const Answer &answer) {
    const Anybuf &field = fieldOf<Path...>(ctx);
    return answerIf(field.length > 0, answer, bytesOf(field));
}
template <auto Field, class Ctx> Status setSecret(Ctx &ctx, Bytes value) {
    return replaceSecret(ctx.*Field, value);
}

// The Get of the Char functions of families whose answers need a buffer.
template <class Ctx, size_t Size>
[[nodiscard]] Status getIntoBuffer(const Attribute<Ctx> (&rows)[Size], Ctx *ctx, int32_t id, uint8_t *result,
                                   uint32_t *resultLength) {
    KA_PASS(checkArguments({result}));
    return getAttribute(rows, ctx, id, result, resultLength, MessageRefusals);
}

template <class Ctx> [[nodiscard]] Status answerCount(const Ctx *ctx, uint32_t Ctx::*field, uint32_t *count) {
    KA_PASS(checkArguments({ctx, count}));
    *count = ctx->*field;
    return KACERT_Ok;
}

// Ids whose Get has a position.
template <class Ctx> struct ListAttribute {
    int32_t id;
    const char *getWords;
    const Anybuf *(*at)(Ctx &ctx, int32_t position); // null if there is none
};
// The Get of such ids and of others. A position that there is not changes nothing.
template <class Ctx, size_t ListSize, size_t Size>
[[nodiscard]] Status getAt(const ListAttribute<Ctx> (&lists)[ListSize], const Attribute<Ctx> (&rows)[Size], Ctx *ctx,
                           int32_t id, uint8_t *result, uint32_t *resultLength, int32_t position) {
    const ListAttribute<Ctx> *list = findRow(lists, id);
    if (list == nullptr)
        return getIntoBuffer(rows, ctx, id, result, resultLength);
    KA_PASS(checkArguments({ctx, result, resultLength}));
    const Anybuf *record = list->at(*ctx, position);
    return record != nullptr ? answerOctets({result, resultLength, list->getWords, list->getWords}, bytesOf(*record))
                             : KACERT_Ok;
}

// The head of a message's list, for every position up to their number; 0 is one of them.
[[nodiscard]] Status checkPosition(bool isSet, uint32_t count, int32_t position);
template <class Ctx>
[[nodiscard]] Status answerHead(Ctx *first, bool isSet, uint32_t count, int32_t position, Ctx **out) {
    KA_PASS(checkArguments({out}));
    if (first == nullptr)
        return KACERT_Ok;
    KA_PASS(checkPosition(isSet, count, position));
    *out = first;
    return KACERT_Ok;
}

// Digest algorithms, certificates, CRLs and signers, in SignedData and SignedAndEnvelopedData.
template <class Ctx> ElementList certificatesOf(Ctx &ctx) {
    return {ctx.certificates, ctx.certificateCount, ctx.certificateMarks};
}
template <class Ctx> ElementList crlsOf(Ctx &ctx) {
    return {ctx.crls, ctx.crlCount, ctx.crlMarks};
}
template <class Ctx> DigestAlgorithmList digestAlgorithmsOf(Ctx &ctx) {
    return {ctx.digestAlgorithms, ctx.digestAlgorithmCount, ctx.digestAlgorithmMarks};
}
template <class Ctx> Status addCertificate(Ctx &ctx, Bytes value) {
    KA_PASS(addElement(certificatesOf(ctx), {NormalSequence, value}));
    ctx.certificatesSet = 1;
    return KACERT_Ok;
}
template <class Ctx> Status addCrl(Ctx &ctx, Bytes value) {
    KA_PASS(addElement(crlsOf(ctx), {NormalSequence, value}));
    ctx.crlsSet = 1;
    return KACERT_Ok;
}
template <class Ctx> Status addDigest(Ctx &ctx, Bytes value) {
    KA_PASS(addDigestAlgorithm(digestAlgorithmsOf(ctx), value));
    ctx.digestAlgorithmsSet = 1;
    return KACERT_Ok;
}
template <class Ctx> const Anybuf *certificateAt(Ctx &ctx, int32_t position) {
    return elementAt(certificatesOf(ctx), position);
}
template <class Ctx> const Anybuf *crlAt(Ctx &ctx, int32_t position) {
    return elementAt(crlsOf(ctx), position);
}
template <class Ctx> const Anybuf *digestAt(Ctx &ctx, int32_t position) {
    const DigestAlgorithmNode *node = digestAlgorithmAt(digestAlgorithmsOf(ctx), position);
    return node != nullptr ? &node->oid : nullptr;
}
// The message's content, which its signers share.
template <bool IsSecret, class Ctx> Status setShared(Ctx &ctx, Bytes value) {
    SharedContent fresh;
    KA_PASS(shareContent(value, IsSecret, fresh));
    setPart(ctx.content, fresh.octets, TagOctetString);
    releaseContent(ctx.sharedContent);
    ctx.sharedContent = fresh.block;
    return KACERT_Ok;
}
template <class Ctx> SharedContent sharedContentOf(const Ctx &ctx) {
    return {ctx.sharedContent, bytesOf(ctx.content)};
}

// The content type of a message that was decoded, as long as it keeps that.
template <class Ctx> Element keptType(const Ctx &ctx) {
    return {TagObjectId, bytesOf(ctx.contentType.oid), true};
}

// [0] certificates OPTIONAL, [1] crls OPTIONAL
struct Certificates {
    uint8_t &certificatesSet;
    ElementList certificates;
    uint8_t &crlsSet;
    ElementList crls;
};
template <class Ctx> Certificates listsOf(Ctx &ctx) {
    return {ctx.certificatesSet, certificatesOf(ctx), ctx.crlsSet, crlsOf(ctx)};
}
void writeCertificates(Writer &out, const Certificates &lists);
uint64_t sizeOfCertificates(const Certificates &lists);
// `signers` becomes the field after them.
[[nodiscard]] Status readCertificates(Level &fields, const Certificates &lists, Element &signers);
void clearCertificates(const Certificates &lists);

// The elements of a SET, each whole, in the place of none; and the SET opened.
[[nodiscard]] Status keepSet(const Element &set, Anybuf *&first, uint32_t &count, Level &elements);

// What a signer takes on the wire, about.
constexpr uint32_t SignerSize = 1024;
// Gives each of the first `count` signers the message's content type and content; and writes them as a SET, each within
// ElementBound.
[[nodiscard]] Status giveContent(SignerList list, Bytes contentType, const SharedContent &content);
[[nodiscard]] Status writeSignerSet(Writer &out, SignerList list);
// Gives each recipient the message's key; and writes them as a SET, each within ElementBound.
[[nodiscard]] Status giveKey(RecipientInfoCtx *first, Bytes key);
[[nodiscard]] Status writeRecipientSet(Writer &out, RecipientInfoCtx *first);

// A message whose signers or recipients cannot be given what they need for want of memory is status 0 with no octets.
[[nodiscard]] Status answerNothing(uint32_t *resultLength);

// Hands an encrypted content over to a message that has none.
[[nodiscard]] Status takeEncryptedContent(EncryptedContentCtx *&field, EncryptedContentCtx *given, const void *message);
template <class Ctx> [[nodiscard]] Status giveEncrypted(Ctx *ctx, EncryptedContentCtx *content) {
    KA_PASS(checkArguments({ctx, content}));
    return takeEncryptedContent(ctx->encryptedContent, content, ctx);
}
// Stores it, if there is one.
[[nodiscard]] Status answerEncryptedContent(EncryptedContentCtx *field, EncryptedContentCtx **out);
template <class Ctx> [[nodiscard]] Status getEncrypted(const Ctx *ctx, EncryptedContentCtx **out) {
    KA_PASS(checkArguments({ctx}));
    return answerEncryptedContent(ctx->encryptedContent, out);
}
// Writes it with the message's content type and content.
[[nodiscard]] Status writeEncrypted(Writer &out, EncryptedContentCtx &encrypted, Bytes contentType, Bytes content,
                                    uint32_t bound);
// Decodes one for the message.
[[nodiscard]] Status readEncrypted(const Element &element, EncryptedContentCtx *&field, const void *message);
// Stores the content type that was decoded, and the plain content, if there is one.
[[nodiscard]] Status noteContentType(const EncryptedContentCtx &encrypted, AlgorithmRecord &contentType);
void dropEncryptedContent(EncryptedContentCtx *&field);

} // namespace karil
