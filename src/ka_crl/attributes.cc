// The attribute ids of the Char functions: a row each, with what Set and Get do.
#include "ka_crl.h"

namespace karil {

namespace {

using Ctx = CrlEncodeCtx;
using Ext = CrlExtensions;

Status addEntry(Ctx &ctx, Bytes serialNumber) {
    EntryPtr entry = newEntry(serialNumber);
    if (entry == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    append<&RevokedEntry::next>(ctx.firstRevoked, ctx.revokedLast, entry.release());
    ctx.hasRevoked = 1;
    return KACERT_Ok;
}

Status setLastReason(Ctx &ctx, Bytes value) {
    RevokedEntry *entry = lastEntry(ctx);
    if (entry == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    return setReason(*entry, value);
}

Status setAuthorityKeyId(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    KA_PASS(setOnce(ext.hasAuthorityKeyId, ext.authorityKeyId.keyId, value));
    ext.authorityKeyId.hasKeyId = 1;
    ext.authorityKeyId.critical = 0;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

// CRL number and delta CRL indicator; `Critical`: what the flag becomes.
template <uint8_t Ext::*Flag, CrlNumberExtension Ext::*Field, uint8_t Critical>
Status setNumber(Ctx &ctx, Bytes value) {
    CrlNumberExtension &field = ctx.extensions.*Field;
    KA_PASS(setOnce(ctx.extensions.*Flag, field.value, value));
    field.value.tag = TagInteger;
    field.critical = Critical;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

template <uint8_t Ext::*Flag, CrlNumberExtension Ext::*Field> Status answerNumber(Ctx &ctx, const Answer &answer) {
    const Anybuf &value = (ctx.extensions.*Field).value;
    return answerIf(ctx.hasExtensions == 1 && ctx.extensions.*Flag == 1 && value.data != nullptr, answer,
                    bytesOf(value));
}

Status setIssuingDist(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    KA_PASS(setOnce(ext.hasIssuingDist, ext.issuingDist.fullName, value));
    ext.issuingDist.critical = 1;
    return KACERT_Ok;
}

Status setEntries(Ctx &ctx, Bytes value) {
    return setTagged(ctx.revokedDer, value, ctx.revokedDer.tag);
}

Status answerOuterAlgorithm(Ctx &ctx, const Answer &answer) {
    return answerWithLengthOf(ctx.outerSignatureAlgorithm.oid, answer, ctx.innerSignatureAlgorithm.oid);
}

Status answerSerialNumber(Ctx &ctx, const Answer &answer) {
    return answerOctets(answer, ctx.currentRevoked != nullptr ? bytesOf(ctx.currentRevoked->serialNumber) : Bytes{});
}

Status answerReason(Ctx &ctx, const Answer &answer) {
    const RevokedEntry *entry = ctx.currentRevoked;
    if (entry == nullptr || entry->hasEntryExtensions != 1 || entry->hasReason != 1)
        return KACERT_Ok;
    return answerOctets(answer, bytesOf(entry->reason));
}

Status goToNext(Ctx &ctx, const Answer &answer) {
    KA_TRACE(answer.words);
    if (ctx.currentRevoked != nullptr)
        ctx.currentRevoked = ctx.currentRevoked->next;
    return KACERT_Ok;
}

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(CRL_TBS_CERTLIST, nullptr, answerField<&Ctx::tbs>),
    KA_ROW(CRL_OUTER_SIGNATUREALGORITHM, (setField<TagObjectId, &Ctx::outerSignatureAlgorithm, &AlgorithmRecord::oid>),
           answerOuterAlgorithm),
    KA_ROW(CRL_CA_SIGNATURE, (setField<TagBitString, &Ctx::signature>), answerField<&Ctx::signature>),
    KA_ROW(CRL_INNER_SIGNATUREALGORITHM, (setField<TagObjectId, &Ctx::innerSignatureAlgorithm, &AlgorithmRecord::oid>),
           (answerField<&Ctx::innerSignatureAlgorithm, &AlgorithmRecord::oid>)),
    KA_ROW(CRL_ISSUER_DN, nullptr, (answerLine<&Ctx::issuerText, &Ctx::issuer>)),
    KA_ISSUER(CRL_ISSUER_COUNTRYNAME, KA_NAME_COUNTRY),
    KA_ISSUER(CRL_ISSUER_STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE),
    KA_ISSUER(CRL_ISSUER_LOCALITYNAME, KA_NAME_LOCALITY),
    KA_ISSUER(CRL_ISSUER_ORGANIZATIONNAME, KA_NAME_ORGANIZATION),
    KA_ISSUER(CRL_ISSUER_ORGANIZATIONALUNITNAME, KA_NAME_ORGANIZATIONALUNIT),
    KA_ISSUER(CRL_ISSUER_COMMONNAME, KA_NAME_COMMONNAME),
    KA_ROW(CRL_ISSUER_EMAIL, nullptr, (answerFromName<KA_NAME_EMAIL, &Ctx::issuer>)),
    KA_ISSUER(CRL_ISSUER_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_ISSUER(CRL_ISSUER_POSTALCODE, KA_NAME_POSTALCODE),
    KA_ISSUER(CRL_ISSUER_TELEPHONE, KA_NAME_TELEPHONE),

    KA_ROW(CRL_CERT_SERIALNUMBER, addEntry, answerSerialNumber),
    KA_ROW(CRL_CERT_NEXT, nullptr, goToNext),

    KA_ROW_AS(CRLEX_AUTHORITY_KEYIDENTIFIER_CRITICAL, "CERTEX_AUTHORITY_KEYIDENTIFIER",
              setCritical<&Ext::authorityKeyId>, nullptr),
    KA_ROW(CRLEX_AUTHORITY_KEYIDENTIFIER, setAuthorityKeyId, nullptr),
    KA_ROW(CRLEX_CRLNUMBER_CRITICAL, setCritical<&Ext::crlNumber>, nullptr),
    KA_ROW(CRLEX_CRLNUMBER, (setNumber<&Ext::hasCrlNumber, &Ext::crlNumber, 0>),
           (answerNumber<&Ext::hasCrlNumber, &Ext::crlNumber>)),
    KA_ROW_AS(CRLEX_DELTACRLINDICATOR_CRITICAL, "CRLEX_CRLNUMBER_CRITICAL", setCritical<&Ext::deltaCrl>, nullptr),
    KA_ROW(CRLEX_DELTACRLINDICATOR, (setNumber<&Ext::hasDeltaCrl, &Ext::deltaCrl, 1>),
           (answerNumber<&Ext::hasDeltaCrl, &Ext::deltaCrl>)),
    KA_ROW(CRLEX_ISSUINGDIST_CRITICAL, setCritical<&Ext::issuingDist>, nullptr),
    KA_ROW(CRLEX_ISSUINGDIST_FULLNAME, setIssuingDist, nullptr),
    KA_ROW(CRLEX_CRLREASON, setLastReason, answerReason),

    KA_ROW(CRL_ISSUER_DERDN, setNameElement<&Ctx::issuerDer>, nullptr),
    KA_ROW(CRL_RevokedCertificates_DER, setEntries, answerField<&Ctx::revokedDer>),
};

} // namespace

} // namespace karil

using namespace karil;

int32_t KACert_SetCrlAttributeChar(CrlEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KACert_SetCrlAttributeChar", setAttribute(Rows, ctx, id, value, length));
}

int32_t KACert_GetCrlAttributeChar(CrlDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KACert_GetCrlAttributeChar");
    uint32_t untouched = 0;
    if (id == CRL_CERT_NEXT && resultLength == nullptr)
        resultLength = &untouched;
    KA_PASS(getAttribute(Rows, ctx, id, result, resultLength));
    return KA_DONE();
}
