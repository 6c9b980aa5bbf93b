/* karil: elements of indefinite length (X.690 8.1.3.6) into definite form. */
#ifndef KARIL_INDEFINITE_H
#define KARIL_INDEFINITE_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Rewrites `length` octets at `input` so that the outer element and those in it have definite lengths: 30 80 02 01 05
 * 00 00 becomes 30 03 02 01 05. The library's readers need this done beforehand; none of them does it.
 * `input`: null only with length 0. `output`: receives the octets; may be `input`; length + 500 octets always suffice.
 * `outputLength`: receives their number. Neither may be null.
 *
 * The octets are scanned, not parsed:
 * - 30 80 and A0 80 open an element; no other tag does. 00 00 closes one. A single 00 as the last octet closes one too.
 * - If an element with one of the tags 02 to 06 comes right after an opening, it is skipped whole. All else is scanned
 *   octet by octet, so that an opening or a closing is also found inside a definite element.
 * - Input without an opening or a closing is copied as it is, whatever it holds. So is input whose first opening or
 *   closing lies inside an element with one of the tags 02 to 06, as far as one can be made out before it.
 * - If the first octet is 30 or A0, the second is below 80, and the fourth plus 2 equals the second, the outer element
 *   holds one short child and nothing else. Then 0 is returned and NOTHING IS STORED: go on with the input. To notice
 *   it, set `*outputLength` to a value of your own before the call.
 * - The header at the start of the result tells how much is stored, be it more or less than was converted. The length
 *   of a definite element around a converted one is not changed; zeros fill up what is missing.
 *
 * Departures from X.690 10.1: a length of 128 or more is written as the content octets of an INTEGER, with a zero
 * before a set top bit (82 00 C8 for 200). An outer length counts an inner one as 1 octet up to 255, as 2 up to 65,535,
 * as 3 up to 16,777,215, else as 4. That can be less than it has; octets at the end are then cut off. If an inner
 * element lies in an element that lies in others, and its counted length is 256 or 257 (65,536 or 65,537, 16,777,216 or
 * 16,777,217), an octet AA of its closing is left after it.
 *
 * Returns 0, or KAPKCS7_IndefiniteFormatErr with nothing stored: for an opening that is not closed; for a closing
 * before the first opening, or as the last mark without an opening; for a result whose header has no length or claims
 * more than length + 500 octets; for growth beyond that many; for input of 2^31 - 500 octets or more; for a null
 * pointer; for a failed allocation. One allocation is an exception: if it fails for a long outer length, 0 is returned
 * with nothing stored, as above. The cost grows with the input alone. If AA octets are left, it also grows with the
 * number of openings, and input that would need more than 2^32 octets to be moved is refused.
 */
KARIL_API int32_t KAsn1_IndefiniteToDefinite(const uint8_t *input, uint32_t length, uint8_t *output,
                                             uint32_t *outputLength);

#ifdef __cplusplus
}
#endif

#endif
