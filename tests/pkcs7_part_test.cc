// What messages are made of: signers, recipients, encrypted contents.
#include "message_rows.h"

using namespace karil_test;

namespace {

template <class Use> void withPart(const std::string &part, Use use) {
    part == "signer"      ? use(*create<SignerInfoCtx>())
    : part == "recipient" ? use(*create<RecipientInfoCtx>())
                          : use(*create<EncryptedContentCtx>());
}

void setHooks(SignerInfoCtx &ctx, const std::string &kinds) {
    EXPECT_EQ(TRIED(KA_PKCS7_SetSignerInfoDigestFunc(&ctx, plainHook, kinds.data(), 1)), KACERT_Ok);
    EXPECT_EQ(TRIED(KA_PKCS7_SetSignerInfoEncSignFunc(&ctx, plainHook, kinds.data() + 1, 1)), KACERT_Ok);
}
void setHooks(RecipientInfoCtx &ctx, const std::string &kind) {
    EXPECT_EQ(TRIED(KA_PKCS7_SetRecipientInfoKeyEncFunc(&ctx, plainHook, kind.data(), 1)), KACERT_Ok);
}
void setHooks(EncryptedContentCtx &ctx, const std::string &kind) {
    EXPECT_EQ(TRIED(KA_PKCS7_SetEncryptContentEncFunc(&ctx, plainHook, kind.data(), 1)), KACERT_Ok);
}

// "OID = value" of the attribute at the position, or "untouched".
std::string attribute(SignerInfoCtx &ctx, int32_t position, bool isAuthenticated = true) {
    const auto get = isAuthenticated ? KA_PKCS7_GetSignerAttribute : KA_PKCS7_GetSignerUnAttribute;
    uint32_t lengths[2] = {777, 777}, again[2];
    EXPECT_EQ(get(&ctx, position, nullptr, &lengths[0], nullptr, &lengths[1]), KACERT_Ok);
    if (lengths[0] == 777 && lengths[1] == 777)
        return "untouched";
    const Exact id(lengths[0]), value(lengths[1]);
    EXPECT_EQ(get(&ctx, position, id.data(), &again[0], value.data(), &again[1]), KACERT_Ok);
    return toHex(id.bytes()) + " = " + toHex(value.bytes());
}
uint32_t attributeCount(const SignerInfoCtx &ctx, bool isAuthenticated = true) {
    uint32_t count = 777;
    EXPECT_EQ(
        (isAuthenticated ? KA_PKCS7_GetSignerInfoAttributesNum : KA_PKCS7_GetSignerInfoUnAttributesNum)(&ctx, &count),
        KACERT_Ok);
    return count;
}
std::string verdictOf(SignerInfoCtx *ctx) {
    int32_t verdict = 77;
    const int32_t status = TRIED(KA_PKCS7_VerifySignerSignature(ctx, &verdict));
    return std::to_string(status) + " " + std::to_string(verdict);
}

// Digests are the input, signatures the DigestInfo, so that the octets show what was signed. Twice, for the attributes
// that are added once; then the hook that signs opens.
SWEPT_ROWS(Pkcs7Part, Encode) {
    withPart(row("part"), [&]<class Ctx>(Ctx &ctx) {
        build(ctx, row, "set");
        if (!row("hooks").empty())
            setHooks(ctx, row("hooks"));
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(written(ctx), row.hex("want"));
        if constexpr (std::is_same_v<Ctx, SignerInfoCtx>) {
            EXPECT_EQ(row("want")[0] == 's' ? "0 200" : verdictOf(&ctx), "0 200");
        }
    });
}

const std::map<std::string, std::vector<int32_t>> Asked = {
    {"signer", {8, 11, 12, 13, 14}}, {"recipient", {30, 33, 35, 36, 37}}, {"content", {17, 18, 19, 20}}};
std::string others(SignerInfoCtx &ctx) {
    EXPECT_EQ(ctx.verified, 0);
    return attribute(ctx, 1) + " / " + attribute(ctx, 1, false);
}
std::string others(RecipientInfoCtx &ctx) {
    return ctx.versionSet == 1 ? std::to_string(ctx.version) : "-";
}
std::string others(EncryptedContentCtx &ctx) {
    return std::to_string(ctx.decoded);
}

SWEPT_ROWS(Pkcs7Part, Decode, {KACERT_MemoryErr}, false) {
    withPart(row("part"), [&]<class Ctx>(Ctx &ctx) {
        for (const int32_t id : {2, 8, 11, 12, 13, 15, 16, 24, 30, 33, 35, 36, 37, 17, 18, 19, 20, 21})
            set(ctx, id, "Old"); // what a decoder finds there goes
        if constexpr (std::is_same_v<Ctx, SignerInfoCtx>) {
            ctx.verified = 1;
            for (const auto add : {KA_PKCS7_SetSignerAttribute, KA_PKCS7_SetSignerUnAttribute})
                TRIED(add(&ctx, bytesOf("Old").data(), 3, bytesOf("Old").data(), 3));
        }
        const Trace trace;
        EXPECT_EQ(decodeMessage(ctx, row.octets("der")), row.number("status"));
        EXPECT_TRUE(trace.has(row("trace")) || isHindered());
        std::string all;
        for (const int32_t id : Asked.at(row("part"))) {
            const std::string one = ask(ctx, id);
            all += (one.empty() ? "-" : one) + " / ";
        }
        EXPECT_EQ(all + others(ctx), row("fields"));
    });
}

// Of a name's components the first of its kind is answered, of other fields the last that was set.
ROWS(Pkcs7Part, Ids) {
    for (const std::string &id : row.list("ids"))
        withPart(row("part"), [&](auto &ctx) {
            const int32_t number = std::stoi(id);
            EXPECT_EQ(ask(ctx, number), row("fresh")) << id;
            for (const char *value : {"ab", "c"})
                EXPECT_EQ(set(ctx, number, value), row.number("set")) << id;
            EXPECT_EQ(ask(ctx, number), row("after")) << id;
        });
}

TEST(Pkcs7Part, OddAnswers) {
    const SignerPtr signer = create<SignerInfoCtx>();
    uint32_t length = 7;
    EXPECT_EQ(KA_PKCS7_GetSignerInfoAttributeChar(nullptr, 99, nullptr, &length), KACERT_Ok);
    EXPECT_EQ(length, 7u);
    set(*signer, 1, "a");
    EXPECT_EQ(signer->versionSet, 0);
    set(*signer, 8, "a");
    EXPECT_EQ(signer->versionSet * 10 + signer->version, 11u);
    const uint8_t octet = 0;
    EXPECT_EQ(KA_PKCS7_SetSignerAttribute(signer.get(), &octet, 0, &octet, 1), KACERT_InvalidLengthErr);
    EXPECT_EQ(KA_PKCS7_SetSignerUnAttribute(signer.get(), &octet, 1, &octet, 0), KACERT_InvalidLengthErr);
    const RecipientPtr recipient = create<RecipientInfoCtx>();
    int32_t version = 7;
    EXPECT_EQ(KA_PKCS7_GetRecipientInfoAttributeInt(recipient.get(), 24, &version), KACERT_AttributeNotSupportErr);
    set(*recipient, 23, "a");
    EXPECT_EQ(recipient->versionSet, 0);
    recipient->version = 3;
    set(*recipient, 33, "a");
    EXPECT_EQ(KA_PKCS7_GetRecipientInfoAttributeInt(recipient.get(), 23, &version), KACERT_Ok);
    EXPECT_EQ(version, 0);
    EXPECT_EQ(KA_PKCS7_SetRecipientInfoAttributeChar(recipient.get(), 37, nullptr, -1), KACERT_InvalidLengthErr);
    const ContentPtr content = create<EncryptedContentCtx>();
    content->encryptedContent.length = 1; // of no octets
    EXPECT_EQ(written(*content), "status 108");
    const Trace trace;
    set(*content, 16, "a");
    EXPECT_TRUE(trace.has("------------>Attribute Not surport"));
    EXPECT_EQ(KA_PKCS7_SetEncryptedContentAttributeChar(content.get(), 17, &octet, -1), KACERT_InvalidLengthErr);
}

// Positions in any order are answered as a walk from the front would.
TEST(Pkcs7Part, AttributesByPosition) {
    const SignerPtr ctx = create<SignerInfoCtx>();
    EXPECT_EQ(attributeCount(*ctx), 0u);
    for (uint8_t i = 1; i <= 100; ++i)
        EXPECT_EQ(KA_PKCS7_SetSignerAttribute(ctx.get(), &i, 1, &i, 1), KACERT_Ok);
    for (const int32_t position : {3, 100, 1, 99, 99, 100, 2}) {
        const auto octet = static_cast<uint8_t>(position);
        EXPECT_EQ(attribute(*ctx, position), toHex(&octet, 1) + " = " + toHex(&octet, 1));
    }
    for (const int32_t position : {0, -1, 101, 1000000})
        EXPECT_EQ(attribute(*ctx, position), "untouched");
    EXPECT_EQ(attributeCount(*ctx) + attributeCount(*ctx, false), 100u);
}

// A signer of "content", and what its signature is once it is written.
SignerPtr signerOf(const char *attributes) {
    SignerPtr ctx = plainSigner();
    set(*ctx, PKCS7_SIGNER_CONTENTTYPE, DataOid);
    set(*ctx, PKCS7_SIGNER_CONTENT, "content");
    for (; *attributes != 0; ++attributes)
        KA_PKCS7_SetSignerAttribute(ctx.get(), bytesOf("\x2A\x03").data(), 2, bytesOf("\x0C\x01\x61").data(), 3);
    return ctx;
}

// What a signature opens to must be the whole DigestInfo: a part of it, nothing, or more than it is no good signature.
TEST(Pkcs7Part, OpenedBlocksOfAnotherLength) {
    const SignerPtr ctx = signerOf("");
    ASSERT_NE(written(*ctx)[0], 's');
    Anybuf &signature = ctx->encryptedDigest; // which the hook opens by copying it
    const uint32_t size = signature.length;
    for (const uint32_t length : {size, size - 1, 1u, 0u, size}) {
        signature.length = length;
        EXPECT_EQ(verdictOf(ctx.get()), length == size ? "0 200" : "0 300") << length;
    }
    KA_PKCS7_SetSignerInfoDecSignFunc(ctx.get(), plainHook, "l", 1);
    EXPECT_EQ(verdictOf(ctx.get()), "0 300");
}

TEST(Pkcs7Part, Verdicts) {
    EXPECT_EQ(verdictOf(nullptr), "0 108");
    EXPECT_EQ(KA_PKCS7_VerifySignerSignature(nullptr, nullptr), KACERT_InvalidParamErr);
    for (const char *attributes : {"", "1"}) {
        const bool hasAttributes = *attributes != 0;
        const SignerPtr ctx = create<SignerInfoCtx>();
        EXPECT_EQ(decodeMessage(*ctx, hex(written(*signerOf(attributes)))), KACERT_Ok);
        EXPECT_EQ(verdictOf(ctx.get()), "121 100");
        setHooks(*ctx, "cc");
        EXPECT_EQ(verdictOf(ctx.get()), hasAttributes ? "0 200" : "121 77");
        set(*ctx, PKCS7_SIGNER_CONTENT, "another");
        EXPECT_EQ(verdictOf(ctx.get()), hasAttributes ? "0 200" : "0 300") << "attributes don't bind the content";
        set(*ctx, PKCS7_SIGNER_CONTENT, "content");
        EXPECT_EQ(verdictOf(ctx.get()), "0 200");
        EXPECT_EQ(ctx->verified, 1);
        ++(hasAttributes ? ctx->attributes->value.data[2] : ctx->encryptedDigest.data[9]);
        EXPECT_EQ(verdictOf(ctx.get()), "0 300");
        EXPECT_EQ(ctx->verified, 0);
        for (const auto &[kinds, want] : {std::pair("cf", "5 77"), {"fc", "5 77"}, {"oc", "101 77"}}) {
            setHooks(*ctx, kinds);
            EXPECT_EQ(verdictOf(ctx.get()), want);
        }
    }
}

// A decoded signer that is encoded again gets the two attributes a second time.
TEST(Pkcs7Part, AutomaticAttributesOnceForEachLife) {
    const SignerPtr ctx = signerOf("1");
    const std::string first = written(*ctx);
    set(*ctx, PKCS7_SIGNER_CONTENT, "another");
    EXPECT_EQ(written(*ctx), first) << "the digest stays that of the first content";
    EXPECT_EQ(attributeCount(*ctx), 3u);
    EXPECT_EQ(decodeMessage(*ctx, hex(first)), KACERT_Ok);
    written(*ctx);
    EXPECT_EQ(attributeCount(*ctx), 5u);
    EXPECT_EQ(attribute(*ctx, 2).substr(0, 26), "2A 86 48 86 F7 0D 01 09 04");
    EXPECT_EQ(attribute(*ctx, 5), "2A 86 48 86 F7 0D 01 09 03 = " + toHex(oid("2A 86 48 86 F7 0D 01 07 01")));
}

template <class Ctx> std::string opened(int32_t (*open)(Ctx *, uint8_t *, uint32_t *), Ctx &ctx, size_t room = 4096) {
    return stored([&](uint8_t *result, uint32_t *length) { return open(&ctx, result, length); }, room);
}

// The hook's kind, and what the encrypted key opens to.
TEST(Pkcs7Part, KeysAreOpenedByTheHook) {
    const std::pair<const char *, const char *> rows[] = {
        {"s", "02 03"}, {"n", ""}, {"f", "status 5"}, {"o", "status 101"}, {"l", "status 101"}};
    for (const auto &[kind, want] : rows) {
        const RecipientPtr ctx = create<RecipientInfoCtx>();
        EXPECT_EQ(opened(KA_PKCS7_DecryptDesKey, *ctx), "status 121");
        set(*ctx, PKCS7_RECIPIENT_ENCRYPTED_KEY, "\x01\x02");
        EXPECT_EQ(opened(KA_PKCS7_DecryptDesKey, *ctx), "untouched");
        EXPECT_EQ(KA_PKCS7_SetRecipientInfoKeyDecFunc(ctx.get(), plainHook, kind, 1), KACERT_Ok);
        for (int i = 0; i < 2; ++i) // the parameter is fresh
            EXPECT_EQ(opened(KA_PKCS7_DecryptDesKey, *ctx), want);
        EXPECT_EQ(get(*ctx, PKCS7_RECIPIENT_KEY), *kind == 's' ? want : "");
    }
}

// The area grows with the input: a hook may add 1,024 octets to it, and up to 10,240 to a small one.
TEST(Pkcs7Part, LargeTextsGoBothWays) {
    const ContentPtr ctx = create<EncryptedContentCtx>();
    set(*ctx, PKCS7_ENCRYPT_CONTENT_TYPE, DataOid);
    set(*ctx, PKCS7_ENCRYPT_ALGO, "\x2A\x03");
    set(*ctx, PKCS7_ENCRYPT_CONTENT, Octets(300000, 0x41));
    setHooks(*ctx, "l");
    const Octets want = seq(
        {oid("2A 86 48 86 F7 0D 01 07 01"), seq({oid("2A 03")}), tlv(0x80, cat({Octets(300000, 0x41), Octets(8)}))});
    EXPECT_EQ(written(*ctx, 400000), toHex(want));
    EXPECT_EQ(decodeMessage(*ctx, want), KACERT_Ok);
    const auto open = KA_PKCS7_GetEncryptedContentInformation;
    setHooks(*ctx, "s");
    EXPECT_EQ(opened(open, *ctx, 400000), toHex(cat({Octets(300000, 0x42), Octets(8, 0x01)})));
    setHooks(*ctx, "o");
    EXPECT_EQ(opened(open, *ctx), "status 101");
    setHooks(*ctx, "f");
    EXPECT_EQ(opened(open, *ctx), "status 5");
    EXPECT_EQ(KA_PKCS7_SetEncryptContentDecFunc(ctx.get(), nullptr, nullptr, 0), KACERT_Ok);
    EXPECT_EQ(opened(open, *ctx), "status 121");
}

// What an object holds can be decoded into it: its own field is the input.
template <class Ctx> void decodeOwn(int32_t id, Anybuf Ctx::*field, std::string_view der, std::string_view want) {
    const Owner<Ctx> ctx = create<Ctx>();
    EXPECT_EQ(set(*ctx, id, hex(der)), KACERT_Ok);
    EXPECT_EQ(Family<Ctx>::decode(ctx.get(), (*ctx.*field).data, 0), KACERT_Ok);
    EXPECT_EQ(toHex(*ctx.*field), want);
}
TEST(Pkcs7Part, WhatIsHeldIsDecoded) {
    decodeOwn(PKCS7_ENCRYPT_ENCRYPTEDCONTENT, &EncryptedContentCtx::encryptedContent,
              "30 0D 06 02 2A 03 30 04 06 02 2A 04 80 01 78", "78");
    decodeOwn(PKCS7_RECIPIENT_ENCRYPTED_KEY, &RecipientInfoCtx::encryptedKey,
              "30 13 02 01 00 30 05 30 00 02 01 05 30 04 06 02 2A 03 04 01 78", "78");
    decodeOwn(PKCS7_SIGNER_SERIAL, &SignerInfoCtx::serial,
              "30 19 02 01 01 30 05 30 00 02 01 05 30 04 06 02 2A 03 30 04 06 02 2A 04 04 01 78", "05");
    decodeOwn(0, &DataCtx::content, "30 10 06 09 2A 86 48 86 F7 0D 01 07 01 A0 03 04 01 78", "78");
    decodeOwn(64, &DigestedDataCtx::content,
              "30 2B 06 09 2A 86 48 86 F7 0D 01 07 05 A0 1E 30 1C 02 01 01 30 03 06 01 2A "
              "30 10 06 09 2A 86 48 86 F7 0D 01 07 01 A0 03 04 01 78 04 00",
              "78");
}

} // namespace
