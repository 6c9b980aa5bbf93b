/*
 * karil: SignedData (RFC 2315 9): a content with certificates, CRLs and the signatures of any number of signers.
 *
 * To sign: create; set version, digest algorithms, content type and content, certificates and CRLs; create each signer
 * with its hooks (pkcs7_signer.h) and hand it over; encode. To verify: decode, which verifies nothing; follow `next`
 * from the first signer, set each one's hooks, and have it verified. What holds for all PKCS#7 functions is said at the
 * top of pkcs7.h.
 */
#ifndef KARIL_PKCS7_SIGNED_H
#define KARIL_PKCS7_SIGNED_H

#include "karil/pkcs7_signer.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A message, for both directions. Records that decoding fills, those of its signers included, hold parts of the octets
 * that the context keeps. The lists are the context's own: callers read them, but don't change or free their records.
 */
typedef struct SignedDataCtx {
    uint8_t versionSet;
    uint8_t digestAlgorithmsSet;
    uint8_t contentSet;     /* 1 where content or content type was set or decoded */
    uint8_t signerInfosSet; /* 1 once decoded; setting signers leaves it as it is */
    uint8_t certificatesSet;
    uint8_t crlsSet;
    uint32_t version;
    uint32_t digestAlgorithmCount;
    DigestAlgorithmNode *digestAlgorithms;
    AlgorithmRecord contentType;
    Anybuf content; /* of type data the octets, else one whole element */
    uint32_t certificateCount;
    Anybuf *certificates; /* a whole certificate each */
    uint32_t crlCount;
    Anybuf *crls; /* a whole CRL each */
    uint32_t signerCount;
    Anybuf *signerSet; /* decoded, a whole element each */
    SignerInfoCtx *signerInfos;
    Anybuf encoded; /* a ready message, which the encoder hands out as it is; nothing in the library fills it */

    /* The library's own. */
    ListMarks digestAlgorithmMarks;
    ListMarks certificateMarks;
    ListMarks crlMarks;
    ListMarks signerMarks;
    struct SharedOctets *sharedContent; /* of which `content` and the signers' are parts */
    struct KeptOctets *kept;            /* what was decoded; records hold parts of it */
} SignedDataCtx;
KARIL_SIZE_32(SignedDataCtx, 192);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidParamErr for a null `out`. Free it with either destroy function.
 */
KARIL_API int32_t KA_PKCS7_CreateSignedDataEncodeCtx(SignedDataCtx **out);
KARIL_API int32_t KA_PKCS7_CreateSignedDataDecodeCtx(SignedDataCtx **out);

/* Frees the context with all it holds, its signers included. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestroySignedDataEncodeCtx(SignedDataCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestroySignedDataDecodeCtx(SignedDataCtx *ctx);

/* Sets PKCS7_SIGNEDDATA_VERSION. Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS7_SetSignedDataAttributeInt(SignedDataCtx *ctx, int32_t id, int32_t value);

/* Stores PKCS7_SIGNEDDATA_VERSION in `*value`, 0 where there is none. Returns as the Set. */
KARIL_API int32_t KA_PKCS7_GetSignedDataAttributeInt(const SignedDataCtx *ctx, int32_t id, int32_t *value);

/*
 * Sets one of the ids from PKCS7_SIGNEDDATA_DIGEST_ALGO to PKCS7_SIGNEDDATA_CRL to a copy of `length` octets at
 * `value`. Content type and content take the place of what was set; digest algorithms, certificates and CRLs are
 * appended. A content of length 0 makes a message without content; a content of another type than data is one whole
 * element. `value`: null only for a content or digest algorithm with length 0.
 * Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidLengthErr for a length below 0, and for null
 * or a length of 0 as content type, certificate or CRL; KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetSignedDataAttributeChar(SignedDataCtx *ctx, int32_t id, const uint8_t *value,
                                                      int32_t length);

/*
 * Answers one of these ids. `position`: from 1, for digest algorithms, certificates and CRLs; a position that there is
 * not leaves the outputs as they were, with status 0. For PKCS7_SIGNEDDATA_CRL the octets are those of the first CRL,
 * whatever the position: the others are in `crls`. A walk by rising positions takes one step a call. `result`: receives
 * the octets; the caller sees to its size. `*resultLength`: their number.
 * Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidLengthErr for a null `result` or
 * `resultLength`, for digest algorithms where none was set, and for content and content type where neither was, in a
 * message that was not decoded; KACERT_InvalidItemErr for a null context.
 */
