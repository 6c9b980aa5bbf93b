// PFX files.
#include "show.h"

#include "decoded.h"
#include "names.h"
#include "password.h"
#include "pfx.h"
#include "text.h"

namespace tool {
namespace {

void showAttributes(Printer &printer, std::string_view label, const AttributeHead &head) {
    if (head.next == nullptr)
        return;
    const Printer::Level list = printer.list(label);
    for (const AttributeRecord *each = head.next; each != nullptr; each = each->next)
        showAttribute(printer, bytesOf(each->oid), elementOf(bytesOf(each->value)));
}

} // namespace

void showPfx(const Shown &to, karil::Bytes der) {
    Printer &printer = to.printer;
    const Secret password = readPassword(to.options.passwordFile, "Password of " + to.where);
    const karil::Pfx pfx = decodePfx(der, password.bytes(), to.where);
    printer.field("MAC", std::string("good"));
    if (pfx->privateKey.length > 0) {
        const Printer::Level key = printer.object("private key");
        showRsaPrivate(to, bytesOf(pfx->privateKey));
        showAttributes(printer, "bag attributes", pfx->bagAttributes);
        showAttributes(printer, "key attributes", pfx->keyAttributes);
    }
    const Printer::Level certificates = printer.list("certificates");
    for (const PfxCertificate *each = pfx->firstCertificate; each != nullptr; each = each->next) {
        const Printer::Level one = printer.item();
        showAttributes(printer, "bag attributes", each->attributes);
        showCertificate(to, bytesOf(each->certificate));
    }
}

} // namespace tool
