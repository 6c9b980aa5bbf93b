#include "ka_cert.h"

using namespace karil;

namespace {

Status appendPrivate(CertEncodeCtx &ctx, Bytes oid, uint8_t critical, Bytes value) {
    CertExtensions &ext = ctx.extensions;
    ctx.hasExtensions = 1;
    NodePtr<PrivateExtensionNode> node;
    KA_PASS(createPair(node, oid, value));
    node->critical = critical;
    appendMarked<&PrivateExtensionNode::next>(ext.privateExtensions, ctx.privateExtensionMarks, node.release());
    ext.hasPrivate = 1;
    return KACERT_Ok;
}

// An element around `length` octets, or -1.
Status writeValue(int32_t (*write)(const Anybuf *, Anybuf **), const uint8_t *value, uint32_t length, uint32_t tag,
                  Anybuf **out) {
    const Anybuf source = borrow({value, length}, tag);
    return out != nullptr && write(&source, out) == KACERT_Ok ? KACERT_Ok : -1;
}

} // namespace

int32_t KACert_EncodeChar(const uint8_t *value, int32_t length, Anybuf **out) {
    KA_FRAME("KACert_EncodeChar");
    if (length < 0 || (value == nullptr) != (length == 0))
        return KA_FAIL(-1, "------>KACert_EncodeChar");
    KA_STEP_AS("------>KAsn1_WritePrintableString",
               writeValue(KAsn1_WritePrintableString, value, static_cast<uint32_t>(length), TagPrintableString, out));
    return KA_DONE();
}

int32_t UnsignedChar2OCTET(const uint8_t *value, int32_t length, Anybuf **out) {
    KA_FRAME("UnsignedChar2OCTET");
    if (value == nullptr || length < 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------>UnsignedChar2OCTET");
    KA_STEP_AS("------>KAsn1_WriteOctetString",
               writeValue(KAsn1_WriteOctetString, value, static_cast<uint32_t>(length), TagOctetString, out));
    return KA_DONE();
}

int32_t KACert_SetCertAttributePrivate(CertEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength, uint8_t critical,
                                       const uint8_t *value, int32_t valueLength) {
    KA_FRAME("KACert_SetCertAttributePrivate");
    KA_PASS(checkPair(ctx, oid, oidLength, value, valueLength));
    KA_PASS(appendPrivate(*ctx, Bytes(oid, static_cast<size_t>(oidLength)), critical,
                          Bytes(value, static_cast<size_t>(valueLength))));
    return KA_DONE();
}

int32_t KACert_SetCertAttributePrivate_ForValue(CertEncodeCtx *ctx, const uint8_t *oid, int32_t oidLength,
                                                uint8_t critical, const uint8_t *value, int32_t valueLength,
                                                int32_t type) {
    KA_FRAME("KACert_SetCertAttributePrivate_ForValue");
    if (value == nullptr || valueLength < 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------>certAttributiValue或者certAttributeValueLen Err");
    Chain element;
    if (type == TagPrintableString)
        KA_STEP(KACert_EncodeChar(value, valueLength, element.slot()));
    else
        KA_STEP(UnsignedChar2OCTET(value, valueLength, element.slot()));
    const Bytes whole = bytesOf(*element.head());
    if (whole.size() > INT32_MAX)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    KA_STEP(KACert_SetCertAttributePrivate(ctx, oid, oidLength, critical, whole.data(),
                                           static_cast<int32_t>(whole.size())));
    return KA_DONE();
}

int32_t KACert_GetCertAttributePrivate(const CertDecodeCtx *ctx, uint32_t *index, uint8_t *oid, uint32_t *oidLength,
                                       uint32_t *critical, uint8_t *value, uint32_t *valueLength) {
    KA_FRAME("KACert_GetCertAttributePrivate");
    KA_PASS(checkPointers({ctx, index}));
    const PrivateExtensionNode *node =
        numbered(ctx->extensions.privateExtensions, const_cast<ListMarks &>(ctx->privateExtensionMarks), *index);
    if (node == nullptr)
        return KA_DONE();
    KA_PASS(checkPointers({oidLength, critical, valueLength}));
    handOut(node->oid, oid, oidLength);
    handOut(node->value, value, valueLength);
    *critical = node->critical;
    return KA_DONE();
}
