/*
 * karil: X.509 certificates: building, signing, decoding, queries (RFC 5280 4.1 and 4.2).
 *
 * A certificate is built by setting numbered attributes and encoding; a decoded one is asked by the same numbers.
 * Texts are in the local encoding (code page 936). A context belongs to one thread at a time, Get calls included.
 * After a failure the context can still be used or destroyed. A null pointer that the comment does not allow is
 * KACERT_InvalidParamErr.
 */
#ifndef KARIL_CERT_H
#define KARIL_CERT_H

#include "karil/base.h"
#include "karil/cert_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Attribute ids. "Int": the Int functions; "Get": not set; "Set": not asked for; none: the Char functions, both ways.
 */
enum {
    CERT_TBS_CERTIFICATE = 1,          /* Get */
    CERT_OUTER_SIGNATUREALGORITHM = 2, /* OID content octets */
    CERT_CA_SIGNATURE = 3,             /* signature octets; encoding overwrites it */
    CERT_VERSION = 4,                  /* Int */
    CERT_SERIALNUMBER = 5,             /* big-endian magnitude */
    CERT_INNER_SIGNATUREALGORITHM = 6, /* OID content octets */
    CERT_ISSUER_DERDN = 7,             /* Name element, written as it stands and not checked */
    CERT_ISSUER_DN = 8,                /* Get: text of KI_GetDN */

    /* Names: each call appends an attribute; Get gives the first of its kind. Units: all, joined by ",OU=". */
    CERT_ISSUER_COUNTRYNAME = 9,
    CERT_ISSUER_STATEORPROVINCENAME = 10,
    CERT_ISSUER_LOCALITYNAME = 11,
    CERT_ISSUER_ORGANIZATIONNAME = 12,
    CERT_ISSUER_ORGANIZATIONALUNITNAME = 13,
    CERT_ISSUER_COMMONNAME = 14,
    CERT_ISSUER_EMAIL = 15,
    CERT_ISSUER_POSTALADDRESS = 16,
    CERT_ISSUER_POSTALCODE = 17,
    CERT_ISSUER_TELEPHONE = 18,

    CERT_VALIDFROM = 29,     /* Int: seconds since 1970 */
    CERT_VALIDTO = 30,       /* Int: seconds since 1970 */
    CERT_SUBJECT_DERDN = 31, /* as CERT_ISSUER_DERDN */
    CERT_SUBJECT_DN = 32,    /* Get: text of KI_GetDN */
    CERT_SUBJECT_COUNTRYNAME = 33,
    CERT_SUBJECT_STATEORPROVINCENAME = 34,
    CERT_SUBJECT_LOCALITYNAME = 35,
    CERT_SUBJECT_ORGANIZATIONNAME = 36,
    CERT_SUBJECT_ORGANIZATIONALUNITNAME = 37,
    CERT_SUBJECT_COMMONNAME = 38,
    CERT_SUBJECT_EMAIL = 39,
    CERT_SUBJECT_POSTALADDRESS = 40,
    CERT_SUBJECT_POSTALCODE = 41,
    CERT_SUBJECT_TELEPHONE = 42,

    CERT_PUBLICKEY_ALGORITHM = 53,  /* OID content octets; see KACert_GetCertAttributeChar */
    CERT_SUBJECTPUBLICKEYINFO = 54, /* content of the subjectPublicKey BIT STRING alone */

