/*
 * Enciphers a document for the holder of a certificate, as a PKCS#7 message.
 *
 *     envelop CERTIFICATE DOCUMENT MESSAGE
 */
#include "../example.h"

/* What the cipher's hook needs: AES with 128 bits in CBC mode. */
typedef struct CipherKey {
    uint8_t key[16];
    uint8_t iv[2 + 16]; /* as the message has it: an OCTET STRING */
} CipherKey;

/* `output` has room for 1,024 octets more than the content, so that the padding fits. */
static int32_t encipher(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                        void *parameter) {
    const CipherKey *cipher = parameter;
    return KA_PKCS12_AESEncrypt(2, cipher->key, 16, cipher->iv + 2, 16, input, inputLength, output, outputLength);
}

/* The key of the content, enciphered with the public key of a certificate. */
static RecipientInfoCtx *makeRecipient(const CertDecodeCtx *cert) {
    RsaPublicKeyRecord key = {0};
    RecipientInfoCtx *recipient = NULL;
    CHECK(KA_Decode_PublicKey(key.modulus, cert->publicKey.data, (int32_t)cert->publicKey.length));
    CHECK(KA_PKCS7_CreateEncodeRecipientInfo(&recipient));
    CHECK(KA_PKCS7_SetRecipientInfoAttributeChar(recipient, PKCS7_RECIPIENT_DN, cert->issuerDer.data,
                                                 (int32_t)cert->issuerDer.length));
    CHECK(KA_PKCS7_SetRecipientInfoAttributeChar(recipient, PKCS7_RECIPIENT_SERIAL, cert->serialNumber.data,
                                                 (int32_t)cert->serialNumber.length));
    CHECK(KA_PKCS7_SetRecipientInfoAttributeChar(recipient, PKCS7_RECIPIENT_KEYENCRYPTION_ALGO,
                                                 KARIL_OID_RSA_ENCRYPTION, sizeof KARIL_OID_RSA_ENCRYPTION));
    CHECK(KA_PKCS7_SetRecipientInfoKeyEncFunc(recipient, KA_PublicKeyEncryptFunc_Ref, &key, sizeof key));
    return recipient;
}

static EncryptedContentCtx *makeContent(const CipherKey *cipher) {
    EncryptedContentCtx *content = NULL;
    CHECK(KA_PKCS7_CreateEnocdeEncryptedContent(&content));
    CHECK(KA_PKCS7_SetEncryptedContentAttributeChar(content, PKCS7_ENCRYPT_ALGO, KARIL_OID_AES128_CBC,
                                                    sizeof KARIL_OID_AES128_CBC));
    CHECK(KA_PKCS7_SetEncryptedContentAttributeChar(content, PKCS7_ENCRYPT_PARAMETER, cipher->iv, sizeof cipher->iv));
    CHECK(KA_PKCS7_SetEncryptContentEncFunc(content, encipher, cipher, sizeof *cipher));
    return content;
}

static Octets seal(const CertDecodeCtx *cert, Octets document) {
    static const uint32_t size = 16;
    CipherKey cipher = {.iv = {0x04, 16}};
    CHECK(KA_PKCS7_GenerateBytes(cipher.key, &size));
    CHECK(KA_PKCS7_GenerateBytes(cipher.iv + 2, &size));
    EnvelopedDataCtx *message = NULL;
    uint32_t length = 0;
    CHECK(KA_PKCS7_CreateEnvelopedDataEncodeCtx(&message));
    CHECK(KA_PKCS7_SetEnvelopedDataAttributeInt(message, PKCS7_ENVELOPED_VERSION, 0));
    CHECK(KA_PKCS7_SetEnvelopedDataAttributeChar(message, PKCS7_ENVELOPED_CONTENTTYPE, KARIL_OID_DATA,
                                                 sizeof KARIL_OID_DATA));
    CHECK(KA_PKCS7_SetEnvelopedDataAttributeChar(message, PKCS7_ENVELOPED_ENCRYPTED_CONTENT, document.data,
                                                 (int32_t)document.length));
    CHECK(KA_PKCS7_SetEnvelopedDataAttributeChar(message, PKCS7_ENVELOPED_RECIPIENT_KEY, cipher.key, 16));
    /* The message owns both parts from here on. There may be more recipients. */
    CHECK(KA_PKCS7_SetEnvelopedData_RecipientInfo(message, makeRecipient(cert)));
    CHECK(KA_PKCS7_SetEnvelopedData_EncryptedContent(message, makeContent(&cipher)));
    CHECK(KA_PKCS7_EncodePKCS7EnvelopedData(message, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KA_PKCS7_EncodePKCS7EnvelopedData(message, der.data, &length));
    CHECK(KA_PKCS7_DestroyEnvelopedDataEncodeCtx(message));
    return der;
}

int main(int argc, char **argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: %s CERTIFICATE DOCUMENT MESSAGE\n", argv[0]);
        return 2;
    }
    const Octets certDer = readDer(argv[1]);
    const Octets document = readFile(argv[2]);
    CertDecodeCtx *cert = NULL;
    CHECK(KACert_CreateCertDecodeCtx(&cert));
    CHECK(KACert_DecodeCert(cert, certDer.data, certDer.length));
    const Octets message = seal(cert, document);
    CHECK(KACert_DestroyCertDecodeCtx(cert));
    writeFile(".", argv[3], message);
    free(message.data);
    free(document.data);
    free(certDer.data);
    return 0;
}
