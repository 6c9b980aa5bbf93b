#include "pfx.h"

namespace tool {

Secret pfxPassword(karil::Bytes typed) {
    // Room for all of it from the start, so that no copy is left behind by a vector that grows.
    Secret password{karil::Octets(typed.size())};
    std::size_t length = 0;
    for (std::size_t i = 0; i < typed.size(); ++i) {
        const std::uint8_t octet = typed[i];
        const bool hasNext = i + 1 < typed.size() && (typed[i + 1] & 0xC0) == 0x80;
        if (octet >= 0xC4 && octet < 0xF8 && hasNext)
            throw Failure{Exit::Misuse,
                          "the password has a character above U+00FF, which cannot be written in a PFX here"};
        const bool isPair = (octet == 0xC2 || octet == 0xC3) && hasNext;
        password.octets()[length++] =
            isPair ? static_cast<std::uint8_t>((octet & 3) << 6 | (typed[++i] & 0x3F)) : octet;
    }
    password.octets().resize(length);
    return password;
}

karil::Pfx decodePfx(karil::Bytes der, karil::Bytes typed, const std::string &where) {
    karil::Pfx pfx = valueOf(karil::Pfx::make(), where);
    const Secret password = pfxPassword(typed);
    std::int32_t verdict = 0;
    const karil::StatusCode status = karil::call(KA_PKCS12_DecodePFX, pfx, password.bytes(), der, &verdict);
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
