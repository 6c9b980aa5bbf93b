/*
 * karil: SignedAndEnvelopedData (RFC 2315 11): a content that is signed and enciphered in one message.
 *
 * Recipients and encrypted content are as in pkcs7_enveloped.h, digest algorithms, certificates, CRLs and signers as in
 * pkcs7_signed.h. Signatures cover the plain content. What holds for all PKCS#7 functions is said at the top of
 * pkcs7.h.
 */
#ifndef KARIL_PKCS7_SIGNED_ENVELOPED_H
#define KARIL_PKCS7_SIGNED_ENVELOPED_H

#include "karil/pkcs7_encrypted_content.h"
#include "karil/pkcs7_recipient.h"
#include "karil/pkcs7_signer.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A message, for both directions. Records that decoding fills, those of its recipients, signers and encrypted content
 * included, hold parts of the octets that the context keeps. The lists are the context's own: callers read them, but
 * don't change or free their records.
 */
typedef struct SignedAndEnvelopedDataCtx {
    uint8_t versionSet;
    uint8_t recipientsSet; /* 1 where a recipient was set, or once decoded */
    uint8_t digestAlgorithmsSet;
    uint8_t encryptedContentSet; /* 1 once decoded */
    uint8_t certificatesSet;
    uint8_t crlsSet;
    uint8_t signerInfosSet; /* 1 where a signer was set, or once decoded */
    uint32_t version;
    uint32_t recipientCount;
    Anybuf *recipientSet; /* decoded, a whole element each */
    uint32_t recipientCount2;
    RecipientInfoCtx *recipients;
    uint32_t digestAlgorithmCount;
    DigestAlgorithmNode *digestAlgorithms;
    EncryptedContentCtx *encryptedContent; /* owned */
    uint32_t certificateCount;
    Anybuf *certificates; /* a whole certificate each */
    uint32_t crlCount;
    Anybuf *crls; /* a whole CRL each */
    uint32_t signerCount;
    Anybuf *signerSet; /* decoded, a whole element each */
    uint32_t signerCount2;
    SignerInfoCtx *signerInfos;
    Anybuf key; /* of the content; wiped when it is freed */
    AlgorithmRecord contentType;
    Anybuf content; /* plain; wiped when it is freed */

    /* The library's own. */
    ListMarks recipientMarks;
    ListMarks digestAlgorithmMarks;
    ListMarks certificateMarks;
    ListMarks crlMarks;
    ListMarks signerMarks;
    struct SharedOctets *sharedContent; /* of which `content` and the signers' are parts */
    struct KeptOctets *kept;            /* what was decoded; records hold parts of it */
} SignedAndEnvelopedDataCtx;
KARIL_SIZE_32(SignedAndEnvelopedDataCtx, 228);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function.
 */
KARIL_API int32_t KA_PKCS7_CreateSignedAndEnvelopedDataEncodeCtx(SignedAndEnvelopedDataCtx **out);
KARIL_API int32_t KA_PKCS7_CreateSignedAndEnvelopedDataDecodeCtx(SignedAndEnvelopedDataCtx **out);

/* Frees the context with all it holds: recipients, signers and encrypted content too. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestorySignedAndEnvelopedDataEncodeCtx(SignedAndEnvelopedDataCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestorySignedAndEnvelopedDataDecodeCtx(SignedAndEnvelopedDataCtx *ctx);

/*
 * Sets PKCS7_SIGNEDANDENVELOPED_VERSION. Returns 0; KACERT_AttributeNotSupportErr for another id;
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt(SignedAndEnvelopedDataCtx *ctx, int32_t id,
                                                                 int32_t value);

/* Stores PKCS7_SIGNEDANDENVELOPED_VERSION in `*value`, 0 where there is none. Returns as the Set. */
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedDataAttributeInt(const SignedAndEnvelopedDataCtx *ctx, int32_t id,
                                                                 int32_t *value);

/*
 * Sets one of the ids from PKCS7_SIGNEDANDENVELOPED_CERTIFICATE to PKCS7_SIGNEDANDENVELOPED_RECIPIENT_KEY to a copy of
 * `length` octets at `value`. Certificates, CRLs and digest algorithms are appended; the plain content, content type
 * and key take the place of what was set. `value`: null only with length 0.
 * Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidLengthErr for a length below 0, and for null
 * or a length of 0 as certificate or CRL; KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetSignedAndEnvelopedDataAttributeChar(SignedAndEnvelopedDataCtx *ctx, int32_t id,
                                                                  const uint8_t *value, int32_t length);

/*
 * Answers one of these ids but the key. `position`: from 1, for certificates, CRLs and digest algorithms; a position
 * that there is not leaves the outputs as they were, with status 0. A walk by rising positions takes one step a call.
 * `result`: receives the octets; the caller sees to its size, and it must not be null. `*resultLength`: their number, 0
 * for a content or content type that is not there.
 * Returns 0; KACERT_AttributeNotSupportErr for another id, the key's included; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedDataAttributeChar(SignedAndEnvelopedDataCtx *ctx, int32_t id,
                                                                  uint8_t *result, uint32_t *resultLength,
                                                                  int32_t position);

/*
 * Hand a recipient, or a signer, over, after those that are there: the message owns it, and frees it. Return 0 or
 * KACERT_InvalidItemErr, also for one that a message has taken.
 */
