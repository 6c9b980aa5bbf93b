/*
 * karil: OCSP responses: building, signing, decoding, queries (RFC 2560 4.2), in the dialect that ocsp.h describes.
 *
 * A list object makes the octets of one single response, and a response object puts any number of those into a
 * response. The same two objects decode. Texts of a name are in the local encoding (code page 936). After a failure a
 * context can still be used or destroyed. A null pointer that the comment does not allow is KACERT_InvalidItemErr.
 *
 * Decoding a response writes a diagnostic file: see KI_DecodeBasicResponse in ocsp.h.
 */
#ifndef KARIL_OCSP_RESPONSE_H
#define KARIL_OCSP_RESPONSE_H

#include "karil/ocsp.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Attribute ids of a response list. "Int": the Int functions; "Get": cannot be set; none of these: the Char functions,
 * both ways. Octets that were not set have the length 0.
 */
enum {
    OCSP_RESPONDERLIST_THISUPDATE = 23,     /* Int: seconds since 1970, not negative; written as a GeneralizedTime */
    OCSP_RESPONDERLIST_NEXTUPDATE = 24,     /* Int: the same; without it none is written */
    OCSP_RESPONDERLIST_SERIALNUMBER = 25,   /* big-endian, without a sign octet */
    OCSP_RESPONDERLIST_ISSUERNAME = 26,     /* octets to be hashed: the issuer's Name element */
    OCSP_RESPONDERLIST_ISSUERHASHNAME = 27, /* Get: once encoded or decoded */
    OCSP_RESPONDERLIST_ISSUERKEY = 28,      /* octets to be hashed: the content of the issuer's key BIT STRING */
    OCSP_RESPONDERLIST_ISSUERHASHKEY = 29,  /* Get: once encoded or decoded */
    OCSP_RESPONDERLIST_HASHALGO = 30,       /* OID content octets */
    OCSP_RESPONDERLIST_PARAM = 31,          /* stored, never written */
    OCSP_RESPONDERLIST_CERTID = 32          /* an identity, which is encoded in the place of hashes and serial number */
};

/* Attribute ids of a response. "Int" as above. Octets that were not set have the length 0. */
enum {
    OCSP_RESPONSE_VERSION = 46,    /* Int: as on the wire, 0 is v1; makes the body be there */
    OCSP_RESPONSE_PRODUCEDAT = 47, /* Int: seconds since 1970; written as a GeneralizedTime */
    OCSP_RESPONSE_STATUS = 48,     /* content octets of the ENUMERATED; must be set */

    /* Who answers. Each of these makes the body be there. */
    OCSP_RESPONSE_RESPONDERID_DN = 49, /* a Name element */
    /*
     * The name's attributes: each call appends one. Get answers the first of its kind. After a Name element they are
     * refused; but the name's flag is raised all the same, and encoding is KACERT_InvalidParamErr from then on.
     */
    OCSP_RESPONSE_RESPONDERID_COUNTRY = 50,
    OCSP_RESPONSE_RESPONDERID_STATEORPROVINCE = 51,
    OCSP_RESPONSE_RESPONDERID_LOCALITY = 52,
    OCSP_RESPONSE_RESPONDERID_ORGANIZATION = 53,
    OCSP_RESPONSE_RESPONDERID_ORGANIZATIONALUNIT = 54,
    OCSP_RESPONSE_RESPONDERID_COMMONNAME = 55,
    OCSP_RESPONSE_RESPONDERID_EMAIL = 56,
    OCSP_RESPONSE_RESPONDERID_POSTALADDRESS = 57,
    OCSP_RESPONSE_RESPONDERID_KEY = 58,     /* octets to be hashed, beside a name */
    OCSP_RESPONSE_RESPONDERID_HASHKEY = 59, /* a finished hash; with both no response is encoded */

    OCSP_RESPONSE_SIGNALGO = 60, /* OID content octets */
    OCSP_RESPONSE_PARAM = 61,    /* the algorithm's parameter: stored, never written */
    OCSP_RESPONSE_CERTS = 62,    /* appends a certificate; Get answers a SEQUENCE of all */
    OCSP_RESPONSETYPE = 63       /* OID content octets; must be set */
};

