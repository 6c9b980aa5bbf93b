// Failing and tracing: the frame of an exported call, and the macros that run a step of a function. These macros name
// the folder and the line, so they stand in .cc files only; KA_PASS names neither.
#pragma once

#include "karil/base.h"

#include <stddef.h>

// How the trace words of a folder start: of a frame, and of a failed step.
#ifndef KA_ARROW
#define KA_ARROW "======>"
#endif
#ifndef KA_DASHES
#define KA_DASHES "------>"
#endif

namespace karil {

using Status = int32_t;

inline void trace(const char *source, int line, const char *words) {
    KAPR_DebugMessage("kacert.log", source, line, words);
}

[[nodiscard]] inline Status failed(const char *source, int line, Status status, const char *words) {
    trace(source, line, words);
    return status;
}

// The frame of an exported call: its Begin line, and its End line if it succeeds.
struct Frame {
    const char *source;
    int line;
    const char *endWords;

    Frame(const char *from, int at, const char *begin, const char *end) : source(from), line(at), endWords(end) {
        trace(from, at, begin);
    }
    [[nodiscard]] Status end() const { return failed(source, line, KACERT_Ok, endWords); }
    template <class Call> [[nodiscard]] Status run(const Call &call) const {
        const Status status = call();
        return status == KACERT_Ok ? end() : status;
    }
};

// The trace words of a step, cut from the text of its call while the library is compiled.
template <size_t Size> struct Words {
    char text[Size] = {};
};

inline void callsNoPlainName() {
}

// The length of the name in front of the bracket. A call of anything else does not compile.
consteval size_t nameSize(const char *call) {
    size_t size = 0;
    while ((call[size] >= 'a' && call[size] <= 'z') || (call[size] >= 'A' && call[size] <= 'Z') ||
           (call[size] >= '0' && call[size] <= '9') || call[size] == '_')
        ++size;
    if (size == 0 || call[size] != '(')
        callsNoPlainName();
    return size;
}

template <size_t NameSize, size_t DashesSize>
consteval Words<DashesSize + NameSize> stepWords(const char (&dashes)[DashesSize], const char *call) {
    Words<DashesSize + NameSize> words;
    for (size_t i = 0; i + 1 < DashesSize; ++i)
        words.text[i] = dashes[i];
    for (size_t i = 0; i < NameSize; ++i)
        words.text[DashesSize - 1 + i] = call[i];
    return words;
}

// The same words are one text in the whole library.
template <Words Of> constexpr const char *textOf() {
    return Of.text;
}

} // namespace karil

// The frame of an exported function that returns early: KA_FRAME first, KA_DONE at its end.
#define KA_FRAME_AS(BEGIN, END) const ::karil::Frame ka_frame(KA_SOURCE, __LINE__, BEGIN, END)
#define KA_FRAME(NAME) KA_FRAME_AS(KA_ARROW NAME " Begin", KA_ARROW NAME " End")
#define KA_DONE() ka_frame.end()
// The frame of an exported function that is one call.
#define KA_FRAMED(NAME, ...)                                                                                           \
    ::karil::Frame(KA_SOURCE, __LINE__, KA_ARROW NAME " Begin", KA_ARROW NAME " End").run([&] { return __VA_ARGS__; })

#define KA_FAIL(STATUS, WORDS) ::karil::failed(KA_SOURCE, __LINE__, STATUS, WORDS)
#define KA_TRACE(WORDS) ::karil::trace(KA_SOURCE, __LINE__, WORDS)

// Runs the call. A status other than 0 is traced with WORDS and returned.
#define KA_STEP_AS(WORDS, ...)                                                                                         \
    do {                                                                                                               \
        if (const ::karil::Status ka_status = (__VA_ARGS__); ka_status != KACERT_Ok)                                   \
            return KA_FAIL(ka_status, WORDS);                                                                          \
    } while (false)
// The same with the name of the function as words: "------>NAME".
#define KA_STEP(...)                                                                                                   \
    KA_STEP_AS((::karil::textOf<::karil::stepWords<::karil::nameSize(#__VA_ARGS__)>(KA_DASHES, #__VA_ARGS__)>()),      \
               __VA_ARGS__)
// Runs the call. A status other than 0 is returned: the function has traced its failure itself.
#define KA_PASS(...)                                                                                                   \
    do {                                                                                                               \
        if (const ::karil::Status ka_status = (__VA_ARGS__); ka_status != KACERT_Ok)                                   \
            return ka_status;                                                                                          \
    } while (false)
