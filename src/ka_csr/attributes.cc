// The ids of the Char functions: a row each, with what Set and Get do.
#include "ka_csr.h"

namespace karil {

namespace {

using Ctx = CsrEncodeCtx;

#define KA_SUBJECT_AS(ID, GET_WORDS, KIND)                                                                             \
    KA_ROW_WORDS(ID, #ID, GET_WORDS, (addToName<KIND, &Ctx::subject>), (answerFromName<KIND, &Ctx::subject>))
#define KA_SUBJECT(ID, KIND) KA_SUBJECT_AS(ID, #ID, KIND)

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(CSR_TBS_CSR, nullptr, answerField<&Ctx::tbs>),
    KA_ROW(CSR_OUTER_SIGNATUREALGORITHM, (setField<TagObjectId, &Ctx::outerSignatureAlgorithm, &AlgorithmRecord::oid>),
           (answerField<&Ctx::outerSignatureAlgorithm, &AlgorithmRecord::oid>)),
    KA_ROW(CSR_SELF_SIGNATURE, (setField<TagBitString, &Ctx::signature>), answerField<&Ctx::signature>),
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
    KA_ROW(CSR_PUBLICKEY_ALGORITHM, (setField<TagObjectId, &Ctx::publicKeyAlgorithm, &AlgorithmRecord::oid>),
           (answerField<&Ctx::publicKeyAlgorithm, &AlgorithmRecord::oid>)),
    KA_ROW(CSR_SUBJECTPUBLICKEYINFO, (setField<TagSequence, &Ctx::publicKey>), answerField<&Ctx::publicKey>),
};

} // namespace

} // namespace karil

using namespace karil;

int32_t KACert_SetCsrAttributeChar(CsrEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KACert_SetCsrAttributeChar",
                     setAttribute(Rows, ctx, id, value, length, {.length = KACERT_MemoryErr}));
}

int32_t KACert_GetCsrAttributeChar(CsrDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_GetCsrAttributeChar", getAttribute(Rows, ctx, id, result, resultLength));
}
