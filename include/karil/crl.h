/*
 * karil: certificate revocation lists: building, signing, decoding, queries (RFC 5280 5).
 *
 * A CRL is built by setting numbered attributes and encoding; a decoded one is asked by the same numbers, its entries
 * through a cursor. Texts are in the local encoding (code page 936). A context belongs to one thread at a time. After
 * a failure it can still be used or destroyed. A null pointer that the comment does not allow is
 * KACERT_InvalidParamErr.
 */
#ifndef KARIL_CRL_H
#define KARIL_CRL_H

#include "karil/base.h"
#include "karil/cert_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Attribute ids. "Int": the Int functions; "Get": not set; "Set": not asked for; none: the Char functions, both ways.
 */
enum {
    CRL_TBS_CERTLIST = 1001,             /* Get: once encoded or decoded */
    CRL_OUTER_SIGNATUREALGORITHM = 1002, /* OID content octets; see KACert_GetCrlAttributeChar */
    CRL_CA_SIGNATURE = 1003,             /* signature octets; encoding overwrites it */
    CRL_VERSION = 1004,                  /* Int: as on the wire, 1 is v2 */
    CRL_INNER_SIGNATUREALGORITHM = 1005, /* OID content octets */
    CRL_ISSUER_DN = 1006,                /* Get: text of KI_GetDN */

    /* The issuer's name: each call appends an attribute; Get gives the first of its kind, units too. */
    CRL_ISSUER_COUNTRYNAME = 1007,
    CRL_ISSUER_STATEORPROVINCENAME = 1008,
    CRL_ISSUER_LOCALITYNAME = 1009,
    CRL_ISSUER_ORGANIZATIONNAME = 1010,
    CRL_ISSUER_ORGANIZATIONALUNITNAME = 1011,
    CRL_ISSUER_COMMONNAME = 1012,
    CRL_ISSUER_EMAIL = 1013, /* Get */
    CRL_ISSUER_POSTALADDRESS = 1014,
    CRL_ISSUER_POSTALCODE = 1015,
    CRL_ISSUER_TELEPHONE = 1016,

    CRL_THISUPDATE = 1027, /* Int: seconds since 1970 */
    CRL_NEXTUPDATE = 1028, /* Int: seconds since 1970; left out where it was not set */

    /* Entries: the serial number opens one, date and reason belong to the last one opened. */
    CRL_CERT_SERIALNUMBER = 1029,   /* big-endian magnitude; Get: of the current entry */
    CRL_CERT_REVOCATIONDATE = 1030, /* Int: seconds since 1970; Get: see KACert_GetCrlAttributeInt */
    CRL_CERT_NEXT = 1031,           /* Get: moves the cursor to the next entry */

    /* Extensions. A critical id takes one octet and comes after the value id, which resets the flag. */
    CRLEX_AUTHORITY_KEYIDENTIFIER_CRITICAL = 1032, /* Set */
    CRLEX_AUTHORITY_KEYIDENTIFIER = 1033,          /* Set: key id octets, once; critical becomes 0 */
    CRLEX_CRLNUMBER_CRITICAL = 1052,               /* Set */
    CRLEX_CRLNUMBER = 1053,                        /* big-endian magnitude, once; critical becomes 0 */
    CRLEX_DELTACRLINDICATOR_CRITICAL = 1054,       /* Set */
    CRLEX_DELTACRLINDICATOR = 1055,                /* big-endian magnitude, once; critical becomes 1 */
    CRLEX_ISSUINGDIST_CRITICAL = 1056,             /* Set */
    CRLEX_ISSUINGDIST_FULLNAME = 1057, /* Set: URI, once; critical becomes 1; alone it causes no extensions */
    CRLEX_CRLREASON = 1063,            /* content octets of the CRLReason ENUMERATED; Get: of the current entry */

    CRL_ISSUER_DERDN = 1501,           /* Set: Name element, written as it stands and not checked */
    CRL_RevokedCertificates_DER = 1502 /* SEQUENCE OF entries, written in front of those that were set */
};

/* A revoked certificate. */
typedef struct RevokedEntry {
    uint8_t hasEntryExtensions;
    Anybuf serialNumber;
    CertTime revocationDate; /* decoding fills utcValue and leaves isUtc 0 */
    uint8_t hasReason;
    Anybuf reason; /* content octets of the ENUMERATED */
    struct RevokedEntry *next;

    /* The library's own: how many octets behind the record are for serial number and reason. */
    uint32_t room;
} RevokedEntry;
KARIL_SIZE_32(RevokedEntry, 84);

