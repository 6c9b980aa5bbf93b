/*
 * PKCS#7 messages with the certificates, keys and CRL of the small authority (certificate_authority).
 *
 *     messages make FOLDER DOCUMENT LARGE_DOCUMENT    writes every kind of message and reads it back
 *     messages verify MESSAGE DOCUMENT                verifies every signer of a message
 *     messages open FOLDER NAME MESSAGE DOCUMENT      opens an enveloped message with the key of a certificate
 *
 * Hooks do the work with keys. Those for digests and RSA are karil's own; the one for ciphers is here.
 */
#include "example.h"

#include <openssl/evp.h>
#include <time.h>

static const uint8_t dataType[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x01};
static const uint8_t sha1[] = {0x2B, 0x0E, 0x03, 0x02, 0x1A};
static const uint8_t tripleDes[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x03, 0x07};
static const uint8_t aes128[] = {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x01, 0x02};
static const uint8_t signingTime[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x05};
static const uint8_t messageDigest[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x04};
static const int32_t sha1Id = KA_DIGEST_SHA1;

static void expect(const char *what, int isSo) {
    printf("  %s: %s\n", what, isSo ? "yes" : "NO");
    if (!isSo)
        exit(1);
}

/* What the cipher's hook needs. The IV stands in the message's parameters, as 04 length IV. */
typedef struct CipherKey {
    uint8_t octets[32];
    uint32_t length; /* 16: AES-128, 24: triple DES */
    uint8_t parameter[18];
    uint32_t parameterLength;
    int isToEncipher;
} CipherKey;

