// RSA keys as blocks of numbers and as DER, against libcrypto.
#include "der.h"
#include "pkey.h"

#include "karil/key.h"

#include <gtest/gtest.h>

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
    int32_t status = form.encode(numbers.data(), nullptr, &length);
    if (length == 12345) return status == KACERT_Ok ? "untouched" : "status " + std::to_string(status);
    Octets der(length);
    status = form.encode(numbers.data(), der.data(), &length);
    return status == KACERT_Ok && length == der.size() ? toHex(der) : "the answers differ";
}

TEST(Key, LibcryptoReadsBothForms) {
    for (const auto generate : {KA_PKCS7_GenRSAKeyPair, KA_PKCS7_GenRSAKeyPair_2048}) {
        RsaPublicKeyRecord open;
        RsaPrivateKeyRecord secret;
        ASSERT_EQ(generate(&open, &secret), KACERT_Ok);
        Octets numbers(secret.modulus, secret.modulus + KA_PRIVATE_NUMBERS);
        const Octets der = hex(encoded(Private, numbers));
        const uint8_t *at = der.data();
        const Pkey key(d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &at, static_cast<long>(der.size())));
        const PkeyCtx check(EVP_PKEY_CTX_new(key.get(), nullptr));
        EXPECT_EQ(EVP_PKEY_check(check.get()), 1); // every number stands in its place
        EXPECT_EQ(derOf(i2d_PrivateKey, key.get()), der);
        EXPECT_EQ(encoded(Public, {open.modulus, open.modulus + KA_PUBLIC_NUMBERS}),
                  toHex(derOf(i2d_PublicKey, key.get())));
        std::copy(der.begin(), der.end(), numbers.begin()); // the DER may lie in the block
        EXPECT_EQ(KA_Decode_PrivateKey(numbers.data(), numbers.data(), static_cast<int32_t>(der.size())), KACERT_Ok);
        EXPECT_EQ(numbers, Octets(secret.modulus, secret.modulus + KA_PRIVATE_NUMBERS));
    }
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
    const Octets seven = cat({b, b, b, b, b, b, b});
    const std::vector<Octets> both = {hex("05"), hex("03")}, first(7, hex("03")), all(8, hex("03"));
    const std::tuple<const char *, const Form &, Octets, int32_t, std::vector<Octets>> rows[] = {
        {"a third number", Public, seq({a, b, a}), KACERT_Ok, both},
        {"an empty one", Public, seq({hex("02 00"), hex("02 00")}), KACERT_Ok, {}},
        {"256 octets",
         Public,
         seq({tlv(2, cat({hex("00"), Octets(256, 0xFF)})), b}),
         KACERT_Ok,
         {Octets(256, 0xFF), hex("03")}},
        {"257 octets", Public, seq({a, n257}), KACERT_InvalidLengthErr, {hex("05")}},
        {"one number", Public, seq({a}), KACERT_InvalidParamErr, {hex("05")}},
        {"a SET", Public, set({a, b}), KACERT_InvalidTagErr, {}},
        {"an octet behind", Public, cat({seq({a, b}), hex("00")}), KACERT_LengthNotEqualErr, {}},
        {"cut off inside", Public, hex("30 05 02 01 05 02 01"), KACERT_InvalidLengthErr, {}},
        {"a ninth number", Private, seq({version, seven, b, a}), KACERT_Ok, all},
        {"any version", Private, seq({seq({n257}), seven, b}), KACERT_Ok, all},
        {"seven", Private, seq({version, seven}), KACERT_InvalidPrivateKeyErr, first},
        {"nothing", Private, seq({}), KACERT_InvalidPrivateKeyErr, {}},
        {"the last of 129", Private, seq({version, seven, tlv(2, Octets(129, 1))}), KACERT_InvalidLengthErr, first},
    };
    for (const auto &[name, form, der, want, result] : rows) {
        Octets numbers(&form == &Public ? KA_PUBLIC_NUMBERS : KA_PRIVATE_NUMBERS, 0x5A);
        const Exact source(der);
        EXPECT_EQ(form.decode(numbers.data(), source.record.data, static_cast<int32_t>(der.size())), want) << name;
        EXPECT_EQ(numbers, block(form, result)) << name;
    }
}

TEST(Key, WrapperAndBadArguments) {
    Octets numbers(KA_PRIVATE_NUMBERS, 0x5A), out(300, 0x5A);
    const Octets key(numbers.begin(), numbers.begin() + 200);
    const Octets wrapped = seq({hex("02 01 01"), oid("2A 86 48 86 F7 0D 01 01 01"), tlv(0x04, key)});
    uint32_t length = 0;
    EXPECT_EQ(KI_PKCS1to8KEY(key.data(), 200, out.data(), &length), KACERT_Ok);
    EXPECT_EQ(toHex(out.data(), length), toHex(wrapped));
    Trace trace;
    for (const Form *form : {&Public, &Private}) {
        EXPECT_EQ(form->encode(nullptr, out.data(), &length), KACERT_MemoryErr);
        EXPECT_EQ(form->encode(numbers.data(), out.data(), nullptr), KACERT_MemoryErr);
        EXPECT_EQ(form->decode(nullptr, out.data(), 0), KACERT_MemoryErr);
        EXPECT_EQ(form->decode(numbers.data(), nullptr, 1), KACERT_MemoryErr);
        for (const int32_t bad : {0, -1})
            EXPECT_EQ(form->decode(numbers.data(), out.data(), bad), KACERT_InvalidLengthErr);
    }
    EXPECT_EQ(KI_PKCS1to8KEY(nullptr, 1, out.data(), &length), KACERT_MemoryErr);
    EXPECT_EQ(KI_PKCS1to8KEY(out.data(), 1, nullptr, &length), KACERT_MemoryErr);
    EXPECT_EQ(trace.lines(), std::vector<std::string>(10, "------>Pointer is NULL"));
    EXPECT_EQ(numbers, Octets(KA_PRIVATE_NUMBERS, 0x5A));
}

} // namespace
