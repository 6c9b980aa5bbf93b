// PFX files: the context with its key, certificates and attributes.
#include "ka_pkcs12_pfx.h"

namespace karil {

template <> inline void clearNode(PfxCertificate &node) {
    clearAttributes(attributesOf(node));
    freeData(node.certificate);
}

namespace {

using Ctx = PfxCtx;

Status create(Ctx **out) {
    KA_PASS(checkArguments({out}));
    void *record = nullptr;
    KA_PASS(createRecord(out, sizeof(Ctx), record));
    Owned<Ctx> ctx(static_cast<Ctx *>(record));
    KA_STEP(KA_PKCS12_CreateEncodeAuthSafeOfDataType(&ctx->authSafe));
    *out = ctx.release();
    return KACERT_Ok;
}

void clearContext(Ctx &ctx) {
    (void)KA_PKCS12_DestoryEncodeAuthSafeOfDataType(ctx.authSafe);
    freeList(ctx.firstCertificate);
    clearAttributes(keyAttributesOf(ctx));
    clearAttributes(bagAttributesOf(ctx));
    clearSecret(ctx.privateKey);
}

Status destroy(Ctx *ctx) {
    KA_PASS(checkArguments({ctx}));
    return destroyContext(ctx, clearContext);
}

Status refuse() {
    return KA_FAIL(KACERT_InvalidItemErr, "------------>KACERT_InvalidItemErr");
}

// Octets of a caller; null only with length 0.
Status checkOctets(const Ctx *ctx, const uint8_t *value, int32_t length) {
    return ctx == nullptr || length < 0 || (value == nullptr && length > 0) ? refuse() : KACERT_Ok;
}

struct Pair {
    const uint8_t *name;
    int32_t nameLength;
    const uint8_t *value;
    int32_t valueLength;
};
Status checkPairOf(const Ctx *ctx, const Pair &pair) {
    KA_PASS(checkArguments({ctx, pair.name, pair.value}));
    return pair.nameLength < 0 || pair.valueLength < 0 ? refuse() : KACERT_Ok;
}
Status addPair(AttributeList list, const Pair &pair) {
    return addAttribute(list, AttributeOfCaller, {pair.name, static_cast<size_t>(pair.nameLength)},
                        {pair.value, static_cast<size_t>(pair.valueLength)});
}

Status setPrivateKey(Ctx *ctx, const uint8_t *value, int32_t length) {
    KA_PASS(checkOctets(ctx, value, length));
    return replaceSecret(ctx->privateKey, {value, static_cast<size_t>(length)});
}

Status setKeyAttribute(Ctx *ctx, const Pair &pair, AttributeList (*listOf)(Ctx &)) {
    KA_PASS(checkPairOf(ctx, pair));
    KA_PASS(addPair(listOf(*ctx), pair));
    noteAttributes(*ctx);
    return KACERT_Ok;
}

Status setCertificate(Ctx *ctx, const uint8_t *value, int32_t length) {
    KA_PASS(checkOctets(ctx, value, length));
    return addCertificate(*ctx, {value, static_cast<size_t>(length)}, nullptr);
}

PfxCertificate *certificateAt(Ctx &ctx, int32_t index) {
    return nodeAt<&PfxCertificate::next>(ctx.firstCertificate, ctx.certificateMarks, index);
}

Status setCertificateAttribute(Ctx *ctx, const Pair &pair, int32_t index) {
    KA_PASS(checkPairOf(ctx, pair));
    if (index < 0 || ctx->firstCertificate == nullptr)
        return refuse();
    const auto last = static_cast<int32_t>(ctx->certificateCount);
    PfxCertificate &certificate = *certificateAt(*ctx, index < 1 ? 1 : index > last ? last : index);
    KA_PASS(addPair(attributesOf(certificate), pair));
    certificate.attributeCount = countOf(certificate.attributes.next);
    return KACERT_Ok;
}

Status getPrivateKey(const Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, resultLength}));
    handOut(ctx->privateKey, result, resultLength);
    return KACERT_Ok;
}

struct PairOutput {
    uint8_t *name;
    uint32_t *nameLength;
    uint8_t *value;
    uint32_t *valueLength;
};
Status checkOutput(const Ctx *ctx, const PairOutput &out) {
    return checkArguments({ctx, out.name, out.nameLength, out.value, out.valueLength});
}
void answerPair(AttributeList list, int32_t index, const PairOutput &out) {
    const AttributeRecord *node = nodeAt<&AttributeRecord::next>(list.head, list.marks, index);
    if (node == nullptr)
        return;
    handOut(node->oid, out.name, out.nameLength);
    handOut(node->value, out.value, out.valueLength);
}

Status getKeyAttribute(Ctx *ctx, const PairOutput &out, int32_t index, AttributeList (*listOf)(Ctx &)) {
    KA_PASS(checkOutput(ctx, out));
    answerPair(listOf(*ctx), index, out);
    return KACERT_Ok;
}

Status getCertificate(Ctx *ctx, uint8_t *result, uint32_t *resultLength, int32_t index) {
    KA_PASS(checkArguments({ctx, resultLength}));
    if (const PfxCertificate *node = certificateAt(*ctx, index); node != nullptr)
        handOut(node->certificate, result, resultLength);
    return KACERT_Ok;
}

Status getCertificateAttribute(Ctx *ctx, const PairOutput &out, int32_t index, int32_t attributeIndex) {
    KA_PASS(checkOutput(ctx, out));
    if (PfxCertificate *node = certificateAt(*ctx, index); node != nullptr)
        answerPair(attributesOf(*node), attributeIndex, out);
    return KACERT_Ok;
}

} // namespace

