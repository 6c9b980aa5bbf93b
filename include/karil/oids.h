/*
 * karil: object identifiers by name, as the content octets of X.690 8.19 that Set functions take and Get functions
 * answer: KACert_SetCertAttributeChar(ctx, CERT_PUBLICKEY_ALGORITHM, KARIL_OID_RSA_ENCRYPTION,
 * sizeof KARIL_OID_RSA_ENCRYPTION). Others: KACert_GetOIDValue of oid.h.
 */
#ifndef KARIL_OIDS_H
#define KARIL_OIDS_H

#include <stdint.h>

/* How they begin. */
#define KARIL_ARC_PKCS1 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01                  /* 1.2.840.113549.1.1 */
#define KARIL_ARC_PKCS7 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07                  /* 1.2.840.113549.1.7 */
#define KARIL_ARC_PKCS9 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09                  /* 1.2.840.113549.1.9 */
#define KARIL_ARC_PKCS12_PBE 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01       /* 1.2.840.113549.1.12.1 */
#define KARIL_ARC_PKCS12_BAG 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x0A, 0x01 /* 1.2.840.113549.1.12.10.1 */
#define KARIL_ARC_RSA_DIGEST 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x02                   /* 1.2.840.113549.2 */
#define KARIL_ARC_RSA_CIPHER 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x03                   /* 1.2.840.113549.3 */
#define KARIL_ARC_NIST 0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04                         /* 2.16.840.1.101.3.4 */
#define KARIL_ARC_X962 0x2A, 0x86, 0x48, 0xCE, 0x3D                                     /* 1.2.840.10045 */
#define KARIL_ARC_EXTENSION 0x55, 0x1D                                                  /* 2.5.29 */

/* Keys and signatures (RFC 8017 appendix A.2, RFC 5480) */
static const uint8_t KARIL_OID_RSA_ENCRYPTION[] = {KARIL_ARC_PKCS1, 1};         /* 1.2.840.113549.1.1.1 */
static const uint8_t KARIL_OID_MD2_WITH_RSA[] = {KARIL_ARC_PKCS1, 2};           /* 1.2.840.113549.1.1.2 */
static const uint8_t KARIL_OID_MD5_WITH_RSA[] = {KARIL_ARC_PKCS1, 4};           /* 1.2.840.113549.1.1.4 */
static const uint8_t KARIL_OID_SHA1_WITH_RSA[] = {KARIL_ARC_PKCS1, 5};          /* 1.2.840.113549.1.1.5 */
static const uint8_t KARIL_OID_SHA256_WITH_RSA[] = {KARIL_ARC_PKCS1, 11};       /* 1.2.840.113549.1.1.11 */
static const uint8_t KARIL_OID_SHA384_WITH_RSA[] = {KARIL_ARC_PKCS1, 12};       /* 1.2.840.113549.1.1.12 */
static const uint8_t KARIL_OID_SHA512_WITH_RSA[] = {KARIL_ARC_PKCS1, 13};       /* 1.2.840.113549.1.1.13 */
static const uint8_t KARIL_OID_EC_PUBLIC_KEY[] = {KARIL_ARC_X962, 2, 1};        /* 1.2.840.10045.2.1 */
static const uint8_t KARIL_OID_ECDSA_WITH_SHA256[] = {KARIL_ARC_X962, 4, 3, 2}; /* 1.2.840.10045.4.3.2 */

/* Digests (RFC 8017 appendix B.1) */
static const uint8_t KARIL_OID_MD2[] = {KARIL_ARC_RSA_DIGEST, 2};       /* 1.2.840.113549.2.2 */
static const uint8_t KARIL_OID_MD5[] = {KARIL_ARC_RSA_DIGEST, 5};       /* 1.2.840.113549.2.5 */
static const uint8_t KARIL_OID_SHA1[] = {0x2B, 0x0E, 0x03, 0x02, 0x1A}; /* 1.3.14.3.2.26 */
static const uint8_t KARIL_OID_SHA256[] = {KARIL_ARC_NIST, 2, 1};       /* 2.16.840.1.101.3.4.2.1 */
static const uint8_t KARIL_OID_SHA384[] = {KARIL_ARC_NIST, 2, 2};       /* 2.16.840.1.101.3.4.2.2 */
static const uint8_t KARIL_OID_SHA512[] = {KARIL_ARC_NIST, 2, 3};       /* 2.16.840.1.101.3.4.2.3 */

