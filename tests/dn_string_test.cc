// Distinguished names as text, from fields and back.
#include "karil/dn_string.h"
#include "support.h"

#include <array>
#include <gtest/gtest.h>
#include <utility>

namespace karil_test {
namespace {

using Names = std::vector<std::string>; // in the order of the function's arguments

// Calls a function with as many fields as it has, two arguments a field, and the two at its end.
template <size_t Count, class Function, class Field, class... Rest>
int32_t callWith(Function function, std::array<Field, Count> &fields, Rest... rest) {
    const auto arguments = std::apply(
        [](auto &...field) { return std::tuple_cat(std::make_tuple(field.octets, field.length)...); }, fields);
    return std::apply([&](auto... all) { return function(all..., rest...); }, arguments);
}

struct Source {
    const uint8_t *octets = nullptr;
    int32_t length = 0;
};
template <size_t Count, class Function> std::string generate(Function function, const Names &values) {
    std::array<Source, Count> fields;
    for (size_t i = 0; i < values.size(); ++i)
        fields[i] = {reinterpret_cast<const uint8_t *>(values[i].data()), static_cast<int32_t>(values[i].size())};
    uint8_t output[1080];
    int32_t asked = 77, size = 77;
    const int32_t status = callWith(function, fields, static_cast<uint8_t *>(nullptr), &asked);
    EXPECT_EQ(callWith(function, fields, output, &size), status);
    EXPECT_TRUE(size == asked && (status == 0 || (status == -1 && size == 77)));
    return status == 0 ? std::string(output, output + size) : "refused";
}

struct Target {
    uint8_t *octets;
    int32_t *length;
};
template <size_t Count, class Function> Names parse(Function function, const std::string &characters) {
    const Exact source(text(characters));
    std::array<std::array<uint8_t, 1024>, Count> values;
    std::array<int32_t, Count> asked, sizes;
    sizes.fill(77);
    std::array<Target, Count> lengths, all;
    for (size_t i = 0; i < Count; ++i) {
        lengths[i] = {nullptr, &asked[i]};
        all[i] = {values[i].data(), &sizes[i]};
    }
    const auto size = static_cast<int32_t>(characters.size());
    const int32_t status = callWith(function, lengths, source.record.data, size);
    EXPECT_EQ(callWith(function, all, source.record.data, size), status);
    EXPECT_EQ(asked, sizes);
    Names names(Count);
    for (size_t i = 0; i < Count; ++i) names[i] = std::string(values[i].data(), values[i].data() + sizes[i]);
    return status == 0 ? names : names == Names(Count) ? Names{"refused"} : Names{"refused, with lengths"};
}

TEST(DnString, Generated) {
    const Names ten = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"};
    Names eleven = ten;
    eleven.push_back("11");
    EXPECT_EQ(generate<10>(KA_GenerateDN, ten), "C=1,O=2,OU=3,CN=4,E=5,S=6,L=7,PA=8,PC=9,Phone=10");
    EXPECT_EQ(generate<11>(KA_GenerateDN_ForMultOu, eleven),
              "E=1,CN=2,OU=3,O=4,L=5,S=6,C=7,PA=8,PC=9,Phone=10,IDCard=11");
    EXPECT_EQ(generate<10>(KA_GenerateDN, {"", "", "", "a,C=b"}), "CN=a,C=b");
    EXPECT_EQ(generate<10>(KA_GenerateDN, {}), "");
    EXPECT_EQ(generate<11>(KA_GenerateDN_ForMultOu, {"", "", "a,OU=b"}), "OU=a,OU=b");
    EXPECT_EQ(generate<10>(KA_GenerateDN, {"x", std::string(1023, 'y')}), "C=x,O=" + std::string(1023, 'y'));
    EXPECT_EQ(generate<10>(KA_GenerateDN, {"x", std::string(1024, 'y')}), "refused");
    uint8_t octets[8] = {'a'};
    int32_t size = 77;
    std::array<Source, 10> fields = {{{octets, 1}, {octets, -1}, {nullptr, INT32_MIN}}};
    EXPECT_EQ(callWith(KA_GenerateDN, fields, octets, &size), 0);
    EXPECT_EQ(std::string(octets, octets + size), "C=a");
    EXPECT_EQ(callWith(KA_GenerateDN, fields, octets, static_cast<int32_t *>(nullptr)), -1);
    for (const Source second : {Source{nullptr, 1}, Source{octets, INT32_MAX}}) {
        fields[1] = fields[2] = fields[3] = second;
        EXPECT_EQ(callWith(KA_GenerateDN, fields, octets, &size), -1);
    }
}

TEST(DnString, Parsed) {
    const std::string all = "IDCard=11,Phone=10,PC=9,PA=8,L=7,S=6,E=5,CN=4,OU=3,O=2,C=1";
    const Names eleven = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"};
    EXPECT_EQ(parse<10>(KA_ParseDN, all), Names(eleven.begin(), eleven.end() - 1));
    EXPECT_EQ(parse<11>(KA_ParseDN_ForMultOu, all), eleven);
    const struct {
        std::string text;
        Names first, joined; // C, O, OU and CN by both functions
    } rows[] = {
        {"", {"", "", "", ""}, {"", "", "", ""}},
        {"OU=a,OU=b", {"", "", "b", ""}, {"", "", "a,OU=b", ""}},
        {"OU=a,CN=n,OU=b,O=o", {"", "o", "b", "n"}, {"", "o", "a,CN=n,OU=b", "n"}},
        {"CN=long,OU=,CN=x", {"", "", "", "x"}, {"", "", "", "x"}},
        {"XC=1,c=2, C=3,C,C=", {"", "", "", ""}, {"", "", "", ""}},
        {",,C=O=x,O==", {"O=x", "=", "", ""}, {"O=x", "=", "", ""}},
        {std::string("CN=a\0b", 6), {"", "", "", std::string("a\0b", 3)}, {"", "", "", std::string("a\0b", 3)}},
        {"CN=" + std::string(1021, 'y'), {"", "", "", std::string(1021, 'y')}, {"", "", "", std::string(1021, 'y')}},
        {"CN=" + std::string(1022, 'y'), {"refused"}, {"refused"}},
    };
    for (const auto &row : rows) {
        Names first = parse<10>(KA_ParseDN, row.text), joined = parse<11>(KA_ParseDN_ForMultOu, row.text);
        first.resize(row.first.size());
        joined.resize(row.joined.size());
        EXPECT_TRUE(first == row.first && joined == row.joined) << row.text;
    }
    std::array<int32_t, 10> sizes;
    std::array<Target, 10> fields;
    for (size_t i = 0; i < 10; ++i) fields[i] = {nullptr, &(sizes[i] = 77)};
    EXPECT_EQ(callWith(KA_ParseDN, fields, static_cast<uint8_t *>(nullptr), 1), -1);
    EXPECT_EQ(sizes[0], 77);
    EXPECT_EQ(callWith(KA_ParseDN, fields, static_cast<uint8_t *>(nullptr), -1), 0);
    EXPECT_EQ(sizes[9], 0);
    fields[9].length = nullptr;
    EXPECT_EQ(callWith(KA_ParseDN, fields, static_cast<uint8_t *>(nullptr), 0), -1);
}

} // namespace
} // namespace karil_test
