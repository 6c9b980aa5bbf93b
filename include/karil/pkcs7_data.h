/*
 * karil: data (RFC 2315 8): octets in the frame of a PKCS#7 message.
 *
 * What holds for all PKCS#7 functions is said at the top of pkcs7.h.
 */
#ifndef KARIL_PKCS7_DATA_H
#define KARIL_PKCS7_DATA_H

#include "karil/pkcs7.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct DataCtx {
    Anybuf content; /* the octets */
} DataCtx;
KARIL_SIZE_32(DataCtx, 28);

/*
 * Makes a context and stores it in `*out`. The two names do the same. Returns 0, KACERT_MemoryErr or
 * KACERT_InvalidItemErr. Free it with either destroy function.
 */
KARIL_API int32_t KA_PKCS7_CreateDataEncodeCtx(DataCtx **out);
KARIL_API int32_t KA_PKCS7_CreateDataDecodeCtx(DataCtx **out);

/* Frees the context with all it holds. Null is accepted. Returns 0. */
KARIL_API int32_t KA_PKCS7_DestoryDataEncodeCtx(DataCtx *ctx);
KARIL_API int32_t KA_PKCS7_DestoryDataDecodeCtx(DataCtx *ctx);

/*
 * Sets the content to a copy of `length` octets at `value` (null only with length 0). Returns 0;
 * KACERT_InvalidLengthErr for a length below 0; KACERT_InvalidItemErr; KACERT_MemoryErr, with nothing changed.
 */
KARIL_API int32_t KA_PKCS7_SetDataContent(DataCtx *ctx, const uint8_t *value, int32_t length);

/*
 * Answers the content. `result`: receives the octets; the caller sees to its size, and it must not be null: there is no
 * form that asks for the length alone. `*resultLength`: their number, 0 for a context without content. Returns 0 or
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GetDataContent(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Writes the message. `result`: receives the DER, or null to ask for the length; the caller sees to its size.
 * `*resultLength`: its octets. Returns 0; KACERT_InvalidParamErr for a context without content, or for a record with a
 * length and no data; KACERT_InvalidItemErr; KACERT_InvalidLengthErr for more than 32 bits of octets;
 * KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS7_EncodePKCS7Data(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength);

/*
 * Decodes a message in the place of what the context held. `der`, `length`: as all octets to decode.
 * Returns 0; KAPKCS7_ContentTypeErr for another content type than data; KACERT_InvalidItemErr, also for a missing
 * content or one whose tag number is not 0; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr;
 * KACERT_MemoryErr. After a failure, but that of a null pointer, the context has no content.
 */
KARIL_API int32_t KA_PKCS7_DecodePKCS7Data(DataCtx *ctx, const uint8_t *der, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