static int32_t runCipher(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
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

static CipherKey makeCipherKey(void) {
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

static void getCert(CertDecodeCtx *ctx, int32_t id, uint8_t *value, uint32_t room, uint32_t *length) {
    CHECK(KACert_GetCertAttributeChar(ctx, id, NULL, length));
    if (*length > room) {
        fprintf(stderr, "attribute %d is too long\n", (int)id);
        exit(1);
    }
    CHECK(KACert_GetCertAttributeChar(ctx, id, value, length));
}

static Party readCertificate(Octets der) {
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

static Octets readFrom(const char *folder, const char *name, const char *end) {
    char path[4096];
    snprintf(path, sizeof path, "%s/%s.%s", folder, name, end);
    return readFile(path);
}

static Party readParty(const char *folder, const char *name) {
    const Octets key = readFrom(folder, name, "key");
    Party party = readCertificate(readFrom(folder, name, "der"));
    CHECK(KA_Decode_PrivateKey(party.privateKey.modulus, key.data, (int32_t)key.length));
    free(key.data);
    return party;
}

/* Asks an encoder for the length, and then for the message. */
#define ENCODE(FUNCTION, CTX, OUT)                                                                                     \
    do {                                                                                                               \
        uint32_t encodedLength = 0;                                                                                    \
        CHECK(FUNCTION(CTX, NULL, &encodedLength));                                                                    \
        *(OUT) = makeOctets(encodedLength);                                                                            \
        CHECK(FUNCTION(CTX, (OUT)->data, &encodedLength));                                                             \
    } while (0)

static void setSigner(SignerInfoCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_PKCS7_SetSignerInfoAttributeChar(ctx, id, value, (int32_t)length));
}

/* The message adds content type and content. With attributes, messageDigest and contentType are added as well. */
static SignerInfoCtx *makeSigner(const Party *party, int hasAttributes) {
    SignerInfoCtx *ctx = NULL;
    CHECK(KA_PKCS7_CreateEncodeSignerInfo(&ctx));
    setSigner(ctx, PKCS7_SIGNER_DN, party->issuer, party->issuerLength);
    setSigner(ctx, PKCS7_SIGNER_SERIAL, party->serial, party->serialLength);
    setSigner(ctx, PKCS7_SIGNER_DIGEST_ALGO, sha1, sizeof sha1);
    setSigner(ctx, PKCS7_SIGNER_DIGEST_ENC_ALG, rsaEncryption, sizeof rsaEncryption);
    if (hasAttributes) {
        uint8_t when[32] = {0x17, 13}; /* UTCTime */
        const time_t now = time(NULL);
        strftime((char *)when + 2, sizeof when - 2, "%y%m%d%H%M%SZ", gmtime(&now));
        CHECK(KA_PKCS7_SetSignerAttribute(ctx, signingTime, (int32_t)sizeof signingTime, when, 15));
    }
    CHECK(KA_PKCS7_SetSignerInfoDigestFunc(ctx, KA_DigestFunc_Ref, &sha1Id, (int32_t)sizeof sha1Id));
    CHECK(KA_PKCS7_SetSignerInfoEncSignFunc(ctx, KA_PrivateKeyEncFunc_Ref, &party->privateKey,
                                            (int32_t)sizeof party->privateKey));
    return ctx;
}

static void setSigned(SignedDataCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_PKCS7_SetSignedDataAttributeChar(ctx, id, value, (int32_t)length));
}

/* Signed by both, by the first one with attributes. */
static Octets sign(const Party *parties, Octets crl, Octets document) {
    SignedDataCtx *ctx = NULL;
    Octets message;
    CHECK(KA_PKCS7_CreateSignedDataEncodeCtx(&ctx));
    CHECK(KA_PKCS7_SetSignedDataAttributeInt(ctx, PKCS7_SIGNEDDATA_VERSION, 1));
    setSigned(ctx, PKCS7_SIGNEDDATA_DIGEST_ALGO, sha1, sizeof sha1);
    setSigned(ctx, PKCS7_SIGNEDDATA_CONTENTTYPE, dataType, sizeof dataType);
    setSigned(ctx, PKCS7_SIGNEDDATA_CONTENT, document.data, document.length);
    setSigned(ctx, PKCS7_SIGNEDDATA_CRL, crl.data, crl.length);
    for (int i = 0; i < 2; ++i) {
        setSigned(ctx, PKCS7_SIGNEDDATA_CERTIFICATE, parties[i].certificate.data, parties[i].certificate.length);
        CHECK(KA_PKCS7_SetSignedData_SignerInfo(ctx, makeSigner(&parties[i], i == 0)));
    }
    ENCODE(KA_PKCS7_EncodePKCS7SignedData, ctx, &message);
    CHECK(KA_PKCS7_DestroySignedDataEncodeCtx(ctx));
    return message;
}

/* The signer's certificate, found by its serial number among those of the message. */
static Party signerOf(SignedDataCtx *ctx, SignerInfoCtx *signer, Octets room) {
    uint8_t serial[64];
    uint32_t serialLength = 0;
    uint32_t count = 0;
    CHECK(KA_PKCS7_GetSignerInfoAttributeChar(signer, PKCS7_SIGNER_SERIAL, NULL, &serialLength));
    if (serialLength > sizeof serial)
        exit(1);
    CHECK(KA_PKCS7_GetSignerInfoAttributeChar(signer, PKCS7_SIGNER_SERIAL, serial, &serialLength));
    CHECK(KA_PKCS7_GetSignedData_CertificatesNum(ctx, &count));
    for (int32_t i = 1; i <= (int32_t)count; ++i) {
        Octets der = room;
        CHECK(KA_PKCS7_GetSignedDataAttributeChar(ctx, PKCS7_SIGNEDDATA_CERTIFICATE, der.data, &der.length, i));
        const Party party = readCertificate(der);
        if (party.serialLength == serialLength && memcmp(party.serial, serial, serialLength) == 0)
            return party;
    }
    fprintf(stderr, "a signer has no certificate\n");
    exit(1);
}

/* Attributes don't bind the content: their messageDigest has to be compared with the content's digest. */
static int bindsContent(SignerInfoCtx *signer, const uint8_t *content, uint32_t contentLength) {
    uint8_t digest[64];
    uint32_t digestLength = 0;
    uint32_t count = 0;
    CHECK(KA_PKCS7_GetSignerInfoAttributesNum(signer, &count));
    CHECK(KA_PKCS7_DigestMessage(KA_DIGEST_SHA1, content, contentLength, digest, &digestLength));
    for (int32_t i = 1; i <= (int32_t)count; ++i) {
        uint8_t oid[64];
        uint8_t value[4096];
        uint32_t oidLength = 0;
        uint32_t valueLength = 0;
        CHECK(KA_PKCS7_GetSignerAttribute(signer, i, NULL, &oidLength, NULL, &valueLength));
        if (oidLength > sizeof oid || valueLength > sizeof value)
            continue;
        CHECK(KA_PKCS7_GetSignerAttribute(signer, i, oid, &oidLength, value, &valueLength));
        if (oidLength == sizeof messageDigest && memcmp(oid, messageDigest, oidLength) == 0)
            return valueLength == digestLength + 2 && value[0] == 0x04 && memcmp(value + 2, digest, digestLength) == 0;
    }
    return count == 0; /* without attributes the signature covers the content */
}

static int32_t verifySigner(SignerInfoCtx *signer, const Party *party, int32_t *verdict) {
    CHECK(KA_PKCS7_SetSignerInfoDigestFunc(signer, KA_DigestFunc_Ref, &sha1Id, (int32_t)sizeof sha1Id));
    CHECK(KA_PKCS7_SetSignerInfoDecSignFunc(signer, KA_PublicKeyDecryptFunc_Ref, &party->publicKey,
                                            (int32_t)sizeof party->publicKey));
    return KA_PKCS7_VerifySignerSignature(signer, verdict);
}

/* All signers of a message, whose content must be the document. */
static void verifyMessage(Octets message, Octets document) {
    SignedDataCtx *ctx = NULL;
    uint32_t counts[3] = {0, 0, 0};
    const Octets room = makeOctets(message.length);
    Octets content = makeOctets(message.length);
    CHECK(KA_PKCS7_CreateSignedDataDecodeCtx(&ctx));
    CHECK(KA_PKCS7_DecodeSignedData(ctx, message.data, (int32_t)message.length));
    CHECK(KA_PKCS7_GetSignedData_SignerInfoNum(ctx, &counts[0]));
    CHECK(KA_PKCS7_GetSignedData_CertificatesNum(ctx, &counts[1]));
    CHECK(KA_PKCS7_GetSignedData_CrlsNum(ctx, &counts[2]));
    printf("  %u signers, %u certificates, %u CRLs\n", (unsigned)counts[0], (unsigned)counts[1], (unsigned)counts[2]);
    CHECK(KA_PKCS7_GetSignedDataAttributeChar(ctx, PKCS7_SIGNEDDATA_CONTENT, content.data, &content.length, 1));
    if (document.length > 0)
        expect("the content is the document",
               content.length == document.length && memcmp(content.data, document.data, document.length) == 0);
    SignerInfoCtx *signer = NULL;
    CHECK(KA_PKCS7_GetSignedData_SignerInfo(ctx, &signer, 1));
    for (; signer != NULL; signer = signer->next) {
        int32_t verdict = 0;
        const Party party = signerOf(ctx, signer, room);
        CHECK(verifySigner(signer, &party, &verdict));
        expect("a signature is good", verdict == PKCS7_VERDICT_GOOD);
        expect("it binds the content", bindsContent(signer, content.data, content.length));
    }
    CHECK(KA_PKCS7_DestroySignedDataDecodeCtx(ctx));
    free(content.data);
    free(room.data);
}

/* What a change of the message does to the first signer, who signs attributes. */
static void refuseChanges(Octets message, const Party *party) {
    SignedDataCtx *ctx = NULL;
    SignerInfoCtx *signer = NULL;
    int32_t verdict = 0;
    CHECK(KA_PKCS7_CreateSignedDataDecodeCtx(&ctx));
    CHECK(KA_PKCS7_DecodeSignedData(ctx, message.data, (int32_t)message.length));
    CHECK(KA_PKCS7_GetSignedData_SignerInfo(ctx, &signer, 1));
    ctx->content.data[0] ^= 1;
    CHECK(verifySigner(signer, party, &verdict));
    expect("a changed content leaves the signature good", verdict == PKCS7_VERDICT_GOOD);
    expect("and is found by its digest", !bindsContent(signer, ctx->content.data, ctx->content.length));
    signer->attributes->value.data[2] ^= 1;
    CHECK(verifySigner(signer, party, &verdict));
    expect("a changed attribute is verdict 300", verdict == PKCS7_VERDICT_BAD);
    signer->encryptedDigest.data[signer->encryptedDigest.length - 1] ^= 1;
    expect("a changed signature is status 126 of the hook",
           verifySigner(signer, party, &verdict) == KAPKCS7_RsaOperationErr);
    CHECK(KA_PKCS7_DestroySignedDataDecodeCtx(ctx));
}

static void setRecipient(RecipientInfoCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_PKCS7_SetRecipientInfoAttributeChar(ctx, id, value, (int32_t)length));
}

