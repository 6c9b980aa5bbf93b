/*
 * karil: RSA keys between the records of crypt.h and their DER forms (RFC 8017 A.1).
 *
 * These functions take a block of numbers, which is a key record less its first word: pass the address of the record's
 * modulus, and set bits where it is wanted. Numbers are big-endian, right-aligned in their fields, zeros on the left.
 * A null pointer that the comment does not allow is KACERT_MemoryErr in this family, and nothing but such a pointer is
 * traced. What was copied of a private key is wiped before it is freed.
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
 * Writes RSAPublicKey (RFC 8017 A.1.1), the form in the BIT STRING of a SubjectPublicKeyInfo: SEQUENCE { n, e }.
 * `numbers`: KA_PUBLIC_NUMBERS octets. `result`: receives the DER, or null to ask for the length. `resultLength`:
 * receives its octets.
 * Returns 0, also, with the outputs as they were, for an exponent that is zero: set the length to 0 before the call to
 * see that; KACERT_MemoryErr, also for a modulus that is zero.
 */
KARIL_API int32_t KA_Encode_PublicKey(const uint8_t *numbers, uint8_t *result, uint32_t *resultLength);

/*
 * Writes RSAPrivateKey (RFC 8017 A.1.2): SEQUENCE { 0, n, e, d, p, q, d mod (p - 1), d mod (q - 1), q^-1 mod p }.
 * `numbers`: KA_PRIVATE_NUMBERS octets. `result`, `resultLength`: as above.
 * Returns 0; KACERT_MemoryErr, also for any number that is zero. Outputs of a failed call are as they were.
 */
KARIL_API int32_t KA_Encode_PrivateKey(const uint8_t *numbers, uint8_t *result, uint32_t *resultLength);

/*
 * Reads RSAPublicKey. `numbers`: receives KA_PUBLIC_NUMBERS octets. `der`: `length` octets, the element and nothing
 * behind it; they may lie in the block. Integers behind the second are ignored, tags of integers are not looked at. An
 * empty integer is zero. Returns 0; KACERT_InvalidLengthErr for a length below 1, a number that is longer than its
 * field, or an element that is malformed inside; KACERT_LengthNotEqualErr, KACERT_InvalidTagErr for another element
 * than a SEQUENCE of that length; KACERT_InvalidParamErr for a number that is missing; KACERT_MemoryErr for a null
 * pointer. After a failure behind that of a bad
 * length or pointer the block holds the numbers before the bad one, and zeros.
 */
KARIL_API int32_t KA_Decode_PublicKey(uint8_t *numbers, const uint8_t *der, int32_t length);

/*
 * Reads RSAPrivateKey into KA_PRIVATE_NUMBERS octets at `numbers`, as above. The version is not looked at, so that a
 * first element of any kind passes. Returns the same, but KACERT_InvalidPrivateKeyErr for a number that is missing.
 */
KARIL_API int32_t KA_Decode_PrivateKey(uint8_t *numbers, const uint8_t *der, int32_t length);

/*
 * Wraps a private key in SEQUENCE { 1, OBJECT IDENTIFIER rsaEncryption, OCTET STRING key }. `key`: `length` octets of
 * RSAPrivateKey, which are not looked at. `result`: receives the DER, up to `length` and 26 octets; must not be null.
 * `resultLength`: receives its octets.
 * Departure from PrivateKeyInfo (RFC 5208 5): the version is 1, and the identifier stands in the SEQUENCE itself
 * without an AlgorithmIdentifier around it or parameters, so that readers of the standard form refuse it.
 * Returns 0; KACERT_InvalidLengthErr for an element above 32 bits; KACERT_MemoryErr. Outputs of a failed call are as
 * they were.
 */
KARIL_API int32_t KI_PKCS1to8KEY(const uint8_t *key, uint32_t length, uint8_t *result, uint32_t *resultLength);

#ifdef __cplusplus
}
#endif

#endif
