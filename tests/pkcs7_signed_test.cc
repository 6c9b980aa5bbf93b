// SignedData, and SignedAndEnvelopedData, which is signed in the same way.
#include "whole_messages.h"

using namespace karil_test;

namespace {

// Twice: hooks that answer alike write the same octets, and the two automatic attributes come once.
template <class Ctx> void encodeRow(const Row &row) {
    const Owner<Ctx> ctx = create<Ctx>();
    build(*ctx, row, "set");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(message(*ctx), row.hex("want"));
}

SWEPT_ROWS(Pkcs7Signed, Encode) {
    encodeRow<SignedDataCtx>(row);
}
SWEPT_ROWS(Pkcs7Signed, EncodeEnveloped) {
    encodeRow<SignedAndEnvelopedDataCtx>(row);
}

SWEPT_ROWS(Pkcs7Signed, Decode) {
    const SignedPtr ctx = create<SignedDataCtx>();
    build(*ctx, rowsOf("Pkcs7Signed", "Encode")[3], "set"); // what a decoder finds there goes
    decodeRow(row, *ctx);
}
SWEPT_ROWS(Pkcs7Signed, DecodeEnveloped) {
    const SignedEnvelopedPtr ctx = create<SignedAndEnvelopedDataCtx>();
    build(*ctx, rowsOf("Pkcs7Signed", "EncodeEnveloped")[0], "set");
    decodeRow(row, *ctx);
}

SignedPtr signedWith(std::string_view content) {
    SignedPtr ctx = create<SignedDataCtx>();
    TRIED(KA_PKCS7_SetSignedDataAttributeInt(ctx.get(), PKCS7_SIGNEDDATA_VERSION, 1));
    set(*ctx, PKCS7_SIGNEDDATA_CONTENTTYPE, DataOid);
    set(*ctx, PKCS7_SIGNEDDATA_CONTENT, content);
    return ctx;
}

// A list by its positions: each is answered, from wherever the last question was. `first`: all get the first one.
template <class Ctx> void checkPositions(Ctx &ctx, int32_t id, bool first = false) {
    for (uint8_t i = 1; i <= 50; ++i)
        EXPECT_EQ(set(ctx, id, Bytes(&i, 1)), KACERT_Ok);
    for (const int32_t position : {3, 50, 1, 49, 49, 50, 2}) {
        const auto octet = static_cast<uint8_t>(first ? 1 : position);
        EXPECT_EQ(answer(ctx, id, position), toHex(&octet, 1)) << id;
    }
    for (const int32_t position : {0, -1, 51, 1000000})
        EXPECT_EQ(answer(ctx, id, position), "untouched") << id;
}

TEST(Pkcs7Signed, Ids) {
    const SignedPtr ctx = create<SignedDataCtx>();
    for (const int32_t id : {37, 38, 44}) {
        EXPECT_EQ(set(*ctx, id, "a"), KACERT_AttributeNotSupportErr);
        EXPECT_EQ(answer(*ctx, id), "status 110");
        EXPECT_EQ(KA_PKCS7_SetSignedDataAttributeInt(ctx.get(), id, -1), id == 38 ? KACERT_Ok : 110);
    }
    int32_t number = 0;
    EXPECT_EQ(KA_PKCS7_GetSignedDataAttributeInt(ctx.get(), 38, &number), KACERT_Ok);
    EXPECT_EQ(number, -1);
    for (int32_t id = 39; id <= 43; ++id) {
        EXPECT_EQ(answer(*ctx, id), id < 42 ? "status 101" : "untouched") << id;
        EXPECT_EQ(KA_PKCS7_SetSignedDataAttributeChar(ctx.get(), id, bytesOf("a").data(), -1), KACERT_InvalidLengthErr);
        const bool needsOctets = id == 40 || id > 41;
        EXPECT_EQ(KA_PKCS7_SetSignedDataAttributeChar(ctx.get(), id, nullptr, 1), needsOctets ? 101 : 121) << id;
        uint32_t length = 7;
        EXPECT_EQ(KA_PKCS7_GetSignedDataAttributeChar(ctx.get(), id, nullptr, &length, 1), KACERT_InvalidLengthErr);
        EXPECT_EQ(length, 7u);
        EXPECT_TRUE(!needsOctets || set(*ctx, id, "") == KACERT_InvalidLengthErr) << id;
    }
    EXPECT_EQ(set(*ctx, 41, ""), KACERT_Ok);
    EXPECT_EQ(answer(*ctx, 41), "");
    EXPECT_EQ(answer(*ctx, 40), "") << "either of the two is asked for then";
    for (const int32_t id : {40, 41})
        EXPECT_EQ(set(*ctx, id, "ab"), KACERT_Ok);
    for (const int32_t id : {40, 41})
        EXPECT_EQ(answer(*ctx, id, 99), "61 62");
    for (const int32_t id : {39, 42, 43})
        checkPositions(*ctx, id, id == 43);
    uint32_t counts[3] = {};
    EXPECT_EQ(KA_PKCS7_GetSignedData_DigestAlgoNum(ctx.get(), &counts[0]), KACERT_Ok);
    EXPECT_EQ(KA_PKCS7_GetSignedData_CertificatesNum(ctx.get(), &counts[1]), KACERT_Ok);
    EXPECT_EQ(KA_PKCS7_GetSignedData_CrlsNum(ctx.get(), &counts[2]), KACERT_Ok);
    EXPECT_EQ(counts[0] * 10000 + counts[1] * 100 + counts[2], 505050u);
    EXPECT_EQ(set(*ctx, 39, ""), KACERT_Ok);
}

TEST(Pkcs7Signed, IdsOfSignedAndEnveloped) {
    const SignedEnvelopedPtr ctx = create<SignedAndEnvelopedDataCtx>();
    for (const int32_t id : {43, 44, 51}) {
        EXPECT_EQ(set(*ctx, id, "a"), KACERT_AttributeNotSupportErr);
        EXPECT_EQ(answer(*ctx, id), "status 110");
        EXPECT_EQ(KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt(ctx.get(), id, 9), id == 44 ? KACERT_Ok : 110);
    }
    int32_t number = 0;
    EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedDataAttributeInt(ctx.get(), 44, &number), KACERT_Ok);
    EXPECT_EQ(number, 9);
    for (const int32_t id : {45, 46})
        EXPECT_EQ(set(*ctx, id, ""), KACERT_InvalidLengthErr);
    for (const int32_t id : {45, 46, 47})
        checkPositions(*ctx, id);
    for (const int32_t id : {48, 49}) {
        EXPECT_EQ(answer(*ctx, id), "");
        EXPECT_EQ(set(*ctx, id, "ab"), KACERT_Ok);
        EXPECT_EQ(answer(*ctx, id), "61 62");
    }
    const Trace trace;
    answer(*ctx, 49);
    EXPECT_TRUE(trace.has("======>Get PKCS7_CONTENTTYPE"));
    EXPECT_EQ(set(*ctx, 50, "key"), KACERT_Ok);
    EXPECT_EQ(answer(*ctx, 50), "status 110");
    uint32_t counts[2] = {};
    EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedData_CertificatesNum(ctx.get(), &counts[0]), KACERT_Ok);
    EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedData_CrlsNum(ctx.get(), &counts[1]), KACERT_Ok);
    EXPECT_EQ(counts[0] * 100 + counts[1], 5050u);
}

