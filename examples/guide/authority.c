/*
 * Takes a request, and issues the certificate under the root: NAME.der from NAME.csr, root.der and root.key.
 *
 *     authority NAME        run it with TZ=UTC
 */
#include "../example.h"

#include <time.h>

/* From the request come name and key alone. What else the certificate says is the authority's to decide. */
static Octets issue(const Key *root, Octets rootDer, const CsrDecodeCtx *csr) {
    static const uint8_t signsAndEnciphers = 0xA0; /* digitalSignature, keyEncipherment */
    const int32_t now = (int32_t)time(NULL);
    uint8_t serial[8];
    const uint32_t serialLength = sizeof serial;
    CHECK(KA_PKCS7_GenerateBytes(serial, &serialLength));
    serial[0] = (uint8_t)(serial[0] & 0x7F) | 0x40; /* all eight octets count */
    Anybuf *subject = NULL;
    CHECK(KI_EncodeIssuerSuject(&csr->subject, &subject)); /* the whole name as one element */

    const Attribute values[] = {
        {CERT_SERIALNUMBER, serial, sizeof serial},
        {CERT_INNER_SIGNATUREALGORITHM, KARIL_OID_SHA1_WITH_RSA, sizeof KARIL_OID_SHA1_WITH_RSA},
        {CERT_OUTER_SIGNATUREALGORITHM, KARIL_OID_SHA1_WITH_RSA, sizeof KARIL_OID_SHA1_WITH_RSA},
        {CERT_SUBJECT_DERDN, subject->data, subject->length},
        {CERT_PUBLICKEY_ALGORITHM, KARIL_OID_RSA_ENCRYPTION, sizeof KARIL_OID_RSA_ENCRYPTION},
        {CERT_SUBJECTPUBLICKEYINFO, csr->publicKey.data, csr->publicKey.length},
        {CERTEX_AUTHORITYKEYIDENTIFIER, root->identifier, sizeof root->identifier},
        {CERTEX_KEYUSAGE, &signsAndEnciphers, 1},
    };
    CertEncodeCtx *cert = NULL;
    uint32_t length = 0;
    CHECK(KACert_CreateCertEncodeCtx_Ex(&cert, rootDer.data, (int32_t)rootDer.length)); /* sets the issuer */
    CHECK(KACert_SetCertAttributeInt(cert, CERT_VERSION, 2));
    CHECK(KACert_SetCertAttributeInt(cert, CERT_VALIDFROM, now));
    CHECK(KACert_SetCertAttributeInt(cert, CERT_VALIDTO, daysAfter(now, 365)));
    for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i)
        CHECK(KACert_SetCertAttributeChar(cert, values[i].id, values[i].octets, (int32_t)values[i].length));
    CHECK(KACert_SetCertSignFunc(cert, signWithKey, &root->privateKey, sizeof root->privateKey));
    CHECK(KACert_EncodeCert(cert, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCert(cert, der.data, &length));
    CHECK(KACert_DestroyCertEncodeCtx(cert));
    KI_FreeAnybuf(subject);
    return der;
}

int main(int argc, char **argv) {
    static Key root;
    char file[256];
    if (argc != 2) {
        fprintf(stderr, "usage: %s NAME\n", argv[0]);
        return 2;
    }
    snprintf(file, sizeof file, "%s.csr", argv[1]);
    const Octets request = readDer(file);
    /* The signature tells that whoever asks has the private key. It does not tell who that is. */
    int32_t status = KA_VerifyCsr_Sign(request.data, (int32_t)request.length);
    CsrDecodeCtx *csr = NULL;
    if (status == KACERT_Ok)
        status = KACert_CreateCsrDecodeCtx(&csr);
    if (status == KACERT_Ok)
        status = KACert_DecodeCsr(csr, request.data, request.length);
    free(request.data);
    if (status == KACERT_Ok) {
        const Octets rootDer = readDer("root.der");
        readKey("root.key", &root);
        const Octets der = issue(&root, rootDer, csr);
        status = KA_VerifyCert(rootDer.data, rootDer.length, der.data, der.length);
        snprintf(file, sizeof file, "%s.der", argv[1]);
        if (status == KACERT_Ok)
            writeFile(".", file, der);
        free(rootDer.data);
        free(der.data);
    }
    KACert_DestroyCsrDecodeCtx(csr);
    return outcome(file, status);
}
