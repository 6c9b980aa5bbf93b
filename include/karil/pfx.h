/*
 * karil: PFX files (RFC 7292): one private key with certificates and their attributes, under a password.
 *
 * To write: create; set the key and each certificate, with their attributes; encode. To read: create; decode; get the
 * key and the certificates. What is written has the certificates in a first ContentInfo, as EncryptedData under
 * pbeWithSHAAnd40BitRC2-CBC; the key in a second one, as a shrouded key bag under pbeWithSHAAnd3-KeyTripleDES-CBC; and
 * a MAC with SHA-1: salts of 8, 8 and 20 random octets and 2,000 rounds each. Current tools open it with their old
 * ciphers switched on (openssl pkcs12 -legacy). A null pointer that the comment of a function does not allow is
 * KACERT_InvalidItemErr, and so is a length below 0. A Set copies what it is given. Keys are wiped before they are
 * freed. A context belongs to one thread at a time.
 */
#ifndef KARIL_PFX_H
#define KARIL_PFX_H

#include "karil/pkcs12_auth_safe.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A certificate of a PFX, with the attributes of its bag. */
typedef struct PfxCertificate {
    uint32_t attributeCount;
    Anybuf certificate;
    AttributeHead attributes;
    struct PfxCertificate *next;

    /* The library's own. */
    ListMarks attributeMarks;
} PfxCertificate;
KARIL_SIZE_32(PfxCertificate, 112);

/* A PFX, for both directions. The lists are the context's own, to be read alone. */
typedef struct PfxCtx {
    AuthSafeCtx *authSafe; /* a sign of life; nothing is stored in it */
    PfxCertificate *firstCertificate;
    uint8_t keyAttributesSet;
    uint8_t bagAttributesSet;
    uint32_t keyAttributeCount;
    uint32_t bagAttributeCount;
    AttributeHead keyAttributes; /* in the PrivateKeyInfo */
    AttributeHead bagAttributes; /* of the key's bag */
    Anybuf privateKey;           /* wiped when it is freed */
    uint32_t certificateCount;

    /* The library's own. */
    ListMarks keyAttributeMarks;
    ListMarks bagAttributeMarks;
    ListMarks certificateMarks;
} PfxCtx;
KARIL_SIZE_32(PfxCtx, 216);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function.
 */
