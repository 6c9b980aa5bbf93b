#include "ka_csr.h"

namespace karil {

namespace {

Status takeField(Level &fields, Element &out) {
    return takeField(fields, out, KACERT_CsrNotEndErr, "------>KACERT_CsrNotEndErr");
}

// Attribute ::= SEQUENCE { type OBJECT IDENTIFIER, values SET OF ANY }, of which the first value is taken
Status readAttribute(const Element &element, CsrAttributeNode &node) {
    Level fields;
    Element type;
    KA_PASS(readTyped(element, type, fields));
    KA_STEP_AS("------>KI_CopyAlgorithm", store(node.oid, type));
    if (fields.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadSet");
    Level values;
    KA_STEP_AS("------>KAsn1_ReadSet", readSet(fields.take(), values));
    if (!values.empty())
        KA_STEP_AS("------>KI_CopyAnybuf", store(node.value, values.take()));
    return KACERT_Ok;
}

Status decodeAttribute(const Element &element, CsrDecodeCtx &ctx) {
    NodePtr<CsrAttributeNode> node;
    KA_PASS(createNode(node));
    KA_PASS(readAttribute(element, *node));
    appendAttribute(ctx, std::move(node));
    return KACERT_Ok;
}

// Attributes ::= [0] IMPLICIT SET OF Attribute, with whatever tag number. A primitive value stands for one attribute.
Status decodeAttributes(const Element &element, CsrDecodeCtx &ctx) {
    Implicit set;
    KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(element, set));
    if (!set.constructed && set.content.present())
        return decodeAttribute(set.content, ctx);
    while (!set.level.empty())
        KA_PASS(decodeAttribute(set.level.take(), ctx));
    return KACERT_Ok;
}

// CertificationRequestInfo ::= SEQUENCE { version, subject, subjectPKInfo, attributes OPTIONAL }
Status decodeInfo(const Element &info, CsrDecodeCtx &ctx) {
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.tbs, info));
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(info, fields));
    Element field;
    KA_PASS(takeField(fields, field));
    uint32_t version = 0;
    KA_STEP_AS("------>KAsn1_ReadInteger", readInteger(field, version));
    ctx.version = static_cast<int32_t>(version);
    KA_PASS(takeField(fields, field));
    KA_STEP_AS("------>KI_DecodeIssuerSubject", decodeName(field, ctx.subject));
    KA_PASS(takeField(fields, field));
    KA_STEP_AS("------>KI_DecodePubKey", readPublicKey(field, ctx.publicKeyAlgorithm, ctx.publicKey));
    if (!fields.empty())
        KA_STEP_AS("------>KI_CSR_DecodeAttribute", decodeAttributes(fields.take(), ctx));
    return KACERT_Ok;
}

// CertificationRequest ::= SEQUENCE { certificationRequestInfo, signatureAlgorithm, signature BIT STRING }
Status decodeRequest(Bytes der, CsrDecodeCtx &ctx) {
    Level parts;
    KA_PASS(openObject(der, ctx.kept, ctx.encoded, parts));
    Element part;
    KA_PASS(takeField(parts, part));
    KA_STEP_AS("------>KI_CSR_DecodeTBS", decodeInfo(part, ctx));
    KA_PASS(takeField(parts, part));
    KA_PASS(readAlgorithm(part, ctx.outerSignatureAlgorithm));
    KA_PASS(takeField(parts, part));
    return readBits(part, ctx.signature);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KACert_DecodeCsr(CsrDecodeCtx *ctx, const uint8_t *der, uint32_t length) {
    return KA_FRAMED("KACert_DecodeCsr", decodeWhole(ctx, der, length, decodeRequest));
}

int32_t KI_CSR_DecodeTBS(CsrDecodeCtx *ctx, const Anybuf *tbs) {
    return KA_FRAMED("KI_CSR_DecodeTBS", decodeKept(tbs, ctx, decodeInfo));
}

int32_t KI_CSR_DecodeAttributes(CsrDecodeCtx *ctx, const Anybuf *attributes) {
    return KA_FRAMED("KI_CSR_DecodeAttributes", decodeKept(attributes, ctx, decodeAttributes));
}
