// Decodes a PFX of both kinds, with a MAC of no octets, opens its ContentInfos, and writes it again: what was read is
// read then as well.
#include "fuzz.h"

#include "messages.h"

using namespace karil_fuzz;

namespace {

struct UnderMac {
    static constexpr auto create = KA_PKCS12_CreateDecodeAuthSafeOfDataType;
    static constexpr auto destroy = KA_PKCS12_DestoryDecodeAuthSafeOfDataType;
    static constexpr auto at = KA_PKCS12_GetAuthSafeOfDataType_ContentInfo;
    static constexpr auto decode = KA_PKCS12_DecodeAuthSafeOfDataType;
    static constexpr auto encode = KA_PKCS12_EncodeAuthSafeOfDataType;
    static void finish(AuthSafeCtx &ctx) {
        int32_t verdict = 0;
        must(KA_PKCS12_SetAuthSafeOfDataType_ParseMacFunc(&ctx, plainHook, "n", 1) == KACERT_Ok, "a hook is set");
        must(KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult(&ctx, &verdict) == KACERT_Ok &&
                 (verdict == PKCS7_VERDICT_GOOD) == (ctx.mac.digest.length == 0),
             "a MAC of no octets matches a digest of none");
        KA_PKCS12_SetAuthSafeOfDataType_GenMacFunc(&ctx, plainHook, "n", 1);
    }
};
struct UnderSignatures {
    static constexpr auto create = KA_PKCS12_CreateDecodeAuthSafeOfSignedType;
    static constexpr auto destroy = KA_PKCS12_DestoryDecodeAuthSafeOfSignedType;
    static constexpr auto at = KA_PKCS12_GetAuthSafeOfSignedType_ContentInfo;
    static constexpr auto decode = KA_PKCS12_DecodeAuthSafeOfSignedType;
    static constexpr auto encode = KA_PKCS12_EncodeAuthSafeOfSignedType;
    static void finish(AuthSafeCtx &ctx) {
        uint8_t *const none = nullptr;
        uint32_t length = 0;
        SignerInfoCtx *signer = nullptr;
        KA_PKCS12_GetAuthSafeOfSignedType_SignerInfo(&ctx, &signer, 1);
        for (const auto get : {KA_PKCS12_GetAuthSafeOfSignedType_Cert, KA_PKCS12_GetAuthSafeOfSignedType_Crl,
                               KA_PKCS12_GetAuthSafeOfSignedType_DigestAlgorithm})
            must(get(&ctx, none, &length, 1) == KACERT_InvalidLengthErr, "there must be room");
    }
};

// A ContentInfo as encrypted and enveloped data, as far as it is one.
void openInfo(Bytes info) {
    EncryptedDataCtx *encrypted = nullptr;
    EnvelopedDataCtx *enveloped = nullptr;
    KA_PKCS12_CreateDecodeContentInfoOfEncryptedType(&encrypted);
    KA_PKCS12_CreateDecodeContentInfoOfEnvelopedType(&enveloped);
    const Area area(info.size() + 1);
    uint32_t length = 0, rounds = 0;
    if (KA_PKCS12_DecodeContentInfoOfEncryptedType(encrypted, info.data(), lengthOf(info)) == KACERT_Ok) {
        const int32_t status =
            KA_PKCS12_GetContentInfoOfEncryptedType_DesParameter(encrypted, area.data(), &length, &rounds);
        must(status != KACERT_Ok || length < info.size(), "a salt is shorter than its message");
        KA_PKCS12_SetContentInfoOfEncryptedType_DecContentFunc(encrypted, plainHook, "c", 1);
        KA_PKCS12_GetContentInfoOfEncryptedType_SafeContent(encrypted, area.data(), &length);
    }
    if (KA_PKCS12_DecodeContentInfoOfEnvelopedType(enveloped, info.data(), lengthOf(info)) == KACERT_Ok)
        KA_PKCS12_GetContentInfoOfEnvelopedType_DesAlgorithm(enveloped, area.data(), &length);
    KA_PKCS12_DestoryDecodeContentInfoOfEncryptedType(encrypted);
    KA_PKCS12_DestoryDecodeContentInfoOfEnvelopedType(enveloped);
}

template <class Kind> void use(Bytes der) {
    std::unique_ptr<AuthSafeCtx, By<Kind::destroy>> owned[2];
    uint32_t count = 0;
    Octets octets = copyOf(der);
    for (auto &ctx : owned) {
        AuthSafeCtx *created = nullptr;
        must(Kind::create(&created) == KACERT_Ok, "a context");
        ctx.reset(created);
        const int32_t status = Kind::decode(created, octets.data(), lengthOf(octets));
        must(&ctx == owned || (status == KACERT_Ok && created->contentInfoCount == count), "what was written is read");
        if (status != KACERT_Ok)
            return;
        count = created->contentInfoCount;
        Kind::finish(*created);
        int32_t index = 0;
        for (const Anybuf *node = created->contentInfoList; node != nullptr; node = node->next) {
            const Area info(node->length);
            uint32_t length = 0;
            must(Kind::at(created, info.data(), &length, ++index) == KACERT_Ok && length == node->length,
                 "a ContentInfo is answered");
            openInfo(info.bytes());
        }
        uint32_t length = 0;
        if (Kind::encode(created, nullptr, &length) != KACERT_Ok)
            return;
        octets.resize(length);
        must(Kind::encode(created, octets.data(), &length) == KACERT_Ok && length == octets.size(),
             "the length is true");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    const Area der(Bytes{data, size});
    use<UnderMac>(der.bytes());
    use<UnderSignatures>(der.bytes());
    return 0;
}