KARIL_API int32_t KA_PKCS12_CreateEncodePfx(PfxCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodePfx(PfxCtx **out);

/* Frees the context with all it holds. Returns 0; KACERT_InvalidItemErr for null. */
KARIL_API int32_t KA_PKCS12_DestroyEncodePFX(PfxCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestroyDecodePFX(PfxCtx *ctx);

/*
 * Sets the private key to a copy of `length` octets at `value` (null only with length 0), in the place of what was set.
 * They become the privateKey of a PrivateKeyInfo with the algorithm rsaEncryption, whatever they are: for other
 * programs give an RSAPrivateKey (KA_Encode_PrivateKey). Returns 0; KACERT_InvalidItemErr; KACERT_MemoryErr, with
 * nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetPrivateKey(PfxCtx *ctx, const uint8_t *value, int32_t length);

/*
 * Append an attribute to the PrivateKeyInfo, or to the key's bag, where other programs look for a friendlyName or a
 * localKeyID (RFC 2985 5.5). `name`: OID content octets. `value`: one whole element; the SET around it is written by
 * the encoder. Return 0; KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetPrivateKey_Attribute(PfxCtx *ctx, const uint8_t *name, int32_t nameLength,
                                                    const uint8_t *value, int32_t valueLength);
KARIL_API int32_t KA_PKCS12_SetPrivateKeyBag_Attribute(PfxCtx *ctx, const uint8_t *name, int32_t nameLength,
                                                       const uint8_t *value, int32_t valueLength);

/* Appends a certificate, as KA_PKCS12_SetPrivateKey sets the key. */
KARIL_API int32_t KA_PKCS12_SetCertificate(PfxCtx *ctx, const uint8_t *value, int32_t length);

/*
 * Appends an attribute to the bag of a certificate. `index`: from 1; 0 names the first certificate, one above their
 * count the last. Returns 0; KACERT_InvalidItemErr, also for a negative index or without certificates;
 * KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetCertificateBag_Attribute(PfxCtx *ctx, const uint8_t *name, int32_t nameLength,
                                                        const uint8_t *value, int32_t valueLength, int32_t index);

/*
 * Writes the PFX. `password`: `passwordLength` octets, of which each becomes one 16-bit character, whatever its
 * encoding (null only with length 0). `result`: receives the DER, or null to ask for the length, which costs as much;
 * the caller sees to its size. `*resultLength`: its octets. Nothing is kept: each call takes fresh salts, and the
 * length is the same. Returns 0; KACERT_InvalidItemErr, also without certificates; KACERT_InvalidParamErr without a key
 * or for an attribute with an empty name or value in a bag, or if no random octets are found; KACERT_InvalidLengthErr
 * for more than 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodePFX(PfxCtx *ctx, const uint8_t *password, int32_t passwordLength, uint8_t *result,
                                      uint32_t *resultLength);

/*
 * Reads a PFX into a fresh context: what is read is added to what is there. `der`: `length` octets; 0 trusts the
 * element's header, and octets after the element are ignored. `*macResult`: PKCS7_VERDICT_GOOD, or PKCS7_VERDICT_BAD
 * for a wrong password or a file that was changed. That stops nothing: the status may be 0 all the same, or tell what
 * comes of octets deciphered with a wrong key. Of the AuthenticatedSafe the first two ContentInfos are read, as data or
 * as EncryptedData. Others are skipped, and so are bags other than certificates and shrouded keys, plain key bags too.
 * A key in the first ContentInfo comes without attributes. Of several keys the last one stays.
 *
 * At most 100,000,000 rounds are worked off for a file: its rounds count once for each digest's length of octets that
 * is derived with them, for keys, for IVs, and for the MAC's key. Departure: the key of a MAC has 20 octets, by MD5 and
 * MD2 as well, where other programs take 16: theirs are PKCS7_VERDICT_BAD.
 *
 * Returns 0; KACERT_InvalidItemErr, also for missing elements; KACERT_InvalidParamErr for a null `der` or `macResult`,
 * for a PFX without MacData, for more rounds, for a key's parameter that is none, and for a bag that is not in [0];
 * KACERT_AlgorithmNotSupportErr for other ciphers than those of pkcs12_crypt.h, such as PBES2;
 * KAPKCS7_RsaOperationErr for a MAC by another digest than MD2, MD5 and SHA-1; KAPKCS7_ContentTypeErr for an
 * AuthenticatedSafe that is not data, and for a ContentInfo without content; KACERT_InvalidTagErr;
 * KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr, also for padding that is refused, a cipher text that is empty or
 * no whole number of blocks (with RC4 neither is refused), and a key's parameter above 100 octets; KACERT_MemoryErr.
 * What was read before a failure stays.
 */
KARIL_API int32_t KA_PKCS12_DecodePFX(PfxCtx *ctx, const uint8_t *password, int32_t passwordLength, const uint8_t *der,
                                      int32_t length, int32_t *macResult);

/*
 * Answers the key. `result`: receives the octets, or null to ask for the length; the caller sees to its size.
 * `*resultLength`: their number, 0 without a key. Returns 0 or KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS12_GetPrivateKey(PfxCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Answer an attribute. `name`, `value`: receive the octets; the caller sees to their size. `index`: from 1; for one
 * that there is not nothing is changed, with status 0. A walk by rising indexes takes one step a call. Return 0 or
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS12_GetPrivateKey_Attribute(PfxCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                                    uint32_t *valueLength, int32_t index);
KARIL_API int32_t KA_PKCS12_GetPrivateKeyBag_Attribute(PfxCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                                       uint32_t *valueLength, int32_t index);

/*
 * Answers a certificate. `result`: receives the octets, or null to ask for the length. `index`: from 1; for one that
 * there is not nothing is changed, with status 0. Returns 0 or KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS12_GetCertificate(PfxCtx *ctx, uint8_t *result, uint32_t *resultLength, int32_t index);

/* Answers an attribute of a certificate's bag, both indexes from 1, as KA_PKCS12_GetPrivateKeyBag_Attribute. */
KARIL_API int32_t KA_PKCS12_GetCertificateBag_Attribute(PfxCtx *ctx, uint8_t *name, uint32_t *nameLength,
                                                        uint8_t *value, uint32_t *valueLength, int32_t index,
                                                        int32_t attributeIndex);

#ifdef __cplusplus
}
#endif

#endif
