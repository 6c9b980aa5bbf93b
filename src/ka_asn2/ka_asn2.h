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

// Content octets of an INTEGER; returns their number, 1 to 5.
uint32_t integerOctets(uint32_t value, uint8_t (&octets)[5]);
uint32_t integerValue(Bytes octets);

} // namespace karil
