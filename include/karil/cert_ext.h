/*
 * karil: the extensions of a certificate one by one (RFC 5280 4.2.1). KACert_EncodeCert and KACert_DecodeCert call
 * these; a caller needs them only to work on single extensions.
 *
 * A null pointer is KACERT_InvalidParamErr.
 */
#ifndef KARIL_CERT_EXT_H
#define KARIL_CERT_EXT_H

#include "karil/base.h"
#include "karil/cert_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Encoders. Each writes one Extension element: SEQUENCE { OID, BOOLEAN TRUE where critical is not zero, OCTET STRING }
 * from its field of the context, and stores it in `*out`; free it with KI_FreeAnybuf. They do not look at presence
 * flags. Each returns 0, KACERT_MemoryErr or the status of the writer that failed.
 */

/* [3] EXPLICIT Extensions in a fixed order, or nothing stored where hasExtensions is 0. */
KARIL_API int32_t KI_Cert_EncodeExtensions(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.35: SEQUENCE { [0] keyId }, the key identifier form alone. */
KARIL_API int32_t KI_Cert_EncodeExtension_AuthorityKeyIdentifyer(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.14: OCTET STRING. */
KARIL_API int32_t KI_Cert_EncodeExtension_SubjectKeyIdentifier(CertEncodeCtx *ctx, Anybuf **out);

/*
 * 2.5.29.32: one PolicyInformation with a CPS qualifier for each node. KACERT_InvalidParamErr without a policy or
 * without a CPS.
 */
KARIL_API int32_t KI_Cert_EncodeExtension_CertificatePolicies(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.18: SEQUENCE { [4] EXPLICIT Name }, the directory name alone. */
KARIL_API int32_t KI_Cert_EncodeExtension_IssuerAltName(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.17: what KI_EncodeGeneralNameS writes. */
KARIL_API int32_t KI_Cert_EncodeExtension_SubjectAltName(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.19: SEQUENCE { cA where it is not zero, pathLenConstraint where it is set, also without cA }. */
KARIL_API int32_t KI_Cert_EncodeExtension_BasicConstraint(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.15: BIT STRING of bits with their unusedBits. */
KARIL_API int32_t KI_Cert_EncodeExtension_KeyUsage(CertEncodeCtx *ctx, Anybuf **out);

/*
 * 2.5.29.37: the usages of the mask in ascending order, then the defined ones; 30 00 for none. A mask of 4 octets is
 * a little-endian word; shorter ones fill the word's end, longer ones count as 0.
 */
KARIL_API int32_t KI_Cert_EncodeExtension_ExtKeyUsage(CertEncodeCtx *ctx, Anybuf **out);

/* 2.5.29.31: a DistributionPoint with one URI as its fullName for each node. */
KARIL_API int32_t KI_Cert_EncodeExtension_CrlDistributePoint(CertEncodeCtx *ctx, Anybuf **out);

/* 1.3.6.1.5.5.7.1.1: what KI_CERT_EncodeDiscriptList writes. */
KARIL_API int32_t KI_Cert_EncodeExtension_AIA(CertEncodeCtx *ctx, Anybuf **out);

/* A chain of elements, one for each private extension; 0 and nothing stored for none. */
KARIL_API int32_t KI_Cert_EncodeExtension_Private(CertEncodeCtx *ctx, Anybuf **out);

/*
 * OCTET STRING { SEQUENCE OF AccessDescription } from the list at `first`; for null the element of WriteNullSequence
 * without the OCTET STRING, or 0 and nothing stored where that fails.
 */
KARIL_API int32_t KI_CERT_EncodeDiscriptList(const AccessNode *first, Anybuf **out);

/* SEQUENCE { NULL }: 30 02 05 00. */
KARIL_API int32_t WriteNullSequence(Anybuf **out);

/*
 * Decoders. Each reads one Extension element into its field of the block, which the owner of the block frees.
 * Returns 0, also for an element with another OID, which fills nothing (KACERT_InvalidParamErr in basic constraints;
 * extended key usage stores a mask of zero); KACERT_CertNotEndErr where a field is missing; KACERT_InvalidParamErr for
 * an Extension without an OID or a private one without a value, and for an empty [0] key id or fullName; else the
 * status of the reader that failed.
 */

/*
 * Reads the [3] EXPLICIT Extensions element, whatever its tag. The first extension of each known kind is taken, later
 * ones are passed over; any other extension becomes a private one.
 */
KARIL_API int32_t KI_Cert_DecodeExtensions(const Anybuf *extensions, CertExtensions *block);

/* A lone pathLenConstraint is read as cA. KACERT_MemoryErr where the element is no SEQUENCE. */
KARIL_API int32_t KI_Cert_DecodeExtension_BasicConstraint(const Anybuf *extension, CertExtensions *block);

/* Only the key identifier form is kept. */
KARIL_API int32_t KI_Cert_DecodeExtension_AuthorityKeyIdentifyer(const Anybuf *extension, CertExtensions *block);

/* KACERT_InvalidParamErr where nothing stands behind the critical flag. */
KARIL_API int32_t KI_Cert_DecodeExtension_SubjectKeyIdentifier(const Anybuf *extension, CertExtensions *block);

/* bits: the BIT STRING's content with its unused-bits octet in front; unusedBits 0. */
KARIL_API int32_t KI_Cert_DecodeExtension_KeyUsage(const Anybuf *extension, CertExtensions *block);

/* Usages outside the mask are dropped. 0, with no mask, where its allocation fails. */
KARIL_API int32_t KI_Cert_DecodeExtension_ExtKeyUsage(const Anybuf *extension, CertExtensions *block);

/* Of each point the first GeneralName of its fullName is kept, as a whole element, in the URI slot. */
KARIL_API int32_t KI_Cert_DecodeExtension_CrlDistributionPoint(const Anybuf *extension, CertExtensions *block);

/* Alternative names that cannot be read are left out with status 0. */
KARIL_API int32_t KI_Cert_DecodeExtension_SubjectAltName(const Anybuf *extension, CertExtensions *block);
KARIL_API int32_t KI_Cert_DecodeExtension_IssuerAltName(const Anybuf *extension, CertExtensions *block);

/* Appends a private extension; a call walks the list to its end. */
KARIL_API int32_t KI_Cert_DecodeExtension_Private(const Anybuf *extension, CertExtensions *block);

#ifdef __cplusplus
}
#endif

#endif
