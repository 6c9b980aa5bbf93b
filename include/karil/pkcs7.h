/*
 * karil: what all PKCS#7 messages share (RFC 2315): attribute ids, verdicts, the ContentInfo frame, attribute lists,
 * DigestInfo.
 *
 * A message context is created, filled with numbered attributes, and encoded; a decoded one is asked by the same
 * numbers. Keys, digests and ciphers are reached through hooks. A Set copies what it is given. A context belongs to one
 * thread at a time; after a failure it can still be used or destroyed. A null pointer that the comment of a function
 * does not allow is KACERT_InvalidItemErr. A length of octets to decode: above 0 it is what is there, and an element
 * that claims more is KACERT_LengthNotEqualErr; 0 trusts the element's header; below 0 is KACERT_InvalidLengthErr.
 * Octets after the element are ignored. An element that its parent cuts off is KACERT_InvalidLengthErr, and so is a
 * message whose content type is above 20 octets; a decoder that has one status for all bad frames returns that one.
 *
 * A hook is called with a fresh copy of its parameter, which is wiped and freed after the call, and with an output area
 * that has room for 256 octets beyond its bound; `*outputLength` is the bound before the call. More octets than the
 * bound are KACERT_InvalidLengthErr. What a hook returns other than 0 comes back unchanged.
 */
#ifndef KARIL_PKCS7_H
#define KARIL_PKCS7_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Attribute ids of all families. "Set" or "Get": one way alone; "Int": by the Int functions. Each family's ids have
 * names with a prefix of its own; names without one, which several families use, stand for their lowest number.
 */
enum {
    /* Signers: pkcs7_signer.h. */
    PKCS7_SIGNER_DN = 2, /* Set: a whole Name element; it stands before the components */
    PKCS7_SIGNER_ISSUER_COUNTRY = 3,
    PKCS7_SIGNER_ISSUER_STATEORPROVINCE = 4,
    PKCS7_SIGNER_ISSUER_LOCALITY = 5,
    PKCS7_SIGNER_ISSUER_ORGANIZATION = 6,
    PKCS7_SIGNER_ISSUER_ORGANIZATIONALUNIT = 7,
    PKCS7_SIGNER_ISSUER_COMMONNAME = 8,
    PKCS7_SIGNER_ISSUER_EMAIL = 9,
    PKCS7_SIGNER_ISSUER_POSTALADDRESS = 10,
    PKCS7_SIGNER_SERIAL = 11,         /* the number's octets, without a sign octet */
    PKCS7_SIGNER_DIGEST_ALGO = 12,    /* OID content octets */
    PKCS7_SIGNER_DIGEST_ENC_ALG = 13, /* signature algorithm, OID content octets */
    PKCS7_SIGNER_SIGNATURE = 14,      /* Get */
    PKCS7_SIGNER_CONTENTTYPE = 15,    /* Set: of the message, OID content octets */
    PKCS7_SIGNER_CONTENT = 16,        /* Set: of the message */

    /* Encrypted content: pkcs7_encrypted_content.h. */
    PKCS7_ENCRYPT_CONTENT_TYPE = 17,     /* OID content octets */
    PKCS7_ENCRYPT_ALGO = 18,             /* cipher, OID content octets */
    PKCS7_ENCRYPT_PARAMETER = 19,        /* of the cipher: one whole element */
    PKCS7_ENCRYPT_ENCRYPTEDCONTENT = 20, /* cipher text */
    PKCS7_ENCRYPT_CONTENT = 21,          /* plain text */

