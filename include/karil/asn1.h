/*
 * karil: typed writers and readers of DER elements.
 *
 * Writers make one heap record that holds the complete element and store it through `out`; the source stays as it
 * is and stays the caller's. `out` may be the address of the previous node's next, which is how a chain is built.
 * Readers take a record that holds one complete element of exactly its length, as KAsn1_ReadSequence makes it. Free
 * what either stores with KI_FreeAnybuf unless told otherwise. A call that fails leaves its outputs as they were.
 *
 * Statuses that all share: KACERT_MemoryErr; KACERT_InvalidParamErr for a null pointer; writers:
 * KACERT_InvalidLengthErr for an element above 32 bits; readers: KACERT_LengthNotEqualErr where the element is not
 * exactly source->length octets, KACERT_InvalidLengthErr for a length field of more than four length octets or
 * content that would lie outside the record.
 */
#ifndef KARIL_ASN1_H
#define KARIL_ASN1_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Writers that take content octets: source->data (null only with length 0) and source->length. The characters are
 * not checked and source->tag is not looked at.
 */
KARIL_API int32_t KAsn1_WriteOctetString(const Anybuf *source, Anybuf **out); /* X.690 8.7, tag 0x04 */
KARIL_API int32_t KAsn1_WriteCharString(const Anybuf *source, Anybuf **out);  /* PrintableString, tag 0x13 */
KARIL_API int32_t KAsn1_WriteBmpString(const Anybuf *source, Anybuf **out);   /* tag 0x1E */
KARIL_API int32_t KAsn1_WriteUTF8String(const Anybuf *source, Anybuf **out);  /* tag 0x0C */
KARIL_API int32_t KAsn1_WriteEnumerated(const Anybuf *source, Anybuf **out);  /* X.690 8.4, tag 0x0A */
KARIL_API int32_t KAsn1_WriteIa5String(const Anybuf *source, Anybuf **out);   /* tag 0x16 */

/*
 * INTEGER of any size (X.690 8.3), tag 0x02, from a big-endian magnitude whose data must not be null. A zero octet
 * is added in front of a set top bit. Departure from X.690 8.3.2: leading zeros of the source are kept.
 */
KARIL_API int32_t KAsn1_WriteIntegerArray(const Anybuf *source, Anybuf **out);

/* BIT STRING (X.690 8.6), tag 0x03: source->unusedBits goes out as the first content octet. */
KARIL_API int32_t KAsn1_WriteBitString(const Anybuf *source, Anybuf **out);

/* KAsn1_WriteBmpString where source->tag is 30, KAsn1_WriteCharString for any other. */
KARIL_API int32_t KAsn1_WritePrintableString(const Anybuf *source, Anybuf **out);

/* INTEGER of an unsigned 32-bit value. */
KARIL_API int32_t KAsn1_WriteInteger(uint32_t value, Anybuf **out);

/* BOOLEAN (X.690 11.1): 01 01 FF where `*value` is not zero, else 01 01 00. */
KARIL_API int32_t KAsn1_WriteBoolean(const uint8_t *value, Anybuf **out);

/* NULL: 05 00. */
KARIL_API int32_t KAsn1_WriteNull(Anybuf **out);

/* OBJECT IDENTIFIER from content octets (X.690 8.19), tag 0x06. The id word is ignored; no octets give 06 00. */
KARIL_API int32_t KAsn1_WriteObjectId(const AlgorithmRecord *source, Anybuf **out);

/*
 * String-like readers: all alike. `*out` receives a record with the content octets and the normalised tag. None
 * checks the tag. As KAsn1_Low_ReadTagAndLength tells, an INTEGER loses its sign octet, and a source record whose
 * tag is 3 loses its first content octet, unusedBits being taken from the record and not from the wire: a BIT STRING
 * node from KAsn1_ReadSequence gives 0.
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
 * As the string-like readers, into the caller's embedded record; a previous data of it is not freed. Free with
 * KI_ClearAnybuf.
 */
KARIL_API int32_t KAsn1_ReadIntegerArray(const Anybuf *source, Anybuf *out);

/*
 * Reads an INTEGER as an unsigned value of 32 bits, higher octets being lost. Neither the tag nor the element's size
 * against the record is checked, but the content must be there: KACERT_LengthNotEqualErr, or
 * KACERT_InvalidLengthErr where only the 0x80 reading puts it past the end.
 */
