/*
 * karil: one-call checks of a signature: a certificate or a CRL against its issuer's certificate, a request against its
 * own key.
 *
 * Each call checks one link and nothing else: no chain is built, no extension, revocation or validity of the issuer is
 * looked at. Signatures are RSA with PKCS#1 v1.5 padding by KA_PKCS7_VerifySignature, over MD2, MD5 or SHA-1 as the
 * object's signature algorithm names it. Keys have a modulus of at most 2,048 bits. A distinguished name whose text
 * KI_GetDN cannot give, a signature algorithm above 128 octets, a signature or a public key above 512 octets are
 * KACERT_InvalidLengthErr. Of an algorithm the first nine octets are compared.
 *
 * What all three return beside what is said below: 0 for a good signature; the decoder's status; the statuses of
 * KI_GetDN; KACERT_InvalidSignatureAlgErr for an unknown algorithm; the statuses of KA_Decode_PublicKey;
 * KACERT_VerifySignatureErr for a signature that does not verify, whatever the reason, and for the algorithm
 * rsaEncryption, which names no digest; KACERT_MemoryErr.
 */
#ifndef KARIL_VERIFY_H
#define KARIL_VERIFY_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Checks a certificate. `issuer`, `subject`: the two certificates in DER, `issuerLength` and `subjectLength` octets, as
 * KACert_DecodeCert takes them. In this order: the text of the issuer's subject equals that of the subject's issuer,
 * octet by octet; the subject's notBefore is not before the issuer's and not after now, its notAfter is not after the
 * issuer's and not before now; the signature is good. Times are compared as unsigned numbers of 32 bits; one that was
 * written as GeneralizedTime counts as 0.
 * Departures from RFC 5280 6.1.3 and 7.1: names are compared by their text, in which letter case counts and the order
 * and the kind of string do not, nor attributes that have no place in it; the subject's validity must lie within the
 * issuer's.
 * Returns also KACERT_CertNotEndErr for a null pointer; KACERT_DnNotEqualErr; KACERT_TimeOutRangeErr.
 */
KARIL_API int32_t KA_VerifyCert(const uint8_t *issuer, uint32_t issuerLength, const uint8_t *subject,
                                uint32_t subjectLength);

/*
 * Checks a CRL at `crl`, `crlLength` octets, as KACert_DecodeCrl takes them: the names as above, then the signature.
 * Its dates are not looked at. The algorithm is CRL_OUTER_SIGNATUREALGORITHM as KACert_GetCrlAttributeChar answers it.
 * Returns also KACERT_CertNotEndErr for a null pointer; KACERT_DnNotEqualErr.
 */
KARIL_API int32_t KA_VerifyCrl(const uint8_t *issuer, uint32_t issuerLength, const uint8_t *crl, uint32_t crlLength);

/*
 * Checks a certification request against its own key (RFC 2986 3). `request`: `length` octets of DER, as
 * KACert_DecodeCsr takes them, or of PEM where the first octet is not 0x30.
 * Returns also KACERT_CertNotEndErr for a null pointer, a length below 1 or a PEM text of fewer than 128 octets of DER;
 * KACERT_InvalidLengthErr for one of more than 5,000; -1 for text that is no PEM, or for want of memory there.
 */
KARIL_API int32_t KA_VerifyCsr_Sign(const uint8_t *request, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
