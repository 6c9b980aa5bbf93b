// OCSP responses and the single responses in them.
#pragma once

#include "karil/ocsp_response.h"

#include "ka_ocsp_base.h"

namespace karil {

constexpr ItemRefusals ResponseRefusals = {.noMemory = KACERT_MemoryErr};

} // namespace karil
