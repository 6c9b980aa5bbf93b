// What both OCSP messages are made of. Encoders write with the caller's Writer, in the order of the wire; decoders read
// borrowed elements, and store parts of a context's own octets if those are kept.
#pragma once

#include "karil/ocsp.h"

#include "ka_family.h"

namespace karil {

// What is refused, with the status of all OCSP functions.
constexpr char InvalidItem[] = "------------>The input is invalid item";
[[nodiscard]] Status refuseItem(const char *words = InvalidItem);
[[nodiscard]] Status checkItems(std::initializer_list<const void *> pointers, const char *words = InvalidItem);
// A source of a decoder: a record with octets. A decoder that stores something before it has read everything reads a
// copy: the source may be one of the target's records.
[[nodiscard]] Status checkSource(const void *target, const Anybuf *source, const char *words = InvalidItem);
[[nodiscard]] Status copySource(const void *target, const Anybuf *source, Scratch &copy,
                                const char *words = InvalidItem);
inline bool isGiven(const Anybuf &record) {
    return record.data != nullptr && record.length > 0;
}

// The life of a context. `prepare`: what a zeroed one still needs.
[[nodiscard]] Status makeRecord(const void *out, uint32_t size, void *&record);
template <class Ctx> [[nodiscard]] Status makeContext(Ctx **out, void (*prepare)(Ctx &)) {
    void *record = nullptr;
    KA_PASS(makeRecord(out, sizeof(Ctx), record));
    *out = static_cast<Ctx *>(record);
    prepare(**out);
    return KACERT_Ok;
}
template <class Ctx> [[nodiscard]] Status endContext(Ctx *ctx, void (*clear)(Ctx &)) {
    KA_PASS(checkItems({ctx}));
    return destroyContext(ctx, clear);
}

// How a family's Set functions refuse.
struct ItemRefusals {
    Status noMemory; // of a value that could not be stored
    const char *ctxWords = InvalidItem;
    const char *idWords = InvalidItem;
};
// "------------>ID Error", from the words of the id's row.
void traceFailedRow(const char *setWords);
// The Set and Get of the Char functions, within their frame. Get always needs a buffer.
template <class Ctx, size_t Size>
[[nodiscard]] Status setItem(const Attribute<Ctx> (&rows)[Size], Ctx *ctx, int32_t id, const uint8_t *value,
                             int32_t length, const ItemRefusals &how) {
    KA_PASS(checkItems({ctx}, how.ctxWords));
    KA_PASS(checkItems({value}));
    if (length < 1)
        return refuseItem();
    const Status status =
        setAttribute(rows, ctx, id, value, length, {.id = KACERT_InvalidItemErr, .setWords = how.idWords});
    if (status != KACERT_MemoryErr)
        return status;
    traceFailedRow(findRow(rows, id)->setWords);
    return how.noMemory;
}
template <class Ctx, size_t Size>
[[nodiscard]] Status getItem(const Attribute<Ctx> (&rows)[Size], Ctx *ctx, int32_t id, uint8_t *result,
                             uint32_t *resultLength) {
    KA_PASS(checkItems({ctx, result, resultLength}));
    return getAttribute(rows, ctx, id, result, resultLength, {.id = KACERT_InvalidItemErr, .getWords = InvalidItem});
}
// The same of the Int functions.
template <class Ctx, size_t Size>
[[nodiscard]] Status setNumber(const IntAttribute<Ctx> (&rows)[Size], Ctx *ctx, int32_t id, int32_t value,
                               const ItemRefusals &how) {
    KA_PASS(checkItems({ctx}));
    const Status status = setInt(rows, ctx, id, value, {.id = KACERT_InvalidItemErr, .setWords = how.idWords});
    if (status != KACERT_MemoryErr)
        return status;
    traceFailedRow(findRow(rows, id)->setWords);
    return how.noMemory;
}
template <class Ctx, size_t Size>
[[nodiscard]] Status getNumber(const IntAttribute<Ctx> (&rows)[Size], const Ctx *ctx, int32_t id, int32_t *value) {
    KA_PASS(checkItems({ctx, value}));
    return getInt(rows, ctx, id, value, {.id = KACERT_InvalidItemErr, .getWords = InvalidItem});
}
// A field becomes a copy of the value, and its flag is raised after that.
[[nodiscard]] Status setOctets(Anybuf &field, Bytes value);
[[nodiscard]] Status setFlagged(uint8_t &flag, Anybuf &field, Bytes value);
template <auto... Path, class Ctx> Status storeField(Ctx &ctx, Bytes value) {
    return setOctets(fieldOf<Path...>(ctx), value);
}

// What an exported encoder hands out, always into a buffer.
[[nodiscard]] Status handOutWhole(const Writer &out, uint8_t *result, uint32_t *resultLength);
// The octets of an exported decoder, kept by the context. They are one element: nothing may follow it.
[[nodiscard]] Status keepWhole(KeptOctets *&kept, const uint8_t *der, uint32_t length, Element &out);

// Within an exported function's frame: the object into the caller's buffer, which must be there; and an object decoded.
template <class Ctx>
[[nodiscard]] Status encodeItem(Ctx *ctx, uint8_t *result, uint32_t *resultLength, Status (*write)(Writer &, Ctx &),
                                const char *words = InvalidItem) {
    KA_PASS(checkItems({ctx, result, resultLength}, words));
    Writer out;
    KA_PASS(write(out, *ctx));
    return handOutWhole(out, result, resultLength);
}
template <class Ctx>
[[nodiscard]] Status decodeItem(Ctx *ctx, const uint8_t *der, uint32_t length, Status (*read)(const Element &, Ctx &)) {
    KA_PASS(checkItems({ctx}));
    Element whole;
    KA_PASS(keepWhole(ctx->kept, der, length, whole));
    return read(whole, *ctx);
}

// Readers that store what they read. `words`: of an element that is missing.
[[nodiscard]] Status takeItem(Level &fields, Element &out, const char *words = InvalidItem);
[[nodiscard]] Status readOid(const Element &element, AlgorithmRecord &out);
[[nodiscard]] Status readOctets(const Element &element, Anybuf &out);
[[nodiscard]] Status readOpened(const Element &element, Element &content); // of an explicit tag, whatever it is
// GeneralizedTime, then UTCTime; the seconds go to both values.
[[nodiscard]] Status readTimeAlike(const Element &element, CertTime &time);

// A list of whole elements after a head without octets. An append takes one step.
[[nodiscard]] Status addElement(Anybuf &head, ListMarks &marks, const Element &element);
// The elements of a SEQUENCE, in the place of what the list held.
[[nodiscard]] Status readElements(const Element &sequence, Anybuf &head, ListMarks &marks, uint32_t *count = nullptr);
void writeElements(Writer &out, const Anybuf &head);
void freeElements(Anybuf &head);

// Names that are given as a whole, or attribute by attribute but not after that.
[[nodiscard]] Status checkNoDerName(uint8_t hasDerName);
[[nodiscard]] Status addName(NameRecord &head, uint32_t kind, Bytes value);

// Hooks. A parameter that cannot be stored is `noMemory`.
[[nodiscard]] Status setHook(KAHookFunc &hook, Anybuf &key, KAHookFunc value, const uint8_t *parameter, int32_t length,
                             Status noMemory);
inline Hook hookOf(KAHookFunc hook, const Anybuf &key) {
    return {hook, key.data, key.length};
}
constexpr uint32_t DigestBound = 64;
constexpr uint32_t SignatureBound = 2048;

constexpr char ItemMissing[] = "------------>Item  is NULL";

// CertID ::= SEQUENCE { hashAlgorithm OBJECT IDENTIFIER, issuerNameHash OCTET STRING, issuerKeyHash OCTET STRING,
// serialNumber INTEGER }
// A missing number is the failure of its writer, after both digests.
[[nodiscard]] Status writeCertId(Writer &out, OcspCertId &id);
// The element is stored, and `isWhole` raised, before its fields are read.
[[nodiscard]] Status readCertId(const Element &element, OcspCertId &id, uint8_t &isWhole);
void clearCertId(OcspCertId &id);
// Rows of an identity that stands in `certId` of a context.
#define KA_CERT_ID_ROW(ID, FIELD)                                                                                      \
    KA_ROW(ID, (storeField<&Ctx::certId, &OcspCertId::FIELD>), (answerField<&Ctx::certId, &OcspCertId::FIELD>))
#define KA_CERT_ID_ALGORITHM_ROW(ID)                                                                                   \
    KA_ROW(ID, (storeField<&Ctx::certId, &OcspCertId::hashAlgorithm, &AlgorithmRecord::oid>),                          \
           (answerField<&Ctx::certId, &OcspCertId::hashAlgorithm, &AlgorithmRecord::oid>))

// An identity that is given as a whole.
template <class Ctx> Status setWholeCertId(Ctx &ctx, Bytes value) {
    return setFlagged(ctx.isWhole, ctx.certId.whole, value);
}

// Extensions.
constexpr uint8_t OidNonce[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01, 0x02};
constexpr uint8_t OidCrlId[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01, 0x03};
constexpr uint8_t OidAcceptable[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01, 0x04};
constexpr uint8_t OidArchiveCutoff[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01, 0x06};
constexpr uint8_t OidServiceLocator[] = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01, 0x07};
constexpr uint8_t OidCrlEntry[] = {0x55, 0x1D, 0x15};
void prepareExtensions(OcspExtension &extensions);
void freeExtensions(OcspExtension &extensions);
[[nodiscard]] Status writeExtensions(Writer &out, const OcspExtension &extensions);
[[nodiscard]] Status readExtensions(const Element &element, OcspExtension &extensions);
// The list becomes one algorithm.
[[nodiscard]] Status setAcceptable(OcspExtension &extensions, Bytes oid);
[[nodiscard]] Status addPrivate(OcspExtension &extensions, Bytes oid, Bytes value, uint8_t critical);
template <> inline void clearNode(OcspAlgorithmNode &node) {
    freeData(node.algorithm.oid);
}
template <> inline void clearNode(OcspPrivateNode &node) {
    freeData(node.oid);
    freeData(node.value);
}

