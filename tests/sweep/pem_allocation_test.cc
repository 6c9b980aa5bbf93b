// PEM text and indefinite lengths while allocations fail.
#include "allocation.h"
#include "der.h"

#include "karil/indefinite.h"
#include "karil/pem.h"

using namespace karil_test;

namespace {

// Both calls answer with octets; a failed one leaves its outputs alone.
template <class Call> void convert(Run &run, const char *name, Call call) {
    Octets output(300, 0xEE);
    uint32_t size = 77;
    run.step([&] { return call(output.data(), &size); });
    const bool isStored = size != 77;
    EXPECT_TRUE(isStored || output == Octets(300, 0xEE)) << name;
    run.answer(name, isStored ? Octets(output.begin(), output.begin() + size) : Octets());
}

void convertPem(Run &run) {
    convert(run, "text", [](uint8_t *output, uint32_t *size) {
        return DER2PEM_data_format(hex("30 00").data(), 2, output, size, "-----A-----", "-----B-----");
    });
    convert(run, "octets", [](uint8_t *output, uint32_t *size) {
        return PEM2DER_data_format(text("-----A-----\nMAA=\n-----B-----\n").data(), 29, output, size);
    });
}

void convertIndefinite(Run &run) {
    convert(run, "open", [](uint8_t *output, uint32_t *size) {
        return KAsn1_IndefiniteToDefinite(hex("30 80 30 80 02 01 05 00 00 00 00").data(), 11, output, size);
    });
}

// A long outer length: its cell is missed without a word, and the input is as good as converted.
void convertLong(Run &run) {
    convert(run, "definite", [](uint8_t *output, uint32_t *size) {
        return KAsn1_IndefiniteToDefinite(tlv(0x30, Octets(200, 0x55)).data(), 203, output, size);
    });
}

TEST(FailingAllocations, Texts) {
    const std::vector<int32_t> malformed = {KAPKCS7_IndefiniteFormatErr};
    const Scenario scenarios[] = {
        {"PEM", convertPem, {-1}},
        {"indefinite length", convertIndefinite, malformed},
        {"long definite length", convertLong, {KAPKCS7_IndefiniteFormatErr, KACERT_Ok}, {"definite"}},
    };
    for (const Scenario &scenario : scenarios) sweep(scenario, Pool::Library);
    const Octets input = tlv(0x30, Octets(200, 0x55));
    Octets output(300);
    uint32_t size = 77;
    failAllocation(Pool::Library, 2, true); // the cell; the first is the work area
    EXPECT_EQ(KAsn1_IndefiniteToDefinite(input.data(), 203, output.data(), &size), 0);
    EXPECT_TRUE(endFailing() && size == 77);
}

} // namespace
