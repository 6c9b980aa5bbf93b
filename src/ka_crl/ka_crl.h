// Certificate revocation lists: the context, its attributes and entries, encoding and decoding.
#pragma once

#include "karil/crl.h"

#include "ka_family.h"

namespace karil {

// Object identifiers of the extensions of a CRL and of its entries (RFC 5280 5.2 and 5.3).
constexpr uint8_t OidCrlNumber[] = {0x55, 0x1D, 0x14};
constexpr uint8_t OidReason[] = {0x55, 0x1D, 0x15};
constexpr uint8_t OidDeltaCrl[] = {0x55, 0x1D, 0x1B};
constexpr uint8_t OidIssuingDist[] = {0x55, 0x1D, 0x1C};

template <> inline void clearNode(RevokedEntry &node) {
    freeData(node.serialNumber);
    freeData(node.reason);
}
using EntryPtr = NodePtr<RevokedEntry>;

// Entries that are decoded stand in blocks that the context keeps: a block each costs as much again as the decoding.
struct EntryBlock {
    RevokedEntry *next = nullptr;
    size_t left = 0;
};
// The next entry, of a fresh block if there is no more. `expected`: how many are about to come. Null if there is no
// memory.
[[nodiscard]] RevokedEntry *takeEntry(EntryBlock &block, size_t expected, KeptOctets *&kept);
void freeEntries(RevokedEntry *&first);

// A node with a serial number in its own block, which has room for a reason of the usual size as well. Null if there is
// no memory.
[[nodiscard]] EntryPtr newEntry(Bytes serialNumber);
// In the node's own block if it fits there.
[[nodiscard]] Status setReason(RevokedEntry &entry, Bytes value);

// About how many octets the list of entries has, and the list itself: SEQUENCE OF, the ready list's entries first.
uint32_t sizeOfEntries(const CrlEncodeCtx &ctx);
[[nodiscard]] Status writeEntries(Writer &out, const CrlEncodeCtx &ctx, uint32_t expected);

// The entry that date and reason belong to, or null.
RevokedEntry *lastEntry(CrlEncodeCtx &ctx);

} // namespace karil
