/*
 * karil: distinguished names and general names (RFC 5280 4.1.2.4 and 4.2.1.6).
 *
 * Text is held in the local encoding (code page 936); encoding and decoding convert it to and from the string types
 * on the wire. A call that fails leaves its outputs as they were unless told otherwise.
 */
#ifndef KARIL_NAME_H
#define KARIL_NAME_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Name attributes, by the number in a name record. */
enum {
    KA_NAME_EMAIL = 13,
    KA_NAME_COMMONNAME = 22,
    KA_NAME_COUNTRY = 25,
    KA_NAME_LOCALITY = 26,
    KA_NAME_STATEORPROVINCE = 27,
    KA_NAME_ORGANIZATION = 29,
    KA_NAME_ORGANIZATIONALUNIT = 30,
    KA_NAME_POSTALADDRESS = 34,
    KA_NAME_POSTALCODE = 35,
    KA_NAME_TELEPHONE = 38
};

/*
 * One attribute of a distinguished name, in wire order. A name is reached through a head: a record embedded in its
 * owner of which only next is used. Each record goes with its octets, which need not be blocks of their own.
 */
typedef struct NameRecord {
    uint32_t id;             /* a number from above; 0 for any other attribute */
    Anybuf oid;              /* attribute type, content octets */
    Anybuf value;            /* the text; its tag names the kind of string */
    uint32_t reserved;       /* 0 */
    struct NameRecord *next; /* next attribute, or null */
} NameRecord;
KARIL_SIZE_32(NameRecord, 68);

/* General names: a slot for each form, one value each. x400Address and ediPartyName are not carried. */
typedef struct GeneralNameRecord {
    uint8_t present[8];     /* by the form's tag number: not zero where the slot holds a value */
    uint32_t reserved;      /* 0 */
    uint32_t otherNameKind; /* tag of the otherName's value: 3, 4, 12, 19, 22, 30; any other is written as 12 is */
    Anybuf otherNameType;   /* 0: type identifier as dotted text */
    Anybuf otherNameValue;
    Anybuf rfc822Name;                /* 1: e-mail */
    Anybuf dNSName;                   /* 2 */
    uint32_t x400Address;             /* 3: never used */
    NameRecord directoryName;         /* 4: head of a name */
    uint32_t ediPartyName;            /* 5: never used */
    Anybuf uniformResourceIdentifier; /* 6 */
    Anybuf iPAddress;                 /* 7: raw address octets */
} GeneralNameRecord;
KARIL_SIZE_32(GeneralNameRecord, 260);

/*
 * Writes a name: a SEQUENCE with a SET of one attribute for each record, in list order; 30 00 for none.
 * `head`: not null; the tags of its records' values are set to what was chosen. `*out`: set to null first, then to a
 * heap record that the caller frees with KI_FreeAnybuf.
 * String types: country and telephone PrintableString always, e-mail IA5String always; any other PrintableString
 * where all its characters belong to that type, else BMPString. Departure from RFC 5280 4.1.2.4: no UTF8String.
 * Returns 0; KACERT_InvalidParamErr for a null pointer, a value's data behind a length included; KACERT_MemoryErr,
 * also for any failure with an attribute type; KACERT_InvalidLengthErr for text above 1,024 octets that needs
 * conversion.
 */
KARIL_API int32_t KI_EncodeIssuerSuject(const NameRecord *head, Anybuf **out);

/*
 * Reads a whole Name element and appends its attributes to the list of `head`. Of a multi-valued RDN only the first
 * attribute is taken. BMPString and UTF8String values become local text with tag 30, any other string type is kept
 * as it stands with its own tag. An empty name adds nothing.
 * Returns 0; KACERT_InvalidParamErr for a null pointer or an RDN or attribute without its element;
 * KACERT_InvalidTagErr, also for an attribute without a value; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr,
 * also for text above the limits of text.h; KACERT_MemoryErr. Records appended before a failure stay, the last
 * perhaps empty: the owner frees them all with KI_FreeName.
 */
KARIL_API int32_t KI_DecodeIssuerSubject(const Anybuf *source, NameRecord *head);

/*
 * Writes the name's text in one line: C=, O=, OU=, CN=, E=, S=, L=, PA=, PC=, Phone= in this order whatever the
 * list's, separated by commas, without a terminator and without escaping. Organizational units are joined by
 * ",OU=", empty ones left out; of any other attribute the last one counts.
 * `result`: only data and length are written; data, which the caller frees with KAPR_Free, replaces nothing.
 * A list with none of these attributes leaves `result` as it was.
 * Returns 0; KACERT_MemoryErr; KACERT_InvalidLengthErr where the text and its last separator exceed 1,024 octets;
 * KACERT_InvalidParamErr for a null pointer, a value's data behind a length included.
 */
KARIL_API int32_t KI_GetDN(Anybuf *result, const NameRecord *head);

/* Frees the records from `first`, the head's next, to the end, with their data. Null is accepted. */
KARIL_API void KI_FreeName(NameRecord *first);

/*
 * Writes local text as a UTF8String element. `text`: `length` octets, 1,024 at most; what cannot be converted gives
 * an empty string. Free `*out` with KI_FreeAnybuf.
 * Returns 0; KACERT_InvalidLengthErr; KACERT_MemoryErr; KACERT_InvalidParamErr for a null pointer or a length below 0.
 */
KARIL_API int32_t KI_EnCodeUtf8(const uint8_t *text, int32_t length, Anybuf **out);

/*
 * KI_EncodeGeneralName writes the first form that is present, in the order of the tag numbers, and no other.
 * KI_EncodeGeneralNameS writes a SEQUENCE of all that are present; 30 00 for none.
 * `names`: not null; the value's tag of an otherName may be set. `*out`: free it with KI_FreeAnybuf.
 * Departure from RFC 5280 4.2.1.6: an otherName's value has its [0] EXPLICIT wrapper only where its kind is 12 and
 * the plural function writes it.
 * Returns 0; KACERT_InvalidParamErr for a null pointer or an otherName without type or value;
 * KACERT_AlgorithmNotSupportErr for a type that KACert_GetOIDValue does not take; KACERT_InvalidLengthErr for one above
 * 128 octets or text above the limits of text.h; KACERT_MemoryErr; the singular function
 * KACERT_AttributeNotSupportErr where nothing is present.
 */
KARIL_API int32_t KI_EncodeGeneralName(GeneralNameRecord *names, Anybuf **out);
KARIL_API int32_t KI_EncodeGeneralNameS(GeneralNameRecord *names, Anybuf **out);

/* Does nothing and returns 0, whatever the arguments. */
KARIL_API int32_t KI_DecodeGeneralName(const Anybuf *source, GeneralNameRecord *names, uint8_t *found);

/*
 * Reads a GeneralNames SEQUENCE into the slots of `names`. The first value of a form stays, later ones are dropped;
 * otherName, x400Address, ediPartyName and registeredID are passed over. `*found`: 1 if a value was taken, else 0.
 * Returns 0 or the status of the reader that failed; KACERT_InvalidParamErr for a null pointer. What was taken before
 * a failure stays in the slots.
 */
KARIL_API int32_t KI_DecodeGeneralNameS(const Anybuf *source, GeneralNameRecord *names, uint8_t *found);

#ifdef __cplusplus
}
#endif

#endif
