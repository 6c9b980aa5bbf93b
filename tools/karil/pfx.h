// PFX files as they are read.
#ifndef KARIL_TOOL_PFX_H
#define KARIL_TOOL_PFX_H

#include "failure.h"
#include "password.h"

#include <string>

namespace tool {

// A password, typed in UTF-8, as the library takes it: each octet becomes one 16-bit character, as other programs have
// it for characters up to U+00FF. A Failure for others. What is no UTF-8 is taken octet by octet.
Secret pfxPassword(karil::Bytes typed);

// Decodes a PFX. A wrong password is a bad verdict, and ciphers that the library does not have are told as such.
karil::Pfx decodePfx(karil::Bytes der, karil::Bytes typed, const std::string &where);

} // namespace tool

#endif
