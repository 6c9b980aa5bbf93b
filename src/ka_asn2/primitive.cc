#include "ka_asn2.h"

#include <string.h>

using namespace karil;

namespace {

// Writes one element and hands it out.
template <class Write> Status writeOne(Anybuf **out, uint32_t unusedBits, const Write &write) {
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Writer element(0);
    write(element);
    return element.moveTo(out, unusedBits);
}

Status writeString(const Anybuf *source, Tag tag, Anybuf **out) {
    if (source == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_STEP_AS("------>KAsn1_Low_WriteTagAndLength",
               writeOne(out, 0, [&](Writer &element) { element.element(tag, bytesOf(*source)); }));
    return KACERT_Ok;
}

Status writeNumber(const Anybuf *source, Anybuf **out) {
    if (source == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_STEP_AS("------>KAsn1_Low_WriteTagAndLength",
               writeOne(out, 0, [&](Writer &element) { element.number(bytesOf(*source)); }));
    return KACERT_Ok;
}

Status writeBits(const Anybuf *source, Anybuf **out) {
    if (source == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const uint32_t unusedBits = source->unusedBits;
    KA_STEP_AS("------>KAsn1_Low_WriteTagAndLength",
               writeOne(out, unusedBits, [&](Writer &element) { element.bitString(bytesOf(*source), unusedBits); }));
    return KACERT_Ok;
}

Status readString(const Anybuf *source, Anybuf **out) {
    if (source == nullptr || source->data == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const Element element = elementOf(*source);
    Element value;
    KA_STEP_AS("------>KAsn1_Low_ReadTagAndLength", readValue(element, value));
    Anybuf *node = nullptr;
    KA_STEP_AS("------>KAsn1_Low_ReadTagAndLength", newNode(value, &node));
    node->unusedBits = source->tag == TagBitString ? source->unusedBits : 0;
    *out = node;
    return KACERT_Ok;
}

} // namespace

int32_t KAsn1_WriteIntegerArray(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteIntegerArray", writeNumber(source, out));
}

int32_t KAsn1_WriteBitString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteBitString", writeBits(source, out));
}

int32_t KAsn1_WriteOctetString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteOctetString", writeString(source, TagOctetString, out));
}

int32_t KAsn1_WriteCharString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteCharString", writeString(source, TagPrintableString, out));
}

int32_t KAsn1_WriteBmpString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteBmpString", writeString(source, TagBmpString, out));
}

int32_t KAsn1_WriteUTF8String(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteUTF8String", writeString(source, TagUtf8String, out));
}

int32_t KAsn1_WriteEnumerated(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteEnumerated", writeString(source, TagEnumerated, out));
}

int32_t KAsn1_WriteIa5String(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteIa5String", writeString(source, TagIa5String, out));
}

int32_t KAsn1_ReadOctetString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_ReadOctetString", readString(source, out));
}

int32_t KAsn1_ReadBitString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_ReadBitString", readString(source, out));
}

int32_t KAsn1_ReadCharString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_ReadCharString", readString(source, out));
}

int32_t KAsn1_ReadBmpString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_ReadBmpString", readString(source, out));
}

int32_t KAsn1_ReadUTF8String(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_ReadUTF8String", readString(source, out));
}

int32_t KAsn1_ReadPrintableString(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_ReadPrintableString", readString(source, out));
}

int32_t KAsn1_ReadEnumerated(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_ReadEnumerated", readString(source, out));
}

int32_t KAsn1_ReadIa5String(const Anybuf *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_ReadIa5String", readString(source, out));
}

int32_t KAsn1_WritePrintableString(const Anybuf *source, Anybuf **out) {
    KA_FRAME("KAsn1_WritePrintableString");
    if (source == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (source->tag == TagBmpString)
        KA_STEP(KAsn1_WriteBmpString(source, out));
    else
        KA_STEP(KAsn1_WriteCharString(source, out));
    return KA_DONE();
}

int32_t KAsn1_WriteInteger(uint32_t value, Anybuf **out) {
    KA_FRAME("KAsn1_WriteInteger");
    KA_STEP_AS("------>KAsn1_Low_IntToChar", writeOne(out, 0, [&](Writer &element) { element.integer(value); }));
    return KA_DONE();
}

int32_t KAsn1_WriteBoolean(const uint8_t *value, Anybuf **out) {
    KA_FRAME("KAsn1_WriteBoolean");
    if (value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(writeOne(out, 0, [&](Writer &element) { element.boolean(*value != 0); }));
    return KA_DONE();
}

int32_t KAsn1_WriteNull(Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteNull", writeOne(out, 0, [](Writer &element) { element.null(); }));
}

int32_t KAsn1_WriteObjectId(const AlgorithmRecord *source, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteObjectId", writeString(source != nullptr ? &source->oid : nullptr, TagObjectId, out));
}

int32_t KAsn1_ReadIntegerArray(const Anybuf *source, Anybuf *out) {
    KA_FRAME("KAsn1_ReadIntegerArray");
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Anybuf *node = nullptr;
    KA_PASS(readString(source, &node));
    const AnybufPtr owner(node);
    KA_STEP(KI_CopyAnybuf(out, node)); // so that a number without octets has a block, as its writer asks for
    return KA_DONE();
}

int32_t KAsn1_ReadInteger(const Anybuf *source, uint32_t *value) {
    KA_FRAME("KAsn1_ReadInteger");
    if (source == nullptr || source->data == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(readInteger(elementOf(*source), *value));
    return KA_DONE();
}

int32_t KAsn1_ReadBoolean(const Anybuf *source, uint8_t *value) {
    KA_FRAME("KAsn1_ReadBoolean");
    if (source == nullptr || source->data == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(readBoolean(elementOf(*source), *value));
    return KA_DONE();
}

int32_t KAsn1_ReadObjectId(const Anybuf *source, AlgorithmRecord **out) {
    KA_FRAME("KAsn1_ReadObjectId");
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Owned<AlgorithmRecord> record(KA_CREATE(AlgorithmRecord));
    if (record == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    Anybuf *node = nullptr;
    KA_PASS(readString(source, &node));
    const Owned<Anybuf> shell(node);
    record->oid = *shell;
    *out = record.release();
    return KA_DONE();
}