// What the Get of a position answers: "status N", "untouched", "head" or "another".
template <class Ctx, class Part>
std::string partAt(int32_t (*get)(const Ctx *, Part **, int32_t), const Ctx &ctx, const Part *head, int32_t position) {
    Part *part = nullptr;
    const int32_t status = get(&ctx, &part, position);
    if (status != KACERT_Ok)
        return "status " + std::to_string(status);
    return part == nullptr ? "untouched" : part == head ? "head" : "another";
}

// The head for every position that there is; none for a message that was not decoded.
TEST(Pkcs7Signed, PartsByPosition) {
    const SignedPtr ctx = signedWith("ab");
    const auto get = KA_PKCS7_GetSignedData_SignerInfo;
    EXPECT_EQ(partAt(get, *ctx, ctx->signerInfos, 1), "untouched");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, plainSigner()), KACERT_Ok);
    EXPECT_EQ(partAt(get, *ctx, ctx->signerInfos, 1), "status 101");
    uint32_t count = 7;
    EXPECT_EQ(KA_PKCS7_GetSignedData_SignerInfoNum(ctx.get(), &count), KACERT_Ok);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(decodeMessage(*ctx, hex(message(*ctx))), KACERT_Ok);
    for (const int32_t position : {1, 2})
        EXPECT_EQ(partAt(get, *ctx, ctx->signerInfos, position), "head");
    for (const int32_t position : {0, -1, 3})
        EXPECT_EQ(partAt(get, *ctx, ctx->signerInfos, position), "status 101");
    EXPECT_EQ(KA_PKCS7_GetSignedData_SignerInfoNum(ctx.get(), &count), KACERT_Ok);
    EXPECT_EQ(count, 2u);
    EXPECT_NE(ctx->signerInfos->next, nullptr);

    const SignedEnvelopedPtr both = create<SignedAndEnvelopedDataCtx>();
    const auto getSigner = KA_PKCS7_GetSignedAndEnvelopedData_SignerInfo;
    const auto getRecipient = KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfo;
    EXPECT_EQ(partAt(getSigner, *both, both->signerInfos, 1), "untouched");
    EXPECT_EQ(partAt(getRecipient, *both, both->recipients, 1), "untouched");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo, *both, plainSigner()), KACERT_Ok);
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo, *both, plainRecipient()), KACERT_Ok);
    }
    EXPECT_EQ(partAt(getSigner, *both, both->signerInfos, 2), "head");
    EXPECT_EQ(partAt(getRecipient, *both, both->recipients, 2), "head");
    EXPECT_EQ(partAt(getSigner, *both, both->signerInfos, 3), "status 101");
    EXPECT_EQ(partAt(getRecipient, *both, both->recipients, 0), "status 101");
    uint32_t counts[2] = {};
    EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedData_SignerInfoNum(both.get(), &counts[0]), KACERT_Ok);
    EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfoNum(both.get(), &counts[1]), KACERT_Ok);
    EXPECT_EQ(counts[0] * 10 + counts[1], 22u);
}

