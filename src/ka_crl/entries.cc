// The entries of revoked certificates: a block each, or many in a block.
#include "ka_crl.h"

#include <algorithm>
#include <string.h>

namespace karil {

namespace {

// Every reason there is has one octet.
constexpr uint64_t ReasonRoom = 1;

uint8_t *roomOf(RevokedEntry &entry) {
    return reinterpret_cast<uint8_t *>(&entry + 1);
}

// The room of an entry that stands with others in a block.
constexpr uint32_t InBlock = UINT32_MAX;

} // namespace

EntryPtr newEntry(Bytes serialNumber) {
    const uint64_t room = serialNumber.size() + ReasonRoom;
    EntryPtr entry(KA_CREATE_WITH(room, RevokedEntry));
    if (entry == nullptr)
        return nullptr;
    entry->room = static_cast<uint32_t>(room);
    entry->serialNumber.tag = TagInteger;
    placePart(entry->serialNumber, serialNumber, roomOf(*entry));
    return entry;
}

RevokedEntry *takeEntry(EntryBlock &block, size_t expected, KeptOctets *&kept) {
    // So many that a block is seldom asked for, and so few that little is lost if the entries are larger than expected.
    constexpr size_t most = 1024;
    if (block.left == 0) {
        const size_t count = std::clamp<size_t>(expected, 1, most);
        block = {static_cast<RevokedEntry *>(keepRoom(kept, count * sizeof(RevokedEntry))), count};
    }
    if (block.next == nullptr)
        return nullptr;
    RevokedEntry *entry = block.next++;
    --block.left;
    entry->room = InBlock;
    return entry;
}

void freeEntries(RevokedEntry *&first) {
    while (first != nullptr) {
        EntryPtr entry(first);
        first = entry->next;
        if (entry->room == InBlock)
            clearNode(*entry.release());
    }
}

Status setReason(RevokedEntry &entry, Bytes value) {
    const uint32_t serialSize = entry.serialNumber.length;
    const uint32_t room = entry.room == InBlock ? 0 : entry.room;
    Anybuf reason = {};
    reason.tag = TagEnumerated;
    if (uint64_t{serialSize} + value.size() <= room)
        placePart(reason, value, roomOf(entry) + serialSize);
    else
        KA_PASS(setTagged(reason, value, TagEnumerated));
    freeData(entry.reason);
    moveInto(entry.reason, reason);
    entry.hasEntryExtensions = 1;
    entry.hasReason = 1;
    return KACERT_Ok;
}

namespace {

// SEQUENCE OF Extension { cRLReason, OCTET STRING { ENUMERATED } }
Status writeReason(Writer &out, const RevokedEntry &entry) {
    const Construct extensions(out, TagSequence);
    return writeExtension(out, OidReason, 0, [&] {
        out.element(TagEnumerated, bytesOf(entry.reason));
        return out.status();
    });
}

// SEQUENCE { userCertificate INTEGER, revocationDate Time, crlEntryExtensions OPTIONAL }
Status writeEntry(Writer &out, const RevokedEntry &entry, LocalClock &clock) {
    const CertTime &date = entry.revocationDate;
    const Construct sequence(out, TagSequence);
    KA_STEP_AS("------>KAsn1_WriteIntegerArray", out.number(bytesOf(entry.serialNumber)));
    KA_PASS(writeTime(out, date.isUtc != 0, secondsOf(date), clock));
    if (entry.hasEntryExtensions == 1)
        KA_STEP_AS("------>KI_CRL_WriteEntryExtension", writeReason(out, entry));
    return KACERT_Ok;
}

// What most entries take beside their number and reason.
constexpr uint32_t EntryRoom = 21;
constexpr uint32_t ExtensionsRoom = 15;

} // namespace

uint32_t sizeOfEntries(const CrlEncodeCtx &ctx) {
    uint64_t size = ctx.revokedDer.length;
    for (const RevokedEntry *entry = ctx.firstRevoked; entry != nullptr; entry = entry->next)
        size += uint64_t{EntryRoom} + entry->serialNumber.length +
                (entry->hasEntryExtensions == 1 ? ExtensionsRoom + uint64_t{entry->reason.length} : 0);
    return size < UINT32_MAX ? static_cast<uint32_t>(size) : UINT32_MAX;
}

// A ready list that is none is refused after the entries.
Status writeEntries(Writer &out, const CrlEncodeCtx &ctx, uint32_t expected) {
    const Construct list(out, TagSequence, expected);
    Level ready;
    const Status opened = ctx.revokedDer.length > 0 ? readSequence(elementOf(ctx.revokedDer), ready) : KACERT_Ok;
    out.octets(ready.rest);
    LocalClock clock;
    for (const RevokedEntry *entry = ctx.firstRevoked; entry != nullptr; entry = entry->next)
        KA_PASS(writeEntry(out, *entry, clock));
    KA_STEP_AS("------>KI_CRL_AddRevokedCert", opened);
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_CRL_EncodeRevokedCRL(const CrlEncodeCtx *ctx, Anybuf **out) {
    KA_FRAME("KI_CRL_EncodeRevokedCRL");
    KA_PASS(checkPointers({ctx, out}));
    const uint32_t expected = sizeOfEntries(*ctx);
    Writer list(expected);
    KA_PASS(writeEntries(list, *ctx, expected));
    KA_STEP_AS("------>KAsn1_WriteSequence", list.moveTo(out));
    return KA_DONE();
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
    KA_FRAME("KI_CRL_WriteEntryExtension");
    if (entry == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Writer extensions;
    KA_PASS(writeReason(extensions, *entry));
    KA_PASS(extensions.moveTo(out));
    return KA_DONE();
}
