// The life of a context, and routines with two names.
#pragma once

#include "ka_low.h"

#include <initializer_list>

namespace karil {

// Refuses null pointers.
[[nodiscard]] Status checkPointers(std::initializer_list<const void *> pointers,
                                   Status refusal = KACERT_InvalidParamErr);

// A zeroed record for `*out`, which must not be null.
[[nodiscard]] Status createRecord(const void *out, uint32_t size, void *&record,
                                  Status refusal = KACERT_InvalidParamErr);

// Stores a zeroed context. The id of its `algorithms` is 1.
template <class Ctx>
[[nodiscard]] Status createContext(Ctx **out, std::initializer_list<AlgorithmRecord Ctx::*> algorithms) {
    void *record = nullptr;
    KA_PASS(createRecord(out, sizeof(Ctx), record));
    *out = static_cast<Ctx *>(record);
    for (const auto algorithm : algorithms)
        ((*out)->*algorithm).id = 1;
    return KACERT_Ok;
}

template <class Ctx> [[nodiscard]] Status destroyContext(Ctx *ctx, void (*clear)(Ctx &)) {
    if (ctx != nullptr)
        clear(*ctx);
    KAPR_Free(ctx);
    return KACERT_Ok;
}

} // namespace karil

// The body of an exported function that is another name of a routine.
#define KA_TWIN(NAME, ...)                                                                                             \
    KA_FRAMED(NAME, [&]() -> ::karil::Status {                                                                         \
        KA_STEP(__VA_ARGS__);                                                                                          \
        return KACERT_Ok;                                                                                              \
    }())

// Another name of an exported function: one function under two symbols. It stands after the function, in its file.
#define KA_ALIAS(NAME, FUNCTION) decltype(FUNCTION) NAME __attribute__((alias(#FUNCTION)))
