/* karil: elements of indefinite length (X.690 8.1.3.6) into definite form. */
#ifndef KARIL_INDEFINITE_H
#define KARIL_INDEFINITE_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Rewrites `length` octets at `input` so that the outer element and those in it have definite lengths: 30 80 02 01 05
 * 00 00 becomes 30 03 02 01 05. The library's readers need this done beforehand; none calls it.
 * `input`: null only with length 0. `output`: receives the octets; may be `input`; length + 500 octets always suffice.
 * `outputLength`: receives their number. Neither may be null.
 *
 * The octets are scanned, not parsed:
 * - 30 80 and A0 80 open an element; no other tag does. 00 00 closes one, the last octet of the input as 00 too.
 * - Where an element with one of the tags 02 to 06 follows an opening, it is passed over whole. Everything else is
 *   scanned octet by octet, so that an opening or closing is also found within a definite element.
 * - Input without any of these is copied as it is, whatever it holds; so is one whose first of them lies within an
 *   element with one of the tags 02 to 06, as far as one can be made out in front of it.
 * - Where the outer element is definite, of tag 30 or A0 and with one octet of length, and holds one such short
 *   child and nothing else, 0 is returned and NOTHING IS STORED: go on with the input. Set `*outputLength` to a value
 *   of your own beforehand to notice.
 * - What is stored is as long as the header in the first octets of the result then says, be it more or less than was
 *   converted. The length of a definite element around a converted one is not changed; zeros fill up what is missing.
 *
 * Departures from X.690 10.1: a length from 128 on is written as the content octets of an INTEGER, with a zero in
 * front of a set top bit (82 00 C8 for 200). An outer length counts those of the inner ones as 1 octet up to 255, 2 up
 * to 65,535, 3 up to 16,777,215, else 4, which can be less than they have: octets at the end are then cut off. Within
 * an element that lies in others, an inner one whose counted length is 256 or 257 (65,536 or 65,537, 16,777,216 or
 * 16,777,217) leaves an octet AA of a closing behind it.
 *
 * Returns 0 or KAPKCS7_IndefiniteFormatErr, with nothing stored, for an opening that is not closed, a closing in
 * front of the first opening or as the last mark without an opening, a result whose header has no length or claims
 * more than length + 500 octets, growth beyond that many, input of 2^31 - 500 octets or more, a null pointer, and a
 * failed allocation; but where the allocation for a long outer length fails, 0 with nothing stored as above. Cost
 * grows with the input alone; where AA octets are left behind it also grows with the number of openings, and input
 * that would take more than 2^32 octets to be moved is refused.
 */
KARIL_API int32_t KAsn1_IndefiniteToDefinite(const uint8_t *input, uint32_t length, uint8_t *output,
                                             uint32_t *outputLength);

#ifdef __cplusplus
}
#endif

#endif
