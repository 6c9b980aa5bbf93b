/*
 * PFX files with the certificates and keys of the small authority (certificate_authority).
 *
 *     pfx make FOLDER PASSWORD                             puts key and chain into issued.p12, and reads it back
 *     pfx open FILE PASSWORD VERDICT KEY CERTIFICATE...    compares what a file holds with those files
 *     pfx refuse FILE PASSWORD                             a wrong password
 *
 * The verdict on the MAC is 200 for a good one and 300 for a bad one. Other programs look for a name and an identifier
 * in attributes, which belong to the bags of key and certificate.
 */
#include "example.h"

#include <karil/oids.h>

static void expect(const char *what, int isSo) {
    if (isSo)
        return;
    printf("  %s: NO\n", what);
    exit(1);
}

/* An attribute's value is one whole element: a BMPString here. The name is in code page 936. */
static uint8_t writeName(uint8_t *element, const char *name) {
    uint32_t length = 0;
    CHECK(KI_Chinese2BmpString((const uint8_t *)name, (int32_t)strlen(name), element + 2, &length));
    element[0] = 0x1E;
    element[1] = (uint8_t)length;
    return (uint8_t)(length + 2);
}

static void addCertificate(PfxCtx *ctx, Octets der, int32_t index, const char *name, const uint8_t *id) {
    uint8_t value[128];
    CHECK(KA_PKCS12_SetCertificate(ctx, der.data, (int32_t)der.length));
    CHECK(KA_PKCS12_SetCertificateBag_Attribute(ctx, KARIL_OID_FRIENDLY_NAME, (int32_t)sizeof KARIL_OID_FRIENDLY_NAME,
                                                value, writeName(value, name), index));
    if (id != NULL)
        CHECK(KA_PKCS12_SetCertificateBag_Attribute(ctx, KARIL_OID_LOCAL_KEY_ID, (int32_t)sizeof KARIL_OID_LOCAL_KEY_ID,
                                                    id, 22, index));
}

static Octets makeFile(Octets key, Octets leaf, Octets root, const char *password) {
    /* An OCTET STRING: that key and certificate have the same says that they belong together. */
    uint8_t id[22] = {0x04, 20};
    uint8_t value[128];
    uint32_t length = 0;
    PfxCtx *ctx = NULL;
    CHECK(KA_PKCS7_DigestMessage(KA_DIGEST_SHA1, leaf.data, leaf.length, id + 2, &length));
    CHECK(KA_PKCS12_CreateEncodePfx(&ctx));
    CHECK(KA_PKCS12_SetPrivateKey(ctx, key.data, (int32_t)key.length));
    CHECK(KA_PKCS12_SetPrivateKeyBag_Attribute(ctx, KARIL_OID_LOCAL_KEY_ID, (int32_t)sizeof KARIL_OID_LOCAL_KEY_ID, id,
                                               (int32_t)sizeof id));
    CHECK(KA_PKCS12_SetPrivateKeyBag_Attribute(ctx, KARIL_OID_FRIENDLY_NAME, (int32_t)sizeof KARIL_OID_FRIENDLY_NAME,
                                               value, writeName(value, "the leaf")));
    addCertificate(ctx, leaf, 1, "the leaf", id);
    addCertificate(ctx, root, 2, "the authority", NULL);
    CHECK(KA_PKCS12_EncodePFX(ctx, (const uint8_t *)password, (int32_t)strlen(password), NULL, &length));
    const Octets file = makeOctets(length);
    CHECK(KA_PKCS12_EncodePFX(ctx, (const uint8_t *)password, (int32_t)strlen(password), file.data, &length));
    CHECK(KA_PKCS12_DestroyEncodePFX(ctx));
    return file;
}

/* Prints the name among the attributes of a certificate. `room`: more than any attribute has. */
static void printName(PfxCtx *ctx, int32_t index, Octets room) {
    const Octets value = makeOctets(room.length);
    for (int32_t i = 1;; ++i) {
        uint32_t nameLength = 0;
        uint32_t length = 0;
        CHECK(KA_PKCS12_GetCertificateBag_Attribute(ctx, room.data, &nameLength, value.data, &length, index, i));
        if (nameLength == 0)
            break;
        if (nameLength != sizeof KARIL_OID_FRIENDLY_NAME ||
            memcmp(room.data, KARIL_OID_FRIENDLY_NAME, nameLength) != 0 || length < 2)
            continue;
        CHECK(KI_BmpString2Chinese(value.data + 2, (int32_t)length - 2, room.data, &length));
        printf(", named %.*s", (int)length, (const char *)room.data);
    }
    free(value.data);
}

