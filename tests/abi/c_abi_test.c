/* The library from C: every public header, and a certificate built, decoded and asked through the C interface. */
#include <karil/karil.h>

#include <stddef.h>
#include <stdio.h>
#include <string.h>

/* Flat records have no padding on any ABI; the others have it only where pointers ask for it. */
_Static_assert(offsetof(RsaPublicKeyRecord, exponent) == 260, "public exponent");
_Static_assert(offsetof(RsaPrivateKeyRecord, prime1) == 772, "first prime");
_Static_assert(offsetof(RsaPrivateKeyRecord, coefficient) == 1284, "coefficient");
_Static_assert(offsetof(Anybuf, length) == sizeof(void *), "length behind data");
_Static_assert(offsetof(Anybuf, next) == sizeof(void *) + 16, "next behind tag");
_Static_assert(offsetof(NameRecord, oid) == offsetof(AlgorithmRecord, oid), "a name record starts like an algorithm");
_Static_assert(offsetof(GeneralNameRecord, otherNameType) == 16, "first slot of a general name");
_Static_assert(offsetof(CertEncodeCtx, hasExtensions) == 1, "flags first");

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
    return failures == 0 ? 0 : 1;
}
