// Decodes a CRL, asks for everything, walks its entries, and carries them over into another CRL.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

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

// The entries, one more behind them, come back from a CRL that carries them over.
void carryOver(Bytes der, size_t count) {
    const CrlPtr ctx = create<CrlEncodeCtx>();
    must(setCRL2Context(ctx.get(), der.data(), lengthOf(der)) == KACERT_Ok, "a list that was decoded is carried over");
    fill(*ctx);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_THISUPDATE, Y2020);
    set(*ctx, CRL_CERT_SERIALNUMBER, "\1");
    KACert_SetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, Y2020);
    set(*ctx, CRLEX_CRLREASON, "\1");
    KACert_SetCrlSignFunc(ctx.get(), fixedSignature, nullptr, 0);
    const Area encoded(encode(*ctx));
    must(!encoded.bytes().empty(), "the CRL is written");
    const CrlPtr again = create<CrlEncodeCtx>();
    must(decode(*again, encoded.bytes()) == KACERT_Ok, "what was written can be read");
    must(walk(*again, count + 1) == count + 1, "every entry is there");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    const Area der(Bytes{data, size});
    const CrlPtr ctx = create<CrlEncodeCtx>();
    const int32_t status = KACert_DecodeCrl(ctx.get(), der.data(), static_cast<uint32_t>(size));
    for (int32_t id = CRL_TBS_CERTLIST; id <= CRL_RevokedCertificates_DER; ++id)
        if (id != CRL_CERT_NEXT)
            ask(*ctx, id);
    const size_t count = walk(*ctx, size);
    if (status == KACERT_Ok)
        carryOver(der.bytes(), count);
    return 0;
}
