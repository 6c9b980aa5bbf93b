#include "show.h"

#include "command.h"
#include "progress.h"
#include "report.h"

#include <memory>

namespace tool {
namespace {

struct Options {
    std::vector<std::string> files;
    bool asJson = false;
    ShowOptions show;
};

void showDocument(const Shown &to, const Document &document) {
    to.printer.field("file", document.file);
    const Kind kind = kindOf(document);
    to.printer.field("kind", std::string(factsOf(kind).name));
    switch (kind) {
    case Kind::Certificate:
        return showCertificate(to, document.octets);
    case Kind::RevocationList:
        return showRevocationList(to, document.octets);
    case Kind::Request:
        return showRequest(to, document.octets);
    case Kind::OcspRequest:
        return showOcspRequest(to, document.octets);
    case Kind::OcspResponse:
        return showOcspResponse(to, document.octets);
    case Kind::Message:
        return showMessage(to, document.octets);
    case Kind::Pfx:
        return showPfx(to, document.octets);
    case Kind::RsaPublicKey:
    case Kind::RsaPrivateKey:
    case Kind::PublicKeyInfo:
    case Kind::PrivateKeyInfo:
    case Kind::EncryptedPrivateKeyInfo:
        return showKey(to, document.octets, kind);
    }
}

// What cannot be read does not stop the rest; for programs the error stands in the object.
Exit guardedIn(Printer &printer, const std::function<void()> &work) {
    return guarded(
        [&] {
            work();
            return Exit::Good;
        },
        [&](const std::string &message) {
            if (printer.isForPrograms())
                printer.field("error", message);
        });
}

Exit showFile(Printer &printer, const std::string &file, const ShowOptions &options) {
    std::vector<Document> documents;
    Exit exit = guarded(
        [&] {
            documents = readDocuments(file);
            return Exit::Good;
        },
        [&](const std::string &message) {
            if (printer.isForPrograms())
                printer.row({{"file", nameOf(file)}, {"error", message}});
        });
    for (const Document &document : documents) {
        const Printer::Level one = printer.item();
        Exit inside = Exit::Good;
        exit = worse(exit, guardedIn(printer, [&] {
                         showDocument({printer, document.file, options, inside}, document);
                     }));
        exit = worse(exit, inside);
    }
    return exit;
}

Exit show(const Options &options) {
    Exit exit = Exit::Good;
    Printer printer(options.asJson ? Form::Json : Form::Text);
    {
        const Printer::Level all = printer.list("");
        Progress progress("files", options.files.size());
        for (const std::string &file : options.files) {
            exit = worse(exit, showFile(printer, file, options.show));
            progress.slowStep();
        }
    }
    printer.flush();
    return exit;
}

} // namespace

void showEach(const Shown &to, std::string_view label, const Anybuf *first, void (*show)(const Shown &, karil::Bytes)) {
    const Printer::Level list = to.printer.list(label);
    for (const Anybuf *each = first; each != nullptr; each = each->next) {
        const Printer::Level one = to.printer.item();
        to.exit = worse(to.exit, guardedIn(to.printer, [&] { show(to, {each->data, each->length}); }));
    }
}

void addShow(CLI::App &app, Run &run) {
    const auto options = std::make_shared<Options>();
    CLI::App *command = app.add_subcommand("show", "Shows certificates, CRLs, requests, keys, OCSP and PKCS#7 "
                                                   "messages and PFX files, PEM or DER");
    command->add_option("FILE", options->files, "The files to show; - is standard input")->required();
    command->add_flag("--json", options->asJson, "A list of JSON objects, one for each object in the files");
    command->add_flag("--secret", options->show.isSecretShown, "The numbers of private keys as well");
    command->add_option("--password-file", options->show.passwordFile,
                        "The password of a PFX is the first line of this file; without it the terminal is asked");
    command->callback([options, &run] { run = [options] { return show(*options); }; });
}

} // namespace tool