/* Ciphers (RFC 8018 appendix B.2, NIST) */
static const uint8_t KARIL_OID_RC2_CBC[] = {KARIL_ARC_RSA_CIPHER, 2};      /* 1.2.840.113549.3.2 */
static const uint8_t KARIL_OID_RC4[] = {KARIL_ARC_RSA_CIPHER, 4};          /* 1.2.840.113549.3.4 */
static const uint8_t KARIL_OID_DES_EDE3_CBC[] = {KARIL_ARC_RSA_CIPHER, 7}; /* 1.2.840.113549.3.7 */
static const uint8_t KARIL_OID_AES128_CBC[] = {KARIL_ARC_NIST, 1, 2};      /* 2.16.840.1.101.3.4.1.2 */
static const uint8_t KARIL_OID_AES256_CBC[] = {KARIL_ARC_NIST, 1, 42};     /* 2.16.840.1.101.3.4.1.42 */

/* Password-based encryption (RFC 7292 appendix C) */
static const uint8_t KARIL_OID_PBE_SHA1_RC4_128[] = {KARIL_ARC_PKCS12_PBE, 1}; /* 1.2.840.113549.1.12.1.1 */
static const uint8_t KARIL_OID_PBE_SHA1_RC4_40[] = {KARIL_ARC_PKCS12_PBE, 2};  /* 1.2.840.113549.1.12.1.2 */
static const uint8_t KARIL_OID_PBE_SHA1_3DES[] = {KARIL_ARC_PKCS12_PBE, 3};    /* 1.2.840.113549.1.12.1.3 */
static const uint8_t KARIL_OID_PBE_SHA1_2DES[] = {KARIL_ARC_PKCS12_PBE, 4};    /* 1.2.840.113549.1.12.1.4 */
static const uint8_t KARIL_OID_PBE_SHA1_RC2_128[] = {KARIL_ARC_PKCS12_PBE, 5}; /* 1.2.840.113549.1.12.1.5 */
static const uint8_t KARIL_OID_PBE_SHA1_RC2_40[] = {KARIL_ARC_PKCS12_PBE, 6};  /* 1.2.840.113549.1.12.1.6 */

/* Content types (RFC 2315 14) */
static const uint8_t KARIL_OID_DATA[] = {KARIL_ARC_PKCS7, 1};                      /* 1.2.840.113549.1.7.1 */
static const uint8_t KARIL_OID_SIGNED_DATA[] = {KARIL_ARC_PKCS7, 2};               /* 1.2.840.113549.1.7.2 */
static const uint8_t KARIL_OID_ENVELOPED_DATA[] = {KARIL_ARC_PKCS7, 3};            /* 1.2.840.113549.1.7.3 */
static const uint8_t KARIL_OID_SIGNED_AND_ENVELOPED_DATA[] = {KARIL_ARC_PKCS7, 4}; /* 1.2.840.113549.1.7.4 */
static const uint8_t KARIL_OID_DIGESTED_DATA[] = {KARIL_ARC_PKCS7, 5};             /* 1.2.840.113549.1.7.5 */
static const uint8_t KARIL_OID_ENCRYPTED_DATA[] = {KARIL_ARC_PKCS7, 6};            /* 1.2.840.113549.1.7.6 */

