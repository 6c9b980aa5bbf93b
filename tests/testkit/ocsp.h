// OCSP objects behind the names of objects.h. Their Get and Encode functions always need a buffer, and some answer 0 to
// a failed allocation: such a call is KACERT_MemoryErr here.
#pragma once

#include "objects.h"

namespace karil_test {

inline int32_t refuse(...) {
    return KACERT_InvalidItemErr;
}
inline int32_t memoryErrUnless(bool isThere, int32_t status) {
    return status == KACERT_Ok && !isThere ? static_cast<int32_t>(KACERT_MemoryErr) : status;
}
template <> struct Family<RequestListCtx> {
    KIT_FAMILY(KA_OCSP, RequestList, CreateEncodeRequestList, DestroyEncodeRequestList);
    static constexpr auto setInt = refuse;
    static constexpr auto getInt = refuse;
    static constexpr auto hash = KA_OCSP_SetRequestListHashFunc;
};
template <> struct Family<RequestCtx> {
    KIT_FAMILY(KA_OCSP, Request, CreateEncodeRequest, DestoryEncodeRequest);
    KIT_NUMBERS(KA_OCSP, Request);
    static constexpr auto add = KA_OCSP_SetRequestSingleRequest;
    static constexpr auto single = KA_OCSP_GetRequestSingleRequest;
    static constexpr auto hook = KA_OCSP_SetRequestSignFunc;
};
struct ResponseListNames {
    KIT_FAMILY(KA_OCSP, ResponseList, CreateEncodeResponseList, DestroyEncodeResponseList);
};
template <> struct Family<ResponseListCtx> : ResponseListNames {
    KIT_NUMBERS(KA_OCSP, ResponseList);
    static constexpr auto hash = KA_OCSP_SetResponseListHashFunc;
    static int32_t encode(ResponseListCtx *ctx, uint8_t *result, uint32_t *resultLength) {
        const int32_t status = KA_OCSP_EncodeResponseList(ctx, result, resultLength);
        return memoryErrUnless(*resultLength != 0, status);
    }
};
struct ResponseNames {
    KIT_FAMILY(KA_OCSP, Response, CreateEncodeResponse, DestoryEncodeResponse);
};
template <> struct Family<ResponseCtx> : ResponseNames {
    KIT_NUMBERS(KA_OCSP, Response);
    static constexpr auto add = KA_OCSP_SetResponseSingleResponse;
    static constexpr auto single = KA_OCSP_GetResponseSingleResponse;
    static constexpr auto hash = KA_OCSP_SetResponseHashFunc;
    static constexpr auto hook = KA_OCSP_SetResponseSignFunc;
    static int32_t create(ResponseCtx **out) {
        const int32_t status = KA_OCSP_CreateEncodeResponse(out);
        return memoryErrUnless(*out != nullptr, status);
    }
    static int32_t decode(ResponseCtx *ctx, const uint8_t *der, uint32_t length) {
        const int32_t status = KA_OCSP_DecodeResponse(ctx, der, length);
        return memoryErrUnless(ctx->kept != nullptr, status);
    }
};
using RequestListPtr = Owner<RequestListCtx>;
using RequestPtr = Owner<RequestCtx>;
using ResponseListPtr = Owner<ResponseListCtx>;
using ResponsePtr = Owner<ResponseCtx>;

// Digests are what is hashed, signatures the number of octets that are signed, in two octets.
inline int32_t echo(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *) {
    *outputLength = std::min(inputLength, *outputLength);
    std::copy_n(input, *outputLength, output);
    return 0;
}
inline int32_t signByLength(const uint8_t *, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *) {
    output[0] = static_cast<uint8_t>(inputLength >> 8);
    output[1] = static_cast<uint8_t>(inputLength);
    *outputLength = 2;
    return 0;
}

template <class Ctx> std::string askNumber(Ctx &ctx, int32_t id) {
    constexpr int32_t Untouched = 12345;
    int32_t value = Untouched;
    const int32_t status = TRIED(Family<Ctx>::getInt(&ctx, id, &value));
    if (status != KACERT_Ok)
        return "status " + std::to_string(status);
    return value == Untouched ? "untouched" : std::to_string(value);
}
template <class Ctx> std::string askSingle(Ctx &ctx, uint32_t index) {
    return stored([&](uint8_t *result, uint32_t *length) { return Family<Ctx>::single(&ctx, result, length, index); });
}

} // namespace karil_test
