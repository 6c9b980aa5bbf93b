/*
 * karil: SafeBag and SafeContents of PKCS#12 (RFC 7292 4.2): a bag with its type and attributes, and the sequence of
 * such bags.
 *
 * What holds for all bags and for SafeContents is said at the top of pkcs12_key_bag.h.
 */
#ifndef KARIL_PKCS12_SAFE_H
#define KARIL_PKCS12_SAFE_H

#include "karil/pkcs7.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct SafeBagCtx {
    AlgorithmRecord bagId; /* of the bag's type */
    Anybuf content;        /* the bag, one whole element */
    AttributeHead attributes;
    uint32_t attributeCount;

    /* The library's own. */
    ListMarks attributeMarks;
} SafeBagCtx;
KARIL_SIZE_32(SafeBagCtx, 140);

typedef struct SafeContentsCtx {
    uint32_t count;
    Anybuf anchor; /* empty; its `next` is the first bag, one whole element */

    /* The library's own: marks of the list; what was decoded, of which bags are parts. */
    ListMarks marks;
    Anybuf decoded;
} SafeContentsCtx;
KARIL_SIZE_32(SafeContentsCtx, 72);

/* Makes a context and stores it in `*out`. Returns 0, KACERT_MemoryErr or, for null, KACERT_InvalidParamErr. */
KARIL_API int32_t KA_PKCS12_CreateEncodeSafeBag(SafeBagCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeSafeBag(SafeBagCtx **out);

/* Wipes and frees the context with all it holds. Returns 0 or, for null, KACERT_InvalidParamErr. */
KARIL_API int32_t KA_PKCS12_DestoryEncodeSafeBag(SafeBagCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeSafeBag(SafeBagCtx *ctx);

/*
 * Set the bag's type, OID content octets, or the bag, one whole element, in the place of what was set. Return 0;
 * KACERT_InvalidParamErr for null or a length below 1; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetSafeBagOID(SafeBagCtx *ctx, const uint8_t *oid, int32_t length);
KARIL_API int32_t KA_PKCS12_SetSafeBagContent(SafeBagCtx *ctx, const uint8_t *der, int32_t length);
/* Answer them; what is not set is 0 octets. Return 0 or, for null, KACERT_InvalidParamErr. */
KARIL_API int32_t KA_PKCS12_GetSafeBagOID(const SafeBagCtx *ctx, uint8_t *result, uint32_t *resultLength);
KARIL_API int32_t KA_PKCS12_GetSafeBagContent(const SafeBagCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Adds an attribute at the end of the list. `name`: OID content octets. `value`: one whole element, around which the
 * encoder writes a SET. Returns 0; KACERT_InvalidParamErr for null or a length below 1; KACERT_MemoryErr, with nothing
 * changed.
 */
KARIL_API int32_t KA_PKCS12_SetSafeBagAttribute(SafeBagCtx *ctx, const uint8_t *name, int32_t nameLength,
                                                const uint8_t *value, int32_t valueLength);

/*
 * Answers the attribute numbered `index`, from 1. Index 0 stores two lengths of 0. A negative index, and one past the
 * end, which KA_PKCS12_GetKeyBagAttribute answers with the last attribute, leave all outputs as they are, with status
 * 0. After an index, the next one takes one step. Returns 0 or, for null, KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_GetSafeBagAttribute(SafeBagCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                                uint32_t *valueLength, int32_t index);

/* Stores the number of attributes. Returns 0 or, for null, KACERT_InvalidParamErr. */
KARIL_API int32_t KA_PKCS12_GetSafeBagAttributeNum(const SafeBagCtx *ctx, uint32_t *count);

/*
 * Writes SEQUENCE { OBJECT IDENTIFIER, [0] { bag }, SET OF Attribute }; without attributes there is no SET.
 * Returns 0; KACERT_InvalidParamErr for null, and unless type and bag are set; KACERT_InvalidLengthErr for more than
 * 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeSafeBag(const SafeBagCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a SafeBag. `length`: what is there; an element that claims more is KACERT_LengthNotEqualErr, and octets after
 * it are ignored. The content is all that [0] holds. Of an attribute with several values the first is taken.
 * Returns 0; KACERT_InvalidParamErr for null, a length below 1, a bag without identifier, another tag than [0] after
 * it, and an empty [0]; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_InvalidItemErr
 * for an attribute without identifier or SET; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_DecodeSafeBag(SafeBagCtx *ctx, const uint8_t *der, int32_t length);

/* Makes a context and stores it in `*out`. Returns 0, KACERT_MemoryErr or, for null, KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS12_CreateEncodeSafeContents(SafeContentsCtx **out);
KARIL_API int32_t KA_PKCS12_CreateDecodeSafeContents(SafeContentsCtx **out);

/* Wipes and frees the context with all it holds. Returns 0 or, for null, KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS12_DestoryEncodeSafeContents(SafeContentsCtx *ctx);
KARIL_API int32_t KA_PKCS12_DestoryDecodeSafeContents(SafeContentsCtx *ctx);

/*
 * Adds a bag, one whole element, at the end. Returns 0; KACERT_InvalidItemErr for null or a negative length;
 * KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS12_SetSafeContents_SafeBag(SafeContentsCtx *ctx, const uint8_t *der, int32_t length);

/*
 * Answers the bag numbered `index`, from 1. Index 0 stores a length of 0. A negative index, and one past the end, leave
 * all outputs as they are, with status 0. After an index, the next one takes one step. Returns 0;
 * KACERT_InvalidItemErr for null, and for a list that is shorter than its count.
 */
KARIL_API int32_t KA_PKCS12_GetSafeContents_SafeBag(SafeContentsCtx *ctx, uint8_t *result, uint32_t *resultLength,
                                                    int32_t index);

/* Stores the number of bags. Returns 0 or, for null, KACERT_InvalidItemErr. */
KARIL_API int32_t KA_PKCS12_GetSafeContents_SafeBagNum(const SafeContentsCtx *ctx, uint32_t *count);

/*
 * Writes SEQUENCE { bags }. Returns 0; KACERT_InvalidItemErr for null, and without a bag; KACERT_InvalidLengthErr
 * for more than 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeSafeContent(const SafeContentsCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes SafeContents; the bags are not looked into. `length`: just the element's octets; any other is
 * KACERT_LengthNotEqualErr. An empty SEQUENCE is an empty list. Returns 0; KACERT_InvalidItemErr for null;
 * KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_DecodeSafeContent(SafeContentsCtx *ctx, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
