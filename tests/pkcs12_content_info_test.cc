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

template <class Type> void roundTrip(const Octets &content, const std::string &want) {
    using Ptr = std::unique_ptr<typename Type::Ctx, By<Type::destroy>>;
    typename Type::Ctx *created = nullptr;
    TRIED(Type::create(&created));
    const Ptr ctx(created);
    TRIED(Type::setContent(ctx.get(), content.data(), lengthOf(content)));
    TRIED(Type::setHook(ctx.get(), plainHook, "s", 1));
    TRIED(Type::setAlgorithm(ctx.get(), hex("2A 04").data(), 2));
    TRIED(Type::setParameter(ctx.get(), text("salt").data(), 4, 1500));
    EXPECT_EQ(Type::finish(*ctx), KACERT_Ok);
    // Where a message is handed keys, or copied, no memory is status 0 with nothing.
    const auto encode = [&](uint8_t *result, uint32_t *length) {
        const int32_t status = Type::encode(ctx.get(), result, length);
        return status == KACERT_Ok && *length == 0 ? KACERT_MemoryErr : status;
    };
    const auto decode = [](typename Type::Ctx *to, Bytes der) {
        const int32_t status = Type::decode(to, der.data(), lengthOf(der));
        return status == KACERT_Ok && to->encryptedContent == nullptr ? KACERT_MemoryErr : status;
    };
    int32_t status = 0;
    const Octets der = asked(encode, &status);
    EXPECT_EQ(status == KACERT_Ok ? toHex(der) : "status " + std::to_string(status), want);

    uint8_t area[64] = {};
    uint32_t length = 0, rounds = 0;
    TRIED(Type::createToDecode(&created));
    const Ptr back(created);
    // Until it has decoded it has nothing to set.
    EXPECT_EQ(Type::setHook(back.get(), plainHook, "c", 1), KACERT_InvalidItemErr);
    EXPECT_EQ(Type::setAlgorithm(back.get(), area, 2), KACERT_InvalidItemErr);
    EXPECT_EQ(Type::setParameter(back.get(), area, 2, 1), KACERT_InvalidItemErr);
    EXPECT_EQ(Type::getParameter(back.get(), area, &length, &length), KACERT_InvalidItemErr);
    if (status != KACERT_Ok)
        return;
    EXPECT_EQ(TRIED(decode(back.get(), der)), KACERT_Ok);
    EXPECT_EQ(TRIED(Type::setHook(back.get(), plainHook, "c", 1)), KACERT_Ok);
    EXPECT_EQ(TRIED(Type::getContent(back.get(), area, &length)), KACERT_Ok);
    EXPECT_EQ(toHex(area, length), "62 63");
    EXPECT_EQ(Type::getAlgorithm(back.get(), area, &length), KACERT_Ok);
    EXPECT_EQ(toHex(area, length), "2A 04");
    EXPECT_EQ(Type::getParameter(back.get(), area, &length, &rounds), KACERT_Ok);
    EXPECT_EQ(toHex(area, length) + ", " + std::to_string(rounds), "73 61 6C 74, 1500");
}

// A parameter that cannot be written is 108, whatever the reason.
SWEPT_ROWS(Pkcs12ContentInfo, RoundTrip, {KACERT_MemoryErr, KACERT_InvalidParamErr}) {
    const auto test = row("kind") == "enveloped" ? roundTrip<Enveloped> : roundTrip<Encrypted>;
    test(row.octets("content"), row.hex("want"));
}

} // namespace
