/* karil: the records of a certificate context (RFC 5280 4.1 and 4.2). */
#ifndef KARIL_CERT_TYPES_H
#define KARIL_CERT_TYPES_H

#include "karil/base.h"
#include "karil/name.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The signing hook of certificates: a KAHookFunc that is called twice. In the first call it gets the to-be-signed
 * octets, a null output, a length that holds nothing and a NULL parameter; only its status counts. In the second call
 * it gets the same octets, an area of 512 octets, a length that holds 512, and the context's copy of the parameter
 * octets. It writes the signature there, and its length.
 */
typedef KAHookFunc KACertSignFunc;

/*
 * A validity time. KACert_SetCertAttributeInt sets generalizedValue, and isUtc to 1. Decoding fills the value of the
 * wire's own kind, and sets isUtc to 1 only after a UTCTime was read.
 */
typedef struct CertTime {
    uint32_t isUtc;           /* 1: UTCTime */
    int32_t generalizedValue; /* seconds since 1970 */
    int32_t utcValue;         /* seconds since 1970 */
} CertTime;
KARIL_SIZE_32(CertTime, 12);

/* A CPS qualifier of the certificate policy. */
typedef struct PolicyQualifierNode {
    uint8_t isCps; /* 1 */
    Anybuf uri;
    struct PolicyQualifierNode *next;
} PolicyQualifierNode;
KARIL_SIZE_32(PolicyQualifierNode, 36);

/* The certificate policy, one in a certificate. */
typedef struct PolicyNode {
    uint32_t id;
    Anybuf oid; /* content octets */
    PolicyQualifierNode *cps;
} PolicyNode;
KARIL_SIZE_32(PolicyNode, 36);

/* An extended key usage that the caller defines. */
typedef struct DefinedUsageNode {
    Anybuf dotted; /* dotted text */
    struct DefinedUsageNode *next;
} DefinedUsageNode;
KARIL_SIZE_32(DefinedUsageNode, 32);

/*
 * A distribution point. Its URI slot holds the plain URL if it was set. If it was decoded, the slot holds the whole
 * first GeneralName element, with tag and length.
 */
typedef struct DistributionPointNode {
    uint8_t hasDistributionPoint;
    uint8_t hasFullName;
    GeneralNameRecord fullName;
    struct DistributionPointNode *next;
} DistributionPointNode;
KARIL_SIZE_32(DistributionPointNode, 268);

/* An access description. */
typedef struct AccessNode {
    uint8_t method;         /* 0x88 OCSP, 0x89 CA issuers */
    uint8_t locationChoice; /* 6: uniformResourceIdentifier */
    Anybuf location;
    struct AccessNode *next;
} AccessNode;
KARIL_SIZE_32(AccessNode, 36);

/* An extension that no other field holds. */
typedef struct PrivateExtensionNode {
    struct PrivateExtensionNode *next;
    uint32_t id; /* 52 if it was set, 0 if it was decoded */
    Anybuf oid;  /* content octets */
    uint8_t critical;
    Anybuf value; /* content of the extnValue OCTET STRING */
} PrivateExtensionNode;
KARIL_SIZE_32(PrivateExtensionNode, 68);

typedef struct AuthorityKeyIdExtension {
    uint8_t hasKeyId;
    uint8_t critical;
    Anybuf keyId;
} AuthorityKeyIdExtension;

typedef struct SubjectKeyIdExtension {
    uint8_t critical;
    Anybuf keyId;
} SubjectKeyIdExtension;

/*
 * If it was set, unusedBits of `bits` is the number of unused bits. If it was decoded, that number is the first octet
 * of `bits`, and unusedBits is 0.
 */
typedef struct KeyUsageExtension {
    uint8_t critical;
    Anybuf bits;
} KeyUsageExtension;

typedef struct CertPolicyExtension {
    uint8_t critical;
    PolicyNode *policy;
} CertPolicyExtension;

typedef struct AltNameExtension {
    uint8_t critical;
    GeneralNameRecord names;
} AltNameExtension;

typedef struct BasicConstraintsExtension {
    uint8_t hasPathLen;
    uint8_t critical;
    uint8_t isCa;
    Anybuf pathLen;
} BasicConstraintsExtension;

/* `mask`: 32 bits, little-endian; 0x40 << n is the usage 1.3.6.1.5.5.7.3.(n + 1), n from 0 to 7. */
typedef struct ExtKeyUsageExtension {
    uint8_t critical;
    Anybuf mask;
    DefinedUsageNode *definedOids;
} ExtKeyUsageExtension;

