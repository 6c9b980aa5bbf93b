// Keys out of passwords, and the ciphers of PKCS#12 over 1 MB.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "bench.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/rc4.h>
#include <openssl/sha.h>

namespace karil_bench {

namespace {

constexpr uint32_t Rounds = 2000;
constexpr uint32_t KeySize = 24; // two digests' worth
constexpr std::string_view Password = "a good password";
constexpr uint8_t Salt[8] = {1, 2, 3, 4, 5, 6, 7, 8};
constexpr uint8_t Rc4Oid[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x0C, 0x01, 0x01};
constexpr uint8_t Key[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
constexpr uint8_t Iv[16] = {};

Octets deriveWithKaril(uint32_t rounds, uint32_t size) {
    const Bytes password = bytesOf(Password);
    Octets key(size);
    must(KA_PKCS12_GenRandomFromPassword(KA_DIGEST_SHA1, password.data(), static_cast<uint32_t>(password.size()), Salt,
                                         sizeof Salt, KA_PKCS12_PURPOSE_KEY, rounds, key.data(), size) == KACERT_Ok,
         "karil derives");
    return key;
}

Octets deriveWithLibcrypto(uint32_t rounds, uint32_t size) {
    Octets wide;
    for (const char c : Password)
        wide.insert(wide.end(), {0, static_cast<uint8_t>(c)});
    wide.insert(wide.end(), {0, 0});
    Octets salt(Salt, Salt + sizeof Salt);
    Octets key(size);
    must(PKCS12_key_gen_uni(wide.data(), static_cast<int>(wide.size()), salt.data(), sizeof Salt, PKCS12_KEY_ID,
                            static_cast<int>(rounds), static_cast<int>(size), key.data(), EVP_sha1()) == 1,
         "libcrypto derives");
    return key;
}

// The digests alone that two blocks take.
Octets digestOnly(uint32_t rounds, uint32_t size) {
    Octets key(size);
    uint8_t digest[SHA_DIGEST_LENGTH] = {};
    for (uint32_t i = 0; i < 2 * rounds; ++i) {
        SHA_CTX state;
        SHA1_Init(&state);
        SHA1_Update(&state, digest, sizeof digest);
        SHA1_Final(digest, &state);
        benchmark::DoNotOptimize(digest);
    }
    return key;
}

void derive(benchmark::State &state, Octets (*work)(uint32_t, uint32_t)) {
    for (auto _ : state)
        benchmark::DoNotOptimize(work(Rounds, KeySize).data());
}

// Into the same octets, which have the room.
using Work = uint32_t (*)(Bytes input, uint8_t *output);

uint32_t pbeWithKaril(Bytes input, uint8_t *output) {
    const Bytes password = bytesOf(Password);
    uint32_t length = 0;
    must(KA_PKCS12_PbeWithDigestAlgoAndEncrypt(
             Rc4Oid, sizeof Rc4Oid, password.data(), static_cast<uint32_t>(password.size()), Salt, sizeof Salt, 1,
             input.data(), static_cast<uint32_t>(input.size()), output, &length) == KACERT_Ok,
         "karil enciphers");
    return length;
}

uint32_t rc4(Bytes input, uint8_t *output) {
    static const Octets key = deriveWithKaril(1, 16);
    RC4_KEY schedule;
    RC4_set_key(&schedule, 16, key.data());
    RC4(&schedule, input.size(), input.data(), output);
    return static_cast<uint32_t>(input.size());
}

template <auto Call> uint32_t aesWithKaril(Bytes input, uint8_t *output) {
    uint32_t length = 0;
    must(Call(2, Key, sizeof Key, Iv, sizeof Iv, input.data(), static_cast<uint32_t>(input.size()), output, &length) ==
             KACERT_Ok,
         "karil runs AES");
    return length;
}

template <int IsEncrypting> uint32_t aesWithLibcrypto(Bytes input, uint8_t *output) {
    const Owned<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free> ctx(EVP_CIPHER_CTX_new());
    int size = 0;
    int rest = 0;
    must(EVP_CipherInit_ex(ctx.get(), EVP_aes_128_cbc(), nullptr, Key, Iv, IsEncrypting) == 1 &&
             EVP_CipherUpdate(ctx.get(), output, &size, input.data(), static_cast<int>(input.size())) == 1 &&
             EVP_CipherFinal_ex(ctx.get(), output + size, &rest) == 1,
         "libcrypto runs AES");
    return static_cast<uint32_t>(size + rest);
}

Octets outputOf(Work work, Bytes input) {
    Octets output(input.size() + 32);
    output.resize(work(input, output.data()));
    return output;
}

void cipher(benchmark::State &state, Work work, const Octets &input) {
    Octets output(input.size() + 32);
    for (auto _ : state)
        benchmark::DoNotOptimize(work(input, output.data()));
}

void registerPair(const char *karil, Work one, const char *peer, Work other, const Octets &input) {
    must(outputOf(one, input) == outputOf(other, input), "both make the same");
    benchmark::RegisterBenchmark(karil, cipher, one, input);
    benchmark::RegisterBenchmark(peer, cipher, other, input);
}

} // namespace

void registerPkcs12Crypt() {
    must(deriveWithKaril(Rounds, KeySize) == deriveWithLibcrypto(Rounds, KeySize), "both derive the same");
    benchmark::RegisterBenchmark("derive-key/karil", derive, deriveWithKaril);
    benchmark::RegisterBenchmark("derive-key/libcrypto", derive, deriveWithLibcrypto);
    benchmark::RegisterBenchmark("derive-key/digests", derive, digestOnly);
    const Octets plain(1000000, 0x5A);
    const Octets cipherText = outputOf(aesWithLibcrypto<1>, plain);
    registerPair("pbe/karil", pbeWithKaril, "pbe/cipher", rc4, plain);
    registerPair("aes-encrypt/karil", aesWithKaril<KA_PKCS12_AESEncrypt>, "aes-encrypt/libcrypto", aesWithLibcrypto<1>,
                 plain);
    registerPair("aes-decrypt/karil", aesWithKaril<KA_PKCS12_AESDecrypt>, "aes-decrypt/libcrypto", aesWithLibcrypto<0>,
                 cipherText);
}

} // namespace karil_bench
