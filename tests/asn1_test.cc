// The DER engine: elements in and out, and the layer of tags, length fields and integers below them.
#include "element_calls.h"

#include "karil/asn1_low.h"

#include <algorithm>

namespace karil_test {
namespace {

ROWS(Asn1, Elements) {
    const std::string &want = row("want");
    const size_t blank = row("call").find(' ');
    const bool hasNumber = blank != std::string::npos;
    const auto number = static_cast<uint32_t>(hasNumber ? std::stoi(row("call").substr(blank)) : 77);
    for (const std::string &name : callsOf(row("call").substr(0, blank))) {
        SCOPED_TRACE(name);
        const ElementCall call = elementCall(name);
        ASSERT_NE(call, nullptr);
        const bool isWriter = name[0] == 'W';
        const bool isSet = row("call") == "Read*" && name == "ReadSet";
        const Records source(row, isSet);
        tagNumber = isWriter ? number : 77;
        Anybuf link = {}; // the out pointer may be the link of a chain
        const Trace trace;
        const int32_t status = call(source.first(), &link.next);
        const Chain owner(link.next);
        EXPECT_EQ(trace.lines().front(), "======>KAsn1_" + name + " Begin");
        EXPECT_EQ(trace.lines().back() == "======>KAsn1_" + name + " End", status == KACERT_Ok);
        const Records untouched(row, isSet);
        for (size_t i = 0; i < source.all.size() && source.first()->data != nullptr; ++i)
            EXPECT_EQ(toHex(source.all[i].record), toHex(untouched.all[i].record));
        if (status == KACERT_Ok) {
            EXPECT_EQ(nodesOf(link.next), want);
            EXPECT_EQ(tagNumber, number);
        } else {
            EXPECT_EQ(link.next, nullptr);
            EXPECT_EQ(std::to_string(status), want.substr(0, 3));
            EXPECT_TRUE(trace.has("------>" + want.substr(4)));
            EXPECT_EQ(trace.has("------>lTotalLength != 0"), want == "101 lTotalLength != 0");
        }
        Anybuf *out = nullptr;
        EXPECT_EQ(call(source.first(), nullptr), KACERT_InvalidParamErr);
        // An empty chain is good for SEQUENCE and SET; what comes as a number has no source.
        const bool needsSource =
            name != "WriteSequence" && name != "WriteSet" && name != "WriteInteger" && name != "WriteNull";
        EXPECT_EQ(needsSource ? call(nullptr, &out) : KACERT_InvalidParamErr, KACERT_InvalidParamErr);
        EXPECT_EQ(out, nullptr);
    }
}

// An empty value sets the out pointer, a failure does not.
TEST(Asn1, OutPointerOfAnEmptyList) {
    Exact source(hex("30 00"));
    Anybuf *first = &source.record;
    EXPECT_EQ(KAsn1_ReadSet(&source.record, &first), KACERT_InvalidTagErr);
    EXPECT_EQ(first, &source.record);
    EXPECT_EQ(KAsn1_ReadSequence(&source.record, &first), KACERT_Ok);
    EXPECT_EQ(first, nullptr);
}

ROWS(Asn1, Values) {
    const Exact source(row.octets("element"), 2);
    uint32_t value = 77;
    uint8_t octet = 77;
    if (row("call") == "ReadBoolean") {
        EXPECT_EQ(KAsn1_ReadBoolean(&source.record, &octet), row.number("status"));
        value = octet;
    } else {
        const auto call = row("call") == "ReadInteger" ? KAsn1_ReadInteger : KI_GetNumberFromImpOrExplicit;
        ASSERT_TRUE(call == KAsn1_ReadInteger || row("call") == "TagNumber");
        EXPECT_EQ(call(&source.record, &value), row.number("status"));
    }
    EXPECT_EQ(value, row.number("value"));
}

TEST(Asn1, LengthFieldOfAChain) {
    Octets octets(65536, 0xEE);
    for (const uint32_t second : {534u, 535u, 536u}) {
        Anybuf behind{octets.data(), second, 0, 0, 0, nullptr, nullptr};
        const Anybuf head{octets.data(), 65000, 0, 0, 0, &behind, nullptr};
        Anybuf *out = nullptr;
        ASSERT_EQ(KAsn1_WriteSequence(&head, &out), KACERT_Ok);
        const Chain owner(out);
        // 65,535 octets take one length octet more than X.690 10.1 has.
        const Octets header = hex(second == 534 ? "30 82 FF FE" : second == 535 ? "30 83 00 FF FF" : "30 83 01 00 00");
        EXPECT_EQ(Octets(out->data, out->data + header.size()), header);
        EXPECT_EQ(out->length, header.size() + 65000 + second);
        EXPECT_EQ(std::count(out->data + header.size(), out->data + out->length, 0xEE), 65000 + second);
    }
    // Sums above 32 bits are refused before anything is copied.
    for (const uint32_t second : {0x7FFFFFFAu, 0x80000000u, 0x80000001u}) {
        Anybuf behind{octets.data(), second, 0, 0, 0, nullptr, nullptr};
        const Anybuf head{octets.data(), 0x80000000, 0, 0, 0, &behind, nullptr};
        Anybuf *out = nullptr;
        EXPECT_EQ(KAsn1_WriteSet(&head, &out), KACERT_InvalidLengthErr) << second;
        EXPECT_EQ(out, nullptr);
    }
}

ROWS(Asn1, Headers) {
    const bool isTag = row("call") == "Tag";
    ASSERT_TRUE(isTag || row("call") == "Length");
    const Exact source(row.octets("octets"));
    const uint8_t *cursor = source.record.data;
    uint32_t *value = nullptr;
    uint32_t *size = nullptr;
    const bool isRefused = row.number("moved") == 0;
    EXPECT_EQ((isTag ? KAsn1_Low_GetTagInfo : KAsn1_Low_GetLengthInfo)(&cursor, &value, &size), isRefused ? 101 : 0);
    const Block<uint32_t> valueCell(value);
    const Block<uint32_t> sizeCell(size);
    EXPECT_EQ(cursor - source.record.data, row.number("moved"));
    ASSERT_EQ(value == nullptr, isRefused);
    ASSERT_EQ(size == nullptr, isRefused);
    EXPECT_EQ(isRefused ? 0 : *value, row.number<uint32_t>("value"));
    EXPECT_EQ(isRefused ? 0 : *size, row.number<uint32_t>("size"));
}

ROWS(Asn1, SecondLengthReader) {
    const Exact source(row.octets("octets"));
    const uint8_t *cursor = source.record.data;
    uint32_t length = 0;
    uint32_t size = 0;
    EXPECT_EQ(KAsn1_GetLengthInfo(&cursor, &length, &size), KACERT_Ok);
    EXPECT_EQ(length, row.number("length"));
    EXPECT_EQ(size, row.number("size"));
    EXPECT_EQ(cursor, source.record.data);
}

ROWS(Asn1, CertLengthIsTheClaimOfTheHeader) {
    const Exact source(row.octets("octets"));
    uint32_t total = 77;
    const Trace trace;
    EXPECT_EQ(KAsn1_GetCertLength(source.record.data, &total), row.number("status"));
    EXPECT_EQ(total, row.number<uint32_t>("total"));
    EXPECT_EQ(trace.has("------>KAsn1_Low_GetLengthInfo"), row.number("status") != 0);
}

ROWS(Asn1, HeaderForEachContentLength) {
    const auto tag = row.number<uint32_t>("tag");
    const auto size = row.number<uint32_t>("size");
    const auto header = static_cast<uint32_t>(row.octets("header").size());
    Octets content(size, 0xEE);
    const Anybuf source = view(content, tag);
    Anybuf *record = nullptr;
    uint8_t *position = nullptr;
    ASSERT_EQ(KAsn1_Low_WriteTagAndLength(&source, tag, &record, &position), KACERT_Ok);
    const Chain owner(record);
    EXPECT_EQ(toHex(record->data, header), row.hex("header"));
    EXPECT_EQ(record->length, header + size);
    const uint32_t extra = tag == 4 ? 0 : 1;
    EXPECT_EQ(KAsn1_Low_Count_LengthOfSize(size + extra), header - 1 - extra);
    EXPECT_EQ(KAsn1_Low_Count_LengthOfSize(0xFFFFFFFF), 5u);
}

ROWS(Asn1, WriteTagAndLength) {
    Exact source(row.octets("octets"));
    source.record.unusedBits = row.number<uint32_t>("bits");
    Anybuf *record = nullptr;
    uint8_t *position = nullptr;
    ASSERT_EQ(KAsn1_Low_WriteTagAndLength(&source.record, row.number<uint32_t>("tag"), &record, &position), KACERT_Ok);
    const Chain owner(record);
    EXPECT_EQ(toHex(record->data, static_cast<size_t>(position - record->data)), row.hex("header"));
    EXPECT_EQ(position + source.record.length, record->data + record->length);
    EXPECT_EQ(record->tag, row.number("recordTag"));
    EXPECT_EQ(record->unusedBits, row.number("recordBits"));
    EXPECT_EQ(record->form, 2u);
}

ROWS(Asn1, ReadTagAndLength) {
    Exact source(row.octets("octets"), row.number<uint32_t>("sourceTag"));
    source.record.unusedBits = 5;
    const uint8_t *cursor = source.record.data;
    Anybuf *record = nullptr;
    uint8_t *content = nullptr;
    EXPECT_EQ(KAsn1_Low_ReadTagAndLength(&source.record, &cursor, &record, &content), row.number("status"));
    const Chain owner(record);
    EXPECT_EQ(cursor - source.record.data, row.number("moved"));
    EXPECT_EQ(content == nullptr, row.number("length") == 0);
    ASSERT_EQ(record == nullptr, row.number("status") != KACERT_Ok);
    if (record == nullptr) return;
    EXPECT_EQ(record->tag, row.number("tag"));
    EXPECT_EQ(record->length, row.number("length"));
    EXPECT_EQ(record->form, 2u);
    EXPECT_EQ(record->unusedBits, source.record.tag == 3 ? 5u : 0u);
    EXPECT_EQ(record->data, content);
}

ROWS(Asn1, IntegersOut) {
    uint64_t value = 0;
    for (const uint8_t octet : row.octets("octets")) value = value << 8 | octet;
    uint8_t *written = nullptr;
    uint32_t *count = nullptr;
    ASSERT_EQ(KAsn1_Low_IntToChar(static_cast<uint32_t>(value), &written, &count), KACERT_Ok);
    const Block<uint8_t> writtenBlock(written);
    const Block<uint32_t> countCell(count);
    EXPECT_EQ(toHex(written, *count), row.hex("octets"));
}

ROWS(Asn1, IntegersIn) {
    const Exact source(row.octets("octets"));
    uint32_t *read = nullptr;
    ASSERT_EQ(KAsn1_Low_CharToInt(source.record.data, source.record.length, &read), KACERT_Ok);
    EXPECT_EQ(*Block<uint32_t>(read), row.number<uint32_t>("value"));
}

} // namespace
} // namespace karil_test
