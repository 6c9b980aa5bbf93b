// RSA, digests and the reference hooks, against libcrypto's EVP layer and the published digests.
#include "crypto.h"

using namespace karil_test;

namespace {

constexpr size_t Size = 128; // octets of the shared key's modulus

// What a hook, or an operation in a hook's shape, writes in hex; "failed" for status 126 with the length -1.
std::string run(KAHookFunc hook, const Octets &input, const void *parameter) {
    Octets output(256, 0xEE);
    uint32_t length = 12345;
    const int32_t status =
        TRIED(hook(input.data(), sizeOf(input), output.data(), &length, const_cast<void *>(parameter)));
    EXPECT_EQ(ERR_peek_error(), 0u);
    if (status == KAPKCS7_RsaOperationErr && length == 0xFFFFFFFF)
        return "failed";
    if (status != KACERT_Ok || length > output.size())
        return "status " + std::to_string(status) + ", length " + std::to_string(length);
    output.resize(length);
    return toHex(output);
}

template <int32_t Id>
int32_t sign(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *key) {
    return KA_PKCS7_SignedData(Id, input, inputLength, output, outputLength,
                               static_cast<const RsaPrivateKeyRecord *>(key));
}

int32_t verdict(int32_t id, const Octets &input, const Octets &signature, const RsaPublicKeyRecord &key) {
    int32_t result = 12345;
    EXPECT_EQ(KA_PKCS7_VerifySignature(id, input.data(), static_cast<uint32_t>(input.size()), signature.data(),
                                       static_cast<uint32_t>(signature.size()), &key, &result),
              KACERT_Ok);
    EXPECT_EQ(ERR_peek_error(), 0u);
    return result;
}

// Sets a field to a number.
void put(auto &field, const Octets &value) {
    memset(field, 0, sizeof field);
    std::copy(value.rbegin(), value.rend(), std::reverse_iterator(field + sizeof field));
}

// RFC 1319 A.5, RFC 1321 A.5, and the examples of FIPS 180.
constexpr char Md2OfAbc[] = "DA853B0D3F88D99B30283A69E6DED6BB";
constexpr char Md5OfAbc[] = "900150983CD24FB0D6963F7D28E17F72";
constexpr char Sha1OfAbc[] = "A9993E364706816ABA3E25717850C26C9CD0D89D";

// DigestInfo ::= SEQUENCE { SEQUENCE { OBJECT IDENTIFIER, NULL }, OCTET STRING }
const Octets InfoMd2 = seq({seq({oid("2A864886F70D0202"), hex("0500")}), tlv(0x04, hex(Md2OfAbc))});
const Octets InfoMd5 = seq({seq({oid("2A864886F70D0205"), hex("0500")}), tlv(0x04, hex(Md5OfAbc))});
const Octets InfoSha1 = seq({seq({oid("2B0E03021A"), hex("0500")}), tlv(0x04, hex(Sha1OfAbc))});

TEST(Crypt, DigestsOfThePublishedVectors) {
    const std::tuple<int32_t, std::string, const char *> rows[] = {
        {KA_DIGEST_MD2, "", "8350E5A3E24C153DF2275C9F80692773"},
        {KA_DIGEST_MD2, "abc", Md2OfAbc},
        {KA_DIGEST_MD2, "abcdefghijklmnopqrstuvwxyz", "4E8DDFF3650292AB5A4108C3AA47940B"},
        {KA_DIGEST_MD5, "", "D41D8CD98F00B204E9800998ECF8427E"},
        {KA_DIGEST_MD5, "abc", Md5OfAbc},
        {KA_DIGEST_SHA1, "", "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709"},
        {KA_DIGEST_SHA1, "abc", Sha1OfAbc},
        {KA_DIGEST_SHA1, std::string(1000000, 'a'), "34AA973CD4C4DAA4F61EEB2BDBAD27316534016F"},
    };
    for (const auto &[id, input, digest] : rows)
        EXPECT_EQ(run(KA_DigestFunc_Ref, text(input), &id), toHex(hex(digest))) << id;
}

// Blocks go both ways by the hooks and the operations behind them; 11 of a block's octets are no message.
TEST(Crypt, BlocksPassToAndFromLibcrypto) {
    const auto &[open, secret] = keyPair();
    const Pkey key = keyOf(secret);
    for (const size_t size : {size_t{0}, size_t{1}, Size - 11}) {
        SCOPED_TRACE(size);
        const Octets message(size);
        const Octets sealed = hex(run(KA_PublicKeyEncryptFunc_Ref, message, &open));
        EXPECT_NE(toHex(sealed), run(KA_PublicKeyEncryptFunc_Ref, message, &open)); // padded at random
        EXPECT_EQ(evp(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt, sealed), message);
        const Octets theirs = evp(key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt, message);
        EXPECT_EQ(run(KA_PrivateKeyDecryptFunc_Ref, theirs, &secret), toHex(message));
        const Octets block = hex(run(KA_PrivateKeyEncFunc_Ref, message, &secret));
        EXPECT_EQ(evp(key, EVP_PKEY_verify_recover_init, EVP_PKEY_verify_recover, block), message);
        EXPECT_EQ(run(KA_PublicKeyDecryptFunc_Ref, block, &open), toHex(message));
        EXPECT_EQ(run(KA_PublicKeyDecryptFunc_Ref, sealed, &open), "failed"); // a block of the other type
        EXPECT_EQ(run(KA_PrivateKeyDecryptFunc_Ref, block, &secret), "failed");
    }
    EXPECT_EQ(run(KA_PublicKeyEncryptFunc_Ref, Octets(Size - 10), &open), "failed");
    EXPECT_EQ(run(KA_PrivateKeyEncFunc_Ref, Octets(Size - 10), &secret), "failed");
    EXPECT_EQ(run(KA_PublicKeyDecryptFunc_Ref, Octets(Size + 1), &open), "failed");
    EXPECT_EQ(run(KA_PrivateKeyDecryptFunc_Ref, {}, &secret), "failed");
}

// A key works by its primes; without them it does not work by its exponent.
TEST(Crypt, LibcryptoVerifiesSignatures) {
    const auto &[open, secret] = keyPair();
    const Pkey key = keyOf(secret);
    RsaPrivateKeyRecord noPrimes = secret;
    for (auto *field : {&noPrimes.prime1, &noPrimes.prime2, &noPrimes.primeExponent1, &noPrimes.primeExponent2,
                        &noPrimes.coefficient})
        put(*field, {});
    RsaPrivateKeyRecord noExponent = secret;
    put(noExponent.exponent, {});
    const std::pair<KAHookFunc, Octets> rows[] = {
        {sign<KA_DIGEST_MD2>, InfoMd2}, {sign<KA_DIGEST_MD5>, InfoMd5}, {sign<KA_DIGEST_SHA1>, InfoSha1}};
    for (const auto &[hook, info] : rows)
        for (const RsaPrivateKeyRecord *record : {&secret, &std::as_const(noExponent)}) {
            const Octets signature = hex(run(hook, text("abc"), record));
            const PkeyCtx ctx(EVP_PKEY_CTX_new(key.get(), nullptr));
            EXPECT_EQ(EVP_PKEY_verify_init(ctx.get()), 1);
            EXPECT_EQ(EVP_PKEY_verify(ctx.get(), signature.data(), signature.size(), info.data(), info.size()), 1);
            ERR_clear_error();
        }
    RsaPrivateKeyRecord onePrime = secret;
    put(onePrime.prime2, {});
    for (const RsaPrivateKeyRecord *record : {&std::as_const(noPrimes), &std::as_const(onePrime)})
        EXPECT_EQ(run(sign<KA_DIGEST_SHA1>, text("abc"), record), "failed");
}

// Only the end of the opened block counts. libcrypto signs the block, so that it can hold anything.
TEST(Crypt, VerdictsOnBlocks) {
    const auto &[open, secret] = keyPair();
    const Pkey key = keyOf(secret);
    const Octets sha1 = hex(Sha1OfAbc);
    const std::tuple<const char *, int32_t, int32_t, Octets> rows[] = {
        {"MD2", KA_DIGEST_MD2, 1, InfoMd2},
        {"MD5", KA_DIGEST_MD5, 1, InfoMd5},
        {"SHA-1", KA_DIGEST_SHA1, 1, InfoSha1},
        {"MD5 taken for MD2", KA_DIGEST_MD2, 0, InfoMd5},
        {"the digest alone", KA_DIGEST_SHA1, 1, sha1},
        {"117 octets that end in it", KA_DIGEST_SHA1, 1, cat({Octets(Size - 31, 0x77), sha1})},
        {"an octet behind it", KA_DIGEST_SHA1, 0, cat({InfoSha1, hex("00")})},
        {"another first octet", KA_DIGEST_SHA1, 0, cat({hex("A8"), Octets(sha1.begin() + 1, sha1.end())})},
        {"another last octet", KA_DIGEST_SHA1, 0, cat({Octets(sha1.begin(), sha1.end() - 1), hex("9C")})},
        {"shorter than it", KA_DIGEST_SHA1, 0, Octets(sha1.begin() + 1, sha1.end())},
    };
    for (const auto &[name, id, want, block] : rows)
        EXPECT_EQ(verdict(id, text("abc"), evp(key, EVP_PKEY_sign_init, EVP_PKEY_sign, block), open), want) << name;
    const Octets good = evp(key, EVP_PKEY_sign_init, EVP_PKEY_sign, InfoSha1);
    Octets changed = good;
    changed[64] ^= 1;
    for (const Octets &bad : {Octets(), Octets(good.begin(), good.end() - 1), cat({good, hex("00")}), changed})
        EXPECT_EQ(verdict(KA_DIGEST_SHA1, text("abc"), bad, open), 0) << toHex(bad);
    EXPECT_EQ(verdict(KA_DIGEST_SHA1, text("abc"), good, generated(KA_PKCS7_GenRSAKeyPair).open), 0);
}

// Each operation on numbers that are no key fails in the one way there is or, where they have a result, gives it.
TEST(Crypt, RecordsThatAreNoKey) {
    using Key = RsaPrivateKeyRecord;
    const std::tuple<const char *, bool, void (*)(Key &)> rows[] = {
        {"modulus 0", true, [](Key &key) { put(key.modulus, {}); }},
        {"modulus 1", true, [](Key &key) { put(key.modulus, {1}); }},
        {"modulus of 10 octets", true, [](Key &key) { memset(key.modulus, 0, 246); }},
        {"even modulus", true, [](Key &key) { key.modulus[255] ^= 1; }},
        {"exponents 0", true, [](Key &key) { put(key.publicExponent, {}), put(key.exponent, {}); }},
        {"exponents 1", false, [](Key &key) { put(key.publicExponent, {1}), put(key.exponent, {1}); }},
        {"huge exponents", false,
         [](Key &key) { put(key.publicExponent, Octets(256, 0xFF)), put(key.exponent, Octets(256, 0xFF)); }},
        {"primes 1", false, [](Key &key) { put(key.prime1, {1}), put(key.prime2, {1}); }},
        {"p 0", false, [](Key &key) { put(key.prime1, {}); }},
        {"q 0", false, [](Key &key) { put(key.prime2, {}); }},
        {"CRT numbers 0", false, [](Key &key) { put(key.primeExponent1, {}), put(key.primeExponent2, {}); }},
        {"all ones", false, [](Key &key) { memset(&key, 0xFF, sizeof key); }},
    };
    for (const auto &[name, mustFail, change] : rows) {
        SCOPED_TRACE(name);
        auto [open, secret] = keyPair();
        change(secret);
        memcpy(open.modulus, secret.modulus, sizeof open.modulus);
        memcpy(open.exponent, secret.publicExponent, sizeof open.exponent);
        const std::pair<KAHookFunc, const void *> hooks[] = {{KA_PublicKeyEncryptFunc_Ref, &open},
                                                             {KA_PublicKeyDecryptFunc_Ref, &open},
                                                             {KA_PrivateKeyEncFunc_Ref, &secret},
                                                             {KA_PrivateKeyDecryptFunc_Ref, &secret},
                                                             {sign<KA_DIGEST_SHA1>, &secret}};
        for (const auto &[hook, key] : hooks)
            for (const Octets &input : {text("abc"), Octets(Size, 0x01)}) {
                const std::string result = run(hook, input, key);
                EXPECT_TRUE(mustFail ? result == "failed" : result.rfind("status", 0) != 0) << result;
            }
        EXPECT_EQ(verdict(KA_DIGEST_SHA1, text("abc"), Octets(Size, 0x01), open), 0);
    }
}

// The digest id is looked at first. A status leaves the outputs as they were.
TEST(Crypt, UnknownDigests) {
    int32_t result = 12345;
    for (const int32_t id : {-1, 0, 4, 6, 8}) {
        EXPECT_EQ(KA_PKCS7_DigestMessage(id, nullptr, 1, nullptr, nullptr), KAPKCS7_DigestAlgErr) << id;
        EXPECT_EQ(KA_PKCS7_SignedData(id, nullptr, 1, nullptr, nullptr, nullptr), KAPKCS7_DigestAlgErr) << id;
        EXPECT_EQ(KA_PKCS7_VerifySignature(id, nullptr, 1, nullptr, 1, nullptr, &result), KAPKCS7_DigestAlgErr) << id;
    }
    EXPECT_EQ(result, 12345);
}

TEST(Crypt, RandomOctetsFillJustTheLength) {
    Octets first(65, 0xEE), second(65, 0xEE);
    const uint32_t none = 0, some = 64;
    EXPECT_EQ(KA_PKCS7_GenerateBytes(first.data(), &none), KACERT_Ok);
    EXPECT_EQ(first, second);
    EXPECT_EQ(KA_PKCS7_GenerateBytes(first.data(), &some), KACERT_Ok);
    EXPECT_EQ(KA_PKCS7_GenerateBytes(second.data(), &some), KACERT_Ok);
    EXPECT_NE(first, second);
    EXPECT_EQ(first[64], 0xEE);
}

// Whatever libcrypto has not got memory for: a status, and nothing that stays.
TEST(Crypt, UnderFailingAllocations) {
    const auto &[open, secret] = keyPair();
    const auto work = [&open = open, &secret = secret] {
        const Octets message = text("message");
        const Octets signature = hex(run(sign<KA_DIGEST_SHA1>, message, &secret));
        int32_t result = 2;
        EXPECT_EQ(TRIED(KA_PKCS7_VerifySignature(KA_DIGEST_SHA1, message.data(), 7, signature.data(), sizeOf(signature),
                                                 &open, &result)),
                  KACERT_Ok);
        EXPECT_TRUE(result == 1 || isHindered()); // a failed operation is a bad signature
        const Octets sealed = hex(run(KA_PublicKeyEncryptFunc_Ref, message, &open));
        EXPECT_EQ(run(KA_PrivateKeyDecryptFunc_Ref, sealed, &secret), toHex(message));
        const Octets block = hex(run(KA_PrivateKeyEncFunc_Ref, message, &secret));
        EXPECT_EQ(run(KA_PublicKeyDecryptFunc_Ref, block, &open), toHex(message));
        OPENSSL_thread_stop(); // with no generator of the thread's own yet
        Octets drawn(32);
        const uint32_t length = 32;
        EXPECT_EQ(TRIED(KA_PKCS7_GenerateBytes(drawn.data(), &length)), KACERT_Ok);
        EXPECT_NE(drawn, Octets(32));
    };
    const Sweep how = {{KAPKCS7_SignErr, KAPKCS7_RsaOperationErr, KACERT_VerifySignatureErr}, true, Pool::Crypto};
    EXPECT_TRUE(sweep(work, how));
    // A second round leaves no more blocks than the first.
    OPENSSL_thread_stop();
    const long before = liveBlocks(Pool::Crypto);
    sweep(work, how);
    OPENSSL_thread_stop();
    EXPECT_EQ(liveBlocks(Pool::Crypto), before);
}

// How many allocations a key takes is left to chance: the steps widen up to a number that none takes.
TEST(Crypt, KeysUnderFailingAllocations) {
    // libcrypto does not recover if its very first use is one that runs out of memory.
    run(sign<KA_DIGEST_SHA1>, text("abc"), &keyPair().secret);
    KeyPair untouched;
    memset(&untouched, 0x5A, sizeof untouched);
    for (const bool forGood : {false, true}) {
        bool failed = true;
        for (long nth = 1; nth < 1000000; nth += 1 + nth / 16) {
            SCOPED_TRACE("allocation " + std::to_string(nth));
            KeyPair pair = untouched;
            failAllocation(Pool::Crypto, nth, forGood);
            const int32_t status = KA_PKCS7_GenRSAKeyPair(&pair.open, &pair.secret);
            failed = endFailing();
            EXPECT_EQ(ERR_peek_error(), 0u);
            EXPECT_TRUE(status == KACERT_Ok || (failed && status == KAPKCS7_GenKeyErr)) << status;
            if (status == KACERT_Ok)
                EXPECT_EQ(run(sign<KA_DIGEST_SHA1>, text("abc"), &pair.secret).size(), 3 * Size - 1);
            else
                EXPECT_EQ(memcmp(&pair, &untouched, sizeof pair), 0) << "the records are as they were";
        }
        EXPECT_FALSE(failed);
    }
}

} // namespace
