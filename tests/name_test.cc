#include "crypto.h"
#include "rows.h"

using namespace karil_test;

namespace {

const Octets CommonName = hex("55 04 03");
const Octets Gbk = hex("D6 D0 B9 FA"); // U+4E2D U+56FD in code page 936

// A name that the test fills.
struct Name : NameList {
    NameRecord *last = &head;

    NameRecord *add(uint32_t id, const Octets &type, const Octets &value, uint32_t tag = 0) {
        last = last->next = static_cast<NameRecord *>(newBlock(sizeof(NameRecord)));
        last->id = id;
        last->value.tag = tag;
        TRIED(KI_SetAttributeCharValue(&last->oid, type.data(), sizeOf(type)));
        TRIED(KI_SetAttributeCharValue(&last->value, value.data(), sizeOf(value)));
        return last;
    }
    int32_t decode(const Octets &der) {
        const Exact source(der);
        return TRIED(KI_DecodeIssuerSubject(&source.record, &head));
    }
    size_t size() const {
        size_t count = 0;
        for (const NameRecord *record = head.next; record != nullptr; record = record->next)
            ++count;
        return count;
    }
};

std::string encoded(const Name &name) {
    Anybuf *out = nullptr;
    const int32_t status = TRIED(KI_EncodeIssuerSuject(&name.head, &out));
    return answerOf(status, out);
}

Octets rdn(const Octets &type, const Octets &value) {
    return set({seq({tlv(0x06, type), value})});
}

// The text form in hex; "untouched" if the result was left as it was, "status N" for a failure.
std::string line(const Name &name) {
    Anybuf result = {nullptr, 77, 1, 2, 3, nullptr, nullptr};
    const int32_t status = TRIED(KI_GetDN(&result, &name.head));
    const Block<uint8_t> data(result.data);
    EXPECT_EQ(result.unusedBits + result.form + result.tag, 6u);
    const bool isUntouched = result.data == nullptr && result.length == 77;
    EXPECT_TRUE(status == KACERT_Ok || isUntouched);
    return status != KACERT_Ok ? "status " + std::to_string(status) : isUntouched ? "untouched" : toHex(result);
}

constexpr auto parse = parsed<d2i_X509_NAME, X509_NAME_free>;

SWEPT_ROWS(Name, EveryAttribute, {KACERT_MemoryErr}, false) {
    const auto id = row.number<uint32_t>("id");
    const Octets type = row.octets("oid");
    const Octets latin = seq({rdn(type, tlv(row.octets("latin")[0], text("Ab 1")))});
    Name read;
    ASSERT_EQ(read.decode(latin), KACERT_Ok);
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read.head.next->id, id);
    EXPECT_EQ(toHex(read.head.next->oid), toHex(type));
    EXPECT_EQ(read.head.next->oid.tag, 6u);
    EXPECT_EQ(encoded(read), toHex(latin));
    EXPECT_EQ(line(read), toHex(text(row("key") + "Ab 1")));

    Name chinese;
    const NameRecord *record = chinese.add(id, type, Gbk, 30);
    const uint8_t tag = row.octets("chinese")[0];
    const Octets der = seq({rdn(type, tlv(tag, tag == 0x1E ? hex("4E 2D 56 FD") : Gbk))});
    EXPECT_EQ(encoded(chinese), toHex(der));
    EXPECT_EQ(record->value.tag, tag); // for a BMPString it is left as it came
    const auto name = parse(der);
    ASSERT_EQ(X509_NAME_entry_count(name.get()), 1);
    const X509_NAME_ENTRY *entry = X509_NAME_get_entry(name.get(), 0);
    EXPECT_EQ(OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry)), row.number("nid"));
}

SWEPT_ROWS(Name, EncodedValues) {
    Name name;
    const auto tag = row.number<uint32_t>("tag");
    const NameRecord *record = name.add(row.number<uint32_t>("id"), CommonName, row.octets("value"), tag);
    const Trace trace;
    const bool isRefused = row("wire") == "status 101";
    EXPECT_EQ(encoded(name), isRefused ? row("wire") : toHex(seq({rdn(CommonName, row.octets("wire"))})));
    EXPECT_TRUE(isHindered() || trace.has("------>KAsn1_WritePrintableString函数失败") == isRefused);
    EXPECT_EQ(record->value.tag, row.number<uint32_t>("tagAfter"));
    EXPECT_EQ(toHex(record->value), row.hex("value"));
}

TEST(Name, PrintableCharacters) {
    for (int c = 1; c < 256; ++c) {
        const auto octet = static_cast<uint8_t>(c);
        Name name;
        name.add(22, CommonName, {octet});
        const bool isPrintable = ASN1_PRINTABLE_type(&octet, 1) == V_ASN1_PRINTABLESTRING;
        EXPECT_EQ(hex(encoded(name))[11], isPrintable ? 0x13 : 0x1E) << c;
    }
}

TEST(Name, EncodeFailures) {
    Name name;
    name.add(22, CommonName, text("good"));
    NameRecord *bad = name.add(22, CommonName, Octets(1025, '_'));
    Anybuf mark = {};
    Anybuf *out = &mark;
    EXPECT_EQ(KI_EncodeIssuerSuject(&name.head, &out), KACERT_InvalidLengthErr);
    EXPECT_EQ(out, nullptr);
    // Octets that are missing behind a length: a type answers with MemoryErr whatever the cause.
    KI_ClearAnybuf(&bad->oid);
    bad->oid.length = 3;
    EXPECT_EQ(encoded(name), "status 100");
    bad->oid.length = 0;
    KI_ClearAnybuf(&bad->value);
    bad->value.length = 3;
    for (const uint32_t id : {22u, 25u, 13u}) {
        bad->id = id;
        EXPECT_EQ(encoded(name), "status 108") << id;
        EXPECT_EQ(line(name), "status 108") << id;
    }
}

