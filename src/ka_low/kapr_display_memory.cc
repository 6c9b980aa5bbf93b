#include "karil/base.h"

void KAPR_Display_memory(const char *, ...) {
}
