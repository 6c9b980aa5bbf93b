#include "rows.h"

using namespace karil_test;

namespace {

struct List {
    AttributeRecord *head = nullptr;

    List() = default;
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    ~List() {
        while (head != nullptr) {
            AttributeRecord *next = head->next;
            KI_ClearAnybuf(&head->oid);
            KI_ClearAnybuf(&head->value);
            KAPR_Free(head);
            head = next;
        }
    }
};

// A chain over the octets' elements, which must outlive it.
struct Elements {
    std::vector<Exact> octets;
    std::vector<Anybuf> nodes;

    explicit Elements(const std::vector<Octets> &all) {
        for (const Octets &one : all)
            octets.emplace_back(one);
        for (const Exact &one : octets)
            nodes.push_back(one.record);
        for (size_t i = 1; i < nodes.size(); ++i)
            nodes[i - 1].next = &nodes[i];
    }
    const Anybuf *first() const { return nodes.empty() ? nullptr : nodes.data(); }
};

std::vector<Octets> listOf(const Row &row, std::string_view column) {
    std::vector<Octets> all;
    for (const std::string &one : row.list(column))
        all.push_back(row.parse(one));
    return all;
}

SWEPT_ROWS(Pkcs7Frame, Make) {
    const Elements content(listOf(row, "content"));
    const Octets id = row.octets("oid");
    Anybuf *out = nullptr;
    const int32_t status =
        TRIED(KI_MakeContentToSequence(content.first(), id.data(), lengthOf(id), &out, row.number<uint32_t>("number")));
    EXPECT_EQ(answerOf(status, out), row.hex("want"));
}

// The answer as "number / OID / content's elements", or the status, with which nothing is stored.
SWEPT_ROWS(Pkcs7Frame, Split) {
    const Exact der(row.octets("der"));
    Anybuf *content = nullptr;
    const Exact id(20);
    uint32_t idLength = 7, number = 7;
    const int32_t status =
        TRIED(KI_MakeSequenceToContent(der.data(), row.number("length"), &content, id.data(), &idLength, &number));
    const Chain owner(content);
    EXPECT_EQ(status, row.number("status"));
    EXPECT_EQ(idLength == 7 && number == 7 && content == nullptr, status != KACERT_Ok);
    if (status != KACERT_Ok)
        return;
    std::string answer = std::to_string(number) + " / " + toHex(id.data(), idLength) + " /";
    for (const Anybuf *node = content; node != nullptr; node = node->next)
        answer += " " + toHex(*node);
    EXPECT_EQ(answer, row("answer"));
}

ROWS(Pkcs7Frame, AnyType) {
    const Exact der(row.octets("der")), content(der.record.length);
    uint32_t length = 7;
    int32_t type = 77;
    EXPECT_EQ(KA_PKCS7_DecodePKCS7DerTypeData(der.data(), lengthOf(der.bytes()), content.data(), &length, &type),
              row.number("status"));
    EXPECT_EQ(type, row.number("type"));
    EXPECT_EQ(type == 77 ? "" : toHex(content.data(), length), row.hex("content"));
    // In the place of the input.
    KA_PKCS7_DecodePKCS7DerTypeData(der.data(), lengthOf(der.bytes()), der.data(), &length, &type);
    EXPECT_EQ(type, row.number("type"));
    EXPECT_EQ(type == 77 ? "" : toHex(der.data(), length), row.hex("content"));
}

SWEPT_ROWS(Pkcs7Frame, Attributes) {
    const Elements elements(listOf(row, "elements"));
    List list;
    EXPECT_EQ(TRIED(KI_PKCS7_DecodeAttributes(elements.first(), &list.head)), row.number("status"));
    EXPECT_EQ(list.head != nullptr ? list.head->count : 0u, row.number<uint32_t>("count"));
    Anybuf *out = nullptr;
    const int32_t status = TRIED(KI_PKCS7_EncodeAttributes(list.head, &out));
    EXPECT_EQ(answerOf(status, out), row.hex("again"));
}

TEST(Pkcs7Frame, DigestInfoAndTheEncoderThatWritesNothing) {
    const Octets digest(20, 0xAB);
    const Exact out(512);
    uint32_t length = 0;
    sweep([&] {
        const Octets id = hex("2B 0E 03 02 1A");
        const AlgorithmRecord algorithm = {9, {const_cast<uint8_t *>(id.data()), 5, 0, 0, 0, nullptr, nullptr}};
        EXPECT_EQ(TRIED(KI_MakeDigestInfo(&algorithm, digest.data(), 20, out.data(), &length)), KACERT_Ok);
        // RFC 8017 9.2, note 1.
        EXPECT_EQ(toHex(out.data(), length), "30 21 30 09 06 05 2B 0E 03 02 1A 05 00 04 14 " + toHex(digest));
        const uint8_t octet = 0x05;
        EXPECT_EQ(TRIED(KA_PKCS7_EncodePKCS7DerTypeData(nullptr, nullptr, &octet, 1, PKCS7_TYPE_DATA)), KACERT_Ok);
    });
    const Octets large(512);
    const std::pair<uint32_t, int32_t> sizes[] = {{498, KACERT_Ok}, {499, KACERT_InvalidLengthErr}};
    for (const auto &[size, want] : sizes) {
        const AlgorithmRecord none = {};
        EXPECT_EQ(KI_MakeDigestInfo(&none, large.data(), static_cast<int32_t>(size), out.data(), &length), want);
    }
    const AlgorithmRecord none = {};
    EXPECT_EQ(KI_MakeDigestInfo(&none, large.data(), -1, out.data(), &length), KACERT_InvalidLengthErr);
    const uint8_t octet = 0x05;
    for (const int32_t type : {0, 7, -1})
        EXPECT_EQ(KA_PKCS7_EncodePKCS7DerTypeData(nullptr, nullptr, &octet, 1, type), KAPKCS7_ContentTypeErr);
    EXPECT_EQ(KA_PKCS7_EncodePKCS7DerTypeData(nullptr, nullptr, &octet, -1, 1), KACERT_InvalidLengthErr);
}

// A level of every size of length field, among them 65,535, whose length has one octet more than DER asks for.
TEST(Pkcs7Frame, LargeContentIsFramedAndReadBack) {
    for (const uint32_t size : {100u, 128u, 65000u, 65535u, 70000u, 17000000u}) {
        const Octets content = tlv(0x04, Octets(size, 0x61));
        const Elements elements({content});
        Anybuf *out = nullptr;
        ASSERT_EQ(KI_MakeContentToSequence(elements.first(), bytesOf(std::string_view("\x2A\x03")).data(), 2, &out, 0),
                  KACERT_Ok);
        const Chain frame(out);
        uint8_t id[20];
        uint32_t idLength = 0, number = 1;
        Anybuf *inner = nullptr;
        ASSERT_EQ(
            KI_MakeSequenceToContent(frame->data, static_cast<int32_t>(frame->length), &inner, id, &idLength, &number),
            KACERT_Ok)
            << size;
        const Chain owner(inner);
        EXPECT_TRUE(std::equal(content.begin(), content.end(), inner->data, inner->data + inner->length)) << size;
        EXPECT_EQ(number, 0u);
    }
}

} // namespace