SWEPT_ROWS(Name, DecodedValues, {KACERT_MemoryErr}, false) {
    Name name;
    ASSERT_EQ(name.decode(seq({rdn(CommonName, row.octets("wire"))})), KACERT_Ok);
    ASSERT_EQ(name.size(), 1u);
    EXPECT_EQ(toHex(name.head.next->value), row.hex("value"));
    EXPECT_EQ(name.head.next->value.tag, row.number<uint32_t>("tag"));
    EXPECT_EQ(encoded(name), toHex(seq({rdn(CommonName, row.octets("again"))})));
}

// Object identifiers that resemble those of the table.
ROWS(Name, ForeignTypes) {
    for (const std::string &type : row.list("oids")) {
        Name name;
        EXPECT_EQ(name.decode(seq({rdn(row.parse(type), hex("13 01 41"))})), KACERT_Ok);
        ASSERT_EQ(name.size(), 1u);
        EXPECT_EQ(name.head.next->id, 0u) << type;
    }
}

TEST(Name, DecodingAppends) {
    const auto attribute = [](std::string_view type, std::string_view value, const Octets &behind = {}) {
        return seq({oid(type), tlv(0x13, text(value)), behind});
    };
    Name name;
    name.add(25, hex("55 04 06"), text("CN"));
    EXPECT_EQ(name.decode(hex("30 00")), KACERT_Ok);
    EXPECT_EQ(name.size(), 1u);
    const Octets kept = attribute("55 04 0A", "kept");
    const Octets unit = set({attribute("55 04 0B", "unit")});
    const Octets serial = set({attribute("55 04 05", "serial", hex("05 00"))});
    EXPECT_EQ(name.decode(seq({set({kept, attribute("55 04 03", "dropped")}), serial})), KACERT_Ok);
    EXPECT_EQ(name.decode(seq({unit})), KACERT_Ok);
    ASSERT_EQ(name.size(), 4u);
    EXPECT_EQ(name.head.next->next->next->id, 0u);
    EXPECT_EQ(encoded(name), toHex(seq({set({attribute("55 04 06", "CN")}), set({kept}),
                                        set({attribute("55 04 05", "serial")}), unit})));
    EXPECT_EQ(line(name), toHex(text("C=CN,O=kept,OU=unit")));
}

ROWS(Name, Malformed) {
    Name name;
    const Trace trace;
    EXPECT_EQ(name.decode(seq({rdn(CommonName, hex("13 01 41")), row.octets("second")})), row.number("status"));
    EXPECT_TRUE(trace.has(row("words")));
    ASSERT_EQ(name.size(), row.number<size_t>("linked"));
    if (name.size() < 2)
        return;
    EXPECT_EQ(toHex(name.head.next->value), "41");
    EXPECT_EQ(name.head.next->next->value.data, nullptr);
}

ROWS(Name, NoName) {
    Name name;
    EXPECT_EQ(name.decode(row.octets("octets")), row.number("status"));
    EXPECT_EQ(name.head.next, nullptr);
}

SWEPT_ROWS(Name, Line) {
    Name name;
    for (const auto &[id, value] : row.settings("attributes"))
        name.add(static_cast<uint32_t>(std::stoul(id)), CommonName, value);
    EXPECT_EQ(line(name), row.hex("want"));
}

SWEPT_ROWS(Name, Utf8Strings) {
    const Octets local = row.octets("local");
    Anybuf *out = nullptr;
    EXPECT_EQ(KI_EnCodeUtf8(local.data(), -1, &out), KACERT_InvalidParamErr);
    const int32_t status = TRIED(KI_EnCodeUtf8(local.data(), lengthOf(local), &out));
    EXPECT_EQ(answerOf(status, out), row.hex("want"));
}

TEST(Name, ReadsWhatLibcryptoWrites) {
    const Ssl<X509_NAME_free> theirs(X509_NAME_new());
    const std::tuple<int, int, std::string> entries[] = {
        {NID_countryName, V_ASN1_PRINTABLESTRING, "CN"},
        {NID_organizationName, V_ASN1_UTF8STRING, "中国 Co."},
        {NID_organizationalUnitName, V_ASN1_BMPSTRING, "\x4E\x2D\x56\xFD"},
        {NID_serialNumber, V_ASN1_PRINTABLESTRING, "42"},
        {NID_pkcs9_emailAddress, V_ASN1_IA5STRING, "a@b"},
        {NID_commonName, V_ASN1_UTF8STRING, "a_b"},
    };
    for (const auto &[nid, type, value] : entries)
        X509_NAME_add_entry_by_NID(theirs.get(), nid, type, bytesOf(value).data(), lengthOf(bytesOf(value)), -1, 0);
    Name name;
    ASSERT_EQ(name.decode(derOf(i2d_X509_NAME, theirs.get())), KACERT_Ok);
    EXPECT_EQ(name.size(), 6u);
    EXPECT_EQ(line(name), toHex(text("C=CN,O=\xD6\xD0\xB9\xFA Co.,OU=\xD6\xD0\xB9\xFA,CN=a_b,E=a@b")));
    const auto again = parse(hex(encoded(name)));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(X509_NAME_cmp(theirs.get(), again.get()), 0);
}

} // namespace
