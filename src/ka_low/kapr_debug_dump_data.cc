#include "karil/base.h"

void KAPR_DebugDumpData(const char *, ...) {
}
