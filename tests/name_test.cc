#include "karil/name.h"

#include "der.h"
#include "rows.h"

#include <openssl/x509.h>

using namespace karil_test;

namespace {

// A name that the test fills and frees.
struct Name {
    NameRecord head = {};
    NameRecord *last = &head;

    Name() = default;
    Name(const Name &) = delete;
    Name &operator=(const Name &) = delete;
    ~Name() { KI_FreeName(head.next); }

    NameRecord *add(uint32_t id, const Octets &type, const Octets &value, uint32_t tag = 0) {
        auto *record = static_cast<NameRecord *>(KAPR_Malloc("test", __LINE__, sizeof(NameRecord)));
        record->id = id;
        record->value.tag = tag;
        KI_SetAttributeCharValue(&record->oid, type.data(), static_cast<uint32_t>(type.size()));
        KI_SetAttributeCharValue(&record->value, value.data(), static_cast<uint32_t>(value.size()));
        return last = last->next = record;
    }
    size_t size() const {
        size_t count = 0;
        for (const NameRecord *record = head.next; record != nullptr; record = record->next) ++count;
        return count;
    }
};

const Octets CommonName = hex("55 04 03");
const Octets Gbk = hex("D6 D0 B9 FA"); // U+4E2D U+56FD in code page 936

int32_t decode(Octets der, Name &name) {
    const Anybuf source = view(der);
    return KI_DecodeIssuerSubject(&source, &name.head);
}

std::string encoded(const Name &name) {
    Anybuf *out = nullptr;
    const int32_t status = KI_EncodeIssuerSuject(&name.head, &out);
    return answerOf(status, out);
}

Octets rdn(const Octets &type, const Octets &value) { return set({seq({tlv(0x06, type), value})}); }

// The text form in hex; "untouched" where the result was left as it was, "status N" for a failure.
std::string line(const Name &name) {
    Anybuf result = {nullptr, 77, 1, 2, 3, nullptr, nullptr};
    const int32_t status = KI_GetDN(&result, &name.head);
    const Block<uint8_t> data(result.data);
    EXPECT_EQ(result.unusedBits + result.form + result.tag, 6u);
    if (status != KACERT_Ok && result.data == nullptr && result.length == 77) return "status " + std::to_string(status);
    EXPECT_EQ(status, KACERT_Ok);
    return result.data == nullptr && result.length == 77 ? "untouched" : toHex(result);
}

struct FreeX509Name {
    void operator()(X509_NAME *name) const { X509_NAME_free(name); }
};
using X509NamePtr = std::unique_ptr<X509_NAME, FreeX509Name>;

X509NamePtr parse(const Octets &der) {
    const uint8_t *at = der.data();
    X509NamePtr name(d2i_X509_NAME(nullptr, &at, static_cast<long>(der.size())));
    return at == der.data() + der.size() ? std::move(name) : nullptr;
}

ROWS(Name, EveryAttribute) {
    const auto id = row.number<uint32_t>("id");
    const Octets type = row.octets("oid");
    const Octets latin = seq({rdn(type, tlv(row.octets("latin")[0], text("Ab 1")))});
    Name read;
    ASSERT_EQ(decode(latin, read), KACERT_Ok);
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
    const X509NamePtr parsed = parse(der);
    ASSERT_EQ(X509_NAME_entry_count(parsed.get()), 1);
    const X509_NAME_ENTRY *entry = X509_NAME_get_entry(parsed.get(), 0);
    EXPECT_EQ(OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry)), row.number("nid"));
}

ROWS(Name, EncodedValues) {
    Name name;
    NameRecord *record =
        name.add(row.number<uint32_t>("id"), CommonName, row.octets("value"), row.number<uint32_t>("tag"));
    const Trace trace;
    const bool isRefused = row("wire") == "status 101";
    EXPECT_EQ(encoded(name), isRefused ? "status 101" : toHex(seq({rdn(CommonName, row.octets("wire"))})));
    EXPECT_EQ(trace.has("------>KAsn1_WritePrintableString函数失败"), isRefused);
    EXPECT_EQ(record->value.tag, row.number("tagAfter"));
    EXPECT_EQ(toHex(record->value), row.hex("value"));
}

TEST(Name, PrintableCharacters) {
    for (int c = 1; c < 256; ++c) {
        const auto octet = static_cast<uint8_t>(c);
        Name name;
        name.add(22, CommonName, {octet});
        Anybuf *out = nullptr;
        ASSERT_EQ(KI_EncodeIssuerSuject(&name.head, &out), KACERT_Ok) << c;
        const Chain chain(out);
        const bool isPrintable = ASN1_PRINTABLE_type(&octet, 1) == V_ASN1_PRINTABLESTRING;
        EXPECT_EQ(chain->data[11], isPrintable ? 0x13 : 0x1E) << c;
    }
}

