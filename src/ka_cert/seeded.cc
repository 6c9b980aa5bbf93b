// A certificate context that starts from its issuer's certificate.
#include "ka_cert.h"

namespace karil {

Status readSeed(Bytes der, CertPtr &cert, SeedName &name) {
    CertDecodeCtx *raw = nullptr;
    KA_STEP(KACert_CreateCertDecodeCtx(&raw));
    cert.reset(raw);
    KA_STEP(KACert_DecodeCert(raw, der.data(), static_cast<uint32_t>(der.size())));
    KA_STEP(KACert_GetCertAttributeChar(raw, CERT_SUBJECT_DERDN, nullptr, &name.length));
    if (name.length > sizeof name.octets)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACert_GetCertAttributeChar");
    KA_STEP(KACert_GetCertAttributeChar(raw, CERT_SUBJECT_DERDN, name.octets, &name.length));
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KACert_CreateCertEncodeCtx_Ex(CertEncodeCtx **out, const uint8_t *der, int32_t length) {
    KA_FRAME("KACert_CreateCertEncodeCtx_Ex");
    if (out == nullptr || der == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pDerIssuCert is NULL");
    if (length <= 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pDerIssuCertLen<=0");
    CertPtr cert;
    SeedName name;
    KA_PASS(readSeed(Bytes(der, static_cast<size_t>(length)), cert, name));
    cert.reset();
    CertEncodeCtx *raw = nullptr;
    KA_STEP(KACert_CreateCertEncodeCtx(&raw));
    CertPtr ctx(raw);
    KA_STEP(KACert_SetCertAttributeChar(raw, CERT_ISSUER_DERDN, name.octets, static_cast<int32_t>(name.length)));
    *out = ctx.release();
    return KA_DONE();
}