KARIL_API int32_t KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo(SignedAndEnvelopedDataCtx *ctx,
                                                                   RecipientInfoCtx *recipient);
KARIL_API int32_t KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo(SignedAndEnvelopedDataCtx *ctx, SignerInfoCtx *signer);

/*
 * Hands an encrypted content over: the message owns it, and frees it. One that it had already is freed. Returns 0 or
 * KACERT_InvalidItemErr, also for one that a message has taken.
 */
KARIL_API int32_t KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent(SignedAndEnvelopedDataCtx *ctx,
                                                                      EncryptedContentCtx *content);

/*
 * Store the first recipient, or signer, whatever the position: the others follow it, linked by `next`. The message
 * stays their owner. `position`: from 1; 0 is accepted. Where there are none the output stays as it was, with
 * status 0. Return 0; KACERT_InvalidLengthErr for any other position; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfo(const SignedAndEnvelopedDataCtx *ctx,
                                                                   RecipientInfoCtx **recipient, int32_t position);
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedData_SignerInfo(const SignedAndEnvelopedDataCtx *ctx,
                                                                SignerInfoCtx **signer, int32_t position);

/*
 * Stores the message's encrypted content in `*content`; the message stays its owner. Where there is none `*content`
 * stays as it was, with status 0. Returns 0 or KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedData_EncryptedContent(const SignedAndEnvelopedDataCtx *ctx,
                                                                      EncryptedContentCtx **content);

/* Store the number of recipients, signers, certificates or CRLs. Return 0 or KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfoNum(const SignedAndEnvelopedDataCtx *ctx,
                                                                      uint32_t *count);
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedData_SignerInfoNum(const SignedAndEnvelopedDataCtx *ctx,
                                                                   uint32_t *count);
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedData_CertificatesNum(const SignedAndEnvelopedDataCtx *ctx,
                                                                     uint32_t *count);
KARIL_API int32_t KA_PKCS7_GetSignedAndEnvelopedData_CrlsNum(const SignedAndEnvelopedDataCtx *ctx, uint32_t *count);

/*
 * Has each recipient encipher the key, the encrypted content the content, and each signer sign the plain content, and
 * writes the message. Nothing is kept but what KA_PKCS7_EncodeSignerInfo keeps: each call runs the hooks, and a
 * signer's messageDigest stays that of the first encoding if the content is changed later. `result`: receives the DER,
 * or null to ask for the length; the caller sees to its size. `*resultLength`: its octets. Where no memory is found to
 * hand the key to a recipient or the content to a signer, the status is 0, the length 0, and nothing is written: look
 * at the length. Returns 0; KACERT_InvalidItemErr, also for a missing version, key, recipient, signer, content or
 * encrypted content; what KA_PKCS7_EncodeRecipientInfo, KA_PKCS7_EncodeEncryptedContent and KA_PKCS7_EncodeSignerInfo
 * return; KACERT_InvalidLengthErr for a RecipientInfo, EncryptedContentInfo or SignerInfo above 10,240 octets;
 * KACERT_InvalidParamErr for a record with a length and no data; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_EncodeSignedAndEnvelopedData(SignedAndEnvelopedDataCtx *ctx, uint8_t *result,
                                                        uint32_t *resultLength);

/*
 * Decodes a message in the place of what the context held, of any size. No hook is called and nothing is verified.
 * `der`: `length` octets; a length of 0 is refused. The signers have no content: before one without authenticated
 * attributes is verified, have the encrypted content deciphered and set the signer's PKCS7_SIGNER_CONTENT.
 * Returns 0; KAPKCS7_ContentTypeErr for what is no SignedAndEnvelopedData message; KACERT_CertNotEndErr for missing
 * digest algorithms or what should follow the encrypted content; KACERT_InvalidItemErr, also for another missing
 * element or certificates or CRLs that cannot be read; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr;
 * KACERT_InvalidLengthErr; KACERT_MemoryErr; what KA_PKCS7_DecodeRecipientInfo and KA_PKCS7_DecodeSignerInfo return.
 * What was decoded before a failure stays.
 */
KARIL_API int32_t KA_PKCS7_DecodeSignedAndEnvelopedData(SignedAndEnvelopedDataCtx *ctx, const uint8_t *der,
                                                        int32_t length);

#ifdef __cplusplus
}
#endif

#endif
