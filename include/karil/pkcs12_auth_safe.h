/*
 * karil: the PFX around ContentInfos (RFC 7292 4), under a MAC by a password or under signatures.
 *
 * To encode: create; set each ContentInfo (pkcs12_content_info.h); set the MAC's digest, parameter and hook, or
 * digests, certificates and signers; encode. To decode: decode; get each ContentInfo; of a PFX with a MAC get the
 * parameter, derive the key from it, set the hook, and ask whether the MAC matches. karil/pfx.h does all of this in two
 * calls. A null pointer that the comment of a function does not allow is KACERT_InvalidParamErr, and so is a context of
 * the other kind. A Set copies what it is given. A context belongs to one thread at a time.
 */
#ifndef KARIL_PKCS12_AUTH_SAFE_H
#define KARIL_PKCS12_AUTH_SAFE_H

#include "karil/pkcs12_mac.h"
#include "karil/pkcs7_signed.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A PFX of either kind, for both directions. */
typedef struct AuthSafeCtx {
    uint8_t versionSet;     /* 1 from creation */
    uint8_t contentDecoded; /* 1 once the ContentInfos are decoded */
    uint8_t macParameterSet;
    uint8_t genMacSet;
    uint8_t parseMacSet;
    uint8_t contentTypeSet; /* 1 from creation */
    int32_t version;        /* 3, or what was decoded */
    uint32_t contentInfoCount;
    Anybuf *contentInfoList;  /* a whole element each; the context's own, to be read alone */
    uint32_t contentTypeFlag; /* 1 */
    Anybuf contentType;       /* data, OID content octets */
    Anybuf content;           /* the encoded AuthenticatedSafe */
    MacRecord mac;            /* its macInput is a second copy of `content` */
    void *pkcs7;              /* a DataCtx, or a SignedDataCtx; owned */

    /* The library's own. */
    ListMarks contentInfoMarks;
    int32_t kind; /* PKCS7_TYPE_DATA or PKCS7_TYPE_SIGNEDDATA */
} AuthSafeCtx;
KARIL_SIZE_32(AuthSafeCtx, 288);

/*
 * Make a context and store it in `*out`. The two names of a kind do the same. That of the signed kind holds a
 * SignedDataCtx with version 1 and data as its content type. Return 0, KACERT_MemoryErr or KACERT_InvalidParamErr. Free
 * it with either destroy function of its kind.
 */
