// Elements of indefinite length into definite form.
#include "testkit.h"

#include <sstream>

using namespace karil_test;

namespace {

// Octets with a run of 55 between them.
struct Filled {
    const char *head;
    size_t count = 0;
    const char *tail = "";

    Octets octets() const { return cat({hex(head), Octets(count, 0x55), hex(tail)}); }
};

// The result, "refused" or, where 0 is returned and nothing stored, "the input". Nothing is written behind a result.
std::string convert(const Octets &input) {
    const Exact source(input);
    Octets output(input.size() + 500, 0xEE);
    uint32_t size = 77777;
    const int32_t status = TRIED(KAsn1_IndefiniteToDefinite(source.data(), source.record.length, output.data(), &size));
    EXPECT_TRUE(status == 0 || (status == KAPKCS7_IndefiniteFormatErr && size == 77777));
    const size_t stored = size == 77777 ? 0 : size;
    EXPECT_EQ(Octets(output.begin() + static_cast<long>(stored), output.end()), Octets(output.size() - stored, 0xEE));
    return status != 0 ? "refused" : size == 77777 ? "the input" : toHex(output.data(), size);
}

TEST(Indefinite, Converted) {
    const std::pair<Filled, Filled> rows[] = {
        {{""}, {""}},
        {{"30 80 02 01 05 00 00"}, {"30 03 02 01 05"}},
        {{"30 80 30 80 00 00 00 00"}, {"30 02 30 00"}},
        {{"A0 80 30 80 02 01 05 00 00 02 01 06 00 00"}, {"A0 08 30 03 02 01 05 02 01 06"}},
        {{"30 80 04 04 00 00 00 00 00 00"}, {"30 06 04 04 00 00 00 00"}}, // passed over
        {{"30 80 30 03 02 01 05 00 00"}, {"30 05 30 03 02 01 05"}},
        {{"30 80 05 00 00"}, {"30 02 05 00"}}, // the last octet closes
        {{"31 03 02 01 05"}, {"31 03 02 01 05"}},
        {{"30 06 02 01 05 02 01 06"}, {"30 06 02 01 05 02 01 06"}},
        {{"31 08 04 82 00 04 30 80 00 00"}, {"31 08 04 82 00 04 30 80 00 00"}}, // marks in a definite element
        {{"31 02 07 01 30 80 00 00"}, {"31 02 07 01 30 80 00 00"}},             // a length taken for a tag
        {{"A1 01 07 30 80 00 00"}, {"A1 01 07"}},
        {{"30 80 00 00 00 00 30 80 00 00"}, {"30 00"}},
        {{"31 82 00 09 30 80 02 01 05 00 00 07 07"}, {"31 82 00 09 30 03 02 01 05 07 07 00 00"}}, // outer length stays
        {{"30 80 04 7D", 125, "00 00"}, {"30 7F 04 7D", 125}},
        {{"30 80 30 80 04 7B", 123, "00 00 00 00"}, {"30 7F 30 7D 04 7B", 123}},
        {{"30 80 30 80 04 7C", 124, "00 00 00 00"}, {"30 82 00 80 30 7E 04 7C", 124}},
        {{"30 80 30 80 04 7D", 125, "00 00 00 00"}, {"30 82 00 81 30 7F 04 7D", 125}},
        {{"30 80 04 7E", 126, "00 00"}, {"30 82 00 80 04 7E", 126}},
        {{"30 80 04 81 C8", 200, "00 00"}, {"30 82 00 CB 04 81 C8", 200}},
        // 203 counts as 1 octet and takes 2, 32,768 as 2 and takes 3: cut by one. 256 and 65,536 count as they take.
        {{"30 80 30 80 04 81 C8", 200, "00 00 00 00"}, {"30 82 00 CE 30 82 00 CB 04 81 C8", 199}},
        {{"30 80 30 80 04 81 FD", 253, "00 00 00 00"}, {"30 82 01 04 30 82 01 00 04 81 FD", 253}},
        {{"30 80 30 80 04 82 7F FC", 32764, "00 00 00 00"}, {"30 83 00 80 04 30 83 00 80 00 04 82 7F FC", 32763}},
        {{"30 80 30 80 04 82 FF FC", 65532, "00 00 00 00"}, {"30 83 01 00 05 30 83 01 00 00 04 82 FF FC", 65532}},
        // 256 in two elements leaves AA behind, 258 does not.
        {{"A0 80 30 80 30 80 04 81 FD", 253, "00 00 00 00 02 01 05 00 00"},
         {"A0 82 01 0B 30 82 01 04 30 82 01 00 04 81 FD", 253, "AA 02 01"}},
        {{"A0 80 30 80 30 80 04 81 FF", 255, "00 00 00 00 02 01 05 00 00"},
         {"A0 82 01 0D 30 82 01 06 30 82 01 02 04 81 FF", 255, "02 01 05"}},
    };
    // The cell of a long outer length is missed without a word: the input is as good as converted.
    for (const auto &[input, want] : rows)
        sweep(
            [&, &octets = input, &result = want] {
                const std::string found = convert(octets.octets());
                EXPECT_TRUE((isHindered() && found == "the input") || found == toHex(result.octets())) << octets.head;
            },
            {{KAPKCS7_IndefiniteFormatErr}});
    EXPECT_EQ(convert(hex("30 03 02 01 05")), "the input");
    EXPECT_EQ(convert(hex("A0 02 05")), "the input");
}

TEST(Indefinite, Refused) {
    // Not closed, not opened, zeros in an element that is not passed over, no outer length, one that is too large.
    std::istringstream inputs("30 80 02 01 05; 30 80 30 80 02 01 05 00 00; 30 80 04 84 FF FF FF FF 00 00;"
                              "30 80 02 01 05 00 00 00 00; 31 00 00 30 80 00 00; A1 80 02 01 05 00 00;"
                              "30 80 30 04 04 02 00 00 00 00; 30 80 30 02 05 00 00 00;"
                              "31 80 30 80 00 00; 30 88 30 80 00 00; 31 82 01 F9 30 80 00 00");
    for (std::string input; std::getline(inputs, input, ';');)
        EXPECT_EQ(convert(hex(input)), "refused") << input;
}

// A walk from mark to mark for each of them, or a move of all that follows, would take minutes.
TEST(Indefinite, LongRuns) {
    Octets pairs = hex("30 80"), want = hex("30 83 3D 09 00"), nest;
    for (int i = 0; i < 2000000; ++i) {
        pairs.insert(pairs.end(), {0x30, 0x80, 0, 0});
        want.insert(want.end(), {0x30, 0});
        nest.insert(nest.end(), {0x30, 0x80});
    }
    pairs.resize(pairs.size() + 2);
    EXPECT_EQ(convert(pairs), toHex(want));
    EXPECT_EQ(convert(nest), "refused");
    nest.resize(2 * nest.size());
    EXPECT_EQ(convert(nest), "refused"); // its lengths take more than its closings
}

} // namespace
