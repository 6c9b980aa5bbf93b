/*
 * karil: X.509 certificates: building, signing, decoding, queries (RFC 5280 4.1 and 4.2).
 *
 * A certificate is built by setting numbered attributes and encoding; a decoded one is asked by the same numbers. Texts
 * are in the local encoding (code page 936). A context belongs to one thread at a time, Get calls included, since they
 * fill caches and move a cursor. After a failure the context can still be used or destroyed. A null pointer that the
 * comment does not allow is KACERT_InvalidParamErr.
 */
#ifndef KARIL_CERT_H
#define KARIL_CERT_H

#include "karil/base.h"
#include "karil/cert_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Attribute ids. "Int": the Int functions; "Get": cannot be set; "Set": cannot be asked for; none of these: the Char
 * functions, both ways. A second value replaces the first one, unless a comment says "once" or "appended".
 */
enum {
    CERT_TBS_CERTIFICATE = 1,          /* Get: once decoded */
    CERT_OUTER_SIGNATUREALGORITHM = 2, /* OID content octets */
    CERT_CA_SIGNATURE = 3,             /* signature octets; encoding overwrites it */
    CERT_VERSION = 4,                  /* Int: as on the wire, 2 is v3 */
    CERT_SERIALNUMBER = 5,             /* big-endian magnitude; the encoder adds a sign octet */
    CERT_INNER_SIGNATUREALGORITHM = 6, /* OID content octets */
    CERT_ISSUER_DERDN = 7,             /* Name element, written as it stands and not checked */
    CERT_ISSUER_DN = 8,                /* Get: text of KI_GetDN; made once, at the first call */

    /* Names: each call appends an attribute. Get answers the first of its kind, of units all, joined by ",OU=". */
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
    CERT_SUBJECT_DN = 32,    /* Get: as CERT_ISSUER_DN */
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

