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

Status call(KAHookFunc hook, Bytes input, uint8_t *area, uint32_t &length, void *parameter) {
    if (hook == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KACertSignFunc");
    KA_STEP_AS("------>KACertSignFunc",
               hook(input.data(), static_cast<uint32_t>(input.size()), area, &length, parameter));
    return KACERT_Ok;
}

// The call that fills the area.
Status fillArea(KAHookFunc hook, const Anybuf &key, Bytes input, uint32_t bound, HookOutput &out) {
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

Status callWithFixedArea(KAHookFunc hook, const Anybuf &key, Bytes input, HookOutput &out) {
    KA_PASS(call(hook, input, nullptr, out.length, nullptr));
    return fillArea(hook, key, input, FixedArea, out);
}

Status callForSize(KAHookFunc hook, const Anybuf &key, Bytes input, HookOutput &out) {
    KA_PASS(call(hook, input, nullptr, out.length, key.data));
    if (out.length >= SizeLimit)
        return KA_FAIL(KACERT_InvalidSignatureLenErr, "------>KACERT_InvalidSignatureLenErr");
    return fillArea(hook, key, input, out.length, out);
}

Status copyParameter(const void *parameter, int32_t length, void *&copy) {
    copy = nullptr;
    if (parameter == nullptr || length < 1)
        return KACERT_Ok;
    Owned<uint8_t> block = KA_BLOCK(static_cast<uint32_t>(length));
    if (block == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    memcpy(block.get(), parameter, static_cast<uint32_t>(length));
    copy = block.release();
    return KACERT_Ok;
}

void freeParameter(void *&copy, uint32_t length) {
    wipe(copy, length);
    KAPR_Free(copy);
    copy = nullptr;
}

void HookArea::moveTo(Anybuf &record) {
    const uint32_t tag = record.tag;
    clearSecret(record);
    wipe(block.get() + used, size - used);
    record.tag = tag;
    record.length = used;
    record.data = block.release();
}

Status HookArea::open(uint64_t bound, const char *words) {
    if (bound + Margin > UINT32_MAX)
        return KA_FAIL(KACERT_InvalidLengthErr, words);
    wipe(block.get(), size);
    size = static_cast<size_t>(bound) + Margin;
    used = static_cast<uint32_t>(bound);
    block = KA_BLOCK(size);
    return block != nullptr ? KACERT_Ok : KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
}

Status HookArea::fill(KAHookFunc hook, Bytes input, void *parameter, const char *words) {
    const uint32_t bound = used;
    isCalled = true;
    const Status status = hook(input.data(), static_cast<uint32_t>(input.size()), block.get(), &used, parameter);
    if (status == KACERT_Ok && used <= bound)
        return KACERT_Ok;
    used = 0;
    return KA_FAIL(status != KACERT_Ok ? status : KACERT_InvalidLengthErr, words);
}

Status callWithCopy(const Hook &hook, Bytes input, uint64_t bound, HookArea &out, const char *words) {
    KA_PASS(out.open(bound, words));
    void *parameter = nullptr;
    KA_PASS(copyParameter(hook.parameter, static_cast<int32_t>(hook.length), parameter));
    const Status status = out.fill(hook.function, input, parameter, words);
    freeParameter(parameter, hook.length);
    return status;
}

Status callAsStored(KAHookFunc hook, void *parameter, Bytes input, uint64_t bound, HookArea &out, const char *words) {
    KA_PASS(out.open(bound, words));
    return out.fill(hook, input, parameter, words);
}

} // namespace karil
