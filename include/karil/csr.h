/*
 * karil: PKCS#10 certification requests: building, signing, decoding, queries (RFC 2986).
 *
 * A request is built by setting numbered attributes and encoding; a decoded one is asked by the same numbers. Texts are
 * in the local encoding (code page 936). A context belongs to one thread at a time, Get calls included. After a failure
 * it can still be used or destroyed. A null pointer that the comment does not allow is KACERT_InvalidParamErr.
 */
#ifndef KARIL_CSR_H
#define KARIL_CSR_H

#include "karil/base.h"
#include "karil/name.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Attribute ids. "Int": the Int functions; "Get": cannot be set; none of these: the Char functions, both ways. A second
 * value replaces the first one, except in names.
 */
enum {
    CSR_TBS_CSR = 2001,                  /* Get: once decoded */
    CSR_OUTER_SIGNATUREALGORITHM = 2002, /* OID content octets */
    CSR_SELF_SIGNATURE = 2003,           /* signature octets; encoding overwrites it */
    CSR_VERSION = 2004,                  /* Int: as on the wire, 0 is v1 */

    /* The subject's name: each call appends an attribute. Get answers the first of its kind, of units too. */
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
    uint32_t id;  /* 52 if it was set, 0 if it was decoded */
    Anybuf oid;   /* content octets */
    Anybuf value; /* set: any octets; decoded: the first value as a whole element */
} CsrAttributeNode;
KARIL_SIZE_32(CsrAttributeNode, 64);

/*
 * A request, built or decoded. KACert_CreateCsrEncodeCtx and KACert_CreateCsrDecodeCtx make it; the destroy function of
 * either name frees it with all it holds. Every Anybuf is embedded. Those that decoding fills may hold parts of blocks
 * that the context keeps until it is destroyed: see Anybuf.
 *
 * The list of attributes is the context's own: a program may read it, but neither free nor append nodes. The list of
 * names in subject is not: a program may free it with KI_FreeName, after which it sets the head's next to null, and
 * fill it with KI_DecodeIssuerSubject.
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

    /* The library's own. */
    ListMarks attributeMarks;
    struct KeptOctets *kept; /* what was decoded; records hold parts of it */
} CsrEncodeCtx;
KARIL_SIZE_32(CsrEncodeCtx, 304);

/* The same record under the name that decoding uses. */
typedef CsrEncodeCtx CsrDecodeCtx;

/*
 * Makes a zeroed context and stores it in `*out`. The two names do the same. Free the context with the destroy function
 * of either name. Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr; after a failure nothing is stored.
 */
KARIL_API int32_t KACert_CreateCsrEncodeCtx(CsrEncodeCtx **out);
KARIL_API int32_t KACert_CreateCsrDecodeCtx(CsrDecodeCtx **out);

/* Frees the context with all it holds; key octets are wiped. The two names do the same. Null is accepted. Returns 0. */
KARIL_API int32_t KACert_DestroyCsrEncodeCtx(CsrEncodeCtx *ctx);
KARIL_API int32_t KACert_DestroyCsrDecodeCtx(CsrDecodeCtx *ctx);

/* Sets CSR_VERSION. Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr. */
KARIL_API int32_t KACert_SetCsrAttributeInt(CsrEncodeCtx *ctx, int32_t id, int32_t value);

/*
 * Sets one attribute to a copy of `length` octets at `value`, or appends it, as the comment of the id says.
 * Returns 0; KACERT_MemoryErr if the length is below 1, whatever the id (certificates and CRLs return
 * KACERT_InvalidLengthErr); KACERT_AttributeNotSupportErr for an id that cannot be set here; KACERT_MemoryErr, with
 * nothing changed; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCsrAttributeChar(CsrEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length);

/*
 * Appends a request attribute. `oid`: `oidLength` content octets. `value`: `valueLength` octets of any kind. Both are
 * copied. The value is written as the content of an OCTET STRING, whatever the attribute's own syntax is.
 * Returns 0; KACERT_InvalidLengthErr if a length is below 1; KACERT_MemoryErr, with nothing changed;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCsrAttributePrivate(CsrEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                const uint8_t *value, int32_t valueLength);

/*
 * Stores the signing hook. If `parameter` is not null and `length` is above 0, its octets are copied, and an earlier
 * copy is wiped and freed; otherwise an earlier copy stays. What the octets point at is not copied and must outlive the
 * context. The hook is called as that of KACert_SetCrlSignFunc: for the size first, both times with the parameter and
 * the same length variable.
 * Returns 0, KACERT_MemoryErr, or KACERT_InvalidParamErr if the context is null.
 */
KARIL_API int32_t KACert_SetCsrSignFunc(CsrEncodeCtx *ctx, KAHookFunc hook, const void *parameter, uint32_t length);

