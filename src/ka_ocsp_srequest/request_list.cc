#include "ka_ocsp_srequest.h"

namespace karil {

namespace {

using Ctx = RequestListCtx;

void prepare(Ctx &ctx) {
    ctx.certId.hashAlgorithm.id = 1;
}

void clearContext(Ctx &ctx) {
    clearCertId(ctx.certId);
    freeKept(ctx.kept);
}

constexpr Attribute<Ctx> Rows[] = {
    KA_CERT_ID_ROW(OCSP_REQUESTLIST_SERIALNUMBER, serialNumber),
    KA_CERT_ID_ROW(OCSP_REQUESTLIST_ISSUERNAME, issuerName),
    KA_CERT_ID_ROW(OCSP_REQUESTLIST_ISSUERKEY, issuerKey),
    KA_ROW(OCSP_REQUESTLIST_ISSUERHASHNAME, nullptr, (answerField<&Ctx::certId, &OcspCertId::hashedName>)),
    KA_ROW(OCSP_REQUESTLIST_ISSUERHASHKEY, nullptr, (answerField<&Ctx::certId, &OcspCertId::hashedKey>)),
    KA_CERT_ID_ALGORITHM_ROW(OCSP_REQUESTLIST_HASHALGO),
    KA_CERT_ID_ROW(OCSP_REQUESTLIST_PARAM, parameter),
    KA_ROW(OCSP_REQUESTLIST_CERTID, setWholeCertId, (answerField<&Ctx::certId, &OcspCertId::whole>)),
};

// Request ::= SEQUENCE { CertID }, or what was set in its place
Status writeSingleRequest(Writer &out, Ctx &ctx) {
    if (ctx.isWhole != 0) {
        out.octets(bytesOf(ctx.certId.whole));
        return out.status();
    }
    if (ctx.certId.hashFunc == nullptr)
        return refuseItem("------------>Hash Func is NULL");
    if (!isGiven(ctx.certId.serialNumber))
        return refuseItem(ItemMissing);
    const Construct request(out, TagSequence);
    return writeCertId(out, ctx.certId);
}

Status readSingleRequest(const Element &whole, Ctx &ctx) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(whole, fields));
    Element certId;
    KA_PASS(takeItem(fields, certId));
    return readCertId(certId, ctx.certId, ctx.isWhole);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_OCSP_CreateEncodeRequestList(RequestListCtx **out) {
    return KA_FRAMED("KA_OCSP_CreateEncodeRequestList", makeContext(out, prepare));
}

int32_t KA_OCSP_CreateDecodeRequestList(RequestListCtx **out) {
    return KA_TWIN("KA_OCSP_CreateDecodeRequestList", KA_OCSP_CreateEncodeRequestList(out));
}

int32_t KA_OCSP_DestroyEncodeRequestList(RequestListCtx *ctx) {
    return KA_FRAMED("KA_OCSP_DestroyEncodeRequestList", endContext(ctx, clearContext));
}

int32_t KA_OCSP_DestroyDecodeRequestList(RequestListCtx *ctx) {
    return KA_TWIN("KA_OCSP_DestroyDecodeRequestList", KA_OCSP_DestroyEncodeRequestList(ctx));
}

int32_t KA_OCSP_SetRequestListAttributeChar(RequestListCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_OCSP_SetRequestListAttributeChar", setItem(Rows, ctx, id, value, length, RequestRefusals));
}

int32_t KA_OCSP_SetRequestListHashFunc(RequestListCtx *ctx, KAHookFunc hook, const uint8_t *parameter, int32_t length) {
    KA_FRAME("KA_OCSP_SetRequestListHashFunc");
    KA_PASS(checkItems({ctx, reinterpret_cast<const void *>(hook)}));
    KA_PASS(setHook(ctx->certId.hashFunc, ctx->certId.hashParameter, hook, parameter, length, KACERT_InvalidParamErr));
    return KA_DONE();
}

int32_t KA_OCSP_EncodeRequestList(RequestListCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_OCSP_EncodeRequestList", encodeItem(ctx, result, resultLength, writeSingleRequest,
                                                             "------------>pEncodeRequestList is NULL"));
}

int32_t KA_OCSP_DecodeRequestList(RequestListCtx *ctx, const uint8_t *der, uint32_t length) {
    return KA_FRAMED("KA_OCSP_DecodeRequestList", decodeItem(ctx, der, length, readSingleRequest));
}

int32_t KA_OCSP_GetRequestListAttributeChar(RequestListCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_OCSP_GetRequestListAttributeChar", getItem(Rows, ctx, id, result, resultLength));
}
