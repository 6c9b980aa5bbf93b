#include "ka_pkcs7_SignedData.h"

namespace karil {

namespace {

using Ctx = SignedDataCtx;

constexpr char NotEnd[] = "------>KACERT_CertNotEndErr";

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY OPTIONAL }
void writeInfo(Writer &out, const Ctx &ctx) {
    const Bytes type = bytesOf(ctx.contentType.oid);
    const Bytes content = bytesOf(ctx.content);
    const Construct info(out, TagSequence, content.size() + type.size() + 14);
    out.objectId(type);
    if (content.empty() || type.size() != ContentTypeSize)
        return;
    const Construct tagged(out, taggedSet(0), content.size() + 6);
    if (isContentType(type, PKCS7_TYPE_DATA))
        out.head(TagOctetString, content.size());
    out.apart(content);
}

// SignedData ::= SEQUENCE { version, digestAlgorithms, contentInfo, [0] certificates OPTIONAL, [1] crls OPTIONAL,
//     signerInfos }
Status writeFields(Writer &out, Ctx &ctx) {
    out.integer(ctx.version);
    writeDigestAlgorithms(out, ctx.digestAlgorithms);
    writeInfo(out, ctx);
    writeCertificates(out, listsOf(ctx));
    return writeSignerSet(out, signersOf(ctx));
}

Status encode(Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, resultLength}));
    if (ctx->encoded.length > 0) {
        handOut(ctx->encoded, result, resultLength);
        return KACERT_Ok;
    }
    KA_PASS(checkFields(*ctx));
    if (giveSigners(*ctx) != KACERT_Ok)
        return answerNothing(resultLength);
    Writer out;
    KA_PASS(writeSignedData(out, *ctx));
    return handOut(out, result, resultLength);
}

Status readInfo(const Element &element, Ctx &ctx) {
    Level fields;
    Element type;
    KA_PASS(readTyped(element, type, fields, KACERT_CertNotEndErr));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(ctx.contentType.oid, type));
    if (!fields.empty() && type.bytes.size() == ContentTypeSize)
        KA_PASS(readTaggedContent(fields.take(), isContentType(type.bytes, PKCS7_TYPE_DATA), KACERT_CertNotEndErr,
                                  ctx.content));
    ctx.contentSet = 1;
    return KACERT_Ok;
}

Status readFields(const Element &element, Ctx &ctx) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    KA_PASS(takeVersion(fields, KACERT_CertNotEndErr, ctx));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_CertNotEndErr, NotEnd));
    KA_PASS(readDigestAlgorithms(field, digestAlgorithmsOf(ctx), KACERT_CertNotEndErr));
    ctx.digestAlgorithmsSet = 1;
    KA_PASS(takeField(fields, field, KACERT_CertNotEndErr, NotEnd));
    KA_PASS(readInfo(field, ctx));
    KA_PASS(readCertificates(fields, listsOf(ctx), field));
    Level signers;
    uint32_t count = 0;
    KA_PASS(keepSet(field, ctx.signerSet, count, signers));
    const SharedContent content = sharedContentOf(ctx);
    KA_PASS(readSigners(signers, signersOf(ctx), keptType(ctx), &content));
    ctx.signerInfosSet = 1;
    return KACERT_Ok;
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkArguments({ctx, der}));
    Element whole;
    KA_STEP_AS("------>KI_MakeSequenceToContent", beginDecoding(*ctx, der, length, clearMessage, whole));
    Element content;
    KA_PASS(openMessage(whole, PKCS7_TYPE_SIGNEDDATA, content));
    return readFields(content, *ctx);
}

} // namespace

Status checkFields(const SignedDataCtx &ctx) {
    if (ctx.versionSet == 0 || ctx.contentSet == 0 || ctx.contentType.oid.length == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr");
    return KACERT_Ok;
}

Status giveSigners(SignedDataCtx &ctx) {
    return giveContent(signersOf(ctx), bytesOf(ctx.contentType.oid), sharedContentOf(ctx));
}

Status writeSignedData(Writer &out, SignedDataCtx &ctx) {
    const uint64_t besides = sizeOfCertificates(listsOf(ctx)) + SignerSize;
    const uint64_t expected = ctx.content.length + besides;
    out.reserve(besides);
    {
        const ContentFrame frame(out, contentTypeOid(PKCS7_TYPE_SIGNEDDATA), expected);
        const Construct message(out, TagSequence, expected);
        KA_PASS(writeFields(out, ctx));
    }
    KA_STEP_AS("------>KI_MakeContentToSequence", out.status());
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_EncodePKCS7SignedData(SignedDataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodePKCS7SignedData", encode(ctx, result, resultLength));
}

int32_t KA_PKCS7_DecodeSignedData(SignedDataCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodeSignedData", decode(ctx, der, length));
}