    /* Recipients: pkcs7_recipient.h. */
    PKCS7_RECIPIENT_VERSION = 23, /* Int, Get */
    PKCS7_RECIPIENT_DN = 24,      /* Set: a whole Name element; it stands before the components */
    PKCS7_RECIPIENT_ISSUER_COUNTRY = 25,
    PKCS7_RECIPIENT_ISSUER_STATEORPROVINCE = 26,
    PKCS7_RECIPIENT_ISSUER_LOCALITY = 27,
    PKCS7_RECIPIENT_ISSUER_ORGANIZATION = 28,
    PKCS7_RECIPIENT_ISSUER_ORGANIZATIONALUNIT = 29,
    PKCS7_RECIPIENT_ISSUER_COMMONNAME = 30,
    PKCS7_RECIPIENT_ISSUER_EMAIL = 31,
    PKCS7_RECIPIENT_ISSUER_POSTALADDRESS = 32,
    PKCS7_RECIPIENT_SERIAL = 33,
    PKCS7_RECIPIENT_KEYENCRYPTION_ALGO = 35, /* OID content octets */
    PKCS7_RECIPIENT_ENCRYPTED_KEY = 36,
    PKCS7_RECIPIENT_KEY = 37, /* the plain key */

    /* SignedData. */
    PKCS7_SIGNEDDATA_VERSION = 38,     /* Int */
    PKCS7_SIGNEDDATA_DIGEST_ALGO = 39, /* a list of OID content octets */
    PKCS7_SIGNEDDATA_CONTENTTYPE = 40, /* OID content octets */
    PKCS7_SIGNEDDATA_CONTENT = 41,
    PKCS7_SIGNEDDATA_CERTIFICATE = 42, /* a list of certificates */
    PKCS7_SIGNEDDATA_CRL = 43,         /* a list of CRLs */

    /* SignedAndEnvelopedData. */
    PKCS7_SIGNEDANDENVELOPED_VERSION = 44,           /* Int */
    PKCS7_SIGNEDANDENVELOPED_CERTIFICATE = 45,       /* a list of certificates */
    PKCS7_SIGNEDANDENVELOPED_CRL = 46,               /* a list of CRLs */
    PKCS7_SIGNEDANDENVELOPED_DIGEST_ALGO = 47,       /* a list of OID content octets */
    PKCS7_SIGNEDANDENVELOPED_ENCRYPTED_CONTENT = 48, /* the plain content */
    PKCS7_SIGNEDANDENVELOPED_CONTENTTYPE = 49,       /* OID content octets */
    PKCS7_SIGNEDANDENVELOPED_RECIPIENT_KEY = 50,     /* Set: the content's key */

    /* EnvelopedData. */
    PKCS7_ENVELOPED_VERSION = 51,           /* Int */
    PKCS7_ENVELOPED_ENCRYPTED_CONTENT = 52, /* the plain content */
    PKCS7_ENVELOPED_CONTENTTYPE = 53,       /* OID content octets */
    PKCS7_ENVELOPED_RECIPIENT_KEY = 54,     /* Set: the content's key */
    PKCS7_ENVELOPED_CIPHERTEXT = 55,        /* Get */
    PKCS7_ENVELOPED_ALGO = 56,              /* Get: cipher, OID content octets */
    PKCS7_ENVELOPED_PARAMETER = 57,         /* Get: of the cipher, one whole element */

    /* EncryptedData. */
    PKCS7_ENCRYPTEDDATA_VERSION = 58,                     /* Int */
    PKCS7_ENCRYPTEDDATA_CONTENTTYPE = 59,                 /* OID content octets */
    PKCS7_ENCRYPTEDDATA_CONTENTENCRYPTION_PARAMETER = 60, /* the plain content, whatever the name says */

    /* DigestedData. */
    PKCS7_DIGESTED_VERSION = 61,     /* Int */
    PKCS7_DIGESTED_DIGEST_ALGO = 62, /* OID content octets */
    PKCS7_DIGESTED_CONTENTTYPE = 63, /* OID content octets */
    PKCS7_DIGESTED_CONTENT = 64,
    PKCS7_DIGESTED_DIGEST = 65, /* Get: of a decoded message */

