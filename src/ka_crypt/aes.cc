// AES by EVP, whose code is constant in time and many times faster; the low-level one is neither. libcrypto loads its
// default provider by itself.
#include "cipher.h"

#include <openssl/err.h>
#include <openssl/evp.h>

namespace karil {

namespace {

// A length of EVP is an int.
constexpr size_t LargestPart = size_t{1} << 30;

Status answer(bool isDone) {
    if (isDone)
        return KACERT_Ok;
    ERR_clear_error();
    return KACERT_MemoryErr;
}

} // namespace

void AesCipher::Free::operator()(evp_cipher_ctx_st *block) const noexcept {
    EVP_CIPHER_CTX_free(block);
}

Status AesCipher::setKey(const uint8_t *key, const uint8_t *iv) {
    state.reset(EVP_CIPHER_CTX_new());
    return answer(
        state != nullptr &&
        EVP_CipherInit_ex(state.get(), EVP_aes_128_cbc(), nullptr, key, iv, direction == Direction::Encrypt) == 1 &&
        EVP_CIPHER_CTX_set_padding(state.get(), 0) == 1);
}

Status AesCipher::setIv(const uint8_t *iv) {
    return answer(EVP_CipherInit_ex(state.get(), nullptr, nullptr, nullptr, iv, -1) == 1);
}

Status AesCipher::run(Bytes input, uint8_t *output) {
    while (!input.empty()) {
        const Bytes part = input.first(input.size() < LargestPart ? input.size() : LargestPart);
        int written = 0;
        KA_PASS(
            answer(EVP_CipherUpdate(state.get(), output, &written, part.data(), static_cast<int>(part.size())) == 1));
        output += part.size();
        input = input.subspan(part.size());
    }
    return KACERT_Ok;
}

} // namespace karil
