// PEM, base64 and DN strings.
#pragma once

#include "karil/dn_string.h"
#include "karil/pem.h"

#include "ka_low.h"

#include <string.h>

namespace karil {

// What PEM and DN strings answer if they fail.
constexpr Status Refused = -1;

inline Bytes bytesOf(const char *text) {
    return {reinterpret_cast<const uint8_t *>(text), strlen(text)};
}

// The octets before the first `octet` and those after it; false, with both as they were, if there is none.
bool split(Bytes text, uint8_t octet, Bytes &front, Bytes &after);

// Octets of the base64 text of `size` octets, without a terminator.
constexpr uint64_t encodedSize(uint64_t size) {
    return (size + 2) / 3 * 4;
}

// base64_decode of a text that needs no terminator.
[[nodiscard]] Status decodeBase64(Bytes text, uint8_t *output, uint32_t *outputLength);

} // namespace karil