    /* Shorter names. */
    PKCS7_ISSUER_COUNTRY = 3,
    PKCS7_ISSUER_STATEORPROVINCE = 4,
    PKCS7_ISSUER_LOCALITY = 5,
    PKCS7_ISSUER_ORGANIZATION = 6,
    PKCS7_ISSUER_ORGANIZATIONALUNIT = 7,
    PKCS7_ISSUER_COMMONNAME = 8,
    PKCS7_ISSUER_EMAIL = 9,
    PKCS7_ISSUER_POSTALADDRESS = 10,
    PKCS7_DIGEST_ALGO = 12,
    PKCS7_RECIPIENTINFO_VERSION = 23,
    PKCS7_VERSION = 38,
    PKCS7_CONTENTTYPE = 40,
    PKCS7_CONTENT = 41,
    PKCS7_CERTIFICATE = 42,
    PKCS7_CRL = 43,
    PKCS7_ENCRYPTED_CONTENT = 48,
    PKCS7_ENVELOPEDDATA_CONTENTTYPE = 53,
    PKCS7_CONTENTENCRYPTION_PARAMETER = 60
};

/* Verdicts. They come beside a status: read both. */
enum {
    PKCS7_VERDICT_NO_HOOK = 100,    /* nothing was checked */
    PKCS7_VERDICT_NO_CONTEXT = 108, /* nothing was checked */
    PKCS7_VERDICT_GOOD = 200,
    PKCS7_VERDICT_BAD = 300
};

/* Content types (RFC 2315 14), by the last octet of their identifier 1.2.840.113549.1.7.n. */
enum {
    PKCS7_TYPE_DATA = 1,
    PKCS7_TYPE_SIGNEDDATA = 2,
    PKCS7_TYPE_ENVELOPEDDATA = 3,
    PKCS7_TYPE_SIGNEDANDENVELOPEDDATA = 4,
    PKCS7_TYPE_DIGESTEDDATA = 5,
    PKCS7_TYPE_ENCRYPTEDDATA = 6,
    PKCS7_TYPE_OTHER = 7 /* any other identifier */
};

/* The tag number of a frame that has no content. */
enum { PKCS7_NO_CONTENT = 100 };

/* An algorithm with its parameters. It begins as an AlgorithmRecord. */
typedef struct AlgorithmIdentifierRecord {
    uint32_t id;       /* 1 once created */
    Anybuf oid;        /* content octets */
    Anybuf parameters; /* one whole element, or none */
} AlgorithmIdentifierRecord;
KARIL_SIZE_32(AlgorithmIdentifierRecord, 60);

/* One attribute of a list (RFC 2315 9.2). */
typedef struct AttributeRecord {
    struct AttributeRecord *next;
    int32_t kind;   /* 52 if a caller set it; 16 messageDigest and 15 contentType, made by a signer; 0 decoded */
    Anybuf oid;     /* content octets */
    Anybuf value;   /* one whole element; the SET around it is not there. Of several values, the first */
    uint32_t count; /* of records in the list; in its first record alone */
} AttributeRecord;
KARIL_SIZE_32(AttributeRecord, 68);

/* The head of a list that is embedded in a PKCS#12 context: `next` is the first attribute, all else is empty. */
typedef struct AttributeHead {
    AttributeRecord *next;
    int32_t kind;
    Anybuf oid;
    Anybuf value;
} AttributeHead;
KARIL_SIZE_32(AttributeHead, 64);

/* One algorithm of a message's digestAlgorithms. */
typedef struct DigestAlgorithmNode {
    uint32_t id; /* 1 if it was set, 0 if it was decoded */
    Anybuf oid;  /* content octets, tag 6 */
    struct DigestAlgorithmNode *next;
} DigestAlgorithmNode;
KARIL_SIZE_32(DigestAlgorithmNode, 36);