/* A CRL number or the base CRL number of a delta CRL. */
typedef struct CrlNumberExtension {
    uint8_t critical;
    Anybuf value; /* big-endian magnitude */
} CrlNumberExtension;

typedef struct IssuingDistExtension {
    uint8_t critical;
    Anybuf fullName; /* URI */
} IssuingDistExtension;

/* The extension block of a CRL context. The first four octets are 1 where the extension is there. */
typedef struct CrlExtensions {
    uint8_t hasAuthorityKeyId;
    uint8_t hasCrlNumber;
    uint8_t hasDeltaCrl;
    uint8_t hasIssuingDist;
    AuthorityKeyIdExtension authorityKeyId;
    CrlNumberExtension crlNumber;
    CrlNumberExtension deltaCrl;
    IssuingDistExtension issuingDist;
} CrlExtensions;
KARIL_SIZE_32(CrlExtensions, 132);

/*
 * A CRL, built or decoded. Made by KACert_CreateCrlEncodeCtx or KACert_CreateCrlDecodeCtx, and freed with all it holds
 * by the destroy function of either name. Every Anybuf is embedded and owns its data, but for serial numbers and
 * reasons, which may stand in their entry's own block. The list of entries is the context's own: only the library
 * appends to it and frees it. The issuer may also be filled or freed as in CertEncodeCtx.
 */
typedef struct CrlEncodeCtx {
    uint8_t hasVersion;
    uint8_t hasNextUpdate;
    uint8_t hasRevoked;    /* 1 once an entry was set; decoding leaves it 0 */
    uint8_t hasExtensions; /* 0: the encoder writes no extensions */
    KAHookFunc signFunc;
    Anybuf signKey;                          /* copy of the hook's parameter; wiped when it is freed */
    Anybuf issuerText;                       /* cache of CRL_ISSUER_DN */
    Anybuf encoded;                          /* the finished CRL; final once filled */
    Anybuf tbs;                              /* the to-be-signed part */
    AlgorithmRecord outerSignatureAlgorithm; /* behind the to-be-signed part */
    Anybuf signature;
    int32_t version;
    AlgorithmRecord innerSignatureAlgorithm; /* inside the to-be-signed part */
    NameRecord issuer;                       /* head of the list */
    CertTime thisUpdate;                     /* setting writes utcValue */
    CertTime nextUpdate;
    RevokedEntry *firstRevoked;
    RevokedEntry *currentRevoked; /* read cursor; set by decoding */
    CrlExtensions extensions;
    Anybuf issuerDer;  /* issuer as a ready Name element */
    Anybuf revokedDer; /* ready SEQUENCE OF entries */

    /* The library's own. Where lists that it alone touches end, as far as it knows: */
    RevokedEntry *revokedLast;
    struct KeptOctets *kept; /* what was decoded; records hold parts of it */
} CrlEncodeCtx;
KARIL_SIZE_32(CrlEncodeCtx, 512);

/* The same record under the name that decoding uses. */
typedef CrlEncodeCtx CrlDecodeCtx;

/*
 * Makes a zeroed context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidParamErr. Free it with either destroy function.
 */
KARIL_API int32_t KACert_CreateCrlEncodeCtx(CrlEncodeCtx **out);
KARIL_API int32_t KACert_CreateCrlDecodeCtx(CrlDecodeCtx **out);

/*
 * Makes a context for a CRL of the issuer whose certificate stands at `der`, `length` octets: its subject becomes the
 * issuer (CRL_ISSUER_DERDN), its subject key identifier, if there is one, the authority key identifier.
 * Returns 0; the statuses of KACert_DecodeCert; KACERT_InvalidLengthErr for a subject of more than 2,048 octets or a
 * key identifier of more than 512; 3 where the key identifier cannot be read; KACERT_MemoryErr;
 * KACERT_InvalidParamErr, also for a length below 1. After a failure nothing is stored.
 */
KARIL_API int32_t KACert_CreateCrlEncodeCtx_Ex(CrlEncodeCtx **out, const uint8_t *der, int32_t length);

