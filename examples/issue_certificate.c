/*
 * Issues a self-signed root and a leaf under it, writes both as DER, decodes them again and prints what they say;
 * then decodes every certificate of a folder and counts the outcomes.
 *
 *     issue_certificate OUTPUT_FOLDER [FOLDER_OF_DER_CERTIFICATES]
 */
#include "example.h"

#include <dirent.h>
#include <time.h>

static const uint8_t anyPolicy[] = {0x55, 0x1D, 0x20, 0x00};
static const char privateOid[] = "2.999.1"; /* an arc that is set aside for examples */

static void setBytes(CertEncodeCtx *ctx, int32_t id, const uint8_t *value, uint32_t length) {
    CHECK(KACert_SetCertAttributeChar(ctx, id, value, (int32_t)length));
}

static void setText(CertEncodeCtx *ctx, int32_t id, const char *text) {
    setBytes(ctx, id, (const uint8_t *)text, (uint32_t)strlen(text));
}

static void setOctet(CertEncodeCtx *ctx, int32_t id, uint8_t octet) {
    setBytes(ctx, id, &octet, 1);
}

/* What both certificates have. Times on the wire are local time: run with TZ=UTC for others to agree. */
static CertEncodeCtx *startCertificate(const Key *key, const Key *issuer, uint8_t serial, int years) {
    CertEncodeCtx *ctx = NULL;
    const int64_t now = (int64_t)time(NULL);
    const int64_t end = now + (int64_t)years * 365 * 86400;
    CHECK(KACert_CreateCertEncodeCtx(&ctx));
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VERSION, 2));
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VALIDFROM, (int32_t)now));
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VALIDTO, end > INT32_MAX ? INT32_MAX : (int32_t)end));
    setOctet(ctx, CERT_SERIALNUMBER, serial);
    setBytes(ctx, CERT_INNER_SIGNATUREALGORITHM, sha1WithRsa, sizeof sha1WithRsa);
    setBytes(ctx, CERT_OUTER_SIGNATUREALGORITHM, sha1WithRsa, sizeof sha1WithRsa);
    setBytes(ctx, CERT_PUBLICKEY_ALGORITHM, rsaEncryption, sizeof rsaEncryption);
    setBytes(ctx, CERT_SUBJECTPUBLICKEYINFO, key->der, key->derLength);
    setText(ctx, CERT_ISSUER_COUNTRYNAME, "CN");
    setText(ctx, CERT_ISSUER_COMMONNAME, "Example Root");
    setBytes(ctx, CERTEX_SUBJECTKEYIDENTIFIER, key->identifier, sizeof key->identifier);
    setBytes(ctx, CERTEX_AUTHORITYKEYIDENTIFIER, issuer->identifier, sizeof issuer->identifier);
    CHECK(KACert_SetCertSignFunc(ctx, signWithKey, &issuer->privateKey, sizeof issuer->privateKey));
    return ctx;
}

static CertEncodeCtx *fillRoot(const Key *root) {
    CertEncodeCtx *ctx = startCertificate(root, root, 1, 10);
    setText(ctx, CERT_SUBJECT_COUNTRYNAME, "CN");
    setText(ctx, CERT_SUBJECT_COMMONNAME, "Example Root");
    setOctet(ctx, CERTEX_AUTHORITY, 1);
    setOctet(ctx, CERTEX_PATHLENCONSTRAINT, 1);
    setOctet(ctx, CERTEX_KEYUSAGE, 0x06); /* keyCertSign, cRLSign */
    return ctx;
}

