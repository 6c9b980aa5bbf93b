// What the targets of OCSP share.
#pragma once

#include "fuzz.h"

namespace karil_fuzz {

using RequestListPtr = std::unique_ptr<RequestListCtx, By<KA_OCSP_DestroyEncodeRequestList>>;
using RequestPtr = std::unique_ptr<RequestCtx, By<KA_OCSP_DestoryEncodeRequest>>;
using ResponseListPtr = std::unique_ptr<ResponseListCtx, By<KA_OCSP_DestroyEncodeResponseList>>;
using ResponsePtr = std::unique_ptr<ResponseCtx, By<KA_OCSP_DestoryEncodeResponse>>;

template <class Ctx, auto Create, class Ptr> Ptr make() {
    Ctx *ctx = nullptr;
    must(Create(&ctx) == KACERT_Ok && ctx != nullptr, "a context can be made");
    return Ptr(ctx);
}

inline int32_t threeOctets(const uint8_t *, uint32_t, uint8_t *output, uint32_t *outputLength, void *) {
    memset(output, 0xAA, 3);
    *outputLength = 3;
    return 0;
}

} // namespace karil_fuzz
