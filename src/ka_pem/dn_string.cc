#include "ka_pem.h"

#include <algorithm>

using namespace karil;

namespace {

constexpr int64_t MostOctets = 1024;
constexpr size_t AreaSize = 2048;

// The keys; each function has its own order of them.
constexpr char KeyC[] = "C=";
constexpr char KeyO[] = "O=";
constexpr char KeyOu[] = "OU=";
constexpr char KeyCn[] = "CN=";
constexpr char KeyE[] = "E=";
constexpr char KeyS[] = "S=";
constexpr char KeyL[] = "L=";
constexpr char KeyPa[] = "PA=";
constexpr char KeyPc[] = "PC=";
constexpr char KeyPhone[] = "Phone=";
constexpr char KeyIdCard[] = "IDCard=";

// A field that goes into a text.
struct Source {
    const char *key;
    const uint8_t *value;
    int32_t length;

    bool isLeftOut() const { return length <= 0; }
};

// A field that is looked for in a text.
struct Target {
    const char *key;
    uint8_t *value;
    int32_t *length;
    bool joins = false; // all from the first occurrence to the last

    void set(Bytes found) const {
        *length = static_cast<int32_t>(found.size());
        if (value != nullptr && !found.empty())
            memcpy(value, found.data(), found.size());
    }
};

struct Area {
    uint8_t octets[AreaSize];
    size_t size = 0;

    void add(Bytes part) {
        memcpy(octets + size, part.data(), part.size());
        size += part.size();
    }
    Bytes text() const { return {octets, size}; }
};

// All values and keys together are then far below the area's size.
bool fits(std::span<const Source> fields) {
    int64_t sum = 0;
    for (const Source &field : fields) {
        if (field.value == nullptr && !field.isLeftOut())
            return false;
        sum += std::max(field.length, 0);
    }
    return sum <= MostOctets;
}

Status generate(std::span<const Source> fields, uint8_t *output, int32_t *outputLength) {
    if (outputLength == nullptr || !fits(fields))
        return Refused;
    Area area;
    for (const Source &field : fields) {
        if (field.isLeftOut())
            continue;
        area.add(bytesOf(area.size == 0 ? "" : ","));
        area.add(bytesOf(field.key));
        area.add({field.value, static_cast<size_t>(field.length)});
    }
    *outputLength = static_cast<int32_t>(area.size);
    if (output != nullptr)
        memcpy(output, area.octets, area.size);
    return KACERT_Ok;
}

void findValues(Bytes text, std::span<const Target> fields) {
    Bytes joined;
    for (bool isLast = false; !isLast;) {
        Bytes part = text;
        isLast = !split(text, ',', part, text);
        for (const Target &field : fields) {
            const Bytes key = bytesOf(field.key);
            if (part.size() < key.size() || !equal(part.first(key.size()), key))
                continue;
            const Bytes value = part.subspan(key.size());
            if (field.joins)
                joined = joined.data() == nullptr ? value : Bytes(joined.data(), value.data() + value.size());
            field.set(field.joins ? joined : value);
        }
    }
}

Status parse(std::span<const Target> fields, const uint8_t *text, int32_t length) {
    const bool isComplete = std::ranges::all_of(fields, [](const Target &field) { return field.length != nullptr; });
    if (!isComplete || (text == nullptr && length > 0))
        return Refused;
    for (const Target &field : fields)
        *field.length = 0;
    if (length > MostOctets)
        return Refused;
    if (length < 1)
        return KACERT_Ok;
    Area area; // a value may go into the text's own place
    area.add({text, static_cast<size_t>(length)});
    findValues(area.text(), fields);
    return KACERT_Ok;
}

} // namespace

int32_t KA_GenerateDN(const uint8_t *c, int32_t cLength, const uint8_t *o, int32_t oLength, const uint8_t *ou,
                      int32_t ouLength, const uint8_t *cn, int32_t cnLength, const uint8_t *e, int32_t eLength,
                      const uint8_t *s, int32_t sLength, const uint8_t *l, int32_t lLength, const uint8_t *pa,
                      int32_t paLength, const uint8_t *pc, int32_t pcLength, const uint8_t *phone, int32_t phoneLength,
                      uint8_t *output, int32_t *outputLength) {
    KA_FRAME("KA_GenerateDN");
    const Source fields[] = {
        {KeyC, c, cLength},    {KeyO, o, oLength},
        {KeyOu, ou, ouLength}, {KeyCn, cn, cnLength},
        {KeyE, e, eLength},    {KeyS, s, sLength},
        {KeyL, l, lLength},    {KeyPa, pa, paLength},
        {KeyPc, pc, pcLength}, {KeyPhone, phone, phoneLength},
    };
    KA_STEP_AS("------>KA_GenerateDN", generate(fields, output, outputLength));
    return KA_DONE();
}

