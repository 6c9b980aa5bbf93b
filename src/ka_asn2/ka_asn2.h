// The DER engine: the bounded, borrowing reader that all decoding goes through, and the writer of all encoders.
#pragma once

#include "karil/asn1.h"
#include "karil/asn1_low.h"
#include "karil/oid.h"

#include "clock.h"
#include "reader.h"
#include "record.h"
#include "tag.h"
#include "writer.h"

namespace karil {

// A heap node for an element of `size` content octets, with tag and length written; the caller fills `*position`.
[[nodiscard]] Status newElement(uint32_t tagOctet, uint64_t size, Anybuf **out, uint8_t **position);

// For structures that are written in one block: the octets of an element around `content` octets (above 32 bits: as
// they are), and its tag and length, behind which the content goes.
uint64_t elementSize(uint64_t content);
uint8_t *putHeader(uint8_t *at, uint8_t tag, uint64_t content);

// SEQUENCE { OBJECT IDENTIFIER, NULL }
[[nodiscard]] Status writeAlgorithm(const AlgorithmRecord &algorithm, Anybuf **out);

// OBJECT IDENTIFIER from constant content octets.
[[nodiscard]] Status writeOid(Bytes oid, Anybuf **out);

// A constant object identifier as a writer's source. The bytes are only read.
inline AlgorithmRecord borrowOid(Bytes oid) {
    return {0, borrow(oid, TagObjectId)};
}

// Content octets of an INTEGER; gives their number, 1 to 5.
uint32_t integerOctets(uint32_t value, uint8_t (&octets)[5]);
uint32_t integerValue(Bytes octets);

} // namespace karil