/* One single response, built or decoded. */
typedef struct ResponseListCtx {
    uint8_t hasNextUpdate;
    uint8_t reserved;
    uint8_t isWhole; /* certId.whole was set or decoded, and is what is encoded */
    OcspCertId certId;
    uint8_t isGood; /* one of the three is 1, once a status was set or decoded */
    uint8_t isRevoked;
    uint8_t isUnknown;
    uint32_t good; /* 0: not used */
    uint8_t hasReason;
    CertTime revokedAt;
    Anybuf reason;       /* content octets of the ENUMERATED */
    Anybuf information;  /* of an unknown status */
    CertTime thisUpdate; /* decoding fills both values alike */
    CertTime nextUpdate;

    struct KeptOctets *kept; /* the library's own: what was decoded; records hold parts of it */
} ResponseListCtx;
KARIL_SIZE_32(ResponseListCtx, 372);

/* A response, built or decoded. */
typedef struct ResponseCtx {
    uint8_t hasBody;
    Anybuf status; /* content octets of the ENUMERATED */
    Anybuf type;   /* OID content octets */
    OcspBasicResponse basic;

    struct KeptOctets *kept; /* the library's own: what was decoded; records hold parts of it */
} ResponseCtx;
KARIL_SIZE_32(ResponseCtx, 932);

/*
 * Make a context and store it in `*out`. The two names do the same. Free it with the destroy function of either name.
 * Return 0, KACERT_MemoryErr or KACERT_InvalidItemErr; after a failure nothing is stored.
 */
KARIL_API int32_t KA_OCSP_CreateEncodeResponseList(ResponseListCtx **out);
KARIL_API int32_t KA_OCSP_CreateDecodeResponseList(ResponseListCtx **out);

/* Free the context with all it holds. The two names do the same. Return 0, or KACERT_InvalidItemErr for null. */
KARIL_API int32_t KA_OCSP_DestroyEncodeResponseList(ResponseListCtx *ctx);
KARIL_API int32_t KA_OCSP_DestroyDecodeResponseList(ResponseListCtx *ctx);

/*
 * Sets one attribute to a copy of `length` octets at `value`, in the place of an earlier one. Returns 0;
 * KACERT_InvalidItemErr, also for a length below 1 and an id that cannot be set here; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_SetResponseListAttributeChar(ResponseListCtx *ctx, int32_t id, const uint8_t *value,
                                                       int32_t length);

/* Sets an Int attribute. Returns 0; KACERT_InvalidItemErr, also for a negative value and for any other id. */
KARIL_API int32_t KA_OCSP_SetResponseListAttributeInt(ResponseListCtx *ctx, int32_t id, int32_t value);

/*
 * Stores the hash hook and a copy of `length` octets at `parameter`. With a length below 1 the hook alone is stored,
 * and an earlier copy stays. ocsp.h tells how the hook is called. Returns 0, also for a null context or hook, with
 * nothing stored; KACERT_InvalidItemErr for a null `parameter` with a length above 0; KACERT_InvalidParamErr if there
 * is no memory.
 */
KARIL_API int32_t KA_OCSP_SetResponseListHashFunc(ResponseListCtx *ctx, KAHookFunc hook, const uint8_t *parameter,
                                                  int32_t length);

/* Makes the status good. Returns 0 or KACERT_InvalidItemErr. */
KARIL_API int32_t KA_OCSP_SetResponseList_CertStatusGood(ResponseListCtx *ctx);

