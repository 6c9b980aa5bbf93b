// Builds a PFX of certificates and attributes as the input says, and writes it: what was written is read again.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

using PfxPtr = std::unique_ptr<PfxCtx, By<KA_PKCS12_DestroyEncodePFX>>;
PfxPtr created() {
    PfxCtx *ctx = nullptr;
    must(KA_PKCS12_CreateEncodePfx(&ctx) == KACERT_Ok, "a context");
    return PfxPtr(ctx);
}
// A piece of the input: its length, then the octets.
Bytes piece(Input &input) {
    return input.take(input.octet() % 64);
}

// An attribute's value is one whole element.
void setAttribute(PfxCtx &ctx, Input &input, int where) {
    const Bytes name = piece(input);
    const Octets value = tlv(0x04, copyOf(piece(input)));
    const int32_t size = lengthOf(value);
    if (where == 0)
        KA_PKCS12_SetPrivateKey_Attribute(&ctx, name.data(), lengthOf(name), value.data(), size);
    else if (where == 1)
        KA_PKCS12_SetPrivateKeyBag_Attribute(&ctx, name.data(), lengthOf(name), value.data(), size);
    else
        KA_PKCS12_SetCertificateBag_Attribute(&ctx, name.data(), lengthOf(name), value.data(), size, where - 2);
}

bool isSame(const AttributeRecord *one, const AttributeRecord *other) {
    for (; one != nullptr && other != nullptr; one = one->next, other = other->next)
        if (!equal(bytesOf(one->oid), bytesOf(other->oid)) || !equal(bytesOf(one->value), bytesOf(other->value)))
            return false;
    return one == other;
}
bool isSame(const PfxCtx &one, const PfxCtx &other) {
    const PfxCertificate *at = other.firstCertificate;
    for (const PfxCertificate *node = one.firstCertificate; node != nullptr; node = node->next, at = at->next)
        if (at == nullptr || !equal(bytesOf(node->certificate), bytesOf(at->certificate)) ||
            !isSame(node->attributes.next, at->attributes.next))
            return false;
    return at == nullptr && equal(bytesOf(one.privateKey), bytesOf(other.privateKey)) &&
           isSame(one.keyAttributes.next, other.keyAttributes.next) &&
           isSame(one.bagAttributes.next, other.bagAttributes.next);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input = {{data, size}};
    const Bytes password = piece(input);
    const PfxPtr ctx = created();
    while (!input.rest.empty()) {
        const int step = input.octet() % 12;
        if (step < 8) {
            setAttribute(*ctx, input, step);
            continue;
        }
        const Bytes value = piece(input);
        const auto set = step == 8 ? KA_PKCS12_SetPrivateKey : KA_PKCS12_SetCertificate;
        must(set(ctx.get(), value.data(), lengthOf(value)) == KACERT_Ok, "octets are taken");
    }
    uint32_t length = 0;
    Octets der(size * 2 + 4096 + ctx->certificateCount * 128);
    const int32_t status = KA_PKCS12_EncodePFX(ctx.get(), password.data(), lengthOf(password), der.data(), &length);
    must(length <= der.size(), "there was room");
    if (status != KACERT_Ok)
        return 0;
    const PfxPtr back = created();
    int32_t verdict = 0;
    must(KA_PKCS12_DecodePFX(back.get(), password.data(), lengthOf(password), der.data(), static_cast<int32_t>(length),
                             &verdict) == KACERT_Ok,
         "a file that was written is read");
    must(verdict == PKCS7_VERDICT_GOOD && isSame(*ctx, *back), "and holds what was set");
    return 0;
}
