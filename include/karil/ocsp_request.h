/*
 * karil: OCSP requests: building, signing, decoding, queries (RFC 2560 4.1), in the dialect that ocsp.h describes.
 *
 * A list object makes the octets of one single request, and a request object puts any number of those into a request.
 * The same two objects decode. Texts of a name are in the local encoding (code page 936). After a failure a context can
 * still be used or destroyed. A null pointer that the comment does not allow is KACERT_InvalidItemErr.
 */
#ifndef KARIL_OCSP_REQUEST_H
#define KARIL_OCSP_REQUEST_H

#include "karil/ocsp.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Attribute ids of a request. "Int": the Int functions; all others: the Char functions. "The type" is the extension's
 * object identifier, which is stored with any value of it. A request writes its extensions only if one of the three Int
 * ids below 15 was set, or if it was decoded with extensions: one that sets a nonce alone goes out without it.
 */
enum {
    /* Switches: the value does not matter. Get answers the length 1 and no octets. */
    OCSP_EXT_NONCE_CRITICAL = 0,           /* the nonce is there; stores the type if there is none */
    OCSP_EXT_CRLID_CRITICAL = 2,           /* the CRL id is there; stores the type */
    OCSP_EXT_ACCEPTABLERESON_CRITICAL = 6, /* stores the type */
    OCSP_EXT_ARCHIVECUTOFF_CRITICAL = 8,   /* stores the type */
    OCSP_EXT_CRLENTRY_CRITICAL = 10,       /* stores the type, which is never written */
    OCSP_EXT_SERVICELOCATOR_CRITICAL = 12, /* stores the type, which is never written */

    OCSP_EXT_NONCE = 1,           /* stores the nonce, which is there only after id 0 */
    OCSP_EXT_CRL_NUM = 3,         /* Int: the CRL id is there; the number is never written */
    OCSP_EXT_CRL_TIME = 4,        /* Int: the CRL id is there; seconds since 1970, never written */
    OCSP_EXT_CRL_URL = 5,         /* a CRL id cannot be encoded without it; Get answers the nonce instead */
    OCSP_EXT_ACCEPTABLERESON = 7, /* one response type, OID content octets; no Set makes the extension be there */
    OCSP_EXT_ARCHIVECUTOFF = 9,   /* Int, for Set alone: seconds since 1970; Get of the Char function answers nothing */
    OCSP_EXT_CRLENTRY = 11,       /* these three are taken and not stored; Get answers nothing */
    OCSP_EXT_SERVICELOCATOR_ISSUERNAME = 13,
    OCSP_EXT_SERVICELOCATOR_LOCATOR = 14,

    OCSP_REQUEST_VERSION = 33,      /* Int: as on the wire, 0 is v1; must be set; Get sets it to what it answers */
    OCSP_REQUEST_REQUESTOR_DN = 34, /* a Name element, which is written instead of the attributes below */

    /* The requestor's name: each call appends an attribute. Get answers the first of its kind. */
    OCSP_REQUEST_REQUESTOR_COUNTRY = 35,
    OCSP_REQUEST_REQUESTOR_STATEORPROVINCE = 36,
    OCSP_REQUEST_REQUESTOR_LOCALITY = 37,
    OCSP_REQUEST_REQUESTOR_ORGANIZATION = 38,
    OCSP_REQUEST_REQUESTOR_ORGANIZATIONALUNIT = 39,
    OCSP_REQUEST_REQUESTOR_COMMONNAME = 40,
    OCSP_REQUEST_REQUESTOR_EMAIL = 41,
    OCSP_REQUEST_REQUESTOR_POSTALADDRESS = 42,

    /* Each of these makes the request a signed one. */
    OCSP_REQUEST_REQUESTOR_SIGNALGO = 43, /* OID content octets; must be set then */
    OCSP_REQUEST_REQUESTOR_PARAM = 44,    /* the algorithm's parameter: stored, never written */
    OCSP_REQUEST_REQUESTOR_CERTS = 45     /* appends a certificate; Get answers a SEQUENCE of all */
};

/* Attribute ids of a request list. "Get": cannot be set. Octets that were not set have the length 0. */
enum {
    OCSP_REQUESTLIST_SERIALNUMBER = 15,   /* big-endian, without a sign octet */
    OCSP_REQUESTLIST_ISSUERNAME = 16,     /* octets to be hashed: the issuer's Name element */
    OCSP_REQUESTLIST_ISSUERKEY = 17,      /* octets to be hashed: the content of the issuer's key BIT STRING */
    OCSP_REQUESTLIST_ISSUERHASHNAME = 18, /* Get: once encoded or decoded */
    OCSP_REQUESTLIST_ISSUERHASHKEY = 19,  /* Get: the same */
    OCSP_REQUESTLIST_HASHALGO = 20,       /* OID content octets */
    OCSP_REQUESTLIST_PARAM = 21,          /* stored, never written */
    OCSP_REQUESTLIST_CERTID = 22          /* octets that are encoded in the place of everything else */
};

