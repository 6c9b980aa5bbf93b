#include "der_write.h"

#include <algorithm>

namespace tool {

karil::Octets joined(std::initializer_list<karil::Bytes> parts) {
    karil::Octets all;
    for (const karil::Bytes part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

karil::Octets wrapped(std::uint8_t tag, std::initializer_list<karil::Bytes> parts) {
    std::size_t length = 0;
    for (const karil::Bytes part : parts)
        length += part.size();
    karil::Octets whole{tag};
    if (length < 0x80) {
        whole.push_back(static_cast<std::uint8_t>(length));
    } else {
        int octets = 1;
        while (length >> (8 * octets) != 0)
            ++octets;
        whole.push_back(static_cast<std::uint8_t>(0x80 + octets));
        for (int shift = 8 * (octets - 1); shift >= 0; shift -= 8)
            whole.push_back(static_cast<std::uint8_t>(length >> shift));
    }
    for (const karil::Bytes part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

bool isSame(karil::Bytes one, karil::Bytes other) {
    return std::ranges::equal(one, other);
}

} // namespace tool
