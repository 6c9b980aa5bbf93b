// The ciphers of password-based encryption, and the table that chooses them.
#pragma once

#include "karil/pkcs12_crypt.h"

#include "ka_crypt.h"

namespace karil {

enum class CipherKind : uint8_t { Rc4, TripleDes, Rc2 };

struct PbeAlgorithm {
    Bytes oid;
    int32_t digestId;
    uint32_t keySize; // octets that are derived
    CipherKind cipher;
    // Triple DES: where its third key begins in the octets; the first and second begin at 0 and 8.
    // RC2: its effective bits.
    uint8_t keyUse;
};
constexpr uint32_t LongestPbeKey = 24;
constexpr uint32_t PbeBlock = 8; // octets of a block, and of an IV

// Null for none of the twelve.
const PbeAlgorithm *pbeAlgorithm(Bytes oid);

// A cipher with its key, its IV and its position in the stream, all wiped at the end of its scope. A block cipher works
// on whole blocks, and the next call goes on where the last one ended. Input and output may be the same octets.
class PbeCipher {
public:
    enum class Direction : uint8_t { Encrypt, Decrypt };

    PbeCipher(const PbeAlgorithm &row, Direction way) : algorithm(row), direction(way) {}
    ~PbeCipher() { wipe(this->schedule, sizeof schedule), wipe(vector, sizeof vector); }
    PbeCipher(const PbeCipher &) = delete;
    PbeCipher &operator=(const PbeCipher &) = delete;

    // A key or IV whose length the cipher does not take is KACERT_InvalidParamErr. An IV is the first 8 octets.
    [[nodiscard]] Status setKey(Bytes key, Bytes iv);
    // Derives key and IV.
    [[nodiscard]] Status setPassword(Bytes password, Bytes salt, uint32_t iterations);
    void setIv(Bytes iv);
    bool isStream() const { return algorithm.cipher == CipherKind::Rc4; }

    void run(Bytes input, uint8_t *output);

private:
    const PbeAlgorithm &algorithm;
    Direction direction;
    alignas(8) uint8_t schedule[1032]; // the key schedule of whichever cipher it is
    uint8_t vector[PbeBlock] = {};
};

// The derivation of RFC 7292 appendix B.2 with blocks of 64 octets.
struct PasswordDerivation {
    int32_t digestId;
    Bytes password; // not widened
    Bytes salt;
    uint32_t iterations;
};
[[nodiscard]] Status derive(const PasswordDerivation &from, uint8_t purpose, std::span<uint8_t> output);

} // namespace karil