static RecipientInfoCtx *makeRecipient(const Party *party) {
    RecipientInfoCtx *ctx = NULL;
    CHECK(KA_PKCS7_CreateEncodeRecipientInfo(&ctx));
    setRecipient(ctx, PKCS7_RECIPIENT_DN, party->issuer, party->issuerLength);
    setRecipient(ctx, PKCS7_RECIPIENT_SERIAL, party->serial, party->serialLength);
    setRecipient(ctx, PKCS7_RECIPIENT_KEYENCRYPTION_ALGO, rsaEncryption, sizeof rsaEncryption);
    CHECK(KA_PKCS7_SetRecipientInfoKeyEncFunc(ctx, KA_PublicKeyEncryptFunc_Ref, &party->publicKey,
                                              (int32_t)sizeof party->publicKey));
    return ctx;
}

static EncryptedContentCtx *makeContent(const CipherKey *key) {
    EncryptedContentCtx *ctx = NULL;
    CHECK(KA_PKCS7_CreateEnocdeEncryptedContent(&ctx));
    CHECK(KA_PKCS7_SetEncryptedContentAttributeChar(ctx, PKCS7_ENCRYPT_ALGO, tripleDes, (int32_t)sizeof tripleDes));
    CHECK(KA_PKCS7_SetEncryptedContentAttributeChar(ctx, PKCS7_ENCRYPT_PARAMETER, key->parameter,
                                                    (int32_t)key->parameterLength));
    CHECK(KA_PKCS7_SetEncryptContentEncFunc(ctx, runCipher, key, (int32_t)sizeof *key));
    return ctx;
}

