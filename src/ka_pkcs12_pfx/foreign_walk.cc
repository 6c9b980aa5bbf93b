#include "foreign.h"

namespace karil {

namespace {

// The low five bits of tags that input may begin with.
constexpr uint32_t bit(uint32_t number) {
    return uint32_t{1} << number;
}
constexpr uint32_t FirstTags = bit(0x02) | bit(0x03) | bit(0x04) | bit(0x05) | bit(0x06) | bit(0x10) | bit(0x11) |
                               bit(0x13) | bit(0x14) | bit(0x16) | bit(0x17);

constexpr uint8_t ConstructedBit = 0x20;
constexpr uint8_t Indefinite = 0x80;
constexpr uint8_t NullTag = 0x05;

bool readLength(Bytes octets, uint32_t &length) {
    uint64_t value = 0;
    for (const uint8_t octet : octets) {
        value = value << 8 | octet;
        if (value > INT32_MAX)
            return false;
    }
    length = static_cast<uint32_t>(value);
    return true;
}

// A node whose element is all there, as far as the walk needs it.
bool takeNode(Bytes input, Node &out) {
    return readNode(input, out) && out.step() <= input.size();
}

} // namespace

bool readNode(Bytes input, Node &out) {
    if (input.size() < 2)
        return false;
    out = {input[0], NodeKind::Primitive, 0, 2, input};
    const uint8_t field = input[1];
    if ((out.tag == 0 || out.tag == NullTag) && field == 0) {
        out.kind = out.tag == 0 ? NodeKind::EndOfContents : NodeKind::Null;
        return true;
    }
    if ((out.tag & ConstructedBit) != 0)
        out.kind = NodeKind::Constructed;
    if (field == Indefinite)
        return !out.isPrimitive();
    if (field < Indefinite) {
        out.length = field;
        return true;
    }
    const size_t count = field & 0x7Fu;
    out.headerSize += count;
    return out.headerSize <= input.size() && readLength(input.subspan(2, count), out.length);
}

Status Walker::check(Bytes input) {
    if (input.empty() || (FirstTags >> (input[0] & 0x1F) & 1) == 0)
        return KA_FAIL(NotWalkable, "------------>The first tag is not known");
    Node node;
    for (; !input.empty(); input = input.subspan(node.step()))
        if (!takeNode(input, node))
            return KA_FAIL(NotWalkable, "------------>The element is not whole");
    return KACERT_Ok;
}

bool Walker::next(Node &out) {
    if (!takeNode(rest, out))
        return false;
    rest = rest.subspan(out.step());
    return true;
}

} // namespace karil
