// PFX files: what is read of them, and both ways with libcrypto.
#include "crypto.h"
#include "rows.h"

#include <openssl/pkcs12.h>

using namespace karil_test;

namespace {

using PfxPtr = std::unique_ptr<PfxCtx, By<KA_PKCS12_DestroyDecodePFX>>;
PfxPtr created() {
    PfxCtx *ctx = nullptr;
    TRIED(KA_PKCS12_CreateDecodePfx(&ctx));
    return PfxPtr(ctx);
}
int32_t decode(PfxCtx &ctx, std::string_view password, Bytes der, int32_t *verdict) {
    const Exact exact(der);
    const Bytes secret = bytesOf(password);
    return TRIED(KA_PKCS12_DecodePFX(&ctx, secret.data(), lengthOf(secret), exact.data(), lengthOf(der), verdict));
}
Octets encode(PfxCtx &ctx, std::string_view password, int32_t *status = nullptr) {
    const Bytes secret = bytesOf(password);
    return asked([&](auto... out) { return KA_PKCS12_EncodePFX(&ctx, secret.data(), lengthOf(secret), out...); },
                 status);
}

// "2A 05=05 00" for each attribute, as `get` answers it by index.
template <class Get> std::string attributes(uint32_t count, const Get &get) {
    uint8_t name[64], value[256];
    uint32_t nameLength = 12345, valueLength = 12345;
    std::string all;
    for (const int32_t none : {-1, 0, static_cast<int32_t>(count) + 1})
        EXPECT_EQ(get(name, &nameLength, value, &valueLength, none), KACERT_Ok);
    EXPECT_EQ(nameLength + valueLength, 24690u);
    for (int32_t i = 1; i <= static_cast<int32_t>(count); ++i) {
        EXPECT_EQ(get(name, &nameLength, value, &valueLength, i), KACERT_Ok);
        all += ' ' + toHex(name, nameLength) + '=' + toHex(value, valueLength);
    }
    return all;
}
std::string quoted(const Octets &octets) {
    return '"' + std::string(octets.begin(), octets.end()) + '"';
}
Octets certificate(PfxCtx &ctx, int32_t index) {
    return asked([&](auto... out) { return KA_PKCS12_GetCertificate(&ctx, out..., index); });
}
Octets key(PfxCtx &ctx) {
    return asked([&](auto... out) { return KA_PKCS12_GetPrivateKey(&ctx, out...); });
}
std::string held(PfxCtx &ctx) {
    std::string all;
    int32_t index = 0;
    for (const PfxCertificate *node = ctx.firstCertificate; node != nullptr; node = node->next) {
        all += (all.empty() ? "" : ", ") + quoted(certificate(ctx, ++index));
        all += attributes(node->attributeCount, [&](auto *n, auto *nSize, auto *v, auto *vSize, int32_t at) {
            return KA_PKCS12_GetCertificateBag_Attribute(&ctx, n, nSize, v, vSize, index, at);
        });
    }
    EXPECT_EQ(index, static_cast<int32_t>(ctx.certificateCount));
    const auto of = [&](auto get, uint32_t count, const char *words) {
        const std::string found = attributes(count, [&](auto... out) { return get(&ctx, out...); });
        return count > 0 ? words + found : found;
    };
    if (ctx.privateKey.data != nullptr)
        all += (all.empty() ? "key " : ", key ") + quoted(key(ctx));
    return all + of(KA_PKCS12_GetPrivateKey_Attribute, ctx.keyAttributeCount, ", in it") +
           of(KA_PKCS12_GetPrivateKeyBag_Attribute, ctx.bagAttributeCount, ", beside");
}

SWEPT_ROWS(Pfx, Decode, {KACERT_MemoryErr}, false) {
    const PfxPtr ctx = created();
    const Octets der = seq({hex("02 01 03"),
                            seq({oid("2A 86 48 86 F7 0D 01 07 01"), tlv(0xA0, tlv(0x04, seq({row.octets("infos")})))}),
                            row.parse("$Mac")});
    int32_t verdict = 0;
    EXPECT_EQ(decode(*ctx, "pw", der, &verdict), row.number("status"));
    EXPECT_EQ(held(*ctx), row("holds"));
}

SWEPT_ROWS(Pfx, Verdict) {
    const PfxPtr ctx = created();
    int32_t verdict = 7;
    EXPECT_EQ(decode(*ctx, "pw", row.octets("der"), &verdict), row.number("status"));
    EXPECT_EQ(verdict, row.number("verdict"));
}

constexpr std::string_view FriendlyName("\x2A\x86\x48\x86\xF7\x0D\x01\x09\x14", 9);
constexpr std::string_view Ann("\x1E\x06\0A\0n\0n", 8);

// What a PFX of libcrypto's is made of, and how it is read back.
struct Identity {
    Pkey key = keyOf(keyPair().secret);
    Octets keyDer = derOf(i2d_PrivateKey, key.get());
    Octets der;
    Ssl<X509_free> x509;

