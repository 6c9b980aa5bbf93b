/*
 * karil: conversion among the local multi-byte text (code page 936), BMP text and UTF-8.
 *
 * Code page 936 is Microsoft's: GBK with the euro sign at 0x80 and the private-use cells. BMP text is UTF-16 with the
 * high octet first, as a BMPString holds it (X.690 8.23.9). All lengths count octets. The library has its own tables: a
 * conversion needs nothing of the host, and allocates nothing.
 */
#ifndef KARIL_TEXT_H
#define KARIL_TEXT_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The six conversions have one pattern.
 *
 * `source`: the text; null only with a length below 1. `length`: its octets, at most the limit named below; an odd last
 * octet of BMP text is ignored. `result`: receives the converted octets; null asks for the length alone.
 * `resultLength`: receives the number of octets; must not be null. The caller owns both buffers. The result is not
 * terminated.
 *
 * A STATUS OF 0 MAY COME WITHOUT A RESULT: if the source is empty, the length is negative, or the result would exceed
 * 1,024 octets of code page 936 or UTF-8. Both outputs are then as they were: set the length to 0 before the call to
 * notice it.
 *
 * To code page 936: a base letter with a combining mark is composed first, if the code page has the composed letter. A
 * character that has no place becomes "?", one for each 16-bit unit; a byte order mark is such a character. From code
 * page 936: a pair that is not in it, the octet FF and a lead octet at the end each become one "?". To and from UTF-8:
 * a lone surrogate, and each maximal subpart of a broken sequence (Unicode 3.9), becomes U+FFFD. A byte order mark
 * stays.
 *
 * Returns 0; KACERT_InvalidLengthErr if the source exceeds the limit; KACERT_InvalidParamErr if a pointer is null that
 * may not be.
 */

/* Code page 936 to BMP text; at most 1,024 octets in and 2,048 out. */
KARIL_API int32_t KI_Chinese2BmpString(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* BMP text to code page 936; at most 2,048 octets in and 1,024 out. */
KARIL_API int32_t KI_BmpString2Chinese(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* BMP text to UTF-8; at most 2,048 octets in and 1,024 out. */
KARIL_API int32_t KI_BmpString2UTF8(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* UTF-8 to BMP text; at most 1,024 octets in and 2,048 out. */
KARIL_API int32_t KI_UTF82BmpString(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* Code page 936 to UTF-8 by way of BMP text; at most 1,024 octets in and 1,024 out. */
KARIL_API int32_t KI_Chinese2UTF8String(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* UTF-8 to code page 936 by way of BMP text; at most 1,024 octets in and 1,024 out. */
KARIL_API int32_t KI_UTF8String2Chinese(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
