#include "pfx.h"

namespace tool {

karil::Pfx decodePfx(karil::Bytes der, karil::Bytes password, const std::string &where) {
    karil::Pfx pfx = valueOf(karil::Pfx::make(), where);
    std::int32_t verdict = 0;
    const karil::StatusCode status = karil::call(KA_PKCS12_DecodePFX, pfx, password, der, &verdict);
    // The MAC is looked at first: octets that were deciphered with a wrong key have statuses of all kinds.
    if (verdict == PKCS7_VERDICT_BAD)
        throw Failure{Exit::BadVerdict, where + ": the password is wrong, or the file was changed"};
    const bool isNew = status == KACERT_AlgorithmNotSupportErr || status == KAPKCS7_RsaOperationErr;
    check(status, isNew ? where + " (PBES2 and MACs by SHA-2, which current programs write by default, are not read: "
                                  "have them write with the old ciphers, as openssl pkcs12 -export -legacy does)"
                        : where);
    return pfx;
}

} // namespace tool
