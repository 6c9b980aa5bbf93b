#include "karil/name.h"

#include "der.h"

#include <gtest/gtest.h>
#include <openssl/x509.h>

#include <sstream>

using namespace karil_test;

namespace {

const char CommonNameOid[] = "55 04 03";
const Octets Gbk = hex("D6 D0 B9 FA"); // U+4E2D U+56FD in code page 936

Octets times(size_t count, std::string_view part) {
    Octets all;
    while (count-- > 0) all = cat({all, hex(part)});
    return all;
}

// A name that the test fills and frees.
struct Name {
    NameRecord head = {};
    NameRecord *last = &head;

    Name() = default;
    Name(const Name &) = delete;
    Name &operator=(const Name &) = delete;
    ~Name() { KI_FreeName(head.next); }

    NameRecord *add(uint32_t id, std::string_view oidHex, const Octets &value, uint32_t tag = 0) {
        auto *record = static_cast<NameRecord *>(KAPR_Malloc("test", __LINE__, sizeof(NameRecord)));
        const Octets oidOctets = hex(oidHex);
        record->id = id;
        record->value.tag = tag;
        KI_SetAttributeCharValue(&record->oid, oidOctets.data(), static_cast<uint32_t>(oidOctets.size()));
        KI_SetAttributeCharValue(&record->value, value.data(), static_cast<uint32_t>(value.size()));
        return last = last->next = record;
    }
    size_t size() const {
        size_t count = 0;
        for (const NameRecord *record = head.next; record != nullptr; record = record->next) ++count;
        return count;
    }
};

int32_t decode(Octets der, Name &name) {
    const Anybuf source = view(der);
    return KI_DecodeIssuerSubject(&source, &name.head);
}

// The Name element, or "status N".
std::string encoded(const Name &name) {
    Anybuf *out = nullptr;
    const int32_t status = KI_EncodeIssuerSuject(&name.head, &out);
    const Chain chain(out);
    return status == KACERT_Ok ? toHex(*chain) : "status " + std::to_string(status);
}

Octets rdn(std::string_view oidHex, const Octets &value) { return set({seq({oid(oidHex), value})}); }

// The text form; "untouched" where the result was left as it was, "status N" for a failure.
std::string line(const Name &name) {
    Anybuf result = {nullptr, 77, 1, 2, 3, nullptr, nullptr};
    const int32_t status = KI_GetDN(&result, &name.head);
    const Block<uint8_t> data(result.data);
    EXPECT_EQ(result.unusedBits + result.form + result.tag, 6u);
    if (result.data == nullptr && result.length == 77)
        return status == KACERT_Ok ? "untouched" : "status " + std::to_string(status);
    EXPECT_EQ(status, KACERT_Ok);
    return std::string(result.data, result.data + result.length);
}

struct AttributeRow {
    uint32_t id;
    int nid;
    const char *oid;
    const char *key;
    uint8_t latinTag;   // of "Ab 1"
    uint8_t chineseTag; // of a value with Chinese characters
};

const AttributeRow attributeRows[] = {
    {25, NID_countryName, "55 04 06", "C=", 0x13, 0x13},
    {26, NID_localityName, "55 04 07", "L=", 0x13, 0x1E},
    {27, NID_stateOrProvinceName, "55 04 08", "S=", 0x13, 0x1E},
    {29, NID_organizationName, "55 04 0A", "O=", 0x13, 0x1E},
    {30, NID_organizationalUnitName, "55 04 0B", "OU=", 0x13, 0x1E},
    {22, NID_commonName, "55 04 03", "CN=", 0x13, 0x1E},
    {13, NID_pkcs9_emailAddress, "2A 86 48 86 F7 0D 01 09 01", "E=", 0x16, 0x16},
    {34, NID_postalAddress, "55 04 10", "PA=", 0x13, 0x1E},
    {35, NID_postalCode, "55 04 11", "PC=", 0x13, 0x1E},
    {38, NID_telephoneNumber, "55 04 14", "Phone=", 0x13, 0x13},
};

struct FreeX509Name {
    void operator()(X509_NAME *name) const { X509_NAME_free(name); }
};
using X509NamePtr = std::unique_ptr<X509_NAME, FreeX509Name>;

X509NamePtr parse(const Octets &der) {
    const uint8_t *at = der.data();
    X509NamePtr name(d2i_X509_NAME(nullptr, &at, static_cast<long>(der.size())));
    return at == der.data() + der.size() ? std::move(name) : nullptr;
}

TEST(Name, EveryAttribute) {
    for (const AttributeRow &row : attributeRows) {
        SCOPED_TRACE(row.key);
        const Octets latin = seq({rdn(row.oid, tlv(row.latinTag, text("Ab 1")))});
        Name read;
        ASSERT_EQ(decode(latin, read), KACERT_Ok);
        ASSERT_EQ(read.size(), 1u);
        EXPECT_EQ(read.head.next->id, row.id);
        EXPECT_EQ(toHex(read.head.next->oid), row.oid);
        EXPECT_EQ(read.head.next->oid.tag, 6u);
        EXPECT_EQ(encoded(read), toHex(latin));
        EXPECT_EQ(line(read), row.key + std::string("Ab 1"));

        Name chinese;
        chinese.add(row.id, row.oid, Gbk, 30);
        const bool bmp = row.chineseTag == 0x1E;
        const Octets der = seq({rdn(row.oid, tlv(row.chineseTag, bmp ? hex("4E 2D 56 FD") : Gbk))});
        EXPECT_EQ(encoded(chinese), toHex(der));
        EXPECT_EQ(chinese.head.next->value.tag, row.chineseTag); // for a BMPString it is left as it came
        const X509NamePtr parsed = parse(der);
        ASSERT_EQ(X509_NAME_entry_count(parsed.get()), 1);
        const X509_NAME_ENTRY *entry = X509_NAME_get_entry(parsed.get(), 0);
        EXPECT_EQ(OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry)), row.nid);
        unsigned char *utf8 = nullptr;
        const int size = ASN1_STRING_to_UTF8(&utf8, X509_NAME_ENTRY_get_data(entry));
        if (bmp) { EXPECT_EQ(std::string(utf8, utf8 + size), "中国"); }
        OPENSSL_free(utf8);
    }
}

