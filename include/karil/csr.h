/*
 * karil: PKCS#10 certification requests: building, signing, decoding, queries (RFC 2986).
 *
 * A request is built by setting numbered attributes and encoding; a decoded one is asked by the same numbers. Texts
 * are in the local encoding (code page 936). A context belongs to one thread at a time. After a failure it can still
 * be used or destroyed. A null pointer that the comment does not allow is KACERT_InvalidParamErr.
 */
#ifndef KARIL_CSR_H
#define KARIL_CSR_H

#include "karil/base.h"
#include "karil/name.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Attribute ids. "Int": the Int functions; "Get": not set; none: the Char functions, both ways. */
enum {
    CSR_TBS_CSR = 2001,                  /* Get: once decoded */
    CSR_OUTER_SIGNATUREALGORITHM = 2002, /* OID content octets */
    CSR_SELF_SIGNATURE = 2003,           /* signature octets; encoding overwrites it */
    CSR_VERSION = 2004,                  /* Int: as on the wire, 0 is v1 */

    /* The subject's name: each call appends an attribute; Get gives the first of its kind, units too. */
    CSR_SUBJECT_COUNTRYNAME = 2006,
    CSR_SUBJECT_STATEORPROVINCENAME = 2007,
    CSR_SUBJECT_LOCALITYNAME = 2008,
    CSR_SUBJECT_ORGANIZATIONNAME = 2009,
    CSR_SUBJECT_ORGANIZATIONALUNITNAME = 2010,
    CSR_SUBJECT_COMMONNAME = 2011,
    CSR_SUBJECT_EMAIL = 2012,
    CSR_SUBJECT_POSTALADDRESS = 2013,
    CSR_SUBJECT_POSTALCODE = 2014,
    CSR_SUBJECT_TELEPHONE = 2015,

    CSR_PUBLICKEY_ALGORITHM = 2026, /* OID content octets; Get of a decoded request: the whole OID element */
    CSR_SUBJECTPUBLICKEYINFO = 2027 /* content of the subjectPublicKey BIT STRING alone */
};

/* An attribute of the request. */
typedef struct CsrAttributeNode {
    struct CsrAttributeNode *next;
    uint32_t id;  /* 52 where it was set, 0 where it was decoded */
    Anybuf oid;   /* content octets */
    Anybuf value; /* set: any octets; decoded: the first value as a whole element */
} CsrAttributeNode;
KARIL_SIZE_32(CsrAttributeNode, 64);

/*
 * A request, built or decoded. Made by KACert_CreateCsrEncodeCtx or KACert_CreateCsrDecodeCtx, and freed with all it
 * holds by the destroy function of either name. Every Anybuf is embedded; those that decoding fills hold parts of the
 * octets that the context keeps until it is destroyed. The list of attributes is the context's own: only the library
 * appends to it and frees it. The subject may also be filled or freed as in CertEncodeCtx.
 */
typedef struct CsrEncodeCtx {
    uint8_t hasAttributes;
    Anybuf encoded; /* the finished request; final once filled */
    Anybuf tbs;     /* the certificationRequestInfo; filled by decoding */
    AlgorithmRecord outerSignatureAlgorithm;
    Anybuf signature;
    KAHookFunc signFunc;
    Anybuf signKey; /* copy of the hook's parameter; wiped when it is freed */
    int32_t version;
    NameRecord subject; /* head of the list */
    AlgorithmRecord publicKeyAlgorithm;
    Anybuf publicKey; /* content of the BIT STRING */
    CsrAttributeNode *attributes;

    /* The library's own. Where lists that it alone touches end, as far as it knows: */
    CsrAttributeNode *attributesLast;
    struct KeptOctets *kept; /* what was decoded; records hold parts of it */
} CsrEncodeCtx;
KARIL_SIZE_32(CsrEncodeCtx, 296);

/* The same record under the name that decoding uses. */
typedef CsrEncodeCtx CsrDecodeCtx;

/*
 * Makes a zeroed context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidParamErr. Free it with either destroy function.
 */
KARIL_API int32_t KACert_CreateCsrEncodeCtx(CsrEncodeCtx **out);
KARIL_API int32_t KACert_CreateCsrDecodeCtx(CsrDecodeCtx **out);

/* Frees the context with all it holds, key octets wiped. Null is accepted. Returns 0. */
KARIL_API int32_t KACert_DestroyCsrEncodeCtx(CsrEncodeCtx *ctx);
KARIL_API int32_t KACert_DestroyCsrDecodeCtx(CsrDecodeCtx *ctx);

/* Sets CSR_VERSION. Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr. */
KARIL_API int32_t KACert_SetCsrAttributeInt(CsrEncodeCtx *ctx, int32_t id, int32_t value);