KARIL_API int32_t KAsn1_ReadInteger(const Anybuf *source, uint32_t *value);

/* Stores the first content octet as it stands: test it for non-zero. No content: KACERT_InvalidLengthErr. */
KARIL_API int32_t KAsn1_ReadBoolean(const Anybuf *source, uint8_t *value);

/*
 * Stores a block with an algorithm record: id 0, the content octets in oid. Free (*out)->oid.data and then *out with
 * KAPR_Free.
 */
KARIL_API int32_t KAsn1_ReadObjectId(const Anybuf *source, AlgorithmRecord **out);

/*
 * Times: seconds since 1970, as asn1_low.h tells. Both tags carry the same 13 characters of local time.
 * Writers: KACERT_InvalidTimeErr for a negative time.
 * Readers: KACERT_InvalidTagErr where the low 8 bits of source->tag are not 23 or 24; else as KAsn1_Low_ReadLongTime.
 */
KARIL_API int32_t KAsn1_WriteUtcTime(const int32_t *time, Anybuf **out);         /* tag 0x17 */
KARIL_API int32_t KAsn1_WriteGeneralizedTime(const int32_t *time, Anybuf **out); /* tag 0x18 */
KARIL_API int32_t KAsn1_ReadUtcTime(const Anybuf *source, int32_t *time);
KARIL_API int32_t KAsn1_ReadGeneralizedTime(const Anybuf *source, int32_t *time);

/*
 * SEQUENCE and SET (X.690 8.9, 8.11) around the elements of the chain `first`, which may be null: 30 00, 31 00. The
 * chain stays the caller's. Departure from X.690 11.6: a SET keeps the caller's order.
 */
KARIL_API int32_t KAsn1_WriteSequence(const Anybuf *first, Anybuf **out);
KARIL_API int32_t KAsn1_WriteSet(const Anybuf *first, Anybuf **out);

/*
 * Split one level: `*first` receives a chain, linked both ways, with a node for each inner element: the whole
 * element and its normalised tag. An empty value is success with null.
 * KACERT_InvalidTagErr for another tag (normalised, so 0x10 and 0x30 are alike); KACERT_InvalidLengthErr for an inner
 * element that is malformed or runs over the end.
 */
KARIL_API int32_t KAsn1_ReadSequence(const Anybuf *source, Anybuf **first);
KARIL_API int32_t KAsn1_ReadSet(const Anybuf *source, Anybuf **first);

/* Wraps the complete element in `source` with the tag octet number | 0xA0 (X.690 8.14.3). Only 8 bits are used. */
KARIL_API int32_t KAsn1_WriteExplicit(const Anybuf *source, uint32_t number, Anybuf **out);

/*
 * Takes the outer header off: `*out` receives the content, `*tag` the normalised tag, such as 0xA0, whatever it is.
 * The content is treated as the string-like readers do.
 */
KARIL_API int32_t KAsn1_ReadExplicit(const Anybuf *source, Anybuf **out, uint32_t *tag);

/*
 * Replaces the outer tag of a finished element (X.690 8.14.2) by number | 0xA0 where source->tag is 16 or 17, by
 * number | 0x80 for any other, context tags included.
 * Departure: the content passes through KAsn1_Low_ReadTagAndLength, so that an INTEGER loses its sign octet and a
 * BIT STRING its unused-bits octet, and neither is written back.
 */
KARIL_API int32_t KAsn1_WriteImplicit(const Anybuf *source, uint32_t number, Anybuf **out);

/*
 * Opens an implicitly tagged element; `*number` receives the low five bits of its tag. With the constructed bit
 * (0x20) in the normalised tag, `*first` receives the chain of inner elements, null for none; without it, a single
 * node with the content octets as they are. Universal tags lose that bit and always give the single node.
 */
KARIL_API int32_t KAsn1_ReadImplicit(const Anybuf *source, Anybuf **first, uint32_t *number);

/*
 * Stores the tag number of the element in `source`: the low five bits of its first octet. Returns 0;
 * KACERT_InvalidParamErr if either pointer is null; 1, storing nothing, where the record has no data.
 */
KARIL_API int32_t KI_GetNumberFromImpOrExplicit(const Anybuf *source, uint32_t *number);

#ifdef __cplusplus
}
#endif

#endif
