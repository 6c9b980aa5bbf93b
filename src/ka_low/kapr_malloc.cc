// Each KAPR_ function has a file of its own, so that a program that is linked with the static library can bring its
// own. Nothing in these files calls them, so that every call goes through the symbol.
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
