#include "ka_pkcs7_EnvelopedData.h"

namespace karil {

namespace {

using Ctx = EnvelopedDataCtx;

// EncryptedContentInfo with the message's content type and content.
Status writeContent(Writer &out, Ctx &ctx) {
    if (ctx.content.length == 0 || ctx.encryptedContent == nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr");
    ctx.encryptedContent->decoded = 1;
    return writeEncrypted(out, *ctx.encryptedContent, bytesOf(ctx.contentType.oid), bytesOf(ctx.content), ElementBound);
}

// EnvelopedData ::= SEQUENCE { version, recipientInfos, encryptedContentInfo }
Status writeFields(Writer &out, Ctx &ctx) {
    out.integer(ctx.version);
    KA_PASS(writeRecipientSet(out, ctx.recipients));
    return writeContent(out, ctx);
}

Status encode(Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    if (ctx == nullptr)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    KA_PASS(checkArguments({resultLength}));
    if (ctx->versionSet == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr");
    if (giveKey(ctx->recipients, bytesOf(ctx->key)) != KACERT_Ok)
        return answerNothing(resultLength);
    Writer out;
    {
        const ContentFrame frame(out, contentTypeOid(PKCS7_TYPE_ENVELOPEDDATA), ctx->content.length);
        const Construct message(out, TagSequence, ctx->content.length);
        KA_PASS(writeFields(out, *ctx));
    }
    KA_STEP_AS("------>KI_MakeContentToSequence", out.status());
    return handOut(out, result, resultLength);
}

Status readFields(const Element &element, Ctx &ctx) {
    constexpr char Missing[] = "------>KACERT_InvalidItemErr";
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    KA_PASS(takeVersion(fields, KACERT_InvalidItemErr, ctx));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, Missing));
    Level recipients;
    KA_PASS(keepSet(field, ctx.recipientSet, ctx.recipientCount, recipients));
    ctx.recipientsSet = 1;
    KA_PASS(readRecipients(recipients, recipientsOf(ctx)));
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, Missing));
    KA_PASS(readEncrypted(field, ctx.encryptedContent, &ctx));
    KA_PASS(noteContentType(*ctx.encryptedContent, ctx.contentType));
    ctx.contentSet = 1;
    return KACERT_Ok;
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkArguments({ctx, der}));
    if (length == 0) {
        clearMessage(*ctx);
        return KA_FAIL(KAPKCS7_ContentTypeErr, "------>KAPKCS7_ContentTypeErr");
    }
    Element whole;
    const Status status = beginDecoding(*ctx, der, length, clearMessage, whole);
    if (status == KACERT_MemoryErr)
        return KA_FAIL(KACERT_Ok, "------>KAPR_Malloc");
    if (status != KACERT_Ok)
        return KA_FAIL(status, "------>KI_MakeSequenceToContent");
    Element content;
    KA_PASS(openMessage(whole, PKCS7_TYPE_ENVELOPEDDATA, content));
    return readFields(content, *ctx);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_EncodePKCS7EnvelopedData(EnvelopedDataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodePKCS7EnvelopedData", encode(ctx, result, resultLength));
}

int32_t KA_PKCS7_DecodePKCS7EnvelopedData(EnvelopedDataCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodePKCS7EnvelopedData", decode(ctx, der, length));
}
