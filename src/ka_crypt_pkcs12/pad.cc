// Padding to whole blocks of 8 octets.
#include "ka_crypt_pkcs12.h"

using namespace karil;

int32_t KA_PKCS12_AddPad(const uint8_t *input, uint32_t length, uint8_t *output, uint32_t *outputLength) {
    KA_PASS(checkBuffers({input, length}, output, outputLength));
    const uint32_t count = PbeBlock - length % PbeBlock;
    if (length > UINT32_MAX - count)
        return KA_FAIL(KACERT_InvalidLengthErr, "------------>KACERT_InvalidLengthErr");
    if (length > 0)
        memmove(output, input, length);
    memset(output + length, static_cast<int>(count), count);
    *outputLength = length + count;
    return KACERT_Ok;
}

int32_t KA_PKCS12_DecPad(const uint8_t *input, uint32_t length, uint8_t *output, uint32_t *outputLength) {
    KA_PASS(checkBuffers({input, length}, output, outputLength));
    if (length == 0 || input[length - 1] >= length)
        return KA_FAIL(KACERT_InvalidLengthErr, "------------>KACERT_InvalidLengthErr");
    const uint32_t left = length - input[length - 1];
    memmove(output, input, left);
    *outputLength = left;
    return KACERT_Ok;
}
