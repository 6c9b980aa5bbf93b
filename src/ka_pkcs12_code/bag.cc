#include "bag.h"

namespace karil {

Status checkOctets(const uint8_t *value, int32_t length, int32_t shortest) {
    KA_PASS(checkPointers({value}));
    return length >= shortest ? KACERT_Ok : KA_FAIL(KACERT_InvalidParamErr, "------------>KACERT_InvalidParamErr");
}

Status checkHeader(const Element &element) {
    Bytes content;
    KA_STEP_AS("------------>KAsn1_GetCertLength", afterHeader(element.bytes, content));
    return KACERT_Ok;
}

} // namespace karil
