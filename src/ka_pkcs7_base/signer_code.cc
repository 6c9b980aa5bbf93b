// SignerInfo signed and written, read, and verified.
#include "ka_pkcs7_base.h"

namespace karil {

namespace {

using Ctx = SignerInfoCtx;

constexpr uint8_t OidContentType[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x03};
constexpr uint8_t OidMessageDigest[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x04};
constexpr int32_t KindContentType = 15;
constexpr int32_t KindMessageDigest = 16;

constexpr uint32_t DigestBound = 64;
constexpr uint32_t SignatureBound = 512;

// A hook is missed where it is to be called: what is wrong before that has its own status.
Status call(const Hook &hook, Bytes input, uint32_t bound, HookArea &out) {
    if (hook.function == nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, "------>Func is NULL");
    return callWithCopy(hook, input, bound, out, "------>Func");
}

Status digest(const Ctx &ctx, Bytes input, HookArea &out) {
    return call({ctx.digestFunc, ctx.digestFuncParam, ctx.digestFuncParamLen}, input, DigestBound, out);
}

Status callSign(const Ctx &ctx, Bytes input, HookArea &out) {
    return call({ctx.signFunc, ctx.signFuncParam, ctx.signFuncParamLen}, input, SignatureBound, out);
}

// The DigestInfo of what is signed.
Status digestInfo(const Ctx &ctx, Bytes input, Writer &out) {
    HookArea value;
    KA_PASS(digest(ctx, input, value));
    KA_STEP_AS("------>KI_MakeDigestInfo", writeDigestInfo(out, bytesOf(ctx.digestAlgorithm.oid), value.octets()));
    return KACERT_Ok;
}

Status checkContent(const Ctx &ctx) {
    const Bytes type = bytesOf(ctx.contentType);
    if (ctx.content.data == nullptr || type.size() != ContentTypeSize ||
        (ctx.attributesSet == 0 && !isContentType(type, PKCS7_TYPE_DATA)))
        return KA_FAIL(KACERT_InvalidParamErr, "------>Content and attributes error");
    return KACERT_Ok;
}

// messageDigest and contentType, after the caller's: both or neither.
Status addAutomatic(Ctx &ctx) {
    if (ctx.attributesSet == 0 || ctx.attributesDigested != 0)
        return KACERT_Ok;
    if (ctx.content.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Content and attributes error");
    HookArea value;
    KA_PASS(digest(ctx, bytesOf(ctx.content), value));
    Writer digestValue(DigestBound + 2);
    digestValue.octetString(value.octets());
    Writer typeValue(ContentTypeSize + 2);
    typeValue.objectId(bytesOf(ctx.contentType));
    KA_PASS(digestValue.status());
    KA_PASS(typeValue.status());
    AttributeRecord *fresh = nullptr;
    ListMarks freshMarks = {};
    const AttributeList both = {fresh, freshMarks};
    Status status = addAttribute(both, KindMessageDigest, OidMessageDigest, digestValue.since(0));
    if (status == KACERT_Ok)
        status = addAttribute(both, KindContentType, OidContentType, typeValue.since(0));
    if (status != KACERT_Ok) {
        clearAttributes(both);
        return status;
    }
    moveAttributes(both, {ctx.attributes, ctx.attributeMarks});
    ctx.attributesDigested = 1;
    return KACERT_Ok;
}

// The hook's signature over the DigestInfo of `input`, which is kept as well.
Status sign(Ctx &ctx, Bytes input) {
    Writer info(DigestInfoBound, true);
    KA_PASS(digestInfo(ctx, input, info));
    HookArea signature;
    KA_PASS(callSign(ctx, info.since(0), signature));
    KA_STEP_AS("------>KI_SetAttributeCharValue", setTagged(ctx.encryptedDigest, signature.octets(), TagBitString));
    return KACERT_Ok;
}

Status checkAlgorithm(const AlgorithmIdentifierRecord &algorithm, const char *words) {
    return algorithm.oid.length > 0 ? KACERT_Ok : KA_FAIL(KACERT_InvalidItemErr, words);
}

Status checkSignedData(const Ctx &ctx) {
    if (ctx.attributesSet != 0 && ctx.attributes == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Attributes NULL");
    if (ctx.attributesSet == 0 && ctx.content.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>ContentLen or Attributes NULL");
    return KACERT_Ok;
}

// What is signed, and the signature. The signature covers the SET of attributes, which on the wire is [0].
Status writeSigned(Writer &out, Ctx &ctx) {
    constexpr char NoAlgorithm[] = "------>Signer digestEncryptionAlgorithm is null";
    const uint32_t start = out.size();
    if (ctx.attributesSet != 0)
        writeAttributes(out, TagSet, ctx.attributes);
    KA_STEP_AS("------>KI_PKCS7_EncodeAttributes", out.status());
    KA_PASS(checkAlgorithm(ctx.digestEncAlgorithm, NoAlgorithm));
    KA_PASS(checkSignedData(ctx));
    KA_PASS(sign(ctx, ctx.attributesSet != 0 ? out.since(start) : bytesOf(ctx.content)));
    if (ctx.attributesSet != 0)
        out.retag(start, taggedSet(0));
    writeAlgorithm(out, bytesOf(ctx.digestEncAlgorithm.oid));
    out.octetString(bytesOf(ctx.encryptedDigest));
    return KACERT_Ok;
}

Status writeFields(Writer &out, Ctx &ctx) {
    out.integer(static_cast<uint32_t>(ctx.version));
    const Anybuf *dn = ctx.dnSet == 1 ? ctx.issuerDn : nullptr;
    if (dn == nullptr && (ctx.issuer.next == nullptr || ctx.serial.length == 0))
        return KA_FAIL(KACERT_InvalidItemErr, "------>IssuerAndSerialNumber is null");
    KA_PASS(writeIssuerAndSerial(out, ctx.issuer, dn, ctx.serial));
    KA_PASS(checkAlgorithm(ctx.digestAlgorithm, "------>Signer digestAlgorithm is null"));
    writeAlgorithm(out, bytesOf(ctx.digestAlgorithm.oid));
    KA_PASS(checkContent(ctx));
    KA_PASS(addAutomatic(ctx));
    KA_PASS(writeSigned(out, ctx));
    if (ctx.unAttributesSet != 0)
        writeAttributes(out, taggedSet(1), ctx.unAttributes);
    return KACERT_Ok;
}

Status encodeAloneOrNull(Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkPointers({ctx}));
    return encodeAlone(ctx, result, resultLength, writeSigner);
}

constexpr char NotEnd[] = "------>KACERT_CertNotEndErr";
constexpr char NoEncryption[] = "------>Encrypt algorithm is null";

// [0] authenticatedAttributes OPTIONAL; `field` becomes what follows it, or stays if it is another number.
Status readAuthenticated(Level &fields, Element &field, Ctx &ctx) {
    Implicit value;
    KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(field, value));
    if (value.number != 0)
        return KACERT_Ok;
    KA_STEP_AS("------>KI_PKCS7_DecodeAttributes", readAttributes(value, {ctx.attributes, ctx.attributeMarks}));
    ctx.attributesSet = 1;
    return takeField(fields, field, KACERT_CertNotEndErr, NoEncryption);
}

Status readUnauthenticated(const Element &field, Ctx &ctx) {
    Implicit value;
    KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(field, value));
    if (value.number != 1)
        return KACERT_Ok;
    KA_STEP_AS("------>KI_PKCS7_DecodeAttributes", readAttributes(value, {ctx.unAttributes, ctx.unAttributeMarks}));
    ctx.unAttributesSet = 1;
    return KACERT_Ok;
}

// What was signed, written again.
Status digestedAgain(const Ctx &ctx, Writer &info) {
    if (ctx.attributesSet == 0)
        return ctx.content.length > 0 ? digestInfo(ctx, bytesOf(ctx.content), info)
                                      : KA_FAIL(KACERT_InvalidItemErr, "------>Content is NULL");
    if (ctx.attributes == nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, "------>Attributes NULL");
    Writer set;
    writeAttributes(set, TagSet, ctx.attributes);
    KA_STEP_AS("------>KI_PKCS7_EncodeAttributes", set.status());
    return digestInfo(ctx, set.since(0), info);
}

Status verify(Ctx *ctx, int32_t *verdict) {
    if (verdict == nullptr)
        return KA_FAIL(ctx == nullptr ? KACERT_InvalidParamErr : KACERT_InvalidItemErr,
                       "------>result is NULL, in KA_PKCS7_VerifySignerSignature Fun");
    if (ctx == nullptr) {
        *verdict = PKCS7_VERDICT_NO_CONTEXT;
        return KA_FAIL(KACERT_Ok, "------>pPKCS7SignerInfo is NULL");
    }
    if (ctx->digestFunc == nullptr || ctx->signFunc == nullptr) {
        *verdict = PKCS7_VERDICT_NO_HOOK;
        return KA_FAIL(KACERT_InvalidItemErr, "------>Func is NULL");
    }
    Writer info(DigestInfoBound, true);
    KA_PASS(digestedAgain(*ctx, info));
    HookArea opened;
    KA_PASS(callSign(*ctx, bytesOf(ctx->encryptedDigest), opened));
    const bool isGood = equal(opened.octets(), info.since(0));
    ctx->verified = isGood ? 1 : 0;
    *verdict = isGood ? PKCS7_VERDICT_GOOD : PKCS7_VERDICT_BAD;
    return KACERT_Ok;
}

} // namespace

Status writeSigner(Writer &out, SignerInfoCtx &ctx, uint32_t bound) {
    if (ctx.versionSet == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>Signer version is null");
    const uint32_t start = out.size();
    {
        const Construct info(out, TagSequence);
        KA_PASS(writeFields(out, ctx));
    }
    return checkBound(out, start, bound);
}

Status readSigner(const Element &element, SignerInfoCtx &ctx) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_CertNotEndErr, NotEnd));
    uint32_t version = 0;
    KA_STEP_AS("------>KAsn1_ReadInteger", readInteger(field, version));
    ctx.version = static_cast<int32_t>(version);
    ctx.versionSet = 1;
    KA_PASS(takeField(fields, field, KACERT_CertNotEndErr, NotEnd));
    KA_PASS(readIssuerAndSerial(field, ctx.issuer, ctx.serial, KACERT_CertNotEndErr));
    constexpr char NoDigest[] = "------>Digest is null";
    KA_PASS(takeField(fields, field, KACERT_CertNotEndErr, NoDigest));
    KA_PASS(readAlgorithmOid(field, ctx.digestAlgorithm.oid, KACERT_CertNotEndErr, NoDigest));
    KA_PASS(takeField(fields, field, KACERT_CertNotEndErr, NoEncryption));
    KA_PASS(readAuthenticated(fields, field, ctx));
    KA_PASS(readAlgorithmOid(field, ctx.digestEncAlgorithm.oid, KACERT_CertNotEndErr, NoEncryption));
    KA_PASS(takeField(fields, field, KACERT_CertNotEndErr, "------>digest is null"));
    Element signature;
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(field, signature));
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.encryptedDigest, signature));
    return fields.empty() ? KACERT_Ok : readUnauthenticated(fields.take(), ctx);
}

Status readSigners(Level set, SignerList list, const Element &contentType, const SharedContent *content) {
    while (!set.empty()) {
        SignerPtr ctx;
        KA_PASS(createSigner(ctx));
        KA_PASS(lendContent(*ctx, contentType, content));
        KA_STEP_AS("------>KA_PKCS7_DecodeSignerInfo", readSigner(set.take(), *ctx));
        KA_PASS(addMember(list, ctx.get()));
        (void)ctx.release();
    }
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_EncodeSignerInfo(SignerInfoCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodeSignerInfo", encodeAloneOrNull(ctx, result, resultLength));
}

int32_t KA_PKCS7_DecodeSignerInfo(SignerInfoCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodeSignerInfo", decodeAlone(ctx, der, length, clearSigner, readSigner));
}

int32_t KA_PKCS7_VerifySignerSignature(SignerInfoCtx *ctx, int32_t *verdict) {
    return KA_FRAMED("KA_PKCS7_VerifySignerSignature", verify(ctx, verdict));
}
