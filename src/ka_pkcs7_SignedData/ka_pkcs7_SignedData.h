// SignedData: the context, encoding and decoding; and what other folders use of it.
#pragma once

#include "karil/pkcs7_signed.h"

#include "message.h"

namespace karil {

inline SignerList signersOf(SignedDataCtx &ctx) {
    return {ctx.signerInfos, ctx.signerCount, ctx.signerMarks, &ctx};
}

// Empties the context.
void clearMessage(SignedDataCtx &ctx);

// What must be there before signers are given anything: version, content and its type.
[[nodiscard]] Status checkFields(const SignedDataCtx &ctx);
// Gives each signer the content and its type; the message is written after that.
[[nodiscard]] Status giveSigners(SignedDataCtx &ctx);
// ContentInfo { signedData }
[[nodiscard]] Status writeSignedData(Writer &out, SignedDataCtx &ctx);

} // namespace karil
