/*
 * A certificate that is signed with SHA-256 by a hook, for hook.c and token.c. The hook's parameter is copied octet by
 * octet, and the copy is what the hook gets: a key that lives elsewhere goes by its address, which has to stay good for
 * as long as the context may sign.
 */
#ifndef KARIL_SIGNER_H
#define KARIL_SIGNER_H

#include "example.h"

#include <time.h>

static const uint8_t sha256WithRsa[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x0B};

/* The room that a hook has for a certificate's signature: that of a key of 4,096 bits. */
enum { SignatureRoom = 512 };

/* Content of the BIT STRING of a public key. */
typedef struct PublicKey {
    uint8_t der[600];
    uint32_t length;
} PublicKey;

/* A self-signed certificate: `signer` is the address of what the hook needs. The caller frees the octets. */
static inline Octets issueSelfSigned(const char *commonName, const PublicKey *key, KACertSignFunc hook,
                                     const void *signer) {
    static const uint8_t serial = 1;
    static const uint8_t yes = 0xFF;
    const int64_t end = (int64_t)time(NULL) + 86400;
    const Attribute values[] = {
        {CERT_SERIALNUMBER, &serial, 1},
        {CERT_INNER_SIGNATUREALGORITHM, sha256WithRsa, sizeof sha256WithRsa},
        {CERT_OUTER_SIGNATUREALGORITHM, sha256WithRsa, sizeof sha256WithRsa},
        {CERT_PUBLICKEY_ALGORITHM, rsaEncryption, sizeof rsaEncryption},
        {CERT_SUBJECTPUBLICKEYINFO, key->der, key->length},
        {CERT_ISSUER_COMMONNAME, commonName, strlen(commonName)},
        {CERT_SUBJECT_COMMONNAME, commonName, strlen(commonName)},
        {CERTEX_AUTHORITY, &yes, 1},
    };
    CertEncodeCtx *ctx = NULL;
    uint32_t length = 0;
    CHECK(KACert_CreateCertEncodeCtx(&ctx));
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VERSION, 2));
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VALIDFROM, (int32_t)(end - 86400)));
    CHECK(KACert_SetCertAttributeInt(ctx, CERT_VALIDTO, (int32_t)end));
    for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i)
        CHECK(KACert_SetCertAttributeChar(ctx, values[i].id, values[i].octets, (int32_t)values[i].length));
    CHECK(KACert_SetCertSignFunc(ctx, hook, &signer, sizeof signer));
    CHECK(KACert_EncodeCert(ctx, NULL, &length));
    const Octets der = makeOctets(length);
    CHECK(KACert_EncodeCert(ctx, der.data, &length));
    CHECK(KACert_DestroyCertEncodeCtx(ctx));
    return der;
}

#endif
