#include "crypto.h"
#include "messages.h"
#include "rows.h"
#include "whole_messages.h"

using namespace karil_test;

namespace {

void setHooks(SignerInfoCtx &ctx, std::string_view digest, std::string_view sign) {
    if (digest.empty())
        return;
    EXPECT_EQ(TRIED(KA_PKCS7_SetSignerInfoDigestFunc(&ctx, plainHook, digest.data(), 1)), KACERT_Ok);
    EXPECT_EQ(TRIED(KA_PKCS7_SetSignerInfoEncSignFunc(&ctx, plainHook, sign.data(), 1)), KACERT_Ok);
}

// "+OID=value" and "-OID=value" are attributes of either list, anything else an id with its value.
void setAll(SignerInfoCtx &ctx, const Row &row, std::string_view column) {
    for (const std::string &step : row.list(column)) {
        const size_t at = step.find('=');
        const Octets value = row.parse(step.substr(at + 1));
        if (step[0] != '+' && step[0] != '-') {
            EXPECT_EQ(set(ctx, std::stoi(step), value), KACERT_Ok) << step;
            continue;
        }
        const Octets id = row.parse(step.substr(1, at - 1));
        const auto add = step[0] == '+' ? KA_PKCS7_SetSignerAttribute : KA_PKCS7_SetSignerUnAttribute;
        EXPECT_EQ(TRIED(add(&ctx, id.data(), lengthOf(id), value.data(), lengthOf(value))), KACERT_Ok);
    }
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

std::string verdictOf(SignerInfoCtx *ctx) {
    int32_t verdict = 77;
    const int32_t status = TRIED(KA_PKCS7_VerifySignerSignature(ctx, &verdict));
    return std::to_string(status) + " " + std::to_string(verdict);
}

// The digest is the input itself and the signature the DigestInfo, so that the octets show what was signed. Twice, for
// the attributes that are added once; then the hook that signs opens.
SWEPT_ROWS(Pkcs7Signer, Encode) {
    const SignerPtr ctx = create<SignerInfoCtx>();
    setAll(*ctx, row, "set");
    const std::string hooks = row("hooks");
    setHooks(*ctx, hooks.substr(0, 1), hooks.substr(std::min<size_t>(hooks.size(), 1)));
    const Octets want = row.octets("signature");
    const std::string whole =
        want.empty() ? row("want") : toHex(seq({row.octets("want"), tlv(0x04, want), row.octets("after")}));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(written(*ctx), whole);
    EXPECT_EQ(want.empty() ? "0 200" : verdictOf(ctx.get()), "0 200");
}

SWEPT_ROWS(Pkcs7Signer, Decode, {KACERT_MemoryErr}, false) {
    const SignerPtr ctx = create<SignerInfoCtx>();
    setAll(*ctx, row, "before"); // what a decoder finds there goes
    ctx->verified = 1;
    const Trace trace;
    EXPECT_EQ(decodeMessage(*ctx, row.octets("der")), row.number("status"));
    EXPECT_TRUE(trace.has(row("trace")) || isHindered());
    std::string all;
    for (const int32_t id : {PKCS7_ISSUER_COMMONNAME, PKCS7_SIGNER_SERIAL, PKCS7_DIGEST_ALGO,
                             PKCS7_SIGNER_DIGEST_ENC_ALG, PKCS7_SIGNER_SIGNATURE}) {
        const std::string one = get(*ctx, id);
        all += (all.empty() ? "" : " / ") + (one.empty() ? "-" : one);
    }
    for (const bool isAuthenticated : {true, false})
        all += " / " + attribute(*ctx, 1, isAuthenticated);
    EXPECT_EQ(all, row("fields"));
    EXPECT_EQ(ctx->verified, 0);
}

TEST(Pkcs7Signer, IdsAndTheirAnswers) {
    const SignerPtr ctx = create<SignerInfoCtx>();
    for (const int32_t id : {1, 14, 17})
        EXPECT_EQ(set(*ctx, id, "a"), KACERT_AttributeNotSupportErr) << id;
    EXPECT_EQ(ctx->versionSet, 0);
    for (int32_t id = PKCS7_ISSUER_COUNTRY; id <= PKCS7_SIGNER_DIGEST_ENC_ALG; ++id) {
        const bool isName = id <= PKCS7_ISSUER_POSTALADDRESS;
        EXPECT_EQ(get(*ctx, id), isName ? "untouched" : "") << id;
        EXPECT_EQ(set(*ctx, id, "ab"), KACERT_Ok) << id;
        EXPECT_EQ(set(*ctx, id, "c"), KACERT_Ok) << id;
        EXPECT_EQ(get(*ctx, id), isName ? "61 62" : "63") << id; // the first of its kind, or the last that was set
    }
    for (const int32_t id : {2, 15, 16})
        EXPECT_EQ(get(*ctx, id), "status 110") << id;
    EXPECT_EQ(ctx->version, 1);
    uint32_t length = 7;
    EXPECT_EQ(KA_PKCS7_GetSignerInfoAttributeChar(nullptr, 99, nullptr, &length), KACERT_Ok);
    EXPECT_EQ(length, 7u);
    uint8_t octet = 0;
    EXPECT_EQ(KA_PKCS7_SetSignerAttribute(ctx.get(), &octet, 0, &octet, 1), KACERT_InvalidLengthErr);
    EXPECT_EQ(KA_PKCS7_SetSignerUnAttribute(ctx.get(), &octet, 1, &octet, 0), KACERT_InvalidLengthErr);
}

// Positions in any order are answered as a walk from the front would.
TEST(Pkcs7Signer, AttributesByPosition) {
    const SignerPtr ctx = create<SignerInfoCtx>();
    uint32_t count = 7;
    EXPECT_EQ(KA_PKCS7_GetSignerInfoAttributesNum(ctx.get(), &count), KACERT_Ok);
    EXPECT_EQ(count, 0u);
    for (uint8_t i = 1; i <= 100; ++i)
        EXPECT_EQ(KA_PKCS7_SetSignerAttribute(ctx.get(), &i, 1, &i, 1), KACERT_Ok);
    for (const int32_t position : {3, 100, 1, 99, 99, 100, 2}) {
        const auto octet = static_cast<uint8_t>(position);
        EXPECT_EQ(attribute(*ctx, position), toHex(&octet, 1) + " = " + toHex(&octet, 1));
    }
    for (const int32_t position : {0, -1, 101, 1000000})
        EXPECT_EQ(attribute(*ctx, position), "untouched");
    EXPECT_EQ(KA_PKCS7_GetSignerInfoAttributesNum(ctx.get(), &count), KACERT_Ok);
    EXPECT_EQ(count, 100u);
    EXPECT_EQ(KA_PKCS7_GetSignerInfoUnAttributesNum(ctx.get(), &count), KACERT_Ok);
    EXPECT_EQ(count, 0u);
}

// A signer with the reference hooks; `type` null: no authenticated attributes.
SignerPtr realSigner(std::string_view content, bool hasAttributes) {
    const KeyPair &pair = keyPair();
    constexpr int32_t Sha1 = KA_DIGEST_SHA1;
    SignerPtr ctx = create<SignerInfoCtx>();
    set(*ctx, PKCS7_SIGNER_DN, commonName("Root"));
    set(*ctx, PKCS7_SIGNER_SERIAL, "\x05");
    set(*ctx, PKCS7_DIGEST_ALGO, Sha1Oid);
    set(*ctx, PKCS7_SIGNER_DIGEST_ENC_ALG, RsaEncryptionOid);
    set(*ctx, PKCS7_SIGNER_CONTENTTYPE, DataOid);
    set(*ctx, PKCS7_SIGNER_CONTENT, content);
    const Octets id = hex("2A 03"), value = hex("0C 01 61");
    if (hasAttributes)
        KA_PKCS7_SetSignerAttribute(ctx.get(), id.data(), 2, value.data(), 3);
    KA_PKCS7_SetSignerInfoDigestFunc(ctx.get(), KA_DigestFunc_Ref, &Sha1, sizeof Sha1);
    KA_PKCS7_SetSignerInfoEncSignFunc(ctx.get(), KA_PrivateKeyEncFunc_Ref, &pair.secret, sizeof pair.secret);
    return ctx;
}
void setVerifyHooks(SignerInfoCtx &ctx) {
    constexpr int32_t Sha1 = KA_DIGEST_SHA1;
    KA_PKCS7_SetSignerInfoDigestFunc(&ctx, KA_DigestFunc_Ref, &Sha1, sizeof Sha1);
    KA_PKCS7_SetSignerInfoDecSignFunc(&ctx, KA_PublicKeyDecryptFunc_Ref, &keyPair().open, sizeof keyPair().open);
}

// What a signature opens to must be the whole DigestInfo: a part of it, nothing, or more than it is no good signature.
TEST(Pkcs7Signer, OpenedBlocksOfAnotherLength) {
    const SignerPtr ctx = plainSigner();
    set(*ctx, PKCS7_SIGNER_CONTENTTYPE, DataOid);
    set(*ctx, PKCS7_SIGNER_CONTENT, "content");
    ASSERT_NE(written(*ctx)[0], 's');
    EXPECT_EQ(verdictOf(ctx.get()), "0 200");
    Anybuf &signature = ctx->encryptedDigest; // which the hook opens by copying it
    const uint32_t size = signature.length;
    for (const uint32_t length : {size - 1, 1u, 0u}) {
        signature.length = length;
        EXPECT_EQ(verdictOf(ctx.get()), "0 300") << length;
    }
    signature.length = size;
    EXPECT_EQ(verdictOf(ctx.get()), "0 200");
    KA_PKCS7_SetSignerInfoDecSignFunc(ctx.get(), plainHook, "l", 1);
    EXPECT_EQ(verdictOf(ctx.get()), "0 300");
}

TEST(Pkcs7Signer, Verdicts) {
    EXPECT_EQ(verdictOf(nullptr), "0 108");
    EXPECT_EQ(KA_PKCS7_VerifySignerSignature(nullptr, nullptr), KACERT_InvalidParamErr);
    for (const bool hasAttributes : {false, true}) {
        const Octets der = hex(written(*realSigner("content", hasAttributes)));
        const SignerPtr ctx = create<SignerInfoCtx>();
        EXPECT_EQ(decodeMessage(*ctx, der), KACERT_Ok);
        EXPECT_EQ(verdictOf(ctx.get()), "121 100");
        setVerifyHooks(*ctx);
        EXPECT_EQ(verdictOf(ctx.get()), hasAttributes ? "0 200" : "121 77");
        set(*ctx, PKCS7_SIGNER_CONTENT, "content");
        EXPECT_EQ(verdictOf(ctx.get()), "0 200");
        EXPECT_EQ(ctx->verified, 1);
        set(*ctx, PKCS7_SIGNER_CONTENT, "another");
        EXPECT_EQ(verdictOf(ctx.get()), hasAttributes ? "0 200" : "0 300") << "attributes don't bind the content";
        set(*ctx, PKCS7_SIGNER_CONTENT, "content");
        EXPECT_EQ(verdictOf(ctx.get()), "0 200");
        if (hasAttributes) {
            ++ctx->attributes->value.data[2];
            EXPECT_EQ(verdictOf(ctx.get()), "0 300");
            EXPECT_EQ(ctx->verified, 0);
        }
        ctx->encryptedDigest.data[0] ^= 0x80;
        EXPECT_EQ(verdictOf(ctx.get()), "126 77") << "the hook fails";
        Octets changed = der;
        changed.back() ^= 1;
        EXPECT_EQ(decodeMessage(*ctx, changed), KACERT_Ok);
        EXPECT_EQ(verdictOf(ctx.get()), "126 77");
        for (const char *kind : {"f", "o"}) {
            EXPECT_EQ(KA_PKCS7_SetSignerInfoDigestFunc(ctx.get(), plainHook, kind, 1), KACERT_Ok);
            EXPECT_EQ(verdictOf(ctx.get()), *kind == 'f' ? "5 77" : "101 77");
        }
    }
}

// A decoded signer that is encoded again gets the two attributes a second time.
TEST(Pkcs7Signer, AutomaticAttributesOnceForEachLife) {
    const SignerPtr ctx = realSigner("content", true);
    const std::string first = written(*ctx);
    set(*ctx, PKCS7_SIGNER_CONTENT, "another");
    EXPECT_EQ(written(*ctx), first) << "the digest stays that of the first content";
    uint32_t count = 0;
    EXPECT_EQ(KA_PKCS7_GetSignerInfoAttributesNum(ctx.get(), &count), KACERT_Ok);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(decodeMessage(*ctx, hex(first)), KACERT_Ok);
    EXPECT_EQ(KA_PKCS7_SetSignerInfoEncSignFunc(ctx.get(), plainHook, "c", 1), KACERT_Ok);
    written(*ctx);
    EXPECT_EQ(KA_PKCS7_GetSignerInfoAttributesNum(ctx.get(), &count), KACERT_Ok);
    EXPECT_EQ(count, 5u);
    EXPECT_EQ(attribute(*ctx, 2).substr(0, 26), "2A 86 48 86 F7 0D 01 09 04");
    EXPECT_EQ(attribute(*ctx, 5), "2A 86 48 86 F7 0D 01 09 03 = " + toHex(oid("2A 86 48 86 F7 0D 01 07 01")));
}

} // namespace
