/*
 * karil: RSA keys between the records of crypt.h and their DER forms (RFC 8017 A.1).
 *
 * These functions take a block of numbers, which is a key record without its first word: pass the address of the
 * record's modulus, and set bits by yourself if you want it. Numbers are big-endian and right-aligned in their fields,
 * with zeros on the left. A null pointer that the comment does not allow is KACERT_MemoryErr in this family, and the
 * only failure that it traces: the readers and the writer below it trace theirs. Copies of a private key are wiped
 * before they are freed.
 */
#ifndef KARIL_KEY_H
#define KARIL_KEY_H

#include "karil/base.h"
#include "karil/crypt.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Octets of a block of numbers. */
enum { KA_PUBLIC_NUMBERS = 512, KA_PRIVATE_NUMBERS = 1408 };
KARIL_STATIC_ASSERT(sizeof(RsaPublicKeyRecord) - offsetof(RsaPublicKeyRecord, modulus) == KA_PUBLIC_NUMBERS,
                    "a public key record ends in its numbers");
KARIL_STATIC_ASSERT(sizeof(RsaPrivateKeyRecord) - offsetof(RsaPrivateKeyRecord, modulus) == KA_PRIVATE_NUMBERS,
                    "a private key record ends in its numbers");

/*
 * Writes RSAPublicKey (RFC 8017 A.1.1), SEQUENCE { n, e }, as the BIT STRING of a SubjectPublicKeyInfo holds it.
 * `numbers`: KA_PUBLIC_NUMBERS octets. `result`: receives the DER, or null to ask for the length. `resultLength`:
 * receives its octets.
 * Returns 0; KACERT_MemoryErr, also if the modulus is zero. If the exponent alone is zero, 0 is returned and the
 * outputs stay as they were: set the length to 0 before the call to notice it.
 */
KARIL_API int32_t KA_Encode_PublicKey(const uint8_t *numbers, uint8_t *result, uint32_t *resultLength);

/*
 * Writes RSAPrivateKey (RFC 8017 A.1.2): SEQUENCE { 0, n, e, d, p, q, d mod (p - 1), d mod (q - 1), q^-1 mod p }.
 * `numbers`: KA_PRIVATE_NUMBERS octets. `result`: receives the DER, or null to ask for the length. `resultLength`:
 * receives its octets.
 * Returns 0; KACERT_MemoryErr, also if any number is zero. A call that fails leaves its outputs as they were.
 */
KARIL_API int32_t KA_Encode_PrivateKey(const uint8_t *numbers, uint8_t *result, uint32_t *resultLength);

/*
 * Reads RSAPublicKey (RFC 8017 A.1.1). `numbers`: receives KA_PUBLIC_NUMBERS octets. `der`: `length` octets, the
 * element and nothing after it; they may lie in the block. Each number is read as KAsn1_ReadIntegerArray does, whatever
 * its tag; an empty one is zero. Integers after the second are ignored.
 * Returns 0; KACERT_MemoryErr if a pointer is null; KACERT_InvalidLengthErr if the length is below 1. The block is as
 * it was after these two. Returns also KACERT_InvalidTagErr for another element than a SEQUENCE;
 * KACERT_LengthNotEqualErr if it has not exactly `length` octets; KACERT_InvalidLengthErr if a number is longer than
 * its field, or an inner element is cut off or runs over the end; KACERT_InvalidParamErr if a number is missing. The
 * block then holds the numbers before the bad one, and zeros.
 */
KARIL_API int32_t KA_Decode_PublicKey(uint8_t *numbers, const uint8_t *der, int32_t length);

/*
 * Reads RSAPrivateKey (RFC 8017 A.1.2) into KA_PRIVATE_NUMBERS octets at `numbers`, in the same way. The version is not
 * looked at: a first element of any kind is accepted. Returns the same statuses, but KACERT_InvalidPrivateKeyErr if a
 * number is missing.
 */
KARIL_API int32_t KA_Decode_PrivateKey(uint8_t *numbers, const uint8_t *der, int32_t length);

/*
 * Wraps a private key in SEQUENCE { 1, OBJECT IDENTIFIER rsaEncryption, OCTET STRING key }. `key`: `length` octets of
 * RSAPrivateKey, which are not looked at; not null. `result`: receives the DER, at most `length` and 26 octets; must
 * not be null, so that there is no way to ask for the length. `resultLength`: receives its octets.
 * Departure from PrivateKeyInfo (PKCS#8, RFC 5208 5): the version is 1, and the identifier stands in the SEQUENCE
 * itself, without an AlgorithmIdentifier around it and without parameters. Readers of the standard form refuse it.
 * Returns 0; KACERT_InvalidLengthErr if the element exceeds 32 bits; KACERT_MemoryErr. A call that fails leaves its
 * outputs as they were.
 */
KARIL_API int32_t KI_PKCS1to8KEY(const uint8_t *key, uint32_t length, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
