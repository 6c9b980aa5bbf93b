// karil verify: certificates and CRLs against their issuer, requests against their own key.
#include "verify.h"

#include "command.h"
#include "kind.h"
#include "names.h"
#include "printer.h"

#include <memory>

namespace tool {
namespace {

std::vector<karil::Certificate> readCertificates(const std::vector<std::string> &files) {
    std::vector<karil::Certificate> found;
    for (const std::string &file : files)
        for (const Document &document : readDocuments(file))
            found.push_back(decodeCertificate(document.octets, document.file));
    return found;
}

// The checks against the issuer that passes them all, else against one of the right name, else against the first.
template <class Checking>
Checks bestOf(const std::vector<karil::Certificate> &issuers, const Element &name, Checking checking) {
    const karil::Certificate *best = nullptr;
    for (const karil::Certificate &each : issuers) {
        if (!isSameName(partsOf(each).subject, name))
            continue;
        if (Checks checks = checking(each); areGood(checks))
            return checks;
        best = best == nullptr ? &each : best;
    }
    if (issuers.empty())
        throw Failure{Exit::Misuse, "the certificate of the issuer is needed: --issuer CERT"};
    return checking(best == nullptr ? issuers.front() : *best);
}

Checks checksOf(Printer &printer, const Document &document, Kind kind, const std::vector<karil::Certificate> &issuers) {
    if (kind == Kind::Certificate) {
        const karil::Certificate certificate = decodeCertificate(document.octets, document.file);
        const CertificateParts parts = partsOf(certificate);
        printer.field("subject", nameText(parts.subject));
        printer.field("issuer", nameText(parts.issuer));
        return bestOf(issuers, parts.issuer,
                      [&](const karil::Certificate &issuer) { return checkCertificate(certificate, issuer); });
    }
    if (kind == Kind::RevocationList) {
        const karil::RevocationList crl = decodeRevocationList(document.octets, document.file);
        constexpr std::size_t position = 2;
        const Element issuer = Elements(elementOf(bytesOf(crl->tbs)).content)[position];
        printer.field("issuer", nameText(issuer));
        return bestOf(issuers, issuer, [&](const karil::Certificate &each) { return checkRevocationList(crl, each); });
    }
    const karil::CertificationRequest request = decodeRequest(document.octets, document.file);
    const Elements fields(elementOf(bytesOf(request->tbs)).content);
    printer.field("subject", nameText(fields[1]));
    const karil::Bytes algorithm = bytesOf(request->outerSignatureAlgorithm.oid);
    return {checkSignature({bytesOf(request->tbs), algorithm, algorithm, bytesOf(request->signature)}, fields[2])};
}

Exit verify(const VerifyOptions &options) {
    const Document document = readDocument(options.file);
    const std::vector<karil::Certificate> issuers = readCertificates(options.issuers);
    const Kind kind = kindOf(document);
    const bool isKnown =
        kind == Kind::Certificate || kind == Kind::RevocationList || kind == Kind::Request || kind == Kind::Message;
    if (!isKnown)
        throw Failure{Exit::Misuse, document.file + " is a " + std::string(factsOf(kind).name) +
                                        ", and there is nothing to verify in it"};
    Printer printer(options.asJson ? Form::Json : Form::Text);
    bool isGood = false;
    {
        const Printer::Level one = printer.object("");
        printer.field("file", document.file);
        printer.field("kind", std::string(factsOf(kind).name));
        if (kind == Kind::Message)
            isGood = verifyMessage(printer, document, options, issuers);
        else {
            const Checks checks = checksOf(printer, document, kind, issuers);
            showChecks(printer, checks);
            isGood = areGood(checks);
        }
        printer.field("verdict", std::string(isGood ? "good" : "bad"));
    }
    printer.flush();
    return isGood ? Exit::Good : Exit::BadVerdict;
}

} // namespace

void addVerify(CLI::App &app, Run &run) {
    const auto options = std::make_shared<VerifyOptions>();
    CLI::App *command = app.add_subcommand("verify", "Verifies a certificate, a CRL, a request or a signed message");
    command->add_option("FILE", options->file, "What to verify; - is standard input")->required();
    command->add_option("--issuer", options->issuers,
                        "Certificates of issuers that are trusted: of a certificate or CRL the one above it, of a "
                        "message where the chains of its signers end");
    command->add_option("--content", options->content, "The content of a message that does not hold it");
    command->add_flag("--json", options->asJson, "JSON instead of text");
    command->footer("Ends with 0 for a good verdict, 1 for a bad one. One link is looked at, with names, signature, "
                    "the issuer's right to sign, and dates; revocation is not.");
    command->callback([options, &run] { run = [options] { return verify(*options); }; });
}

} // namespace tool
