// Elements as heap nodes, for encoders that join them.
#include "ka_asn2.h"

namespace karil {

Status newElement(uint32_t tagOctet, uint64_t size, Anybuf **out, uint8_t **position) {
    Writer element(0);
    *position = element.area(static_cast<uint8_t>(tagOctet), size);
    return element.moveTo(out);
}

uint64_t elementSize(uint64_t content) {
    return content > UINT32_MAX ? content : 1 + KAsn1_Low_Count_LengthOfSize(static_cast<uint32_t>(content)) + content;
}

uint8_t *putHeader(uint8_t *at, uint8_t tag, uint64_t content) {
    const uint32_t octets = KAsn1_Low_Count_LengthOfSize(static_cast<uint32_t>(content));
    *at++ = tag;
    if (octets == 1)
        *at++ = static_cast<uint8_t>(content);
    else
        *at++ = static_cast<uint8_t>(0x80 | (octets - 1));
    for (uint32_t shift = 8 * (octets - 1); shift > 0; shift -= 8)
        *at++ = static_cast<uint8_t>(content >> (shift - 8));
    return at;
}

Status writeOid(Bytes oid, Anybuf **out) {
    const AlgorithmRecord record = borrowOid(oid);
    return KAsn1_WriteObjectId(&record, out);
}

Status writeAlgorithm(const AlgorithmRecord &algorithm, Anybuf **out) {
    Chain fields;
    KA_STEP(KAsn1_WriteObjectId(&algorithm, fields.slot()));
    KA_STEP(KAsn1_WriteNull(fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

} // namespace karil
