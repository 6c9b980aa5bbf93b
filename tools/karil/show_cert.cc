// Certificates and certification requests.
#include "show.h"

#include "crypto.h"
#include "decoded.h"
#include "extensions.h"
#include "names.h"
#include "text.h"

namespace tool {

void showCertificate(const Shown &to, karil::Bytes der) {
    Printer &printer = to.printer;
    const karil::Certificate certificate = decodeCertificate(der, to.where);
    const CertificateParts parts = partsOf(certificate);
    printer.field("version", std::int64_t{certificate->version} + 1);
    printer.field("serial number", hex(bytesOf(certificate->serialNumber)));
    printer.field("signature algorithm", Identifier{bytesOf(certificate->outerSignatureAlgorithm.oid)});
    showName(printer, "issuer", parts.issuer);
    printer.field("not before", Moment{dateOf(certificate, CERT_VALIDFROM)});
    printer.field("not after", Moment{dateOf(certificate, CERT_VALIDTO)});
    showName(printer, "subject", parts.subject);
    showPublicKey(printer, parts.publicKey);
    showExtensions(printer, parts.extensions);
    const karil::Bytes whole = bytesOf(certificate->encoded);
    printer.field("SHA-1 fingerprint", hex(digestOf(EVP_sha1(), whole), ':'));
    printer.field("SHA-256 fingerprint", hex(digestOf(EVP_sha256(), whole), ':'));
}

void showRequest(const Shown &to, karil::Bytes der) {
    Printer &printer = to.printer;
    const karil::CertificationRequest request = decodeRequest(der, to.where);
    const Elements fields(elementOf(bytesOf(request->tbs)).content);
    printer.field("version", std::int64_t{request->version} + 1);
    showName(printer, "subject", fields[1]);
    showPublicKey(printer, fields[2]);
    printer.field("signature algorithm", Identifier{bytesOf(request->outerSignatureAlgorithm.oid)});
    const Printer::Level attributes = printer.list("attributes");
    for (const CsrAttributeNode *node = request->attributes; node != nullptr; node = node->next)
        showAttribute(printer, bytesOf(node->oid), elementOf(bytesOf(node->value)));
}

void showAttribute(Printer &printer, karil::Bytes oid, const Element &value) {
    const Printer::Level attribute = printer.item();
    const std::string name = oidName(oid);
    printer.field("name", name);
    printer.field("oid", dotted(oid));
    const std::optional<std::int64_t> seconds = secondsOf(value);
    // The library puts what it is given for a request into an OCTET STRING.
    const bool isWrapped = value.tag == TagOctetString;
    if (name == "extensionRequest")
        showExtensions(printer, isWrapped ? elementOf(value.content) : value);
    else if (isWrapped && (name == "challengePassword" || name == "unstructuredName"))
        printer.field("value", fromLocal(value.content));
    else if (seconds)
        printer.field("value", Moment{*seconds});
    else if (value.tag == TagOid)
        printer.field("value", Identifier{value.content});
    else
        printer.field("value", stringText(value));
}

void showAttributes(Printer &printer, std::string_view label, const AttributeRecord *first) {
    if (first == nullptr)
        return;
    const Printer::Level list = printer.list(label);
    for (const AttributeRecord *each = first; each != nullptr; each = each->next)
        showAttribute(printer, bytesOf(each->oid), elementOf(bytesOf(each->value)));
}

} // namespace tool
