#include "subject.h"

#include "der_write.h"
#include "text.h"

#include <algorithm>
#include <cctype>

namespace tool {

const char *const SubjectHelp =
    "C=CN,O=Example,CN=www.example.com: attributes in the order in which they are to stand; C, S, L, O, OU, CN, E, PA, "
    "PC or Phone; a comma in a value is written \\,";

namespace {

// Of a GeneralName.
constexpr std::uint8_t DnsName = TagContext | 2;

enum class Characters { Country, Printable, Ascii, Any };

// In the order of the ids of every family. The longest values are the upper bounds of RFC 5280 appendix A.1.
struct Attribute {
    const char *keys[2];
    Characters kind;
    std::size_t longest;
};
constexpr Attribute Attributes[] = {
    {{"C", "C"}, Characters::Country, 2},
    {{"S", "ST"}, Characters::Any, 128},
    {{"L", "L"}, Characters::Any, 128},
    {{"O", "O"}, Characters::Any, 64},
    {{"OU", "OU"}, Characters::Any, 64},
    {{"CN", "CN"}, Characters::Any, 64},
    {{"E", "emailAddress"}, Characters::Ascii, 255},
    {{"PA", "postalAddress"}, Characters::Any, 255},
    {{"PC", "postalCode"}, Characters::Any, 40},
    {{"Phone", "telephoneNumber"}, Characters::Printable, 32},
};

bool isAlike(std::string_view one, std::string_view other) {
    return std::ranges::equal(one, other, [](unsigned char a, unsigned char b) { return tolower(a) == tolower(b); });
}

bool isPlain(Characters kind, unsigned char character) {
    switch (kind) {
    case Characters::Country:
        return character >= 'A' && character <= 'Z';
    case Characters::Printable:
        return character < 0x80 &&
               (isalnum(character) != 0 ||
                std::string_view(" '()+,-./:=?").find(static_cast<char>(character)) != std::string_view::npos);
    case Characters::Ascii:
        return character > 0x20 && character < 0x7F;
    default:
        return character >= 0x20 && character != 0x7F;
    }
}

[[noreturn]] void refuse(const std::string &part, const std::string &why) {
    throw Failure{Exit::Misuse, "the subject: \"" + part + "\": " + why};
}

NamePart readPart(const std::string &key, const std::string &value) {
    const auto *const found = std::ranges::find_if(Attributes, [&](const Attribute &attribute) {
        return isAlike(key, attribute.keys[0]) || isAlike(key, attribute.keys[1]);
    });
    const std::string part = key + "=" + value;
    if (found == std::end(Attributes))
        refuse(part, "not one of C, S, L, O, OU, CN, E, PA, PC and Phone");
    if (value.empty())
        refuse(part, "no value");
    if (found->kind == Characters::Country && value.size() != 2)
        refuse(part, "a country has two capital letters");
    if (!std::ranges::all_of(value, [&](unsigned char character) { return isPlain(found->kind, character); }))
        refuse(part, found->kind == Characters::Country ? "a country has two capital letters"
                                                        : "a character that this attribute cannot hold");
    const auto characters = std::ranges::count_if(value, [](unsigned char octet) { return (octet & 0xC0) != 0x80; });
    if (static_cast<std::size_t>(characters) > found->longest)
        refuse(part, "more than " + std::to_string(found->longest) + " characters");
    karil::Octets local = toLocal(value);
    if (fromLocal(local) != value)
        refuse(part, "a character that code page 936 does not have");
    return {static_cast<std::int32_t>(found - std::begin(Attributes)), std::move(local)};
}

bool isDnsName(std::string_view name) {
    if (name.starts_with("*."))
        name.remove_prefix(2);
    if (name.empty() || name.size() > 253)
        return false;
    std::size_t label = 0;
    for (const char character : name) {
        const bool isInLabel = isalnum(static_cast<unsigned char>(character)) != 0 || character == '-';
        if (!isInLabel && (character != '.' || label == 0))
            return false;
        label = isInLabel ? label + 1 : 0;
        if (label > 63)
            return false;
    }
    return label > 0;
}

} // namespace

std::vector<NamePart> readSubject(const std::string &text) {
    std::vector<NamePart> parts;
    std::string key;
    std::string word;
    bool isValue = false;
    const auto finish = [&] {
        if (!isValue)
            refuse(word, "no attribute: KEY=VALUE is wanted");
        parts.push_back(readPart(key, word));
        word.clear();
        isValue = false;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (character == '\\' && i + 1 < text.size()) {
            word += text[++i];
        } else if (character == ',') {
            finish();
        } else if (character == '=' && !isValue) {
            key = word;
            word.clear();
            isValue = true;
        } else if (character != ' ' || !word.empty()) {
            word += character;
        }
    }
    finish();
    return parts;
}

karil::Octets dnsAltNames(const std::vector<std::string> &names) {
    karil::Octets all;
    for (const std::string &name : names) {
        if (!isDnsName(name))
            throw Failure{Exit::Misuse, "\"" + name + "\" is no DNS name"};
        all = joined({all, wrapped(DnsName, {karil::bytesOf(name)})});
    }
    return wrapped(TagSequence, {all});
}

// SEQUENCE { extensionRequest, SET { SEQUENCE { SEQUENCE { subjectAltName, OCTET STRING } } } } in [0]
karil::Octets requestForNames(karil::Bytes altNames) {
    const karil::Octets extension =
        wrapped(TagSequence, {wrapped(TagOid, {KARIL_OID_SUBJECT_ALT_NAME}), wrapped(TagOctetString, {altNames})});
    const karil::Octets value = wrapped(TagSet, {wrapped(TagSequence, {extension})});
    return wrapped(TagContext0, {wrapped(TagSequence, {wrapped(TagOid, {KARIL_OID_EXTENSION_REQUEST}), value})});
}

std::vector<std::string> requestedNames(karil::Bytes attributes) {
    std::vector<std::string> names;
    for (const Element &attribute : Elements(attributes)) {
        const Elements parts(attribute.content);
        if (!isSame(parts[0].content, KARIL_OID_EXTENSION_REQUEST))
            continue;
        for (const Element &extension : Elements(elementOf(parts[1].content).content)) {
            const Elements fields(extension.content);
            if (!isSame(fields[0].content, KARIL_OID_SUBJECT_ALT_NAME))
                continue;
            for (const Element &name : Elements(elementOf(fields[fields.size() - 1].content).content))
                if (name.tag == DnsName)
                    names.push_back(karil::textOf(name.content));
        }
    }
    return names;
}

} // namespace tool
