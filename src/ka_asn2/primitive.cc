#include "ka_asn2.h"

#include <string.h>

using namespace karil;

namespace {

Status writeContent(const Anybuf *source, Tag tag, Anybuf **out) {
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Anybuf *node = nullptr;
    uint8_t *position = nullptr;
    KA_STEP(KAsn1_Low_WriteTagAndLength(source, tag, &node, &position));
    if (source->length > 0)
        memcpy(position, source->data, source->length);
    *out = node;
    return KACERT_Ok;
}

// An element whose content is at hand, without the rules that WriteTagAndLength has for its tag.
Status writePlain(Tag tag, Bytes content, Anybuf **out) {
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Anybuf *node = nullptr;
    uint8_t *position = nullptr;
    KA_STEP_AS("------>KAPR_Malloc", newElement(tag, content.size(), &node, &position));
    if (!content.empty())
        memcpy(position, content.data(), content.size());
    *out = node;
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

namespace karil {

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

#define KA_WRITER(NAME, TAG)                                                                                           \
    int32_t NAME(const Anybuf *source, Anybuf **out) {                                                                 \
        return KA_FRAMED(#NAME, writeContent(source, TAG, out));                                                       \
    }

KA_WRITER(KAsn1_WriteIntegerArray, TagInteger)
KA_WRITER(KAsn1_WriteOctetString, TagOctetString)
KA_WRITER(KAsn1_WriteBitString, TagBitString)
KA_WRITER(KAsn1_WriteCharString, TagPrintableString)
KA_WRITER(KAsn1_WriteBmpString, TagBmpString)
KA_WRITER(KAsn1_WriteUTF8String, TagUtf8String)
KA_WRITER(KAsn1_WriteEnumerated, TagEnumerated)
KA_WRITER(KAsn1_WriteIa5String, TagIa5String)

#define KA_READER(NAME)                                                                                                \
    int32_t NAME(const Anybuf *source, Anybuf **out) {                                                                 \
        return KA_FRAMED(#NAME, readString(source, out));                                                              \
    }

KA_READER(KAsn1_ReadOctetString)
KA_READER(KAsn1_ReadBitString)
KA_READER(KAsn1_ReadCharString)
KA_READER(KAsn1_ReadBmpString)
KA_READER(KAsn1_ReadUTF8String)
KA_READER(KAsn1_ReadPrintableString)
KA_READER(KAsn1_ReadEnumerated)
KA_READER(KAsn1_ReadIa5String)

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
    uint8_t octets[5];
    const uint32_t size = integerOctets(value, octets);
    KA_STEP_AS("------>KAsn1_Low_IntToChar", writePlain(TagInteger, Bytes(octets, size), out));
    return KA_DONE();
}

int32_t KAsn1_WriteBoolean(const uint8_t *value, Anybuf **out) {
    KA_FRAME("KAsn1_WriteBoolean");
    if (value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const uint8_t octet = *value != 0 ? 0xFF : 0;
    KA_STEP_AS("------>KAPR_Malloc", writePlain(TagBoolean, Bytes(&octet, 1), out));
    return KA_DONE();
}

int32_t KAsn1_WriteNull(Anybuf **out) {
    KA_FRAME("KAsn1_WriteNull");
    KA_STEP_AS("------>KAPR_Malloc", writePlain(TagNull, Bytes{}, out));
    return KA_DONE();
}

int32_t KAsn1_WriteObjectId(const AlgorithmRecord *source, Anybuf **out) {
    KA_FRAME("KAsn1_WriteObjectId");
    if (source == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(writeContent(&source->oid, TagObjectId, out));
    return KA_DONE();
}

int32_t KAsn1_ReadIntegerArray(const Anybuf *source, Anybuf *out) {
    KA_FRAME("KAsn1_ReadIntegerArray");
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Anybuf *node = nullptr;
    KA_PASS(readString(source, &node));
    const Owned<Anybuf> shell(node);
    *out = *shell;
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
