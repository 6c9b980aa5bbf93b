// The hooks of a context, which are called here and nowhere else.
#pragma once

#include "context.h"

namespace karil {

// Stores the hook and, if there is one, a copy of its parameter, which is wiped when another takes its place.
[[nodiscard]] Status storeHook(KAHookFunc &hook, Anybuf &key, KAHookFunc value, const void *parameter, uint32_t length);
// The same for the signing hook of a context.
template <class Ctx>
[[nodiscard]] Status setSignHook(Ctx *ctx, KAHookFunc value, const void *parameter, uint32_t length) {
    KA_PASS(checkPointers({ctx}));
    return storeHook(ctx->signFunc, ctx->signKey, value, parameter, length);
}

// What a hook wrote.
struct HookOutput {
    Owned<uint8_t> octets;
    uint32_t length = 0;
};

// The protocols. Each calls the hook twice with the octets of `input`, both times with the same length variable, and
// refuses a length above the area's bound. `key`: the context's copy of the parameter.
// A fixed area of 512 octets: the first call has neither area nor parameter.
[[nodiscard]] Status callWithFixedArea(KAHookFunc hook, const Anybuf &key, const Anybuf &input, HookOutput &out);
// An area whose size, below 10,240 octets, the first call tells. Both calls have the parameter.
[[nodiscard]] Status callForSize(KAHookFunc hook, const Anybuf &key, const Anybuf &input, HookOutput &out);

} // namespace karil
