// What signers, recipients and contents have in common: algorithms, issuer and serial number, shared contents.
#include "ka_pkcs7_base.h"

// The octets follow.
struct SharedOctets {
    uint32_t owners;
    uint32_t size;
    bool isSecret;
};

namespace karil {

Status readAlgorithmOid(const Element &element, Anybuf &oid, Status missing, const char *words) {
    Level fields;
    Element content;
    KA_PASS(readTyped(element, content, fields, missing, words));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(oid, content));
    return KACERT_Ok;
}

Status writeIssuerAndSerial(Writer &out, const NameRecord &issuer, const Anybuf *dn, const Anybuf &serial) {
    const Construct both(out, TagSequence);
    if (dn != nullptr)
        out.octets(bytesOf(*dn));
    else
        KA_STEP_AS("------>KI_EncodeIssuerSuject", encodeName(out, issuer));
    if (serial.length == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>KAsn1_WriteIntegerArray");
    KA_STEP_AS("------>KAsn1_WriteIntegerArray", out.number(bytesOf(serial)));
    return KACERT_Ok;
}

Status readIssuerAndSerial(const Element &element, NameRecord &issuer, Anybuf &serial, Status missing) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeField(fields, field, missing, "------>KI_DecodeIssuerSubject"));
    KA_STEP_AS("------>KI_DecodeIssuerSubject", decodeName(field, issuer));
    KA_PASS(takeField(fields, field, missing, "------>KAsn1_ReadIntegerArray"));
    Element number;
    KA_STEP_AS("------>KAsn1_ReadIntegerArray", readValue(field, number));
    KA_STEP_AS("------>KI_CopyAnybuf", store(serial, number));
    return KACERT_Ok;
}

Status replaceSecret(Anybuf &record, Bytes value) {
    Anybuf fresh = {};
    KA_STEP(KI_SetAttributeCharValue(&fresh, value.data(), static_cast<uint32_t>(value.size())));
    fresh.tag = record.tag;
    clearSecret(record);
    record = fresh;
    return KACERT_Ok;
}

Status setIssuerDn(Anybuf *&dn, int32_t &isSet, Bytes value) {
    Anybuf *record = nullptr;
    KA_STEP(KAsn1_Low_CreateAnyBuf(&record));
    AnybufPtr fresh(record);
    KA_STEP_AS("------>KI_SetAttributeCharValue", replace(*fresh, value));
    KI_FreeAnybuf(dn);
    dn = fresh.release();
    isSet = 1;
    return KACERT_Ok;
}

Status takeOver(const void *&owner, const void *message) {
    if (owner != nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr");
    owner = message;
    return KACERT_Ok;
}

Status shareContent(Bytes value, bool isSecret, SharedContent &out) {
    auto *block = KA_CREATE_WITH(value.size(), SharedOctets);
    if (block == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    auto *octets = reinterpret_cast<uint8_t *>(block + 1);
    if (!value.empty())
        memcpy(octets, value.data(), value.size());
    *block = {1, static_cast<uint32_t>(value.size()), isSecret};
    out = {block, {octets, value.size()}};
    return KACERT_Ok;
}

SharedOctets *holdContent(SharedOctets *block) {
    if (block != nullptr)
        ++block->owners;
    return block;
}

void releaseContent(SharedOctets *&block) {
    if (block != nullptr && --block->owners == 0) {
        if (block->isSecret)
            wipe(block + 1, block->size);
        KAPR_Free(block);
    }
    block = nullptr;
}

} // namespace karil
