// A certificate context that starts from its issuer's certificate.
#include "ka_cert.h"

using namespace karil;

namespace {

using CertPtr = std::unique_ptr<CertDecodeCtx, By<KACert_DestroyCertDecodeCtx>>;

// The subject of an issuer's certificate, which becomes the issuer of what is seeded with it.
struct SeedName {
    uint8_t octets[2048];
    uint32_t length = 0;
};

Status readSeed(Bytes der, SeedName &name) {
    CertDecodeCtx *raw = nullptr;
    KA_STEP(KACert_CreateCertDecodeCtx(&raw));
    const CertPtr cert(raw);
    KA_STEP(KACert_DecodeCert(raw, der.data(), static_cast<uint32_t>(der.size())));
    KA_STEP(KACert_GetCertAttributeChar(raw, CERT_SUBJECT_DERDN, nullptr, &name.length));
    if (name.length > sizeof name.octets)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACert_GetCertAttributeChar");
    KA_STEP(KACert_GetCertAttributeChar(raw, CERT_SUBJECT_DERDN, name.octets, &name.length));
    return KACERT_Ok;
}

} // namespace

int32_t KACert_CreateCertEncodeCtx_Ex(CertEncodeCtx **out, const uint8_t *der, int32_t length) {
    KA_FRAME("KACert_CreateCertEncodeCtx_Ex");
    if (out == nullptr || der == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pDerIssuCert is NULL");
    if (length <= 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pDerIssuCertLen<=0");
    SeedName name;
    KA_PASS(readSeed(Bytes(der, static_cast<size_t>(length)), name));
    CertEncodeCtx *raw = nullptr;
    KA_STEP(KACert_CreateCertEncodeCtx(&raw));
    CertPtr ctx(raw);
    KA_STEP(KACert_SetCertAttributeChar(raw, CERT_ISSUER_DERDN, name.octets, static_cast<int32_t>(name.length)));
    *out = ctx.release();
    return KA_DONE();
}
