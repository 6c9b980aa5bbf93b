/*
 * karil: certificate revocation lists: building, signing, decoding, queries (RFC 5280 5).
 *
 * A CRL is built by setting numbered attributes and encoding; a decoded one is asked by the same numbers, its entries
 * through a cursor. Texts are in the local encoding (code page 936). A context belongs to one thread at a time, Get
 * calls included. After a failure it can still be used or destroyed. A null pointer that the comment does not allow is
 * KACERT_InvalidParamErr.
 */
#ifndef KARIL_CRL_H
#define KARIL_CRL_H

#include "karil/base.h"
#include "karil/cert_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Attribute ids. "Int": the Int functions; "Get": cannot be set; "Set": cannot be asked for; none of these: the Char
 * functions, both ways. A second value replaces the first one, unless a comment says "once" or "appends".
 */
enum {
    CRL_TBS_CERTLIST = 1001,             /* Get: once encoded or decoded */
    CRL_OUTER_SIGNATUREALGORITHM = 1002, /* OID content octets; see KACert_GetCrlAttributeChar */
    CRL_CA_SIGNATURE = 1003,             /* signature octets; encoding overwrites it */
    CRL_VERSION = 1004,                  /* Int: as on the wire, 1 is v2 */
    CRL_INNER_SIGNATUREALGORITHM = 1005, /* OID content octets */
    CRL_ISSUER_DN = 1006,                /* Get: text of KI_GetDN; made once, at the first call */

    /* The issuer's name: each call appends an attribute. Get answers the first of its kind, of units too. */
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
    CRL_NEXTUPDATE = 1028, /* Int: seconds since 1970; left out if it was not set */

    /* Entries: a serial number appends one; date and reason belong to the last one. */
    CRL_CERT_SERIALNUMBER = 1029,   /* big-endian magnitude; Get: of the current entry */
    CRL_CERT_REVOCATIONDATE = 1030, /* Int: seconds since 1970; Get: see KACert_GetCrlAttributeInt */
    CRL_CERT_NEXT = 1031,           /* Get: moves the cursor to the next entry; both pointers may be null */

    /* Extensions. A critical id takes one octet. Set it after the value id, which changes the flag. */
    CRLEX_AUTHORITY_KEYIDENTIFIER_CRITICAL = 1032, /* Set */
    CRLEX_AUTHORITY_KEYIDENTIFIER = 1033,          /* Set: key id octets, once; critical becomes 0 */
    CRLEX_CRLNUMBER_CRITICAL = 1052,               /* Set */
    CRLEX_CRLNUMBER = 1053,                        /* big-endian magnitude, once; critical becomes 0 */
    CRLEX_DELTACRLINDICATOR_CRITICAL = 1054,       /* Set */
    CRLEX_DELTACRLINDICATOR = 1055,                /* big-endian magnitude, once; critical becomes 1 */
    CRLEX_ISSUINGDIST_CRITICAL = 1056,             /* Set */
    CRLEX_ISSUINGDIST_FULLNAME = 1057,             /* Set: URI, once; critical becomes 1; not written if it is alone */
    CRLEX_CRLREASON = 1063, /* content octets of the CRLReason ENUMERATED; Get: of the current entry */

    CRL_ISSUER_DERDN = 1501,           /* Set: Name element, written as it stands and not checked */
    CRL_RevokedCertificates_DER = 1502 /* SEQUENCE OF entries, written before those that were set */
};

