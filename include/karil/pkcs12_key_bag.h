/*
 * karil: the key bags of PKCS#12 (RFC 7292 4.2.1 and 4.2.2): KeyBag is PrivateKeyInfo (RFC 5208 5), EncKeyBag is
 * EncryptedPrivateKeyInfo (RFC 5208 6).
 *
 * What holds for all bags and for SafeContents (pkcs12_typed_bags.h, pkcs12_safe.h): a context is created, filled and
 * encoded, or it decodes and is asked. A Set copies what it is given. Decoding replaces all that the context held; if
 * it fails, the context is as it was. Each output is the caller's buffer, which must not be null and whose size the
 * caller sees to: there is no form that asks for the length alone. A field is never longer than the octets that were
 * decoded, and an encoding is at most 64 octets longer than its fields, and 32 more for each attribute. After a failure
 * no output is changed. A null pointer that the comment of a function does not allow is the status that the comment
 * names for null. What may hold a key is wiped before it is freed. A context belongs to one thread at a time.
 *
 * An element inside what is decoded that its parent cuts off is KACERT_InvalidLengthErr; one in an OCTET STRING or an
 * explicit tag that is missing, cut off or followed by more is KACERT_LengthNotEqualErr. The tags of identifiers,
 * numbers and octets are not looked at.
 */
#ifndef KARIL_PKCS12_KEY_BAG_H
#define KARIL_PKCS12_KEY_BAG_H

#include "karil/pkcs7.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A plain private key. */
typedef struct KeyBagCtx {
    uint8_t versionSet;
    uint8_t algorithmSet;
    uint8_t keySet;
    int32_t version;
    AlgorithmRecord algorithm;
    Anybuf parameters; /* empty: NULL is written, and nothing is read */
    Anybuf key;        /* private key octets */
    AttributeHead attributes;
    uint32_t attributeCount;
    Anybuf reserved;

    /* The library's own. */
    ListMarks attributeMarks;
} KeyBagCtx;
KARIL_SIZE_32(KeyBagCtx, 204);

/* An enciphered private key. */
typedef struct EncKeyBagCtx {
    uint8_t algorithmSet;
    uint8_t encKeySet;
    AlgorithmRecord algorithm;
    Anybuf parameter; /* of the algorithm: one whole element */
    Anybuf encKey;    /* cipher text */
} EncKeyBagCtx;
KARIL_SIZE_32(EncKeyBagCtx, 92);

/*
 * A function that enciphers or deciphers by a password, such as KA_PKCS12_PbeWithDigestAlgoAndEncrypt and
 * KA_PKCS12_PbeWithDigestAlgoAndDecrypt. `output` has room for 1,024 octets more than the input, and for 3,024
 * at least. Returns 0; any other value comes back unchanged from the function that called.
 */
typedef int32_t (*KAPbeFunc)(const uint8_t *oid, uint32_t oidLength, const uint8_t *password, uint32_t passwordLength,
                             const uint8_t *salt, uint32_t saltLength, uint32_t iterations, const uint8_t *input,
                             uint32_t inputLength, uint8_t *output, uint32_t *outputLength);

