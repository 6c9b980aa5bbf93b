#include "ka_low.h"

namespace karil {

Status replace(Anybuf &record, Bytes value) {
    Anybuf fresh = {};
    KA_STEP(KI_SetAttributeCharValue(&fresh, value.data(), static_cast<uint32_t>(value.size())));
    fresh.tag = record.tag;
    KI_ClearAnybuf(&record);
    moveInto(record, fresh);
    return KACERT_Ok;
}

void wipe(void *block, size_t size) {
    if (block != nullptr)
        explicit_bzero(block, size);
}

void clearSecret(Anybuf &record) {
    wipe(record.data, record.length);
    KI_ClearAnybuf(&record);
}

} // namespace karil

using namespace karil;

int32_t KAsn1_Low_CreateAnyBuf(Anybuf **out) {
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pOut is NULL");
    Anybuf *record = KA_CREATE(Anybuf);
    if (record == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    record->form = 2;
    *out = record;
    return KACERT_Ok;
}

Anybuf *KI_InitAnybuf(Anybuf *record) {
    if (record != nullptr)
        *record = Anybuf{};
    return record;
}

void KI_ClearAnybuf(Anybuf *record) {
    if (record == nullptr)
        return;
    freeData(*record);
    *record = Anybuf{};
}

void KI_FreeAnybuf(Anybuf *first) {
    while (first != nullptr) {
        Anybuf *next = first->next;
        freeData(*first);
        KAPR_Free(first);
        first = next;
    }
}

int32_t KI_CopyAnybuf(Anybuf *destination, const Anybuf *source) {
    if (destination == nullptr || source == nullptr || (source->data == nullptr && source->length > 0))
        return KA_FAIL(KACERT_InvalidParamErr, "------>KI_CopyAnybuf");
    Owned<uint8_t> data = KA_BLOCK(source->length);
    if (data == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    if (source->length > 0)
        memcpy(data.get(), source->data, source->length);
    *destination = *source;
    destination->data = data.release();
    destination->form = formOfCopy(source->form);
    return KACERT_Ok;
}

int32_t KI_SetAttributeCharValue(Anybuf *record, const uint8_t *value, uint32_t length) {
    if (record == nullptr || (value == nullptr && length > 0))
        return KA_FAIL(KACERT_InvalidParamErr, "------>KI_SetAttributeCharValue");
    const uint32_t tag = record->tag;
    *record = Anybuf{};
    record->tag = tag;
    record->data = KA_BLOCK(length).release();
    if (record->data == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    if (length > 0)
        memcpy(record->data, value, length);
    record->length = length;
    return KACERT_Ok;
}

int32_t KI_CopyAlgorithm(AlgorithmRecord *destination, const AlgorithmRecord *source) {
    if (destination == nullptr || source == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KI_CopyAlgorithm");
    KA_STEP(KI_CopyAnybuf(&destination->oid, &source->oid));
    destination->id = source->id;
    return KACERT_Ok;
}
