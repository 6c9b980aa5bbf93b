#include "ka_cert.h"

namespace karil {

void clearNode(PolicyNode &node) {
    freeData(node.oid);
    freeList(node.cps);
}

namespace {

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

void clearContext(CertEncodeCtx &ctx) {
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

} // namespace

} // namespace karil

using namespace karil;

int32_t KACert_CreateCertEncodeCtx(CertEncodeCtx **out) {
    KA_FRAME("KACert_CreateCertEncodeCtx");
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    CertEncodeCtx *ctx = KA_CREATE(CertEncodeCtx);
    if (ctx == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    ctx->outerSignatureAlgorithm.id = 1;
    ctx->innerSignatureAlgorithm.id = 1;
    ctx->publicKeyAlgorithm.id = 1;
    *out = ctx;
    return KA_DONE();
}

int32_t KACert_CreateCertDecodeCtx(CertDecodeCtx **out) {
    KA_FRAME("KACert_CreateCertDecodeCtx");
    KA_STEP(KACert_CreateCertEncodeCtx(out));
    return KA_DONE();
}

int32_t KACert_DestroyCertEncodeCtx(CertEncodeCtx *ctx) {
    KA_FRAME("KACert_DestroyCertEncodeCtx");
    if (ctx != nullptr) {
        clearContext(*ctx);
        KAPR_Free(ctx);
    }
    return KA_DONE();
}

int32_t KACert_DestroyCertDecodeCtx(CertDecodeCtx *ctx) {
    KA_FRAME("KACert_DestroyCertDecodeCtx");
    KA_STEP(KACert_DestroyCertEncodeCtx(ctx));
    return KA_DONE();
}

int32_t KACert_SetCertSignFunc(CertEncodeCtx *ctx, KACertSignFunc hook, const void *parameter, uint32_t length) {
    KA_FRAME("KACert_SetCertSignFunc");
    if (ctx == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(setHook(ctx->signFunc, ctx->signKey, hook, parameter, length));
    return KA_DONE();
}

int32_t KACert_SetCertAttributeInt(CertEncodeCtx *ctx, int32_t id, int32_t value) {
    KA_FRAME("KACert_SetCertAttributeInt");
    if (ctx == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    switch (id) {
    case CERT_VERSION:
        KA_TRACE("======>Set CERT_VERSION");
        ctx->version = value;
        ctx->hasVersion = 1;
        break;
    case CERT_VALIDFROM:
        KA_TRACE("======>Set CERT_VALIDFROM");
        ctx->notBefore.generalizedValue = value;
        ctx->notBefore.isUtc = 1;
        break;
    case CERT_VALIDTO:
        KA_TRACE("======>Set CERT_VALIDTO");
        ctx->notAfter.generalizedValue = value;
        ctx->notAfter.isUtc = 1;
        break;
    default:
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Set KACERT_AttributeNotSupportErr");
    }
    return KA_DONE();
}

int32_t KACert_GetCertAttributeInt(const CertDecodeCtx *ctx, int32_t id, int32_t *value) {
    KA_FRAME("KACert_GetCertAttributeInt");
    if (ctx == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    switch (id) {
    case CERT_VERSION:
        KA_TRACE("======>Get CERT_VERSION");
        *value = ctx->hasVersion != 0 ? ctx->version : 0;
        break;
    case CERT_VALIDFROM:
        KA_TRACE("======>Get CERT_VALIDFROM");
        *value = ctx->notBefore.utcValue;
        break;
    case CERT_VALIDTO:
        KA_TRACE("======>Get CERT_VALIDTO");
        *value = ctx->notAfter.utcValue;
        break;
    default:
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Get KACERT_AttributeNotSupportErr");
    }
    return KA_DONE();
}
