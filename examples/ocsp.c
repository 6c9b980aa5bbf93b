/*
 * Client and responder of OCSP in one program, over what certificate_authority issued and revoked: a signed request for
 * three certificates, a signed response from the second CRL, both checked, and changed copies of both refused.
 *
 *     ocsp FOLDER        the folder that certificate_authority wrote to; run it with TZ=UTC
 *
 * Decoding a response leaves the diagnostic file ka_ocsp_basic_response.der in the working directory.
 */
#include "example.h"

#include <time.h>

static const uint8_t sha1[] = {0x2B, 0x0E, 0x03, 0x02, 0x1A};
static const uint32_t sha1Id = KA_DIGEST_SHA1;

static Octets readIn(const char *folder, const char *name) {
    char path[4096];
    snprintf(path, sizeof path, "%s/%s", folder, name);
    return readFile(path);
}

/* What names a certificate: who issued it, and its serial number. */
typedef struct Subject {
    const char *what;
    uint8_t name[512]; /* the issuer's Name element */
    uint32_t nameLength;
    uint8_t key[600]; /* the content of the issuer's key BIT STRING */
    uint32_t keyLength;
    uint8_t serial;
} Subject;

static Subject subjectOf(const char *what, Octets issuer, uint8_t serial) {
    Subject subject = {.what = what, .serial = serial};
    CertDecodeCtx *ctx = NULL;
    CHECK(KACert_CreateCertDecodeCtx(&ctx));
    CHECK(KACert_DecodeCert(ctx, issuer.data, issuer.length));
    Anybuf *name = NULL;
    CHECK(KI_EncodeIssuerSuject(&ctx->subject, &name));
    if (name->length > sizeof subject.name) {
        fprintf(stderr, "the issuer's name is too long\n");
        exit(1);
    }
    subject.nameLength = name->length;
    memcpy(subject.name, name->data, name->length);
    KI_FreeAnybuf(name);
    CHECK(KACert_GetCertAttributeChar(ctx, CERT_SUBJECTPUBLICKEYINFO, subject.key, &subject.keyLength));
    CHECK(KACert_DestroyCertDecodeCtx(ctx));
    return subject;
}

static void setList(RequestListCtx *list, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_OCSP_SetRequestListAttributeChar(list, id, (const uint8_t *)value, (int32_t)length));
}

static Octets singleRequest(const Subject *subject) {
    RequestListCtx *list = NULL;
    Octets der = makeOctets(1024);
    CHECK(KA_OCSP_CreateEncodeRequestList(&list));
    setList(list, OCSP_REQUESTLIST_HASHALGO, sha1, sizeof sha1);
    setList(list, OCSP_REQUESTLIST_ISSUERNAME, subject->name, subject->nameLength);
    setList(list, OCSP_REQUESTLIST_ISSUERKEY, subject->key, subject->keyLength);
    setList(list, OCSP_REQUESTLIST_SERIALNUMBER, &subject->serial, 1);
    CHECK(KA_OCSP_SetRequestListHashFunc(list, KA_DigestFunc_Ref, (const uint8_t *)&sha1Id, sizeof sha1Id));
    CHECK(KA_OCSP_EncodeRequestList(list, der.data, &der.length));
    CHECK(KA_OCSP_DestroyEncodeRequestList(list));
    return der;
}

static void setRequest(RequestCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_OCSP_SetRequestAttributeChar(ctx, id, (const uint8_t *)value, (int32_t)length));
}

static Octets makeRequest(const Key *key, Octets certificate, const Subject *subjects, size_t count, int32_t now) {
    uint8_t nonce[16];
    const uint32_t nonceLength = sizeof nonce;
    RequestCtx *ctx = NULL;
    Octets der = makeOctets(16384);
    CHECK(KA_PKCS7_GenerateBytes(nonce, &nonceLength));
    CHECK(KA_OCSP_CreateEncodeRequest(&ctx));
    CHECK(KA_OCSP_SetRequestAttributeInt(ctx, OCSP_REQUEST_VERSION, 0));
    setRequest(ctx, OCSP_REQUEST_REQUESTOR_COUNTRY, "CN", 2);
    setRequest(ctx, OCSP_REQUEST_REQUESTOR_COMMONNAME, "Example Client", 14);
    setRequest(ctx, OCSP_EXT_NONCE_CRITICAL, "1", 1);
    setRequest(ctx, OCSP_EXT_NONCE, nonce, sizeof nonce);
    /* Without one of the three Int extensions the nonce would stay behind. */
    CHECK(KA_OCSP_SetRequestAttributeInt(ctx, OCSP_EXT_ARCHIVECUTOFF, now - 365 * 86400));
    for (size_t i = 0; i < count; ++i) {
        const Octets single = singleRequest(&subjects[i]);
        CHECK(KA_OCSP_SetRequestSingleRequest(ctx, single.data, (int32_t)single.length));
        free(single.data);
    }
    setRequest(ctx, OCSP_REQUEST_REQUESTOR_SIGNALGO, sha1WithRsa, sizeof sha1WithRsa);
    setRequest(ctx, OCSP_REQUEST_REQUESTOR_CERTS, certificate.data, certificate.length);
    CHECK(KA_OCSP_SetRequestSignFunc(ctx, signWithKey, (const uint8_t *)&key->privateKey, sizeof key->privateKey));
    CHECK(KA_OCSP_EncodeRequest(ctx, der.data, &der.length));
    CHECK(KA_OCSP_DestoryEncodeRequest(ctx));
    return der;
}

