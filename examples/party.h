/* Who takes part in messages: certificates with their keys, and the hook for ciphers, which stands on libcrypto. */
#ifndef KARIL_PARTY_H
#define KARIL_PARTY_H

#include "example.h"

#include <openssl/evp.h>

/* What the cipher's hook needs. The IV stands in the message's parameters, as 04 length IV. */
typedef struct CipherKey {
    uint8_t octets[32];
    uint32_t length; /* 16: AES-128, 24: triple DES */
    uint8_t parameter[18];
    uint32_t parameterLength;
    int isToEncipher;
} CipherKey;

static inline int32_t runCipher(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                                void *parameter) {
    const CipherKey *key = parameter;
    const EVP_CIPHER *cipher = key->length == 24 ? EVP_des_ede3_cbc() : EVP_aes_128_cbc();
    EVP_CIPHER_CTX *ctx = EVP_CIPHER_CTX_new();
    int first = 0;
    int last = 0;
    const int isDone = ctx != NULL && *outputLength >= inputLength + 16 &&
                       EVP_CipherInit_ex(ctx, cipher, NULL, key->octets, key->parameter + 2, key->isToEncipher) == 1 &&
                       EVP_CipherUpdate(ctx, output, &first, input, (int)inputLength) == 1 &&
                       EVP_CipherFinal_ex(ctx, output + first, &last) == 1;
    EVP_CIPHER_CTX_free(ctx);
    *outputLength = isDone ? (uint32_t)(first + last) : 0;
    return isDone ? 0 : -1;
}

static inline CipherKey makeCipherKey(void) {
    static const uint32_t keyLength = 24;
    static const uint32_t ivLength = 8;
    CipherKey key = {{0}, keyLength, {0x04, 8}, 2 + ivLength, 1};
    CHECK(KA_PKCS7_GenerateBytes(key.octets, &keyLength));
    CHECK(KA_PKCS7_GenerateBytes(key.parameter + 2, &ivLength));
    return key;
}

/* A certificate with its names and keys. */
typedef struct Party {
    Octets certificate;
    uint8_t issuer[512];
    uint32_t issuerLength;
    uint8_t serial[32];
    uint32_t serialLength;
    RsaPublicKeyRecord publicKey;
    RsaPrivateKeyRecord privateKey;
} Party;

static inline void getCert(CertDecodeCtx *ctx, int32_t id, uint8_t *value, uint32_t room, uint32_t *length) {
    CHECK(KACert_GetCertAttributeChar(ctx, id, NULL, length));
    if (*length > room) {
        fprintf(stderr, "attribute %d is too long\n", (int)id);
        exit(1);
    }
    CHECK(KACert_GetCertAttributeChar(ctx, id, value, length));
}

static inline Party readCertificate(Octets der) {
    Party party = {.certificate = der};
    uint8_t key[600];
    uint32_t length = 0;
    CertDecodeCtx *ctx = NULL;
    CHECK(KACert_CreateCertDecodeCtx(&ctx));
    CHECK(KACert_DecodeCert(ctx, der.data, der.length));
    getCert(ctx, CERT_ISSUER_DERDN, party.issuer, sizeof party.issuer, &party.issuerLength);
    getCert(ctx, CERT_SERIALNUMBER, party.serial, sizeof party.serial, &party.serialLength);
    getCert(ctx, CERT_SUBJECTPUBLICKEYINFO, key, sizeof key, &length);
    CHECK(KA_Decode_PublicKey(party.publicKey.modulus, key, (int32_t)length));
    CHECK(KACert_DestroyCertDecodeCtx(ctx));
    return party;
}

static inline Octets readFrom(const char *folder, const char *name, const char *end) {
    char path[4096];
    snprintf(path, sizeof path, "%s/%s.%s", folder, name, end);
    return readFile(path);
}

static inline Party readParty(const char *folder, const char *name) {
    const Octets key = readFrom(folder, name, "key");
    Party party = readCertificate(readFrom(folder, name, "der"));
    CHECK(KA_Decode_PrivateKey(party.privateKey.modulus, key.data, (int32_t)key.length));
    free(key.data);
    return party;
}

#endif
