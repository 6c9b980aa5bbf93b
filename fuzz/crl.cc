// Decodes a CRL, asks for everything, walks its entries, and carries them over into another CRL.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

using CrlPtr = std::unique_ptr<CrlEncodeCtx, By<KACert_DestroyCrlEncodeCtx>>;

CrlPtr newCrl() {
    CrlEncodeCtx *ctx = nullptr;
    must(KACert_CreateCrlEncodeCtx(&ctx) == KACERT_Ok, "a context can be made");
    return CrlPtr(ctx);
}

Octets ask(CrlDecodeCtx &ctx, int32_t id) {
    uint32_t length = 0;
    const int32_t status = KACert_GetCrlAttributeChar(&ctx, id, nullptr, &length);
    must(status == KACERT_Ok || status == KACERT_AttributeNotSupportErr, "an id is answered or not known");
    const Area area(length);
    uint32_t again = length;
    KACert_GetCrlAttributeChar(&ctx, id, area.data(), &again);
    must(again == length, "asking and answering agree");
    return {area.data(), area.data() + length};
}

size_t walk(CrlDecodeCtx &ctx, size_t limit) {
    size_t count = 0;
    for (; ctx.currentRevoked != nullptr; ++count) {
        must(count <= limit, "the list ends");
        ask(ctx, CRL_CERT_SERIALNUMBER);
        ask(ctx, CRLEX_CRLREASON);
        must(KACert_GetCrlAttributeChar(&ctx, CRL_CERT_NEXT, nullptr, nullptr) == KACERT_Ok, "the cursor moves");
    }
    must(ask(ctx, CRL_CERT_SERIALNUMBER).empty(), "behind the last there is none");
    return count;
}

int32_t threeOctets(const uint8_t *, uint32_t, uint8_t *output, uint32_t *outputLength, void *) {
    *outputLength = 3;
    if (output != nullptr)
        memset(output, 0xAA, 3);
    return 0;
}

// The entries, one more behind them, come back from a CRL that carries them over.
void carryOver(Bytes der, size_t count) {
    const CrlPtr ctx = newCrl();
    must(setCRL2Context(ctx.get(), der.data(), lengthOf(der)) == KACERT_Ok, "a list that was decoded is carried over");
    const uint8_t one = 1;
    KACert_SetCrlAttributeChar(ctx.get(), CRL_ISSUER_COMMONNAME, &one, 1);
    KACert_SetCrlAttributeChar(ctx.get(), CRL_INNER_SIGNATUREALGORITHM, &one, 1);
    KACert_SetCrlAttributeChar(ctx.get(), CRL_OUTER_SIGNATUREALGORITHM, &one, 1);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_THISUPDATE, 1577836800);
    KACert_SetCrlAttributeChar(ctx.get(), CRL_CERT_SERIALNUMBER, &one, 1);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, 1577836800);
    KACert_SetCrlAttributeChar(ctx.get(), CRLEX_CRLREASON, &one, 1);
    KACert_SetCrlSignFunc(ctx.get(), threeOctets, nullptr, 0);
    uint32_t length = 0;
    must(KACert_EncodeCrl(ctx.get(), nullptr, &length) == KACERT_Ok, "the CRL is written");
    const Area encoded(length);
    KACert_EncodeCrl(ctx.get(), encoded.data(), &length);
    const CrlPtr again = newCrl();
    must(KACert_DecodeCrl(again.get(), encoded.data(), length) == KACERT_Ok, "what was written can be read");
    must(walk(*again, count + 1) == count + 1, "every entry is there");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    const Area der(Bytes{data, size});
    const CrlPtr ctx = newCrl();
    const int32_t status = KACert_DecodeCrl(ctx.get(), der.data(), static_cast<uint32_t>(size));
    for (int32_t id = CRL_TBS_CERTLIST; id <= CRL_RevokedCertificates_DER; ++id)
        if (id != CRL_CERT_NEXT)
            ask(*ctx, id);
    const size_t count = walk(*ctx, size);
    if (status == KACERT_Ok)
        carryOver(der.bytes(), count);
    return 0;
}
