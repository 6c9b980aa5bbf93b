/*
 * karil: SignerInfo (RFC 2315 9.2): one signer of a PKCS#7 message, with its signature.
 *
 * To sign: create; set issuer, serial number and algorithms; set attributes, if any; set both hooks; set content type
 * and content, or let the message do it; encode. To verify: decode, or take the signer of a decoded message; set both
 * hooks; verify. What holds for all PKCS#7 functions is said at the top of pkcs7.h.
 */
#ifndef KARIL_PKCS7_SIGNER_H
#define KARIL_PKCS7_SIGNER_H

#include "karil/name.h"
#include "karil/pkcs7.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A signer, for both directions. Records that decoding fills hold parts of the octets that the context, or the message
 * that owns it, keeps. The lists are the context's own: callers read them, but don't change or free their records.
 */
typedef struct SignerInfoCtx {
    uint8_t versionSet;      /* 1 after any Set, or once decoded */
    uint8_t attributesSet;   /* 1: there are authenticated attributes */
    uint8_t unAttributesSet; /* 1: there are unauthenticated attributes */
    uint8_t verified;        /* 1 after a good verification, 0 after a bad one and after decoding */
    int32_t version;         /* 1 after any Set */
    int32_t dnSet;           /* 1 if a whole Name was set */
    NameRecord issuer;       /* head of the issuer's components */
    Anybuf *issuerDn;        /* the whole Name, or null */
    Anybuf serial;
    AlgorithmIdentifierRecord digestAlgorithm; /* parameters are not kept */
    int32_t attributesDigested;                /* 1 once messageDigest and contentType were added */
    AttributeRecord *attributes;
    AlgorithmIdentifierRecord digestEncAlgorithm; /* parameters are not kept */
    AttributeRecord *unAttributes;
    KAHookFunc digestFunc;
    void *digestFuncParam; /* the context's copy; wiped when it is freed */
    uint32_t digestFuncParamLen;
    KAHookFunc signFunc; /* signs, or opens a signature */
    void *signFuncParam; /* as the other */
    uint32_t signFuncParamLen;
    Anybuf encryptedDigest; /* the signature */
    int32_t contentTypeSet;
    Anybuf contentType;
    Anybuf content;
    struct SignerInfoCtx *next; /* the message's next signer */

    /* The library's own. */
    ListMarks attributeMarks;
    ListMarks unAttributeMarks;
    struct KeptOctets *kept;             /* what was decoded; records hold parts of it */
    struct SharedOctets *messageContent; /* the message's content, if `content` is part of it */
    const void *owner;                   /* the message that has taken the context */
} SignerInfoCtx;
KARIL_SIZE_32(SignerInfoCtx, 396);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function, unless a message has taken it.
 */
KARIL_API int32_t KA_PKCS7_CreateEncodeSignerInfo(SignerInfoCtx **out);
KARIL_API int32_t KA_PKCS7_CreateDecodeSignerInfo(SignerInfoCtx **out);

/* Frees the context with all it holds, but not the next one. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestoryEncodeSignerInfo(SignerInfoCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestoryDecodeSignerInfo(SignerInfoCtx *ctx);

/*
 * Sets one of the ids from PKCS7_SIGNER_DN to PKCS7_SIGNER_CONTENT to a copy of `length` octets at `value` (null only
 * with length 0); a component of the issuer's name, in the local encoding, is appended. With PKCS7_SIGNER_DN and
 * components together the former is written.
 * Returns 0; KACERT_AttributeNotSupportErr for another id, 14 included; KACERT_InvalidLengthErr for a length below 0;
 * KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetSignerInfoAttributeChar(SignerInfoCtx *ctx, int32_t id, const uint8_t *value,
                                                      int32_t length);

/*
 * Answers one of the ids from PKCS7_SIGNER_ISSUER_COUNTRY to PKCS7_SIGNER_SIGNATURE. `ctx`: null is status 0 with
 * nothing done. `result`: receives the octets, or null to ask for the length; the caller sees to its size.
 * `*resultLength`: their number; it stays as it was for a component of the name that is not there, so set it to 0
 * first. Returns 0; KACERT_AttributeNotSupportErr for another id; KACERT_InvalidItemErr for a null `resultLength`.
 */
KARIL_API int32_t KA_PKCS7_GetSignerInfoAttributeChar(SignerInfoCtx *ctx, int32_t id, uint8_t *result,
                                                      uint32_t *resultLength);

/*
 * Append an authenticated, or an unauthenticated, attribute. `oid`: content octets, `oidLength` of them. `value`: one
 * whole element, `valueLength` octets, around which the encoder puts the SET. Both are copied.
 * Return 0; KACERT_InvalidLengthErr for a length below 1; KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing
 * changed.
 */
KARIL_API int32_t KA_PKCS7_SetSignerAttribute(SignerInfoCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                              const uint8_t *value, int32_t valueLength);
KARIL_API int32_t KA_PKCS7_SetSignerUnAttribute(SignerInfoCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                const uint8_t *value, int32_t valueLength);

