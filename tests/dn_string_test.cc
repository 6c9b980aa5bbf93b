// Distinguished names as text, from fields and back.
#include "testkit.h"

using namespace karil_test;

namespace {

using Names = std::vector<std::string>; // in the order of the function's arguments

#define KT_TEN(FIELD) FIELD(0), FIELD(1), FIELD(2), FIELD(3), FIELD(4), FIELD(5), FIELD(6), FIELD(7), FIELD(8), FIELD(9)
#define KT_SOURCE(I) reinterpret_cast<const uint8_t *>(values[I].data()), static_cast<int32_t>(values[I].size())
#define KT_TARGET(I) (isAsking ? nullptr : values[I].data()), &sizes[I]

std::string generate(bool joins, Names values) {
    values.resize(11);
    Octets output(1080);
    int32_t sizes[] = {77, 77}, status = 0;
    for (const bool isAsking : {true, false}) {
        uint8_t *area = isAsking ? nullptr : output.data();
        status = joins ? KA_GenerateDN_ForMultOu(KT_TEN(KT_SOURCE), KT_SOURCE(10), area, &sizes[isAsking])
                       : KA_GenerateDN(KT_TEN(KT_SOURCE), area, &sizes[isAsking]);
    }
    EXPECT_TRUE(sizes[0] == sizes[1] && (status == 0 || (status == -1 && sizes[0] == 77)));
    return status == 0 ? std::string(output.begin(), output.begin() + sizes[0]) : "refused";
}

Names parse(bool joins, const std::string &characters) {
    const Exact source(text(characters));
    const uint8_t *data = source.data();
    const auto size = static_cast<int32_t>(characters.size());
    std::vector<Octets> values(11, Octets(1024));
    Names asked(11), names(11);
    for (const bool isAsking : {true, false}) {
        std::vector<int32_t> sizes(joins ? 11 : 10, 77);
        EXPECT_EQ(joins ? KA_ParseDN_ForMultOu(KT_TEN(KT_TARGET), KT_TARGET(10), data, size)
                        : KA_ParseDN(KT_TEN(KT_TARGET), data, size),
                  size > 1024 ? -1 : 0);
        names.resize(sizes.size());
        for (size_t i = 0; i < sizes.size(); ++i) {
            EXPECT_TRUE(isAsking || asked[i].size() == static_cast<size_t>(sizes[i]));
            (isAsking ? asked : names)[i] = std::string(values[i].data(), values[i].data() + sizes[i]);
        }
    }
    return names;
}

const Names eleven = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"};

TEST(DnString, Generated) {
    EXPECT_EQ(generate(false, eleven), "C=1,O=2,OU=3,CN=4,E=5,S=6,L=7,PA=8,PC=9,Phone=10");
    EXPECT_EQ(generate(true, eleven), "E=1,CN=2,OU=3,O=4,L=5,S=6,C=7,PA=8,PC=9,Phone=10,IDCard=11");
    EXPECT_EQ(generate(false, {"", "", "", "a,C=b"}), "CN=a,C=b");
    EXPECT_EQ(generate(false, {}), "");
    EXPECT_EQ(generate(false, {"x", std::string(1023, 'y')}), "C=x,O=" + std::string(1023, 'y'));
    EXPECT_EQ(generate(false, {"x", std::string(1024, 'y')}), "refused");
    // Lengths below 1 leave a field out and take nothing off the sum; two of INT32_MAX come to more than 32 bits.
    const auto withLengths = [](int32_t first, int32_t second, int32_t third, int32_t *size) {
        uint8_t a[2000] = {}, *no = nullptr;
        return KA_GenerateDN(a, first, a, second, no, third, a, second, no, 0, no, 0, no, 0, no, 0, no, 0, no, 0, a,
                             size);
    };
    int32_t size = 77;
    EXPECT_EQ(withLengths(1, INT32_MAX, 0, &size) + withLengths(1025, -5000, 0, &size), -2);
    EXPECT_EQ(size, 77);
    EXPECT_EQ(withLengths(1, -1, INT32_MIN, &size), 0);
    EXPECT_EQ(size, 3);
}

TEST(DnString, Parsed) {
    const std::string all = "IDCard=11,Phone=10,PC=9,PA=8,L=7,S=6,E=5,CN=4,OU=3,O=2,C=1";
    EXPECT_EQ(parse(false, all), Names(eleven.begin(), eleven.end() - 1));
    EXPECT_EQ(parse(true, all), eleven);
    const struct {
        std::string text;
        Names names; // C, O, OU and CN
        std::string joined;
    } rows[] = {{"", {"", "", "", ""}, ""},
                {"OU=a,OU=b", {"", "", "b", ""}, "a,OU=b"},
                {"OU=a,CN=n,OU=b,O=o", {"", "o", "b", "n"}, "a,CN=n,OU=b"},
                {"CN=long,OU=,CN=x", {"", "", "", "x"}, ""},
                {"XC=1,c=2, C=3,C,C=", {"", "", "", ""}, ""},
                {",,C=O=x,O==", {"O=x", "=", "", ""}, ""},
                {{"CN=a\0b", 6}, {"", "", "", {"a\0b", 3}}, ""},
                {"CN=" + std::string(1021, 'y'), {"", "", "", std::string(1021, 'y')}, ""},
                {"CN=" + std::string(1022, 'y'), {"", "", "", ""}, ""}};
    for (const auto &row : rows) {
        Names names = parse(false, row.text), joined = parse(true, row.text);
        EXPECT_EQ(std::exchange(joined[2], names[2]), row.joined) << row.text;
        names.resize(4);
        joined.resize(4);
        EXPECT_TRUE(names == row.names && joined == row.names) << row.text;
    }
    std::vector<int32_t> sizes(10, 77);
    std::vector<Octets> values(10);
    const bool isAsking = true;
    EXPECT_EQ(KA_ParseDN(KT_TEN(KT_TARGET), nullptr, -1), 0);
    EXPECT_EQ(sizes, std::vector<int32_t>(10, 0));
}

} // namespace