KARIL_API int32_t KA_PKCS12_CreateEncodeAuthSafeOfDataType(AuthSafeCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeAuthSafeOfDataType(AuthSafeCtx **out);
KARIL_API int32_t KA_PKCS12_CreateEncodeAuthSafeOfSignedType(AuthSafeCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeAuthSafeOfSignedType(AuthSafeCtx **out);

/* Free the context with all it holds, its signers included. Null is accepted. Return 0. */
KARIL_API int32_t KA_PKCS12_DestoryEncodeAuthSafeOfDataType(AuthSafeCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeAuthSafeOfDataType(AuthSafeCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryEncodeAuthSafeOfSignedType(AuthSafeCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeAuthSafeOfSignedType(AuthSafeCtx *ctx);

/*
 * Append a ContentInfo, `length` octets at `der`, which are not looked at. Return 0; KACERT_InvalidParamErr, also for a
 * length below 1; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfDataType_ContentInfo(AuthSafeCtx *ctx, const uint8_t *der, int32_t length);
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfSignedType_ContentInfo(AuthSafeCtx *ctx, const uint8_t *der, int32_t length);

/*
 * Answer the ContentInfo numbered `index`, from 1. `result`: receives the octets; the caller sees to its size.
 * `*resultLength`: their number. An index above their count changes nothing, with status 0. A walk by rising indexes
 * takes one step a call. Return 0 or KACERT_InvalidParamErr, also for an index below 1.
 */
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfDataType_ContentInfo(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                                              int32_t index);
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfSignedType_ContentInfo(AuthSafeCtx *ctx, uint8_t *result,
                                                                uint32_t *resultLength, int32_t index);

/*
 * Sets the digest of the MAC: `length` content octets of its OID (null only with length 0). Returns 0;
 * KACERT_InvalidParamErr, also for a length below 0; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfDataType_DigestAlgorithm(AuthSafeCtx *ctx, const uint8_t *oid, int32_t length);

/* Answers it. Returns 0 or KACERT_InvalidParamErr, also for a context without MAC parameter. */
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfDataType_DigestAlgorithm(AuthSafeCtx *ctx, uint8_t *result,
                                                                  uint32_t *resultLength);

/*
 * Sets what the key of the MAC was derived with: `saltLength` octets at `salt` (null only with length 0) and the
 * rounds. Returns 0; KACERT_InvalidParamErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfDataType_MacParameter(AuthSafeCtx *ctx, const uint8_t *salt,
                                                               uint32_t saltLength, uint32_t iterations);

/* Answers both. Returns 0 or KACERT_InvalidParamErr, also for a context without MAC parameter. */
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfDataType_MacParameter(AuthSafeCtx *ctx, uint8_t *salt, uint32_t *saltLength,
                                                               uint32_t *iterations);

/*
 * Store the hook that computes the MAC and a copy of `length` octets at `parameter`, in the place of what was stored:
 * there is one for both directions, such as KA_HMACFunc_Ref. With a length below 1 the hook gets null. A parameter that
 * is a record with pointers, as HmacHookParam, is copied without what they point to: that must live until the hook is
 * called. A hook may write 60 octets. Return 0; KACERT_InvalidParamErr, also for a null `parameter` with a length;
 * KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfDataType_GenMacFunc(AuthSafeCtx *ctx, KAHookFunc hook, const void *parameter,
                                                             int32_t length);
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfDataType_ParseMacFunc(AuthSafeCtx *ctx, KAHookFunc hook, const void *parameter,
                                                               int32_t length);

/*
 * Writes PFX ::= SEQUENCE { version, ContentInfo, MacData } over the ContentInfos in their order; without any the
 * AuthenticatedSafe is empty. The hook is called on the AuthenticatedSafe alone, at each call. The number of rounds is
 * always written, 1 included. `result`: receives the DER, or null to ask for the length; the caller sees to its size.
 * `*resultLength`: its octets.
 * Returns 0; KACERT_InvalidParamErr, also without KA_PKCS12_SetAuthSafeOfDataType_GenMacFunc or a MAC parameter;
 * KACERT_InvalidItemErr for a null hook, an empty salt or a missing digest; the hook's own status;
 * KACERT_InvalidLengthErr for a hook that wrote more than 60 octets or more than 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeAuthSafeOfDataType(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a PFX in the place of what the context held; its hook stays. Any version is accepted. `der`, `length`: as all
 * octets to decode (pkcs7.h). A PFX without MacData is status 0. With a hook the MAC is computed, and a bad one is
 * status 0: ask KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult. If no memory is found for the copy of the
 * AuthenticatedSafe, the status is 0 and nothing is filled: contentDecoded tells.
 * Returns 0; KACERT_InvalidParamErr; KACERT_InvalidItemErr for a missing element; KAPKCS7_ContentTypeErr for another
 * content type than data; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; what
 * KA_PKCS12_DecodeMac returns; KACERT_MemoryErr. After a failure to decode the context holds neither MAC nor verdict
 * of an earlier PFX.
 */
KARIL_API int32_t KA_PKCS12_DecodeAuthSafeOfDataType(AuthSafeCtx *ctx, const uint8_t *der, int32_t length);

/*
 * Stores in `*result` whether the MAC matches: PKCS7_VERDICT_NO_HOOK without a hook, PKCS7_VERDICT_GOOD or
 * PKCS7_VERDICT_BAD. The hook is called on the AuthenticatedSafe, unless a MAC was found good before. Digests are
 * compared in constant time. A null context is status 0, with nothing stored.
 * Returns 0; KACERT_InvalidParamErr for a null `result`; the hook's own status; KACERT_InvalidLengthErr for a hook that
 * wrote more than 60 octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult(AuthSafeCtx *ctx, int32_t *result);

/*
 * Append a digest algorithm (OID content octets), a certificate or a CRL to the SignedData: ids
 * PKCS7_SIGNEDDATA_DIGEST_ALGO, PKCS7_SIGNEDDATA_CERTIFICATE and PKCS7_SIGNEDDATA_CRL. Return 0;
 * KACERT_InvalidParamErr, also for a length below 1; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfSignedType_DigestAlgorithm(AuthSafeCtx *ctx, const uint8_t *oid,
                                                                    int32_t length);
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfSignedType_Cert(AuthSafeCtx *ctx, const uint8_t *value, int32_t length);
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfSignedType_Crl(AuthSafeCtx *ctx, const uint8_t *value, int32_t length);

/*
 * Answer them: KA_PKCS7_GetSignedDataAttributeChar, whose statuses these are, and whose positions. A null context is
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfSignedType_DigestAlgorithm(AuthSafeCtx *ctx, uint8_t *result,
                                                                    uint32_t *resultLength, int32_t index);
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfSignedType_Cert(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                                         int32_t index);
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfSignedType_Crl(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                                        int32_t index);

/*
 * KA_PKCS7_SetSignedData_SignerInfo and KA_PKCS7_GetSignedData_SignerInfo. A null context is KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_SetAuthSafeOfSignedType_SignerInfo(AuthSafeCtx *ctx, SignerInfoCtx *signer);
KARIL_API int32_t KA_PKCS12_GetAuthSafeOfSignedType_SignerInfo(AuthSafeCtx *ctx, SignerInfoCtx **signer, int32_t index);

/*
 * Writes PFX ::= SEQUENCE { version, ContentInfo }, whose SignedData has the AuthenticatedSafe as its content.
 * `result`, `resultLength`: as above. Returns 0; KACERT_InvalidParamErr; what KA_PKCS7_EncodePKCS7SignedData returns;
 * KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeAuthSafeOfSignedType(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes such a PFX in the place of what the context held. Nothing is verified: get the signers and verify each. What
 * follows the ContentInfo is not looked at. `der`, `length`: as above.
 * Returns 0; KACERT_InvalidParamErr; KACERT_InvalidItemErr for a missing element; what KA_PKCS7_DecodeSignedData
 * returns; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_DecodeAuthSafeOfSignedType(AuthSafeCtx *ctx, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
