// Writers and readers of primitive values.
#include "karil/asn1.h"
#include "support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <tuple>

namespace karil_test {
namespace {

using Codec = int32_t (*)(const Anybuf *, Anybuf **);
struct Named {
    const char *name;
    Codec call;
};
#define NAMED(FUNCTION)                                                                                                \
    { #FUNCTION, FUNCTION }

const Named readers[] = {NAMED(KAsn1_ReadOctetString), NAMED(KAsn1_ReadBitString),  NAMED(KAsn1_ReadCharString),
                         NAMED(KAsn1_ReadBmpString),   NAMED(KAsn1_ReadUTF8String), NAMED(KAsn1_ReadPrintableString),
                         NAMED(KAsn1_ReadEnumerated),  NAMED(KAsn1_ReadIa5String)};

// An element that a writer made: its octets and the fields beside them.
void expectElement(const Anybuf *record, std::string_view octets, uint32_t tag, uint32_t unusedBits = 0) {
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(toHex(*record), octets);
    EXPECT_EQ(record->tag, tag);
    EXPECT_EQ(record->unusedBits, unusedBits);
    EXPECT_EQ(record->form, 2u);
    EXPECT_TRUE(record->next == nullptr && record->prev == nullptr);
}

TEST(Asn1Primitive, WritersOfContentOctets) {
    const std::tuple<Named, uint32_t, const char *, const char *, uint32_t> rows[] = {
        {NAMED(KAsn1_WriteIntegerArray), 0, "80", "02 02 00 80", 2},
        {NAMED(KAsn1_WriteIntegerArray), 0, "00 80", "02 02 00 80", 2},
        {NAMED(KAsn1_WriteIntegerArray), 0, "", "02 00", 2},
        {NAMED(KAsn1_WriteOctetString), 0, "80 00", "04 02 80 00", 4},
        {NAMED(KAsn1_WriteOctetString), 0, "", "04 00", 4},
        {NAMED(KAsn1_WriteBitString), 0, "F0", "03 02 04 F0", 3},
        {NAMED(KAsn1_WriteCharString), 30, "41", "13 01 41", 19},
        {NAMED(KAsn1_WriteBmpString), 0, "4E 2D", "1E 02 4E 2D", 30},
        {NAMED(KAsn1_WriteUTF8String), 0, "E4 B8 AD", "0C 03 E4 B8 AD", 12},
        {NAMED(KAsn1_WriteEnumerated), 0, "80", "0A 01 80", 10},
        {NAMED(KAsn1_WriteIa5String), 0, "40", "16 01 40", 22},
        {NAMED(KAsn1_WritePrintableString), 30, "00 41", "1E 02 00 41", 30},
        {NAMED(KAsn1_WritePrintableString), 12, "41", "13 01 41", 19},
    };
    for (const auto &[writer, tag, content, element, wantTag] : rows) {
        SCOPED_TRACE(std::string(writer.name) + ' ' + element);
        Exact source(hex(content), tag);
        source.record.unusedBits = 4;
        Anybuf previous = {}; // the out pointer may be the link of a chain
        const Trace trace;
        EXPECT_EQ(writer.call(&source.record, &previous.next), KACERT_Ok);
        const Chain owner(previous.next);
        expectElement(previous.next, element, wantTag, wantTag == 3 ? 4 : 0);
        EXPECT_EQ(toHex(source.record), content);
        EXPECT_EQ(trace.lines().front(), std::string("======>") + writer.name + " Begin");
        EXPECT_EQ(trace.lines().back(), std::string("======>") + writer.name + " End");

        Anybuf *out = nullptr;
        EXPECT_EQ(writer.call(nullptr, &out), KACERT_InvalidParamErr);
        EXPECT_EQ(writer.call(&source.record, nullptr), KACERT_InvalidParamErr);
        const Anybuf gone{nullptr, 1, 0, 0, tag, nullptr, nullptr};
        EXPECT_EQ(writer.call(&gone, &out), KACERT_InvalidParamErr);
        if (writer.call == KAsn1_WritePrintableString) { // the chooser names the writer that failed
            EXPECT_EQ(trace.lines().back(), tag == 30 ? "------>KAsn1_WriteBmpString" : "------>KAsn1_WriteCharString");
        }
        EXPECT_TRUE(trace.has("------>KAsn1_Low_WriteTagAndLength"));
        EXPECT_EQ(out, nullptr);
    }
}

TEST(Asn1Primitive, WritersOfValues) {
    const std::pair<uint32_t, const char *> integers[] = {
        {0, "02 01 00"}, {127, "02 01 7F"}, {128, "02 02 00 80"}, {0xFFFFFFFF, "02 05 00 FF FF FF FF"}};
    for (const auto &[value, element] : integers) {
        Anybuf *out = nullptr;
        EXPECT_EQ(KAsn1_WriteInteger(value, &out), KACERT_Ok);
        expectElement(Chain(out).get(), element, 2);
    }
    const std::pair<uint8_t, const char *> booleans[] = {{0, "01 01 00"}, {2, "01 01 FF"}, {0x80, "01 01 FF"}};
    for (const auto &[value, element] : booleans) {
        Anybuf *out = nullptr;
        EXPECT_EQ(KAsn1_WriteBoolean(&value, &out), KACERT_Ok);
        expectElement(Chain(out).get(), element, 1);
    }
    Anybuf *out = nullptr;
    EXPECT_EQ(KAsn1_WriteNull(&out), KACERT_Ok);
    expectElement(Chain(out).get(), "05 00", 5);

    Octets octets = hex("2A 86 48 86 F7 0D 01 01 01");
    const AlgorithmRecord algorithm{7, view(octets, 30)};
    EXPECT_EQ(KAsn1_WriteObjectId(&algorithm, &out), KACERT_Ok);
    expectElement(Chain(out).get(), "06 09 2A 86 48 86 F7 0D 01 01 01", 6);
    const AlgorithmRecord empty = {};
    EXPECT_EQ(KAsn1_WriteObjectId(&empty, &out), KACERT_Ok);
    expectElement(Chain(out).get(), "06 00", 6);

    EXPECT_EQ(KAsn1_WriteBoolean(nullptr, &out), KACERT_InvalidParamErr);
    EXPECT_EQ(KAsn1_WriteNull(nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(KAsn1_WriteObjectId(nullptr, &out), KACERT_InvalidParamErr);
}

// Every reader of this kind gives the same: none looks at the tag.
TEST(Asn1Primitive, StringLikeReaders) {
    const std::tuple<const char *, const char *, uint32_t, const char *, uint32_t> rows[] = {
        {"octets", "04 02 80 00", 4, "80 00", 4},
        {"none", "04 00", 4, "", 4},
        {"constructed universal", "3E 02 00 41", 30, "00 41", 30},
        {"context", "A3 03 02 01 05", 0xA3, "02 01 05", 0xA3},
        {"bits of a node", "03 02 04 F0", 3, "F0", 3},
        {"bits of a record without tag", "03 02 04 F0", 0, "04 F0", 3},
        {"sign octet", "02 02 00 80", 2, "80", 2},
    };
    for (const auto &[name, element, tag, content, wantTag] : rows)
        for (const Named &reader : readers) {
            SCOPED_TRACE(std::string(reader.name) + ' ' + name);
            Exact source(hex(element), tag);
            source.record.next = &source.record;
            source.record.prev = &source.record;
            Anybuf *out = nullptr;
            EXPECT_EQ(reader.call(&source.record, &out), KACERT_Ok);
            const Chain owner(out);
            expectElement(out, content, wantTag);
            EXPECT_EQ(toHex(source.record), element);
        }
    Exact source(hex("03 02 04 F0"), 3); // unused bits come from the record, not from the wire
    source.record.unusedBits = 5;
    Anybuf *out = nullptr;
    EXPECT_EQ(KAsn1_ReadBitString(&source.record, &out), KACERT_Ok);
    expectElement(Chain(out).get(), "F0", 3, 5);
}

TEST(Asn1Primitive, ReadersOfValues) {
    const std::tuple<const char *, const char *, int32_t, uint32_t> integers[] = {
        {"zero", "02 01 00", 0, 0},
        {"no sign", "02 01 FF", 0, 255},
        {"sign octet", "02 05 00 FF FF FF FF", 0, 0xFFFFFFFF},
        {"cut to 32 bits", "02 05 01 02 03 04 05", 0, 0x02030405},
        {"octets behind the element", "02 01 07 FF FF", 0, 7},
        {"0x80", "02 80 01 09", 0, 9},
        {"0x80 with its content past the end", "02 80 01", 101, 77},
        {"empty", "02 00", 0, 0},
        {"content cut off", "02 02 07", 102, 77},
        {"length cut off", "02 82 00", 102, 77},
        {"0x80 at the end", "02 80", 101, 77},
        {"five length octets", "02 85 00 00 00 00 00", 101, 77},
    };
    for (const auto &[name, element, status, want] : integers) {
        const Exact source(hex(element), 2);
        uint32_t value = 77;
        EXPECT_EQ(KAsn1_ReadInteger(&source.record, &value), status) << name;
        EXPECT_EQ(value, want) << name;
    }
    const std::tuple<const char *, const char *, int32_t, uint8_t> booleans[] = {
        {"true", "01 01 FF", 0, 0xFF},      {"false", "01 01 00", 0, 0},
        {"as it stands", "01 01 05", 0, 5}, {"first of two", "01 02 06 07", 0, 6},
        {"empty", "01 00", 101, 77},        {"record one longer", "01 01 FF 00", 102, 77}};
    for (const auto &[name, element, status, want] : booleans) {
        const Exact source(hex(element), 1);
        uint8_t value = 77;
        EXPECT_EQ(KAsn1_ReadBoolean(&source.record, &value), status) << name;
        EXPECT_EQ(value, want) << name;
    }
    const std::pair<const char *, const char *> arrays[] = {
        {"02 02 00 80", "80"}, {"02 02 00 7F", "00 7F"}, {"02 01 00", "00"}, {"02 00", ""}};
    for (const auto &[element, content] : arrays) {
        const Exact source(hex(element), 2);
        Anybuf out = {};
        EXPECT_EQ(KAsn1_ReadIntegerArray(&source.record, &out), KACERT_Ok);
        expectElement(&out, content, 2);
        KI_ClearAnybuf(&out);
    }
    const Exact source(hex("06 03 55 1D 23"), 6);
    AlgorithmRecord *algorithm = nullptr;
    ASSERT_EQ(KAsn1_ReadObjectId(&source.record, &algorithm), KACERT_Ok);
    const Block<uint8_t> data(algorithm->oid.data);
    const Block<AlgorithmRecord> owner(algorithm);
    EXPECT_EQ(algorithm->id, 0u);
    expectElement(&algorithm->oid, "55 1D 23", 6);
}

} // namespace
} // namespace karil_test
