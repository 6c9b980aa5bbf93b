/*
 * karil: EncryptedData (RFC 2315 13): a content enciphered under a key that both sides have.
 *
 * To encode: create, set version, content type and content; create an encrypted content with its cipher and hook
 * (pkcs7_encrypted_content.h) and hand it over; encode. To decode: decode, take the encrypted content, set its hook,
 * and have it deciphered. What holds for all PKCS#7 functions is said at the top of pkcs7.h.
 */
#ifndef KARIL_PKCS7_ENCRYPTED_H
#define KARIL_PKCS7_ENCRYPTED_H

#include "karil/pkcs7_encrypted_content.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A message, for both directions. What was decoded is in the encrypted content alone. */
typedef struct EncryptedDataCtx {
    uint8_t versionSet;
    uint32_t version;
    EncryptedContentCtx *encryptedContent; /* owned */
    AlgorithmRecord contentType;           /* of the inner content, to encode */
    Anybuf content;                        /* plain, to encode; wiped when it is freed */

    /* The library's own: what was decoded, of which records hold parts. */
    struct KeptOctets *kept;
} EncryptedDataCtx;
KARIL_SIZE_32(EncryptedDataCtx, 76);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function.
 */
KARIL_API int32_t KA_PKCS7_CreateEncryptedDataEncodeCtx(EncryptedDataCtx **out);
KARIL_API int32_t KA_PKCS7_CreateEncryptedDataDecodeCtx(EncryptedDataCtx **out);

/* Frees the context with all it holds, its encrypted content included. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestoryEncryptedDataEncodeCtx(EncryptedDataCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestoryEncryptedDataDecodeCtx(EncryptedDataCtx *ctx);

/* Sets PKCS7_ENCRYPTEDDATA_VERSION. Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS7_SetEncryptedDataAttributeInt(EncryptedDataCtx *ctx, int32_t id, int32_t value);

/* Stores PKCS7_ENCRYPTEDDATA_VERSION in `*value`, 0 where there is none. Returns as the Set. */
KARIL_API int32_t KA_PKCS7_GetEncryptedDataAttributeInt(const EncryptedDataCtx *ctx, int32_t id, int32_t *value);

/*
 * Sets PKCS7_ENCRYPTEDDATA_CONTENTTYPE or PKCS7_ENCRYPTEDDATA_CONTENTENCRYPTION_PARAMETER, which is the plain content,
 * to a copy of `length` octets at `value`. Returns 0; KACERT_AttributeNotSupportErr for another id;
 * KACERT_InvalidItemErr, also for a length below 1; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetEncryptedDataAttributeChar(EncryptedDataCtx *ctx, int32_t id, const uint8_t *value,
                                                         int32_t length);

/*
 * Answers one of these ids as it was set; after decoding there is neither. `result`: receives the octets; the caller
 * sees to its size, and it must not be null. `*resultLength`: their number. Where there are none, both stay as they
 * were, with status 0. Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetEncryptedDataAttributeChar(EncryptedDataCtx *ctx, int32_t id, uint8_t *result,
                                                         uint32_t *resultLength);

/*
 * Hands an encrypted content over: the message owns it, and frees it. A message that has one already keeps that one:
 * the second stays the caller's, with status 0. Returns 0 or KACERT_InvalidItemErr, also for one that a message has
 * taken.
 */
KARIL_API int32_t KA_PKCS7_SetEncrytpedData_EncryptedContent(EncryptedDataCtx *ctx, EncryptedContentCtx *content);

/*
 * Stores the message's encrypted content in `*content`; the message stays its owner. Where there is none `*content`
 * stays as it was, with status 0. Returns 0 or KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetEncrytpedData_EncryptedContent(const EncryptedDataCtx *ctx,
                                                             EncryptedContentCtx **content);

/*
 * Has the encrypted content encipher the content, and writes the message. Nothing is kept: each call runs the hook.
 * `result`: receives the DER, or null to ask for the length; the caller sees to its size. `*resultLength`: its octets.
 * Returns 0; KACERT_InvalidItemErr, also for a missing version, content type, content or encrypted content;
 * KACERT_InvalidLengthErr for an EncryptedContentInfo above 10,240 octets; what KA_PKCS7_EncodeEncryptedContent
 * returns; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_EncodePKCS7EncryptedData(EncryptedDataCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a message in the place of what the context held, an encrypted content of any size. No hook is called. `der`:
 * `length` octets; a length below 1 is refused. An EncryptedContentInfo that lacks elements is status 0, as for
 * KA_PKCS7_DecodeEncryptedContent.
 * Returns 0; KACERT_InvalidItemErr for what is no EncryptedData message, another content type included, or for a
 * missing element; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_MemoryErr. What was
 * decoded before a failure stays.
 */
KARIL_API int32_t KA_PKCS7_DecodePKCS7EncryptedData(EncryptedDataCtx *ctx, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