/*
 * Makes the status revoked. `time`: seconds since 1970, not 0. `unused`: any number. `reason`: the ENUMERATED's content
 * octets (RFC 5280 5.3.1), `reasonLength` of them, which are copied; null or a length below 1 leaves an earlier reason
 * as it is. Returns 0; KACERT_InvalidItemErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_SetResponseList_CertStatusRevoke(ResponseListCtx *ctx, int32_t time, int32_t unused,
                                                           const uint8_t *reason, int32_t reasonLength);

/*
 * Makes the status unknown, with a copy of `length` octets of information, at least one. Returns 0;
 * KACERT_InvalidItemErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_SetResponseList_CertStatusUnInfo(ResponseListCtx *ctx, const uint8_t *information,
                                                           int32_t length);

/*
 * Writes one single response, SEQUENCE { identity, status, thisUpdate, [0] EXPLICIT nextUpdate OPTIONAL } (RFC 2560
 * 4.2.1 SingleResponse). The identity is that of a single request, or OCSP_RESPONDERLIST_CERTID as it stands. The
 * status is 80 00 for good, A1 { time, OCTET STRING { ENUMERATED reason } OPTIONAL } for revoked, and 82 with the
 * information for unknown; without one there is no element. Nothing is kept for a later call but the digests. `result`:
 * receives the octets; the caller makes sure that they have room. `resultLength`: receives their number. Returns 0. If
 * there is no memory for the element of a good or unknown status, it returns 0 as well, and stores the length 0.
 * KACERT_InvalidItemErr, also if no identity was set and hook, name or key is missing; KACERT_InvalidParamErr, after
 * both digests, if the serial number is; the hook's own status; KACERT_InvalidTimeErr for a negative time;
 * KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_EncodeResponseList(ResponseListCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes one single response: `length` octets at `der`, all of them one element. The octets are copied. A context
 * decodes once. A revoked status is always refused, with KACERT_InvalidTagErr: the identity and its fields can be asked
 * for all the same. A status of another number than 0 to 2 sets nothing. An element after thisUpdate is nextUpdate if
 * its tag is A0, and is then taken for a GeneralizedTime.
 * Returns 0; KACERT_InvalidItemErr, also for a length of 0 and a missing element; KACERT_LengthNotEqualErr;
 * KACERT_InvalidLengthErr; KACERT_InvalidTagErr; KACERT_MemoryErr. What was decoded before a failure stays.
 */
KARIL_API int32_t KA_OCSP_DecodeResponseList(ResponseListCtx *ctx, const uint8_t *der, uint32_t length);

/*
 * Answers an attribute: its octets go to `result`, which must have room and cannot be null, their number to
 * `*resultLength`. Returns 0; KACERT_InvalidItemErr, also for an id of another object.
 */
KARIL_API int32_t KA_OCSP_GetResponseListAttributeChar(ResponseListCtx *ctx, int32_t id, uint8_t *result,
                                                       uint32_t *resultLength);

/*
 * Stores an Int attribute in `*value`. The call changes the context: what it answers will be written as a
 * GeneralizedTime, and after OCSP_RESPONDERLIST_NEXTUPDATE there is a nextUpdate, of 0 if none was there.
 * Returns 0; KACERT_InvalidItemErr, also for any other id.
 */
KARIL_API int32_t KA_OCSP_GetResponseListAttributeInt(ResponseListCtx *ctx, int32_t id, int32_t *value);

/*
 * Stores the status in `*status`: 1 good, 2 revoked, 3 unknown; nothing if none was set. A revoked one stores its time,
 * and its reason if there is one; an unknown one its information. The areas must have room. Pointers that the status
 * does not need are not looked at, and may be null.
 * Returns 0; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_OCSP_GetResponseListCertSatus(ResponseListCtx *ctx, int32_t *status, int32_t *revokedAt,
                                                   uint8_t *reason, uint32_t *reasonLength, uint8_t *information,
                                                   uint32_t *informationLength);

/*
 * Make a context and store it in `*out`. The two names do the same. Free it with the destroy function of either name.
 * Return 0, also if there is no memory: `*out` is null then. KACERT_InvalidItemErr if `out` is null.
 */
KARIL_API int32_t KA_OCSP_CreateEncodeResponse(ResponseCtx **out);
KARIL_API int32_t KA_OCSP_CreateDecodeResponse(ResponseCtx **out);

/* Free the context with all it holds. The two names do the same. Return 0, or KACERT_InvalidItemErr for null. */
KARIL_API int32_t KA_OCSP_DestoryEncodeResponse(ResponseCtx *ctx);
KARIL_API int32_t KA_OCSP_DestoryDecodeResponse(ResponseCtx *ctx);

/* Sets an Int attribute. Returns 0; KACERT_InvalidItemErr, also for any other id. */
KARIL_API int32_t KA_OCSP_SetResponseAttributeInt(ResponseCtx *ctx, int32_t id, int32_t value);

