#include "ka_asn2.h"

namespace karil {

namespace {

struct Header {
    uint32_t tag = 0;
    uint32_t tagOctets = 0;
    uint32_t lengthOctets = 0;
    uint32_t length = 0;
    uint32_t contentAt = 0; // one after tag and length field for the 0x80 reading

    uint64_t total() const { return uint64_t{tagOctets} + lengthOctets + length; }
    uint64_t contentEnd() const { return uint64_t{contentAt} + length; }
};

inline bool hasShortTag(Bytes bytes, uint32_t tag) {
    return !bytes.empty() && (bytes[0] & 0x1F) != 0x1F && shortTag(bytes[0]) == tag;
}

Status readTag(Bytes bytes, Status shortage, Header &out) {
    if (bytes.empty())
        return KA_FAIL(shortage, "------>KAsn1_Low_GetTagInfo");
    const uint8_t first = bytes[0];
    out.tagOctets = 1;
    if ((first & 0x1F) != 0x1F) {
        out.tag = shortTag(first);
        return KACERT_Ok;
    }
    uint32_t tag = 0;
    for (;;) {
        if (out.tagOctets == bytes.size())
            return KA_FAIL(shortage, "------>KAsn1_Low_GetTagInfo");
        const uint8_t x = bytes[out.tagOctets++];
        tag = ((x & 0x7Fu) | tag) << 8;
        if ((x & 0x80) != 0) {
            out.tag = tag | x;
            return KACERT_Ok;
        }
    }
}

// The usual header of a long element: a tag of one octet, and two or three octets of length.
inline bool readUsual(Bytes bytes, Header &out) {
    if (bytes.size() < 4 || (bytes[0] & 0x1F) == 0x1F || (bytes[1] != 0x81 && bytes[1] != 0x82))
        return false;
    const bool isOne = bytes[1] == 0x81;
    out.tag = shortTag(bytes[0]);
    out.tagOctets = 1;
    out.lengthOctets = isOne ? 2 : 3;
    out.length = isOne ? bytes[2] : uint32_t{bytes[2]} << 8 | bytes[3];
    out.contentAt = isOne ? 3 : 4;
    return true;
}

Status readHeader(Bytes bytes, Status shortage, Header &out) {
    if (readUsual(bytes, out))
        return KACERT_Ok;
    KA_PASS(readTag(bytes, shortage, out));
    const Bytes field = bytes.subspan(out.tagOctets);
    if (field.empty())
        return KA_FAIL(shortage, "------>KAsn1_Low_GetLengthInfo");
    const uint32_t count = field[0] & 0x7Fu;
    if ((field[0] & 0x80) == 0) {
        out.length = field[0];
        out.lengthOctets = 1;
        out.contentAt = out.tagOctets + 1;
        return KACERT_Ok;
    }
    if (count == 0) {
        if (field.size() < 2)
            return KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_Low_GetLengthInfo");
        out.length = field[1];
        out.lengthOctets = 1;
        out.contentAt = out.tagOctets + 2;
        return KACERT_Ok;
    }
    if (count > 4)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_Low_GetLengthInfo");
    if (field.size() <= count)
        return KA_FAIL(shortage, "------>KAsn1_Low_GetLengthInfo");
    uint32_t length = 0;
    for (const uint8_t octet : field.subspan(1, count))
        length = length << 8 | octet;
    out.length = length;
    out.lengthOctets = count + 1;
    out.contentAt = out.tagOctets + out.lengthOctets;
    return KACERT_Ok;
}

// Status and tag of an element that is opened.
struct Opening {
    Status status = KACERT_Ok;
    uint32_t tag = 0;
};

Bytes openLong(Bytes bytes, const char *words, Opening &out) {
    Header header;
    out.status = readHeader(bytes, KACERT_LengthNotEqualErr, header);
    if (out.status != KACERT_Ok)
        return {};
    if (header.total() != bytes.size())
        out.status = KA_FAIL(KACERT_LengthNotEqualErr, words);
    else if (header.contentEnd() > bytes.size())
        out.status = KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_Low_GetLengthInfo");
    if (out.status != KACERT_Ok)
        return {};
    out.tag = header.tag;
    return bytes.subspan(header.contentAt, header.length);
}

// The content of an element that fills `bytes` exactly. `words`: of one that does not. It is the result, so that it
// stays in registers: what is written to memory in parts and soon read as a whole makes the processor wait.
inline Bytes open(Bytes bytes, const char *words, Opening &out) {
    const size_t size = shortSize(bytes);
    if (size == 0 || size != bytes.size())
        return openLong(bytes, words, out);
    out.tag = shortTag(bytes[0]);
    return bytes.subspan(2);
}

Status nextLong(Bytes &rest, Element &out, Status shortage, const char *words) {
    Header header;
    KA_PASS(readHeader(rest, shortage, header));
    if (header.total() > rest.size())
        return KA_FAIL(shortage, words);
    const auto total = static_cast<size_t>(header.total());
    out = {header.tag, rest.first(total)};
    rest = rest.subspan(total);
    return KACERT_Ok;
}

// `words`: of an element that runs over the end.
Status checkLevel(Bytes content, const char *words) {
    Element inner;
    while (!content.empty())
        if (const size_t size = shortSize(content); size != 0)
            content = content.subspan(size);
        else
            KA_PASS(nextLong(content, inner, KACERT_InvalidLengthErr, words));
    return KACERT_Ok;
}

struct LevelWords {
    const char *tag;
    const char *overrun;
};
constexpr char Overrun[] = "------>KAsn1_Low_GetLengthInfo";

Status checkTag(Bytes bytes, uint32_t tag, const char *words) {
    Header header;
    KA_PASS(readTag(bytes, KACERT_LengthNotEqualErr, header));
    return (header.tag & 0xFF) == tag ? KACERT_Ok : KA_FAIL(KACERT_InvalidTagErr, words);
}

Status openLevel(const Element &source, uint32_t tag, const LevelWords &words, Level &out) {
    if (!hasShortTag(source.bytes, tag))
        KA_PASS(checkTag(source.bytes, tag, words.tag));
    Opening opening;
    const Bytes content = open(source.bytes, "------>KACERT_LengthNotEqualErr", opening);
    if (opening.status != KACERT_Ok)
        return opening.status;
    KA_PASS(checkLevel(content, words.overrun));
    out.rest = content;
    out.isKept = source.isKept;
    return KACERT_Ok;
}

} // namespace

Status next(Bytes &rest, Element &out, Status shortage, const char *words) {
    const Element element = takeShort(rest);
    if (!element.present())
        return nextLong(rest, out, shortage, words);
    out = element;
    return KACERT_Ok;
}

size_t Level::longSize(Bytes elements, uint32_t &tag) {
    Element element;
    if (elements.empty() || nextLong(elements, element, KACERT_InvalidLengthErr, Overrun) != KACERT_Ok)
        return 0;
    tag = element.tag;
    return element.bytes.size();
}

Status readValue(const Element &source, Element &out) {
    Opening opening;
    Bytes content = open(source.bytes, "------>Length not Equal", opening);
    if (opening.status != KACERT_Ok)
        return opening.status;
    if (source.tag == TagBitString) {
        if (content.empty())
            return KA_FAIL(KACERT_InvalidLengthErr, "------>Length not Equal");
        content = content.subspan(1);
    }
    if (opening.tag == TagInteger && content.size() > 1 && content[0] == 0 && (content[1] & 0x80) != 0)
        content = content.subspan(1);
    out.tag = opening.tag;
    out.bytes = content;
    out.isKept = source.isKept;
    return KACERT_Ok;
}

Status readSequence(const Element &source, Level &out) {
    return openLevel(source, NormalSequence, {"------>TAG != KA_DER_ID_SEQUENCE", Overrun}, out);
}

Status readSet(const Element &source, Level &out) {
    return openLevel(source, NormalSet, {"------>TAG != KA_DER_ID_SET", "------>lTotalLength != 0"}, out);
}

Status readTyped(const Element &source, Element &oid, Level &fields, Status empty, const char *words) {
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(source, fields));
    if (fields.empty())
        return KA_FAIL(empty, words);
    KA_STEP_AS("------>KAsn1_ReadObjectId", readValue(fields.take(), oid));
    return KACERT_Ok;
}

