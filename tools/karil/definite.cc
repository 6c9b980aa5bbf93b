#include "definite.h"

#include "der_write.h"

namespace tool {
namespace {

constexpr int DeepestLevel = 32;
constexpr std::uint8_t IndefiniteLength = 0x80;
constexpr std::uint8_t ConstructedBit = 0x20;
constexpr std::uint8_t ConstructedString = TagOctetString | ConstructedBit;

// An opening of indefinite length.
bool isOpening(karil::Bytes octets) {
    return octets.size() > 1 && octets[1] == IndefiniteLength && (octets[0] & ConstructedBit) != 0;
}

bool isClosing(karil::Bytes octets) {
    return octets.size() > 1 && octets[0] == 0 && octets[1] == 0;
}

// A string out of its pieces.
karil::Octets inOnePiece(std::uint8_t tag, karil::Bytes pieces) {
    karil::Octets all;
    for (const Element &piece : Elements(pieces))
        all.insert(all.end(), piece.content.begin(), piece.content.end());
    return wrapped(tag, {all});
}

// The elements in a SEQUENCE. An EncryptedContentInfo (RFC 2315 10.1), { type, algorithm, [0] IMPLICIT OCTET STRING },
// may have its string in pieces, which no tag tells.
karil::Octets sequence(karil::Bytes content) {
    const Elements parts(content);
    if (parts.size() != 3 || parts[0].tag != TagOid || parts[1].tag != TagSequence || parts[2].tag != TagContext0)
        return wrapped(TagSequence, {content});
    return wrapped(TagSequence, {parts[0].whole, parts[1].whole, inOnePiece(TagContext, parts[2].content)});
}

// Takes an element off `octets` and appends it to `to`.
bool convert(karil::Bytes &octets, karil::Octets &to, int level) {
    const bool isIndefinite = isOpening(octets);
    const std::uint8_t tag = octets.empty() ? std::uint8_t{TagNone} : octets[0];
    karil::Bytes inside;
    if (isIndefinite) {
        octets = octets.subspan(2);
    } else {
        const Element element = takeElement(octets);
        if (!element)
            return false;
        if ((tag & ConstructedBit) == 0) {
            to.insert(to.end(), element.whole.begin(), element.whole.end());
            return true;
        }
        inside = element.content;
    }
    karil::Bytes &rest = isIndefinite ? octets : inside;
    karil::Octets content;
    while (isIndefinite ? !isClosing(rest) : !rest.empty())
        if (level == DeepestLevel || !convert(rest, content, level + 1))
            return false;
    if (isIndefinite)
        octets = octets.subspan(2);
    content = tag == ConstructedString ? inOnePiece(TagOctetString, content)
              : tag == TagSequence     ? sequence(content)
                                       : wrapped(tag, {content});
    to.insert(to.end(), content.begin(), content.end());
    return true;
}

} // namespace

std::optional<karil::Octets> definiteForm(karil::Bytes octets) {
    karil::Octets result;
    if (!convert(octets, result, 0))
        return {};
    return result;
}

} // namespace tool
