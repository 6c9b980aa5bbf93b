// DER written forward into one block that grows, in the order of the wire.
#pragma once

#include "ka_low.h"
#include "tag.h"

namespace karil {

// The writes of a Writer do not fail one by one. After the first failure (no memory, more than 32 bits of octets,
// octets that are said to be there and are not) the others do nothing, and status() and moveTo() return its status.
class Writer {
public:
    // `firstBlock`: the size of the first block; 0: just what the first write needs. `wipes`: the octets are secret,
    // and a block that is released is wiped first.
    explicit Writer(uint32_t firstBlock = 1024, bool wipes = false) : nextBlock(firstBlock), isSecret(wipes) {}
    ~Writer() { release(); }
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    // Room for that many octets, which a later write need not ask for.
    void reserve(uint64_t size);

    // Elements, or parts of one, that are there already.
    void octets(Bytes ready);
    void element(uint8_t tag, Bytes content);
    // An element whose content is zeros for now. Returns where the content goes, up to the next write; null after a
    // failure.
    uint8_t *area(uint8_t tag, uint64_t size);

    // The tag and length of an element whose content is written next.
    void head(uint8_t tag, uint64_t size);
    // Octets that stay where they are until handOut() copies them: for a large content, once in the life of a Writer
    // that is handed out by handOut() alone.
    void apart(Bytes large);

    void integer(uint32_t value);
    // The octets of a number without a sign: a zero is put in front if the first one has its top bit set. A number that
    // was never set is KACERT_InvalidParamErr.
    Status number(Bytes magnitude);
    void bitString(Bytes bits, uint32_t unusedBits = 0);
    void octetString(Bytes content) { element(TagOctetString, content); }
    void objectId(Bytes content) { element(TagObjectId, content); }
    void null() { element(TagNull, {}); }
    // TRUE is FF.
    void boolean(bool value);

    [[nodiscard]] Status status() const { return failure; }
    void fail(Status status);
    uint32_t size() const { return used; }
    // Puts another tag in the place of one that was written at `at`.
    void retag(uint32_t at, uint8_t tag);
    // What was written from `start` on, up to the next write; nothing after a failure.
    Bytes since(uint32_t start) const;

    // Hands the block out: as a heap record, or in the place of what an embedded record holds.
    [[nodiscard]] Status moveTo(Anybuf **out, uint32_t unusedBits = 0);
    [[nodiscard]] Status moveTo(Anybuf &record);

private:
    friend class Construct;
    friend Status handOut(const Writer &written, uint8_t *result, uint32_t *resultLength);
    // Each construct that is open may still get four more octets of length: the room for them is there.
    static constexpr uint32_t LengthRoom = 4;

    uint8_t *extend(uint64_t size);
    uint8_t *startElement(uint8_t tag, uint64_t size, uint64_t room);
    void grow(uint64_t needed);
    void release();
    uint32_t normalTag() const;

    Owned<uint8_t> block;
    uint32_t used = 0;
    uint32_t capacity = 0;
    uint32_t nextBlock;
    uint32_t openConstructs = 0;
    Status failure = KACERT_Ok;
    bool isSecret;
    Bytes large; // what stands apart, in front of the octet at `largeAt`
    uint32_t largeAt = 0;
};

// Stores the length of what was written and, with a buffer, the octets.
[[nodiscard]] Status handOut(const Writer &written, uint8_t *result, uint32_t *resultLength);

// A constructed element: what is written while it lives is its content.
class Construct {
public:
    // `expected`: about how large the content will be, so that a large one need not be moved.
    Construct(Writer &out, uint8_t tag, uint64_t expected = 0);
    ~Construct() { close(); }
    Construct(const Construct &) = delete;
    Construct &operator=(const Construct &) = delete;

    // Puts the length in, before the end of the scope.
    void close();

private:
    Writer *writer;
    uint32_t contentAt;
    uint32_t lengthOctets;
};

} // namespace karil
