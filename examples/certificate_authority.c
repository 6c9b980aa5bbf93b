/*
 * A small certification authority: a self-signed root, a request, the certificate issued from it, a CRL, and a second
 * CRL that carries the first one's entries over and revokes the certificate. Everything is verified, and a changed
 * copy of everything is refused.
 *
 *     certificate_authority OUTPUT_FOLDER
 */
#include "example.h"

#include <time.h>

static void setCert(CertEncodeCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KACert_SetCertAttributeChar(ctx, id, (const uint8_t *)value, (int32_t)length));
}

/* What root and leaf have in common; they are valid for `days`. Times on the wire are local: run with TZ=UTC. */
static void fillCommon(CertEncodeCtx *ctx, const Key *issuer, uint8_t serial, int32_t now, int32_t days) {
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VERSION, 2));
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VALIDFROM, now));
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VALIDTO, daysAfter(now, days)));
    setCert(ctx, CERT_SERIALNUMBER, &serial, 1);
    setCert(ctx, CERT_INNER_SIGNATUREALGORITHM, sha1WithRsa, sizeof sha1WithRsa);
    setCert(ctx, CERT_OUTER_SIGNATUREALGORITHM, sha1WithRsa, sizeof sha1WithRsa);
    setCert(ctx, CERT_PUBLICKEY_ALGORITHM, rsaEncryption, sizeof rsaEncryption);
    setCert(ctx, CERTEX_AUTHORITYKEYIDENTIFIER, issuer->identifier, sizeof issuer->identifier);
    CHECK(KACert_SetCertSignFunc(ctx, signWithKey, &issuer->privateKey, sizeof issuer->privateKey));
}

static Octets encodeCert(CertEncodeCtx *ctx) {
    uint32_t length = 0;
    CHECK(KACert_EncodeCert(ctx, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCert(ctx, der.data, &length));
    CHECK(KACert_DestroyCertEncodeCtx(ctx));
    return der;
}

static Octets issueRoot(const Key *key, int32_t now) {
    static const uint8_t yes = 1;
    static const uint8_t signsCertsAndCrls = 0x06;
    CertEncodeCtx *ctx = NULL;
    CHECK(KACert_CreateCertEncodeCtx(&ctx));
    fillCommon(ctx, key, 1, now, 3650);
    setCert(ctx, CERT_ISSUER_COUNTRYNAME, "CN", 2);
    setCert(ctx, CERT_ISSUER_COMMONNAME, "Example Authority", 17);
    setCert(ctx, CERT_SUBJECT_COUNTRYNAME, "CN", 2);
    setCert(ctx, CERT_SUBJECT_COMMONNAME, "Example Authority", 17);
    setCert(ctx, CERT_SUBJECTPUBLICKEYINFO, key->der, key->derLength);
    setCert(ctx, CERTEX_SUBJECTKEYIDENTIFIER, key->identifier, sizeof key->identifier);
    setCert(ctx, CERTEX_AUTHORITY, &yes, 1);
    setCert(ctx, CERTEX_KEYUSAGE, &signsCertsAndCrls, 1);
    return encodeCert(ctx);
}

static void setRequest(CsrEncodeCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KACert_SetCsrAttributeChar(ctx, id, (const uint8_t *)value, (int32_t)length));
}

