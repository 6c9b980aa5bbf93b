/*
 * karil: bundles of a key and certificates that other programs write in forms of their own. For PFX files see pfx.h.
 *
 * Outputs are the caller's, who sees to their size. They are written last: after a failure none is changed. Keys and
 * what is deciphered are wiped before they are freed.
 */
#ifndef KARIL_PFX_FOREIGN_H
#define KARIL_PFX_FOREIGN_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Reads the private key and the certificate of a bundle in BER, indefinite lengths and constructed strings included,
 * that is no file of DecodePFX: each of two items is an algorithm identifier, its parameters and a cipher text, as
 * primitive elements of their own. The key's item is the first one, the certificate's the second. There is no check of
 * a MAC: a wrong password is most often -1, but it may be 0 with octets without meaning.
 *
 * The elements are looked at one after the other, whatever contains them:
 *   - one whose content is the identifier of PKCS#7 data;
 *   - one whose content is an algorithm that pkcs12_crypt.h lists;
 *   - one of more than 8 octets that holds SEQUENCE { salt OCTET STRING, iterations INTEGER }, with lengths below 128.
 *     Of the count the first octet alone is taken: 2,000 is read as 7;
 *   - a primitive one of 8 octets or more, which is the cipher text. With 255 or 65,535 octets it is taken from its
 *     second octet on, to one after its end, and from 16,777,215 on it is taken as empty.
 * Then the last three once more. The certificate's cipher text may go on in further such elements, one stream over all
 * of them, until the plain text is as long as its own header tells. The last one alone loses its padding: a count
 * above 8 is none, and the octets of the padding are not looked at. Each cipher text is a whole number of blocks.
 * Of each plain text the first OCTET STRING is taken: of a PrivateKeyInfo the private key, of a SafeContents the
 * certificate.
 *
 * `certificate`, `key`: as many octets as the input has are enough. `*certificateLength`, `*keyLength`: their number.
 * Returns 0; 1 if an allocation failed; -1 for everything else: what is missing, cut off or refused by the ciphers, an
 * input that begins with an unusual tag, and null pointers. 1 and -1 are no status codes.
 */
KARIL_API int32_t KA_PKCS12_GetKeyAndCertFromNspP12(const uint8_t *input, uint32_t inputLength, const uint8_t *password,
                                                    uint32_t passwordLength, uint8_t *certificate,
                                                    uint32_t *certificateLength, uint8_t *key, uint32_t *keyLength);

/*
 * Reads two certificates out of a SafeContents and a private key out of a KeyBag; there is no password. `safeContents`,
 * `keyBag`: just the element. `key`, `second`, `first`: the private key and the certificates of the second and the
 * first bag; as many octets as the inputs have are enough. The types of the bags are not looked at, and further bags
 * are left alone. Returns 0; KACERT_InvalidParamErr for null, for fewer than two bags, and for what is missing in a
 * bag; KACERT_InvalidItemErr for a null `safeContents`, and for a certificate's bag without value;
 * KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_Decode_GFAN(const uint8_t *safeContents, int32_t safeContentsLength, const uint8_t *keyBag,
                                        int32_t keyBagLength, uint8_t *key, uint32_t *keyLength, uint8_t *second,
                                        uint32_t *secondLength, uint8_t *first, uint32_t *firstLength);

#ifdef __cplusplus
}
#endif

#endif
