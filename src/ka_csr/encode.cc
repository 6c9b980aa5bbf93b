#include "ka_csr.h"

using namespace karil;

namespace {

// Attribute ::= SEQUENCE { type OBJECT IDENTIFIER, values SET { OCTET STRING } }
Status writeAttribute(const CsrAttributeNode &node, Anybuf **out) {
    const AlgorithmRecord type = {node.id, node.oid};
    Chain fields;
    KA_STEP(KAsn1_WriteObjectId(&type, fields.slot()));
    Chain value;
    KA_STEP(KAsn1_WriteOctetString(&node.value, value.slot()));
    KA_STEP(KAsn1_WriteSet(value.head(), fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

// Attributes ::= [0] IMPLICIT SET OF Attribute, or nothing
Status writeAttributes(const CsrEncodeCtx &ctx, Anybuf **out) {
    if (ctx.hasAttributes == 0)
        return KACERT_Ok;
    Chain list;
    for (const CsrAttributeNode *node = ctx.attributes; node != nullptr; node = node->next)
        KA_PASS(writeAttribute(*node, list.slot()));
    Chain set;
    KA_STEP(KAsn1_WriteSet(list.head(), set.slot()));
    KA_STEP(KAsn1_WriteImplicit(set.head(), 0, out));
    return KACERT_Ok;
}

// CertificationRequestInfo ::= SEQUENCE { version, subject, subjectPKInfo, attributes }
Status writeInfo(const CsrEncodeCtx &ctx, Anybuf **out) {
    const Anybuf nothing = {};
    Chain fields;
    KA_STEP(KAsn1_WriteInteger(static_cast<uint32_t>(ctx.version), fields.slot()));
    KA_STEP(KI_EncodeIssuerSuject(&ctx.subject, fields.slot()));
    KA_PASS(writePublicKey(ctx.publicKeyAlgorithm, ctx.publicKey, fields.slot()));
    if (ctx.hasAttributes != 0)
        KA_STEP(KI_Csr_EncodeAttributes(&ctx, fields.slot()));
    else
        KA_STEP(KAsn1_WriteExplicit(&nothing, 0, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

// CertificationRequest ::= SEQUENCE { certificationRequestInfo, signatureAlgorithm, signature BIT STRING }
Status writeRequest(CsrEncodeCtx &ctx, Anybuf **out) {
    Chain parts;
    KA_PASS(writeInfo(ctx, parts.slot()));
    HookOutput signature;
    KA_PASS(callForSize(ctx.signFunc, ctx.signKey, *parts.head(), signature));
    KA_STEP(KACert_SetCsrAttributeChar(&ctx, CSR_SELF_SIGNATURE, signature.octets.get(),
                                       static_cast<int32_t>(signature.length)));
    return writeSigned(parts, ctx.outerSignatureAlgorithm, ctx.signature, out);
}

} // namespace

int32_t KACert_EncodeCsr(CsrEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_EncodeCsr", encodeOnce(ctx, writeRequest, result, resultLength));
}

int32_t KI_Csr_EncodeAttributes(const CsrEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Csr_EncodeAttributes", encodePart(ctx, out, writeAttributes));
}
