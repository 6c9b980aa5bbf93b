/*
 * karil: bundles of a key and certificates that other programs write in forms of their own.
 */
#ifndef KARIL_PFX_FOREIGN_H
#define KARIL_PFX_FOREIGN_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

KARIL_API int32_t KA_PKCS12_GetKeyAndCertFromNspP12(const uint8_t *input, uint32_t inputLength, const uint8_t *password,
                                                    uint32_t passwordLength, uint8_t *certificate,
                                                    uint32_t *certificateLength, uint8_t *key, uint32_t *keyLength);

KARIL_API int32_t KA_PKCS12_Decode_GFAN(const uint8_t *safeContents, int32_t safeContentsLength, const uint8_t *keyBag,
                                        int32_t keyBagLength, uint8_t *key, uint32_t *keyLength, uint8_t *second,
                                        uint32_t *secondLength, uint8_t *first, uint32_t *firstLength);

#ifdef __cplusplus
}
#endif

#endif
