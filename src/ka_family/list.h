// Lists that a context owns, linked by `next`. append() of ka_low adds a node at the end.
#pragma once

#include "context.h"

namespace karil {

// Frees what a node owns besides itself: a family says it for each of its nodes.
template <class Node> void clearNode(Node &node) = delete;

struct FreeNode {
    template <class Node> void operator()(Node *node) const noexcept {
        clearNode(*node);
        KAPR_Free(node);
    }
};
template <class Node> using NodePtr = std::unique_ptr<Node, FreeNode>;

// A zeroed node.
template <class Node> [[nodiscard]] Status createNode(NodePtr<Node> &node) {
    void *record = nullptr;
    KA_PASS(createRecord(&node, sizeof(Node), record));
    node.reset(static_cast<Node *>(record));
    return KACERT_Ok;
}

// The same with room for octets of its own behind it, at `octets`: see placePart().
template <class Node> [[nodiscard]] Status createNode(NodePtr<Node> &node, uint64_t room, uint8_t *&octets) {
    if (room > UINT32_MAX - sizeof(Node))
        return KACERT_MemoryErr;
    void *record = nullptr;
    KA_PASS(createRecord(&node, static_cast<uint32_t>(sizeof(Node) + room), record));
    node.reset(static_cast<Node *>(record));
    octets = static_cast<uint8_t *>(record) + sizeof(Node);
    return KACERT_Ok;
}

// A node that a caller adds, with an object identifier and a value.
[[nodiscard]] Status copyPair(Anybuf &oid, Bytes oidOctets, Anybuf &value, Bytes valueOctets);
template <class Node> [[nodiscard]] Status createPair(NodePtr<Node> &node, Bytes oid, Bytes value) {
    KA_PASS(createNode(node));
    node->id = 52;
    return copyPair(node->oid, oid, node->value, value);
}

template <class Node> void freeList(Node *&first) {
    while (first != nullptr) {
        const NodePtr<Node> node(first);
        first = node->next;
    }
}

// A list with marks: an append takes one step, and so does the next of a walk by position.
template <auto Link, class Node> void appendMarked(Node *&first, ListMarks &marks, Node *node) {
    auto *last = static_cast<Node *>(marks.last);
    append<Link>(first, last, node);
    marks.last = last;
}
// The node at `position`, from 1, or null.
template <auto Link, class Node> Node *nodeAt(Node *first, ListMarks &marks, int32_t position) {
    if (position < 1)
        return nullptr;
    const auto wanted = static_cast<uint32_t>(position);
    const bool goesOn = marks.node != nullptr && marks.position <= wanted;
    Node *node = goesOn ? static_cast<Node *>(marks.node) : first;
    for (uint32_t at = goesOn ? marks.position : 1; at < wanted && node != nullptr; ++at)
        node = node->*Link;
    if (node != nullptr) {
        marks.node = node;
        marks.position = wanted;
    }
    return node;
}

// The node numbered `index`, from 1; without one `index` becomes their number. The marks are notes that a Get makes in
// a context whose data it leaves alone.
template <class Node> const Node *numbered(Node *first, ListMarks &marks, uint32_t &index) {
    if (index <= INT32_MAX)
        if (const Node *found = nodeAt<&Node::next>(first, marks, static_cast<int32_t>(index)); found != nullptr)
            return found;
    index = 0;
    for (const Node *node = first; node != nullptr; node = node->next)
        ++index;
    return nullptr;
}

} // namespace karil
