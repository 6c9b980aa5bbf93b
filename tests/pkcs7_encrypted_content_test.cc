#include "crypto.h"
#include "messages.h"
#include "rows.h"

#include <openssl/pkcs7.h>

using namespace karil_test;

namespace {

void setHook(EncryptedContentCtx &ctx, std::string_view kind) {
    EXPECT_EQ(TRIED(KA_PKCS7_SetEncryptContentEncFunc(&ctx, plainHook, kind.data(), 1)), KACERT_Ok);
}

// "status N", or what the hook makes of the cipher text.
std::string opened(EncryptedContentCtx &ctx, size_t room = 4096) {
    const Exact area(room);
    uint32_t length = 12345;
    const int32_t status = TRIED(KA_PKCS7_GetEncryptedContentInformation(&ctx, area.data(), &length));
    return status == KACERT_Ok ? toHex(area.data(), length) : "status " + std::to_string(status);
}

SWEPT_ROWS(Pkcs7EncryptedContent, Encode) {
    const ContentPtr ctx = create<EncryptedContentCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "set"), KACERT_Ok);
    if (!row("hook").empty())
        setHook(*ctx, row("hook"));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(written(*ctx), row.hex("want"));
}

// Ids 17 to 20 as they are answered.
SWEPT_ROWS(Pkcs7EncryptedContent, Decode, {KACERT_MemoryErr}, false) {
    const ContentPtr ctx = create<EncryptedContentCtx>();
    for (const char *old : {"30{06{2A09} 30{06{2A09} 0500} 80{09}}", "30{}"}) // what a decoder finds there goes
        decodeMessage(*ctx, row.parse(old));
    const Octets der = row.octets("der");
    EXPECT_EQ(decodeMessage(*ctx, der), row.number("status"));
    const Anybuf *const fields[] = {&ctx->contentType.oid, &ctx->encryptionAlgorithm.oid,
                                    &ctx->encryptionAlgorithm.parameters, &ctx->encryptedContent};
    std::string all;
    for (const Anybuf *field : fields)
        all += (all.empty() ? "" : " / ") + (field->length > 0 ? toHex(*field) : "-");
    EXPECT_EQ(all, row("fields"));
    EXPECT_EQ(ctx->decoded, row.number("decoded"));
}

TEST(Pkcs7EncryptedContent, IdsAndTheirAnswers) {
    const ContentPtr ctx = create<EncryptedContentCtx>();
    const Trace trace;
    uint8_t octets[8];
    uint32_t length = 9;
    for (const int32_t id : {16, 22}) {
        EXPECT_EQ(set(*ctx, id, "a"), KAPKCS7_ContentTypeErr);
        EXPECT_EQ(KA_PKCS7_GetEncryptedContentAttributeChar(ctx.get(), id, octets, &length), KAPKCS7_ContentTypeErr);
    }
    EXPECT_TRUE(trace.has("------------>Attribute Not surport"));
    for (int32_t id = PKCS7_ENCRYPT_CONTENT_TYPE; id <= PKCS7_ENCRYPT_CONTENT; ++id) {
        EXPECT_EQ(KA_PKCS7_GetEncryptedContentAttributeChar(ctx.get(), id, octets, &length), KACERT_Ok);
        EXPECT_EQ(length, 0u) << id;
        EXPECT_EQ(set(*ctx, id, "ab"), KACERT_Ok);
        EXPECT_EQ(set(*ctx, id, "c"), KACERT_Ok);
        EXPECT_EQ(KA_PKCS7_GetEncryptedContentAttributeChar(ctx.get(), id, octets, &length), KACERT_Ok);
        EXPECT_EQ(toHex(octets, length), "63") << id;
        EXPECT_EQ(KA_PKCS7_SetEncryptedContentAttributeChar(ctx.get(), id, octets, -1), KACERT_InvalidLengthErr);
    }
}

