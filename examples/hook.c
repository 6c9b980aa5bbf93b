/*
 * Signs certificates through a hook that holds a prepared key of libcrypto, with SHA-256, writes one and tells what
 * each took. The key is loaded once: what libcrypto works out for it, and renews now and then, stays with it.
 *
 *     hook KEY OUTPUT_FOLDER
 */
#include "signer.h"

#include <openssl/decoder.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

/*
 * In the first call there is neither output nor parameter, and for a certificate the answer is not used. Contexts of
 * different threads may share the key.
 */
static int32_t signWithKeyAt(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                             void *parameter) {
    *outputLength = SignatureRoom;
    if (output == NULL)
        return 0;
    EVP_PKEY *key = *(EVP_PKEY **)parameter;
    EVP_MD_CTX *ctx = EVP_MD_CTX_new();
    size_t length = SignatureRoom;
    const int isDone = ctx != NULL && EVP_DigestSignInit(ctx, NULL, EVP_sha256(), NULL, key) == 1 &&
                       EVP_DigestSign(ctx, output, &length, input, inputLength) == 1;
    EVP_MD_CTX_free(ctx);
    *outputLength = (uint32_t)length;
    return isDone ? 0 : -1;
}

/* In PEM or DER, of any form. */
static EVP_PKEY *loadKey(const char *path) {
    EVP_PKEY *key = NULL;
    FILE *file = fopen(path, "rb");
    OSSL_DECODER_CTX *ctx = OSSL_DECODER_CTX_new_for_pkey(&key, NULL, NULL, "RSA", EVP_PKEY_KEYPAIR, NULL, NULL);
    if (file == NULL || OSSL_DECODER_from_fp(ctx, file) != 1 || EVP_PKEY_get_size(key) > SignatureRoom) {
        fprintf(stderr, "%s: no RSA key of at most 4,096 bits\n", path);
        exit(1);
    }
    OSSL_DECODER_CTX_free(ctx);
    fclose(file);
    return key;
}

int main(int argc, char **argv) {
    enum { Certificates = 100 };
    if (argc != 3) {
        fprintf(stderr, "usage: %s KEY OUTPUT_FOLDER\n", argv[0]);
        return 2;
    }
    EVP_PKEY *key = loadKey(argv[1]);
    PublicKey publicKey;
    uint8_t *at = publicKey.der;
    publicKey.length = (uint32_t)i2d_PublicKey(key, &at);
    Octets der = {NULL, 0};
    const clock_t start = clock();
    for (int i = 0; i < Certificates; ++i) {
        free(der.data);
        der = issueSelfSigned("Signed by a prepared key", &publicKey, signWithKeyAt, key);
    }
    const clock_t taken = clock() - start;
    writeFile(argv[2], "hook.der", der);
    printf("signed %d certificates, %.0f us each\n", Certificates, 1e6 * (double)taken / CLOCKS_PER_SEC / Certificates);
    free(der.data);
    EVP_PKEY_free(key);
    return 0;
}
