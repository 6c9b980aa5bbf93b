/*
 * karil: what OCSP requests and responses are made of: certificate identities, extensions, responder identities, the
 * signed parts of both messages.
 *
 * The messages are in a dialect of their own, close to RFC 2560 (4.1, 4.2). It differs in these points:
 * - An algorithm is a bare OBJECT IDENTIFIER, without AlgorithmIdentifier and parameters.
 * - A signature is an OCTET STRING, and covers what stands in front of it.
 * - ResponderID is a SEQUENCE of a Name and a key hash, of which one may be missing, without the tags [1] and [2].
 * - An extension has no critical flag. Its value stands without an OCTET STRING around it, but for nonce and CRL id.
 * - Extensions of a response have no tag. They are always there, if only as 30 00.
 * - A version is always written.
 * - Times have two digits for the year, local time under the letter Z, as all of the library's.
 *
 * Hooks: a hash hook writes at most 64 octets, a signing hook at most 2,048, into an area that has more room. The
 * length variable holds that bound on entry. Each call gets a fresh copy of the parameter's octets, which is wiped and
 * freed after the call, or null if there is no parameter. More octets than the bound are KACERT_InvalidLengthErr.
 *
 * A record is zeroed before its first use (KI_InitOCSPExtension does it for OcspExtension). The contexts of
 * ocsp_request.h and ocsp_response.h free all their records hold. What a program decodes into records of its own it
 * frees by itself: octets with KI_ClearAnybuf, names with KI_FreeName, the lists of Anybuf after their head with
 * KI_FreeAnybuf, extensions with KI_FreeOCSPExtension. In a context all lists but those of names are the context's own:
 * a program may read them, but neither free nor append nodes.
 *
 * A record or context belongs to one thread at a time, Get calls included.
 */
#ifndef KARIL_OCSP_H
#define KARIL_OCSP_H

#include "karil/base.h"
#include "karil/cert_types.h"
#include "karil/name.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How a certificate is named (RFC 2560 4.1.1 CertID): what its encoder hashes, and what it consists of. */
typedef struct OcspCertId {
    Anybuf issuerName;             /* octets to be hashed: the issuer's Name element */
    Anybuf issuerKey;              /* octets to be hashed: the content of the issuer's key BIT STRING */
    AlgorithmRecord hashAlgorithm; /* OID content octets */
    Anybuf parameter;              /* of the algorithm: stored, never written */
    KAHookFunc hashFunc;
    Anybuf hashParameter; /* copy of the hook's parameter; wiped when it is freed */
    Anybuf hashedName;
    Anybuf hashedKey;
    Anybuf serialNumber; /* big-endian, without a sign octet */
    Anybuf whole;        /* the identity as one element: what was set or decoded */
} OcspCertId;
KARIL_SIZE_32(OcspCertId, 260);

/* An algorithm in a list. */
typedef struct OcspAlgorithmNode {
    AlgorithmRecord algorithm;
    struct OcspAlgorithmNode *next;
} OcspAlgorithmNode;
KARIL_SIZE_32(OcspAlgorithmNode, 36);

/* An extension of a program's own. */
typedef struct OcspPrivateNode {
    struct OcspPrivateNode *next;
    uint32_t id; /* 1 */
    Anybuf oid;  /* content octets */
    uint8_t critical;
    Anybuf value;
} OcspPrivateNode;
KARIL_SIZE_32(OcspPrivateNode, 68);

/* The CRL id extension (RFC 2560 4.4.2). */
typedef struct OcspCrlId {
    uint8_t hasUrl;
    uint8_t hasNumber; /* raised by KA_OCSP_SetRequestAttributeInt alone */
    uint8_t hasTime;   /* the same */
    AlgorithmRecord type;
    Anybuf url;
    uint32_t number;
    uint32_t isUtc; /* 0: the time is a GeneralizedTime */
    int32_t time;   /* seconds since 1970 */
} OcspCrlId;
KARIL_SIZE_32(OcspCrlId, 76);

