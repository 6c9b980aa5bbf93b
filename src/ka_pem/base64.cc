#include "ka_pem.h"

#include <array>

namespace karil {

namespace {

constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t Pad = 0x40;
constexpr uint8_t Unknown = 0x80;

// The value of each character.
constexpr auto Values = [] {
    std::array<uint8_t, 256> values = {};
    values.fill(Unknown);
    for (uint8_t value = 0; value < 64; ++value)
        values[static_cast<uint8_t>(Alphabet[value])] = value;
    values['='] = Pad;
    return values;
}();

// Four characters' values. A character that has none leaves what stood in its place.
struct Group {
    uint8_t values[4] = {};

    void take(const uint8_t *text) {
        for (size_t i = 0; i < 4; ++i) {
            const uint8_t value = Values[text[i]];
            values[i] = value == Unknown ? values[i] : value;
        }
    }
    uint32_t padding() const { return values[3] != Pad ? 0 : values[2] != Pad ? 1 : 2; }
    void put(uint8_t *output, uint32_t size) const {
        const uint32_t bits =
            (values[0] & 63u) << 18 | (values[1] & 63u) << 12 | (values[2] & 63u) << 6 | (values[3] & 63u);
        for (uint32_t i = 0; i < size; ++i)
            output[i] = static_cast<uint8_t>(bits >> (16 - 8 * i));
    }
};

// The short form of groups in a row that have characters of the alphabet alone: how many there are at the head of the
// text, before its last group. Their octets go to the output.
size_t decodeUsual(Bytes text, uint8_t *output) {
    const uint8_t *at = text.data();
    const size_t groups = (text.size() - 1) / 4;
    for (size_t done = 0; done < groups; ++done, at += 4, output += 3) {
        const uint32_t values[] = {Values[at[0]], Values[at[1]], Values[at[2]], Values[at[3]]};
        if ((values[0] | values[1] | values[2] | values[3]) >= Pad)
            return done;
        const uint32_t bits = values[0] << 18 | values[1] << 12 | values[2] << 6 | values[3];
        output[0] = static_cast<uint8_t>(bits >> 16);
        output[1] = static_cast<uint8_t>(bits >> 8);
        output[2] = static_cast<uint8_t>(bits);
    }
    return groups;
}

void encodeGroup(uint32_t bits, uint8_t *output) {
    for (uint32_t i = 0; i < 4; ++i)
        output[i] = static_cast<uint8_t>(Alphabet[bits >> (18 - 6 * i) & 63]);
}

uint8_t *encodeRest(Bytes rest, uint8_t *output) {
    if (rest.empty())
        return output;
    encodeGroup(uint32_t{rest[0]} << 16 | (rest.size() > 1 ? uint32_t{rest[1]} << 8 : 0), output);
    memset(output + 1 + rest.size(), '=', 3 - rest.size());
    return output + 4;
}

} // namespace

Status decodeBase64(Bytes text, uint8_t *output, uint32_t *outputLength) {
    if (text.size() % 4 != 0 || text.size() / 4 > UINT32_MAX / 3)
        return Refused;
    Group group;
    uint8_t *at = output;
    while (text.size() > 4) {
        const size_t usual = decodeUsual(text, at);
        at += 3 * usual;
        if (usual > 0) {
            group.take(text.data() + 4 * (usual - 1));
            text = text.subspan(4 * usual);
            continue;
        }
        group.take(text.data());
        group.put(at, 3);
        text = text.subspan(4);
        at += 3;
    }
    if (!text.empty()) {
        group.take(text.data());
        const uint32_t size = 3 - group.padding();
        group.put(at, size);
        at += size;
    }
    *outputLength = static_cast<uint32_t>(at - output);
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t base64_encode(const uint8_t *input, uint32_t length, uint8_t *output) {
    if ((input == nullptr && length > 0) || output == nullptr)
        return Refused;
    Bytes rest(input, length);
    for (; rest.size() >= 3; rest = rest.subspan(3), output += 4)
        encodeGroup(uint32_t{rest[0]} << 16 | uint32_t{rest[1]} << 8 | rest[2], output);
    *encodeRest(rest, output) = 0;
    return KACERT_Ok;
}

int32_t base64_decode(const char *text, uint8_t *output, uint32_t *outputLength) {
    if (text == nullptr || output == nullptr || outputLength == nullptr)
        return Refused;
    return decodeBase64(bytesOf(text), output, outputLength);
}
