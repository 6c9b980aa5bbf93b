#include "ka_asn2.h"

#include <string.h>

struct KeptOctets {
    KeptOctets *next;
    // The octets follow.
};

namespace karil {

void *keepRoom(KeptOctets *&kept, uint64_t size) {
    auto *block = KA_CREATE_WITH(size, KeptOctets);
    if (block == nullptr)
        return nullptr;
    block->next = kept;
    kept = block;
    return block + 1;
}

Status keep(KeptOctets *&kept, const Element &source, Element &out) {
    auto *octets = static_cast<uint8_t *>(keepRoom(kept, source.bytes.size()));
    if (octets == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    if (source.present())
        memcpy(octets, source.bytes.data(), source.bytes.size());
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
    node->tag = value.tag;
    if (value.present())
        KA_PASS(store(*node, {value.tag, value.bytes}));
    *out = node.release();
    return KACERT_Ok;
}

Status storeCopy(Anybuf &record, const Element &value) {
    const auto length = static_cast<uint32_t>(value.bytes.size());
    Owned<uint8_t> data = KA_BLOCK(length);
    if (data == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    if (length > 0)
        memcpy(data.get(), value.bytes.data(), length);
    freeData(record);
    record = {data.release(), length, 0, 2, value.tag, nullptr, nullptr};
    return KACERT_Ok;
}

} // namespace karil
