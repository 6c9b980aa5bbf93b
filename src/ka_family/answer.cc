#include "answer.h"

#include <string.h>

namespace karil {

void handOut(const Anybuf &source, uint8_t *result, uint32_t *resultLength) {
    *resultLength = source.length;
    if (result != nullptr && source.length > 0)
        memmove(result, source.data, source.length);
}

Status answerOctets(const Answer &answer, Bytes value) {
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

Status answerIf(bool isThere, const Answer &answer, Bytes value) {
    return isThere ? answerOctets(answer, value) : KACERT_Ok;
}

Status answerIntoBuffer(const Answer &answer, Bytes value) {
    if (answer.result == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    return answerOctets(answer, value);
}

Status answerWithLengthOf(const Anybuf &other, const Answer &answer, const Anybuf &octets) {
    const Bytes source = bytesOf(octets);
    const uint32_t size = other.length;
    KA_PASS(answerOctets(answer, source.first(source.size() < size ? source.size() : size)));
    *answer.length = size;
    if (answer.result != nullptr && source.size() < size)
        memset(answer.result + source.size(), 0, size - source.size());
    return KACERT_Ok;
}

Status answerName(const NameRecord &head, uint32_t kind, const Answer &answer) {
    const NameRecord *record = findName(head, kind);
    return record != nullptr ? answerOctets(answer, bytesOf(record->value)) : KACERT_Ok;
}

Status answerUnits(const NameRecord &head, const Answer &answer) {
    constexpr uint8_t Separator[] = {',', 'O', 'U', '='};
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

Status answerText(Anybuf &cache, const NameRecord &head, const Answer &answer) {
    if (cache.length == 0 && KI_GetDN(&cache, &head) != KACERT_Ok) {
        KA_TRACE("------>KI_GetDN");
        return KACERT_Ok;
    }
    return answerOctets(answer, bytesOf(cache));
}

} // namespace karil