static int isSame(Octets octets, uint32_t length, Octets wanted) {
    return length == wanted.length && memcmp(octets.data, wanted.data, length) == 0;
}

/* Opens a file that has to hold just this key and these certificates. */
static void openFile(Octets file, const char *password, int32_t wanted, Octets key, const Octets *certificates,
                     uint32_t count) {
    PfxCtx *ctx = NULL;
    int32_t verdict = 0;
    uint32_t length = 0;
    const Octets room = makeOctets(4 * file.length + 1024);
    CHECK(KA_PKCS12_CreateDecodePfx(&ctx));
    CHECK(KA_PKCS12_DecodePFX(ctx, (const uint8_t *)password, (int32_t)strlen(password), file.data,
                              (int32_t)file.length, &verdict));
    printf("  verdict %d, %u certificates", (int)verdict, (unsigned)ctx->certificateCount);
    expect("the verdict is the expected one", verdict == wanted);
    expect("so is the number of certificates", ctx->certificateCount == count);
    for (int32_t i = 1; i <= (int32_t)count; ++i) {
        CHECK(KA_PKCS12_GetCertificate(ctx, room.data, &length, i));
        expect("a certificate is the same", isSame(room, length, certificates[i - 1]));
        printName(ctx, i, room);
    }
    CHECK(KA_PKCS12_GetPrivateKey(ctx, room.data, &length));
    expect("the key is the same", isSame(room, length, key));
    puts(", the same key");
    CHECK(KA_PKCS12_DestroyDecodePFX(ctx));
    free(room.data);
}

/* The verdict tells that the password is wrong. The status alone may be 0: what comes of a file is of no use then. */
static void refuse(Octets file, const char *password) {
    PfxCtx *ctx = NULL;
    int32_t verdict = 0;
    CHECK(KA_PKCS12_CreateDecodePfx(&ctx));
    const int32_t status = KA_PKCS12_DecodePFX(ctx, (const uint8_t *)password, (int32_t)strlen(password), file.data,
                                               (int32_t)file.length, &verdict);
    printf("  a wrong password: verdict %d, status %d\n", (int)verdict, (int)status);
    expect("the verdict is 300", verdict == PKCS7_VERDICT_BAD);
    CHECK(KA_PKCS12_DestroyDecodePFX(ctx));
}

static Octets readFrom(const char *folder, const char *name) {
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", folder, name);
    return readFile(path);
}

static void make(const char *folder, const char *password) {
    const Octets key = readFrom(folder, "issued.key");
    const Octets chain[] = {readFrom(folder, "issued.der"), readFrom(folder, "authority.der")};
    const Octets file = makeFile(key, chain[0], chain[1], password);
    writeFile(folder, "issued.p12", file);
    openFile(file, password, PKCS7_VERDICT_GOOD, key, chain, 2);
    refuse(file, "another password");
    free(file.data);
    free(key.data);
    for (int i = 0; i < 2; ++i)
        free(chain[i].data);
}

int main(int count, char **arguments) {
    if (count == 4 && strcmp(arguments[1], "make") == 0) {
        make(arguments[2], arguments[3]);
    } else if (count > 5 && count < 14 && strcmp(arguments[1], "open") == 0) {
        const Octets file = readFile(arguments[2]);
        const Octets key = readFile(arguments[5]);
        Octets certificates[8] = {{NULL, 0}};
        for (int i = 6; i < count; ++i)
            certificates[i - 6] = readFile(arguments[i]);
        openFile(file, arguments[3], (int32_t)strtol(arguments[4], NULL, 10), key, certificates, (uint32_t)(count - 6));
        for (int i = 6; i < count; ++i)
            free(certificates[i - 6].data);
        free(key.data);
        free(file.data);
    } else if (count == 4 && strcmp(arguments[1], "refuse") == 0) {
        const Octets file = readFile(arguments[2]);
        refuse(file, arguments[3]);
        free(file.data);
    } else {
        fprintf(stderr, "usage: pfx make FOLDER PASSWORD\n"
                        "       pfx open FILE PASSWORD VERDICT KEY CERTIFICATE...\n"
                        "       pfx refuse FILE PASSWORD\n");
        return 2;
    }
    return 0;
}
