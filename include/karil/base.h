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

/* Checks a record's size where pointers have 32 bits: there a record is exactly the sum of its words. */
#if UINTPTR_MAX == 0xFFFFFFFFu
#define KARIL_SIZE_32(TYPE, SIZE) KARIL_STATIC_ASSERT(sizeof(TYPE) == (SIZE), #TYPE " has its fixed 32-bit size")
#else
#define KARIL_SIZE_32(TYPE, SIZE) KARIL_STATIC_ASSERT(sizeof(TYPE) >= (SIZE), #TYPE " holds all its fields")
#endif

/* Status codes. 0 is success; 119, 120 and 129 to 138 are never returned. */
enum {
    KACERT_Ok = 0,
    KACERT_MemoryErr = 100,              /* an allocation returned nothing */
    KACERT_InvalidLengthErr = 101,       /* a length or size is out of bounds */
    KACERT_LengthNotEqualErr = 102,      /* a DER length does not agree with the bytes given */
    KACERT_InvalidTimeDigitErr = 103,    /* a time field does not fit two decimal digits */
    KACERT_InvalidTimeEndErr = 104,      /* time text lacks its terminating Z */
    KACERT_InvalidIntegerErr = 105,      /* reserved: every 32-bit unsigned value can be written */
    KACERT_InvalidTagErr = 106,          /* a DER tag is not the one required */
    KACERT_InvalidSignatureLenErr = 107, /* a signature's length is out of range */
    KACERT_InvalidParamErr = 108,        /* an argument or input value is wrong */
    KACERT_CertNotEndErr = 109,          /* certificate or extension bytes end too early */
    KACERT_AttributeNotSupportErr = 110, /* an attribute id that the function has no case for */
    KACERT_CrlNotEndErr = 111,           /* CRL bytes end too early */
    KACERT_CsrNotEndErr = 112,           /* request bytes end too early */
    KACERT_InvalidPrivateKeyErr = 113,   /* a number of a private key could not be read */
    KACERT_AttributeAlreadySet = 114,    /* a one-time attribute is set a second time */
    KACERT_InvalidTimeErr = 115,         /* a negative time */
    KACERT_DnNotEqualErr = 116,          /* issuer and subject names do not match */
    KACERT_TimeOutRangeErr = 117,        /* a validity window does not hold */
    KACERT_InvalidSignatureAlgErr = 118, /* an unknown signature algorithm */
    KACERT_InvalidItemErr = 121,         /* a required item is null, absent or of the wrong kind */
    KAPKCS7_ContentTypeErr = 122,        /* a PKCS#7 content is missing or of another kind */
    KAPKCS7_IndefiniteFormatErr = 123,   /* malformed input of the indefinite-length conversion */
    KAPKCS7_GenKeyErr = 124,             /* RSA key generation failed */
    KAPKCS7_DigestAlgErr = 125,          /* an unknown digest id */
    KAPKCS7_RsaOperationErr = 126,       /* an RSA primitive failed */
    KAPKCS7_SignErr = 127,               /* the private-key step of signing failed */
    KACERT_VerifySignatureErr = 128,     /* a signature does not verify, or its key could not be loaded */
    KACERT_AlgorithmNotSupportErr = 139  /* an OID text or an algorithm id with no branch */
};

/*
 * Byte buffer, DER node and list link of the whole library.
 *
 * A heap record comes from KAsn1_Low_CreateAnyBuf or from a DER writer or reader and is released with
 * KI_FreeAnybuf. An embedded record is a field of another record: it is prepared with KI_InitAnybuf and released
 * with KI_ClearAnybuf. The two kinds must not be mixed. Data belongs to its record and goes with it: it need not be a
 * block of its own, so it is not to be freed or moved to another record by hand.
 */
typedef struct Anybuf {
    uint8_t *data;       /* a whole DER element, or the content octets of one that was read */
    uint32_t length;     /* octets at data */
    uint32_t unusedBits; /* of a BIT STRING (X.690 8.6); meaningful only where tag is 3 */
    uint32_t form;       /* the library's own: 2 in records of the DER engine, 0 elsewhere, 0x80000002 where data is
                            part of a larger block */
    uint32_t tag;        /* universal tags: the number (16 for SEQUENCE); context tags: the octet (0xA0) */
    struct Anybuf *next; /* next element of a chain, or null */
    struct Anybuf *prev; /* previous element of a chain that a reader made, or null */
} Anybuf;
KARIL_SIZE_32(Anybuf, 28);

