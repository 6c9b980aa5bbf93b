// The ciphers of PKCS#12, the table that chooses among them, and keys out of passwords.
#pragma once

#include "karil/pkcs12_crypt.h"

#include "ka_crypt.h"

struct evp_cipher_ctx_st;

namespace karil {

enum class CipherKind : uint8_t { Rc4, TripleDes, Rc2 };
enum class Direction : uint8_t { Decrypt, Encrypt };

// An algorithm of password-based encryption.
struct PbeAlgorithm {
    Bytes oid;
    int32_t digestId;
    uint32_t keySize; // octets that are derived
    CipherKind cipher;
    uint32_t leastKey;   // octets that the cipher reads at least, ...
    uint32_t longestKey; // ... and may have at most
    uint8_t keyUse;      // triple DES: where its third key begins; the others begin at 0 and 8. RC2: its effective bits
};
constexpr uint32_t LongestPbeKey = 24;
constexpr uint32_t PbeBlock = 8; // octets of a block, and of an IV

// Null for none of the twelve.
const PbeAlgorithm *pbeAlgorithm(Bytes oid);

// Such a cipher with its key, IV and position in the stream, which are wiped at the end of its scope. A block cipher
// works on whole blocks, and each call goes on where the last one ended. Input and output may be the same octets.
class PbeCipher {
public:
    PbeCipher(const PbeAlgorithm &row, Direction way) : algorithm(row), direction(way) {}
    ~PbeCipher();
    PbeCipher(const PbeCipher &) = delete;
    PbeCipher &operator=(const PbeCipher &) = delete;

    // A key or IV of a length that the cipher does not take is KACERT_InvalidParamErr. Of an IV the first 8 octets are
    // read; RC4 reads none.
    [[nodiscard]] Status setKey(Bytes key, Bytes iv);
    // Derives both.
    [[nodiscard]] Status setPassword(Bytes password, Bytes salt, uint32_t iterations);
    // Of at least 8 octets.
    void setIv(Bytes iv);
    bool isStream() const { return algorithm.cipher == CipherKind::Rc4; }
    Bytes iv() const { return vector; }

    void run(Bytes input, uint8_t *output);

private:
    const PbeAlgorithm &algorithm;
    Direction direction;
    alignas(8) uint8_t schedule[1032]; // the key schedule of whichever cipher it is
    uint8_t vector[PbeBlock] = {};
};

// AES-128 in CBC mode; key and IV have 16 octets. Whole blocks; each call goes on where the last one ended.
class AesCipher {
public:
    static constexpr uint32_t Block = 16;

    explicit AesCipher(Direction way) : direction(way) {}

    // KACERT_MemoryErr, as every failure of libcrypto here.
    [[nodiscard]] Status setKey(const uint8_t *key, const uint8_t *iv);
    [[nodiscard]] Status setIv(const uint8_t *iv);
    [[nodiscard]] Status run(Bytes input, uint8_t *output);

private:
    struct Free {
        void operator()(evp_cipher_ctx_st *state) const noexcept;
    };
    std::unique_ptr<evp_cipher_ctx_st, Free> state;
    Direction direction;
};

// Octets out of a password that is not widened yet (RFC 7292 appendix B), with blocks of 64 octets for every digest.
struct PasswordDerivation {
    int32_t digestId;
    Bytes password;
    Bytes salt;
    uint32_t iterations;
};
[[nodiscard]] Status derive(const PasswordDerivation &from, uint8_t purpose, std::span<uint8_t> output);

// HMAC (RFC 2104) with blocks of 64 octets for every digest. Returns the octets written, or 0 for an unknown digest.
uint32_t hmac(int32_t digestId, Bytes key, Bytes data, uint8_t *output);

} // namespace karil
