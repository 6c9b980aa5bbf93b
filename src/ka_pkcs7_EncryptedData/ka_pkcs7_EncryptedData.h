// EncryptedData: what other folders use of it.
#pragma once

#include "karil/pkcs7_encrypted.h"

#include "message.h"

namespace karil {

// ContentInfo { encryptedData }, with an EncryptedContentInfo of at most `bound` octets.
[[nodiscard]] Status writeEncryptedData(Writer &out, EncryptedDataCtx &ctx, uint32_t bound);
// The message in a ContentInfo, into a fresh context. Of a kept element the context's records hold parts.
[[nodiscard]] Status readEncryptedData(const Element &element, EncryptedDataCtx &ctx);

} // namespace karil