    /* Extensions. A critical id takes one octet and comes after the value id, which resets the flag. */
    CERTEX_AUTHORITYKEYIDENTIFIER_CRITICAL = 64, /* Set */
    CERTEX_AUTHORITYKEYIDENTIFIER = 65,          /* key id octets, once; critical becomes 0 */
    CERTEX_SUBJECTKEYIDENTIFIER_CRITICAL = 84,   /* Set */
    CERTEX_SUBJECTKEYIDENTIFIER = 85,            /* key id octets, once; critical becomes 0 */
    CERTEX_KEYUSAGE_CRITICAL = 86,
    CERTEX_KEYUSAGE = 87,                       /* 1 or 2 octets, first bit on top, once; critical becomes 1 */
    CERTEX_CERTPOLICY_CRITICAL = 91,            /* Set */
    CERTEX_CERTPOLICYID = 92,                   /* Set: OID content octets; a second one is ignored */
    CERTEX_CERTPOLICY_CPS = 93,                 /* Set: URI, appended; ignored while there is no policy id */
    CERT_SUBJECT_ALT_COUNTRYNAME = 101,         /* Set: 101 to 107 make a directory name; they do not by themselves */
    CERT_SUBJECT_ALT_STATEORPROVINCENAME = 102, /* Set: cause extensions to be written */
    CERT_SUBJECT_ALT_LOCALITYNAME = 103,        /* Set */
    CERT_SUBJECT_ALT_ORGANIZATIONNAME = 104,    /* Set */
    CERT_SUBJECT_ALT_ORGANIZATIONALUNITNAME = 105, /* Set */
    CERT_SUBJECT_ALT_COMMONNAME = 106,
    CERT_SUBJECT_ALT_EMAIL = 107,                 /* Get answers from the issuer's alternative name */
    CERT_ISSUER_ALT_COUNTRYNAME = 109,            /* Set: as 101 */
    CERT_ISSUER_ALT_STATEORPROVINCENAME = 110,    /* Set */
    CERT_ISSUER_ALT_LOCALITYNAME = 111,           /* Set */
    CERT_ISSUER_ALT_ORGANIZATIONNAME = 112,       /* Set */
    CERT_ISSUER_ALT_ORGANIZATIONALUNITNAME = 113, /* Set */
    CERT_ISSUER_ALT_COMMONNAME = 114,
    CERT_ISSUER_ALT_EMAIL = 115, /* Get answers from the subject's alternative name */
    CERTEX_BASICCONSTRAINTS_CRITICAL = 119,
    CERTEX_AUTHORITY = 120,                  /* one octet, cA; critical becomes 1 */
    CERTEX_PATHLENCONSTRAINT = 121,          /* only the first octet is written */
    CERTEX_EXTKEY_CRITICAL = 128,            /* Set */
    CERTEX_EXTKEY_USAGE = 129,               /* bit mask of ExtKeyUsageExtension, once; critical becomes 0 */
    CERTEX_CRLDIST_CRITICAL = 130,           /* Set */
    CERTEX_CRLDIST_FULLNAME = 131,           /* URI, appended; critical becomes 0. Get: the next one, as an element */
    CERTEX_AUTHORITYINFO_CRITICAL = 135,     /* Set */
    CERTEX_AUTHORITYINFO_OCSP = 136,         /* Set: URI, appended; critical becomes 0 */
    CERTEX_AUTHORITYINFO_CAISSUERS = 137,    /* Set: URI, appended; critical becomes 0 */
    CERTEX_EXTKEY_USAGE_OID_DEFINE = 155,    /* Set: dotted text, appended */
    CERT_SUBJECT_ALT_OTHERNAME_TYPEID = 501, /* Set: dotted text; the type becomes 12 */
    CERT_SUBJECT_ALT_OTHERNAME_VALUE = 502,  /* Set; the type becomes 12 */
    CERT_SUBJECT_ALT_OTHERNAME_TYPE = 503,   /* Set: DER tag of the value; after 501 and 502 */
    CERT_SUBJECT_ALT_RFC822NAME = 504,       /* once */
    CERT_SUBJECT_ALT_DNSNAME = 505,          /* once */
    CERT_SUBJECT_ALT_URI = 509,              /* once */
    CERT_SUBJECT_ALT_IPADDRESS = 510,        /* address octets, once */
    CERT_SUBJECT_ALT_CRITICAL = 512          /* Set */
};

/*
 * Makes a zeroed context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidParamErr. Free it with either destroy function.
 */
KARIL_API int32_t KACert_CreateCertEncodeCtx(CertEncodeCtx **out);
KARIL_API int32_t KACert_CreateCertDecodeCtx(CertDecodeCtx **out);

/*
 * Makes a context for a certificate of the issuer whose own certificate stands at `der`, `length` octets: its subject
 * becomes the issuer (CERT_ISSUER_DERDN), and nothing else is taken from it. Stores the context in `*out`.
 * Returns 0; the statuses of KACert_DecodeCert; KACERT_InvalidLengthErr for a subject of more than 2,048 octets;
 * KACERT_MemoryErr; KACERT_InvalidParamErr, also for a length below 1. After a failure nothing is stored. Free the
 * context with KACert_DestroyCertEncodeCtx.
 */
KARIL_API int32_t KACert_CreateCertEncodeCtx_Ex(CertEncodeCtx **out, const uint8_t *der, int32_t length);