/*
 * Carries the entries of an earlier CRL over: decodes the CRL at `der`, `length` octets, and sets its list as
 * CRL_RevokedCertificates_DER. A CRL without a list changes nothing.
 * Returns 0; the statuses of KACert_DecodeCrl; KACERT_MemoryErr; KACERT_InvalidParamErr, also for a length below 1.
 */
KARIL_API int32_t setCRL2Context(CrlEncodeCtx *ctx, const uint8_t *der, int32_t length);

/* Frees the context with all it holds, key octets wiped. Null is accepted. Returns 0. */
KARIL_API int32_t KACert_DestroyCrlEncodeCtx(CrlEncodeCtx *ctx);
KARIL_API int32_t KACert_DestroyCrlDecodeCtx(CrlDecodeCtx *ctx);

/*
 * Sets CRL_VERSION, CRL_THISUPDATE, CRL_NEXTUPDATE or CRL_CERT_REVOCATIONDATE. A time is written as UTCTime.
 * Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr, also for a revocation date before
 * the first entry.
 */
KARIL_API int32_t KACert_SetCrlAttributeInt(CrlEncodeCtx *ctx, int32_t id, int32_t value);

/*
 * Sets one attribute to a copy of `length` octets at `value`, or appends it, as the id's comment tells.
 * Returns 0; KACERT_InvalidLengthErr for a length below 1, whatever the id; KACERT_AttributeNotSupportErr for an id
 * that is not set here; KACERT_AttributeAlreadySet for a second value of an id that is set once; KACERT_MemoryErr,
 * with nothing changed; KACERT_InvalidParamErr, also for a reason before the first entry.
 */
KARIL_API int32_t KACert_SetCrlAttributeChar(CrlEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length);

/*
 * Stores the signing hook and, where `parameter` is not null and `length` above 0, a copy of its octets; an earlier
 * copy is wiped and released. The hook is called twice, both times with the to-be-signed octets and the copy: first
 * with a null output to tell the signature's size, below 10,240 octets, then with an area of that size, which its
 * length holds as well. Departure from KACert_SetCertSignFunc: the size is asked for, and the first call has the
 * parameter too. Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr for a null context.
 */
KARIL_API int32_t KACert_SetCrlSignFunc(CrlEncodeCtx *ctx, KAHookFunc hook, const void *parameter, uint32_t length);

/*
 * Builds, signs and wraps the CRL (RFC 5280 5.1). `result`: receives the DER, or null to ask for the length, which
 * signs as well. `resultLength`: receives its octets. The first result is kept: later calls hand it out again. A
 * decoded context hands out what it decoded.
 * The issuer comes from its attributes or its DER form, not both. Departures: the version is written always, as a
 * plain INTEGER, also where it is 0; the entries are written always, as 30 00 where there is none (RFC 5280 5.1.2.6
 * leaves them out); a time that was not set is 0 as GeneralizedTime; no entry extension is critical.
 * Returns 0; KACERT_InvalidParamErr, also for a missing hook or issuer; the hook's own status;
 * KACERT_InvalidSignatureLenErr for a size of 10,240 or more; KACERT_InvalidLengthErr for a signature of no octets or
 * above its size; KACERT_InvalidTimeErr for a negative time; KACERT_MemoryErr; any status of the writers.
 */
