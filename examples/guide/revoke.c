/*
 * Revokes certificates of the root in a new CRL: NEXT_CRL, numbered NUMBER, with the entries of an earlier one.
 *
 *     revoke NUMBER NEXT_CRL CERTIFICATE [EARLIER_CRL]        run it with TZ=UTC
 */
#include "../example.h"

#include <time.h>

static void printEntries(Octets der) {
    CrlDecodeCtx *crl = NULL;
    CHECK(KACert_CreateCrlDecodeCtx(&crl));
    CHECK(KACert_DecodeCrl(crl, der.data, der.length));
    for (const RevokedEntry *entry = crl->firstRevoked; entry != NULL; entry = entry->next) {
        printf("revoked: ");
        for (uint32_t i = 0; i < entry->serialNumber.length; ++i)
            printf("%02X", entry->serialNumber.data[i]);
        printf(", reason %d\n", entry->reason.length > 0 ? entry->reason.data[0] : -1);
    }
    CHECK(KACert_DestroyCrlDecodeCtx(crl));
}

int main(int argc, char **argv) {
    static const uint8_t keyCompromise = 1; /* RFC 5280 5.3.1 */
    static Key root;
    const int32_t now = (int32_t)time(NULL);
    if (argc != 4 && argc != 5) {
        fprintf(stderr, "usage: %s NUMBER NEXT_CRL CERTIFICATE [EARLIER_CRL]\n", argv[0]);
        return 2;
    }
    const uint8_t number = (uint8_t)strtoul(argv[1], NULL, 10);
    const Octets rootDer = readDer("root.der");
    const Octets certDer = readDer(argv[3]);
    readKey("root.key", &root);
    CertDecodeCtx *cert = NULL;
    CHECK(KACert_CreateCertDecodeCtx(&cert));
    CHECK(KACert_DecodeCert(cert, certDer.data, certDer.length));

    CrlEncodeCtx *crl = NULL;
    CHECK(KACert_CreateCrlEncodeCtx_Ex(&crl, rootDer.data, (int32_t)rootDer.length)); /* issuer and its key id */
    CHECK(KACert_SetCrlAttributeInt(crl, CRL_VERSION, 1));                            /* v2 */
    CHECK(KACert_SetCrlAttributeInt(crl, CRL_THISUPDATE, now));
    CHECK(KACert_SetCrlAttributeInt(crl, CRL_NEXTUPDATE, daysAfter(now, 30)));
    CHECK(KACert_SetCrlAttributeChar(crl, CRL_INNER_SIGNATUREALGORITHM, KARIL_OID_SHA1_WITH_RSA,
                                     sizeof KARIL_OID_SHA1_WITH_RSA));
    CHECK(KACert_SetCrlAttributeChar(crl, CRL_OUTER_SIGNATUREALGORITHM, KARIL_OID_SHA1_WITH_RSA,
                                     sizeof KARIL_OID_SHA1_WITH_RSA));
    CHECK(KACert_SetCrlAttributeChar(crl, CRLEX_CRLNUMBER, &number, 1));
    if (argc == 5) {
        /* Entries are carried over from a CRL of our own alone: setCRL2Context does not verify it. */
        const Octets earlier = readDer(argv[4]);
        CHECK(KA_VerifyCrl(rootDer.data, rootDer.length, earlier.data, earlier.length));
        CHECK(setCRL2Context(crl, earlier.data, (int32_t)earlier.length));
        free(earlier.data);
    }
    /* A serial number starts an entry; date and reason belong to the last one. */
    CHECK(KACert_SetCrlAttributeChar(crl, CRL_CERT_SERIALNUMBER, cert->serialNumber.data,
                                     (int32_t)cert->serialNumber.length));
    CHECK(KACert_SetCrlAttributeInt(crl, CRL_CERT_REVOCATIONDATE, now));
    CHECK(KACert_SetCrlAttributeChar(crl, CRLEX_CRLREASON, &keyCompromise, 1));
    CHECK(KACert_SetCrlSignFunc(crl, signWithKey, &root.privateKey, sizeof root.privateKey));
    uint32_t length = 0;
    CHECK(KACert_EncodeCrl(crl, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCrl(crl, der.data, &length));
    CHECK(KACert_DestroyCrlEncodeCtx(crl));
    CHECK(KACert_DestroyCertDecodeCtx(cert));

    printEntries(der);
    writeFile(".", argv[2], der);
    free(der.data);
    free(certDer.data);
    free(rootDer.data);
    return 0;
}
