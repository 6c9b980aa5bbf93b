#include "karil/name.h"

#include "der.h"
#include "rows.h"

#include <openssl/x509v3.h>

#include <algorithm>

using namespace karil_test;

namespace {

// The forms' tag numbers in a record's present flags, and the slots of those that are plain octets.
enum : uint32_t { Other = 0, Rfc822 = 1, Dns = 2, Directory = 4, Uri = 6, Ip = 7 };
const uint32_t Forms[] = {Other, Rfc822, Dns, Directory, Uri, Ip};
using Slot = Anybuf GeneralNameRecord::*;
const Slot Plain[] = {&GeneralNameRecord::otherNameValue, &GeneralNameRecord::rfc822Name, &GeneralNameRecord::dNSName,
                      &GeneralNameRecord::uniformResourceIdentifier, &GeneralNameRecord::iPAddress};
// Of a form that is plain octets.
Slot slotOf(uint32_t form) { return Plain[form < Directory ? form : form - 3]; }

const Octets Gbk = hex("D6 D0"); // U+4E2D in code page 936

// A general-name record that the test fills and frees.
struct Names {
    GeneralNameRecord record = {};

    Names() = default;
    Names(const Names &) = delete;
    Names &operator=(const Names &) = delete;
    ~Names() {
        for (const Slot slot : Plain) KI_ClearAnybuf(&(record.*slot));
        KI_ClearAnybuf(&record.otherNameType);
        KI_FreeName(record.directoryName.next);
    }

