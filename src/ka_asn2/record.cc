#include "ka_asn2.h"

#include <string.h>

struct KeptOctets {
    KeptOctets *next;
    // The octets follow.
};

namespace karil {

Status keep(KeptOctets *&kept, const Element &source, Element &out) {
    auto *block = KA_CREATE_WITH(source.bytes.size(), KeptOctets);
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
    node->tag = value.tag;
    if (value.present())
        KA_PASS(store(*node, {value.tag, value.bytes}));
    *out = node.release();
    return KACERT_Ok;
}

Status store(Anybuf &record, const Element &value) {
    if (value.isKept) {
        setPart(record, value.bytes, value.tag);
        return KACERT_Ok;
    }
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
