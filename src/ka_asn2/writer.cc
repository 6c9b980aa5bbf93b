#include "ka_asn2.h"

#include <string.h>

namespace karil {

namespace {

constexpr char TooLong[] = "------>KAsn1_Low_Count_LengthOfSize";

void putLength(uint8_t *at, uint32_t length, uint32_t octets) {
    if (octets == 1) {
        *at = static_cast<uint8_t>(length);
        return;
    }
    *at++ = static_cast<uint8_t>(0x80 | (octets - 1));
    for (uint32_t shift = 8 * (octets - 1); shift > 0; shift -= 8)
        *at++ = static_cast<uint8_t>(length >> (shift - 8));
}

} // namespace

void Writer::fail(Status status) {
    if (failure == KACERT_Ok)
        failure = status;
}

void Writer::release() {
    if (isSecret)
        wipe(block.get(), used);
    block.reset();
}

void Writer::grow(uint64_t needed) {
    if (needed > UINT32_MAX) {
        fail(KA_FAIL(KACERT_InvalidLengthErr, TooLong));
        return;
    }
    const uint64_t doubled = capacity == 0 ? nextBlock : uint64_t{capacity} * 2;
    const auto size = static_cast<uint32_t>(doubled < needed ? needed : doubled > UINT32_MAX ? UINT32_MAX : doubled);
    Owned<uint8_t> larger = KA_BLOCK(size);
    if (larger == nullptr) {
        fail(KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc"));
        return;
    }
    if (used > 0)
        memcpy(larger.get(), block.get(), used);
    release();
    block = std::move(larger);
    capacity = size;
}

void Writer::reserve(uint64_t size) {
    const uint64_t needed = used + size + uint64_t{openConstructs} * LengthRoom;
    if ((needed > capacity || block == nullptr) && failure == KACERT_Ok)
        grow(needed);
}

// `size` more octets, or null.
inline uint8_t *Writer::extend(uint64_t size) {
    reserve(size);
    if (failure != KACERT_Ok)
        return nullptr;
    uint8_t *at = block.get() + used;
    used += static_cast<uint32_t>(size);
    return at;
}

void Writer::octets(Bytes ready) {
    if (ready.empty())
        return;
    if (ready.data() == nullptr)
        return fail(KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL"));
    if (uint8_t *at = extend(ready.size()); at != nullptr)
        memcpy(at, ready.data(), ready.size());
}

uint8_t *Writer::startElement(uint8_t tag, uint64_t size, uint64_t room) {
    if (size > UINT32_MAX) {
        fail(KA_FAIL(KACERT_InvalidLengthErr, TooLong));
        return nullptr;
    }
    const auto length = static_cast<uint32_t>(size);
    const uint32_t lengthOctets = KAsn1_Low_Count_LengthOfSize(length);
    uint8_t *at = extend(1 + lengthOctets + room);
    if (at == nullptr)
        return nullptr;
    *at = tag;
    putLength(at + 1, length, lengthOctets);
    return at + 1 + lengthOctets;
}

uint8_t *Writer::area(uint8_t tag, uint64_t size) {
    return startElement(tag, size, size);
}

void Writer::head(uint8_t tag, uint64_t size) {
    (void)startElement(tag, size, 0);
}

void Writer::apart(Bytes octets) {
    if (octets.data() == nullptr && !octets.empty())
        return fail(KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL"));
    large = octets;
    largeAt = used;
}

void Writer::element(uint8_t tag, Bytes content) {
    if (content.data() == nullptr && !content.empty())
        return fail(KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL"));
    uint8_t *at = area(tag, content.size());
    if (at != nullptr && !content.empty())
        memcpy(at, content.data(), content.size());
}

void Writer::integer(uint32_t value) {
    uint8_t octets[5];
    element(TagInteger, {octets, integerOctets(value, octets)});
}

Status Writer::number(Bytes magnitude) {
    if (magnitude.data() == nullptr) {
        fail(KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL"));
        return failure;
    }
    const bool sign = !magnitude.empty() && (magnitude[0] & 0x80) != 0;
    uint8_t *at = area(TagInteger, uint64_t{magnitude.size()} + (sign ? 1 : 0));
    if (at == nullptr)
        return failure;
    if (sign)
        *at++ = 0;
    if (!magnitude.empty())
        memcpy(at, magnitude.data(), magnitude.size());
    return KACERT_Ok;
}

void Writer::bitString(Bytes bits, uint32_t unusedBits) {
    if (bits.data() == nullptr && !bits.empty())
        return fail(KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL"));
    uint8_t *at = area(TagBitString, uint64_t{bits.size()} + 1);
    if (at == nullptr)
        return;
    *at++ = static_cast<uint8_t>(unusedBits);
    if (!bits.empty())
        memcpy(at, bits.data(), bits.size());
}

void Writer::boolean(bool value) {
    const uint8_t octet = value ? 0xFF : 0;
    element(TagBoolean, {&octet, 1});
}

void Writer::retag(uint32_t at, uint8_t tag) {
    if (failure == KACERT_Ok && at < used)
        block.get()[at] = tag;
}

Bytes Writer::since(uint32_t start) const {
    return failure == KACERT_Ok && block != nullptr ? Bytes(block.get() + start, used - start) : Bytes{};
}

uint32_t Writer::normalTag() const {
    return used > 0 ? shortTag(block.get()[0]) : 0;
}

Status Writer::moveTo(Anybuf **out, uint32_t unusedBits) {
    KA_PASS(failure);
    Anybuf *node = nullptr;
    KA_STEP(KAsn1_Low_CreateAnyBuf(&node));
    node->tag = normalTag();
    node->unusedBits = unusedBits;
    node->length = used;
    node->data = block.release();
    *out = node;
    return KACERT_Ok;
}

Status Writer::moveTo(Anybuf &record) {
    KA_PASS(failure);
    const uint32_t tag = normalTag();
    freeData(record);
    record = {block.release(), used, 0, 2, tag, nullptr, nullptr};
    return KACERT_Ok;
}

Status handOut(const Writer &written, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(written.status());
    const Bytes octets = written.since(0), large = written.large;
    if (octets.size() + large.size() > UINT32_MAX)
        return KA_FAIL(KACERT_InvalidLengthErr, TooLong);
    *resultLength = static_cast<uint32_t>(octets.size() + large.size());
    if (result == nullptr)
        return KACERT_Ok;
    const size_t before = large.empty() ? octets.size() : written.largeAt;
    for (const Bytes piece : {octets.first(before), large, octets.subspan(before)}) {
        if (!piece.empty())
            memcpy(result, piece.data(), piece.size());
        result += piece.size();
    }
    return KACERT_Ok;
}

Construct::Construct(Writer &out, uint8_t tag, uint64_t expected)
    : writer(&out), contentAt(0),
      lengthOctets(KAsn1_Low_Count_LengthOfSize(expected > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(expected))) {
    ++out.openConstructs;
    uint8_t *at = out.extend(uint64_t{1} + lengthOctets);
    if (at != nullptr)
        *at = tag;
    contentAt = out.used;
}

void Construct::close() {
    if (writer == nullptr)
        return;
    Writer &out = *writer;
    writer = nullptr;
    --out.openConstructs;
    if (out.failure != KACERT_Ok)
        return;
    const uint32_t written = out.used - contentAt;
    const bool hasLarge = !out.large.empty() && out.largeAt >= contentAt;
    const uint64_t size = written + (hasLarge ? uint64_t{out.large.size()} : 0);
    if (size > UINT32_MAX)
        return out.fail(KA_FAIL(KACERT_InvalidLengthErr, TooLong));
    const auto length = static_cast<uint32_t>(size);
    const uint32_t needed = KAsn1_Low_Count_LengthOfSize(length);
    uint8_t *content = out.block.get() + contentAt;
    if (needed != lengthOctets && written > 0)
        memmove(content + needed - lengthOctets, content, written);
    putLength(content - lengthOctets, length, needed);
    out.used = out.used + needed - lengthOctets;
    if (hasLarge)
        out.largeAt = out.largeAt + needed - lengthOctets;
}

} // namespace karil
