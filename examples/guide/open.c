/*
 * Opens a message that was enciphered for the holder of a certificate: NAME.der with NAME.key.
 *
 *     open NAME MESSAGE DOCUMENT
 */
#include "../example.h"

/* What the cipher's hook needs: AES with 128 bits in CBC mode. */
typedef struct CipherKey {
    uint8_t key[16];
    uint8_t iv[16];
} CipherKey;

static int32_t decipher(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                        void *parameter) {
    const CipherKey *cipher = parameter;
    return KA_PKCS12_AESDecrypt(2, cipher->key, 16, cipher->iv, 16, input, inputLength, output, outputLength);
}

/* A message has a recipient for each who can open it. `*key` receives what the private key opens. */
static int32_t openKey(RecipientInfoCtx *recipient, const Anybuf *serial, const Key *owner, uint8_t *key) {
    uint8_t opened[256]; /* as much as the modulus has */
    uint32_t length = 0;
    while (recipient != NULL && (recipient->serial.length != serial->length ||
                                 memcmp(recipient->serial.data, serial->data, serial->length) != 0))
        recipient = recipient->next;
    if (recipient == NULL || recipient->encryptedKey.length > sizeof opened)
        return KACERT_InvalidItemErr;
    int32_t status = KA_PKCS7_SetRecipientInfoKeyDecFunc(recipient, KA_PrivateKeyDecryptFunc_Ref, &owner->privateKey,
                                                         sizeof owner->privateKey);
    if (status == KACERT_Ok)
        status = KA_PKCS7_DecryptDesKey(recipient, opened, &length);
    if (status == KACERT_Ok && length != 16)
        status = KACERT_InvalidLengthErr;
    if (status == KACERT_Ok)
        memcpy(key, opened, 16);
    return status;
}

/* `document` has room for the cipher text. */
static int32_t openMessage(const EnvelopedDataCtx *message, const Anybuf *serial, const Key *owner, Octets *document) {
    EncryptedContentCtx *content = message->encryptedContent;
    CipherKey cipher;
    if (content == NULL)
        return KACERT_InvalidItemErr;
    /* What the content is enciphered with stands in the message. Other ciphers are refused here. */
    const Anybuf *oid = &content->encryptionAlgorithm.oid;
    const Anybuf *iv = &content->encryptionAlgorithm.parameters;
    if (oid->length != sizeof KARIL_OID_AES128_CBC || memcmp(oid->data, KARIL_OID_AES128_CBC, oid->length) != 0 ||
        iv->length != 2 + sizeof cipher.iv)
        return KACERT_AlgorithmNotSupportErr;
    memcpy(cipher.iv, iv->data + 2, sizeof cipher.iv);
    int32_t status = openKey(message->recipients, serial, owner, cipher.key);
    if (status == KACERT_Ok)
        status = KA_PKCS7_SetEncryptContentDecFunc(content, decipher, &cipher, sizeof cipher);
    if (status == KACERT_Ok)
        status = KA_PKCS7_GetEncryptedContentInformation(content, document->data, &document->length);
    return status;
}

int main(int argc, char **argv) {
    static Key owner;
    char file[256];
    if (argc != 4) {
        fprintf(stderr, "usage: %s NAME MESSAGE DOCUMENT\n", argv[0]);
        return 2;
    }
    snprintf(file, sizeof file, "%s.key", argv[1]);
    readKey(file, &owner);
    snprintf(file, sizeof file, "%s.der", argv[1]);
    const Octets certDer = readDer(file);
    const Octets der = readDer(argv[2]);
    Octets document = makeOctets(der.length);
    CertDecodeCtx *cert = NULL;
    EnvelopedDataCtx *message = NULL;
    CHECK(KACert_CreateCertDecodeCtx(&cert));
    CHECK(KACert_DecodeCert(cert, certDer.data, certDer.length));
    CHECK(KA_PKCS7_CreateEnvelopedDataDecodeCtx(&message));
    int32_t status = KA_PKCS7_DecodePKCS7EnvelopedData(message, der.data, (int32_t)der.length);
    if (status == KACERT_Ok)
        status = openMessage(message, &cert->serialNumber, &owner, &document);
    if (status == KACERT_Ok)
        writeFile(".", argv[3], document);
    CHECK(KA_PKCS7_DestroyEnvelopedDataDecodeCtx(message));
    CHECK(KACert_DestroyCertDecodeCtx(cert));
    free(document.data);
    free(der.data);
    free(certDer.data);
    return outcome(argv[2], status);
}