/*
 * Answer the attribute numbered `position`, from 1. `oid`, `value`: receive the octets, or null for the lengths
 * alone; the caller sees to their sizes. A position that has no attribute leaves all outputs as they were, with status
 * 0. A walk by rising positions takes one step a call. Return 0 or KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetSignerAttribute(SignerInfoCtx *ctx, int32_t position, uint8_t *oid, uint32_t *oidLength,
                                              uint8_t *value, uint32_t *valueLength);
KARIL_API int32_t KA_PKCS7_GetSignerUnAttribute(SignerInfoCtx *ctx, int32_t position, uint8_t *oid, uint32_t *oidLength,
                                                uint8_t *value, uint32_t *valueLength);

/* Store the number of attributes of either list. Return 0 or KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS7_GetSignerInfoAttributesNum(const SignerInfoCtx *ctx, uint32_t *count);
KARIL_API int32_t KA_PKCS7_GetSignerInfoUnAttributesNum(const SignerInfoCtx *ctx, uint32_t *count);

/*
 * Store a hook and a copy of its parameter, in the place of what was stored. The first signs, the second opens
 * signatures, and there is one place for both; the third digests. The input of the hook that signs is a DigestInfo, so
 * it does the private key's operation with its padding and nothing else, as KA_PrivateKeyEncFunc_Ref does;
 * KA_PublicKeyDecryptFunc_Ref opens and KA_DigestFunc_Ref digests. `hook`: null for none. `parameter`: `length` octets;
 * with a length below 1 nothing is copied and the hook gets null. `ctx`: null is KACERT_InvalidItemErr for the first,
 * and 0 with nothing done for the others.
 * Return 0; KACERT_InvalidItemErr, also for a null `parameter` with a length; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetSignerInfoEncSignFunc(SignerInfoCtx *ctx, KAHookFunc hook, const void *parameter,
                                                    int32_t length);
KARIL_API int32_t KA_PKCS7_SetSignerInfoDecSignFunc(SignerInfoCtx *ctx, KAHookFunc hook, const void *parameter,
                                                    int32_t length);
KARIL_API int32_t KA_PKCS7_SetSignerInfoDigestFunc(SignerInfoCtx *ctx, KAHookFunc hook, const void *parameter,
                                                   int32_t length);

/*
 * Signs, and writes the SignerInfo. Without authenticated attributes the content is digested, and the content type
 * must be data. With them, messageDigest and contentType (RFC 2315 9.2) are appended to the caller's once in the life
 * of the context, and the SET of all is digested: a content that is changed later keeps the first messageDigest. A
 * decoded signer gets the two a second time. The hook signs the DigestInfo. The areas have a bound of 64 octets for a
 * digest and 512 for a signature. Nothing is kept but the two attributes and the signature: each call runs the hooks.
 * `result`: receives the DER; the caller sees to its size, and it must not be null. `*resultLength`: its octets.
 * Departures from RFC 2315: attributes are written, and signed, in list order; the algorithms' parameters are NULL.
 * Returns 0; KACERT_InvalidParamErr for a null context, no content, a content type that is not of nine octets or not
 * data without attributes, an empty content that is to be signed or digested, or a record with a length and no data;
 * KACERT_InvalidItemErr, also for a missing hook, issuer, serial number or algorithm, and before any Set; the hook's
 * own status; KACERT_InvalidLengthErr for a hook that wrote more than its bound, a DigestInfo above 512 octets, issuer
 * text above its limit (name.h) or more than 32 bits of octets; KACERT_MemoryErr. The two attributes stay once added.
 */
KARIL_API int32_t KA_PKCS7_EncodeSignerInfo(SignerInfoCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a SignerInfo in the place of what the context held; hooks, content type and content stay. `der`, `length`: as
 * all octets to decode. Nothing is verified. Of an attribute with several values the first is taken, and such a
 * signature does not verify. Elements after the known ones are ignored.
 * Returns 0; KACERT_CertNotEndErr for a missing element; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr;
 * KACERT_InvalidLengthErr; KACERT_InvalidItemErr, also for an attribute without identifier or SET; KACERT_MemoryErr; a
 * status of KI_DecodeIssuerSubject. What was decoded before a failure stays, but not a part of a list of attributes.
 */
KARIL_API int32_t KA_PKCS7_DecodeSignerInfo(SignerInfoCtx *ctx, const uint8_t *der, int32_t length);

/*
 * Verifies the signature: opens it with the hook and compares the block with the DigestInfo of the content, or, where
 * there are authenticated attributes, of their SET, written again. `*verdict`: PKCS7_VERDICT_GOOD or _BAD with status
 * 0, _NO_HOOK with KACERT_InvalidItemErr for a missing hook, _NO_CONTEXT with status 0 for a null context.
 * With attributes the content is not looked at: a caller who wants it bound compares the messageDigest attribute with
 * a digest of the content.
 * Returns 0; KACERT_InvalidItemErr for a content, or a list of attributes, that is not there; KACERT_InvalidParamErr
 * if both pointers are null; the hook's own status, with the verdict as it was; KACERT_InvalidLengthErr for a hook
 * that wrote more than its bound of 64 or 512 octets, or a DigestInfo above 512; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_VerifySignerSignature(SignerInfoCtx *ctx, int32_t *verdict);

#ifdef __cplusplus
}
#endif

#endif