Status readImplicit(const Element &source, Implicit &out) {
    Opening opening;
    const Bytes content = open(source.bytes, "------>KACERT_LengthNotEqualErr", opening);
    if (opening.status != KACERT_Ok)
        return opening.status;
    out.number = opening.tag & 0x1F;
    out.constructed = (opening.tag & 0x20) != 0;
    out.content = {opening.tag, content, source.isKept};
    out.level.rest = out.constructed ? content : Bytes{};
    out.level.isKept = source.isKept;
    return checkLevel(out.level.rest, Overrun);
}

Status afterHeader(Bytes source, Bytes &out) {
    Header header;
    KA_PASS(readHeader(source, KACERT_LengthNotEqualErr, header));
    out = source.subspan(header.contentAt);
    return KACERT_Ok;
}

Status readInteger(const Element &source, uint32_t &value) {
    Header header;
    KA_PASS(readHeader(source.bytes, KACERT_LengthNotEqualErr, header));
    if (header.total() > source.bytes.size())
        return KA_FAIL(KACERT_LengthNotEqualErr, "------>KAsn1_Low_GetLengthInfo");
    if (header.contentEnd() > source.bytes.size())
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_Low_GetLengthInfo");
    value = integerValue(source.bytes.subspan(header.contentAt, header.length));
    return KACERT_Ok;
}

Status readBoolean(const Element &source, uint8_t &value) {
    Element content;
    KA_STEP_AS("------>KAsn1_Low_ReadTagAndLength", readValue(source, content));
    if (!content.present())
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_Low_ReadTagAndLength");
    value = content.bytes[0];
    return KACERT_Ok;
}

} // namespace karil
