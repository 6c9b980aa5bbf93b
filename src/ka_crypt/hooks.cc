#include "ka_crypt.h"

int32_t KA_DigestFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                          void *digestId) {
    if (digestId == nullptr)
        return KACERT_InvalidItemErr;
    return KA_PKCS7_DigestMessage(*static_cast<const int32_t *>(digestId), input, inputLength, output, outputLength);
}

// The four key hooks: input first, the operations output first.
#define KA_KEY_HOOK(NAME, OPERATION, RECORD)                                                                           \
    int32_t NAME(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *key) {     \
        if (key == nullptr)                                                                                            \
            return KACERT_InvalidItemErr;                                                                              \
        return OPERATION(output, outputLength, input, inputLength, static_cast<const RECORD *>(key));                  \
    }

KA_KEY_HOOK(KA_PrivateKeyEncFunc_Ref, KA_PKCS7_RSAPrivateEncrypt, RsaPrivateKeyRecord)
KA_KEY_HOOK(KA_PrivateKeyDecryptFunc_Ref, KA_PKCS7_RSAPrivateDecrypt, RsaPrivateKeyRecord)
KA_KEY_HOOK(KA_PublicKeyDecryptFunc_Ref, KA_PKCS7_RSAPublicDecrypt, RsaPublicKeyRecord)
KA_KEY_HOOK(KA_PublicKeyEncryptFunc_Ref, KA_PKCS7_RSAPublicEncrypt, RsaPublicKeyRecord)
