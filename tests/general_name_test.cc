#include "crypto.h"
#include "rows.h"

using namespace karil_test;

namespace {

// The forms' tag numbers in a record's present flags, and the slots of those that are plain octets.
enum : uint32_t { Other = 0, Rfc822 = 1, Dns = 2, Directory = 4, Uri = 6, Ip = 7 };
const uint32_t Forms[] = {Other, Rfc822, Dns, Directory, Uri, Ip};
using Slot = Anybuf GeneralNameRecord::*;
const std::map<uint32_t, Slot> slots = {{Other, &GeneralNameRecord::otherNameValue},
                                        {Rfc822, &GeneralNameRecord::rfc822Name},
                                        {Dns, &GeneralNameRecord::dNSName},
                                        {Uri, &GeneralNameRecord::uniformResourceIdentifier},
                                        {Ip, &GeneralNameRecord::iPAddress}};

const Octets Gbk = hex("D6 D0"); // U+4E2D in code page 936

// A general-name record that the test fills and frees.
struct Names {
    GeneralNameRecord record = {};

    Names() = default;
    Names(const Names &) = delete;
    Names &operator=(const Names &) = delete;
    ~Names() {
        for (const auto &[form, slot] : slots)
            KI_ClearAnybuf(&(record.*slot));
        KI_ClearAnybuf(&record.otherNameType);
        KI_FreeName(record.directoryName.next);
    }

