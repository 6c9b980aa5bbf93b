/*
 * karil: distinguished names as text in one line, made of separate fields and taken apart again, such as
 * C=CN,O=Example,OU=One,CN=Name. KI_GetDN writes the same form. There is no escaping: a comma in a value goes out as it
 * is, and ends the value when the text is read. Values are octets, in any encoding.
 *
 * The fields are the arguments' names: c, o, ou, cn, e, s, l, pa, pc, phone and idCard stand for the keys C, O, OU, CN,
 * E, S, L, PA, PC, Phone and IDCard. Upper and lower case differ in keys. The functions return 0 or -1. No standard has
 * this form; RFC 4514 has another.
 */
#ifndef KARIL_DN_STRING_H
#define KARIL_DN_STRING_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Makes a text of ten fields, in the order of the arguments. Each field: its octets and their number. A field with a
 * number of 0 or below is left out, and its octets may be null. `output`: receives the text, which is not terminated,
 * or null to ask for the length alone; 1,080 octets always suffice. `outputLength`: receives the text's octets, 0 if
 * every field is left out; must not be null.
 * Returns 0. Returns -1, with the outputs as they were, if the values have more than 1,024 octets in all or a pointer
 * is null that may not be.
 */
KARIL_API int32_t KA_GenerateDN(const uint8_t *c, int32_t cLength, const uint8_t *o, int32_t oLength, const uint8_t *ou,
                                int32_t ouLength, const uint8_t *cn, int32_t cnLength, const uint8_t *e,
                                int32_t eLength, const uint8_t *s, int32_t sLength, const uint8_t *l, int32_t lLength,
                                const uint8_t *pa, int32_t paLength, const uint8_t *pc, int32_t pcLength,
                                const uint8_t *phone, int32_t phoneLength, uint8_t *output, int32_t *outputLength);

/*
 * Does the same for eleven fields, in an order of its own. Several units go in as one value with ",OU=" between them:
 * One,OU=Two.
 */
KARIL_API int32_t KA_GenerateDN_ForMultOu(const uint8_t *e, int32_t eLength, const uint8_t *cn, int32_t cnLength,
                                          const uint8_t *ou, int32_t ouLength, const uint8_t *o, int32_t oLength,
                                          const uint8_t *l, int32_t lLength, const uint8_t *s, int32_t sLength,
                                          const uint8_t *c, int32_t cLength, const uint8_t *pa, int32_t paLength,
                                          const uint8_t *pc, int32_t pcLength, const uint8_t *phone,
                                          int32_t phoneLength, const uint8_t *idCard, int32_t idCardLength,
                                          uint8_t *output, int32_t *outputLength);

/*
 * Takes a text of ten fields apart. Each field: the area for its value, or null to ask for the length alone, and a
 * pointer to the number of the value's octets, which must not be null. `text`: `textLength` octets, not terminated;
 * null only with a length below 1. A value ends at the next comma or with the text. It is stored each time its key is
 * found, so the last one stands. Each of them must find room: `textLength` octets always suffice. Unknown keys are
 * skipped.
 * Returns 0, with a length of 0 for each field that the text does not have. Returns -1 for a text of more than 1,024
 * octets, with all lengths set to 0. Returns -1, with nothing stored, if a pointer is null that may not be.
 */
KARIL_API int32_t KA_ParseDN(uint8_t *c, int32_t *cLength, uint8_t *o, int32_t *oLength, uint8_t *ou, int32_t *ouLength,
                             uint8_t *cn, int32_t *cnLength, uint8_t *e, int32_t *eLength, uint8_t *s, int32_t *sLength,
                             uint8_t *l, int32_t *lLength, uint8_t *pa, int32_t *paLength, uint8_t *pc,
                             int32_t *pcLength, uint8_t *phone, int32_t *phoneLength, const uint8_t *text,
                             int32_t textLength);

/*
 * Does the same for eleven fields, and for OU in another way: its value starts after the first "OU=" and ends with the
 * last unit. So several units come back as one value with ",OU=" between them, and with whatever fields stand between
 * them.
 */
KARIL_API int32_t KA_ParseDN_ForMultOu(uint8_t *c, int32_t *cLength, uint8_t *o, int32_t *oLength, uint8_t *ou,
                                       int32_t *ouLength, uint8_t *cn, int32_t *cnLength, uint8_t *e, int32_t *eLength,
                                       uint8_t *s, int32_t *sLength, uint8_t *l, int32_t *lLength, uint8_t *pa,
                                       int32_t *paLength, uint8_t *pc, int32_t *pcLength, uint8_t *phone,
                                       int32_t *phoneLength, uint8_t *idCard, int32_t *idCardLength,
                                       const uint8_t *text, int32_t textLength);

#ifdef __cplusplus
}
#endif

#endif
