/*
 * karil: keys out of passwords, HMAC, and ciphers, as PKCS#12 (RFC 7292) needs them.
 *
 * KACERT_InvalidParamErr answers a null pointer that a function must read or write; octets of a length of 0 may be
 * null. An unknown digest id or algorithm is answered before that. After a failure no output is changed. Outputs are
 * the caller's, who sees to their size. What is derived from a password is wiped before it is freed.
 *
 * The algorithms of password-based encryption are told by the content octets of their object identifiers:
 *
 *   1.2.840.113549.1.12.1.1  SHA-1, RC4 with a key of 128 bits
 *   1.2.840.113549.1.12.1.2  SHA-1, RC4 with a key of 40 bits
 *   1.2.840.113549.1.12.1.3  SHA-1, triple DES with three keys
 *   1.2.840.113549.1.12.1.4  SHA-1, triple DES with two keys
 *   1.2.840.113549.1.12.1.5  SHA-1, RC2 with a key of 128 bits
 *   1.2.840.113549.1.12.1.6  SHA-1, RC2 with a key of 40 bits
 *   1.2.840.113549.1.5.1     MD2, triple DES with two keys
 *   1.2.840.113549.1.5.4     MD2, RC2 with a key of 16 octets and 40 effective bits
 *   1.2.840.113549.1.5.3     MD5, triple DES with two keys
 *   1.2.840.113549.1.5.6     MD5, RC2 with a key of 16 octets and 40 effective bits
 *   1.2.840.113549.1.5.10    SHA-1, triple DES with two keys
 *   1.2.840.113549.1.5.11    SHA-1, RC2 with a key of 16 octets and 40 effective bits
 *
 * DEPARTURE from RFC 8018 appendix A.3: the last six derive their keys as PKCS#12 does, not by PBKDF1, and those named
 * for DES there use triple DES here. DES and RC2 run in CBC mode with blocks of 8 octets.
 */
#ifndef KARIL_PKCS12_CRYPT_H
#define KARIL_PKCS12_CRYPT_H

#include "karil/crypt.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What octets are derived for: the purpose octet of RFC 7292 appendix B.3. Any other octet is taken as well. */
enum { KA_PKCS12_PURPOSE_KEY = 1, KA_PKCS12_PURPOSE_IV = 2, KA_PKCS12_PURPOSE_MAC = 3 };

/*
 * Widens a password (RFC 7292 appendix B.1): each of `count` octets at `ascii` becomes a zero octet and itself,
 * whatever its encoding, and two zero octets follow. `output`: room for 2 * count + 2 octets, apart from `ascii`.
 * `*outputLength`: their number. Returns 0; KACERT_InvalidParamErr; KACERT_InvalidLengthErr for a password whose
 * widened form does not fit 32 bits.
 */
KARIL_API int32_t KA_PKCS12_ACIItoUNI(const uint8_t *ascii, uint32_t count, uint8_t *output, uint32_t *outputLength);

/*
 * Derives `outputLength` octets from a password and a salt (RFC 7292 appendix B.2), with blocks of 64 octets whatever
 * the digest. The password is widened first, so that an empty one is two zero octets. `digestId`: KA_DIGEST_MD2,
 * KA_DIGEST_MD5 or KA_DIGEST_SHA1. `iterations`: 0 works as 1; there is no upper limit.
 * Returns 0; KAPKCS7_RsaOperationErr for another digest id, and for a password that KA_PKCS12_ACIItoUNI refuses for its
 * length; KACERT_InvalidParamErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_GenRandomFromPassword(int32_t digestId, const uint8_t *password, uint32_t passwordLength,
                                                  const uint8_t *salt, uint32_t saltLength, uint8_t purpose,
                                                  uint32_t iterations, uint8_t *output, uint32_t outputLength);

/*
 * HMAC (RFC 2104) with blocks of 64 octets, MD2 included, whose own blocks have 16: values of HMAC-MD2 differ from
 * those of other programs. `key`: null is 64 zero octets, whatever `keyLength`. `output`: receives 20 octets for SHA-1,
 * else 16; `*outputLength`: their number.
 * Returns 0; KAPKCS7_RsaOperationErr for an unknown digest id; KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_HMAC(int32_t digestId, const uint8_t *key, uint32_t keyLength, const uint8_t *data,
                                 uint32_t dataLength, uint8_t *output, uint32_t *outputLength);

/*
 * Pads to whole blocks of 8 octets: 1 to 8 octets follow the input, each with their number. `output`: room for
 * length + 8 octets; may be `input`. `*outputLength`: the padded length.
 * Returns 0; KACERT_InvalidParamErr; KACERT_InvalidLengthErr if the padded length does not fit 32 bits.
 */
KARIL_API int32_t KA_PKCS12_AddPad(const uint8_t *input, uint32_t length, uint8_t *output, uint32_t *outputLength);

/*
 * Takes as many octets off the end as the last octet says. Neither the other octets of the padding nor a count of 0 or
 * above 8 are refused. `output`: may be `input`. `*outputLength`: the octets that are left, at least 1.
 * Returns 0; KACERT_InvalidLengthErr for a count that is not below the length, and for a length of 0;
 * KACERT_InvalidParamErr.
 */
KARIL_API int32_t KA_PKCS12_DecPad(const uint8_t *input, uint32_t length, uint8_t *output, uint32_t *outputLength);

