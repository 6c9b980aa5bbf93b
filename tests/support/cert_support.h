// A certificate context for tests, and a whole certificate in parts that can be exchanged one by one.
#pragma once

#include "karil/cert.h"

#include "der.h"
#include "rows.h"

namespace karil_test {

struct DestroyCert {
    void operator()(CertEncodeCtx *ctx) const { KACert_DestroyCertEncodeCtx(ctx); }
};
using CertPtr = std::unique_ptr<CertEncodeCtx, DestroyCert>;

inline CertPtr newCert() {
    CertEncodeCtx *ctx = nullptr;
    return KACert_CreateCertEncodeCtx(&ctx) == KACERT_Ok ? CertPtr(ctx) : nullptr;
}

inline int32_t setChar(const CertPtr &ctx, int32_t id, const Octets &value) {
    return KACert_SetCertAttributeChar(ctx.get(), id, value.data(), static_cast<int32_t>(value.size()));
}
inline int32_t setChar(const CertPtr &ctx, int32_t id, std::string_view characters) {
    return setChar(ctx, id, text(characters));
}

// What the context answers: the octets in hex, or "status N".
inline std::string getChar(const CertPtr &ctx, int32_t id) {
    uint32_t length = 12345;
    int32_t status = KACert_GetCertAttributeChar(ctx.get(), id, nullptr, &length);
    Octets octets(status == KACERT_Ok ? length : 4096);
    status = KACert_GetCertAttributeChar(ctx.get(), id, octets.data(), &length);
    if (status != KACERT_Ok) return "status " + std::to_string(status);
    octets.resize(length);
    return toHex(octets);
}

inline int32_t decode(const CertPtr &ctx, const Octets &der) {
    return KACert_DecodeCert(ctx.get(), der.data(), static_cast<uint32_t>(der.size()));
}

inline constexpr char Sha1WithRsa[] = "2A 86 48 86 F7 0D 01 01 05";
inline constexpr char RsaEncryption[] = "2A 86 48 86 F7 0D 01 01 01";

inline Octets algorithm(std::string_view id) { return seq({oid(id), hex("05 00")}); }

// The fields of a certificate as elements; a test exchanges what it is about.
struct CertParts {
    Octets version = hex("A0 03 02 01 02");
    Octets serial = hex("02 01 05");
    Octets inner = algorithm(Sha1WithRsa);
    Octets issuer = commonName("Root");
    Octets validity = seq({tlv(0x17, text("200101000000Z")), tlv(0x17, text("300101000000Z"))});
    Octets subject = commonName("Leaf");
    Octets key = seq({algorithm(RsaEncryption), hex("03 05 00 30 03 02 01")});
    Octets extensions;
    Octets outer = algorithm(Sha1WithRsa);
    Octets signature = hex("03 04 00 AA BB CC");

    // The part of that name.
    Octets &operator[](std::string_view name);
    void setExtensions(std::initializer_list<Octets> list) { extensions = tlv(0xA3, seq(list)); }
    Octets tbs() const { return seq({version, serial, inner, issuer, validity, subject, key, extensions}); }
    Octets whole() const { return seq({tbs(), outer, signature}); }
};

// Sets what every certificate needs: version, serial number, algorithms, names, validity, key and a hook that signs
// with the three octets of CertParts.
void fillCert(const CertPtr &ctx);
int32_t fixedSignature(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                       void *parameter);

CertPtr filledCert();
CertPtr decodedCert(const CertParts &parts);

// A step of a row on a context: "id=octets" or "int id=number". The status of the call.
int32_t take(const CertPtr &ctx, const Row &row, const std::string &step);
// Takes the steps of the column; all but the last must succeed. The status of the last.
int32_t takeAll(const CertPtr &ctx, const Row &row, std::string_view column);

// All that is not 0, null or as it is in a fresh context: "name=value, name=octets".
std::string dump(const CertExtensions &extensions);
std::string dump(const CertEncodeCtx &ctx);

} // namespace karil_test
