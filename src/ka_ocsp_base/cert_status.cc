#include "ka_ocsp_base.h"

using namespace karil;

namespace {

// [1] { time, reason EXPLICIT OPTIONAL }, with or without a SEQUENCE around the two
Status readRevoked(const Element &element, OcspCertStatus &status) {
    Implicit revoked;
    KA_STEP_AS("------------>KAsn1_ReadExplicit", readImplicit(element, revoked));
    Level fields = revoked.level;
    Element field;
    KA_PASS(takeItem(fields, field));
    if (field.tag == NormalSequence) {
        KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(field, fields));
        KA_PASS(takeItem(fields, field));
    }
    LocalClock clock;
    KA_STEP_AS("------------>KAsn1_ReadUtcTime", readEitherTime(field, TagGeneralizedTime, clock, status.revokedAt));
    status.isRevoked = 1;
    if (fields.empty())
        return KACERT_Ok;
    Element reason;
    KA_PASS(readOpened(fields.take(), reason));
    Writer enumerated(0);
    enumerated.element(TagEnumerated, reason.bytes);
    KA_STEP_AS("------------>KAsn1_WriteEnumerated", enumerated.moveTo(status.reason));
    status.hasReason = 1;
    return KACERT_Ok;
}

// [2] { OCTET STRING }
Status readUnknown(const Element &element, OcspCertStatus &status) {
    Element content;
    KA_PASS(readOpened(element, content));
    if (!content.present())
        return refuseItem();
    KA_PASS(readOctets(content, status.information));
    status.isUnknown = 1;
    return KACERT_Ok;
}

// SEQUENCE { CHOICE { good [0], revoked [1], unknown [2] } }
Status readStatus(const Element &source, OcspCertStatus &status) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(source, fields));
    Element choice;
    KA_PASS(takeItem(fields, choice));
    switch (choice.bytes[0] & 0x1F) {
    case 0:
        status.isGood = 1;
        return KACERT_Ok;
    case 1:
        return readRevoked(choice, status);
    case 2:
        return readUnknown(choice, status);
    default:
        return KACERT_Ok;
    }
}

} // namespace

int32_t KI_EncodeCertStatus(void) {
    return refuseItem("------------>The input is null");
}

int32_t KI_DecodeCertStatus(OcspCertStatus *status, const Anybuf *source) {
    KA_FRAME("KI_DecodeCertStatus");
    KA_PASS(checkSource(status, source));
    KA_PASS(readStatus(elementOf(*source), *status));
    return KA_DONE();
}
