/*
 * Puts a key and its certificates into a PFX file under a password: NAME.p12 with NAME.key, NAME.der and root.der.
 *
 *     pfx NAME PASSWORD
 */
#include "../example.h"

int main(int argc, char **argv) {
    char file[256];
    if (argc != 3) {
        fprintf(stderr, "usage: %s NAME PASSWORD\n", argv[0]);
        return 2;
    }
    snprintf(file, sizeof file, "%s.key", argv[1]);
    const Octets key = readDer(file);
    snprintf(file, sizeof file, "%s.der", argv[1]);
    const Octets cert = readDer(file);
    const Octets root = readDer("root.der");

    /* The same localKeyID says that key and certificate belong together. It is one whole element: an OCTET STRING. */
    uint8_t id[2 + 20] = {0x04, 20};
    uint32_t length = 0;
    CHECK(KA_PKCS7_DigestMessage(KA_DIGEST_SHA1, cert.data, cert.length, id + 2, &length));
    PfxCtx *pfx = NULL;
    CHECK(KA_PKCS12_CreateEncodePfx(&pfx));
    CHECK(KA_PKCS12_SetPrivateKey(pfx, key.data, (int32_t)key.length));
    CHECK(KA_PKCS12_SetPrivateKeyBag_Attribute(pfx, KARIL_OID_LOCAL_KEY_ID, sizeof KARIL_OID_LOCAL_KEY_ID, id,
                                               sizeof id));
    CHECK(KA_PKCS12_SetCertificate(pfx, cert.data, (int32_t)cert.length));
    CHECK(KA_PKCS12_SetCertificateBag_Attribute(pfx, KARIL_OID_LOCAL_KEY_ID, sizeof KARIL_OID_LOCAL_KEY_ID, id,
                                                sizeof id, 1));
    CHECK(KA_PKCS12_SetCertificate(pfx, root.data, (int32_t)root.length));

    const uint8_t *password = (const uint8_t *)argv[2];
    const int32_t passwordLength = (int32_t)strlen(argv[2]);
    CHECK(KA_PKCS12_EncodePFX(pfx, password, passwordLength, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KA_PKCS12_EncodePFX(pfx, password, passwordLength, der.data, &length));
    CHECK(KA_PKCS12_DestroyEncodePFX(pfx));
    snprintf(file, sizeof file, "%s.p12", argv[1]);
    umask(077);
    writeFile(".", file, der);
    free(der.data);
    free(root.data);
    free(cert.data);
    free(key.data);
    return 0;
}
