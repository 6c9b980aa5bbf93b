// RSA keys as blocks of numbers and as DER, against libcrypto.
#include "crypto.h"

using namespace karil_test;

namespace {

struct Form {
    int32_t (*encode)(const uint8_t *, uint8_t *, uint32_t *);
    int32_t (*decode)(uint8_t *, const uint8_t *, int32_t);
    std::vector<uint32_t> fields;
};
const Form Public = {KA_Encode_PublicKey, KA_Decode_PublicKey, {256, 256}};
const Form Private = {KA_Encode_PrivateKey, KA_Decode_PrivateKey, {256, 256, 256, 128, 128, 128, 128, 128}};

// The numbers right-aligned in the form's fields, zeros where there are fewer.
Octets block(const Form &form, const std::vector<Octets> &numbers) {
    Octets all;
    for (size_t i = 0; i < form.fields.size(); ++i) {
        const Octets number = i < numbers.size() ? numbers[i] : Octets();
        all = cat({all, Octets(form.fields[i] - number.size()), number});
    }
    return all;
}

// Asks for the length, then for just as many octets; "status N" or "untouched".
std::string encoded(const Form &form, const Octets &numbers) {
    uint32_t length = 12345;
    int32_t status = TRIED(form.encode(numbers.data(), nullptr, &length));
    if (length == 12345)
        return status == KACERT_Ok ? "untouched" : "status " + std::to_string(status);
    const Exact der(length);
    status = TRIED(form.encode(numbers.data(), der.data(), &length));
    return status == KACERT_Ok && length == der.record.length ? toHex(der.bytes()) : "the answers differ";
}

TEST(Key, LibcryptoReadsBothForms) {
    for (const KeyPair &pair : {keyPair(), generated(KA_PKCS7_GenRSAKeyPair_2048)})
        sweep([&pair] {
            Octets numbers = numbersOf(pair.secret);
            const Octets der = hex(encoded(Private, numbers));
            const Pkey key = parsed<d2i_AutoPrivateKey, EVP_PKEY_free>(der);
            const PkeyCtx check(EVP_PKEY_CTX_new(key.get(), nullptr));
            EXPECT_TRUE(isHindered() || EVP_PKEY_check(check.get()) == 1); // every number stands in its place
            EXPECT_EQ(derOf(i2d_PrivateKey, key.get()), der);
            EXPECT_EQ(pair.open.bits + pair.secret.bits, 2 * static_cast<uint32_t>(EVP_PKEY_get_bits(key.get())));
            EXPECT_EQ(toHex(pair.open.exponent, 256), toHex(cat({Octets(253), hex("01 00 01")})));
            EXPECT_EQ(encoded(Public, numbersOf(pair.open)), toHex(publicKeyOf(key)));
            std::copy(der.begin(), der.end(), numbers.begin()); // the DER may lie in the block
            EXPECT_EQ(KA_Decode_PrivateKey(numbers.data(), numbers.data(), lengthOf(der)), KACERT_Ok);
            EXPECT_EQ(numbers, numbersOf(pair.secret));
            uint32_t length = 0;
            Octets wrapped(3000, 0xEE);
            EXPECT_EQ(TRIED(KI_PKCS1to8KEY(der.data(), sizeOf(der), wrapped.data(), &length)), KACERT_Ok);
            EXPECT_EQ(Octets(wrapped.begin(), wrapped.begin() + length),
                      seq({hex("02 01 01"), oid(RsaEncryption), tlv(0x04, der)}));
        });
}

TEST(Key, EncodeNumbersThatAreZero) {
    EXPECT_EQ(encoded(Public, block(Public, {hex("80 01"), hex("01 00 01")})), "30 0A 02 03 00 80 01 02 03 01 00 01");
    EXPECT_EQ(encoded(Public, block(Public, {{}, hex("03")})), "status 100");
    EXPECT_EQ(encoded(Public, block(Public, {hex("05")})), "untouched");
    EXPECT_EQ(encoded(Public, block(Public, {})), "status 100");
    for (size_t i = 0; i < Private.fields.size(); ++i) {
        std::vector<Octets> numbers(Private.fields.size(), hex("7F"));
        numbers[i].clear();
        EXPECT_EQ(encoded(Private, block(Private, numbers)), "status 100") << i;
    }
}

TEST(Key, Decode) {
    const Octets a = hex("02 01 05"), b = hex("02 01 03"), version = hex("02 01 00"), n257 = tlv(2, Octets(257, 1));
    const Octets seven = cat({b, b, b, b, b, b, b}), n256 = tlv(2, cat({hex("00"), Octets(256, 0xFF)}));
    const std::vector<Octets> both = {hex("05"), hex("03")}, first(7, hex("03")), all(8, hex("03"));
    const std::vector<Octets> ones = {Octets(256, 0xFF), hex("03")};
    const std::tuple<const char *, const Form &, Octets, int32_t, std::vector<Octets>> rows[] = {
        {"a third number", Public, seq({a, b, a}), KACERT_Ok, both},
        {"an empty one", Public, seq({hex("02 00"), hex("02 00")}), KACERT_Ok, {}},
        {"256 octets", Public, seq({n256, b}), KACERT_Ok, ones},
        {"257 octets", Public, seq({a, n257}), KACERT_InvalidLengthErr, {hex("05")}},
        {"one number", Public, seq({a}), KACERT_InvalidParamErr, {hex("05")}},
        {"a SET", Public, set({a, b}), KACERT_InvalidTagErr, {}},
        {"an octet more", Public, cat({seq({a, b}), hex("00")}), KACERT_LengthNotEqualErr, {}},
        {"cut off inside", Public, hex("30 05 02 01 05 02 01"), KACERT_InvalidLengthErr, {}},
        {"a ninth number", Private, seq({version, seven, b, a}), KACERT_Ok, all},
        {"any version", Private, seq({seq({n257}), seven, b}), KACERT_Ok, all},
        {"seven", Private, seq({version, seven}), KACERT_InvalidPrivateKeyErr, first},
        {"nothing", Private, seq({}), KACERT_InvalidPrivateKeyErr, {}},
        {"the last of 129", Private, seq({version, seven, tlv(2, Octets(129, 1))}), KACERT_InvalidLengthErr, first},
    };
    for (const auto &[name, form, der, want, result] : rows) {
        Octets numbers(&form == &Public ? KA_PUBLIC_NUMBERS : KA_PRIVATE_NUMBERS, 0x5A);
        const Octets before = numbers;
        const Exact source(der);
        for (const int32_t bad : {0, -1})
            EXPECT_EQ(form.decode(numbers.data(), source.data(), bad), KACERT_InvalidLengthErr) << name;
        EXPECT_EQ(numbers, before) << name;
        EXPECT_EQ(form.decode(numbers.data(), source.data(), lengthOf(der)), want) << name;
        EXPECT_EQ(numbers, block(form, result)) << name;
    }
}

// What was released of a private key has none of its numbers left.
TEST(Key, KeysAreWiped) {
    const Octets prime(keyPair().secret.prime1 + 64, keyPair().secret.prime1 + 128);
    const auto work = [&] {
        encoded(Private, numbersOf(keyPair().secret));
        // The copy of a hook's parameter, when it is replaced and when its context goes.
        filled<CertEncodeCtx>(fixedSignature, prime.data(), sizeOf(prime));
        filled<CrlEncodeCtx>(fixedSignature, prime.data(), sizeOf(prime));
        filled<CsrEncodeCtx>(fixedSignature, prime.data(), sizeOf(prime));
        const CertPtr ctx = filled<CertEncodeCtx>(fixedSignature, prime.data(), sizeOf(prime));
        KACert_SetCertSignFunc(ctx.get(), fixedSignature, nullptr, 0);
    };
    EXPECT_EQ(releasedWith({prime}, 7, work), 0); // the key, and copies of a parameter
}

} // namespace
