#include "ka_crl.h"

namespace karil {

namespace {

void clearContext(CrlEncodeCtx &ctx) {
    CrlExtensions &ext = ctx.extensions;
    for (Anybuf *field : {&ctx.issuerText, &ctx.encoded, &ctx.tbs, &ctx.outerSignatureAlgorithm.oid, &ctx.signature,
                          &ctx.innerSignatureAlgorithm.oid, &ext.authorityKeyId.keyId, &ext.crlNumber.value,
                          &ext.deltaCrl.value, &ext.issuingDist.fullName, &ctx.issuerDer, &ctx.revokedDer})
        freeData(*field);
    clearSecret(ctx.signKey);
    KI_FreeName(ctx.issuer.next);
    while (ctx.firstRevoked != nullptr) {
        const EntryPtr entry(ctx.firstRevoked);
        ctx.firstRevoked = entry->next;
    }
    freeKept(ctx.kept);
}

// Where an Int id stands in the context; null for an entry's date while there is no such entry.
const CertTime *timeOf(const CrlEncodeCtx &ctx, int32_t id) {
    switch (id) {
    case CRL_THISUPDATE:
        return &ctx.thisUpdate;
    case CRL_NEXTUPDATE:
        return ctx.hasNextUpdate != 0 ? &ctx.nextUpdate : nullptr;
    default:
        return ctx.currentRevoked != nullptr ? &ctx.currentRevoked->revocationDate : nullptr;
    }
}

void setTime(CertTime &time, int32_t value) {
    time.utcValue = value;
    time.isUtc = 1;
}

} // namespace

RevokedEntry *lastEntry(CrlEncodeCtx &ctx) {
    RevokedEntry *entry = ctx.revokedLast != nullptr ? ctx.revokedLast : ctx.firstRevoked;
    while (entry != nullptr && entry->next != nullptr)
        entry = entry->next;
    return entry;
}

} // namespace karil

using namespace karil;

int32_t KACert_CreateCrlEncodeCtx(CrlEncodeCtx **out) {
    KA_FRAME("KACert_CreateCrlEncodeCtx");
    if (out == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    CrlEncodeCtx *ctx = KA_CREATE(CrlEncodeCtx);
    if (ctx == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    ctx->outerSignatureAlgorithm.id = 1;
    ctx->innerSignatureAlgorithm.id = 1;
    *out = ctx;
    return KA_DONE();
}

int32_t KACert_CreateCrlDecodeCtx(CrlDecodeCtx **out) {
    KA_FRAME("KACert_CreateCrlDecodeCtx");
    KA_STEP(KACert_CreateCrlEncodeCtx(out));
    return KA_DONE();
}

int32_t KACert_DestroyCrlEncodeCtx(CrlEncodeCtx *ctx) {
    KA_FRAME("KACert_DestroyCrlEncodeCtx");
    if (ctx != nullptr) {
        clearContext(*ctx);
        KAPR_Free(ctx);
    }
    return KA_DONE();
}

int32_t KACert_DestroyCrlDecodeCtx(CrlDecodeCtx *ctx) {
    KA_FRAME("KACert_DestroyCrlDecodeCtx");
    KA_STEP(KACert_DestroyCrlEncodeCtx(ctx));
    return KA_DONE();
}

int32_t KACert_SetCrlSignFunc(CrlEncodeCtx *ctx, KAHookFunc hook, const void *parameter, uint32_t length) {
    KA_FRAME("KACert_SetCrlSignFunc");
    if (ctx == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    KA_PASS(setHook(ctx->signFunc, ctx->signKey, hook, parameter, length));
    return KA_DONE();
}

int32_t KACert_SetCrlAttributeInt(CrlEncodeCtx *ctx, int32_t id, int32_t value) {
    KA_FRAME("KACert_SetCrlAttributeInt");
    if (ctx == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    switch (id) {
    case CRL_VERSION:
        KA_TRACE("======>Set CRL_VERSION");
        ctx->version = value;
        ctx->hasVersion = 1;
        break;
    case CRL_THISUPDATE:
        KA_TRACE("======>Set CRL_THISUPDATE");
        setTime(ctx->thisUpdate, value);
        break;
    case CRL_NEXTUPDATE:
        KA_TRACE("======>Set CRL_NEXTUPDATE");
        setTime(ctx->nextUpdate, value);
        ctx->hasNextUpdate = 1;
        break;
    case CRL_CERT_REVOCATIONDATE: {
        KA_TRACE("======>Set CRL_REVOCATIONDATE");
        RevokedEntry *entry = lastEntry(*ctx);
        if (entry == nullptr)
            return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
        setTime(entry->revocationDate, value);
        break;
    }
    default:
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Set KACERT_AttributeNotSupportErr");
    }
    return KA_DONE();
}

int32_t KACert_GetCrlAttributeInt(const CrlDecodeCtx *ctx, int32_t id, int32_t *value) {
    KA_FRAME("KACert_GetCrlAttributeInt");
    if (ctx == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    switch (id) {
    case CRL_VERSION:
        KA_TRACE("======>Get CRL_VERSION");
        if (ctx->hasVersion != 0)
            *value = ctx->version;
        break;
    case CRL_THISUPDATE:
    case CRL_NEXTUPDATE:
    case CRL_CERT_REVOCATIONDATE:
        KA_TRACE(id == CRL_THISUPDATE   ? "======>Get CRL_THISUPDATE"
                 : id == CRL_NEXTUPDATE ? "======>Get CRL_NEXTUPDATE"
                                        : "======>Get CRL_CERT_REVOCATIONDATE");
        if (const CertTime *time = timeOf(*ctx, id))
            *value = time->isUtc != 0 ? time->utcValue : time->generalizedValue;
        break;
    default:
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Get KACERT_AttributeNotSupportErr");
    }
    return KA_DONE();
}