/* The extensions of a message, a slot for each kind (RFC 2560 4.4). A type is the OID content octets. */
typedef struct OcspExtension {
    uint8_t hasNonce;
    uint8_t hasCrlId;
    uint8_t hasAcceptable; /* acceptable responses */
    uint8_t hasArchiveCutoff;
    uint8_t hasCrlEntry;
    uint8_t hasServiceLocator;
    uint8_t hasPrivate;
    AlgorithmRecord nonceType;
    Anybuf nonce;
    OcspCrlId crlId;
    AlgorithmRecord acceptableType;
    OcspAlgorithmNode *acceptable;
    AlgorithmRecord archiveCutoffType;
    CertTime archiveCutoff; /* a decoder fills both values alike */
    AlgorithmRecord serviceLocatorType;
    AlgorithmRecord crlEntryType;
    OcspPrivateNode *privates; /* never written */
    uint32_t privateCount;

    /* The library's own: where lists end, as far as it knows. */
    OcspAlgorithmNode *acceptableLast;
    OcspPrivateNode *privatesLast;
} OcspExtension;
KARIL_SIZE_32(OcspExtension, 304);

/* Who answers: SEQUENCE { Name OPTIONAL, keyHash OCTET STRING OPTIONAL }. */
typedef struct ResponseId {
    uint8_t hasName;    /* raised by every attribute of the name, and by decoding a name */
    uint8_t hasKey;     /* there is a key to be hashed */
    uint8_t hasKeyHash; /* there is a finished hash */
    uint8_t hasDerName; /* there is a whole Name */
    KAHookFunc hashFunc;
    Anybuf hashParameter; /* copy of the hook's parameter; wiped when it is freed */
    NameRecord name;      /* head of the list */
    Anybuf derName;       /* a Name element */
    Anybuf keyHash;       /* encoding with a key to be hashed stores the digest here */
    Anybuf key;
} ResponseId;
KARIL_SIZE_32(ResponseId, 188);

/* A signature, or what is needed to make one. */
typedef struct OcspSignature {
    uint8_t isSigned;
    AlgorithmRecord algorithm;
    Anybuf parameter; /* of the algorithm: stored, never written */
    KAHookFunc signFunc;
    Anybuf signParameter; /* copy of the hook's parameter; wiped when it is freed */
    Anybuf value;         /* the signature's octets */
    Anybuf certs;         /* head, without octets of its own: its next is the first certificate */
    uint8_t hasCerts;
    Anybuf encoded; /* the element that KI_EncodeOCSPSignature wrote */

    ListMarks certMarks; /* the library's own */
} OcspSignature;
KARIL_SIZE_32(OcspSignature, 196);

/* What a responder signs: SEQUENCE { [0] version, ResponseId, producedAt, SEQUENCE OF response, extensions }. */
typedef struct OcspResponseData {
    int32_t version;
    ResponseId responder;
    CertTime producedAt;
    uint32_t responseCount;
    Anybuf responses; /* head, without octets of its own: its next is the first single response */
    OcspExtension extensions;

    ListMarks responseMarks; /* the library's own */
} OcspResponseData;
KARIL_SIZE_32(OcspResponseData, 552);

/*
 * The signed answer: SEQUENCE { response data, algorithm OBJECT IDENTIFIER, signature OCTET STRING, [0] EXPLICIT
 * SEQUENCE OF certificate OPTIONAL }. The first four fields are not used: hook, algorithm and value are those of
 * `signature`.
 */
typedef struct OcspBasicResponse {
    KAHookFunc signFunc;
    Anybuf signParameter;
    AlgorithmRecord signatureAlgorithm;
    Anybuf signatureValue;
    OcspResponseData data;
    OcspSignature signature;
    Anybuf signedOctets; /* what the signature covers; set by encoding and by decoding */
} OcspBasicResponse;
KARIL_SIZE_32(OcspBasicResponse, 868);

