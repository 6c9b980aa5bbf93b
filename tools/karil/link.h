// The checks of one link: a certificate or a CRL against the certificate of its issuer.
#ifndef KARIL_TOOL_LINK_H
#define KARIL_TOOL_LINK_H

#include "decoded.h"
#include "printer.h"

#include <string>
#include <vector>

namespace tool {

// One thing that was looked at, and what it came to.
struct Check {
    std::string label;
    bool isGood;
    std::string words;
};
using Checks = std::vector<Check>;

bool areGood(const Checks &checks);
void showChecks(Printer &printer, const Checks &checks);

// The signature of something that is signed: its octets, the algorithms inside and outside of them, and the
// SubjectPublicKeyInfo of who signed. Throws a Failure for an algorithm that is not known.
struct Signed {
    karil::Bytes octets;
    karil::Bytes innerAlgorithm;
    karil::Bytes outerAlgorithm;
    karil::Bytes signature;
};
Check checkSignature(const Signed &object, const Element &publicKey);

// Names, signature, the issuer's right to sign, and the dates.
Checks checkCertificate(const karil::Certificate &certificate, const karil::Certificate &issuer);
Checks checkRevocationList(const karil::RevocationList &crl, const karil::Certificate &issuer);
Check checkDates(const karil::Certificate &certificate);

} // namespace tool

#endif
