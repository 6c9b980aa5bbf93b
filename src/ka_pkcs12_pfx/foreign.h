// The walk over BER elements that the reader of foreign bundles goes by: a flat one, in the order of the input.
#pragma once

#include "ka_low.h"

namespace karil {

// What the walk answers. They are no status codes.
constexpr Status NotWalkable = -1;
constexpr Status NoWalkMemory = 1;

enum class NodeKind : uint8_t { Constructed, Primitive, EndOfContents, Null };

struct Node {
    uint8_t tag = 0;
    NodeKind kind = NodeKind::Primitive;
    uint32_t length = 0;   // of the content; 0 if it is indefinite
    size_t headerSize = 0; // tag and length
    Bytes from;            // the input from the element's first octet to its end, past the element

    bool isDefinite() const { return from[1] != 0x80; }
    bool isPrimitive() const { return kind == NodeKind::Primitive; }
    // Of a primitive one.
    Bytes content() const { return from.subspan(headerSize, length); }
    // What the walk moves on by: an element that is constructed is followed by those in it.
    size_t step() const { return headerSize + (isPrimitive() ? length : 0); }
};

// The tag and length at the front of `input`. False if they are cut off, if a primitive element has no definite length,
// and for a length above 2^31 - 1. The content need not be there.
[[nodiscard]] bool readNode(Bytes input, Node &out);

// The elements of octets that were checked.
class Walker {
public:
    // NotWalkable unless every element, one after the other, is all there.
    [[nodiscard]] static Status check(Bytes input);
    explicit Walker(Bytes checked) : rest(checked) {}
    // False at the end.
    [[nodiscard]] bool next(Node &out);

private:
    Bytes rest;
};

} // namespace karil
