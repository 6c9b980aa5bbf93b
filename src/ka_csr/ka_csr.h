// Certification requests: the context, its attributes, encoding and decoding.
#pragma once

#include "karil/csr.h"

#include "ka_family.h"

namespace karil {

template <> inline void clearNode(CsrAttributeNode &node) {
    freeData(node.oid);
    freeData(node.value);
}

// Adds the node at the end of the list.
void appendAttribute(CsrEncodeCtx &ctx, NodePtr<CsrAttributeNode> node);

} // namespace karil
