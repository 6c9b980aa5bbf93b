// Decodes a certification request, asks for everything, and writes its attributes again.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

void ask(CsrDecodeCtx &ctx, int32_t id) {
    uint32_t length = 0;
    const int32_t status = KACert_GetCsrAttributeChar(&ctx, id, nullptr, &length);
    must(status == KACERT_Ok || status == KACERT_AttributeNotSupportErr, "an id is answered or not known");
    const Area area(length);
    KACert_GetCsrAttributeChar(&ctx, id, area.data(), &length);
    must(length == area.bytes().size(), "asking and answering agree");
}

// Every attribute goes into a second request; those without octets are refused there.
void copyAttributes(const CsrDecodeCtx &from, CsrEncodeCtx &to) {
    uint32_t count = 0;
    must(KACert_GetCsrAttributePrivate(&from, &count, nullptr, nullptr, nullptr, nullptr) == KACERT_Ok,
         "attributes are counted");
    for (uint32_t index = 1; index <= count; ++index) {
        uint32_t number = index;
        uint32_t sizes[2] = {};
        KACert_GetCsrAttributePrivate(&from, &number, nullptr, &sizes[0], nullptr, &sizes[1]);
        const Area oid(sizes[0]);
        const Area value(sizes[1]);
        must(KACert_GetCsrAttributePrivate(&from, &number, oid.data(), &sizes[0], value.data(), &sizes[1]) ==
                     KACERT_Ok &&
                 number == index,
             "an attribute is answered");
        const bool isWhole = sizes[0] > 0 && sizes[1] > 0;
        must(KACert_SetCsrAttributePrivate(&to, oid.data(), lengthOf(oid.bytes()), value.data(),
                                           lengthOf(value.bytes())) == (isWhole ? KACERT_Ok : KACERT_InvalidLengthErr),
             "an attribute is set");
    }
}

void writeAndRead(const CsrEncodeCtx &ctx) {
    Chain attributes;
    must(made(attributes, KI_Csr_EncodeAttributes, &ctx) == KACERT_Ok, "attributes are written");
    if (attributes == nullptr)
        return;
    const CsrPtr again = create<CsrEncodeCtx>();
    must(KI_CSR_DecodeAttributes(again.get(), attributes.get()) == KACERT_Ok, "what was written can be read");
    const CsrAttributeNode *read = again->attributes;
    for (const CsrAttributeNode *node = ctx.attributes; node != nullptr; node = node->next, read = read->next)
        must(read != nullptr && equal(bytesOf(read->oid), bytesOf(node->oid)),
             "every attribute comes back in its place");
    must(read == nullptr, "no other attribute comes back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    const Area der(Bytes{data, size});
    const CsrPtr ctx = create<CsrEncodeCtx>();
    const int32_t status = KACert_DecodeCsr(ctx.get(), der.data(), static_cast<uint32_t>(size));
    must(status != KACERT_Ok || ctx->tbs.length > 0, "a decoded request has its to-be-signed part");
    for (int32_t id = CSR_TBS_CSR; id <= CSR_SUBJECTPUBLICKEYINFO; ++id)
        ask(*ctx, id);
    const CsrPtr copy = create<CsrEncodeCtx>();
    copyAttributes(*ctx, *copy);
    writeAndRead(*copy);
    return 0;
}