KARIL_API int32_t KA_PKCS7_GetSignedDataAttributeChar(SignedDataCtx *ctx, int32_t id, uint8_t *result,
                                                      uint32_t *resultLength, int32_t position);

/*
 * Hands a signer over, after those that are there: the message owns it, and frees it. Returns 0 or
 * KACERT_InvalidItemErr, also for one that a message has taken.
 */
KARIL_API int32_t KA_PKCS7_SetSignedData_SignerInfo(SignedDataCtx *ctx, SignerInfoCtx *signer);

/*
 * Stores the first signer in `*signer`, whatever the position: the others follow it, linked by `next`. The message
 * stays their owner. `position`: from 1; 0 is accepted. Without signers `*signer` stays as it was, with status 0.
 * Returns 0; KACERT_InvalidLengthErr for any other position, or for a message that was not decoded;
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetSignedData_SignerInfo(const SignedDataCtx *ctx, SignerInfoCtx **signer, int32_t position);

/*
 * Store the number of signers, digest algorithms, certificates or CRLs. That of signers is 0 for a message that was
 * not decoded. Return 0 or KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetSignedData_SignerInfoNum(const SignedDataCtx *ctx, uint32_t *count);
KARIL_API int32_t KA_PKCS7_GetSignedData_DigestAlgoNum(const SignedDataCtx *ctx, uint32_t *count);
KARIL_API int32_t KA_PKCS7_GetSignedData_CertificatesNum(const SignedDataCtx *ctx, uint32_t *count);
KARIL_API int32_t KA_PKCS7_GetSignedData_CrlsNum(const SignedDataCtx *ctx, uint32_t *count);

/*
 * Has each signer sign the content, and writes the message. Each signer gets the message's content type and content
 * first. A content type of another length than nine octets has no content written, nor has an empty content: without
 * signers that is the form that carries certificates alone; signers refuse an empty content, so no detached signature
 * is made. Nothing is kept but what KA_PKCS7_EncodeSignerInfo keeps: each call runs the hooks, and a signer's
 * messageDigest stays that of the first encoding if the content is changed later.
 * `result`: receives the DER, or null to ask for the length; the caller sees to its size. `*resultLength`: its octets.
 * Where no memory is found to hand the content to a signer, the status is 0, the length 0, and nothing is written: look
 * at the length. Departure from DER: the sets are not sorted.
 * Returns 0; KACERT_InvalidItemErr, also for a missing version or content type; what KA_PKCS7_EncodeSignerInfo
 * returns; KACERT_InvalidLengthErr for a SignerInfo above 10,240 octets or more than 32 bits of octets;
 * KACERT_InvalidParamErr for a record with a length and no data; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_EncodePKCS7SignedData(SignedDataCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a message in the place of what the context held. Nothing is verified. `der`, `length`: as all octets to
 * decode. A content is stored where the content type has nine octets; a message without content is accepted, and then
 * its signers have an empty one.
 * Returns 0; KAPKCS7_ContentTypeErr for another content type; KACERT_CertNotEndErr for a missing element, that in the
 * content's tag included; KACERT_InvalidItemErr, also for a missing content of the frame, a tag number other than 0, or
 * certificates or CRLs that cannot be read; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr;
 * KACERT_MemoryErr; what KA_PKCS7_DecodeSignerInfo returns. What was decoded before a failure stays.
 */
KARIL_API int32_t KA_PKCS7_DecodeSignedData(SignedDataCtx *ctx, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