    /* Extensions. A critical id takes one octet. Set it after the value id, which may change the flag. */
    CERTEX_AUTHORITYKEYIDENTIFIER_CRITICAL = 64, /* Set */
    CERTEX_AUTHORITYKEYIDENTIFIER = 65,          /* key id octets, once; critical becomes 0 */
    CERTEX_SUBJECTKEYIDENTIFIER_CRITICAL = 84,   /* Set */
    CERTEX_SUBJECTKEYIDENTIFIER = 85,            /* key id octets, once; critical becomes 0 */
    CERTEX_KEYUSAGE_CRITICAL = 86,
    CERTEX_KEYUSAGE = 87,            /* 1 or 2 octets, first bit on top, once; critical becomes 1 */
    CERTEX_CERTPOLICY_CRITICAL = 91, /* Set */
    CERTEX_CERTPOLICYID = 92,        /* Set: OID content octets; a second one is ignored */
    CERTEX_CERTPOLICY_CPS = 93,      /* Set: URI, appended; ignored while there is no policy id */
    /* 101 to 115 make directory names. They alone do not cause extensions to be written. */
    CERT_SUBJECT_ALT_COUNTRYNAME = 101,            /* Set */
    CERT_SUBJECT_ALT_STATEORPROVINCENAME = 102,    /* Set */
    CERT_SUBJECT_ALT_LOCALITYNAME = 103,           /* Set */
    CERT_SUBJECT_ALT_ORGANIZATIONNAME = 104,       /* Set */
    CERT_SUBJECT_ALT_ORGANIZATIONALUNITNAME = 105, /* Set */
    CERT_SUBJECT_ALT_COMMONNAME = 106,             /* see KACert_GetCertAttributeChar */
    CERT_SUBJECT_ALT_EMAIL = 107,                  /* Get answers from the issuer's alternative name */
    CERT_ISSUER_ALT_COUNTRYNAME = 109,             /* Set */
    CERT_ISSUER_ALT_STATEORPROVINCENAME = 110,     /* Set */
    CERT_ISSUER_ALT_LOCALITYNAME = 111,            /* Set */
    CERT_ISSUER_ALT_ORGANIZATIONNAME = 112,        /* Set */
    CERT_ISSUER_ALT_ORGANIZATIONALUNITNAME = 113,  /* Set */
    CERT_ISSUER_ALT_COMMONNAME = 114,
    CERT_ISSUER_ALT_EMAIL = 115,             /* Get answers from the subject's alternative name */
    CERTEX_BASICCONSTRAINTS_CRITICAL = 119,  /* alone it makes an empty list of extensions */
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
 * Makes a zeroed context and stores it in `*out`. The two names do the same. Free the context with the destroy function
 * of either name. Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr; after a failure nothing is stored.
 */
KARIL_API int32_t KACert_CreateCertEncodeCtx(CertEncodeCtx **out);
KARIL_API int32_t KACert_CreateCertDecodeCtx(CertDecodeCtx **out);

/*
 * Makes a context for a certificate of the issuer whose own certificate stands at `der`, `length` octets. Its subject
 * becomes the issuer (CERT_ISSUER_DERDN); nothing else is taken from it. The context is stored in `*out`; free it with
 * KACert_DestroyCertEncodeCtx.
 * Returns 0; the statuses of KACert_DecodeCert; KACERT_InvalidLengthErr if the subject has more than 2,048 octets or is
 * missing; KACERT_MemoryErr; KACERT_InvalidParamErr, also for a length below 1. After a failure nothing is stored.
 */
KARIL_API int32_t KACert_CreateCertEncodeCtx_Ex(CertEncodeCtx **out, const uint8_t *der, int32_t length);

/* Frees the context with all it holds; key octets are wiped. The two names do the same. Null is accepted. Returns 0. */
KARIL_API int32_t KACert_DestroyCertEncodeCtx(CertEncodeCtx *ctx);
KARIL_API int32_t KACert_DestroyCertDecodeCtx(CertDecodeCtx *ctx);

/*
 * Sets CERT_VERSION, CERT_VALIDFROM or CERT_VALIDTO. A time is written as UTCTime, whatever its year.
 * Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCertAttributeInt(CertEncodeCtx *ctx, int32_t id, int32_t value);

/*
 * Sets one attribute to a copy of `length` octets at `value`, or appends it, as the comment of the id says. Of a key
 * usage of 2 octets 7 bits count as unused, whatever the second one holds (departure from X.690 11.2.2).
 * Returns 0; KACERT_InvalidLengthErr if the length is below 1, whatever the id; KACERT_AttributeNotSupportErr for an id
 * that cannot be set here; KACERT_AttributeAlreadySet for a second value of an id that is set once, and for a key usage
 * of more than 2 octets, which is stored all the same; KACERT_InvalidItemErr for a defined usage that
 * KACert_GetOIDValue refuses; KACERT_MemoryErr, with nothing changed; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCertAttributeChar(CertEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length);

/*
 * Appends an extension of any kind (RFC 5280 4.2). `oid`: `oidLength` content octets. `critical`: not zero for TRUE.
 * `value`: the DER that goes into the extnValue OCTET STRING, `valueLength` octets. Both are copied.
 * Returns 0; KACERT_InvalidLengthErr if a length is below 1; KACERT_MemoryErr, with no extension added;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_SetCertAttributePrivate(CertEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                 uint8_t critical, const uint8_t *value, int32_t valueLength);

/*
 * Does the same for a plain value, which is first made a PrintableString element (`type` 19) or an OCTET STRING element
 * (any other `type`). Returns the same; also KACERT_InvalidParamErr if the value is null or its length below 1, and -1
 * if there is no memory for the element.
 */
KARIL_API int32_t KACert_SetCertAttributePrivate_ForValue(CertEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                          uint8_t critical, const uint8_t *value, int32_t valueLength,
                                                          int32_t type);

/*
 * Make an element of `length` octets at `value`: a PrintableString (KACert_EncodeChar) or an OCTET STRING
 * (UnsignedChar2OCTET). Characters are not checked. Free `*out` with KI_FreeAnybuf.
 * Both return 0, or -1 if `out` is null or there is no memory. KACert_EncodeChar makes an empty string of a null value
 * with length 0, and returns -1 for a null value with another length and for a value with a length below 1.
 * UnsignedChar2OCTET returns KACERT_InvalidParamErr if the value is null or the length below 1.
 */
KARIL_API int32_t KACert_EncodeChar(const uint8_t *value, int32_t length, Anybuf **out);
KARIL_API int32_t UnsignedChar2OCTET(const uint8_t *value, int32_t length, Anybuf **out);

/*
 * Stores the signing hook. If `parameter` is not null and `length` is above 0, its octets are copied, and an earlier
 * copy is wiped and freed; otherwise an earlier copy stays. What the octets point at is not copied and must outlive the
 * context.
 * The hook is called twice with the to-be-signed octets: see KACertSignFunc. IN THE FIRST CALL OUTPUT AND PARAMETER ARE
 * NULL, so the hook must return before it looks at the parameter.
 * Returns 0, KACERT_MemoryErr, or KACERT_InvalidParamErr if the context is null.
 */
KARIL_API int32_t KACert_SetCertSignFunc(CertEncodeCtx *ctx, KACertSignFunc hook, const void *parameter,
                                         uint32_t length);

/*
 * Builds, signs and wraps the certificate (RFC 5280 4.1). `result`: receives the DER, or null to ask for the length,
 * which signs as well. `resultLength`: receives its octets. The first result is kept: later calls return it again,
 * without calling the hook or reading an attribute. A decoded context returns what it decoded.
 * A certificate needs a hook (KACert_SetCertSignFunc), a serial number, an issuer and a subject. Each name comes from
 * its attributes or from its DER form, not from both. A certificate policy needs a CPS. What else is missing is written
 * all the same: the version as 0, an object identifier or a key without octets, a time as 0 in GeneralizedTime. So set
 * CERT_VERSION, both times, the three algorithms and the key as well.
 * Algorithm identifiers always carry NULL as parameters, so that a key which needs others, an EC key for one, cannot be
 * used from the certificate. The two signature algorithms are written as they were set; they are compared neither with
 * each other nor with what the hook does. Departures from RFC 5280 4.1: the version is written even if it is 0 (v1);
 * dates past 2049 are not written as GeneralizedTime; dates are local time.
 * Returns 0; KACERT_InvalidParamErr, also if something that a certificate needs is missing, or both forms of a name are
 * there; the hook's own status; KACERT_InvalidLengthErr if the signature has no octets or more than 512;
 * KACERT_InvalidTimeErr if a time is negative; KACERT_MemoryErr; the statuses of KI_EncodeIssuerSuject,
 * KI_EncodeGeneralNameS and the writers. After a failure a later call starts again.
 */
KARIL_API int32_t KACert_EncodeCert(CertEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Writes the Validity element (RFC 5280 4.1.2.5) and stores it in `*out`; free it with KI_FreeAnybuf. Each time is
 * generalizedValue: UTCTime if isUtc is not zero, else GeneralizedTime. Decoding stores a UTCTime in utcValue, so that
 * for a decoded context 0 is written.
 * Returns 0; KACERT_InvalidTimeErr if a time is negative; KACERT_MemoryErr; KACERT_InvalidParamErr. A call that fails
 * leaves `*out` as it was.
 */
KARIL_API int32_t KI_Cert_EncodeValidity(const CertEncodeCtx *ctx, Anybuf **out);

/*
 * Decodes a certificate into a fresh context; a context decodes once, since a second call appends to its lists. `der`:
 * the first element is taken, and octets after it are ignored. `length`: octets at `der`, or 0 if the element's header
 * is to be trusted. The octets are copied.
 * Only the structure is looked at. No signature is checked, the two algorithms are not compared, and their parameters
 * are not read. A certificate that ends after its to-be-signed part or after the algorithm is accepted, and so is an
 * empty SEQUENCE for it or for its to-be-signed part. The to-be-signed part otherwise needs all fields up to the public
 * key.
 * Departures from RFC 5280 4.1: dates are local time; extensions that are not known, certificate policies and authority
 * information access are kept as private extensions; a unique identifier (4.1.2.8) is taken for the extensions and
 * refused; of alternative names and distribution points a part is kept (cert_ext.h).
 * Dates: one with four digits for the year (GeneralizedTime) is KACERT_InvalidTagErr. A UTCTime before 1970 UTC or past
 * 19 January 2038 is KACERT_MemoryErr, one without its Z or its seconds KACERT_InvalidTimeEndErr.
 * Returns 0; KACERT_CertNotEndErr if a field is missing; KACERT_LengthNotEqualErr if the element exceeds `length`, or
 * if what stands in an OCTET STRING or an explicit tag is missing, cut off or too long; KACERT_InvalidLengthErr if
 * another inner element is cut off, malformed or runs over its parent's end, and for a text above the limits of text.h;
 * KACERT_InvalidTagErr; KACERT_InvalidTimeEndErr; KACERT_MemoryErr; KACERT_InvalidParamErr, also for an inner structure
 * that is empty. What was decoded before a failure stays in the context until it is destroyed.
 */
KARIL_API int32_t KACert_DecodeCert(CertDecodeCtx *ctx, const uint8_t *der, uint32_t length);

/*
 * Decodes a TBSCertificate element (RFC 5280 4.1.2) into the context, as KACert_DecodeCert does and with its statuses.
 * `tbs`: copied; it stays the caller's.
 */
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
 * Stores CERT_VERSION (0 if there is none), CERT_VALIDFROM or CERT_VALIDTO in `*value`. The times are those that a
 * decoded UTCTime had. A GeneralizedTime, and a context that was not decoded, have 0 here.
 * Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCertAttributeInt(const CertDecodeCtx *ctx, int32_t id, int32_t *value);

/*
 * Answers an attribute. `*resultLength`: set to 0 first, then to the answer's octets; must not be null. `result`:
 * receives the octets, or null to ask for the length; the caller makes sure that they have room. If the attribute is
 * absent, the status is 0 and the length 0.
 * Odd answers, which stay:
 * - CERT_PUBLICKEY_ALGORITHM: the octets of the signature algorithm, with the length of the key algorithm; zeros fill
 *   it up.
 * - CERT_ISSUER_DN, CERT_SUBJECT_DN: length 0 if the text exceeds 1,023 octets or there is no memory for it.
 * - Units, and the e-mail form below: a null `result` is KACERT_InvalidParamErr, so that the length cannot be asked
 *   for.
 * - CERT_SUBJECT_ALT_COMMONNAME: the e-mail form (rfc822Name), if there is no directory name.
 * - CERT_SUBJECT_ALT_EMAIL, CERT_ISSUER_ALT_EMAIL: each from the other's directory name.
 * - CERTEX_CRLDIST_FULLNAME: with a buffer, each call answers the next distribution point, and there is no way back. In
 *   a decoded certificate it is a whole GeneralName element.
 * - CERTEX_KEYUSAGE of a decoded certificate: its unused-bits octet comes first.
 * - Flags of a decoded certificate: the wire's octet, 0xFF for TRUE.
 * Returns 0; KACERT_AttributeNotSupportErr for an id that cannot be asked for; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCertAttributeChar(CertDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength);

/*
 * Answers the private extension numbered `*index`, from 1. `oid`, `value`: receive the content octets of its OID and
 * the content of its extnValue, or are null; the caller makes sure that they have room. `oidLength`, `valueLength`,
 * `critical`: receive the lengths and the flag. With 0, or past the end, `*index` becomes the number of extensions and
 * nothing else is stored; the other pointers may then be null. The context remembers the position, so that a walk from
 * 1 on is linear.
 * Returns 0 or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCertAttributePrivate(const CertDecodeCtx *ctx, uint32_t *index, uint8_t *oid,
                                                 uint32_t *oidLength, uint32_t *critical, uint8_t *value,
                                                 uint32_t *valueLength);

#ifdef __cplusplus
}
#endif

#endif
