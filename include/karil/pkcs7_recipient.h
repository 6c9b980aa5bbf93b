/*
 * karil: RecipientInfo (RFC 2315 10.2): the content's key, enciphered for one recipient of a PKCS#7 message.
 *
 * What holds for all PKCS#7 functions is said at the top of pkcs7.h. Keys are wiped before they are freed.
 */
#ifndef KARIL_PKCS7_RECIPIENT_H
#define KARIL_PKCS7_RECIPIENT_H

#include "karil/name.h"
#include "karil/pkcs7.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A recipient, for both directions. Records that decoding fills hold parts of the octets that the context, or the
 * message that owns it, keeps. */
typedef struct RecipientInfoCtx {
    uint8_t versionSet; /* 1 after any Set, or once decoded */
    int32_t version;    /* 0 after any Set */
    int32_t dnSet;      /* 1 if a whole Name was set */
    NameRecord issuer;  /* head of the issuer's components */
    Anybuf *issuerDn;   /* the whole Name, or null */
    Anybuf serial;
    AlgorithmIdentifierRecord keyEncryptionAlgorithm; /* parameters are not kept */
    Anybuf encryptedKey;
    Anybuf key; /* plain */
    KAHookFunc keyEncFunc;
    void *keyEncFuncParam; /* the context's copy; wiped when it is freed */
    int32_t keyEncFuncParamLen;
    KAHookFunc keyDecFunc;
    void *keyDecFuncParam; /* the same */
    int32_t keyDecFuncParamLen;
    struct RecipientInfoCtx *next; /* the message's next recipient */

    /* The library's own: what was decoded, of which records hold parts; and the message that has taken the context. */
    struct KeptOctets *kept;
    const void *owner;
} RecipientInfoCtx;
KARIL_SIZE_32(RecipientInfoCtx, 264);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function, unless a message has taken it.
 */
KARIL_API int32_t KA_PKCS7_CreateEncodeRecipientInfo(RecipientInfoCtx **out);
KARIL_API int32_t KA_PKCS7_CreateDecodeRecipientInfo(RecipientInfoCtx **out);

/* Frees the context with all it holds, but not the next one. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestoryEncodeRecipientInfo(RecipientInfoCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestoryDecodeRecipientInfo(RecipientInfoCtx *ctx);

/*
 * Sets one of the ids from PKCS7_RECIPIENT_DN to PKCS7_RECIPIENT_KEY to a copy of `length` octets at `value` (null only
 * with length 0); a component of the issuer's name, in the local encoding, is appended. With PKCS7_RECIPIENT_DN and
 * components together the former is written.
 * Returns 0; KACERT_AttributeNotSupportErr for another id, 34 included; KACERT_InvalidLengthErr for a length below 0;
 * KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetRecipientInfoAttributeChar(RecipientInfoCtx *ctx, int32_t id, const uint8_t *value,
                                                         int32_t length);

/*
 * Answers one of the ids from PKCS7_RECIPIENT_ISSUER_COUNTRY to PKCS7_RECIPIENT_KEY. `result`: receives the octets,
 * or null to ask for the length; the caller sees to its size. `*resultLength`: their number; it stays as it was for a
 * component of the name that is not there, so set it to 0 first. Returns 0; KACERT_AttributeNotSupportErr for another
 * id; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetRecipientInfoAttributeChar(RecipientInfoCtx *ctx, int32_t id, uint8_t *result,
                                                         uint32_t *resultLength);

/* Stores PKCS7_RECIPIENT_VERSION in `*value`. Returns 0; KACERT_AttributeNotSupportErr; KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS7_GetRecipientInfoAttributeInt(const RecipientInfoCtx *ctx, int32_t id, int32_t *value);

/*
 * Store the hook that enciphers the key, or opens it, and a copy of its parameter, in the place of what was stored.
 * `hook`: null for none; KA_PublicKeyEncryptFunc_Ref and KA_PrivateKeyDecryptFunc_Ref do it for RSA keys.
 * `parameter`: `length` octets; with a length below 1 nothing is copied and the hook gets null.
 * Return 0; KACERT_InvalidItemErr, also for a null `parameter` with a length; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetRecipientInfoKeyEncFunc(RecipientInfoCtx *ctx, KAHookFunc hook, const void *parameter,
                                                      int32_t length);
KARIL_API int32_t KA_PKCS7_SetRecipientInfoKeyDecFunc(RecipientInfoCtx *ctx, KAHookFunc hook, const void *parameter,
                                                      int32_t length);

/*
 * Writes the RecipientInfo. With a key and a hook, the hook enciphers the key into an area with a bound of 2,000
 * octets, and an encrypted key that was set is not looked at; with a key and no hook the encrypted key is written as it
 * is. Nothing is kept: each call runs the hook. The algorithm's parameters are NULL.
 * `result`: receives the DER; the caller sees to its size, and it must not be null. `*resultLength`: its octets.
 * Returns 0; KACERT_InvalidParamErr for an encrypted key without a key, for neither a hook's nor a ready one, or for a
 * record with a length and no data; KACERT_InvalidItemErr, also without a serial number; the hook's own status;
 * KACERT_InvalidLengthErr for a hook that wrote more than its bound, for issuer text above its limit (name.h) or for
 * more than 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_EncodeRecipientInfo(RecipientInfoCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a RecipientInfo in the place of what the context held; its hooks stay. `der`, `length`: as all octets to
 * decode. An empty SEQUENCE is status 0, with nothing filled.
 * Returns 0; KACERT_InvalidItemErr, also for a missing element; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr;
 * KACERT_InvalidTagErr; KACERT_MemoryErr; a status of KI_DecodeIssuerSubject. What was decoded before a failure stays.
 */
KARIL_API int32_t KA_PKCS7_DecodeRecipientInfo(RecipientInfoCtx *ctx, const uint8_t *der, int32_t length);

/*
 * Has the hook open the encrypted key, into an area with a bound of its length, and keeps the result as
 * PKCS7_RECIPIENT_KEY. Any key can be opened, whatever the name says. `result`: receives the key; room for the
 * encrypted key's length is enough. `*resultLength`: its octets. Without a hook nothing is written and the status is 0.
 * Returns 0; KACERT_InvalidItemErr, also without an encrypted key; the hook's own status; KACERT_InvalidLengthErr
 * for a hook that wrote more than its bound; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_DecryptDesKey(RecipientInfoCtx *ctx, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
