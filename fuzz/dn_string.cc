// Distinguished names as text: taken apart, and put together again from what was found.
#include "fuzz.h"

#include <array>
#include <string>
#include <tuple>

using namespace karil_fuzz;

namespace {

template <class Octet, class Length> struct Field {
    Octet *octets;
    Length length;
};

// Calls a function with two arguments for each field, and the two at its end.
template <class Function, class Fields, class... Rest> int32_t call(Function function, Fields &fields, Rest... rest) {
    const auto arguments = std::apply(
        [](auto &...field) { return std::tuple_cat(std::make_tuple(field.octets, field.length)...); }, fields);
    return std::apply([&](auto... all) { return function(all..., rest...); }, arguments);
}

// Keys in the order of the parsers' arguments.
const std::string Keys[] = {"C=", "O=", "OU=", "CN=", "E=", "S=", "L=", "PA=", "PC=", "Phone=", "IDCard="};

template <size_t Count> using Values = std::array<std::string, Count>;

template <size_t Count, class Parse> Values<Count> parse(Parse function, Bytes text) {
    const Area source(text);
    std::array<int32_t, Count> lengths;
    std::vector<Area> areas;
    std::array<Field<uint8_t, int32_t *>, Count> fields;
    for (size_t i = 0; i < Count; ++i) {
        areas.emplace_back(text.size());
        fields[i] = {areas[i].data(), &lengths[i]};
    }
    const int32_t status = call(function, fields, source.data(), lengthOf(text));
    must(status == (text.size() > 1024 ? -1 : 0), "1,024 octets are taken");
    Values<Count> values;
    for (size_t i = 0; i < Count; ++i)
        values[i] = std::string(areas[i].data(), areas[i].data() + lengths[i]);
    return values;
}

template <class Generate, size_t Count> std::string generate(Generate function, const Values<Count> &values) {
    std::array<Field<const uint8_t, int32_t>, Count> fields;
    for (size_t i = 0; i < Count; ++i)
        fields[i] = {reinterpret_cast<const uint8_t *>(values[i].data()), static_cast<int32_t>(values[i].size())};
    int32_t length = 0;
    must(call(function, fields, static_cast<uint8_t *>(nullptr), &length) == 0, "values from one text fit");
    const Area output(static_cast<size_t>(length));
    must(call(function, fields, output.data(), &length) == 0, "asking and writing agree");
    return {output.data(), output.data() + length};
}

// What stands behind the last occurrence of each key, up to a comma.
void checkLast(const std::string &text, const Values<10> &values) {
    const std::string framed = "," + text + ",";
    for (size_t i = 0; i < values.size(); ++i) {
        const size_t at = framed.rfind("," + Keys[i]);
        const size_t start = at + 1 + Keys[i].size();
        const bool isThere = at != std::string::npos && text.size() <= 1024;
        must(values[i] == (isThere ? framed.substr(start, framed.find(',', start) - start) : ""),
             "the last one stands");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const Bytes text(data, size);
    const Values<10> ten = parse<10>(KA_ParseDN, text);
    checkLast(std::string(data, data + size), ten);
    const std::string line = generate(KA_GenerateDN, ten);
    must(parse<10>(KA_ParseDN, {reinterpret_cast<const uint8_t *>(line.data()), line.size()}) == ten,
         "a text made of the values has them");
    Values<11> eleven = parse<11>(KA_ParseDN_ForMultOu, text);
    must(eleven[2].ends_with(ten[2]) && eleven[3] == ten[3] && eleven[9] == ten[9], "the parsers differ in OU alone");
    for (std::string &value : eleven) // joined units may hold other fields once more
        value.resize(std::min<size_t>(value.size(), 1024 / 11));
    must(generate(KA_GenerateDN_ForMultOu, eleven).size() <= 1080, "1,080 octets suffice");
    return 0;
}
