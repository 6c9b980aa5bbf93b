/*
 * karil: typed writers and readers of DER elements (X.690).
 *
 * Writers make one heap record that holds the complete element, and store it in `*out`. The source is not changed and
 * stays the caller's. `out` may be the address of the previous node's next; so a chain is built. Readers take a record
 * that holds one complete element of exactly its length, as KAsn1_ReadSequence makes it, and do not change it. Free
 * what either stores with KI_FreeAnybuf, unless the comment names another function. A call that fails leaves its
 * outputs as they were.
 *
 * All return 0; KACERT_MemoryErr; KACERT_InvalidParamErr if a pointer is null that the comment does not allow, the data
 * of a reader's source included. Writers also: KACERT_InvalidLengthErr if the element exceeds 32 bits. Readers also:
 * KACERT_LengthNotEqualErr if the element is not exactly source->length octets; KACERT_InvalidLengthErr if a length
 * field has more than four length octets, or is 0x80 and the octets that it then needs are not there. The comments
 * below name only what comes beside these.
 */
#ifndef KARIL_ASN1_H
#define KARIL_ASN1_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Writers that take content octets: source->data, null only with length 0, and source->length. The characters are not
 * checked, and source->tag is not looked at.
 */
KARIL_API int32_t KAsn1_WriteOctetString(const Anybuf *source, Anybuf **out); /* X.690 8.7, tag 0x04 */
KARIL_API int32_t KAsn1_WriteCharString(const Anybuf *source, Anybuf **out);  /* PrintableString, tag 0x13 */
KARIL_API int32_t KAsn1_WriteBmpString(const Anybuf *source, Anybuf **out);   /* tag 0x1E */
KARIL_API int32_t KAsn1_WriteUTF8String(const Anybuf *source, Anybuf **out);  /* tag 0x0C */
KARIL_API int32_t KAsn1_WriteEnumerated(const Anybuf *source, Anybuf **out);  /* X.690 8.4, tag 0x0A */
KARIL_API int32_t KAsn1_WriteIa5String(const Anybuf *source, Anybuf **out);   /* tag 0x16 */

/*
 * INTEGER of any size (X.690 8.3), tag 0x02, from a big-endian magnitude. Its data must not be null. A zero octet is
 * added before a set top bit. Departure from X.690 8.3.2: leading zeros of the source are kept.
 */
KARIL_API int32_t KAsn1_WriteIntegerArray(const Anybuf *source, Anybuf **out);

/* BIT STRING (X.690 8.6), tag 0x03, from content octets. source->unusedBits goes out as the first content octet. */
KARIL_API int32_t KAsn1_WriteBitString(const Anybuf *source, Anybuf **out);

/* Writes a BMPString if source->tag is 30, else a PrintableString. */
KARIL_API int32_t KAsn1_WritePrintableString(const Anybuf *source, Anybuf **out);

/* INTEGER of an unsigned 32-bit value (X.690 8.3). */
KARIL_API int32_t KAsn1_WriteInteger(uint32_t value, Anybuf **out);

/* BOOLEAN (X.690 11.1): 01 01 FF if `*value` is not zero, else 01 01 00. */
KARIL_API int32_t KAsn1_WriteBoolean(const uint8_t *value, Anybuf **out);

/* NULL (X.690 8.8): 05 00. */
KARIL_API int32_t KAsn1_WriteNull(Anybuf **out);

/*
 * OBJECT IDENTIFIER (X.690 8.19), tag 0x06, from the content octets in source->oid. The id word is ignored. No octets
 * are written as 06 00.
 */
KARIL_API int32_t KAsn1_WriteObjectId(const AlgorithmRecord *source, Anybuf **out);

/*
 * String-like readers, all alike. `*out` receives a record with the content octets and the normalised tag. None checks
 * the tag. An INTEGER on the wire loses its sign octet. A source record whose tag is 3 loses its first content octet;
 * unusedBits of the result comes from the source record and not from the wire, so that it is 0 for a BIT STRING node of
 * KAsn1_ReadSequence. A BIT STRING without content is KACERT_InvalidLengthErr.
 */
KARIL_API int32_t KAsn1_ReadOctetString(const Anybuf *source, Anybuf **out);
KARIL_API int32_t KAsn1_ReadBitString(const Anybuf *source, Anybuf **out);
KARIL_API int32_t KAsn1_ReadCharString(const Anybuf *source, Anybuf **out);
KARIL_API int32_t KAsn1_ReadBmpString(const Anybuf *source, Anybuf **out);
KARIL_API int32_t KAsn1_ReadUTF8String(const Anybuf *source, Anybuf **out);
KARIL_API int32_t KAsn1_ReadPrintableString(const Anybuf *source, Anybuf **out);
KARIL_API int32_t KAsn1_ReadEnumerated(const Anybuf *source, Anybuf **out);
KARIL_API int32_t KAsn1_ReadIa5String(const Anybuf *source, Anybuf **out);

/*
 * Does the same into the caller's embedded record `out`, whose data is a block for an empty content too. A previous
 * data of it is not freed. Release it with KI_ClearAnybuf.
 */
