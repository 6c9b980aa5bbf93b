#include "bag.h"

namespace karil {

Status checkOctets(const uint8_t *value, int32_t length, int32_t shortest) {
    KA_PASS(checkPointers({value}));
    return length >= shortest ? KACERT_Ok : KA_FAIL(KACERT_InvalidParamErr, "------------>KACERT_InvalidParamErr");
}

Status takeExact(const uint8_t *der, int32_t length, Element &out) {
    out = {NormalSequence, octetsOf(der, length < 0 ? 0 : length)};
    Bytes content;
    KA_STEP_AS("------------>KAsn1_GetCertLength", afterHeader(out.bytes, content));
    return KACERT_Ok;
}

} // namespace karil
