// The elements of DER, as views. The library decodes; this reader finds what its records leave out, such as the second
// alternative name of a kind.
#ifndef KARIL_TOOL_DER_H
#define KARIL_TOOL_DER_H

#include "karil/karil.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tool {

// Tag octets.
enum Tag : std::uint8_t {
    TagNone = 0,
    TagBoolean = 0x01,
    TagInteger = 0x02,
    TagBitString = 0x03,
    TagOctetString = 0x04,
    TagOid = 0x06,
    TagEnumerated = 0x0A,
    TagUtf8 = 0x0C,
    TagIa5 = 0x16,
    TagUtcTime = 0x17,
    TagGeneralizedTime = 0x18,
    TagUniversal = 0x1C,
    TagBmp = 0x1E,
    TagSequence = 0x30,
    TagSet = 0x31,
    TagContext = 0x80,
    TagContext0 = 0xA0
};

// One element; TagNone and nothing else if there is none.
struct Element {
    std::uint8_t tag = TagNone;
    karil::Bytes whole;
    karil::Bytes content;

    explicit operator bool() const { return tag != TagNone; }
};

// Takes the first element; there is none if the octets end before it does.
Element takeElement(karil::Bytes &octets);

// The first element in octets.
inline Element elementOf(karil::Bytes octets) {
    return takeElement(octets);
}

// The elements in the content of another, up to the first that is not whole; at most `most` of them.
class Elements {
public:
    explicit Elements(karil::Bytes content, std::size_t most = SIZE_MAX);

    std::size_t size() const { return found.size(); }
    auto begin() const { return found.begin(); }
    auto end() const { return found.end(); }
    // No element for a position that there is not.
    Element operator[](std::size_t position) const { return position < found.size() ? found[position] : Element(); }

private:
    std::vector<Element> found;
};

} // namespace tool

#endif
