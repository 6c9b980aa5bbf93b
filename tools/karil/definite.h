// BER in definite form, which is all that the library reads. The library's own conversion scans octets, so that it
// stumbles over a content that looks like an opening or a closing, as long contents do.
#ifndef KARIL_TOOL_DEFINITE_H
#define KARIL_TOOL_DEFINITE_H

#include "karil/karil.hpp"

#include <optional>

namespace tool {

// The first element in octets with definite lengths, and with strings in one piece. Nothing if it is no whole element,
// or nested too deeply.
std::optional<karil::Octets> definiteForm(karil::Bytes octets);

} // namespace tool

#endif
