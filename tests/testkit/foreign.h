// Bundles of the foreign reader's kind, with indefinite lengths. For tests and the seeds of fuzz targets.
#pragma once

#include "octets.h"

#include <cstdlib>

namespace karil_test {

// What is enciphered, and how it is cut into pieces: the sizes of all but the last; none: a single primitive element.
struct ForeignItem {
    Octets oid;
    uint32_t iterations = 7;
    Octets plain;
    std::vector<size_t> cuts = {};
    size_t left = 0;                // octets that are left off the end of the cipher text
    Octets count = hex("02 01 07"); // the INTEGER that tells the iterations
    Octets salt = hex("0102030405060708");
};

inline Octets indefinite(uint8_t tag, std::initializer_list<Octets> parts) {
    return cat({{tag, 0x80}, cat(parts), hex("00 00")});
}

inline Octets foreignCipher(const ForeignItem &item, std::string_view password) {
    Octets sealed(item.plain.size() + 8);
    uint32_t length = 0;
    const Bytes secret = bytesOf(password);
    if (KA_PKCS12_PbeWithDigestAlgoAndEncrypt(item.oid.data(), sizeOf(item.oid), secret.data(), sizeOf(secret),
                                              item.salt.data(), sizeOf(item.salt), item.iterations, item.plain.data(),
                                              sizeOf(item.plain), sealed.data(), &length) != KACERT_Ok)
        std::abort();
    sealed.resize(length - item.left);
    return sealed;
}

// Algorithm, parameters and cipher text as pieces of an OCTET STRING.
inline Octets foreignPieces(const ForeignItem &item, std::string_view password) {
    const Octets sealed = foreignCipher(item, password);
    const Octets front = cat({tlv(0x04, item.oid), tlv(0x04, seq({tlv(0x04, item.salt), item.count}))});
    if (item.cuts.empty())
        return cat({front, tlv(0x04, sealed)});
    Octets pieces;
    auto at = sealed.begin();
    for (const size_t cut : item.cuts) {
        const auto end =
            at + static_cast<std::ptrdiff_t>(std::min<size_t>(cut, static_cast<size_t>(sealed.end() - at)));
        pieces = cat({pieces, tlv(0x04, Octets(at, end))});
        at = end;
    }
    return cat({front, indefinite(0x24, {pieces, tlv(0x04, Octets(at, sealed.end()))})});
}

inline Octets foreignBundle(const ForeignItem &key, const ForeignItem &certificate, std::string_view password) {
    const Octets safe = indefinite(0x24, {foreignPieces(key, password), foreignPieces(certificate, password)});
    return indefinite(0x30, {hex("02 01 03"), indefinite(0x30, {oid("2A864886F70D010701"), indefinite(0xA0, {safe})})});
}

// PrivateKeyInfo ::= SEQUENCE { version, algorithm, privateKey OCTET STRING }
inline Octets keyInfo(const Octets &key) {
    return seq({hex("02 01 00"), algorithm(RsaEncryption), tlv(0x04, key)});
}
// SafeContents with a certificate of that many octets, which end in `last`.
inline Octets oneCertificate(const Octets &certificate) {
    return seq({seq({oid("2A864886F70D010C0A0103"),
                     tlv(0xA0, seq({oid("2A864886F70D01091601"), tlv(0xA0, tlv(0x04, certificate))}))})});
}

} // namespace karil_test