/* A revoked certificate. */
typedef struct RevokedEntry {
    uint8_t hasEntryExtensions;
    Anybuf serialNumber;
    CertTime revocationDate; /* setting and decoding fill utcValue; decoding leaves isUtc 0 */
    uint8_t hasReason;
    Anybuf reason; /* content octets of the ENUMERATED */
    struct RevokedEntry *next;

    /* The library's own: how many octets after the record are for serial number and reason; 0xFFFFFFFF for a record
     * that was decoded, which is part of a block that the context keeps. */
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

/* The extension block of a CRL context. The first four octets are 1 if the extension is there. */
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
 * A CRL, built or decoded. KACert_CreateCrlEncodeCtx and KACert_CreateCrlDecodeCtx make it; the destroy function of
 * either name frees it with all it holds. Every Anybuf is embedded, those of the entries included. They may hold parts
 * of blocks that the context keeps until it is destroyed: see Anybuf.
 *
 * The list of entries is the context's own: a program may read it, but neither free nor append nodes. The list of names
 * in issuer is not: a program may free it with KI_FreeName, after which it sets the head's next to null, and fill it
 * with KI_DecodeIssuerSubject.
 */
typedef struct CrlEncodeCtx {
    uint8_t hasVersion;
    uint8_t hasNextUpdate;
    uint8_t hasRevoked;    /* 1 once an entry was set; decoding leaves it 0 */
    uint8_t hasExtensions; /* 0: the encoder writes no extensions */
    KAHookFunc signFunc;
    Anybuf signKey;                          /* copy of the hook's parameter; wiped when it is freed */
    Anybuf issuerText;                       /* cache of CRL_ISSUER_DN; not renewed if the name changes */
    Anybuf encoded;                          /* the finished CRL; final once filled */
    Anybuf tbs;                              /* the to-be-signed part */
    AlgorithmRecord outerSignatureAlgorithm; /* after the to-be-signed part */
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
 * Makes a zeroed context and stores it in `*out`. The two names do the same. Free the context with the destroy function
 * of either name. Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr; after a failure nothing is stored.
 */
KARIL_API int32_t KACert_CreateCrlEncodeCtx(CrlEncodeCtx **out);
KARIL_API int32_t KACert_CreateCrlDecodeCtx(CrlDecodeCtx **out);

/*
 * Makes a context for a CRL of the issuer whose certificate stands at `der`, `length` octets. The certificate's subject
 * becomes the issuer (CRL_ISSUER_DERDN). Its subject key identifier, if there is one, becomes the authority key
 * identifier. The context is stored in `*out`; free it with KACert_DestroyCrlEncodeCtx.
 * Returns 0; the statuses of KACert_DecodeCert; KACERT_InvalidLengthErr if the subject has more than 2,048 octets or is
 * missing, or the key identifier has more than 512; 3 if the key identifier cannot be read; KACERT_MemoryErr;
 * KACERT_InvalidParamErr, also for a length below 1. After a failure nothing is stored.
 */
KARIL_API int32_t KACert_CreateCrlEncodeCtx_Ex(CrlEncodeCtx **out, const uint8_t *der, int32_t length);

/*
 * Carries the entries of an earlier CRL over: decodes the CRL at `der`, `length` octets, and sets its list as
 * CRL_RevokedCertificates_DER. A CRL without a list changes nothing. No signature is checked, and issuers are not
 * compared.
 * Returns 0; the statuses of KACert_DecodeCrl; KACERT_MemoryErr; KACERT_InvalidParamErr, also for a length below 1.
 * After a failure the context is as it was.
 */
KARIL_API int32_t setCRL2Context(CrlEncodeCtx *ctx, const uint8_t *der, int32_t length);

/* Frees the context with all it holds; key octets are wiped. The two names do the same. Null is accepted. Returns 0. */
KARIL_API int32_t KACert_DestroyCrlEncodeCtx(CrlEncodeCtx *ctx);
KARIL_API int32_t KACert_DestroyCrlDecodeCtx(CrlDecodeCtx *ctx);

/*
 * Sets CRL_VERSION, CRL_THISUPDATE, CRL_NEXTUPDATE or, of the last entry, CRL_CERT_REVOCATIONDATE. A time is written as
 * UTCTime, whatever its year.
 * Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr, also for a revocation date if
 * there is no entry.
 */
KARIL_API int32_t KACert_SetCrlAttributeInt(CrlEncodeCtx *ctx, int32_t id, int32_t value);

/*
 * Sets one attribute to a copy of `length` octets at `value`, or appends it, as the comment of the id says.
 * Returns 0; KACERT_InvalidLengthErr if the length is below 1, whatever the id; KACERT_AttributeNotSupportErr for an id
 * that cannot be set here; KACERT_AttributeAlreadySet for a second value of an id that is set once; KACERT_MemoryErr,
 * with nothing changed; KACERT_InvalidParamErr, also for a reason if there is no entry.
 */
KARIL_API int32_t KACert_SetCrlAttributeChar(CrlEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length);

/*
 * Stores the signing hook. If `parameter` is not null and `length` is above 0, its octets are copied, and an earlier
 * copy is wiped and freed; otherwise an earlier copy stays. What the octets point at is not copied and must outlive the
 * context.
 * The hook is called twice, both times with the to-be-signed octets, the copy as its parameter and the same length
 * variable. In the first call the output is null: the hook stores the signature's size, which must be below 10,240
 * octets. In the second call the output has that many octets, and the length still holds that number: the hook writes
 * the signature, and stores its length. The hook of a certificate is called in another way.
 * Returns 0, KACERT_MemoryErr, or KACERT_InvalidParamErr if the context is null.
 */
KARIL_API int32_t KACert_SetCrlSignFunc(CrlEncodeCtx *ctx, KAHookFunc hook, const void *parameter, uint32_t length);

/*
 * Builds, signs and wraps the CRL (RFC 5280 5.1). `result`: receives the DER, or null to ask for the length, which
 * signs as well. `resultLength`: receives its octets. The first result is kept: later calls return it again, without
 * calling the hook or reading an attribute. A decoded context returns what it decoded.
 * A CRL needs a hook (KACert_SetCrlSignFunc) and an issuer, which comes from its attributes or from its DER form, not
 * from both. What else is missing is written all the same: the version as 0, an object identifier without octets, a
 * time as 0 in GeneralizedTime. So set CRL_VERSION, CRL_THISUPDATE, both algorithms and each entry's date as well.
 * Departures from RFC 5280 5.1: the version is written even if it is 0 (v1); the list of entries is written even if it
 * is empty (5.1.2.6); dates past 2049 are not written as GeneralizedTime; dates are local time; algorithm identifiers
 * always carry NULL.
 * Returns 0; KACERT_InvalidParamErr, also if hook or issuer is missing, or both forms of the issuer are there; the
 * hook's own status; KACERT_InvalidSignatureLenErr if the size is 10,240 or more; KACERT_InvalidLengthErr if the
 * signature has no octets or more than its size; KACERT_InvalidTimeErr if a time is negative; for
 * CRL_RevokedCertificates_DER the statuses of KAsn1_ReadSequence; KACERT_MemoryErr; the statuses of
 * KI_EncodeIssuerSuject and the writers. After a failure a later call starts again.
 */
KARIL_API int32_t KACert_EncodeCrl(CrlEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * The parts of the encoder. Each stores a heap element in `*out`, which the caller frees with KI_FreeAnybuf. Each
 * returns 0, KACERT_InvalidParamErr, KACERT_MemoryErr or a status of the writers; after a failure `*out` is as it was.
 * KI_CRL_EncodeRevokedCRL: the SEQUENCE OF all entries, those of CRL_RevokedCertificates_DER first.
 * KACERT_InvalidTimeErr if a date is negative; the statuses of KAsn1_ReadSequence.
 * KI_CRL_AddRevokedCert: appends the chain `entries`, which may be null, to the elements of
 * CRL_RevokedCertificates_DER, and stores the whole chain, null if there is none. After success `*out` owns `entries`
 * too; after a failure they are still the caller's. Also the statuses of KAsn1_ReadSequence.
 * KI_CRL_WriteEntryExtension: SEQUENCE { SEQUENCE { 2.5.29.21, OCTET STRING { ENUMERATED reason } } } (RFC 5280 5.3.1),
 * never critical.
 * KI_Crl_EncodeExtensions: [0] EXPLICIT Extensions in the order CRL number, delta CRL indicator, authority key
 * identifier, issuing distribution point. If hasExtensions is 0, nothing is stored and 0 is returned.
 * The others: one Extension each (RFC 5280 5.2.3, 5.2.4, 5.2.1, 5.2.5). The authority key identifier is the key
 * identifier alone; the issuing distribution point has one URI. Presence flags are not looked at.
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
 * Decodes a CRL into a fresh context; a context decodes once, since a second call appends to its lists. `der`: the
 * first element is taken, and octets after it are ignored. `length`: octets at `der`, or 0 if the element's header is
 * to be trusted. The octets are copied. Only the structure is looked at: no signature is checked. The cursor then
 * stands on the first entry.
 * Departures from RFC 5280 5.1: the version must be there, so that a v1 CRL (5.1.2.1) is refused; something must follow
 * the dates, if only an empty list; revocation dates must be UTCTime; dates are local time. Of the extensions the CRL
 * number and the delta CRL indicator are kept, of an entry's the reason.
 * Dates: one with four digits for the year (GeneralizedTime) is KACERT_InvalidTimeEndErr for thisUpdate and nextUpdate,
 * and KACERT_InvalidTagErr for a revocation date. A UTCTime before 1970 UTC or past 19 January 2038 is
 * KACERT_InvalidTagErr for thisUpdate and nextUpdate, and KACERT_MemoryErr for a revocation date. One without its Z or
 * its seconds is KACERT_InvalidTagErr for thisUpdate and nextUpdate, and KACERT_InvalidTimeEndErr for a revocation
 * date.
 * Returns 0; KACERT_CrlNotEndErr if a field is missing, and if there is no memory for the first allocation;
 * KACERT_CertNotEndErr if a kept extension has no value; KACERT_LengthNotEqualErr if the element exceeds `length`, or
 * if what stands in an OCTET STRING or an explicit tag is missing, cut off or too long; KACERT_InvalidLengthErr if
 * another inner element is cut off, malformed or runs over its parent's end, and for a text above the limits of text.h;
 * KACERT_InvalidTagErr; KACERT_InvalidTimeEndErr; KACERT_MemoryErr; KACERT_InvalidParamErr, also for an inner structure
 * that is empty. What was decoded before a failure stays in the context until it is destroyed.
 */
KARIL_API int32_t KACert_DecodeCrl(CrlDecodeCtx *ctx, const uint8_t *der, uint32_t length);

/*
 * The parts of the decoder, with its statuses. The elements are only read and stay the caller's.
 * KI_CRL_DecodeTBS: a TBSCertList element.
 * KI_CRL_DecodeRevokedCerts: the SEQUENCE OF entries. Each entry is appended before it is read: after a failure the
 * last one holds what was read of it, its flags included. If the list itself is malformed, nothing is appended.
 * CRL_RevokedCertificates_DER is not set.
 * KI_Crl_DecodeExtensions: the [0] extensions element, whatever its tag. Of each kind that is kept the first extension
 * is taken; all others are skipped.
 * KI_Crl_DecodeCRLNumber, KI_Crl_DecodeDelCRLIdentifier: one Extension. If its OID is another, nothing is taken and 0
 * is returned. KACERT_CertNotEndErr if it is empty, or has nothing after its OID or after its critical flag.
 */
KARIL_API int32_t KI_CRL_DecodeTBS(CrlDecodeCtx *ctx, const Anybuf *tbs);
KARIL_API int32_t KI_CRL_DecodeRevokedCerts(const Anybuf *list, CrlDecodeCtx *ctx);
KARIL_API int32_t KI_Crl_DecodeExtensions(const Anybuf *extensions, CrlExtensions *block);
KARIL_API int32_t KI_Crl_DecodeCRLNumber(const Anybuf *extension, CrlExtensions *block);
KARIL_API int32_t KI_Crl_DecodeDelCRLIdentifier(const Anybuf *extension, CrlExtensions *block);

/*
 * Stores CRL_VERSION, CRL_THISUPDATE, CRL_NEXTUPDATE or, of the current entry, CRL_CERT_REVOCATIONDATE in `*value`. If
 * there is none, `*value` stays as it was. The revocation date of a decoded entry is always 0 here. It stands in
 * CRL_RevokedCertificates_DER, and in utcValue of the entry's record.
 * Returns 0; KACERT_AttributeNotSupportErr for any other id; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCrlAttributeInt(const CrlDecodeCtx *ctx, int32_t id, int32_t *value);

/*
 * Answers an attribute. `*resultLength`: set to the answer's octets; if the attribute is absent, it stays as it was and
 * the status is 0, so set it to 0 before the call. It must not be null, except for CRL_CERT_NEXT. `result`: receives
 * the octets, or null to ask for the length; the caller makes sure that they have room.
 * CRL_CERT_NEXT moves the cursor to the next entry; neither pointer is used, so both may be null. There is no way back.
 * After the last entry CRL_CERT_SERIALNUMBER has length 0.
 * Odd answers, which stay. CRL_OUTER_SIGNATUREALGORITHM: the octets of the inner algorithm, with the length of the
 * outer one; zeros fill it up. CRL_ISSUER_DN: no answer, with status 0, if the text exceeds 1,023 octets or there is no
 * memory for it.
 * Returns 0; KACERT_AttributeNotSupportErr for an id that cannot be asked for; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KACert_GetCrlAttributeChar(CrlDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
