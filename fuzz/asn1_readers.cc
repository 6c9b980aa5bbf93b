// Every exported reader on one element. The first three octets are the source record's tag, its unused bits and the
// number for a context tag; the rest is the element.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

using StringReader = int32_t (*)(const Anybuf *, Anybuf **);
constexpr StringReader StringReaders[] = {KAsn1_ReadBitString,  KAsn1_ReadCharString, KAsn1_ReadBmpString,
                                          KAsn1_ReadUTF8String, KAsn1_ReadEnumerated, KAsn1_ReadPrintableString,
                                          KAsn1_ReadIa5String};
constexpr uint32_t BitString = 3;
// From here on a tag number takes octets of its own.
constexpr uint32_t LongNumber = 0x1F;

bool isIn(Bytes part, Bytes whole) {
    return std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end() || part.empty();
}

// The exported low-level functions on a header that is known to be all there.
void checkHeader(const Anybuf &source, const Anybuf &node) {
    uint32_t total = 0;
    must(KAsn1_GetCertLength(source.data, &total) == KACERT_Ok && total == source.length, "the header gives the size");
    const uint8_t *cursor = source.data;
    uint32_t *cells[4] = {};
    must(KAsn1_Low_GetTagInfo(&cursor, &cells[0], &cells[1]) == KACERT_Ok, "the tag is read");
    must(KAsn1_Low_GetLengthInfo(&cursor, &cells[2], &cells[3]) == KACERT_Ok, "the length is read");
    must(*cells[0] == node.tag, "the tag is the reader's");
    must(*cells[1] + *cells[3] + *cells[2] == total, "tag, length field and content make the element");
    for (uint32_t *cell : cells)
        KAPR_Free(cell);
}

// What reads a value out of the content must agree with the content.
void checkValues(const Anybuf &source, Bytes content) {
    uint32_t value = 0;
    uint32_t want = 0;
    for (const uint8_t octet : content.last(std::min<size_t>(content.size(), 4)))
        want = want << 8 | octet;
    if (source.tag != BitString)
        must(KAsn1_ReadInteger(&source, &value) == KACERT_Ok && value == want, "an integer is its last four octets");
    uint8_t flag = 0;
    const int32_t status = KAsn1_ReadBoolean(&source, &flag);
    must(content.empty() ? status == KACERT_InvalidLengthErr : status == KACERT_Ok && flag == content[0],
         "a flag is the first octet");
    uint32_t *cell = nullptr;
    must(KAsn1_Low_CharToInt(content.data(), sizeOf(content), &cell) == KACERT_Ok && *cell == want, "octets to a cell");
    KAPR_Free(cell);
}

// The content that the string-like readers agree on; null for an element that they refuse.
Chain readContent(const Anybuf &source) {
    Chain content;
    const int32_t status = made(content, KAsn1_ReadOctetString, &source);
    for (const StringReader read : StringReaders) {
        Chain other;
        must(made(other, read, &source) == status, "string-like readers are all alike");
        must(!content || equal(bytesOf(*other), bytesOf(*content)), "string-like readers give the same");
    }
    Anybuf number = {};
    must(KAsn1_ReadIntegerArray(&source, &number) == status, "a number is read as a string is");
    must(!content || equal(bytesOf(number), bytesOf(*content)), "a number has the same octets");
    KI_ClearAnybuf(&number);
    AlgorithmRecord *record = nullptr;
    must(KAsn1_ReadObjectId(&source, &record) == status, "an object identifier is read as a string is");
    if (const Block<AlgorithmRecord> algorithm{record}; algorithm) {
        must(equal(bytesOf(algorithm->oid), bytesOf(*content)), "an object identifier has the same octets");
        KAPR_Free(algorithm->oid.data);
    }
    uint32_t tag = 0;
    Chain inner;
    const auto open = [&tag](const Anybuf *from, Anybuf **out) { return KAsn1_ReadExplicit(from, out, &tag); };
    must(made(inner, open, &source) == status, "an explicit tag is read as a string is");
    must(!content || (tag == content->tag && equal(bytesOf(*inner), bytesOf(*content))), "and has the same content");
    return content;
}

void checkSameNodes(const Anybuf *one, const Anybuf *other) {
    const Anybuf *before = nullptr;
    for (; one != nullptr && other != nullptr; one = one->next, other = other->next) {
        must(one->tag == other->tag && equal(bytesOf(*one), bytesOf(*other)), "an element comes back as it was");
        must(one->prev == before, "a chain is linked both ways");
        before = one;
    }
    must(one == other, "as many elements come back");
}

// Splits a level, joins its elements and splits it again.
void checkLevel(const Anybuf &source, StringReader split, StringReader join) {
    Chain elements;
    if (made(elements, split, &source) != KACERT_Ok)
        return;
    Chain joined;
    must(made(joined, join, elements.get()) == KACERT_Ok, "elements can be joined");
    Chain again;
    must(made(again, split, joined.get()) == KACERT_Ok, "what was joined can be split");
    checkSameNodes(elements.get(), again.get());
}