    Identity() {
        const CertPtr cert = filled<CertEncodeCtx>(signBySha1, &keyPair().secret, sizeof keyPair().secret);
        set(*cert, CERT_SUBJECTPUBLICKEYINFO, publicKeyOf(key));
        der = karil_test::encode(*cert);
        x509 = parsed<d2i_X509, X509_free>(der);
    }
};
const Identity &identity() {
    static const Identity one;
    return one;
}
using P12 = Ssl<PKCS12_free>;
P12 read(const Octets &der) {
    PKCS12 *p12 = PKCS12_init_ex(NID_pkcs7_data, legacy(), nullptr);
    const uint8_t *at = der.data();
    d2i_PKCS12(&p12, &at, static_cast<long>(der.size()));
    return P12(p12);
}

// Two certificates, one with a name, as libcrypto reads them.
TEST(Pfx, ReadByLibcrypto) {
    const PfxPtr ctx = created();
    const Bytes name = bytesOf(FriendlyName), ann = bytesOf(Ann);
    EXPECT_EQ(KA_PKCS12_SetPrivateKey(ctx.get(), identity().keyDer.data(), lengthOf(identity().keyDer)), KACERT_Ok);
    EXPECT_EQ(KA_PKCS12_SetPrivateKeyBag_Attribute(ctx.get(), name.data(), 9, ann.data(), 8), KACERT_Ok);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(KA_PKCS12_SetCertificate(ctx.get(), identity().der.data(), lengthOf(identity().der)), KACERT_Ok);
    EXPECT_EQ(KA_PKCS12_SetCertificateBag_Attribute(ctx.get(), name.data(), 9, ann.data(), 8, 1), KACERT_Ok);
    const P12 p12 = read(encode(*ctx, "secret"));
    EXPECT_EQ(PKCS12_verify_mac(p12.get(), "secret", -1), 1);
    EXPECT_EQ(PKCS12_verify_mac(p12.get(), "Secret", -1), 0);
    EVP_PKEY *key = nullptr;
    X509 *cert = nullptr;
    STACK_OF(X509) *others = nullptr;
    ASSERT_EQ(PKCS12_parse(p12.get(), "secret", &key, &cert, &others), 1);
    const Pkey ownedKey(key);
    const Ssl<X509_free> ownedCert(cert), other(sk_X509_pop(others));
    EXPECT_EQ(EVP_PKEY_eq(key, identity().key.get()), 1);
    EXPECT_STREQ(reinterpret_cast<const char *>(X509_alias_get0(cert, nullptr)), "Ann");
    EXPECT_EQ(X509_alias_get0(other.get(), nullptr), nullptr);
    for (X509 *const one : {cert, other.get()})
        EXPECT_EQ(X509_cmp(one, identity().x509.get()), 0);
    sk_X509_free(others);
    ERR_clear_error();
}

// With all six algorithms, rounds of 1 and 2,048, with and without a name. libcrypto takes a key of 16 octets for the
// MAC by MD5, so that it is no match.
TEST(Pfx, WrittenByLibcrypto) {
    for (const int algorithm :
         {NID_pbe_WithSHA1And128BitRC4, NID_pbe_WithSHA1And40BitRC4, NID_pbe_WithSHA1And3_Key_TripleDES_CBC,
          NID_pbe_WithSHA1And2_Key_TripleDES_CBC, NID_pbe_WithSHA1And128BitRC2_CBC, NID_pbe_WithSHA1And40BitRC2_CBC})
        for (const bool isFirst : {true, false}) {
            const P12 p12(PKCS12_create_ex("secret", isFirst ? "Ann" : nullptr, identity().key.get(),
                                           identity().x509.get(), nullptr, algorithm, algorithm, isFirst ? 1 : 2048, -1,
                                           0, legacy(), nullptr));
            ASSERT_NE(p12, nullptr);
            ASSERT_EQ(PKCS12_set_mac(p12.get(), "secret", -1, nullptr, 8, isFirst ? 1 : 2048,
                                     isFirst ? EVP_sha1() : EVP_md5()),
                      1);
            const Octets der = derOf(i2d_PKCS12, p12.get());
            const PfxPtr ctx = created();
            int32_t verdict = 0;
            EXPECT_EQ(decode(*ctx, "secret", der, &verdict), KACERT_Ok);
            EXPECT_EQ(verdict, isFirst ? PKCS7_VERDICT_GOOD : PKCS7_VERDICT_BAD);
            EXPECT_TRUE(key(*ctx) == identity().keyDer && certificate(*ctx, 1) == identity().der);
            EXPECT_EQ(ctx->bagAttributeCount, isFirst ? 2u : 1u); // localKeyID, and friendlyName
            EXPECT_EQ(ctx->firstCertificate->attributeCount, ctx->bagAttributeCount);
            const PfxPtr other = created();
            EXPECT_NE(decode(*other, "Secret", der, &verdict), KACERT_Ok);
            EXPECT_EQ(verdict, PKCS7_VERDICT_BAD);
        }
}

// What is set comes back; the key alone may have an attribute without value.
SWEPT_ROWS(Pfx, Encode, {KACERT_MemoryErr, KACERT_InvalidParamErr}, false) {
    const PfxPtr ctx = created();
    int32_t status = 0, verdict = 0;
    for (const auto &[name, octets] : row.settings("set")) {
        const Exact value(octets);
        const int32_t length = lengthOf(octets);
        const auto call = [&](auto set, auto... index) {
            return TRIED(set(ctx.get(), bytesOf("n").data(), 1, value.data(), length, index...));
        };
        EXPECT_EQ(status, KACERT_Ok);
        status = name == "key"      ? TRIED(KA_PKCS12_SetPrivateKey(ctx.get(), value.data(), length))
                 : name == "cert"   ? TRIED(KA_PKCS12_SetCertificate(ctx.get(), value.data(), length))
                 : name == "in"     ? call(KA_PKCS12_SetPrivateKey_Attribute)
                 : name == "beside" ? call(KA_PKCS12_SetPrivateKeyBag_Attribute)
                                    : call(KA_PKCS12_SetCertificateBag_Attribute, std::stoi(name));
    }
    Octets der;
    if (status == KACERT_Ok)
        der = encode(*ctx, "pw", &status);
    EXPECT_EQ(status, row.number("status"));
    const PfxPtr back = created();
    EXPECT_TRUE(status != KACERT_Ok || decode(*back, "pw", der, &verdict) == KACERT_Ok);
    EXPECT_EQ(held(*back), row("holds"));
}

// 10,000 certificates, a key of 16,384 bits' octets and a password of 200 octets; libcrypto agrees on the MAC. Then
// decoding adds to what is there, even the octets of the key that is held.
TEST(Pfx, Large) {
    const PfxPtr ctx = created(), back = created();
    const Octets secret(9000, 0x5A), cert(40, 0x30);
    const std::string password(200, 'p');
    EXPECT_EQ(KA_PKCS12_SetPrivateKey(ctx.get(), secret.data(), lengthOf(secret)), KACERT_Ok);
    for (int i = 0; i < 10000; ++i)
        EXPECT_EQ(KA_PKCS12_SetCertificate(ctx.get(), cert.data(), lengthOf(cert)), KACERT_Ok);
    const Octets der = encode(*ctx, password);
    EXPECT_EQ(PKCS12_verify_mac(read(der).get(), password.c_str(), -1), 1);
    int32_t verdict = 0;
    EXPECT_EQ(KA_PKCS12_SetPrivateKey(back.get(), der.data(), lengthOf(der)), KACERT_Ok);
    for (const Bytes source : {bytesOf(back->privateKey), Bytes(der)})
        EXPECT_EQ(
            KA_PKCS12_DecodePFX(back.get(), bytesOf(password).data(), 200, source.data(), lengthOf(der), &verdict),
            KACERT_Ok);
    EXPECT_TRUE(verdict == PKCS7_VERDICT_GOOD && back->certificateCount == 20000 && key(*back) == secret &&
                certificate(*back, 20000) == cert);
    EXPECT_EQ(KA_PKCS12_SetPrivateKey(back.get(), der.data(), -1), KACERT_InvalidItemErr);
    EXPECT_EQ(KA_PKCS12_SetPrivateKey_Attribute(back.get(), der.data(), 1, der.data(), -1), KACERT_InvalidItemErr);
    EXPECT_EQ(KA_PKCS12_EncodePFX(back.get(), der.data(), -1, nullptr, nullptr), KACERT_InvalidItemErr);
}

// No block that is freed holds octets of the password, as it is or widened, or of the key.
TEST(Pfx, SecretsAreWiped) {
    const PfxPtr ctx = created();
    KA_PKCS12_SetPrivateKey(ctx.get(), text("key of a zoo").data(), 12);
    KA_PKCS12_SetCertificate(ctx.get(), text("cert").data(), 4);
    const auto roundTrip = [&] {
        int32_t verdict = 0;
        const PfxPtr back = created();
        EXPECT_EQ(decode(*back, "zebra 17", encode(*ctx, "zebra 17"), &verdict), KACERT_Ok);
        EXPECT_EQ(KA_PKCS12_SetPrivateKey(back.get(), text("key two").data(), 7), KACERT_Ok);
    };
    const Octets wide = hex("00 7A 00 65 00 62 00 72"); // zebr
    EXPECT_EQ(releasedWith({text("zebra 17"), wide, text("of a zoo"), text("key two")}, 20, roundTrip), 0);
}

} // namespace