int32_t KA_GenerateDN_ForMultOu(const uint8_t *e, int32_t eLength, const uint8_t *cn, int32_t cnLength,
                                const uint8_t *ou, int32_t ouLength, const uint8_t *o, int32_t oLength,
                                const uint8_t *l, int32_t lLength, const uint8_t *s, int32_t sLength, const uint8_t *c,
                                int32_t cLength, const uint8_t *pa, int32_t paLength, const uint8_t *pc,
                                int32_t pcLength, const uint8_t *phone, int32_t phoneLength, const uint8_t *idCard,
                                int32_t idCardLength, uint8_t *output, int32_t *outputLength) {
    KA_FRAME("KA_GenerateDN_ForMultOu");
    const Source fields[] = {
        {KeyE, e, eLength},
        {KeyCn, cn, cnLength},
        {KeyOu, ou, ouLength},
        {KeyO, o, oLength},
        {KeyL, l, lLength},
        {KeyS, s, sLength},
        {KeyC, c, cLength},
        {KeyPa, pa, paLength},
        {KeyPc, pc, pcLength},
        {KeyPhone, phone, phoneLength},
        {KeyIdCard, idCard, idCardLength},
    };
    KA_STEP_AS("------>KA_GenerateDN_ForMultOu", generate(fields, output, outputLength));
    return KA_DONE();
}

int32_t KA_ParseDN(uint8_t *c, int32_t *cLength, uint8_t *o, int32_t *oLength, uint8_t *ou, int32_t *ouLength,
                   uint8_t *cn, int32_t *cnLength, uint8_t *e, int32_t *eLength, uint8_t *s, int32_t *sLength,
                   uint8_t *l, int32_t *lLength, uint8_t *pa, int32_t *paLength, uint8_t *pc, int32_t *pcLength,
                   uint8_t *phone, int32_t *phoneLength, const uint8_t *text, int32_t textLength) {
    KA_FRAME("KA_ParseDN");
    const Target fields[] = {
        {KeyC, c, cLength},    {KeyO, o, oLength},
        {KeyOu, ou, ouLength}, {KeyCn, cn, cnLength},
        {KeyE, e, eLength},    {KeyS, s, sLength},
        {KeyL, l, lLength},    {KeyPa, pa, paLength},
        {KeyPc, pc, pcLength}, {KeyPhone, phone, phoneLength},
    };
    KA_STEP_AS("------>KA_ParseDN", parse(fields, text, textLength));
    return KA_DONE();
}

int32_t KA_ParseDN_ForMultOu(uint8_t *c, int32_t *cLength, uint8_t *o, int32_t *oLength, uint8_t *ou, int32_t *ouLength,
                             uint8_t *cn, int32_t *cnLength, uint8_t *e, int32_t *eLength, uint8_t *s, int32_t *sLength,
                             uint8_t *l, int32_t *lLength, uint8_t *pa, int32_t *paLength, uint8_t *pc,
                             int32_t *pcLength, uint8_t *phone, int32_t *phoneLength, uint8_t *idCard,
                             int32_t *idCardLength, const uint8_t *text, int32_t textLength) {
    KA_FRAME("KA_ParseDN_ForMultOu");
    const Target fields[] = {
        {KeyC, c, cLength},
        {KeyO, o, oLength},
        {KeyOu, ou, ouLength, true},
        {KeyCn, cn, cnLength},
        {KeyE, e, eLength},
        {KeyS, s, sLength},
        {KeyL, l, lLength},
        {KeyPa, pa, paLength},
        {KeyPc, pc, pcLength},
        {KeyPhone, phone, phoneLength},
        {KeyIdCard, idCard, idCardLength},
    };
    KA_STEP_AS("------>KA_ParseDN_ForMultOu", parse(fields, text, textLength));
    return KA_DONE();
}
