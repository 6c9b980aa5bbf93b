// Certification requests: the context, its attributes, encoding and decoding.
#pragma once

#include "karil/csr.h"

#include "ka_cert.h"

namespace karil {

void freeAttribute(CsrAttributeNode *node);
using CsrAttributePtr = std::unique_ptr<CsrAttributeNode, By<freeAttribute>>;

// Hangs the node behind the others.
void appendAttribute(CsrEncodeCtx &ctx, CsrAttributePtr node);

Attributes<CsrEncodeCtx> csrAttributes();

} // namespace karil
