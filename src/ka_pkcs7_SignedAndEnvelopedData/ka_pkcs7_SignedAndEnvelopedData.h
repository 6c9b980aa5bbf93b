// SignedAndEnvelopedData: the context, encoding and decoding.
#pragma once

#include "karil/pkcs7_signed_enveloped.h"

#include "message.h"

namespace karil {

inline RecipientList recipientsOf(SignedAndEnvelopedDataCtx &ctx) {
    return {ctx.recipients, ctx.recipientCount2, ctx.recipientMarks, &ctx};
}
inline SignerList signersOf(SignedAndEnvelopedDataCtx &ctx) {
    return {ctx.signerInfos, ctx.signerCount2, ctx.signerMarks, &ctx};
}

// Empties the context.
void clearMessage(SignedAndEnvelopedDataCtx &ctx);

} // namespace karil
