#include "karil/base.h"

#include <stdlib.h>

void KAPR_Free(void *block) {
    free(block);
}
