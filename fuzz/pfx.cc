// Reads a PFX file under the password "pw", its MAC left in, by hand and in one call, asks for everything, and reads it
// once more.
#include "fuzz.h"

#include "messages.h"

using namespace karil_fuzz;

namespace {

using PfxPtr = std::unique_ptr<PfxCtx, By<KA_PKCS12_DestroyDecodePFX>>;

// A file may cost 100,000,000 rounds. Taken apart by hand, it shows how many it asks for: those with more than a few
// are left out.
constexpr uint32_t Cheap = 255;

bool areBagsCheap(Bytes contents) {
    SafeContentsCtx *safe = nullptr;
    SafeBagCtx *bag = nullptr;
    KA_PKCS12_CreateDecodeSafeContents(&safe);
    bool isCheap = true;
    if (KA_PKCS12_DecodeSafeContent(safe, contents.data(), lengthOf(contents)) == KACERT_Ok)
        for (const Anybuf *node = safe->anchor.next; node != nullptr; node = node->next) {
            KA_PKCS12_CreateDecodeSafeBag(&bag);
            const Area areas[] = {Area(node->length), Area(node->length), Area(node->length)};
            uint32_t sizes[3], rounds = 0;
            if (KA_PKCS12_DecodeSafeBag(bag, node->data, static_cast<int32_t>(node->length)) == KACERT_Ok)
                KA_PKCS12_DealWithEncKeyBag(areas[0].data(), &sizes[0], areas[1].data(), &sizes[1], areas[2].data(),
                                            &sizes[2], &rounds, bag->content.data,
                                            static_cast<int32_t>(bag->content.length));
            isCheap = isCheap && rounds <= Cheap;
            KA_PKCS12_DestoryDecodeSafeBag(bag);
        }
    KA_PKCS12_DestoryDecodeSafeContents(safe);
    return isCheap;
}

bool isInfoCheap(const Anybuf &info) {
    DataCtx *data = nullptr;
    EncryptedDataCtx *encrypted = nullptr;
    KA_PKCS12_CreateDecodeContentInfoOfDataType(&data);
    KA_PKCS12_CreateDecodeContentInfoOfEncryptedType(&encrypted);
    const Area oid(info.length), salt(info.length), contents(info.length);
    uint32_t oidSize = 0, saltSize = 0, size = 0, rounds = 0;
    const auto length = static_cast<int32_t>(info.length);
    if (KA_PKCS12_DecodeContentInfoOfDataType(data, info.data, length) == KACERT_Ok) {
        KA_PKCS12_GetContentInfoOfDataType_SafeContent(data, contents.data(), &size);
    } else if (KA_PKCS12_DecodeContentInfoOfEncryptedType(encrypted, info.data, length) == KACERT_Ok &&
               KA_PKCS12_GetContentInfoOfEncryptedType_DesAlgorithm(encrypted, oid.data(), &oidSize) == KACERT_Ok &&
               KA_PKCS12_GetContentInfoOfEncryptedType_DesParameter(encrypted, salt.data(), &saltSize, &rounds) ==
                   KACERT_Ok &&
               rounds <= Cheap) {
        const PbeHookParam parameter = {oid.data(), oidSize, bytesOf("pw").data(), 2, salt.data(), saltSize, rounds};
        KA_PKCS12_SetContentInfoOfEncryptedType_DecContentFunc(encrypted, KA_DecryptFunc_Ref, &parameter,
                                                               sizeof parameter);
        KA_PKCS12_GetContentInfoOfEncryptedType_SafeContent(encrypted, contents.data(), &size);
    }
    KA_PKCS12_DestoryDecodeContentInfoOfDataType(data);
    KA_PKCS12_DestoryDecodeContentInfoOfEncryptedType(encrypted);
    return rounds <= Cheap && areBagsCheap({contents.data(), size});
}

bool isCheap(Bytes file) {
    AuthSafeCtx *ctx = nullptr;
    KA_PKCS12_CreateDecodeAuthSafeOfDataType(&ctx);
    bool isCheap = true;
    if (KA_PKCS12_DecodeAuthSafeOfDataType(ctx, file.data(), lengthOf(file)) == KACERT_Ok)
        isCheap = ctx->mac.iterations <= Cheap;
    for (const Anybuf *info = ctx->contentInfoList; info != nullptr && isCheap; info = info->next)
        isCheap = isInfoCheap(*info);
    KA_PKCS12_DestoryDecodeAuthSafeOfDataType(ctx);
    return isCheap;
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
    if (!isCheap(file.bytes()))
        return -1;
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
