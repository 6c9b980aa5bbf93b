/*
 * Prints what a certificate says. It comes from others, so that any call may fail, and every failure is an answer.
 *
 *     read CERTIFICATE        DER or PEM; run it with TZ=UTC
 */
#include "../example.h"

#include <time.h>

/* Texts are octets of code page 936, without a terminator. A length of 0 says that the certificate has no such text. */
static int32_t printText(CertDecodeCtx *cert, int32_t id, const char *label) {
    uint8_t text[1024];
    uint8_t utf8[1024];
    uint32_t length = 0;
    uint32_t utf8Length = 0;
    int32_t status = KACert_GetCertAttributeChar(cert, id, NULL, &length); /* asks for the length */
    if (status != KACERT_Ok || length == 0)
        return status;
    if (length > sizeof text)
        return KACERT_InvalidLengthErr;
    status = KACert_GetCertAttributeChar(cert, id, text, &length);
    if (status == KACERT_Ok)
        status = KI_Chinese2UTF8String(text, (int32_t)length, utf8, &utf8Length);
    if (status == KACERT_Ok)
        printf("%s: %.*s\n", label, (int)utf8Length, (const char *)utf8);
    return status;
}

static int32_t printDate(const CertDecodeCtx *cert, int32_t id, const char *label) {
    int32_t seconds = 0;
    char text[32];
    const int32_t status = KACert_GetCertAttributeInt(cert, id, &seconds);
    if (status != KACERT_Ok)
        return status;
    const time_t date = seconds;
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", gmtime(&date));
    printf("%s: %s\n", label, text);
    return KACERT_Ok;
}

static int32_t print(CertDecodeCtx *cert) {
    int32_t status = printText(cert, CERT_SUBJECT_DN, "subject");
    if (status == KACERT_Ok)
        status = printText(cert, CERT_ISSUER_DN, "issuer");
    if (status == KACERT_Ok)
        status = printText(cert, CERT_SUBJECT_ALT_DNSNAME, "DNS name");
    if (status == KACERT_Ok)
        status = printDate(cert, CERT_VALIDFROM, "valid from");
    if (status == KACERT_Ok)
        status = printDate(cert, CERT_VALIDTO, "valid to");
    /* What a context holds may be read from its record as well. */
    printf("serial number: ");
    for (uint32_t i = 0; i < cert->serialNumber.length; ++i)
        printf("%02X", cert->serialNumber.data[i]);
    putchar('\n');
    return status;
}

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s CERTIFICATE\n", argv[0]);
        return 2;
    }
    const Octets der = readDer(argv[1]);
    CertDecodeCtx *cert = NULL;
    int32_t status = KACert_CreateCertDecodeCtx(&cert);
    if (status == KACERT_Ok)
        status = KACert_DecodeCert(cert, der.data, der.length);
    free(der.data); /* the context has a copy */
    if (status == KACERT_Ok)
        status = print(cert);
    KACert_DestroyCertDecodeCtx(cert); /* takes null as well */
    return outcome(argv[1], status);
}