/* Deciphers with `key`, whose algorithm and IV the message has. `room`: the message's length. */
static Octets decipher(EncryptedContentCtx *ctx, CipherKey key, uint32_t room) {
    uint8_t oid[64];
    uint32_t length = 0;
    if (ctx->encryptionAlgorithm.oid.length > sizeof oid ||
        ctx->encryptionAlgorithm.parameters.length > sizeof key.parameter)
        exit(1);
    CHECK(KA_PKCS7_GetEncryptedContentAttributeChar(ctx, PKCS7_ENCRYPT_ALGO, oid, &length));
    expect("the cipher is known", (key.length == 24 && length == sizeof tripleDes && !memcmp(oid, tripleDes, length)) ||
                                      (key.length == 16 && length == sizeof aes128 && !memcmp(oid, aes128, length)));
    CHECK(KA_PKCS7_GetEncryptedContentAttributeChar(ctx, PKCS7_ENCRYPT_PARAMETER, key.parameter, &length));
    key.isToEncipher = 0;
    CHECK(KA_PKCS7_SetEncryptContentDecFunc(ctx, runCipher, &key, (int32_t)sizeof key));
    Octets content = makeOctets(room);
    CHECK(KA_PKCS7_GetEncryptedContentInformation(ctx, content.data, &content.length));
    return content;
}

/* The content's key, opened by the party's own recipient: the one with its serial number. */
static CipherKey openKey(RecipientInfoCtx *recipient, const Party *party) {
    CipherKey key = {.length = 0};
    while (recipient != NULL && (recipient->serial.length != party->serialLength ||
                                 memcmp(recipient->serial.data, party->serial, party->serialLength) != 0))
        recipient = recipient->next;
    expect("the message is for this recipient", recipient != NULL && recipient->encryptedKey.length <= 256);
    uint8_t opened[256];
    CHECK(KA_PKCS7_SetRecipientInfoKeyDecFunc(recipient, KA_PrivateKeyDecryptFunc_Ref, &party->privateKey,
                                              (int32_t)sizeof party->privateKey));
    CHECK(KA_PKCS7_DecryptDesKey(recipient, opened, &key.length));
    if (key.length > sizeof key.octets)
        exit(1);
    memcpy(key.octets, opened, key.length);
    return key;
}

