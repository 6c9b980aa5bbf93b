// The CRLs that the benchmarks build and decode: serial numbers of 8 octets, dates all different, reasons.
#pragma once

#include "bench.h"

namespace karil_bench {

constexpr int32_t CrlEntries = 100000;

Octets buildCrlWithKaril(int32_t entries);
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

} // namespace karil_bench
