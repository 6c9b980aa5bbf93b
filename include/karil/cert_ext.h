/*
 * karil: the extensions of a certificate one by one (RFC 5280 4.2.1). KACert_EncodeCert and KACert_DecodeCert do what
 * these do; a caller needs them only to work on single extensions.
 *
 * A null pointer that the comment does not allow is KACERT_InvalidParamErr.
 */
#ifndef KARIL_CERT_EXT_H
#define KARIL_CERT_EXT_H

#include "karil/base.h"
#include "karil/cert_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Encoders. Each writes one Extension element from its field of the context: SEQUENCE { OID, BOOLEAN TRUE if critical
 * is not zero, OCTET STRING }. It is stored in `*out`; free it with KI_FreeAnybuf. Presence flags are not looked at.
 * Each returns 0, KACERT_InvalidParamErr, KACERT_MemoryErr or a status of the writers; after a failure `*out` is as it
 * was. The comments below name the OID and what stands in the OCTET STRING. A decoded context holds a key usage and
 * distribution points in the wire's form, so that these are not written as they were decoded.
 */

/*
 * Writes [3] EXPLICIT Extensions: the extensions whose flags are set, in the order of RFC 5280 numbers 2.5.29.35, 14,
 * 32, 18, 17, 19, 15, 37, 31, then 1.3.6.1.5.5.7.1.1 and the private ones. If hasExtensions is 0, nothing is stored and
 * 0 is returned.
 */
