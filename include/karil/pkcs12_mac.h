/*
 * karil: MacData, which protects a PKCS#12 file (RFC 7292 4), and the parameters of password-based encryption.
 *
 * KACERT_InvalidParamErr answers a null pointer. What decoding stores is a copy, and the input may be a record that it
 * replaces.
 */
#ifndef KARIL_PKCS12_MAC_H
#define KARIL_PKCS12_MAC_H

#include "karil/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* MacData, and how its digest is made. Every Anybuf is embedded. Zero the record, then set `present` to 1. */
typedef struct MacRecord {
    uint8_t verified; /* 1 once the digest that was read matched the one that the hook made, else 0 */
    uint8_t present;  /* 1 */
    uint32_t algorithmKind;
    AlgorithmRecord digestAlgorithm;
    Anybuf digestParameters;
    Anybuf digest;           /* the MAC */
    Anybuf salt;             /* the salt of the MAC's key */
    uint32_t iterations;     /* of the derivation of the MAC's key */
    Anybuf macInput;         /* what the MAC is made over */
    KAHookFunc macFunc;      /* writes at most 60 octets, which is what `*outputLength` holds at the call */
    Anybuf macFuncParameter; /* the hook gets a copy of it, or null if it is empty */
} MacRecord;
KARIL_SIZE_32(MacRecord, 188);

/*
 * Runs the hook over `macInput`, stores its result in `digest`, and writes MacData:
 * SEQUENCE { SEQUENCE { SEQUENCE { digestAlgorithm, NULL }, digest }, salt, iterations }.
 * `*out`: a heap record, which the caller frees with KI_FreeAnybuf.
 * Departure from DER: an iteration count of 1 is written, though it is the default.
 * Returns 0; the hook's own status; KACERT_InvalidParamErr also if the hook, the input or the digest algorithm is
 * missing; KACERT_InvalidLengthErr for a hook that wrote more than 60 octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeMac(MacRecord *mac, Anybuf **out);

/*
 * Reads MacData. `source`: one element, exactly; its length and data must not be 0. Stores digest algorithm, digest,
 * salt and iteration count, 1 if there is none. What follows the digest algorithm's identifier is not looked at, nor is
 * the tag of the salt. After a failure to read the record is as it was.
 * If there is a hook, it is run over `macInput`, and `verified` becomes 1 if it makes the digest that was read, else 0:
 * a digest that does not match is status 0. The comparison takes the same time wherever two digests differ.
 * Returns 0; the hook's own status, with `verified` 0; KACERT_InvalidItemErr if digest or salt is missing, or if the
 * digest is no OCTET STRING; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr, also for a hook
 * that wrote more than 60 octets; KACERT_InvalidParamErr; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_DecodeMac(MacRecord *mac, const Anybuf *source);

/*
 * Writes the parameters of password-based encryption (RFC 7292 appendix C): SEQUENCE { salt OCTET STRING, iterations
 * INTEGER }. `salt`: `saltLength` octets; null only with length 0. `output`: receives the DER; the caller sees to its
 * size, saltLength + 20 octets are enough. `*outputLength`: its octets.
 * Returns 0; KACERT_InvalidParamErr; KACERT_InvalidLengthErr for more than 32 bits of octets; KACERT_MemoryErr.
 */
KARIL_API int32_t KA_PKCS12_EncodeParameter(const uint8_t *salt, uint32_t saltLength, uint32_t iterations,
                                            uint8_t *output, uint32_t *outputLength);

/*
 * Reads these parameters. `salt`: receives the salt; the caller sees to its size, `length` octets are enough.
 * `der`, `length`: a length above 0 bounds what the element's header claims (KACERT_LengthNotEqualErr), and 0 trusts
 * the header. Octets after the element are ignored. The iteration count must be there. The tag of the salt is not
 * looked at. After a failure no output is changed.
 * Returns 0; KACERT_InvalidTagErr; KACERT_LengthNotEqualErr; KACERT_InvalidLengthErr; KACERT_InvalidParamErr, also for
 * a missing salt or count.
 */
KARIL_API int32_t KA_PKCS12_DecodeParameter(uint8_t *salt, uint32_t *saltLength, uint32_t *iterations,
                                            const uint8_t *der, uint32_t length);

#ifdef __cplusplus
}
#endif

#endif
