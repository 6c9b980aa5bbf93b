// DigestedData: the context, encoding and decoding.
#pragma once

#include "karil/pkcs7_digested.h"

#include "message.h"

namespace karil {

// An inner content type whose first octets are those of data.
inline bool beginsAsData(Bytes oid) {
    return oid.size() >= ContentTypeSize && isContentType(oid.first(ContentTypeSize), PKCS7_TYPE_DATA);
}

void clearDecoded(DigestedDataCtx &ctx);

// A hook's digest.
struct Digest {
    static constexpr uint32_t Bound = 200;
    Secret<Bound + 1024> area; // a hook that writes beyond the bound does no harm
    uint32_t length = 0;

    Bytes octets() const { return {area.octets, length}; }
};
// The digest of the whole inner ContentInfo. The hook gets the context's own copy of its parameter, so this call does
// not go the way of the other hooks.
[[nodiscard]] Status digest(const DigestedDataCtx &ctx, Bytes info, Digest &out);

} // namespace karil