KARIL_API int32_t KAsn1_ReadIntegerArray(const Anybuf *source, Anybuf *out);

/*
 * Reads an INTEGER as an unsigned value of 32 bits; higher octets are lost. The tag is not checked. The element may be
 * shorter than the record. If it is longer, the status is KACERT_LengthNotEqualErr.
 */
KARIL_API int32_t KAsn1_ReadInteger(const Anybuf *source, uint32_t *value);

/*
 * Reads a BOOLEAN: stores the first content octet as it stands, so test it for non-zero. The tag is not checked.
 * KACERT_InvalidLengthErr if there is no content.
 */
KARIL_API int32_t KAsn1_ReadBoolean(const Anybuf *source, uint8_t *value);

/*
 * Reads an OBJECT IDENTIFIER as the string-like readers do. `*out` receives a block with an algorithm record: id 0, the
 * content octets in oid. Free (*out)->oid.data and then *out, both with KAPR_Free.
 */
KARIL_API int32_t KAsn1_ReadObjectId(const Anybuf *source, AlgorithmRecord **out);

/*
 * UTCTime and GeneralizedTime: seconds since 1970. Both have the same 13 characters of local time as content;
 * asn1_low.h tells how they are read, and the departures from X.690.
 * Writers: KACERT_InvalidTimeErr if the time is negative.
 * Readers: KACERT_InvalidTagErr if the low 8 bits of source->tag are not 23 (KAsn1_ReadUtcTime) or 24
 * (KAsn1_ReadGeneralizedTime); else the statuses of KAsn1_Low_ReadLongTime. The element may be shorter or longer than
 * the record.
 */
KARIL_API int32_t KAsn1_WriteUtcTime(const int32_t *time, Anybuf **out);         /* tag 0x17 */
KARIL_API int32_t KAsn1_WriteGeneralizedTime(const int32_t *time, Anybuf **out); /* tag 0x18 */
KARIL_API int32_t KAsn1_ReadUtcTime(const Anybuf *source, int32_t *time);
KARIL_API int32_t KAsn1_ReadGeneralizedTime(const Anybuf *source, int32_t *time);

/*
 * SEQUENCE and SET (X.690 8.9, 8.11) around the elements of the chain `first`, in its order. The chain stays the
 * caller's. A null chain is written as 30 00 or 31 00. Departure from X.690 11.6: the elements of a SET are not sorted.
 */
KARIL_API int32_t KAsn1_WriteSequence(const Anybuf *first, Anybuf **out);
KARIL_API int32_t KAsn1_WriteSet(const Anybuf *first, Anybuf **out);

/*
 * Split one level of a SEQUENCE or SET. `*first` receives a chain, linked both ways, with a node for each inner
 * element: the whole element and its normalised tag. It is null if the value is empty.
 * KACERT_InvalidTagErr for another tag; tags are compared normalised, so 0x10 and 0x30 are alike.
 * KACERT_InvalidLengthErr if the header of an inner element is cut off, or if an inner element runs over the end.
 */
KARIL_API int32_t KAsn1_ReadSequence(const Anybuf *source, Anybuf **first);
KARIL_API int32_t KAsn1_ReadSet(const Anybuf *source, Anybuf **first);

/* Wraps the complete element in `source` (X.690 8.14.3). The tag octet is number | 0xA0, of which 8 bits are used. */
KARIL_API int32_t KAsn1_WriteExplicit(const Anybuf *source, uint32_t number, Anybuf **out);

/*
 * Takes the outer header off. `*out` receives the content as the string-like readers store it, `*tag` the normalised
 * tag, such as 0xA0. Any tag is accepted.
 */
KARIL_API int32_t KAsn1_ReadExplicit(const Anybuf *source, Anybuf **out, uint32_t *tag);

/*
 * Replaces the outer tag of a finished element (X.690 8.14.2). The new one is number | 0xA0 if source->tag is 16 or 17.
 * It is number | 0x80 for any other, context tags included.
 * Departure: an INTEGER loses its sign octet and a BIT STRING its unused-bits octet, and neither is written again. The
 * statuses are those of the readers and of the writers.
 */
KARIL_API int32_t KAsn1_WriteImplicit(const Anybuf *source, uint32_t number, Anybuf **out);

/*
 * Opens an implicitly tagged element (X.690 8.14.2). `*number` receives the low five bits of its tag. If the normalised
 * tag has the constructed bit (0x20), `*first` receives the chain of inner elements, null if there is none, as
 * KAsn1_ReadSequence does and with its KACERT_InvalidLengthErr. Otherwise it receives a single node with the content
 * octets as they are. Universal tags lose that bit when they are normalised, so their content always comes as the
 * single node.
 */
KARIL_API int32_t KAsn1_ReadImplicit(const Anybuf *source, Anybuf **first, uint32_t *number);

/*
 * Stores in `*number` the tag number of the element in `source`: the low five bits of its first octet. Returns 0;
 * KACERT_InvalidParamErr if a pointer is null; 1, with nothing stored, if the record has no data.
 */
KARIL_API int32_t KI_GetNumberFromImpOrExplicit(const Anybuf *source, uint32_t *number);

#ifdef __cplusplus
}
#endif

#endif
