/*
 * Signs a certificate through a hook whose key lives in a PKCS#11 token, with SHA-256 that the token computes itself.
 *
 *     token MODULE.so PIN LABEL OUTPUT_FOLDER
 *
 * MODULE is the token's library, LABEL that of its key pair: RSA with at most 2,048 bits.
 */
#include "signer.h"

#include <dlfcn.h>
#include <p11-kit/pkcs11.h>

/* A session with the token, in which the key is found. A session is for one thread at a time. */
typedef struct Token {
    CK_FUNCTION_LIST *functions;
    CK_SESSION_HANDLE session;
    CK_OBJECT_HANDLE key;
} Token;

/* Stops at the first failure and names the call. */
#define CHECK_TOKEN(CALL) checkToken((CALL), #CALL)

static void checkToken(CK_RV result, const char *call) {
    if (result == CKR_OK)
        return;
    fprintf(stderr, "0x%lx from %s\n", result, call);
    exit(1);
}

static int32_t signWithToken(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                             void *parameter) {
    *outputLength = SignatureRoom;
    if (output == NULL)
        return 0;
    const Token *token = *(const Token **)parameter;
    CK_MECHANISM sha256 = {CKM_SHA256_RSA_PKCS, NULL, 0};
    CK_ULONG length = SignatureRoom;
    if (token->functions->C_SignInit(token->session, &sha256, token->key) != CKR_OK ||
        token->functions->C_Sign(token->session, (CK_BYTE *)input, inputLength, output, &length) != CKR_OK)
        return -1;
    *outputLength = (uint32_t)length;
    return 0;
}

/* The first slot that has a token with keys. */
static Token openToken(const char *module, const char *pin) {
    Token token = {NULL, 0, 0};
    CK_SLOT_ID slots[16];
    CK_ULONG count = sizeof slots / sizeof slots[0];
    CK_TOKEN_INFO info = {.flags = 0};
    void *library = dlopen(module, RTLD_NOW);
    CK_C_GetFunctionList list = NULL;
    if (library != NULL)
        *(void **)&list = dlsym(library, "C_GetFunctionList");
    if (list == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        exit(1);
    }
    CHECK_TOKEN(list(&token.functions));
    CHECK_TOKEN(token.functions->C_Initialize(NULL));
    CHECK_TOKEN(token.functions->C_GetSlotList(CK_TRUE, slots, &count));
    CK_ULONG at = 0;
    for (; at < count; ++at) {
        CHECK_TOKEN(token.functions->C_GetTokenInfo(slots[at], &info));
        if ((info.flags & CKF_USER_PIN_INITIALIZED) != 0)
            break;
    }
    if (at == count) {
        fprintf(stderr, "%s: no token with a PIN\n", module);
        exit(1);
    }
    CHECK_TOKEN(token.functions->C_OpenSession(slots[at], CKF_SERIAL_SESSION, NULL, NULL, &token.session));
    CHECK_TOKEN(token.functions->C_Login(token.session, CKU_USER, (CK_UTF8CHAR *)pin, strlen(pin)));
    return token;
}

static CK_OBJECT_HANDLE findObject(const Token *token, CK_OBJECT_CLASS kind, const char *label) {
    CK_ATTRIBUTE wanted[] = {{CKA_CLASS, &kind, sizeof kind}, {CKA_LABEL, (char *)label, strlen(label)}};
    CK_OBJECT_HANDLE object = 0;
    CK_ULONG count = 0;
    CHECK_TOKEN(token->functions->C_FindObjectsInit(token->session, wanted, 2));
    CHECK_TOKEN(token->functions->C_FindObjects(token->session, &object, 1, &count));
    CHECK_TOKEN(token->functions->C_FindObjectsFinal(token->session));
    if (count == 0) {
        fprintf(stderr, "the token has no such key: %s\n", label);
        exit(1);
    }
    return object;
}

/* Puts a number of `length` octets, which stand at the start of its field, where karil expects it. */
static void alignRight(uint8_t *field, size_t size, CK_ULONG length) {
    memmove(field + size - length, field, length);
    memset(field, 0, size - length);
}

static PublicKey readPublicKey(const Token *token, const char *label) {
    RsaPublicKeyRecord numbers;
    PublicKey key = {.length = 0};
    CK_ATTRIBUTE values[] = {{CKA_MODULUS, numbers.modulus, sizeof numbers.modulus},
                             {CKA_PUBLIC_EXPONENT, numbers.exponent, sizeof numbers.exponent}};
    const CK_OBJECT_HANDLE object = findObject(token, CKO_PUBLIC_KEY, label);
    CHECK_TOKEN(token->functions->C_GetAttributeValue(token->session, object, values, 2));
    alignRight(numbers.modulus, sizeof numbers.modulus, values[0].ulValueLen);
    alignRight(numbers.exponent, sizeof numbers.exponent, values[1].ulValueLen);
    CHECK(KA_Encode_PublicKey(numbers.modulus, key.der, &key.length));
    return key;
}

int main(int argc, char **argv) {
    if (argc != 5) {
        fprintf(stderr, "usage: %s MODULE.so PIN LABEL OUTPUT_FOLDER\n", argv[0]);
        return 2;
    }
    Token token = openToken(argv[1], argv[2]);
    token.key = findObject(&token, CKO_PRIVATE_KEY, argv[3]);
    const PublicKey publicKey = readPublicKey(&token, argv[3]);
    const Octets der = issueSelfSigned("Signed by a token", &publicKey, signWithToken, &token);
    writeFile(argv[4], "token.der", der);
    free(der.data);
    CHECK_TOKEN(token.functions->C_CloseSession(token.session));
    CHECK_TOKEN(token.functions->C_Finalize(NULL));
    return 0;
}
