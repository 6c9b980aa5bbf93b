/*
 * Signs a document: MESSAGE is a PKCS#7 message with document, signature and certificate.
 *
 *     sign NAME DOCUMENT MESSAGE        with NAME.der and NAME.key
 */
#include "../example.h"

int main(int argc, char **argv) {
    static const int32_t sha1 = KA_DIGEST_SHA1;
    static Key key;
    char file[256];
    if (argc != 4) {
        fprintf(stderr, "usage: %s NAME DOCUMENT MESSAGE\n", argv[0]);
        return 2;
    }
    snprintf(file, sizeof file, "%s.key", argv[1]);
    readKey(file, &key);
    snprintf(file, sizeof file, "%s.der", argv[1]);
    const Octets certDer = readDer(file);
    const Octets document = readFile(argv[2]);
    CertDecodeCtx *cert = NULL;
    CHECK(KACert_CreateCertDecodeCtx(&cert));
    CHECK(KACert_DecodeCert(cert, certDer.data, certDer.length));

    /* The signer: who, how, and the two hooks, which have their parameters copied. */
    const Attribute who[] = {
        {PKCS7_SIGNER_DN, cert->issuerDer.data, cert->issuerDer.length},
        {PKCS7_SIGNER_SERIAL, cert->serialNumber.data, cert->serialNumber.length},
        {PKCS7_SIGNER_DIGEST_ALGO, KARIL_OID_SHA1, sizeof KARIL_OID_SHA1},
        {PKCS7_SIGNER_DIGEST_ENC_ALG, KARIL_OID_RSA_ENCRYPTION, sizeof KARIL_OID_RSA_ENCRYPTION},
    };
    SignerInfoCtx *signer = NULL;
    CHECK(KA_PKCS7_CreateEncodeSignerInfo(&signer));
    for (size_t i = 0; i < sizeof who / sizeof who[0]; ++i)
        CHECK(KA_PKCS7_SetSignerInfoAttributeChar(signer, who[i].id, who[i].octets, (int32_t)who[i].length));
    CHECK(KA_PKCS7_SetSignerInfoDigestFunc(signer, KA_DigestFunc_Ref, &sha1, sizeof sha1));
    CHECK(KA_PKCS7_SetSignerInfoEncSignFunc(signer, KA_PrivateKeyEncFunc_Ref, &key.privateKey, sizeof key.privateKey));

    const Attribute what[] = {
        {PKCS7_SIGNEDDATA_DIGEST_ALGO, KARIL_OID_SHA1, sizeof KARIL_OID_SHA1},
        {PKCS7_SIGNEDDATA_CONTENTTYPE, KARIL_OID_DATA, sizeof KARIL_OID_DATA},
        {PKCS7_SIGNEDDATA_CONTENT, document.data, document.length},
        {PKCS7_SIGNEDDATA_CERTIFICATE, certDer.data, certDer.length},
    };
    SignedDataCtx *message = NULL;
    uint32_t length = 0;
    CHECK(KA_PKCS7_CreateSignedDataEncodeCtx(&message));
    CHECK(KA_PKCS7_SetSignedDataAttributeInt(message, PKCS7_SIGNEDDATA_VERSION, 1));
    for (size_t i = 0; i < sizeof what / sizeof what[0]; ++i)
        CHECK(KA_PKCS7_SetSignedDataAttributeChar(message, what[i].id, what[i].octets, (int32_t)what[i].length));
    CHECK(KA_PKCS7_SetSignedData_SignerInfo(message, signer)); /* the message owns the signer from here on */
    CHECK(KA_PKCS7_EncodePKCS7SignedData(message, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KA_PKCS7_EncodePKCS7SignedData(message, der.data, &length));
    CHECK(KA_PKCS7_DestroySignedDataEncodeCtx(message));
    CHECK(KACert_DestroyCertDecodeCtx(cert));

    writeFile(".", argv[3], der);
    free(der.data);
    free(document.data);
    free(certDer.data);
    return 0;
}