Status checkPassword(const uint8_t *password, int32_t length) {
    return length < 0 || (password == nullptr && length > 0) ? refuse() : KACERT_Ok;
}

void noteAttributes(PfxCtx &ctx) {
    ctx.keyAttributeCount = countOf(ctx.keyAttributes.next);
    ctx.bagAttributeCount = countOf(ctx.bagAttributes.next);
    ctx.keyAttributesSet = ctx.keyAttributeCount > 0;
    ctx.bagAttributesSet = ctx.bagAttributeCount > 0;
}

Status addCertificate(PfxCtx &ctx, Bytes certificate, PfxCertificate **added) {
    NodePtr<PfxCertificate> node;
    uint8_t *octets = nullptr;
    KA_PASS(createNode(node, certificate.size(), octets));
    placePart(node->certificate, certificate, octets);
    if (added != nullptr)
        *added = node.get();
    appendMarked<&PfxCertificate::next>(ctx.firstCertificate, ctx.certificateMarks, node.release());
    ++ctx.certificateCount;
    return KACERT_Ok;
}

Status setMacPassword(PfxMac &mac, int32_t digestId, Bytes password) {
    const MacRecord &record = mac.record;
    const Status status = KA_PKCS12_GenRandomFromPassword(
        digestId, password.data(), static_cast<uint32_t>(password.size()), record.salt.data, record.salt.length,
        KA_PKCS12_PURPOSE_MAC, record.iterations, mac.key.octets, MacKeySize);
    if (status != KACERT_Ok && status != KAPKCS7_RsaOperationErr)
        return KA_FAIL(status, "------------>KA_PKCS12_GenRandomFromPassword");
    mac.parameter = {digestId, mac.key.octets, MacKeySize};
    mac.record.macFunc = KA_HMACFunc_Ref;
    setPart(mac.record.macFuncParameter, {reinterpret_cast<const uint8_t *>(&mac.parameter), sizeof mac.parameter}, 0);
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_CreateEncodePfx(PfxCtx **out) {
    return KA_FRAMED("KA_PKCS12_CreateEncodePfx", create(out));
}

KA_ALIAS(KA_PKCS12_CreateDecodePfx, KA_PKCS12_CreateEncodePfx);

int32_t KA_PKCS12_DestroyEncodePFX(PfxCtx *ctx) {
    return KA_FRAMED("KA_PKCS12_DestroyEncodePFX", destroy(ctx));
}

KA_ALIAS(KA_PKCS12_DestroyDecodePFX, KA_PKCS12_DestroyEncodePFX);

int32_t KA_PKCS12_SetPrivateKey(PfxCtx *ctx, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetPrivateKey", setPrivateKey(ctx, value, length));
}

int32_t KA_PKCS12_SetPrivateKey_Attribute(PfxCtx *ctx, const uint8_t *name, int32_t nameLength, const uint8_t *value,
                                          int32_t valueLength) {
    return KA_FRAMED("KA_PKCS12_SetPrivateKey_Attribute",
                     setKeyAttribute(ctx, {name, nameLength, value, valueLength}, keyAttributesOf));
}

int32_t KA_PKCS12_SetPrivateKeyBag_Attribute(PfxCtx *ctx, const uint8_t *name, int32_t nameLength, const uint8_t *value,
                                             int32_t valueLength) {
    return KA_FRAMED("KA_PKCS12_SetPrivateKeyBag_Attribute",
                     setKeyAttribute(ctx, {name, nameLength, value, valueLength}, bagAttributesOf));
}

int32_t KA_PKCS12_SetCertificate(PfxCtx *ctx, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetCertificate", setCertificate(ctx, value, length));
}

int32_t KA_PKCS12_SetCertificateBag_Attribute(PfxCtx *ctx, const uint8_t *name, int32_t nameLength,
                                              const uint8_t *value, int32_t valueLength, int32_t index) {
    return KA_FRAMED("KA_PKCS12_SetCertificateBag_Attribute",
                     setCertificateAttribute(ctx, {name, nameLength, value, valueLength}, index));
}

int32_t KA_PKCS12_GetPrivateKey(PfxCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetPrivateKey", getPrivateKey(ctx, result, resultLength));
}

int32_t KA_PKCS12_GetPrivateKey_Attribute(PfxCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                          uint32_t *valueLength, int32_t index) {
    return KA_FRAMED("KA_PKCS12_GetPrivateKey_Attribute",
                     getKeyAttribute(ctx, {name, nameLength, value, valueLength}, index, keyAttributesOf));
}

int32_t KA_PKCS12_GetPrivateKeyBag_Attribute(PfxCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                             uint32_t *valueLength, int32_t index) {
    return KA_FRAMED("KA_PKCS12_GetPrivateKeyBag_Attribute",
                     getKeyAttribute(ctx, {name, nameLength, value, valueLength}, index, bagAttributesOf));
}

int32_t KA_PKCS12_GetCertificate(PfxCtx *ctx, uint8_t *result, uint32_t *resultLength, int32_t index) {
    return KA_FRAMED("KA_PKCS12_GetCertificate", getCertificate(ctx, result, resultLength, index));
}

int32_t KA_PKCS12_GetCertificateBag_Attribute(PfxCtx *ctx, uint8_t *name, uint32_t *nameLength, uint8_t *value,
                                              uint32_t *valueLength, int32_t index, int32_t attributeIndex) {
    return KA_FRAMED("KA_PKCS12_GetCertificateBag_Attribute",
                     getCertificateAttribute(ctx, {name, nameLength, value, valueLength}, index, attributeIndex));
}
