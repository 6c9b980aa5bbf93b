// OCSP requests and the single requests in them.
#pragma once

#include "karil/ocsp_request.h"

#include "ka_ocsp_base.h"

namespace karil {

// Failed allocations of Set functions have the status of a bad argument.
constexpr ItemRefusals RequestRefusals = {.noMemory = KACERT_InvalidItemErr,
                                          .idWords = "------------>The OCSPAttributeValue InvalidItem"};

} // namespace karil
