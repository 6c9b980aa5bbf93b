/* Shows the trace of any program that uses karil: preload it as a shared library. */
#include <stdint.h>
#include <stdio.h>

void KAPR_DebugMessage(const char *log, const char *source, int32_t line, const char *message) {
    (void)log;
    fprintf(stderr, "%s:%d %s\n", source, (int)line, message);
}
