// The entries of revoked certificates: a block each where they are set, and one block for the whole list when it is
// written.
#include "ka_crl.h"

#include <string.h>

namespace karil {

namespace {

// Every reason there is has one octet.
constexpr uint64_t ReasonRoom = 1;

uint8_t *roomOf(RevokedEntry &entry) {
    return reinterpret_cast<uint8_t *>(&entry + 1);
}

} // namespace

EntryPtr newEntry(Bytes serialNumber) {
    const uint64_t room = serialNumber.size() + ReasonRoom;
    if (room > UINT32_MAX - sizeof(RevokedEntry))
        return nullptr;
    const auto size = static_cast<uint32_t>(sizeof(RevokedEntry) + room);
    EntryPtr entry(static_cast<RevokedEntry *>(KAPR_Malloc(KA_SOURCE, __LINE__, size)));
    if (entry == nullptr)
        return nullptr;
    entry->room = static_cast<uint32_t>(room);
    entry->serialNumber.tag = TagInteger;
    placePart(entry->serialNumber, serialNumber, roomOf(*entry));
    return entry;
}

Status setReason(RevokedEntry &entry, Bytes value) {
    const uint32_t serialSize = entry.serialNumber.length;
    Anybuf reason = {};
    reason.tag = TagEnumerated;
    if (uint64_t{serialSize} + value.size() <= entry.room)
        placePart(reason, value, roomOf(entry) + serialSize);
    else
        KA_PASS(setTagged(reason, value, TagEnumerated));
    freeData(entry.reason);
    entry.reason = reason;
    entry.hasEntryExtensions = 1;
    entry.hasReason = 1;
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

namespace {

// The content octets of an entry's elements, from the outermost of its extensions inwards.
struct EntrySize {
    uint64_t whole = 0;
    uint64_t serialNumber = 0;
    uint64_t extensions = 0; // 0: there is none
    uint64_t extension = 0;
    uint64_t value = 0;
};

bool hasSignOctet(const Anybuf &integer) {
    return integer.length > 0 && (integer.data[0] & 0x80) != 0;
}

struct Date {
    Tag tag;
    int32_t seconds;
    const char *words;
};
Date dateOf(const RevokedEntry &entry) {
    const CertTime &date = entry.revocationDate;
    if (date.isUtc != 0)
        return {TagUtcTime, secondsOf(date), "------>KAsn1_WriteUtcTime"};
    return {TagGeneralizedTime, secondsOf(date), "------>KAsn1_WriteGeneralizedTime"};
}

// Refuses what cannot be written, so that the list's one block is only asked for where it will be filled.
Status measure(const RevokedEntry &entry, EntrySize &out) {
    const Anybuf &serial = entry.serialNumber;
    const Anybuf &reason = entry.reason;
    const Date date = dateOf(entry);
    if (serial.data == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_WriteIntegerArray");
    if (date.seconds < 0)
        return KA_FAIL(KACERT_InvalidTimeErr, date.words);
    out.serialNumber = uint64_t{serial.length} + (hasSignOctet(serial) ? 1 : 0);
    out.whole = elementSize(out.serialNumber) + elementSize(TimeLength);
    if (entry.hasEntryExtensions != 1)
        return KACERT_Ok;
    if (reason.data == nullptr && reason.length > 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KI_CRL_WriteEntryExtension");
    out.value = elementSize(reason.length);
    out.extension = elementSize(sizeof OidReason) + elementSize(out.value);
    out.extensions = elementSize(out.extension);
    out.whole += elementSize(out.extensions);
    return KACERT_Ok;
}

uint8_t *put(uint8_t *at, Bytes octets) {
    if (!octets.empty())
        memcpy(at, octets.data(), octets.size());
    return at + octets.size();
}

// SEQUENCE { SEQUENCE { OBJECT IDENTIFIER, OCTET STRING { ENUMERATED } } }
uint8_t *putReason(uint8_t *at, const Anybuf &reason, const EntrySize &size) {
    at = putHeader(at, TagSequence, size.extensions);
    at = putHeader(at, TagSequence, size.extension);
    at = put(putHeader(at, TagObjectId, sizeof OidReason), OidReason);
    at = putHeader(at, TagOctetString, size.value);
    return put(putHeader(at, TagEnumerated, reason.length), bytesOf(reason));
}

// SEQUENCE { userCertificate INTEGER, revocationDate Time, crlEntryExtensions OPTIONAL }
Status putEntry(const RevokedEntry &entry, LocalClock &clock, uint8_t *&at) {
    EntrySize size;
    KA_PASS(measure(entry, size));
    const Date date = dateOf(entry);
    uint8_t text[TimeLength];
    KA_STEP_AS(date.words, timeText(date.seconds, clock, text));
    at = putHeader(at, TagSequence, size.whole);
    at = putHeader(at, TagInteger, size.serialNumber);
    if (hasSignOctet(entry.serialNumber))
        *at++ = 0;
    at = put(at, bytesOf(entry.serialNumber));
    at = put(putHeader(at, date.tag, TimeLength), text);
    if (size.extensions > 0)
        at = putReason(at, entry.reason, size);
    return KACERT_Ok;
}

// SEQUENCE OF entries, those of the ready list first
Status writeEntries(const CrlEncodeCtx &ctx, Anybuf **out) {
    uint64_t total = 0;
    for (const RevokedEntry *entry = ctx.firstRevoked; entry != nullptr; entry = entry->next) {
        EntrySize size;
        KA_PASS(measure(*entry, size));
        total += elementSize(size.whole);
    }
    Level ready;
    if (ctx.revokedDer.length > 0)
        KA_STEP_AS("------>KI_CRL_AddRevokedCert", readSequence(elementOf(ctx.revokedDer), ready));
    total += ready.rest.size();
    Anybuf *node = nullptr;
    uint8_t *at = nullptr;
    KA_STEP_AS("------>KAsn1_WriteSequence", newElement(TagSequence, total, &node, &at));
    AnybufPtr list(node);
    at = put(at, ready.rest);
    LocalClock clock;
    for (const RevokedEntry *entry = ctx.firstRevoked; entry != nullptr; entry = entry->next)
        KA_PASS(putEntry(*entry, clock, at));
    *out = list.release();
    return KACERT_Ok;
}

// crlEntryExtensions ::= SEQUENCE { Extension } with the reason
Status writeReason(const RevokedEntry &entry, Anybuf **out) {
    Chain reason;
    KA_STEP(KAsn1_WriteEnumerated(&entry.reason, reason.slot()));
    Chain extension;
    KA_PASS(writeExtension(OidReason, 0, *reason.head(), extension.slot()));
    KA_STEP(KAsn1_WriteSequence(extension.head(), out));
    return KACERT_Ok;
}

} // namespace

int32_t KI_CRL_EncodeRevokedCRL(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_CRL_EncodeRevokedCRL", encodePart(ctx, out, writeEntries));
}

int32_t KI_CRL_AddRevokedCert(const CrlEncodeCtx *ctx, Anybuf *entries, Anybuf **out) {
    KA_FRAME("KI_CRL_AddRevokedCert");
    if (ctx == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Chain whole;
    if (ctx->revokedDer.length > 0)
        KA_STEP(KAsn1_ReadSequence(&ctx->revokedDer, whole.slot()));
    *whole.slot() = entries;
    whole.moveTo(out);
    return KA_DONE();
}

int32_t KI_CRL_WriteEntryExtension(const RevokedEntry *entry, Anybuf **out) {
    return KA_FRAMED("KI_CRL_WriteEntryExtension", encodePart(entry, out, writeReason));
}
