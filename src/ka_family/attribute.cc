#include "attribute.h"

namespace karil {

Status checkValue(const void *ctx, const uint8_t *value, int32_t length, Status badLength) {
    if (length < 1)
        return KA_FAIL(badLength, "------>KACERT_InvalidLengthErr");
    return checkPointers({ctx, value});
}

Status checkPair(const void *ctx, const uint8_t *oid, int32_t oidLength, const uint8_t *value, int32_t valueLength) {
    if (oidLength < 1 || valueLength < 1)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    return checkPointers({ctx, oid, value});
}

Status refuseSet() {
    return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Set KACERT_AttributeNotSupportErr");
}

Status refuseGet() {
    return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Get KACERT_AttributeNotSupportErr");
}

void traceRow(const char *words) {
    KA_TRACE(words);
}

Status setTagged(Anybuf &field, Bytes value, uint32_t tag) {
    KA_STEP_AS("------>KI_SetAttributeCharValue", replace(field, value));
    field.tag = tag;
    return KACERT_Ok;
}

Status setOnce(uint8_t &flag, Anybuf &field, Bytes value, const char *words) {
    if (flag != 0)
        return KA_FAIL(KACERT_AttributeAlreadySet, words);
    KA_PASS(setTagged(field, value, field.tag));
    flag = 1;
    return KACERT_Ok;
}

Status setDerName(Anybuf &field, Bytes value) {
    if (field.data != nullptr && field.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "======>KI_SetAttributeCharValue");
    return setTagged(field, value, field.tag);
}

} // namespace karil
