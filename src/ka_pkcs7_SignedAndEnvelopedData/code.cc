#include "ka_pkcs7_SignedAndEnvelopedData.h"

namespace karil {

namespace {

using Ctx = SignedAndEnvelopedDataCtx;

constexpr char Missing[] = "------>KACERT_InvalidItemErr";

// EncryptedContentInfo with the message's content type and content.
Status writeContent(Writer &out, Ctx &ctx) {
    if (ctx.content.length == 0 || ctx.encryptedContent == nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, Missing);
    return writeEncrypted(out, *ctx.encryptedContent, bytesOf(ctx.contentType.oid), bytesOf(ctx.content), ElementBound);
}

// What stands before the signers.
Status writeFields(Writer &out, Ctx &ctx) {
    out.integer(ctx.version);
    KA_PASS(writeRecipientSet(out, ctx.recipients));
    writeDigestAlgorithms(out, ctx.digestAlgorithms);
    KA_PASS(writeContent(out, ctx));
    writeCertificates(out, listsOf(ctx));
    return KACERT_Ok;
}

// SignedAndEnvelopedData ::= SEQUENCE { version, recipientInfos, digestAlgorithms, encryptedContentInfo,
//     [0] certificates OPTIONAL, [1] crls OPTIONAL, signerInfos }
Status encode(Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, resultLength}));
    if (ctx->versionSet == 0 || ctx->recipientsSet == 0 || ctx->signerInfosSet == 0 || ctx->key.length == 0)
        return KA_FAIL(KACERT_InvalidItemErr, Missing);
    if (giveKey(ctx->recipients, bytesOf(ctx->key)) != KACERT_Ok)
        return answerNothing(resultLength);
    Writer out;
    {
        const ContentFrame frame(out, contentTypeOid(PKCS7_TYPE_SIGNEDANDENVELOPEDDATA), ctx->content.length);
        const Construct message(out, TagSequence, ctx->content.length);
        KA_PASS(writeFields(out, *ctx));
        // Not before: signers of a message that lacks something else keep the content that they have.
        if (giveContent(signersOf(*ctx), bytesOf(ctx->contentType.oid), sharedContentOf(*ctx)) != KACERT_Ok)
            return answerNothing(resultLength);
        KA_PASS(writeSignerSet(out, signersOf(*ctx)));
    }
    KA_STEP_AS("------>KI_MakeContentToSequence", out.status());
    return handOut(out, result, resultLength);
}

Status readRecipientSet(Level &fields, Ctx &ctx) {
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, Missing));
    Level recipients;
    KA_PASS(keepSet(field, ctx.recipientSet, ctx.recipientCount, recipients));
    ctx.recipientsSet = 1;
    return readRecipients(recipients, recipientsOf(ctx));
}

Status readContent(Level &fields, Ctx &ctx) {
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, Missing));
    KA_PASS(readEncrypted(field, ctx.encryptedContent, &ctx));
    KA_PASS(noteContentType(*ctx.encryptedContent, ctx.contentType));
    ctx.encryptedContentSet = 1;
    return KACERT_Ok;
}

Status readFields(const Element &element, Ctx &ctx) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    KA_PASS(takeVersion(fields, KACERT_InvalidItemErr, ctx));
    KA_PASS(readRecipientSet(fields, ctx));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_CertNotEndErr, "------>KACERT_CertNotEndErr"));
    KA_PASS(readDigestAlgorithms(field, digestAlgorithmsOf(ctx), KACERT_CertNotEndErr));
    ctx.digestAlgorithmsSet = 1;
    KA_PASS(readContent(fields, ctx));
    KA_PASS(readCertificates(fields, listsOf(ctx), field));
    Level signers;
    KA_PASS(keepSet(field, ctx.signerSet, ctx.signerCount, signers));
    KA_PASS(readSigners(signers, signersOf(ctx), keptType(ctx), nullptr));
    ctx.signerInfosSet = 1;
    return KACERT_Ok;
}

// All that is wrong with the frame is one status.
Status open(Ctx &ctx, const uint8_t *der, int32_t length, Element &content) {
    if (der == nullptr || length == 0) {
        clearMessage(ctx);
        return KA_FAIL(KACERT_InvalidItemErr, Missing);
    }
    Element whole;
    Status status = beginDecoding(ctx, der, length, clearMessage, whole);
    if (status == KACERT_Ok)
        status = openMessage(whole, PKCS7_TYPE_SIGNEDANDENVELOPEDDATA, content);
    if (status == KACERT_Ok || status == KACERT_MemoryErr)
        return status;
    return KA_FAIL(KAPKCS7_ContentTypeErr, "------>KAPKCS7_ContentTypeErr");
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    Element content;
    KA_PASS(open(*ctx, der, length, content));
    return readFields(content, *ctx);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_EncodeSignedAndEnvelopedData(SignedAndEnvelopedDataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodeSignedAndEnvelopedData", encode(ctx, result, resultLength));
}

int32_t KA_PKCS7_DecodeSignedAndEnvelopedData(SignedAndEnvelopedDataCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodeSignedAndEnvelopedData", decode(ctx, der, length));
}
