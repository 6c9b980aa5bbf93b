// Octets from hex and text, as DER and in blocks of just their size. For tests, fuzz targets and benchmarks alike.
#pragma once

#include "karil/karil.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace karil_test {

using Octets = std::vector<uint8_t>;
using Bytes = std::span<const uint8_t>;

inline Octets text(std::string_view characters) {
    return {characters.begin(), characters.end()};
}
inline Bytes bytesOf(std::string_view characters) {
    return {reinterpret_cast<const uint8_t *>(characters.data()), characters.size()};
}
inline Bytes bytesOf(const Anybuf &record) {
    return {record.data, record.length};
}
inline Octets copyOf(Bytes bytes) {
    return {bytes.begin(), bytes.end()};
}
inline uint32_t sizeOf(Bytes bytes) {
    return static_cast<uint32_t>(bytes.size());
}
inline int32_t lengthOf(Bytes bytes) {
    return static_cast<int32_t>(bytes.size());
}

// "30 03 02 01 05" as five octets, and back; blanks are free.
inline Octets hex(std::string_view digits) {
    Octets octets;
    int high = -1;
    for (const char c : digits) {
        const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
        if (digit >= 0 && high >= 0)
            octets.push_back(static_cast<uint8_t>(high << 4 | digit));
        if (digit >= 0)
            high = high < 0 ? digit : -1;
    }
    return octets;
}
inline std::string toHex(const uint8_t *data, size_t size) {
    std::string out;
    for (size_t i = 0; i < size; ++i) {
        out += i > 0 ? " " : "";
        out += "0123456789ABCDEF"[data[i] >> 4];
        out += "0123456789ABCDEF"[data[i] & 15];
    }
    return out;
}
inline std::string toHex(Bytes bytes) {
    return toHex(bytes.data(), bytes.size());
}
inline std::string toHex(const Anybuf &record) {
    return toHex(record.data, record.length);
}

inline Octets cat(std::initializer_list<Octets> parts) {
    Octets all;
    for (const Octets &part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}
inline Octets tlv(uint8_t tag, const Octets &content) {
    Octets length;
    for (size_t rest = content.size(); rest != 0; rest >>= 8)
        length.insert(length.begin(), static_cast<uint8_t>(rest));
    if (content.size() >= 0x80)
        length.insert(length.begin(), static_cast<uint8_t>(0x80 | length.size()));
    return cat({{tag}, content.empty() ? Octets{0} : length, content});
}
inline Octets tlv(uint8_t tag, std::initializer_list<Octets> parts) {
    return tlv(tag, cat(parts));
}
inline Octets seq(std::initializer_list<Octets> parts) {
    return tlv(0x30, cat(parts));
}
inline Octets set(std::initializer_list<Octets> parts) {
    return tlv(0x31, cat(parts));
}
inline Octets oid(std::string_view content) {
    return tlv(0x06, hex(content));
}
inline Octets bits(const Octets &octets) {
    return tlv(0x03, cat({{0}, octets}));
}
// A Name with one attribute 2.5.4.3.
inline Octets commonName(std::string_view characters, uint8_t tag = 0x13) {
    return seq({set({seq({oid("55 04 03"), tlv(tag, text(characters))})})});
}
// Extension ::= SEQUENCE { extnID, critical where `flag` has octets, extnValue }
inline Octets extension(std::string_view id, const Octets &value, const Octets &flag = {}) {
    return seq({oid(id), flag, tlv(0x04, value)});
}

inline constexpr char Sha1WithRsa[] = "2A 86 48 86 F7 0D 01 01 05";
inline constexpr char RsaEncryption[] = "2A 86 48 86 F7 0D 01 01 01";
inline Octets algorithm(std::string_view id) {
    return seq({oid(id), hex("05 00")});
}

// Room, or octets, with a red zone right behind: ASan sees a step past the end. The allocator makes a block of no
// octets one octet long, hence those in front.
struct Exact {
    static constexpr size_t Front = 8;
    std::unique_ptr<uint8_t[]> block;
    Anybuf record;

    explicit Exact(size_t size, uint32_t tag = 0)
        : block(new uint8_t[Front + size]()),
          record{block.get() + Front, static_cast<uint32_t>(size), 0, 0, tag, nullptr, nullptr} {}
    explicit Exact(Bytes octets, uint32_t tag = 0) : Exact(octets.size(), tag) {
        std::copy(octets.begin(), octets.end(), data());
    }
    uint8_t *data() const { return block.get() + Front; }
    Bytes bytes() const { return {data(), record.length}; }
};

} // namespace karil_test
