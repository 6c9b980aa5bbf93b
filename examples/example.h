/* What the examples share: failures in words, keys with their signing hook, files. */
#ifndef KARIL_EXAMPLE_H
#define KARIL_EXAMPLE_H

#include <karil/karil.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>

/* What `main` returns. If the status is not 0, it is told in words first. */
static inline int outcome(const char *what, int32_t status) {
    if (status == KACERT_Ok)
        return 0;
    fprintf(stderr, "%s: %s (%s)\n", what, karil_status_text(status), karil_status_name(status));
    return 1;
}

/* Stops at the first status that is not 0 and names the call. */
#define CHECK(CALL) check((CALL), #CALL)

static inline void check(int32_t status, const char *call) {
    if (outcome(call, status) != 0)
        exit(1);
}

static const uint8_t sha1WithRsa[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x05};
static const uint8_t rsaEncryption[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01};

/* A key pair, its public half as a certificate holds it, and that half's digest as its identifier. */
typedef struct Key {
    RsaPublicKeyRecord publicKey;
    RsaPrivateKeyRecord privateKey;
    uint8_t der[600];
    uint32_t derLength;
    uint8_t identifier[20];
} Key;

static inline void describeKey(Key *key) {
    uint32_t length = 0;
    CHECK(KA_Encode_PublicKey(key->publicKey.modulus, key->der, &key->derLength));
    CHECK(KA_PKCS7_DigestMessage(KA_DIGEST_SHA1, key->der, key->derLength, key->identifier, &length));
}

static inline void makeKey(Key *key) {
    CHECK(KA_PKCS7_GenRSAKeyPair_2048(&key->publicKey, &key->privateKey));
    describeKey(key);
}

/*
 * The signing hook. The first call has no output. For a certificate it has no parameter either, and its answer is not
 * used; for a CRL or a request it asks for the signature's size.
 */
static inline int32_t signWithKey(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                                  void *parameter) {
    *outputLength = 256;
    if (output == NULL)
        return 0;
    return KA_PKCS7_SignedData(KA_DIGEST_SHA1, input, inputLength, output, outputLength,
                               (const RsaPrivateKeyRecord *)parameter);
}

/* Dates are seconds in 32 bits, which end on 19 January 2038. */
static inline int32_t daysAfter(int32_t date, int32_t days) {
    return days > (INT32_MAX - date) / 86400 ? INT32_MAX : date + days * 86400;
}

/* A value for a Set function, so that a table can hold them. */
typedef struct Attribute {
    int32_t id;
    const void *octets;
    size_t length;
} Attribute;

/* Octets on the heap. */
typedef struct Octets {
    uint8_t *data;
    uint32_t length;
} Octets;

static inline Octets makeOctets(uint32_t length) {
    const Octets octets = {malloc(length + 1u), length};
    if (octets.data == NULL) {
        perror("malloc");
        exit(1);
    }
    return octets;
}

static inline Octets readFile(const char *path) {
    FILE *file = fopen(path, "rb");
    if (file == NULL || fseek(file, 0, SEEK_END) != 0) {
        perror(path);
        exit(1);
    }
    const Octets octets = makeOctets((uint32_t)ftell(file));
    rewind(file);
    if (fread(octets.data, 1, octets.length, file) != octets.length || fclose(file) != 0) {
        perror(path);
        exit(1);
    }
    return octets;
}

static inline void writeFile(const char *folder, const char *name, Octets octets) {
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", folder, name);
    FILE *file = fopen(path, "wb");
    if (file == NULL || fwrite(octets.data, 1, octets.length, file) != octets.length || fclose(file) != 0) {
        perror(path);
        exit(1);
    }
    printf("wrote %s, %u octets\n", path, (unsigned)octets.length);
}

/* DER from a file of DER or PEM. An empty file stops here: a decoder takes a length of 0 for "trust the header". */
static inline Octets readDer(const char *path) {
    Octets file = readFile(path);
    if (file.length > 0 && file.data[0] != 0x30 &&
        PEM2DER_data_format(file.data, file.length, file.data, &file.length) != 0)
        file.length = 0;
    if (file.length == 0) {
        fprintf(stderr, "%s: neither DER nor PEM\n", path);
        exit(1);
    }
    return file;
}

/* A private key, as PKCS#1 has it, for its owner alone. */
static inline void writeKey(const char *folder, const char *name, const Key *key) {
    uint32_t length = 0;
    CHECK(KA_Encode_PrivateKey(key->privateKey.modulus, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KA_Encode_PrivateKey(key->privateKey.modulus, der.data, &length));
    const mode_t before = umask(077);
    writeFile(folder, name, der);
    umask(before);
    free(der.data);
}

static inline void readKey(const char *path, Key *key) {
    const Octets der = readDer(path);
    CHECK(KA_Decode_PrivateKey(key->privateKey.modulus, der.data, (int32_t)der.length));
    free(der.data);
    memcpy(key->publicKey.modulus, key->privateKey.modulus, sizeof key->publicKey.modulus);
    memcpy(key->publicKey.exponent, key->privateKey.publicExponent, sizeof key->publicKey.exponent);
    describeKey(key);
}

#endif