// A part that a message has stays its part.
TEST(Pkcs7Signed, PartsGivenTwice) {
    const SignedPtr one = signedWith("ab"), other = signedWith("cd");
    SignerPtr signer = plainSigner();
    SignerInfoCtx *given = signer.get();
    EXPECT_EQ(handOver(KA_PKCS7_SetSignedData_SignerInfo, *one, std::move(signer)), KACERT_Ok);
    for (SignedDataCtx *ctx : {one.get(), other.get()})
        EXPECT_EQ(KA_PKCS7_SetSignedData_SignerInfo(ctx, given), KACERT_InvalidItemErr);
    EXPECT_EQ(one->signerCount * 10 + other->signerCount, 10u);
    const SignedEnvelopedPtr both = create<SignedAndEnvelopedDataCtx>();
    ContentPtr content = plainContent();
    EncryptedContentCtx *kept = content.get(), *asked = nullptr;
    EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedData_EncryptedContent(both.get(), &asked), KACERT_Ok);
    EXPECT_EQ(asked, nullptr);
    for (ContentPtr *next : {&content, &content}) {
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent, *both, std::move(*next)), KACERT_Ok);
        EXPECT_EQ(KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent(both.get(), kept), KACERT_InvalidItemErr);
        EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedData_EncryptedContent(both.get(), &asked), KACERT_Ok);
        EXPECT_EQ(asked, kept);
        content = plainContent();
        kept = content.get();
    }
}

