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

Status writeBmp(Writer &out, Bytes text) {
    Converted bmp;
    KA_STEP_AS("------>KI_Chinese2BmpString", bmp.from(KI_Chinese2BmpString, text));
    out.element(TagBmpString, bmp.bytes());
    return KACERT_Ok;
}

// The kinds that are written as they are: the tag of the value's record says which one it became.
Status writeOtherValue(Writer &out, GeneralNameRecord &names, bool plural) {
    Anybuf &value = names.otherNameValue;
    const uint32_t kind = names.otherNameKind;
    switch (kind) {
    case TagBitString:
        value.tag = kind;
        out.bitString(bytesOf(value), value.unusedBits);
        return KACERT_Ok;
    case TagOctetString:
    case TagPrintableString:
    case TagIa5String:
        value.tag = kind;
        out.element(static_cast<uint8_t>(kind), bytesOf(value));
        return KACERT_Ok;
    case TagBmpString:
        return writeBmp(out, bytesOf(value));
    default:
        break;
    }
    if (value.length > INT32_MAX)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KI_EnCodeUtf8");
    if (kind != TagUtf8String || !plural) {
        KA_STEP_AS("------>KI_EnCodeUtf8", writeUtf8(out, bytesOf(value)));
        return KACERT_Ok;
    }
    const Construct wrapper(out, 0xA0);
    KA_STEP_AS("------>KI_EnCodeUtf8", writeUtf8(out, bytesOf(value)));
    return KACERT_Ok;
}

// The dotted text as an OBJECT IDENTIFIER, through a work area of 128 octets.
Status writeOtherType(Writer &out, const Anybuf &text) {
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
    out.objectId({octets, size});
    return KACERT_Ok;
}

// OtherName ::= [0] IMPLICIT SEQUENCE { type-id OBJECT IDENTIFIER, value }
Status writeOtherName(Writer &out, GeneralNameRecord &names, bool plural) {
    if (names.otherNameType.data == nullptr || names.otherNameType.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>没有设置CERT_SUBJECT_ALT_OTHERNAME_TYPEID属性值");
    if (names.otherNameValue.data == nullptr || names.otherNameValue.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>没有设置CERT_SUBJECT_ALT_OTHERNAME_VALUE属性值");
    const Construct sequence(out, 0xA0 | OtherName);
    KA_PASS(writeOtherType(out, names.otherNameType));
    return writeOtherValue(out, names, plural);
}

// directoryName [4] EXPLICIT Name
Status writeDirectoryName(Writer &out, const NameRecord &head) {
    const Construct wrapper(out, 0xA0 | DirectoryName);
    KA_STEP_AS("------>KI_EncodeIssuerSuject", encodeName(out, head));
    return KACERT_Ok;
}

// The singular function writes an address as an IA5String, the plural one as an OCTET STRING: under their context tag
// the octets are the same.
Status writeForm(Writer &out, GeneralNameRecord &names, uint32_t form, bool plural) {
    if (form == OtherName)
        return writeOtherName(out, names, plural);
    if (form == DirectoryName)
        return writeDirectoryName(out, names.directoryName);
    out.element(static_cast<uint8_t>(0x80 | form), bytesOf(names.*slotOf(form)->field));
    return KACERT_Ok;
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

// GeneralNames ::= SEQUENCE OF GeneralName
Status encodeGeneralNames(Writer &out, GeneralNameRecord &names) {
    const Construct list(out, TagSequence);
    for (uint32_t form = 0; form < Forms; ++form)
        if (names.present[form] != 0 && isCarried(form))
            KA_PASS(writeForm(out, names, form, true));
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
    Writer name;
    KA_PASS(writeForm(name, *names, form, false));
    KA_PASS(name.moveTo(out));
    return KA_DONE();
}

int32_t KI_EncodeGeneralNameS(GeneralNameRecord *names, Anybuf **out) {
    KA_FRAME("KI_EncodeGeneralNameS");
    if (names == nullptr || out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pGenName is Null.");
    Writer list;
    KA_PASS(encodeGeneralNames(list, *names));
    KA_STEP_AS("------>KAsn1_WriteSequence", list.moveTo(out));
    return KA_DONE();
}

int32_t KI_DecodeGeneralName(const Anybuf *, GeneralNameRecord *, uint8_t *) {
    return KACERT_Ok;
}

int32_t KI_DecodeGeneralNameS(const Anybuf *source, GeneralNameRecord *names, uint8_t *found) {
    KA_FRAME("KI_DecodeGeneralNameS");
    if (source == nullptr || source->data == nullptr || names == nullptr || found == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pGenName is Null.");
    Scratch copy; // the source may be one of the slots
    KA_STEP(KI_CopyAnybuf(&copy.record, source));
    KA_PASS(decodeGeneralNames(elementOf(copy.record), *names, *found));
    return KA_DONE();
}