/*
 * Sets one attribute to a copy of `length` octets at `value`, or appends it, as the comment of the id says.
 * Returns 0; KACERT_AttributeAlreadySet for an attribute of the name after OCSP_RESPONSE_RESPONDERID_DN;
 * KACERT_InvalidItemErr, also for a length below 1 and an id that cannot be set here; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_SetResponseAttributeChar(ResponseCtx *ctx, int32_t id, const uint8_t *value, int32_t length);

/*
 * Appends a copy of one single response, `length` octets at `value`, as KA_OCSP_EncodeResponseList writes them.
 * Returns 0, also for a null pointer or a length below 1, with nothing done; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_SetResponseSingleResponse(ResponseCtx *ctx, const uint8_t *value, int32_t length);

/*
 * Store a hook, which must not be null, and a copy of `length` octets at `parameter`. With a length below 1 the hook
 * alone is stored, and an earlier copy stays. The first signs, the second hashes OCSP_RESPONSE_RESPONDERID_KEY. ocsp.h
 * tells how they are called.
 * Return 0; KACERT_InvalidItemErr, also for a null `parameter` with a length above 0; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_SetResponseSignFunc(ResponseCtx *ctx, KAHookFunc hook, const uint8_t *parameter,
                                              int32_t length);
KARIL_API int32_t KA_OCSP_SetResponseHashFunc(ResponseCtx *ctx, KAHookFunc hook, const uint8_t *parameter,
                                              int32_t length);

/* Do nothing and return 0. */
KARIL_API int32_t KA_OCSP_SetResponsePrivateAttribute(void);
KARIL_API int32_t KA_OCSP_GetResponsePrivateAttribute(void);

/*
 * Writes SEQUENCE { status ENUMERATED, [0] EXPLICIT SEQUENCE { type OBJECT IDENTIFIER, OCTET STRING { basic response }
 * } } (RFC 2560 4.2.1 OCSPResponse). A response with a status alone cannot be encoded. Each call runs the hooks anew.
 * `result`: receives the octets; the caller makes sure that they have room, which for the signature is at most 2,048
 * octets. `resultLength`: receives their number.
 * Returns 0; KACERT_InvalidItemErr, also if status, body, type or signing hook is missing, and if
 * KI_EncodeBasicResponse has no result; the other statuses of that function.
 */
KARIL_API int32_t KA_OCSP_EncodeResponse(ResponseCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a response: `length` octets at `der`, all of them one element. The octets are copied. A context decodes once.
 * A response with a status alone has no body. No signature is checked: what it covers is in the field
 * `basic.signedOctets`. A body is written to the diagnostic file: see KI_DecodeBasicResponse.
 * Returns 0, also if there is no memory for the copy, with nothing decoded; KACERT_InvalidItemErr, also for a length of
 * 0, a missing element and a body with a tag other than A0; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr;
 * KACERT_InvalidTagErr; the statuses of KI_DecodeBasicResponse; KACERT_MemoryErr. What was decoded before a failure
 * stays.
 */
KARIL_API int32_t KA_OCSP_DecodeResponse(ResponseCtx *ctx, const uint8_t *der, uint32_t length);

/*
 * Stores an Int attribute in `*value`; without a body it stays as it is. Returns 0; KACERT_InvalidItemErr, also for any
 * other id.
 */
KARIL_API int32_t KA_OCSP_GetResponseAttributeInt(const ResponseCtx *ctx, int32_t id, int32_t *value);

/*
 * Answers an attribute as KA_OCSP_GetResponseListAttributeChar does. Nothing is stored, with status 0, for an attribute
 * of the name that is not there. Returns 0; KACERT_InvalidItemErr, also for an id that cannot be asked for;
 * KACERT_MemoryErr.
 */
KARIL_API int32_t KA_OCSP_GetResponseAttributeChar(ResponseCtx *ctx, int32_t id, uint8_t *result,
                                                   uint32_t *resultLength);

/*
 * Answers the last single response in the same way, whatever the index: an index above their number stores nothing,
 * with status 0, and so does any index if there is none. Returns 0 or KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_OCSP_GetResponseSingleResponse(const ResponseCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                                    uint32_t index);

#ifdef __cplusplus
}
#endif

#endif