/* A certificate's status as KI_DecodeCertStatus reads it; one of the first three is 1. */
typedef struct OcspCertStatus {
    uint8_t isGood;
    uint8_t isRevoked;
    uint8_t isUnknown;
    uint8_t hasReason;
    CertTime revokedAt;
    Anybuf reason;      /* an ENUMERATED element */
    Anybuf information; /* of an unknown status */
} OcspCertStatus;
KARIL_SIZE_32(OcspCertStatus, 72);

/*
 * Zeroes the block, without freeing anything, and sets the id of its types to 1. Returns 0, or KACERT_InvalidItemErr if
 * it is null.
 */
KARIL_API int32_t KI_InitOCSPExtension(OcspExtension *extensions);

/* Frees all that the block holds and zeroes it. Returns 0, or KACERT_InvalidItemErr if it is null. */
KARIL_API int32_t KI_FreeOCSPExtension(OcspExtension *extensions);

/*
 * Writes the SEQUENCE of the extensions whose flags are set and stores it in `*out`; free it with KI_FreeAnybuf. The
 * order is fixed: acceptable responses { OID, SEQUENCE OF OID }, archive cutoff { OID, time }, CRL id { OID, OCTET
 * STRING }, nonce { OID, OCTET STRING }. Without any the result is 30 00. Private extensions are not written.
 * `extensions`: null is status 0 with nothing stored.
 * Returns 0; KACERT_InvalidItemErr if `out` is null, the type of archive cutoff or CRL id is missing, the CRL id has no
 * URL or the nonce no octets; KACERT_InvalidTimeErr for a negative time; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_EncodeOCSPExtension(const OcspExtension *extensions, Anybuf **out);

/*
 * Reads a SEQUENCE of extensions into the block, and raises the flag of each kind that is found. The element fills the
 * record. An extension is of the first kind, in the order nonce, CRL id, acceptable responses, archive cutoff, whose
 * identifier begins with the octets that were read: an identifier that is cut short is a nonce, and so is an empty one.
 * All others are skipped. The value of acceptable responses is read as an OCTET STRING around the list, so
 * that the encoder's own list is KACERT_InvalidTagErr.
 * Returns 0; KACERT_InvalidItemErr if a pointer is null or a value is missing; KACERT_InvalidTagErr, always for a CRL
 * id with a time; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_MemoryErr. What was read before a failure
 * stays.
 */
KARIL_API int32_t KI_DecodeOCSPExtension(OcspExtension *extensions, const Anybuf *source);

/*
 * Writes SEQUENCE { OID, OCTET STRING { [0] EXPLICIT IA5String } } and stores it in `*out`; free it with KI_FreeAnybuf.
 * Number and time are not on the wire. Statuses as of KI_EncodeOCSPExtension.
 */
KARIL_API int32_t KI_EncodeOCSPCrlId(const OcspCrlId *crlId, Anybuf **out);

/*
 * Reads such an element. The OCTET STRING holds one of [0] with the URL, whose flag is raised, [1] with the number,
 * which raises no flag, and [2], which is KACERT_InvalidTagErr. Statuses as of KI_DecodeOCSPExtension; any other tag is
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KI_DecodeOCSPCrlId(OcspCrlId *crlId, const Anybuf *source);

/*
 * Writes the responder's identity into `out`, an initialised record; octets that it held are freed. The name is the
 * whole Name if there is one, else the list. With a key to be hashed the hook hashes it, and the digest is stored as
 * key hash. Returns 0; KACERT_InvalidParamErr if both name flags are set, as after decoding a name;
 * KACERT_InvalidItemErr for a null pointer, if there is neither name nor finished hash, if there are both a key and a
 * finished hash, or if the hook is missing; the hook's own status; KACERT_InvalidLengthErr; the statuses of
 * KI_EncodeIssuerSuject; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_EncodeResponseId(ResponseId *responder, Anybuf *out);

/*
 * Reads a responder's identity. If the first element is a SEQUENCE, it is the name: its attributes are appended to the
 * list, and both name flags are raised. An element after it, or a first element that is no SEQUENCE, is the key hash,
 * whose flag is raised.
 * Returns 0; KACERT_InvalidItemErr if a pointer is null or there is no element; KACERT_InvalidTagErr;
 * KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; the statuses of KI_DecodeIssuerSubject; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_DecodeResponseId(ResponseId *responder, const Anybuf *source);

/*
 * Writes the response data into `out`, an initialised record; octets that it held are freed. The version is written as
 * it stands, the time as a GeneralizedTime if isUtc is 0, else as a UTCTime.
 * Returns 0, also if there is no memory for the result, which is then empty; KACERT_InvalidItemErr; KACERT_MemoryErr;
 * KACERT_InvalidTimeErr; the statuses of KI_EncodeResponseId and KI_EncodeOCSPExtension.
 */
