// KAPR_ memory and trace. Nothing in this file calls these functions, so that every call of the library goes
// through the dynamic symbol and a program can put its own in their place.
#include "karil/base.h"

#include <stdlib.h>
#include <string.h>

void *KAPR_Malloc(const char *, int32_t, uint32_t size) {
    // The C library serves small blocks from a cache of the thread's own, which its calloc passes by.
    constexpr uint32_t Small = 1024;
    if (size > Small)
        return calloc(1, size);
    void *block = malloc(size == 0 ? 1 : size);
    if (block != nullptr)
        memset(block, 0, size);
    return block;
}

void KAPR_Free(void *block) {
    free(block);
}

void KAPR_DebugMessage(const char *, const char *, int32_t, const char *) {
}

void KAPR_DebugValMessage(const char *, ...) {
}

void KAPR_DebugDumpData(const char *, ...) {
}

void KAPR_Display_memory(const char *, ...) {
}
