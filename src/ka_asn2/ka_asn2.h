// The DER engine: the bounded, borrowing reader that all decoding goes through, and what writers share.
#pragma once

#include "karil/asn1.h"
#include "karil/asn1_low.h"
#include "karil/oid.h"

#include "ka_low.h"

struct KeptOctets;

namespace karil {

// Tag octets that the engine writes.
enum Tag : uint8_t {
    TagBoolean = 0x01,
    TagInteger = 0x02,
    TagBitString = 0x03,
    TagOctetString = 0x04,
    TagNull = 0x05,
    TagObjectId = 0x06,
    TagEnumerated = 0x0A,
    TagUtf8String = 0x0C,
    TagPrintableString = 0x13,
    TagIa5String = 0x16,
    TagUtcTime = 0x17,
    TagGeneralizedTime = 0x18,
    TagBmpString = 0x1E,
    TagSequence = 0x30,
    TagSet = 0x31,
};
// Normalised tags of constructed values.
constexpr uint32_t NormalSequence = 16;
constexpr uint32_t NormalSet = 17;

// What an Anybuf holds, borrowed from the input: a whole element, or the content of one that was read, with the
// element's normalised tag. No octets: there is nothing.
struct Element {
    uint32_t tag = 0;
    Bytes bytes;
    bool isKept = false; // by the context that the element is decoded into, as are the elements inside

    bool present() const { return !bytes.empty(); }
    bool startsWith(uint8_t octet) const { return present() && bytes[0] == octet; }
};

// Octets as a writer's source. They are only read.
inline Anybuf borrow(Bytes bytes, uint32_t tag = 0) {
    return {const_cast<uint8_t *>(bytes.data()), static_cast<uint32_t>(bytes.size()), 0, 0, tag, nullptr, nullptr};
}

inline Element elementOf(const Anybuf &source) {
    return {source.tag, bytesOf(source)};
}

// The size of an element that is all there and has, as most do, a tag of one octet and a length below 128; else 0.
// This function and those of reader.cc alone compare an untrusted length with what is left.
inline size_t shortSize(Bytes bytes) {
    if (bytes.size() < 2 || (bytes[0] & 0x1F) == 0x1F || bytes[1] >= 0x80)
        return 0;
    const size_t size = bytes[1] + size_t{2};
    return size <= bytes.size() ? size : 0;
}

// The normalised tag of one octet.
inline uint32_t shortTag(uint8_t octet) {
    return (octet & 0x80) != 0 ? octet : octet & 0x1Fu;
}

// The inner elements of one value. Every one of them was checked when the value was opened.
struct Level {
    Bytes rest;
    bool isKept = false;

    bool empty() const { return rest.empty(); }
    // The next element, or one without octets at the end.
    Element take() {
        const size_t size = shortSize(rest);
        if (size == 0)
            return takeLong();
        const Bytes whole = rest.first(size);
        rest = rest.subspan(size);
        return {shortTag(whole[0]), whole, isKept};
    }
    Element takeLong();
};

// An implicitly tagged value: a level where it is constructed, else its content.
struct Implicit {
    uint32_t number = 0;
    bool constructed = false;
    Level level;
    Element content;
};

// Takes the first element off `rest`, without opening it; isKept is false in `out`. `shortage`: the status where the
// octets do not suffice, `words`: its trace words where the header is all there. On failure both are as they were.
[[nodiscard]] Status next(Bytes &rest, Element &out, Status shortage, const char *words);

// Opens a value of exactly the source's octets, with the rules of KAsn1_Low_ReadTagAndLength. `out` may be `source`.
[[nodiscard]] Status readValue(const Element &source, Element &out);

[[nodiscard]] Status readSequence(const Element &source, Level &out);
[[nodiscard]] Status readSet(const Element &source, Level &out);
[[nodiscard]] Status readImplicit(const Element &source, Implicit &out);
// SEQUENCE { OBJECT IDENTIFIER, ... }: the identifier's content, and the fields behind it. `empty`: the status of a
// SEQUENCE without fields, with its trace words.
constexpr char NoObjectId[] = "------>KAsn1_ReadObjectId";
[[nodiscard]] Status readTyped(const Element &source, Element &oid, Level &fields,
                               Status empty = KACERT_InvalidParamErr, const char *words = NoObjectId);
// What stands behind tag and length field, to the end of the source and not of the element.
[[nodiscard]] Status behindHeader(Bytes source, Bytes &out);
[[nodiscard]] Status readInteger(const Element &source, uint32_t &value);
[[nodiscard]] Status readBoolean(const Element &source, uint8_t &value);
// The local zone, looked up once for all times of an object: mktime asks the file system at each call. With `days` the
// offsets of days are kept as well, for objects of many times.
struct DayOffset {
    int32_t day; // counted from 1970-01-01, plus 1; 0: not known
    int32_t offset;
};
struct LocalClock {
    bool isLookedUp = false;
    std::span<DayOffset> days = {};
};
// `tag`: 23 or 24, the only one accepted.
[[nodiscard]] Status readTime(const Element &source, uint32_t tag, LocalClock &clock, int32_t &time);
// The text of a time: YYMMDDhhmmssZ.
constexpr uint32_t TimeLength = 13;
[[nodiscard]] Status timeText(int32_t time, LocalClock &clock, uint8_t (&text)[TimeLength]);

// Copies an element into a block that lives as long as the owner of `kept`, for its records to hold parts of.
[[nodiscard]] Status keep(KeptOctets *&kept, const Element &source, Element &out);
void freeKept(KeptOctets *kept);

// Sets an embedded record to a borrowed value, as a reader and KI_CopyAnybuf would leave it there, and releases what
// stood there before. The octets are copied, unless they are kept.
[[nodiscard]] Status store(Anybuf &record, const Element &value);

// Copies a borrowed value into a heap node, also where it is kept.
[[nodiscard]] Status newNode(const Element &value, Anybuf **out);

// A heap node for an element of `size` content octets, with tag and length written; the caller fills `*position`.
[[nodiscard]] Status newElement(uint32_t tagOctet, uint64_t size, Anybuf **out, uint8_t **position);

// For structures that are written in one block: the octets of an element around `content` octets (above 32 bits: as
// they are), and its tag and length, behind which the content goes.
uint64_t elementSize(uint64_t content);
uint8_t *putHeader(uint8_t *at, uint8_t tag, uint64_t content);

// SEQUENCE { OBJECT IDENTIFIER, NULL }
[[nodiscard]] Status writeAlgorithm(const AlgorithmRecord &algorithm, Anybuf **out);

// OBJECT IDENTIFIER from constant content octets.
[[nodiscard]] Status writeOid(Bytes oid, Anybuf **out);

// A constant object identifier as a writer's source. The bytes are only read.
inline AlgorithmRecord borrowOid(Bytes oid) {
    return {0, borrow(oid, TagObjectId)};
}

// Content octets of an INTEGER; gives their number, 1 to 5.
uint32_t integerOctets(uint32_t value, uint8_t (&octets)[5]);
uint32_t integerValue(Bytes octets);

} // namespace karil
