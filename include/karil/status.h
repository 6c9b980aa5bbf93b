/*
 * karil: status codes in words, for messages to people. These functions are inline: nothing is exported. Which status
 * means what for a function is told in the function's own comment.
 */
#ifndef KARIL_STATUS_H
#define KARIL_STATUS_H

#include "karil/base.h"

/* Every status of base.h with a sentence: ROW(name, sentence). */
#define KARIL_STATUSES(ROW)                                                                                            \
    ROW(KACERT_Ok, "Done.")                                                                                            \
    ROW(KACERT_MemoryErr, "There is not enough memory, or a time lies outside 1970 to 2038.")                          \
    ROW(KACERT_InvalidLengthErr, "A length is out of bounds, or an element is cut off by the one around it.")          \
    ROW(KACERT_LengthNotEqualErr, "A DER length does not agree with the octets that are there.")                       \
    ROW(KACERT_InvalidTimeDigitErr, "A field of a time does not fit two decimal digits.")                              \
    ROW(KACERT_InvalidTimeEndErr, "A time does not have Z as its thirteenth character.")                               \
    ROW(KACERT_InvalidIntegerErr, "An integer cannot be written.")                                                     \
    ROW(KACERT_InvalidTagErr, "A DER tag is not the one that belongs there.")                                          \
    ROW(KACERT_InvalidSignatureLenErr, "The length of a signature is out of range.")                                   \
    ROW(KACERT_InvalidParamErr, "An argument or an input value is wrong, or a required one is missing.")               \
    ROW(KACERT_CertNotEndErr, "The octets of a certificate or of an extension end too early.")                         \
    ROW(KACERT_AttributeNotSupportErr, "The function does not know this attribute id.")                                \
    ROW(KACERT_CrlNotEndErr, "The octets of a CRL end too early.")                                                     \
    ROW(KACERT_CsrNotEndErr, "The octets of a request end too early.")                                                 \
    ROW(KACERT_InvalidPrivateKeyErr, "A number of a private key is missing.")                                          \
    ROW(KACERT_AttributeAlreadySet, "This attribute can be set once, and it was set before.")                          \
    ROW(KACERT_InvalidTimeErr, "A time to be written is negative.")                                                    \
    ROW(KACERT_DnNotEqualErr, "The names of issuer and subject do not match.")                                         \
    ROW(KACERT_TimeOutRangeErr, "The time is outside the validity.")                                                   \
    ROW(KACERT_InvalidSignatureAlgErr, "Verification does not know the signature algorithm.")                          \
    ROW(KACERT_InvalidItemErr, "A required item is null, absent or of the wrong kind.")                                \
    ROW(KAPKCS7_ContentTypeErr, "The content of a message is missing, or it is of another type.")                      \
    ROW(KAPKCS7_IndefiniteFormatErr, "An element of indefinite length is malformed.")                                  \
    ROW(KAPKCS7_GenKeyErr, "No RSA key could be made.")                                                                \
    ROW(KAPKCS7_DigestAlgErr, "The digest id is not known.")                                                           \
    ROW(KAPKCS7_RsaOperationErr, "An RSA operation, the random generator or a key derivation failed.")                 \
    ROW(KAPKCS7_SignErr, "The private-key step of signing failed.")                                                    \
    ROW(KACERT_VerifySignatureErr, "The signature does not verify, or its key could not be loaded.")                   \
    ROW(KACERT_AlgorithmNotSupportErr, "The algorithm or the object identifier is not known.")

#define KARIL_STATUS_NAME(NAME, TEXT)                                                                                  \
    case NAME:                                                                                                         \
        return #NAME;
#define KARIL_STATUS_TEXT(NAME, TEXT)                                                                                  \
    case NAME:                                                                                                         \
        return TEXT;

/* The name of a status, such as "KACERT_InvalidTagErr", or "unknown status". Never null. */
static inline const char *karil_status_name(int32_t status) {
    switch (status) {
        KARIL_STATUSES(KARIL_STATUS_NAME)
    default:
        return "unknown status";
    }
}

/* What a status means, in one English sentence. Never null. */
static inline const char *karil_status_text(int32_t status) {
    switch (status) {
        KARIL_STATUSES(KARIL_STATUS_TEXT)
    default:
        return "This number is no status of karil.";
    }
}

#undef KARIL_STATUS_NAME
#undef KARIL_STATUS_TEXT

#endif
