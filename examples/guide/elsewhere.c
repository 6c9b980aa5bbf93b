/*
 * Signs a request with a key that karil never sees, and with SHA-256: NAME.csr with the key in NAME.pem.
 *
 *     elsewhere NAME COMMON_NAME        the common name in ASCII
 */
#include "../example.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

/* What reaches the key. In its place may be the session of a token, or the socket of a service. */
typedef struct Elsewhere {
    EVP_PKEY *key;
} Elsewhere;

/*
 * The parameter is the context's copy of an Elsewhere, octet by octet. In the first call there is no output, and the
 * size of the signature is wanted, which EVP_DigestSign answers in the same way.
 */
static int32_t signElsewhere(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                             void *parameter) {
    EVP_PKEY *key = ((const Elsewhere *)parameter)->key;
    EVP_MD_CTX *ctx = EVP_MD_CTX_new();
    size_t length = *outputLength;
    const int isDone = ctx != NULL && EVP_DigestSignInit(ctx, NULL, EVP_sha256(), NULL, key) == 1 &&
                       EVP_DigestSign(ctx, output, &length, input, inputLength) == 1;
    EVP_MD_CTX_free(ctx);
    *outputLength = (uint32_t)length;
    return isDone ? 0 : -1;
}

static EVP_PKEY *loadKey(const char *path) {
    FILE *file = fopen(path, "rb");
    EVP_PKEY *key = file == NULL ? NULL : PEM_read_PrivateKey(file, NULL, NULL, NULL);
    if (key == NULL || EVP_PKEY_base_id(key) != EVP_PKEY_RSA) {
        fprintf(stderr, "%s: no RSA key\n", path);
        exit(1);
    }
    fclose(file);
    return key;
}

int main(int argc, char **argv) {
    char file[256];
    if (argc != 3) {
        fprintf(stderr, "usage: %s NAME COMMON_NAME\n", argv[0]);
        return 2;
    }
    snprintf(file, sizeof file, "%s.pem", argv[1]);
    const Elsewhere elsewhere = {loadKey(file)};
    uint8_t *publicKey = NULL;
    const int publicLength = i2d_PublicKey(elsewhere.key, &publicKey);

    CsrEncodeCtx *csr = NULL;
    uint32_t length = 0;
    CHECK(KACert_CreateCsrEncodeCtx(&csr));
    CHECK(KACert_SetCsrAttributeChar(csr, CSR_OUTER_SIGNATUREALGORITHM, KARIL_OID_SHA256_WITH_RSA,
                                     sizeof KARIL_OID_SHA256_WITH_RSA));
    CHECK(KACert_SetCsrAttributeChar(csr, CSR_PUBLICKEY_ALGORITHM, KARIL_OID_RSA_ENCRYPTION,
                                     sizeof KARIL_OID_RSA_ENCRYPTION));
    CHECK(KACert_SetCsrAttributeChar(csr, CSR_SUBJECTPUBLICKEYINFO, publicKey, publicLength));
    CHECK(KACert_SetCsrAttributeChar(csr, CSR_SUBJECT_COMMONNAME, (const uint8_t *)argv[2], (int32_t)strlen(argv[2])));
    CHECK(KACert_SetCsrSignFunc(csr, signElsewhere, &elsewhere, sizeof elsewhere));
    CHECK(KACert_EncodeCsr(csr, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCsr(csr, der.data, &length));
    CHECK(KACert_DestroyCsrEncodeCtx(csr));

    snprintf(file, sizeof file, "%s.csr", argv[1]);
    writeFile(".", file, der);
    free(der.data);
    OPENSSL_free(publicKey);
    EVP_PKEY_free(elsewhere.key);
    return 0;
}