// A content that changes between two encodings: messageDigest stays that of the first, the signature is the second's.
TEST(Pkcs7Signed, ContentChangedAfterEncoding) {
    const SignedPtr ctx = signedWith("ab");
    for (const char *attribute : {"", "\x2A\x05"}) {
        SignerPtr signer = plainSigner();
        if (*attribute != 0)
            KA_PKCS7_SetSignerAttribute(signer.get(), bytesOf(attribute).data(), 2, hex("05 00").data(), 2);
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, std::move(signer)), KACERT_Ok);
    }
    message(*ctx);
    set(*ctx, PKCS7_SIGNEDDATA_CONTENT, "other");
    EXPECT_EQ(decodeMessage(*ctx, hex(message(*ctx))), KACERT_Ok);
    EXPECT_EQ(toHex(ctx->signerInfos->encryptedDigest),
              toHex(seq({seq({oid("2A 03"), hex("05 00")}), tlv(0x04, text("other"))})));
    EXPECT_EQ(toHex(ctx->signerInfos->next->attributes->next->value), toHex(tlv(0x04, text("ab"))));
    EXPECT_EQ(ctx->signerInfos->content.data, ctx->content.data) << "the signers share the message's";
}

// A ready encoding goes out as it is.
TEST(Pkcs7Signed, ReadyEncoding) {
    const SignedPtr ctx = create<SignedDataCtx>();
    KI_SetAttributeCharValue(&ctx->encoded, bytesOf("ready").data(), 5);
    EXPECT_EQ(message(*ctx), toHex(text("ready")));
    EXPECT_EQ(decodeMessage(*ctx, hex("30 00")), KACERT_InvalidItemErr);
    EXPECT_EQ(ctx->encoded.length, 0u);
}

// A signer of 10,240 octets goes in, one more does not; alone there is no bound. The issuer's name fills it up.
TEST(Pkcs7Signed, BoundOfASigner) {
    for (const size_t size : {10240u, 10241u}) {
        const SignedPtr ctx = signedWith("ab");
        SignerPtr signer = plainSigner();
        set(*signer, PKCS7_SIGNER_DN, Octets(1000));
        set(*signer, PKCS7_SIGNER_CONTENTTYPE, DataOid);
        set(*signer, PKCS7_SIGNER_CONTENT, "ab");
        const size_t around = hex(written(*signer, 20000)).size() - 1000;
        set(*signer, PKCS7_SIGNER_DN, Octets(size - around));
        EXPECT_EQ(hex(written(*signer, 20000)).size(), size);
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, std::move(signer)), KACERT_Ok);
        EXPECT_EQ(message(*ctx) == "status 101", size == 10241);
    }
}

// The loop's own allocation fails: status 0, no octets. An inner encoder's is 100.
TEST(Pkcs7Signed, NoMemoryInTheLoop) {
    const SignedPtr ctx = signedWith("ab");
    EXPECT_EQ(handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, plainSigner()), KACERT_Ok);
    std::string all;
    for (long nth = 1;; ++nth) {
        uint32_t length = 7;
        failAllocation(Pool::Library, nth, false);
        const int32_t status = KA_PKCS7_EncodePKCS7SignedData(ctx.get(), nullptr, &length);
        if (!endFailing())
            break;
        EXPECT_EQ(length, status == KACERT_Ok ? 0u : 7u);
        all += std::to_string(status) + ' ';
    }
    EXPECT_EQ(all.substr(0, 6), "0 100 ");
    EXPECT_EQ(std::count(all.begin(), all.end(), '1'), std::count(all.begin(), all.end(), ' ') - 1) << all;
}

// Large contents are not moved about: at most the content, the message and the signer's parts exist at a time.
TEST(Pkcs7Signed, LargeContent) {
    const std::string content(3000000, 'a');
    const SignedPtr ctx = signedWith(content);
    const std::string der = message(*ctx);
    const SignedPtr read = create<SignedDataCtx>();
    EXPECT_EQ(decodeMessage(*read, hex(der)), KACERT_Ok);
    EXPECT_EQ(read->content.length, content.size());
    EXPECT_EQ(der.substr(0, 17), "30 83 2D C6 F6 06");
}

} // namespace
