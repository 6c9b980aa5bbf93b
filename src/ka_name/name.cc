#include "ka_name.h"

#include <string.h>

namespace karil {

namespace {

// The characters of PrintableString (X.680 41.4).
bool isPrintable(uint8_t c) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
        return true;
    return c != 0 && c < 128 && strchr(" '()+,-./:=?", c) != nullptr;
}

bool isPrintable(Bytes text) {
    for (const uint8_t c : text)
        if (!isPrintable(c))
            return false;
    return true;
}

// A printable value, or any other as BMP text.
Status writeText(Writer &out, NameRecord &record, bool isPrintableKind) {
    if (isPrintableKind || isPrintable(bytesOf(record.value))) {
        record.value.tag = TagPrintableString;
        out.element(TagPrintableString, bytesOf(record.value));
        return KACERT_Ok;
    }
    Converted bmp;
    KA_STEP_AS("------>KI_Chinese2BmpString", bmp.from(KI_Chinese2BmpString, bytesOf(record.value)));
    out.element(TagBmpString, bmp.bytes());
    return KACERT_Ok;
}

Status writeAttributeValue(Writer &out, NameRecord &record) {
    if (record.value.data == nullptr && record.value.length > 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const NameAttribute *attribute = attributeOfKind(record.id);
    const WireString wire = attribute != nullptr ? attribute->wire : WireString::ByContent;
    if (wire != WireString::Ia5)
        return writeText(out, record, wire == WireString::Printable);
    record.value.tag = TagIa5String;
    out.element(TagIa5String, bytesOf(record.value));
    return KACERT_Ok;
}

// RelativeDistinguishedName ::= SET { SEQUENCE { type OBJECT IDENTIFIER, value ANY } }
Status writeRdn(Writer &out, NameRecord &record) {
    KA_PASS(out.status()); // what failed before is not the type's failure
    const Construct set(out, TagSet);
    const Construct attribute(out, TagSequence);
    out.objectId(bytesOf(record.oid));
    if (out.status() != KACERT_Ok)
        return KA_FAIL(KACERT_MemoryErr, "------>KAsn1_WriteObjectId");
    KA_STEP_AS("------>KAsn1_WritePrintableString函数失败", writeAttributeValue(out, record));
    return KACERT_Ok;
}

// `content` is that of an element with the tag.
Status storeText(uint8_t tag, Element content, Anybuf &value) {
    if (tag == TagBmpString)
        KA_STEP_AS("------>KI_BmpString2Chinese", storeConverted(KI_BmpString2Chinese, content, TagBmpString, value));
    else if (tag == TagUtf8String && !(content.isKept && isPlainText(content.bytes)))
        KA_STEP_AS("------>KI_UTF8String2Chinese", storeConverted(KI_UTF8String2Chinese, content, TagBmpString, value));
    else {
        if (tag == TagUtf8String)
            content.tag = TagBmpString;
        KA_STEP_AS("------>KI_CopyAnybuf", store(value, content));
    }
    return KACERT_Ok;
}

Status readAttributeValue(const Element &element, Anybuf &value) {
    if (!element.present())
        return KA_FAIL(KACERT_InvalidTagErr, "------>KAsn1_Low_ReadDNTag");
    const uint8_t tag = element.bytes[0];
    Element content;
    if (tag == TagUtf8String)
        KA_STEP_AS("------>KAsn1_ReadUTF8String", readValue(element, content));
    else if (tag == TagIa5String)
        KA_STEP_AS("------>KAsn1_ReadIa5String", readValue(element, content));
    else
        KA_STEP_AS("------>KAsn1_ReadPrintableString", readValue(element, content));
    return storeText(tag, content, value);
}

// The usual SET { SEQUENCE { type, text } }, of one attribute and with lengths of one octet, without opening each level
// by itself: names are a third of a certificate's time. False for all else, which readRdn() reads.
bool isShortRdn(const Element &source, Element &type, Element &text) {
    const Bytes rdn = source.bytes;
    if (rdn.size() < 8 || shortSize(rdn) != rdn.size() || rdn[0] != TagSet || rdn[2] != TagSequence ||
        rdn[4] != TagObjectId)
        return false;
    const Bytes fields = rdn.subspan(4);
    const size_t typeSize = shortSize(fields);
    if (rdn[3] != fields.size() || typeSize == 0)
        return false;
    const Bytes value = fields.subspan(typeSize);
    const bool isText = !value.empty() && (value[0] == TagPrintableString || value[0] == TagUtf8String);
    if (!isText || shortSize(value) != value.size())
        return false;
    type = {TagObjectId, fields.subspan(2, typeSize - 2), source.isKept};
    text = {value[0], value.subspan(2), source.isKept};
    return true;
}

Status storeType(const Element &type, NameRecord &record) {
    KA_STEP_AS("------>KI_CopyAnybuf", store(record.oid, type));
    const NameAttribute *attribute = attributeOfOid(type.bytes);
    record.id = attribute != nullptr ? attribute->kind : 0;
    return KACERT_Ok;
}

// `rdn`: SET { SEQUENCE { type, value } ... }, of which the first attribute is taken.
Status readRdn(const Element &rdn, NameRecord &record) {
    Element type;
    Element text;
    if (isShortRdn(rdn, type, text)) {
        KA_PASS(storeType(type, record));
        return storeText(static_cast<uint8_t>(text.tag), text, record.value);
    }
    Level attributes;
    KA_STEP_AS("------>KAsn1_ReadSet", readSet(rdn, attributes));
    if (attributes.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadSequence");
    Level fields;
    KA_PASS(readTyped(attributes.take(), type, fields));
    KA_PASS(storeType(type, record));
    return readAttributeValue(fields.take(), record.value);
}

} // namespace

Status appendName(NameRecord &head, uint32_t kind, Bytes value) {
    const Bytes oid = attributeOfKind(kind)->oid;
    NameRecord *record = KA_CREATE_WITH(uint64_t{oid.size()} + value.size(), NameRecord);
    if (record == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    record->id = kind;
    auto *at = reinterpret_cast<uint8_t *>(record + 1);
    at = placePart(record->oid, oid, at);
    placePart(record->value, value, at);
    record->value.tag = TagPrintableString;
    NameRecord *last = nullptr;
    append<&NameRecord::next>(head.next, last, record);
    return KACERT_Ok;
}

const NameRecord *findName(const NameRecord &head, uint32_t kind) {
    const NameRecord *record = head.next;
    while (record != nullptr && record->id != kind)
        record = record->next;
    return record;
}

Status decodeName(const Element &source, NameRecord &head) {
    Level rdns;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(source, rdns));
    NameRecord *last = nullptr;
    while (!rdns.empty()) {
        NameRecord *record = KA_CREATE(NameRecord);
        if (record == nullptr)
            return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
        append<&NameRecord::next>(head.next, last, record);
        KA_PASS(readRdn(rdns.take(), *record));
    }
    return KACERT_Ok;
}

// Name ::= SEQUENCE OF RelativeDistinguishedName
Status encodeName(Writer &out, const NameRecord &head) {
    const Construct name(out, TagSequence);
    for (NameRecord *record = head.next; record != nullptr; record = record->next)
        KA_PASS(writeRdn(out, *record));
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KI_EncodeIssuerSuject(const NameRecord *head, Anybuf **out) {
    KA_FRAME("KI_EncodeIssuerSuject");
    if (head == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    *out = nullptr;
    Writer name;
    KA_PASS(encodeName(name, *head));
    KA_STEP_AS("------>KAsn1_WriteSequence", name.moveTo(out));
    return KA_DONE();
}

int32_t KI_DecodeIssuerSubject(const Anybuf *source, NameRecord *head) {
    KA_FRAME("KI_DecodeIssuerSubject");
    if (source == nullptr || source->data == nullptr || head == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(decodeName(elementOf(*source), *head));
    return KA_DONE();
}

void KI_FreeName(NameRecord *first) {
    while (first != nullptr) {
        NameRecord *next = first->next;
        freeData(first->oid);
        freeData(first->value);
        KAPR_Free(first);
        first = next;
    }
}