/* An object identifier value: content octets (X.690 8.19), never dotted text. */
typedef struct AlgorithmRecord {
    uint32_t id;
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
 * A hook: how an object family reaches a key, a digest or a cipher that lives anywhere. `input` and `inputLength`:
 * the octets to work on. `output`: the caller's area, or null where only the length is asked for. `outputLength`:
 * receives the octets written. `parameter`: the hook's own. Returns 0, or any other value, which stops the
 * operation in hand and comes back from it unchanged.
 */
typedef int32_t (*KAHookFunc)(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                              void *parameter);

/*
 * Gives a block of `size` octets, every one zero, or null where memory is exhausted. A size of 0 gives a valid
 * block. `source` (may be null) and `line` name the call site and are not otherwise used.
 * All memory of the library comes from here; a program may put its own function in this one's place by defining
 * or preloading the symbol, together with KAPR_Free. The caller releases the block with KAPR_Free.
 */
KARIL_API void *KAPR_Malloc(const char *source, int32_t line, uint32_t size);

/* Releases a block of KAPR_Malloc. Null is accepted and ignored. */
KARIL_API void KAPR_Free(void *block);

/*
 * The trace. `logName` is always "kacert.log", `source` and `line` name the call site, `message` is one of the
 * library's trace words: "======>NAME Begin" and "======>NAME End" for a call, "------>WORDS" for a failure.
 * The library's own functions do nothing; a program sees the trace by defining or preloading these symbols.
 */
KARIL_API void KAPR_DebugMessage(const char *logName, const char *source, int32_t line, const char *message);
KARIL_API void KAPR_DebugValMessage(const char *logName, ...);
KARIL_API void KAPR_DebugDumpData(const char *logName, ...);
KARIL_API void KAPR_Display_memory(const char *logName, ...);

/*
 * Makes a heap record, all fields zero but form, which is 2, and stores it in `*out`.
 * Returns 0, KACERT_MemoryErr, or KACERT_InvalidParamErr for a null `out`. Free it with KI_FreeAnybuf.
 */
KARIL_API int32_t KAsn1_Low_CreateAnyBuf(Anybuf **out);

/* Zeroes all seven fields, releasing nothing. Null is accepted. Returns `record`. */
KARIL_API Anybuf *KI_InitAnybuf(Anybuf *record);

/* Frees data and zeroes all seven fields; next is not followed and the record stays. Null is accepted. */
KARIL_API void KI_ClearAnybuf(Anybuf *record);

/* Frees a chain of heap records from `first` to its end, each with its data. Null is accepted. */
KARIL_API void KI_FreeAnybuf(Anybuf *first);

/*
 * Copies one record: all fields as they stand and data into a new block, or null where the source has none; form
 * becomes 2 where the source's data is part of a larger block. next and prev still point at the source's neighbours. A
 * previous data of `destination` is not freed: clear it first. Returns 0; KACERT_MemoryErr, with `destination` left as
 * it was; KACERT_InvalidParamErr if either is null.
 */
KARIL_API int32_t KI_CopyAnybuf(Anybuf *destination, const Anybuf *source);

/*
 * Copies `length` octets at `value` into a new block, stores it and the length, and clears unusedBits, form, next
 * and prev; tag keeps its value. A length of 0 gives a valid block. A previous data is not freed: clear it first
 * where a value may stand. Returns 0; KACERT_MemoryErr, with data null and length 0; KACERT_InvalidParamErr for a
 * null record, or a null `value` with a length above 0.
 */
KARIL_API int32_t KI_SetAttributeCharValue(Anybuf *record, const uint8_t *value, uint32_t length);

/*
 * Copies the id word and then the object identifier by KI_CopyAnybuf, whose statuses it returns;
 * KACERT_InvalidParamErr if either is null.
 */
KARIL_API int32_t KI_CopyAlgorithm(AlgorithmRecord *destination, const AlgorithmRecord *source);

#ifdef __cplusplus
}
#endif

#endif