// Signatures.
[[nodiscard]] Status addCertificate(OcspSignature &signature, Bytes certificate);
// The certificates as a SEQUENCE.
[[nodiscard]] Status answerCertificates(const OcspSignature &signature, const Answer &answer);
// algorithm OBJECT IDENTIFIER, signature OCTET STRING, certificates [0] EXPLICIT SEQUENCE OF Certificate OPTIONAL, as
// parts of a SEQUENCE. Writing stores the signature; reading skips another element in the place of the certificates.
[[nodiscard]] Status writeSignatureFields(Writer &out, OcspSignature &signature, Bytes value);
[[nodiscard]] Status readSignatureFields(Level &fields, OcspSignature &signature);
// The whole element of a request, which is kept in the record.
[[nodiscard]] Status writeSignature(Writer &out, OcspSignature &signature, Bytes octets);
void clearSignature(OcspSignature &signature);

// The parts of a response. A response that has no result is not written, and its status is 0.
[[nodiscard]] Status writeResponseId(Writer &out, ResponseId &responder);
[[nodiscard]] Status readResponseId(const Element &element, ResponseId &responder);
[[nodiscard]] Status writeResponseData(Writer &out, OcspResponseData &data);
[[nodiscard]] Status readResponseData(const Element &element, OcspResponseData &data);
[[nodiscard]] Status writeBasicResponse(Writer &out, OcspBasicResponse &response, bool &isWritten);
[[nodiscard]] Status readBasicResponse(const Element &element, OcspBasicResponse &response);
void clearBasicResponse(OcspBasicResponse &response);

// Writes the file of KI_DecodeBasicResponse, before anything is copied or read.
void writeDiagnosticFile(Bytes octets);

} // namespace karil
