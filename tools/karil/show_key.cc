// Keys: PKCS#1, and the forms around it.
#include "show.h"

#include "extensions.h"
#include "names.h"
#include "text.h"

#include <array>

namespace tool {
namespace {

[[noreturn]] void refuse(karil::StatusCode status, const std::string &where) {
    throw Failure{Exit::Unreadable, inWords(status, where)};
}

void showPublicNumbers(Printer &printer, const Element &modulus, const Element &exponent) {
    printer.field("bits", bitsOf(modulus.content));
    printer.field("modulus", hex(magnitudeOf(modulus)));
    printer.field("exponent", numberOf(exponent));
}

void showRsaPublic(const Shown &to, karil::Bytes der) {
    const Elements numbers(elementOf(der).content);
    if (numbers[1].tag != TagInteger)
        refuse(KACERT_InvalidParamErr, to.where);
    showPublicNumbers(to.printer, numbers[0], numbers[1]);
}

} // namespace

void showRsaPrivate(const Shown &to, karil::Bytes der) {
    constexpr std::array<std::string_view, 9> labels = {"version",          "modulus",    "exponent",
                                                        "private exponent", "prime 1",    "prime 2",
                                                        "exponent 1",       "exponent 2", "coefficient"};
    const Elements numbers(elementOf(der).content);
    for (std::size_t i = 0; i < labels.size(); ++i)
        if (numbers[i].tag != TagInteger)
            refuse(KACERT_InvalidPrivateKeyErr, to.where);
    showPublicNumbers(to.printer, numbers[1], numbers[2]);
    constexpr std::size_t firstSecret = 3;
    for (std::size_t i = firstSecret; to.options.isSecretShown && i < labels.size(); ++i)
        to.printer.field(labels[i], hex(magnitudeOf(numbers[i])));
}

void showKey(const Shown &to, karil::Bytes der, Kind kind) {
    const Elements fields(elementOf(der).content);
    switch (kind) {
    case Kind::RsaPublicKey:
        return showRsaPublic(to, der);
    case Kind::RsaPrivateKey:
        return showRsaPrivate(to, der);
    case Kind::PublicKeyInfo:
        return showPublicKey(to.printer, elementOf(der));
    case Kind::PrivateKeyInfo: {
        const std::string algorithm = oidName(elementOf(fields[1].content).content);
        to.printer.field("algorithm", Identifier{elementOf(fields[1].content).content});
        if (algorithm == "rsaEncryption")
            showRsaPrivate(to, fields[2].content);
        return;
    }
    default:
        throw Failure{Exit::Unreadable, to.where + " is a private key under a password, which is not opened here"};
    }
}

} // namespace tool
