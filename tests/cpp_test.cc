// The header for C++.
#include "karil/karil.hpp"

#include "crypto.h"

#include <openssl/sha.h>

using namespace karil_test;

namespace {

static_assert(std::is_nothrow_move_constructible_v<karil::Certificate> &&
              !std::is_copy_constructible_v<karil::Certificate>);

Octets sample() {
    return encode(*filled<CertEncodeCtx>());
}

TEST(Cpp, AnswersAreThoseOfC) {
    const Octets der = sample();
    karil::Result<karil::Certificate> cert = karil::Certificate::make();
    ASSERT_TRUE(cert);
    EXPECT_TRUE(karil::call(KACert_DecodeCert, *cert, der));
    const CertPtr other = create<CertEncodeCtx>();
    ASSERT_EQ(decode(*other, der), KACERT_Ok);
    for (const int32_t id : {CERT_SUBJECT_DN, CERT_SERIALNUMBER, CERT_SUBJECTPUBLICKEYINFO, CERT_SUBJECT_EMAIL}) {
        const karil::Result<karil::Octets> answer = karil::ask(KACert_GetCertAttributeChar, *cert, id);
        ASSERT_TRUE(answer) << id;
        EXPECT_EQ(toHex(*answer), get(*other, id)) << id;
    }
    const karil::Result<karil::Octets> refused = karil::ask(KACert_GetCertAttributeChar, *cert, 12345);
    EXPECT_FALSE(refused);
    EXPECT_STREQ(refused.status().name(), "KACERT_AttributeNotSupportErr");
    EXPECT_EQ(karil::call(KACert_DecodeCert, *cert, Octets{0x30, 0x05, 0x00}), KACERT_LengthNotEqualErr);
}

// The length 0 stands for the header's own in C; what an empty span leaves behind is not read.
TEST(Cpp, NothingIsNoObject) {
    Octets nothing = sample();
    nothing.clear();
    EXPECT_FALSE(karil::call(KACert_DecodeCert, *karil::Certificate::make(), nothing));
    EXPECT_FALSE(karil::call(KACert_DecodeCrl, *karil::RevocationList::make(), nothing));
    EXPECT_FALSE(karil::call(KA_PKCS7_DecodePKCS7Data, *karil::Data::make(), karil::Bytes()));
    EXPECT_FALSE(karil::call(KA_OCSP_DecodeRequest, *karil::OcspRequest::make(), nothing));
    EXPECT_FALSE(karil::call(KA_PKCS12_DecodeKeyBag, *karil::KeyBag::make(), nothing));
}

// An octet string, a span and an array stand for pointer and length.
TEST(Cpp, OctetsOfEveryKind) {
    karil::Result<karil::Data> data = karil::Data::make();
    ASSERT_TRUE(data);
    EXPECT_TRUE(karil::call(KA_PKCS7_SetDataContent, *data, KARIL_OID_SHA1));
    EXPECT_TRUE(karil::call(KA_PKCS7_SetDataContent, *data, karil::bytesOf("content")));
    const karil::Result<karil::Octets> content = karil::askWithRoom(100, KA_PKCS7_GetDataContent, *data);
    ASSERT_TRUE(content);
    EXPECT_EQ(karil::textOf(*content), "content");
    const karil::Result<karil::Octets> message = karil::ask(KA_PKCS7_EncodePKCS7Data, *data);
    ASSERT_TRUE(message);
    karil::Data moved(data->release());
    EXPECT_EQ(data->get(), nullptr);
    EXPECT_TRUE(karil::call(KA_PKCS7_DecodePKCS7Data, moved, *message));
}

// Contexts of one record with a destroy function each.
TEST(Cpp, HandlesOfOneRecord) {
    EXPECT_TRUE(karil::AuthSafe::make());
    EXPECT_TRUE(karil::SignedAuthSafe::make());
    karil::Result<karil::Pfx> pfx = karil::Pfx::make();
    ASSERT_TRUE(pfx);
    EXPECT_TRUE(karil::call(KA_PKCS12_SetPrivateKey, *pfx, karil::bytesOf("key")));
    const karil::Result<karil::Octets> key = karil::ask(KA_PKCS12_GetPrivateKey, *pfx);
    ASSERT_TRUE(key);
    EXPECT_EQ(karil::textOf(*key), "key");
}

TEST(Cpp, ALambdaSigns) {
    const CrlPtr list = filled<CrlEncodeCtx>();
    int calls = 0;
    auto sign = [&](karil::Bytes input, uint8_t *output, uint32_t &length) -> int32_t {
        ++calls;
        length = 20;
        return output != nullptr ? KA_PKCS7_DigestMessage(KA_DIGEST_SHA1, input.data(), sizeOf(input), output, &length)
                                 : KACERT_Ok;
    };
    const karil::Hook hook(sign);
    KACert_SetCrlSignFunc(list.get(), hook.function(), hook.parameter(), hook.size());
    const Octets der = encode(*list);
    EXPECT_EQ(calls, 2);
    const CrlPtr decoded = create<CrlEncodeCtx>();
    ASSERT_EQ(decode(*decoded, der), KACERT_Ok);
    uint8_t digest[SHA_DIGEST_LENGTH];
    SHA1(decoded->tbs.data, decoded->tbs.length, digest);
    EXPECT_EQ(toHex(bytesOf(decoded->signature)), toHex(digest));
}

} // namespace
