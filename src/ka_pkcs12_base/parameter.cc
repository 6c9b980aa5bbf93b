// The parameters of password-based encryption.
#include "ka_pkcs12_base.h"

namespace karil {

namespace {

Status refuse() {
    return KA_FAIL(KACERT_InvalidParamErr, "------------>KACERT_InvalidParamErr");
}

Status encodeParameter(Bytes salt, uint32_t iterations, uint8_t *output, uint32_t *outputLength) {
    if (output == nullptr || outputLength == nullptr)
        return refuse();
    Writer parameter;
    writeParameter(parameter, salt, iterations);
    KA_STEP_AS("------------>KAsn1_WriteSequence", handOut(parameter, output, outputLength));
    return KACERT_Ok;
}

Status decodeParameter(uint8_t *salt, uint32_t *saltLength, uint32_t *iterations, const uint8_t *der, uint32_t length) {
    if (salt == nullptr || saltLength == nullptr || iterations == nullptr || der == nullptr)
        return refuse();
    if (length == 0)
        KA_STEP(KAsn1_GetCertLength(der, &length));
    Bytes rest(der, length);
    Element element;
    KA_STEP_AS("------------>KAsn1_GetCertLength",
               next(rest, element, KACERT_LengthNotEqualErr, "------------>KACERT_LengthNotEqualErr"));
    Bytes octets;
    uint32_t count = 0;
    KA_PASS(readParameter(element, octets, count));
    *saltLength = static_cast<uint32_t>(octets.size());
    *iterations = count;
    if (!octets.empty())
        memmove(salt, octets.data(), octets.size());
    return KACERT_Ok;
}

} // namespace

// PBEParameter ::= SEQUENCE { salt OCTET STRING, iterations INTEGER }
void writeParameter(Writer &out, Bytes salt, uint32_t iterations) {
    const Construct parameter(out, TagSequence, salt.size() + 16);
    out.octetString(salt);
    out.integer(iterations);
}

Status readParameter(const Element &element, Bytes &salt, uint32_t &iterations) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element octets;
    Element count;
    KA_PASS(takeField(fields, octets, KACERT_InvalidParamErr, "------------>KAsn1_ReadOctetString"));
    KA_STEP_AS("------------>KAsn1_ReadOctetString", readValue(octets, octets));
    KA_PASS(takeField(fields, count, KACERT_InvalidParamErr, "------------>KAsn1_ReadInteger"));
    KA_STEP_AS("------------>KAsn1_ReadInteger", readInteger(count, iterations));
    salt = octets.bytes;
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_EncodeParameter(const uint8_t *salt, uint32_t saltLength, uint32_t iterations, uint8_t *output,
                                  uint32_t *outputLength) {
    return KA_FRAMED("KA_PKCS12_EncodeParameter",
                     encodeParameter({salt, saltLength}, iterations, output, outputLength));
}

int32_t KA_PKCS12_DecodeParameter(uint8_t *salt, uint32_t *saltLength, uint32_t *iterations, const uint8_t *der,
                                  uint32_t length) {
    return KA_FRAMED("KA_PKCS12_DecodeParameter", decodeParameter(salt, saltLength, iterations, der, length));
}
