/*
 * karil: the bags of PKCS#12 that hold one value with its type (RFC 7292 4.2.3 to 4.2.5): CertBag, CrlBag and
 * SecretContentsBag.
 *
 * What holds for all bags is said at the top of pkcs12_key_bag.h. Departure from RFC 7292: a secret is always an OCTET
 * STRING.
 */
#ifndef KARIL_PKCS12_TYPED_BAGS_H
#define KARIL_PKCS12_TYPED_BAGS_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One record for the three. */
typedef struct TypedBagCtx {
    uint8_t valueSet;
    uint8_t valueIsText; /* CertBag alone: 1 writes the value as IA5String, 0 as OCTET STRING; 0 after decoding */
    AlgorithmRecord id;  /* of the value's type */
    Anybuf value;
} TypedBagCtx;
KARIL_SIZE_32(TypedBagCtx, 64);
typedef TypedBagCtx CertBagCtx;
typedef TypedBagCtx CrlBagCtx;
typedef TypedBagCtx SecretContentsBagCtx;

/*
 * Make a context and store it in `*out`. All names are one function. Return 0, KACERT_MemoryErr or, for null,
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_CreateEncodeCertBag(CertBagCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeCertBag(CertBagCtx **out);
KARIL_API int32_t KA_PKCS12_CreateEncodeCrlBag(CrlBagCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeCrlBag(CrlBagCtx **out);
KARIL_API int32_t KA_PKCS12_CreateEncodeSecretContentsBag(SecretContentsBagCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeSecretContentsBag(SecretContentsBagCtx **out);

/* Wipe and free the context with all it holds. Return 0 or, for null, KACERT_InvalidParamErr. */
KARIL_API int32_t KA_PKCS12_DestoryEncodeCertBag(CertBagCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeCertBag(CertBagCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryEncodeCrlBag(CrlBagCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeCrlBag(CrlBagCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryEncodeSecretContentsBag(SecretContentsBagCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeSecretContentsBag(SecretContentsBagCtx *ctx);

/*
 * Set the value, or the OID content octets of its type, in the place of what was set. A length of 0 is a value as well.
 * `isText`: above 0 for an IA5String, else an OCTET STRING. Return 0; KACERT_InvalidParamErr for null or a negative
 * length; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetCertBagCertificate(CertBagCtx *ctx, const uint8_t *value, int32_t length,
                                                  int32_t isText);
KARIL_API int32_t KA_PKCS12_SetCrlBagCrl(CrlBagCtx *ctx, const uint8_t *value, int32_t length);
KARIL_API int32_t KA_PKCS12_SetSecretContentsBagContents(SecretContentsBagCtx *ctx, const uint8_t *value,
                                                         int32_t length);
KARIL_API int32_t KA_PKCS12_SetCertBagID(CertBagCtx *ctx, const uint8_t *oid, int32_t length);
KARIL_API int32_t KA_PKCS12_SetCrlBagID(CrlBagCtx *ctx, const uint8_t *oid, int32_t length);
KARIL_API int32_t KA_PKCS12_SetSecretContentsBagID(SecretContentsBagCtx *ctx, const uint8_t *oid, int32_t length);

/*
 * Answer the value, or the OID content octets of its type, which are 0 octets if they are not set. `*isText` becomes
 * -1, whatever the value is. Return 0; KACERT_InvalidParamErr for null, and for a value that is not set.
 */
KARIL_API int32_t KA_PKCS12_GetCertBagCertificate(const CertBagCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                                  int32_t *isText);
KARIL_API int32_t KA_PKCS12_GetCrlBagCrl(const CrlBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GetSecretContentsBagContents(const SecretContentsBagCtx *ctx, uint8_t *result,
                                                         uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GetCertBagID(const CertBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GetCrlBagID(const CrlBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GetSecretContentsBagID(const SecretContentsBagCtx *ctx, uint8_t *result,
                                                   uint32_t *resultLength);

/*
 * Write SEQUENCE { OBJECT IDENTIFIER, [0] { OCTET STRING or IA5String } }. Return 0; KACERT_InvalidParamErr for null,
 * and if the value is not set; KACERT_InvalidLengthErr for more than 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeCertBag(const CertBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_EncodeCrlBag(const CrlBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_EncodeSecretContentsBag(const SecretContentsBagCtx *ctx, uint8_t *result,
                                                    uint32_t *resultLength);

/*
 * Decode a bag. `length`: above 0 it is what is there, and an element that claims more is KACERT_LengthNotEqualErr;
 * 0 trusts the element's header; below 0 is KACERT_InvalidLengthErr. Octets after the element are ignored. The tag
 * around a certificate is not looked at. The one around a CRL or a secret must be read as 0x50, which no tag is: every
 * such bag is KACERT_InvalidItemErr, also those that karil writes.
 * Return 0; KACERT_InvalidParamErr for null, and for a bag without identifier; KACERT_InvalidItemErr for a bag without
 * value; KACERT_InvalidTagErr for what is no SEQUENCE; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr;
 * KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_DecodeCertBag(CertBagCtx *ctx, const uint8_t *der, int32_t length);
KARIL_API int32_t KA_PKCS12_DecodeCrlBag(CrlBagCtx *ctx, const uint8_t *der, int32_t length);
KARIL_API int32_t KA_PKCS12_DecodeSecretContentsBag(SecretContentsBagCtx *ctx, const uint8_t *der, int32_t length);

/*
 * The same without a context: Set and Encode, Decode and Get, with their statuses. A context that cannot be created is
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_GenCertBag(const uint8_t *value, int32_t length, const uint8_t *oid, int32_t oidLength,
                                       int32_t isText, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GenCrlBag(const uint8_t *value, int32_t length, const uint8_t *oid, int32_t oidLength,
                                      uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GenSecretContentsBag(const uint8_t *value, int32_t length, const uint8_t *oid,
                                                 int32_t oidLength, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_ParseCertBag(uint8_t *value, uint32_t *valueLength, uint8_t *oid, uint32_t *oidLength,
                                         int32_t *isText, const uint8_t *der, int32_t length);
KARIL_API int32_t KA_PKCS12_ParseCrlBag(uint8_t *value, uint32_t *valueLength, uint8_t *oid, uint32_t *oidLength,
                                        const uint8_t *der, int32_t length);
KARIL_API int32_t KA_PKCS12_ParseSecretContentsBag(uint8_t *value, uint32_t *valueLength, uint8_t *oid,
                                                   uint32_t *oidLength, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
