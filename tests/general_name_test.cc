#include "karil/name.h"

#include "der.h"

#include <gtest/gtest.h>
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

    const Anybuf &slot(uint32_t form) const { return record.*slotOf(form); }
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
    void setOther(uint32_t kind, const Octets &value, std::string_view type = "1.2.3.4") {
        set(Other, value);
        const Octets dotted = text(type);
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
    std::string flags() const { return toHex(record.present, 8); }
};

// What an encoder answers: the element, or "status N".
std::string encoded(int32_t (*encode)(GeneralNameRecord *, Anybuf **), Names &names) {
    Anybuf *out = nullptr;
    const int32_t status = encode(&names.record, &out);
    const Chain chain(out);
    EXPECT_EQ(chain == nullptr, status != KACERT_Ok);
    return status == KACERT_Ok ? toHex(*chain) : "status " + std::to_string(status);
}
std::string one(Names &names) { return encoded(KI_EncodeGeneralName, names); }
std::string all(Names &names) { return encoded(KI_EncodeGeneralNameS, names); }

int32_t decode(Octets der, Names &names, uint8_t &found) {
    const Anybuf source = view(der);
    return KI_DecodeGeneralNameS(&source, &names.record, &found);
}

// Elements of Names::setEveryForm as the plural encoder writes them.
const Octets Elements[] = {
    tlv(0xA0, {hex("06 03 2A 03 04"), hex("A0 05 0C 03 E4 B8 AD")}),
    hex("81 03 61 40 62"),
    hex("82 03 62 2E 63"),
    tlv(0xA4, commonName("x")),
    hex("86 03 75 3A 76"),
    hex("87 04 7F 00 00 01"),
};

