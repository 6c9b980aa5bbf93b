#include "ka_pkcs7_SignedData.h"

namespace karil {

namespace {

using Ctx = SignedDataCtx;

Status setContentType(Ctx &ctx, Bytes value) {
    KA_PASS(setTagged(ctx.contentType.oid, value, TagObjectId));
    ctx.contentSet = 1;
    return KACERT_Ok;
}

Status setContent(Ctx &ctx, Bytes value) {
    KA_PASS(setShared<false>(ctx, value));
    ctx.contentSet = 1;
    return KACERT_Ok;
}

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW_WORDS(PKCS7_SIGNEDDATA_DIGEST_ALGO, "PKCS7_DIGEST_ALGO", "", addDigest, nullptr),
    KA_ROW_WORDS(PKCS7_SIGNEDDATA_CONTENTTYPE, "PKCS7_CONTENTTYPE", "PKCS7_CONTENTTYPE", setContentType,
                 (answerField<&Ctx::contentType, &AlgorithmRecord::oid>)),
    KA_ROW_WORDS(PKCS7_SIGNEDDATA_CONTENT, "PKCS7_CONTENT", "PKCS7_CONTENT", setContent, answerField<&Ctx::content>),
    KA_ROW_WORDS(PKCS7_SIGNEDDATA_CERTIFICATE, "PKCS7_CERTIFICATE", "", addCertificate, nullptr),
    KA_ROW_WORDS(PKCS7_SIGNEDDATA_CRL, "PKCS7_CRL", "", addCrl, nullptr),
};

// The first CRL, for every position that there is.
const Anybuf *firstCrl(Ctx &ctx, int32_t position) {
    return crlAt(ctx, position) != nullptr ? ctx.crls : nullptr;
}

constexpr ListAttribute<Ctx> Lists[] = {
    {PKCS7_SIGNEDDATA_DIGEST_ALGO, "======>Get PKCS7_DIGEST_ALGO", digestAt},
    {PKCS7_SIGNEDDATA_CERTIFICATE, "======>Get PKCS7_CERTIFICATE", certificateAt},
    {PKCS7_SIGNEDDATA_CRL, "======>Get PKCS7_CRL", firstCrl},
};

constexpr IntAttribute<Ctx> IntRows[] = {
    {PKCS7_SIGNEDDATA_VERSION, "======>Set PKCS7_VERSION", "======>Get PKCS7_VERSION", setVersion, answerVersion},
};

// Without these octets the attribute would be nothing.
bool needsOctets(int32_t id) {
    return id == PKCS7_SIGNEDDATA_CONTENTTYPE || id == PKCS7_SIGNEDDATA_CERTIFICATE || id == PKCS7_SIGNEDDATA_CRL;
}

Status setChar(Ctx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    if (needsOctets(id) && (value == nullptr || length < 1))
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    return setAttribute(Rows, ctx, id, value, length, MessageRefusals);
}

bool isSet(const Ctx &ctx, int32_t id) {
    if (id == PKCS7_SIGNEDDATA_DIGEST_ALGO)
        return ctx.digestAlgorithmsSet != 0;
    return (id != PKCS7_SIGNEDDATA_CONTENTTYPE && id != PKCS7_SIGNEDDATA_CONTENT) || ctx.contentSet != 0;
}

Status getChar(Ctx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength, int32_t position) {
    KA_PASS(checkArguments({ctx}));
    if (result == nullptr || resultLength == nullptr || !isSet(*ctx, id))
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    return getAt(Lists, Rows, ctx, id, result, resultLength, position);
}

Status setSigner(Ctx *ctx, SignerInfoCtx *signer) {
    KA_PASS(checkArguments({ctx, signer}));
    return addMember(signersOf(*ctx), signer);
}

Status getSigner(const Ctx *ctx, SignerInfoCtx **signer, int32_t position) {
    KA_PASS(checkArguments({ctx}));
    return answerHead(ctx->signerInfos, ctx->signerInfosSet == 1, ctx->signerCount, position, signer);
}

Status countSigners(const Ctx *ctx, uint32_t *count) {
    KA_PASS(checkArguments({ctx, count}));
    *count = ctx->signerSet != nullptr ? ctx->signerCount : 0;
    return KACERT_Ok;
}

} // namespace

