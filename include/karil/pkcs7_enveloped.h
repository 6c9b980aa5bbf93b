/*
 * karil: EnvelopedData (RFC 2315 10): a content enciphered under a key that each recipient can open.
 *
 * To encode: create; set version, key, content and content type; create each recipient with its hook
 * (pkcs7_recipient.h) and hand it over; create an encrypted content with its cipher and hook
 * (pkcs7_encrypted_content.h) and hand it over; encode. To decode: decode; follow `next` from the first recipient to
 * the right one, set its hook, and have it open the key; take the encrypted content, set its hook with the key, and
 * have it deciphered. What holds for all PKCS#7 functions is said at the top of pkcs7.h.
 */
#ifndef KARIL_PKCS7_ENVELOPED_H
#define KARIL_PKCS7_ENVELOPED_H

#include "karil/pkcs7_encrypted_content.h"
#include "karil/pkcs7_recipient.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A message, for both directions. Records that decoding fills, those of its recipients and of its encrypted content
 * included, hold parts of the octets that the context keeps.
 */
typedef struct EnvelopedDataCtx {
    uint8_t versionSet;
    uint8_t recipientsSet; /* 1 once decoded; setting recipients leaves it as it is */
    uint8_t contentSet;    /* 1 after a Set of octets, or once decoded */
    uint32_t version;
    uint32_t recipientCount;
    Anybuf *recipientSet; /* decoded, a whole element each */
    uint32_t recipientCount2;
    RecipientInfoCtx *recipients;
    EncryptedContentCtx *encryptedContent; /* owned */
    AlgorithmRecord contentType;           /* of the inner content */
    Anybuf content;                        /* plain, to encode; wiped when it is freed */
    Anybuf key;                            /* of the content; wiped when it is freed */

    /* The library's own. */
    ListMarks recipientMarks;
    struct KeptOctets *kept; /* what was decoded; records hold parts of it */
} EnvelopedDataCtx;
KARIL_SIZE_32(EnvelopedDataCtx, 132);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function.
 */
KARIL_API int32_t KA_PKCS7_CreateEnvelopedDataEncodeCtx(EnvelopedDataCtx **out);
KARIL_API int32_t KA_PKCS7_CreateEnvelopedDataDecodeCtx(EnvelopedDataCtx **out);

/* Frees the context with all it holds, recipients and encrypted content included. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestroyEnvelopedDataEncodeCtx(EnvelopedDataCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestroyEnvelopedDataDecodeCtx(EnvelopedDataCtx *ctx);

/* Sets PKCS7_ENVELOPED_VERSION. Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS7_SetEnvelopedDataAttributeInt(EnvelopedDataCtx *ctx, int32_t id, int32_t value);

/* Stores PKCS7_ENVELOPED_VERSION in `*value`, 0 where there is none. Returns as the Set. */
KARIL_API int32_t KA_PKCS7_GetEnvelopedDataAttributeInt(const EnvelopedDataCtx *ctx, int32_t id, int32_t *value);

/*
 * Sets PKCS7_ENVELOPED_ENCRYPTED_CONTENT, which is the plain content, PKCS7_ENVELOPED_CONTENTTYPE or
 * PKCS7_ENVELOPED_RECIPIENT_KEY to a copy of `length` octets at `value` (null only with length 0).
 * Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidLengthErr for a length below 0;
 * KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetEnvelopedDataAttributeChar(EnvelopedDataCtx *ctx, int32_t id, const uint8_t *value,
                                                         int32_t length);

/*
 * Answers PKCS7_ENVELOPED_ENCRYPTED_CONTENT or PKCS7_ENVELOPED_CONTENTTYPE of the message, or
 * PKCS7_ENVELOPED_CIPHERTEXT, _ALGO or _PARAMETER of its encrypted content. `result`: receives the octets; the caller
 * sees to its size, and it must not be null. `*resultLength`: their number. Where there are none, both stay as they
 * were, with status 0. Returns 0; KACERT_AttributeNotSupportErr for another id, the key's included;
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetEnvelopedDataAttributeChar(EnvelopedDataCtx *ctx, int32_t id, uint8_t *result,
                                                         uint32_t *resultLength);

/*
 * Hands a recipient over, after those that are there: the message owns it, and frees it. Returns 0 or
 * KACERT_InvalidItemErr, also for one that a message has taken.
 */
KARIL_API int32_t KA_PKCS7_SetEnvelopedData_RecipientInfo(EnvelopedDataCtx *ctx, RecipientInfoCtx *recipient);

/*
 * Stores the first recipient in `*recipient`, whatever the position: the others follow it, linked by `next`. The
 * message stays their owner. `position`: from 1; 0 is accepted. Without recipients `*recipient` stays as it was, with
 * status 0.
 * Returns 0; KACERT_InvalidLengthErr for any other position, or for a message that was not decoded;
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetEnvelopedData_RecipientInfo(const EnvelopedDataCtx *ctx, RecipientInfoCtx **recipient,
                                                          int32_t position);

/* Stores the number of recipients. Returns 0 or KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS7_GetEnvelopedData_RecipientInfoNum(const EnvelopedDataCtx *ctx, uint32_t *count);

/*
 * Hands an encrypted content over: the message owns it, and frees it. A message that has one already keeps that one:
 * the second stays the caller's, with status 0. Returns 0 or KACERT_InvalidItemErr, also for one that a message has
 * taken.
 */
KARIL_API int32_t KA_PKCS7_SetEnvelopedData_EncryptedContent(EnvelopedDataCtx *ctx, EncryptedContentCtx *content);

/*
 * Stores the message's encrypted content in `*content`; the message stays its owner. Where there is none `*content`
 * stays as it was, with status 0. Returns 0 or KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetEnvelopedData_EncryptedContent(const EnvelopedDataCtx *ctx,
                                                             EncryptedContentCtx **content);

/*
 * Has each recipient encipher the key, and the encrypted content the content, and writes the message. Nothing is kept:
 * each call runs the hooks. `result`: receives the DER, or null to ask for the length; the caller sees to its size.
 * `*resultLength`: its octets. Where no memory is found to hand the key to a recipient, the status is 0, the length 0,
 * and nothing is written: look at the length.
 * Returns 0; KACERT_InvalidLengthErr for a null context, or for a RecipientInfo or an EncryptedContentInfo above 10,240
 * octets; KACERT_InvalidItemErr, also for a missing version, content or encrypted content; what
 * KA_PKCS7_EncodeRecipientInfo and KA_PKCS7_EncodeEncryptedContent return; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_EncodePKCS7EnvelopedData(EnvelopedDataCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a message in the place of what the context held, of any size. No hook is called. `der`: `length` octets; a
 * length of 0 is KAPKCS7_ContentTypeErr. Where no memory is found for the copy of the input, the status is 0 and
 * nothing is filled: recipientsSet tells. An EncryptedContentInfo that lacks elements is status 0, as for
 * KA_PKCS7_DecodeEncryptedContent.
 * Returns 0; KAPKCS7_ContentTypeErr for another content type; KACERT_InvalidItemErr, also for a missing element or a
 * tag number other than 0; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_MemoryErr;
 * what KA_PKCS7_DecodeRecipientInfo returns. What was decoded before a failure stays.
 */
KARIL_API int32_t KA_PKCS7_DecodePKCS7EnvelopedData(EnvelopedDataCtx *ctx, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
