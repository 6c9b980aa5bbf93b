#include "message_rows.h"

using namespace karil_test;

namespace {

void setHook(DigestedDataCtx &ctx, std::string_view kind) {
    EXPECT_EQ(TRIED(KA_PKCS7_SetDigestedDataHashFunc(&ctx, kind.empty() ? nullptr : plainHook, kind.data(),
                                                     static_cast<int32_t>(kind.size()))),
              KACERT_Ok);
}
uint32_t verdictOf(const DigestedDataCtx &ctx) {
    uint32_t verdict = 12345;
    EXPECT_EQ(KA_PKCS7_GetDigestedDataHashResult(&ctx, &verdict), KACERT_Ok);
    return verdict;
}

// The hook changes the parameter, which is the context's own: it is set anew for each call.
SWEPT_ROWS(Pkcs7Digested, Encode, {KACERT_MemoryErr}, false) {
    const DigestedPtr ctx = create<DigestedDataCtx>();
    build(*ctx, row, "set");
    setHook(*ctx, row("hook"));
    const Trace trace;
    EXPECT_EQ(written(*ctx), row.hex("want"));
    EXPECT_TRUE(trace.has(row("trace")) || isHindered());
}

SWEPT_ROWS(Pkcs7Digested, Decode, {KACERT_MemoryErr}, false) {
    const DigestedPtr ctx = create<DigestedDataCtx>();
    for (int i = 0; i < 2; ++i) {
        ctx->verifyResult = 200; // an old verdict goes, whatever happens
        setHook(*ctx, row("hook"));
        const Trace trace;
        EXPECT_EQ(decodeMessage(*ctx, row.octets("der")), row.number("status"));
        EXPECT_TRUE(trace.has(row("trace")) || isHindered());
        EXPECT_EQ(held(*ctx), row("holds"));
        EXPECT_EQ(verdictOf(*ctx), row.number<uint32_t>("verdict"));
    }
}

// An inner ContentInfo of 10,240 octets goes both ways, one more neither.
TEST(Pkcs7Digested, Bound) {
    for (const size_t size : {10240u, 10241u}) {
        const Octets content(size - 23, 0x41); // after a SEQUENCE, an identifier and two headers
        const Octets inner = seq({oid("2A 86 48 86 F7 0D 01 07 01"), tlv(0xA0, tlv(0x04, content))});
        ASSERT_EQ(inner.size(), size);
        const Octets der = seq({oid("2A 86 48 86 F7 0D 01 07 05"),
                                tlv(0xA0, seq({hex("02 01 00"), seq({oid("2A")}), inner, hex("04 00")}))});
        const DigestedPtr ctx = create<DigestedDataCtx>();
        KA_PKCS7_SetDigestedDataAttributeInt(ctx.get(), 61, 0);
        set(*ctx, 62, "\x2A");
        set(*ctx, 63, DataOid);
        set(*ctx, 64, content);
        setHook(*ctx, "n");
        const bool isGood = size == 10240;
        EXPECT_EQ(written(*ctx, der.size()), isGood ? toHex(der) : "status 101");
        setHook(*ctx, "n");
        EXPECT_EQ(decodeMessage(*ctx, der), isGood ? KACERT_Ok : KACERT_InvalidLengthErr);
        EXPECT_EQ(verdictOf(*ctx), isGood ? 200u : 0u);
    }
}

// What the hook writes on its parameter stays there: this one fails in its second call.
TEST(Pkcs7Digested, HooksGetWhatIsStored) {
    const DigestedPtr ctx = create<DigestedDataCtx>();
    build(*ctx, rowsOf("Pkcs7Digested", "Encode")[0], "set");
    setHook(*ctx, "n");
    EXPECT_NE(written(*ctx), "status 5");
    EXPECT_EQ(written(*ctx), "status 5");
    EXPECT_EQ(KA_PKCS7_SetDigestedDataHashFunc(ctx.get(), plainHook, nullptr, 4), KACERT_Ok);
    EXPECT_EQ(ctx->digestFuncParam, nullptr);
}

} // namespace
