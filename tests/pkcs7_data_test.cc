// Data and DigestedData.
#include "message_rows.h"

using namespace karil_test;

namespace {

SWEPT_ROWS(Pkcs7Data, Encode) {
    const DataPtr ctx = create<DataCtx>();
    build(*ctx, row, "set");
    const std::string want = row.hex("want");
    EXPECT_EQ(message(*ctx), want);
    if (want[0] == 's')
        return;
    const std::string content = answer(*ctx, 0);
    EXPECT_EQ(decodeMessage(*ctx, hex(want)), KACERT_Ok);
    EXPECT_EQ(answer(*ctx, 0), content);
}

SWEPT_ROWS(Pkcs7Data, Decode) {
    const DataPtr ctx = create<DataCtx>();
    set(*ctx, 0, "before");
    decodeRow(row, *ctx);
}

int32_t setDigest(DigestedDataCtx &ctx, std::string_view hook) {
    return TRIED(KA_PKCS7_SetDigestedDataHashFunc(&ctx, hook.empty() ? nullptr : plainHook, hook.data(),
                                                  static_cast<int32_t>(hook.size())));
}
uint32_t verdictOf(const DigestedDataCtx &ctx) {
    uint32_t verdict = 12345;
    EXPECT_EQ(KA_PKCS7_GetDigestedDataHashResult(&ctx, &verdict), KACERT_Ok);
    return verdict;
}

// The hook changes the parameter, which is the context's own: it is set anew for each call.
SWEPT_ROWS(Pkcs7Data, EncodeDigested, {KACERT_MemoryErr}, false) {
    const DigestedPtr ctx = create<DigestedDataCtx>();
    build(*ctx, row, "set");
    setDigest(*ctx, row("hook"));
    const Trace trace;
    EXPECT_EQ(written(*ctx), row.hex("want"));
    EXPECT_TRUE(trace.has(row("trace")) || isHindered());
}

SWEPT_ROWS(Pkcs7Data, DecodeDigested, {KACERT_MemoryErr}, false) {
    const DigestedPtr ctx = create<DigestedDataCtx>();
    for (int i = 0; i < 2; ++i) {
        ctx->verifyResult = 200; // an old verdict goes, whatever happens
        setDigest(*ctx, row("hook"));
        const Trace trace;
        EXPECT_EQ(decodeMessage(*ctx, row.octets("der")), row.number("status"));
        EXPECT_TRUE(trace.has(row("trace")) || isHindered());
        EXPECT_EQ(held(*ctx), row("holds"));
        EXPECT_EQ(verdictOf(*ctx), row.number<uint32_t>("verdict"));
    }
}

TEST(Pkcs7Data, IdsOfDigestedData) {
    const DigestedPtr ctx = create<DigestedDataCtx>();
    for (int32_t id = 60; id <= 66; ++id) {
        const bool isSet = id > 61 && id<65, isKnown = id> 61 && id < 66;
        EXPECT_EQ(answer(*ctx, id), isKnown ? "" : "status 110") << id;
        EXPECT_EQ(set(*ctx, id, "ab"), isSet ? KACERT_Ok : KACERT_AttributeNotSupportErr) << id;
        EXPECT_EQ(answer(*ctx, id), isSet ? "61 62" : isKnown ? "" : "status 110") << id;
        EXPECT_EQ(set(*ctx, id, ""), KACERT_InvalidItemErr) << id;
        int32_t number = 7;
        EXPECT_EQ(KA_PKCS7_GetDigestedDataAttributeInt(ctx.get(), id, &number), id == 61 ? 0 : 110);
        EXPECT_EQ(number, id == 61 ? 0 : 7);
        EXPECT_EQ(KA_PKCS7_SetDigestedDataAttributeInt(ctx.get(), id, -1), id == 61 ? 0 : 110);
    }
    EXPECT_EQ(ctx->version, UINT32_MAX);
    EXPECT_EQ(KA_PKCS7_SetDigestedDataHashFunc(ctx.get(), plainHook, nullptr, 4), KACERT_Ok);
    EXPECT_EQ(ctx->digestFuncParam, nullptr);
}

// An inner ContentInfo of `size` octets, by contents with lengths of three octets.
Octets innerOf(size_t size) {
    const size_t around = 4 + 11 + 4 + 4;
    return seq({oid("2A 86 48 86 F7 0D 01 07 01"), tlv(0xA0, tlv(0x04, Octets(size - around, 0x41)))});
}

TEST(Pkcs7Data, BoundOfDigestedData) {
    for (const size_t size : {10240u, 10241u}) {
        const Octets inner = innerOf(size);
        ASSERT_EQ(inner.size(), size);
        const DigestedPtr ctx = create<DigestedDataCtx>();
        KA_PKCS7_SetDigestedDataAttributeInt(ctx.get(), 61, 0);
        set(*ctx, 62, "\x2A");
        set(*ctx, 63, DataOid);
        set(*ctx, 64, Octets(size - 23, 0x41));
        setDigest(*ctx, "n");
        const Octets der = seq({oid("2A 86 48 86 F7 0D 01 07 05"),
                                tlv(0xA0, seq({hex("02 01 00"), seq({oid("2A")}), inner, hex("04 00")}))});
        const bool isGood = size == 10240;
        EXPECT_EQ(written(*ctx, der.size()), isGood ? toHex(der) : "status 101");
        setDigest(*ctx, "n");
        EXPECT_EQ(decodeMessage(*ctx, der), isGood ? KACERT_Ok : KACERT_InvalidLengthErr);
        EXPECT_EQ(verdictOf(*ctx), isGood ? 200u : 0u);
    }
}

// What the hook writes on its parameter stays there: this one fails in its second call.
TEST(Pkcs7Data, DigestHooksGetWhatIsStored) {
    const DigestedPtr ctx = create<DigestedDataCtx>();
    KA_PKCS7_SetDigestedDataAttributeInt(ctx.get(), 61, 1);
    set(*ctx, 62, "\x2A");
    set(*ctx, 63, "\x2A");
    setDigest(*ctx, "n");
    EXPECT_EQ(written(*ctx),
              toHex(seq({oid("2A 86 48 86 F7 0D 01 07 05"),
                         tlv(0xA0, seq({hex("02 01 01"), seq({oid("2A")}), seq({oid("2A")}), hex("04 00")}))})));
    EXPECT_EQ(written(*ctx), "status 5");
}

// What the context itself holds can be decoded into it.
TEST(Pkcs7Data, ContentOfItsOwn) {
    const DataPtr ctx = create<DataCtx>();
    set(*ctx, 0, hex("30 0F 06 09 2A 86 48 86 F7 0D 01 07 01 A0 02 04 00"));
    EXPECT_EQ(TRIED(KA_PKCS7_DecodePKCS7Data(ctx.get(), ctx->content.data, 0)), KACERT_Ok);
    EXPECT_EQ(ctx->content.length, 0u);
    const DigestedPtr digested = create<DigestedDataCtx>();
    set(*digested, 64, seq({oid("2A 86 48 86 F7 0D 01 07 05"), tlv(0xA0, hex("30 03 02 01 07"))}));
    EXPECT_EQ(KA_PKCS7_DecodePKCS7DigestedData(digested.get(), digested->content.data, 0), KACERT_InvalidItemErr);
    EXPECT_EQ(digested->version, 7u);
}

} // namespace
