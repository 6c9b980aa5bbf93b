#include "ka_crl.h"

namespace karil {

RevokedEntry *lastEntry(CrlEncodeCtx &ctx) {
    RevokedEntry *entry = ctx.revokedLast != nullptr ? ctx.revokedLast : ctx.firstRevoked;
    while (entry != nullptr && entry->next != nullptr)
        entry = entry->next;
    return entry;
}

namespace {

using Ctx = CrlEncodeCtx;

void clearContext(Ctx &ctx) {
    CrlExtensions &ext = ctx.extensions;
    for (Anybuf *field : {&ctx.issuerText, &ctx.encoded, &ctx.tbs, &ctx.outerSignatureAlgorithm.oid, &ctx.signature,
                          &ctx.innerSignatureAlgorithm.oid, &ext.authorityKeyId.keyId, &ext.crlNumber.value,
                          &ext.deltaCrl.value, &ext.issuingDist.fullName, &ctx.issuerDer, &ctx.revokedDer})
        freeData(*field);
    clearSecret(ctx.signKey);
    KI_FreeName(ctx.issuer.next);
    freeEntries(ctx.firstRevoked);
    freeKept(ctx.kept);
}

Status setVersion(Ctx &ctx, int32_t value) {
    ctx.version = value;
    ctx.hasVersion = 1;
    return KACERT_Ok;
}

Status setTime(CertTime &time, int32_t value) {
    time.utcValue = value;
    time.isUtc = 1;
    return KACERT_Ok;
}

Status setThisUpdate(Ctx &ctx, int32_t value) {
    return setTime(ctx.thisUpdate, value);
}

Status setNextUpdate(Ctx &ctx, int32_t value) {
    ctx.hasNextUpdate = 1;
    return setTime(ctx.nextUpdate, value);
}

Status setRevocationDate(Ctx &ctx, int32_t value) {
    RevokedEntry *entry = lastEntry(ctx);
    KA_PASS(checkPointers({entry}));
    return setTime(entry->revocationDate, value);
}

// What is not there leaves the value as it is.
void getVersion(const Ctx &ctx, int32_t &value) {
    value = ctx.hasVersion != 0 ? ctx.version : value;
}

void getThisUpdate(const Ctx &ctx, int32_t &value) {
    value = secondsOf(ctx.thisUpdate);
}

void getNextUpdate(const Ctx &ctx, int32_t &value) {
    value = ctx.hasNextUpdate != 0 ? secondsOf(ctx.nextUpdate) : value;
}

void getRevocationDate(const Ctx &ctx, int32_t &value) {
    value = ctx.currentRevoked != nullptr ? secondsOf(ctx.currentRevoked->revocationDate) : value;
}

constexpr IntAttribute<Ctx> IntRows[] = {
    KA_INT_ROW(CRL_VERSION, setVersion, getVersion),
    KA_INT_ROW(CRL_THISUPDATE, setThisUpdate, getThisUpdate),
    KA_INT_ROW(CRL_NEXTUPDATE, setNextUpdate, getNextUpdate),
    KA_INT_ROW_AS(CRL_CERT_REVOCATIONDATE, "CRL_REVOCATIONDATE", setRevocationDate, getRevocationDate),
};

} // namespace

} // namespace karil

using namespace karil;

int32_t KACert_CreateCrlEncodeCtx(CrlEncodeCtx **out) {
    return KA_FRAMED("KACert_CreateCrlEncodeCtx", createContext(out, {&CrlEncodeCtx::outerSignatureAlgorithm,
                                                                      &CrlEncodeCtx::innerSignatureAlgorithm}));
}

int32_t KACert_CreateCrlDecodeCtx(CrlDecodeCtx **out) {
    return KA_TWIN("KACert_CreateCrlDecodeCtx", KACert_CreateCrlEncodeCtx(out));
}

int32_t KACert_DestroyCrlEncodeCtx(CrlEncodeCtx *ctx) {
    return KA_FRAMED("KACert_DestroyCrlEncodeCtx", destroyContext(ctx, clearContext));
}

int32_t KACert_DestroyCrlDecodeCtx(CrlDecodeCtx *ctx) {
    return KA_TWIN("KACert_DestroyCrlDecodeCtx", KACert_DestroyCrlEncodeCtx(ctx));
}

int32_t KACert_SetCrlSignFunc(CrlEncodeCtx *ctx, KAHookFunc hook, const void *parameter, uint32_t length) {
    return KA_FRAMED("KACert_SetCrlSignFunc", setSignHook(ctx, hook, parameter, length));
}

int32_t KACert_SetCrlAttributeInt(CrlEncodeCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KACert_SetCrlAttributeInt", setInt(IntRows, ctx, id, value));
}

int32_t KACert_GetCrlAttributeInt(const CrlDecodeCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KACert_GetCrlAttributeInt", getInt(IntRows, ctx, id, value));
}
