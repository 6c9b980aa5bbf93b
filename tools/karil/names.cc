#include "names.h"

#include "text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>

namespace tool {

bool isString(const Element &element) {
    constexpr std::array<std::uint8_t, 9> tags = {TagUtf8, 0x12, 0x13, 0x14, TagIa5, 0x19, 0x1A, 0x1B, TagBmp};
    return std::find(tags.begin(), tags.end(), element.tag) != tags.end();
}

std::string stringText(const Element &element) {
    if (element.tag == TagBmp)
        return fromBmp(element.content);
    if (element.tag == TagUtf8)
        return karil::textOf(element.content);
    return isString(element) ? fromLocal(element.content) : hex(element.content);
}

std::optional<std::int64_t> secondsOf(const Element &element) {
    constexpr std::size_t digits = 13;
    if ((element.tag != TagUtcTime && element.tag != TagGeneralizedTime) || element.content.size() != digits)
        return std::nullopt;
    std::int32_t *seconds = nullptr;
    if (KAsn1_Low_CtoITime(element.content.data(), digits, &seconds) != KACERT_Ok)
        return std::nullopt;
    const std::int64_t result = *seconds;
    KAPR_Free(seconds);
    return result;
}

std::vector<std::pair<std::string, std::string>> attributesOf(const Element &name) {
    std::vector<std::pair<std::string, std::string>> found;
    for (const Element &part : Elements(name.content))
        for (const Element &attribute : Elements(part.content)) {
            const Elements fields(attribute.content);
            found.emplace_back(dotted(fields[0].content), stringText(fields[1]));
        }
    return found;
}

namespace {

// An attribute type in words.
std::string typeName(const std::string &type) {
    karil::Octets oid(type.size() + 1);
    std::uint32_t length = 0;
    const karil::StatusCode status =
        KACert_GetOIDValue(type.data(), static_cast<std::int32_t>(type.size()), oid.data(), &length);
    return status ? oidName(karil::Bytes(oid).first(length)) : type;
}

std::string shortName(const std::string &type) {
    constexpr std::pair<std::string_view, std::string_view> names[] = {{"2.5.4.3", "CN"},
                                                                       {"2.5.4.6", "C"},
                                                                       {"2.5.4.7", "L"},
                                                                       {"2.5.4.8", "ST"},
                                                                       {"2.5.4.10", "O"},
                                                                       {"2.5.4.11", "OU"},
                                                                       {"2.5.4.5", "SN"},
                                                                       {"2.5.4.9", "STREET"},
                                                                       {"0.9.2342.19200300.100.1.25", "DC"},
                                                                       {"1.2.840.113549.1.9.1", "E"}};
    const auto *found =
        std::find_if(std::begin(names), std::end(names), [&](const auto &row) { return row.first == type; });
    return found == std::end(names) ? typeName(type) : std::string(found->second);
}

std::string addressText(karil::Bytes octets) {
    const bool isOld = octets.size() == 4 || octets.size() == 8;
    const std::size_t size = isOld ? 4 : 16;
    if (octets.size() != size && octets.size() != 2 * size)
        return hex(octets);
    std::string text;
    for (; !octets.empty(); octets = octets.subspan(size)) {
        std::array<char, INET6_ADDRSTRLEN> digits{};
        inet_ntop(isOld ? AF_INET : AF_INET6, octets.data(), digits.data(), digits.size());
        text += (text.empty() ? "" : "/") + std::string(digits.data());
    }
    return text;
}

} // namespace

std::string nameText(const Element &name) {
    std::string text;
    for (const auto &[type, value] : attributesOf(name))
        text += (text.empty() ? "" : ", ") + shortName(type) + "=" + value;
    return text;
}

void showName(Printer &printer, std::string_view label, const Element &name) {
    const Printer::Level level = printer.list(label);
    for (const auto &[type, value] : attributesOf(name))
        printer.pair({"type", typeName(type)}, {"value", value});
}

bool isSameName(const Element &one, const Element &other) {
    return attributesOf(one) == attributesOf(other);
}

std::pair<std::string, std::string> generalName(const Element &name) {
    const Elements inner(name.content);
    switch (name.tag & 0x1F) {
    case 0: // otherName: type and [0] value
        return {"otherName", oidName(inner[0].content) + " " + stringText(elementOf(inner[1].content))};
    case 1:
        return {"email", fromLocal(name.content)};
    case 2:
        return {"DNS", fromLocal(name.content)};
    case 4:
        return {"directory name", nameText(inner[0])};
    case 6:
        return {"URI", fromLocal(name.content)};
    case 7:
        return {"IP address", addressText(name.content)};
    case 8:
        return {"registered ID", oidName(name.content)};
    default:
        return {"name of kind " + std::to_string(name.tag & 0x1F), hex(name.content)};
    }
}

void showGeneralNames(Printer &printer, std::string_view label, karil::Bytes names) {
    const Printer::Level level = printer.list(label);
    for (const Element &name : Elements(names)) {
        const auto [kind, text] = generalName(name);
        printer.pair({"type", kind}, {"value", text});
    }
}

karil::Bytes magnitudeOf(const Element &integer) {
    const karil::Bytes content = integer.content;
    return content.size() > 1 && content[0] == 0 ? content.subspan(1) : content;
}

Value numberOf(const Element &integer) {
    const karil::Bytes magnitude = magnitudeOf(integer);
    if (magnitude.size() >= sizeof(std::int64_t))
        return "0x" + hex(magnitude);
    std::int64_t number = 0;
    for (const std::uint8_t octet : magnitude)
        number = number << 8 | octet;
    return number;
}

} // namespace tool
