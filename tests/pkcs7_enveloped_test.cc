// EnvelopedData and EncryptedData.
#include "whole_messages.h"

using namespace karil_test;

namespace {

template <class Ctx> void encodeRow(const Row &row) {
    const Owner<Ctx> ctx = create<Ctx>();
    build(*ctx, row, "set");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(message(*ctx), row.hex("want"));
}

SWEPT_ROWS(Pkcs7Enveloped, Encode) {
    encodeRow<EnvelopedDataCtx>(row);
}
SWEPT_ROWS(Pkcs7Enveloped, EncodeEncrypted) {
    const Trace trace;
    encodeRow<EncryptedDataCtx>(row);
    EXPECT_TRUE(trace.has(row("trace")));
}

SWEPT_ROWS(Pkcs7Enveloped, Decode) {
    const EnvelopedPtr ctx = create<EnvelopedDataCtx>();
    build(*ctx, rowsOf("Pkcs7Enveloped", "Encode")[0], "set"); // what a decoder finds there goes
    decodeRow(row, *ctx);
}
SWEPT_ROWS(Pkcs7Enveloped, DecodeEncrypted) {
    const EncryptedPtr ctx = create<EncryptedDataCtx>();
    build(*ctx, rowsOf("Pkcs7Enveloped", "EncodeEncrypted")[0], "set");
    decodeRow(row, *ctx);
}

EnvelopedPtr decodedEnvelope() {
    EnvelopedPtr ctx = create<EnvelopedDataCtx>();
    EXPECT_EQ(decodeMessage(*ctx, rowsOf("Pkcs7Enveloped", "Decode")[0].octets("der")), KACERT_Ok);
    return ctx;
}

TEST(Pkcs7Enveloped, Ids) {
    const EnvelopedPtr ctx = create<EnvelopedDataCtx>();
    for (int32_t id = 50; id <= 58; ++id) {
        const bool isSet = id > 51 && id<55, isAsked = id> 51 && id < 58 && id != 54;
        EXPECT_EQ(answer(*ctx, id), isAsked ? "untouched" : "status 110") << id;
        EXPECT_EQ(set(*ctx, id, "ab"), isSet ? KACERT_Ok : KACERT_AttributeNotSupportErr) << id;
        EXPECT_EQ(answer(*ctx, id), id == 52 || id == 53 ? "61 62" : isAsked ? "untouched" : "status 110") << id;
        int32_t number = 7;
        EXPECT_EQ(KA_PKCS7_SetEnvelopedDataAttributeInt(ctx.get(), id, -5), id == 51 ? 0 : 110);
        EXPECT_EQ(KA_PKCS7_GetEnvelopedDataAttributeInt(ctx.get(), id, &number), id == 51 ? 0 : 110);
        EXPECT_EQ(number, id == 51 ? -5 : 7);
    }
    EXPECT_EQ(ctx->contentSet, 1);
    ContentPtr content = plainContent();
    set(*content, PKCS7_ENCRYPT_PARAMETER, "\x05");
    EXPECT_EQ(handOver(KA_PKCS7_SetEnvelopedData_EncryptedContent, *ctx, std::move(content)), KACERT_Ok);
    EXPECT_EQ(answer(*ctx, 55) + " / " + answer(*ctx, 56) + " / " + answer(*ctx, 57), "untouched / 2A 04 / 05");
    const EnvelopedPtr read = decodedEnvelope();
    EXPECT_EQ(answer(*read, 55) + " / " + answer(*read, 52), "62 63 / untouched");

    const EncryptedPtr encrypted = create<EncryptedDataCtx>();
    for (int32_t id = 57; id <= 61; ++id) {
        const bool isKnown = id == 59 || id == 60;
        EXPECT_EQ(answer(*encrypted, id), isKnown ? "untouched" : "status 110") << id;
        EXPECT_EQ(set(*encrypted, id, "ab"), isKnown ? KACERT_Ok : KACERT_AttributeNotSupportErr) << id;
        EXPECT_EQ(set(*encrypted, id, ""), KACERT_InvalidItemErr) << id;
        EXPECT_EQ(answer(*encrypted, id), isKnown ? "61 62" : "status 110") << id;
        EXPECT_EQ(KA_PKCS7_SetEncryptedDataAttributeInt(encrypted.get(), id, 9), id == 58 ? 0 : 110);
    }
    int32_t number = 0;
    EXPECT_EQ(KA_PKCS7_GetEncryptedDataAttributeInt(encrypted.get(), 58, &number), KACERT_Ok);
    EXPECT_EQ(number, 9);
    EXPECT_EQ(decodeMessage(*encrypted, rowsOf("Pkcs7Enveloped", "DecodeEncrypted")[0].octets("der")), KACERT_Ok);
    EXPECT_EQ(answer(*encrypted, 59) + " / " + answer(*encrypted, 60), "untouched / untouched");
}

TEST(Pkcs7Enveloped, RecipientsByPosition) {
    const EnvelopedPtr ctx = create<EnvelopedDataCtx>();
    RecipientInfoCtx *recipient = nullptr;
    EXPECT_EQ(KA_PKCS7_GetEnvelopedData_RecipientInfo(ctx.get(), &recipient, 1), KACERT_Ok);
    EXPECT_EQ(handOver(KA_PKCS7_SetEnvelopedData_RecipientInfo, *ctx, plainRecipient()), KACERT_Ok);
    EXPECT_EQ(KA_PKCS7_GetEnvelopedData_RecipientInfo(ctx.get(), &recipient, 1), KACERT_InvalidLengthErr);
    EXPECT_EQ(KA_PKCS7_SetEnvelopedData_RecipientInfo(ctx.get(), ctx->recipients), KACERT_InvalidItemErr);
    EXPECT_EQ(recipient, nullptr);
    const EnvelopedPtr read = decodedEnvelope();
    uint32_t counts[2] = {};
    EXPECT_EQ(KA_PKCS7_GetEnvelopedData_RecipientInfoNum(ctx.get(), &counts[0]), KACERT_Ok);
    EXPECT_EQ(KA_PKCS7_GetEnvelopedData_RecipientInfoNum(read.get(), &counts[1]), KACERT_Ok);
    EXPECT_EQ(counts[0] * 10 + counts[1], 12u);
    for (const int32_t position : {-1, 0, 1, 2, 3}) {
        const bool isThere = position == 1 || position == 2;
        recipient = nullptr;
        EXPECT_EQ(KA_PKCS7_GetEnvelopedData_RecipientInfo(read.get(), &recipient, position), isThere ? 0 : 101);
        EXPECT_EQ(recipient, isThere ? read->recipients : nullptr);
    }
}

// A second encrypted content stays the caller's.
template <class Ctx> void giveContentTwice() {
    const Owner<Ctx> ctx = create<Ctx>(), other = create<Ctx>();
    EncryptedContentCtx *asked = nullptr;
    EXPECT_EQ(Family<Ctx>::getContent(ctx.get(), &asked), KACERT_Ok);
    EXPECT_EQ(asked, nullptr);
    ContentPtr first = plainContent();
    EncryptedContentCtx *kept = first.get();
    EXPECT_EQ(handOver(Family<Ctx>::setContent, *ctx, std::move(first)), KACERT_Ok);
    const ContentPtr second = plainContent();
    EXPECT_EQ(Family<Ctx>::setContent(ctx.get(), second.get()), KACERT_Ok);
    EXPECT_EQ(Family<Ctx>::getContent(ctx.get(), &asked), KACERT_Ok);
    EXPECT_EQ(asked, kept);
    EXPECT_EQ(Family<Ctx>::setContent(other.get(), kept), KACERT_InvalidItemErr);
}
TEST(Pkcs7Enveloped, EncryptedContentGivenTwice) {
    giveContentTwice<EnvelopedDataCtx>();
    giveContentTwice<EncryptedDataCtx>();
}

TEST(Pkcs7Enveloped, LengthsOfTheInput) {
    const EnvelopedPtr enveloped = decodedEnvelope();
    const uint8_t der[] = {0x30, 0x00};
    EXPECT_EQ(KA_PKCS7_DecodePKCS7EnvelopedData(enveloped.get(), der, 0), KAPKCS7_ContentTypeErr);
    EXPECT_EQ(held(*enveloped), "");
    EXPECT_EQ(KA_PKCS7_DecodePKCS7EnvelopedData(enveloped.get(), der, -1), KACERT_InvalidLengthErr);
    const EncryptedPtr encrypted = create<EncryptedDataCtx>();
    for (const int32_t length : {0, -1})
        EXPECT_EQ(KA_PKCS7_DecodePKCS7EncryptedData(encrypted.get(), der, length), KACERT_InvalidItemErr);
    const SignedPtr read = create<SignedDataCtx>();
    EXPECT_EQ(KA_PKCS7_DecodeSignedData(read.get(), der, -1), KACERT_InvalidLengthErr);
    EXPECT_EQ(KA_PKCS7_DecodeSignedData(read.get(), der, 0), KACERT_InvalidItemErr) << "an empty SEQUENCE was read";
    const SignedEnvelopedPtr both = create<SignedAndEnvelopedDataCtx>();
    EXPECT_EQ(KA_PKCS7_DecodeSignedAndEnvelopedData(both.get(), der, 0), KACERT_InvalidItemErr);
    EXPECT_EQ(KA_PKCS7_DecodeSignedAndEnvelopedData(both.get(), der, -1), KAPKCS7_ContentTypeErr);
    const DigestedPtr digested = create<DigestedDataCtx>();
    EXPECT_EQ(KA_PKCS7_DecodePKCS7DigestedData(digested.get(), der, -1), KACERT_InvalidLengthErr);
}

// An EncryptedContentInfo or RecipientInfo of 10,240 octets goes in, one more does not; decoding has no bound.
TEST(Pkcs7Enveloped, Bounds) {
    for (const size_t size : {10240u, 10241u}) {
        const bool isGood = size == 10240;
        const size_t around = 4 + 11 + 6 + 4; // its SEQUENCE, content type, algorithm and cipher text's header
        const Octets content(size - around, 0x41);
        const EnvelopedPtr enveloped = create<EnvelopedDataCtx>();
        KA_PKCS7_SetEnvelopedDataAttributeInt(enveloped.get(), 51, 0);
        set(*enveloped, 52, content);
        set(*enveloped, 53, DataOid);
        handOver(KA_PKCS7_SetEnvelopedData_EncryptedContent, *enveloped, plainContent());
        EXPECT_EQ(message(*enveloped) == "status 101", !isGood);
        const EncryptedPtr encrypted = create<EncryptedDataCtx>();
        KA_PKCS7_SetEncryptedDataAttributeInt(encrypted.get(), 58, 0);
        set(*encrypted, 59, DataOid);
        set(*encrypted, 60, content);
        handOver(KA_PKCS7_SetEncrytpedData_EncryptedContent, *encrypted, plainContent());
        EXPECT_EQ(message(*encrypted) == "status 101", !isGood);

        const Octets info = seq({oid("2A 86 48 86 F7 0D 01 07 01"), seq({oid("2A 04")}), tlv(0x80, content)});
        EXPECT_EQ(info.size(), size);
        const Octets der = seq({oid("2A 86 48 86 F7 0D 01 07 06"), tlv(0xA0, seq({hex("02 01 00"), info}))});
        EXPECT_EQ(decodeMessage(*encrypted, der), KACERT_Ok);
        EXPECT_EQ(encrypted->encryptedContent->encryptedContent.length, content.size());

        // The issuer's name fills the recipient up.
        RecipientPtr recipient = plainRecipient();
        set(*recipient, PKCS7_RECIPIENT_KEY, "k");
        set(*recipient, PKCS7_RECIPIENT_DN, Octets(1000));
        set(*recipient, PKCS7_RECIPIENT_DN, Octets(size + 1000 - hex(written(*recipient)).size()));
        EXPECT_EQ(hex(written(*recipient, size)).size(), size);
        handOver(KA_PKCS7_SetEnvelopedData_RecipientInfo, *enveloped, std::move(recipient));
        set(*enveloped, 52, "ab");
        set(*enveloped, 54, "k");
        EXPECT_EQ(message(*enveloped) == "status 101", !isGood);
    }
}

// The decoder's copy of the input and the recipients' of the key: status 0, and nothing done.
TEST(Pkcs7Enveloped, NoMemoryOfItsOwn) {
    const Octets der = rowsOf("Pkcs7Enveloped", "Decode")[0].octets("der");
    const EnvelopedPtr ctx = decodedEnvelope();
    failAllocation(Pool::Library, 1, false);
    EXPECT_EQ(KA_PKCS7_DecodePKCS7EnvelopedData(ctx.get(), der.data(), lengthOf(der)), KACERT_Ok);
    EXPECT_TRUE(endFailing());
    EXPECT_EQ(held(*ctx), "");
    const EnvelopedPtr made = create<EnvelopedDataCtx>();
    build(*made, rowsOf("Pkcs7Enveloped", "Encode")[0], "set");
    uint32_t length = 7;
    failAllocation(Pool::Library, 2, false);
    EXPECT_EQ(KA_PKCS7_EncodePKCS7EnvelopedData(made.get(), nullptr, &length), KACERT_Ok);
    EXPECT_TRUE(endFailing());
    EXPECT_EQ(length, 0u);
}

// Keys and plain contents are gone from the blocks that are given back.
TEST(Pkcs7Enveloped, SecretsAreWiped) {
    static int found;
    found = 0;
    onRelease([](const void *block, size_t size) {
        const auto *octets = static_cast<const char *>(block);
        for (const std::string_view secret : {"secret content", "secret key"})
            found += std::string_view(octets, size).find(secret) != std::string_view::npos ? 1 : 0;
    });
    {
        const SignedEnvelopedPtr ctx = create<SignedAndEnvelopedDataCtx>();
        KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt(ctx.get(), 44, 1);
        for (int i = 0; i < 2; ++i) {
            set(*ctx, 48, "secret content");
            set(*ctx, 49, DataOid);
            set(*ctx, 50, "secret key");
        }
        handOver(KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo, *ctx, plainRecipient());
        handOver(KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo, *ctx, plainSigner("n"));
        handOver(KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent, *ctx, plainContent());
        const Octets der = hex(message(*ctx));
        EXPECT_EQ(decodeMessage(*ctx, der), KACERT_Ok);
        const auto back = [](const uint8_t *input, uint32_t size, uint8_t *output, uint32_t *length, void *) {
            for (uint32_t i = 0; i < size; ++i)
                output[i] = static_cast<uint8_t>(input[i] - 1);
            *length = size;
            return 0;
        };
        uint8_t opened[64];
        uint32_t length = 0;
        KA_PKCS7_SetRecipientInfoKeyDecFunc(ctx->recipients, back, nullptr, 0);
        EXPECT_EQ(KA_PKCS7_DecryptDesKey(ctx->recipients, opened, &length), KACERT_Ok);
        EXPECT_EQ(toHex(opened, length), toHex(text("secret key")));
        KA_PKCS7_SetEncryptContentDecFunc(ctx->encryptedContent, back, nullptr, 0);
        EXPECT_EQ(KA_PKCS7_GetEncryptedContentInformation(ctx->encryptedContent, opened, &length), KACERT_Ok);
        EXPECT_EQ(toHex(opened, length), toHex(text("secret content")));
    }
    onRelease(nullptr);
    EXPECT_EQ(found, 0);
}

} // namespace