// The area grows with the input: a hook may add 1,024 octets to it, and up to 10,240 to a small one.
TEST(Pkcs7EncryptedContent, LargeTextsGoBothWays) {
    const ContentPtr ctx = create<EncryptedContentCtx>();
    const Octets text(300000, 0x41);
    set(*ctx, PKCS7_ENCRYPT_CONTENT_TYPE, DataOid);
    set(*ctx, PKCS7_ENCRYPT_ALGO, "\x2A\x03");
    EXPECT_EQ(KA_PKCS7_SetEncryptedContentAttributeChar(ctx.get(), PKCS7_ENCRYPT_CONTENT, text.data(), 300000), 0);
    setHook(*ctx, "l");
    const std::string want =
        toHex(seq({oid("2A 86 48 86 F7 0D 01 07 01"), seq({oid("2A 03")}), tlv(0x80, cat({text, Octets(8)}))}));
    EXPECT_EQ(written(*ctx, 400000), want);
    EXPECT_EQ(decodeMessage(*ctx, hex(want)), KACERT_Ok);
    setHook(*ctx, "s");
    EXPECT_EQ(opened(*ctx, 400000), toHex(cat({Octets(300000, 0x42), Octets(8, 0x01)})));
    setHook(*ctx, "o");
    EXPECT_EQ(opened(*ctx), "status 101");
    setHook(*ctx, "f");
    EXPECT_EQ(opened(*ctx), "status 5");
    EXPECT_EQ(KA_PKCS7_SetEncryptContentDecFunc(ctx.get(), nullptr, nullptr, 0), KACERT_Ok);
    EXPECT_EQ(opened(*ctx), "status 121");
}

// Neither the plain text nor the hook's parameter is found in a block that was freed.
TEST(Pkcs7EncryptedContent, SecretsAreWiped) {
    constexpr std::string_view Secret = "s-a secret of 20 oct";
    Octets shifted = text(Secret);
    for (uint8_t &octet : shifted)
        ++octet;
    static bool isFound;
    isFound = false;
    onRelease([](const void *block, size_t size) {
        isFound |= std::string_view(static_cast<const char *>(block), size).find("secret") != std::string_view::npos;
    });
    {
        const ContentPtr ctx = create<EncryptedContentCtx>();
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(KA_PKCS7_SetEncryptContentDecFunc(ctx.get(), plainHook, Secret.data(), 20), KACERT_Ok);
            set(*ctx, PKCS7_ENCRYPT_CONTENT, Secret);
            EXPECT_EQ(written(*ctx), toHex(seq({hex("06 00"), hex("30 02 06 00"), tlv(0x80, shifted)})));
        }
        decodeMessage(*ctx, seq({oid("2A"), seq({oid("2A")}), tlv(0x80, text("\x01"))}));
        EXPECT_EQ(opened(*ctx), "02");
    }
    onRelease(nullptr);
    EXPECT_FALSE(isFound);
}

TEST(Pkcs7EncryptedContent, LibcryptoReadsItAndIsRead) {
    const ContentPtr ctx = create<EncryptedContentCtx>();
    set(*ctx, PKCS7_ENCRYPT_CONTENT_TYPE, DataOid);
    set(*ctx, PKCS7_ENCRYPT_ALGO, "\x2A\x86\x48\x86\xF7\x0D\x03\x07");
    set(*ctx, PKCS7_ENCRYPT_PARAMETER, "\x04\x08zzzzzzzz");
    set(*ctx, PKCS7_ENCRYPT_ENCRYPTEDCONTENT, "cipher text");
    const Octets der = hex(written(*ctx));
    const auto theirs = parsed<d2i_PKCS7_ENC_CONTENT, PKCS7_ENC_CONTENT_free>(der);
    ASSERT_NE(theirs, nullptr);
    EXPECT_EQ(OBJ_obj2nid(theirs->content_type), NID_pkcs7_data);
    EXPECT_EQ(OBJ_obj2nid(theirs->algorithm->algorithm), NID_des_ede3_cbc);
    EXPECT_EQ(octetsOf(theirs->enc_data), text("cipher text"));
    const ContentPtr again = create<EncryptedContentCtx>();
    EXPECT_EQ(decodeMessage(*again, derOf(i2d_PKCS7_ENC_CONTENT, theirs.get())), KACERT_Ok);
    EXPECT_EQ(written(*again), toHex(der));
}

} // namespace
