#include "karil/base.h"

void KAPR_DebugValMessage(const char *, ...) {
}
