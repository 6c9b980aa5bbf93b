/*
 * A program with functions of its own under names of the library's. The KAPR_ ones are called in place of the
 * library's own; the others change nothing inside the library.
 */
#include <karil/karil.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The dynamic linker sees these, whatever the program is built with. */
#define OWN __attribute__((visibility("default")))

static int live = 0, allocated = 0, traced = 0, taken = 0, failures = 0;

OWN void *KAPR_Malloc(const char *source, int32_t line, uint32_t size) {
    (void)source;
    (void)line;
    ++live;
    ++allocated;
    return calloc(1, size == 0 ? 1 : size);
}

OWN void KAPR_Free(void *block) {
    live -= block != NULL;
    free(block);
}

OWN void KAPR_DebugMessage(const char *log, const char *source, int32_t line, const char *message) {
    (void)log;
    (void)source;
    (void)line;
    (void)message;
    ++traced;
}

OWN int32_t base64_encode(const uint8_t *input, uint32_t length, uint8_t *output) {
    (void)input;
    (void)length;
    (void)output;
    ++taken;
    return -1;
}

OWN int32_t KI_CopyAnybuf(Anybuf *destination, const Anybuf *source) {
    (void)destination;
    (void)source;
    ++taken;
    return -1;
}

OWN int32_t KAsn1_WriteInteger(uint32_t value, Anybuf **out) {
    (void)value;
    (void)out;
    ++taken;
    return -1;
}

static void expect(int holds, const char *what) {
    if (!holds) {
        fprintf(stderr, "failed: %s\n", what);
        ++failures;
    }
}

int main(void) {
    uint8_t output[64];
    uint32_t length = 0;
    /* RFC 4648: the octets of "Man" are TWFu. */
    expect(DER2PEM_data_format((const uint8_t *)"Man", 3, output, &length, "", "") == 0 && length == 6 &&
               memcmp(output, "TWFu\r\n", 6) == 0,
           "DER2PEM_data_format");

    static const uint8_t wrapped[] = {0x30, 0x13, 0x02, 0x01, 0x01, 0x06, 0x09, 0x2A, 0x86, 0x48, 0x86,
                                      0xF7, 0x0D, 0x01, 0x01, 0x01, 0x04, 0x03, 'k',  'e',  'y'};
    expect(KI_PKCS1to8KEY((const uint8_t *)"key", 3, output, &length) == KACERT_Ok && length == sizeof wrapped &&
               memcmp(output, wrapped, sizeof wrapped) == 0,
           "KI_PKCS1to8KEY");

    uint8_t octets[] = {0x2A, 0x03};
    const AlgorithmRecord source = {7, {octets, sizeof octets, 0, 0, 0, NULL, NULL}};
    AlgorithmRecord copy = {0};
    expect(KI_CopyAlgorithm(&copy, &source) == KACERT_Ok && copy.id == 7 && copy.oid.length == sizeof octets &&
               memcmp(copy.oid.data, octets, sizeof octets) == 0,
           "KI_CopyAlgorithm");
    KI_ClearAnybuf(&copy.oid);

    expect(taken == 0, "the library calls its own functions");
    expect(allocated > 0 && live == 0, "the program's KAPR_Malloc and KAPR_Free are called");
    expect(KI_CopyAlgorithm(&copy, NULL) == KACERT_InvalidParamErr && traced > 0,
           "the program's KAPR_DebugMessage is called");
    return failures == 0 ? 0 : 1;
}
