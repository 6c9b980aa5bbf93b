/*
 * Decodes a certificate with at most so many octets of memory, and prints the failures that the library traces.
 *
 *     memory CERTIFICATE OCTETS
 */
#include "../example.h"

static size_t limit;
static size_t used;
static size_t most;

/* Stands before each block: KAPR_Free is not told how large it is. */
typedef union Header {
    size_t size;
    max_align_t align;
} Header;

/* The library calls these three in the place of its own. A program with threads needs a lock or atomics here. */
void *KAPR_Malloc(const char *source, int32_t line, uint32_t size) {
    (void)source;
    (void)line;
    Header *header = size > limit - used ? NULL : calloc(1, sizeof *header + size); /* every octet has to be zero */
    if (header == NULL)
        return NULL;
    header->size = size;
    used += size;
    most = used > most ? used : most;
    return header + 1;
}

void KAPR_Free(void *block) {
    if (block == NULL)
        return;
    Header *header = (Header *)block - 1;
    used -= header->size;
    free(header);
}

void KAPR_DebugMessage(const char *log, const char *source, int32_t line, const char *message) {
    (void)log;
    if (message[0] == '-') /* "------>" before a failure, "======>" where a function begins and ends */
        printf("%s:%d %s\n", source, (int)line, message);
}

int main(int argc, char **argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: %s CERTIFICATE OCTETS\n", argv[0]);
        return 2;
    }
    limit = strtoul(argv[2], NULL, 10);
    const Octets der = readDer(argv[1]);
    CertDecodeCtx *cert = NULL;
    int32_t status = KACert_CreateCertDecodeCtx(&cert);
    if (status == KACERT_Ok)
        status = KACert_DecodeCert(cert, der.data, der.length);
    KACert_DestroyCertDecodeCtx(cert);
    free(der.data);
    printf("%s, at most %zu octets at a time, %zu left over\n", karil_status_name(status), most, used);
    return used != 0;
}
