// CRLs. The entries go out one by one, so that a million of them takes no more memory than the decoded list.
#include "show.h"

#include "decoded.h"
#include "extensions.h"
#include "names.h"
#include "progress.h"
#include "text.h"

namespace tool {
namespace {

void showEntry(Printer &printer, const RevokedEntry &entry) {
    const std::string serial = hex(bytesOf(entry.serialNumber));
    const Moment when{entry.revocationDate.utcValue};
    if (entry.hasReason != 0 && entry.reason.length == 1)
        printer.row({{"serial number", serial}, {"revoked", when}, {"reason", reasonName(entry.reason.data[0])}});
    else
        printer.row({{"serial number", serial}, {"revoked", when}});
}

} // namespace

void showRevocationList(const Shown &to, karil::Bytes der) {
    Printer &printer = to.printer;
    const karil::RevocationList crl = decodeRevocationList(der, to.where);
    printer.field("version", std::int64_t{crl->version} + 1);
    printer.field("signature algorithm", Identifier{bytesOf(crl->innerSignatureAlgorithm.oid)});
    const Elements fields(elementOf(bytesOf(crl->tbs)).content);
    showName(printer, "issuer", fields[2]);
    printer.field("this update", Moment{crl->thisUpdate.utcValue});
    if (crl->hasNextUpdate != 0)
        printer.field("next update", Moment{crl->nextUpdate.utcValue});
    for (const Element &field : fields)
        if (field.tag == TagContext0)
            showExtensions(printer, elementOf(field.content));
    std::int64_t count = 0;
    for (const RevokedEntry *entry = crl->firstRevoked; entry != nullptr; entry = entry->next)
        ++count;
    printer.field("entries", count);
    const Printer::Level entries = printer.list("revoked");
    Progress progress("entries", static_cast<std::uint64_t>(count));
    for (const RevokedEntry *entry = crl->firstRevoked; entry != nullptr; entry = entry->next) {
        showEntry(printer, *entry);
        progress.step();
    }
}

} // namespace tool
