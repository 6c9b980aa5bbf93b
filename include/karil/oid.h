/* karil: object identifiers, from dotted text to the content octets of X.690 8.19. */
#ifndef KARIL_OID_H
#define KARIL_OID_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Converts dotted text. `text`: arcs in decimal, separated by dots or blanks; not terminated. `length`: its
 * characters. `result`: receives the content octets, at most 1,024, or null to ask for the length and validity
 * alone. `resultLength`: receives their number; must not be null.
 * Returns 0; KACERT_InvalidParamErr for a null or empty text or a length below 1; KACERT_AlgorithmNotSupportErr for
 * text that is no object identifier or needs more than 1,024 octets. Outputs of a failed call are as they were.
 */
KARIL_API int32_t KACert_GetOIDValue(const char *text, int32_t length, uint8_t *result, uint32_t *resultLength);

/*
 * The conversion itself. `result`: receives the octets, or null to count. `capacity`: octets at `result`. `length`:
 * the text's characters, or -1 for all up to its terminating zero.
 * The first arc is 0, 1 or 2; arcs are 32-bit and wrap. Departure from X.660: the second arc must be below 40 under
 * 0 only; under 1 it is not bounded, and 1.40.1 starts with the octet 0x50 as 2.0.1 does.
 * Gives the number of octets, or 0 for bad text, a null text or a result above the capacity, with nothing written.
 */
KARIL_API int32_t KACert_OidTextToDer(uint8_t *result, uint32_t capacity, const char *text, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
