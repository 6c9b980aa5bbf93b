// Records whose data is part of a larger block that their context keeps: such data is not freed with the record. The
// mark for it is the record's `form`, and this file is all that knows of it.
#pragma once

#include "karil/base.h"

#include <span>
#include <string.h>

namespace karil {

constexpr uint32_t FormPart = 0x80000002;

inline bool isPart(const Anybuf &record) {
    return record.form == FormPart;
}

// All that frees the data of a record does it here.
inline void freeData(Anybuf &record) {
    if (record.data != nullptr && !isPart(record))
        KAPR_Free(record.data);
}

// Sets a record to octets in a block that its owner keeps, and frees what the record held.
inline void setPart(Anybuf &record, std::span<const uint8_t> octets, uint32_t tag) {
    freeData(record);
    auto *data = const_cast<uint8_t *>(octets.data());
    record = {data, static_cast<uint32_t>(octets.size()), 0, FormPart, tag, nullptr, nullptr};
}

// Copies octets to `at`, which is in such a block, for a record that holds nothing. Returns where they end.
inline uint8_t *placePart(Anybuf &record, std::span<const uint8_t> value, uint8_t *at) {
    if (!value.empty())
        memmove(at, value.data(), value.size());
    setPart(record, {at, value.size()}, record.tag);
    return at + value.size();
}

// What `from` holds becomes that of `to`, which holds nothing. Field by field: for a copy of the whole record the
// processor waits if the fields were written just before.
inline void moveInto(Anybuf &to, const Anybuf &from) {
    to.data = from.data;
    to.length = from.length;
    to.unusedBits = from.unusedBits;
    to.form = from.form;
    to.tag = from.tag;
    to.next = from.next;
    to.prev = from.prev;
}

// The form of a copy, which has a block of its own.
constexpr uint32_t formOfCopy(uint32_t form) {
    return form == FormPart ? 2 : form;
}

} // namespace karil
