#include "ka_cert.h"

#include <string.h>

namespace karil {

Status give(const Answer &answer, Bytes value) {
    *answer.length = static_cast<uint32_t>(value.size());
    if (answer.result == nullptr) {
        KA_TRACE(answer.lengthWords);
        return KACERT_Ok;
    }
    KA_TRACE(answer.words);
    if (!value.empty())
        memcpy(answer.result, value.data(), value.size());
    return KACERT_Ok;
}

Status giveFilled(const Answer &answer, Bytes value) {
    if (answer.result == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    return give(answer, value);
}

Status setName(CertEncodeCtx &ctx, NameList list, uint32_t kind, Bytes value) {
    CertExtensions &ext = ctx.extensions;
    switch (list) {
    case NameList::Issuer:
        return appendName(ctx.issuer, ctx.issuerLast, kind, value);
    case NameList::Subject:
        return appendName(ctx.subject, ctx.subjectLast, kind, value);
    case NameList::SubjectAlt:
        KA_PASS(appendName, ext.subjectAltName.names.directoryName, ctx.subjectAltLast, kind, value);
        ext.subjectAltName.names.present[FormDirectoryName] = 1;
        ext.hasSubjectAltName = 1;
        return KACERT_Ok;
    case NameList::IssuerAlt:
        KA_PASS(appendName, ext.issuerAltName.names.directoryName, ctx.issuerAltLast, kind, value);
        ext.issuerAltName.names.present[FormDirectoryName] = 1;
        ext.hasIssuerAltName = 1;
        return KACERT_Ok;
    }
    return KACERT_Ok;
}

Status giveName(const NameRecord &head, uint32_t kind, const Answer &answer) {
    const NameRecord *record = findName(head, kind);
    return record != nullptr ? give(answer, bytesOf(record->value)) : KACERT_Ok;
}

// What stands between two organizational units.
static constexpr uint8_t Separator[] = {',', 'O', 'U', '='};

Status giveUnits(const NameRecord &head, const Answer &answer) {
    uint8_t *at = answer.result;
    for (const NameRecord *record = head.next; record != nullptr; record = record->next) {
        if (record->id != KA_NAME_ORGANIZATIONALUNIT || record->value.length == 0)
            continue;
        if (at == nullptr)
            return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
        if (at != answer.result) {
            memcpy(at, Separator, sizeof Separator);
            at += sizeof Separator;
        }
        memcpy(at, record->value.data, record->value.length);
        at += record->value.length;
    }
    *answer.length = static_cast<uint32_t>(at - answer.result);
    return KACERT_Ok;
}

Status giveText(Anybuf &cache, const NameRecord &head, const Answer &answer) {
    if (cache.length == 0 && KI_GetDN(&cache, &head) != KACERT_Ok) {
        KA_TRACE("------>KI_GetDN");
        return KACERT_Ok;
    }
    return give(answer, bytesOf(cache));
}

Status handOut(const Anybuf &encoded, uint8_t *result, uint32_t *resultLength) {
    *resultLength = encoded.length;
    if (result != nullptr)
        memcpy(result, encoded.data, encoded.length);
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KACert_SetCertAttributeChar(CertEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    KA_FRAME("KACert_SetCertAttributeChar");
    if (length < 1)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    if (ctx == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const CertAttribute *attribute = certAttribute(id);
    if (attribute == nullptr || attribute->set == nullptr)
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Set KACERT_AttributeNotSupportErr");
    KA_TRACE(attribute->setWords);
    KA_PASS(attribute->set, *ctx, ctx->extensions, Bytes(value, static_cast<size_t>(length)));
    return KA_DONE();
}

int32_t KACert_GetCertAttributeChar(CertDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KACert_GetCertAttributeChar");
    if (ctx == nullptr || resultLength == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    *resultLength = 0;
    const CertAttribute *attribute = certAttribute(id);
    if (attribute == nullptr || attribute->get == nullptr)
        return KA_FAIL(KACERT_AttributeNotSupportErr, "------>Get KACERT_AttributeNotSupportErr");
    const Answer answer = {result, resultLength, attribute->getWords, attribute->getLengthWords};
    KA_PASS(attribute->get, *ctx, ctx->extensions, answer);
    return KA_DONE();
}
