/*
 * An OCSP client takes the answer to its request: is the certificate revoked? The responder is the root.
 *
 *     learn REQUEST RESPONSE
 */
#include "../example.h"

/* The signature is the client's to check: decoding does not. */
static int32_t checkSignature(const ResponseCtx *response, const CertDecodeCtx *responder) {
    RsaPublicKeyRecord key = {0};
    int32_t isGood = 0;
    const Anybuf *covered = &response->basic.signedOctets;
    const Anybuf *signature = &response->basic.signature.value;
    int32_t status = KA_Decode_PublicKey(key.modulus, responder->publicKey.data, (int32_t)responder->publicKey.length);
    if (status == KACERT_Ok)
        status = KA_PKCS7_VerifySignature(KA_DIGEST_SHA1, covered->data, covered->length, signature->data,
                                          signature->length, &key, &isGood);
    return status == KACERT_Ok && !isGood ? KACERT_VerifySignatureErr : status;
}

/* The last answer of the response is the one that can be asked for. It must be about what was asked. */
static int32_t printAnswer(const ResponseCtx *response, const RequestListCtx *asked, uint8_t *room) {
    ResponseListCtx *single = NULL;
    uint32_t length = 0;
    int32_t status = KA_OCSP_GetResponseSingleResponse(response, room, &length, 1);
    if (status == KACERT_Ok)
        status = KA_OCSP_CreateDecodeResponseList(&single);
    if (status != KACERT_Ok)
        return status;
    status = KA_OCSP_DecodeResponseList(single, room, length);
    const Anybuf *got = &single->certId.whole;
    const Anybuf *wanted = &asked->certId.whole;
    const int isOurs = got->length == wanted->length && memcmp(got->data, wanted->data, wanted->length) == 0;
    if (!isOurs) {
        status = KACERT_InvalidItemErr;
    } else if (status == KACERT_InvalidTagErr) { /* so decoding answers every revoked one */
        puts("revoked");
        status = KACERT_Ok;
    } else if (status == KACERT_Ok) {
        puts(single->isGood ? "good" : "unknown");
    }
    KA_OCSP_DestroyDecodeResponseList(single);
    return status;
}

int main(int argc, char **argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: %s REQUEST RESPONSE\n", argv[0]);
        return 2;
    }
    const Octets requestDer = readDer(argv[1]);
    const Octets responseDer = readDer(argv[2]);
    const Octets rootDer = readDer("root.der");
    Octets question = makeOctets(requestDer.length);
    const Octets room = makeOctets(responseDer.length);
    RequestCtx *request = NULL;
    RequestListCtx *asked = NULL;
    ResponseCtx *response = NULL;
    CertDecodeCtx *root = NULL;
    CHECK(KACert_CreateCertDecodeCtx(&root));
    CHECK(KACert_DecodeCert(root, rootDer.data, rootDer.length));
    CHECK(KA_OCSP_CreateDecodeRequest(&request));
    CHECK(KA_OCSP_DecodeRequest(request, requestDer.data, requestDer.length));
    CHECK(KA_OCSP_GetRequestSingleRequest(request, question.data, &question.length, 1));
    CHECK(KA_OCSP_CreateDecodeRequestList(&asked));
    CHECK(KA_OCSP_DecodeRequestList(asked, question.data, question.length));

    CHECK(KA_OCSP_CreateDecodeResponse(&response));
    int32_t status = KA_OCSP_DecodeResponse(response, responseDer.data, responseDer.length);
    if (status == KACERT_Ok)
        status = checkSignature(response, root);
    if (status == KACERT_Ok)
        status = printAnswer(response, asked, room.data);

    CHECK(KA_OCSP_DestoryDecodeResponse(response));
    CHECK(KA_OCSP_DestroyDecodeRequestList(asked));
    CHECK(KA_OCSP_DestoryDecodeRequest(request));
    CHECK(KACert_DestroyCertDecodeCtx(root));
    free(room.data);
    free(question.data);
    free(rootDer.data);
    free(responseDer.data);
    free(requestDer.data);
    return outcome(argv[2], status);
}
