/*
 * karil: distinguished names and general names (RFC 5280 4.1.2.4 and 4.2.1.6).
 *
 * Text is held in the local encoding (code page 936). Encoding and decoding convert it to and from the string types on
 * the wire. A call that fails leaves its outputs as they were, unless its comment says otherwise.
 */
#ifndef KARIL_NAME_H
#define KARIL_NAME_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Name attributes, by the number in a name record, with the attribute type. */
enum {
    KA_NAME_EMAIL = 13,              /* 1.2.840.113549.1.9.1 */
    KA_NAME_COMMONNAME = 22,         /* 2.5.4.3 */
    KA_NAME_COUNTRY = 25,            /* 2.5.4.6 */
    KA_NAME_LOCALITY = 26,           /* 2.5.4.7 */
    KA_NAME_STATEORPROVINCE = 27,    /* 2.5.4.8 */
    KA_NAME_ORGANIZATION = 29,       /* 2.5.4.10 */
    KA_NAME_ORGANIZATIONALUNIT = 30, /* 2.5.4.11 */
    KA_NAME_POSTALADDRESS = 34,      /* 2.5.4.16 */
    KA_NAME_POSTALCODE = 35,         /* 2.5.4.17 */
    KA_NAME_TELEPHONE = 38           /* 2.5.4.20 */
};

/*
 * One attribute of a distinguished name. A name is a list of these, in wire order. It is reached through a head: a
 * record embedded in its owner, of which only next is used. The octets of a record may stand in a block with the record
 * itself or in one that the owner keeps: free records with KI_FreeName alone.
 */
typedef struct NameRecord {
    uint32_t id;             /* a number from above; 0 for any other attribute */
    Anybuf oid;              /* attribute type, content octets */
    Anybuf value;            /* the text; its tag names the kind of string */
    uint32_t reserved;       /* 0 */
    struct NameRecord *next; /* next attribute, or null */
} NameRecord;
KARIL_SIZE_32(NameRecord, 68);

/*
 * General names: a slot for each form, one value in each. x400Address, ediPartyName and registeredID are not carried.
 */