KARIL_API int32_t KI_EncodeResponseData(OcspResponseData *data, Anybuf *out);

/*
 * Reads response data. The list of single responses and its count are replaced; the tag of the version is not looked
 * at; each kind of time has its own value. The extensions may be missing. Returns 0; KACERT_InvalidItemErr if a pointer
 * is null or an element is missing; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; the
 * statuses of the readers of what is inside; KACERT_MemoryErr. What was read before a failure stays.
 */
KARIL_API int32_t KI_DecodeResponseData(OcspResponseData *data, const Anybuf *source);

/*
 * Signs the response data with the hook of `signature` and writes the whole; free it with KI_FreeAnybuf. Certificates
 * are written if there are any. An algorithm that was not set is written as 06 00.
 * Returns 0. If the hook is missing, or there is no memory for the signed octets or for the copy of the hook's
 * parameter, `*out` becomes null and the status is 0 as well. KACERT_InvalidItemErr; the hook's own status;
 * KACERT_InvalidLengthErr; KACERT_MemoryErr; the statuses of KI_EncodeResponseData.
 */
KARIL_API int32_t KI_EncodeBasicResponse(OcspBasicResponse *response, Anybuf **out);

/*
 * Reads a signed answer. No signature is checked: the signature's octets, its algorithm and the octets that it covers
 * are in the record. After the signature one more element is read if its tag is A0, as certificates.
 *
 * The diagnostic file: before anything is read, the octets of `source` are written to the file
 * "ka_ocsp_basic_response.der" in the working directory, in the place of what it held. Nothing tells whether that
 * worked. The file is made with mode 0600; a symbolic link, and anything that is no regular file, is left alone. A
 * library that is built with the CMake option KARIL_DIAGNOSTIC_FILE=OFF writes no file.
 *
 * Returns 0; KACERT_InvalidItemErr if a pointer is null or an element is missing; the statuses of
 * KI_DecodeResponseData; KACERT_MemoryErr. What was read before a failure stays.
 */
KARIL_API int32_t KI_DecodeBasicResponse(OcspBasicResponse *response, const Anybuf *source);

/*
 * Signs `octets` with the hook of the record and writes SEQUENCE { algorithm OBJECT IDENTIFIER, signature OCTET STRING,
 * [0] EXPLICIT SEQUENCE OF certificate OPTIONAL } into its field `encoded`.
 * Returns 0; KACERT_InvalidItemErr for a null pointer, and if hook or algorithm is missing; the hook's own status;
 * KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_EncodeOCSPSignature(OcspSignature *signature, const Anybuf *octets);

/* Returns KACERT_InvalidItemErr always: a status is written by KA_OCSP_EncodeResponseList. */
KARIL_API int32_t KI_EncodeCertStatus(void);

/*
 * Reads SEQUENCE { status }: [0] is good, whatever it holds. [1] is revoked: the time, GeneralizedTime or UTCTime, and
 * after it an explicitly tagged reason or nothing, with or without a SEQUENCE around the two. What the reason's tag
 * holds is stored as the content of an ENUMERATED. [2] holds the information of an unknown status in an OCTET STRING.
 * Any other number sets nothing.
 * Returns 0; KACERT_InvalidItemErr if a pointer is null, or if the status, or what [1] or [2] holds, is missing;
 * KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_DecodeCertStatus(OcspCertStatus *status, const Anybuf *source);

#ifdef __cplusplus
}
#endif

#endif
