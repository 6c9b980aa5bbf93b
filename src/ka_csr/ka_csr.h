// Certification requests: the context, its attributes, encoding and decoding.
#pragma once

#include "karil/csr.h"

#include "ka_family.h"

namespace karil {

template <> inline void clearNode(CsrAttributeNode &node) {
    freeData(node.oid);
    freeData(node.value);
}

// Hangs the node behind the others.
void appendAttribute(CsrEncodeCtx &ctx, NodePtr<CsrAttributeNode> node);

} // namespace karil
