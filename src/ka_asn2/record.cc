// What becomes of octets that were read: copies, or parts of a block that a context keeps.
#include "ka_asn2.h"

#include <string.h>

struct KeptOctets {
    KeptOctets *next;
    // The octets stand behind.
};

namespace karil {

Status keep(KeptOctets *&kept, const Element &source, Element &out) {
    if (source.bytes.size() > UINT32_MAX - sizeof(KeptOctets))
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KAPR_Malloc");
    const auto size = static_cast<uint32_t>(sizeof(KeptOctets) + source.bytes.size());
    auto *block = static_cast<KeptOctets *>(KAPR_Malloc(KA_SOURCE, __LINE__, size));
    if (block == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    auto *octets = reinterpret_cast<uint8_t *>(block + 1);
    if (source.present())
        memcpy(octets, source.bytes.data(), source.bytes.size());
    block->next = kept;
    kept = block;
    out = {source.tag, {octets, source.bytes.size()}, true};
    return KACERT_Ok;
}

void freeKept(KeptOctets *kept) {
    while (kept != nullptr) {
        KeptOctets *next = kept->next;
        KAPR_Free(kept);
        kept = next;
    }
}

Status newNode(const Element &value, Anybuf **out) {
    Anybuf *record = nullptr;
    KA_STEP(KAsn1_Low_CreateAnyBuf(&record));
    AnybufPtr node(record);
    KA_PASS(store(*node, {value.tag, value.bytes}));
    *out = node.release();
    return KACERT_Ok;
}

Status store(Anybuf &record, const Element &value) {
    const auto length = static_cast<uint32_t>(value.bytes.size());
    if (value.isKept) {
        freeData(record);
        auto *data = value.present() ? const_cast<uint8_t *>(value.bytes.data()) : nullptr;
        record = {data, length, 0, FormPart, value.tag, nullptr, nullptr};
        return KACERT_Ok;
    }
    Owned<uint8_t> data;
    if (value.present()) {
        data = KA_BLOCK(length);
        if (data == nullptr)
            return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
        memcpy(data.get(), value.bytes.data(), length);
    }
    freeData(record);
    record = {data.release(), length, 0, 2, value.tag, nullptr, nullptr};
    return KACERT_Ok;
}

} // namespace karil