/* One single request, built or decoded. */
typedef struct RequestListCtx {
    uint8_t reserved;
    uint8_t isWhole; /* certId.whole was set or decoded, and is what is encoded */
    OcspCertId certId;

    struct KeptOctets *kept; /* the library's own: what was decoded; records hold parts of it */
} RequestListCtx;
KARIL_SIZE_32(RequestListCtx, 268);

/* A request, built or decoded. */
typedef struct RequestCtx {
    uint8_t isSigned;
    uint8_t hasVersion;
    uint8_t hasDerName;
    uint8_t hasExtensions;
    uint32_t version;
    NameRecord requestor; /* head of the list */
    uint32_t requestCount;
    Anybuf requests; /* head, without octets of its own: its next is the first single request */
    Anybuf requestorDer;
    OcspExtension extensions;
    Anybuf tbs; /* what is signed; set by encoding and by decoding */
    OcspSignature signature;

    /* The library's own. */
    ListMarks requestMarks;
    struct KeptOctets *kept; /* what was decoded; records hold parts of it */
} RequestCtx;
KARIL_SIZE_32(RequestCtx, 680);

/*
 * Make a context and store it in `*out`. The two names do the same. Free it with the destroy function of either name.
 * Return 0, KACERT_MemoryErr or KACERT_InvalidItemErr; after a failure nothing is stored.
 */
KARIL_API int32_t KA_OCSP_CreateEncodeRequestList(RequestListCtx **out);
KARIL_API int32_t KA_OCSP_CreateDecodeRequestList(RequestListCtx **out);

/* Free the context with all it holds. The two names do the same. Return 0, or KACERT_InvalidItemErr for null. */
KARIL_API int32_t KA_OCSP_DestroyEncodeRequestList(RequestListCtx *ctx);
KARIL_API int32_t KA_OCSP_DestroyDecodeRequestList(RequestListCtx *ctx);

/*
 * Sets one attribute to a copy of `length` octets at `value`, in the place of an earlier one. Returns 0;
 * KACERT_InvalidItemErr, also for a length below 1, for an id that cannot be set here, and if there is no memory.
 */
KARIL_API int32_t KA_OCSP_SetRequestListAttributeChar(RequestListCtx *ctx, int32_t id, const uint8_t *value,
                                                      int32_t length);

/*
 * Stores the hash hook, which must not be null, and a copy of `length` octets at `parameter`. With a length below 1
 * the hook alone is stored, and an earlier copy stays. ocsp.h tells how the hook is called.
 * Returns 0; KACERT_InvalidItemErr, also for a null `parameter` with a length above 0; KACERT_InvalidParamErr if there
 * is no memory.
 */
KARIL_API int32_t KA_OCSP_SetRequestListHashFunc(RequestListCtx *ctx, KAHookFunc hook, const uint8_t *parameter,
                                                 int32_t length);

/*
 * Writes one single request, SEQUENCE { SEQUENCE { hashAlgorithm OBJECT IDENTIFIER, issuerNameHash OCTET STRING,
 * issuerKeyHash OCTET STRING, serialNumber INTEGER } } (RFC 2560 4.1.1 Request), with the digests that the hook makes
 * of the issuer's name and key. With OCSP_REQUESTLIST_CERTID, or after decoding, those octets come out as they stand,
 * without a SEQUENCE around them, and no hook is called. Nothing is kept for a later call but the digests.
 * `result`: receives the octets; the caller makes sure that they have room. `resultLength`: receives their number.
 * Returns 0; KACERT_InvalidItemErr, also if hook, name, key or serial number is missing; the hook's own status;
 * KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_EncodeRequestList(RequestListCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes one single request: `length` octets at `der`, all of them one element. The octets are copied. A context
 * decodes once. Elements after the identity are ignored.
 * Returns 0; KACERT_InvalidItemErr, also for a length of 0 and a missing element; KACERT_LengthNotEqualErr;
 * KACERT_InvalidLengthErr; KACERT_InvalidTagErr; KACERT_MemoryErr. What was decoded before a failure stays.
 */
KARIL_API int32_t KA_OCSP_DecodeRequestList(RequestListCtx *ctx, const uint8_t *der, uint32_t length);

/*
 * Answers an attribute: its octets go to `result`, which must have room and cannot be null, their number to
 * `*resultLength`. Returns 0; KACERT_InvalidItemErr, also for an id of another object.
 */
KARIL_API int32_t KA_OCSP_GetRequestListAttributeChar(RequestListCtx *ctx, int32_t id, uint8_t *result,
                                                      uint32_t *resultLength);

/* As those of a request list. */
KARIL_API int32_t KA_OCSP_CreateEncodeRequest(RequestCtx **out);
KARIL_API int32_t KA_OCSP_CreateDecodeRequest(RequestCtx **out);
KARIL_API int32_t KA_OCSP_DestoryEncodeRequest(RequestCtx *ctx);
KARIL_API int32_t KA_OCSP_DestoryDecodeRequest(RequestCtx *ctx);

/*
 * Sets an Int attribute. Returns 0; KACERT_InvalidItemErr, also for any other id, and if there is no memory for the
 * type; the flags of the id are raised then.
 */
KARIL_API int32_t KA_OCSP_SetRequestAttributeInt(RequestCtx *ctx, int32_t id, int32_t value);

