// Sets attributes of a request, a response and their lists as the input says, and encodes them: what is written
// decodes, but for what the dialect refuses.
#include "ocsp.h"

using namespace karil_fuzz;

namespace {

// A piece of the input: its length, then the octets.
Bytes piece(Input &input) {
    return input.take(input.octet() % 32);
}

template <auto SetChar, auto SetInt, class Ctx> void setSome(Ctx &ctx, Input &input) {
    for (int count = input.octet() % 16; count > 0; --count) {
        const int32_t id = input.octet() % 66;
        const Bytes value = piece(input);
        SetChar(&ctx, id, value.data(), lengthOf(value));
        SetInt(&ctx, id, value.empty() ? 0 : value[0]);
    }
}
template <class Ctx> int32_t setNoInt(Ctx *, int32_t, int32_t) {
    return KACERT_Ok;
}

template <auto Encode, class Ctx> Octets encode(Ctx &ctx) {
    Octets out(16384);
    uint32_t length = 0;
    const int32_t status = Encode(&ctx, out.data(), &length);
    must(length <= out.size(), "there was room");
    out.resize(status == KACERT_Ok ? length : 0);
    return out;
}

void buildRequest(Input &input) {
    const RequestListPtr list = make<RequestListCtx, KA_OCSP_CreateEncodeRequestList, RequestListPtr>();
    KA_OCSP_SetRequestListHashFunc(list.get(), threeOctets, nullptr, 0);
    setSome<KA_OCSP_SetRequestListAttributeChar, setNoInt<RequestListCtx>>(*list, input);
    const Octets single = encode<KA_OCSP_EncodeRequestList>(*list);
    const RequestPtr ctx = make<RequestCtx, KA_OCSP_CreateEncodeRequest, RequestPtr>();
    KA_OCSP_SetRequestSignFunc(ctx.get(), threeOctets, input.take(4).data(), 0);
    setSome<KA_OCSP_SetRequestAttributeChar, KA_OCSP_SetRequestAttributeInt>(*ctx, input);
    KA_OCSP_SetRequestSingleRequest(ctx.get(), single.data(), lengthOf(single));
    const Octets der = encode<KA_OCSP_EncodeRequest>(*ctx);
    const RequestPtr again = make<RequestCtx, KA_OCSP_CreateDecodeRequest, RequestPtr>();
    const int32_t status = der.empty() ? 0 : KA_OCSP_DecodeRequest(again.get(), der.data(), sizeOf(der));
    const bool isWhole = ctx->hasDerName == 0 && ctx->signature.certs.next == nullptr && list->isWhole == 0;
    must(!isWhole || status == KACERT_Ok, "a request that was built decodes");
}

void buildResponse(Input &input) {
    const ResponseListPtr list = make<ResponseListCtx, KA_OCSP_CreateEncodeResponseList, ResponseListPtr>();
    KA_OCSP_SetResponseListHashFunc(list.get(), threeOctets, nullptr, 0);
    setSome<KA_OCSP_SetResponseListAttributeChar, KA_OCSP_SetResponseListAttributeInt>(*list, input);
    const Bytes octets = piece(input);
    switch (input.octet() % 4) {
    case 0:
        KA_OCSP_SetResponseList_CertStatusGood(list.get());
        break;
    case 1:
        KA_OCSP_SetResponseList_CertStatusRevoke(list.get(), 1577836800, 0, octets.data(), lengthOf(octets));
        break;
    case 2:
        KA_OCSP_SetResponseList_CertStatusUnInfo(list.get(), octets.data(), lengthOf(octets));
        break;
    default:
        break;
    }
    const Octets single = encode<KA_OCSP_EncodeResponseList>(*list);
    if (!single.empty() && list->isWhole == 0 && list->isGood + list->isUnknown != 0) {
        const ResponseListPtr again = make<ResponseListCtx, KA_OCSP_CreateDecodeResponseList, ResponseListPtr>();
        must(KA_OCSP_DecodeResponseList(again.get(), single.data(), sizeOf(single)) == KACERT_Ok &&
                 again->isGood == list->isGood,
             "a single response that was built decodes");
    }
    const ResponsePtr ctx = make<ResponseCtx, KA_OCSP_CreateEncodeResponse, ResponsePtr>();
    KA_OCSP_SetResponseSignFunc(ctx.get(), threeOctets, nullptr, 0);
    KA_OCSP_SetResponseHashFunc(ctx.get(), threeOctets, nullptr, 0);
    setSome<KA_OCSP_SetResponseAttributeChar, KA_OCSP_SetResponseAttributeInt>(*ctx, input);
    KA_OCSP_SetResponseSingleResponse(ctx.get(), single.data(), lengthOf(single));
    const Octets der = encode<KA_OCSP_EncodeResponse>(*ctx);
    const ResponsePtr again = make<ResponseCtx, KA_OCSP_CreateDecodeResponse, ResponsePtr>();
    const int32_t status = der.empty() ? 0 : KA_OCSP_DecodeResponse(again.get(), der.data(), sizeOf(der));
    const bool isWhole =
        ctx->basic.data.responder.hasDerName == 0 && ctx->basic.signature.certs.next == nullptr && list->isWhole == 0;
    must(!isWhole || status == KACERT_Ok, "a response that was built decodes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input = {{data, size}};
    if (input.octet() % 2 == 0)
        buildRequest(input);
    else
        buildResponse(input);
    return 0;
}
