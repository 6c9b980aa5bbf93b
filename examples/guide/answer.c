/*
 * An OCSP responder answers the first question of a request by a CRL, and signs with root.key.
 *
 *     answer REQUEST CRL RESPONSE        run it with TZ=UTC
 */
#include "../example.h"

#include <time.h>

static const RevokedEntry *findEntry(const CrlDecodeCtx *crl, const Anybuf *serial) {
    const RevokedEntry *entry = crl->firstRevoked;
    while (entry != NULL && (entry->serialNumber.length != serial->length ||
                             memcmp(entry->serialNumber.data, serial->data, serial->length) != 0))
        entry = entry->next;
    return entry;
}

/* The certificate's identity goes back as it came. */
static void writeSingle(const RequestListCtx *asked, const RevokedEntry *entry, int32_t now, Octets *der) {
    ResponseListCtx *single = NULL;
    CHECK(KA_OCSP_CreateEncodeResponseList(&single));
    CHECK(KA_OCSP_SetResponseListAttributeChar(single, OCSP_RESPONDERLIST_CERTID, asked->certId.whole.data,
                                               (int32_t)asked->certId.whole.length));
    CHECK(KA_OCSP_SetResponseListAttributeInt(single, OCSP_RESPONDERLIST_THISUPDATE, now));
    if (entry == NULL)
        CHECK(KA_OCSP_SetResponseList_CertStatusGood(single));
    else
        CHECK(KA_OCSP_SetResponseList_CertStatusRevoke(single, entry->revocationDate.utcValue, 0, entry->reason.data,
                                                       (int32_t)entry->reason.length));
    CHECK(KA_OCSP_EncodeResponseList(single, der->data, &der->length));
    CHECK(KA_OCSP_DestroyEncodeResponseList(single));
}

static void writeResponse(const Key *key, int32_t now, Octets *der) {
    static const uint8_t successful = 0;
    const Attribute values[] = {
        {OCSP_RESPONSE_STATUS, &successful, 1},
        {OCSP_RESPONSETYPE, KARIL_OID_OCSP_BASIC, sizeof KARIL_OID_OCSP_BASIC},
        {OCSP_RESPONSE_RESPONDERID_HASHKEY, key->identifier, sizeof key->identifier},
        {OCSP_RESPONSE_SIGNALGO, KARIL_OID_SHA1_WITH_RSA, sizeof KARIL_OID_SHA1_WITH_RSA},
    };
    ResponseCtx *response = NULL;
    CHECK(KA_OCSP_CreateEncodeResponse(&response));
    CHECK(KA_OCSP_SetResponseAttributeInt(response, OCSP_RESPONSE_VERSION, 0));
    CHECK(KA_OCSP_SetResponseAttributeInt(response, OCSP_RESPONSE_PRODUCEDAT, now));
    for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i)
        CHECK(KA_OCSP_SetResponseAttributeChar(response, values[i].id, values[i].octets, (int32_t)values[i].length));
    CHECK(KA_OCSP_SetResponseSingleResponse(response, der->data, (int32_t)der->length));
    CHECK(
        KA_OCSP_SetResponseSignFunc(response, signWithKey, (const uint8_t *)&key->privateKey, sizeof key->privateKey));
    CHECK(KA_OCSP_EncodeResponse(response, der->data, &der->length));
    CHECK(KA_OCSP_DestoryEncodeResponse(response));
}

int main(int argc, char **argv) {
    static Key key;
    const int32_t now = (int32_t)time(NULL);
    if (argc != 4) {
        fprintf(stderr, "usage: %s REQUEST CRL RESPONSE\n", argv[0]);
        return 2;
    }
    readKey("root.key", &key);
    const Octets requestDer = readDer(argv[1]);
    const Octets crlDer = readDer(argv[2]);
    Octets der = makeOctets(requestDer.length + 4096);
    RequestCtx *request = NULL;
    RequestListCtx *asked = NULL;
    CrlDecodeCtx *crl = NULL;
    CHECK(KA_OCSP_CreateDecodeRequest(&request));
    CHECK(KA_OCSP_DecodeRequest(request, requestDer.data, requestDer.length));
    der.length = 0; /* it stays as it is if there is no first question */
    CHECK(KA_OCSP_GetRequestSingleRequest(request, der.data, &der.length, 1));
    CHECK(KA_OCSP_CreateDecodeRequestList(&asked));
    CHECK(KA_OCSP_DecodeRequestList(asked, der.data, der.length));
    CHECK(KACert_CreateCrlDecodeCtx(&crl));
    CHECK(KACert_DecodeCrl(crl, crlDer.data, crlDer.length));

    writeSingle(asked, findEntry(crl, &asked->certId.serialNumber), now, &der);
    writeResponse(&key, now, &der);
    writeFile(".", argv[3], der);
    CHECK(KACert_DestroyCrlDecodeCtx(crl));
    CHECK(KA_OCSP_DestroyDecodeRequestList(asked));
    CHECK(KA_OCSP_DestoryDecodeRequest(request));
    free(der.data);
    free(crlDer.data);
    free(requestDer.data);
    return 0;
}
