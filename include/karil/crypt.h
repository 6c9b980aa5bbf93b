/*
 * karil: RSA keys, digests, and the reference hooks that carry them out in software.
 *
 * Signatures are RSA with PKCS#1 v1.5 padding (RFC 8017 7.2 and 8.2) over MD2 (RFC 1319), MD5 (RFC 1321) or SHA-1
 * (FIPS 180-4). Each call builds its key from the record it is given and frees it, wiped, before it returns; nothing
 * is kept between calls but the state of the crypto library's random generator. This layer traces nothing and leaves
 * the crypto library's error queue of the calling thread empty. Null records, lengths and buffers (but for input of
 * length 0) are KACERT_InvalidItemErr, after the digest id was looked at.
 */
#ifndef KARIL_CRYPT_H
#define KARIL_CRYPT_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Digest ids. */
enum { KA_DIGEST_MD2 = 3, KA_DIGEST_MD5 = 5, KA_DIGEST_SHA1 = 7 };

/* Key records: flat, copied whole. Numbers are big-endian, right-aligned in their fields, zeros on the left. */
typedef struct RsaPublicKeyRecord {
    uint32_t bits; /* significant bits of the modulus; written by key generation, never read */
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
 * Make a key pair with a modulus of 1,024 or 2,048 bits and the exponent 65537 and fill both records.
 * Returns 0; KAPKCS7_GenKeyErr where no key was made, with the records untouched; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GenRSAKeyPair(RsaPublicKeyRecord *publicKey, RsaPrivateKeyRecord *privateKey);
KARIL_API int32_t KA_PKCS7_GenRSAKeyPair_2048(RsaPublicKeyRecord *publicKey, RsaPrivateKeyRecord *privateKey);

/*
 * The four RSA operations, always with PKCS#1 v1.5 padding: Encrypt makes a block, type 2 with the public and type 1
 * with the private key (RFC 8017 7.2.1, 8.2.1), Decrypt opens one (7.2.2, 8.2.2).
 * `input`: a message of at most the modulus' octets less 11, or a block; null only with length 0. `output`: room for
 * the modulus' octets, 256 at most. `outputLength`: receives the octets written, or 0xFFFFFFFF (-1) where the operation
 * failed, as it does with a modulus that is even or has fewer than 11 octets, or a public exponent of zero.
 * A private operation needs n, e and d; where both primes are zero it goes by d alone, more slowly.
 * Returns 0; KAPKCS7_RsaOperationErr where the operation failed, or the key could not be loaded for want of memory,
 * which leaves `*outputLength` alone; KACERT_InvalidItemErr.
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
 * Fills `output` with `*length` octets of the crypto library's random generator; the length is not written. With
 * length 0 nothing is done. Returns 0; KAPKCS7_RsaOperationErr where the generator gives nothing, since octets that
 * are not random must not pass for such; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_GenerateBytes(uint8_t *output, const uint32_t *length);

/*
 * Digests `inputLength` octets at `input`. `output`: room for 16 (MD2, MD5) or 20 (SHA-1) octets, whose number goes
 * to `*outputLength`. Returns 0; KAPKCS7_DigestAlgErr for another id; KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_DigestMessage(int32_t digestId, const uint8_t *input, uint32_t inputLength, uint8_t *output,
                                         uint32_t *outputLength);

/*
 * Signs `input` (RFC 8017 8.2.1): digest, DigestInfo, private operation. It has nothing to do with the PKCS#7 content
 * type of that name. `signature`: room for the modulus' octets. `signatureLength`: as for the RSA operations.
 * Returns 0; KAPKCS7_DigestAlgErr; KAPKCS7_SignErr where the key could not be loaded; KAPKCS7_RsaOperationErr;
 * KACERT_InvalidItemErr.
 */
KARIL_API int32_t KA_PKCS7_SignedData(int32_t digestId, const uint8_t *input, uint32_t inputLength, uint8_t *signature,
                                      uint32_t *signatureLength, const RsaPrivateKeyRecord *key);

/*
 * Verifies a signature. `*verdict`: 1 where the opened block ends in the digest of `input`, else 0; a bad signature
 * is verdict 0 with status 0, so read both. Departure from RFC 8017 8.2.2: what stands before the digest, the
 * DigestInfo with its algorithm, is not looked at.
 * Returns 0; KAPKCS7_DigestAlgErr, or KACERT_VerifySignatureErr where the key could not be loaded, or
 * KACERT_InvalidItemErr, with the verdict untouched.
 */
KARIL_API int32_t KA_PKCS7_VerifySignature(int32_t digestId, const uint8_t *input, uint32_t inputLength,
                                           const uint8_t *signature, uint32_t signatureLength,
                                           const RsaPublicKeyRecord *key, int32_t *verdict);

/*
 * The reference hooks, of the shape of KAHookFunc: each hands its arguments to the function named. The parameter
 * points at a 32-bit digest id, or at a key record. Return KACERT_InvalidItemErr for a null parameter, else what the
 * function returns.
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
