// Passwords, keys out of them, and HMAC. These functions write no trace.
#include "karil/pkcs12_crypt.h"

#include "cipher.h"

using namespace karil;

namespace {

bool isMissing(const void *octets, uint32_t length) {
    return octets == nullptr && length > 0;
}

} // namespace

int32_t KA_PKCS12_ACIItoUNI(const uint8_t *ascii, uint32_t count, uint8_t *output, uint32_t *outputLength) {
    if (isMissing(ascii, count) || output == nullptr || outputLength == nullptr)
        return KACERT_InvalidParamErr;
    if (count > UINT32_MAX / 2 - 1)
        return KACERT_InvalidLengthErr;
    uint8_t *at = output;
    for (const uint8_t octet : Bytes(ascii, count)) {
        *at++ = 0;
        *at++ = octet;
    }
    *at++ = 0;
    *at = 0;
    *outputLength = 2 * count + 2;
    return KACERT_Ok;
}

int32_t KA_PKCS12_GenRandomFromPassword(int32_t digestId, const uint8_t *password, uint32_t passwordLength,
                                        const uint8_t *salt, uint32_t saltLength, uint8_t purpose, uint32_t iterations,
                                        uint8_t *output, uint32_t outputLength) {
    if (digestAlgorithm(digestId) == nullptr)
        return KAPKCS7_RsaOperationErr;
    if (isMissing(password, passwordLength) || isMissing(salt, saltLength) || isMissing(output, outputLength))
        return KACERT_InvalidParamErr;
    const PasswordDerivation from = {digestId, {password, passwordLength}, {salt, saltLength}, iterations};
    return derive(from, purpose, {output, outputLength});
}

int32_t KA_PKCS12_HMAC(int32_t digestId, const uint8_t *key, uint32_t keyLength, const uint8_t *data,
                       uint32_t dataLength, uint8_t *output, uint32_t *outputLength) {
    if (digestAlgorithm(digestId) == nullptr)
        return KAPKCS7_RsaOperationErr;
    if (isMissing(data, dataLength) || output == nullptr || outputLength == nullptr)
        return KACERT_InvalidParamErr;
    *outputLength = hmac(digestId, key != nullptr ? Bytes(key, keyLength) : Bytes(), {data, dataLength}, output);
    return KACERT_Ok;
}
