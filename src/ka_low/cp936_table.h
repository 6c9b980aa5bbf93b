// The tables of code page 936. scripts/cp936_table.py makes their values from data/cp936.txt.
#pragma once

#include <stdint.h>

namespace karil {

// The unit of an octet that stands alone; '?' for FF and for a lead octet.
extern const uint16_t OctetUnits[256];

// The unit of a pair, by lead octets from 81 to FE and trail octets from 40 to FF; '?' for a trail octet 7F or FF.
extern const uint16_t PairUnits[126][192];

// The octets of a unit, a lead octet on top; '?' for a unit that the code page lacks. The page of its upper octet
// first, then its lower octet.
extern const uint8_t UnitPages[256];
extern const uint16_t UnitOctets[][256];

// The letter of the code page that a combining mark makes of a base letter (canonical composition, Unicode 3.11).
// Sorted by mark, then base. The code page has no mark itself.
struct Composition {
    uint16_t mark;
    uint16_t base;
    uint16_t letter;
};
extern const Composition Compositions[];
extern const uint32_t CompositionCount;

} // namespace karil
