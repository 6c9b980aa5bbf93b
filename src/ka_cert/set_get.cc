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

Status giveIf(bool isThere, const Answer &answer, Bytes value) {
    return isThere ? give(answer, value) : KACERT_Ok;
}

Status giveCrossed(const Answer &answer, const Anybuf &octets, const Anybuf &length) {
    const Bytes source = bytesOf(octets);
    const uint32_t size = length.length;
    KA_PASS(give(answer, source.first(source.size() < size ? source.size() : size)));
    *answer.length = size;
    if (answer.result != nullptr)
        for (size_t i = source.size(); i < size; ++i)
            answer.result[i] = 0;
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

Status setTagged(Anybuf &field, Bytes value, uint32_t tag) {
    KA_STEP_AS("------>KI_SetAttributeCharValue", replace(field, value));
    field.tag = tag;
    return KACERT_Ok;
}

Status setDerName(Anybuf &field, Bytes value) {
    if (field.data != nullptr && field.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "======>KI_SetAttributeCharValue");
    return setTagged(field, value, field.tag);
}

Status setFlag(uint8_t &flag, Bytes value) {
    flag = value[0];
    return KACERT_Ok;
}

Status setOnce(uint8_t &flag, Anybuf &field, Bytes value, const char *words) {
    if (flag != 0)
        return KA_FAIL(KACERT_AttributeAlreadySet, words);
    KA_PASS(setTagged(field, value, field.tag));
    flag = 1;
    return KACERT_Ok;
}

Status setHook(KAHookFunc &hook, Anybuf &key, KAHookFunc value, const void *parameter, uint32_t length) {
    if (parameter != nullptr && length > 0) {
        Anybuf copy = {};
        KA_STEP(KI_SetAttributeCharValue(&copy, static_cast<const uint8_t *>(parameter), length));
        clearSecret(key);
        key = copy;
    }
    hook = value;
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KACert_SetCertAttributeChar(CertEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KACert_SetCertAttributeChar",
                     setAttribute(certAttributes(), ctx, id, value, length, KACERT_InvalidLengthErr));
}

int32_t KACert_GetCertAttributeChar(CertDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KACert_GetCertAttributeChar");
    if (resultLength != nullptr)
        *resultLength = 0;
    KA_PASS(getAttribute(certAttributes(), ctx, id, result, resultLength));
    return KA_DONE();
}
