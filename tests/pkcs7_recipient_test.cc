#include "crypto.h"
#include "messages.h"
#include "rows.h"

#include <openssl/pkcs7.h>

using namespace karil_test;

namespace {

void setHook(RecipientInfoCtx &ctx, std::string_view kind) {
    EXPECT_EQ(TRIED(KA_PKCS7_SetRecipientInfoKeyEncFunc(&ctx, plainHook, kind.data(), 1)), KACERT_Ok);
}

// "status N", "untouched", or the key.
std::string opened(RecipientInfoCtx &ctx) {
    const Exact area(4096);
    uint32_t length = 12345;
    const int32_t status = TRIED(KA_PKCS7_DecryptDesKey(&ctx, area.data(), &length));
    if (status != KACERT_Ok)
        return "status " + std::to_string(status);
    return length == 12345 ? "untouched" : toHex(area.data(), length);
}

SWEPT_ROWS(Pkcs7Recipient, Encode) {
    const RecipientPtr ctx = create<RecipientInfoCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "set"), KACERT_Ok);
    if (!row("hook").empty())
        setHook(*ctx, row("hook"));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(written(*ctx), row.hex("want"));
}

// Common name, serial number, algorithm, key: as they are answered.
SWEPT_ROWS(Pkcs7Recipient, Decode, {KACERT_MemoryErr}, false) {
    const RecipientPtr ctx = create<RecipientInfoCtx>();
    set(*ctx, PKCS7_RECIPIENT_ISSUER_COMMONNAME, "Old");
    for (const int32_t id : {PKCS7_RECIPIENT_DN, PKCS7_RECIPIENT_SERIAL, PKCS7_RECIPIENT_KEYENCRYPTION_ALGO,
                             PKCS7_RECIPIENT_ENCRYPTED_KEY, PKCS7_RECIPIENT_KEY})
        set(*ctx, id, "Old"); // what a decoder finds there goes
    EXPECT_EQ(decodeMessage(*ctx, row.octets("der")), row.number("status"));
    std::string all;
    for (const int32_t id : {PKCS7_RECIPIENT_ISSUER_COMMONNAME, PKCS7_RECIPIENT_SERIAL,
                             PKCS7_RECIPIENT_KEYENCRYPTION_ALGO, PKCS7_RECIPIENT_ENCRYPTED_KEY, PKCS7_RECIPIENT_KEY}) {
        const std::string one = get(*ctx, id);
        all += (all.empty() ? "" : " / ") + (one.empty() ? "-" : one);
    }
    EXPECT_EQ(all, row("fields"));
    EXPECT_EQ(ctx->versionSet == 1 ? std::to_string(ctx->version) : "", row("version"));
}

TEST(Pkcs7Recipient, IdsAndTheirAnswers) {
    const RecipientPtr ctx = create<RecipientInfoCtx>();
    int32_t version = 7;
    for (const int32_t id : {23, 34, 38})
        EXPECT_EQ(set(*ctx, id, "a"), KACERT_AttributeNotSupportErr) << id;
    EXPECT_EQ(ctx->versionSet, 0);
    EXPECT_EQ(KA_PKCS7_GetRecipientInfoAttributeInt(ctx.get(), 24, &version), KACERT_AttributeNotSupportErr);
    ctx->version = 3;
    for (int32_t id = PKCS7_RECIPIENT_ISSUER_COUNTRY; id <= PKCS7_RECIPIENT_KEY; ++id) {
        if (id == 34)
            continue;
        const bool isName = id <= PKCS7_RECIPIENT_ISSUER_POSTALADDRESS;
        EXPECT_EQ(get(*ctx, id), isName ? "untouched" : "") << id;
        EXPECT_EQ(set(*ctx, id, "ab"), KACERT_Ok) << id;
        EXPECT_EQ(set(*ctx, id, "c"), KACERT_Ok) << id;
        EXPECT_EQ(get(*ctx, id), isName ? "61 62" : "63") << id; // the first of its kind, or the last that was set
    }
    EXPECT_EQ(get(*ctx, PKCS7_RECIPIENT_DN), "status 110");
    EXPECT_EQ(KA_PKCS7_GetRecipientInfoAttributeInt(ctx.get(), PKCS7_RECIPIENT_VERSION, &version), KACERT_Ok);
    EXPECT_EQ(version, 0);
    EXPECT_EQ(KA_PKCS7_SetRecipientInfoAttributeChar(ctx.get(), PKCS7_RECIPIENT_KEY, nullptr, -1),
              KACERT_InvalidLengthErr);
}

