// The numbered attributes of a context: a table row for each, with what Set and Get do, and the functions that most
// rows are made of.
#pragma once

#include "answer.h"
#include "context.h"

#include <algorithm>

namespace karil {

// An id of the Char functions.
template <class Ctx> struct Attribute {
    int32_t id;
    const char *setWords;
    const char *getWords;
    const char *getLengthWords;
    Status (*set)(Ctx &ctx, Bytes value);          // null: not set
    Status (*get)(Ctx &ctx, const Answer &answer); // null: not asked for
};

// An id of the Int functions. A Get may leave the value as it is.
template <class Ctx> struct IntAttribute {
    int32_t id;
    const char *setWords;
    const char *getWords;
    Status (*set)(Ctx &ctx, int32_t value);
    void (*get)(const Ctx &ctx, int32_t &value); // null: not asked for
};

// The row of an id, or null. It is found at once in a table in the order of its ids, which the large ones are.
template <class Row, size_t Size> const Row *findRow(const Row (&rows)[Size], int32_t id) {
    const Row *const guess = std::ranges::lower_bound(rows, id, {}, &Row::id);
    if (guess != std::end(rows) && guess->id == id)
        return guess;
    for (const Row &row : rows)
        if (row.id == id)
            return &row;
    return nullptr;
}

// What a family answers to arguments that Set and Get refuse before their row is reached.
struct Refusals {
    Status pointer = KACERT_InvalidParamErr;
    Status length = KACERT_InvalidLengthErr; // of a value that is shorter than the shortest
    Status id = KACERT_AttributeNotSupportErr;
    const char *setWords = "------>Set KACERT_AttributeNotSupportErr";
    const char *getWords = "------>Get KACERT_AttributeNotSupportErr";
    int32_t shortest = 1;
};
[[nodiscard]] Status checkValue(const void *ctx, const uint8_t *value, int32_t length, const Refusals &refusals);
[[nodiscard]] Status refuseId(Status status, const char *words);
// The same for a Set of an object identifier with its value.
[[nodiscard]] Status checkPair(const void *ctx, const uint8_t *oid, int32_t oidLength, const uint8_t *value,
                               int32_t valueLength, Status refusal = KACERT_InvalidParamErr);
// The words of a Set or Get that its row begins with.
void traceRow(const char *words);

// The Set and Get of the Char functions, within their frame.
template <class Ctx, size_t Size>
[[nodiscard]] Status setAttribute(const Attribute<Ctx> (&rows)[Size], Ctx *ctx, int32_t id, const uint8_t *value,
                                  int32_t length, const Refusals &refusals = {}) {
    KA_PASS(checkValue(ctx, value, length, refusals));
    const Attribute<Ctx> *row = findRow(rows, id);
    if (row == nullptr || row->set == nullptr)
        return refuseId(refusals.id, refusals.setWords);
    traceRow(row->setWords);
    return row->set(*ctx, Bytes(value, static_cast<size_t>(length)));
}
template <class Ctx, size_t Size>
[[nodiscard]] Status getAttribute(const Attribute<Ctx> (&rows)[Size], Ctx *ctx, int32_t id, uint8_t *result,
                                  uint32_t *resultLength, const Refusals &refusals = {}) {
    KA_PASS(checkPointers({ctx, resultLength}, refusals.pointer));
    const Attribute<Ctx> *row = findRow(rows, id);
    if (row == nullptr || row->get == nullptr)
        return refuseId(refusals.id, refusals.getWords);
    return row->get(*ctx, {result, resultLength, row->getWords, row->getLengthWords});
}

// The same of the Int functions.
template <class Ctx, size_t Size>
[[nodiscard]] Status setInt(const IntAttribute<Ctx> (&rows)[Size], Ctx *ctx, int32_t id, int32_t value,
                            const Refusals &refusals = {}) {
    KA_PASS(checkPointers({ctx}, refusals.pointer));
    const IntAttribute<Ctx> *row = findRow(rows, id);
    if (row == nullptr)
        return refuseId(refusals.id, refusals.setWords);
    traceRow(row->setWords);
    return row->set(*ctx, value);
}
template <class Ctx, size_t Size>
[[nodiscard]] Status getInt(const IntAttribute<Ctx> (&rows)[Size], const Ctx *ctx, int32_t id, int32_t *value,
                            const Refusals &refusals = {}) {
    KA_PASS(checkPointers({ctx, value}, refusals.pointer));
    const IntAttribute<Ctx> *row = findRow(rows, id);
    if (row == nullptr || row->get == nullptr)
        return refuseId(refusals.id, refusals.getWords);
    traceRow(row->getWords);
    row->get(*ctx, *value);
    return KACERT_Ok;
}

// A field becomes a copy of the value with the tag.
[[nodiscard]] Status setTagged(Anybuf &field, Bytes value, uint32_t tag);
// A field is set once; `flag` tells that it was.
constexpr char AlreadySet[] = "------>KACERT_AttributeAlreadySet";
[[nodiscard]] Status setOnce(uint8_t &flag, Anybuf &field, Bytes value, const char *words = AlreadySet);
// A ready Name element.
[[nodiscard]] Status setDerName(Anybuf &field, Bytes value);

// The field that members lead to: &Ctx::algorithm, &AlgorithmRecord::oid.
template <auto... Path, class Ctx> auto &fieldOf(Ctx &ctx) {
    return (ctx.*....*Path);
}

// Functions for rows.
template <uint32_t NewTag, auto... Path, class Ctx> Status setField(Ctx &ctx, Bytes value) {
    return setTagged(fieldOf<Path...>(ctx), value, NewTag);
}
template <auto Extension, class Ctx> Status setCritical(Ctx &ctx, Bytes value) {
    (ctx.extensions.*Extension).critical = value[0];
    return KACERT_Ok;
}
template <auto... Path, class Ctx> Status setNameElement(Ctx &ctx, Bytes value) {
    return setDerName(fieldOf<Path...>(ctx), value);
}
template <uint32_t Kind, auto... Path, class Ctx> Status addToName(Ctx &ctx, Bytes value) {
    return appendName(fieldOf<Path...>(ctx), Kind, value);
}
template <auto... Path, class Ctx> Status answerField(Ctx &ctx, const Answer &answer) {
    return answerOctets(answer, bytesOf(fieldOf<Path...>(ctx)));
}
template <uint32_t Kind, auto... Path, class Ctx> Status answerFromName(Ctx &ctx, const Answer &answer) {
    return answerName(fieldOf<Path...>(ctx), Kind, answer);
}
template <auto Cache, auto Name, class Ctx> Status answerLine(Ctx &ctx, const Answer &answer) {
    return answerText(ctx.*Cache, ctx.*Name, answer);
}

} // namespace karil

// A row of Attribute; the words of Set, or of both, may be another id's.
#define KA_ROW(ID, SET, GET) KA_ROW_AS(ID, #ID, SET, GET)
#define KA_ROW_AS(ID, SET_WORDS, SET, GET) KA_ROW_WORDS(ID, SET_WORDS, #ID, SET, GET)
#define KA_ROW_WORDS(ID, SET_WORDS, GET_WORDS, SET, GET)                                                               \
    { ID, KA_ARROW "Set " SET_WORDS, KA_ARROW "Get " GET_WORDS, KA_ARROW "Get " GET_WORDS " LEN", SET, GET }
// A component of the issuer, in a file that calls its context Ctx.
#define KA_ISSUER(ID, KIND) KA_ROW(ID, (addToName<KIND, &Ctx::issuer>), (answerFromName<KIND, &Ctx::issuer>))
// A row of IntAttribute.
#define KA_INT_ROW(ID, SET, GET) KA_INT_ROW_AS(ID, #ID, SET, GET)
#define KA_INT_ROW_AS(ID, SET_WORDS, SET, GET)                                                                         \
    { ID, KA_ARROW "Set " SET_WORDS, KA_ARROW "Get " #ID, SET, GET }
