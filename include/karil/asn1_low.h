/*
 * karil: the bottom of the DER engine: tags, lengths, integers and time text.
 *
 * The wire format is a fixed reading of X.690 DER. The comments tell each point at which it departs from the standard.
 * These departures decide what the library reads and writes.
 *
 * Functions that take a bare cursor cannot know the end of its buffer: the caller makes sure that the header's octets
 * are there. A cell is a 32-bit word in a block of its own, which the caller frees with KAPR_Free. A call that fails
 * leaves its outputs and its cursor as they were, unless its comment says otherwise. A null pointer that the comment
 * does not allow is KACERT_InvalidParamErr.
 */
#ifndef KARIL_ASN1_LOW_H
#define KARIL_ASN1_LOW_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Reads the tag at `*cursor` (X.690 8.1.2) and moves the cursor to the octet after it. `*tag` receives a cell with the
 * normalised tag, `*octets` a cell with the number of the tag's octets. The normalised tag is the octet itself if its
 * top bit is set (context and private class). If the bit is clear (universal and application class), it is the low five
 * bits: 16 for 0x30, 1 for 0x61.
 * Departure: if the low five bits of the first octet are all set, each further octet x makes the tag ((x & 0x7F) | tag)
 * << 8. The first x with its top bit set is the last octet, and is then added whole: 1F 81 is 0x181, 1F 01 81 is
 * 0x10181. X.690 8.1.2.4 ends on a clear top bit and takes seven bits of each octet.
 * Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_GetTagInfo(const uint8_t **cursor, uint32_t **tag, uint32_t **octets);

/*
 * Reads the length field at `*cursor` (X.690 8.1.3) and moves the cursor to the octet after it. `*length` receives a
 * cell with the length, `*octets` a cell with the number of the field's octets. Forms that are longer than needed (81
 * 05) are accepted.
 * Departure: 0x80 is no marker of an indefinite length. The octet after it is the length; the field is reported as 1
 * octet, and the cursor moves two.
 * Returns 0; KACERT_InvalidLengthErr if the field has more than four length octets; KACERT_MemoryErr;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_GetLengthInfo(const uint8_t **cursor, uint32_t **length, uint32_t **octets);

/*
 * A second reader of lengths, with rules of its own that no standard has. The library does not call it. From the third
 * octet at `*cursor` onward it looks for the first octet that has a bit of 0x50 set. Let c be the octet after that one,
 * and n be c & 0x7F. If c has no bit of 0x50, `*length` is n and `*size` is 1. Otherwise the n octets after c are read
 * into `*length`, each by (octet | value) << 8, and `*size` is n. The cursor is not moved. Nothing is bounded: the
 * caller makes sure that all these octets are there.
 * Returns 0 or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_GetLengthInfo(const uint8_t **cursor, uint32_t *length, uint32_t *size);

/*
 * Stores in `*total` the size of the element whose first octet is at `element`: the octets of tag and length field and
 * the content that the header claims. The content need not be there.
 * Returns 0; KACERT_InvalidLengthErr if the length field has more than four length octets or the total exceeds 32 bits;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_GetCertLength(const uint8_t *element, uint32_t *total);

/*
 * Stores the octet at `octet` in `*value` as it stands, without normalising it. Returns 0, or KACERT_InvalidTagErr if a
 * pointer is null.
 */
KARIL_API int32_t KAsn1_Low_ReadDNTag(const uint8_t *octet, uint32_t *value);

/*
 * Returns the number of octets of the length field for a content of `length` octets, 1 to 5.
 * Departure: 65,535 takes four octets (83 00 FF FF), not the three of X.690 10.1.
 */
KARIL_API uint32_t KAsn1_Low_Count_LengthOfSize(uint32_t length);

