#include "attribute.h"

namespace karil {

Status checkValue(const void *ctx, const uint8_t *value, int32_t length, const Refusals &refusals) {
    if (length < refusals.shortest)
        return KA_FAIL(refusals.length, "------>KACERT_InvalidLengthErr");
    KA_PASS(checkPointers({ctx}, refusals.pointer));
    return length > 0 ? checkPointers({value}, refusals.pointer) : KACERT_Ok;
}

Status checkPair(const void *ctx, const uint8_t *oid, int32_t oidLength, const uint8_t *value, int32_t valueLength,
                 Status refusal) {
    if (oidLength < 1 || valueLength < 1)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    return checkPointers({ctx, oid, value}, refusal);
}

Status refuseId(Status status, const char *words) {
    return KA_FAIL(status, words);
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
