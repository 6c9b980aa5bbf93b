// The exported readers and writers of single elements while allocations fail.
#include "allocation.h"
#include "der.h"

#include "karil/asn1.h"
#include "karil/asn1_low.h"
#include "karil/cert_ext.h"

using namespace karil_test;

namespace {

struct Row {
    const char *name;
    int32_t (*convert)(const Anybuf *, Anybuf **);
    std::string source;
};

uint32_t word;                       // takes a tag or its number
constexpr int32_t Time = 1577836800; // 2020-01-01 UTC

const Row rows[] = {
    {"write INTEGER", KAsn1_WriteIntegerArray, "85 06"},
    {"write OCTET STRING", KAsn1_WriteOctetString, "85 06"},
    {"write BIT STRING", KAsn1_WriteBitString, "85 06"},
    {"write characters", KAsn1_WriteCharString, "41"},
    {"write BMPString", KAsn1_WriteBmpString, "4E 2D"},
    {"write UTF8String", KAsn1_WriteUTF8String, "41"},
    {"write ENUMERATED", KAsn1_WriteEnumerated, "01"},
    {"write IA5String", KAsn1_WriteIa5String, "41"},
    {"write PrintableString", KAsn1_WritePrintableString, "41"},
    {"write SEQUENCE", KAsn1_WriteSequence, "05 00"},
    {"write SET", KAsn1_WriteSet, "05 00"},
    {"write [3] EXPLICIT", [](const Anybuf *from, Anybuf **to) { return KAsn1_WriteExplicit(from, 3, to); }, "05 00"},
    {"write [3] IMPLICIT", [](const Anybuf *from, Anybuf **to) { return KAsn1_WriteImplicit(from, 3, to); },
     "04 01 07"},
    {"write OBJECT IDENTIFIER",
     [](const Anybuf *from, Anybuf **to) {
         const AlgorithmRecord record = {0, *from};
         return KAsn1_WriteObjectId(&record, to);
     },
     "2A 03"},
    {"write INTEGER of 500", [](const Anybuf *, Anybuf **to) { return KAsn1_WriteInteger(500, to); }, ""},
    {"write BOOLEAN", [](const Anybuf *from, Anybuf **to) { return KAsn1_WriteBoolean(from->data, to); }, "01"},
    {"write NULL", [](const Anybuf *, Anybuf **to) { return KAsn1_WriteNull(to); }, ""},
    {"write SEQUENCE of NULL", [](const Anybuf *, Anybuf **to) { return WriteNullSequence(to); }, ""},
    {"write UTCTime", [](const Anybuf *, Anybuf **to) { return KAsn1_WriteUtcTime(&Time, to); }, ""},
    {"write GeneralizedTime", [](const Anybuf *, Anybuf **to) { return KAsn1_WriteGeneralizedTime(&Time, to); }, ""},
    {"write time", [](const Anybuf *, Anybuf **to) { return KAsn1_Low_WriteLongTime(Time, 0x97, to); }, ""},
    {"read OCTET STRING", KAsn1_ReadOctetString, "04 01 07"},
    {"read BIT STRING", KAsn1_ReadBitString, "03 02 00 07"},
    {"read characters", KAsn1_ReadCharString, "13 01 41"},
    {"read BMPString", KAsn1_ReadBmpString, "1E 02 4E 2D"},
    {"read UTF8String", KAsn1_ReadUTF8String, "0C 01 41"},
    {"read PrintableString", KAsn1_ReadPrintableString, "13 01 41"},
    {"read ENUMERATED", KAsn1_ReadEnumerated, "0A 01 01"},
    {"read IA5String", KAsn1_ReadIa5String, "16 01 41"},
    {"read SEQUENCE", KAsn1_ReadSequence, "30 05 04 01 07 05 00"},
    {"read SET", KAsn1_ReadSet, "31 05 04 01 07 05 00"},
    {"read EXPLICIT", [](const Anybuf *from, Anybuf **to) { return KAsn1_ReadExplicit(from, to, &word); },
     "A3 02 05 00"},
    {"read IMPLICIT, constructed", [](const Anybuf *from, Anybuf **to) { return KAsn1_ReadImplicit(from, to, &word); },
     "A3 05 04 01 07 05 00"},
    {"read IMPLICIT, primitive", [](const Anybuf *from, Anybuf **to) { return KAsn1_ReadImplicit(from, to, &word); },
     "83 01 07"},
    {"make a record", [](const Anybuf *, Anybuf **to) { return KAsn1_Low_CreateAnyBuf(to); }, ""},
};

void convertAll(Run &run) {
    for (const Row &row : rows) {
        Octets octets = hex(row.source);
        const Anybuf source = view(octets, row.source.starts_with("03") ? 3 : 0);
        Anybuf *out = nullptr;
        run.step([&] { return row.convert(&source, &out); });
        const Chain owned(out);
        run.answer(row.name, out);
        if (out != nullptr && out->next != nullptr) run.answer(std::string(row.name) + ", second", *out->next);
    }
}

// The two blocks that a call stored: both or none.
template <class First>
void answerBlocks(Run &run, const std::string &name, First *first, size_t count, uint32_t *second) {
    const Block<First> ownedFirst(first);
    const Block<uint32_t> ownedSecond(second);
    EXPECT_TRUE((first != nullptr) == run.isWhole() && (second != nullptr) == run.isWhole()) << name;
    if (first == nullptr || second == nullptr) return;
    run.answer(name, Octets(first, first + count));
    run.answer(name + ", second", Octets(second, second + 1));
}

void readBlocks(Run &run) {
    const Octets element = hex("02 02 00 85");
    const uint8_t *cursor = element.data();
    uint32_t *cells[6] = {};
    uint8_t *octets = nullptr;
    uint8_t *text = nullptr;
    run.step([&] { return KAsn1_Low_GetTagInfo(&cursor, &cells[0], &cells[1]); });
    answerBlocks(run, "tag", cells[0], 1, cells[1]);
    run.step([&] { return KAsn1_Low_GetLengthInfo(&cursor, &cells[2], &cells[3]); });
    answerBlocks(run, "length", cells[2], 1, cells[3]);
    EXPECT_TRUE(!run.isWhole() || cursor == element.data() + 2);
    run.step([&] { return KAsn1_Low_IntToChar(0x8500, &octets, &cells[4]); });
    answerBlocks(run, "integer", octets, 3, cells[4]);
    run.step([&] { return KAsn1_Low_ItoCTime(Time, &text, &cells[5]); });
    answerBlocks(run, "time", text, 13, cells[5]);
}

void readValues(Run &run) {
    Octets octets = hex("02 02 00 85");
    const Anybuf source = view(octets, 2);
    uint32_t *cell = nullptr;
    run.step([&] { return KAsn1_Low_CharToInt(octets.data() + 2, 2, &cell); });
    const Block<uint32_t> ownedCell(cell);
    EXPECT_EQ(cell != nullptr && *cell == 0x85, run.isWhole());
    int32_t *time = nullptr;
    run.step([&] { return KAsn1_Low_CtoITime(reinterpret_cast<const uint8_t *>("200101000000Z"), 13, &time); });
    const Block<int32_t> ownedTime(time);
    EXPECT_EQ(time != nullptr && *time == Time, run.isWhole());
    Anybuf record = {};
    run.step([&] { return KAsn1_ReadIntegerArray(&source, &record); });
    run.answer("integer", record);
    KI_ClearAnybuf(&record);
    AlgorithmRecord *algorithm = nullptr;
    run.step([&] { return KAsn1_ReadObjectId(&source, &algorithm); });
    const Block<AlgorithmRecord> ownedAlgorithm(algorithm);
    run.answer("object", algorithm != nullptr ? &algorithm->oid : nullptr);
    KAPR_Free(algorithm != nullptr ? algorithm->oid.data : nullptr);
    Anybuf *node = nullptr;
    uint8_t *position = nullptr;
    const uint8_t *cursor = octets.data();
    run.step([&] { return KAsn1_Low_ReadTagAndLength(&source, &cursor, &node, &position); });
    const Chain ownedNode(node);
    run.answer("opened", node);
    EXPECT_EQ(cursor != octets.data(), run.isWhole());
}

void copyRecords(Run &run) {
    Octets octets = hex("01 02");
    const AlgorithmRecord source = {5, view(octets, 6)};
    AlgorithmRecord copy = {};
    run.step([&] { return KI_CopyAlgorithm(&copy, &source); });
    EXPECT_EQ(copy.id == 5, run.isWhole());
    Anybuf set = {};
    run.step([&] { return KI_SetAttributeCharValue(&set, octets.data(), 2); });
    EXPECT_EQ(set.length, run.isWhole() ? 2u : 0u);
    run.answer("copy", copy.oid);
    run.answer("set", set);
    KI_ClearAnybuf(&copy.oid);
    KI_ClearAnybuf(&set);
}

// Without entries there is an element of NULL, or nothing where that cannot be made.
void writeEmptyAccessList(Run &run) {
    Anybuf *out = nullptr;
    run.step([&] { return KI_CERT_EncodeDiscriptList(nullptr, &out); });
    const Chain owned(out);
    run.answer("list", out != nullptr ? *out : Anybuf{});
}

TEST(FailingAllocations, Elements) {
    const Zone utc("UTC");
    const Scenario scenarios[] = {
        {"nodes", convertAll},
        {"blocks and cells", readBlocks},
        {"values", readValues},
        {"records", copyRecords},
        {"empty access list", writeEmptyAccessList, {KACERT_Ok}, {"list"}},
    };
    for (const Scenario &scenario : scenarios) sweep(scenario, Pool::Library);
}

} // namespace
