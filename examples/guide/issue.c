/*
 * Makes a key and a certificate that is signed with it: the root of an authority, in root.key and root.der.
 *
 *     issue        in the folder for the files; run it with TZ=UTC
 */
#include "../example.h"

#include <time.h>

int main(void) {
    static const uint8_t serial = 1;
    static const uint8_t yes = 1;
    static const uint8_t signsCertsAndCrls = 0x06; /* the bits of RFC 5280 4.2.1.3, first bit on top */
    static const char name[] = "Example Authority";
    static Key key;
    const int32_t now = (int32_t)time(NULL);
    makeKey(&key);

    const Attribute values[] = {
        {CERT_SERIALNUMBER, &serial, 1},
        {CERT_INNER_SIGNATUREALGORITHM, KARIL_OID_SHA1_WITH_RSA, sizeof KARIL_OID_SHA1_WITH_RSA},
        {CERT_OUTER_SIGNATUREALGORITHM, KARIL_OID_SHA1_WITH_RSA, sizeof KARIL_OID_SHA1_WITH_RSA},
        {CERT_PUBLICKEY_ALGORITHM, KARIL_OID_RSA_ENCRYPTION, sizeof KARIL_OID_RSA_ENCRYPTION},
        {CERT_SUBJECTPUBLICKEYINFO, key.der, key.derLength},
        /* A name has its attributes in the order of the calls. Texts have no terminator. */
        {CERT_ISSUER_COUNTRYNAME, "CN", 2},
        {CERT_ISSUER_COMMONNAME, name, strlen(name)},
        {CERT_SUBJECT_COUNTRYNAME, "CN", 2},
        {CERT_SUBJECT_COMMONNAME, name, strlen(name)},
        /* Extensions. */
        {CERTEX_SUBJECTKEYIDENTIFIER, key.identifier, sizeof key.identifier},
        {CERTEX_AUTHORITY, &yes, 1},
        {CERTEX_KEYUSAGE, &signsCertsAndCrls, 1},
    };
    CertEncodeCtx *cert = NULL;
    CHECK(KACert_CreateCertEncodeCtx(&cert));
    CHECK(KACert_SetCertAttributeInt(cert, CERT_VERSION, 2)); /* v3 */
    CHECK(KACert_SetCertAttributeInt(cert, CERT_VALIDFROM, now));
    CHECK(KACert_SetCertAttributeInt(cert, CERT_VALIDTO, daysAfter(now, 3650)));
    for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i)
        CHECK(KACert_SetCertAttributeChar(cert, values[i].id, values[i].octets, (int32_t)values[i].length));
    CHECK(KACert_SetCertSignFunc(cert, signWithKey, &key.privateKey, sizeof key.privateKey));

    uint32_t length = 0;
    CHECK(KACert_EncodeCert(cert, NULL, &length)); /* signs, keeps the result and tells its length */
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCert(cert, der.data, &length)); /* copies it */
    CHECK(KACert_DestroyCertEncodeCtx(cert));

    writeFile(".", "root.der", der);
    writeKey(".", "root.key", &key);
    free(der.data);
    return 0;
}
