#include "ka_name.h"

#include <string.h>

namespace karil {

namespace {

constexpr uint32_t Forms = 8;
enum Form : uint32_t { OtherName = 0, Rfc822Name = 1, DnsName = 2, DirectoryName = 4, Uri = 6, IpAddress = 7 };

// The slots that hold plain octets, in the order of their tag numbers.
struct Slot {
    Form form;
    Anybuf GeneralNameRecord::*field;
    const char *decodeWords;
    const char *copyWords;
};
constexpr Slot Slots[] = {
    {Rfc822Name, &GeneralNameRecord::rfc822Name, "------>Decode Rfc822Name err.", "------>Rfc822Name KI_CopyAnybuf"},
    {DnsName, &GeneralNameRecord::dNSName, "------>Decode dNSName err.", "------>dNSName KI_CopyAnybuf"},
    {Uri, &GeneralNameRecord::uniformResourceIdentifier, "------>Decode uniformResourceIdentifier err.",
     "------>uniformResourceIdentifier KI_CopyAnybuf"},
    {IpAddress, &GeneralNameRecord::iPAddress, "------>Decode iPAddress err.", "------>iPAddress KI_CopyAnybuf"},
};

const Slot *slotOf(uint32_t form) {
    for (const Slot &slot : Slots)
        if (slot.form == form)
            return &slot;
    return nullptr;
}

Status writeKind(Anybuf &value, Tag tag, int32_t (*write)(const Anybuf *, Anybuf **), Anybuf **out) {
    value.tag = tag;
    return write(&value, out);
}

Status writeBmp(const Anybuf &value, Anybuf **out) {
    Scratch bmp;
    KA_STEP_AS("------>KI_Chinese2BmpString",
               convertText(KI_Chinese2BmpString, elementOf(value), TagBmpString, bmp.record));
    return KAsn1_WritePrintableString(&bmp.record, out);
}

Status writeUtf8(const Anybuf &value, Anybuf **out) {
    if (value.length > INT32_MAX)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KI_EnCodeUtf8");
    KA_STEP(KI_EnCodeUtf8(value.data, static_cast<int32_t>(value.length), out));
    return KACERT_Ok;
}

Status writeOtherValue(GeneralNameRecord &names, bool plural, Anybuf **out) {
    Anybuf &value = names.otherNameValue;
    switch (names.otherNameKind) {
    case TagBitString:
        return writeKind(value, TagBitString, KAsn1_WriteBitString, out);
    case TagOctetString:
        return writeKind(value, TagOctetString, KAsn1_WriteOctetString, out);
    case TagPrintableString:
        return writeKind(value, TagPrintableString, KAsn1_WritePrintableString, out);
    case TagIa5String:
        return writeKind(value, TagIa5String, KAsn1_WriteIa5String, out);
    case TagBmpString:
        return writeBmp(value, out);
    default:
        break;
    }
    if (names.otherNameKind != TagUtf8String || !plural)
        return writeUtf8(value, out);
    Chain utf8;
    KA_PASS(writeUtf8(value, utf8.slot()));
    KA_STEP(KAsn1_WriteExplicit(utf8.head(), 0, out));
    return KACERT_Ok;
}

// The dotted text as an OBJECT IDENTIFIER, through a work area of 128 octets.
Status writeOtherType(const Anybuf &text, Anybuf **out) {
    if (text.length > INT32_MAX)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACert_GetOIDValue");
    const char *dotted = reinterpret_cast<const char *>(text.data);
    const auto length = static_cast<int32_t>(text.length);
    uint8_t octets[128];
    uint32_t size = 0;
    KA_STEP(KACert_GetOIDValue(dotted, length, nullptr, &size));
    if (size > sizeof octets)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACert_GetOIDValue");
    KA_STEP(KACert_GetOIDValue(dotted, length, octets, &size));
    KA_STEP_AS("------>KAsn1_WriteObjectId", writeOid(Bytes(octets, size), out));
    return KACERT_Ok;
}

// OtherName ::= [0] IMPLICIT SEQUENCE { type-id OBJECT IDENTIFIER, value }
Status writeOtherName(GeneralNameRecord &names, bool plural, Anybuf **out) {
    if (names.otherNameType.data == nullptr || names.otherNameType.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>没有设置CERT_SUBJECT_ALT_OTHERNAME_TYPEID属性值");
    if (names.otherNameValue.data == nullptr || names.otherNameValue.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>没有设置CERT_SUBJECT_ALT_OTHERNAME_VALUE属性值");
    Chain fields;
    KA_PASS(writeOtherType(names.otherNameType, fields.slot()));
    KA_PASS(writeOtherValue(names, plural, fields.slot()));
    Chain sequence;
    KA_STEP(KAsn1_WriteSequence(fields.head(), sequence.slot()));
    KA_STEP(KAsn1_WriteImplicit(sequence.head(), OtherName, out));
    return KACERT_Ok;
}

// directoryName [4] EXPLICIT Name
Status writeDirectoryName(const NameRecord &head, Anybuf **out) {
    Chain name;
    KA_STEP(KI_EncodeIssuerSuject(&head, name.slot()));
    KA_STEP(KAsn1_WriteExplicit(name.head(), DirectoryName, out));
    return KACERT_Ok;
}

// The singular function writes an address as an IA5String, the plural one as an OCTET STRING: once retagged, the
// octets are the same.
Status writeForm(GeneralNameRecord &names, uint32_t form, bool plural, Anybuf **out) {
    if (form == OtherName)
        return writeOtherName(names, plural, out);
    if (form == DirectoryName)
        return writeDirectoryName(names.directoryName, out);
    return writeTaggedIa5(names.*slotOf(form)->field, form, out);
}

bool isCarried(uint32_t form) {
    return form == OtherName || form == DirectoryName || slotOf(form) != nullptr;
}

Status readDirectoryName(const Element &element, NameRecord &head) {
    Element name;
    KA_STEP_AS("------>KAsn1_ReadExplicit", readValue(element, name));
    KA_STEP_AS("------>KI_DecodeIssuerSubject", decodeName(name, head));
    return KACERT_Ok;
}

Status readSlot(const Element &element, const Slot &slot, GeneralNameRecord &names) {
    Element value;
    KA_STEP_AS(slot.decodeWords, readValue(element, value));
    KA_STEP_AS(slot.copyWords, store(names.*slot.field, value));
    return KACERT_Ok;
}

} // namespace

Status writeTaggedIa5(const Anybuf &text, uint32_t number, Anybuf **out) {
    Chain string;
    KA_STEP(KAsn1_WriteIa5String(&text, string.slot()));
    KA_STEP(KAsn1_WriteImplicit(string.head(), number, out));
    return KACERT_Ok;
}

Status decodeGeneralNames(const Element &source, GeneralNameRecord &names, uint8_t &found) {
    Level level;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(source, level));
    uint8_t taken = 0;
    while (!level.empty()) {
        const Element element = level.take();
        const uint32_t form = element.bytes[0] & 0x1Fu;
        const Slot *slot = slotOf(form);
        if ((slot == nullptr && form != DirectoryName) || names.present[form] != 0)
            continue;
        if (slot != nullptr)
            KA_PASS(readSlot(element, *slot, names));
        else
            KA_PASS(readDirectoryName(element, names.directoryName));
        names.present[form] = 1;
        taken = 1;
    }
    found = taken;
    return KACERT_Ok;
}

void freeGeneralNames(GeneralNameRecord &names) {
    freeData(names.otherNameType);
    freeData(names.otherNameValue);
    for (const Slot &slot : Slots)
        freeData(names.*slot.field);
    KI_FreeName(names.directoryName.next);
}

} // namespace karil

using namespace karil;

int32_t KI_EncodeGeneralName(GeneralNameRecord *names, Anybuf **out) {
    KA_FRAME("KI_EncodeGeneralName");
    if (names == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pGenName is Null.");
    uint32_t form = 0;
    while (form < Forms && (names->present[form] == 0 || !isCarried(form)))
        ++form;
    if (form == Forms)
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>KACERT_AttributeNotSupportErr");
    KA_PASS(writeForm(*names, form, false, out));
    return KA_DONE();
}

int32_t KI_EncodeGeneralNameS(GeneralNameRecord *names, Anybuf **out) {
    KA_FRAME("KI_EncodeGeneralNameS");
    if (names == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pGenName is Null.");
    Chain elements;
    for (uint32_t form = 0; form < Forms; ++form)
        if (names->present[form] != 0 && isCarried(form))
            KA_PASS(writeForm(*names, form, true, elements.slot()));
    KA_STEP(KAsn1_WriteSequence(elements.head(), out));
    return KA_DONE();
}

int32_t KI_DecodeGeneralName(const Anybuf *, GeneralNameRecord *, uint8_t *) {
    return KACERT_Ok;
}

int32_t KI_DecodeGeneralNameS(const Anybuf *source, GeneralNameRecord *names, uint8_t *found) {
    KA_FRAME("KI_DecodeGeneralNameS");
    if (source == nullptr || source->data == nullptr || names == nullptr || found == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pGenName is Null.");
    KA_PASS(decodeGeneralNames(elementOf(*source), *names, *found));
    return KA_DONE();
}
