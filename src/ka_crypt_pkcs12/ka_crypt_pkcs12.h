// Encryption as PKCS#12 needs it: what its files share.
#pragma once

#include "cipher.h"

namespace karil {

// Refuses a null pointer to what is read or written.
[[nodiscard]] inline Status checkBuffers(Bytes input, const uint8_t *output, const uint32_t *outputLength) {
    const bool isThere = (input.data() != nullptr || input.empty()) && output != nullptr && outputLength != nullptr;
    return isThere ? KACERT_Ok : KACERT_InvalidParamErr;
}

} // namespace karil