typedef struct GeneralNameRecord {
    uint8_t present[8];     /* by the form's tag number: not zero if the slot holds a value */
    uint32_t reserved;      /* 0 */
    uint32_t otherNameKind; /* string type of the otherName's value; see KI_EncodeGeneralName */
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
 * Writes a Name element (RFC 5280 4.1.2.4): a SEQUENCE with a SET of one attribute for each record, in list order; 30
 * 00 if there is none. `head`: not null. The tags of its records' values are set to the type that is chosen, 19 or 22;
 * for a BMPString they stay. `*out`: set to null first, then to a heap record that the caller frees with
 * KI_FreeAnybuf.
 * String types: country and telephone are PrintableString always, e-mail is IA5String always. Any other is
 * PrintableString if all its characters belong to that type, else BMPString. Departures from RFC 5280 4.1.2.4: no
 * UTF8String is written, and the characters of the first three are not checked.
 * Returns 0; KACERT_InvalidParamErr if a pointer is null, or if a value has a length and no data; KACERT_MemoryErr,
 * also for any failure with an attribute type; KACERT_InvalidLengthErr if a text that becomes a BMPString exceeds 1,024
 * octets, or an element exceeds 32 bits.
 */
KARIL_API int32_t KI_EncodeIssuerSuject(const NameRecord *head, Anybuf **out);

/*
 * Reads a whole Name element and appends its attributes to the list of `head`. Neither pointer may be null. Of an RDN
 * with several attributes only the first is taken. The values of BMPString and UTF8String become local text with tag
 * 30. If that text would exceed 1,024 octets, the value is left empty, and the status is 0 all the same. Any other
 * type is kept as KAsn1_ReadPrintableString reads it, with its own tag. An attribute type that is not listed above is
 * kept with id 0. An empty name adds nothing.
 * Returns 0; KACERT_InvalidParamErr if a pointer is null, an RDN has no attribute or an attribute is empty;
 * KACERT_InvalidTagErr, also for an attribute without a value; KACERT_LengthNotEqualErr if the element does not fill
 * the record; KACERT_InvalidLengthErr if an inner element is cut off or runs over its end, and for a BMPString above
 * 2,048 octets or a UTF8String above 1,024; KACERT_MemoryErr. Records that were appended before a failure stay, the
 * last one perhaps without type or value. The owner frees them all with KI_FreeName.
 */
KARIL_API int32_t KI_DecodeIssuerSubject(const Anybuf *source, NameRecord *head);

/*
 * Writes the text of a name in one line: C=, O=, OU=, CN=, E=, S=, L=, PA=, PC=, Phone=, in this order whatever the
 * list's. The fields are separated by commas. Nothing is escaped, and there is no terminator. All organizational units
 * with a text are there, joined by ",OU=". Of any other attribute that occurs twice the last one is taken. Attributes
 * of other types are left out.
 * `result`: only data and length are written. The caller frees data with KAPR_Free; a previous data is not freed. If
 * the list has no attribute for the text, `result` stays as it was. `head`: the list, not null.
 * Returns 0; KACERT_MemoryErr; KACERT_InvalidLengthErr if the text exceeds 1,023 octets; KACERT_InvalidParamErr if a
 * pointer is null, or if a value has a length and no data.
 */
KARIL_API int32_t KI_GetDN(Anybuf *result, const NameRecord *head);

/*
 * Frees the records from `first`, the head's next, to the end, each with its octets. Null is accepted. The head is not
 * touched: set its next to null.
 */
KARIL_API void KI_FreeName(NameRecord *first);

/*
 * Writes local text as a UTF8String element. `text`: `length` octets of code page 936, at most 1,024; not null. A text
 * that would exceed 1,024 octets of UTF-8 is written as an empty string. Free `*out` with KI_FreeAnybuf.
 * Returns 0; KACERT_InvalidLengthErr if `length` exceeds 1,024; KACERT_MemoryErr; KACERT_InvalidParamErr if a pointer
 * is null or the length is below 0.
 */
KARIL_API int32_t KI_EnCodeUtf8(const uint8_t *text, int32_t length, Anybuf **out);

/*
 * KI_EncodeGeneralName writes one GeneralName (RFC 5280 4.2.1.6): the first form that is present, in the order of the
 * tag numbers. KI_EncodeGeneralNameS writes a SEQUENCE of all forms that are present, in that order; 30 00 if there is
 * none. `names`: not null; the tag of an otherName's value may be set. Free `*out` with KI_FreeAnybuf.
 * The value of an otherName is written by otherNameKind: 3 BIT STRING, 4 OCTET STRING, 19 PrintableString, 22
 * IA5String, 30 BMPString, any other UTF8String; BMPString and UTF8String are converted from local text. Departure from
 * RFC 5280 4.2.1.6: the value stands directly after the type, without [0] EXPLICIT around it. Only the plural function
 * with the kind 12 writes that wrapper.
 * Returns 0; KACERT_InvalidParamErr if a pointer is null, a value has a length and no data, or an otherName has no type
 * or no value; KACERT_AlgorithmNotSupportErr if KACert_GetOIDValue refuses the type; KACERT_InvalidLengthErr if the
 * type exceeds 128 octets or a text exceeds the limits of text.h; KACERT_MemoryErr; for a directory name the statuses
 * of KI_EncodeIssuerSuject; the singular function KACERT_AttributeNotSupportErr if nothing is present.
 */
KARIL_API int32_t KI_EncodeGeneralName(GeneralNameRecord *names, Anybuf **out);
KARIL_API int32_t KI_EncodeGeneralNameS(GeneralNameRecord *names, Anybuf **out);

/* Does nothing and returns 0, whatever the arguments. */
KARIL_API int32_t KI_DecodeGeneralName(const Anybuf *source, GeneralNameRecord *names, uint8_t *found);

/*
 * Reads a GeneralNames SEQUENCE into the slots of `names`. The first value of a form stays, later ones are dropped.
 * otherName, x400Address, ediPartyName and registeredID are skipped. `*found` receives 1 if a value was taken, else 0.
 * No pointer may be null. What stands in the slots belongs to the owner of `names`, who releases it with KI_ClearAnybuf
 * and KI_FreeName.
 * Returns 0; KACERT_InvalidParamErr if a pointer is null; KACERT_InvalidTagErr for another element than a SEQUENCE;
 * KACERT_LengthNotEqualErr if the element does not fill the record, and if a directoryName holds no whole element;
 * KACERT_InvalidLengthErr if an inner element is cut off or runs over its end; for a directory name the statuses of
 * KI_DecodeIssuerSubject; KACERT_MemoryErr. What was taken before a failure stays in the slots.
 */
KARIL_API int32_t KI_DecodeGeneralNameS(const Anybuf *source, GeneralNameRecord *names, uint8_t *found);

#ifdef __cplusplus
}
#endif

#endif