// A number whose header has two octets and whose sign octet is there only where it must be is written as it was.
void checkNumber(const Anybuf &source, const Anybuf &content) {
    if (source.tag == BitString || source.length < 3 || source.data[0] != 0x02 || source.data[1] >= 0x80 ||
        source.data[2] >= 0x80)
        return;
    Chain written;
    must(made(written, KAsn1_WriteIntegerArray, &content) == KACERT_Ok, "a number can be written");
    must(equal(bytesOf(*written), bytesOf(source)), "a number is written as it was");
}

void checkExplicit(const Anybuf &source, uint32_t number) {
    Chain wrapped;
    must(made(wrapped, KAsn1_WriteExplicit, &source, number) == KACERT_Ok, "anything can be wrapped");
    must(wrapped->data[0] == (number | 0xA0), "the tag octet has the number");
    if ((number & LongNumber) == LongNumber)
        return;
    const Chain content = readContent(*wrapped);
    must(content && equal(bytesOf(*content), bytesOf(source)), "what was wrapped comes back");
}

void checkImplicit(const Anybuf &source, uint32_t number, const Anybuf *content) {
    Chain tagged;
    const int32_t status = made(tagged, KAsn1_WriteImplicit, &source, number);
    must((status == KACERT_Ok) == (content != nullptr), "an element that can be read can be retagged");
    if (status != KACERT_Ok)
        return;
    must((tagged->data[0] | 0x20) == (number | 0xA0), "the tag octet has the number");
    if ((number & LongNumber) == LongNumber)
        return;
    const Chain value = readContent(*tagged);
    must(value && equal(bytesOf(*value), bytesOf(*content)), "the content stays");
}

void readImplicit(const Anybuf &source, const Anybuf *content) {
    uint32_t number = 0;
    Chain first;
    const auto open = [&number](const Anybuf *from, Anybuf **out) { return KAsn1_ReadImplicit(from, out, &number); };
    if (made(first, open, &source) != KACERT_Ok)
        return;
    must(number < 32, "a number has five bits");
    Octets inner;
    for (const Anybuf *node = first.get(); node != nullptr; node = node->next)
        inner.insert(inner.end(), node->data, node->data + node->length);
    must(content == nullptr || isIn(bytesOf(*content), inner), "the content is in the elements");
}

// Times are local time: the zone is UTC here, so that each can be written again.
void checkTime(const Anybuf &source, int32_t (*read)(const Anybuf *, int32_t *),
               int32_t (*write)(const int32_t *, Anybuf **)) {
    int32_t time = 0;
    if (read(&source, &time) != KACERT_Ok)
        return;
    must(time >= 0, "a time is not before 1970");
    Chain written;
    must(made(written, write, &time) == KACERT_Ok, "a time that was read can be written");
    int32_t again = -1;
    must(read(written.get(), &again) == KACERT_Ok && again == time, "a time comes back as it was");
}

void checkTimeText(Bytes text) {
    int32_t *time = nullptr;
    if (!text.empty() && KAsn1_Low_CtoITime(text.data(), sizeOf(text), &time) == KACERT_Ok)
        must(text.size() >= 13 && text[12] == 'Z', "time text has 13 characters and ends in Z");
    KAPR_Free(time);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    return setenv("TZ", "UTC", 1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input{{data, size}};
    const uint32_t tag = input.octet();
    const uint8_t unusedBits = input.octet();
    const uint32_t number = input.octet();
    const Area element(input.rest);
    Anybuf source = element.record;
    source.tag = tag;
    source.unusedBits = unusedBits;

    const Chain content = readContent(source);
    if (content) {
        must(isIn(bytesOf(*content), element.bytes()), "the content is in the element");
        must(content->unusedBits == (tag == BitString ? unusedBits : 0u), "unused bits come from the record");
        checkHeader(source, *content);
        checkValues(source, bytesOf(*content));
        checkNumber(source, *content);
    }
    checkLevel(source, KAsn1_ReadSequence, KAsn1_WriteSequence);
    checkLevel(source, KAsn1_ReadSet, KAsn1_WriteSet);
    checkExplicit(source, number);
    checkImplicit(source, number, content.get());
    readImplicit(source, content.get());
    checkTime(source, KAsn1_ReadUtcTime, KAsn1_WriteUtcTime);
    checkTime(source, KAsn1_ReadGeneralizedTime, KAsn1_WriteGeneralizedTime);
    checkTimeText(element.bytes());
    uint32_t wire = 0;
    const int32_t status = KI_GetNumberFromImpOrExplicit(&source, &wire);
    must(element.bytes().empty() ? status == 1 : status == KACERT_Ok && wire == (element.bytes()[0] & 0x1Fu),
         "the number is in the first octet");
    return 0;
}