TEST(Name, EncodedValues) {
    struct Row {
        const char *name;
        uint32_t id;
        Octets value;
        uint32_t tag;
        Octets wire; // empty: KACERT_InvalidLengthErr
        uint32_t tagAfter;
    };
    const Octets latin = text("x.y 1");
    const Row rows[] = {
        {"plain text, tag 12 not consulted", 22, latin, 12, tlv(0x13, latin), 19},
        {"plain text, tag 30 not consulted", 22, latin, 30, tlv(0x13, latin), 19},
        {"one Chinese character", 22, hex("41 D6 D0"), 19, hex("1E 04 00 41 4E 2D"), 19},
        {"underscore", 22, text("a_b"), 12, hex("1E 06 00 61 00 5F 00 62"), 12},
        {"foreign attribute, plain", 0, latin, 0, tlv(0x13, latin), 19},
        {"foreign attribute, Chinese", 0, hex("D6 D0"), 0, hex("1E 02 4E 2D"), 0},
        {"id that the table lacks", 28, text("@"), 0, hex("1E 02 00 40"), 0},
        {"empty", 22, {}, 30, hex("13 00"), 19},
        {"what is not converted may be long", 22, times(2000, "61"), 0, tlv(0x13, times(2000, "61")), 19},
        {"too long to be converted", 22, times(1025, "5F"), 0, {}, 0},
    };
    for (const Row &row : rows) {
        Name name;
        NameRecord *record = name.add(row.id, CommonNameOid, row.value, row.tag);
        Trace trace;
        const std::string want = row.wire.empty() ? "status 101" : toHex(seq({rdn(CommonNameOid, row.wire)}));
        EXPECT_EQ(encoded(name), want) << row.name;
        EXPECT_EQ(trace.has("------>KAsn1_WritePrintableString函数失败"), row.wire.empty()) << row.name;
        EXPECT_EQ(record->value.tag, row.tagAfter) << row.name;
        EXPECT_EQ(toHex(record->value), toHex(row.value)) << row.name;
    }
}

TEST(Name, PrintableCharacters) {
    for (int c = 1; c < 256; ++c) {
        const auto octet = static_cast<uint8_t>(c);
        Name name;
        name.add(22, CommonNameOid, {octet});
        Anybuf *out = nullptr;
        ASSERT_EQ(KI_EncodeIssuerSuject(&name.head, &out), KACERT_Ok) << c;
        const Chain chain(out);
        const bool printable = ASN1_PRINTABLE_type(&octet, 1) == V_ASN1_PRINTABLESTRING;
        EXPECT_EQ(chain->data[11], printable ? 0x13 : 0x1E) << c;
    }
}

