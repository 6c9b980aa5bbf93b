#include "ka_asn2.h"

#include <string.h>

using namespace karil;

namespace {

bool isSeparator(char c) {
    return c == '.' || c == ' ';
}

uint32_t base128(uint32_t value, uint8_t (&groups)[5]) {
    uint32_t count = 1;
    while (count < 5 && uint64_t{value} >> (7 * count) != 0)
        ++count;
    for (uint32_t i = 0; i < count; ++i) {
        const auto group = static_cast<uint8_t>(uint64_t{value} >> (7 * (count - 1 - i)) & 0x7F);
        groups[i] = i + 1 < count ? group | 0x80 : group;
    }
    return count;
}

// Counts the content octets of `text`, and writes them if `result` is given; 0 for bad text.
uint64_t convert(std::span<const char> text, uint8_t *result) {
    if (text.size() < 3 || text[0] < '0' || text[0] > '2')
        return 0;
    const auto first = static_cast<uint32_t>(text[0] - '0');
    uint64_t size = 0;
    size_t at = 1;
    while (at < text.size()) {
        if (!isSeparator(text[at++]) || at == text.size() || isSeparator(text[at]))
            return 0;
        uint32_t arc = 0;
        for (; at < text.size() && !isSeparator(text[at]); ++at) {
            if (text[at] < '0' || text[at] > '9')
                return 0;
            arc = arc * 10 + static_cast<uint32_t>(text[at] - '0');
        }
        if (size == 0) {
            if (first == 0 && arc >= 40)
                return 0;
            arc += 40 * first;
        }
        uint8_t groups[5];
        const uint32_t count = base128(arc, groups);
        if (result != nullptr)
            memcpy(result + size, groups, count);
        size += count;
    }
    return size;
}

} // namespace

int32_t KACert_OidTextToDer(uint8_t *result, uint32_t capacity, const char *text, int32_t length) {
    if (text == nullptr || length == 0 || length < -1)
        return 0;
    const std::span<const char> arcs(text, length == -1 ? strlen(text) : static_cast<size_t>(length));
    const uint64_t size = convert(arcs, nullptr);
    if (size == 0 || size > INT32_MAX || (result != nullptr && size > capacity))
        return 0;
    if (result != nullptr)
        convert(arcs, result);
    return static_cast<int32_t>(size);
}

int32_t KACert_GetOIDValue(const char *text, int32_t length, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KACert_GetOIDValue");
    if (text == nullptr || length < 1 || text[0] == '\0' || resultLength == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KACert_GetOIDValue");
    uint8_t octets[1024];
    const int32_t size = KACert_OidTextToDer(octets, sizeof octets, text, length);
    if (size == 0)
        return KA_FAIL(KACERT_AlgorithmNotSupportErr, "------>KACert_OidTextToDer");
    if (result != nullptr)
        memcpy(result, octets, static_cast<size_t>(size));
    *resultLength = static_cast<uint32_t>(size);
    return KA_DONE();
}
