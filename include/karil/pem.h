/*
 * karil: base64 (RFC 4648 4) and PEM text (RFC 7468). The functions answer 0 or -1 and leave no trace; a call that
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
 * four characters for each three octets begun, padded with =, and a terminating zero: length * 4 / 3 + 4 octets
 * always suffice. Returns 0, or -1 for a null pointer.
 */
KARIL_API int32_t base64_encode(const uint8_t *input, uint32_t length, uint8_t *output);

/*
 * Reads the zero-terminated base64 text `text`. `output`: receives the octets, three for each four characters less
 * the padding; an empty text gives none. `outputLength`: receives their number. None may be null; `output` is not
 * to overlap the text.
 * Returns 0, or -1 for a number of characters that is no multiple of four, or above 32 bits, and for a null pointer.
 * Departures from RFC 4648 3.3: nothing is refused for a character outside the alphabet. Such a character uses up
 * its place in the group of four, and the group has there what the group before it had (A in the first group); line
 * ends must therefore be taken out beforehand. One or two = at the end of the last group are its padding, a third is
 * not counted; any other = has the value of A. Bits that the padding leaves over are not looked at.
 */
KARIL_API int32_t base64_decode(const char *text, uint8_t *output, uint32_t *outputLength);

/*
 * Writes `length` octets at `der` as PEM text: the header line, base64 in lines of 64 characters, the footer line.
 * Every line ends in CR LF. `header`, `footer`: zero-terminated and written as they are, such as
 * "-----BEGIN CERTIFICATE-----"; an empty one has no line. `output`: receives the text, which is not terminated and
 * has strlen(header) + 2 + strlen(footer) + 2 + (length + 2) / 3 * 4 + (length + 47) / 48 * 2 octets. `outputLength`:
 * receives their number.
 * With length 0 only `*outputLength` is set, to 0, and the other pointers may be null; else none may be.
 * Returns 0, or -1 for a null pointer, a text above 32 bits or a failed allocation.
 */
KARIL_API int32_t DER2PEM_data_format(const uint8_t *der, uint32_t length, uint8_t *output, uint32_t *outputLength,
                                      const char *header, const char *footer);

/*
 * Reads the first PEM block of `length` octets at `pem`. `output`: receives the octets, at most length / 4 * 3; it
 * may be `pem`. `outputLength`: receives their number. With length 0 only `*outputLength` is set, to 0, and the other
 * pointers may be null; else none may be.
 * Text without a hyphen is base64 as a whole. Otherwise the first hyphen and the four octets behind it are passed
 * over, then the same for the next hyphen: the label between them is not looked at, but must hold no hyphen. The body
 * ends at the hyphen behind it, and nothing further is looked at. CR and LF in it are left out, a zero octet ends it,
 * and the rest is read as base64_decode does.
 * Returns 0, or -1 for a null pointer, a header or body whose hyphen is missing, a body that base64_decode refuses or
 * a failed allocation.
 */
KARIL_API int32_t PEM2DER_data_format(const uint8_t *pem, uint32_t length, uint8_t *output, uint32_t *outputLength);

#ifdef __cplusplus
}
#endif

#endif
