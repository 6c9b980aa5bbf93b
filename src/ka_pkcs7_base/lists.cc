// What messages hold lists of: whole elements, digest algorithms, attributes.
#include "ka_pkcs7_base.h"

namespace karil {

template <> inline void clearNode(DigestAlgorithmNode &node) {
    freeData(node.oid);
}
template <> inline void clearNode(AttributeRecord &node) {
    freeData(node.oid);
    freeData(node.value);
}

namespace {

Status appendDigestAlgorithm(DigestAlgorithmList list, const Element &oid, uint32_t id) {
    NodePtr<DigestAlgorithmNode> node;
    KA_PASS(createNode(node));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(node->oid, oid));
    node->id = id;
    appendMarked<&DigestAlgorithmNode::next>(list.first, list.marks, node.release());
    ++list.count;
    return KACERT_Ok;
}

void appendAttribute(AttributeList list, NodePtr<AttributeRecord> node) {
    appendMarked<&AttributeRecord::next>(list.head, list.marks, node.release());
    ++list.head->count;
}

// Attribute ::= SEQUENCE { type OBJECT IDENTIFIER, values SET OF ANY }, of which the first value is taken
Status readAttribute(const Element &element, AttributeList list) {
    NodePtr<AttributeRecord> node;
    KA_PASS(createNode(node));
    Level fields;
    Element type;
    KA_PASS(readTyped(element, type, fields, KACERT_InvalidItemErr));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(node->oid, type));
    if (fields.empty())
        return KA_FAIL(KACERT_InvalidItemErr, "------>KAsn1_ReadSet");
    Level values;
    KA_STEP_AS("------>KAsn1_ReadSet", readSet(fields.take(), values));
    if (!values.empty())
        KA_STEP_AS("------>KI_CopyAnybuf", store(node->value, values.take()));
    appendAttribute(list, std::move(node));
    return KACERT_Ok;
}

Status readChain(const Anybuf *chain, AttributeList list) {
    for (const Anybuf *node = chain; node != nullptr; node = node->next) {
        KA_PASS(checkArguments({node->data}));
        KA_PASS(readAttribute(elementOf(*node), list));
    }
    return KACERT_Ok;
}

Status readContent(const Implicit &set, AttributeList list) {
    if (!set.constructed)
        return readAttribute(set.content, list);
    for (Level level = set.level; !level.empty();)
        KA_PASS(readAttribute(level.take(), list));
    return KACERT_Ok;
}

Status decodeAttributes(const Anybuf *chain, AttributeRecord **head) {
    KA_PASS(checkArguments({head}));
    AttributeRecord *first = nullptr;
    ListMarks marks = {};
    const AttributeList list = {first, marks};
    if (const Status status = readChain(chain, list); status != KACERT_Ok) {
        clearAttributes(list);
        return status;
    }
    *head = first;
    return KACERT_Ok;
}

Status encodeAttributes(const AttributeRecord *head, Anybuf **out) {
    KA_PASS(checkArguments({out}));
    Writer set;
    writeAttributes(set, TagSet, head);
    KA_STEP_AS("------>KAsn1_WriteSet", set.moveTo(out));
    return KACERT_Ok;
}

} // namespace

Status addElement(ElementList list, const Element &element) {
    Anybuf *record = nullptr;
    KA_STEP(KAsn1_Low_CreateAnyBuf(&record));
    AnybufPtr node(record);
    KA_STEP_AS("------>KI_CopyAnybuf", store(*node, element));
    appendMarked<&Anybuf::next>(list.first, list.marks, node.release());
    ++list.count;
    return KACERT_Ok;
}

Status addElements(ElementList list, Level elements) {
    while (!elements.empty())
        KA_PASS(addElement(list, elements.take()));
    return KACERT_Ok;
}

const Anybuf *elementAt(ElementList list, int32_t position) {
    return nodeAt<&Anybuf::next>(list.first, list.marks, position);
}

