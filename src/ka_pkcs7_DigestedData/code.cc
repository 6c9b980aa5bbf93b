#include "ka_pkcs7_DigestedData.h"

namespace karil {

namespace {

using Ctx = DigestedDataCtx;

constexpr uint32_t DigestBound = 200;

// The digest of the whole inner ContentInfo. The hook gets the context's own copy of its parameter.
Status digest(const Ctx &ctx, Bytes info, HookArea &out) {
    return callAsStored(ctx.digestFunc, ctx.digestFuncParam, info, DigestBound, out, "------>Digest Func is Error");
}

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY OPTIONAL }
void writeInfo(Writer &out, const Ctx &ctx) {
    const Bytes type = bytesOf(ctx.contentType.oid);
    const Bytes content = bytesOf(ctx.content);
    const Construct info(out, TagSequence, content.size() + type.size());
    out.objectId(type);
    if (!content.empty())
        writeTaggedContent(out, beginsAsData(type), content);
}

// DigestedData ::= SEQUENCE { version, digestAlgorithm, contentInfo, digest OCTET STRING }
Status writeFields(Writer &out, const Ctx &ctx) {
    if (ctx.versionSet == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>Digested Data is null");
    out.integer(ctx.version);
    if (ctx.digestAlgorithm.oid.length == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>Algorithm type is null");
    {
        const Construct algorithm(out, TagSequence);
        out.objectId(bytesOf(ctx.digestAlgorithm.oid));
    }
    if (ctx.contentType.oid.length == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>Content type is null");
    const uint32_t start = out.size();
    writeInfo(out, ctx);
    KA_STEP_AS("------>KAsn1_WriteSequence", checkBound(out, start, ElementBound));
    if (ctx.digestFunc == nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, "------>Digest Func is null");
    HookArea value;
    KA_PASS(digest(ctx, out.since(start), value));
    out.octetString(value.octets());
    return KACERT_Ok;
}

Status encode(const Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, resultLength}));
    Writer out;
    {
        const ContentFrame frame(out, contentTypeOid(PKCS7_TYPE_DIGESTEDDATA));
        const Construct message(out, TagSequence);
        KA_PASS(writeFields(out, *ctx));
    }
    KA_STEP_AS("------>KI_MakeContentToSequence", out.status());
    return handOut(out, result, resultLength);
}

constexpr char NoInfo[] = "------>Content Info is null";

Status readInfo(const Element &element, Ctx &ctx) {
    Level fields;
    Element type;
    KA_PASS(readTyped(element, type, fields, KACERT_InvalidItemErr, NoInfo));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(ctx.contentType.oid, type));
    if (!fields.empty())
        KA_PASS(readTaggedContent(fields.take(), beginsAsData(type.bytes), KACERT_InvalidItemErr, ctx.content));
    return KACERT_Ok;
}

Status readFields(const Element &element, Ctx &ctx, Bytes &info) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    KA_PASS(takeVersion(fields, KACERT_InvalidItemErr, ctx));
    constexpr char NoAlgorithm[] = "------>Digest algorithm is null";
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, NoAlgorithm));
    KA_PASS(readAlgorithmOid(field, ctx.digestAlgorithm.oid, KACERT_InvalidItemErr, NoAlgorithm));
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, NoInfo));
    KA_PASS(readInfo(field, ctx));
    info = field.bytes;
    if (info.size() > ElementBound)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, "------>Digest Info is null"));
    Element value;
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(field, value));
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.digest, value));
    return KACERT_Ok;
}

Status verify(Ctx &ctx, Bytes info) {
    if (ctx.digestFunc == nullptr) {
        ctx.verifyResult = PKCS7_VERDICT_NO_HOOK;
        return KACERT_Ok;
    }
    HookArea value;
    KA_PASS(digest(ctx, info, value));
    ctx.verifyResult = equal(bytesOf(ctx.digest), value.octets()) ? PKCS7_VERDICT_GOOD : PKCS7_VERDICT_BAD;
    return KACERT_Ok;
}

Status begin(Ctx &ctx, const uint8_t *der, int32_t length, ContentInfo &info) {
    if (der == nullptr) {
        clearDecoded(ctx);
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    }
    Element whole;
    Status status = beginDecoding(ctx, der, length, clearDecoded, whole);
    if (status == KACERT_MemoryErr)
        return status;
    if (status == KACERT_Ok)
        status = readContentInfo(whole, info);
    return status == KACERT_Ok ? status : KA_FAIL(KACERT_InvalidLengthErr, "------>KI_MakeSequenceToContent");
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    ContentInfo frame;
    KA_PASS(begin(*ctx, der, length, frame));
    if (!hasContent(frame))
        return KACERT_Ok;
    if (!frame.is(PKCS7_TYPE_DIGESTEDDATA))
        return KA_FAIL(KAPKCS7_ContentTypeErr, "------>KAPKCS7_ContentTypeErr");
    Bytes info;
    KA_PASS(readFields(frame.content, *ctx, info));
    return verify(*ctx, info);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_EncodePKCS7DigestedData(DigestedDataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodePKCS7DigestedData", encode(ctx, result, resultLength));
}

int32_t KA_PKCS7_DecodePKCS7DigestedData(DigestedDataCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodePKCS7DigestedData", decode(ctx, der, length));
}
