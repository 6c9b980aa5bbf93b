/*
 * An OCSP client asks about a certificate of the root: REQUEST is for the responder.
 *
 *     ask CERTIFICATE REQUEST
 */
#include "../example.h"

static CertDecodeCtx *decode(const char *path) {
    const Octets der = readDer(path);
    CertDecodeCtx *cert = NULL;
    CHECK(KACert_CreateCertDecodeCtx(&cert));
    CHECK(KACert_DecodeCert(cert, der.data, der.length));
    free(der.data);
    return cert;
}

int main(int argc, char **argv) {
    static const int32_t sha1 = KA_DIGEST_SHA1;
    if (argc != 3) {
        fprintf(stderr, "usage: %s CERTIFICATE REQUEST\n", argv[0]);
        return 2;
    }
    CertDecodeCtx *root = decode("root.der");
    CertDecodeCtx *cert = decode(argv[1]);

    /* A certificate is named by digests of its issuer's name and key, which the hook makes, and by its serial number.
     */
    const Attribute values[] = {
        {OCSP_REQUESTLIST_HASHALGO, KARIL_OID_SHA1, sizeof KARIL_OID_SHA1},
        {OCSP_REQUESTLIST_ISSUERNAME, root->subjectDer.data, root->subjectDer.length},
        {OCSP_REQUESTLIST_ISSUERKEY, root->publicKey.data, root->publicKey.length},
        {OCSP_REQUESTLIST_SERIALNUMBER, cert->serialNumber.data, cert->serialNumber.length},
    };
    RequestListCtx *single = NULL;
    Octets der = makeOctets(4096); /* OCSP objects cannot be asked for their length */
    CHECK(KA_OCSP_CreateEncodeRequestList(&single));
    for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i)
        CHECK(KA_OCSP_SetRequestListAttributeChar(single, values[i].id, values[i].octets, (int32_t)values[i].length));
    CHECK(KA_OCSP_SetRequestListHashFunc(single, KA_DigestFunc_Ref, (const uint8_t *)&sha1, sizeof sha1));
    CHECK(KA_OCSP_EncodeRequestList(single, der.data, &der.length));
    CHECK(KA_OCSP_DestroyEncodeRequestList(single));

    /* A request has any number of single ones. It may be signed as well. */
    RequestCtx *request = NULL;
    CHECK(KA_OCSP_CreateEncodeRequest(&request));
    CHECK(KA_OCSP_SetRequestAttributeInt(request, OCSP_REQUEST_VERSION, 0));
    CHECK(KA_OCSP_SetRequestSingleRequest(request, der.data, (int32_t)der.length));
    CHECK(KA_OCSP_EncodeRequest(request, der.data, &der.length));
    CHECK(KA_OCSP_DestoryEncodeRequest(request));

    writeFile(".", argv[2], der);
    free(der.data);
    CHECK(KACert_DestroyCertDecodeCtx(cert));
    CHECK(KACert_DestroyCertDecodeCtx(root));
    return 0;
}
