/*
 * karil: RSA keys, digests, and the reference hooks that carry them out in software.
 *
 * Signatures are RSA with PKCS#1 v1.5 padding (RFC 8017 7.2 and 8.2) over MD2 (RFC 1319), MD5 (RFC 1321) or SHA-1 (FIPS
 * 180-4). Each call builds its key from a record, and wipes and frees it before it returns. Nothing is kept between
 * calls but the state of the crypto library's random generator. These functions write no trace, and leave the calling
 * thread's error queue of the crypto library empty.
 *
 * KACERT_InvalidItemErr answers a null record, length or buffer; only the input may be null, with length 0. An unknown
 * digest id is answered before that.
 */
#ifndef KARIL_CRYPT_H
#define KARIL_CRYPT_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Digest ids. */
enum { KA_DIGEST_MD2 = 3, KA_DIGEST_MD5 = 5, KA_DIGEST_SHA1 = 7 };

/* Key records: flat, copied whole. Numbers are big-endian and right-aligned in their fields, with zeros on the left. */
typedef struct RsaPublicKeyRecord {
    uint32_t bits; /* significant bits of the modulus: written by key generation, never read */
    uint8_t modulus[256];
    uint8_t exponent[256];
} RsaPublicKeyRecord;
KARIL_STATIC_ASSERT(sizeof(RsaPublicKeyRecord) == 516, "a public key record has 516 octets");

typedef struct RsaPrivateKeyRecord {
    uint32_t bits;
    uint8_t modulus[256];        /* n */
    uint8_t publicExponent[256]; /* e */
    uint8_t exponent[256];       /* d */
    uint8_t prime1[128];         /* p */
    uint8_t prime2[128];         /* q */
    uint8_t primeExponent1[128]; /* d mod (p - 1) */
    uint8_t primeExponent2[128]; /* d mod (q - 1) */
    uint8_t coefficient[128];    /* q^-1 mod p */
} RsaPrivateKeyRecord;
KARIL_STATIC_ASSERT(sizeof(RsaPrivateKeyRecord) == 1412, "a private key record has 1,412 octets");

