// Decodes OCSP messages and their single entries, asks for everything, and writes what was decoded again. The first
// octet says which of the four objects the others are.
#include "ocsp.h"

using namespace karil_fuzz;

namespace {

// Octets of no more than the whole input's length, whatever is asked for.
template <class Call> void ask(size_t size, const Call &call) {
    const Area area(size);
    uint32_t length = 0;
    const int32_t status = call(area.data(), &length);
    must(status == KACERT_Ok || status == KACERT_InvalidItemErr, "an id is answered or not known");
    must(length <= size, "no answer is longer than what was decoded");
}

// A list of certificates is answered in a SEQUENCE of its own, hence the room beyond the input.
template <auto Get, class Ctx> void askAll(Ctx &ctx, size_t size) {
    for (int32_t id = 0; id < 64; ++id)
        ask(size + 16, [&](uint8_t *out, uint32_t *length) { return Get(&ctx, id, out, length); });
}
template <auto Get, class Ctx> void askNumbers(Ctx &ctx) {
    for (int32_t id = 0; id < 64; ++id) {
        int32_t value = 0;
        const int32_t status = Get(&ctx, id, &value);
        must(status == KACERT_Ok || status == KACERT_InvalidItemErr, "a number is answered or not known");
    }
}
template <auto Get, class Ctx> void askSingles(Ctx &ctx, size_t size, uint32_t count) {
    for (uint32_t index = 0; index <= count + 1; ++index)
        ask(size, [&](uint8_t *out, uint32_t *length) { return Get(&ctx, out, length, index); });
}

// What was decoded can be written, or is refused.
template <auto Encode, class Ctx> Octets writeAgain(Ctx &ctx, size_t size) {
    Octets out(size * 2 + 4096);
    uint32_t length = 0;
    const int32_t status = Encode(&ctx, out.data(), &length);
    must(status >= KACERT_Ok && length <= out.size(), "an object is written or refused");
    out.resize(status == KACERT_Ok ? length : 0);
    return out;
}

void readRequestList(Bytes der) {
    const RequestListPtr ctx = make<RequestListCtx, KA_OCSP_CreateDecodeRequestList, RequestListPtr>();
    const int32_t status = KA_OCSP_DecodeRequestList(ctx.get(), der.data(), sizeOf(der));
    askAll<KA_OCSP_GetRequestListAttributeChar>(*ctx, der.size());
    if (status == KACERT_Ok)
        must(equal(writeAgain<KA_OCSP_EncodeRequestList>(*ctx, der.size()), bytesOf(ctx->certId.whole)),
             "an identity comes out as it stands");
}

void readRequest(Bytes der) {
    const RequestPtr ctx = make<RequestCtx, KA_OCSP_CreateDecodeRequest, RequestPtr>();
    const int32_t status = KA_OCSP_DecodeRequest(ctx.get(), der.data(), sizeOf(der));
    askAll<KA_OCSP_GetRequestAttributeChar>(*ctx, der.size());
    askNumbers<KA_OCSP_GetRequestAttributeInt>(*ctx);
    uint32_t count = 0;
    must(KA_OCSP_GetRequestSingleRequestNum(ctx.get(), &count) == KACERT_Ok && count <= der.size(), "they are counted");
    askSingles<KA_OCSP_GetRequestSingleRequest>(*ctx, der.size(), count);
    KA_OCSP_SetRequestSignFunc(ctx.get(), threeOctets, nullptr, 0);
    const Octets again = writeAgain<KA_OCSP_EncodeRequest>(*ctx, der.size());
    if (status != KACERT_Ok || again.empty())
        return;
    const RequestPtr other = make<RequestCtx, KA_OCSP_CreateDecodeRequest, RequestPtr>();
    const int32_t second = KA_OCSP_DecodeRequest(other.get(), again.data(), sizeOf(again));
    must(second == KACERT_InvalidTagErr || second == KACERT_LengthNotEqualErr || other->requestCount == count,
         "as many single requests come back");
}

void readResponseList(Bytes der) {
    const ResponseListPtr ctx = make<ResponseListCtx, KA_OCSP_CreateDecodeResponseList, ResponseListPtr>();
    const int32_t status = KA_OCSP_DecodeResponseList(ctx.get(), der.data(), sizeOf(der));
    must(status != KACERT_Ok || ctx->isRevoked == 0, "a revoked entry is refused");
    askAll<KA_OCSP_GetResponseListAttributeChar>(*ctx, der.size());
    const Area reason(der.size());
    const Area information(der.size());
    int32_t state = 0;
    int32_t time = 0;
    uint32_t lengths[2] = {};
    must(KA_OCSP_GetResponseListCertSatus(ctx.get(), &state, &time, reason.data(), &lengths[0], information.data(),
                                          &lengths[1]) == KACERT_Ok,
         "a state is answered");
    writeAgain<KA_OCSP_EncodeResponseList>(*ctx, der.size());
    askNumbers<KA_OCSP_GetResponseListAttributeInt>(*ctx);
}

void readResponse(Bytes der) {
    const ResponsePtr ctx = make<ResponseCtx, KA_OCSP_CreateDecodeResponse, ResponsePtr>();
    const int32_t status = KA_OCSP_DecodeResponse(ctx.get(), der.data(), sizeOf(der));
    must(status != KACERT_Ok || ctx->hasBody == 0 || ctx->basic.signedOctets.length > 0, "what is signed is kept");
    askAll<KA_OCSP_GetResponseAttributeChar>(*ctx, der.size());
    askNumbers<KA_OCSP_GetResponseAttributeInt>(*ctx);
    askSingles<KA_OCSP_GetResponseSingleResponse>(*ctx, der.size(), 2);
    KA_OCSP_SetResponseSignFunc(ctx.get(), threeOctets, nullptr, 0);
    ctx->basic.data.responder.hasName = 0;
    writeAgain<KA_OCSP_EncodeResponse>(*ctx, der.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2)
        return 0;
    const Area der(Bytes{data + 1, size - 1});
    constexpr void (*Readers[])(Bytes) = {readRequestList, readRequest, readResponseList, readResponse};
    Readers[data[0] % 4](der.bytes());
    return 0;
}