/*
 * Password-based encryption and decryption. Key and IV are derived as KA_PKCS12_GenRandomFromPassword does. With RC4
 * the length stays; with the others the input is padded, and the padding of what was decrypted is taken off, as
 * KA_PKCS12_AddPad and KA_PKCS12_DecPad do. `output`: room for the octets that come out, on encryption
 * inputLength + 8; may be `input`, or must not overlap it. `*outputLength`: their number.
 * A wrong password is most often KACERT_InvalidLengthErr, for its padding; but it may be 0 with octets without meaning.
 * Return 0; KACERT_AlgorithmNotSupportErr for none of the twelve algorithms; KACERT_InvalidLengthErr for padding that
 * is refused, and, except with RC4, for a cipher text to be decrypted that is empty or no whole number of blocks;
 * KAPKCS7_RsaOperationErr for a password that is too long to be widened; KACERT_InvalidParamErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_PbeWithDigestAlgoAndEncrypt(const uint8_t *oid, uint32_t oidLength, const uint8_t *password,
                                                        uint32_t passwordLength, const uint8_t *salt,
                                                        uint32_t saltLength, uint32_t iterations, const uint8_t *input,
                                                        uint32_t inputLength, uint8_t *output, uint32_t *outputLength);
KARIL_API int32_t KA_PKCS12_PbeWithDigestAlgoAndDecrypt(const uint8_t *oid, uint32_t oidLength, const uint8_t *password,
                                                        uint32_t passwordLength, const uint8_t *salt,
                                                        uint32_t saltLength, uint32_t iterations, const uint8_t *input,
                                                        uint32_t inputLength, uint8_t *output, uint32_t *outputLength);

/*
 * The same with a key and an IV of the caller's. `key`: for RC4 1 to 256 octets, for RC2 1 to 128, for triple DES at
 * least 24 with three keys and 16 with two; the effective bits of RC2 are those of the algorithm. `iv`: at least 8
 * octets; RC4 does not look at it. Return 0; KACERT_AlgorithmNotSupportErr; KACERT_InvalidParamErr, also for other
 * lengths of key and IV; KACERT_InvalidLengthErr as above.
 */
KARIL_API int32_t KA_PKCS12_DESEncrypt(const uint8_t *oid, uint32_t oidLength, const uint8_t *key, uint32_t keyLength,
                                       const uint8_t *iv, uint32_t ivLength, const uint8_t *input, uint32_t inputLength,
                                       uint8_t *output, uint32_t *outputLength);
KARIL_API int32_t KA_PKCS12_DESDecrypt(const uint8_t *oid, uint32_t oidLength, const uint8_t *key, uint32_t keyLength,
                                       const uint8_t *iv, uint32_t ivLength, const uint8_t *input, uint32_t inputLength,
                                       uint8_t *output, uint32_t *outputLength);

/*
 * AES with a key of 16 octets in CBC mode (NIST SP 800-38A), padded to whole blocks of 16. `algMode`: 2; 1 passes the
 * tests of the arguments and is refused then. `pIv`: 16 octets. `output`: on encryption room for inputLen + 16 octets,
 * on decryption for inputLen, those of the padding become zeros; may be `input`, or must not overlap it. `*outputLen`:
 * the octets of the cipher text or the plain text. The octets of the padding before its last one are not looked at, and
 * a count of 0 is taken.
 * Return 0; KACERT_InvalidParamErr for another mode or length of key or IV, for nothing to encrypt, and for a length to
 * decrypt that is no multiple of 16; KACERT_AttributeNotSupportErr for mode 1; KACERT_InvalidLengthErr for nothing to
 * decrypt, and for a count of padding above 16; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_AESEncrypt(int32_t algMode, const uint8_t *key, uint32_t keyLen, const uint8_t *pIv,
                                       uint32_t pIvLen, const uint8_t *input, uint32_t inputLen, uint8_t *output,
                                       uint32_t *outputLen);
KARIL_API int32_t KA_PKCS12_AESDecrypt(int32_t algMode, const uint8_t *key, uint32_t keyLen, const uint8_t *pIv,
                                       uint32_t pIvLen, const uint8_t *input, uint32_t inputLen, uint8_t *output,
                                       uint32_t *outputLen);

/*
 * What the reference hooks below take as their parameter. The functions that store a hook copy these records as they
 * are: what the pointers in them point at must live until the last call of the hook. Their size is sizeof, 28 and 12
 * octets on a 32-bit ABI.
 */
typedef struct PbeHookParam {
    const uint8_t *oid; /* of the algorithm: content octets */
    uint32_t oidLen;
    const uint8_t *password;
    uint32_t passwordLen;
    const uint8_t *salt;
    uint32_t saltLen;
    uint32_t iterations;
} PbeHookParam;
KARIL_SIZE_32(PbeHookParam, 28);

typedef struct HmacHookParam {
    int32_t digestId;
    const uint8_t *key;
    uint32_t keyLen; /* at most 124 */
} HmacHookParam;
KARIL_SIZE_32(HmacHookParam, 12);

/*
 * Reference hooks, of the shape of KAHookFunc. Each hands its arguments to the function that is named beside it, and
 * returns what that returns. KACERT_InvalidItemErr for a null parameter; KACERT_InvalidParamErr for an HMAC key above
 * 124 octets. They write no trace of their own.
 */
KARIL_API int32_t KA_EncryptFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output,
                                     uint32_t *outputLength, void *pbe); /* KA_PKCS12_PbeWithDigestAlgoAndEncrypt */
KARIL_API int32_t KA_DecryptFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output,
                                     uint32_t *outputLength, void *pbe); /* KA_PKCS12_PbeWithDigestAlgoAndDecrypt */
KARIL_API int32_t KA_HMACFunc_Ref(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                                  void *hmac); /* KA_PKCS12_HMAC */

#ifdef __cplusplus
}
#endif

#endif
