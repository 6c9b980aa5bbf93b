#include "ka_ocsp_sresponder.h"

namespace karil {

namespace {

using Ctx = ResponseListCtx;

constexpr ItemRefusals ListRefusals = {.noMemory = KACERT_MemoryErr,
                                       .ctxWords = "------------>The responder is Invalid Item",
                                       .idWords = "------------>OCSPAttributeType is Invalid Item"};

void prepare(Ctx &ctx) {
    ctx.certId.hashAlgorithm.id = 1;
}

void clearContext(Ctx &ctx) {
    clearCertId(ctx.certId);
    freeData(ctx.reason);
    freeData(ctx.information);
    freeKept(ctx.kept);
}

constexpr Attribute<Ctx> Rows[] = {
    KA_CERT_ID_ROW(OCSP_RESPONDERLIST_SERIALNUMBER, serialNumber),
    KA_CERT_ID_ROW(OCSP_RESPONDERLIST_ISSUERNAME, issuerName),
    KA_ROW(OCSP_RESPONDERLIST_ISSUERHASHNAME, nullptr, (answerField<&Ctx::certId, &OcspCertId::hashedName>)),
    KA_CERT_ID_ROW(OCSP_RESPONDERLIST_ISSUERKEY, issuerKey),
    KA_ROW(OCSP_RESPONDERLIST_ISSUERHASHKEY, nullptr, (answerField<&Ctx::certId, &OcspCertId::hashedKey>)),
    KA_CERT_ID_ALGORITHM_ROW(OCSP_RESPONDERLIST_HASHALGO),
    KA_CERT_ID_ROW(OCSP_RESPONDERLIST_PARAM, parameter),
    KA_ROW(OCSP_RESPONDERLIST_CERTID, setWholeCertId, (answerField<&Ctx::certId, &OcspCertId::whole>)),
};

void setSeconds(CertTime &time, int32_t value) {
    time.isUtc = 0;
    time.generalizedValue = value;
}

Status setThisUpdate(Ctx &ctx, int32_t value) {
    setSeconds(ctx.thisUpdate, value);
    return KACERT_Ok;
}

Status setNextUpdate(Ctx &ctx, int32_t value) {
    setSeconds(ctx.nextUpdate, value);
    ctx.hasNextUpdate = 1;
    return KACERT_Ok;
}

void getThisUpdate(const Ctx &ctx, int32_t &value) {
    value = ctx.thisUpdate.generalizedValue;
}

void getNextUpdate(const Ctx &ctx, int32_t &value) {
    value = ctx.nextUpdate.generalizedValue;
}

constexpr IntAttribute<Ctx> IntRows[] = {
    KA_INT_ROW(OCSP_RESPONDERLIST_THISUPDATE, setThisUpdate, getThisUpdate),
    KA_INT_ROW(OCSP_RESPONDERLIST_NEXTUPDATE, setNextUpdate, getNextUpdate),
};

void setStatus(Ctx &ctx, uint8_t &flag) {
    ctx.isGood = ctx.isRevoked = ctx.isUnknown = 0;
    flag = 1;
}

// Reading a time makes it a GeneralizedTime, and a next update be there.
void afterReading(Ctx &ctx, int32_t id) {
    if (id == OCSP_RESPONDERLIST_THISUPDATE) {
        ctx.thisUpdate.isUtc = 0;
        return;
    }
    ctx.nextUpdate.isUtc = 0;
    ctx.hasNextUpdate = 1;
}

Status answerStatus(const Ctx &ctx, int32_t &status, int32_t *revokedAt, const Answer &reason,
                    const Answer &information) {
    if (ctx.isGood != 0) {
        status = 1;
    } else if (ctx.isRevoked != 0) {
        const bool hasReason = ctx.hasReason != 0;
        KA_PASS(checkItems({revokedAt}));
        if (hasReason)
            KA_PASS(checkItems({reason.result, reason.length}));
        status = 2;
        *revokedAt = secondsOf(ctx.revokedAt);
        return answerIf(hasReason, reason, bytesOf(ctx.reason));
    } else if (ctx.isUnknown != 0) {
        KA_PASS(checkItems({information.result, information.length}));
        status = 3;
        return answerOctets(information, bytesOf(ctx.information));
    }
    return KACERT_Ok;
}

// revoked [1] IMPLICIT SEQUENCE { time, OCTET STRING { ENUMERATED } OPTIONAL }
Status writeRevoked(Writer &out, const Ctx &ctx, LocalClock &clock) {
    const Construct revoked(out, 0xA1);
    KA_PASS(writeTime(out, ctx.revokedAt.isUtc != 0, secondsOf(ctx.revokedAt), clock));
    if (ctx.hasReason != 0) {
        const Construct value(out, TagOctetString);
        out.element(TagEnumerated, bytesOf(ctx.reason));
    }
    return out.status();
}

// CertStatus ::= CHOICE { good [0] IMPLICIT NULL, revoked [1], unknown [2] IMPLICIT OCTET STRING }
Status writeStatus(Writer &out, const Ctx &ctx, LocalClock &clock) {
    if (ctx.isRevoked != 0)
        return writeRevoked(out, ctx, clock);
    if (ctx.isGood != 0)
        out.element(0x80, {});
    else if (ctx.isUnknown != 0)
        out.element(0x82, bytesOf(ctx.information));
    return KACERT_Ok;
}

// SingleResponse ::= SEQUENCE { CertID, CertStatus, thisUpdate, nextUpdate [0] EXPLICIT OPTIONAL }
// A status that could not be written leaves no result, and no failure.
Status writeSingleResponse(Writer &out, Ctx &ctx, bool &isWritten) {
    isWritten = false;
    LocalClock clock;
    const Construct response(out, TagSequence);
    if (ctx.isWhole != 0)
        out.octets(bytesOf(ctx.certId.whole));
    else
        KA_PASS(writeCertId(out, ctx.certId));
    KA_PASS(out.status());
    KA_PASS(writeStatus(out, ctx, clock));
    if (out.status() != KACERT_Ok) {
        KA_TRACE("------------>KAsn1_WriteImplicit");
        return KACERT_Ok;
    }
    KA_PASS(writeTime(out, ctx.thisUpdate.isUtc != 0, secondsOf(ctx.thisUpdate), clock));
    if (ctx.hasNextUpdate != 0) {
        const Construct tagged(out, 0xA0);
        KA_PASS(writeTime(out, ctx.nextUpdate.isUtc != 0, secondsOf(ctx.nextUpdate), clock));
    }
    isWritten = true;
    return out.status();
}

// The first element of what the tag holds, or its octets if it is primitive.
Status readStatus(const Element &element, Ctx &ctx) {
    Implicit choice;
    KA_STEP_AS("------------>KAsn1_ReadImplicit", readImplicit(element, choice));
    if (choice.number == 0)
        setStatus(ctx, ctx.isGood);
    if (choice.number != 1 && choice.number != 2)
        return KACERT_Ok;
    Element content = choice.content;
    if (choice.constructed)
        KA_PASS(takeItem(choice.level, content));
    if (choice.number == 2) {
        KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.information, content));
        setStatus(ctx, ctx.isUnknown);
        return KACERT_Ok;
    }
    // A revoked status: its first element would have to be a SEQUENCE and a time in one.
    if (!content.present())
        return refuseItem();
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(content, fields));
    return KA_FAIL(KACERT_InvalidTagErr, "------------>KAsn1_ReadUtcTime");
}