/* Frees the context with all it holds, key octets wiped. Null is accepted. Returns 0. */
KARIL_API int32_t KACert_DestroyCertEncodeCtx(CertEncodeCtx *ctx);
KARIL_API int32_t KACert_DestroyCertDecodeCtx(CertDecodeCtx *ctx);

/*
 * Sets CERT_VERSION, CERT_VALIDFROM or CERT_VALIDTO. A validity time is written as UTCTime.
 * Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCertAttributeInt(CertEncodeCtx *ctx, int32_t id, int32_t value);

/*
 * Sets one attribute to a copy of `length` octets at `value`, or appends it, as the id's comment tells.
 * Returns 0; KACERT_InvalidLengthErr for a length below 1, whatever the id; KACERT_AttributeNotSupportErr for an id
 * that is not set here; KACERT_AttributeAlreadySet for a second value of an id that is set once, and for a key usage
 * of more than 2 octets, which is stored all the same; KACERT_InvalidItemErr for a defined usage that is no dotted
 * text; KACERT_MemoryErr, with nothing changed; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCertAttributeChar(CertEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length);

/*
 * Appends an extension of any kind. `oid`: content octets, `oidLength` of them. `critical`: not zero for TRUE.
 * `value`: the DER that goes into the extnValue OCTET STRING, `valueLength` octets. Both are copied.
 * Returns 0; KACERT_InvalidLengthErr for a length below 1; KACERT_MemoryErr; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCertAttributePrivate(CertEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                 uint8_t critical, const uint8_t *value, int32_t valueLength);

/*
 * The same for a plain value, which is first made a PrintableString element (`type` 19) or an OCTET STRING element
 * (any other `type`). Returns also KACERT_InvalidParamErr for a null value or a value length below 1, and -1 where
 * the element cannot be made for want of memory.
 */
KARIL_API int32_t KACert_SetCertAttributePrivate_ForValue(CertEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                          uint8_t critical, const uint8_t *value, int32_t valueLength,
                                                          int32_t type);

/*
 * Makes a PrintableString element (KACert_EncodeChar) or an OCTET STRING element (UnsignedChar2OCTET) of `length`
 * octets at `value`. Free `*out` with KI_FreeAnybuf. Both return 0, or -1 on failure. KACert_EncodeChar takes a null
 * value with length 0 as the empty string, and answers -1 to a null value with another length or a value with a
 * length below 1. UnsignedChar2OCTET answers KACERT_InvalidParamErr to a null value or a length below 1.
 */
KARIL_API int32_t KACert_EncodeChar(const uint8_t *value, int32_t length, Anybuf **out);
KARIL_API int32_t UnsignedChar2OCTET(const uint8_t *value, int32_t length, Anybuf **out);

/*
 * Stores the signing hook and, where `parameter` is not null and `length` above 0, a copy of its octets; an earlier
 * copy is wiped and released. Records that the octets point at must outlive the context.
 * Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr for a null context.
 */
KARIL_API int32_t KACert_SetCertSignFunc(CertEncodeCtx *ctx, KACertSignFunc hook, const void *parameter,
                                         uint32_t length);

/*
 * Builds, signs and wraps the certificate (RFC 5280 4.1). `result`: receives the DER, or null to ask for the length,
 * which signs as well. `resultLength`: receives its octets. The first result is kept: later calls hand it out again,
 * calling no hook and reading no attribute. A decoded context hands out what it decoded.
 * Issuer and subject each come from their attributes or from their DER form, not both. The version is written
 * always, also where it is 0; algorithm parameters are always NULL; the two signature algorithms are written as they
 * were set. Departure from RFC 5280 4.1.2.5: dates past 2049 are not written as GeneralizedTime.
 * Returns 0; KACERT_InvalidParamErr, also for a missing hook, serial number, issuer or subject, for both forms of a
 * name, or a policy without CPS; the hook's own status; KACERT_InvalidLengthErr for a signature of no octets or more
 * than 512; KACERT_InvalidTimeErr for a negative time; KACERT_MemoryErr; any status of the writers.
 */
KARIL_API int32_t KACert_EncodeCert(CertEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength);

/* Writes the Validity element: UTCTime where isUtc is set, else GeneralizedTime, both of generalizedValue. */
KARIL_API int32_t KI_Cert_EncodeValidity(const CertEncodeCtx *ctx, Anybuf **out);