static void expectDocument(Octets content, Octets document) {
    expect("the content is the document",
           content.length == document.length && memcmp(content.data, document.data, content.length) == 0);
    free(content.data);
}

static void openEnvelope(Octets message, const Party *party, Octets document) {
    EnvelopedDataCtx *ctx = NULL;
    RecipientInfoCtx *recipient = NULL;
    EncryptedContentCtx *encrypted = NULL;
    CHECK(KA_PKCS7_CreateEnvelopedDataDecodeCtx(&ctx));
    CHECK(KA_PKCS7_DecodePKCS7EnvelopedData(ctx, message.data, (int32_t)message.length));
    CHECK(KA_PKCS7_GetEnvelopedData_RecipientInfo(ctx, &recipient, 1));
    CHECK(KA_PKCS7_GetEnvelopedData_EncryptedContent(ctx, &encrypted));
    expectDocument(decipher(encrypted, openKey(recipient, party), message.length), document);
    CHECK(KA_PKCS7_DestroyEnvelopedDataDecodeCtx(ctx));
}

static void setEnveloped(EnvelopedDataCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_PKCS7_SetEnvelopedDataAttributeChar(ctx, id, value, (int32_t)length));
}

static Octets envelop(const Party *parties, Octets document, Octets large) {
    const CipherKey key = makeCipherKey();
    EnvelopedDataCtx *ctx = NULL;
    Octets message;
    uint32_t length = 0;
    CHECK(KA_PKCS7_CreateEnvelopedDataEncodeCtx(&ctx));
    CHECK(KA_PKCS7_SetEnvelopedDataAttributeInt(ctx, PKCS7_ENVELOPED_VERSION, 0));
    setEnveloped(ctx, PKCS7_ENVELOPED_CONTENTTYPE, dataType, sizeof dataType);
    setEnveloped(ctx, PKCS7_ENVELOPED_RECIPIENT_KEY, key.octets, key.length);
    for (int i = 0; i < 2; ++i)
        CHECK(KA_PKCS7_SetEnvelopedData_RecipientInfo(ctx, makeRecipient(&parties[i])));
    CHECK(KA_PKCS7_SetEnvelopedData_EncryptedContent(ctx, makeContent(&key)));
    setEnveloped(ctx, PKCS7_ENVELOPED_ENCRYPTED_CONTENT, large.data, large.length);
    expect("a content above 10,240 octets is refused with 101",
           KA_PKCS7_EncodePKCS7EnvelopedData(ctx, NULL, &length) == KACERT_InvalidLengthErr);
    setEnveloped(ctx, PKCS7_ENVELOPED_ENCRYPTED_CONTENT, document.data, document.length);
    ENCODE(KA_PKCS7_EncodePKCS7EnvelopedData, ctx, &message);
    CHECK(KA_PKCS7_DestroyEnvelopedDataEncodeCtx(ctx));
    return message;
}