Status readNextUpdate(const Element &element, Ctx &ctx) {
    Element time;
    KA_PASS(readOpened(element, time));
    if (element.tag != 0xA0)
        return KACERT_Ok;
    // Whatever kind it is, it is read as this one.
    time.tag = TagGeneralizedTime;
    KA_STEP_AS("------------>KAsn1_ReadUtcTime", readTimeAlike(time, ctx.nextUpdate));
    ctx.hasNextUpdate = 1;
    return KACERT_Ok;
}

Status readSingleResponse(const Element &whole, Ctx &ctx) {
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(whole, fields));
    Element field;
    KA_PASS(takeItem(fields, field, "------------>The CertID is Invaild"));
    KA_PASS(readCertId(field, ctx.certId, ctx.isWhole));
    KA_PASS(takeItem(fields, field));
    KA_PASS(readStatus(field, ctx));
    KA_PASS(takeItem(fields, field, "------------>The thisupdate is Invaild"));
    KA_STEP_AS("------------>KAsn1_ReadUtcTime", readTimeAlike(field, ctx.thisUpdate));
    return fields.empty() ? KACERT_Ok : readNextUpdate(fields.take(), ctx);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_OCSP_CreateEncodeResponseList(ResponseListCtx **out) {
    return KA_FRAMED("KA_OCSP_CreateEncodeResponseList", makeContext(out, prepare));
}

int32_t KA_OCSP_CreateDecodeResponseList(ResponseListCtx **out) {
    return KA_TWIN("KA_OCSP_CreateDecodeResponseList", KA_OCSP_CreateEncodeResponseList(out));
}

int32_t KA_OCSP_DestroyEncodeResponseList(ResponseListCtx *ctx) {
    return KA_FRAMED("KA_OCSP_DestroyEncodeResponseList", endContext(ctx, clearContext));
}

int32_t KA_OCSP_DestroyDecodeResponseList(ResponseListCtx *ctx) {
    return KA_TWIN("KA_OCSP_DestroyDecodeResponseList", KA_OCSP_DestroyEncodeResponseList(ctx));
}

