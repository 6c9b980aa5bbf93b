// The bounded, borrowing reader: all decoding goes through it, and nothing else compares an untrusted length with what
// is left.
#pragma once

#include "ka_low.h"
#include "tag.h"

namespace karil {

// What an Anybuf holds, borrowed from the input: a whole element, or the content of one that was read, with the
// element's normalised tag. No octets: there is nothing.
struct Element {
    uint32_t tag = 0;
    Bytes bytes;
    bool isKept = false; // by the context that the element is decoded into, as are the elements inside

    Element() = default;
    Element(uint32_t newTag, Bytes octets, bool kept = false) : tag(newTag), bytes(octets), isKept(kept) {}
    // Field by field, so that elements stay in registers: what was written to memory in parts and is soon read as a
    // whole makes the processor wait. It is a tenth of a certificate's time.
    Element(const Element &other) : tag(other.tag), bytes(other.bytes), isKept(other.isKept) {}
    Element &operator=(const Element &other) {
        tag = other.tag;
        bytes = other.bytes;
        isKept = other.isKept;
        return *this;
    }

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

// Takes such an element off `rest`; one without octets if the next element is not short.
inline Element takeShort(Bytes &rest) {
    const size_t size = shortSize(rest);
    if (size == 0)
        return {};
    const Bytes whole = rest.first(size);
    rest = rest.subspan(size);
    return {shortTag(whole[0]), whole};
}

// The inner elements of one value. Every one of them was checked when the value was opened.
struct Level {
    Bytes rest;
    bool isKept = false;

    bool empty() const { return rest.empty(); }
    // The next element, or one without octets at the end.
    Element take() {
        uint32_t tag = 0;
        size_t size = shortSize(rest);
        if (size != 0)
            tag = shortTag(rest[0]);
        else
            size = longSize(rest, tag);
        const Bytes whole = rest.first(size);
        rest = size != 0 ? rest.subspan(size) : Bytes{};
        return {tag, whole, isKept};
    }

private:
    // The size of the first element, and its tag; 0 if there is none.
    static size_t longSize(Bytes elements, uint32_t &tag);
};

// An implicitly tagged value: a level if it is constructed, else its content.
struct Implicit {
    uint32_t number = 0;
    bool constructed = false;
    Level level;
    Element content;
};

// Takes the first element off `rest`, without opening it; isKept is false in `out`. `shortage`: the status if there are
// too few octets, `words`: its trace words if the header is all there. On failure both are as they were.
[[nodiscard]] Status next(Bytes &rest, Element &out, Status shortage, const char *words);

// Opens a value of exactly the source's octets, with the rules of KAsn1_Low_ReadTagAndLength. `out` may be `source`.
[[nodiscard]] Status readValue(const Element &source, Element &out);

[[nodiscard]] Status readSequence(const Element &source, Level &out);
[[nodiscard]] Status readSet(const Element &source, Level &out);
[[nodiscard]] Status readImplicit(const Element &source, Implicit &out);
// SEQUENCE { OBJECT IDENTIFIER, ... }: the identifier's content, and the fields after it. `empty`: the status of a
// SEQUENCE without fields, with its trace words.
constexpr char NoObjectId[] = "------>KAsn1_ReadObjectId";
[[nodiscard]] Status readTyped(const Element &source, Element &oid, Level &fields,
                               Status empty = KACERT_InvalidParamErr, const char *words = NoObjectId);
// What follows tag and length field, to the end of the source and not of the element.
[[nodiscard]] Status afterHeader(Bytes source, Bytes &out);
[[nodiscard]] Status readInteger(const Element &source, uint32_t &value);
[[nodiscard]] Status readBoolean(const Element &source, uint8_t &value);

} // namespace karil