/*
 * Builds, signs and wraps the request (RFC 2986 4). `result`: receives the DER, or null to ask for the length, which
 * signs as well. `resultLength`: receives its octets. The first result is kept: later calls return it again, without
 * calling the hook or reading an attribute. A decoded context returns what it decoded.
 * A request needs a hook (KACert_SetCsrSignFunc). What else is missing is written all the same: the version as 0, which
 * is v1, a subject, an object identifier or a key without octets. Departures from RFC 2986 4: every attribute value is
 * an OCTET STRING around the octets that were set; algorithm identifiers always carry NULL as parameters. If there are
 * no attributes, A0 00 stands in their place.
 * Returns 0; KACERT_InvalidParamErr, also if the hook is missing; the hook's own status; KACERT_InvalidSignatureLenErr
 * if the size is 10,240 or more; KACERT_InvalidLengthErr if the signature has more octets than its size;
 * KACERT_MemoryErr, also if the signature has no octets; the statuses of KI_EncodeIssuerSuject and the writers. After a
 * failure a later call starts again.
 */
KARIL_API int32_t KACert_EncodeCsr(CsrEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Writes the [0] IMPLICIT SET OF attributes (RFC 2986 4.1) and stores it in `*out`; free it with KI_FreeAnybuf. If
 * there is none, nothing is stored and 0 is returned. Returns 0, KACERT_InvalidParamErr, KACERT_MemoryErr or a status
 * of the writers.
 */
KARIL_API int32_t KI_Csr_EncodeAttributes(const CsrEncodeCtx *ctx, Anybuf **out);

/*
 * Decodes a request into a fresh context; a context decodes once, since a second call appends to its lists. `der`: the
 * first element is taken, and octets after it are ignored. `length`: octets at `der`, or 0 if the element's header is
 * to be trusted. The octets are copied. Only the structure is looked at: no signature is checked.
 * Departures from RFC 2986 4: the attributes may be missing; of an attribute the first value alone is kept.
 * Returns 0; KACERT_CsrNotEndErr if a field is missing; KACERT_LengthNotEqualErr if the element exceeds `length`, or if
 * what stands in primitive attributes is cut off or too long; KACERT_InvalidLengthErr if an inner element is cut off,
 * malformed or runs over its parent's end, and for a text above the limits of text.h; KACERT_InvalidTagErr;
 * KACERT_MemoryErr; KACERT_InvalidParamErr, also for an inner structure that is empty. What was decoded before a
 * failure stays in the context until it is destroyed.
 */
KARIL_API int32_t KACert_DecodeCsr(CsrDecodeCtx *ctx, const uint8_t *der, uint32_t length);

/*
 * The parts of the decoder, with its statuses. The elements are only read and stay the caller's.
 * KI_CSR_DecodeTBS: a CertificationRequestInfo element.
 * KI_CSR_DecodeAttributes: the attributes element, whatever its tag number. Its attributes are appended to the list; if
 * it is primitive, its content is read as one attribute. After a failure those before the bad one stay.
 */
KARIL_API int32_t KI_CSR_DecodeTBS(CsrDecodeCtx *ctx, const Anybuf *tbs);
KARIL_API int32_t KI_CSR_DecodeAttributes(CsrDecodeCtx *ctx, const Anybuf *attributes);

/* Stores CSR_VERSION in `*value`. Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr. */
KARIL_API int32_t KACert_GetCsrAttributeInt(const CsrDecodeCtx *ctx, int32_t id, int32_t *value);

/*
 * Answers an attribute. `*resultLength`: set to the answer's octets; if a name attribute is absent, it stays as it was
 * and the status is 0, so set it to 0 before the call. It must not be null. `result`: receives the octets, or null to
 * ask for the length; the caller makes sure that they have room.
 * Returns 0; KACERT_AttributeNotSupportErr for an id that cannot be asked for; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCsrAttributeChar(CsrDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength);

/*
 * Answers the attribute numbered `*index`, from 1. `oid`, `value`: receive the content octets of its type and its
 * value, or are null; the caller makes sure that they have room. `oidLength`, `valueLength`: receive their lengths.
 * With 0, or past the end, `*index` becomes the number of attributes and nothing else is stored; the other pointers may
 * then be null. The value of a decoded attribute is a whole element: what was set comes back as an OCTET STRING, with
 * its tag and length. The context remembers the position, so that a walk from 1 on is linear.
 * Returns 0 or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCsrAttributePrivate(const CsrDecodeCtx *ctx, uint32_t *index, uint8_t *oid,
                                                uint32_t *oidLength, uint8_t *value, uint32_t *valueLength);

#ifdef __cplusplus
}
#endif

#endif