static Octets makeRequest(const Key *key) {
    static const uint8_t challengePassword[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x07};
    CsrEncodeCtx *ctx = NULL;
    uint32_t length = 0;
    CHECK(KACert_CreateCsrEncodeCtx(&ctx));
    setRequest(ctx, CSR_OUTER_SIGNATUREALGORITHM, sha1WithRsa, sizeof sha1WithRsa);
    setRequest(ctx, CSR_PUBLICKEY_ALGORITHM, rsaEncryption, sizeof rsaEncryption);
    setRequest(ctx, CSR_SUBJECTPUBLICKEYINFO, key->der, key->derLength);
    setRequest(ctx, CSR_SUBJECT_COUNTRYNAME, "CN", 2);
    setRequest(ctx, CSR_SUBJECT_ORGANIZATIONNAME, "\xCA\xBE\xC0\xFD", 4); /* "Example" in Chinese, code page 936 */
    setRequest(ctx, CSR_SUBJECT_COMMONNAME, "www.example.com", 15);
    CHECK(KACert_SetCsrAttributePrivate(ctx, challengePassword, (int32_t)sizeof challengePassword,
                                        (const uint8_t *)"open sesame", 11));
    CHECK(KACert_SetCsrSignFunc(ctx, signWithKey, &key->privateKey, sizeof key->privateKey));
    CHECK(KACert_EncodeCsr(ctx, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCsr(ctx, der.data, &length));
    CHECK(KACert_DestroyCsrEncodeCtx(ctx));
    return der;
}

/* Copies what the request says into the certificate. */
static void takeFromRequest(CertEncodeCtx *ctx, Octets request) {
    static const int32_t ids[][2] = {
        {CSR_SUBJECT_COUNTRYNAME, CERT_SUBJECT_COUNTRYNAME},
        {CSR_SUBJECT_ORGANIZATIONNAME, CERT_SUBJECT_ORGANIZATIONNAME},
        {CSR_SUBJECT_COMMONNAME, CERT_SUBJECT_COMMONNAME},
        {CSR_SUBJECTPUBLICKEYINFO, CERT_SUBJECTPUBLICKEYINFO},
    };
    CsrDecodeCtx *from = NULL;
    CHECK(KACert_CreateCsrDecodeCtx(&from));
    CHECK(KACert_DecodeCsr(from, request.data, request.length));
    for (size_t i = 0; i < sizeof ids / sizeof ids[0]; ++i) {
        uint8_t value[1024];
        uint32_t length = 0;
        CHECK(KACert_GetCsrAttributeChar(from, ids[i][0], NULL, &length));
        if (length == 0 || length > sizeof value)
            continue;
        CHECK(KACert_GetCsrAttributeChar(from, ids[i][0], value, &length));
        setCert(ctx, ids[i][1], value, length);
    }
    CHECK(KACert_DestroyCsrDecodeCtx(from));
}

static Octets issueLeaf(const Key *root, Octets rootDer, Octets request, int32_t now) {
    static const uint8_t signs = 0x80;
    CertEncodeCtx *ctx = NULL;
    CHECK(KACert_CreateCertEncodeCtx_Ex(&ctx, rootDer.data, (int32_t)rootDer.length));
    fillCommon(ctx, root, 7, now, 365);
    takeFromRequest(ctx, request);
    setCert(ctx, CERTEX_KEYUSAGE, &signs, 1);
    setCert(ctx, CERT_SUBJECT_ALT_DNSNAME, "www.example.com", 15);
    return encodeCert(ctx);
}

typedef struct Revocation {
    uint8_t serial;
    uint8_t reason; /* RFC 5280 5.3.1 */
} Revocation;

/* `earlier`: a CRL whose entries come first, or none. */
static Octets issueCrl(const Key *root, Octets rootDer, Octets earlier, uint8_t number, const Revocation *revocations,
                       size_t count, int32_t now) {
    CrlEncodeCtx *ctx = NULL;
    uint32_t length = 0;
    CHECK(KACert_CreateCrlEncodeCtx_Ex(&ctx, rootDer.data, (int32_t)rootDer.length));
    CHECK(KACert_SetCrlAttributeInt(ctx, CRL_VERSION, 1));
    CHECK(KACert_SetCrlAttributeInt(ctx, CRL_THISUPDATE, now));
    CHECK(KACert_SetCrlAttributeInt(ctx, CRL_NEXTUPDATE, daysAfter(now, 30)));
    CHECK(KACert_SetCrlAttributeChar(ctx, CRL_INNER_SIGNATUREALGORITHM, sha1WithRsa, sizeof sha1WithRsa));
    CHECK(KACert_SetCrlAttributeChar(ctx, CRL_OUTER_SIGNATUREALGORITHM, sha1WithRsa, sizeof sha1WithRsa));
    CHECK(KACert_SetCrlAttributeChar(ctx, CRLEX_CRLNUMBER, &number, 1));
    if (earlier.data != NULL)
        CHECK(setCRL2Context(ctx, earlier.data, (int32_t)earlier.length));
    for (size_t i = 0; i < count; ++i) {
        CHECK(KACert_SetCrlAttributeChar(ctx, CRL_CERT_SERIALNUMBER, &revocations[i].serial, 1));
        CHECK(KACert_SetCrlAttributeInt(ctx, CRL_CERT_REVOCATIONDATE, now));
        CHECK(KACert_SetCrlAttributeChar(ctx, CRLEX_CRLREASON, &revocations[i].reason, 1));
    }
    CHECK(KACert_SetCrlSignFunc(ctx, signWithKey, &root->privateKey, sizeof root->privateKey));
    CHECK(KACert_EncodeCrl(ctx, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCrl(ctx, der.data, &length));
    CHECK(KACert_DestroyCrlEncodeCtx(ctx));
    return der;
}

static void printCrl(const char *name, Octets der) {
    CrlDecodeCtx *ctx = NULL;
    CHECK(KACert_CreateCrlDecodeCtx(&ctx));
    CHECK(KACert_DecodeCrl(ctx, der.data, der.length));
    printf("%s revokes", name);
    for (;;) {
        uint8_t serial[32];
        uint8_t reason = 0;
        uint32_t length = 0;
        uint32_t reasonLength = 0;
        CHECK(KACert_GetCrlAttributeChar(ctx, CRL_CERT_SERIALNUMBER, NULL, &length));
        if (length == 0 || length > sizeof serial)
            break;
        CHECK(KACert_GetCrlAttributeChar(ctx, CRL_CERT_SERIALNUMBER, serial, &length));
        CHECK(KACert_GetCrlAttributeChar(ctx, CRLEX_CRLREASON, &reason, &reasonLength));
        printf(" %u (reason %u)", serial[length - 1], reason);
        CHECK(KACert_GetCrlAttributeChar(ctx, CRL_CERT_NEXT, NULL, NULL));
    }
    putchar('\n');
    CHECK(KACert_DestroyCrlDecodeCtx(ctx));
}

/* An object as DER and PEM, "NAME.der" and "NAME.pem". Returns the PEM text. */
static Octets writeBoth(const char *folder, const char *name, const char *label, Octets der) {
    char file[64];
    char header[64];
    char footer[64];
    snprintf(file, sizeof file, "%s.der", name);
    writeFile(folder, file, der);
    snprintf(header, sizeof header, "-----BEGIN %s-----", label);
    snprintf(footer, sizeof footer, "-----END %s-----", label);
    Octets pem = makeOctets(der.length * 2 + 256);
    CHECK(DER2PEM_data_format(der.data, der.length, pem.data, &pem.length, header, footer));
    snprintf(file, sizeof file, "%s.pem", name);
    writeFile(folder, file, pem);
    return pem;
}

static void report(const char *what, int32_t got, int32_t want) {
    printf("  %s: status %d\n", what, (int)got);
    if (got != want) {
        fprintf(stderr, "status %d was expected\n", (int)want);
        exit(1);
    }
}

/* A copy whose last octet, the end of the signature, is changed. */
static Octets tampered(Octets der) {
    const Octets copy = makeOctets(der.length);
    memcpy(copy.data, der.data, der.length);
    copy.data[der.length - 1] ^= 1;
    return copy;
}

static int32_t verifyRequest(Octets issuer, Octets request) {
    (void)issuer;
    return KA_VerifyCsr_Sign(request.data, (int32_t)request.length);
}
static int32_t verifyCertificate(Octets issuer, Octets subject) {
    return KA_VerifyCert(issuer.data, issuer.length, subject.data, subject.length);
}
static int32_t verifyCrl(Octets issuer, Octets crl) {
    return KA_VerifyCrl(issuer.data, issuer.length, crl.data, crl.length);
}

/* The object is good; a changed copy is not. */
static void verify(const char *what, int32_t (*judge)(Octets, Octets), Octets issuer, Octets der) {
    const Octets changed = tampered(der);
    printf("%s\n", what);
    report("as it is", judge(issuer, der), KACERT_Ok);
    report("changed", judge(issuer, changed), KACERT_VerifySignatureErr);
    free(changed.data);
}

int main(int argc, char **argv) {
    static const Revocation first[] = {{3, 1}, {4, 4}, {5, 5}};
    static const Revocation second[] = {{7, 1}};
    static const Octets none = {NULL, 0};
    static Key root;
    static Key user;
    const int32_t now = (int32_t)time(NULL);
    if (argc != 2) {
        fprintf(stderr, "usage: %s OUTPUT_FOLDER\n", argv[0]);
        return 2;
    }
    makeKey(&root);
    makeKey(&user);
    const Octets rootDer = issueRoot(&root, now);
    const Octets request = makeRequest(&user);
    const Octets leaf = issueLeaf(&root, rootDer, request, now);
    const Octets crl = issueCrl(&root, rootDer, none, 1, first, 3, now);
    const Octets nextCrl = issueCrl(&root, rootDer, crl, 2, second, 1, now);
    const Octets objects[] = {rootDer, request, leaf, crl, nextCrl};
    const char *const names[][2] = {{"authority", "CERTIFICATE"},
                                    {"request", "CERTIFICATE REQUEST"},
                                    {"issued", "CERTIFICATE"},
                                    {"crl1", "X509 CRL"},
                                    {"crl2", "X509 CRL"}};
    Octets pems[5];
    for (int i = 0; i < 5; ++i)
        pems[i] = writeBoth(argv[1], names[i][0], names[i][1], objects[i]);
    writeKey(argv[1], "authority.key", &root);
    writeKey(argv[1], "issued.key", &user);
    printCrl("crl1", crl);
    printCrl("crl2", nextCrl);

    verify("the root, by itself", verifyCertificate, rootDer, rootDer);
    verify("the request, by its own key", verifyRequest, none, request);
    report("as PEM", verifyRequest(none, pems[1]), KACERT_Ok);
    verify("the certificate issued from it", verifyCertificate, rootDer, leaf);
    verify("the first CRL", verifyCrl, rootDer, crl);
    verify("the second CRL", verifyCrl, rootDer, nextCrl);
    puts("a certificate under the wrong issuer");
    report("as it is", verifyCertificate(leaf, leaf), KACERT_DnNotEqualErr);
    for (int i = 0; i < 5; ++i) {
        free(objects[i].data);
        free(pems[i].data);
    }
    return 0;
}
