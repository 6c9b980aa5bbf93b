#include "hook.h"

namespace karil {

Status storeHook(KAHookFunc &hook, Anybuf &key, KAHookFunc value, const void *parameter, uint32_t length) {
    if (parameter != nullptr && length > 0) {
        Anybuf copy = {};
        KA_STEP(KI_SetAttributeCharValue(&copy, static_cast<const uint8_t *>(parameter), length));
        clearSecret(key);
        key = copy;
    }
    hook = value;
    return KACERT_Ok;
}

namespace {

constexpr uint32_t FixedArea = 512;
constexpr uint32_t SizeLimit = 10240;
// Room beyond an area's bound: the signature of a key of 8,192 bits that is written over the bound does no harm.
constexpr uint32_t Margin = 1024;

Status call(KAHookFunc hook, const Anybuf &input, uint8_t *area, uint32_t &length, void *parameter) {
    if (hook == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KACertSignFunc");
    KA_STEP_AS("------>KACertSignFunc", hook(input.data, input.length, area, &length, parameter));
    return KACERT_Ok;
}

// The call that fills the area.
Status fillArea(KAHookFunc hook, const Anybuf &key, const Anybuf &input, uint32_t bound, HookOutput &out) {
    out.octets = KA_BLOCK(uint64_t{bound} + Margin);
    if (out.octets == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    out.length = bound;
    KA_PASS(call(hook, input, out.octets.get(), out.length, key.data));
    if (out.length > bound)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACertSignFunc");
    return KACERT_Ok;
}

} // namespace

Status callWithFixedArea(KAHookFunc hook, const Anybuf &key, const Anybuf &input, HookOutput &out) {
    KA_PASS(call(hook, input, nullptr, out.length, nullptr));
    return fillArea(hook, key, input, FixedArea, out);
}

Status callForSize(KAHookFunc hook, const Anybuf &key, const Anybuf &input, HookOutput &out) {
    KA_PASS(call(hook, input, nullptr, out.length, key.data));
    if (out.length >= SizeLimit)
        return KA_FAIL(KACERT_InvalidSignatureLenErr, "------>KACERT_InvalidSignatureLenErr");
    return fillArea(hook, key, input, out.length, out);
}

} // namespace karil
