#include "ka_csr.h"

using namespace karil;

namespace {

// Attribute ::= SEQUENCE { type OBJECT IDENTIFIER, values SET { OCTET STRING } }
void writeAttribute(Writer &out, const CsrAttributeNode &node) {
    const Construct attribute(out, TagSequence);
    out.objectId(bytesOf(node.oid));
    const Construct values(out, TagSet);
    out.octetString(bytesOf(node.value));
}

// Attributes ::= [0] IMPLICIT SET OF Attribute
Status writeAttributes(Writer &out, const CsrEncodeCtx &ctx) {
    if (ctx.hasAttributes == 0)
        return KACERT_Ok;
    const Construct attributes(out, 0xA0);
    for (const CsrAttributeNode *node = ctx.attributes; node != nullptr; node = node->next)
        writeAttribute(out, *node);
    return out.status();
}

// CertificationRequestInfo ::= SEQUENCE { version, subject, subjectPKInfo, attributes }
Status writeInfo(Writer &out, const CsrEncodeCtx &ctx) {
    const Construct info(out, TagSequence);
    out.integer(static_cast<uint32_t>(ctx.version));
    KA_STEP_AS("------>KI_EncodeIssuerSuject", encodeName(out, ctx.subject));
    writePublicKey(out, ctx.publicKeyAlgorithm, ctx.publicKey);
    if (ctx.hasAttributes == 0)
        out.element(0xA0, {});
    KA_STEP_AS("------>KI_Csr_EncodeAttributes", writeAttributes(out, ctx));
    return KACERT_Ok;
}

Status sign(CsrEncodeCtx &ctx, Bytes info) {
    HookOutput signature;
    KA_PASS(callForSize(ctx.signFunc, ctx.signKey, info, signature));
    KA_STEP(KACert_SetCsrAttributeChar(&ctx, CSR_SELF_SIGNATURE, signature.octets.get(),
                                       static_cast<int32_t>(signature.length)));
    return KACERT_Ok;
}

// CertificationRequest ::= SEQUENCE { certificationRequestInfo, signatureAlgorithm, signature BIT STRING }
Status writeRequest(Writer &out, CsrEncodeCtx &ctx) {
    return writeSigned(
        out, ctx, [&] { return writeInfo(out, ctx); }, [&](Bytes info) { return sign(ctx, info); });
}

} // namespace

int32_t KACert_EncodeCsr(CsrEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_EncodeCsr", encodeOnce(ctx, writeRequest, result, resultLength));
}

int32_t KI_Csr_EncodeAttributes(const CsrEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Csr_EncodeAttributes", encodePart(ctx, out, writeAttributes));
}