/* Bags and their attributes (RFC 7292 appendix D) */
static const uint8_t KARIL_OID_KEY_BAG[] = {KARIL_ARC_PKCS12_BAG, 1};           /* 1.2.840.113549.1.12.10.1.1 */
static const uint8_t KARIL_OID_SHROUDED_KEY_BAG[] = {KARIL_ARC_PKCS12_BAG, 2};  /* 1.2.840.113549.1.12.10.1.2 */
static const uint8_t KARIL_OID_CERT_BAG[] = {KARIL_ARC_PKCS12_BAG, 3};          /* 1.2.840.113549.1.12.10.1.3 */
static const uint8_t KARIL_OID_CRL_BAG[] = {KARIL_ARC_PKCS12_BAG, 4};           /* 1.2.840.113549.1.12.10.1.4 */
static const uint8_t KARIL_OID_SECRET_BAG[] = {KARIL_ARC_PKCS12_BAG, 5};        /* 1.2.840.113549.1.12.10.1.5 */
static const uint8_t KARIL_OID_SAFE_CONTENTS_BAG[] = {KARIL_ARC_PKCS12_BAG, 6}; /* 1.2.840.113549.1.12.10.1.6 */
static const uint8_t KARIL_OID_X509_CERTIFICATE[] = {KARIL_ARC_PKCS9, 22, 1};   /* 1.2.840.113549.1.9.22.1 */
static const uint8_t KARIL_OID_X509_CRL[] = {KARIL_ARC_PKCS9, 23, 1};           /* 1.2.840.113549.1.9.23.1 */
static const uint8_t KARIL_OID_FRIENDLY_NAME[] = {KARIL_ARC_PKCS9, 20};         /* 1.2.840.113549.1.9.20 */
static const uint8_t KARIL_OID_LOCAL_KEY_ID[] = {KARIL_ARC_PKCS9, 21};          /* 1.2.840.113549.1.9.21 */

/* Attributes of signers and requests (RFC 2985 5) */
static const uint8_t KARIL_OID_CONTENT_TYPE[] = {KARIL_ARC_PKCS9, 3};       /* 1.2.840.113549.1.9.3 */
static const uint8_t KARIL_OID_MESSAGE_DIGEST[] = {KARIL_ARC_PKCS9, 4};     /* 1.2.840.113549.1.9.4 */
static const uint8_t KARIL_OID_SIGNING_TIME[] = {KARIL_ARC_PKCS9, 5};       /* 1.2.840.113549.1.9.5 */
static const uint8_t KARIL_OID_CHALLENGE_PASSWORD[] = {KARIL_ARC_PKCS9, 7}; /* 1.2.840.113549.1.9.7 */
static const uint8_t KARIL_OID_EXTENSION_REQUEST[] = {KARIL_ARC_PKCS9, 14}; /* 1.2.840.113549.1.9.14 */

/* Extensions (RFC 5280 4.2 and 5.2) */
static const uint8_t KARIL_OID_SUBJECT_KEY_ID[] = {KARIL_ARC_EXTENSION, 14};    /* 2.5.29.14 */
static const uint8_t KARIL_OID_KEY_USAGE[] = {KARIL_ARC_EXTENSION, 15};         /* 2.5.29.15 */
static const uint8_t KARIL_OID_SUBJECT_ALT_NAME[] = {KARIL_ARC_EXTENSION, 17};  /* 2.5.29.17 */
static const uint8_t KARIL_OID_ISSUER_ALT_NAME[] = {KARIL_ARC_EXTENSION, 18};   /* 2.5.29.18 */
static const uint8_t KARIL_OID_BASIC_CONSTRAINTS[] = {KARIL_ARC_EXTENSION, 19}; /* 2.5.29.19 */
static const uint8_t KARIL_OID_CRL_NUMBER[] = {KARIL_ARC_EXTENSION, 20};        /* 2.5.29.20 */
static const uint8_t KARIL_OID_CRL_DIST_POINTS[] = {KARIL_ARC_EXTENSION, 31};   /* 2.5.29.31 */
static const uint8_t KARIL_OID_CERT_POLICIES[] = {KARIL_ARC_EXTENSION, 32};     /* 2.5.29.32 */
static const uint8_t KARIL_OID_AUTHORITY_KEY_ID[] = {KARIL_ARC_EXTENSION, 35};  /* 2.5.29.35 */
static const uint8_t KARIL_OID_EXT_KEY_USAGE[] = {KARIL_ARC_EXTENSION, 37};     /* 2.5.29.37 */
static const uint8_t KARIL_OID_AUTHORITY_INFO[] = {0x2B, 0x06, 0x01, 0x05,
                                                   0x05, 0x07, 0x01, 0x01}; /* 1.3.6.1.5.5.7.1.1 */

/* The one type of an OCSP response (RFC 6960 4.2.1) */
static const uint8_t KARIL_OID_OCSP_BASIC[] = {0x2B, 0x06, 0x01, 0x05, 0x05,
                                               0x07, 0x30, 0x01, 0x01}; /* 1.3.6.1.5.5.7.48.1.1 */

#endif
