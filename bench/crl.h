// The CRLs that the benchmarks build and decode: serial numbers of 8 octets, reasons, and dates in order, each some
// half an hour after the one before, or at random over nineteen years.
#pragma once

#include "bench.h"

namespace karil_bench {

constexpr int32_t CrlEntries = 100000;
enum class Dates { InOrder, Random };

Octets buildCrlWithKaril(int32_t entries, Dates dates = Dates::InOrder);
// Stops at the to-be-signed part.
Octets buildCrlTbsWithLibcrypto(int32_t entries);

// A CRL held in memory, until it is released.
struct HeldCrl {
    void *object;
    void (*release)(void *object);
};
using HoldCrl = HeldCrl (*)(Bytes der);
HeldCrl holdWithKaril(Bytes der);
HeldCrl holdWithLibcrypto(Bytes der);
HeldCrl holdWithMbedtls(Bytes der);
HeldCrl holdWithMbedtlsAndMktime(Bytes der);

} // namespace karil_bench
