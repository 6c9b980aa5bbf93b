/*
 * Makes a key and a request for a certificate: NAME.key and NAME.csr.
 *
 *     request NAME COMMON_NAME        the common name in UTF-8
 */
#include "../example.h"

int main(int argc, char **argv) {
    static Key key;
    uint8_t commonName[1024];
    uint32_t nameLength = 0;
    char file[256];
    if (argc != 3) {
        fprintf(stderr, "usage: %s NAME COMMON_NAME\n", argv[0]);
        return 2;
    }
    /* karil takes code page 936. A status of 0 without a length says that there was no text, or one that is too long.
     */
    CHECK(KI_UTF8String2Chinese((const uint8_t *)argv[2], (int32_t)strlen(argv[2]), commonName, &nameLength));
    if (nameLength == 0)
        return outcome(argv[2], KACERT_InvalidLengthErr);
    makeKey(&key);

    const Attribute values[] = {
        {CSR_OUTER_SIGNATUREALGORITHM, KARIL_OID_SHA1_WITH_RSA, sizeof KARIL_OID_SHA1_WITH_RSA},
        {CSR_PUBLICKEY_ALGORITHM, KARIL_OID_RSA_ENCRYPTION, sizeof KARIL_OID_RSA_ENCRYPTION},
        {CSR_SUBJECTPUBLICKEYINFO, key.der, key.derLength},
        {CSR_SUBJECT_COUNTRYNAME, "CN", 2},
        {CSR_SUBJECT_COMMONNAME, commonName, nameLength},
    };
    CsrEncodeCtx *csr = NULL;
    uint32_t length = 0;
    CHECK(KACert_CreateCsrEncodeCtx(&csr));
    for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i)
        CHECK(KACert_SetCsrAttributeChar(csr, values[i].id, values[i].octets, (int32_t)values[i].length));
    CHECK(KACert_SetCsrSignFunc(csr, signWithKey, &key.privateKey, sizeof key.privateKey));
    CHECK(KACert_EncodeCsr(csr, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCsr(csr, der.data, &length));
    CHECK(KACert_DestroyCsrEncodeCtx(csr));

    snprintf(file, sizeof file, "%s.csr", argv[1]);
    writeFile(".", file, der);
    snprintf(file, sizeof file, "%s.key", argv[1]);
    writeKey(".", file, &key);
    free(der.data);
    return 0;
}
