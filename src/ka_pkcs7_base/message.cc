#include "message.h"

namespace karil {

Status openMessage(const Element &whole, int32_t type, Element &content) {
    ContentInfo info;
    KA_STEP_AS("------>KI_MakeSequenceToContent", readContentInfo(whole, info));
    if (!info.is(type))
        return KA_FAIL(KAPKCS7_ContentTypeErr, "------>KAPKCS7_ContentTypeErr");
    if (!hasContent(info))
        return KA_FAIL(KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr");
    content = info.content;
    return KACERT_Ok;
}

void writeTaggedContent(Writer &out, bool isData, Bytes content) {
    const Construct tagged(out, taggedSet(0), content.size() + 6);
    if (isData)
        out.octetString(content);
    else
        out.octets(content);
}

Status readTaggedContent(const Element &field, bool isData, Status missing, Anybuf &content) {
    Implicit tagged;
    KA_STEP_AS("------>KAsn1_ReadImplicit", readImplicit(field, tagged));
    if (tagged.number != 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------>KACERT_InvalidItemErr");
    Element value = tagged.constructed ? tagged.level.take() : tagged.content;
    if (!value.present())
        return KA_FAIL(missing, "------>KAsn1_ReadImplicit");
    if (isData)
        KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(value, value));
    KA_STEP_AS("------>KI_CopyAnybuf", store(content, value));
    return KACERT_Ok;
}

Status readVersion(Level &fields, Status missing, uint32_t &version) {
    Element field;
    KA_PASS(takeField(fields, field, missing, "------>KAsn1_ReadInteger"));
    KA_STEP_AS("------>KAsn1_ReadInteger", readInteger(field, version));
    return KACERT_Ok;
}

Status checkPosition(bool isSet, uint32_t count, int32_t position) {
    if (!isSet || count == 0 || static_cast<uint32_t>(position) > count)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    return KACERT_Ok;
}

void writeCertificates(Writer &out, const Certificates &lists) {
    if (lists.certificatesSet != 0)
        writeElements(out, taggedSet(0), lists.certificates.first);
    if (lists.crlsSet != 0)
        writeElements(out, taggedSet(1), lists.crls.first);
}

uint64_t sizeOfCertificates(const Certificates &lists) {
    return sizeOfElements(lists.certificates.first) + sizeOfElements(lists.crls.first);
}

namespace {

constexpr char NotEnd[] = "------>KACERT_CertNotEndErr";

// A list in the field if its tag has the number; then the next field.
Status readTaggedList(Level &fields, uint32_t number, Element &field, ElementList list, uint8_t &isSet) {
    Implicit tagged;
    if (readImplicit(field, tagged) != KACERT_Ok)
        return KA_FAIL(KACERT_InvalidItemErr, "------>KAsn1_ReadImplicit");
    if (tagged.number != number)
        return KACERT_Ok;
    if (tagged.constructed)
        KA_PASS(addElements(list, tagged.level));
    else
        KA_PASS(addElement(list, tagged.content));
    isSet = 1;
    return takeField(fields, field, KACERT_CertNotEndErr, NotEnd);
}

} // namespace

Status readCertificates(Level &fields, const Certificates &lists, Element &signers) {
    KA_PASS(takeField(fields, signers, KACERT_CertNotEndErr, NotEnd));
    KA_PASS(readTaggedList(fields, 0, signers, lists.certificates, lists.certificatesSet));
    return readTaggedList(fields, 1, signers, lists.crls, lists.crlsSet);
}

void clearCertificates(const Certificates &lists) {
    clearElements(lists.certificates);
    clearElements(lists.crls);
    lists.certificatesSet = lists.crlsSet = 0;
}

Status keepSet(const Element &set, Anybuf *&first, uint32_t &count, Level &elements) {
    KA_STEP_AS("------>KAsn1_ReadSet", readSet(set, elements));
    ListMarks marks = {};
    return addElements({first, count, marks}, elements);
}

Status giveContent(SignerList list, Bytes contentType, const SharedContent &content) {
    SignerInfoCtx *ctx = list.first;
    for (uint32_t i = 0; i < list.count && ctx != nullptr; ++i, ctx = ctx->next)
        KA_PASS(lendContent(*ctx, {TagObjectId, contentType}, &content));
    return KACERT_Ok;
}

Status writeSignerSet(Writer &out, SignerList list) {
    const Construct set(out, TagSet, uint64_t{list.count} * SignerSize);
    SignerInfoCtx *ctx = list.first;
    for (uint32_t i = 0; i < list.count && ctx != nullptr; ++i, ctx = ctx->next)
        KA_STEP_AS("------>KA_PKCS7_EncodeSignerInfo", writeSigner(out, *ctx, ElementBound));
    return KACERT_Ok;
}

Status giveKey(RecipientInfoCtx *first, Bytes key) {
    for (RecipientInfoCtx *ctx = first; ctx != nullptr; ctx = ctx->next)
        KA_PASS(replaceSecret(ctx->key, key));
    return KACERT_Ok;
}

Status writeRecipientSet(Writer &out, RecipientInfoCtx *first) {
    const Construct set(out, TagSet);
    for (RecipientInfoCtx *ctx = first; ctx != nullptr; ctx = ctx->next)
        KA_STEP_AS("------>KA_PKCS7_EncodeRecipientInfo", writeRecipient(out, *ctx, ElementBound));
    return KACERT_Ok;
}

Status answerNothing(uint32_t *resultLength) {
    *resultLength = 0;
    return KA_FAIL(KACERT_Ok, "------>KAPR_Malloc");
}

Status takeEncryptedContent(EncryptedContentCtx *&field, EncryptedContentCtx *given, const void *message) {
    if (field != nullptr)
        return KACERT_Ok;
    KA_PASS(takeOver(given->owner, message));
    field = given;
    return KACERT_Ok;
}

Status answerEncryptedContent(EncryptedContentCtx *field, EncryptedContentCtx **out) {
    KA_PASS(checkArguments({out}));
    if (field != nullptr)
        *out = field;
    return KACERT_Ok;
}

Status writeEncrypted(Writer &out, EncryptedContentCtx &encrypted, Bytes contentType, Bytes content, uint32_t bound) {
    KA_PASS(setPlainContent(encrypted, contentType, content));
    KA_STEP_AS("------>KA_PKCS7_EncodeEncryptedContent", writeEncryptedContent(out, encrypted, bound));
    return KACERT_Ok;
}

Status readEncrypted(const Element &element, EncryptedContentCtx *&field, const void *message) {
    EncryptedContentPtr fresh;
    KA_PASS(createEncryptedContent(fresh));
    KA_STEP_AS("------>KA_PKCS7_DecodeEncryptedContent", readEncryptedContent(element, *fresh));
    KA_PASS(takeEncryptedContent(field, fresh.get(), message));
    (void)fresh.release();
    return KACERT_Ok;
}

Status noteContentType(const EncryptedContentCtx &encrypted, AlgorithmRecord &contentType) {
    const Bytes oid = bytesOf(encrypted.contentType.oid);
    if (oid.empty())
        return KACERT_Ok;
    KA_STEP_AS("------>KI_CopyAnybuf", store(contentType.oid, {TagObjectId, oid, true}));
    return KACERT_Ok;
}

void dropEncryptedContent(EncryptedContentCtx *&field) {
    destroyEncryptedContent(field);
    field = nullptr;
}

} // namespace karil
