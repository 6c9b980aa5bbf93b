// RFC 7292 appendix B and RFC 2104, both with blocks of 64 octets.
#include "cipher.h"

namespace karil {

namespace {

constexpr uint32_t Block = 64;

uint64_t wholeBlocks(uint64_t size) {
    return (size + Block - 1) / Block * Block;
}

// Repeats the first `period` octets up to the end.
void repeat(std::span<uint8_t> octets, size_t period) {
    for (size_t i = period; i < octets.size(); ++i)
        octets[i] = octets[i - period];
}

// Adds, as big-endian numbers, the repeated digest and 1. The carry out of the top is dropped.
void add(std::span<uint8_t> block, Bytes digest) {
    uint32_t carry = 1;
    for (size_t i = block.size(); i-- > 0;) {
        carry += uint32_t{block[i]} + digest[i % digest.size()];
        block[i] = static_cast<uint8_t>(carry);
        carry >>= 8;
    }
}

void fill(uint8_t (&block)[Block], Bytes key, uint8_t mask) {
    for (size_t i = 0; i < Block; ++i)
        block[i] = static_cast<uint8_t>((i < key.size() ? key[i] : 0) ^ mask);
}

} // namespace

Status derive(const PasswordDerivation &from, uint8_t purpose, std::span<uint8_t> output) {
    const DigestAlgorithm *algorithm = digestAlgorithm(from.digestId);
    if (algorithm == nullptr)
        return KAPKCS7_RsaOperationErr;
    const uint64_t wide = 2 * uint64_t{from.password.size()} + 2;
    if (wide > UINT32_MAX)
        return KAPKCS7_RsaOperationErr;
    const uint64_t saltSize = wholeBlocks(from.salt.size());
    const uint64_t size = saltSize + wholeBlocks(wide);
    const SecretBlock block(KA_BLOCK(size), static_cast<size_t>(size));
    if (block.octets == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------------>KAPR_Malloc");
    const std::span<uint8_t> input(block.octets.get(), block.size);
    const auto salt = input.first(static_cast<size_t>(saltSize));
    const auto password = input.subspan(salt.size());
    if (!salt.empty())
        memcpy(salt.data(), from.salt.data(), from.salt.size());
    repeat(salt, from.salt.size());
    for (size_t i = 0; i < from.password.size(); ++i)
        password[2 * i + 1] = from.password[i];
    repeat(password, static_cast<size_t>(wide));

    uint8_t purposes[Block];
    memset(purposes, purpose, Block);
    Secret<LongestDigest> digest;
    for (;;) {
        algorithm->digest({purposes, input}, digest.octets);
        if (from.iterations > 1)
            algorithm->repeat(digest.octets, from.iterations - 1);
        const size_t part = output.size() < algorithm->size ? output.size() : algorithm->size;
        if (part > 0)
            memcpy(output.data(), digest.octets, part);
        if (output.size() <= algorithm->size)
            return KACERT_Ok;
        output = output.subspan(part);
        for (size_t at = 0; at < input.size(); at += Block)
            add(input.subspan(at, Block), {digest.octets, algorithm->size});
    }
}

uint32_t hmac(int32_t digestId, Bytes key, Bytes data, uint8_t *output) {
    const DigestAlgorithm *algorithm = digestAlgorithm(digestId);
    if (algorithm == nullptr)
        return 0;
    Secret<LongestDigest> digest;
    if (key.size() > Block) {
        algorithm->digest({key}, digest.octets);
        key = {digest.octets, algorithm->size};
    }
    Secret<Block> inner;
    Secret<Block> outer;
    fill(inner.octets, key, 0x36);
    fill(outer.octets, key, 0x5C);
    algorithm->digest({inner.octets, data}, digest.octets);
    algorithm->digest({outer.octets, Bytes(digest.octets, algorithm->size)}, output);
    return algorithm->size;
}

} // namespace karil