/* Whether the key signed the octets. */
static int isSignedBy(const Key *key, const Anybuf *octets, const Anybuf *signature) {
    int32_t verdict = 0;
    CHECK(KA_PKCS7_VerifySignature(KA_DIGEST_SHA1, octets->data, octets->length, signature->data, signature->length,
                                   &key->publicKey, &verdict));
    return verdict == 1;
}

/* The second field of an entry, as seconds: SEQUENCE { serial number, UTCTime, ... }. */
static int32_t dateOf(const Anybuf *entry) {
    Anybuf *fields = NULL;
    int32_t seconds = 0;
    CHECK(KAsn1_ReadSequence(entry, &fields));
    CHECK(KAsn1_ReadUtcTime(fields->next, &seconds));
    KI_FreeAnybuf(fields);
    return seconds;
}

/* Walks the CRL for a serial number; 0: not revoked, else when. `*reason` is set then. */
static int32_t revocationOf(Octets der, const uint8_t *serial, uint32_t serialLength, uint8_t *reason) {
    CrlDecodeCtx *crl = NULL;
    Anybuf *entries = NULL;
    int32_t found = 0;
    CHECK(KACert_CreateCrlDecodeCtx(&crl));
    CHECK(KACert_DecodeCrl(crl, der.data, der.length));
    CHECK(KAsn1_ReadSequence(&crl->revokedDer, &entries));
    for (const Anybuf *entry = entries; entry != NULL && found == 0; entry = entry->next) {
        uint8_t number[64];
        uint32_t length = 0;
        uint32_t reasonLength = 0;
        CHECK(KACert_GetCrlAttributeChar(crl, CRL_CERT_SERIALNUMBER, NULL, &length));
        if (length <= sizeof number)
            CHECK(KACert_GetCrlAttributeChar(crl, CRL_CERT_SERIALNUMBER, number, &length));
        if (length == serialLength && memcmp(number, serial, length) == 0) {
            found = dateOf(entry);
            CHECK(KACert_GetCrlAttributeChar(crl, CRLEX_CRLREASON, reason, &reasonLength));
        }
        CHECK(KACert_GetCrlAttributeChar(crl, CRL_CERT_NEXT, NULL, NULL));
    }
    KI_FreeAnybuf(entries);
    CHECK(KACert_DestroyCrlDecodeCtx(crl));
    return found;
}

/* One response to one single request: revoked or good by the CRL, unknown for another authority's certificate. */
static Octets singleResponse(Octets request, const Subject *authority, Octets crl, int32_t now) {
    RequestListCtx *asked = NULL;
    ResponseListCtx *list = NULL;
    uint8_t own[20], name[64], serial[64], identity[512], reason = 0;
    uint32_t length = 0, nameLength = 0, serialLength = 0, identityLength = 0;
    Octets der = makeOctets(1024);
    CHECK(KA_OCSP_CreateDecodeRequestList(&asked));
    CHECK(KA_OCSP_DecodeRequestList(asked, request.data, request.length));
    CHECK(KA_OCSP_GetRequestListAttributeChar(asked, OCSP_REQUESTLIST_ISSUERHASHNAME, name, &nameLength));
    CHECK(KA_OCSP_GetRequestListAttributeChar(asked, OCSP_REQUESTLIST_SERIALNUMBER, serial, &serialLength));
    CHECK(KA_OCSP_GetRequestListAttributeChar(asked, OCSP_REQUESTLIST_CERTID, identity, &identityLength));
    CHECK(KA_OCSP_DestroyDecodeRequestList(asked));
    CHECK(KA_PKCS7_DigestMessage(KA_DIGEST_SHA1, authority->name, authority->nameLength, own, &length));

    CHECK(KA_OCSP_CreateEncodeResponseList(&list));
    CHECK(KA_OCSP_SetResponseListAttributeChar(list, OCSP_RESPONDERLIST_CERTID, identity, (int32_t)identityLength));
    CHECK(KA_OCSP_SetResponseListAttributeInt(list, OCSP_RESPONDERLIST_THISUPDATE, now));
    CHECK(KA_OCSP_SetResponseListAttributeInt(list, OCSP_RESPONDERLIST_NEXTUPDATE, now + 86400));
    const int32_t revoked = revocationOf(crl, serial, serialLength, &reason);
    if (nameLength != length || memcmp(name, own, length) != 0) {
        CHECK(KA_OCSP_SetResponseList_CertStatusUnInfo(list, (const uint8_t *)"not ours", 8));
        printf("  serial number %u: another authority's\n", serial[serialLength - 1]);
    } else if (revoked != 0) {
        CHECK(KA_OCSP_SetResponseList_CertStatusRevoke(list, revoked, 0, &reason, 1));
        printf("  serial number %u: revoked, reason %u\n", serial[serialLength - 1], reason);
    } else {
        CHECK(KA_OCSP_SetResponseList_CertStatusGood(list));
        printf("  serial number %u: not in the CRL\n", serial[serialLength - 1]);
    }
    CHECK(KA_OCSP_EncodeResponseList(list, der.data, &der.length));
    CHECK(KA_OCSP_DestroyEncodeResponseList(list));
    return der;
}

