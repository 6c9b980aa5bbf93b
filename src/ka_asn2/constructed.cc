#include "ka_asn2.h"

#include <string.h>

using namespace karil;

namespace {

Status writeConstructed(Tag tag, const Anybuf *first, Anybuf **out) {
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    uint64_t size = 0;
    for (const Anybuf *node = first; node != nullptr; node = node->next)
        size += node->length;
    Writer whole(0);
    uint8_t *position = whole.area(tag, size);
    KA_STEP_AS("------>KASN1_LOW_CREATEUINT8", whole.status());
    for (const Anybuf *node = first; node != nullptr; node = node->next) {
        if (node->data == nullptr && node->length > 0)
            return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
        if (node->length > 0)
            memcpy(position, node->data, node->length);
        position += node->length;
    }
    KA_STEP_AS("------>KASN1_LOW_CREATEUINT8", whole.moveTo(out));
    return KACERT_Ok;
}

// The elements of a level as heap nodes, linked both ways.
Status copyLevel(Level level, Anybuf **first) {
    Chain chain;
    Anybuf *last = nullptr;
    while (!level.empty()) {
        Anybuf **slot = chain.slot();
        KA_STEP_AS("------>KASN1_LOW_CREATEUINT8", newNode(level.take(), slot));
        (*slot)->prev = last;
        last = *slot;
    }
    chain.moveTo(first);
    return KACERT_Ok;
}

Status readLevel(const Anybuf *source, Status (*open)(const Element &, Level &), Anybuf **first) {
    if (source == nullptr || source->data == nullptr || first == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Level level;
    KA_PASS(open(elementOf(*source), level));
    return copyLevel(level, first);
}

// `content` under a context tag, without pad or unused-bits octet.
Status writeTagged(uint32_t tagOctet, Bytes content, Anybuf **out) {
    Writer element(0);
    element.element(static_cast<uint8_t>(tagOctet), content);
    KA_STEP_AS("------>KAsn1_Low_WriteTagAndLength", element.moveTo(out));
    return KACERT_Ok;
}

} // namespace

int32_t KAsn1_WriteSequence(const Anybuf *first, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteSequence", writeConstructed(TagSequence, first, out));
}

int32_t KAsn1_WriteSet(const Anybuf *first, Anybuf **out) {
    return KA_FRAMED("KAsn1_WriteSet", writeConstructed(TagSet, first, out));
}

int32_t KAsn1_ReadSequence(const Anybuf *source, Anybuf **first) {
    return KA_FRAMED("KAsn1_ReadSequence", readLevel(source, readSequence, first));
}

int32_t KAsn1_ReadSet(const Anybuf *source, Anybuf **first) {
    return KA_FRAMED("KAsn1_ReadSet", readLevel(source, readSet, first));
}

int32_t KAsn1_WriteExplicit(const Anybuf *source, uint32_t number, Anybuf **out) {
    KA_FRAME("KAsn1_WriteExplicit");
    if (source == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(writeTagged(number | 0xA0, bytesOf(*source), out));
    return KA_DONE();
}

int32_t KAsn1_ReadExplicit(const Anybuf *source, Anybuf **out, uint32_t *tag) {
    KA_FRAME("KAsn1_ReadExplicit");
    if (tag == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(KAsn1_ReadOctetString(source, out));
    *tag = (*out)->tag;
    return KA_DONE();
}

int32_t KAsn1_WriteImplicit(const Anybuf *source, uint32_t number, Anybuf **out) {
    KA_FRAME("KAsn1_WriteImplicit");
    if (source == nullptr || source->data == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Element value;
    KA_STEP_AS("------>KAsn1_Low_ReadTagAndLength", readValue(elementOf(*source), value));
    const bool constructed = source->tag == NormalSequence || source->tag == NormalSet;
    KA_PASS(writeTagged(number | (constructed ? 0xA0 : 0x80), value.bytes, out));
    return KA_DONE();
}

int32_t KAsn1_ReadImplicit(const Anybuf *source, Anybuf **first, uint32_t *number) {
    KA_FRAME("KAsn1_ReadImplicit");
    if (source == nullptr || source->data == nullptr || first == nullptr || number == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Implicit value;
    KA_PASS(readImplicit(elementOf(*source), value));
    if (value.constructed)
        KA_STEP_AS("------>KASN1_LOW_CREATEUINT8", copyLevel(value.level, first));
    else
        KA_STEP_AS("------>KASN1_LOW_CREATEUINT8", newNode(value.content, first));
    *number = value.number;
    return KA_DONE();
}

int32_t KI_GetNumberFromImpOrExplicit(const Anybuf *source, uint32_t *number) {
    KA_FRAME("KI_GetNumberFromImpOrExplicit");
    if (source == nullptr || number == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    if (source->data == nullptr || source->length == 0)
        return 1;
    *number = source->data[0] & 0x1Fu;
    return KA_DONE();
}
