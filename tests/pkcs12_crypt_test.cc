// Keys out of passwords, HMAC, and the ciphers, against published values and libcrypto.
#include "crypto.h"
#include "rows.h"

#include <openssl/pkcs12.h>

using namespace karil_test;

namespace {

// What a call writes over `before`, in hex; or its status, with which nothing is written.
template <class Call> std::string runOn(const Octets &before, const Call &call) {
    const Exact area(before);
    uint32_t length = 12345;
    const int32_t status = TRIED(call(area.data(), &length));
    EXPECT_EQ(ERR_peek_error(), 0u);
    if (status == KACERT_Ok && length <= before.size())
        return toHex(area.data(), length);
    EXPECT_EQ(toHex(area.bytes()), toHex(before));
    EXPECT_EQ(length, 12345u);
    return "status " + std::to_string(status);
}
template <class Call> std::string run(size_t room, const Call &call) {
    return runOn(Octets(room, 0xEE), call);
}

// In place.
using Cipher = decltype(&KA_PKCS12_DESEncrypt);
std::string runKey(Cipher cipher, Bytes oid, const Octets &key, const Octets &iv, const Octets &input) {
    return runOn(cat({input, Octets(8)}), [&](uint8_t *area, uint32_t *length) {
        return cipher(oid.data(), sizeOf(oid), key.data(), sizeOf(key), iv.data(), sizeOf(iv), area, sizeOf(input),
                      area, length);
    });
}
struct Password {
    Octets octets, salt;
    uint32_t iterations;
};
std::string runPassword(KAHookFunc hook, Bytes oid, const Password &from, const Octets &input, size_t room) {
    PbeHookParam parameter = {oid.data(),       sizeOf(oid),       from.octets.data(), sizeOf(from.octets),
                              from.salt.data(), sizeOf(from.salt), from.iterations};
    return run(room, [&](auto... out) { return hook(input.data(), sizeOf(input), out..., &parameter); });
}
std::string derive(int32_t digest, const Password &from, uint8_t purpose, uint32_t size) {
    return run(size, [&](uint8_t *output, uint32_t *length) {
        const int32_t status =
            KA_PKCS12_GenRandomFromPassword(digest, from.octets.data(), sizeOf(from.octets), from.salt.data(),
                                            sizeOf(from.salt), purpose, from.iterations, output, size);
        *length = status == KACERT_Ok ? size : 12345;
        return status;
    });
}

SWEPT_ROWS(Pkcs12Crypt, Derive) {
    const Password from = {row.octets("password"), row.octets("salt"), row.number<uint32_t>("iterations")};
    const std::string want = row.hex("want");
    EXPECT_EQ(derive(row.number("digest"), from, row.number<uint8_t>("purpose"), sizeOf(hex(want))), want);
}

ROWS(Pkcs12Crypt, Hmac) {
    const Octets key = row.octets("key");
    const Octets data = row.octets("data");
    HmacHookParam parameter = {row.number("digest"), key.data(), sizeOf(key)};
    EXPECT_EQ(run(20, [&](auto... out) { return KA_HMACFunc_Ref(data.data(), sizeOf(data), out..., &parameter); }),
              row.hex("want"));
}

ROWS(Pkcs12Crypt, Ciphers) {
    const Octets oid = row.octets("oid"), key = row.octets("key"), iv = row.octets("iv"), input = row.octets("input");
    const std::string &call = row("call"), want = row.hex("want");
    std::string answer = runKey(call == "decrypt" ? KA_PKCS12_DESDecrypt : KA_PKCS12_DESEncrypt, oid, key, iv, input);
    if (call == "published") {
        EXPECT_EQ(runKey(KA_PKCS12_DESDecrypt, oid, key, iv, hex(answer)), toHex(input));
        answer.resize(want.size());
    }
    EXPECT_EQ(answer, want);
}

ROWS(Pkcs12Crypt, Pad) {
    const auto call = row("call") == "add" ? KA_PKCS12_AddPad : KA_PKCS12_DecPad;
    const Octets input = row.octets("input");
    EXPECT_EQ(run(input.size() + 8, [&](auto... out) { return call(input.data(), sizeOf(input), out...); }),
              row.hex("want"));
}

std::string evpEncrypt(const char *name, int bits, const Octets &key, const Octets &iv, const Octets &input) {
    const Ssl<EVP_CIPHER_free> cipher(EVP_CIPHER_fetch(legacy(), name, nullptr));
    const Ssl<EVP_CIPHER_CTX_free> ctx(EVP_CIPHER_CTX_new());
    Octets output(input.size() + 32);
    int size = 0;
    int rest = 0;
    EXPECT_EQ(EVP_EncryptInit_ex2(ctx.get(), cipher.get(), nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(EVP_CIPHER_CTX_set_key_length(ctx.get(), static_cast<int>(key.size())), 1);
    EXPECT_TRUE(bits == 0 || EVP_CIPHER_CTX_ctrl(ctx.get(), EVP_CTRL_SET_RC2_KEY_BITS, bits, nullptr) == 1);
    EXPECT_EQ(EVP_EncryptInit_ex2(ctx.get(), nullptr, key.data(), iv.data(), nullptr), 1);
    EXPECT_EQ(EVP_EncryptUpdate(ctx.get(), output.data(), &size, input.data(), static_cast<int>(input.size())), 1);
    EXPECT_EQ(EVP_EncryptFinal_ex(ctx.get(), output.data() + size, &rest), 1);
    return toHex(output.data(), static_cast<size_t>(size + rest));
}

Octets counted(size_t size) {
    Octets octets(size);
    for (size_t i = 0; i < size; ++i)
        octets[i] = static_cast<uint8_t>(i * 7 + 3);
    return octets;
}
const size_t sizes[] = {1, 7, 8, 9, 15, 16, 17, 1000, 20000};

// Passwords and salts that end before, at and after a block; carries all the way through a block occur in these.
TEST(Pkcs12Crypt, DerivesAsLibcrypto) {
    for (const auto &[digest, md] : {std::pair(KA_DIGEST_MD5, EVP_md5()), std::pair(KA_DIGEST_SHA1, EVP_sha1())})
        for (const size_t size : std::initializer_list<size_t>{0, 1, 30, 31, 32, 63, 64, 1000}) {
            const Password from = {counted(size), counted(2 * size + 1), 1 + static_cast<uint32_t>(size % 5)};
            const Octets wide = hex(run(2 * size + 2, [&](auto... out) {
                return KA_PKCS12_ACIItoUNI(from.octets.data(), sizeOf(from.octets), out...);
            }));
            Octets password = wide;
            Octets salt = from.salt;
            Octets want(300);
            EXPECT_EQ(PKCS12_key_gen_uni(password.data(), static_cast<int>(password.size()), salt.data(),
                                         static_cast<int>(salt.size()), 2, static_cast<int>(from.iterations), 300,
                                         want.data(), md),
                      1);
            EXPECT_EQ(derive(digest, from, 2, 300), toHex(want)) << size;
        }
}

TEST(Pkcs12Crypt, CiphersAsLibcrypto) {
    const std::tuple<const char *, int32_t, uint32_t, const char *, uint32_t, int> rows[] = {
        {"2A864886F70D010C0101", KA_DIGEST_SHA1, 16, "RC4", 16, 0},
        {"2A864886F70D010C0102", KA_DIGEST_SHA1, 5, "RC4", 5, 0},
        {"2A864886F70D010C0103", KA_DIGEST_SHA1, 24, "DES-EDE3-CBC", 24, 0},
        {"2A864886F70D010C0104", KA_DIGEST_SHA1, 16, "DES-EDE-CBC", 16, 0},
        {"2A864886F70D010C0105", KA_DIGEST_SHA1, 16, "RC2-CBC", 16, 128},
        {"2A864886F70D010C0106", KA_DIGEST_SHA1, 5, "RC2-CBC", 5, 40},
        {"2A864886F70D010501", KA_DIGEST_MD2, 24, "DES-EDE-CBC", 16, 0},
        {"2A864886F70D010504", KA_DIGEST_MD2, 16, "RC2-CBC", 16, 40},
        {"2A864886F70D010503", KA_DIGEST_MD5, 24, "DES-EDE-CBC", 16, 0},
        {"2A864886F70D010506", KA_DIGEST_MD5, 16, "RC2-CBC", 16, 40},
        {"2A864886F70D01050A", KA_DIGEST_SHA1, 24, "DES-EDE-CBC", 16, 0},
        {"2A864886F70D01050B", KA_DIGEST_SHA1, 16, "RC2-CBC", 16, 40},
    };
    const Password from = {text("a password"), hex("0102030405060708"), 3};
    for (const auto &[id, digest, keySize, name, used, bits] : rows)
        for (const size_t size : sizes) {
            SCOPED_TRACE(std::string(id) + ", " + std::to_string(size));
            const Octets oid = hex(id), plain = counted(size), iv = hex(derive(digest, from, 2, 8));
            const Octets key = hex(derive(digest, from, 1, keySize));
            const std::string want = evpEncrypt(name, bits, {key.data(), key.data() + used}, iv, plain);
            EXPECT_EQ(runPassword(KA_EncryptFunc_Ref, oid, from, plain, size + 8), want);
            EXPECT_EQ(runPassword(KA_DecryptFunc_Ref, oid, from, hex(want), size), toHex(plain));
            EXPECT_EQ(runKey(KA_PKCS12_DESEncrypt, oid, key, iv, plain), want);
            EXPECT_EQ(runKey(KA_PKCS12_DESDecrypt, oid, key, iv, hex(want)), toHex(plain));
        }
}

// In place.
std::string runAes(bool isToEncrypt, int32_t mode, const Octets &key, const Octets &iv, const Octets &input) {
    const auto call = isToEncrypt ? KA_PKCS12_AESEncrypt : KA_PKCS12_AESDecrypt;
    return runOn(cat({input, Octets(16)}), [&](uint8_t *area, uint32_t *length) {
        return call(mode, key.data(), sizeOf(key), iv.data(), sizeOf(iv), area, sizeOf(input), area, length);
    });
}

// NIST SP 800-38A F.2.1, and libcrypto; the padding becomes zeros in the plain text's place.
TEST(Pkcs12Crypt, AesAsLibcrypto) {
    const Octets key = hex("2B7E151628AED2A6ABF7158809CF4F3C"), iv = hex("000102030405060708090A0B0C0D0E0F");
    const std::string published =
        runAes(true, 2, key, iv, hex("6BC1BEE22E409F96E93D7E117393172AAE2D8A571E03AC9C9EB76FAC45AF8E51"));
    EXPECT_EQ(published.substr(0, 95), toHex(hex("7649ABAC8119B246CEE98E9B12E9197D5086CB9B507219EE95DB113A917678B2")));
    for (const size_t size : sizes) {
        const Octets plain = counted(size), cipher = hex(evpEncrypt("AES-128-CBC", 0, key, iv, plain));
        const auto bothWays = [&] {
            EXPECT_EQ(runAes(true, 2, key, iv, plain), toHex(cipher)) << size;
            Octets area = cipher;
            uint32_t length = 0;
            EXPECT_EQ(TRIED(KA_PKCS12_AESDecrypt(2, key.data(), 16, iv.data(), 16, area.data(), sizeOf(cipher),
                                                 area.data(), &length)),
                      KACERT_Ok);
            EXPECT_EQ(length, size);
            EXPECT_EQ(toHex(area), toHex(cat({plain, Octets(cipher.size() - size)})));
        };
        EXPECT_TRUE(sweep(bothWays, {.pool = Pool::Crypto}));
    }
}

ROWS(Pkcs12Crypt, Aes) {
    const Octets key = row.octets("key"), iv = row.octets("iv");
    Octets input = row.octets("input");
    if (row("call") == "last") {
        input = hex(evpEncrypt("AES-128-CBC", 0, key, iv, cat({Octets(15, 0xAA), input})));
        input.resize(16);
    }
    const Trace trace;
    EXPECT_EQ(runAes(row("call") == "encrypt", row.number("mode"), key, iv, input), row.hex("want"));
    EXPECT_TRUE(trace.has(row("words")));
}

TEST(Pkcs12Crypt, HooksRefuse) {
    uint8_t area[200] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01, 0x01};
    uint32_t length = 12345;
    for (const auto hook : {KA_EncryptFunc_Ref, KA_DecryptFunc_Ref})
        for (int null = 0; null < 6; ++null) {
            const auto given = [&](int at) { return at == null ? nullptr : area; };
            PbeHookParam parameter = {given(0), 10, given(1), 8, given(2), 8, 1};
            EXPECT_EQ(hook(given(3), 8, given(4), null == 5 ? nullptr : &length, &parameter), KACERT_InvalidParamErr);
        }
    HmacHookParam parameter = {KA_DIGEST_SHA1, area, 125};
    EXPECT_EQ(KA_HMACFunc_Ref(area, 1, area, &length, &parameter), KACERT_InvalidParamErr);
    EXPECT_EQ(length, 12345u);
    parameter.keyLen = 124;
    EXPECT_EQ(KA_HMACFunc_Ref(area, 1, area, &length, &parameter), KACERT_Ok);
    parameter = {KA_DIGEST_SHA1, nullptr, 10}; // 64 zeros, whatever the length
    const std::string want = toHex(hex("9B4A918F398D74D3E367970ABA3CBE54E4D2B5D9"));
    EXPECT_EQ(run(20, [&](auto... out) { return KA_HMACFunc_Ref(text("abc").data(), 3, out..., &parameter); }), want);
}

// RC4 reads no IV, and a password that is too long to be widened, or to be repeated up to a block, is not read.
TEST(Pkcs12Crypt, WhatIsNotRead) {
    uint8_t area[24] = {};
    uint32_t length = 0;
    for (const auto &[name, status] :
         {std::pair("2A864886F70D010C0101", KACERT_Ok), std::pair("2A864886F70D010C0105", KACERT_InvalidParamErr)})
        EXPECT_EQ(KA_PKCS12_DESEncrypt(hex(name).data(), 10, area, 16, nullptr, 8, area, 8, area, &length), status);
    for (const auto &[size, status] :
         {std::pair(0x7FFFFFFFu, KAPKCS7_RsaOperationErr), std::pair(0x7FFFFFFEu, KACERT_MemoryErr)})
        EXPECT_EQ(KA_PKCS12_GenRandomFromPassword(KA_DIGEST_SHA1, area, size, nullptr, 0, 1, 1, area, 8), status);
}

} // namespace
