// DER elements that no function of the library writes.
#ifndef KARIL_TOOL_DER_WRITE_H
#define KARIL_TOOL_DER_WRITE_H

#include "der.h"

#include <initializer_list>

namespace tool {

// The parts, one after the other.
karil::Octets joined(std::initializer_list<karil::Bytes> parts);

// An element whose content is the parts, one after the other.
karil::Octets wrapped(std::uint8_t tag, std::initializer_list<karil::Bytes> parts);

// Whether both have the same octets.
bool isSame(karil::Bytes one, karil::Bytes other);

} // namespace tool

#endif
