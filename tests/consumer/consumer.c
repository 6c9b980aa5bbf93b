/* A program with memory functions of its own. */
#include <karil/karil.h>

#include <stdio.h>
#include <stdlib.h>

static int allocated = 0;
static int freed = 0;

void *KAPR_Malloc(const char *source, int32_t line, uint32_t size) {
    (void)source;
    (void)line;
    ++allocated;
    return calloc(1, size == 0 ? 1 : size);
}

void KAPR_Free(void *block) {
    freed += block != NULL;
    free(block);
}

int main(void) {
    uint8_t octets[20];
    uint32_t length = 0;
    CertDecodeCtx *ctx = NULL;
    /* With the digest of MD2, each library that karil needs has a part. */
    if (KA_PKCS7_DigestMessage(KA_DIGEST_MD2, octets, 0, octets, &length) != KACERT_Ok || length != 16 ||
        KA_PKCS7_DigestMessage(KA_DIGEST_SHA1, octets, 0, octets, &length) != KACERT_Ok || length != 20 ||
        KACert_CreateCertDecodeCtx(&ctx) != KACERT_Ok || KACert_DestroyCertDecodeCtx(ctx) != KACERT_Ok) {
        fputs("the library does not answer\n", stderr);
        return 1;
    }
    if (allocated == 0 || freed != allocated) {
        fprintf(stderr, "%d blocks given, %d taken back\n", allocated, freed);
        return 1;
    }
    puts("the library answers, with this program's memory");
    return 0;
}