void clearMessage(SignedDataCtx &ctx) {
    clearSigners(signersOf(ctx));
    clearCertificates(listsOf(ctx));
    clearDigestAlgorithms(digestAlgorithmsOf(ctx));
    KI_FreeAnybuf(ctx.signerSet);
    ctx.signerSet = nullptr;
    for (Anybuf *field : {&ctx.contentType.oid, &ctx.content, &ctx.encoded})
        KI_ClearAnybuf(field);
    releaseContent(ctx.sharedContent);
    ctx.versionSet = ctx.digestAlgorithmsSet = ctx.contentSet = ctx.signerInfosSet = 0;
    ctx.version = 0;
    freeKept(ctx.kept);
    ctx.kept = nullptr;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateSignedDataEncodeCtx(SignedDataCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateSignedDataEncodeCtx", createContext(out, {&SignedDataCtx::contentType}));
}

int32_t KA_PKCS7_CreateSignedDataDecodeCtx(SignedDataCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateSignedDataDecodeCtx", KA_PKCS7_CreateSignedDataEncodeCtx(out));
}

int32_t KA_PKCS7_DestroySignedDataEncodeCtx(SignedDataCtx *ctx) {
    return KA_FRAMED("KA_PKCS7_DestroySignedDataEncodeCtx", destroyContext(ctx, clearMessage));
}

int32_t KA_PKCS7_DestroySignedDataDecodeCtx(SignedDataCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestroySignedDataDecodeCtx", KA_PKCS7_DestroySignedDataEncodeCtx(ctx));
}

int32_t KA_PKCS7_SetSignedDataAttributeInt(SignedDataCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KA_PKCS7_SetSignedDataAttributeInt", setInt(IntRows, ctx, id, value, MessageRefusals));
}

int32_t KA_PKCS7_GetSignedDataAttributeInt(const SignedDataCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KA_PKCS7_GetSignedDataAttributeInt", getInt(IntRows, ctx, id, value, MessageRefusals));
}

int32_t KA_PKCS7_SetSignedDataAttributeChar(SignedDataCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetSignedDataAttributeChar", setChar(ctx, id, value, length));
}

int32_t KA_PKCS7_GetSignedDataAttributeChar(SignedDataCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength,
                                            int32_t position) {
    return KA_FRAMED("KA_PKCS7_GetSignedDataAttributeChar", getChar(ctx, id, result, resultLength, position));
}

int32_t KA_PKCS7_SetSignedData_SignerInfo(SignedDataCtx *ctx, SignerInfoCtx *signer) {
    return KA_FRAMED("KA_PKCS7_SetSignedData_SignerInfo", setSigner(ctx, signer));
}

int32_t KA_PKCS7_GetSignedData_SignerInfo(const SignedDataCtx *ctx, SignerInfoCtx **signer, int32_t position) {
    return KA_FRAMED("KA_PKCS7_GetSignedData_SignerInfo", getSigner(ctx, signer, position));
}

int32_t KA_PKCS7_GetSignedData_SignerInfoNum(const SignedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignedData_SignerInfoNum", countSigners(ctx, count));
}

int32_t KA_PKCS7_GetSignedData_DigestAlgoNum(const SignedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignedData_DigestAlgoNum",
                     answerCount(ctx, &SignedDataCtx::digestAlgorithmCount, count));
}

int32_t KA_PKCS7_GetSignedData_CertificatesNum(const SignedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignedData_CertificatesNum",
                     answerCount(ctx, &SignedDataCtx::certificateCount, count));
}

int32_t KA_PKCS7_GetSignedData_CrlsNum(const SignedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignedData_CrlsNum", answerCount(ctx, &SignedDataCtx::crlCount, count));
}
