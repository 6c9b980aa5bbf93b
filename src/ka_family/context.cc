#include "context.h"

namespace karil {

Status checkPointers(std::initializer_list<const void *> pointers, Status refusal) {
    for (const void *pointer : pointers)
        if (pointer == nullptr)
            return KA_FAIL(refusal, "------>Pointer is NULL");
    return KACERT_Ok;
}

Status createRecord(const void *out, uint32_t size, void *&record, Status refusal) {
    if (out == nullptr)
        return KA_FAIL(refusal, "------>Pointer is NULL");
    record = KAPR_Malloc(KA_SOURCE, __LINE__, size);
    return record != nullptr ? KACERT_Ok : KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
}

} // namespace karil
