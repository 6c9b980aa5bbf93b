#include "encode.h"

namespace karil {

Status keepEncoded(Anybuf &encoded, const Anybuf &object) {
    KI_ClearAnybuf(&encoded);
    KA_STEP(KI_CopyAnybuf(&encoded, &object));
    return KACERT_Ok;
}

Status writeName(const NameRecord &head, const Anybuf &der, Anybuf **out) {
    const bool hasDer = der.data != nullptr && der.length > 0;
    if (hasDer == (head.next != nullptr))
        return KA_FAIL(KACERT_InvalidParamErr, "------>KI_EncodeIssuerSuject");
    if (hasDer)
        KA_STEP_AS("------>KI_CopyAnybuf", newNode(elementOf(der), out));
    else
        KA_STEP(KI_EncodeIssuerSuject(&head, out));
    return KACERT_Ok;
}

Status writePublicKey(const AlgorithmRecord &algorithm, const Anybuf &key, Anybuf **out) {
    Chain fields;
    KA_PASS(writeAlgorithm(algorithm, fields.slot()));
    KA_STEP(KAsn1_WriteBitString(&key, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

Status writeSigned(Chain &parts, const AlgorithmRecord &algorithm, const Anybuf &signature, Anybuf **out) {
    KA_PASS(writeAlgorithm(algorithm, parts.slot()));
    KA_STEP(KAsn1_WriteBitString(&signature, parts.slot()));
    KA_STEP(KAsn1_WriteSequence(parts.head(), out));
    return KACERT_Ok;
}

Status writeTime(bool isUtc, int32_t seconds, Anybuf **out) {
    if (isUtc)
        KA_STEP(KAsn1_WriteUtcTime(&seconds, out));
    else
        KA_STEP(KAsn1_WriteGeneralizedTime(&seconds, out));
    return KACERT_Ok;
}

Status writeExtensionHead(Bytes oid, uint8_t critical, Chain &fields) {
    KA_STEP_AS("------>KAsn1_WriteObjectId", writeOid(oid, fields.slot()));
    if (critical != 0)
        KA_STEP(KAsn1_WriteBoolean(&critical, fields.slot()));
    return KACERT_Ok;
}

Status writeExtension(Bytes oid, uint8_t critical, const Anybuf &value, Anybuf **out) {
    Chain fields;
    KA_PASS(writeExtensionHead(oid, critical, fields));
    KA_STEP(KAsn1_WriteOctetString(&value, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

Status writeExtensionList(const Chain &extensions, uint32_t number, Anybuf **out) {
    Chain sequence;
    KA_STEP(KAsn1_WriteSequence(extensions.head(), sequence.slot()));
    KA_STEP(KAsn1_WriteExplicit(sequence.head(), number, out));
    return KACERT_Ok;
}

Status writeAuthorityKeyId(const AuthorityKeyIdExtension &field, Anybuf **out) {
    Chain string;
    KA_STEP(KAsn1_WriteOctetString(&field.keyId, string.slot()));
    Chain keyId;
    KA_STEP(KAsn1_WriteImplicit(string.head(), 0, keyId.slot()));
    KA_STEP(KAsn1_WriteSequence(keyId.head(), out));
    return KACERT_Ok;
}

Status writeFullName(const Anybuf &uri, Anybuf **out) {
    Chain name;
    KA_PASS(writeTaggedIa5(uri, FormUri, name.slot()));
    Chain fullName;
    KA_STEP(KAsn1_WriteExplicit(name.head(), 0, fullName.slot()));
    KA_STEP(KAsn1_WriteExplicit(fullName.head(), 0, out));
    return KACERT_Ok;
}

} // namespace karil