void clearElements(ElementList list) {
    KI_FreeAnybuf(list.first);
    list.first = nullptr;
    list.count = 0;
    list.marks = {};
}

uint64_t sizeOfElements(const Anybuf *first) {
    uint64_t size = 0;
    for (const Anybuf *node = first; node != nullptr; node = node->next)
        size += node->length;
    return size;
}

void writeElements(Writer &out, uint8_t tag, const Anybuf *first) {
    const Construct list(out, tag, sizeOfElements(first));
    for (const Anybuf *node = first; node != nullptr; node = node->next)
        out.octets(bytesOf(*node));
}

Status addDigestAlgorithm(DigestAlgorithmList list, Bytes oid) {
    return appendDigestAlgorithm(list, {TagObjectId, oid}, 1);
}

const DigestAlgorithmNode *digestAlgorithmAt(DigestAlgorithmList list, int32_t position) {
    return nodeAt<&DigestAlgorithmNode::next>(list.first, list.marks, position);
}

void clearDigestAlgorithms(DigestAlgorithmList list) {
    freeList(list.first);
    list.count = 0;
    list.marks = {};
}

void writeDigestAlgorithms(Writer &out, const DigestAlgorithmNode *first) {
    const Construct set(out, TagSet);
    for (const DigestAlgorithmNode *node = first; node != nullptr; node = node->next)
        writeAlgorithm(out, bytesOf(node->oid));
}

Status readDigestAlgorithms(const Element &set, DigestAlgorithmList list, Status missing) {
    Level algorithms;
    KA_STEP_AS("------>KAsn1_ReadSet", readSet(set, algorithms));
    while (!algorithms.empty()) {
        Level fields;
        Element oid;
        KA_PASS(readTyped(algorithms.take(), oid, fields, missing));
        KA_PASS(appendDigestAlgorithm(list, oid, 0));
    }
    return KACERT_Ok;
}

void writeAttributes(Writer &out, uint8_t tag, const AttributeRecord *head) {
    const Construct list(out, tag);
    for (const AttributeRecord *node = head; node != nullptr; node = node->next) {
        const Construct attribute(out, TagSequence);
        out.objectId(bytesOf(node->oid));
        const Construct values(out, TagSet, node->value.length);
        out.octets(bytesOf(node->value));
    }
}

Status addAttribute(AttributeList list, int32_t kind, Bytes oid, Bytes value) {
    NodePtr<AttributeRecord> node;
    uint8_t *octets = nullptr;
    KA_PASS(createNode(node, uint64_t{oid.size()} + value.size(), octets));
    node->oid.tag = TagObjectId;
    octets = placePart(node->oid, oid, octets);
    placePart(node->value, value, octets);
    node->kind = kind;
    appendAttribute(list, std::move(node));
    return KACERT_Ok;
}

Status readAttributes(const Implicit &set, AttributeList list) {
    const Status status = readContent(set, list);
    if (status != KACERT_Ok)
        clearAttributes(list);
    return status;
}

void moveAttributes(AttributeList from, AttributeList to) {
    if (from.head == nullptr)
        return;
    const uint32_t count = from.head->count;
    if (to.head != nullptr)
        from.head->count = 0;
    appendMarked<&AttributeRecord::next>(to.head, to.marks, from.head);
    to.marks.last = from.marks.last;
    if (to.head != from.head)
        to.head->count += count;
    from.head = nullptr;
    from.marks = {};
}

void clearAttributes(AttributeList list) {
    freeList(list.head);
    list.marks = {};
}

} // namespace karil

using namespace karil;

int32_t KI_PKCS7_EncodeAttributes(const AttributeRecord *head, Anybuf **out) {
    return KA_FRAMED("KI_PKCS7_EncodeAttributes", encodeAttributes(head, out));
}

int32_t KI_PKCS7_DecodeAttributes(const Anybuf *chain, AttributeRecord **head) {
    return KA_FRAMED("KI_PKCS7_DecodeAttributes", decodeAttributes(chain, head));
}
