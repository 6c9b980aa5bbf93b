/*
 * karil: conversion among the local multi-byte text (code page 936), BMP text and UTF-8.
 *
 * Code page 936 is Microsoft's: GBK with the euro sign at 0x80 and the private-use cells. BMP text is UTF-16 with
 * the high octet first, as a BMPString holds it (X.690 8.23.9). All lengths count octets.
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
 * `source`: the text; null only with a length below 1. `length`: its octets, at most the limit named below; an odd
 * last octet of BMP text is ignored. `result`: receives the converted octets; null asks for the length alone.
 * `resultLength`: receives the result's octets; must not be null. The caller owns both buffers; nothing is
 * terminated with a zero octet.
 *
 * A text with nothing to convert, a negative length, or a result that does not fit the work area is answered with
 * 0 and leaves both outputs as they were: set the length to 0 before the call to see that.
 *
 * Into code page 936 a base letter with a combining mark is composed first where the code page has the composed
 * letter; what has no place becomes "?", one for each 16-bit unit. From code page 936 a broken or
 * cut-off pair becomes one "?". Broken UTF-8 (one for each maximal subpart, Unicode 3.9) and lone surrogates become
 * U+FFFD.
 *
 * Returns 0; KACERT_InvalidLengthErr for a source above the limit; KACERT_InvalidParamErr for a null pointer.
 */

/* Code page 936 to BMP text; at most 1,024 octets. */
KARIL_API int32_t KI_Chinese2BmpString(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* BMP text to code page 936; at most 2,048 octets in and 1,024 out. */
KARIL_API int32_t KI_BmpString2Chinese(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* BMP text to UTF-8; at most 2,048 octets in and 1,024 out. */
KARIL_API int32_t KI_BmpString2UTF8(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* UTF-8 to BMP text; at most 1,024 octets. */
KARIL_API int32_t KI_UTF82BmpString(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* Code page 936 to UTF-8 by way of BMP text, with the limits of both steps. */
KARIL_API int32_t KI_Chinese2UTF8String(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

/* UTF-8 to code page 936 by way of BMP text, with the limits of both steps. */
KARIL_API int32_t KI_UTF8String2Chinese(const uint8_t *source, int32_t length, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
