/*
 * Verifies a signed message: each signer by its certificate, and that by its issuer's. Writes the content.
 *
 *     verify MESSAGE ISSUER CONTENT        signatures with SHA-1
 */
#include "../example.h"

static const int32_t sha1 = KA_DIGEST_SHA1;

/* Attributes that are signed stand for the content: their messageDigest must be that of the content. */
static int bindsContent(const SignerInfoCtx *signer, const Anybuf *content) {
    uint8_t digest[2 + 20] = {0x04, 20}; /* as an attribute has it: an OCTET STRING */
    uint32_t length = 0;
    if (signer->attributes == NULL)
        return 1; /* the signature covers the content itself */
    if (KA_PKCS7_DigestMessage(sha1, content->data, content->length, digest + 2, &length) != KACERT_Ok)
        return 0;
    for (const AttributeRecord *attribute = signer->attributes; attribute != NULL; attribute = attribute->next)
        if (attribute->oid.length == sizeof KARIL_OID_MESSAGE_DIGEST &&
            memcmp(attribute->oid.data, KARIL_OID_MESSAGE_DIGEST, sizeof KARIL_OID_MESSAGE_DIGEST) == 0)
            return attribute->value.length == sizeof digest &&
                   memcmp(attribute->value.data, digest, sizeof digest) == 0;
    return 0;
}

/* A certificate of the message: is it of this signer, of this issuer, and does its key open the signature? */
static int32_t tryCertificate(SignerInfoCtx *signer, const Anybuf *der, Octets issuer, int *isGood) {
    RsaPublicKeyRecord key = {0};
    CertDecodeCtx *cert = NULL;
    int32_t verdict = PKCS7_VERDICT_BAD;
    int32_t status = KACert_CreateCertDecodeCtx(&cert);
    if (status == KACERT_Ok)
        status = KACert_DecodeCert(cert, der->data, der->length);
    if (status == KACERT_Ok && cert->serialNumber.length == signer->serial.length &&
        memcmp(cert->serialNumber.data, signer->serial.data, signer->serial.length) == 0) {
        status = KA_VerifyCert(issuer.data, issuer.length, der->data, der->length);
        if (status == KACERT_Ok)
            status = KA_Decode_PublicKey(key.modulus, cert->publicKey.data, (int32_t)cert->publicKey.length);
        if (status == KACERT_Ok)
            status = KA_PKCS7_SetSignerInfoDigestFunc(signer, KA_DigestFunc_Ref, &sha1, sizeof sha1);
        if (status == KACERT_Ok)
            status = KA_PKCS7_SetSignerInfoDecSignFunc(signer, KA_PublicKeyDecryptFunc_Ref, &key, sizeof key);
        if (status == KACERT_Ok)
            status = KA_PKCS7_VerifySignerSignature(signer, &verdict);
        *isGood = status == KACERT_Ok && verdict == PKCS7_VERDICT_GOOD; /* look at both */
    }
    KACert_DestroyCertDecodeCtx(cert);
    return status;
}

static int32_t verify(const SignedDataCtx *message, Octets issuer) {
    if (message->signerInfos == NULL)
        return KACERT_VerifySignatureErr; /* a message without signers is signed by nobody */
    for (SignerInfoCtx *signer = message->signerInfos; signer != NULL; signer = signer->next) {
        int isGood = 0;
        int32_t status = KACERT_Ok;
        for (const Anybuf *der = message->certificates; der != NULL && status == KACERT_Ok && !isGood; der = der->next)
            status = tryCertificate(signer, der, issuer, &isGood);
        if (status != KACERT_Ok)
            return status;
        if (!isGood || !bindsContent(signer, &message->content))
            return KACERT_VerifySignatureErr;
    }
    return KACERT_Ok;
}

int main(int argc, char **argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: %s MESSAGE ISSUER CONTENT\n", argv[0]);
        return 2;
    }
    const Octets der = readDer(argv[1]);
    const Octets issuer = readDer(argv[2]);
    SignedDataCtx *message = NULL;
    int32_t status = KA_PKCS7_CreateSignedDataDecodeCtx(&message);
    if (status == KACERT_Ok)
        status = KA_PKCS7_DecodeSignedData(message, der.data, (int32_t)der.length);
    if (status == KACERT_Ok)
        status = verify(message, issuer);
    if (status == KACERT_Ok)
        writeFile(".", argv[3], (Octets){message->content.data, message->content.length});
    KA_PKCS7_DestroySignedDataDecodeCtx(message);
    free(issuer.data);
    free(der.data);
    return outcome(argv[1], status);
}
