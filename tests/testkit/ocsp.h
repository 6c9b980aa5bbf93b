// OCSP objects behind the names of objects.h. Their Get and Encode functions always need a buffer, and some answer 0 to
// a failed allocation: such a call is KACERT_MemoryErr here.
#pragma once

#include "objects.h"

namespace karil_test {

inline int32_t refuse(...) {
    return KACERT_InvalidItemErr;
}
template <> struct Family<RequestListCtx> {
    static constexpr auto create = KA_OCSP_CreateEncodeRequestList;
    static constexpr auto destroy = KA_OCSP_DestroyEncodeRequestList;
    static constexpr auto set = KA_OCSP_SetRequestListAttributeChar;
    static constexpr auto setInt = refuse;
    static constexpr auto get = KA_OCSP_GetRequestListAttributeChar;
    static constexpr auto getInt = refuse;
    static constexpr auto hash = KA_OCSP_SetRequestListHashFunc;
    static constexpr auto encode = KA_OCSP_EncodeRequestList;
    static constexpr auto decode = KA_OCSP_DecodeRequestList;
};
template <> struct Family<RequestCtx> {
    static constexpr auto create = KA_OCSP_CreateEncodeRequest;
    static constexpr auto destroy = KA_OCSP_DestoryEncodeRequest;
    static constexpr auto set = KA_OCSP_SetRequestAttributeChar;
    static constexpr auto setInt = KA_OCSP_SetRequestAttributeInt;
    static constexpr auto get = KA_OCSP_GetRequestAttributeChar;
    static constexpr auto getInt = KA_OCSP_GetRequestAttributeInt;
    static constexpr auto add = KA_OCSP_SetRequestSingleRequest;
    static constexpr auto single = KA_OCSP_GetRequestSingleRequest;
    static constexpr auto hook = KA_OCSP_SetRequestSignFunc;
    static constexpr auto encode = KA_OCSP_EncodeRequest;
    static constexpr auto decode = KA_OCSP_DecodeRequest;
};
template <> struct Family<ResponseListCtx> {
    static constexpr auto create = KA_OCSP_CreateEncodeResponseList;
    static constexpr auto destroy = KA_OCSP_DestroyEncodeResponseList;
    static constexpr auto set = KA_OCSP_SetResponseListAttributeChar;
    static constexpr auto setInt = KA_OCSP_SetResponseListAttributeInt;
    static constexpr auto get = KA_OCSP_GetResponseListAttributeChar;
    static constexpr auto getInt = KA_OCSP_GetResponseListAttributeInt;
    static constexpr auto hash = KA_OCSP_SetResponseListHashFunc;
    static constexpr auto decode = KA_OCSP_DecodeResponseList;
    static int32_t encode(ResponseListCtx *ctx, uint8_t *result, uint32_t *resultLength) {
        const int32_t status = KA_OCSP_EncodeResponseList(ctx, result, resultLength);
        return status == KACERT_Ok && *resultLength == 0 ? static_cast<int32_t>(KACERT_MemoryErr) : status;
    }
};
template <> struct Family<ResponseCtx> {
    static constexpr auto destroy = KA_OCSP_DestoryEncodeResponse;
    static constexpr auto set = KA_OCSP_SetResponseAttributeChar;
    static constexpr auto setInt = KA_OCSP_SetResponseAttributeInt;
    static constexpr auto get = KA_OCSP_GetResponseAttributeChar;
    static constexpr auto getInt = KA_OCSP_GetResponseAttributeInt;
    static constexpr auto add = KA_OCSP_SetResponseSingleResponse;
    static constexpr auto single = KA_OCSP_GetResponseSingleResponse;
    static constexpr auto hash = KA_OCSP_SetResponseHashFunc;
    static constexpr auto hook = KA_OCSP_SetResponseSignFunc;
    static constexpr auto encode = KA_OCSP_EncodeResponse;
    static int32_t create(ResponseCtx **out) {
        const int32_t status = KA_OCSP_CreateEncodeResponse(out);
        return status == KACERT_Ok && *out == nullptr ? static_cast<int32_t>(KACERT_MemoryErr) : status;
    }
    static int32_t decode(ResponseCtx *ctx, const uint8_t *der, uint32_t length) {
        const int32_t status = KA_OCSP_DecodeResponse(ctx, der, length);
        return status == KACERT_Ok && ctx->kept == nullptr ? static_cast<int32_t>(KACERT_MemoryErr) : status;
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
// DER as text, "30{06{2A03} 04{AA}}"; "no DER" for a length that is not the shortest or does not fit. It knows nothing
// but tags of one octet and lengths, and looks into what is constructed.
inline std::string printed(Bytes der) {
    std::string all;
    while (!der.empty()) {
        if (der.size() < 2)
            return "no DER";
        size_t at = 2;
        size_t length = der[1];
        if (length >= 0x80) {
            const size_t octets = length & 0x7F;
            length = 0;
            for (; at < 2 + octets && at < der.size(); ++at)
                length = length << 8 | der[at];
            if (at != 2 + octets || length < (octets == 1 ? 0x80u : size_t{1} << (8 * octets - 8)))
                return "no DER";
        }
        if (length > der.size() - at)
            return "no DER";
        const Bytes content = der.subspan(at, length);
        all += (all.empty() ? "" : " ") + toHex(der.data(), 1) + '{';
        all += ((der[0] & 0x20) != 0 ? printed(content) : toHex(content)) + '}';
        der = der.subspan(at + length);
    }
    return all;
}

} // namespace karil_test
