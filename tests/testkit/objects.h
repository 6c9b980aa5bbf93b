// Owning handles, and contexts of every family behind one set of names, filled with what encoding needs. A new family
// is one more Family. For tests, fuzz targets and benchmarks alike.
#pragma once

#include "octets.h"

// Tests run their calls under failing allocations: memory.h.
#ifndef TRIED
#define TRIED(CALL) CALL
#endif

namespace karil_test {

template <auto F> struct By {
    void operator()(auto *object) const { F(object); }
};
using Chain = std::unique_ptr<Anybuf, By<KI_FreeAnybuf>>;
template <class T> using Block = std::unique_ptr<T, By<KAPR_Free>>;

struct NameList {
    NameRecord head = {};

    NameList() = default;
    NameList(const NameList &) = delete;
    NameList &operator=(const NameList &) = delete;
    ~NameList() { KI_FreeName(head.next); }
};

inline constexpr int32_t Y2020 = 1577836800; // the first second of the year, UTC
inline constexpr int32_t Y2021 = 1609459200;
inline constexpr int32_t Y2030 = 1893456000;

struct Setting {
    int32_t id;
    std::string_view octets;
};
using Number = std::pair<int32_t, int32_t>;
inline constexpr std::string_view Sha1WithRsaOid = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x05";
inline constexpr std::string_view RsaEncryptionOid = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01";

// What a family's functions are called, and the attributes without which nothing can be encoded.
template <class Ctx> struct Family;
#define KIT_FAMILY(PREFIX, NAME, CREATE, DESTROY)                                                                      \
    static constexpr auto create = PREFIX##_##CREATE;                                                                  \
    static constexpr auto destroy = PREFIX##_##DESTROY;                                                                \
    static constexpr auto set = PREFIX##_Set##NAME##AttributeChar;                                                     \
    static constexpr auto get = PREFIX##_Get##NAME##AttributeChar;                                                     \
    static constexpr auto encode = PREFIX##_Encode##NAME;                                                              \
    static constexpr auto decode = PREFIX##_Decode##NAME
#define KIT_NUMBERS(PREFIX, NAME)                                                                                      \
    static constexpr auto setInt = PREFIX##_Set##NAME##AttributeInt;                                                   \
    static constexpr auto getInt = PREFIX##_Get##NAME##AttributeInt
template <> struct Family<CertEncodeCtx> {
    KIT_FAMILY(KACert, Cert, CreateCertEncodeCtx, DestroyCertEncodeCtx);
    KIT_NUMBERS(KACert, Cert);
    static constexpr auto hook = KACert_SetCertSignFunc;
    static constexpr Number Numbers[] = {{CERT_VERSION, 2}, {CERT_VALIDFROM, Y2020}, {CERT_VALIDTO, Y2030}};
    static constexpr Setting Settings[] = {
        {CERT_SERIALNUMBER, "\x05"},
        {CERT_INNER_SIGNATUREALGORITHM, Sha1WithRsaOid},
        {CERT_OUTER_SIGNATUREALGORITHM, Sha1WithRsaOid},
        {CERT_PUBLICKEY_ALGORITHM, RsaEncryptionOid},
        {CERT_SUBJECTPUBLICKEYINFO, "\x30\x03\x02\x01"},
        {CERT_ISSUER_COMMONNAME, "Root"},
        {CERT_SUBJECT_COMMONNAME, "Leaf"},
    };
};
template <> struct Family<CrlEncodeCtx> {
    KIT_FAMILY(KACert, Crl, CreateCrlEncodeCtx, DestroyCrlEncodeCtx);
    KIT_NUMBERS(KACert, Crl);
    static constexpr auto hook = KACert_SetCrlSignFunc;
    static constexpr std::span<const Number> Numbers = {};
    static constexpr Setting Settings[] = {
        {CRL_INNER_SIGNATUREALGORITHM, Sha1WithRsaOid},
        {CRL_OUTER_SIGNATUREALGORITHM, Sha1WithRsaOid},
        {CRL_ISSUER_COMMONNAME, "Root"},
    };
};
template <> struct Family<CsrEncodeCtx> {
    KIT_FAMILY(KACert, Csr, CreateCsrEncodeCtx, DestroyCsrEncodeCtx);
    KIT_NUMBERS(KACert, Csr);
    static constexpr auto hook = KACert_SetCsrSignFunc;
    static constexpr std::span<const Number> Numbers = {};
    static constexpr Setting Settings[] = {
        {CSR_OUTER_SIGNATUREALGORITHM, Sha1WithRsaOid},
        {CSR_PUBLICKEY_ALGORITHM, RsaEncryptionOid},
        {CSR_SUBJECTPUBLICKEYINFO, "\x30\x03\x02\x01"},
        {CSR_SUBJECT_COMMONNAME, "Leaf"},
    };
};

template <class Ctx> using Owner = std::unique_ptr<Ctx, By<Family<Ctx>::destroy>>;
using CertPtr = Owner<CertEncodeCtx>;
using CrlPtr = Owner<CrlEncodeCtx>;
using CsrPtr = Owner<CsrEncodeCtx>;

template <class Ctx> Owner<Ctx> create() {
    Ctx *ctx = nullptr;
    TRIED(Family<Ctx>::create(&ctx));
    return Owner<Ctx>(ctx);
}
template <class Ctx> int32_t set(Ctx &ctx, int32_t id, Bytes value) {
    return TRIED(Family<Ctx>::set(&ctx, id, value.data(), lengthOf(value)));
}
template <class Ctx> int32_t set(Ctx &ctx, int32_t id, std::string_view characters) {
    return set(ctx, id, bytesOf(characters));
}
template <class Ctx> int32_t decode(Ctx &ctx, Bytes der) {
    return TRIED(Family<Ctx>::decode(&ctx, der.data(), sizeOf(der)));
}
// What a call answers that is asked for the length first, as a caller does it; nothing where the status is not 0.
template <class Call> Octets asked(const Call &call, int32_t *status = nullptr) {
    uint32_t length = 0;
    int32_t result = TRIED(call(static_cast<uint8_t *>(nullptr), &length));
    Octets octets(result == KACERT_Ok ? length : 0);
    if (result == KACERT_Ok)
        result = TRIED(call(octets.data(), &length));
    if (status != nullptr)
        *status = result;
    return octets;
}
template <class Ctx> Octets encode(Ctx &ctx, int32_t *status = nullptr) {
    return asked([&](auto... out) { return Family<Ctx>::encode(&ctx, out...); }, status);
}
// Room beyond the length that was asked for: what could not be told for want of memory may be there in the next call.
inline thread_local uint32_t spareRoom = 0;

// What the context answers, in hex; "status N", or "untouched" where the length stays as it was. The buffer has the
// octets that were asked for, all EE; an id that has no length-only form gets many.
template <class Ctx> std::string get(Ctx &ctx, int32_t id) {
    constexpr uint32_t Untouched = 12345;
    uint32_t length = Untouched;
    const int32_t status = TRIED(Family<Ctx>::get(&ctx, id, nullptr, &length));
    if (status != KACERT_Ok && status != KACERT_InvalidParamErr)
        return "status " + std::to_string(status);
    if (length == Untouched)
        return "untouched";
    const Exact area(Octets(spareRoom + (status == KACERT_Ok ? length : 4096), 0xEE));
    if (TRIED(Family<Ctx>::get(&ctx, id, area.data(), &length)) != KACERT_Ok || length > area.record.length)
        return "another answer";
    return toHex(area.data(), length);
}

// What the call stores in a buffer, in hex; "untouched" if it leaves the length as it was, or "status N".
template <class Call> std::string stored(Call call, size_t room = 4096) {
    constexpr uint32_t Untouched = 12345;
    const Exact area(room);
    uint32_t length = Untouched;
    const int32_t status = TRIED(call(area.data(), &length));
    if (status != KACERT_Ok)
        return "status " + std::to_string(status);
    return length == Untouched ? "untouched" : toHex(area.data(), length);
}
template <class Ctx> std::string ask(Ctx &ctx, int32_t id) {
    return stored([&](uint8_t *result, uint32_t *length) { return Family<Ctx>::get(&ctx, id, result, length); });
}
template <class Ctx> std::string written(Ctx &ctx, size_t room = 4096) {
    return stored([&](uint8_t *result, uint32_t *length) { return Family<Ctx>::encode(&ctx, result, length); }, room);
}

// A signature of three octets, whatever the protocol of the hook.
inline int32_t fixedSignature(const uint8_t *, uint32_t, uint8_t *output, uint32_t *outputLength, void *) {
    *outputLength = 3;
    if (output != nullptr)
        std::copy_n("\xAA\xBB\xCC", 3, output);
    return 0;
}
// The parameter is the key's record; a certificate's first call has none.
inline int32_t signBySha1(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                          void *parameter) {
    if (parameter == nullptr)
        return 0;
    const auto &key = *static_cast<const RsaPrivateKeyRecord *>(parameter);
    const auto *first = std::find_if(key.modulus, std::end(key.modulus), [](uint8_t octet) { return octet != 0; });
    *outputLength = static_cast<uint32_t>(std::end(key.modulus) - first);
    return output == nullptr ? 0 : KA_PKCS7_SignedData(KA_DIGEST_SHA1, input, inputLength, output, outputLength, &key);
}

// Sets all without which nothing can be encoded, but for the hook.
template <class Ctx> void fill(Ctx &ctx) {
    for (const auto &[id, octets] : Family<Ctx>::Settings)
        set(ctx, id, octets);
    for (const auto &setting : Family<Ctx>::Numbers)
        TRIED(Family<Ctx>::setInt(&ctx, setting.first, setting.second));
}
// A context that can be encoded.
template <class Ctx>
Owner<Ctx> filled(KAHookFunc hook = fixedSignature, const void *parameter = nullptr, uint32_t length = 0) {
    Owner<Ctx> ctx = create<Ctx>();
    fill(*ctx);
    TRIED(Family<Ctx>::hook(ctx.get(), hook, parameter, length));
    return ctx;
}

// The same objects as elements; a test exchanges what it is about.
struct CertParts {
    Octets version = hex("A0 03 02 01 02");
    Octets serial = hex("02 01 05");
    Octets inner = algorithm(Sha1WithRsa);
    Octets issuer = commonName("Root");
    Octets validity = seq({tlv(0x17, text("200101000000Z")), tlv(0x17, text("300101000000Z"))});
    Octets subject = commonName("Leaf");
    Octets key = seq({algorithm(RsaEncryption), bits(hex("30 03 02 01"))});
    Octets extensions;
    Octets outer = algorithm(Sha1WithRsa);
    Octets signature = bits(hex("AA BB CC"));

    void setExtensions(std::initializer_list<Octets> list) { extensions = tlv(0xA3, seq(list)); }
    Octets tbs() const { return seq({version, serial, inner, issuer, validity, subject, key, extensions}); }
    Octets whole() const { return seq({tbs(), outer, signature}); }
};
inline Octets wholeOf(const Octets &tbs) {
    return seq({tbs, algorithm(Sha1WithRsa), bits(hex("AA BB CC"))});
}

} // namespace karil_test