// The hook's kind, and what the encrypted key opens to.
TEST(Pkcs7Recipient, KeysAreOpenedByTheHook) {
    const std::pair<const char *, const char *> rows[] = {
        {"s", "02 03"}, {"n", ""}, {"f", "status 5"}, {"o", "status 101"}, {"l", "status 101"}};
    for (const auto &[kind, want] : rows) {
        const RecipientPtr ctx = create<RecipientInfoCtx>();
        EXPECT_EQ(opened(*ctx), "status 121");
        set(*ctx, PKCS7_RECIPIENT_ENCRYPTED_KEY, "\x01\x02");
        EXPECT_EQ(opened(*ctx), "untouched");
        EXPECT_EQ(KA_PKCS7_SetRecipientInfoKeyDecFunc(ctx.get(), plainHook, kind, 1), KACERT_Ok);
        EXPECT_EQ(opened(*ctx), want);
        EXPECT_EQ(opened(*ctx), want) << "the parameter is fresh";
        EXPECT_EQ(get(*ctx, PKCS7_RECIPIENT_KEY), *kind == 's' ? want : "");
    }
}

TEST(Pkcs7Recipient, LibcryptoOpensTheKeyAndIsOpened) {
    const KeyPair &pair = keyPair();
    const Pkey key = keyOf(pair.secret);
    const RecipientPtr ctx = create<RecipientInfoCtx>();
    set(*ctx, PKCS7_RECIPIENT_DN, commonName("Leaf"));
    set(*ctx, PKCS7_RECIPIENT_SERIAL, "\x81");
    set(*ctx, PKCS7_RECIPIENT_KEYENCRYPTION_ALGO, RsaEncryptionOid);
    set(*ctx, PKCS7_RECIPIENT_KEY, "a key of 24 octets 56789");
    EXPECT_EQ(KA_PKCS7_SetRecipientInfoKeyEncFunc(ctx.get(), KA_PublicKeyEncryptFunc_Ref, &pair.open, sizeof pair.open),
              KACERT_Ok);
    const auto theirs = parsed<d2i_PKCS7_RECIP_INFO, PKCS7_RECIP_INFO_free>(hex(written(*ctx)));
    ASSERT_NE(theirs, nullptr);
    EXPECT_EQ(ASN1_INTEGER_get(theirs->issuer_and_serial->serial), 0x81);
    EXPECT_EQ(evp(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, octetsOf(theirs->enc_key)),
              text("a key of 24 octets 56789"));

    const Octets sealed = evp(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, text("another key"));
    ASN1_OCTET_STRING_set(theirs->enc_key, sealed.data(), lengthOf(sealed));
    const RecipientPtr again = create<RecipientInfoCtx>();
    EXPECT_EQ(decodeMessage(*again, derOf(i2d_PKCS7_RECIP_INFO, theirs.get())), KACERT_Ok);
    EXPECT_EQ(get(*again, PKCS7_RECIPIENT_ISSUER_COMMONNAME), toHex(text("Leaf")));
    EXPECT_EQ(KA_PKCS7_SetRecipientInfoKeyDecFunc(again.get(), KA_PrivateKeyDecryptFunc_Ref, &pair.secret,
                                                  sizeof pair.secret),
              KACERT_Ok);
    EXPECT_EQ(opened(*again), toHex(text("another key")));
}

} // namespace
