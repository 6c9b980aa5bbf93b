/*
 * karil: EncryptedContentInfo (RFC 2315 10.1), the enciphered content of PKCS#7 messages.
 *
 * A hook does the cipher's work, so any algorithm can be named. What holds for all PKCS#7 functions is said at the top
 * of pkcs7.h. The plain text is wiped before it is freed.
 */
#ifndef KARIL_PKCS7_ENCRYPTED_CONTENT_H
#define KARIL_PKCS7_ENCRYPTED_CONTENT_H

#include "karil/pkcs7.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A content in both its forms. Every Anybuf is embedded; those that decoding fills hold parts of the octets that the
 * context, or the message that owns it, keeps.
 */
typedef struct EncryptedContentCtx {
    uint8_t decoded;             /* 1 once a cipher text was decoded, or set by a message that encodes it */
    AlgorithmRecord contentType; /* of the inner content */
    AlgorithmIdentifierRecord encryptionAlgorithm;
    Anybuf encryptedContent; /* cipher text */
    Anybuf content;          /* plain text */
    KAHookFunc cipherFunc;   /* for both directions */
    void *cipherFuncParam;   /* the context's copy; wiped when it is freed */
    int32_t cipherFuncParamLen;

    /* The library's own: what was decoded, of which records hold parts; and the message that has taken the context. */
    struct KeptOctets *kept;
    const void *owner;
} EncryptedContentCtx;
KARIL_SIZE_32(EncryptedContentCtx, 172);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function, unless a message has taken it.
 */
KARIL_API int32_t KA_PKCS7_CreateEnocdeEncryptedContent(EncryptedContentCtx **out);
KARIL_API int32_t KA_PKCS7_CreateDeocdeEncryptedContent(EncryptedContentCtx **out);

/* Frees the context with all it holds. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestoryEncodeEncryptedContent(EncryptedContentCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestoryDecodeEncryptedContent(EncryptedContentCtx *ctx);

/*
 * Sets one of the ids from PKCS7_ENCRYPT_CONTENT_TYPE to PKCS7_ENCRYPT_CONTENT to a copy of `length` octets at `value`
 * (null only with length 0). Returns 0; KAPKCS7_ContentTypeErr for another id; KACERT_InvalidLengthErr for a length
 * below 0; KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetEncryptedContentAttributeChar(EncryptedContentCtx *ctx, int32_t id, const uint8_t *value,
                                                            int32_t length);

/*
 * Answers one of these ids. `result`: receives the octets; the caller sees to its size, and it must not be null.
 * `*resultLength`: their number, 0 for what is not there. Returns 0; KAPKCS7_ContentTypeErr for another id;
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetEncryptedContentAttributeChar(EncryptedContentCtx *ctx, int32_t id, uint8_t *result,
                                                            uint32_t *resultLength);

/*
 * Store the hook that enciphers, or deciphers, and a copy of its parameter, in the place of what was stored: there is
 * one for both directions. `hook`: null for none. `parameter`: `length` octets; with a length below 1 nothing is copied
 * and the hook gets null. Return 0; KACERT_InvalidItemErr, also for a null `parameter` with a length;
 * KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetEncryptContentEncFunc(EncryptedContentCtx *ctx, KAHookFunc hook, const void *parameter,
                                                    int32_t length);
KARIL_API int32_t KA_PKCS7_SetEncryptContentDecFunc(EncryptedContentCtx *ctx, KAHookFunc hook, const void *parameter,
                                                    int32_t length);

/*
 * Writes the EncryptedContentInfo. With a plain text and a hook, the hook makes the cipher text, into an area with
 * a bound of 10,240 octets or the plain text's length and 1,024, whichever is more; otherwise the cipher text that was
 * set is written as it is. Parameters that were not set are left out. Nothing is kept: each call runs the hook.
 * `result`: receives the DER; the caller sees to its size, and it must not be null. `*resultLength`: its octets.
 * Returns 0; the hook's own status; KACERT_InvalidItemErr, also if there is neither a plain text with a hook nor a
 * cipher text; KACERT_InvalidLengthErr for a hook that wrote more than its bound; KACERT_InvalidParamErr for a record
 * with a length and no data; KACERT_MemoryErr, also for an element above 32 bits of octets.
 */
KARIL_API int32_t KA_PKCS7_EncodeEncryptedContent(EncryptedContentCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes an EncryptedContentInfo in the place of what the context held; its hook stays. `der`, `length`: as all
 * octets to decode. A missing content type, algorithm or cipher text is status 0, with the fields up to there filled:
 * `decoded`, or a cipher text of length 0, tells. Of a constructed cipher text the first element is taken.
 * Returns 0; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_InvalidTagErr; KACERT_InvalidItemErr, also for
 * an algorithm without identifier or a constructed cipher text without element; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_DecodeEncryptedContent(EncryptedContentCtx *ctx, const uint8_t *der, int32_t length);

/*
 * Has the hook decipher the cipher text, into an area with a bound as for encoding, and keeps the plain text
 * as PKCS7_ENCRYPT_CONTENT. `result`: receives it; room for the cipher text's length is enough for a usual cipher.
 * `*resultLength`: its octets. Returns 0; KACERT_InvalidItemErr, also without a hook; the hook's own status;
 * KACERT_InvalidLengthErr for a hook that wrote more than its bound; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_GetEncryptedContentInformation(EncryptedContentCtx *ctx, uint8_t *result,
                                                          uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
