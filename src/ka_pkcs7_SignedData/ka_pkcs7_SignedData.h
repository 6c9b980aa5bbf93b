// SignedData: the context, encoding and decoding.
#pragma once

#include "karil/pkcs7_signed.h"

#include "message.h"

namespace karil {

inline SignerList signersOf(SignedDataCtx &ctx) {
    return {ctx.signerInfos, ctx.signerCount, ctx.signerMarks, &ctx};
}

// Empties the context.
void clearMessage(SignedDataCtx &ctx);

} // namespace karil
