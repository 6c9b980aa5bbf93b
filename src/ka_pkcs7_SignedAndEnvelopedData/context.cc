#include "ka_pkcs7_SignedAndEnvelopedData.h"

namespace karil {

namespace {

using Ctx = SignedAndEnvelopedDataCtx;

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW_WORDS(PKCS7_SIGNEDANDENVELOPED_CERTIFICATE, "PKCS7_CERTIFICATE", "", addCertificate, nullptr),
    KA_ROW_WORDS(PKCS7_SIGNEDANDENVELOPED_CRL, "PKCS7_CRL", "", addCrl, nullptr),
    KA_ROW_WORDS(PKCS7_SIGNEDANDENVELOPED_DIGEST_ALGO, "PKCS7_DIGEST_ALGO", "", addDigest, nullptr),
    KA_ROW_WORDS(PKCS7_SIGNEDANDENVELOPED_ENCRYPTED_CONTENT, "PKCS7_ENCRYPTED_CONTENT", "PKCS7_ENCRYPTED_CONTENT",
                 setShared<true>, answerField<&Ctx::content>),
    KA_ROW_WORDS(PKCS7_SIGNEDANDENVELOPED_CONTENTTYPE, "PKCS7_SIGNEDANDENVELOPED_CONTENTTYPE", "PKCS7_CONTENTTYPE",
                 (setField<TagObjectId, &Ctx::contentType, &AlgorithmRecord::oid>),
                 (answerField<&Ctx::contentType, &AlgorithmRecord::oid>)),
    KA_ROW_WORDS(PKCS7_SIGNEDANDENVELOPED_RECIPIENT_KEY, "PKCS7_RECIPIENT_KEY", "", setSecret<&Ctx::key>, nullptr),
};

constexpr ListAttribute<Ctx> Lists[] = {
    {PKCS7_SIGNEDANDENVELOPED_CERTIFICATE, "======>Get PKCS7_CERTIFICATE", certificateAt},
    {PKCS7_SIGNEDANDENVELOPED_CRL, "======>Get PKCS7_CRL", crlAt},
    {PKCS7_SIGNEDANDENVELOPED_DIGEST_ALGO, "======>Get PKCS7_DIGEST_ALGO", digestAt},
};

constexpr IntAttribute<Ctx> IntRows[] = {
    {PKCS7_SIGNEDANDENVELOPED_VERSION, "======>Set PKCS7_VERSION", "======>Get PKCS7_VERSION", setVersion,
     answerVersion},
};

Status setChar(Ctx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    const bool needsOctets = id == PKCS7_SIGNEDANDENVELOPED_CERTIFICATE || id == PKCS7_SIGNEDANDENVELOPED_CRL;
    if (needsOctets && (value == nullptr || length < 1))
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    return setAttribute(Rows, ctx, id, value, length, MessageRefusals);
}

Status setRecipient(Ctx *ctx, RecipientInfoCtx *recipient) {
    KA_PASS(checkArguments({ctx, recipient}));
    KA_PASS(addMember(recipientsOf(*ctx), recipient));
    ctx->recipientCount = ctx->recipientCount2;
    ctx->recipientsSet = 1;
    return KACERT_Ok;
}

Status setSigner(Ctx *ctx, SignerInfoCtx *signer) {
    KA_PASS(checkArguments({ctx, signer}));
    KA_PASS(addMember(signersOf(*ctx), signer));
    ctx->signerCount = ctx->signerCount2;
    ctx->signerInfosSet = 1;
    return KACERT_Ok;
}

Status setEncrypted(Ctx *ctx, EncryptedContentCtx *content) {
    KA_PASS(checkArguments({ctx, content}));
    KA_PASS(takeOver(content->owner, ctx));
    dropEncryptedContent(ctx->encryptedContent);
    ctx->encryptedContent = content;
    return KACERT_Ok;
}

Status getRecipient(const Ctx *ctx, RecipientInfoCtx **recipient, int32_t position) {
    KA_PASS(checkArguments({ctx}));
    return answerHead(ctx->recipients, ctx->recipientsSet == 1, ctx->recipientCount2, position, recipient);
}

Status getSigner(const Ctx *ctx, SignerInfoCtx **signer, int32_t position) {
    KA_PASS(checkArguments({ctx}));
    return answerHead(ctx->signerInfos, ctx->signerInfosSet == 1, ctx->signerCount2, position, signer);
}

} // namespace

