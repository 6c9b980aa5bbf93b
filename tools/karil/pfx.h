// PFX files as they are read.
#ifndef KARIL_TOOL_PFX_H
#define KARIL_TOOL_PFX_H

#include "failure.h"

#include <string>

namespace tool {

// Decodes a PFX. A wrong password is a bad verdict, and ciphers that the library does not have are told as such.
karil::Pfx decodePfx(karil::Bytes der, karil::Bytes password, const std::string &where);

} // namespace tool

#endif
