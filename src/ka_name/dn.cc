#include "ka_name.h"

#include <string.h>

using namespace karil;

namespace {

// The work area of the one-line text. It may not grow: longer names are refused.
struct Line {
    uint8_t text[1024];
    uint32_t length = 0;

    Status add(Bytes part) {
        if (part.data() == nullptr && !part.empty())
            return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
        if (part.size() > sizeof text - length)
            return KA_FAIL(KACERT_InvalidLengthErr, "------>KI_GetDN");
        if (!part.empty())
            memcpy(text + length, part.data(), part.size());
        length += static_cast<uint32_t>(part.size());
        return KACERT_Ok;
    }
    Status add(const char *word) { return add(Bytes(reinterpret_cast<const uint8_t *>(word), strlen(word))); }
};

// The last record of each kind, in the order of the attribute table.
using Latest = const NameRecord *[NameKinds];

void findLatest(const NameRecord &head, Latest &latest) {
    const auto attributes = nameAttributes();
    for (const NameRecord *record = head.next; record != nullptr; record = record->next)
        for (size_t i = 0; i < NameKinds; ++i)
            if (attributes[i].kind == record->id)
                latest[i] = record;
}

Status addField(Line &line, const char *key, Bytes value) {
    KA_PASS(line.add(key));
    KA_PASS(line.add(value));
    return line.add(",");
}

// Every unit that has text is a field of its own, so that ",OU=" stands between two of them.
Status addUnits(Line &line, const char *key, const NameRecord &head) {
    for (const NameRecord *record = head.next; record != nullptr; record = record->next)
        if (record->id == KA_NAME_ORGANIZATIONALUNIT && record->value.data != nullptr && record->value.length > 0)
            KA_PASS(addField(line, key, bytesOf(record->value)));
    return KACERT_Ok;
}

Status writeLine(const NameRecord &head, Line &line) {
    Latest latest = {};
    findLatest(head, latest);
    const auto attributes = nameAttributes();
    for (size_t i = 0; i < NameKinds; ++i) {
        if (latest[i] == nullptr)
            continue;
        if (attributes[i].kind == KA_NAME_ORGANIZATIONALUNIT)
            KA_PASS(addUnits(line, attributes[i].key, head));
        else
            KA_PASS(addField(line, attributes[i].key, bytesOf(latest[i]->value)));
    }
    return KACERT_Ok;
}

} // namespace

int32_t KI_GetDN(Anybuf *result, const NameRecord *head) {
    KA_FRAME("KI_GetDN");
    if (result == nullptr || head == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Line line;
    KA_PASS(writeLine(*head, line));
    if (line.length == 0)
        return KA_DONE();
    const uint32_t length = line.length - 1;
    auto *data = static_cast<uint8_t *>(KAPR_Malloc(KA_SOURCE, __LINE__, length));
    if (data == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    memcpy(data, line.text, length);
    result->data = data;
    result->length = length;
    return KA_DONE();
}
