// The parts of the command show: one function for each kind of document.
#ifndef KARIL_TOOL_SHOW_H
#define KARIL_TOOL_SHOW_H

#include "der.h"
#include "files.h"
#include "kind.h"
#include "printer.h"

#include <string>

namespace tool {

struct ShowOptions {
    bool isSecretShown = false; // the numbers of private keys
    std::string passwordFile;
};

// Each writes the fields of a document of its kind into the object that is open. A Failure names `where`.
struct Shown {
    Printer &printer;
    const std::string &where;
    const ShowOptions &options;
    Exit &exit; // Unreadable once a part of the document could not be read
};
void showCertificate(const Shown &to, karil::Bytes der);
void showRevocationList(const Shown &to, karil::Bytes der);
void showRequest(const Shown &to, karil::Bytes der);
void showKey(const Shown &to, karil::Bytes der, Kind kind);
void showOcspRequest(const Shown &to, karil::Bytes der);
void showOcspResponse(const Shown &to, karil::Bytes der);
void showMessage(const Shown &to, karil::Bytes der);
void showPfx(const Shown &to, karil::Bytes der);

// Parts that several kinds have: an RSAPrivateKey, and an attribute with its value as an item of the open list.
void showRsaPrivate(const Shown &to, karil::Bytes der);
void showAttribute(Printer &printer, karil::Bytes oid, const Element &value);
// A list of attributes; without any nothing is written.
void showAttributes(Printer &printer, std::string_view label, const AttributeRecord *first);
// A list with an object for each record of a chain. One that cannot be read does not stop the others.
void showEach(const Shown &to, std::string_view label, const Anybuf *first, void (*show)(const Shown &, karil::Bytes));

} // namespace tool

#endif
