#include "ka_cert.h"

namespace karil {

namespace {

using Ctx = CertEncodeCtx;

void clearExtensions(CertExtensions &ext) {
    freeData(ext.authorityKeyId.keyId);
    freeData(ext.subjectKeyId.keyId);
    freeData(ext.keyUsage.bits);
    const NodePtr<PolicyNode> policy(ext.certPolicy.policy);
    freeGeneralNames(ext.subjectAltName.names);
    freeGeneralNames(ext.issuerAltName.names);
    freeData(ext.basicConstraints.pathLen);
    freeData(ext.extKeyUsage.mask);
    freeList(ext.extKeyUsage.definedOids);
    freeList(ext.crlDistPoints.first);
    freeList(ext.authorityInfo.first);
    freeList(ext.privateExtensions);
}

void clearContext(Ctx &ctx) {
    for (Anybuf *field : {&ctx.encoded, &ctx.tbs, &ctx.outerSignatureAlgorithm.oid, &ctx.signature, &ctx.issuerText,
                          &ctx.subjectText, &ctx.serialNumber, &ctx.innerSignatureAlgorithm.oid,
                          &ctx.publicKeyAlgorithm.oid, &ctx.publicKey, &ctx.subjectDer, &ctx.issuerDer})
        freeData(*field);
    clearSecret(ctx.signKey);
    KI_FreeName(ctx.issuer.next);
    KI_FreeName(ctx.subject.next);
    clearExtensions(ctx.extensions);
    freeKept(ctx.kept);
}

// The Int ids. A time is set in the slot of a GeneralizedTime, and asked for in that of a UTCTime.
template <CertTime Ctx::*Time> Status setTime(Ctx &ctx, int32_t value) {
    (ctx.*Time).generalizedValue = value;
    (ctx.*Time).isUtc = 1;
    return KACERT_Ok;
}
template <CertTime Ctx::*Time> void getTime(const Ctx &ctx, int32_t &value) {
    value = (ctx.*Time).utcValue;
}

Status setVersion(Ctx &ctx, int32_t value) {
    ctx.version = value;
    ctx.hasVersion = 1;
    return KACERT_Ok;
}
void getVersion(const Ctx &ctx, int32_t &value) {
    value = ctx.hasVersion != 0 ? ctx.version : 0;
}

constexpr IntAttribute<Ctx> IntRows[] = {
    KA_INT_ROW(CERT_VERSION, setVersion, getVersion),
    KA_INT_ROW(CERT_VALIDFROM, setTime<&Ctx::notBefore>, getTime<&Ctx::notBefore>),
    KA_INT_ROW(CERT_VALIDTO, setTime<&Ctx::notAfter>, getTime<&Ctx::notAfter>),
};

} // namespace

} // namespace karil

using namespace karil;

int32_t KACert_CreateCertEncodeCtx(CertEncodeCtx **out) {
    return KA_FRAMED("KACert_CreateCertEncodeCtx",
                     createContext(out, {&CertEncodeCtx::outerSignatureAlgorithm,
                                         &CertEncodeCtx::innerSignatureAlgorithm, &CertEncodeCtx::publicKeyAlgorithm}));
}

int32_t KACert_CreateCertDecodeCtx(CertDecodeCtx **out) {
    return KA_TWIN("KACert_CreateCertDecodeCtx", KACert_CreateCertEncodeCtx(out));
}

int32_t KACert_DestroyCertEncodeCtx(CertEncodeCtx *ctx) {
    return KA_FRAMED("KACert_DestroyCertEncodeCtx", destroyContext(ctx, clearContext));
}

int32_t KACert_DestroyCertDecodeCtx(CertDecodeCtx *ctx) {
    return KA_TWIN("KACert_DestroyCertDecodeCtx", KACert_DestroyCertEncodeCtx(ctx));
}

int32_t KACert_SetCertSignFunc(CertEncodeCtx *ctx, KACertSignFunc hook, const void *parameter, uint32_t length) {
    return KA_FRAMED("KACert_SetCertSignFunc", setSignHook(ctx, hook, parameter, length));
}

int32_t KACert_SetCertAttributeInt(CertEncodeCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KACert_SetCertAttributeInt", setInt(IntRows, ctx, id, value));
}

int32_t KACert_GetCertAttributeInt(const CertDecodeCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KACert_GetCertAttributeInt", getInt(IntRows, ctx, id, value));
}
