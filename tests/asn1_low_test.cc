// Tags, length fields and integers, octet by octet.
#include "karil/asn1_low.h"
#include "support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <tuple>

namespace karil_test {
namespace {

using Header = std::tuple<const char *, uint32_t, uint32_t, int>; // octets, value, its size, octets passed

template <size_t N>
void expectHeaders(int32_t (*read)(const uint8_t **, uint32_t **, uint32_t **), const Header (&rows)[N]) {
    for (const auto &[input, wantValue, wantOctets, moved] : rows) {
        SCOPED_TRACE(input);
        const Exact source(hex(input));
        const uint8_t *cursor = source.record.data;
        uint32_t *value = nullptr;
        uint32_t *octets = nullptr;
        EXPECT_EQ(read(&cursor, &value, &octets), moved == 0 ? KACERT_InvalidLengthErr : KACERT_Ok);
        const Block<uint32_t> valueCell(value);
        const Block<uint32_t> octetsCell(octets);
        EXPECT_EQ(cursor - source.record.data, moved);
        EXPECT_EQ(value == nullptr, moved == 0);
        EXPECT_EQ(octets == nullptr, moved == 0);
        EXPECT_EQ(value == nullptr ? 0 : *value, wantValue);
        EXPECT_EQ(octets == nullptr ? 0 : *octets, wantOctets);
    }
}

TEST(Asn1Low, TagsAreNormalised) {
    const Header rows[] = {
        {"30", 16, 1, 1},
        {"02", 2, 1, 1},
        {"61", 1, 1, 1},
        {"A0", 0xA0, 1, 1},
        {"C1", 0xC1, 1, 1},
        {"FE", 0xFE, 1, 1},
        {"1F 81", 0x181, 2, 2},
        {"7F 81", 0x181, 2, 2},
        {"1F 80", 0x80, 2, 2},
        {"1F 01 81", 0x10181, 3, 3},
        {"1F 1E 9E", 0x1E1E9E, 3, 3},
        {"1F 01 02 03 04 85", 0x03040585, 6, 6},
    };
    expectHeaders(KAsn1_Low_GetTagInfo, rows);
}

TEST(Asn1Low, LengthFields) {
    const Header rows[] = {
        {"00", 0, 1, 1},    {"81 05", 5, 2, 2},   {"82 01 00", 256, 3, 3},        {"84 FF FF FF FE", 0xFFFFFFFE, 5, 5},
        {"80 05", 5, 1, 2}, {"80 FF", 255, 1, 2}, {"85 00 00 00 00 01", 0, 0, 0}, {"FF", 0, 0, 0},
    };
    expectHeaders(KAsn1_Low_GetLengthInfo, rows);
}

TEST(Asn1Low, SecondLengthReader) {
    const std::tuple<const char *, uint32_t, uint32_t> rows[] = {
        {"30 82 50 03", 3, 1},
        {"FF FF 01 0F A0 20 AF 10 2F", 0x2F, 1}, // A0, 20 and AF have no bit of 0x50
        {"00 00 10 82", 2, 1},                   // 0x82 is a short form here
        {"00 00 40 90 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 11", 0x0E0F1100, 16},
    };
    for (const auto &[input, wantLength, wantSize] : rows) {
        const Exact source(hex(input));
        const uint8_t *cursor = source.record.data;
        uint32_t length = 0;
        uint32_t size = 0;
        EXPECT_EQ(KAsn1_GetLengthInfo(&cursor, &length, &size), KACERT_Ok);
        EXPECT_EQ(length, wantLength) << input;
        EXPECT_EQ(size, wantSize) << input;
        EXPECT_EQ(cursor, source.record.data) << input;
    }
}

TEST(Asn1Low, CertLengthIsTheClaimOfTheHeader) {
    const std::tuple<const char *, int32_t, uint32_t> rows[] = {
        {"30 82 01 00", 0, 260},        {"30 80 05", 0, 7}, {"1F 01 81 03", 0, 7}, {"30 84 FF FF FF F9", 0, 0xFFFFFFFF},
        {"30 84 FF FF FF FA", 101, 77}, {"30 85", 101, 77},
    };
    for (const auto &[input, status, wantTotal] : rows) {
        const Exact source(hex(input));
        uint32_t total = 77;
        const Trace trace;
        EXPECT_EQ(KAsn1_GetCertLength(source.record.data, &total), status) << input;
        EXPECT_EQ(total, wantTotal) << input;
        EXPECT_EQ(trace.has("------>KAsn1_Low_GetLengthInfo"), status != 0) << input;
    }
}

TEST(Asn1Low, HeaderForEachContentLength) {
    const std::tuple<uint32_t, uint32_t, const char *> rows[] = {
        {4, 0x7F, "04 7F"},
        {4, 0x80, "04 81 80"},
        {4, 0x100, "04 82 01 00"},
        {4, 0xFFFE, "04 82 FF FE"},
        {4, 0xFFFF, "04 83 00 FF FF"}, // one octet more than X.690 10.1 has
        {4, 0x10000, "04 83 01 00 00"},
        {4, 0xFFFFFF, "04 83 FF FF FF"},
        {4, 0x1000000, "04 84 01 00 00 00"},
        {3, 0xFFFE, "03 83 00 FF FF 00"}, // the octet in front counts
        {2, 0xFFFE, "02 83 00 FF FF 00"},
    };
    for (const auto &[tag, size, wantHeader] : rows) {
        Octets content(size, 0xEE);
        const Anybuf source = view(content, tag);
        Anybuf *record = nullptr;
        uint8_t *position = nullptr;
        ASSERT_EQ(KAsn1_Low_WriteTagAndLength(&source, tag, &record, &position), KACERT_Ok);
        const Chain owner(record);
        const auto header = static_cast<size_t>(position - record->data);
        EXPECT_EQ(toHex(record->data, header), wantHeader);
        EXPECT_EQ(record->length, header + size) << wantHeader;
        const uint32_t extra = tag == 4 ? 0 : 1;
        EXPECT_EQ(KAsn1_Low_Count_LengthOfSize(size + extra), header - 1 - extra) << wantHeader;
    }
    EXPECT_EQ(KAsn1_Low_Count_LengthOfSize(0xFFFFFFFF), 5u);
}

TEST(Asn1Low, WriteTagAndLength) {
    const std::tuple<const char *, uint32_t, const char *, uint32_t, const char *, uint32_t, uint32_t> rows[] = {
        {"a set top bit takes a zero octet", 0x02, "80", 0, "02 02 00", 2, 0},
        {"a clear one does not", 0x02, "7F", 0, "02 01", 2, 0},
        {"leading zeros stay", 0x02, "00 80", 0, "02 02", 2, 0},
        {"unused bits go first", 0x03, "F0", 4, "03 02 04", 3, 4},
        {"their low octet", 0x03, "F0", 0x104, "03 02 04", 3, 0x104},
        {"for no bits as well", 0x03, "", 0, "03 01 00", 3, 0},
        {"a context tag takes no zero octet", 0x82, "80", 0, "82 01", 0x82, 0},
        {"and no unused bits", 0x83, "F0", 4, "83 01", 0x83, 0},
        {"constructed universal", 0x30, "80", 4, "30 01", 16, 0},
        {"application", 0x61, "80", 0, "61 01", 1, 0},
        {"eight bits of the tag", 0x1A3, "80", 0, "A3 01", 0xA3, 0},
    };
    for (const auto &[name, tag, octets, unusedBits, header, recordTag, recordBits] : rows) {
        SCOPED_TRACE(name);
        Exact source(hex(octets));
        source.record.unusedBits = unusedBits;
        Anybuf *record = nullptr;
        uint8_t *position = nullptr;
        ASSERT_EQ(KAsn1_Low_WriteTagAndLength(&source.record, tag, &record, &position), KACERT_Ok);
        const Chain owner(record);
        EXPECT_EQ(toHex(record->data, static_cast<size_t>(position - record->data)), header);
        EXPECT_EQ(position + source.record.length, record->data + record->length);
        EXPECT_EQ(record->tag, recordTag);
        EXPECT_EQ(record->unusedBits, recordBits);
        EXPECT_EQ(record->form, 2u);
    }
}

TEST(Asn1Low, ReadTagAndLength) {
    const std::tuple<const char *, const char *, uint32_t, int32_t, uint32_t, int, uint32_t> rows[] = {
        {"sign octet", "02 02 00 80", 2, 0, 2, 3, 1},
        {"sign octet, source without tag", "02 02 00 80", 0, 0, 2, 3, 1},
        {"zero octet that is no sign", "02 02 00 7F", 2, 0, 2, 2, 2},
        {"two zero octets", "02 03 00 00 80", 2, 0, 2, 2, 3},
        {"a lone zero", "02 01 00", 2, 0, 2, 2, 1},
        {"zero octet of another type", "04 02 00 80", 4, 0, 4, 2, 2},
        {"bits", "03 02 04 F0", 3, 0, 3, 3, 1},
        {"no bits", "03 01 00", 3, 0, 3, 3, 0},
        {"bits, source without tag", "03 02 04 F0", 0, 0, 3, 2, 2},
        {"integer in a record of bits", "02 03 07 00 80", 3, 0, 2, 4, 1},
        {"long tag", "1F 81 01 AA", 0, 0, 0x181, 3, 1},
        {"length in the long form", "04 82 00 01 AA", 4, 0, 4, 4, 1},
        {"record one longer", "04 01 AA BB", 4, 102, 0, 0, 0},
        {"record one shorter", "04 02 AA", 4, 102, 0, 0, 0},
        {"nothing", "", 4, 102, 0, 0, 0},
        {"tag cut off", "1F 01 02", 4, 102, 0, 0, 0},
        {"length cut off", "04 82 00", 4, 102, 0, 0, 0},
        {"length that wraps", "04 84 FF FF FF FF", 4, 102, 0, 0, 0},
        {"five length octets", "04 85 00 00 00 00 00", 4, 101, 0, 0, 0},
        {"0x80 behind the end", "04 80", 4, 101, 0, 0, 0},
        {"0x80 with content behind the end", "04 80 01", 4, 101, 0, 0, 0},
        {"bits without an octet", "03 00", 3, 101, 0, 0, 0},
    };
    for (const auto &[name, element, sourceTag, status, tag, moved, length] : rows) {
        SCOPED_TRACE(name);
        Exact source(hex(element), sourceTag);
        source.record.unusedBits = 5;
        const uint8_t *cursor = source.record.data;
        Anybuf *record = nullptr;
        uint8_t *content = nullptr;
        EXPECT_EQ(KAsn1_Low_ReadTagAndLength(&source.record, &cursor, &record, &content), status);
        const Chain owner(record);
        EXPECT_EQ(cursor - source.record.data, moved);
        EXPECT_EQ(content == nullptr, length == 0);
        ASSERT_EQ(record == nullptr, status != KACERT_Ok);
        if (record == nullptr) continue;
        EXPECT_EQ(record->tag, tag);
        EXPECT_EQ(record->length, length);
        EXPECT_EQ(record->form, 2u);
        EXPECT_EQ(record->unusedBits, sourceTag == 3 ? 5u : 0u);
        EXPECT_EQ(record->data, content);
    }
}

TEST(Asn1Low, IntegersOutAndIn) {
    const char *const shortest[] = {"00",          "7F",          "00 80",          "00 FF",
                                    "01 00",       "7F FF",       "00 80 00",       "00 FF FF",
                                    "01 00 00",    "7F FF FF",    "00 80 00 00",    "00 FF FF FF",
                                    "01 00 00 00", "7F FF FF FF", "00 80 00 00 00", "00 FF FF FF FF"};
    for (const char *octets : shortest) {
        uint64_t value = 0;
        for (const uint8_t octet : hex(octets)) value = value << 8 | octet;
        uint8_t *written = nullptr;
        uint32_t *count = nullptr;
        ASSERT_EQ(KAsn1_Low_IntToChar(static_cast<uint32_t>(value), &written, &count), KACERT_Ok);
        const Block<uint8_t> writtenBlock(written);
        const Block<uint32_t> countCell(count);
        EXPECT_EQ(toHex(written, *count), octets);
    }
    const std::pair<const char *, uint32_t> values[] = {
        {"", 0},
        {"00 00", 0},
        {"00 80", 128},
        {"01 00", 256},
        {"FF", 255},
        {"00 00 01", 1},
        {"00 FF FF FF FF", 0xFFFFFFFF},
        {"01 02 03 04 05", 0x02030405},
    };
    for (const auto &[octets, value] : values) {
        const Exact source(hex(octets));
        uint32_t *read = nullptr;
        ASSERT_EQ(KAsn1_Low_CharToInt(source.record.data, source.record.length, &read), KACERT_Ok);
        EXPECT_EQ(*Block<uint32_t>(read), value) << octets;
    }
}

} // namespace
} // namespace karil_test
