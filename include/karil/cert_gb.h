/*
 * karil: private extensions of the national profile, under the arc 1.2.86.11.7, and lists of digests.
 *
 * Texts are in the local encoding (code page 936).
 */
#ifndef KARIL_CERT_GB_H
#define KARIL_CERT_GB_H

#include "karil/base.h"
#include "karil/cert_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Types of KACert_SetCertPrivate_GB. Their numbers do not follow the object identifiers. */
enum {
    CERT_GBPRIV_IDENTIFY = 147, /* 1.2.86.11.7.1: KA_GBPRIV_IDENTIFY */
    CERT_GBPRIV_7_2 = 151,      /* 1.2.86.11.7.2: text */
    CERT_GBPRIV_7_4 = 152,      /* 1.2.86.11.7.4: text */
    CERT_GBPRIV_7_3 = 153,      /* 1.2.86.11.7.3: text */
    CERT_GBPRIV_7_5 = 154       /* 1.2.86.11.7.5: text */
};

/* Numbers of a person. A flag of 1 includes the number, which has 1 to 512 octets; any other flag leaves it out. */
typedef struct KA_GBPRIV_IDENTIFY {
    int32_t residenterCardFlag;
    int32_t militaryOfficerCardFlag;
    int32_t passportFlag;
    uint8_t residenterCardNumber[512];
    int32_t residenterCardNumberLen;
    uint8_t militaryOfficerCardNumber[512]; /* local text, written as UTF-8 */
    int32_t militaryOfficerCardNumberLen;
    uint8_t passportNumber[512];
    int32_t passportNumberLen;
} KA_GBPRIV_IDENTIFY;
KARIL_STATIC_ASSERT(sizeof(KA_GBPRIV_IDENTIFY) == 1560, "a record of identifications has 1,560 octets");

/* A digest in a list. */
typedef struct KA_THUMBPRINT {
    int32_t algorithm; /* 0 MD5, 1 SHA-1; the node is left out where it is anything else */
    uint8_t value[512];
    int32_t valueLen; /* 1 to 512 */
    struct KA_THUMBPRINT *next;
} KA_THUMBPRINT;
KARIL_SIZE_32(KA_THUMBPRINT, 524);

/*
 * Appends an extension of the profile to a certificate. `data`: `length` octets, copied. A text becomes a
 * PrintableString element, whatever its characters. A KA_GBPRIV_IDENTIFY becomes SET { [0] IMPLICIT PrintableString
 * resident, [1] IMPLICIT UTF8String military officer, [2] IMPLICIT PrintableString passport } with what is flagged, and
 * nothing where no flag is 1 but one is not 0. `critical`: 0 or 1.
 * Returns 0; KACERT_InvalidParamErr for a null pointer, a type that is not listed, a `critical` of another value, a
 * text's length below 1, for the record a length other than its size, flags that are all 0 or a number's length below
 * 1, and also where a PrintableString cannot be made for want of memory; KACERT_InvalidLengthErr for a number's length
 * above 512 or a value above 1,024 octets; KACERT_MemoryErr. A failed call adds nothing to the
 * extensions.
 */
KARIL_API int32_t KACert_SetCertPrivate_GB(CertEncodeCtx *ctx, int32_t type, const void *data, int32_t length,
                                           int32_t critical);

/*
 * Writes a list of digests: SEQUENCE OF SEQUENCE { algorithm, OCTET STRING value }. The algorithm is
 * SEQUENCE { 1.3.14.3.2.26 } without parameters for SHA-1 and SEQUENCE { 1.2.840.113549.2.5, NULL } for MD5.
 * `first`: the list, not null. `recordSize`: sizeof(KA_THUMBPRINT). `result`: receives the DER; no capacity is told, so
 * it needs room for valueLen and 22 octets for each digest, and 6 more; must not be null. `resultLength`: receives its
 * octets.
 * Returns 0; KACERT_InvalidParamErr for a null pointer, another size, or an object identifier that cannot be made;
 * KACERT_InvalidLengthErr for a valueLen outside 1 to 512; KACERT_MemoryErr. Outputs of a failed call are as they were.
 */
KARIL_API int32_t EnCodeThums(const KA_THUMBPRINT *first, uint32_t recordSize, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
