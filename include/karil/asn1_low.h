/*
 * karil: the bottom of the DER engine: tags, lengths, integers and time text.
 *
 * The wire format is a fixed reading of X.690 DER. It departs from the standard where a comment here says so; these
 * departures decide what the library reads and writes.
 *
 * Functions that take a bare cursor cannot know where its buffer ends: the caller vouches for the octets that the
 * header needs. A cell is a 32-bit word in a block of its own, which the caller frees with KAPR_Free. Where a
 * function fails, its outputs and its cursor are as they were unless told otherwise. A null pointer that the comment
 * does not allow is KACERT_InvalidParamErr.
 */
#ifndef KARIL_ASN1_LOW_H
#define KARIL_ASN1_LOW_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Reads the tag at `*cursor` (X.690 8.1.2) and moves the cursor behind it. `*tag` receives a cell with the
 * normalised tag: the octet itself where its top bit is set (context and private class), its low five bits where it
 * is clear (universal and application class), so 0x30 gives 16 and 0x61 gives 1. `*octets` receives a cell with the
 * tag's octets.
 * Departure: where the low five bits are all set, each further octet x makes the tag ((x & 0x7F) | tag) << 8 until
 * one has its top bit set, which is then added whole: 1F 81 reads as 0x181 and 1F 01 81 as 0x10181. X.690 8.1.2.4
 * ends on a clear top bit and takes seven bits an octet.
 * Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_GetTagInfo(const uint8_t **cursor, uint32_t **tag, uint32_t **octets);

/*
 * Reads the length field at `*cursor` (X.690 8.1.3) and moves the cursor behind it. `*length` and `*octets` receive
 * cells with the length and the field's octets. Forms longer than needed (81 05) are accepted.
 * Departure: 0x80 is no marker of an indefinite length: the next octet is the length, the field is reported as 1
 * octet and the cursor moves two.
 * Returns 0; KACERT_InvalidLengthErr for a field of more than four length octets; KACERT_MemoryErr;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_GetLengthInfo(const uint8_t **cursor, uint32_t **length, uint32_t **octets);

/*
 * A second length reader with a reading of its own, for callers that know it. From the third octet at `*cursor`
 * onward it looks for the first with a bit of 0x50 set; the octet behind that one is c, and n is c & 0x7F. With no
 * bit of 0x50 in c, `*length` is n and `*size` 1. Otherwise the n octets that follow are read, each step being
 * (octet | value) << 8, into `*length`, and `*size` is n. The cursor is not moved and nothing is bounded.
 * Returns 0 or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_GetLengthInfo(const uint8_t **cursor, uint32_t *length, uint32_t *size);

/*
 * Stores in `*total` the octets of the element whose first octet is at `element`: tag, length field and content as
 * its header claims; the content need not be there. Returns 0; KACERT_InvalidLengthErr for a length field of more
 * than four length octets or a total above 32 bits; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_GetCertLength(const uint8_t *element, uint32_t *total);

/*
 * Stores the octet at `octet` in `*value` as it stands, without normalising it. Returns 0 or, for a null pointer,
 * KACERT_InvalidTagErr.
 */
KARIL_API int32_t KAsn1_Low_ReadDNTag(const uint8_t *octet, uint32_t *value);

/*
 * Gives the octets of the length field for a content of `length` octets, 1 to 5.
 * Departure: 65,535 takes four octets (83 00 FF FF), not the three of X.690 10.1.
 */
KARIL_API uint32_t KAsn1_Low_Count_LengthOfSize(uint32_t length);