/*
 * Prepares one element: makes a heap record with room for the content and writes tag and length into it. The caller
 * writes the content.
 * `source`: tells the content; only its length, unusedBits and first octet are looked at. Its data must not be null if
 * the tag octet is 2 or the length is above 0. `tag`: its low 8 bits are the tag octet. `*out`: receives the record;
 * free it with KI_FreeAnybuf. `*position`: receives the place for the source's octets.
 * For the tag octet 3, the low 8 bits of the source's unusedBits go out as the first content octet (X.690 8.6.2.2). For
 * the tag octet 2, a zero octet goes out before a first octet with its top bit set (X.690 8.3.3, unsigned numbers
 * only). A context tag around the same octets has neither.
 * Returns 0; KACERT_InvalidLengthErr if the element exceeds 32 bits; KACERT_MemoryErr; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_WriteTagAndLength(const Anybuf *source, uint32_t tag, Anybuf **out, uint8_t **position);

/*
 * Takes the header off an element. `source`: tells the element's exact size, its tag and unusedBits; its data is not
 * looked at. `*cursor`: the element's first octet, of which source->length octets are there; moved to the first content
 * octet. `*out`: receives a heap record with the normalised tag and a block for the content, null if there is none;
 * free it with KI_FreeAnybuf. `*content`: receives that block. The caller copies the content itself.
 * If the source's tag is 3, one content octet is skipped, and unusedBits comes from the source and not from the wire.
 * If the tag on the wire is 2, a zero octet before one with its top bit set is skipped.
 * Returns 0; KACERT_LengthNotEqualErr if header and content are not exactly source->length octets;
 * KACERT_InvalidLengthErr if the length field has more than four length octets, if the octet that 0x80 makes the length
 * or the content after it lies past the end, or if a BIT STRING has no content; KACERT_MemoryErr;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_ReadTagAndLength(const Anybuf *source, const uint8_t **cursor, Anybuf **out,
                                             uint8_t **content);

/*
 * Writes the content octets of an INTEGER (X.690 8.3): the shortest big-endian form of `value`. Values are unsigned, so
 * that a zero octet stands before a set top bit. `*octets` receives a block, `*count` a cell with its size, 1 to 5;
 * free both with KAPR_Free. Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_IntToChar(uint32_t value, uint8_t **octets, uint32_t **count);

/*
 * Reads `count` big-endian octets as an unsigned value into the cell `*value`, which the caller frees. One leading zero
 * octet is skipped. Of more than four significant octets the high ones are lost. No octets are 0, and `octets` may then
 * be null. Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_CharToInt(const uint8_t *octets, uint32_t count, uint32_t **value);

/*
 * Time text is YYMMDDHHMMSSZ, 13 characters without a terminator, in UTCTime and GeneralizedTime alike. Times are
 * signed 32-bit counts of seconds since 1970.
 * Departure from X.690 11.7, 11.8 and RFC 5280 4.1.2.5: the digits are the machine's local time, although they end in
 * Z. No other form is read or written, and no year with four digits. The zone is that of TZ at the time of the call. If
 * TZ is not set, it is the zone that libc has: a program that unsets TZ while it runs calls tzset after it. A local
 * time that came twice, as an hour does when summer time ends, is read as either of the two.
 */

/*
 * Writes `value` as two digits at `text`. A negative value is not refused, and what is written for it are no digits.
 * Returns 0; KACERT_InvalidTimeDigitErr if the tens digit is above 9, with the first character alone stored;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_TimeIntToChar(int32_t value, uint8_t *text);

/*
 * Reads two characters at `text` into `*value`, as first * 10 + second - 528. They are not checked to be digits.
 * Returns 0 or KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_TimeCharToInt(const uint8_t *text, int32_t *value);

/*
 * Writes `time` as time text. `*text` receives a block of 13 octets, `*length` a cell with 13; free both with
 * KAPR_Free. Returns 0; KACERT_InvalidTimeErr if the time is negative; KACERT_MemoryErr; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_ItoCTime(int32_t time, uint8_t **text, uint32_t **length);

/*
 * Reads the time text at `text` into the cell `*time`, which the caller frees. Years below 70 are 20YY, others 19YY.
 * Fields out of range are normalised as mktime does. `length`: the octets at `text`; with 0 the caller makes sure that
 * 13 are there.
 * Returns 0; KACERT_InvalidTimeEndErr if the thirteenth character is missing or is not Z, which is looked at first;
 * KACERT_MemoryErr if the time lies before 1970 UTC or does not fit 32 bits, and for a failed allocation;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KAsn1_Low_CtoITime(const uint8_t *text, uint32_t length, int32_t **time);

/*
 * Writes `time` as an element with 13 octets of time text. The low 8 bits of `tag` are its tag octet; the record's tag
 * is tag & 0x1F. Free `*out` with KI_FreeAnybuf. Returns the statuses of KAsn1_Low_ItoCTime.
 */
KARIL_API int32_t KAsn1_Low_WriteLongTime(int32_t time, uint32_t tag, Anybuf **out);

/*
 * Reads the time text of the element in `source` into `*time`, whatever its tag. The element's own length is compared
 * neither with 13 nor with the record's.
 * Returns the statuses of KAsn1_Low_CtoITime, KACERT_InvalidTimeEndErr also if the record's end cuts the text off;
 * KACERT_InvalidLengthErr if the length field has more than four length octets, or is 0x80 and ends the record;
 * KACERT_LengthNotEqualErr if the header is missing or cut off.
 */
KARIL_API int32_t KAsn1_Low_ReadLongTime(const Anybuf *source, int32_t *time);

#ifdef __cplusplus
}
#endif

#endif
