// The numbered attributes of a request.
#include "ka_ocsp_srequest.h"

namespace karil {

namespace {

using Ctx = RequestCtx;
using Ext = OcspExtension;

// What several ids do with an extension: its type, and its flag if it has one.
template <auto... Type> Status storeType(Ctx &ctx, Bytes oid) {
    return setOctets(fieldOf<Type..., &AlgorithmRecord::oid>(ctx.extensions), oid);
}
template <const auto &Oid, auto... Type> Status switchType(Ctx &ctx, Bytes) {
    return storeType<Type...>(ctx, Oid);
}

Status storeNonceType(Ctx &ctx) {
    return isGiven(ctx.extensions.nonceType.oid) ? KACERT_Ok : storeType<&Ext::nonceType>(ctx, OidNonce);
}

Status storeCrlIdType(Ctx &ctx) {
    return storeType<&Ext::crlId, &OcspCrlId::type>(ctx, OidCrlId);
}

Status switchNonce(Ctx &ctx, Bytes) {
    ctx.extensions.hasNonce = 1;
    return storeNonceType(ctx);
}

Status setNonce(Ctx &ctx, Bytes value) {
    KA_PASS(storeNonceType(ctx));
    return setOctets(ctx.extensions.nonce, value);
}

Status switchCrlId(Ctx &ctx, Bytes) {
    ctx.extensions.hasCrlId = 1;
    return storeCrlIdType(ctx);
}

Status setCrlUrl(Ctx &ctx, Bytes value) {
    KA_PASS(storeCrlIdType(ctx));
    return setFlagged(ctx.extensions.crlId.hasUrl, ctx.extensions.crlId.url, value);
}

Status setResponseType(Ctx &ctx, Bytes value) {
    KA_PASS(storeType<&Ext::acceptableType>(ctx, OidAcceptable));
    return setAcceptable(ctx.extensions, value);
}

Status setNothing(Ctx &, Bytes) {
    return KACERT_Ok;
}

Status answerNothing(Ctx &, const Answer &answer) {
    traceRow(answer.words);
    return KACERT_Ok;
}

Status answerSwitch(Ctx &, const Answer &answer) {
    traceRow(answer.words);
    *answer.length = 1;
    return KACERT_Ok;
}

Status answerNonce(Ctx &ctx, const Answer &answer) {
    const Ext &ext = ctx.extensions;
    return answerIf(ctx.hasExtensions != 0 && ext.hasNonce != 0, answer, bytesOf(ext.nonce));
}

// The nonce, not the URL.
Status answerCrlUrl(Ctx &ctx, const Answer &answer) {
    const Ext &ext = ctx.extensions;
    return answerIf(ctx.hasExtensions != 0 && ext.hasCrlId != 0 && ext.crlId.hasUrl != 0, answer, bytesOf(ext.nonce));
}

Status answerResponseType(Ctx &ctx, const Answer &answer) {
    const Ext &ext = ctx.extensions;
    if (ctx.hasExtensions == 0 || ext.hasAcceptable == 0 || ext.acceptable == nullptr)
        return KACERT_Ok;
    return answerOctets(answer, bytesOf(ext.acceptable->algorithm.oid));
}

Status setRequestor(Ctx &ctx, Bytes value) {
    return setFlagged(ctx.hasDerName, ctx.requestorDer, value);
}

template <uint32_t Kind> Status addToRequestor(Ctx &ctx, Bytes value) {
    KA_PASS(checkNoDerName(ctx.hasDerName));
    return addName(ctx.requestor, Kind, value);
}

void makeSigned(Ctx &ctx) {
    ctx.isSigned = ctx.signature.isSigned = 1;
}

Status setAlgorithm(Ctx &ctx, Bytes value) {
    KA_PASS(setOctets(ctx.signature.algorithm.oid, value));
    ctx.signature.algorithm.id = 1;
    makeSigned(ctx);
    return KACERT_Ok;
}

Status setParameter(Ctx &ctx, Bytes value) {
    KA_PASS(setOctets(ctx.signature.parameter, value));
    makeSigned(ctx);
    return KACERT_Ok;
}

Status addRequestorCertificate(Ctx &ctx, Bytes value) {
    KA_PASS(addCertificate(ctx.signature, value));
    makeSigned(ctx);
    return KACERT_Ok;
}

Status answerRequestorCertificates(Ctx &ctx, const Answer &answer) {
    return answerCertificates(ctx.signature, answer);
}

#define KA_REQUESTOR(ID, KIND) KA_ROW(ID, addToRequestor<KIND>, (answerFromName<KIND, &Ctx::requestor>))

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(OCSP_EXT_NONCE_CRITICAL, switchNonce, answerSwitch),
    KA_ROW(OCSP_EXT_NONCE, setNonce, answerNonce),
    KA_ROW(OCSP_EXT_CRLID_CRITICAL, switchCrlId, answerSwitch),
    KA_ROW(OCSP_EXT_CRL_URL, setCrlUrl, answerCrlUrl),
    KA_ROW(OCSP_EXT_ACCEPTABLERESON_CRITICAL, (switchType<OidAcceptable, &Ext::acceptableType>), answerSwitch),
    KA_ROW(OCSP_EXT_ACCEPTABLERESON, setResponseType, answerResponseType),
    KA_ROW(OCSP_EXT_ARCHIVECUTOFF_CRITICAL, (switchType<OidArchiveCutoff, &Ext::archiveCutoffType>), answerSwitch),
    KA_ROW(OCSP_EXT_ARCHIVECUTOFF, nullptr, answerNothing),
    KA_ROW(OCSP_EXT_CRLENTRY_CRITICAL, (switchType<OidCrlEntry, &Ext::crlEntryType>), answerSwitch),
    KA_ROW(OCSP_EXT_CRLENTRY, setNothing, answerNothing),
    KA_ROW(OCSP_EXT_SERVICELOCATOR_CRITICAL, (switchType<OidServiceLocator, &Ext::serviceLocatorType>), answerSwitch),
    KA_ROW(OCSP_EXT_SERVICELOCATOR_ISSUERNAME, setNothing, answerNothing),
    KA_ROW(OCSP_EXT_SERVICELOCATOR_LOCATOR, setNothing, answerNothing),
    KA_ROW(OCSP_REQUEST_REQUESTOR_DN, setRequestor, answerField<&Ctx::requestorDer>),
    KA_REQUESTOR(OCSP_REQUEST_REQUESTOR_COUNTRY, KA_NAME_COUNTRY),
    KA_REQUESTOR(OCSP_REQUEST_REQUESTOR_STATEORPROVINCE, KA_NAME_STATEORPROVINCE),
    KA_REQUESTOR(OCSP_REQUEST_REQUESTOR_LOCALITY, KA_NAME_LOCALITY),
    KA_REQUESTOR(OCSP_REQUEST_REQUESTOR_ORGANIZATION, KA_NAME_ORGANIZATION),
    KA_REQUESTOR(OCSP_REQUEST_REQUESTOR_ORGANIZATIONALUNIT, KA_NAME_ORGANIZATIONALUNIT),
    KA_REQUESTOR(OCSP_REQUEST_REQUESTOR_COMMONNAME, KA_NAME_COMMONNAME),
    KA_REQUESTOR(OCSP_REQUEST_REQUESTOR_EMAIL, KA_NAME_EMAIL),
    KA_REQUESTOR(OCSP_REQUEST_REQUESTOR_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_ROW(OCSP_REQUEST_REQUESTOR_SIGNALGO, setAlgorithm,
           (answerField<&Ctx::signature, &OcspSignature::algorithm, &AlgorithmRecord::oid>)),
    KA_ROW(OCSP_REQUEST_REQUESTOR_PARAM, setParameter, (answerField<&Ctx::signature, &OcspSignature::parameter>)),
    KA_ROW(OCSP_REQUEST_REQUESTOR_CERTS, addRequestorCertificate, answerRequestorCertificates),
};

Status setCrlNumber(Ctx &ctx, int32_t value) {
    OcspCrlId &crlId = ctx.extensions.crlId;
    ctx.hasExtensions = ctx.extensions.hasCrlId = crlId.hasNumber = 1;
    KA_PASS(storeCrlIdType(ctx));
    crlId.number = static_cast<uint32_t>(value);
    return KACERT_Ok;
}

Status setCrlTime(Ctx &ctx, int32_t value) {
    OcspCrlId &crlId = ctx.extensions.crlId;
    ctx.hasExtensions = ctx.extensions.hasCrlId = crlId.hasTime = 1;
    KA_PASS(storeCrlIdType(ctx));
    crlId.isUtc = 0;
    crlId.time = value;
    return KACERT_Ok;
}

Status setArchiveCutoff(Ctx &ctx, int32_t value) {
    ctx.hasExtensions = ctx.extensions.hasArchiveCutoff = 1;
    KA_PASS(storeType<&Ext::archiveCutoffType>(ctx, OidArchiveCutoff));
    ctx.extensions.archiveCutoff.isUtc = 0;
    ctx.extensions.archiveCutoff.generalizedValue = value;
    return KACERT_Ok;
}

Status setVersion(Ctx &ctx, int32_t value) {
    ctx.version = static_cast<uint32_t>(value);
    ctx.hasVersion = 1;
    return KACERT_Ok;
}

bool hasCrlField(const Ctx &ctx, uint8_t flag) {
    return ctx.hasExtensions != 0 && ctx.extensions.hasCrlId != 0 && flag != 0;
}

void getCrlNumber(const Ctx &ctx, int32_t &value) {
    const OcspCrlId &crlId = ctx.extensions.crlId;
    value = hasCrlField(ctx, crlId.hasNumber) ? static_cast<int32_t>(crlId.number) : value;
}

void getCrlTime(const Ctx &ctx, int32_t &value) {
    const OcspCrlId &crlId = ctx.extensions.crlId;
    value = hasCrlField(ctx, crlId.hasTime) ? crlId.time : value;
}

void getVersion(const Ctx &ctx, int32_t &value) {
    value = static_cast<int32_t>(ctx.version);
}

constexpr IntAttribute<Ctx> IntRows[] = {
    KA_INT_ROW(OCSP_EXT_CRL_NUM, setCrlNumber, getCrlNumber),
    KA_INT_ROW(OCSP_EXT_CRL_TIME, setCrlTime, getCrlTime),
    KA_INT_ROW(OCSP_REQUEST_VERSION, setVersion, getVersion),
    KA_INT_ROW(OCSP_EXT_ARCHIVECUTOFF, setArchiveCutoff, nullptr),
};

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_OCSP_SetRequestAttributeChar(RequestCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_OCSP_SetRequestAttributeChar", setItem(Rows, ctx, id, value, length, RequestRefusals));
}

int32_t KA_OCSP_GetRequestAttributeChar(RequestCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_OCSP_GetRequestAttributeChar", getItem(Rows, ctx, id, result, resultLength));
}

int32_t KA_OCSP_SetRequestAttributeInt(RequestCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KA_OCSP_SetRequestAttributeInt", setNumber(IntRows, ctx, id, value, RequestRefusals));
}

int32_t KA_OCSP_GetRequestAttributeInt(RequestCtx *ctx, int32_t id, int32_t *value) {
    KA_FRAME("KA_OCSP_GetRequestAttributeInt");
    KA_PASS(getNumber(IntRows, ctx, id, value));
    if (id == OCSP_REQUEST_VERSION)
        ctx->hasVersion = 1;
    return KA_DONE();
}
