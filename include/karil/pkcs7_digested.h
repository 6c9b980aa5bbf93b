/*
 * karil: DigestedData (RFC 2315 12): a content with its digest.
 *
 * To encode: create, set version, algorithm, content type, content and the digest's hook, encode. To decode: create,
 * set the hook, decode, and read the verdict: a wrong digest is no status. What holds for all PKCS#7 functions is said
 * at the top of pkcs7.h, but for the hook: it gets the context's own copy of its parameter, not a fresh one.
 *
 * Departures from RFC 2315: the digest covers the whole inner ContentInfo, with tag and length, and not the content
 * alone; the digest algorithm has no parameters. So no other implementation shares this content type.
 */
#ifndef KARIL_PKCS7_DIGESTED_H
#define KARIL_PKCS7_DIGESTED_H

#include "karil/pkcs7.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A message, for both directions. Records that decoding fills hold parts of the octets that the context keeps. */
typedef struct DigestedDataCtx {
    uint8_t versionSet; /* 1 where a version was set or decoded */
    uint32_t version;
    AlgorithmIdentifierRecord digestAlgorithm; /* parameters are not kept */
    KAHookFunc digestFunc;
    void *digestFuncParam; /* the context's copy; wiped when it is freed */
    uint32_t digestFuncParamLen;
    AlgorithmRecord contentType; /* of the inner content */
    Anybuf content;              /* of type data the octets, else one whole element */
    Anybuf digest;               /* decoded */
    uint32_t verifyResult;       /* the verdict of decoding */

    /* The library's own: what was decoded, of which records hold parts. */
    struct KeptOctets *kept;
} DigestedDataCtx;
KARIL_SIZE_32(DigestedDataCtx, 176);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function.
 */
KARIL_API int32_t KA_PKCS7_CreateDigestedDataEncodeCtx(DigestedDataCtx **out);
KARIL_API int32_t KA_PKCS7_CreateDigestedDataDecodeCtx(DigestedDataCtx **out);

/* Frees the context with all it holds. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestoryDigestedDataEncodeCtx(DigestedDataCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestoryDigestedDataDecodeCtx(DigestedDataCtx *ctx);

/* Sets PKCS7_DIGESTED_VERSION. Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS7_SetDigestedDataAttributeInt(DigestedDataCtx *ctx, int32_t id, int32_t value);

/* Stores PKCS7_DIGESTED_VERSION in `*value`, 0 where there is none. Returns as the Set. */
KARIL_API int32_t KA_PKCS7_GetDigestedDataAttributeInt(const DigestedDataCtx *ctx, int32_t id, int32_t *value);

/*
 * Sets one of the ids from PKCS7_DIGESTED_DIGEST_ALGO to PKCS7_DIGESTED_CONTENT to a copy of `length` octets at
 * `value`. A content of another type than data is one whole element.
 * Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidItemErr, also for a length below 1;
 * KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetDigestedDataAttributeChar(DigestedDataCtx *ctx, int32_t id, const uint8_t *value,
                                                        int32_t length);

/*
 * Answers one of the ids from PKCS7_DIGESTED_DIGEST_ALGO to PKCS7_DIGESTED_DIGEST. `result`: receives the octets; the
 * caller sees to its size, and it must not be null. `*resultLength`: their number, 0 for what is not there.
 * Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetDigestedDataAttributeChar(DigestedDataCtx *ctx, int32_t id, uint8_t *result,
                                                        uint32_t *resultLength);

/*
 * Stores the hook that digests, for both directions, and a copy of its parameter, in the place of what was stored.
 * `hook`: null for none; KA_DigestFunc_Ref digests. `parameter`: `length` octets; where it is null or the length is
 * below 1, nothing is copied and the hook gets null. The hook gets the copy itself, and an area with a bound of 200
 * octets. Returns 0; KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetDigestedDataHashFunc(DigestedDataCtx *ctx, KAHookFunc hook, const void *parameter,
                                                   int32_t length);

/*
 * Stores the verdict of the last decoding in `*verdict`: PKCS7_VERDICT_GOOD, _BAD, or _NO_HOOK where nothing was
 * checked; 0 before decoding, after one that failed, and for a message without content. Returns 0 or
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetDigestedDataHashResult(const DigestedDataCtx *ctx, uint32_t *verdict);

/*
 * Digests, and writes the message. A content type of the nine octets of data, or one that begins with them, has its
 * content written as an OCTET STRING; that of another type is written as it is; without content the content type
 * stands alone. Each call runs the hook. `result`: receives the DER, or null to ask for the length; the caller sees to
 * its size. `*resultLength`: its octets.
 * Returns 0; KACERT_InvalidItemErr, also for a missing version, algorithm, content type or hook; the hook's own status;
 * KACERT_InvalidLengthErr for an inner ContentInfo above 10,240 octets or a hook that wrote more than its bound;
 * KACERT_InvalidParamErr for a record with a length and no data; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_EncodePKCS7DigestedData(DigestedDataCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a message in the place of what the context held, and checks its digest if there is a hook; the hook stays.
 * `der`, `length`: as all octets to decode. Status 0 does not mean that the digest is right: see
 * KA_PKCS7_GetDigestedDataHashResult. A frame without content, or with a tag number other than 0, is status 0 as well,
 * with nothing filled and a verdict of 0.
 * Returns 0; KACERT_InvalidLengthErr for a null `der`, a negative length, a frame that cannot be split, or an inner
 * ContentInfo above 10,240 octets; KAPKCS7_ContentTypeErr for another content type; KACERT_InvalidItemErr, also for a
 * missing element or an inner tag number other than 0; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; the hook's own
 * status; KACERT_MemoryErr. What was decoded before a failure stays.
 */
KARIL_API int32_t KA_PKCS7_DecodePKCS7DigestedData(DigestedDataCtx *ctx, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
