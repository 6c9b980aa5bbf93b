// What the C library's converter leaves out of code page 936: private-use cells and composed letters.
#pragma once

#include <stdint.h>

namespace karil {

// The private-use code point of an octet pair, or 0. The pair must be one of a lead and a trail octet.
uint32_t privateOfPair(uint8_t lead, uint8_t trail);

// The octet pair of a private-use code point, lead octet on top, or 0.
uint32_t pairOfPrivate(uint32_t codePoint);

// The letter of the code page that `base` and the combining mark `mark` make together (canonical composition,
// Unicode 3.11), or 0.
uint32_t composed(uint32_t base, uint32_t mark);

} // namespace karil
