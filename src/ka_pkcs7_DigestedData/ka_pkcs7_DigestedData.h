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

} // namespace karil