    void set(uint32_t form, const Octets &value) {
        record.present[form] = 1;
        TRIED(KI_SetAttributeCharValue(&(record.*slots.at(form)), value.data(), sizeOf(value)));
    }
    void setDirectory(std::string_view characters) {
        record.present[Directory] = 1;
        const Exact source(commonName(characters));
        EXPECT_EQ(TRIED(KI_DecodeIssuerSubject(&source.record, &record.directoryName)), KACERT_Ok);
    }
    void setOther(uint32_t kind, const Octets &value, const Octets &dotted = text("1.2.3.4")) {
        set(Other, value);
        record.otherNameKind = kind;
        TRIED(KI_SetAttributeCharValue(&record.otherNameType, dotted.data(), sizeOf(dotted)));
    }
    void setEveryForm() {
        setOther(12, Gbk);
        set(Rfc822, text("a@b"));
        set(Dns, text("b.c"));
        setDirectory("x");
        set(Uri, text("u:v"));
        set(Ip, hex("7F 00 00 01"));
    }
    std::string one() { return encoded(KI_EncodeGeneralName); }
    std::string all() { return encoded(KI_EncodeGeneralNameS); }
    std::string encoded(int32_t (*encode)(GeneralNameRecord *, Anybuf **)) {
        Anybuf *out = nullptr;
        const int32_t status = TRIED(encode(&record, &out));
        return answerOf(status, out);
    }
};

// Elements of Names::setEveryForm as the plural encoder writes them.
const std::vector<Octets> Elements = {
    tlv(0xA0, {hex("06 03 2A 03 04"), hex("A0 05 0C 03 E4 B8 AD")}),
    hex("81 03 61 40 62"),
    hex("82 03 62 2E 63"),
    tlv(0xA4, commonName("x")),
    hex("86 03 75 3A 76"),
    hex("87 04 7F 00 00 01"),
};

SWEPT_ROWS(GeneralName, OtherNames) {
    Names names;
    names.setOther(row.number<uint32_t>("kind"), row.octets("value"));
    Anybuf &value = names.record.otherNameValue;
    value.unusedBits = 4;
    for (const bool plural : {false, true}) {
        value.tag = 30;
        const Octets element = tlv(0xA0, {hex("06 03 2A 03 04"), row.octets(plural ? "all" : "one")});
        EXPECT_EQ(plural ? names.all() : names.one(), toHex(plural ? tlv(0x30, element) : element));
        EXPECT_EQ(value.tag, row.number<uint32_t>("tagAfter"));
    }
    EXPECT_EQ(toHex(value), row.hex("value"));
}

TEST(GeneralName, PluralWritesAllAndSingularTheFirst) {
    EXPECT_EQ(Names().one(), "status 110");
    EXPECT_EQ(Names().all(), "30 00");
    sweep(
        [] {
            Names names;
            names.setEveryForm();
            // With the leading forms taken away one by one.
            for (size_t first = 0; first < 6; ++first) {
                Octets rest;
                for (size_t i = first; i < 6; ++i)
                    rest = cat({rest, Elements[i]});
                EXPECT_EQ(names.all(), toHex(tlv(0x30, rest))) << first;
                EXPECT_EQ(names.one(), first == 0 ? "A0 0A 06 03 2A 03 04 0C 03 E4 B8 AD" : toHex(Elements[first]));
                names.record.present[Forms[first]] = 0;
            }
        },
        {{KACERT_MemoryErr}, false});
    // Octets that no check or pad rule may touch, and slots without any.
    Names odd;
    odd.record.present[Rfc822] = odd.record.present[Directory] = 1;
    odd.set(Dns, Gbk);
    odd.set(Ip, hex("00 80"));
    EXPECT_EQ(odd.all(), "30 0E 81 00 82 02 D6 D0 A4 02 30 00 87 02 00 80");
    odd.record.present[Rfc822] = odd.record.present[Directory] = odd.record.present[Dns] = 0;
    EXPECT_EQ(odd.one(), "87 02 00 80");
}

ROWS(GeneralName, OtherNamesRefused) {
    for (const bool plural : {false, true}) {
        Names names;
        names.setOther(row.number<uint32_t>("kind"), row.octets("value"), row.octets("type"));
        const Trace trace;
        EXPECT_EQ(plural ? names.all() : names.one(), "status " + row("status"));
        EXPECT_TRUE(trace.has(row("words")));
    }
}

TEST(GeneralName, Limits) {
    std::string octets128 = "1.2";
    for (int i = 1; i < 128; ++i)
        octets128 += ".1";
    Names longest;
    longest.setOther(4, text("a"), text(octets128));
    EXPECT_EQ(longest.one(), toHex(tlv(0xA0, {tlv(0x06, cat({hex("2A"), Octets(127, 1)})), hex("04 01 61")})));
    // A form after one that was written already.
    Names directory;
    directory.set(Dns, text("b"));
    directory.setDirectory(std::string(1025, 'x'));
    directory.record.directoryName.next->value.data[0] = '_';
    EXPECT_EQ(directory.all(), "status 101");
    // A slot without its octets fails before the directory does.
    Names broken;
    broken.setDirectory("x");
    broken.record.present[Dns] = 1;
    broken.record.dNSName.length = 3;
    EXPECT_EQ(broken.all(), "status 108");
}

SWEPT_ROWS(GeneralName, Decoded, {KACERT_MemoryErr}, false) {
    Names names;
    uint8_t found = 9;
    const Exact source(tlv(0x30, row.octets("content")));
    ASSERT_EQ(TRIED(KI_DecodeGeneralNameS(&source.record, &names.record, &found)), KACERT_Ok);
    const Octets flags = row.octets("flags");
    EXPECT_EQ(found, flags == Octets(8) ? 0 : 1);
    EXPECT_EQ(toHex(names.record.present, 8), toHex(flags));
    EXPECT_EQ(names.record.otherNameType.data, nullptr);
    const auto form = row.number<uint32_t>("form");
    for (const auto &[other, slot] : slots) {
        const Anybuf &value = names.record.*slot;
        EXPECT_TRUE(flags[other] != 0 || value.data == nullptr) << other;
        EXPECT_EQ(value.tag, other == form ? row.number<uint32_t>("tag") : flags[other] * value.tag) << other;
        EXPECT_TRUE(other != form || toHex(value) == row.hex("value")) << other;
    }
}

TEST(GeneralName, LibcryptoReadsWhatIsWritten) {
    Names names;
    names.setEveryForm();
    const Octets der = hex(names.all());
    const auto read = parsed<d2i_GENERAL_NAMES, GENERAL_NAMES_free>(der);
    ASSERT_NE(read, nullptr);
    ASSERT_EQ(sk_GENERAL_NAME_num(read.get()), 6);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(sk_GENERAL_NAME_value(read.get(), i)->type, static_cast<int>(Forms[i]));
    const ASN1_TYPE *other = sk_GENERAL_NAME_value(read.get(), 0)->d.otherName->value;
    ASSERT_EQ(other->type, V_ASN1_UTF8STRING);
    EXPECT_EQ(toHex(octetsOf(other->value.utf8string)), "E4 B8 AD");
    EXPECT_EQ(derOf(i2d_GENERAL_NAMES, read.get()), der);
}

} // namespace
