// SEQUENCE, SET and context tags, one level at a time.
#include "karil/asn1.h"
#include "support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <tuple>

namespace karil_test {
namespace {

// Nodes as "02 01 05 | 04 00"; an empty text gives none.
Chain chainOf(std::string_view nodes) {
    Anybuf *first = nullptr;
    Anybuf **slot = &first;
    while (!nodes.empty()) {
        const size_t end = std::min(nodes.find('|'), nodes.size());
        const Octets octets = hex(nodes.substr(0, end));
        EXPECT_EQ(KAsn1_Low_CreateAnyBuf(slot), KACERT_Ok);
        EXPECT_EQ(KI_SetAttributeCharValue(*slot, octets.data(), static_cast<uint32_t>(octets.size())), KACERT_Ok);
        slot = &(*slot)->next;
        nodes.remove_prefix(std::min(end + 1, nodes.size()));
    }
    return Chain(first);
}

// The octets of a chain that a reader made, and its tags; every link is checked on the way.
std::string nodesOf(const Anybuf *first) {
    std::string text;
    const Anybuf *before = nullptr;
    for (const Anybuf *node = first; node != nullptr; before = node, node = node->next) {
        EXPECT_EQ(node->prev, before);
        EXPECT_EQ(node->form, 2u);
        EXPECT_EQ(node->unusedBits, 0u);
        text += (before == nullptr ? "" : " | ") + toHex(*node) + " #" + std::to_string(node->tag);
    }
    return text;
}

TEST(Asn1Constructed, SequenceAndSetKeepTheCallersOrder) {
    const std::pair<const char *, const char *> rows[] = {
        {"", "00"},
        {"05 00", "02 05 00"},
        {"02 01 02 | 02 01 01 | 01 01 FF", "09 02 01 02 02 01 01 01 01 FF"},
    };
    for (const auto &[nodes, content] : rows) {
        const Chain chain = chainOf(nodes);
        for (const bool set : {false, true}) {
            Anybuf *out = nullptr;
            ASSERT_EQ((set ? KAsn1_WriteSet : KAsn1_WriteSequence)(chain.get(), &out), KACERT_Ok);
            const Chain owner(out);
            EXPECT_EQ(toHex(*out), std::string(set ? "31 " : "30 ") + content);
            EXPECT_EQ(out->tag, set ? 17u : 16u);
            EXPECT_EQ(out->form, 2u);
            EXPECT_TRUE(out->next == nullptr && out->prev == nullptr);
        }
    }
}

TEST(Asn1Constructed, LengthFieldOfAChain) {
    const std::tuple<uint32_t, uint32_t, const char *> rows[] = {
        {65000, 534, "30 82 FF FE"},
        {65000, 535, "30 83 00 FF FF"}, // one octet more than X.690 10.1 has
        {65000, 536, "30 83 01 00 00"},
    };
    for (const auto &[first, second, header] : rows) {
        Octets octets(65536, 0xEE);
        Anybuf behind{octets.data(), second, 0, 0, 0, nullptr, nullptr};
        const Anybuf head{octets.data(), first, 0, 0, 0, &behind, nullptr};
        Anybuf *out = nullptr;
        ASSERT_EQ(KAsn1_WriteSequence(&head, &out), KACERT_Ok);
        const Chain owner(out);
        const size_t size = hex(header).size();
        EXPECT_EQ(toHex(out->data, size), header);
        EXPECT_EQ(out->length, size + first + second) << header;
        EXPECT_EQ(std::count(out->data + size, out->data + out->length, 0xEE), first + second) << header;
    }
    uint8_t octet = 0; // sums above 32 bits are refused before anything is copied
    for (const uint32_t second : {0x7FFFFFFAu, 0x80000000u, 0x80000001u}) {
        Anybuf behind{&octet, second, 0, 0, 0, nullptr, nullptr};
        const Anybuf head{&octet, 0x80000000, 0, 0, 0, &behind, nullptr};
        Anybuf *out = nullptr;
        EXPECT_EQ(KAsn1_WriteSet(&head, &out), KACERT_InvalidLengthErr) << second;
        EXPECT_EQ(out, nullptr);
    }
}

// 30 and 31 stand for themselves; each row is read as SEQUENCE and, with the tag exchanged, as SET.
TEST(Asn1Constructed, ReadSequenceAndSet) {
    const std::tuple<const char *, const char *, int32_t, const char *> rows[] = {
        {"empty", "30 00", 0, ""},
        {"one", "30 03 02 01 05", 0, "02 01 05 #2"},
        {"order and tags", "30 0A A3 02 05 00 30 00 82 02 01 02", 0, "A3 02 05 00 #163 | 30 00 #16 | 82 02 01 02 #130"},
        {"bits keep their octet", "30 04 03 02 04 F0", 0, "03 02 04 F0 #3"},
        {"long tag inside", "30 04 1F 81 01 AA", 0, "1F 81 01 AA #385"},
        {"0x80 inside", "30 04 02 80 00 00", 0, "02 80 #2 | 00 00 #0"},
        {"0x80 counts itself once", "30 06 04 80 02 AA 05 00", 0, "04 80 02 AA #4 | 05 00 #5"},
        {"record one longer", "30 03 02 01 05 00", 102, "------>KACERT_LengthNotEqualErr"},
        {"five length octets", "30 85 00 00 00 00 00", 101, "------>KAsn1_Low_GetLengthInfo"},
        {"0x80 at the end", "30 80", 101, "------>KAsn1_Low_GetLengthInfo"},
        {"0x80 with content past the end", "30 80 01", 101, "------>KAsn1_Low_GetLengthInfo"},
        {"indefinite length", "30 80 02 01 05 00 00", 102, "------>KACERT_LengthNotEqualErr"},
        {"second element overruns", "30 06 02 01 05 02 02 05", 101, "------>KAsn1_Low_GetLengthInfo"},
        {"overruns by all of 32 bits", "30 06 02 84 FF FF FF FA", 101, "------>KAsn1_Low_GetLengthInfo"},
        {"inner length cut off", "30 05 02 01 05 04 82", 101, "------>KAsn1_Low_GetLengthInfo"},
        {"inner tag cut off", "30 05 02 01 05 1F 01", 101, "------>KAsn1_Low_GetTagInfo"},
        {"inner length of five octets", "30 07 04 85 00 00 00 00 00", 101, "------>KAsn1_Low_GetLengthInfo"},
        {"0x80 at the end, inside", "30 02 02 80", 101, "------>KAsn1_Low_GetLengthInfo"},
        {"another tag", "04 03 02 01 05", 106, "------>TAG != KA_DER_ID_"},
        {"context 16", "B0 00", 106, "------>TAG != KA_DER_ID_"},
        {"primitive of the same number", "10 03 02 01 05", 0, "02 01 05 #2"},
    };
    for (const bool set : {false, true})
        for (const auto &[name, element, status, want] : rows) {
            SCOPED_TRACE(std::string(set ? "SET " : "SEQUENCE ") + name);
            Octets octets = hex(element);
            if (set && (octets[0] & 0x1F) == 16) octets[0] |= 1;
            const Exact source(octets, 99); // the tag of the source record plays no part
            Anybuf *first = nullptr;
            const Trace trace;
            EXPECT_EQ((set ? KAsn1_ReadSet : KAsn1_ReadSequence)(&source.record, &first), status);
            const Chain owner(first);
            EXPECT_EQ(nodesOf(first), status == KACERT_Ok ? want : "");
            EXPECT_EQ(toHex(source.record), toHex(octets));
            const std::string kind = set ? "Set" : "Sequence";
            EXPECT_EQ(trace.lines().front(), "======>KAsn1_Read" + kind + " Begin");
            EXPECT_EQ(trace.has("======>KAsn1_Read" + kind + " End"), status == KACERT_Ok);
            const bool overrun = std::string_view(name).find("overruns") != std::string_view::npos;
            const std::string words = set && overrun ? "------>lTotalLength != 0"
                                                     : std::string(want) + (status != 106 ? ""
                                                                            : set         ? "SET"
                                                                                          : "SEQUENCE");
            EXPECT_TRUE(status == KACERT_Ok || trace.has(words));
            EXPECT_EQ(trace.has("------>lTotalLength != 0"), set && overrun);
        }
    Exact source(hex("30 00"));
    Anybuf *first = &source.record; // an empty value sets the out pointer,
    EXPECT_EQ(KAsn1_ReadSequence(&source.record, &first), KACERT_Ok);
    EXPECT_EQ(first, nullptr);
    first = &source.record; // a failure does not
    EXPECT_EQ(KAsn1_ReadSet(&source.record, &first), KACERT_InvalidTagErr);
    EXPECT_EQ(first, &source.record);
}

TEST(Asn1Constructed, WriteTagged) {
    const std::tuple<const char *, bool, const char *, uint32_t, uint32_t, const char *> rows[] = {
        {"explicit", false, "02 01 05", 2, 3, "A3 03 02 01 05"},
        {"explicit sign octet", false, "02 02 00 80", 2, 0, "A0 04 02 02 00 80"},
        {"explicit bits", false, "03 02 04 F0", 3, 2, "A2 04 03 02 04 F0"},
        {"octets", true, "04 02 AB CD", 4, 1, "81 02 AB CD"},
        {"sequence", true, "30 03 02 01 05", 16, 1, "A1 03 02 01 05"},
        {"set", true, "31 00", 17, 0, "A0 00"},
        {"context value", true, "A2 02 05 00", 0xA2, 1, "81 02 05 00"},
        {"sign octet goes", true, "02 02 00 80", 2, 0, "80 01 80"},
        {"zero octet stays", true, "02 02 00 7F", 2, 0, "80 02 00 7F"},
        {"unused bits go", true, "03 02 04 F0", 3, 3, "83 01 F0"},
        {"the record's tag decides: bits", true, "03 02 04 F0", 0, 3, "83 02 04 F0"},
        {"the record's tag decides: sequence", true, "30 02 05 00", 0, 1, "81 02 05 00"},
    };
    for (const auto &[name, implicit, element, tag, number, want] : rows) {
        SCOPED_TRACE(name);
        Exact source(hex(element), tag);
        source.record.unusedBits = 4;
        Anybuf *out = nullptr;
        ASSERT_EQ((implicit ? KAsn1_WriteImplicit : KAsn1_WriteExplicit)(&source.record, number, &out), KACERT_Ok);
        const Chain owner(out);
        EXPECT_EQ(toHex(*out), want);
        EXPECT_EQ(out->tag, hex(want)[0]);
        EXPECT_EQ(out->unusedBits, 0u);
        EXPECT_EQ(out->form, 2u);
        EXPECT_EQ(toHex(source.record), element);
    }
}

TEST(Asn1Constructed, ReadTagged) {
    const std::tuple<const char *, const char *, uint32_t, const char *, uint32_t> rows[] = {
        {"content", "81 02 AB CD", 0x81, "AB CD #129", 1},
        {"chain of one", "A1 03 02 01 05", 0xA1, "02 01 05 #2", 1},
        {"chain of two", "BE 05 02 01 05 05 00", 0xBE, "02 01 05 #2 | 05 00 #5", 30},
        {"empty chain", "A1 00", 0xA1, "", 1},
        {"zero octet stays", "80 02 00 80", 0x80, "00 80 #128", 0},
        {"sign octet of an INTEGER stays", "02 02 00 80", 2, "00 80 #2", 2},
        {"bits keep their octet", "03 02 04 F0", 3, "04 F0 #3", 3},
        {"universal values lose the constructed bit", "30 03 02 01 05", 16, "02 01 05 #16", 16},
        {"constructed bit of a long tag", "1F A1 02 05 00", 0, "05 00 #5", 1},
    };
    for (const auto &[name, element, tag, want, wantNumber] : rows) {
        SCOPED_TRACE(name);
        const Exact source(hex(element), tag);
        Anybuf *first = nullptr;
        uint32_t number = 77;
        EXPECT_EQ(KAsn1_ReadImplicit(&source.record, &first, &number), KACERT_Ok);
        EXPECT_EQ(nodesOf(Chain(first).get()), want);
        EXPECT_EQ(number, wantNumber);
    }
    const std::tuple<const char *, uint32_t, const char *> explicits[] = {{"A3 03 02 01 05", 0xA3, "02 01 05 #163"},
                                                                          {"A0 00", 0xA0, " #160"},
                                                                          {"30 02 05 00", 16, "05 00 #16"},
                                                                          {"02 02 00 80", 2, "80 #2"}};
    for (const auto &[element, tag, want] : explicits) {
        const Exact source(hex(element), tag);
        Anybuf *out = nullptr;
        uint32_t read = 77;
        EXPECT_EQ(KAsn1_ReadExplicit(&source.record, &out, &read), KACERT_Ok);
        EXPECT_EQ(nodesOf(Chain(out).get()), want);
        EXPECT_EQ(read, tag);
    }
}

TEST(Asn1Constructed, TagNumber) {
    const std::pair<const char *, uint32_t> rows[] = {{"A3 00", 3}, {"82", 2}, {"30 00", 16}, {"BF 81", 31}};
    for (const auto &[element, want] : rows) {
        const Exact source(hex(element));
        uint32_t number = 77;
        EXPECT_EQ(KI_GetNumberFromImpOrExplicit(&source.record, &number), KACERT_Ok);
        EXPECT_EQ(number, want) << element;
    }
    uint32_t number = 77;
    const Anybuf none = {};
    EXPECT_EQ(KI_GetNumberFromImpOrExplicit(&none, &number), 1);
    const Exact empty({});
    EXPECT_EQ(KI_GetNumberFromImpOrExplicit(&empty.record, &number), 1);
    EXPECT_EQ(number, 77u);
}

} // namespace
} // namespace karil_test
