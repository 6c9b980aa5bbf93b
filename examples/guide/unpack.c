/*
 * Takes a PFX file apart: pfx.key has its private key, and pfx1.der, pfx2.der and so on its certificates.
 *
 *     unpack FILE PASSWORD
 */
#include "../example.h"

int main(int argc, char **argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: %s FILE PASSWORD\n", argv[0]);
        return 2;
    }
    const Octets der = readDer(argv[1]);
    PfxCtx *pfx = NULL;
    int32_t verdict = 0;
    int32_t status = KA_PKCS12_CreateDecodePfx(&pfx);
    if (status == KACERT_Ok)
        status = KA_PKCS12_DecodePFX(pfx, (const uint8_t *)argv[2], (int32_t)strlen(argv[2]), der.data,
                                     (int32_t)der.length, &verdict);
    /* A wrong password is told by the verdict alone: the status may be anything then, 0 too. */
    if (verdict == PKCS7_VERDICT_BAD) {
        fprintf(stderr, "%s: wrong password, or a file that was changed\n", argv[1]);
        status = KACERT_VerifySignatureErr;
    } else if (status == KACERT_Ok) {
        Octets octets = makeOctets(der.length); /* more than any part of the file */
        umask(077);
        CHECK(KA_PKCS12_GetPrivateKey(pfx, octets.data, &octets.length));
        writeFile(".", "pfx.key", octets);
        for (int32_t i = 1; i <= (int32_t)pfx->certificateCount; ++i) {
            char name[32];
            snprintf(name, sizeof name, "pfx%d.der", (int)i);
            CHECK(KA_PKCS12_GetCertificate(pfx, octets.data, &octets.length, i));
            writeFile(".", name, octets);
        }
        free(octets.data);
    }
    KA_PKCS12_DestroyDecodePFX(pfx);
    free(der.data);
    return outcome(argv[1], status);
}
