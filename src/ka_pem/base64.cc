#include "ka_pem.h"

#include <string.h>

namespace karil {

namespace {

constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t NoCharacter = 0xFF;
constexpr uint8_t Padding = 0x80; // with the value 0 in the lower bits

struct Values {
    uint8_t of[256];
};
constexpr Values makeValues() {
    Values values = {};
    for (uint8_t &value : values.of)
        value = NoCharacter;
    for (uint8_t i = 0; i < 64; ++i)
        values.of[static_cast<uint8_t>(Alphabet[i])] = i;
    values.of[static_cast<uint8_t>('=')] = Padding;
    return values;
}
constexpr Values CharacterValues = makeValues();

} // namespace

void writeBase64(Bytes octets, uint8_t *text) {
    while (!octets.empty()) {
        const size_t count = octets.size() < 3 ? octets.size() : 3;
        uint32_t word = uint32_t{octets[0]} << 16;
        if (count > 1)
            word |= uint32_t{octets[1]} << 8;
        if (count > 2)
            word |= octets[2];
        for (size_t i = 0; i < 4; ++i)
            *text++ = static_cast<uint8_t>(i > count ? '=' : Alphabet[word >> (18 - 6 * i) & 0x3F]);
        octets = octets.subspan(count);
    }
}

bool readBase64(Bytes text, uint8_t *octets, uint32_t &size) {
    if (text.size() % 4 != 0)
        return false;
    uint8_t group[4] = {};
    uint8_t *at = octets;
    for (; !text.empty(); text = text.subspan(4)) {
        for (size_t i = 0; i < 4; ++i)
            if (const uint8_t value = CharacterValues.of[text[i]]; value != NoCharacter)
                group[i] = value;
        const uint32_t word =
            (group[0] & 0x3Fu) << 18 | (group[1] & 0x3Fu) << 12 | (group[2] & 0x3Fu) << 6 | (group[3] & 0x3Fu);
        const bool isLast = text.size() == 4;
        const size_t padding = !isLast || group[3] != Padding ? 0 : group[2] != Padding ? 1 : 2;
        for (size_t i = 0; i < 3 - padding; ++i)
            *at++ = static_cast<uint8_t>(word >> (16 - 8 * i));
    }
    size = static_cast<uint32_t>(at - octets);
    return true;
}

} // namespace karil

using namespace karil;

int32_t base64_encode(const uint8_t *data, int32_t length, char *text) {
    if (length < 0 || text == nullptr || (data == nullptr && length > 0))
        return -1;
    const Bytes octets(data, static_cast<size_t>(length));
    writeBase64(octets, reinterpret_cast<uint8_t *>(text));
    text[base64Size(octets.size())] = 0;
    return 0;
}

int32_t base64_decode(const char *text, uint8_t *data, uint32_t *length) {
    if (text == nullptr || data == nullptr || length == nullptr)
        return -1;
    return readBase64({reinterpret_cast<const uint8_t *>(text), strlen(text)}, data, *length) ? 0 : -1;
}
