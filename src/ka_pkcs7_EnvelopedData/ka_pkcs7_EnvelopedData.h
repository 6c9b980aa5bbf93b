// EnvelopedData: the context, encoding and decoding.
#pragma once

#include "karil/pkcs7_enveloped.h"

#include "message.h"

namespace karil {

inline RecipientList recipientsOf(EnvelopedDataCtx &ctx) {
    return {ctx.recipients, ctx.recipientCount2, ctx.recipientMarks, &ctx};
}

// Empties the context.
void clearMessage(EnvelopedDataCtx &ctx);

} // namespace karil