    void set(uint32_t form, const Octets &value) {
        record.present[form] = 1;
        KI_SetAttributeCharValue(&(record.*slotOf(form)), value.data(), static_cast<uint32_t>(value.size()));
    }
    void setDirectory(std::string_view characters) {
        record.present[Directory] = 1;
        Octets der = commonName(characters);
        const Anybuf source = view(der);
        EXPECT_EQ(KI_DecodeIssuerSubject(&source, &record.directoryName), KACERT_Ok);
    }
    void setOther(uint32_t kind, const Octets &value, const Octets &dotted = text("1.2.3.4")) {
        set(Other, value);
        record.otherNameKind = kind;
        KI_SetAttributeCharValue(&record.otherNameType, dotted.data(), static_cast<uint32_t>(dotted.size()));
    }
    void setEveryForm() {
        setOther(12, Gbk);
        set(Rfc822, text("a@b"));
        set(Dns, text("b.c"));
        setDirectory("x");
        set(Uri, text("u:v"));
        set(Ip, hex("7F 00 00 01"));
    }
};

std::string encoded(int32_t (*encode)(GeneralNameRecord *, Anybuf **), Names &names) {
    Anybuf *out = nullptr;
    const int32_t status = encode(&names.record, &out);
    return answerOf(status, out);
}
std::string one(Names &names) { return encoded(KI_EncodeGeneralName, names); }
std::string all(Names &names) { return encoded(KI_EncodeGeneralNameS, names); }

// Elements of Names::setEveryForm as the plural encoder writes them.
const Octets Elements[] = {
    tlv(0xA0, {hex("06 03 2A 03 04"), hex("A0 05 0C 03 E4 B8 AD")}),
    hex("81 03 61 40 62"),
    hex("82 03 62 2E 63"),
    tlv(0xA4, commonName("x")),
    hex("86 03 75 3A 76"),
    hex("87 04 7F 00 00 01"),
};

ROWS(GeneralName, OtherNames) {
    Names names;
    names.setOther(row.number<uint32_t>("kind"), row.octets("value"));
    Anybuf &value = names.record.otherNameValue;
    value.unusedBits = 4;
    for (const bool plural : {false, true}) {
        value.tag = 30;
        const Octets element = tlv(0xA0, {hex("06 03 2A 03 04"), row.octets(plural ? "all" : "one")});
        EXPECT_EQ(plural ? all(names) : one(names), toHex(plural ? tlv(0x30, element) : element));
        EXPECT_EQ(value.tag, row.number("tagAfter"));
    }
    EXPECT_EQ(toHex(value), row.hex("value"));
}

TEST(GeneralName, PluralWritesAllAndSingularTheFirst) {
    Names names;
    EXPECT_EQ(one(names), "status 110");
    EXPECT_EQ(all(names), "30 00");
    names.setEveryForm();
    EXPECT_EQ(all(names), toHex(seq({Elements[0], Elements[1], Elements[2], Elements[3], Elements[4], Elements[5]})));
    EXPECT_EQ(one(names), toHex(tlv(0xA0, {hex("06 03 2A 03 04"), hex("0C 03 E4 B8 AD")})));
    // With the leading forms taken away one by one.
    for (size_t first = 1; first < 6; ++first) {
        names.record.present[Forms[first - 1]] = 0;
        Octets rest;
        for (size_t i = first; i < 6; ++i) rest = cat({rest, Elements[i]});
        EXPECT_EQ(one(names), toHex(Elements[first])) << first;
        EXPECT_EQ(all(names), toHex(tlv(0x30, rest))) << first;
    }
    // Octets that no check or pad rule may touch, and slots without any.
    Names odd;
    odd.record.present[Rfc822] = odd.record.present[Directory] = 1;
    odd.set(Dns, Gbk);
    odd.set(Ip, hex("00 80"));
    EXPECT_EQ(all(odd), "30 0E 81 00 82 02 D6 D0 A4 02 30 00 87 02 00 80");
    odd.record.present[Rfc822] = odd.record.present[Directory] = odd.record.present[Dns] = 0;
    EXPECT_EQ(one(odd), "87 02 00 80");
}

ROWS(GeneralName, OtherNamesRefused) {
    for (const auto encode : {one, all}) {
        Names names;
        names.setOther(row.number<uint32_t>("kind"), row.octets("value"), row.octets("type"));
        const Trace trace;
        EXPECT_EQ(encode(names), "status " + row("status"));
        EXPECT_TRUE(trace.has(row("words")));
    }
}

TEST(GeneralName, EncodeFailures) {
    std::string octets128 = "1.2";
    for (int i = 1; i < 128; ++i) octets128 += ".1";
    Names longest;
    longest.setOther(4, text("a"), text(octets128));
    EXPECT_EQ(one(longest), toHex(tlv(0xA0, {tlv(0x06, cat({hex("2A"), Octets(127, 1)})), hex("04 01 61")})));
    // A form behind one that was written already.
    Names directory;
    directory.set(Dns, text("b"));
    directory.setDirectory(std::string(1025, 'x'));
    directory.record.directoryName.next->value.data[0] = '_';
    EXPECT_EQ(all(directory), "status 101");
    Anybuf *out = nullptr;
    for (const auto encode : {KI_EncodeGeneralName, KI_EncodeGeneralNameS}) {
        const Trace words;
        EXPECT_EQ(encode(nullptr, &out), KACERT_InvalidParamErr);
        EXPECT_TRUE(words.has("------>pGenName is Null."));
        EXPECT_EQ(encode(&directory.record, nullptr), KACERT_InvalidParamErr);
    }
    EXPECT_EQ(out, nullptr);
}

ROWS(GeneralName, Decoded) {
    Names names;
    uint8_t found = 9;
    Octets der = tlv(0x30, row.octets("content"));
    const Anybuf source = view(der);
    ASSERT_EQ(KI_DecodeGeneralNameS(&source, &names.record, &found), KACERT_Ok);
    const Octets flags = row.octets("flags");
    EXPECT_EQ(found, flags == Octets(8) ? 0 : 1);
    EXPECT_EQ(toHex(names.record.present, 8), toHex(flags));
    EXPECT_EQ(names.record.otherNameType.data, nullptr);
    const auto form = row.number<uint32_t>("form");
    for (const uint32_t other : Forms)
        if (other != Directory) {
            const Anybuf &slot = names.record.*slotOf(other);
            EXPECT_TRUE(flags[other] != 0 || slot.data == nullptr) << other;
            EXPECT_EQ(slot.tag, other == form ? row.number<uint32_t>("tag") : flags[other] * slot.tag) << other;
            EXPECT_TRUE(other != form || toHex(slot) == row.hex("value")) << other;
        }
}

struct FreeNames {
    void operator()(GENERAL_NAMES *names) const { GENERAL_NAMES_free(names); }
};
using GeneralNamesPtr = std::unique_ptr<GENERAL_NAMES, FreeNames>;

Octets written(const GeneralNamesPtr &names) {
    unsigned char *der = nullptr;
    const int size = i2d_GENERAL_NAMES(names.get(), &der);
    const Octets octets(der, der + std::max(size, 0));
    OPENSSL_free(der);
    return octets;
}

TEST(GeneralName, LibcryptoReadsWhatIsWritten) {
    Names names;
    names.setEveryForm();
    const Octets der = hex(all(names));
    const uint8_t *at = der.data();
    const GeneralNamesPtr parsed(d2i_GENERAL_NAMES(nullptr, &at, static_cast<long>(der.size())));
    ASSERT_NE(parsed, nullptr);
    ASSERT_EQ(at, der.data() + der.size());
    ASSERT_EQ(sk_GENERAL_NAME_num(parsed.get()), 6);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(sk_GENERAL_NAME_value(parsed.get(), i)->type, static_cast<int>(Forms[i]));
    const ASN1_TYPE *other = sk_GENERAL_NAME_value(parsed.get(), 0)->d.otherName->value;
    ASSERT_EQ(other->type, V_ASN1_UTF8STRING);
    EXPECT_EQ(toHex(ASN1_STRING_get0_data(other->value.utf8string), 3), "E4 B8 AD");
    EXPECT_EQ(written(parsed), der);
}

} // namespace
