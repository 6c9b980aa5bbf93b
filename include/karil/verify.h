/*
 * karil: one-call checks of a signature: a certificate or a CRL against its issuer's certificate, a request against its
 * own key.
 *
 * Each call checks one link. It builds no chain, and looks at no extension and no revocation. Signatures are RSA with
 * PKCS#1 v1.5 padding over MD2, MD5 or SHA-1, as the object's outer signature algorithm names it. The modulus has at
 * most 2,048 bits.
 *
 * WHAT IS NOT CHECKED. The DigestInfo in a signature is not looked at (KA_PKCS7_VerifySignature). So an object under a
 * key with the public exponent 3 can be forged by a published method, and is then reported as good: do not trust
 * issuers with such keys. Issuers are compared by the text of KI_GetDN, which is less than the name. It has the ten
 * attributes of name.h alone. Of an attribute that occurs twice it has the last one, units excepted. Characters that
 * code page 936 does not have are "?" in it, and a value of more than 1,024 octets of local text is empty. Two issuers
 * that differ only in what the text leaves out or changes are taken for equal, and so are two names without any text.
 *
 * All three return 0 for a good signature; the statuses of the decoder; KACERT_InvalidSignatureAlgErr if the first nine
 * octets of the algorithm are not known; KACERT_VerifySignatureErr if the signature does not verify, whatever the
 * reason, and for the algorithm rsaEncryption, which names no digest; the statuses of KA_Decode_PublicKey;
 * KACERT_InvalidLengthErr if a signature algorithm exceeds 128 octets, or a signature or a public key 512;
 * KACERT_MemoryErr.
 */
#ifndef KARIL_VERIFY_H
#define KARIL_VERIFY_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Checks a certificate (RFC 5280 6.1.3). `issuer`, `subject`: the two certificates in DER, `issuerLength` and
 * `subjectLength` octets, as KACert_DecodeCert takes them. In this order: the text of the issuer's subject equals that
 * of the subject's issuer, octet by octet; the subject's notBefore is not before the issuer's and not after now; its
 * notAfter is not after the issuer's and not before now; the signature is good. Times are compared as unsigned numbers
 * of 32 bits. A time that was written as GeneralizedTime counts as 0.
 * The DigestInfo is not looked at, and names are compared by a text that leaves out attributes: see above.
 * Departures from RFC 5280 6.1.3 and 7.1: in the text letter case counts, but neither the order of attributes nor the
 * kind of string. The subject's validity must lie within the issuer's.
 * Returns also KACERT_CertNotEndErr if a pointer is null; KACERT_InvalidLengthErr if the text of a name exceeds 1,023
 * octets; KACERT_DnNotEqualErr; KACERT_TimeOutRangeErr.
 */
KARIL_API int32_t KA_VerifyCert(const uint8_t *issuer, uint32_t issuerLength, const uint8_t *subject,
                                uint32_t subjectLength);

/*
 * Checks a CRL at `crl`, `crlLength` octets, as KACert_DecodeCrl takes them, against the certificate of its issuer,
 * `issuerLength` octets at `issuer`: the names as KA_VerifyCert does, then the signature. No date is looked at, so that
 * an outdated CRL is accepted. The algorithm is CRL_OUTER_SIGNATUREALGORITHM as KACert_GetCrlAttributeChar answers it.
 * The DigestInfo is not looked at, and names are compared by a text that leaves out attributes: see above.
 * Returns also KACERT_CertNotEndErr if a pointer is null; KACERT_InvalidLengthErr if the text of a name exceeds 1,023
 * octets; KACERT_DnNotEqualErr.
 */
KARIL_API int32_t KA_VerifyCrl(const uint8_t *issuer, uint32_t issuerLength, const uint8_t *crl, uint32_t crlLength);

/*
 * Checks a certification request against its own key (RFC 2986 4.2). `request`: `length` octets of DER, as
 * KACert_DecodeCsr takes them, or of PEM if the first octet is not 0x30. No name is looked at. The DigestInfo is not
 * looked at either: see above.
 * Returns also KACERT_CertNotEndErr if the pointer is null, the length is below 1, or a PEM text has fewer than 128
 * octets of DER; KACERT_InvalidLengthErr if it has more than 5,000; -1 if the text is no PEM, or for want of memory
 * there.
 */
KARIL_API int32_t KA_VerifyCsr_Sign(const uint8_t *request, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
