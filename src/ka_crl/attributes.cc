// The attribute ids of the Char functions: a row each, with what Set and Get do.
#include "ka_crl.h"

#include "attribute_rows.h"

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

Status setAuthorityKeyId(Ctx &ctx, Ext &ext, Bytes value) {
    KA_PASS(setOnce(ext.hasAuthorityKeyId, ext.authorityKeyId.keyId, value));
    ext.authorityKeyId.hasKeyId = 1;
    ext.authorityKeyId.critical = 0;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setNumber(Ctx &ctx, uint8_t &flag, CrlNumberExtension &field, Bytes value, uint8_t critical) {
    KA_PASS(setOnce(flag, field.value, value));
    field.value.tag = TagInteger;
    field.critical = critical;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setIssuingDist(Ext &ext, Bytes value) {
    KA_PASS(setOnce(ext.hasIssuingDist, ext.issuingDist.fullName, value));
    ext.issuingDist.critical = 1;
    return KACERT_Ok;
}

Status giveNumber(const Ctx &ctx, uint8_t flag, const CrlNumberExtension &field, const Answer &answer) {
    return giveIf(ctx.hasExtensions == 1 && flag == 1 && field.value.data != nullptr, answer, bytesOf(field.value));
}

Status giveSerialNumber(const Ctx &ctx, const Answer &answer) {
    return give(answer, ctx.currentRevoked != nullptr ? bytesOf(ctx.currentRevoked->serialNumber) : Bytes{});
}

Status giveReason(const Ctx &ctx, const Answer &answer) {
    const RevokedEntry *entry = ctx.currentRevoked;
    if (entry == nullptr || entry->hasEntryExtensions != 1 || entry->hasReason != 1)
        return KACERT_Ok;
    return give(answer, bytesOf(entry->reason));
}

Status goToNext(Ctx &ctx, const Answer &answer) {
    KA_TRACE(answer.words);
    if (ctx.currentRevoked != nullptr)
        ctx.currentRevoked = ctx.currentRevoked->next;
    return KACERT_Ok;
}

#define KA_NAME(ID, SET, KIND) KA_ROW(ID, SET, KA_GET(giveName(ctx.issuer, KIND, answer)))
#define KA_ISSUER(ID, KIND) KA_NAME(ID, KA_SET(appendName(ctx.issuer, ctx.issuerLast, KIND, value)), KIND)

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(CRL_TBS_CERTLIST, nullptr, KA_GET(give(answer, bytesOf(ctx.tbs)))),
    KA_ROW(CRL_OUTER_SIGNATUREALGORITHM, KA_SET(setTagged(ctx.outerSignatureAlgorithm.oid, value, TagObjectId)),
           KA_GET(giveCrossed(answer, ctx.innerSignatureAlgorithm.oid, ctx.outerSignatureAlgorithm.oid))),
    KA_ROW(CRL_CA_SIGNATURE, KA_SET(setTagged(ctx.signature, value, TagBitString)),
           KA_GET(give(answer, bytesOf(ctx.signature)))),
    KA_ROW(CRL_INNER_SIGNATUREALGORITHM, KA_SET(setTagged(ctx.innerSignatureAlgorithm.oid, value, TagObjectId)),
           KA_GET(give(answer, bytesOf(ctx.innerSignatureAlgorithm.oid)))),
    KA_ROW(CRL_ISSUER_DN, nullptr, KA_GET(giveText(ctx.issuerText, ctx.issuer, answer))),
    KA_ISSUER(CRL_ISSUER_COUNTRYNAME, KA_NAME_COUNTRY),
    KA_ISSUER(CRL_ISSUER_STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE),
    KA_ISSUER(CRL_ISSUER_LOCALITYNAME, KA_NAME_LOCALITY),
    KA_ISSUER(CRL_ISSUER_ORGANIZATIONNAME, KA_NAME_ORGANIZATION),
    KA_ISSUER(CRL_ISSUER_ORGANIZATIONALUNITNAME, KA_NAME_ORGANIZATIONALUNIT),
    KA_ISSUER(CRL_ISSUER_COMMONNAME, KA_NAME_COMMONNAME),
    KA_NAME(CRL_ISSUER_EMAIL, nullptr, KA_NAME_EMAIL),
    KA_ISSUER(CRL_ISSUER_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_ISSUER(CRL_ISSUER_POSTALCODE, KA_NAME_POSTALCODE),
    KA_ISSUER(CRL_ISSUER_TELEPHONE, KA_NAME_TELEPHONE),

    KA_ROW(CRL_CERT_SERIALNUMBER, KA_SET(addEntry(ctx, value)), KA_GET(giveSerialNumber(ctx, answer))),
    KA_ROW(CRL_CERT_NEXT, nullptr, KA_GET(goToNext(ctx, answer))),
    KA_ROW(CRLEX_CRLREASON, KA_SET(setLastReason(ctx, value)), KA_GET(giveReason(ctx, answer))),

    KA_ROW_AS(CRLEX_AUTHORITY_KEYIDENTIFIER_CRITICAL, "CERTEX_AUTHORITY_KEYIDENTIFIER",
              KA_SET(setFlag(ext.authorityKeyId.critical, value)), nullptr),
    KA_ROW(CRLEX_AUTHORITY_KEYIDENTIFIER, KA_SET(setAuthorityKeyId(ctx, ext, value)), nullptr),
    KA_ROW(CRLEX_CRLNUMBER_CRITICAL, KA_SET(setFlag(ext.crlNumber.critical, value)), nullptr),
    KA_ROW(CRLEX_CRLNUMBER, KA_SET(setNumber(ctx, ext.hasCrlNumber, ext.crlNumber, value, 0)),
           KA_GET(giveNumber(ctx, ext.hasCrlNumber, ext.crlNumber, answer))),
    KA_ROW_AS(CRLEX_DELTACRLINDICATOR_CRITICAL, "CRLEX_CRLNUMBER_CRITICAL",
              KA_SET(setFlag(ext.deltaCrl.critical, value)), nullptr),
    KA_ROW(CRLEX_DELTACRLINDICATOR, KA_SET(setNumber(ctx, ext.hasDeltaCrl, ext.deltaCrl, value, 1)),
           KA_GET(giveNumber(ctx, ext.hasDeltaCrl, ext.deltaCrl, answer))),
    KA_ROW(CRLEX_ISSUINGDIST_CRITICAL, KA_SET(setFlag(ext.issuingDist.critical, value)), nullptr),
    KA_ROW(CRLEX_ISSUINGDIST_FULLNAME, KA_SET(setIssuingDist(ext, value)), nullptr),

    KA_ROW(CRL_ISSUER_DERDN, KA_SET(setDerName(ctx.issuerDer, value)), nullptr),
    KA_ROW(CRL_RevokedCertificates_DER, KA_SET(setTagged(ctx.revokedDer, value, ctx.revokedDer.tag)),
           KA_GET(give(answer, bytesOf(ctx.revokedDer)))),
};

} // namespace

Attributes<CrlEncodeCtx> crlAttributes() {
    return Rows;
}

} // namespace karil

using namespace karil;

int32_t KACert_SetCrlAttributeChar(CrlEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KACert_SetCrlAttributeChar",
                     setAttribute(crlAttributes(), ctx, id, value, length, KACERT_InvalidLengthErr));
}

int32_t KACert_GetCrlAttributeChar(CrlDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KACert_GetCrlAttributeChar");
    uint32_t untouched = 0;
    if (id == CRL_CERT_NEXT && resultLength == nullptr)
        resultLength = &untouched;
    KA_PASS(getAttribute(crlAttributes(), ctx, id, result, resultLength));
    return KA_DONE();
}
