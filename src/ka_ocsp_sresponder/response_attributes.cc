// The numbered attributes of a response.
#include "ka_ocsp_sresponder.h"

namespace karil {

namespace {

using Ctx = ResponseCtx;

ResponseId &responderOf(Ctx &ctx) {
    return ctx.basic.data.responder;
}

// A field of the responder's identity, whose flag and the body's are raised.
template <uint8_t ResponseId::*Flag, Anybuf ResponseId::*Field> Status setResponder(Ctx &ctx, Bytes value) {
    KA_PASS(setFlagged(responderOf(ctx).*Flag, responderOf(ctx).*Field, value));
    ctx.hasBody = 1;
    return KACERT_Ok;
}

template <Anybuf ResponseId::*Field> Status answerResponder(Ctx &ctx, const Answer &answer) {
    return answerOctets(answer, bytesOf(responderOf(ctx).*Field));
}

// The flags are raised even if the value is refused.
template <uint32_t Kind> Status addToResponder(Ctx &ctx, Bytes value) {
    ResponseId &responder = responderOf(ctx);
    ctx.hasBody = responder.hasName = 1;
    KA_PASS(checkNoDerName(responder.hasDerName));
    return addName(responder.name, Kind, value);
}

template <uint32_t Kind> Status answerResponderName(Ctx &ctx, const Answer &answer) {
    return answerName(responderOf(ctx).name, Kind, answer);
}

Status addResponderCertificate(Ctx &ctx, Bytes value) {
    return addCertificate(ctx.basic.signature, value);
}

Status answerResponderCertificates(Ctx &ctx, const Answer &answer) {
    return answerCertificates(ctx.basic.signature, answer);
}

#define KA_RESPONDER(ID, KIND) KA_ROW(ID, addToResponder<KIND>, answerResponderName<KIND>)
#define KA_RESPONDER_FIELD(ID, FLAG, FIELD)                                                                            \
    KA_ROW(ID, (setResponder<&ResponseId::FLAG, &ResponseId::FIELD>), (answerResponder<&ResponseId::FIELD>))
#define KA_FIELD_ROW(ID, ...) KA_ROW(ID, (storeField<__VA_ARGS__>), (answerField<__VA_ARGS__>))

constexpr Attribute<Ctx> Rows[] = {
    KA_FIELD_ROW(OCSP_RESPONSE_STATUS, &Ctx::status),
    KA_RESPONDER_FIELD(OCSP_RESPONSE_RESPONDERID_DN, hasDerName, derName),
    KA_RESPONDER(OCSP_RESPONSE_RESPONDERID_COUNTRY, KA_NAME_COUNTRY),
    KA_RESPONDER(OCSP_RESPONSE_RESPONDERID_STATEORPROVINCE, KA_NAME_STATEORPROVINCE),
    KA_RESPONDER(OCSP_RESPONSE_RESPONDERID_LOCALITY, KA_NAME_LOCALITY),
    KA_RESPONDER(OCSP_RESPONSE_RESPONDERID_ORGANIZATION, KA_NAME_ORGANIZATION),
    KA_RESPONDER(OCSP_RESPONSE_RESPONDERID_ORGANIZATIONALUNIT, KA_NAME_ORGANIZATIONALUNIT),
    KA_RESPONDER(OCSP_RESPONSE_RESPONDERID_COMMONNAME, KA_NAME_COMMONNAME),
    KA_RESPONDER(OCSP_RESPONSE_RESPONDERID_EMAIL, KA_NAME_EMAIL),
    KA_RESPONDER(OCSP_RESPONSE_RESPONDERID_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_RESPONDER_FIELD(OCSP_RESPONSE_RESPONDERID_KEY, hasKey, key),
    KA_RESPONDER_FIELD(OCSP_RESPONSE_RESPONDERID_HASHKEY, hasKeyHash, keyHash),
    KA_FIELD_ROW(OCSP_RESPONSE_SIGNALGO, &Ctx::basic, &OcspBasicResponse::signature, &OcspSignature::algorithm,
                 &AlgorithmRecord::oid),
    KA_FIELD_ROW(OCSP_RESPONSE_PARAM, &Ctx::basic, &OcspBasicResponse::signature, &OcspSignature::parameter),
    KA_ROW(OCSP_RESPONSE_CERTS, addResponderCertificate, answerResponderCertificates),
    KA_FIELD_ROW(OCSP_RESPONSETYPE, &Ctx::type),
};

Status setVersion(Ctx &ctx, int32_t value) {
    ctx.hasBody = 1;
    ctx.basic.data.version = value;
    return KACERT_Ok;
}

Status setProducedAt(Ctx &ctx, int32_t value) {
    ctx.basic.data.producedAt.isUtc = 0;
    ctx.basic.data.producedAt.generalizedValue = value;
    return KACERT_Ok;
}

void getVersion(const Ctx &ctx, int32_t &value) {
    value = ctx.hasBody != 0 ? ctx.basic.data.version : value;
}

void getProducedAt(const Ctx &ctx, int32_t &value) {
    value = ctx.hasBody != 0 ? secondsOf(ctx.basic.data.producedAt) : value;
}

constexpr IntAttribute<Ctx> IntRows[] = {
    KA_INT_ROW(OCSP_RESPONSE_VERSION, setVersion, getVersion),
    KA_INT_ROW(OCSP_RESPONSE_PRODUCEDAT, setProducedAt, getProducedAt),
};

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_OCSP_SetResponseAttributeInt(ResponseCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KA_OCSP_SetResponseAttributeInt", setNumber(IntRows, ctx, id, value, ResponseRefusals));
}

int32_t KA_OCSP_SetResponseAttributeChar(ResponseCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_OCSP_SetResponseAttributeChar", setItem(Rows, ctx, id, value, length, ResponseRefusals));
}

int32_t KA_OCSP_GetResponseAttributeInt(const ResponseCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KA_OCSP_GetResponseAttributeInt", getNumber(IntRows, ctx, id, value));
}

int32_t KA_OCSP_GetResponseAttributeChar(ResponseCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_OCSP_GetResponseAttributeChar", getItem(Rows, ctx, id, result, resultLength));
}