static CertEncodeCtx *fillLeaf(const Key *leaf, const Key *root) {
    static const uint8_t address[] = {192, 0, 2, 1};
    static const uint8_t serverAndClient[] = {0xC0, 0, 0, 0};
    static const char privateText[] = "a value of our own";
    uint8_t oid[16];
    uint32_t oidLength = 0;
    CertEncodeCtx *ctx = startCertificate(leaf, root, 2, 1);
    setText(ctx, CERT_SUBJECT_COUNTRYNAME, "CN");
    setText(ctx, CERT_SUBJECT_LOCALITYNAME, "Beijing");
    /* "Example Company" in Chinese, in code page 936. */
    setText(ctx, CERT_SUBJECT_ORGANIZATIONNAME, "\xCA\xBE\xC0\xFD\xB9\xAB\xCB\xBE");
    setText(ctx, CERT_SUBJECT_ORGANIZATIONALUNITNAME, "Research");
    setText(ctx, CERT_SUBJECT_ORGANIZATIONALUNITNAME, "Web");
    setText(ctx, CERT_SUBJECT_COMMONNAME, "www.example.com");
    setText(ctx, CERT_SUBJECT_EMAIL, "web@example.com");
    setOctet(ctx, CERTEX_AUTHORITY, 0);
    setOctet(ctx, CERTEX_KEYUSAGE, 0xA0); /* digitalSignature, keyEncipherment */
    setBytes(ctx, CERTEX_EXTKEY_USAGE, serverAndClient, sizeof serverAndClient);
    setBytes(ctx, CERTEX_CERTPOLICYID, anyPolicy, sizeof anyPolicy);
    setText(ctx, CERTEX_CERTPOLICY_CPS, "http://www.example.com/cps");
    setText(ctx, CERT_SUBJECT_ALT_DNSNAME, "www.example.com");
    setText(ctx, CERT_SUBJECT_ALT_RFC822NAME, "web@example.com");
    setText(ctx, CERT_SUBJECT_ALT_URI, "http://www.example.com/");
    setBytes(ctx, CERT_SUBJECT_ALT_IPADDRESS, address, sizeof address);
    setText(ctx, CERTEX_CRLDIST_FULLNAME, "http://crl.example.com/root.crl");
    setText(ctx, CERTEX_AUTHORITYINFO_OCSP, "http://ocsp.example.com/");
    setText(ctx, CERTEX_AUTHORITYINFO_CAISSUERS, "http://www.example.com/root.der");
    CHECK(KACert_GetOIDValue(privateOid, (int32_t)strlen(privateOid), oid, &oidLength));
    CHECK(KACert_SetCertAttributePrivate_ForValue(ctx, oid, (int32_t)oidLength, 0, (const uint8_t *)privateText,
                                                  (int32_t)strlen(privateText), 19)); /* 19: PrintableString */
    return ctx;
}

