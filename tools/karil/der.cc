#include "der.h"

namespace tool {

Element takeElement(karil::Bytes &octets) {
    constexpr std::uint8_t longTag = 0x1F;
    if (octets.size() < 2 || (octets[0] & longTag) == longTag)
        return {};
    std::size_t length = octets[1];
    std::size_t header = 2;
    if (length >= 0x80) {
        const std::size_t count = length & 0x7F;
        if (count == 0 || count > 4 || octets.size() < 2 + count)
            return {};
        length = 0;
        for (std::size_t i = 0; i < count; ++i)
            length = length << 8 | octets[header++];
    }
    if (length > octets.size() - header)
        return {};
    const Element element{octets[0], octets.first(header + length), octets.subspan(header, length)};
    octets = octets.subspan(header + length);
    return element;
}

Elements::Elements(karil::Bytes content, std::size_t most) {
    while (found.size() < most) {
        const Element element = takeElement(content);
        if (!element)
            break;
        found.push_back(element);
    }
}

} // namespace tool