/*
 * Sets one attribute to a copy of `length` octets at `value`, or appends it, as the comment of the id says.
 * Returns 0; KACERT_AttributeAlreadySet for an attribute of the name after OCSP_REQUEST_REQUESTOR_DN;
 * KACERT_InvalidItemErr, also for a length below 1, for an id that cannot be set here, and if there is no memory.
 */
KARIL_API int32_t KA_OCSP_SetRequestAttributeChar(RequestCtx *ctx, int32_t id, const uint8_t *value, int32_t length);

/*
 * Appends a copy of one single request, `length` octets at `value`, as KA_OCSP_EncodeRequestList writes them. Returns
 * 0; KACERT_InvalidItemErr, also for a length below 1, and if there is no memory.
 */
KARIL_API int32_t KA_OCSP_SetRequestSingleRequest(RequestCtx *ctx, const uint8_t *value, int32_t length);

/* As KA_OCSP_SetRequestListHashFunc, for the signing hook; KACERT_MemoryErr if there is no memory. */
KARIL_API int32_t KA_OCSP_SetRequestSignFunc(RequestCtx *ctx, KAHookFunc hook, const uint8_t *parameter,
                                             int32_t length);

/*
 * Appends an extension of the program's own to the list of private extensions, which is never written. `oid`:
 * `oidLength` content octets. `value`: `valueLength` octets. Both are copied, and both lengths are above 0. `critical`:
 * stored as it is. Returns 0; KACERT_InvalidItemErr, also if there is no memory.
 */
KARIL_API int32_t KA_OCSP_SetRequestPrivateAttribute(RequestCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                     const uint8_t *value, int32_t valueLength, uint8_t critical);

/*
 * Writes SEQUENCE { tbs, [0] EXPLICIT signature OPTIONAL }, tbs being SEQUENCE { [0] EXPLICIT version, [1] EXPLICIT
 * Name, SEQUENCE OF single request, [2] EXPLICIT extensions OPTIONAL } (RFC 2560 4.1.1). Version and name are always
 * there, the latter as 30 00 if none was set. A signed request needs a hook and an algorithm; each call signs anew.
 * `result`: receives the octets; the caller makes sure that they have room, which for the signature is at most 2,048
 * octets. `resultLength`: receives their number.
 * Returns 0; KACERT_InvalidItemErr, also without a version, and if hook or algorithm of a signed request is missing;
 * the hook's own status; KACERT_InvalidLengthErr; KACERT_MemoryErr; the statuses of KI_EncodeIssuerSuject and
 * KI_EncodeOCSPExtension.
 */
KARIL_API int32_t KA_OCSP_EncodeRequest(RequestCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a request: `length` octets at `der`, all of them one element. The octets are copied. A context decodes once.
 * No signature is checked: what it covers is in the field `tbs`. Elements are taken by their place. The first one is
 * the version if its tag is A0, the second one the name if its tag is A1 and it is not empty, and the one after the
 * single requests, whatever its tag, the extensions. The element after tbs is the signature, whatever its tag.
 * Decoding does not make the version set, which a second encoding asks for: KA_OCSP_GetRequestAttributeInt does.
 * Returns 0; KACERT_InvalidItemErr, also for a length of 0 and a missing element; KACERT_LengthNotEqualErr;
 * KACERT_InvalidLengthErr; KACERT_InvalidTagErr; the statuses of KI_DecodeIssuerSubject and KI_DecodeOCSPExtension;
 * KACERT_MemoryErr. What was decoded before a failure stays.
 */
KARIL_API int32_t KA_OCSP_DecodeRequest(RequestCtx *ctx, const uint8_t *der, uint32_t length);

/*
 * Stores an Int attribute in `*value`. Number and time of a CRL id that were not set, as in any decoded request, leave
 * it as it is. Returns 0; KACERT_InvalidItemErr, also for any other id.
 */
KARIL_API int32_t KA_OCSP_GetRequestAttributeInt(RequestCtx *ctx, int32_t id, int32_t *value);

/*
 * Answers an attribute as KA_OCSP_GetRequestListAttributeChar does. Nothing is stored, with status 0, for an attribute
 * of the name that is not there, and for an extension if the request, or the kind, has none.
 * Returns 0; KACERT_InvalidItemErr, also for an id that cannot be asked for; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_GetRequestAttributeChar(RequestCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength);

/*
 * Answers the single request numbered `index`, from 1, in the same way; a walk by rising numbers takes one step a call.
 * Past the end nothing is stored and the status is 0. Returns 0; KACERT_InvalidItemErr, also for the index 0.
 */
KARIL_API int32_t KA_OCSP_GetRequestSingleRequest(RequestCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                                  uint32_t index);

/* Stores the number of single requests. Returns 0 or KACERT_InvalidItemErr. */
KARIL_API int32_t KA_OCSP_GetRequestSingleRequestNum(const RequestCtx *ctx, uint32_t *count);

/* Does nothing and returns 0. */
KARIL_API int32_t KA_OCSP_GetRequestPrivateAttribute(void);

#ifdef __cplusplus
}
#endif

#endif
