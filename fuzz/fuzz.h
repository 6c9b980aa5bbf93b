// What the targets share beside the kit of the tests: input that is taken piece by piece, claims.
#pragma once

#include "objects.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerInitialize(int *count, char ***arguments);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace karil_fuzz {

using namespace karil_test;
using Area = Exact;
using Name = NameList;

// Ends the process where a claim does not hold, so that the fuzzer keeps the input.
inline void must(bool holds, const char *claim) {
    if (holds)
        return;
    fprintf(stderr, "broken claim: %s\n", claim);
    abort();
}

inline bool equal(Bytes one, Bytes other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end());
}
// The fuzzer's input; past its end there are zeros and empty pieces.
struct Input {
    Bytes rest;

    Bytes take(size_t size) {
        const Bytes piece = rest.first(std::min(size, rest.size()));
        rest = rest.subspan(piece.size());
        return piece;
    }
    uint8_t octet() {
        const Bytes piece = take(1);
        return piece.empty() ? uint8_t{0} : piece[0];
    }
};

// Calls WRITE(arguments..., &out) and owns what it stored; a failed call must have stored nothing.
template <class Write, class... Arguments> int32_t made(Chain &out, Write write, Arguments... arguments) {
    Anybuf *record = nullptr;
    const int32_t status = write(arguments..., &record);
    must(status == KACERT_Ok || record == nullptr, "a failed call stores nothing");
    out.reset(record);
    return status;
}

} // namespace karil_fuzz
