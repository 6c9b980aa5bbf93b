/* The library from C: every public header, and a certificate built, decoded and asked through the C interface. */
#include <karil/karil.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(int holds, const char *what) {
    if (!holds) {
        fprintf(stderr, "failed: %s\n", what);
        ++failures;
    }
}

static int32_t sign(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                    void *parameter) {
    (void)input;
    (void)inputLength;
    if (output != NULL)
        memcpy(output, parameter, 4);
    *outputLength = 4;
    return 0;
}

int main(void) {
    static const uint8_t octets[] = {0x2A, 0x03, 0x04, 0x05};
    uint8_t der[1024];
    uint32_t length = 0;
    CertEncodeCtx *ctx = NULL;
    expect(KACert_CreateCertEncodeCtx(&ctx) == KACERT_Ok, "create");
    static const int32_t ids[] = {
        CERT_SERIALNUMBER,        CERT_INNER_SIGNATUREALGORITHM, CERT_OUTER_SIGNATUREALGORITHM,
        CERT_PUBLICKEY_ALGORITHM, CERT_SUBJECTPUBLICKEYINFO,     CERT_ISSUER_COMMONNAME,
        CERT_SUBJECT_COMMONNAME};
    for (size_t i = 0; i < sizeof ids / sizeof ids[0]; ++i)
        expect(KACert_SetCertAttributeChar(ctx, ids[i], octets, 4) == KACERT_Ok, "set");
    expect(KACert_SetCertSignFunc(ctx, sign, octets, sizeof octets) == KACERT_Ok, "hook");
    expect(KACert_EncodeCert(ctx, NULL, &length) == KACERT_Ok && length < sizeof der, "encode");
    expect(KACert_EncodeCert(ctx, der, &length) == KACERT_Ok, "encoded octets");
    expect(KACert_DestroyCertEncodeCtx(ctx) == KACERT_Ok, "destroy");

    CertDecodeCtx *decoded = NULL;
    uint8_t signature[8];
    uint32_t signatureLength = 0;
    expect(KACert_CreateCertDecodeCtx(&decoded) == KACERT_Ok, "create to decode");
    expect(KACert_DecodeCert(decoded, der, length) == KACERT_Ok, "decode");
    expect(KACert_GetCertAttributeChar(decoded, CERT_CA_SIGNATURE, signature, &signatureLength) == KACERT_Ok, "ask");
    expect(signatureLength == 4 && memcmp(signature, octets, 4) == 0, "the signature comes back");
    expect(KACert_DestroyCertDecodeCtx(decoded) == KACERT_Ok, "destroy decoded");

    /* FIPS 180-4: SHA-1 of "abc". */
    static const uint8_t abc[] = {0xA9, 0x99, 0x3E, 0x36, 0x47, 0x06, 0x81, 0x6A, 0xBA, 0x3E,
                                  0x25, 0x71, 0x78, 0x50, 0xC2, 0x6C, 0x9C, 0xD0, 0xD8, 0x9D};
    uint8_t digest[20];
    uint32_t digestLength = 0;
    expect(KA_PKCS7_DigestMessage(KA_DIGEST_SHA1, (const uint8_t *)"abc", 3, digest, &digestLength) == KACERT_Ok,
           "digest");
    expect(digestLength == sizeof abc && memcmp(digest, abc, sizeof abc) == 0, "SHA-1");
    return failures == 0 ? 0 : 1;
}
