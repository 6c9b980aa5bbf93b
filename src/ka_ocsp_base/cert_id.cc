#include "ka_ocsp_base.h"

namespace karil {

namespace {

// The hook's digest of `octets` is kept, and written.
Status writeHash(Writer &out, const OcspCertId &id, const Anybuf &octets, Anybuf &digest) {
    HookArea area;
    KA_PASS(callWithCopy(hookOf(id.hashFunc, id.hashParameter), bytesOf(octets), DigestBound, area,
                         "------------>Hash Function is error "));
    KA_PASS(setOctets(digest, area.octets()));
    out.octetString(bytesOf(digest));
    return out.status();
}

} // namespace

Status writeCertId(Writer &out, OcspCertId &id) {
    if (id.hashFunc == nullptr || !isGiven(id.issuerName) || !isGiven(id.issuerKey))
        return refuseItem(ItemMissing);
    const Construct identity(out, TagSequence);
    out.objectId(bytesOf(id.hashAlgorithm.oid));
    KA_PASS(out.status());
    KA_PASS(writeHash(out, id, id.issuerName, id.hashedName));
    KA_PASS(writeHash(out, id, id.issuerKey, id.hashedKey));
    KA_STEP_AS("------------>KAsn1_WriteIntegerArray", out.number(bytesOf(id.serialNumber)));
    return KACERT_Ok;
}

Status readCertId(const Element &element, OcspCertId &id, uint8_t &isWhole) {
    KA_STEP_AS("------------>KI_CopyAnybuf", store(id.whole, element));
    isWhole = 1;
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeItem(fields, field, "------------>The CertID is Invaild"));
    KA_PASS(readOid(field, id.hashAlgorithm));
    KA_PASS(takeItem(fields, field, "------------>The hashed Issuer name is null"));
    KA_PASS(readOctets(field, id.hashedName));
    KA_PASS(takeItem(fields, field, "------------>The hashed Issuer key is null"));
    KA_PASS(readOctets(field, id.hashedKey));
    KA_PASS(takeItem(fields, field, "------------>The hashed Issuer serial nummber is null"));
    Element serialNumber;
    KA_STEP_AS("------------>KAsn1_ReadIntegerArray", readValue(field, serialNumber));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(id.serialNumber, serialNumber));
    return KACERT_Ok;
}

void clearCertId(OcspCertId &id) {
    for (Anybuf *field : {&id.issuerName, &id.issuerKey, &id.hashAlgorithm.oid, &id.parameter, &id.hashedName,
                          &id.hashedKey, &id.serialNumber, &id.whole})
        freeData(*field);
    clearSecret(id.hashParameter);
}

} // namespace karil