TEST(Name, EncodeFailures) {
    Name name;
    Anybuf mark = {};
    Anybuf *out = &mark;
    EXPECT_EQ(KI_EncodeIssuerSuject(nullptr, &out), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_EncodeIssuerSuject(&name.head, nullptr), KACERT_InvalidParamErr);
    name.add(22, CommonName, text("good"));
    NameRecord *bad = name.add(22, CommonName, Octets(1025, '_'));
    out = &mark;
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

ROWS(Name, DecodedValues) {
    Name name;
    ASSERT_EQ(decode(seq({rdn(CommonName, row.octets("wire"))}), name), KACERT_Ok);
    ASSERT_EQ(name.size(), 1u);
    EXPECT_EQ(toHex(name.head.next->value), row.hex("value"));
    EXPECT_EQ(name.head.next->value.tag, row.number("tag"));
    EXPECT_EQ(encoded(name), toHex(seq({rdn(CommonName, row.octets("again"))})));
}

// Object identifiers that resemble those of the table.
ROWS(Name, ForeignTypes) {
    Name name;
    EXPECT_EQ(decode(seq({rdn(row.octets("oid"), hex("13 01 41"))}), name), KACERT_Ok);
    ASSERT_EQ(name.size(), 1u);
    EXPECT_EQ(name.head.next->id, 0u);
}

TEST(Name, DecodingAppends) {
    const auto attribute = [](std::string_view type, std::string_view value, const Octets &behind = {}) {
        return seq({oid(type), tlv(0x13, text(value)), behind});
    };
    Name name;
    name.add(25, hex("55 04 06"), text("CN"));
    EXPECT_EQ(decode(hex("30 00"), name), KACERT_Ok);
    EXPECT_EQ(name.size(), 1u);
    const Octets kept = attribute("55 04 0A", "kept");
    const Octets unit = set({attribute("55 04 0B", "unit")});
    const Octets serial = set({attribute("55 04 05", "serial", hex("05 00"))});
    EXPECT_EQ(decode(seq({set({kept, attribute("55 04 03", "dropped")}), serial}), name), KACERT_Ok);
    EXPECT_EQ(decode(seq({unit}), name), KACERT_Ok);
    ASSERT_EQ(name.size(), 4u);
    EXPECT_EQ(name.head.next->next->next->id, 0u);
    EXPECT_EQ(encoded(name), toHex(seq({set({attribute("55 04 06", "CN")}), set({kept}),
                                        set({attribute("55 04 05", "serial")}), unit})));
    EXPECT_EQ(line(name), toHex(text("C=CN,O=kept,OU=unit")));
}

ROWS(Name, Malformed) {
    Name name;
    const Trace trace;
    EXPECT_EQ(decode(seq({rdn(CommonName, hex("13 01 41")), row.octets("second")}), name), row.number("status"));
    EXPECT_TRUE(trace.has(row("words")));
    ASSERT_EQ(name.size(), row.number<size_t>("linked"));
    if (name.size() < 2) return;
    EXPECT_EQ(toHex(name.head.next->value), "41");
    EXPECT_EQ(name.head.next->next->value.data, nullptr);
}

ROWS(Name, NoName) {
    Name name;
    EXPECT_EQ(decode(row.octets("octets"), name), row.number("status"));
    Octets good = commonName("x");
    const Anybuf source = view(good);
    EXPECT_EQ(KI_DecodeIssuerSubject(nullptr, &name.head), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_DecodeIssuerSubject(&source, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(name.head.next, nullptr);
    KI_FreeName(nullptr);
}

ROWS(Name, Line) {
    Name name;
    for (const auto &[id, value] : row.settings("attributes"))
        name.add(static_cast<uint32_t>(std::stoul(id)), CommonName, value);
    EXPECT_EQ(line(name), row.hex("want"));
    Anybuf result = {};
    EXPECT_EQ(KI_GetDN(nullptr, &name.head), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_GetDN(&result, nullptr), KACERT_InvalidParamErr);
}

ROWS(Name, Utf8Strings) {
    const Octets local = row.octets("local");
    Anybuf *out = nullptr;
    const int32_t status = KI_EnCodeUtf8(local.data(), static_cast<int32_t>(local.size()), &out);
    EXPECT_EQ(answerOf(status, out), row.hex("want"));
    out = nullptr;
    EXPECT_EQ(KI_EnCodeUtf8(local.data(), -1, &out), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_EnCodeUtf8(nullptr, 1, &out), KACERT_InvalidParamErr);
    EXPECT_EQ(KI_EnCodeUtf8(local.data(), 1, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(out, nullptr);
}

TEST(Name, ReadsWhatLibcryptoWrites) {
    const X509NamePtr written(X509_NAME_new());
    const struct {
        int nid;
        int type;
        std::string value;
    } entries[] = {{NID_countryName, V_ASN1_PRINTABLESTRING, "CN"},
                   {NID_organizationName, V_ASN1_UTF8STRING, "中国 Co."},
                   {NID_organizationalUnitName, V_ASN1_BMPSTRING, "\x4E\x2D\x56\xFD"},
                   {NID_serialNumber, V_ASN1_PRINTABLESTRING, "42"},
                   {NID_pkcs9_emailAddress, V_ASN1_IA5STRING, "a@b"},
                   {NID_commonName, V_ASN1_UTF8STRING, "a_b"}};
    for (const auto &[nid, type, value] : entries)
        ASSERT_EQ(X509_NAME_add_entry_by_NID(written.get(), nid, type, reinterpret_cast<const uint8_t *>(value.data()),
                                             static_cast<int>(value.size()), -1, 0),
                  1);
    unsigned char *der = nullptr;
    const int size = i2d_X509_NAME(written.get(), &der);
    const Octets octets(der, der + size);
    OPENSSL_free(der);
    Name name;
    ASSERT_EQ(decode(octets, name), KACERT_Ok);
    EXPECT_EQ(name.size(), 6u);
    EXPECT_EQ(line(name), toHex(text("C=CN,O=\xD6\xD0\xB9\xFA Co.,OU=\xD6\xD0\xB9\xFA,CN=a_b,E=a@b")));
    const X509NamePtr again = parse(hex(encoded(name)));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(X509_NAME_cmp(written.get(), again.get()), 0);
}

} // namespace
