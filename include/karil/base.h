/* karil: the records, status codes, memory and trace entry points that every family shares. */
#ifndef KARIL_BASE_H
#define KARIL_BASE_H

#include <stddef.h>
#include <stdint.h>

/* Marks what the shared library exports; all else in it is hidden. */
#define KARIL_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define KARIL_STATIC_ASSERT(CONDITION, WORDS) static_assert(CONDITION, WORDS)
extern "C" {
#else
#define KARIL_STATIC_ASSERT(CONDITION, WORDS) _Static_assert(CONDITION, WORDS)
#endif

/* Checks a record's size. On a 32-bit ABI a record is exactly the sum of its words. */
#if UINTPTR_MAX == 0xFFFFFFFFu
#define KARIL_SIZE_32(TYPE, SIZE) KARIL_STATIC_ASSERT(sizeof(TYPE) == (SIZE), #TYPE " has its fixed 32-bit size")
#else
#define KARIL_SIZE_32(TYPE, SIZE) KARIL_STATIC_ASSERT(sizeof(TYPE) >= (SIZE), #TYPE " holds all its fields")
#endif

/*
 * Status codes. 0 is success; 119, 120 and 129 to 138 are never returned. PEM, base64 and DN strings return 0 or -1.
 * Any other number is named in the comment of the function that returns it.
 */
enum {
    KACERT_Ok = 0,
    KACERT_MemoryErr = 100,              /* an allocation failed; a time that was read does not fit */
    KACERT_InvalidLengthErr = 101,       /* a length or size is out of bounds */
    KACERT_LengthNotEqualErr = 102,      /* a DER length does not agree with the octets that are there */
    KACERT_InvalidTimeDigitErr = 103,    /* a time field does not fit two decimal digits */
    KACERT_InvalidTimeEndErr = 104,      /* time text has no Z as its thirteenth character */
    KACERT_InvalidIntegerErr = 105,      /* never returned: every 32-bit unsigned value can be written */
    KACERT_InvalidTagErr = 106,          /* a DER tag is not the one required */
    KACERT_InvalidSignatureLenErr = 107, /* a signature's length is out of range */
    KACERT_InvalidParamErr = 108,        /* an argument or input value is wrong */
    KACERT_CertNotEndErr = 109,          /* certificate or extension bytes end too early */
    KACERT_AttributeNotSupportErr = 110, /* an attribute id that the function has no case for */
    KACERT_CrlNotEndErr = 111,           /* CRL bytes end too early */
    KACERT_CsrNotEndErr = 112,           /* request bytes end too early */
    KACERT_InvalidPrivateKeyErr = 113,   /* a number of a private key is missing */
    KACERT_AttributeAlreadySet = 114,    /* a one-time attribute is set a second time */
    KACERT_InvalidTimeErr = 115,         /* a time to be written is negative */
    KACERT_DnNotEqualErr = 116,          /* issuer and subject names do not match */
    KACERT_TimeOutRangeErr = 117,        /* a validity window does not hold */
    KACERT_InvalidSignatureAlgErr = 118, /* a signature algorithm that verification does not know */
    KACERT_InvalidItemErr = 121,         /* a required item is null, absent or of the wrong kind */
    KAPKCS7_ContentTypeErr = 122,        /* a PKCS#7 content is missing or of another kind */
    KAPKCS7_IndefiniteFormatErr = 123,   /* malformed input of the indefinite-length conversion */
    KAPKCS7_GenKeyErr = 124,             /* RSA key generation failed */
    KAPKCS7_DigestAlgErr = 125,          /* an unknown digest id */
    KAPKCS7_RsaOperationErr = 126,       /* an RSA primitive failed */
    KAPKCS7_SignErr = 127,               /* the private-key step of signing failed */
    KACERT_VerifySignatureErr = 128,     /* a signature does not verify, or its key could not be loaded */
    KACERT_AlgorithmNotSupportErr = 139  /* an OID text or an algorithm id that is not known */
};

/*
 * Byte buffer, DER node and list link of the whole library.
 *
 * A heap record comes from KAsn1_Low_CreateAnyBuf or from a DER writer, reader or encoder, and is freed with
 * KI_FreeAnybuf. Its data is null or a block of its own from KAPR_Malloc, so that its owner may keep it, move it to
 * another record or free it with KAPR_Free.
 *
 * An embedded record is a field of another record. It is prepared with KI_InitAnybuf and released with KI_ClearAnybuf.
 * The two kinds must not be mixed.
 *
 * A record inside a context may hold part of a larger block that the context keeps. Its form is then 0x80000002. Only
 * read such data: do not free it, and do not move it to another record. The functions of this library know the mark.
 * KI_ClearAnybuf does not free such data, and KI_CopyAnybuf copies it into a block of its own.
 */
typedef struct Anybuf {
    uint8_t *data;       /* a whole DER element, or the content octets of one that was read */
    uint32_t length;     /* octets at data */
    uint32_t unusedBits; /* of a BIT STRING (X.690 8.6); meaningful only if tag is 3 */
    uint32_t form;       /* the library's own: 2 from the DER engine, else 0; 0x80000002: data is part of a block that a
                            context keeps */
    uint32_t tag;        /* universal tags: the number (16 for SEQUENCE); context tags: the octet (0xA0) */
    struct Anybuf *next; /* next element of a chain, or null */
    struct Anybuf *prev; /* previous element of a chain that a reader made, or null */
} Anybuf;
KARIL_SIZE_32(Anybuf, 28);

/*
 * An object identifier: its content octets (X.690 8.19), never dotted text. One exception: the key algorithm of a
 * decoded certificate or request holds the whole OBJECT IDENTIFIER element, with tag and length.
 */
typedef struct AlgorithmRecord {
    uint32_t id; /* 1 in a new context; nothing depends on it */
    Anybuf oid;
} AlgorithmRecord;
KARIL_SIZE_32(AlgorithmRecord, 32);

/*
 * The library's own notes on a list that a context owns: its last node, and the node that was asked for last with its
 * position. Callers leave them alone.
 */
typedef struct ListMarks {
    void *last;
    void *node;
    uint32_t position;
} ListMarks;
KARIL_SIZE_32(ListMarks, 12);

/*
 * A hook: how an object family reaches a key, a digest or a cipher that lives anywhere. `input`, `inputLength`: the
 * octets to work on. `output`: the area for the result, or null in a call that asks for no result. `outputLength`:
 * receives the octets written; the function that stores the hook tells what it holds on entry. `parameter`: the hook's
 * own. Returns 0. Any other value stops the operation, which returns that value unchanged.
 */
typedef int32_t (*KAHookFunc)(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                              void *parameter);

/*
 * Returns a block of `size` octets, every one zero, or null if memory is exhausted. A size of 0 returns a valid block.
 * `source` (may be null) and `line` name the call site and are not used otherwise. Free the block with KAPR_Free. All
 * memory of the library comes from here.
 *
 * A program can put functions of its own in the place of the six KAPR_ functions, by defining or preloading the
 * symbols. They must behave as said here, and KAPR_Malloc and KAPR_Free go together. No other function can be replaced:
 * a program's own function of the same name changes nothing inside the library.
 */
KARIL_API void *KAPR_Malloc(const char *source, int32_t line, uint32_t size);

/* Frees a block of KAPR_Malloc. Null is accepted and ignored. */
KARIL_API void KAPR_Free(void *block);

/*
 * The trace. `logName` is always "kacert.log", `source` and `line` name the call site, `message` is one of the
 * library's trace words: "======>NAME Begin" and "======>NAME End" for a call, "------>WORDS" for a failure. None of
 * the arguments is kept. The library's own four functions do nothing, and it calls the first one alone.
 */
KARIL_API void KAPR_DebugMessage(const char *logName, const char *source, int32_t line, const char *message);
KARIL_API void KAPR_DebugValMessage(const char *logName, ...);
KARIL_API void KAPR_DebugDumpData(const char *logName, ...);
KARIL_API void KAPR_Display_memory(const char *logName, ...);

/*
 * Makes a heap record, all fields zero but form, which is 2, and stores it in `*out`. Free it with KI_FreeAnybuf.
 * Returns 0; KACERT_MemoryErr, with nothing stored; KACERT_InvalidParamErr if `out` is null.
 */
KARIL_API int32_t KAsn1_Low_CreateAnyBuf(Anybuf **out);

/* Zeroes all seven fields and frees nothing. Returns `record`. Null is accepted. */
KARIL_API Anybuf *KI_InitAnybuf(Anybuf *record);

/* Frees data and zeroes all seven fields. The record stays, and next is not followed. Null is accepted. */
KARIL_API void KI_ClearAnybuf(Anybuf *record);

/* Frees a chain of heap records from `first` to its end, each with its data. Null is accepted. */
KARIL_API void KI_FreeAnybuf(Anybuf *first);

/*
 * Copies one record: all fields as they stand, and data into a new block, which is a valid block for a length of 0 too.
 * If the source's data is part of a larger block, form becomes 2. next and prev still point at the source's neighbours.
 * A previous data of `destination` is not freed: clear it first.
 * Returns 0; KACERT_MemoryErr, with `destination` as it was; KACERT_InvalidParamErr if a pointer is null, or if the
 * source has a length above 0 and no data.
 */
KARIL_API int32_t KI_CopyAnybuf(Anybuf *destination, const Anybuf *source);

/*
 * Copies `length` octets at `value` into a new block, stores block and length in the record, and clears unusedBits,
 * form, next and prev; tag keeps its value. A length of 0 stores a valid block, and `value` may then be null. A
 * previous data is not freed: clear the record first if it may hold a value.
 * Returns 0; KACERT_MemoryErr, with data null and length 0; KACERT_InvalidParamErr if the record is null, or if `value`
 * is null and `length` is above 0.
 */
KARIL_API int32_t KI_SetAttributeCharValue(Anybuf *record, const uint8_t *value, uint32_t length);

/*
 * Copies the id word, and the object identifier as KI_CopyAnybuf does. A previous data of `destination` is not freed.
 * Returns 0, KACERT_MemoryErr or KACERT_InvalidParamErr as KI_CopyAnybuf does; `destination` is then as it was.
 */
KARIL_API int32_t KI_CopyAlgorithm(AlgorithmRecord *destination, const AlgorithmRecord *source);

#ifdef __cplusplus
}
#endif

#endif