/*
 * Sets one attribute to a copy of `length` octets at `value`, or appends it, as the id's comment tells.
 * Returns 0; KACERT_MemoryErr for a length below 1, whatever the id, where certificates and CRLs answer
 * KACERT_InvalidLengthErr; KACERT_AttributeNotSupportErr for an id that is not set here; KACERT_MemoryErr, with
 * nothing changed; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCsrAttributeChar(CsrEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length);

/*
 * Appends a request attribute. `oid`: content octets, `oidLength` of them. `value`: any octets, `valueLength` of them,
 * written as the content of an OCTET STRING whatever the attribute's own syntax is. Both are copied.
 * Returns 0; KACERT_InvalidLengthErr for a length below 1; KACERT_MemoryErr; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCsrAttributePrivate(CsrEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                const uint8_t *value, int32_t valueLength);

/*
 * Stores the signing hook and a copy of its parameter, with the protocol of KACert_SetCrlSignFunc. Returns 0,
 * KACERT_MemoryErr or KACERT_InvalidParamErr for a null context.
 */
KARIL_API int32_t KACert_SetCsrSignFunc(CsrEncodeCtx *ctx, KAHookFunc hook, const void *parameter, uint32_t length);

/*
 * Builds, signs and wraps the request (RFC 2986 4). `result`: receives the DER, or null to ask for the length, which
 * signs as well. `resultLength`: receives its octets. The first result is kept: later calls hand it out again. A
 * decoded context hands out what it decoded. Version and attributes are written always, the latter as A0 00 where
 * there is none. Departure from RFC 2986 4.1: every attribute value is an OCTET STRING around the octets that were set.
 * Returns 0; KACERT_InvalidParamErr, also for a missing hook; the hook's own status; KACERT_InvalidSignatureLenErr for
 * a size of 10,240 or more; KACERT_InvalidLengthErr for a signature above its size; KACERT_MemoryErr, also for a
 * signature of no octets; any status of the writers.
 */
KARIL_API int32_t KACert_EncodeCsr(CsrEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Writes the [0] IMPLICIT SET OF attributes, or stores nothing where there is none. Free `*out` with KI_FreeAnybuf.
 * Returns 0, KACERT_InvalidParamErr, KACERT_MemoryErr or a status of the writers.
 */
KARIL_API int32_t KI_Csr_EncodeAttributes(const CsrEncodeCtx *ctx, Anybuf **out);

/*
 * Decodes a request into a fresh context. `der`: the first element is taken, octets behind it are ignored. `length`:
 * octets at `der`, or 0 to trust the element's header. Only the structure is looked at: no signature is checked.
 * Departures: the attributes may be missing; of an attribute the first value alone is kept.
 * Returns 0; KACERT_CsrNotEndErr for a missing field; KACERT_LengthNotEqualErr for an element above `length` or one
 * inside that disagrees with its size; KACERT_InvalidLengthErr; KACERT_InvalidTagErr; KACERT_MemoryErr;
 * KACERT_InvalidParamErr, also for an empty inner structure. What was decoded before a failure stays in the context
 * until it is destroyed.
 */
KARIL_API int32_t KACert_DecodeCsr(CsrDecodeCtx *ctx, const uint8_t *der, uint32_t length);

/* The parts of the decoder, with its statuses: a CertificationRequestInfo element; the attributes, whatever their tag
 * number, which are appended. */
KARIL_API int32_t KI_CSR_DecodeTBS(CsrDecodeCtx *ctx, const Anybuf *tbs);
KARIL_API int32_t KI_CSR_DecodeAttributes(CsrDecodeCtx *ctx, const Anybuf *attributes);

/* Stores CSR_VERSION in `*value`. Returns 0; KACERT_AttributeNotSupportErr; KACERT_InvalidParamErr. */
KARIL_API int32_t KACert_GetCsrAttributeInt(const CsrDecodeCtx *ctx, int32_t id, int32_t *value);

/*
 * Answers an attribute. `*resultLength`: set to the answer's octets; it stays as it was where a name attribute is
 * absent, so set it to 0 first. `result`: receives the octets, or null to ask for the length; the caller sees to its
 * size. Returns 0; KACERT_AttributeNotSupportErr for an id that is not asked for; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCsrAttributeChar(CsrDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength);

/*
 * Answers the attribute numbered `*index`, from 1. `oid`, `value`: receive the octets, or null; the caller sees to
 * their sizes. `oidLength`, `valueLength`: receive the lengths. Past the end, or with 0, `*index` becomes the number
 * of attributes and no other output is touched. The value of a decoded attribute is a whole element, so what was set
 * comes back behind the tag and length of its OCTET STRING. Returns 0 or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCsrAttributePrivate(const CsrDecodeCtx *ctx, uint32_t *index, uint8_t *oid,
                                                uint32_t *oidLength, uint8_t *value, uint32_t *valueLength);

#ifdef __cplusplus
}
#endif

#endif
