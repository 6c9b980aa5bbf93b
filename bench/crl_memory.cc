// What a decoded CRL holds of the heap, by each library, as one JSON object. None of them needs more on the way. A
// program of its own: nothing else may take from the heap meanwhile.
#include "crl.h"

#include <malloc.h>

using namespace karil_bench;

namespace {

double heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

double heldBy(HoldCrl hold, Bytes der) {
    const double before = heapInUse();
    const HeldCrl crl = hold(der);
    const double held = heapInUse() - before;
    crl.release(crl.object);
    must(held > static_cast<double>(der.size()), "the heap is counted");
    return held / static_cast<double>(der.size());
}

} // namespace

int main() {
    const Octets der = buildCrlWithKaril(CrlEntries);
    std::printf("{\"memory-crl/karil\": %.6f, \"memory-crl/mbedtls\": %.6f, \"memory-crl/libcrypto\": %.6f}\n",
                heldBy(holdWithKaril, der), heldBy(holdWithMbedtls, der), heldBy(holdWithLibcrypto, der));
    return 0;
}
