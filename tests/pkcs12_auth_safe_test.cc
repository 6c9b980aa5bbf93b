// The PFX around ContentInfos, under a MAC and under signatures.
#include "message_rows.h"

using namespace karil_test;

namespace {

#define KIT_AUTH_SAFE(TYPE)                                                                                            \
    static constexpr auto create = KA_PKCS12_CreateEncodeAuthSafeOf##TYPE;                                             \
    static constexpr auto destroy = KA_PKCS12_DestoryEncodeAuthSafeOf##TYPE;                                           \
    static constexpr auto add = KA_PKCS12_SetAuthSafeOf##TYPE##_ContentInfo;                                           \
    static constexpr auto at = KA_PKCS12_GetAuthSafeOf##TYPE##_ContentInfo;                                            \
    static constexpr auto encode = KA_PKCS12_EncodeAuthSafeOf##TYPE;                                                   \
    static constexpr auto digest = KA_PKCS12_SetAuthSafeOf##TYPE##_DigestAlgorithm
struct Data {
    KIT_AUTH_SAFE(DataType);
    // Without memory for the safe's copy the status is 0, and nothing is filled.
    static int32_t decode(AuthSafeCtx *ctx, const uint8_t *der, int32_t length) {
        const int32_t status = KA_PKCS12_DecodeAuthSafeOfDataType(ctx, der, length);
        return status == KACERT_Ok && ctx->contentDecoded == 0 ? KACERT_MemoryErr : status;
    }
};
struct Signed {
    KIT_AUTH_SAFE(SignedType);
    static constexpr auto decode = KA_PKCS12_DecodeAuthSafeOfSignedType;
};
template <class Kind> using SafePtr = std::unique_ptr<AuthSafeCtx, By<Kind::destroy>>;
template <class Kind> SafePtr<Kind> created() {
    AuthSafeCtx *ctx = nullptr;
    TRIED(Kind::create(&ctx));
    return SafePtr<Kind>(ctx);
}

template <class Kind> SafePtr<Kind> built(const Row &row) {
    SafePtr<Kind> ctx = created<Kind>();
    for (const auto &step : row.settings("set")) {
        const auto &name = step.first;
        const Octets &value = step.second;
        const auto call = [&](auto set, auto... more) {
            return TRIED(set(ctx.get(), more..., value.data(), lengthOf(value)));
        };
        const int32_t status =
            name == "info"     ? call(Kind::add)
            : name == "digest" ? call(Kind::digest)
            : name == "hook"   ? call(KA_PKCS12_SetAuthSafeOfDataType_GenMacFunc, plainHook)
            : name == "cert"   ? call(KA_PKCS12_SetAuthSafeOfSignedType_Cert)
            : name == "crl"    ? call(KA_PKCS12_SetAuthSafeOfSignedType_Crl)
            : name == "salt"
                ? TRIED(KA_PKCS12_SetAuthSafeOfDataType_MacParameter(ctx.get(), value.data(), sizeOf(value), 5))
                : handOver(KA_PKCS12_SetAuthSafeOfSignedType_SignerInfo, *ctx,
                           plainSigner(std::string(1, static_cast<char>(value[0]))));
        EXPECT_EQ(status, KACERT_Ok) << name;
    }
    return ctx;
}
template <class Kind> std::string encoded(AuthSafeCtx &ctx) {
    int32_t status = 0;
    const Octets der = asked([&](auto... out) { return Kind::encode(&ctx, out...); }, &status);
    return status == KACERT_Ok ? toHex(der) : "status " + std::to_string(status);
}

// "version 3, 30 00 + 05 00": the ContentInfos as they are asked for.
template <class Kind> std::string infosOf(AuthSafeCtx &ctx) {
    std::string all;
    uint8_t octets[64];
    for (int32_t i = 1; i <= static_cast<int32_t>(ctx.contentInfoCount); ++i) {
        uint32_t length = 0;
        EXPECT_EQ(Kind::at(&ctx, octets, &length, i), KACERT_Ok);
        all += (i > 1 ? " + " : ", ") + toHex(octets, length);
    }
    uint32_t length = 12345;
    EXPECT_EQ(Kind::at(&ctx, octets, &length, static_cast<int32_t>(ctx.contentInfoCount) + 1), KACERT_Ok);
    EXPECT_EQ(Kind::at(&ctx, octets, &length, 0), KACERT_InvalidParamErr);
    EXPECT_EQ(length, 12345u);
    return "version " + std::to_string(ctx.version) + all;
}
std::string macOf(AuthSafeCtx &ctx) {
    uint8_t oid[64], salt[64];
    uint32_t oidLength = 0, saltLength = 0, rounds = 0;
    const int32_t status = KA_PKCS12_GetAuthSafeOfDataType_MacParameter(&ctx, salt, &saltLength, &rounds);
    EXPECT_EQ(KA_PKCS12_GetAuthSafeOfDataType_DigestAlgorithm(&ctx, oid, &oidLength), status);
    EXPECT_EQ(status, ctx.macParameterSet != 0 ? KACERT_Ok : KACERT_InvalidParamErr);
    return status != KACERT_Ok ? ""
                               : ", digest " + toHex(oid, oidLength) + ", salt " + toHex(salt, saltLength) + ", " +
                                     std::to_string(rounds) + " rounds";
}
std::string verdictOf(AuthSafeCtx &ctx) {
    int32_t verdict = 0;
    const int32_t status = TRIED(KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult(&ctx, &verdict));
    return status != KACERT_Ok ? "status " + std::to_string(status) : std::to_string(verdict);
}

SWEPT_ROWS(Pkcs12AuthSafe, Encode) {
    EXPECT_EQ(row("kind") == "data" ? encoded<Data>(*built<Data>(row)) : encoded<Signed>(*built<Signed>(row)),
              row.hex("want"));
}

// A second decoding leaves nothing of the first; nor does one of the octets that the context holds.
SWEPT_ROWS(Pkcs12AuthSafe, Decode, {KACERT_MemoryErr}, false) {
    const SafePtr<Data> ctx = created<Data>();
    const Octets good =
        hex("30 1E 02 01 03 30 11 06 09 2A 86 48 86 F7 0D 01 07 01 A0 04 04 02 30 00 30 06 30 04 30 02 06 00");
    TRIED(KA_PKCS12_DecodeAuthSafeOfDataType(ctx.get(), good.data(), 0));
    ctx->mac.verified = 1;
    ctx->version = 3;
    const std::string &hook = row("hook");
    TRIED(KA_PKCS12_SetAuthSafeOfDataType_ParseMacFunc(ctx.get(), hook.empty() ? nullptr : plainHook, hook.data(),
                                                       static_cast<int32_t>(hook.size())));
    const Exact der(row.octets("der"));
    EXPECT_EQ(TRIED(Data::decode(ctx.get(), der.data(), lengthOf(der.bytes()))), row.number("status"));
    EXPECT_EQ(infosOf<Data>(*ctx) + macOf(*ctx), row("holds"));
    EXPECT_EQ(verdictOf(*ctx), row("verdict"));
    TRIED(KA_PKCS12_SetAuthSafeOfDataType_ParseMacFunc(ctx.get(), plainHook, hook == "n" ? "n" : "c", 1));
    EXPECT_EQ(verdictOf(*ctx), row("late"));
    if (ctx->content.length > 0) {
        EXPECT_NE(Data::decode(ctx.get(), ctx->content.data, 0), KACERT_Ok);
    }
}

SWEPT_ROWS(Pkcs12AuthSafe, DecodeSigned) {
    const SafePtr<Signed> ctx = created<Signed>();
    for (int i = 0; i < 2; ++i) {
        const Exact der(row.octets("der"));
        ctx->version = 3;
        EXPECT_EQ(TRIED(Signed::decode(ctx.get(), der.data(), lengthOf(der.bytes()))), row.number("status"));
        std::string holds = infosOf<Signed>(*ctx);
        uint8_t octets[64];
        for (const auto get : {KA_PKCS12_GetAuthSafeOfSignedType_DigestAlgorithm,
                               KA_PKCS12_GetAuthSafeOfSignedType_Cert, KA_PKCS12_GetAuthSafeOfSignedType_Crl}) {
            uint32_t length = 0;
            get(ctx.get(), octets, &length, 1);
            list(holds, "and", toHex(octets, length));
        }
        SignerInfoCtx *signer = nullptr;
        EXPECT_EQ(KA_PKCS12_GetAuthSafeOfSignedType_SignerInfo(ctx.get(), &signer, 1), KACERT_Ok);
        list(holds, "signed", signer != nullptr ? toHex(signer->content) : "");
        EXPECT_EQ(holds, row("holds")) << i;
    }
}

// Contexts of one kind are none of the other's, and what a failed decoding leaves.
TEST(Pkcs12AuthSafe, Kinds) {
    const SafePtr<Data> data = created<Data>();
    const SafePtr<Signed> sign = created<Signed>();
    uint8_t octets[64];
    uint32_t length = 0;
    EXPECT_EQ(Data::encode(sign.get(), octets, &length), KACERT_InvalidParamErr);
    EXPECT_EQ(Signed::decode(data.get(), octets, 0), KACERT_InvalidParamErr);
    EXPECT_EQ(Data::destroy(sign.get()), KACERT_InvalidParamErr);
    EXPECT_EQ(KA_PKCS12_SetAuthSafeOfSignedType_Cert(data.get(), octets, 1), KACERT_InvalidParamErr);
    for (const int32_t wrong : {0, -1}) {
        EXPECT_EQ(Data::add(data.get(), octets, wrong), KACERT_InvalidParamErr);
        EXPECT_EQ(KA_PKCS12_SetAuthSafeOfSignedType_Crl(sign.get(), octets, wrong), KACERT_InvalidParamErr);
    }
    // Without memory for its own copy, the second one, the status is 0.
    const Octets der = hex("30 16 02 01 03 30 11 06 09 2A 86 48 86 F7 0D 01 07 01 A0 04 04 02 30 00");
    failAllocation(Pool::Library, 2, false);
    EXPECT_EQ(KA_PKCS12_DecodeAuthSafeOfDataType(data.get(), der.data(), 0), KACERT_Ok);
    EXPECT_TRUE(endFailing());
    EXPECT_TRUE(data->contentDecoded == 0 && data->content.data == nullptr);
    // A decoding that failed leaves nothing to write.
    EXPECT_EQ(Signed::decode(sign.get(), der.data(), 0), KAPKCS7_ContentTypeErr);
    EXPECT_EQ(encoded<Signed>(*sign), "status 121");
    int32_t verdict = 7;
    EXPECT_EQ(KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult(nullptr, &verdict), KACERT_Ok);
    EXPECT_EQ(verdict, 7);
    // A verdict that is known needs no hook.
    const SafePtr<Data> known = created<Data>();
    for (const uint8_t verified : {uint8_t{0}, uint8_t{1}}) {
        known->mac.verified = verified;
        EXPECT_EQ(verdictOf(*known), verified == 1 ? "200" : "100");
    }
}

} // namespace