static void setResponse(ResponseCtx *ctx, int32_t id, const void *value, uint32_t length) {
    CHECK(KA_OCSP_SetResponseAttributeChar(ctx, id, (const uint8_t *)value, (int32_t)length));
}

/* The answer to one single request; the last entry of a response is the only one that can be asked for. */
static Octets makeResponse(const Key *key, const Subject *authority, Octets certificate, Octets single, int32_t now) {
    static const uint8_t successful = 0;
    ResponseCtx *ctx = NULL;
    Octets der = makeOctets(16384);
    CHECK(KA_OCSP_CreateEncodeResponse(&ctx));
    setResponse(ctx, OCSP_RESPONSE_STATUS, &successful, 1);
    setResponse(ctx, OCSP_RESPONSETYPE, KARIL_OID_OCSP_BASIC, sizeof KARIL_OID_OCSP_BASIC);
    CHECK(KA_OCSP_SetResponseAttributeInt(ctx, OCSP_RESPONSE_VERSION, 0));
    CHECK(KA_OCSP_SetResponseAttributeInt(ctx, OCSP_RESPONSE_PRODUCEDAT, now));
    setResponse(ctx, OCSP_RESPONSE_RESPONDERID_COMMONNAME, "Example Responder", 17);
    setResponse(ctx, OCSP_RESPONSE_RESPONDERID_KEY, authority->key, authority->keyLength);
    CHECK(KA_OCSP_SetResponseHashFunc(ctx, KA_DigestFunc_Ref, (const uint8_t *)&sha1Id, sizeof sha1Id));
    CHECK(KA_OCSP_SetResponseSingleResponse(ctx, single.data, (int32_t)single.length));
    setResponse(ctx, OCSP_RESPONSE_SIGNALGO, sha1WithRsa, sizeof sha1WithRsa);
    setResponse(ctx, OCSP_RESPONSE_CERTS, certificate.data, certificate.length);
    CHECK(KA_OCSP_SetResponseSignFunc(ctx, signWithKey, (const uint8_t *)&key->privateKey, sizeof key->privateKey));
    CHECK(KA_OCSP_EncodeResponse(ctx, der.data, &der.length));
    CHECK(KA_OCSP_DestoryEncodeResponse(ctx));
    return der;
}

/* Prints what the client learns of one certificate. A revoked entry is refused; its identity is there all the same. */
static void printSingle(Octets single) {
    ResponseListCtx *list = NULL;
    int32_t status = 0, revokedAt = 0, thisUpdate = 0;
    uint8_t serial[64], identity[512], information[64];
    uint32_t serialLength = 0, identityLength = 0, informationLength = 0;
    CHECK(KA_OCSP_CreateDecodeResponseList(&list));
    const int32_t result = KA_OCSP_DecodeResponseList(list, single.data, single.length);
    CHECK(KA_OCSP_GetResponseListAttributeChar(list, OCSP_RESPONDERLIST_CERTID, identity, &identityLength));
    CHECK(KA_OCSP_GetResponseListAttributeChar(list, OCSP_RESPONDERLIST_SERIALNUMBER, serial, &serialLength));
    printf("  serial number %u, identity of %u octets: ", serial[serialLength - 1], (unsigned)identityLength);
    if (result == KACERT_InvalidTagErr) {
        puts("revoked");
    } else {
        CHECK(result);
        CHECK(KA_OCSP_GetResponseListCertSatus(list, &status, &revokedAt, NULL, NULL, information, &informationLength));
        CHECK(KA_OCSP_GetResponseListAttributeInt(list, OCSP_RESPONDERLIST_THISUPDATE, &thisUpdate));
        if (status == 3)
            printf("unknown, \"%.*s\"\n", (int)informationLength, (const char *)information);
        else
            printf("%s as of %d\n", status == 1 ? "good" : "without a status", (int)thisUpdate);
    }
    CHECK(KA_OCSP_DestroyDecodeResponseList(list));
}

