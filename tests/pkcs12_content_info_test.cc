// ContentInfos of PKCS#12: what they set of the PKCS#7 messages.
#include "message_rows.h"

using namespace karil_test;

namespace {

#define KIT_CONTENT_INFO(TYPE, PARAMETER)                                                                              \
    static constexpr auto create = KA_PKCS12_CreateEncodeContentInfoOf##TYPE;                                          \
    static constexpr auto createToDecode = KA_PKCS12_CreateDecodeContentInfoOf##TYPE;                                  \
    static constexpr auto destroy = KA_PKCS12_DestoryDecodeContentInfoOf##TYPE;                                        \
    static constexpr auto setContent = KA_PKCS12_SetContentInfoOf##TYPE##_SafeContent;                                 \
    static constexpr auto getContent = KA_PKCS12_GetContentInfoOf##TYPE##_SafeContent;                                 \
    static constexpr auto setHook = KA_PKCS12_SetContentInfoOf##TYPE##_EncContentFunc;                                 \
    static constexpr auto setAlgorithm = KA_PKCS12_SetContentInfoOf##TYPE##_DesAlgorithm;                              \
    static constexpr auto getAlgorithm = KA_PKCS12_GetContentInfoOf##TYPE##_DesAlgorithm;                              \
    static constexpr auto setParameter = PARAMETER;                                                                    \
    static constexpr auto getParameter = KA_PKCS12_GetContentInfoOf##TYPE##_DesParameter;                              \
    static constexpr auto encode = KA_PKCS12_EncodeContentInfoOf##TYPE;                                                \
    static constexpr auto decode = KA_PKCS12_DecodeContentInfoOf##TYPE

struct Enveloped {
    using Ctx = EnvelopedDataCtx;
    KIT_CONTENT_INFO(EnvelopedType, KA_PKCS12_SetContentInfoOfEnvelopedType_DesParameter);
    static int32_t finish(Ctx &ctx) {
        EXPECT_EQ(TRIED(KA_PKCS12_SetContentInfoOfEnvelopedType_EncContentKey(&ctx, text("k").data(), 1)), KACERT_Ok);
        return handOver(KA_PKCS12_SetContentInfoOfEnvelopedType_RecipientInfo, ctx, plainRecipient());
    }
};
struct Encrypted {
    using Ctx = EncryptedDataCtx;
    KIT_CONTENT_INFO(EncryptedType, KA_PKCs12_SetContentInfoOfEncryptedType_DesParameter);
    static int32_t finish(Ctx &) { return KACERT_Ok; }
};

// What "no memory" is answered with where a message is handed keys, or copied, for want of a status.
template <class Type> int32_t encodeOrFail(typename Type::Ctx *ctx, uint8_t *result, uint32_t *length) {
    const int32_t status = Type::encode(ctx, result, length);
    return status == KACERT_Ok && *length == 0 ? KACERT_MemoryErr : status;
}
template <class Type> int32_t decodeOrFail(typename Type::Ctx *ctx, Bytes der) {
    const int32_t status = Type::decode(ctx, der.data(), lengthOf(der));
    return status == KACERT_Ok && ctx->encryptedContent == nullptr ? KACERT_MemoryErr : status;
}
template <class Type> void roundTrip(const Octets &content, const std::string &want) {
    typename Type::Ctx *created = nullptr;
    TRIED(Type::create(&created));
    const std::unique_ptr<typename Type::Ctx, By<Type::destroy>> ctx(created);
    TRIED(Type::setContent(ctx.get(), content.data(), lengthOf(content)));
    TRIED(Type::setHook(ctx.get(), plainHook, "s", 1));
    TRIED(Type::setAlgorithm(ctx.get(), hex("2A 04").data(), 2));
    TRIED(Type::setParameter(ctx.get(), text("salt").data(), 4, 1500));
    EXPECT_EQ(Type::finish(*ctx), KACERT_Ok);
    Octets der(content.size() + 1024), area(der.size());
    uint32_t length = 0;
    const int32_t status = TRIED(encodeOrFail<Type>(ctx.get(), der.data(), &length));
    der.resize(status == KACERT_Ok ? length : 0);
    EXPECT_EQ(status == KACERT_Ok ? toHex(der) : "status " + std::to_string(status), want);

    TRIED(Type::createToDecode(&created));
    const std::unique_ptr<typename Type::Ctx, By<Type::destroy>> back(created);
    // Until it has decoded it has nothing to set.
    EXPECT_EQ(Type::setHook(back.get(), plainHook, "c", 1), KACERT_InvalidItemErr);
    EXPECT_EQ(Type::setAlgorithm(back.get(), area.data(), 2), KACERT_InvalidItemErr);
    EXPECT_EQ(Type::setParameter(back.get(), area.data(), 2, 1), KACERT_InvalidItemErr);
    EXPECT_EQ(Type::getParameter(back.get(), area.data(), &length, &length), KACERT_InvalidItemErr);
    if (status != KACERT_Ok)
        return;
    EXPECT_EQ(TRIED(decodeOrFail<Type>(back.get(), der)), KACERT_Ok);
    EXPECT_EQ(TRIED(Type::setHook(back.get(), plainHook, "c", 1)), KACERT_Ok);
    EXPECT_EQ(TRIED(Type::getContent(back.get(), area.data(), &length)), KACERT_Ok);
    EXPECT_EQ(toHex(area.data(), length), "62 63");
    EXPECT_EQ(Type::getAlgorithm(back.get(), area.data(), &length), KACERT_Ok);
    EXPECT_EQ(toHex(area.data(), length), "2A 04");
    uint32_t rounds = 0;
    EXPECT_EQ(Type::getParameter(back.get(), area.data(), &length, &rounds), KACERT_Ok);
    EXPECT_EQ(toHex(area.data(), length), toHex(text("salt")));
    EXPECT_EQ(rounds, 1500u);
}

// A parameter that cannot be written is 108, whatever the reason.
SWEPT_ROWS(Pkcs12ContentInfo, RoundTrip, {KACERT_MemoryErr, KACERT_InvalidParamErr}) {
    const auto test = row("kind") == "enveloped" ? roundTrip<Enveloped> : roundTrip<Encrypted>;
    test(row.octets("content"), row.hex("want"));
}

} // namespace