KARIL_API int32_t KI_Cert_EncodeExtensions(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.35: SEQUENCE { [0] keyId }, the key identifier alone. */
KARIL_API int32_t KI_Cert_EncodeExtension_AuthorityKeyIdentifyer(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.14: OCTET STRING. */
KARIL_API int32_t KI_Cert_EncodeExtension_SubjectKeyIdentifier(CertEncodeCtx *ctx, Anybuf **out);

/*
 * 2.5.29.32: one PolicyInformation with a CPS qualifier for each node. KACERT_InvalidParamErr if there is no policy or
 * no CPS.
 */
KARIL_API int32_t KI_Cert_EncodeExtension_CertificatePolicies(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.18: SEQUENCE { [4] EXPLICIT Name }, the directory name alone. Also the statuses of KI_EncodeIssuerSuject. */
KARIL_API int32_t KI_Cert_EncodeExtension_IssuerAltName(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.17: what KI_EncodeGeneralNameS writes, with its statuses. */
KARIL_API int32_t KI_Cert_EncodeExtension_SubjectAltName(CertEncodeCtx *ctx, Anybuf **out);

/*
 * 2.5.29.19: SEQUENCE { cA if it is not zero, pathLenConstraint if there is one }. Departure from RFC 5280 4.2.1.9: a
 * pathLenConstraint is written without cA too. It is the first octet of pathLen.
 */
KARIL_API int32_t KI_Cert_EncodeExtension_BasicConstraint(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.15: BIT STRING of bits with their unusedBits. */
KARIL_API int32_t KI_Cert_EncodeExtension_KeyUsage(CertEncodeCtx *ctx, Anybuf **out);

/*
 * 2.5.29.37: SEQUENCE of the usages of the mask in ascending order, then of the defined ones; 30 00 if there is none. A
 * mask of 4 octets is a little-endian word. A shorter one fills the end of the word, and a longer one counts as 0.
 * KACERT_AlgorithmNotSupportErr if KACert_GetOIDValue refuses a defined usage.
 */
KARIL_API int32_t KI_Cert_EncodeExtension_ExtKeyUsage(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.31: a DistributionPoint with one URI as its fullName for each node. */
KARIL_API int32_t KI_Cert_EncodeExtension_CrlDistributePoint(CertEncodeCtx *ctx, Anybuf **out);

/* 1.3.6.1.5.5.7.1.1: what KI_CERT_EncodeDiscriptList writes. */
KARIL_API int32_t KI_Cert_EncodeExtension_AIA(CertEncodeCtx *ctx, Anybuf **out);

/* Stores a chain of elements, one for each private extension. If there is none, nothing is stored and 0 is returned. */
KARIL_API int32_t KI_Cert_EncodeExtension_Private(CertEncodeCtx *ctx, Anybuf **out);

/*
 * Writes OCTET STRING { SEQUENCE OF AccessDescription } from the list at `first` and stores it in `*out`; free it with
 * KI_FreeAnybuf. Any method but 0x88 is written as CA issuers. If `first` is null, the element of WriteNullSequence is
 * stored, without the OCTET STRING; if that fails, 0 is returned with nothing stored. Returns 0,
 * KACERT_InvalidParamErr, KACERT_MemoryErr or a status of the writers.
 */
KARIL_API int32_t KI_CERT_EncodeDiscriptList(const AccessNode *first, Anybuf **out);

/*
 * Writes SEQUENCE { NULL }, 30 02 05 00, and stores it in `*out`; free it with KI_FreeAnybuf. Returns 0,
 * KACERT_MemoryErr or KACERT_InvalidParamErr.
 */
KARIL_API int32_t WriteNullSequence(Anybuf **out);

/*
 * Decoders. Each reads one Extension element into its field of `block`, and sets the presence flag. The element is only
 * read, and what is kept of it is copied. If the block is a context's, the context frees it. Otherwise the caller
 * releases its records with KI_ClearAnybuf, its names with KI_FreeName and the nodes of its lists with KAPR_Free.
 *
 * Each returns 0. An Extension with another OID stores nothing and is 0 too; the exceptions are named below.
 * KACERT_CertNotEndErr if the Extension is empty, or has nothing after its OID or after its critical flag.
 * KACERT_LengthNotEqualErr if the element does not fill its record, or if what stands in the OCTET STRING is missing,
 * cut off or too long. KACERT_InvalidLengthErr if another inner element is cut off, malformed or runs over its parent's
 * end. KACERT_InvalidTagErr; KACERT_MemoryErr; KACERT_InvalidParamErr. What was stored before a failure stays, the
 * presence flag included.
 */

/*
 * Reads the [3] EXPLICIT Extensions element, whatever its tag; one without content is 0. Of each kind that is known the
 * first extension is taken, and later ones are skipped. Any other extension becomes a private one.
 * KACERT_InvalidParamErr also for an Extension that is empty, and for a private one without a value.
 */
KARIL_API int32_t KI_Cert_DecodeExtensions(const Anybuf *extensions, CertExtensions *block);

/*
 * 2.5.29.19. The first inner element is read as cA whatever its tag, so a lone pathLenConstraint is taken for cA.
 * KACERT_InvalidParamErr for another OID. KACERT_MemoryErr if the Extension is no SEQUENCE or is malformed.
 * KACERT_CertNotEndErr if the OCTET STRING is empty.
 */
KARIL_API int32_t KI_Cert_DecodeExtension_BasicConstraint(const Anybuf *extension, CertExtensions *block);

/*
 * 2.5.29.35. Only the key identifier is kept. One without octets is stored as such if it is primitive (80 00), and is
 * KACERT_InvalidParamErr if it is constructed (A0 00). KACERT_CertNotEndErr if the OCTET STRING is empty.
 */
KARIL_API int32_t KI_Cert_DecodeExtension_AuthorityKeyIdentifyer(const Anybuf *extension, CertExtensions *block);

/* 2.5.29.14. KACERT_InvalidParamErr, not KACERT_CertNotEndErr, if nothing stands after the critical flag. */
KARIL_API int32_t KI_Cert_DecodeExtension_SubjectKeyIdentifier(const Anybuf *extension, CertExtensions *block);

/* 2.5.29.15. bits: the content of the BIT STRING with its unused-bits octet first; unusedBits is 0. */
KARIL_API int32_t KI_Cert_DecodeExtension_KeyUsage(const Anybuf *extension, CertExtensions *block);

/*
 * 2.5.29.37. Usages outside the mask are dropped. Another OID stores a mask of zero. If there is no memory for the
 * mask, it is left out and 0 is returned.
 */
KARIL_API int32_t KI_Cert_DecodeExtension_ExtKeyUsage(const Anybuf *extension, CertExtensions *block);

/*
 * 2.5.29.31. Of each point the first GeneralName of its fullName is kept, as a whole element, in the URI slot. An empty
 * fullName is stored without octets if it is primitive (80 00), and is KACERT_InvalidParamErr if it is constructed (A0
 * 00).
 */
KARIL_API int32_t KI_Cert_DecodeExtension_CrlDistributionPoint(const Anybuf *extension, CertExtensions *block);

/*
 * 2.5.29.17 and 2.5.29.18. If the names cannot be read, those before the bad one are kept, the presence flag is 1, and
 * 0 is returned. Otherwise the flag tells whether a name was taken. A field with another one after it is taken for the
 * critical flag, whatever its tag.
 */
KARIL_API int32_t KI_Cert_DecodeExtension_SubjectAltName(const Anybuf *extension, CertExtensions *block);
KARIL_API int32_t KI_Cert_DecodeExtension_IssuerAltName(const Anybuf *extension, CertExtensions *block);

/*
 * Appends an extension with any OID as a private one; each call walks the list to its end. KACERT_InvalidParamErr if
 * the Extension is empty or has no value. After a failure nothing is appended.
 */
KARIL_API int32_t KI_Cert_DecodeExtension_Private(const Anybuf *extension, CertExtensions *block);

#ifdef __cplusplus
}
#endif

#endif
