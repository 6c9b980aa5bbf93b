// What OCSP functions refuse, store, take and hand out.
#include "ka_ocsp_base.h"

#include <stdio.h>

namespace karil {

Status refuseItem(const char *words) {
    return KA_FAIL(KACERT_InvalidItemErr, words);
}

Status checkItems(std::initializer_list<const void *> pointers, const char *words) {
    for (const void *pointer : pointers)
        if (pointer == nullptr)
            return refuseItem(words);
    return KACERT_Ok;
}

Status checkSource(const void *target, const Anybuf *source, const char *words) {
    KA_PASS(checkItems({target, source}, words));
    return checkItems({source->data}, words);
}

Status copySource(const void *target, const Anybuf *source, Scratch &copy, const char *words) {
    KA_PASS(checkSource(target, source, words));
    KA_STEP_AS("------------>KI_CopyAnybuf", KI_CopyAnybuf(&copy.record, source));
    return KACERT_Ok;
}

Status makeRecord(const void *out, uint32_t size, void *&record) {
    KA_PASS(checkItems({out}));
    record = KAPR_Malloc(KA_SOURCE, __LINE__, size);
    return record != nullptr ? KACERT_Ok : KA_FAIL(KACERT_MemoryErr, "------------>KAPR_Malloc");
}

void traceFailedRow(const char *setWords) {
    constexpr size_t Prefix = sizeof(KA_ARROW "Set ") - 1;
    char words[96];
    snprintf(words, sizeof words, KA_DASHES "%s Error", setWords + Prefix);
    KA_TRACE(words);
}

Status setOctets(Anybuf &field, Bytes value) {
    KA_STEP_AS("------------>KI_SetAttributeCharValue", replace(field, value));
    return KACERT_Ok;
}

Status setFlagged(uint8_t &flag, Anybuf &field, Bytes value) {
    KA_PASS(setOctets(field, value));
    flag = 1;
    return KACERT_Ok;
}

Status handOutWhole(const Writer &out, uint8_t *result, uint32_t *resultLength) {
    KA_STEP_AS("------------>KAsn1_WriteSequence", handOut(out, result, resultLength));
    return KACERT_Ok;
}

Status keepWhole(KeptOctets *&kept, const uint8_t *der, uint32_t length, Element &out) {
    KA_PASS(checkItems({der}));
    if (length == 0)
        return refuseItem();
    KA_STEP_AS("------------>KI_CopyAnybuf", keep(kept, {0, Bytes(der, length)}, out));
    return KACERT_Ok;
}

Status takeItem(Level &fields, Element &out, const char *words) {
    return takeField(fields, out, KACERT_InvalidItemErr, words);
}

Status readOid(const Element &element, AlgorithmRecord &out) {
    Element oid;
    KA_STEP_AS("------------>KAsn1_ReadObjectId", readValue(element, oid));
    KA_STEP_AS("------------>KI_CopyAlgorithm", store(out.oid, oid));
    return KACERT_Ok;
}

Status readOctets(const Element &element, Anybuf &out) {
    Element content;
    KA_STEP_AS("------------>KAsn1_ReadOctetString", readValue(element, content));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(out, content));
    return KACERT_Ok;
}

Status readOpened(const Element &element, Element &content) {
    KA_STEP_AS("------------>KAsn1_ReadExplicit", readValue(element, content));
    return KACERT_Ok;
}

Status readTimeAlike(const Element &element, CertTime &time) {
    LocalClock clock;
    KA_PASS(readEitherTime(element, TagGeneralizedTime, clock, time));
    time.generalizedValue = time.utcValue = secondsOf(time);
    return KACERT_Ok;
}

Status checkNoDerName(uint8_t hasDerName) {
    return hasDerName == 0 ? KACERT_Ok : KA_FAIL(KACERT_AttributeAlreadySet, "------------>The DN already exsist");
}

Status addName(NameRecord &head, uint32_t kind, Bytes value) {
    KA_STEP_AS("------------>KI_SetAttributeCharValue", appendName(head, kind, value));
    return KACERT_Ok;
}

Status setHook(KAHookFunc &hook, Anybuf &key, KAHookFunc value, const uint8_t *parameter, int32_t length,
               Status noMemory) {
    if (parameter == nullptr && length > 0)
        return refuseItem();
    if (storeHook(hook, key, value, parameter, length > 0 ? static_cast<uint32_t>(length) : 0) != KACERT_Ok)
        return KA_FAIL(noMemory, "------------>KI_SetAttributeCharValue Error");
    return KACERT_Ok;
}

namespace {

Status newElement(const Element &element, Anybuf *&node) {
    if (!element.isKept)
        return newNode(element, &node);
    KA_PASS(KAsn1_Low_CreateAnyBuf(&node));
    return store(*node, element);
}

} // namespace

Status addElement(Anybuf &head, ListMarks &marks, const Element &element) {
    Anybuf *node = nullptr;
    KA_STEP_AS("------------>KAPR_Malloc", newElement(element, node));
    node->prev = static_cast<Anybuf *>(marks.last);
    appendMarked<&Anybuf::next>(head.next, marks, node);
    return KACERT_Ok;
}

Status readElements(const Element &sequence, Anybuf &head, ListMarks &marks, uint32_t *count) {
    Level elements;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(sequence, elements));
    freeElements(head);
    marks = {};
    uint32_t taken = 0;
    Status status = KACERT_Ok;
    while (status == KACERT_Ok && !elements.empty()) {
        status = addElement(head, marks, elements.take());
        taken += status == KACERT_Ok ? 1 : 0;
    }
    if (count != nullptr)
        *count = taken;
    return status;
}

void writeElements(Writer &out, const Anybuf &head) {
    const Construct sequence(out, TagSequence);
    for (const Anybuf *node = head.next; node != nullptr; node = node->next)
        out.octets(bytesOf(*node));
}

void freeElements(Anybuf &head) {
    KI_FreeAnybuf(head.next);
    head.next = nullptr;
}

} // namespace karil