/*
 * Makes a context and stores it in `*out`. The two names are one function, and so are all pairs of names here that
 * create or destroy. Returns 0, KACERT_MemoryErr or, for null, KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_CreateEncodeKeyBag(KeyBagCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeKeyBag(KeyBagCtx **out);

/* Wipes and frees the context with all it holds. Returns 0 or, for null, KACERT_InvalidParamErr. */
KARIL_API int32_t KA_PKCS12_DestroyEncodeKeyBag(KeyBagCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestroyDecodeKeyBag(KeyBagCtx *ctx);

/* The version, which can be set again. Returns 0; KACERT_InvalidParamErr for null, and for a version not set. */
KARIL_API int32_t KA_PKCS12_SetKeyBagVersion(KeyBagCtx *ctx, int32_t version);
KARIL_API int32_t KA_PKCS12_GetKeyBagVersion(const KeyBagCtx *ctx, int32_t *version);

/*
 * The algorithm, OID content octets, and the key. Each is set once; a length of 0 is a value as well.
 * Returns 0; KACERT_InvalidParamErr for null, a negative length, what is set already, and what was asked for and is not
 * set; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetKeyBagAlgorithm(KeyBagCtx *ctx, const uint8_t *oid, int32_t length);
KARIL_API int32_t KA_PKCS12_GetKeyBagAlgorithm(const KeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_SetKeyBagKey(KeyBagCtx *ctx, const uint8_t *key, int32_t length);
KARIL_API int32_t KA_PKCS12_GetKeyBagKey(const KeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Adds an attribute at the end of the list. `name`: OID content octets. `value`: one whole element, around which the
 * encoder writes a SET. Returns 0; KACERT_InvalidParamErr for null or a negative length; KACERT_MemoryErr, with nothing
 * changed.
 */
KARIL_API int32_t KA_PKCS12_SetKeyBagAttribute(KeyBagCtx *ctx, const uint8_t *name, int32_t nameLength,
                                               const uint8_t *value, int32_t valueLength);

/*
 * Answers the attribute numbered `index`, from 1; past the end it is the last one. Index 0, a negative index, an empty
 * list, and an attribute that was decoded without value leave all outputs as they are, with status 0. After an
 * index, the next one takes one step. Returns 0 or, for null, KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_GetKeyBagAttribute(KeyBagCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                               uint32_t *valueLength, int32_t index);

/* Stores the number of attributes. Returns 0 or, for null, KACERT_InvalidParamErr. */
KARIL_API int32_t KA_PKCS12_GetKeyBagAttributeNum(const KeyBagCtx *ctx, uint32_t *count);

/*
 * Writes SEQUENCE { version, SEQUENCE { algorithm, NULL }, OCTET STRING key, [0] attributes }; without attributes
 * there is no [0]. Returns 0; KACERT_InvalidParamErr for null, and unless version, algorithm and key are set;
 * KACERT_InvalidLengthErr for more than 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeKeyBag(const KeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a KeyBag. `length`: just the element's octets; any other is KACERT_LengthNotEqualErr. The algorithm's
 * parameters are not read, and of an attribute with several values the first is taken.
 * Returns 0; KACERT_InvalidParamErr for null, a field that is missing, and another tag than [0] after the key;
 * KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_InvalidItemErr for an attribute
 * without identifier or SET; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_DecodeKeyBag(KeyBagCtx *ctx, const uint8_t *der, int32_t length);

/* The same without a context: Set and Encode, Decode and Get, with their statuses. Parse: `key` may be `der`. */
KARIL_API int32_t KA_PKCS12_GenKeyBag(int32_t version, const uint8_t *oid, int32_t oidLength, const uint8_t *key,
                                      int32_t keyLength, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_ParseKeyBag(int32_t *version, uint8_t *oid, uint32_t *oidLength, uint8_t *key,
                                        uint32_t *keyLength, const uint8_t *der, int32_t length);

/* As the functions of the same names for KeyBag. */
KARIL_API int32_t KA_PKCS12_CreateEncodeEncKeyBag(EncKeyBagCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeEncKeyBag(EncKeyBagCtx **out);
KARIL_API int32_t KA_PKCS12_DestoryEncodeEncKeyBag(EncKeyBagCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeEncKeyBag(EncKeyBagCtx *ctx);

/*
 * The algorithm, OID content octets; its parameters, one whole element, empty for NULL; the cipher text. Each can be
 * set again. What is not set is answered as 0 octets. Returns 0; KACERT_InvalidParamErr for null or a negative
 * length; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetEncKeyBagAlgo(EncKeyBagCtx *ctx, const uint8_t *oid, int32_t length);
KARIL_API int32_t KA_PKCS12_GetEncKeyBagAlgo(const EncKeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_SetEncKeyBagParameter(EncKeyBagCtx *ctx, const uint8_t *der, int32_t length);
KARIL_API int32_t KA_PKCS12_GetEncKeyBagParameter(const EncKeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_SetEncKeyBagEncKey(EncKeyBagCtx *ctx, const uint8_t *octets, int32_t length);
KARIL_API int32_t KA_PKCS12_GetEncKeyBagEncKey(const EncKeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Writes SEQUENCE { SEQUENCE { algorithm, parameter or NULL }, OCTET STRING }. Returns 0; KACERT_InvalidParamErr for
 * null, and unless algorithm and cipher text are set; KACERT_InvalidLengthErr for more than 32 bits of octets;
 * KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeEncKeyBag(const EncKeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes an EncKeyBag. `length`: just the element's octets; any other is KACERT_LengthNotEqualErr. NULL as parameter
 * is stored as its two octets. Returns 0; KACERT_InvalidParamErr for null, and a field other than the parameter that is
 * missing; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_DecodeEncKeyBag(EncKeyBagCtx *ctx, const uint8_t *der, int32_t length);

/*
 * Enciphers a key and writes the EncKeyBag, with the parameter SEQUENCE { OCTET STRING salt, INTEGER iterations }.
 * `key`: what is to be enciphered, a KeyBag as a rule. `password`: may be null. The other pointers must not be null.
 * Returns 0; KACERT_InvalidParamErr for null, a negative length, or an iteration count below 1; the status of
 * `encrypt`; KACERT_InvalidLengthErr for a cipher text above 2,000 octets or a parameter above 100; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_GenEncKeyBag(const uint8_t *oid, int32_t oidLength, const uint8_t *key, int32_t keyLength,
                                         const uint8_t *password, int32_t passwordLength, const uint8_t *salt,
                                         int32_t saltLength, int32_t iterations, uint8_t *result,
                                         uint32_t *resultLength, KAPbeFunc encrypt);

/*
 * Tells whether an EncKeyBag can be deciphered. No key comes back: KA_PKCS12_DealWithEncKeyBag and a decryption
 * return it. `password`: may be null. Returns the status of `decrypt`; KACERT_InvalidParamErr for null, a length below
 * 1, and a parameter that cannot be decoded; KACERT_InvalidLengthErr for a parameter above 100 octets; the statuses of
 * KA_PKCS12_DecodeEncKeyBag.
 */
KARIL_API int32_t KA_PKCS12_ParseEncKeyBag(const uint8_t *password, int32_t passwordLength, const uint8_t *der,
                                           int32_t length, KAPbeFunc decrypt);

/*
 * Splits an EncKeyBag with its parameter into what KA_PKCS12_PbeWithDigestAlgoAndDecrypt takes. `encKey` may be `der`;
 * the other outputs must not overlap it. Returns 0; KACERT_InvalidParamErr for null, and a parameter that cannot be
 * decoded; KACERT_InvalidLengthErr for a parameter above 100 octets; the statuses of KA_PKCS12_DecodeEncKeyBag.
 */
KARIL_API int32_t KA_PKCS12_DealWithEncKeyBag(uint8_t *oid, uint32_t *oidLength, uint8_t *encKey,
                                              uint32_t *encKeyLength, uint8_t *salt, uint32_t *saltLength,
                                              uint32_t *iterations, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
