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

// What a hook wrote into the area of one of the first two protocols.
struct HookOutput {
    Owned<uint8_t> octets;
    uint32_t length = 0;
};

// The protocols. Each calls the hook twice with the octets of `input`, both times with the same length variable, and
// refuses a length above the area's bound. `key`: the context's copy of the parameter.
// A fixed area of 512 octets: the first call has neither area nor parameter.
[[nodiscard]] Status callWithFixedArea(KAHookFunc hook, const Anybuf &key, Bytes input, HookOutput &out);
// An area whose size, below 10,240 octets, the first call tells. Both calls have the parameter.
[[nodiscard]] Status callForSize(KAHookFunc hook, const Anybuf &key, Bytes input, HookOutput &out);

// A hook with a copy of its parameter, as the messages' records hold it.
struct Hook {
    KAHookFunc function;
    const void *parameter;
    uint32_t length;
};
// A copy of the parameter; null if there is none or the length is below 1.
[[nodiscard]] Status copyParameter(const void *parameter, int32_t length, void *&copy);
// Wipes and frees the copy.
void freeParameter(void *&copy, uint32_t length);
// Stores the hook and a copy of its parameter in the place of what stood there. The length is stored as it is.
template <class Length>
[[nodiscard]] Status keepHook(KAHookFunc &hook, void *&copy, Length &copyLength, KAHookFunc value,
                              const void *parameter, int32_t length) {
    void *fresh = nullptr;
    KA_PASS(copyParameter(parameter, length, fresh));
    freeParameter(copy, static_cast<uint32_t>(copyLength));
    hook = value;
    copy = fresh;
    copyLength = static_cast<Length>(length);
    return KACERT_Ok;
}

// An area that a hook wrote to. It is wiped before it is freed.
class HookArea {
public:
    HookArea() = default;
    HookArea(const HookArea &) = delete;
    HookArea &operator=(const HookArea &) = delete;
    ~HookArea() { wipe(block.get(), size); }

    Bytes octets() const { return {block.get(), used}; }
    // True if callWithCopy failed for want of memory for the copy of the parameter.
    bool lacksParameter() const { return block != nullptr && !isCalled; }
    // Hands the block to a record, in the place of the secret that it holds.
    void moveTo(Anybuf &record);

private:
    friend Status callWithCopy(const Hook &hook, Bytes input, uint64_t bound, HookArea &out, const char *words);
    friend Status callAsStored(KAHookFunc hook, void *parameter, Bytes input, uint64_t bound, HookArea &out,
                               const char *words);

    Status open(uint64_t bound, const char *words);
    Status fill(KAHookFunc hook, Bytes input, void *parameter, const char *words);

    Owned<uint8_t> block;
    size_t size = 0;
    uint32_t used = 0;
    bool isCalled = false;
};
// The third protocol: one call with a fresh copy of the parameter, which is wiped and freed after it, and with an area
// that has room beyond its bound. `words`: of a hook that fails. The hook must be there.
[[nodiscard]] Status callWithCopy(const Hook &hook, Bytes input, uint64_t bound, HookArea &out, const char *words);
// The same with the parameter as it is stored, which the hook may change for good.
[[nodiscard]] Status callAsStored(KAHookFunc hook, void *parameter, Bytes input, uint64_t bound, HookArea &out,
                                  const char *words);

} // namespace karil
