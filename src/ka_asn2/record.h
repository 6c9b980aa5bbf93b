// What becomes of octets that were read: copies, or parts of a block that a context keeps.
#pragma once

#include "reader.h"

struct KeptOctets;

namespace karil {

// Copies an element into a block that lives as long as the owner of `kept`, for its records to hold parts of.
[[nodiscard]] Status keep(KeptOctets *&kept, const Element &source, Element &out);
// Zeroed room in such a block, for records that are not freed one by one; null if there is no memory.
void *keepRoom(KeptOctets *&kept, uint64_t size);
void freeKept(KeptOctets *kept);

// Sets an embedded record to a borrowed value, as a reader and KI_CopyAnybuf would leave it there, and releases what
// stood there before. The octets are copied, unless they are kept.
[[nodiscard]] Status storeCopy(Anybuf &record, const Element &value);
[[nodiscard]] inline Status store(Anybuf &record, const Element &value) {
    if (!value.isKept)
        return storeCopy(record, value);
    setPart(record, value.bytes, value.tag);
    return KACERT_Ok;
}

// Copies a borrowed value into a heap node, a kept one as well.
[[nodiscard]] Status newNode(const Element &value, Anybuf **out);

} // namespace karil
