// Names and general names: decoded, encoded and decoded again. The first octet chooses, the rest is the element.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

// Text above this many octets is not converted.
constexpr uint32_t LongestText = 1024;

bool isPrintable(Bytes text) {
    return std::all_of(text.begin(), text.end(), [](uint8_t c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               (c != 0 && strchr(" '()+,-./:=?", c) != nullptr);
    });
}

// Whether local text has its place in BMP text, so that it is the same after having been there.
bool comesBack(Bytes text) {
    uint8_t bmp[2048];
    uint8_t local[1024];
    uint32_t bmpSize = 0;
    uint32_t size = 0;
    if (KI_Chinese2BmpString(text.data(), lengthOf(text), bmp, &bmpSize) != KACERT_Ok)
        return false;
    must(KI_BmpString2Chinese(bmp, static_cast<int32_t>(bmpSize), local, &size) == KACERT_Ok, "the way back is open");
    return equal({local, size}, text);
}

// Text that is written as it stands or keeps its octets when it is converted. The tag tells nothing: an element of
// another class may have the number of a BMPString.
bool isStable(const NameRecord &record) {
    return record.id == KA_NAME_COUNTRY || record.id == KA_NAME_TELEPHONE || record.id == KA_NAME_EMAIL ||
           isPrintable(bytesOf(record.value)) || comesBack(bytesOf(record.value));
}

// Whether a record's text may be refused when it is written.
bool isLong(const NameRecord &head) {
    for (const NameRecord *record = head.next; record != nullptr; record = record->next)
        if (record->value.length > LongestText)
            return true;
    return false;
}

void checkSame(const NameRecord &before, const NameRecord &after) {
    const NameRecord *one = before.next;
    const NameRecord *other = after.next;
    for (; one != nullptr && other != nullptr; one = one->next, other = other->next) {
        must(one->id == other->id, "an attribute keeps its number");
        must(equal(bytesOf(one->oid), bytesOf(other->oid)), "an attribute keeps its type");
        must(!isStable(*one) || equal(bytesOf(one->value), bytesOf(other->value)), "an attribute keeps its text");
        must(isStable(*other), "text that was converted is stable");
    }
    must(one == other, "as many attributes come back");
}

void checkDn(const NameRecord &head) {
    Anybuf one = {};
    Anybuf other = {};
    const int32_t status = KI_GetDN(&one, &head);
    must(KI_GetDN(&other, &head) == status, "the text has one status");
    must(status == KACERT_Ok || (status == KACERT_InvalidLengthErr && one.data == nullptr),
         "only long text is refused");
    must(one.length < LongestText && equal(bytesOf(one), bytesOf(other)), "the text is the same again");
    KI_ClearAnybuf(&one);
    KI_ClearAnybuf(&other);
}

// Encodes the list; false where it has text that is too long.
bool encodeName(const NameRecord &head, Chain &out) {
    const int32_t status = made(out, KI_EncodeIssuerSuject, &head);
    must(status == KACERT_Ok || (status == KACERT_InvalidLengthErr && isLong(head)), "a name can be written");
    return status == KACERT_Ok;
}

void fuzzName(const Area &element) {
    Name first;
    const Anybuf source = element.record;
    const int32_t status = KI_DecodeIssuerSubject(&source, &first.head);
    checkDn(first.head);
    Chain encoded;
    if (!encodeName(first.head, encoded) || status != KACERT_Ok)
        return;
    Name second;
    must(KI_DecodeIssuerSubject(encoded.get(), &second.head) == KACERT_Ok, "what was written can be read");
    checkSame(first.head, second.head);
    Chain again;
    must(encodeName(second.head, again), "what was read can be written");
    Name third;
    must(KI_DecodeIssuerSubject(again.get(), &third.head) == KACERT_Ok, "and read once more");
    checkSame(second.head, third.head);
    checkDn(third.head);
}

using Slot = Anybuf GeneralNameRecord::*;
constexpr Slot Slots[] = {&GeneralNameRecord::otherNameType, &GeneralNameRecord::otherNameValue,
                          &GeneralNameRecord::rfc822Name,    &GeneralNameRecord::dNSName,
                          &GeneralNameRecord::iPAddress,     &GeneralNameRecord::uniformResourceIdentifier};

struct GeneralNames {
    GeneralNameRecord record = {};
    uint8_t found = 0;

    GeneralNames() = default;
    GeneralNames(const GeneralNames &) = delete;
    GeneralNames &operator=(const GeneralNames &) = delete;
    ~GeneralNames() {
        for (const Slot slot : Slots)
            KI_ClearAnybuf(&(record.*slot));
        KI_FreeName(record.directoryName.next);
    }
    bool isEmpty() const {
        return std::all_of(std::begin(record.present), std::end(record.present), [](uint8_t is) { return is == 0; });
    }
};

void checkSame(const GeneralNameRecord &before, const GeneralNameRecord &after) {
    must(equal(before.present, after.present), "the same forms come back");
    for (const Slot slot : Slots)
        must(equal(bytesOf(before.*slot), bytesOf(after.*slot)), "a form keeps its octets");
    checkSame(before.directoryName, after.directoryName);
}

// Writes the first form alone, which must then be the first of all.
void checkSingular(GeneralNames &names, const Anybuf &all) {
    Chain one;
    const int32_t status = made(one, KI_EncodeGeneralName, &names.record);
    must(status == (names.isEmpty() ? KACERT_AttributeNotSupportErr : KACERT_Ok),
         "a form that is there can be written");
    Chain list;
    must(made(list, KAsn1_ReadSequence, &all) == KACERT_Ok, "general names are a sequence");
    must(!one || equal(bytesOf(*one), bytesOf(*list)), "both functions write the same form");
}

void fuzzGeneralNames(const Area &element) {
    GeneralNames first;
    const Anybuf source = element.record;
    const int32_t status = KI_DecodeGeneralNameS(&source, &first.record, &first.found);
    Chain encoded;
    const int32_t written = made(encoded, KI_EncodeGeneralNameS, &first.record);
    must(written == KACERT_Ok || (written == KACERT_InvalidLengthErr && isLong(first.record.directoryName)),
         "general names can be written");
    if (status != KACERT_Ok || written != KACERT_Ok)
        return;
    must((first.found == 0) == first.isEmpty(), "what was taken is found");
    checkSingular(first, *encoded);
    GeneralNames second;
    must(KI_DecodeGeneralNameS(encoded.get(), &second.record, &second.found) == KACERT_Ok,
         "what was written can be read");
    must(second.found == first.found, "as much is found");
    checkSame(first.record, second.record);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input{{data, size}};
    const bool isGeneral = (input.octet() & 1) != 0;
    const Area element(input.rest);
    isGeneral ? fuzzGeneralNames(element) : fuzzName(element);
    return 0;
}
