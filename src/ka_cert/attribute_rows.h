// How the attributes.cc of a family writes its rows. In a body stand `ctx`, `ext` (the context's extension block, if it
// has one) and `value` or `answer`.
#pragma once

#include "ka_cert.h"

namespace karil {

template <class Ctx> auto &extensionsOf(Ctx &ctx) {
    if constexpr (requires { ctx.extensions; })
        return ctx.extensions;
    else
        return ctx;
}

} // namespace karil

#define KA_BODY(BODY)                                                                                                  \
    {                                                                                                                  \
        auto &ext [[maybe_unused]] = extensionsOf(ctx);                                                                \
        return BODY;                                                                                                   \
    }
#define KA_SET(BODY) [](Ctx & ctx, Bytes value) -> Status KA_BODY(BODY)
#define KA_GET(BODY) [](Ctx & ctx, const Answer &answer) -> Status KA_BODY(BODY)
#define KA_ROW_AS(ID, SET_WORDS, SET, GET)                                                                             \
    { ID, "======>Set " SET_WORDS, "======>Get " #ID, "======>Get " #ID " LEN", SET, GET }
#define KA_ROW(ID, SET, GET) KA_ROW_AS(ID, #ID, SET, GET)