KARIL_API int32_t KACert_EncodeCrl(CrlEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * The parts of the encoder. Each stores a heap element in `*out`, freed with KI_FreeAnybuf, and returns 0,
 * KACERT_InvalidParamErr, KACERT_MemoryErr or a status of the writers.
 * KI_CRL_EncodeRevokedCRL: the SEQUENCE OF all entries, those of CRL_RevokedCertificates_DER first.
 * KI_CRL_AddRevokedCert: hangs the chain `entries`, null for none, behind the elements of CRL_RevokedCertificates_DER.
 * After success `*out` owns the whole chain, after a failure the caller still owns `entries`.
 * KI_CRL_WriteEntryExtension: SEQUENCE { SEQUENCE { 2.5.29.21, OCTET STRING { ENUMERATED } } } (RFC 5280 5.3.1).
 * KI_Crl_EncodeExtensions: [0] EXPLICIT Extensions in the order CRL number, delta CRL indicator, authority key
 * identifier, issuing distribution point, or nothing stored where hasExtensions is 0.
 * The others: one Extension each (RFC 5280 5.2.3, 5.2.4, 5.2.1, 5.2.5), the issuing distribution point with one URI.
 */
KARIL_API int32_t KI_CRL_EncodeRevokedCRL(const CrlEncodeCtx *ctx, Anybuf **out);
KARIL_API int32_t KI_CRL_AddRevokedCert(const CrlEncodeCtx *ctx, Anybuf *entries, Anybuf **out);
KARIL_API int32_t KI_CRL_WriteEntryExtension(const RevokedEntry *entry, Anybuf **out);
KARIL_API int32_t KI_Crl_EncodeExtensions(const CrlEncodeCtx *ctx, Anybuf **out);
KARIL_API int32_t KI_Crl_EncodeCRLNumber(const CrlEncodeCtx *ctx, Anybuf **out);
KARIL_API int32_t KI_Crl_EncodeDelCRLIdentifier(const CrlEncodeCtx *ctx, Anybuf **out);
KARIL_API int32_t KI_Crl_EncodeExtension_AuthorityKeyIdentifyer(const CrlEncodeCtx *ctx, Anybuf **out);
KARIL_API int32_t KI_Crl_EncodeCRLDPs(const CrlEncodeCtx *ctx, Anybuf **out);

/*
 * Decodes a CRL into a fresh context. `der`: the first element is taken, octets behind it are ignored. `length`:
 * octets at `der`, or 0 to trust the element's header. Only the structure is looked at: no signature is checked.
 * Departures: the version must be there (RFC 5280 5.1.2.1: a v1 CRL is refused), and something must follow the dates;
 * revocation dates must be UTCTime; dates are local time and end in 2038; of the extensions the CRL number and the
 * delta CRL indicator are kept, of an entry's the reason.
 * Returns 0; KACERT_CrlNotEndErr for a missing field, and where the first allocation finds no memory;
 * KACERT_CertNotEndErr for an extension without a value; KACERT_LengthNotEqualErr for an element above `length` or one
 * inside that disagrees with its size; KACERT_InvalidLengthErr; KACERT_InvalidTagErr; KACERT_InvalidTimeEndErr;
 * KACERT_MemoryErr, also for a date that does not fit; KACERT_InvalidParamErr, also for an empty inner structure.
 * What was decoded before a failure stays in the context until it is destroyed.
 */
KARIL_API int32_t KACert_DecodeCrl(CrlDecodeCtx *ctx, const uint8_t *der, uint32_t length);

/*
 * The parts of the decoder, with its statuses: a TBSCertList element; the SEQUENCE OF entries, which are appended; the
 * [0] extensions element, whatever its tag; one Extension, of which nothing is taken where its OID is another.
 */
KARIL_API int32_t KI_CRL_DecodeTBS(CrlDecodeCtx *ctx, const Anybuf *tbs);
KARIL_API int32_t KI_CRL_DecodeRevokedCerts(const Anybuf *list, CrlDecodeCtx *ctx);
KARIL_API int32_t KI_Crl_DecodeExtensions(const Anybuf *extensions, CrlExtensions *block);
KARIL_API int32_t KI_Crl_DecodeCRLNumber(const Anybuf *extension, CrlExtensions *block);
KARIL_API int32_t KI_Crl_DecodeDelCRLIdentifier(const Anybuf *extension, CrlExtensions *block);

/*
 * Stores CRL_VERSION, CRL_THISUPDATE, CRL_NEXTUPDATE or, of the current entry, CRL_CERT_REVOCATIONDATE in `*value`,
 * which stays as it was where there is none. The revocation date of a decoded entry is 0: it stands in
 * CRL_RevokedCertificates_DER.
 * Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCrlAttributeInt(const CrlDecodeCtx *ctx, int32_t id, int32_t *value);

/*
 * Answers an attribute. `*resultLength`: set to the answer's octets; it stays as it was where the attribute is absent,
 * so set it to 0 first. `result`: receives the octets, or null to ask for the length; the caller sees to its size.
 * The cursor stands on the first entry after decoding, and CRL_CERT_NEXT moves it on, without a way back and without
 * touching result or length; behind the last entry CRL_CERT_SERIALNUMBER has length 0.
 * Odd answer, which stays: CRL_OUTER_SIGNATUREALGORITHM gives the inner algorithm's octets with the outer one's
 * length, zeros behind them where it is longer.
 * Returns 0; KACERT_AttributeNotSupportErr for an id that is not asked for; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCrlAttributeChar(CrlDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