/*
 * Make a key pair with the exponent 65537 and a modulus of 1,024 or 2,048 bits, and fill both records. Returns 0;
 * KAPKCS7_GenKeyErr if no key was made, with the records as they were; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GenRSAKeyPair(RsaPublicKeyRecord *publicKey, RsaPrivateKeyRecord *privateKey);
KARIL_API int32_t KA_PKCS7_GenRSAKeyPair_2048(RsaPublicKeyRecord *publicKey, RsaPrivateKeyRecord *privateKey);

/*
 * The four RSA operations, always with PKCS#1 v1.5 padding. Encrypt makes a block: type 2 with the public key (RFC 8017
 * 7.2.1), type 1 with the private key (8.2.1). Decrypt opens one: type 1 with the public key (8.2.2), type 2 with the
 * private key (7.2.2).
 * `input`: for Encrypt a message of at most the modulus' octets less 11, for Decrypt a block; null only with length 0.
 * `output`: room for the modulus' octets, at most 256. `outputLength`: receives the octets written, or 0xFFFFFFFF (-1)
 * if the operation failed.
 * An operation fails if the input is not such a message or block. It also fails if the modulus is even or has fewer
 * than 11 octets, or if the public exponent is zero. A private operation also fails if a prime is zero: n, e and d
 * alone are not enough.
 * Returns 0; KAPKCS7_RsaOperationErr if the operation failed; KAPKCS7_RsaOperationErr, with `*outputLength` as it was,
 * if the key could not be loaded for want of memory; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_RSAPublicEncrypt(uint8_t *output, uint32_t *outputLength, const uint8_t *input,
                                            uint32_t inputLength, const RsaPublicKeyRecord *key);
KARIL_API int32_t KA_PKCS7_RSAPublicDecrypt(uint8_t *output, uint32_t *outputLength, const uint8_t *input,
                                            uint32_t inputLength, const RsaPublicKeyRecord *key);
KARIL_API int32_t KA_PKCS7_RSAPrivateEncrypt(uint8_t *output, uint32_t *outputLength, const uint8_t *input,
                                             uint32_t inputLength, const RsaPrivateKeyRecord *key);
KARIL_API int32_t KA_PKCS7_RSAPrivateDecrypt(uint8_t *output, uint32_t *outputLength, const uint8_t *input,
                                             uint32_t inputLength, const RsaPrivateKeyRecord *key);

/*
 * Fills `output` with `*length` octets of the crypto library's random generator. The length is only read. With length 0
 * nothing is done, and `output` may be null. Returns 0; KAPKCS7_RsaOperationErr if the generator fails, after which the
 * octets are not to be used; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GenerateBytes(uint8_t *output, const uint32_t *length);

/*
 * Digests `inputLength` octets at `input`. `output`: room for 16 (MD2, MD5) or 20 (SHA-1) octets. `outputLength`:
 * receives their number. Returns 0; KAPKCS7_DigestAlgErr if the id is unknown; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_DigestMessage(int32_t digestId, const uint8_t *input, uint32_t inputLength, uint8_t *output,
                                         uint32_t *outputLength);

/*
 * Signs `inputLength` octets at `input` (RFC 8017 8.2.1): digest, DigestInfo, private operation. This has nothing to do
 * with the PKCS#7 content type of that name. `signature`: room for the modulus' octets. `signatureLength`: receives the
 * octets written, or 0xFFFFFFFF (-1) if the operation failed, as it does for the reasons named above.
 * Returns 0; KAPKCS7_DigestAlgErr if the id is unknown; KAPKCS7_SignErr if the key could not be loaded for want of
 * memory; KAPKCS7_RsaOperationErr if the operation failed; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_SignedData(int32_t digestId, const uint8_t *input, uint32_t inputLength, uint8_t *signature,
                                      uint32_t *signatureLength, const RsaPrivateKeyRecord *key);

/*
 * Verifies a signature over `inputLength` octets at `input`. `*verdict`: receives 1 if the block that the public key
 * opens ends in their digest, else 0. A bad signature is verdict 0 with status 0: look at both.
 * DEPARTURE from RFC 8017 8.2.2: the DigestInfo before the digest is not looked at. Whatever stands there is accepted,
 * so that a signature under a key with the public exponent 3 can be forged without the private key. Do not rely on this
 * function for such keys.
 * Returns 0. Returns KAPKCS7_DigestAlgErr if the id is unknown, KACERT_VerifySignatureErr if the key could not be
 * loaded for want of memory, or KACERT_InvalidItemErr; the verdict is then as it was.
 */
KARIL_API int32_t KA_PKCS7_VerifySignature(int32_t digestId, const uint8_t *input, uint32_t inputLength,
                                           const uint8_t *signature, uint32_t signatureLength,
                                           const RsaPublicKeyRecord *key, int32_t *verdict);

/*
 * The reference hooks, of the shape of KAHookFunc. Each hands its arguments to the function that is named beside it,
 * and returns what that returns. The last argument points at a digest id of 32 bits, or at the key record that the
 * function takes. KACERT_InvalidItemErr if it is null.
 */
KARIL_API int32_t KA_DigestFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                                    void *digestId); /* KA_PKCS7_DigestMessage */
KARIL_API int32_t KA_PrivateKeyEncFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output,
                                           uint32_t *outputLength, void *key); /* KA_PKCS7_RSAPrivateEncrypt */
KARIL_API int32_t KA_PrivateKeyDecryptFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output,
                                               uint32_t *outputLength, void *key); /* KA_PKCS7_RSAPrivateDecrypt */
KARIL_API int32_t KA_PublicKeyDecryptFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output,
                                              uint32_t *outputLength, void *key); /* KA_PKCS7_RSAPublicDecrypt */
KARIL_API int32_t KA_PublicKeyEncryptFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output,
                                              uint32_t *outputLength, void *key); /* KA_PKCS7_RSAPublicEncrypt */

#ifdef __cplusplus
}
#endif

#endif