static void expect(const char *what, int got, int want) {
    printf("  %s: %s\n", what, got ? "the signature is good" : "the signature is bad");
    if (got != want) {
        fprintf(stderr, "that was not expected\n");
        exit(1);
    }
}

/* The request as the responder sees it; NULL instead of a changed one that is refused. */
static RequestCtx *takeRequest(Octets der, const Key *client, const char *what, int want) {
    RequestCtx *ctx = NULL;
    CHECK(KA_OCSP_CreateDecodeRequest(&ctx));
    CHECK(KA_OCSP_DecodeRequest(ctx, der.data, der.length));
    const int isGood = isSignedBy(client, &ctx->tbs, &ctx->signature.value);
    expect(what, isGood, want);
    if (isGood)
        return ctx;
    CHECK(KA_OCSP_DestoryDecodeRequest(ctx));
    return NULL;
}

static ResponseCtx *takeResponse(Octets der, const Key *responder, const char *what, int want) {
    ResponseCtx *ctx = NULL;
    CHECK(KA_OCSP_CreateDecodeResponse(&ctx));
    CHECK(KA_OCSP_DecodeResponse(ctx, der.data, der.length));
    const int isGood = isSignedBy(responder, &ctx->basic.signedOctets, &ctx->basic.signature.value);
    expect(what, isGood, want);
    if (isGood)
        return ctx;
    CHECK(KA_OCSP_DestoryDecodeResponse(ctx));
    return NULL;
}

/* Changes an octet of the first copy of `part` in `der`. */
static void change(Octets der, const char *part) {
    const size_t size = strlen(part);
    for (uint32_t at = 0; at + size <= der.length; ++at)
        if (memcmp(der.data + at, part, size) == 0) {
            der.data[at] ^= 1;
            return;
        }
    fprintf(stderr, "nothing to change\n");
    exit(1);
}

int main(int argc, char **argv) {
    static Key client;
    static Key responder;
    const int32_t now = (int32_t)time(NULL);
    if (argc != 2) {
        fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const Octets root = readIn(argv[1], "authority.der");
    const Octets issued = readIn(argv[1], "issued.der");
    const Octets crl = readIn(argv[1], "crl2.der");
    makeKey(&client);
    makeKey(&responder);
    const Subject subjects[] = {
        subjectOf("the revoked one", root, 7),
        subjectOf("one that was never revoked", root, 9),
        subjectOf("one under another issuer", issued, 3),
    };
    const Octets request = makeRequest(&client, issued, subjects, 3, now);
    writeFile(argv[1], "ocsp_request.der", request);

    puts("the responder takes the request");
    RequestCtx *asked = takeRequest(request, &client, "as it is", 1);
    uint8_t text[64];
    uint32_t length = 0, count = 0;
    CHECK(KA_OCSP_GetRequestAttributeChar(asked, OCSP_REQUEST_REQUESTOR_COMMONNAME, text, &length));
    CHECK(KA_OCSP_GetRequestSingleRequestNum(asked, &count));
    printf("  %.*s asks for %u certificates", (int)length, (const char *)text, (unsigned)count);
    CHECK(KA_OCSP_GetRequestAttributeChar(asked, OCSP_EXT_NONCE, text, &length));
    printf(", with a nonce of %u octets\n", (unsigned)length);
    for (uint32_t i = 1; i <= count; ++i) {
        char name[32];
        Octets single = makeOctets(1024);
        CHECK(KA_OCSP_GetRequestSingleRequest(asked, single.data, &single.length, i));
        printf("the responder looks up %s\n", subjects[i - 1].what);
        const Octets answer = singleResponse(single, &subjects[0], crl, now);
        const Octets response = makeResponse(&responder, &subjects[0], root, answer, now);
        snprintf(name, sizeof name, "ocsp_response%u.der", (unsigned)i);
        writeFile(argv[1], name, response);

        puts("the client takes the response");
        ResponseCtx *answered = takeResponse(response, &responder, "as it is", 1);
        CHECK(KA_OCSP_GetResponseSingleResponse(answered, single.data, &single.length, 1));
        printSingle(single);
        CHECK(KA_OCSP_DestoryDecodeResponse(answered));
        change(response, "Example Responder");
        takeResponse(response, &responder, "changed", 0);
        free(single.data);
        free(answer.data);
        free(response.data);
    }
    CHECK(KA_OCSP_DestoryDecodeRequest(asked));
    puts("the responder takes a changed request");
    change(request, "Example Client");
    takeRequest(request, &client, "changed", 0);
    free(request.data);
    free(root.data);
    free(issued.data);
    free(crl.data);
    return 0;
}