void clearMessage(SignedAndEnvelopedDataCtx &ctx) {
    clearRecipients(recipientsOf(ctx));
    clearSigners(signersOf(ctx));
    clearCertificates(listsOf(ctx));
    clearDigestAlgorithms(digestAlgorithmsOf(ctx));
    for (Anybuf **set : {&ctx.recipientSet, &ctx.signerSet}) {
        KI_FreeAnybuf(*set);
        *set = nullptr;
    }
    dropEncryptedContent(ctx.encryptedContent);
    clearSecret(ctx.key);
    KI_ClearAnybuf(&ctx.contentType.oid);
    KI_ClearAnybuf(&ctx.content);
    releaseContent(ctx.sharedContent);
    ctx.versionSet = ctx.recipientsSet = ctx.digestAlgorithmsSet = ctx.encryptedContentSet = ctx.signerInfosSet = 0;
    ctx.version = ctx.recipientCount = ctx.signerCount = 0;
    freeKept(ctx.kept);
    ctx.kept = nullptr;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateSignedAndEnvelopedDataEncodeCtx(SignedAndEnvelopedDataCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateSignedAndEnvelopedDataEncodeCtx", createMessage(out));
}

int32_t KA_PKCS7_CreateSignedAndEnvelopedDataDecodeCtx(SignedAndEnvelopedDataCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateSignedAndEnvelopedDataDecodeCtx",
                   KA_PKCS7_CreateSignedAndEnvelopedDataEncodeCtx(out));
}

int32_t KA_PKCS7_DestorySignedAndEnvelopedDataEncodeCtx(SignedAndEnvelopedDataCtx *ctx) {
    return KA_FRAMED("KA_PKCS7_DestorySignedAndEnvelopedDataEncodeCtx", destroyContext(ctx, clearMessage));
}

int32_t KA_PKCS7_DestorySignedAndEnvelopedDataDecodeCtx(SignedAndEnvelopedDataCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestorySignedAndEnvelopedDataDecodeCtx",
                   KA_PKCS7_DestorySignedAndEnvelopedDataEncodeCtx(ctx));
}

int32_t KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt(SignedAndEnvelopedDataCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt",
                     setInt(IntRows, ctx, id, value, MessageRefusals));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedDataAttributeInt(const SignedAndEnvelopedDataCtx *ctx, int32_t id,
                                                       int32_t *value) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedDataAttributeInt",
                     getInt(IntRows, ctx, id, value, MessageRefusals));
}

int32_t KA_PKCS7_SetSignedAndEnvelopedDataAttributeChar(SignedAndEnvelopedDataCtx *ctx, int32_t id,
                                                        const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetSignedAndEnvelopedDataAttributeChar", setChar(ctx, id, value, length));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedDataAttributeChar(SignedAndEnvelopedDataCtx *ctx, int32_t id, uint8_t *result,
                                                        uint32_t *resultLength, int32_t position) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedDataAttributeChar",
                     getAt(Lists, Rows, ctx, id, result, resultLength, position));
}

int32_t KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo(SignedAndEnvelopedDataCtx *ctx, RecipientInfoCtx *recipient) {
    return KA_FRAMED("KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo", setRecipient(ctx, recipient));
}

int32_t KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo(SignedAndEnvelopedDataCtx *ctx, SignerInfoCtx *signer) {
    return KA_FRAMED("KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo", setSigner(ctx, signer));
}

int32_t KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent(SignedAndEnvelopedDataCtx *ctx,
                                                            EncryptedContentCtx *content) {
    return KA_FRAMED("KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent", setEncrypted(ctx, content));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfo(const SignedAndEnvelopedDataCtx *ctx,
                                                         RecipientInfoCtx **recipient, int32_t position) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfo", getRecipient(ctx, recipient, position));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedData_SignerInfo(const SignedAndEnvelopedDataCtx *ctx, SignerInfoCtx **signer,
                                                      int32_t position) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedData_SignerInfo", getSigner(ctx, signer, position));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedData_EncryptedContent(const SignedAndEnvelopedDataCtx *ctx,
                                                            EncryptedContentCtx **content) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedData_EncryptedContent", getEncrypted(ctx, content));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfoNum(const SignedAndEnvelopedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfoNum",
                     answerCount(ctx, &SignedAndEnvelopedDataCtx::recipientCount, count));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedData_SignerInfoNum(const SignedAndEnvelopedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedData_SignerInfoNum",
                     answerCount(ctx, &SignedAndEnvelopedDataCtx::signerCount, count));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedData_CertificatesNum(const SignedAndEnvelopedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedData_CertificatesNum",
                     answerCount(ctx, &SignedAndEnvelopedDataCtx::certificateCount, count));
}

int32_t KA_PKCS7_GetSignedAndEnvelopedData_CrlsNum(const SignedAndEnvelopedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetSignedAndEnvelopedData_CrlsNum",
                     answerCount(ctx, &SignedAndEnvelopedDataCtx::crlCount, count));
}
