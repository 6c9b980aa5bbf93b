// Base64 within the folder: lengths are known, so that no zero has to end the text.
#pragma once

#include "karil/pem.h"

#include "ka_low.h"

namespace karil {

constexpr uint64_t base64Size(uint64_t octets) {
    return (octets + 2) / 3 * 4;
}
// `text` has room for base64Size(octets).
void writeBase64(Bytes octets, uint8_t *text);
// False where the characters do not come out in groups of four. `octets` has room for three to a group.
[[nodiscard]] bool readBase64(Bytes text, uint8_t *octets, uint32_t &size);

} // namespace karil
