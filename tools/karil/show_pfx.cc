// PFX files.
#include "show.h"

#include "decoded.h"
#include "password.h"
#include "pfx.h"

namespace tool {
void showPfx(const Shown &to, karil::Bytes der) {
    Printer &printer = to.printer;
    const Secret password = readPassword(to.options.passwordFile, "Password of " + to.where);
    const karil::Pfx pfx = decodePfx(der, password.bytes(), to.where);
    printer.field("MAC", std::string("good"));
    if (pfx->privateKey.length > 0) {
        const Printer::Level key = printer.object("private key");
        showRsaPrivate(to, bytesOf(pfx->privateKey));
        showAttributes(printer, "bag attributes", pfx->bagAttributes.next);
        showAttributes(printer, "key attributes", pfx->keyAttributes.next);
    }
    const Printer::Level certificates = printer.list("certificates");
    for (const PfxCertificate *each = pfx->firstCertificate; each != nullptr; each = each->next) {
        const Printer::Level one = printer.item();
        showAttributes(printer, "bag attributes", each->attributes.next);
        showCertificate(to, bytesOf(each->certificate));
    }
}

} // namespace tool
