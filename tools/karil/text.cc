#include "text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace tool {
namespace {

constexpr char32_t Replacement = 0xFFFD;

bool isContinuation(unsigned char octet) {
    return (octet & 0xC0) == 0x80;
}

// Takes the character at `position`, which moves behind it; U+FFFD for octets that are none.
char32_t takeCharacter(std::string_view text, std::size_t &position) {
    const auto first = static_cast<unsigned char>(text[position++]);
    if (first < 0x80)
        return first;
    const unsigned count = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    if (first < 0xC2 || first > 0xF4)
        return Replacement;
    char32_t character = first & (0x3FU >> count);
    for (unsigned i = 0; i < count; ++i) {
        if (position == text.size() || !isContinuation(static_cast<unsigned char>(text[position])))
            return Replacement;
        character = character << 6 | (static_cast<unsigned char>(text[position++]) & 0x3FU);
    }
    constexpr std::array<char32_t, 4> least = {0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < least[count] || character > 0x10FFFF || isSurrogate ? Replacement : character;
}

void putCharacter(std::string &out, char32_t character) {
    if (character < 0x80) {
        out += static_cast<char>(character);
        return;
    }
    const int count = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr std::array<unsigned, 4> marks = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(marks[static_cast<unsigned>(count)] | character >> (6 * count));
    for (int i = count - 1; i >= 0; --i)
        out += static_cast<char>(0x80 | (character >> (6 * i) & 0x3F));
}

bool isObeyed(char32_t character) {
    constexpr std::array<std::pair<char32_t, char32_t>, 8> ranges = {{{0x00, 0x1F},
                                                                      {0x7F, 0x9F},
                                                                      {0x061C, 0x061C},
                                                                      {0x200B, 0x200F},
                                                                      {0x2028, 0x202E},
                                                                      {0x2060, 0x206F},
                                                                      {0xFEFF, 0xFEFF},
                                                                      {0xE0000, 0xE007F}}};
    for (const auto &[first, last] : ranges)
        if (character >= first && character <= last)
            return true;
    return false;
}

// As JSON writes characters: those above 16 bits as two halves.
void putEscape(std::string &out, char32_t character) {
    std::array<char, 16> digits{};
    if (character > 0xFFFF) {
        putEscape(out, 0xD800 + ((character - 0x10000) >> 10));
        character = 0xDC00 + ((character - 0x10000) & 0x3FF);
    }
    std::snprintf(digits.data(), digits.size(), "\\u%04X", static_cast<unsigned>(character));
    out += digits.data();
}

template <class PutOther> std::string escapedWith(std::string_view text, PutOther putOther) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const char32_t character = takeCharacter(text, position);
        if (isObeyed(character))
            putEscape(out, character);
        else
            putOther(out, character);
    }
    return out;
}

// Converts piece by piece, since the library takes 1,024 octets at a time and answers at most as many. `sizeOf` tells
// how many octets the character at a position has.
template <class Convert, class SizeOf> std::string inPieces(Convert convert, karil::Bytes text, SizeOf sizeOf) {
    constexpr std::size_t most = 512;
    std::string out;
    while (!text.empty()) {
        std::size_t length = 0;
        while (length < text.size()) {
            const std::size_t size = sizeOf(text.subspan(length));
            if (length + size > most)
                break;
            length += size;
        }
        if (const auto piece = karil::ask(convert, text.first(length)))
            out += karil::textOf(*piece);
        text = text.subspan(length);
    }
    return out;
}

} // namespace

std::string fromLocal(karil::Bytes text) {
    return inPieces(KI_Chinese2UTF8String, text, [](karil::Bytes rest) -> std::size_t {
        return rest[0] > 0x80 && rest[0] < 0xFF && rest.size() > 1 ? 2 : 1;
    });
}

std::string fromBmp(karil::Bytes text) {
    return inPieces(KI_BmpString2UTF8, text, [](karil::Bytes rest) -> std::size_t {
        const bool isPair = rest.size() >= 4 && (rest[0] & 0xFC) == 0xD8;
        return isPair ? 4 : rest.size() >= 2 ? 2 : 1;
    });
}

