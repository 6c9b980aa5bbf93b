// The sample certificate, built by karil.
#include "bench.h"
#include "sample.h"

#include <cstring>

namespace karil_bench {

namespace {

struct Value {
    int32_t id;
    Bytes octets;
};

void set(CertEncodeCtx *ctx, int32_t id, Bytes value) {
    must(KACert_SetCertAttributeChar(ctx, id, value.data(), static_cast<int32_t>(value.size())) == KACERT_Ok,
         "karil takes the value");
}

void setNames(CertEncodeCtx *ctx) {
    for (const sample::NameValue &value : sample::Issuer)
        set(ctx, value.id, bytesOf(value.text));
    for (const sample::NameValue &value : sample::Subject)
        set(ctx, value.id, bytesOf(value.text));
    set(ctx, sample::IssuerAlt.id, bytesOf(sample::IssuerAlt.text));
}

// A flag that is written as 1 goes out as 1: what others write and read as TRUE is FF.
constexpr uint8_t True = 0xFF;
constexpr uint8_t Purposes[] = {sample::ServerAndClient, 0, 0, 0};
const Value Values[] = {
    {CERT_SERIALNUMBER, sample::Serial},
    {CERT_INNER_SIGNATUREALGORITHM, sample::Sha1WithRsa},
    {CERT_OUTER_SIGNATUREALGORITHM, sample::Sha1WithRsa},
    {CERT_PUBLICKEY_ALGORITHM, sample::RsaEncryption},
    {CERT_SUBJECTPUBLICKEYINFO, sample::PublicKey},
    {CERTEX_AUTHORITYKEYIDENTIFIER, sample::IssuerKeyId},
    {CERTEX_SUBJECTKEYIDENTIFIER, sample::KeyId},
    {CERTEX_CERTPOLICYID, sample::AnyPolicy},
    {CERTEX_CERTPOLICY_CPS, bytesOf(sample::Cps)},
    {CERT_SUBJECT_ALT_RFC822NAME, bytesOf(sample::Mail)},
    {CERT_SUBJECT_ALT_DNSNAME, bytesOf(sample::Dns)},
    {CERT_SUBJECT_ALT_URI, bytesOf(sample::Uri)},
    {CERT_SUBJECT_ALT_IPADDRESS, sample::Address},
    {CERTEX_AUTHORITY, Bytes(&True, 1)},
    {CERTEX_PATHLENCONSTRAINT, Bytes(&sample::PathLength, 1)},
    {CERTEX_BASICCONSTRAINTS_CRITICAL, Bytes(&True, 1)},
    {CERTEX_KEYUSAGE, Bytes(&sample::KeyUsage, 1)},
    {CERTEX_KEYUSAGE_CRITICAL, Bytes(&True, 1)},
    {CERTEX_EXTKEY_USAGE, Purposes},
    {CERTEX_CRLDIST_FULLNAME, bytesOf(sample::CrlUri)},
    {CERTEX_AUTHORITYINFO_OCSP, bytesOf(sample::OcspUri)},
    {CERTEX_AUTHORITYINFO_CAISSUERS, bytesOf(sample::CaIssuersUri)},
};

} // namespace

CertPtr buildWithKaril(KACertSignFunc hook, const void *parameter, uint32_t length) {
    CertEncodeCtx *ctx = nullptr;
    must(KACert_CreateCertEncodeCtx(&ctx) == KACERT_Ok, "karil makes a context");
    CertPtr certificate(ctx);
    must(KACert_SetCertAttributeInt(ctx, CERT_VERSION, 2) == KACERT_Ok, "karil takes the version");
    must(KACert_SetCertAttributeInt(ctx, CERT_VALIDFROM, sample::NotBefore) == KACERT_Ok, "karil takes a date");
    must(KACert_SetCertAttributeInt(ctx, CERT_VALIDTO, sample::NotAfter) == KACERT_Ok, "karil takes a date");
    setNames(ctx);
    for (const Value &value : Values)
        set(ctx, value.id, value.octets);
    must(KACert_SetCertAttributePrivate(ctx, sample::PrivateOid, sizeof sample::PrivateOid, 0,
                                        bytesOf(sample::PrivateDer).data(),
                                        static_cast<int32_t>(sample::PrivateDer.size())) == KACERT_Ok,
         "karil takes a private extension");
    must(KACert_SetCertSignFunc(ctx, hook, parameter, length) == KACERT_Ok, "karil takes a hook");
    return certificate;
}

// As a user does it: ask for the length, make room, ask again.
Octets encodeWithKaril(CertEncodeCtx *ctx) {
    uint32_t length = 0;
    must(KACert_EncodeCert(ctx, nullptr, &length) == KACERT_Ok, "karil encodes");
    Octets der(length);
    must(KACert_EncodeCert(ctx, der.data(), &length) == KACERT_Ok, "karil hands out what it encoded");
    return der;
}

Octets tbsOf(Bytes certificate) {
    CertDecodeCtx *ctx = nullptr;
    uint32_t length = 0;
    must(KACert_CreateCertDecodeCtx(&ctx) == KACERT_Ok, "karil makes a context");
    const CertPtr owner(ctx);
    must(KACert_DecodeCert(ctx, certificate.data(), static_cast<uint32_t>(certificate.size())) == KACERT_Ok,
         "karil decodes what it encoded");
    must(KACert_GetCertAttributeChar(ctx, CERT_TBS_CERTIFICATE, nullptr, &length) == KACERT_Ok, "karil has the part");
    Octets tbs(length);
    must(KACert_GetCertAttributeChar(ctx, CERT_TBS_CERTIFICATE, tbs.data(), &length) == KACERT_Ok, "karil gives it");
    return tbs;
}

// Takes the first octets of its input for a signature: what is left is the cost of the certificate itself.
int32_t copyingHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *) {
    constexpr uint32_t Length = 256;
    if (output != nullptr && *outputLength < Length)
        return 1;
    *outputLength = Length;
    if (output != nullptr)
        memcpy(output, input, inputLength < Length ? inputLength : Length);
    return 0;
}

} // namespace karil_bench
