// The attribute ids of the Char functions: a row each, with what Set and Get do.
#include "ka_csr.h"

#include "attribute_rows.h"

namespace karil {

namespace {

using Ctx = CsrEncodeCtx;

#define KA_SUBJECT_AS(ID, GET_WORDS, KIND)                                                                             \
    {                                                                                                                  \
        ID, "======>Set " #ID, "======>Get " GET_WORDS, "======>Get " GET_WORDS " LEN",                                \
            KA_SET(appendName(ctx.subject, ctx.subjectLast, KIND, value)), KA_GET(giveName(ctx.subject, KIND, answer)) \
    }
#define KA_SUBJECT(ID, KIND) KA_SUBJECT_AS(ID, #ID, KIND)

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(CSR_TBS_CSR, nullptr, KA_GET(give(answer, bytesOf(ctx.tbs)))),
    KA_ROW(CSR_OUTER_SIGNATUREALGORITHM, KA_SET(setTagged(ctx.outerSignatureAlgorithm.oid, value, TagObjectId)),
           KA_GET(give(answer, bytesOf(ctx.outerSignatureAlgorithm.oid)))),
    KA_ROW(CSR_SELF_SIGNATURE, KA_SET(setTagged(ctx.signature, value, TagBitString)),
           KA_GET(give(answer, bytesOf(ctx.signature)))),
    KA_SUBJECT(CSR_SUBJECT_COUNTRYNAME, KA_NAME_COUNTRY),
    KA_SUBJECT(CSR_SUBJECT_STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE),
    KA_SUBJECT(CSR_SUBJECT_LOCALITYNAME, KA_NAME_LOCALITY),
    KA_SUBJECT(CSR_SUBJECT_ORGANIZATIONNAME, KA_NAME_ORGANIZATION),
    KA_SUBJECT(CSR_SUBJECT_ORGANIZATIONALUNITNAME, KA_NAME_ORGANIZATIONALUNIT),
    KA_SUBJECT(CSR_SUBJECT_COMMONNAME, KA_NAME_COMMONNAME),
    KA_SUBJECT_AS(CSR_SUBJECT_EMAIL, "CSR_SUBJECT_COMMONNAME", KA_NAME_EMAIL),
    KA_SUBJECT(CSR_SUBJECT_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_SUBJECT(CSR_SUBJECT_POSTALCODE, KA_NAME_POSTALCODE),
    KA_SUBJECT(CSR_SUBJECT_TELEPHONE, KA_NAME_TELEPHONE),
    KA_ROW(CSR_PUBLICKEY_ALGORITHM, KA_SET(setTagged(ctx.publicKeyAlgorithm.oid, value, TagObjectId)),
           KA_GET(give(answer, bytesOf(ctx.publicKeyAlgorithm.oid)))),
    KA_ROW(CSR_SUBJECTPUBLICKEYINFO, KA_SET(setTagged(ctx.publicKey, value, TagSequence)),
           KA_GET(give(answer, bytesOf(ctx.publicKey)))),
};

} // namespace

Attributes<CsrEncodeCtx> csrAttributes() {
    return Rows;
}

} // namespace karil

using namespace karil;

int32_t KACert_SetCsrAttributeChar(CsrEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KACert_SetCsrAttributeChar",
                     setAttribute(csrAttributes(), ctx, id, value, length, KACERT_MemoryErr));
}

int32_t KACert_GetCsrAttributeChar(CsrDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_GetCsrAttributeChar", getAttribute(csrAttributes(), ctx, id, result, resultLength));
}