/*
 * Decodes a certificate into a fresh context. `der`: the first element is taken, octets behind it are ignored.
 * `length`: octets at `der`, or 0 to trust the element's header. Only the structure is looked at: no signature is
 * checked, the two algorithms are not compared, parameters are not read. A certificate that ends behind its
 * to-be-signed part, or behind the algorithm, is accepted; fields of its to-be-signed part must be there.
 * Departures: dates are local time and end in 2038; unknown extensions, certificate policies and authority
 * information are kept as private extensions; a unique identifier (RFC 5280 4.1.2.8) is refused.
 * Returns 0; KACERT_LengthNotEqualErr for an element above `length` or one inside that disagrees with its size;
 * KACERT_InvalidLengthErr; KACERT_InvalidTagErr; KACERT_InvalidTimeEndErr; KACERT_CertNotEndErr for a missing field;
 * KACERT_MemoryErr, also for a date that does not fit; KACERT_InvalidParamErr, also for an empty inner structure.
 * What was decoded before a failure stays in the context until it is destroyed.
 */
KARIL_API int32_t KACert_DecodeCert(CertDecodeCtx *ctx, const uint8_t *der, uint32_t length);

/* Decodes a TBSCertificate element (RFC 5280 4.1.2) into the context, as KACert_DecodeCert does. */
KARIL_API int32_t KI_Cert_DecodeTBS(CertDecodeCtx *ctx, const Anybuf *tbs);

/*
 * Decodes a SubjectPublicKeyInfo element (RFC 5280 4.1.2.7), as certificates and requests hold one. `algorithm`: its
 * oid becomes the first element of the AlgorithmIdentifier as it stands, tag and length included; its id is not
 * written. `key`: becomes the content of the BIT STRING. Both are embedded records, prepared with KI_InitAnybuf; what
 * they held is released, what they receive is freed with KI_ClearAnybuf. Departure: parameters are not read, and the
 * first element is not checked to be an OBJECT IDENTIFIER. Returns 0; KACERT_LengthNotEqualErr for a `source` whose
 * header disagrees with its octets; KACERT_InvalidTagErr; KACERT_InvalidLengthErr; KACERT_MemoryErr;
 * KACERT_InvalidParamErr for a null pointer, `source` without octets included, and for a missing algorithm or key.
 * After a failure `algorithm` may be set, `key` is as it was.
 */
KARIL_API int32_t KI_DecodePubKey(const Anybuf *source, AlgorithmRecord *algorithm, Anybuf *key);

/*
 * Stores CERT_VERSION (0 where there is none), CERT_VALIDFROM or CERT_VALIDTO in `*value`. The times are those of a
 * decoded UTCTime: a GeneralizedTime, and a context that was not decoded, answer 0.
 * Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCertAttributeInt(const CertDecodeCtx *ctx, int32_t id, int32_t *value);

/*
 * Answers an attribute. `*resultLength`: set to 0 first, then to the answer's octets. `result`: receives them, or
 * null to ask for the length; the caller sees to its size. An absent attribute is 0 with length 0.
 * Odd answers, which stay: CERT_PUBLICKEY_ALGORITHM gives the signature algorithm's octets with the key algorithm's
 * length, zeros behind them where it is longer. The unit ids, and the e-mail form that CERT_SUBJECT_ALT_COMMONNAME
 * answers where there is no directory name, have no length-only form. CERTEX_CRLDIST_FULLNAME gives the next
 * distribution point at each call with a buffer, without a way back. Flags are the wire's octet: 0xFF for TRUE. A
 * decoded CERTEX_KEYUSAGE starts with its unused-bits octet.
 * Returns 0; KACERT_AttributeNotSupportErr for an id that is not asked for; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCertAttributeChar(CertDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength);

/*
 * Answers the private extension numbered `*index`, from 1. `oid`, `value`: receive the octets, or null; the caller
 * sees to their sizes. `oidLength`, `valueLength`, `critical`: receive lengths and flag. Past the end, or with 0,
 * `*index` becomes the number of extensions and no other output is touched.
 * Returns 0 or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCertAttributePrivate(const CertDecodeCtx *ctx, uint32_t *index, uint8_t *oid,
                                                 uint32_t *oidLength, uint32_t *critical, uint8_t *value,
                                                 uint32_t *valueLength);

#ifdef __cplusplus
}
#endif

#endif