int32_t KA_OCSP_SetResponseListAttributeChar(ResponseListCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_OCSP_SetResponseListAttributeChar", setItem(Rows, ctx, id, value, length, ListRefusals));
}

int32_t KA_OCSP_SetResponseListAttributeInt(ResponseListCtx *ctx, int32_t id, int32_t value) {
    KA_FRAME("KA_OCSP_SetResponseListAttributeInt");
    if (value < 0)
        return refuseItem();
    KA_PASS(setNumber(IntRows, ctx, id, value, ListRefusals));
    return KA_DONE();
}

int32_t KA_OCSP_SetResponseListHashFunc(ResponseListCtx *ctx, KAHookFunc hook, const uint8_t *parameter,
                                        int32_t length) {
    KA_FRAME("KA_OCSP_SetResponseListHashFunc");
    if (ctx == nullptr || hook == nullptr)
        return KA_DONE();
    KA_PASS(setHook(ctx->certId.hashFunc, ctx->certId.hashParameter, hook, parameter, length, KACERT_InvalidParamErr));
    return KA_DONE();
}

int32_t KA_OCSP_SetResponseList_CertStatusGood(ResponseListCtx *ctx) {
    KA_FRAME("KA_OCSP_SetResponseList_CertStatusGood");
    KA_PASS(checkItems({ctx}));
    setStatus(*ctx, ctx->isGood);
    return KA_DONE();
}

int32_t KA_OCSP_SetResponseList_CertStatusRevoke(ResponseListCtx *ctx, int32_t time, int32_t, const uint8_t *reason,
                                                 int32_t reasonLength) {
    KA_FRAME("KA_OCSP_SetResponseList_CertStatusRevoke");
    KA_PASS(checkItems({ctx}));
    if (time == 0)
        return refuseItem();
    setStatus(*ctx, ctx->isRevoked);
    setSeconds(ctx->revokedAt, time);
    if (reason != nullptr && reasonLength > 0)
        KA_PASS(setFlagged(ctx->hasReason, ctx->reason, Bytes(reason, static_cast<size_t>(reasonLength))));
    return KA_DONE();
}

int32_t KA_OCSP_SetResponseList_CertStatusUnInfo(ResponseListCtx *ctx, const uint8_t *information, int32_t length) {
    KA_FRAME("KA_OCSP_SetResponseList_CertStatusUnInfo");
    KA_PASS(checkItems({ctx, information}));
    if (length < 1)
        return refuseItem();
    setStatus(*ctx, ctx->isUnknown);
    KA_PASS(setOctets(ctx->information, Bytes(information, static_cast<size_t>(length))));
    return KA_DONE();
}

int32_t KA_OCSP_EncodeResponseList(ResponseListCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KA_OCSP_EncodeResponseList");
    KA_PASS(checkItems({ctx, result, resultLength}, "------------>The Input is invalid Item"));
    Writer response;
    bool isWritten = false;
    KA_PASS(writeSingleResponse(response, *ctx, isWritten));
    if (!isWritten) {
        *resultLength = 0;
        return KACERT_Ok;
    }
    KA_PASS(handOutWhole(response, result, resultLength));
    return KA_DONE();
}

int32_t KA_OCSP_DecodeResponseList(ResponseListCtx *ctx, const uint8_t *der, uint32_t length) {
    return KA_FRAMED("KA_OCSP_DecodeResponseList", decodeItem(ctx, der, length, readSingleResponse));
}

int32_t KA_OCSP_GetResponseListAttributeChar(ResponseListCtx *ctx, int32_t id, uint8_t *result,
                                             uint32_t *resultLength) {
    return KA_FRAMED("KA_OCSP_GetResponseListAttributeChar", getItem(Rows, ctx, id, result, resultLength));
}

int32_t KA_OCSP_GetResponseListAttributeInt(ResponseListCtx *ctx, int32_t id, int32_t *value) {
    KA_FRAME("KA_OCSP_GetResponseListAttributeInt");
    KA_PASS(getNumber(IntRows, ctx, id, value));
    afterReading(*ctx, id);
    return KA_DONE();
}

int32_t KA_OCSP_GetResponseListCertSatus(ResponseListCtx *ctx, int32_t *status, int32_t *revokedAt, uint8_t *reason,
                                         uint32_t *reasonLength, uint8_t *information, uint32_t *informationLength) {
    KA_FRAME("KA_OCSP_GetResponseListCertSatus");
    KA_PASS(checkItems({ctx, status}));
    const char *words = "============>Get the status";
    KA_PASS(answerStatus(*ctx, *status, revokedAt, {reason, reasonLength, words, words},
                         {information, informationLength, words, words}));
    return KA_DONE();
}
