// Reads a PFX file under the password "pw", its MAC left in, asks for everything, and reads it once more.
#include "fuzz.h"

#include "messages.h"

using namespace karil_fuzz;

namespace {

using PfxPtr = std::unique_ptr<PfxCtx, By<KA_PKCS12_DestroyDecodePFX>>;

// Numbers of rounds, wherever they are, become at most 255: a file may cost 100,000,000.
void cutRounds(Bytes file) {
    auto *at = const_cast<uint8_t *>(file.data());
    for (size_t i = 0; i + 3 < file.size(); ++i)
        if (at[i] == 0x02 && at[i + 1] > 1 && at[i + 1] < 9)
            for (size_t j = i + 2; j + 1 < std::min(i + 2 + at[i + 1], file.size()); ++j)
                at[j] = 0;
}

// What a call answers once its length is known: no octet more.
template <class Get> Octets answer(uint32_t size, const Get &get) {
    const Area area(size);
    uint32_t length = 0;
    must(get(area.data(), &length) == KACERT_Ok && length == size, "an answer has the length of its record");
    return copyOf(area.bytes());
}

template <class Get> void askAttributes(const AttributeRecord *first, uint32_t count, const Get &get) {
    int32_t index = 0;
    for (const AttributeRecord *node = first; node != nullptr; node = node->next) {
        const Area name(node->oid.length), value(node->value.length);
        uint32_t sizes[2] = {0, 0};
        must(get(name.data(), &sizes[0], value.data(), &sizes[1], ++index) == KACERT_Ok, "an attribute is answered");
        must(sizes[0] == node->oid.length && sizes[1] == node->value.length, "by its index");
    }
    must(index == static_cast<int32_t>(count), "attributes are counted");
}

void ask(PfxCtx &ctx) {
    answer(ctx.privateKey.length, [&](auto... out) { return KA_PKCS12_GetPrivateKey(&ctx, out...); });
    const auto of = [&](auto get) { return [&ctx, get](auto... out) { return get(&ctx, out...); }; };
    askAttributes(ctx.keyAttributes.next, ctx.keyAttributeCount, of(KA_PKCS12_GetPrivateKey_Attribute));
    askAttributes(ctx.bagAttributes.next, ctx.bagAttributeCount, of(KA_PKCS12_GetPrivateKeyBag_Attribute));
    int32_t index = 0;
    for (const PfxCertificate *node = ctx.firstCertificate; node != nullptr; node = node->next) {
        const int32_t at = ++index;
        const Octets octets =
            answer(node->certificate.length, [&](auto... out) { return KA_PKCS12_GetCertificate(&ctx, out..., at); });
        must(equal(octets, bytesOf(node->certificate)), "a certificate is answered by its index");
        askAttributes(node->attributes.next, node->attributeCount,
                      [&](auto *name, auto *nameSize, auto *value, auto *valueSize, int32_t i) {
                          return KA_PKCS12_GetCertificateBag_Attribute(&ctx, name, nameSize, value, valueSize, at, i);
                      });
    }
    must(index == static_cast<int32_t>(ctx.certificateCount), "certificates are counted");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    const Area file(Bytes{data, size});
    cutRounds(file.bytes());
    int32_t statuses[2], verdicts[2] = {0, 0};
    uint32_t counts[2];
    for (int i = 0; i < 2; ++i) {
        PfxCtx *created = nullptr;
        must(KA_PKCS12_CreateDecodePfx(&created) == KACERT_Ok, "a context");
        const PfxPtr ctx(created);
        statuses[i] = KA_PKCS12_DecodePFX(ctx.get(), bytesOf("pw").data(), 2, file.data(), static_cast<int32_t>(size),
                                          &verdicts[i]);
        must(statuses[i] != KACERT_Ok || verdicts[i] != 0, "what is read has a verdict");
        ask(*ctx);
        counts[i] = ctx->certificateCount;
    }
    must(statuses[0] == statuses[1] && verdicts[0] == verdicts[1] && counts[0] == counts[1], "reading is repeatable");
    return 0;
}
