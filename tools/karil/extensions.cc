#include "extensions.h"

#include "crypto.h"
#include "names.h"
#include "text.h"

#include <algorithm>
#include <bit>
#include <string>

namespace tool {
namespace {

void showKeyUsage(Printer &printer, const Element &value) {
    printer.words("usages", keyUsages(value.content));
}

void showExtKeyUsage(Printer &printer, const Element &value) {
    std::vector<std::string> usages;
    for (const Element &usage : Elements(value.content))
        usages.push_back(oidName(usage.content));
    printer.words("usages", usages);
}

void showConstraints(Printer &printer, const Element &value) {
    const Elements fields(value.content);
    const bool hasFlag = fields[0].tag == TagBoolean;
    printer.field("authority", hasFlag && fields[0].content.size() == 1 && fields[0].content[0] != 0);
    if (const Element length = fields[hasFlag ? 1 : 0])
        printer.field("path length", numberOf(length));
}

void showNames(Printer &printer, const Element &value) {
    showGeneralNames(printer, "names", value.content);
}

void showKeyId(Printer &printer, const Element &value) {
    printer.field("key id", hex(value.content));
}

void showAuthorityKeyId(Printer &printer, const Element &value) {
    for (const Element &field : Elements(value.content))
        switch (field.tag & 0x1F) {
        case 0:
            printer.field("key id", hex(field.content));
            break;
        case 1:
            showGeneralNames(printer, "issuer", field.content);
            break;
        default:
            printer.field("serial number", hex(magnitudeOf(field)));
        }
}

// [0] { [0] names } of a distribution point.
void showPoint(Printer &printer, const Element &point) {
    for (const Element &field : Elements(point.content))
        if (field.tag == TagContext0)
            for (const Element &name : Elements(elementOf(field.content).content)) {
                const auto [kind, text] = generalName(name);
                printer.pair({"type", kind}, {"value", text});
            }
}

void showPoints(Printer &printer, const Element &value) {
    const Printer::Level names = printer.list("names");
    for (const Element &point : Elements(value.content))
        showPoint(printer, point);
}

void showIssuingPoint(Printer &printer, const Element &value) {
    const Printer::Level names = printer.list("names");
    showPoint(printer, value);
}

void showAccess(Printer &printer, const Element &value) {
    const Printer::Level access = printer.list("access");
    for (const Element &description : Elements(value.content)) {
        const Elements fields(description.content);
        printer.pair({"method", oidName(fields[0].content)}, {"location", generalName(fields[1]).second});
    }
}

void showPolicies(Printer &printer, const Element &value) {
    const Printer::Level policies = printer.list("policies");
    for (const Element &policy : Elements(value.content)) {
        const Elements fields(policy.content);
        std::string qualifiers;
        for (const Element &qualifier : Elements(fields[1].content)) {
            const Elements parts(qualifier.content);
            if (isString(parts[1]))
                qualifiers += (qualifiers.empty() ? "" : " ") + stringText(parts[1]);
        }
        printer.pair({"policy", oidName(fields[0].content)}, {"statement", qualifiers});
    }
}

void showNumber(Printer &printer, const Element &value) {
    printer.field("number", numberOf(value));
}

// What is known of an extension: the tag of its value, and who shows it.
constexpr struct {
    std::string_view name;
    std::uint8_t tag;
    void (*show)(Printer &, const Element &);
} known[] = {
    {"keyUsage", TagBitString, showKeyUsage},
    {"extKeyUsage", TagSequence, showExtKeyUsage},
    {"basicConstraints", TagSequence, showConstraints},
    {"subjectAltName", TagSequence, showNames},
    {"issuerAltName", TagSequence, showNames},
    {"subjectKeyIdentifier", TagOctetString, showKeyId},
    {"authorityKeyIdentifier", TagSequence, showAuthorityKeyId},
    {"cRLDistributionPoints", TagSequence, showPoints},
    {"freshestCRL", TagSequence, showPoints},
    {"issuingDistributionPoint", TagSequence, showIssuingPoint},
    {"authorityInfoAccess", TagSequence, showAccess},
    {"subjectInfoAccess", TagSequence, showAccess},
    {"certificatePolicies", TagSequence, showPolicies},
    {"cRLNumber", TagInteger, showNumber},
    {"deltaCRLIndicator", TagInteger, showNumber},
};

void showExtension(Printer &printer, const Element &extension) {
    const Elements fields(extension.content);
    const bool hasFlag = fields[1].tag == TagBoolean;
    const std::string name = oidName(fields[0].content);
    const karil::Bytes octets = fields[hasFlag ? 2 : 1].content;
    const Element value = elementOf(octets);
    const Printer::Level one = printer.item();
    printer.field("name", name);
    printer.field("oid", dotted(fields[0].content));
    printer.field("critical", hasFlag && fields[1].content.size() == 1 && fields[1].content[0] != 0);
    const auto *row =
        std::find_if(std::begin(known), std::end(known), [&](const auto &each) { return each.name == name; });
    if (row != std::end(known) && row->tag == value.tag)
        row->show(printer, value);
    else
        printer.field("value", isString(value) ? stringText(value) : hex(octets));
}

} // namespace

void showExtensions(Printer &printer, const Element &extensions) {
    if (!extensions)
        return;
    const Printer::Level list = printer.list("extensions");
    for (const Element &extension : Elements(extensions.content))
        showExtension(printer, extension);
}

Element extensionValue(const Element &extensions, karil::Bytes oid) {
    for (const Element &extension : Elements(extensions.content)) {
        const Elements fields(extension.content);
        if (std::ranges::equal(fields[0].content, oid))
            return elementOf(fields[fields[1].tag == TagBoolean ? 2 : 1].content);
    }
    return {};
}

std::int64_t bitsOf(karil::Bytes magnitude) {
    while (!magnitude.empty() && magnitude[0] == 0)
        magnitude = magnitude.subspan(1);
    return magnitude.empty() ? 0 : static_cast<std::int64_t>(magnitude.size() - 1) * 8 + std::bit_width(magnitude[0]);
}

void showPublicKey(Printer &printer, const Element &info) {
    const Elements fields(info.content);
    const Elements algorithm(fields[0].content);
    const Printer::Level level = printer.object("public key");
    printer.field("algorithm", Identifier{algorithm[0].content});
    if (algorithm[1].tag == TagOid)
        printer.field("curve", Identifier{algorithm[1].content});
    const KeyPtr key = publicKeyOf(info);
    if (key)
        printer.field("bits", std::int64_t{EVP_PKEY_get_bits(key.get())});
    if (!key || EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_RSA || fields[1].content.empty())
        return;
    const Elements numbers(elementOf(fields[1].content.subspan(1)).content);
    printer.field("exponent", numberOf(numbers[1]));
}

} // namespace tool
