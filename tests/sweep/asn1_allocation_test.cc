// The exported readers and writers of single elements while allocations fail.
#include "allocation.h"
#include "element_calls.h"

#include "karil/asn1_low.h"
#include "karil/cert_ext.h"

using namespace karil_test;

namespace {

constexpr int32_t Time = 1577836800; // 2020-01-01 UTC

const std::map<std::string, ElementCall> others = {
    {"write SEQUENCE of NULL", [](auto, auto to) { return WriteNullSequence(to); }},
    {"write UTCTime", [](auto, auto to) { return KAsn1_WriteUtcTime(&Time, to); }},
    {"write GeneralizedTime", [](auto, auto to) { return KAsn1_WriteGeneralizedTime(&Time, to); }},
    {"write time", [](auto, auto to) { return KAsn1_Low_WriteLongTime(Time, 0x97, to); }},
    {"make a record", [](auto, auto to) { return KAsn1_Low_CreateAnyBuf(to); }},
};

void convert(Run &run, const std::string &name, ElementCall call, const Anybuf *source) {
    Anybuf *out = nullptr;
    run.step([&] { return call(source, &out); });
    const Chain owned(out);
    run.answer(name, text(nodesOf(out)));
    EXPECT_TRUE(out == nullptr || run.isWhole()) << name;
}

// Every good case of the engine's own tests.
void convertAll(Run &run) {
    static const std::vector<Row> rows = rowsOf("Asn1", "Elements");
    for (const Row &row : rows) {
        const std::string &call = row("call");
        const size_t blank = call.find(' ');
        tagNumber = blank != call.npos ? static_cast<uint32_t>(std::stoi(call.substr(blank))) : 0;
        if (!row("want").empty() && row("want").find('#') == std::string::npos) continue;
        for (const std::string &name : callsOf(call.substr(0, blank)))
            convert(run, row.place + name, elementCall(name),
                    Records(row, call == "Read*" && name == "ReadSet").first());
    }
    for (const auto &[name, call] : others) convert(run, name, call, nullptr);
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
