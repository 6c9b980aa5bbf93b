/*
 * karil: base64 (RFC 4648 4) and PEM text (RFC 7468). The functions return 0 or -1 and write no trace. A call that
 * fails leaves its outputs as they were.
 */
#ifndef KARIL_PEM_H
#define KARIL_PEM_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Writes `length` octets at `input` as base64 text in one line. `input`: null only with length 0. `output`: receives
 * four characters for each three octets or part of three, padded with =, and a terminating zero; length * 4 / 3 + 4
 * octets always suffice. Returns 0, or -1 if a pointer is null that may not be.
 */
KARIL_API int32_t base64_encode(const uint8_t *input, uint32_t length, uint8_t *output);

/*
 * Reads the zero-terminated base64 text `text`. `output`: receives three octets for each four characters, less the
 * padding; an empty text has none. `outputLength`: receives their number. No pointer may be null, and `output` must not
 * overlap the text.
 * Departures from RFC 4648 3.3: no character is refused. One outside the alphabet uses up its place in the group of
 * four, which then has there what the group before it had (A in the first group). So take line ends out before the
 * call. One or two = at the end of the last group are its padding; a third is not counted. Any other = has the value of
 * A. Bits that the padding leaves over are not looked at.
 * Returns 0, or -1 if the number of characters is no multiple of four or too large for 32 bits, or a pointer is null.
 */
KARIL_API int32_t base64_decode(const char *text, uint8_t *output, uint32_t *outputLength);

/*
 * Writes `length` octets at `der` as PEM text (RFC 7468 2): the header line, base64 in lines of 64 characters, the
 * footer line. Every line ends in CR LF. `header`, `footer`: zero-terminated and written as they are, such as
 * "-----BEGIN CERTIFICATE-----"; an empty one has no line. `output`: receives the text, which is not terminated. It has
 * strlen(header) + 2 + strlen(footer) + 2 + (length + 2) / 3 * 4 + (length + 47) / 48 * 2 octets. `outputLength`:
 * receives their number.
 * With length 0 only `*outputLength` is set, to 0, and the other pointers may be null; otherwise none may be.
 * Returns 0, or -1 if a pointer is null, the text exceeds 32 bits or an allocation fails.
 */
KARIL_API int32_t DER2PEM_data_format(const uint8_t *der, uint32_t length, uint8_t *output, uint32_t *outputLength,
                                      const char *header, const char *footer);

/*
 * Reads the first PEM block of `length` octets at `pem` (RFC 7468 2). `output`: receives the octets, at most length / 4
 * * 3; it may be `pem`. `outputLength`: receives their number. With length 0 only `*outputLength` is set, to 0, and the
 * other pointers may be null; otherwise none may be.
 * Text without a hyphen is base64 as a whole. Otherwise the first hyphen and the four octets after it are skipped, and
 * then the next hyphen with the four octets after it. The label between them is not looked at, but it must have no
 * hyphen. The body ends at the next hyphen, and nothing after that is looked at. CR and LF in the body are left out, a
 * zero octet ends it, and the rest is read as base64_decode does.
 * Returns 0, or -1 if a pointer is null, a hyphen of the header or the one after the body is missing, base64_decode
 * refuses the body or an allocation fails.
 */
KARIL_API int32_t PEM2DER_data_format(const uint8_t *pem, uint32_t length, uint8_t *output, uint32_t *outputLength);

#ifdef __cplusplus
}
#endif

#endif
