// CRL contexts that start from an issuer's certificate or from an earlier CRL.
#include "ka_crl.h"

#include "karil/cert.h"

using namespace karil;

namespace {

using CertPtr = std::unique_ptr<CertDecodeCtx, By<KACert_DestroyCertDecodeCtx>>;
using CrlPtr = std::unique_ptr<CrlEncodeCtx, By<KACert_DestroyCrlEncodeCtx>>;

// What a CRL takes from its issuer's certificate.
struct Issuer {
    uint8_t name[2048];
    uint32_t nameLength = 0;
    uint8_t keyId[512];
    uint32_t keyIdLength = 0;
};
// Answered if the key identifier cannot be read.
constexpr Status KeyIdErr = 3;

Status readIssuer(Bytes der, Issuer &out) {
    CertDecodeCtx *raw = nullptr;
    KA_STEP(KACert_CreateCertDecodeCtx(&raw));
    const CertPtr cert(raw);
    KA_STEP(KACert_DecodeCert(raw, der.data(), static_cast<uint32_t>(der.size())));
    KA_STEP(KACert_GetCertAttributeChar(raw, CERT_SUBJECT_DERDN, nullptr, &out.nameLength));
    if (out.nameLength > sizeof out.name)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACert_GetCertAttributeChar");
    KA_STEP(KACert_GetCertAttributeChar(raw, CERT_SUBJECT_DERDN, out.name, &out.nameLength));
    if (KACert_GetCertAttributeChar(raw, CERTEX_SUBJECTKEYIDENTIFIER, nullptr, &out.keyIdLength) != KACERT_Ok)
        return KA_FAIL(KeyIdErr, "------>KACert_GetCertAttributeChar");
    if (out.keyIdLength > sizeof out.keyId)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACert_GetCertAttributeChar");
    if (KACert_GetCertAttributeChar(raw, CERTEX_SUBJECTKEYIDENTIFIER, out.keyId, &out.keyIdLength) != KACERT_Ok)
        return KA_FAIL(KeyIdErr, "------>KACert_GetCertAttributeChar");
    return KACERT_Ok;
}

Status seed(CrlEncodeCtx *ctx, const Issuer &issuer) {
    KA_STEP(KACert_SetCrlAttributeChar(ctx, CRL_ISSUER_DERDN, issuer.name, static_cast<int32_t>(issuer.nameLength)));
    if (issuer.keyIdLength > 0)
        KA_STEP(KACert_SetCrlAttributeChar(ctx, CRLEX_AUTHORITY_KEYIDENTIFIER, issuer.keyId,
                                           static_cast<int32_t>(issuer.keyIdLength)));
    return KACERT_Ok;
}

Status carryOver(CrlEncodeCtx &ctx, Bytes der) {
    CrlDecodeCtx *raw = nullptr;
    KA_STEP(KACert_CreateCrlDecodeCtx(&raw));
    CrlPtr crl(raw);
    KA_STEP(KACert_DecodeCrl(raw, der.data(), static_cast<uint32_t>(der.size())));
    uint32_t length = 0;
    KA_STEP(KACert_GetCrlAttributeChar(raw, CRL_RevokedCertificates_DER, nullptr, &length));
    if (length == 0)
        return KACERT_Ok;
    const Owned<uint8_t> entries = KA_BLOCK(length);
    if (entries == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    KA_STEP(KACert_GetCrlAttributeChar(raw, CRL_RevokedCertificates_DER, entries.get(), &length));
    crl.reset();
    KA_STEP(KACert_SetCrlAttributeChar(&ctx, CRL_RevokedCertificates_DER, entries.get(), static_cast<int32_t>(length)));
    return KACERT_Ok;
}

} // namespace

int32_t KACert_CreateCrlEncodeCtx_Ex(CrlEncodeCtx **out, const uint8_t *der, int32_t length) {
    KA_FRAME("KACert_CreateCrlEncodeCtx_Ex");
    if (out == nullptr || der == nullptr || length < 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Issuer issuer;
    KA_PASS(readIssuer(Bytes(der, static_cast<size_t>(length)), issuer));
    CrlEncodeCtx *raw = nullptr;
    KA_STEP(KACert_CreateCrlEncodeCtx(&raw));
    CrlPtr ctx(raw);
    KA_PASS(seed(raw, issuer));
    *out = ctx.release();
    return KA_DONE();
}

int32_t setCRL2Context(CrlEncodeCtx *ctx, const uint8_t *der, int32_t length) {
    KA_TRACE("=====>KACert_SetRevokedCert START");
    if (ctx == nullptr || der == nullptr || length < 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------>input error");
    KA_PASS(carryOver(*ctx, Bytes(der, static_cast<size_t>(length))));
    KA_TRACE("=====>KACert_SetRevokedCert END");
    return KACERT_Ok;
}