/*
 * Writes ContentInfo (RFC 2315 7): SEQUENCE { contentType, [number] { content } }. `content`: a chain of whole
 * elements, which stays the caller's; null writes an empty [number]. `oid`: content octets, `oidLength` of them.
 * `*out`: a heap record, which the caller frees with KI_FreeAnybuf.
 * Returns 0; KACERT_InvalidItemErr; KACERT_InvalidLengthErr for a negative length or more than 32 bits of octets;
 * KACERT_InvalidParamErr for an element with a length and no data; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_MakeContentToSequence(const Anybuf *content, const uint8_t *oid, int32_t oidLength, Anybuf **out,
                                           uint32_t number);

/*
 * Splits a ContentInfo. `der`, `length`: as all octets to decode. `*content`: the elements in the tagged content as a
 * chain, which the caller frees with KI_FreeAnybuf, or the octets of a primitive one as one record; null if there is
 * none. `oid`: receives the identifier's content octets; room for 20. `*oidLength`: their number. `*number`: the tag's
 * low five bits, or PKCS7_NO_CONTENT if nothing follows the identifier. After a failure no output is changed.
 * Returns 0; KACERT_InvalidLengthErr, also for an identifier above 20 octets; KACERT_LengthNotEqualErr;
 * KACERT_InvalidTagErr for what is no SEQUENCE; KACERT_InvalidItemErr, also for an empty one; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_MakeSequenceToContent(const uint8_t *der, int32_t length, Anybuf **content, uint8_t *oid,
                                           uint32_t *oidLength, uint32_t *number);

/*
 * Writes a list as SET OF Attribute (RFC 2315 9.2), tag 31, each with one value. `head`: null writes an empty SET.
 * `*out`: a heap record, which the caller frees with KI_FreeAnybuf. Departure from DER: the order is the list's, and
 * the signature covers just these octets.
 * Returns 0; KACERT_InvalidItemErr; KACERT_InvalidParamErr for a record with a length and no data;
 * KACERT_InvalidLengthErr for more than 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_PKCS7_EncodeAttributes(const AttributeRecord *head, Anybuf **out);

/*
 * Reads the elements of a SET OF Attribute. `chain`: whole elements, as KAsn1_ReadSet hands them out; null is an empty
 * list. `*head`: null or the list; the caller clears oid and value of each record with KI_ClearAnybuf and frees the
 * record with KAPR_Free. Of an attribute with several values the first one alone is taken, and a list that had such a
 * one is not written as it was read. After a failure `*head` is as it was.
 * Returns 0; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_InvalidItemErr, also for
 * an attribute without identifier or SET; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_PKCS7_DecodeAttributes(const Anybuf *chain, AttributeRecord **head);

/*
 * Writes DigestInfo (RFC 2315 9.4): SEQUENCE { SEQUENCE { oid, NULL }, OCTET STRING }. `algorithm`: its OID is
 * taken, whatever it names. `digest`: `digestLength` octets; null only with length 0. `out`: receives the DER, at most
 * 512 octets. Returns 0; KACERT_InvalidLengthErr for a DigestInfo above 512 octets or a negative length;
 * KACERT_InvalidItemErr; KACERT_InvalidParamErr for an OID with a length and no data; KACERT_MemoryErr.
 */
KARIL_API int32_t KI_MakeDigestInfo(const AlgorithmRecord *algorithm, const uint8_t *digest, int32_t digestLength,
                                    uint8_t *out, uint32_t *outLength);

/*
 * Takes `length` octets at `der` of a type from PKCS7_TYPE_DATA to PKCS7_TYPE_ENCRYPTEDDATA and writes nothing: in
 * this version the call does no more. `result`, `resultLength`: not looked at.
 * Returns 0; KAPKCS7_ContentTypeErr for another type; KACERT_InvalidLengthErr for a negative length;
 * KACERT_InvalidItemErr for a null `der` with a length; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_EncodePKCS7DerTypeData(uint8_t *result, uint32_t *resultLength, const uint8_t *der,
                                                  int32_t length, int32_t type);

/*
 * Opens any ContentInfo. `content`: receives the first element of the content, tag and length included; at most
 * as many octets as the ContentInfo has; it may be `der` itself. `*contentLength`: their number. `*type`: the content
 * type, PKCS7_TYPE_OTHER for an identifier that is none of the six. The content's tag number is not looked at.
 * Returns 0; KAPKCS7_ContentTypeErr for a ContentInfo without content; the statuses of KI_MakeSequenceToContent.
 */
KARIL_API int32_t KA_PKCS7_DecodePKCS7DerTypeData(const uint8_t *der, int32_t length, uint8_t *content,
                                                  uint32_t *contentLength, int32_t *type);

#ifdef __cplusplus
}
#endif

#endif