/* There and back under a key of one's own. The key goes into a file for others to try. */
static Octets encrypt(const char *folder, Octets document) {
    CipherKey key = makeCipherKey();
    EncryptedDataCtx *ctx = NULL;
    EncryptedContentCtx *encrypted = NULL;
    Octets message;
    CHECK(KA_PKCS7_CreateEncryptedDataEncodeCtx(&ctx));
    CHECK(KA_PKCS7_SetEncryptedDataAttributeInt(ctx, PKCS7_ENCRYPTEDDATA_VERSION, 0));
    CHECK(KA_PKCS7_SetEncryptedDataAttributeChar(ctx, PKCS7_ENCRYPTEDDATA_CONTENTTYPE, dataType,
                                                 (int32_t)sizeof dataType));
    CHECK(KA_PKCS7_SetEncryptedDataAttributeChar(ctx, PKCS7_ENCRYPTEDDATA_CONTENTENCRYPTION_PARAMETER, document.data,
                                                 (int32_t)document.length));
    CHECK(KA_PKCS7_SetEncrytpedData_EncryptedContent(ctx, makeContent(&key)));
    ENCODE(KA_PKCS7_EncodePKCS7EncryptedData, ctx, &message);
    CHECK(KA_PKCS7_DecodePKCS7EncryptedData(ctx, message.data, (int32_t)message.length));
    CHECK(KA_PKCS7_GetEncrytpedData_EncryptedContent(ctx, &encrypted));
    expectDocument(decipher(encrypted, key, message.length), document);
    CHECK(KA_PKCS7_DestoryEncryptedDataEncodeCtx(ctx));
    const Octets secret = {key.octets, key.length};
    writeFile(folder, "encrypted.secret", secret);
    return message;
}

static void setDigested(DigestedDataCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_PKCS7_SetDigestedDataAttributeChar(ctx, id, value, (int32_t)length));
}

static Octets digest(Octets document) {
    DigestedDataCtx *ctx = NULL;
    Octets message;
    uint32_t verdict = 0;
    CHECK(KA_PKCS7_CreateDigestedDataEncodeCtx(&ctx));
    CHECK(KA_PKCS7_SetDigestedDataAttributeInt(ctx, PKCS7_DIGESTED_VERSION, 0));
    setDigested(ctx, PKCS7_DIGESTED_DIGEST_ALGO, sha1, sizeof sha1);
    setDigested(ctx, PKCS7_DIGESTED_CONTENTTYPE, dataType, sizeof dataType);
    setDigested(ctx, PKCS7_DIGESTED_CONTENT, document.data, document.length);
    CHECK(KA_PKCS7_SetDigestedDataHashFunc(ctx, KA_DigestFunc_Ref, &sha1Id, (int32_t)sizeof sha1Id));
    ENCODE(KA_PKCS7_EncodePKCS7DigestedData, ctx, &message);
    for (int isChanged = 0; isChanged < 2; ++isChanged) {
        message.data[message.length / 2] ^= (uint8_t)isChanged;
        CHECK(KA_PKCS7_DecodePKCS7DigestedData(ctx, message.data, (int32_t)message.length));
        CHECK(KA_PKCS7_GetDigestedDataHashResult(ctx, &verdict));
        message.data[message.length / 2] ^= (uint8_t)isChanged;
        expect(isChanged ? "a changed content is verdict 300" : "the digest is good",
               verdict == (isChanged ? PKCS7_VERDICT_BAD : PKCS7_VERDICT_GOOD));
    }
    CHECK(KA_PKCS7_DestoryDigestedDataEncodeCtx(ctx));
    return message;
}

static void setBoth(SignedAndEnvelopedDataCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_PKCS7_SetSignedAndEnvelopedDataAttributeChar(ctx, id, value, (int32_t)length));
}

