// The DER engine: elements in and out, and the layer of tags, length fields and integers below them.
#include "rows.h"

#include <dlfcn.h>

using namespace karil_test;

namespace {

// A chain's nodes as rows have them; every link is checked on the way.
std::string nodesOf(const Anybuf *first) {
    std::string nodes;
    const Anybuf *before = nullptr;
    for (const Anybuf *node = first; node != nullptr; before = std::exchange(node, node->next)) {
        EXPECT_TRUE(node->prev == before && node->form == 2);
        nodes += (before != nullptr ? ", " : "") + toHex(*node) + (node->length != 0 ? " #" : "#");
        nodes += std::to_string(node->tag) + (node->unusedBits == 0 ? "" : '/' + std::to_string(node->unusedBits));
    }
    return nodes;
}

// A call by its name without KAsn1_. `nodes` receives what it stored, `number` what a tagged value's reader tells.
int32_t call(const std::string &name, const Anybuf *from, uint32_t &number, std::string &nodes) {
    using Call = int32_t (*)(const Anybuf *, Anybuf **);
    const auto other = reinterpret_cast<Call>(dlsym(RTLD_DEFAULT, ("KAsn1_" + name).c_str()));
    const AlgorithmRecord source = {7, *from};
    uint32_t value = 0;
    for (const uint8_t octet : from->data != nullptr ? bytesOf(*from) : Bytes())
        value = value << 8 | octet;
    AlgorithmRecord *algorithm = nullptr;
    Anybuf record = {};
    Anybuf link = {}; // the out pointer may be the link of a chain
    Anybuf **to = &link.next;
    const Anybuf *first = from->data == nullptr && from->length == 0 ? nullptr : from;
    const int32_t status = TRIED(name == "ReadIntegerArray" ? KAsn1_ReadIntegerArray(from, &record)
                                 : name == "ReadObjectId"   ? KAsn1_ReadObjectId(from, &algorithm)
                                 : name == "ReadExplicit"   ? KAsn1_ReadExplicit(from, to, &number)
                                 : name == "ReadImplicit"   ? KAsn1_ReadImplicit(from, to, &number)
                                 : name == "WriteExplicit"  ? KAsn1_WriteExplicit(from, number, to)
                                 : name == "WriteImplicit"  ? KAsn1_WriteImplicit(from, number, to)
                                 : name == "WriteObjectId"  ? KAsn1_WriteObjectId(&source, to)
                                 : name == "WriteInteger"   ? KAsn1_WriteInteger(value, to)
                                 : name == "WriteBoolean"   ? KAsn1_WriteBoolean(from->data, to)
                                 : name == "WriteNull"      ? KAsn1_WriteNull(to)
                                                            : other(first, to));
    const Block<AlgorithmRecord> owner(algorithm);
    const Chain chain(link.next);
    nodes = nodesOf(algorithm != nullptr ? &algorithm->oid : record.data != nullptr ? &record : link.next);
    EXPECT_EQ(record.data != nullptr,
              name == "ReadIntegerArray" && status == KACERT_Ok); // for its writer, at any length
    EXPECT_TRUE(algorithm == nullptr || algorithm->id == 0);
    KAPR_Free(algorithm != nullptr ? algorithm->oid.data : record.data);
    return status;
}

// A row's calls: itself, "Write*" and "Read*" for SEQUENCE and SET, "ReadString" for all that read alike.
std::vector<std::string> callsOf(const std::string &call) {
    if (call == "ReadString")
        return {"ReadOctetString", "ReadBitString",       "ReadCharString", "ReadBmpString",
                "ReadUTF8String",  "ReadPrintableString", "ReadEnumerated", "ReadIa5String"};
    if (call.back() != '*')
        return {call};
    return {call.substr(0, call.size() - 1) + "Sequence", call.substr(0, call.size() - 1) + "Set"};
}

// A row's source as linked records, each in a heap block of just its size; "none": no record, "gone": no octets.
std::vector<Exact> sourceOf(const Row &row, bool isSet) {
    std::vector<std::string> parts = row.list("source");
    std::vector<Exact> all;
    for (const std::string &part : parts.empty() ? std::vector<std::string>{""} : parts) {
        const size_t mark = std::min(part.find('#'), part.size());
        const size_t slash = std::min(part.find('/'), part.size());
        const bool isGone = part.rfind("gone", 0) == 0 || part == "none";
        Exact &one =
            all.emplace_back(isGone ? Octets(part != "none") : row.parse(part.substr(0, mark)),
                             mark < part.size() ? static_cast<uint32_t>(std::stoul(part.substr(mark + 1))) : 0);
        if (isSet && one.record.length != 0 && (one.data()[0] & 0x1F) == 16)
            one.data()[0] |= 1;
        one.record.data = isGone ? nullptr : one.record.data;
        one.record.unusedBits = slash < part.size() ? static_cast<uint32_t>(std::stoul(part.substr(slash + 1))) : 0;
    }
    for (size_t i = 1; i < all.size(); ++i)
        all[i - 1].record.next = &all[i].record;
    return all;
}

// The whole call's name, nodes in and out, or a status and the words that are traced then.
SWEPT_ROWS(Asn1, Elements) {
    const std::string &want = row("want");
    const size_t blank = row("call").find(' ');
    const auto wanted = static_cast<uint32_t>(blank != std::string::npos ? std::stoi(row("call").substr(blank)) : 77);
    for (const std::string &name : callsOf(row("call").substr(0, blank))) {
        SCOPED_TRACE(name);
        const bool isSet = row("call") == "Read*" && name == "ReadSet";
        const std::vector<Exact> source = sourceOf(row, isSet);
        uint32_t number = name[0] == 'W' ? wanted : 77;
        std::string nodes;
        const Trace trace;
        const int32_t status = call(name, &source[0].record, number, nodes);
        EXPECT_EQ(trace.lines().front(), "======>KAsn1_" + name + " Begin");
        EXPECT_EQ(trace.lines().back() == "======>KAsn1_" + name + " End", status == KACERT_Ok);
        const std::vector<Exact> untouched = sourceOf(row, isSet);
        for (size_t i = 0; i < source.size() && source[0].record.data != nullptr; ++i)
            EXPECT_EQ(toHex(source[i].record), toHex(untouched[i].record));
        EXPECT_EQ(nodes, status == KACERT_Ok ? want : "");
        EXPECT_EQ(number, status == KACERT_Ok || name[0] == 'W' ? wanted : 77);
        if (status == KACERT_Ok)
            continue;
        EXPECT_EQ(std::to_string(status), want.substr(0, 3));
        EXPECT_TRUE(trace.has("------>" + want.substr(4)));
        EXPECT_EQ(trace.has("------>lTotalLength != 0"), want == "101 lTotalLength != 0");
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
    const bool isBoolean = row("call") == "ReadBoolean";
    const auto other = row("call") == "ReadInteger" ? KAsn1_ReadInteger : KI_GetNumberFromImpOrExplicit;
    EXPECT_EQ(isBoolean ? KAsn1_ReadBoolean(&source.record, &octet) : other(&source.record, &value),
              row.number("status"));
    EXPECT_EQ(isBoolean ? octet : value, row.number<uint32_t>("value"));
}

TEST(Asn1, LengthFieldOfAChain) {
    Octets octets(65536, 0xEE);
    const auto chainOf = [&](uint32_t first, uint32_t second, auto write, Anybuf **out) {
        Anybuf behind{octets.data(), second, 0, 0, 0, nullptr, nullptr};
        const Anybuf head{octets.data(), first, 0, 0, 0, &behind, nullptr};
        return write(&head, out);
    };
    // 65,535 octets take one length octet more than X.690 10.1 has.
    const std::pair<uint32_t, const char *> rows[] = {
        {534, "30 82 FF FE"}, {535, "30 83 00 FF FF"}, {536, "30 83 01 00 00"}};
    for (const auto &[second, header] : rows) {
        Anybuf *out = nullptr;
        ASSERT_EQ(chainOf(65000, second, KAsn1_WriteSequence, &out), KACERT_Ok);
        const Chain owner(out);
        EXPECT_EQ(copyOf(bytesOf(*out)), cat({hex(header), Octets(65000 + second, 0xEE)}));
    }
    // Sums above 32 bits are refused before anything is copied.
    for (const uint32_t second : {0x7FFFFFFAu, 0x80000000u, 0x80000001u}) {
        Anybuf *out = nullptr;
        EXPECT_EQ(chainOf(0x80000000, second, KAsn1_WriteSet, &out), KACERT_InvalidLengthErr) << second;
        EXPECT_EQ(out, nullptr);
    }
}

// A cell's value, which is freed; 0 for none.
template <class T> T valueOf(T *cell) {
    return cell != nullptr ? *Block<T>(cell) : T{0};
}

SWEPT_ROWS(Asn1, Headers) {
    const Exact source(row.octets("octets"));
    const uint8_t *cursor = source.data();
    uint32_t *value = nullptr;
    uint32_t *size = nullptr;
    const auto read = row("call") == "Tag" ? KAsn1_Low_GetTagInfo : KAsn1_Low_GetLengthInfo;
    EXPECT_EQ(TRIED(read(&cursor, &value, &size)), row.number("moved") == 0 ? 101 : 0);
    EXPECT_EQ(cursor - source.data(), row.number("moved"));
    EXPECT_EQ(valueOf(value), row.number<uint32_t>("value"));
    EXPECT_EQ(valueOf(size), row.number<uint32_t>("size"));
}

ROWS(Asn1, SecondLengthReader) {
    const Exact source(row.octets("octets"));
    const uint8_t *cursor = source.data();
    uint32_t length = 0;
    uint32_t size = 0;
    EXPECT_EQ(KAsn1_GetLengthInfo(&cursor, &length, &size), KACERT_Ok);
    EXPECT_EQ(length, row.number<uint32_t>("length"));
    EXPECT_EQ(size, row.number<uint32_t>("size"));
    EXPECT_EQ(cursor, source.data());
}

ROWS(Asn1, CertLengthIsTheClaimOfTheHeader) {
    const Exact source(row.octets("octets"));
    uint32_t total = 77;
    const Trace trace;
    EXPECT_EQ(KAsn1_GetCertLength(source.data(), &total), row.number("status"));
    EXPECT_EQ(total, row.number<uint32_t>("total"));
    EXPECT_EQ(trace.has("------>KAsn1_Low_GetLengthInfo"), row.number("status") != 0);
}

// The record's tag and unused bits are those of the tag octet; "size" stands for so many octets.
SWEPT_ROWS(Asn1, WriteTagAndLength) {
    const bool isLong = !row("size").empty();
    Exact source(isLong ? Octets(row.number<size_t>("size"), 0x7E) : row.octets("octets"));
    source.record.unusedBits = row.number<uint32_t>("bits");
    const auto tag = row.number<uint32_t>("tag");
    Anybuf *record = nullptr;
    uint8_t *position = nullptr;
    ASSERT_EQ(TRIED(KAsn1_Low_WriteTagAndLength(&source.record, tag, &record, &position)), KACERT_Ok);
    const Chain owner(record);
    EXPECT_EQ(toHex(record->data, static_cast<size_t>(position - record->data)), row.hex("header"));
    EXPECT_EQ(position + source.record.length, record->data + record->length);
    EXPECT_EQ(record->tag, row.number<uint32_t>("recordTag"));
    EXPECT_EQ(record->unusedBits, row.number<uint32_t>("recordBits"));
    EXPECT_EQ(record->form, 2u);
    const auto header = static_cast<uint32_t>(row.octets("header").size());
    EXPECT_EQ(isLong && tag == 4 ? KAsn1_Low_Count_LengthOfSize(source.record.length) : header - 1, header - 1);
    EXPECT_EQ(KAsn1_Low_Count_LengthOfSize(0xFFFFFFFF), 5u);
}

SWEPT_ROWS(Asn1, ReadTagAndLength) {
    Exact source(row.octets("octets"), row.number<uint32_t>("sourceTag"));
    source.record.unusedBits = 5;
    const uint8_t *cursor = source.data();
    Anybuf *record = nullptr;
    uint8_t *content = nullptr;
    EXPECT_EQ(TRIED(KAsn1_Low_ReadTagAndLength(&source.record, &cursor, &record, &content)), row.number("status"));
    const Chain owner(record);
    EXPECT_EQ(cursor - source.data(), row.number("moved"));
    EXPECT_EQ(content == nullptr, row.number("length") == 0);
    ASSERT_EQ(record == nullptr, row.number("status") != KACERT_Ok);
    const Anybuf none = {};
    const Anybuf &read = record != nullptr ? *record : none;
    EXPECT_EQ(read.tag, row.number<uint32_t>("tag"));
    EXPECT_EQ(read.length, row.number<uint32_t>("length"));
    EXPECT_EQ(read.form, record != nullptr ? 2u : 0u);
    EXPECT_EQ(read.unusedBits, record != nullptr && source.record.tag == 3 ? 5u : 0u);
    EXPECT_EQ(read.data, content);
}

// Each goes out as the octets, and comes in again.
SWEPT_ROWS(Asn1, Integers) {
    for (const std::string &octets : row.list("octets")) {
        const Exact source(row.parse(octets));
        uint32_t *read = nullptr;
        ASSERT_EQ(TRIED(KAsn1_Low_CharToInt(source.data(), source.record.length, &read)), KACERT_Ok);
        const uint32_t value = valueOf(read);
        uint8_t *written = nullptr;
        uint32_t *count = nullptr;
        ASSERT_EQ(TRIED(KAsn1_Low_IntToChar(value, &written, &count)), KACERT_Ok);
        const Block<uint8_t> owner(written);
        EXPECT_EQ(toHex(written, valueOf(count)), row("out").empty() ? octets : row("out"));
        EXPECT_EQ(value, row("value").empty() ? value : row.number<uint32_t>("value"));
    }
}

} // namespace
