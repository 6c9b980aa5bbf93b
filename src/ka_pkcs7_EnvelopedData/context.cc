#include "ka_pkcs7_EnvelopedData.h"

namespace karil {

namespace {

using Ctx = EnvelopedDataCtx;

// A field of the encrypted content, if there is one.
template <auto... Path> Status answerEncrypted(Ctx &ctx, const Answer &answer) {
    return ctx.encryptedContent != nullptr ? answerPresent<Path...>(*ctx.encryptedContent, answer) : KACERT_Ok;
}

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW_WORDS(PKCS7_ENVELOPED_ENCRYPTED_CONTENT, "PKCS7_ENCRYPTED_CONTENT", "PKCS7_ENCRYPTED_CONTENT",
                 setSecret<&Ctx::content>, answerPresent<&Ctx::content>),
    KA_ROW_WORDS(PKCS7_ENVELOPED_CONTENTTYPE, "PKCS7_ENVELOPEDDATA_CONTENTTYPE", "PKCS7_ENVELOPEDDATA_CONTENTTYPE",
                 (setField<TagObjectId, &Ctx::contentType, &AlgorithmRecord::oid>),
                 (answerPresent<&Ctx::contentType, &AlgorithmRecord::oid>)),
    KA_ROW_WORDS(PKCS7_ENVELOPED_RECIPIENT_KEY, "PKCS7_RECIPIENT_KEY", "", setSecret<&Ctx::key>, nullptr),
    KA_ROW(PKCS7_ENVELOPED_CIPHERTEXT, nullptr, answerEncrypted<&EncryptedContentCtx::encryptedContent>),
    KA_ROW(PKCS7_ENVELOPED_ALGO, nullptr,
           (answerEncrypted<&EncryptedContentCtx::encryptionAlgorithm, &AlgorithmIdentifierRecord::oid>)),
    KA_ROW(PKCS7_ENVELOPED_PARAMETER, nullptr,
           (answerEncrypted<&EncryptedContentCtx::encryptionAlgorithm, &AlgorithmIdentifierRecord::parameters>)),
};

constexpr IntAttribute<Ctx> IntRows[] = {
    {PKCS7_ENVELOPED_VERSION, "======>Set PKCS7_VERSION", "======>Get PKCS7_VERSION", setVersion, answerVersion},
};

Status setChar(Ctx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    KA_PASS(setAttribute(Rows, ctx, id, value, length, MessageRefusals));
    ctx->contentSet = 1;
    return KACERT_Ok;
}

Status setRecipient(Ctx *ctx, RecipientInfoCtx *recipient) {
    KA_PASS(checkArguments({ctx, recipient}));
    KA_PASS(addMember(recipientsOf(*ctx), recipient));
    ctx->recipientCount = ctx->recipientCount2;
    return KACERT_Ok;
}

Status getRecipient(const Ctx *ctx, RecipientInfoCtx **recipient, int32_t position) {
    KA_PASS(checkArguments({ctx}));
    return answerHead(ctx->recipients, ctx->recipientsSet == 1, ctx->recipientCount2, position, recipient);
}

} // namespace

void clearMessage(EnvelopedDataCtx &ctx) {
    clearRecipients(recipientsOf(ctx));
    KI_FreeAnybuf(ctx.recipientSet);
    ctx.recipientSet = nullptr;
    dropEncryptedContent(ctx.encryptedContent);
    KI_ClearAnybuf(&ctx.contentType.oid);
    clearSecret(ctx.content);
    clearSecret(ctx.key);
    ctx.versionSet = ctx.recipientsSet = ctx.contentSet = 0;
    ctx.version = ctx.recipientCount = 0;
    freeKept(ctx.kept);
    ctx.kept = nullptr;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateEnvelopedDataEncodeCtx(EnvelopedDataCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateEnvelopedDataEncodeCtx", createMessage(out));
}

int32_t KA_PKCS7_CreateEnvelopedDataDecodeCtx(EnvelopedDataCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateEnvelopedDataDecodeCtx", KA_PKCS7_CreateEnvelopedDataEncodeCtx(out));
}

int32_t KA_PKCS7_DestroyEnvelopedDataEncodeCtx(EnvelopedDataCtx *ctx) {
    return KA_FRAMED("KA_PKCS7_DestroyEnvelopedDataEncodeCtx", destroyContext(ctx, clearMessage));
}

int32_t KA_PKCS7_DestroyEnvelopedDataDecodeCtx(EnvelopedDataCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestroyEnvelopedDataDecodeCtx", KA_PKCS7_DestroyEnvelopedDataEncodeCtx(ctx));
}

int32_t KA_PKCS7_SetEnvelopedDataAttributeInt(EnvelopedDataCtx *ctx, int32_t id, int32_t value) {
    return KA_FRAMED("KA_PKCS7_SetEnvelopedDataAttributeInt", setInt(IntRows, ctx, id, value, MessageRefusals));
}

int32_t KA_PKCS7_GetEnvelopedDataAttributeInt(const EnvelopedDataCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KA_PKCS7_GetEnvelopedDataAttributeInt", getInt(IntRows, ctx, id, value, MessageRefusals));
}

int32_t KA_PKCS7_SetEnvelopedDataAttributeChar(EnvelopedDataCtx *ctx, int32_t id, const uint8_t *value,
                                               int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetEnvelopedDataAttributeChar", setChar(ctx, id, value, length));
}

int32_t KA_PKCS7_GetEnvelopedDataAttributeChar(EnvelopedDataCtx *ctx, int32_t id, uint8_t *result,
                                               uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_GetEnvelopedDataAttributeChar", getIntoBuffer(Rows, ctx, id, result, resultLength));
}

int32_t KA_PKCS7_SetEnvelopedData_RecipientInfo(EnvelopedDataCtx *ctx, RecipientInfoCtx *recipient) {
    return KA_FRAMED("KA_PKCS7_SetEnvelopedData_RecipientInfo", setRecipient(ctx, recipient));
}

int32_t KA_PKCS7_GetEnvelopedData_RecipientInfo(const EnvelopedDataCtx *ctx, RecipientInfoCtx **recipient,
                                                int32_t position) {
    return KA_FRAMED("KA_PKCS7_GetEnvelopedData_RecipientInfo", getRecipient(ctx, recipient, position));
}

int32_t KA_PKCS7_GetEnvelopedData_RecipientInfoNum(const EnvelopedDataCtx *ctx, uint32_t *count) {
    return KA_FRAMED("KA_PKCS7_GetEnvelopedData_RecipientInfoNum",
                     answerCount(ctx, &EnvelopedDataCtx::recipientCount, count));
}

int32_t KA_PKCS7_SetEnvelopedData_EncryptedContent(EnvelopedDataCtx *ctx, EncryptedContentCtx *content) {
    return KA_FRAMED("KA_PKCS7_SetEnvelopedData_EncryptedContent", giveEncrypted(ctx, content));
}

int32_t KA_PKCS7_GetEnvelopedData_EncryptedContent(const EnvelopedDataCtx *ctx, EncryptedContentCtx **content) {
    return KA_FRAMED("KA_PKCS7_GetEnvelopedData_EncryptedContent", getEncrypted(ctx, content));
}
