#include "karil/base.h"

void KAPR_DebugMessage(const char *, const char *, int32_t, const char *) {
}
