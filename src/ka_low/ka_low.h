// The ground: what every folder of karil stands on. Owning handles, the trace frame, step helpers and copies.
#pragma once

#include "karil/base.h"
#include "karil/text.h"

#include "part.h"
#include "step.h"

#include <memory>
#include <span>
#include <string.h>

namespace karil {

using Bytes = std::span<const uint8_t>;

template <auto F> struct By {
    void operator()(auto *block) const noexcept { F(block); }
};
using AnybufPtr = std::unique_ptr<Anybuf, By<KI_FreeAnybuf>>; // a node and its chain
template <class T> using Owned = std::unique_ptr<T, By<KAPR_Free>>;

// A zeroed T with `room` octets after it, or null. The caller's Owned or a record of the library frees it.
template <class T> [[nodiscard]] T *create(const char *source, int line, uint64_t room = 0) {
    const uint64_t size = sizeof(T) + room;
    return size > UINT32_MAX ? nullptr : static_cast<T *>(KAPR_Malloc(source, line, static_cast<uint32_t>(size)));
}

// A zeroed block of `size` octets, or null.
[[nodiscard]] inline Owned<uint8_t> newBlock(const char *source, int line, uint64_t size) {
    void *block = size > UINT32_MAX ? nullptr : KAPR_Malloc(source, line, static_cast<uint32_t>(size));
    return Owned<uint8_t>(static_cast<uint8_t *>(block));
}

inline Bytes bytesOf(const Anybuf &record) {
    return {record.data, record.length};
}

// The last octets first: object identifiers differ there.
inline bool equal(Bytes left, Bytes right) {
    return left.size() == right.size() &&
           (left.empty() || (left.back() == right.back() && memcmp(left.data(), right.data(), left.size()) == 0));
}

// Text that every conversion of text.h leaves as it is: some ASCII, within the limit of a narrow text.
constexpr size_t NarrowLimit = 1024;
inline bool isPlainText(Bytes text) {
    uint8_t bits = 0;
    for (const uint8_t octet : text)
        bits |= octet;
    return bits < 0x80 && !text.empty() && text.size() <= NarrowLimit;
}

// Sets an embedded record to a copy of `value`, keeping its tag, and releases what stood there before.
[[nodiscard]] Status replace(Anybuf &record, Bytes value);

// Zeroes `size` octets in a way that the compiler keeps: for keys, passwords and what is derived from them.
void wipe(void *block, size_t size);

// Octets that are wiped at the end of their scope: digests, opened blocks, the numbers of keys.
template <uint32_t Size> struct Secret {
    uint8_t octets[Size] = {};

    ~Secret() { wipe(octets, Size); }
};

// The same in a block of KA_BLOCK(size), whose octets are null if there was no memory.
struct SecretBlock {
    Owned<uint8_t> octets;
    size_t size;

    SecretBlock(Owned<uint8_t> block, size_t blockSize) : octets(std::move(block)), size(octets ? blockSize : 0) {}
    ~SecretBlock() { wipe(octets.get(), size); }
    SecretBlock(const SecretBlock &) = delete;
    SecretBlock &operator=(const SecretBlock &) = delete;
};

// KI_ClearAnybuf for a record that holds a key: its bytes are wiped first.
void clearSecret(Anybuf &record);

// Frees a record's data when it goes out of scope.
struct Scratch {
    Anybuf record = {};

    Scratch() = default;
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    ~Scratch() { KI_ClearAnybuf(&record); }
};

// A chain that is being built. slot() is where the next node goes, or the next chain of nodes.
class Chain {
public:
    Chain() = default;
    Chain(const Chain &) = delete;
    Chain &operator=(const Chain &) = delete;
    ~Chain() { KI_FreeAnybuf(first); }

    Anybuf **slot() {
        while (*tail != nullptr)
            tail = &(*tail)->next;
        return tail;
    }
    const Anybuf *head() const { return first; }
    void moveTo(Anybuf **out) {
        *out = first;
        first = nullptr;
        tail = &first;
    }

private:
    Anybuf *first = nullptr;
    Anybuf **tail = &first;
};

// Appends to a singly linked list whose link member is `Link`. `hint` is the last node, as far as its owner knows:
// nodes that the library added after it are skipped, so that an append is O(1). For lists that only the library
// touches.
template <auto Link, class Node> void append(Node *&first, Node *&hint, Node *node) {
    if (first == nullptr) {
        first = hint = node;
        return;
    }
    Node *last = hint != nullptr ? hint : first;
    while (last->*Link != nullptr)
        last = last->*Link;
    last->*Link = node;
    hint = node;
}

} // namespace karil

#define KA_CREATE(TYPE) ::karil::create<TYPE>(KA_SOURCE, __LINE__)
#define KA_CREATE_WITH(ROOM, TYPE) ::karil::create<TYPE>(KA_SOURCE, __LINE__, ROOM)
#define KA_BLOCK(SIZE) ::karil::newBlock(KA_SOURCE, __LINE__, SIZE)