/* From the first party to the second. The signature covers the plain content, so that is opened first. */
static Octets signAndEnvelop(const Party *parties, Octets document) {
    const CipherKey key = makeCipherKey();
    SignedAndEnvelopedDataCtx *ctx = NULL;
    SignerInfoCtx *signer = NULL;
    RecipientInfoCtx *recipient = NULL;
    EncryptedContentCtx *encrypted = NULL;
    Octets message;
    int32_t verdict = 0;
    CHECK(KA_PKCS7_CreateSignedAndEnvelopedDataEncodeCtx(&ctx));
    CHECK(KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt(ctx, PKCS7_SIGNEDANDENVELOPED_VERSION, 1));
    setBoth(ctx, PKCS7_SIGNEDANDENVELOPED_DIGEST_ALGO, sha1, sizeof sha1);
    setBoth(ctx, PKCS7_SIGNEDANDENVELOPED_CERTIFICATE, parties[0].certificate.data, parties[0].certificate.length);
    setBoth(ctx, PKCS7_SIGNEDANDENVELOPED_CONTENTTYPE, dataType, sizeof dataType);
    setBoth(ctx, PKCS7_SIGNEDANDENVELOPED_ENCRYPTED_CONTENT, document.data, document.length);
    setBoth(ctx, PKCS7_SIGNEDANDENVELOPED_RECIPIENT_KEY, key.octets, key.length);
    CHECK(KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo(ctx, makeSigner(&parties[0], 0)));
    CHECK(KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo(ctx, makeRecipient(&parties[1])));
    CHECK(KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent(ctx, makeContent(&key)));
    ENCODE(KA_PKCS7_EncodeSignedAndEnvelopedData, ctx, &message);
    CHECK(KA_PKCS7_DecodeSignedAndEnvelopedData(ctx, message.data, (int32_t)message.length));
    CHECK(KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfo(ctx, &recipient, 1));
    CHECK(KA_PKCS7_GetSignedAndEnvelopedData_EncryptedContent(ctx, &encrypted));
    CHECK(KA_PKCS7_GetSignedAndEnvelopedData_SignerInfo(ctx, &signer, 1));
    const Octets content = decipher(encrypted, openKey(recipient, &parties[1]), message.length);
    setSigner(signer, PKCS7_SIGNER_CONTENT, content.data, content.length);
    CHECK(verifySigner(signer, &parties[0], &verdict));
    expect("the signature is good", verdict == PKCS7_VERDICT_GOOD);
    expectDocument(content, document);
    CHECK(KA_PKCS7_DestorySignedAndEnvelopedDataEncodeCtx(ctx));
    return message;
}

static void finish(const char *folder, const char *name, Octets message) {
    writeFile(folder, name, message);
    free(message.data);
}

static void make(const char *folder, Octets document, Octets large) {
    const Party parties[] = {readParty(folder, "issued"), readParty(folder, "authority")};
    const Octets crl = readFrom(folder, "crl1", "der");
    const Octets start = {document.data, document.length < 8192 ? document.length : 8192};
    const Octets documents[] = {document, large};
    const char *const names[] = {"signed.p7", "signed_large.p7"};
    for (int i = 0; i < 2; ++i) {
        puts("signed by two signers");
        const Octets message = sign(parties, crl, documents[i]);
        verifyMessage(message, documents[i]);
        refuseChanges(message, &parties[0]);
        finish(folder, names[i], message);
    }
    puts("enveloped for two recipients");
    const Octets message = envelop(parties, start, large);
    for (int i = 0; i < 2; ++i)
        openEnvelope(message, &parties[i], start);
    finish(folder, "enveloped.p7", message);
    puts("encrypted");
    finish(folder, "encrypted.p7", encrypt(folder, start));
    puts("digested");
    finish(folder, "digested.p7", digest(start));
    puts("signed and enveloped");
    finish(folder, "signed_enveloped.p7", signAndEnvelop(parties, start));
    free(crl.data);
    for (int i = 0; i < 2; ++i)
        free(parties[i].certificate.data);
}

int main(int argc, char **argv) {
    const char *command = argc > 1 ? argv[1] : "";
    if (argc == 5 && strcmp(command, "make") == 0) {
        const Octets document = readFile(argv[3]);
        const Octets large = readFile(argv[4]);
        make(argv[2], document, large);
        free(document.data);
        free(large.data);
    } else if (argc == 4 && strcmp(command, "verify") == 0) {
        const Octets message = readFile(argv[2]);
        const Octets document = readFile(argv[3]);
        printf("%s\n", argv[2]);
        verifyMessage(message, document);
        free(message.data);
        free(document.data);
    } else if (argc == 6 && strcmp(command, "open") == 0) {
        const Party party = readParty(argv[2], argv[3]);
        const Octets message = readFile(argv[4]);
        const Octets document = readFile(argv[5]);
        printf("%s, by %s\n", argv[4], argv[3]);
        openEnvelope(message, &party, document);
        free(party.certificate.data);
        free(message.data);
        free(document.data);
    } else {
        fprintf(stderr, "usage: %s make|verify|open ...\n", argv[0]);
        return 2;
    }
    return 0;
}
