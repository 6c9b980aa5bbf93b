// Tags: the octets that the engine writes, and what it reads them as.
#pragma once

#include <stdint.h>

namespace karil {

// Tag octets that the engine writes.
enum Tag : uint8_t {
    TagBoolean = 0x01,
    TagInteger = 0x02,
    TagBitString = 0x03,
    TagOctetString = 0x04,
    TagNull = 0x05,
    TagObjectId = 0x06,
    TagEnumerated = 0x0A,
    TagUtf8String = 0x0C,
    TagPrintableString = 0x13,
    TagIa5String = 0x16,
    TagUtcTime = 0x17,
    TagGeneralizedTime = 0x18,
    TagBmpString = 0x1E,
    TagSequence = 0x30,
    TagSet = 0x31,
};
// Normalised tags of constructed values.
constexpr uint32_t NormalSequence = 16;
constexpr uint32_t NormalSet = 17;

// The normalised tag of one octet.
inline uint32_t shortTag(uint8_t octet) {
    return (octet & 0x80) != 0 ? octet : octet & 0x1Fu;
}

} // namespace karil
