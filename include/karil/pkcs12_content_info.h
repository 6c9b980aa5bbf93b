/*
 * karil: the ContentInfos of PKCS#12 (RFC 7292 4.1): a SafeContents as data, enveloped data or encrypted data.
 *
 * These are the PKCS#7 families under names of their own (pkcs7_data.h, pkcs7_enveloped.h, pkcs7_encrypted.h), with the
 * values set that PKCS#12 fixes: the contexts are those families' own, and their functions can be mixed with these.
 * What holds for all PKCS#7 functions is said at the top of pkcs7.h; a function without statuses in its comment returns
 * those of the function that it names.
 */
#ifndef KARIL_PKCS12_CONTENT_INFO_H
#define KARIL_PKCS12_CONTENT_INFO_H

#include "karil/pkcs7_data.h"
#include "karil/pkcs7_encrypted.h"
#include "karil/pkcs7_enveloped.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Data: KA_PKCS7_CreateDataEncodeCtx, KA_PKCS7_SetDataContent, KA_PKCS7_GetDataContent, KA_PKCS7_EncodePKCS7Data,
 * KA_PKCS7_DecodePKCS7Data and KA_PKCS7_DestoryDataEncodeCtx.
 */
KARIL_API int32_t KA_PKCS12_CreateEncodeContentInfoOfDataType(DataCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeContentInfoOfDataType(DataCtx **out);
KARIL_API int32_t KA_PKCS12_SetContentInfoOfDataType_SafeContent(DataCtx *ctx, const uint8_t *value, int32_t length);
KARIL_API int32_t KA_PKCS12_GetContentInfoOfDataType_SafeContent(const DataCtx *ctx, uint8_t *result,
                                                                 uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_EncodeContentInfoOfDataType(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_DecodeContentInfoOfDataType(DataCtx *ctx, const uint8_t *der, int32_t length);
KARIL_API int32_t KA_PKCS12_DestoryEncodeContentInfoOfDataType(DataCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeContentInfoOfDataType(DataCtx *ctx);

/*
 * Makes a context with version 0 and an encrypted content of its own, and stores it in `*out`. Returns 0,
 * KACERT_MemoryErr or KACERT_InvalidItemErr. Free it with either destroy function.
 */
KARIL_API int32_t KA_PKCS12_CreateEncodeContentInfoOfEnvelopedType(EnvelopedDataCtx **out);
/* The same with version 0 and data as the type of the content. */
KARIL_API int32_t KA_PKCS12_CreateEncodeContentInfoOfEncryptedType(EncryptedDataCtx **out);

/*
 * Make a context to decode into: KA_PKCS7_CreateEnvelopedDataDecodeCtx and KA_PKCS7_CreateEncryptedDataDecodeCtx. Its
 * encrypted content comes with decoding. Until then the functions below that work on an encrypted content answer
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS12_CreateDecodeContentInfoOfEnvelopedType(EnvelopedDataCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeContentInfoOfEncryptedType(EncryptedDataCtx **out);

/* Free the context with all it holds. Null is accepted. Return 0. */
KARIL_API int32_t KA_PKCS12_DestoryEncodeContentInfoOfEnvelopedType(EnvelopedDataCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeContentInfoOfEnvelopedType(EnvelopedDataCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryEncodeContentInfoOfEncryptedType(EncryptedDataCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeContentInfoOfEncryptedType(EncryptedDataCtx *ctx);

/*
 * Set the plain content to a copy of `length` octets at `value`: PKCS7_ENVELOPED_ENCRYPTED_CONTENT, with data as its
 * type, and PKCS7_ENCRYPTEDDATA_CONTENTENCRYPTION_PARAMETER. Return as KA_PKCS7_SetEnvelopedDataAttributeChar and
 * KA_PKCS7_SetEncryptedDataAttributeChar.
 */
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_SafeContent(EnvelopedDataCtx *ctx, const uint8_t *value,
                                                                      int32_t length);
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEncryptedType_SafeContent(EncryptedDataCtx *ctx, const uint8_t *value,
                                                                      int32_t length);

/*
 * Have the hook of the encrypted content decipher it: KA_PKCS7_GetEncryptedContentInformation. `result`: receives the
 * plain content; room for the cipher text's length is enough for a usual cipher. `*resultLength`: its octets.
 */
KARIL_API int32_t KA_PKCS12_GetContentInfoOfEnvelopedType_SafeContent(EnvelopedDataCtx *ctx, uint8_t *result,
                                                                      uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GetContentInfoOfEncryptedType_SafeContent(EncryptedDataCtx *ctx, uint8_t *result,
                                                                      uint32_t *resultLength);

/*
 * Store the hook of the encrypted content, for both directions, with a copy of `length` octets at `parameter`:
 * KA_PKCS7_SetEncryptContentEncFunc. The last two are one function. A parameter that is a record with pointers, as
 * PbeHookParam, is copied without what they point to: that must live until the hook is called.
 */
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_EncContentFunc(EnvelopedDataCtx *ctx, KAHookFunc hook,
                                                                         const void *parameter, int32_t length);
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEncryptedType_EncContentFunc(EncryptedDataCtx *ctx, KAHookFunc hook,
                                                                         const void *parameter, int32_t length);
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEncryptedType_DecContentFunc(EncryptedDataCtx *ctx, KAHookFunc hook,
                                                                         const void *parameter, int32_t length);

/*
 * Set and answer PKCS7_ENCRYPT_ALGO of the encrypted content, OID content octets, as
 * KA_PKCS7_SetEncryptedContentAttributeChar and KA_PKCS7_GetEncryptedContentAttributeChar do.
 */
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_DesAlgorithm(EnvelopedDataCtx *ctx, const uint8_t *oid,
                                                                       int32_t length);
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEncryptedType_DesAlgorithm(EncryptedDataCtx *ctx, const uint8_t *oid,
                                                                       int32_t length);
KARIL_API int32_t KA_PKCS12_GetContentInfoOfEnvelopedType_DesAlgorithm(EnvelopedDataCtx *ctx, uint8_t *result,
                                                                       uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GetContentInfoOfEncryptedType_DesAlgorithm(EncryptedDataCtx *ctx, uint8_t *result,
                                                                       uint32_t *resultLength);

/*
 * Set PKCS7_ENCRYPT_PARAMETER of the encrypted content to SEQUENCE { salt OCTET STRING, iterations INTEGER } (RFC 7292
 * appendix C). `salt`: `saltLength` octets; null only with length 0. Return 0; KACERT_InvalidItemErr for a null context
 * or one without encrypted content; KACERT_InvalidParamErr if the parameter cannot be written, for want of memory too;
 * KACERT_MemoryErr if it cannot be stored.
 */
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_DesParameter(EnvelopedDataCtx *ctx, const uint8_t *salt,
                                                                       uint32_t saltLength, uint32_t iterations);
KARIL_API int32_t KA_PKCs12_SetContentInfoOfEncryptedType_DesParameter(EncryptedDataCtx *ctx, const uint8_t *salt,
                                                                       uint32_t saltLength, uint32_t iterations);

/*
 * Read that parameter. `salt`: receives the octets; the parameter's length is room enough. `*saltLength`: their number.
 * Return 0; KACERT_InvalidItemErr, also without encrypted content; KACERT_LengthNotEqualErr without parameter; for one
 * of another shape the statuses of KA_PKCS12_DecodeParameter. After a failure no output is changed.
 */
KARIL_API int32_t KA_PKCS12_GetContentInfoOfEnvelopedType_DesParameter(EnvelopedDataCtx *ctx, uint8_t *salt,
                                                                       uint32_t *saltLength, uint32_t *iterations);
KARIL_API int32_t KA_PKCS12_GetContentInfoOfEncryptedType_DesParameter(EncryptedDataCtx *ctx, uint8_t *salt,
                                                                       uint32_t *saltLength, uint32_t *iterations);

/* Hands a recipient over: KA_PKCS7_SetEnvelopedData_RecipientInfo. */
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_RecipientInfo(EnvelopedDataCtx *ctx,
                                                                        RecipientInfoCtx *recipient);
/* Sets PKCS7_ENVELOPED_RECIPIENT_KEY, the key of the content: KA_PKCS7_SetEnvelopedDataAttributeChar. */
KARIL_API int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_EncContentKey(EnvelopedDataCtx *ctx, const uint8_t *key,
                                                                        int32_t length);

/*
 * KA_PKCS7_EncodePKCS7EnvelopedData, KA_PKCS7_DecodePKCS7EnvelopedData, KA_PKCS7_EncodePKCS7EncryptedData and
 * KA_PKCS7_DecodePKCS7EncryptedData. The encoders refuse an EncryptedContentInfo above 10,240 octets;
 * KA_PKCS12_EncodePFX does not.
 */
KARIL_API int32_t KA_PKCS12_EncodeContentInfoOfEnvelopedType(EnvelopedDataCtx *ctx, uint8_t *result,
                                                             uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_DecodeContentInfoOfEnvelopedType(EnvelopedDataCtx *ctx, const uint8_t *der, int32_t length);
KARIL_API int32_t KA_PKCS12_EncodeContentInfoOfEncryptedType(EncryptedDataCtx *ctx, uint8_t *result,
                                                             uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_DecodeContentInfoOfEncryptedType(EncryptedDataCtx *ctx, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
