#include "ka_asn2.h"

#include <string.h>

using namespace karil;

namespace {

using Cell = Owned<uint32_t>;

Cell newCell(uint32_t value) {
    Cell cell(KA_CREATE(uint32_t));
    if (cell != nullptr)
        *cell = value;
    return cell;
}

// A pair of cells for two results.
Status storeCells(uint32_t first, uint32_t second, uint32_t **firstOut, uint32_t **secondOut) {
    Cell firstCell = newCell(first);
    Cell secondCell = newCell(second);
    if (firstCell == nullptr || secondCell == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    *firstOut = firstCell.release();
    *secondOut = secondCell.release();
    return KACERT_Ok;
}

// The readers of this file that take a bare cursor; nothing in the library calls them on input.
const uint8_t *bareTag(const uint8_t *at, uint32_t &tag) {
    const uint8_t first = *at++;
    tag = (first & 0x80) != 0 ? first : first & 0x1Fu;
    if ((first & 0x1F) != 0x1F)
        return at;
    tag = 0;
    uint8_t x = 0;
    do {
        x = *at++;
        tag = ((x & 0x7Fu) | tag) << 8;
    } while ((x & 0x80) == 0);
    tag |= x;
    return at;
}

// Null for a field of more than four length octets.
const uint8_t *bareLength(const uint8_t *at, uint32_t &length, uint32_t &octets) {
    const uint8_t first = *at++;
    uint32_t count = first & 0x7Fu;
    length = count;
    octets = 1;
    if ((first & 0x80) == 0)
        return at;
    if (count > 4)
        return nullptr;
    octets = count + 1;
    length = 0;
    // The octet after 0x80 is read as the length, although the field is reported as one octet.
    for (count = count == 0 ? 1 : count; count > 0; --count)
        length = length << 8 | *at++;
    return at;
}

} // namespace

namespace karil {

uint32_t integerOctets(uint32_t value, uint8_t (&octets)[5]) {
    uint32_t size = 1;
    while (size < 5 && uint64_t{value} >> (8 * size - 1) != 0)
        ++size;
    for (uint32_t i = 0; i < size; ++i)
        octets[i] = static_cast<uint8_t>(uint64_t{value} >> (8 * (size - 1 - i)));
    return size;
}

uint32_t integerValue(Bytes octets) {
    if (!octets.empty() && octets[0] == 0)
        octets = octets.subspan(1);
    uint32_t value = 0;
    for (const uint8_t octet : octets)
        value = value << 8 | octet;
    return value;
}

} // namespace karil

int32_t KAsn1_Low_GetTagInfo(const uint8_t **cursor, uint32_t **tag, uint32_t **octets) {
    KA_FRAME("KAsn1_Low_GetTagInfo");
    if (cursor == nullptr || *cursor == nullptr || tag == nullptr || octets == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    uint32_t value = 0;
    const uint8_t *after = bareTag(*cursor, value);
    KA_PASS(storeCells(value, static_cast<uint32_t>(after - *cursor), tag, octets));
    *cursor = after;
    return KA_DONE();
}

int32_t KAsn1_Low_GetLengthInfo(const uint8_t **cursor, uint32_t **length, uint32_t **octets) {
    KA_FRAME("KAsn1_Low_GetLengthInfo");
    if (cursor == nullptr || *cursor == nullptr || length == nullptr || octets == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    uint32_t value = 0;
    uint32_t size = 0;
    const uint8_t *after = bareLength(*cursor, value, size);
    if (after == nullptr)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_Low_GetLengthInfo");
    KA_PASS(storeCells(value, size, length, octets));
    *cursor = after;
    return KA_DONE();
}

int32_t KAsn1_GetLengthInfo(const uint8_t **cursor, uint32_t *length, uint32_t *size) {
    KA_FRAME("KAsn1_GetLengthInfo");
    if (cursor == nullptr || *cursor == nullptr || length == nullptr || size == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const uint8_t *at = *cursor + 2;
    while ((*at & 0x50) == 0)
        ++at;
    const uint8_t field = *++at;
    const uint32_t count = field & 0x7Fu;
    if ((field & 0x50) == 0) {
        *length = count;
        *size = 1;
        return KA_DONE();
    }
    uint32_t value = 0;
    for (uint32_t i = 0; i < count; ++i)
        value = (*++at | value) << 8;
    *length = value;
    *size = count;
    return KA_DONE();
}

int32_t KAsn1_GetCertLength(const uint8_t *element, uint32_t *total) {
    KA_FRAME("KAsn1_GetCertLength");
    if (element == nullptr || total == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_Low_GetTagInfo");
    uint32_t tag = 0;
    uint32_t length = 0;
    uint32_t octets = 0;
    const uint8_t *field = bareTag(element, tag);
    if (bareLength(field, length, octets) == nullptr)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_Low_GetLengthInfo");
    const uint64_t sum = static_cast<uint64_t>(field - element) + octets + length;
    if (sum > UINT32_MAX)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KAsn1_Low_GetLengthInfo");
    *total = static_cast<uint32_t>(sum);
    return KA_DONE();
}

int32_t KAsn1_Low_ReadDNTag(const uint8_t *octet, uint32_t *value) {
    KA_FRAME("KAsn1_Low_ReadDNTag");
    if (octet == nullptr || value == nullptr)
        return KA_FAIL(KACERT_InvalidTagErr, "------>KAsn1_Low_GetLengthInfo");
    *value = *octet;
    return KA_DONE();
}

uint32_t KAsn1_Low_Count_LengthOfSize(uint32_t length) {
    if (length <= 0x7F)
        return 1;
    if (length <= 0xFF)
        return 2;
    if (length <= 0xFFFE)
        return 3;
    return length <= 0xFFFFFF ? 4 : 5;
}

int32_t KAsn1_Low_WriteTagAndLength(const Anybuf *source, uint32_t tag, Anybuf **out, uint8_t **position) {
    KA_FRAME("KAsn1_Low_WriteTagAndLength");
    if (source == nullptr || out == nullptr || position == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const auto octet = static_cast<uint8_t>(tag);
    if (source->data == nullptr && (source->length > 0 || octet == TagInteger))
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    const bool bits = octet == TagBitString;
    const bool sign = octet == TagInteger && source->length > 0 && (source->data[0] & 0x80) != 0;
    Writer element(0);
    uint8_t *at = element.area(octet, uint64_t{source->length} + (bits || sign ? 1 : 0));
    KA_PASS(element.moveTo(out, bits ? source->unusedBits : 0));
    if (bits)
        *at++ = static_cast<uint8_t>(source->unusedBits);
    if (sign)
        *at++ = 0;
    *position = at;
    return KA_DONE();
}

int32_t KAsn1_Low_ReadTagAndLength(const Anybuf *source, const uint8_t **cursor, Anybuf **out, uint8_t **content) {
    KA_FRAME("KAsn1_Low_ReadTagAndLength");
    if (source == nullptr || cursor == nullptr || *cursor == nullptr || out == nullptr || content == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Element value;
    KA_PASS(readValue({source->tag, {*cursor, source->length}}, value));
    Anybuf *node = nullptr;
    KA_PASS(newNode(value, &node));
    node->unusedBits = source->tag == TagBitString ? source->unusedBits : 0;
    *cursor = value.bytes.data();
    *content = node->data;
    *out = node;
    return KA_DONE();
}

int32_t KAsn1_Low_IntToChar(uint32_t value, uint8_t **octets, uint32_t **count) {
    KA_FRAME("KAsn1_Low_IntToChar");
    if (octets == nullptr || count == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    uint8_t work[5];
    const uint32_t size = integerOctets(value, work);
    Owned<uint8_t> block = KA_BLOCK(size);
    Cell cell = newCell(size);
    if (block == nullptr || cell == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    memcpy(block.get(), work, size);
    *octets = block.release();
    *count = cell.release();
    return KA_DONE();
}

int32_t KAsn1_Low_CharToInt(const uint8_t *octets, uint32_t count, uint32_t **value) {
    KA_FRAME("KAsn1_Low_CharToInt");
    if ((octets == nullptr && count > 0) || value == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Pointer is NULL");
    Cell cell = newCell(integerValue({octets, count}));
    if (cell == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    *value = cell.release();
    return KA_DONE();
}
