// An issuer with a key of its own, always the same, and what it signs: for targets and seeds.
#pragma once

#include "fuzz.h"

#include <utility>

namespace karil_fuzz {

inline constexpr uint8_t Modulus[64] = {0xBB, 0x8F, 0xD0, 0x22, 0x69, 0x06, 0x27, 0xA4, 0x89, 0xF1, 0xBD, 0x52, 0x17,
                                        0xAD, 0x3E, 0xF1, 0x38, 0x38, 0x92, 0x4A, 0x1D, 0x88, 0x8F, 0xE5, 0x64, 0x3B,
                                        0xE4, 0xE2, 0x56, 0xDB, 0x34, 0xC3, 0xE1, 0x57, 0x8F, 0x8E, 0xA8, 0x17, 0x4A,
                                        0xCF, 0x8F, 0x9C, 0x02, 0x00, 0xDB, 0x1B, 0xA7, 0x71, 0x94, 0x81, 0x07, 0x74,
                                        0x4E, 0x65, 0x7D, 0xB9, 0x10, 0xB9, 0x5D, 0x7F, 0x45, 0x7A, 0xA2, 0x69};
inline constexpr uint8_t Exponent[64] = {0x1E, 0x38, 0xCE, 0x10, 0xBD, 0x5B, 0x80, 0x87, 0xC2, 0xB2, 0x71, 0x0F, 0x09,
                                         0x41, 0xA1, 0x22, 0xBD, 0x2C, 0x60, 0x66, 0x10, 0xDC, 0x30, 0x53, 0x86, 0x13,
                                         0x20, 0x8E, 0x57, 0xF0, 0x7A, 0x4F, 0xCE, 0xAD, 0xE2, 0x72, 0x19, 0x0F, 0x99,
                                         0x1B, 0x6F, 0xFC, 0x31, 0x5B, 0xDF, 0x96, 0xF7, 0x22, 0x24, 0xB3, 0x9E, 0x57,
                                         0x36, 0x7E, 0xF9, 0x88, 0xB2, 0xCD, 0x8A, 0x22, 0x32, 0x24, 0x34, 0x01};

// The record that signs: without primes it goes by the exponent.
inline const RsaPrivateKeyRecord &issuerKey() {
    static const RsaPrivateKeyRecord key = [] {
        RsaPrivateKeyRecord made = {};
        std::copy(std::begin(Modulus), std::end(Modulus), std::end(made.modulus) - sizeof Modulus);
        std::copy(std::begin(Exponent), std::end(Exponent), std::end(made.exponent) - sizeof Exponent);
        made.publicExponent[253] = made.publicExponent[255] = 1;
        return made;
    }();
    return key;
}

// A context of any family that can be encoded, signed with it.
template <class Ctx> Owner<Ctx> filledByIssuer() {
    return filled<Ctx>(signBySha1, &issuerKey(), sizeof issuerKey());
}

// Its public key as DER.
inline Octets issuerPublicKey() {
    Octets der(100);
    uint32_t size = 0;
    must(KA_Encode_PublicKey(issuerKey().modulus, der.data(), &size) == KACERT_Ok, "a key can be written");
    der.resize(size);
    return der;
}

// Its certificate, which verifies itself.
inline const Octets &issuerCertificate() {
    static const Octets der = [] {
        const CertPtr ctx = filledByIssuer<CertEncodeCtx>();
        KI_FreeName(std::exchange(ctx->subject.next, nullptr));
        must(set(*ctx, CERT_SUBJECT_COMMONNAME, "Root") == KACERT_Ok, "a name can be set");
        must(set(*ctx, CERT_SUBJECTPUBLICKEYINFO, issuerPublicKey()) == KACERT_Ok, "a key can be set");
        must(KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDTO, 2145916800) == KACERT_Ok, "as far as dates go");
        const Octets made = encode(*ctx);
        must(!made.empty(), "an issuer can be encoded");
        return made;
    }();
    return der;
}

} // namespace karil_fuzz
