#include <karil/karil.h>

#include <stdio.h>

int main(void) {
    uint8_t octets[8];
    uint32_t length = 0;
    const int32_t status = KACert_GetOIDValue("2.5.29.35", 9, octets, &length);
    if (status != KACERT_Ok || length != 3 || octets[0] != 0x55) {
        fprintf(stderr, "status %d, %u octets\n", (int)status, (unsigned)length);
        return 1;
    }
    puts("the installed library answers");
    return 0;
}
