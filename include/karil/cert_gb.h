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

/* Numbers of a person. A flag of 1 includes the number, which has 1 to 512 octets. Any other flag leaves it out. */
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
    int32_t algorithm; /* 0 MD5, 1 SHA-1; a node with any other value is left out */
    uint8_t value[512];
    int32_t valueLen; /* 1 to 512 */
    struct KA_THUMBPRINT *next;
} KA_THUMBPRINT;
KARIL_SIZE_32(KA_THUMBPRINT, 524);

/*
 * Appends an extension of the profile to a certificate, as KACert_SetCertAttributePrivate does. `type`: one of the ids
 * above. `data`: `length` octets, copied. `critical`: 0 or 1.
 * A text becomes a PrintableString element, whatever its characters. A KA_GBPRIV_IDENTIFY becomes SET { [0] IMPLICIT
 * PrintableString resident, [1] IMPLICIT UTF8String military officer, [2] IMPLICIT PrintableString passport } with the
 * numbers whose flag is 1. If no flag is 1 but one is not 0, the SET is empty.
 * Returns 0; KACERT_InvalidParamErr if a pointer is null, the type is not listed, `critical` is another number, the
 * length of a text or of an included number is below 1, the record's `length` is not its size, all its flags are 0, or
 * the element of a text cannot be made for want of memory; KACERT_InvalidLengthErr if the length of an included number
 * exceeds 512, or the value 1,024 octets; KACERT_MemoryErr. A call that fails adds no extension.
 */
KARIL_API int32_t KACert_SetCertPrivate_GB(CertEncodeCtx *ctx, int32_t type, const void *data, int32_t length,
                                           int32_t critical);

/*
 * Writes a list of digests: SEQUENCE OF SEQUENCE { algorithm, OCTET STRING value }. The algorithm is SEQUENCE {
 * 1.3.14.3.2.26 }, without parameters, for SHA-1, and SEQUENCE { 1.2.840.113549.2.5, NULL } for MD5. No standard has
 * this form.
 * `first`: the list, not null. `recordSize`: sizeof(KA_THUMBPRINT). `result`: receives the DER; must not be null, so
 * that there is no way to ask for the length. It needs room for valueLen and 22 octets for each digest, and for 6 more.
 * `resultLength`: receives the number of octets; must not be null.
 * Returns 0; KACERT_InvalidParamErr if a pointer is null, `recordSize` is another size, or a valueLen is below 1;
 * KACERT_InvalidLengthErr if a valueLen exceeds 512; KACERT_MemoryErr. A call that fails leaves its outputs as they
 * were.
 */
KARIL_API int32_t EnCodeThums(const KA_THUMBPRINT *first, uint32_t recordSize, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
