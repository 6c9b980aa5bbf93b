// Extensions and keys, which certificates, CRLs and requests have in common.
#ifndef KARIL_TOOL_EXTENSIONS_H
#define KARIL_TOOL_EXTENSIONS_H

#include "der.h"
#include "printer.h"

namespace tool {

// `extensions`: the SEQUENCE OF Extension. Without one nothing is written.
void showExtensions(Printer &printer, const Element &extensions);

// The value of one extension; none if it is not there.
Element extensionValue(const Element &extensions, karil::Bytes oid);

// `info`: a SubjectPublicKeyInfo.
void showPublicKey(Printer &printer, const Element &info);

// The bits of a number.
std::int64_t bitsOf(karil::Bytes magnitude);

} // namespace tool

#endif
