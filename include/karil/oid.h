/* karil: object identifiers, from dotted text to the content octets of X.690 8.19. */
#ifndef KARIL_OID_H
#define KARIL_OID_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Converts dotted text to content octets (X.690 8.19). `text`: arcs in decimal, separated by dots or blanks; not
 * terminated. `length`: its characters. `result`: receives at most 1,024 octets, or null to ask for the length and
 * validity alone. `resultLength`: receives the number of octets; must not be null.
 * Returns 0; KACERT_InvalidParamErr if a pointer is null that may not be, the text is empty or the length is below 1;
 * KACERT_AlgorithmNotSupportErr if the text is no object identifier or needs more than 1,024 octets. A call that fails
 * leaves its outputs as they were.
 */
KARIL_API int32_t KACert_GetOIDValue(const char *text, int32_t length, uint8_t *result, uint32_t *resultLength);

/*
 * The conversion itself. `result`: receives the octets, or null to count them. `capacity`: octets at `result`. `text`:
 * as above. `length`: its characters, or -1 if it ends in a zero.
 * The first arc is 0, 1 or 2, and at least one more arc follows. Arcs are 32-bit numbers that wrap. Departure from
 * X.660: the second arc must be below 40 under 0 only. It is not bounded under 1, so that 1.40.1 starts with the octet
 * 0x50 as 2.0.1 does.
 * Returns the number of octets. Returns 0, with nothing written, if the text is bad or null or the result exceeds the
 * capacity.
 */
KARIL_API int32_t KACert_OidTextToDer(uint8_t *result, uint32_t capacity, const char *text, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