TEST(GeneralName, EveryKindOfOtherName) {
    struct Row {
        const char *name;
        uint32_t kind;
        Octets value;
        uint32_t tagAfter;
        const char *one;
        const char *all;
    };
    const uint32_t came = 30; // a tag that would make a BMPString if it were left
    const Row rows[] = {
        {"BIT STRING", 3, hex("F0"), 3, "03 02 04 F0", "03 02 04 F0"},
        {"OCTET STRING", 4, hex("00 80"), 4, "04 02 00 80", "04 02 00 80"},
        {"UTF8String", 12, Gbk, came, "0C 03 E4 B8 AD", "A0 05 0C 03 E4 B8 AD"},
        {"PrintableString", 19, text("a_b"), 19, "13 03 61 5F 62", "13 03 61 5F 62"},
        {"IA5String", 22, text("a@b"), 22, "16 03 61 40 62", "16 03 61 40 62"},
        {"BMPString", 30, hex("41 D6 D0"), came, "1E 04 00 41 4E 2D", "1E 04 00 41 4E 2D"},
        {"no kind", 0, Gbk, came, "0C 03 E4 B8 AD", "0C 03 E4 B8 AD"},
        {"any other kind", 20, text("a"), came, "0C 01 61", "0C 01 61"},
        {"kind whose low octet is a known one", 0x104, text("a"), came, "0C 01 61", "0C 01 61"},
    };
    for (const Row &row : rows) {
        Names names;
        names.setOther(row.kind, row.value);
        Anybuf &value = names.record.otherNameValue;
        value.unusedBits = 4;
        for (const bool plural : {false, true}) {
            value.tag = came;
            const Octets element = tlv(0xA0, {hex("06 03 2A 03 04"), hex(plural ? row.all : row.one)});
            EXPECT_EQ(plural ? all(names) : one(names), toHex(plural ? tlv(0x30, element) : element)) << row.name;
            EXPECT_EQ(value.tag, row.tagAfter) << row.name;
        }
        EXPECT_EQ(toHex(value), toHex(row.value)) << row.name;
    }
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

TEST(GeneralName, EncodeFailures) {
    struct Row {
        uint32_t kind;
        size_t length; // of the value
        std::string type;
        int32_t status;
        const char *words;
    };
    std::string octets128 = "1.2";
    for (int i = 1; i < 128; ++i) octets128 += ".1";
    const Row rows[] = {
        {4, 1, "", 108, "------>没有设置CERT_SUBJECT_ALT_OTHERNAME_TYPEID属性值"},
        {4, 0, "1.2.3", 108, "------>没有设置CERT_SUBJECT_ALT_OTHERNAME_VALUE属性值"},
        {4, 0, "", 108, "------>没有设置CERT_SUBJECT_ALT_OTHERNAME_TYPEID属性值"},
        {4, 1, "1.2.x", 139, "------>KACert_GetOIDValue"},
        {4, 1, octets128 + ".1", 101, "------>KACert_GetOIDValue"},
        {12, 1025, "1.2.3", 101, "------>KI_EnCodeUtf8"},
        {0, 1025, "1.2.3", 101, "------>KI_EnCodeUtf8"},
        {30, 1025, "1.2.3", 101, "------>KI_Chinese2BmpString"},
    };
    for (const Row &row : rows)
        for (const auto encode : {one, all}) {
            Names names;
            names.setOther(row.kind, Octets(row.length, 'a'), row.type);
            Trace trace;
            EXPECT_EQ(encode(names), "status " + std::to_string(row.status)) << row.kind << row.type;
            EXPECT_TRUE(trace.has(row.words)) << row.words;
        }
    Names longest;
    longest.setOther(4, text("a"), octets128);
    EXPECT_EQ(one(longest), toHex(tlv(0xA0, {tlv(0x06, cat({hex("2A"), Octets(127, 1)})), hex("04 01 61")})));

    // A form behind one that was written already.
    Names directory;
    directory.set(Dns, text("b"));
    directory.setDirectory(std::string(1025, 'x'));
    directory.record.directoryName.next->value.data[0] = '_';
    EXPECT_EQ(all(directory), "status 101");

    Anybuf *out = nullptr;
    for (const auto encode : {KI_EncodeGeneralName, KI_EncodeGeneralNameS}) {
        Trace words;
        EXPECT_EQ(encode(nullptr, &out), KACERT_InvalidParamErr);
        EXPECT_TRUE(words.has("------>pGenName is Null."));
        EXPECT_EQ(encode(&directory.record, nullptr), KACERT_InvalidParamErr);
    }
    EXPECT_EQ(out, nullptr);
}

TEST(GeneralName, Decoded) {
    struct Row {
        const char *name;
        const char *content; // of the SEQUENCE
        const char *flags;
        uint32_t form; // the slot to look at, with what it holds
        const char *value;
        uint32_t tag;
    };
    const char *none = "00 00 00 00 00 00 00 00";
    const char *dns = "00 00 01 00 00 00 00 00";
    const Row rows[] = {
        {"empty", "", none, Dns, "", 0},
        {"rfc822Name", "81 03 61 40 62", "00 01 00 00 00 00 00 00", Rfc822, "61 40 62", 0x81},
        {"dNSName", "82 03 62 2E 63", dns, Dns, "62 2E 63", 0x82},
        {"uniformResourceIdentifier", "86 03 75 3A 76", "00 00 00 00 00 00 01 00", Uri, "75 3A 76", 0x86},
        {"iPAddress", "87 03 00 80 01", "00 00 00 00 00 00 00 01", Ip, "00 80 01", 0x87},
        {"directoryName", "A4 02 30 00", "00 00 00 00 01 00 00 00", Dns, "", 0},
        {"the first value stays", "82 01 61 81 01 62 82 01 63", "00 01 01 00 00 00 00 00", Dns, "61", 0x82},
        {"a later one is not even opened", "82 01 61 82 80 01", dns, Dns, "61", 0x82},
        {"otherName", "A0 08 06 02 2A 03 A0 02 05 00", none, Dns, "", 0},
        {"x400Address", "A3 02 30 00", none, Dns, "", 0},
        {"ediPartyName", "A5 03 81 01 61", none, Dns, "", 0},
        {"registeredID", "88 01 2A", none, Dns, "", 0},
        {"number 18", "92 01 61", none, Dns, "", 0},
        {"number of several octets", "9F 82 01 61", none, Dns, "", 0},
        {"behind forms that are passed over", "A0 00 A3 00 A5 00 88 01 2A 82 01 61", dns, Dns, "61", 0x82},
        {"only the number counts", "02 02 00 80", dns, Dns, "80", 2},
        {"constructed", "A2 02 05 00", dns, Dns, "05 00", 0xA2},
        {"empty value", "82 00", dns, Dns, "", 0x82},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Names names;
        uint8_t found = 9;
        ASSERT_EQ(decode(tlv(0x30, hex(row.content)), names, found), KACERT_Ok);
        EXPECT_EQ(found, row.flags == none ? 0 : 1);
        EXPECT_EQ(names.flags(), row.flags);
        EXPECT_EQ(toHex(names.slot(row.form)), row.value);
        EXPECT_EQ(names.slot(row.form).tag, row.tag);
        EXPECT_EQ(names.record.otherNameType.data, nullptr);
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