/*
 * Prepares one element: a heap record with room for the content, of which tag and length are written.
 * `source`: gives the content's octets; only its length, unusedBits and first octet are looked at. Its data must
 * not be null where the tag is 2 or the length above 0. `tag`: its low 8 bits are the tag octet. `*out`: the record,
 * free it with KI_FreeAnybuf. `*position`: where the caller writes the source's octets.
 * For tag 3 the source's unusedBits go out as the first content octet (X.690 8.6.2.2); for tag 2 a zero octet goes
 * out in front of a first octet with its top bit set (X.690 8.3.3, unsigned numbers only). Only these two tag octets
 * do this: a context tag written around the same bytes gets neither.
 * Returns 0; KACERT_InvalidLengthErr for an element above 32 bits; KACERT_MemoryErr; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_WriteTagAndLength(const Anybuf *source, uint32_t tag, Anybuf **out, uint8_t **position);

/*
 * Takes the header off an element. `source`: gives the element's exact size, tag and unusedBits; its data is not
 * looked at. `*cursor`: the element's first octet, of which source->length octets are there; moved to the first
 * content octet. `*out`: a heap record with the normalised tag and a block for the content (null for none), free it
 * with KI_FreeAnybuf. `*content`: that block; the caller copies the content itself.
 * Where the source's tag is 3 one content octet is passed over and unusedBits comes from the source: the octet on
 * the wire is not read. Where the parsed tag is 2, a leading zero octet before one with its top bit set is passed
 * over.
 * Returns 0; KACERT_LengthNotEqualErr where header and content are not exactly source->length octets;
 * KACERT_InvalidLengthErr for a length field of more than four length octets, content that the 0x80 reading puts
 * past the end, or a BIT STRING without an octet; KACERT_MemoryErr; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_ReadTagAndLength(const Anybuf *source, const uint8_t **cursor, Anybuf **out,
                                             uint8_t **content);

/*
 * Stores the content octets of an INTEGER of `value` (X.690 8.3): the shortest big-endian form, with a zero octet in
 * front of a set top bit, since values are unsigned. `*octets` receives a block and `*count` a cell; free both with
 * KAPR_Free. Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_IntToChar(uint32_t value, uint8_t **octets, uint32_t **count);

/*
 * Reads `count` big-endian octets as an unsigned value into the cell `*value`, which the caller frees. One leading
 * zero octet is passed over; of more than four significant octets the high ones are lost; no octets give 0.
 * `octets` may be null with a count of 0. Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_CharToInt(const uint8_t *octets, uint32_t count, uint32_t **value);

/*
 * Time text is YYMMDDHHMMSSZ, 13 characters without a terminator, in UTCTime and GeneralizedTime alike.
 * Departure from X.690 11.7, 11.8 and RFC 5280 4.1.2.5: the digits are the machine's local time, although they end
 * in Z, and no other form is known. Times are signed 32-bit counts of seconds since 1970.
 */

/*
 * Writes `value` as two digits at `text`. Returns 0; KACERT_InvalidTimeDigitErr, with the first character alone
 * stored, for a value whose tens digit is above 9; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_TimeIntToChar(int32_t value, uint8_t *text);

/*
 * Reads two characters at `text` as first * 10 + second - 528 into `*value`; they are not checked to be digits.
 * Returns 0 or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_TimeCharToInt(const uint8_t *text, int32_t *value);

/*
 * Writes `time` as time text: `*text` receives a block of 13 octets and `*length` a cell with 13; free both with
 * KAPR_Free. Returns 0; KACERT_InvalidTimeErr for a negative time; KACERT_MemoryErr; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_ItoCTime(int32_t time, uint8_t **text, uint32_t **length);

/*
 * Reads the time text at `text` into the cell `*time`, which the caller frees. Years below 70 are 20YY. Fields out
 * of range are normalised as mktime does. `length`: what is there, where it is above 0; with 0 the caller vouches
 * for 13 octets. Returns 0; KACERT_InvalidTimeEndErr where the thirteenth character is missing or not Z;
 * KACERT_MemoryErr for a time before 1970 UTC or beyond 32 bits as well as for a failed allocation;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_CtoITime(const uint8_t *text, uint32_t length, int32_t **time);

/*
 * Writes `time` as an element with the low 8 bits of `tag` as its tag octet; the record's tag is tag & 0x1F. Free
 * `*out` with KI_FreeAnybuf. Returns 0 or the statuses of KAsn1_Low_ItoCTime.
 */
KARIL_API int32_t KAsn1_Low_WriteLongTime(int32_t time, uint32_t tag, Anybuf **out);

/*
 * Reads the time text of the element in `source` into `*time`, whatever its tag. The element's own length is not
 * compared with 13 nor with the record. Returns 0; KACERT_InvalidLengthErr for a length field of more than four
 * length octets; KACERT_LengthNotEqualErr for a header that is not all there; else as KAsn1_Low_CtoITime, a text cut
 * off by the record's end being KACERT_InvalidTimeEndErr.
 */
KARIL_API int32_t KAsn1_Low_ReadLongTime(const Anybuf *source, int32_t *time);

#ifdef __cplusplus
}
#endif

#endif