TEST(Name, EncodeFailures) {
    Name name;
    Anybuf *out = nullptr;
    EXPECT_EQ(KI_EncodeIssuerSuject(nullptr, &out), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_EncodeIssuerSuject(&name.head, nullptr), KACERT_InvalidParamErr);

    Anybuf mark = {};
    name.add(22, CommonNameOid, text("good"));
    NameRecord *bad = name.add(22, CommonNameOid, Octets(1025, '_'));
    out = &mark;
    EXPECT_EQ(KI_EncodeIssuerSuject(&name.head, &out), KACERT_InvalidLengthErr);
    EXPECT_EQ(out, nullptr);

    // Octets that are missing behind a length: a type answers with MemoryErr whatever the cause.
    KI_ClearAnybuf(&bad->oid);
    bad->oid.length = 3;
    EXPECT_EQ(encoded(name), "status 100");
    bad->oid.length = 0;
    for (const uint32_t id : {22u, 25u, 13u}) {
        bad->id = id;
        KI_ClearAnybuf(&bad->value);
        bad->value.length = 3;
        EXPECT_EQ(encoded(name), "status 108") << id;
        EXPECT_EQ(line(name), "status 108") << id;
    }
}

TEST(Name, DecodedValues) {
    struct Row {
        const char *name;
        Octets wire;
        const char *value;
        uint32_t tag;
        const char *again; // the value once encoded again
    };
    const Row rows[] = {
        {"PrintableString", hex("13 02 41 42"), "41 42", 19, "13 02 41 42"},
        {"PrintableString, long form of length", hex("13 81 02 41 42"), "41 42", 19, "13 02 41 42"},
        {"BMPString", hex("1E 04 00 41 4E 2D"), "41 D6 D0", 30, "1E 04 00 41 4E 2D"},
        {"BMPString, Latin", hex("1E 02 00 41"), "41", 30, "13 01 41"},
        {"BMPString, odd octet", hex("1E 03 4E 2D 00"), "D6 D0", 30, "1E 02 4E 2D"},
        {"BMPString, empty", hex("1E 00"), "", 30, "13 00"},
        {"BMPString that its conversion has no room for", tlv(0x1E, times(513, "4E 2D")), "", 30, "13 00"},
        {"UTF8String", hex("0C 04 41 E4 B8 AD"), "41 D6 D0", 30, "1E 04 00 41 4E 2D"},
        {"UTF8String, empty", hex("0C 00"), "", 30, "13 00"},
        {"IA5String", hex("16 03 61 40 62"), "61 40 62", 22, "1E 06 00 61 00 40 00 62"},
        {"T61String", hex("14 02 D6 D0"), "D6 D0", 20, "1E 02 4E 2D"},
        {"no string at all", hex("30 03 02 01 41"), "02 01 41", 16, "1E 06 00 02 00 01 00 41"},
        {"INTEGER loses its pad", hex("02 03 00 D6 D0"), "D6 D0", 2, "1E 02 4E 2D"},
        {"BIT STRING loses its first octet", hex("03 02 00 41"), "41", 3, "13 01 41"},
        {"context tag with a UTF8String's number", hex("8C 02 D6 D0"), "D6 D0", 0x8C, "1E 02 4E 2D"},
        {"empty", hex("13 00"), "", 19, "13 00"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Name name;
        ASSERT_EQ(decode(seq({rdn(CommonNameOid, row.wire)}), name), KACERT_Ok);
        ASSERT_EQ(name.size(), 1u);
        EXPECT_EQ(toHex(name.head.next->value), row.value);
        EXPECT_EQ(name.head.next->value.tag, row.tag);
        EXPECT_EQ(encoded(name), toHex(seq({rdn(CommonNameOid, hex(row.again))})));
    }
}

TEST(Name, DecodingAppends) {
    Name name;
    name.add(25, "55 04 06", text("CN"));
    EXPECT_EQ(decode(hex("30 00"), name), KACERT_Ok);
    EXPECT_EQ(name.size(), 1u);
    const Octets first = seq({oid("55 04 0A"), tlv(0x13, text("kept"))});
    const Octets second = seq({oid("55 04 03"), tlv(0x13, text("dropped"))});
    const Octets foreign = seq({oid("55 04 05"), tlv(0x13, text("serial")), hex("05 00")});
    EXPECT_EQ(decode(seq({set({first, second}), set({foreign})}), name), KACERT_Ok);
    EXPECT_EQ(decode(seq({rdn("55 04 0B", tlv(0x13, text("unit")))}), name), KACERT_Ok);
    ASSERT_EQ(name.size(), 4u);
    EXPECT_EQ(name.head.next->next->next->id, 0u);
    const Octets unit = rdn("55 04 0B", tlv(0x13, text("unit")));
    const Octets serial = rdn("55 04 05", tlv(0x13, text("serial")));
    EXPECT_EQ(encoded(name), toHex(seq({rdn("55 04 06", tlv(0x13, text("CN"))), set({first}), serial, unit})));
    EXPECT_EQ(line(name), "C=CN,O=kept,OU=unit");
    // Object identifiers that resemble those of the table.
    for (const char *content : {"55 04", "55 04 03 00", "55 05 03", "2A 86 48 86 F7 0D 01 09 02", "03"}) {
        Name other;
        EXPECT_EQ(decode(seq({rdn(content, hex("13 01 41"))}), other), KACERT_Ok) << content;
        EXPECT_EQ(other.head.next->id, 0u) << content;
    }
}

TEST(Name, Malformed) {
    struct Row {
        const char *name;
        Octets second; // RDN behind a good one
        int32_t status;
        const char *words;
        size_t linked;
    };
    const Octets type = oid(CommonNameOid);
    const Octets value = hex("13 01 41");
    const auto attribute = [&](const char *element) { return set({seq({type, hex(element)})}); };
    const Row rows[] = {
        {"RDN is no SET", seq({seq({type, value})}), 106, "------>KAsn1_ReadSet", 2},
        {"RDN overruns the name", hex("31 05 30 02"), 101, "------>KAsn1_ReadSequence", 0},
        {"empty RDN", hex("31 00"), 108, "------>KAsn1_ReadSequence", 2},
        {"attribute is no SEQUENCE", set({type}), 106, "------>KAsn1_ReadSequence", 2},
        {"empty attribute", set({hex("30 00")}), 108, "------>KAsn1_ReadObjectId", 2},
        {"no value", set({seq({type})}), 106, "------>KAsn1_Low_ReadDNTag", 2},
        {"UTF8String with length 0x80", attribute("0C 80 01"), 101, "------>KAsn1_ReadUTF8String", 2},
        {"BMPString too long", set({seq({type, tlv(0x1E, times(2049, "61"))})}), 101, "------>KI_BmpString2Chinese", 2},
        {"UTF8String too long", set({seq({type, tlv(0x0C, times(1025, "61"))})}), 101, "------>KI_UTF8String2Chinese",
         2},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        Name name;
        Trace trace;
        EXPECT_EQ(decode(seq({rdn(CommonNameOid, value), row.second}), name), row.status);
        EXPECT_TRUE(trace.has(row.words));
        ASSERT_EQ(name.size(), row.linked);
        if (row.linked == 2) {
            EXPECT_EQ(toHex(name.head.next->value), "41");
            EXPECT_EQ(name.head.next->next->value.data, nullptr);
        }
    }
    Name name;
    Octets good = commonName("x");
    EXPECT_EQ(decode(set({rdn(CommonNameOid, value)}), name), KACERT_InvalidTagErr);
    EXPECT_EQ(decode(cat({good, hex("00")}), name), KACERT_LengthNotEqualErr);
    EXPECT_EQ(decode(hex("30 85 00 00 00 00 00"), name), KACERT_InvalidLengthErr);
    EXPECT_EQ(decode({}, name), KACERT_InvalidParamErr);
    const Anybuf source = view(good);
    EXPECT_EQ(KI_DecodeIssuerSubject(nullptr, &name.head), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_DecodeIssuerSubject(&source, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(name.head.next, nullptr);
    KI_FreeName(nullptr);
}

TEST(Name, Line) {
    struct Row {
        const char *name;
        std::string attributes; // "22=a;25=b"
        std::string want;
    };
    const auto xs = [](size_t count) { return std::string(count, 'x'); };
    const Row rows[] = {
        {"nothing", "", "untouched"},
        {"no attribute of the table", "00=x;28=y", "untouched"},
        {"fixed order", "38=1;35=2;34=3;26=4;27=5;13=6;22=7;30=8;29=9;25=10",
         "C=10,O=9,OU=8,CN=7,E=6,S=5,L=4,PA=3,PC=2,Phone=1"},
        {"units are joined", "30=a;22=n;30=b;25=c;30=d", "C=c,OU=a,OU=b,OU=d,CN=n"},
        {"empty units are left out", "30=;30=a;30=;30=b;30=", "OU=a,OU=b"},
        {"empty units alone", "30=;30=", "untouched"},
        {"empty units and another", "30=;22=n", "CN=n"},
        {"the last one wins",
         "22=a;25=a;29=a;13=a;27=a;26=a;34=a;35=a;38=a;22=b;25=b;29=b;13=b;27=b;26=b;34=b;35=b;38=b",
         "C=b,O=b,CN=b,E=b,S=b,L=b,PA=b,PC=b,Phone=b"},
        {"also an empty one", "22=a;22=", "CN="},
        {"nothing is escaped or converted", "29=\xD6\xD0,CN=b", "O=\xD6\xD0,CN=b"},
        {"1,024 octets with the last separator", "22=" + xs(1020), "CN=" + xs(1020)},
        {"1,025 octets", "22=" + xs(1021), "status 101"},
        {"1,024 octets of units", "30=" + xs(508) + ";30=" + xs(508), "OU=" + xs(508) + ",OU=" + xs(508)},
        {"1,025 octets of units", "30=" + xs(508) + ";30=" + xs(509), "status 101"},
        {"no room for a key", "25=" + xs(1020) + ";38=", "status 101"},
        {"a long value that is replaced does not count", "22=" + xs(2000) + ";22=y", "CN=y"},
    };
    for (const Row &row : rows) {
        Name name;
        std::istringstream fields(row.attributes);
        for (std::string field; std::getline(fields, field, ';');)
            name.add(static_cast<uint32_t>(std::stoi(field)), CommonNameOid, text(field.substr(3)));
        EXPECT_EQ(line(name), row.want) << row.name;
    }
    Name name;
    Anybuf result = {};
    EXPECT_EQ(KI_GetDN(nullptr, &name.head), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_GetDN(&result, nullptr), KACERT_InvalidParamErr);
}

TEST(Name, Utf8Strings) {
    struct Row {
        Octets local;
        Octets want;
    };
    const Row rows[] = {
        {text("a_1"), hex("0C 03 61 5F 31")},
        {Gbk, hex("0C 06 E4 B8 AD E5 9B BD")},
        {times(341, "D6 D0"), tlv(0x0C, times(341, "E4 B8 AD"))},
        {times(342, "D6 D0"), hex("0C 00")}, // no room for 1,026 octets: empty text
        {times(1024, "61"), tlv(0x0C, times(1024, "61"))},
    };
    for (const Row &row : rows) {
        Anybuf *out = nullptr;
        ASSERT_EQ(KI_EnCodeUtf8(row.local.data(), static_cast<int32_t>(row.local.size()), &out), KACERT_Ok);
        const Chain chain(out);
        EXPECT_EQ(toHex(*chain), toHex(row.want));
    }
    Anybuf *out = nullptr;
    const Octets tooLong = times(1025, "61");
    EXPECT_EQ(KI_EnCodeUtf8(tooLong.data(), 1025, &out), KACERT_InvalidLengthErr);
    EXPECT_EQ(KI_EnCodeUtf8(tooLong.data(), -1, &out), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_EnCodeUtf8(nullptr, 1, &out), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_EnCodeUtf8(tooLong.data(), 1, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(out, nullptr);
}

TEST(Name, ReadsWhatLibcryptoWrites) {
    const X509NamePtr written(X509_NAME_new());
    const auto add = [&](int nid, int type, std::string_view value, int place) {
        return X509_NAME_add_entry_by_NID(written.get(), nid, type, reinterpret_cast<const uint8_t *>(value.data()),
                                          static_cast<int>(value.size()), -1, place);
    };
    ASSERT_EQ(add(NID_countryName, V_ASN1_PRINTABLESTRING, "CN", 0), 1);
    ASSERT_EQ(add(NID_organizationName, V_ASN1_UTF8STRING, "中国 Co.", 0), 1);
    ASSERT_EQ(add(NID_organizationalUnitName, V_ASN1_BMPSTRING, std::string_view("\x4E\x2D\x56\xFD", 4), 0), 1);
    ASSERT_EQ(add(NID_serialNumber, V_ASN1_PRINTABLESTRING, "42", 0), 1);
    ASSERT_EQ(add(NID_pkcs9_emailAddress, V_ASN1_IA5STRING, "a@b", 0), 1);
    ASSERT_EQ(add(NID_commonName, V_ASN1_UTF8STRING, "a_b", 0), 1);
    unsigned char *der = nullptr;
    const int size = i2d_X509_NAME(written.get(), &der);
    const Octets octets(der, der + size);
    OPENSSL_free(der);

    Name name;
    ASSERT_EQ(decode(octets, name), KACERT_Ok);
    EXPECT_EQ(name.size(), 6u);
    EXPECT_EQ(line(name), "C=CN,O=\xD6\xD0\xB9\xFA Co.,OU=\xD6\xD0\xB9\xFA,CN=a_b,E=a@b");
    const X509NamePtr again = parse(hex(encoded(name)));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(X509_NAME_cmp(written.get(), again.get()), 0);
}

} // namespace