/* Encodes the certificate into a file of the folder; the caller frees the octets. */
static Octets writeCertificate(CertEncodeCtx *ctx, const char *folder, const char *name) {
    uint32_t length = 0;
    CHECK(KACert_EncodeCert(ctx, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCert(ctx, der.data, &length));
    CHECK(KACert_DestroyCertEncodeCtx(ctx));
    writeFile(folder, name, der);
    return der;
}

typedef struct Line {
    int32_t id;
    int isText;
    const char *label;
} Line;

/* Local text as UTF-8. */
static void printText(const uint8_t *text, uint32_t length) {
    uint8_t utf8[1024];
    uint32_t size = 0;
    CHECK(KI_Chinese2UTF8String(text, (int32_t)length, utf8, &size));
    printf("%.*s\n", (int)size, (const char *)utf8);
}

static void printOctets(const uint8_t *octets, uint32_t length) {
    for (uint32_t i = 0; i < length && i < 24; ++i)
        printf("%02X", octets[i]);
    if (length > 24)
        printf("... (%u octets)", (unsigned)length);
    putchar('\n');
}

static void printPrivateExtensions(CertDecodeCtx *ctx) {
    uint32_t count = 0;
    CHECK(KACert_GetCertAttributePrivate(ctx, &count, NULL, NULL, NULL, NULL, NULL));
    for (uint32_t i = 1; i <= count; ++i) {
        uint8_t oid[64];
        uint32_t index = i;
        uint32_t oidLength = 0;
        uint32_t critical = 0;
        uint32_t length = 0;
        CHECK(KACert_GetCertAttributePrivate(ctx, &index, oid, &oidLength, &critical, NULL, &length));
        printf("  other extension, %u octets: ", (unsigned)length);
        printOctets(oid, oidLength);
    }
}

static void printCertificate(const char *title, Octets der) {
    static const Line lines[] = {
        {CERT_SERIALNUMBER, 0, "serial number"},
        {CERT_ISSUER_DN, 1, "issuer"},
        {CERT_SUBJECT_DN, 1, "subject"},
        {CERT_INNER_SIGNATUREALGORITHM, 0, "signature algorithm"},
        {CERT_SUBJECTPUBLICKEYINFO, 0, "public key"},
        {CERTEX_AUTHORITYKEYIDENTIFIER, 0, "authority key id"},
        {CERTEX_SUBJECTKEYIDENTIFIER, 0, "subject key id"},
        {CERTEX_AUTHORITY, 0, "CA"},
        {CERTEX_PATHLENCONSTRAINT, 0, "path length"},
        {CERTEX_KEYUSAGE, 0, "key usage"},
        {CERTEX_EXTKEY_USAGE, 0, "extended key usage"},
        {CERT_SUBJECT_ALT_DNSNAME, 1, "DNS name"},
        {CERT_SUBJECT_ALT_RFC822NAME, 1, "mail address"},
        {CERT_SUBJECT_ALT_URI, 1, "URI"},
        {CERT_SUBJECT_ALT_IPADDRESS, 0, "address"},
        {CERTEX_CRLDIST_FULLNAME, 0, "distribution point"},
    };
    CertDecodeCtx *ctx = NULL;
    int32_t from = 0;
    int32_t to = 0;
    CHECK(KACert_CreateCertDecodeCtx(&ctx));
    CHECK(KACert_DecodeCert(ctx, der.data, der.length));
    CHECK(KACert_GetCertAttributeInt(ctx, CERT_VALIDFROM, &from));
    CHECK(KACert_GetCertAttributeInt(ctx, CERT_VALIDTO, &to));
    printf("\n%s, valid for %d days\n", title, (int)((to - from) / 86400));
    for (size_t i = 0; i < sizeof lines / sizeof lines[0]; ++i) {
        uint8_t value[1024];
        uint32_t size = 0;
        CHECK(KACert_GetCertAttributeChar(ctx, lines[i].id, NULL, &size));
        if (size == 0 || size > sizeof value)
            continue;
        CHECK(KACert_GetCertAttributeChar(ctx, lines[i].id, value, &size));
        printf("  %s: ", lines[i].label);
        if (lines[i].isText)
            printText(value, size);
        else
            printOctets(value, size);
    }
    printPrivateExtensions(ctx);
    CHECK(KACert_DestroyCertDecodeCtx(ctx));
}

static int32_t decodeFile(const char *path) {
    static uint8_t der[1 << 16];
    CertDecodeCtx *ctx = NULL;
    FILE *file = fopen(path, "rb");
    if (file == NULL) {
        perror(path);
        exit(1);
    }
    const size_t length = fread(der, 1, sizeof der, file);
    fclose(file);
    CHECK(KACert_CreateCertDecodeCtx(&ctx));
    const int32_t status = KACert_DecodeCert(ctx, der, (uint32_t)length);
    CHECK(KACert_DestroyCertDecodeCtx(ctx));
    return status;
}

/* What these statuses mean for a certificate that is sound otherwise. */
static const char *reasonOf(int status) {
    switch (status) {
    case KACERT_Ok:
        return "decoded";
    case KACERT_MemoryErr:
        return "a date past 2038 does not fit 32 bits";
    case KACERT_InvalidTagErr:
        return "a date that has four digits for the year is not read";
    default:
        return "not decoded";
    }
}

/* Decodes every file of the folder and prints one line for each outcome. */
static void surveyFolder(const char *folder) {
    int counts[256] = {0};
    int all = 0;
    DIR *entries = opendir(folder);
    if (entries == NULL) {
        perror(folder);
        exit(1);
    }
    for (struct dirent *entry = readdir(entries); entry != NULL; entry = readdir(entries)) {
        char path[4096];
        const char *end = strrchr(entry->d_name, '.');
        if (end == NULL || strcmp(end, ".der") != 0)
            continue;
        snprintf(path, sizeof path, "%s/%s", folder, entry->d_name);
        ++counts[(uint8_t)decodeFile(path)];
        ++all;
    }
    closedir(entries);
    printf("\n%d certificates in %s\n", all, folder);
    for (int status = 0; status < 256; ++status) {
        if (counts[status] == 0)
            continue;
        printf("  %4d  status %3d  %s\n", counts[status], status, reasonOf(status));
    }
}

int main(int argc, char **argv) {
    static Key root;
    static Key leaf;
    if (argc < 2) {
        fprintf(stderr, "usage: %s OUTPUT_FOLDER [FOLDER_OF_DER_CERTIFICATES]\n", argv[0]);
        return 2;
    }
    makeKey(&root);
    makeKey(&leaf);
    const Octets rootDer = writeCertificate(fillRoot(&root), argv[1], "root.der");
    const Octets leafDer = writeCertificate(fillLeaf(&leaf, &root), argv[1], "leaf.der");
    printCertificate("Root", rootDer);
    printCertificate("Leaf", leafDer);
    free(rootDer.data);
    free(leafDer.data);
    if (argc > 2)
        surveyFolder(argv[2]);
    return 0;
}