typedef struct CrlDistPointsExtension {
    uint8_t critical;
    DistributionPointNode *first;
    DistributionPointNode *cursor; /* read position of CERTEX_CRLDIST_FULLNAME; set by decoding */
} CrlDistPointsExtension;

typedef struct AuthorityInfoExtension {
    uint8_t critical;
    AccessNode *first;
} AuthorityInfoExtension;

/* The extension block of a certificate context. The first eleven octets are 1 if the extension is there. */
typedef struct CertExtensions {
    uint8_t hasAuthorityKeyId;
    uint8_t hasSubjectKeyId;
    uint8_t hasKeyUsage;
    uint8_t hasCertPolicies;
    uint8_t hasSubjectAltName;
    uint8_t hasIssuerAltName;
    uint8_t hasBasicConstraints;
    uint8_t hasExtKeyUsage;
    uint8_t hasCrlDistPoints;
    uint8_t hasAuthorityInfo;
    uint8_t hasPrivate;
    AuthorityKeyIdExtension authorityKeyId;
    SubjectKeyIdExtension subjectKeyId;
    KeyUsageExtension keyUsage;
    CertPolicyExtension certPolicy;
    AltNameExtension subjectAltName;
    AltNameExtension issuerAltName; /* only its directory name is used */
    BasicConstraintsExtension basicConstraints;
    ExtKeyUsageExtension extKeyUsage;
    CrlDistPointsExtension crlDistPoints;
    AuthorityInfoExtension authorityInfo;
    PrivateExtensionNode *privateExtensions;
} CertExtensions;
KARIL_SIZE_32(CertExtensions, 736);

/*
 * A certificate, built or decoded. KACert_CreateCertEncodeCtx and KACert_CreateCertDecodeCtx make it; the destroy
 * function of either name frees it with all it holds. Every Anybuf is embedded. Those that decoding fills may hold
 * parts of blocks that the context keeps until it is destroyed: see Anybuf.
 *
 * The lists are the context's own: a program may read their nodes, but neither free nor append any. The lists of names
 * are an exception: issuer, subject, and directoryName of the two alternative names. A program may free them with
 * KI_FreeName, after which it sets the head's next to null, and fill them with KI_DecodeIssuerSubject.
 */
typedef struct CertEncodeCtx {
    uint8_t hasVersion;
    uint8_t hasExtensions;                   /* 0: the encoder writes no extensions */
    Anybuf encoded;                          /* the finished certificate; final once filled */
    Anybuf tbs;                              /* the to-be-signed part; filled by decoding */
    AlgorithmRecord outerSignatureAlgorithm; /* after the to-be-signed part */
    Anybuf signature;
    Anybuf issuerText;  /* cache of CERT_ISSUER_DN; not renewed if the name changes */
    Anybuf subjectText; /* cache of CERT_SUBJECT_DN; not renewed if the name changes */
    KACertSignFunc signFunc;
    Anybuf signKey;  /* copy of the hook's parameter; wiped when it is freed */
    int32_t version; /* as on the wire: 2 is v3 */
    Anybuf serialNumber;
    AlgorithmRecord innerSignatureAlgorithm; /* inside the to-be-signed part */
    NameRecord issuer;                       /* head of the list */
    CertTime notBefore;
    CertTime notAfter;
    NameRecord subject; /* head of the list */
    AlgorithmRecord publicKeyAlgorithm;
    Anybuf publicKey; /* content of the BIT STRING */
    CertExtensions extensions;
    Anybuf subjectDer; /* subject as a ready Name element */
    Anybuf issuerDer;  /* issuer as a ready Name element */

    /* The library's own. Where lists that it alone touches end, as far as it knows: */
    PolicyQualifierNode *cpsLast;
    DefinedUsageNode *definedOidsLast;
    DistributionPointNode *crlDistPointsLast;
    AccessNode *authorityInfoLast;
    ListMarks privateExtensionMarks;
    struct KeptOctets *kept; /* what was decoded; records hold parts of it */
} CertEncodeCtx;
KARIL_SIZE_32(CertEncodeCtx, 1316);

/* The same record under the name that decoding uses. */
typedef CertEncodeCtx CertDecodeCtx;

#ifdef __cplusplus
}
#endif

#endif
