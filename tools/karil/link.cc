#include "link.h"

#include "crypto.h"
#include "extensions.h"
#include "names.h"
#include "text.h"

#include "karil/oids.h"

#include <algorithm>
#include <ctime>

namespace tool {
namespace {

// Times are compared as the library reads them; year 0 to 2038 fits.
std::int64_t now() {
    return std::time(nullptr);
}

Check checkNames(const Element &issuer, const Element &subject) {
    const bool isSame = isSameName(issuer, subject);
    return {"names", isSame, isSame ? "the issuer's" : "the issuer is " + nameText(issuer)};
}

// Whether a certificate may sign what needs this bit of the key usage.
Check checkAuthority(const karil::Certificate &issuer, unsigned bit, const char *what) {
    const CertificateParts parts = partsOf(issuer);
    const Element constraints = extensionValue(parts.extensions, KARIL_OID_BASIC_CONSTRAINTS);
    const Element flag = elementOf(constraints.content);
    const bool isAuthority = flag.tag == TagBoolean && !flag.content.empty() && flag.content[0] != 0;
    const Element usage = extensionValue(parts.extensions, KARIL_OID_KEY_USAGE);
    const bool isAllowed = !usage || (usage.content.size() > 1 && (usage.content[1] & (0x80U >> bit)) != 0);
    const char *refusal = !isAuthority ? "the issuer's certificate is not that of an authority"
                                       : "the key usage of the issuer's certificate does not allow it to sign ";
    if (isAuthority && isAllowed)
        return {"authority", true, std::string("may sign ") + what};
    return {"authority", false, isAuthority ? std::string(refusal) + what : refusal};
}

constexpr unsigned KeyCertSign = 5;
constexpr unsigned CrlSign = 6;

Check datesAt(std::int64_t first, std::int64_t last, const char *early, const char *late) {
    if (now() < first)
        return {"dates", false, early + timeText(first)};
    if (now() > last)
        return {"dates", false, late + timeText(last)};
    return {"dates", true, "until " + timeText(last)};
}

} // namespace

bool areGood(const Checks &checks) {
    return std::all_of(checks.begin(), checks.end(), [](const Check &check) { return check.isGood; });
}

void showChecks(Printer &printer, const Checks &checks) {
    for (const Check &check : checks)
        printer.field(check.label, std::string(check.isGood ? "good: " : "bad: ") + check.words);
}

Check checkSignature(const Signed &object, const Element &publicKey) {
    const std::string algorithm = oidName(object.outerAlgorithm);
    if (!std::ranges::equal(object.innerAlgorithm, object.outerAlgorithm))
        return {"signature", false, "it names two algorithms"};
    const bool isGood = isSignedBy(publicKey, object.outerAlgorithm, object.octets, object.signature);
    return {"signature", isGood, algorithm};
}

Check checkDates(const karil::Certificate &certificate) {
    return datesAt(dateOf(certificate, CERT_VALIDFROM), dateOf(certificate, CERT_VALIDTO), "not before ",
                   "expired on ");
}

Checks checkCertificate(const karil::Certificate &certificate, const karil::Certificate &issuer) {
    const CertificateParts parts = partsOf(certificate);
    const CertificateParts above = partsOf(issuer);
    Checks checks{checkNames(parts.issuer, above.subject),
                  checkSignature({bytesOf(certificate->tbs), bytesOf(certificate->innerSignatureAlgorithm.oid),
                                  bytesOf(certificate->outerSignatureAlgorithm.oid), bytesOf(certificate->signature)},
                                 above.publicKey)};
    // A certificate that signs itself needs no right to do so.
    if (!std::ranges::equal(bytesOf(certificate->encoded), bytesOf(issuer->encoded)))
        checks.push_back(checkAuthority(issuer, KeyCertSign, "certificates"));
    checks.push_back(checkDates(certificate));
    return checks;
}

Checks checkRevocationList(const karil::RevocationList &crl, const karil::Certificate &issuer) {
    const CertificateParts above = partsOf(issuer);
    constexpr std::size_t name = 2;
    const Elements fields(elementOf(bytesOf(crl->tbs)).content);
    const std::int64_t last = crl->hasNextUpdate != 0 ? crl->nextUpdate.utcValue : INT32_MAX;
    return {checkNames(fields[name], above.subject),
            checkSignature({bytesOf(crl->tbs), bytesOf(crl->innerSignatureAlgorithm.oid),
                            bytesOf(crl->outerSignatureAlgorithm.oid), bytesOf(crl->signature)},
                           above.publicKey),
            checkAuthority(issuer, CrlSign, "CRLs"),
            datesAt(crl->thisUpdate.utcValue, last, "not before ", "outdated since ")};
}

} // namespace tool
