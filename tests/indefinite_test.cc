// Elements of indefinite length into definite form.
#include "karil/indefinite.h"
#include "support.h"

#include <gtest/gtest.h>

namespace karil_test {
namespace {

// Octets with a run of 55 between them.
struct Filled {
    const char *head;
    size_t count = 0;
    const char *tail = "";

    Octets octets() const {
        Octets all = hex(head), end = hex(tail);
        all.insert(all.end(), count, 0x55);
        all.insert(all.end(), end.begin(), end.end());
        return all;
    }
};

// The result, "refused" or, where 0 is returned and nothing stored, "the input". Nothing is written behind a result.
std::string convert(const Octets &input) {
    const Exact source(input);
    Octets output(input.size() + 500, 0xEE);
    uint32_t size = 77777;
    const int32_t status = KAsn1_IndefiniteToDefinite(source.record.data, source.record.length, output.data(), &size);
    EXPECT_TRUE(status == 0 || (status == KAPKCS7_IndefiniteFormatErr && size == 77777));
    const size_t stored = size == 77777 ? 0 : size;
    EXPECT_EQ(Octets(output.begin() + static_cast<long>(stored), output.end()), Octets(output.size() - stored, 0xEE));
    return status != 0 ? "refused" : size == 77777 ? "the input" : toHex(output.data(), size);
}

TEST(Indefinite, Converted) {
    const struct {
        const char *name;
        Filled input, want;
    } rows[] = {
        {"no octets", {""}, {""}},
        {"one integer", {"30 80 02 01 05 00 00"}, {"30 03 02 01 05"}},
        {"nested", {"30 80 30 80 00 00 00 00"}, {"30 02 30 00"}},
        {"in a context tag", {"A0 80 30 80 02 01 05 00 00 02 01 06 00 00"}, {"A0 08 30 03 02 01 05 02 01 06"}},
        {"zero pairs passed over", {"30 80 04 04 00 00 00 00 00 00"}, {"30 06 04 04 00 00 00 00"}},
        {"definite inside", {"30 80 30 03 02 01 05 00 00"}, {"30 05 30 03 02 01 05"}},
        {"the last octet closes", {"30 80 05 00 00"}, {"30 02 05 00"}},
        {"no mark", {"31 03 02 01 05"}, {"31 03 02 01 05"}},
        {"no mark, several inside", {"30 06 02 01 05 02 01 06"}, {"30 06 02 01 05 02 01 06"}},
        {"marks in a definite OCTET STRING", {"31 06 04 04 30 80 00 00"}, {"31 06 04 04 30 80 00 00"}},
        {"the same, long", {"31 08 04 82 00 04 30 80 00 00"}, {"31 08 04 82 00 04 30 80 00 00"}},
        {"a length taken for a tag", {"31 02 07 01 30 80 00 00"}, {"31 02 07 01 30 80 00 00"}},
        {"behind a definite element", {"A1 01 07 30 80 00 00"}, {"A1 01 07"}},
        {"a free closing between", {"30 80 00 00 00 00 30 80 00 00"}, {"30 00"}},
        {"outer length stays", {"31 82 00 07 30 80 02 01 05 00 00"}, {"31 82 00 07 30 03 02 01 05 00 00"}},
        {"127", {"30 80 04 7D", 125, "00 00"}, {"30 7F 04 7D", 125}},
        {"128", {"30 80 04 7E", 126, "00 00"}, {"30 82 00 80 04 7E", 126}},
        {"long primitive", {"30 80 04 81 C8", 200, "00 00"}, {"30 82 00 CB 04 81 C8", 200}},
        {"203, counted 1, takes 2: cut by one",
         {"30 80 30 80 04 81 C8", 200, "00 00 00 00"},
         {"30 82 00 CE 30 82 00 CB 04 81 C8", 199}},
        {"256, counted 2", {"30 80 30 80 04 81 FD", 253, "00 00 00 00"}, {"30 82 01 04 30 82 01 00 04 81 FD", 253}},
        {"256 in two: AA is left, cut by two",
         {"A0 80 30 80 30 80 04 81 FD", 253, "00 00 00 00 02 01 05 00 00"},
         {"A0 82 01 0B 30 82 01 04 30 82 01 00 04 81 FD", 253, "AA 02 01"}},
        {"258 in two: none is left",
         {"A0 80 30 80 30 80 04 81 FF", 255, "00 00 00 00 02 01 05 00 00"},
         {"A0 82 01 0D 30 82 01 06 30 82 01 02 04 81 FF", 255, "02 01 05"}},
        {"32768, counted 2, takes 3: cut by one",
         {"30 80 30 80 04 82 7F FC", 32764, "00 00 00 00"},
         {"30 83 00 80 04 30 83 00 80 00 04 82 7F FC", 32763}},
        {"65536, counted 3",
         {"30 80 30 80 04 82 FF FC", 65532, "00 00 00 00"},
         {"30 83 01 00 05 30 83 01 00 00 04 82 FF FC", 65532}},
    };
    for (const auto &row : rows) EXPECT_EQ(convert(row.input.octets()), toHex(row.want.octets())) << row.name;
    EXPECT_EQ(convert(hex("30 03 02 01 05")), "the input");
    EXPECT_EQ(convert(hex("A0 02 05")), "the input");
}

TEST(Indefinite, Refused) {
    const std::pair<const char *, const char *> rows[] = {
        {"nothing closes", "30 80 02 01 05"},
        {"the outer is not closed", "30 80 30 80 02 01 05 00 00"},
        {"a closing too many", "30 80 02 01 05 00 00 00 00"},
        {"a closing in front", "31 00 00 30 80 00 00"},
        {"an opener of another tag", "A1 80 02 01 05 00 00"},
        {"zero pair in a definite element", "30 80 30 04 04 02 00 00 00 00"},
        {"a NULL in front of the closing", "30 80 30 02 05 00 00 00"},
        {"a primitive past the end", "30 80 04 84 FF FF FF FF 00 00"},
        {"outer length missing", "31 80 30 80 00 00"},
        {"outer length of no octets", "30 88 30 80 00 00"},
        {"outer length too large for the work area", "31 82 01 F9 30 80 00 00"},
    };
    for (const auto &[name, input] : rows) EXPECT_EQ(convert(hex(input)), "refused") << name;
    uint8_t octets[8] = {0x31};
    uint32_t size = 77;
    EXPECT_EQ(KAsn1_IndefiniteToDefinite(nullptr, 1, octets, &size), KAPKCS7_IndefiniteFormatErr);
    EXPECT_EQ(KAsn1_IndefiniteToDefinite(octets, 1, nullptr, &size), KAPKCS7_IndefiniteFormatErr);
    EXPECT_EQ(KAsn1_IndefiniteToDefinite(octets, 1, octets, nullptr), KAPKCS7_IndefiniteFormatErr);
    EXPECT_EQ(size, 77u);
}

// A walk from mark to mark for each of them, or a move of all that follows, would take minutes.
TEST(Indefinite, LongRuns) {
    const auto repeated = [](size_t count, const Octets &piece, Octets all, const char *tail) {
        for (; count > 0; --count) all.insert(all.end(), piece.begin(), piece.end());
        for (const uint8_t octet : hex(tail)) all.push_back(octet);
        return all;
    };
    EXPECT_EQ(convert(repeated(2000000, hex("30 80 00 00"), hex("30 80"), "00 00")),
              toHex(repeated(2000000, hex("30 00"), hex("30 83 3D 09 00"), "")));
    EXPECT_EQ(convert(repeated(4000000, hex("30 80"), {}, "")), "refused");
    const Octets nest = repeated(4000000, hex("30 80"), {}, "");
    EXPECT_EQ(convert(repeated(4000000, hex("00 00"), nest, "")), "refused"); // grows past the work area
}

} // namespace
} // namespace karil_test
