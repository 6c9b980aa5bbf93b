/*
 * karil: base64 (RFC 4648 4) and PEM text (RFC 7468). These functions answer 0 or -1 and know no label: header and
 * footer are whatever the caller says. A null pointer is -1.
 */
#ifndef KARIL_PEM_H
#define KARIL_PEM_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Writes `length` octets at `data` as base64, in one line with a zero behind it. `data`: null only with length 0.
 * `text`: room for (length + 2) / 3 * 4 + 1 octets. Returns 0, or -1 for a null pointer or a length below 0.
 */
KARIL_API int32_t base64_encode(const uint8_t *data, int32_t length, char *text);

/*
 * Reads base64 up to the zero that ends `text`. `data`: room for the text's length / 4 * 3 octets. `length`: receives
 * the octets written; untouched on failure. Departure from RFC 4648 3.3: four characters are taken at a time, and one
 * that is not of the alphabet leaves what its place held in the group before (at first the value 0), so that line ends
 * have to be removed first; "=" has the value 0 but at the end, where one or two shorten the last group.
 * Returns 0, or -1 where the characters do not come out in groups of four, and for a null pointer.
 */
KARIL_API int32_t base64_decode(const char *text, uint8_t *data, uint32_t *length);

/*
 * Writes `length` octets at `der` as PEM: `header`, the base64 in lines of 64 characters, `footer`, each line with CR
 * LF behind it; an empty header or footer is left out. `pem`: room for all that: with n characters of base64, at most
 * n + n / 64 * 2 + 2, and the two strings with 2 each; no zero follows. `pemLength`: receives the octets written, 0
 * for length 0, untouched on failure. Returns 0, or -1 for a length below 0, a null pointer or want of memory.
 */
KARIL_API int32_t DER2PEM_data_format(const uint8_t *der, int32_t length, uint8_t *pem, uint32_t *pemLength,
                                      const char *header, const char *footer);

/*
 * Reads the first PEM block in `length` octets at `pem`. Where there is a hyphen, the block stands between two labels
 * of five hyphens on either side, which may say anything; where there is none, all is base64. CR and LF are left out,
 * any other octet is taken as base64_decode does. `der`: room for length / 4 * 3 octets. `derLength`: receives the
 * octets written, 0 for length 0, untouched on failure. Departure from RFC 7468 2: neither the labels nor the number
 * of hyphens are checked. Returns 0, or -1 for a label without end, text that does not come out in groups of four, a
 * length below 0, a null pointer or want of memory.
 */
KARIL_API int32_t PEM2DER_data_format(const uint8_t *pem, int32_t length, uint8_t *der, uint32_t *derLength);

#ifdef __cplusplus
}
#endif

#endif