karil::Octets toLocal(std::string_view text) {
    auto converted = karil::ask(KI_UTF8String2Chinese, karil::bytesOf(text));
    return converted ? std::move(*converted) : karil::Octets();
}

std::string escaped(std::string_view text) {
    return escapedWith(text, [](std::string &out, char32_t character) {
        if (character == '\\')
            out += '\\';
        putCharacter(out, character);
    });
}

std::string jsonString(std::string_view text) {
    const bool isPlain = std::all_of(text.begin(), text.end(), [](char character) {
        return character >= ' ' && character <= '~' && character != '"' && character != '\\';
    });
    if (isPlain)
        return std::string("\"").append(text) + "\"";
    const auto replace = nlohmann::json::error_handler_t::replace;
    const std::string quoted = nlohmann::json(std::string(text)).dump(-1, ' ', false, replace);
    return escapedWith(quoted, putCharacter);
}

std::string hex(karil::Bytes octets, char separator) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string out;
    out.reserve(octets.size() * 3);
    for (const std::uint8_t octet : octets) {
        if (separator != 0 && !out.empty())
            out += separator;
        out += digits[octet >> 4];
        out += digits[octet & 15];
    }
    return out;
}

namespace {

std::string formatted(std::int64_t seconds, const char *form) {
    const std::time_t moment = seconds;
    std::tm fields{};
    localtime_r(&moment, &fields);
    std::array<char, 128> text{};
    std::string out(text.data(), std::strftime(text.data(), text.size(), form, &fields));
    const long minutes = (fields.tm_gmtoff < 0 ? -fields.tm_gmtoff : fields.tm_gmtoff) / 60;
    std::snprintf(text.data(), text.size(), "%c%02ld:%02ld", fields.tm_gmtoff < 0 ? '-' : '+', minutes / 60,
                  minutes % 60);
    out += text.data();
    return out;
}

} // namespace

std::string timeText(std::int64_t seconds) {
    return formatted(seconds, "%Y-%m-%d %H:%M:%S %Z (") + ")";
}

std::string timeIso(std::int64_t seconds) {
    return formatted(seconds, "%Y-%m-%dT%H:%M:%S");
}

std::string dotted(karil::Bytes oid) {
    std::string out;
    std::uint64_t arc = 0;
    for (const std::uint8_t octet : oid) {
        if (arc >> 57 != 0)
            return "object identifier " + hex(oid);
        arc = arc << 7 | (octet & 0x7F);
        if ((octet & 0x80) != 0)
            continue;
        if (out.empty()) {
            const std::uint64_t root = arc < 80 ? arc / 40 : 2;
            out = std::to_string(root);
            arc -= root * 40;
        }
        out += "." + std::to_string(arc);
        arc = 0;
    }
    const bool isWhole = !oid.empty() && (oid.back() & 0x80) == 0;
    return isWhole ? out : "object identifier " + hex(oid);
}

std::vector<std::string> keyUsages(karil::Bytes bits) {
    constexpr std::array<const char *, 9> names = {"digitalSignature", "nonRepudiation", "keyEncipherment",
                                                   "dataEncipherment", "keyAgreement",   "keyCertSign",
                                                   "cRLSign",          "encipherOnly",   "decipherOnly"};
    std::vector<std::string> out;
    for (std::size_t i = 0; i < names.size() && i / 8 + 1 < bits.size(); ++i)
        if ((bits[i / 8 + 1] & (0x80 >> i % 8)) != 0)
            out.emplace_back(names[i]);
    return out;
}

std::string reasonName(unsigned reason) {
    constexpr std::array<const char *, 11> names = {"unspecified",        "keyCompromise", "cACompromise",
                                                    "affiliationChanged", "superseded",    "cessationOfOperation",
                                                    "certificateHold",    "reason 7",      "removeFromCRL",
                                                    "privilegeWithdrawn", "aACompromise"};
    return reason < names.size() ? names[reason] : "reason " + std::to_string(reason);
}

} // namespace tool
