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

// A chain of the elements.
Chain elementsOf(const Octets &elements) {
    const Exact der(seq({oid("2A 03"), tlv(0xA0, elements)}));
    Anybuf *content = nullptr;
    uint8_t id[20];
    uint32_t idLength = 0, number = 0;
    EXPECT_EQ(TRIED(KI_MakeSequenceToContent(der.data(), 0, &content, id, &idLength, &number)), KACERT_Ok);
    return Chain(content);
}

SWEPT_ROWS(Pkcs7Frame, Make) {
    const Chain content = elementsOf(row.octets("content"));
    const Octets id = row.octets("oid");
    Anybuf *out = nullptr;
    const int32_t status =
        TRIED(KI_MakeContentToSequence(content.get(), id.data(), lengthOf(id), &out, row.number<uint32_t>("number")));
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
    const Chain elements = elementsOf(row.octets("elements"));
    List list;
    EXPECT_EQ(TRIED(KI_PKCS7_DecodeAttributes(elements.get(), &list.head)), row.number("status"));
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
        EXPECT_EQ(TRIED(KA_PKCS7_EncodePKCS7DerTypeData(nullptr, nullptr, id.data(), 1, PKCS7_TYPE_DATA)), KACERT_Ok);
    });
    const Octets large(512);
    const AlgorithmRecord none = {};
    for (const auto &[size, want] :
         {std::pair(498, KACERT_Ok), {499, KACERT_InvalidLengthErr}, {-1, KACERT_InvalidLengthErr}})
        EXPECT_EQ(KI_MakeDigestInfo(&none, large.data(), size, out.data(), &length), want);
    for (const int32_t type : {0, 7, -1})
        EXPECT_EQ(KA_PKCS7_EncodePKCS7DerTypeData(nullptr, nullptr, large.data(), 1, type), KAPKCS7_ContentTypeErr);
    EXPECT_EQ(KA_PKCS7_EncodePKCS7DerTypeData(nullptr, nullptr, large.data(), -1, 1), KACERT_InvalidLengthErr);
}

// A level of every size of length field, among them 65,535, whose length has one octet more than DER asks for.
TEST(Pkcs7Frame, LargeContentIsFramedAndReadBack) {
    for (const uint32_t size : {100u, 128u, 65000u, 65531u, 70000u, 17000000u}) {
        const Octets content = tlv(0x04, Octets(size, 0x61));
        const Chain elements = elementsOf(content);
        ASSERT_NE(elements, nullptr);
        EXPECT_TRUE(std::ranges::equal(content, bytesOf(*elements))) << size;
        const Octets tagged = size == 65531 ? cat({hex("A0 83 00 FF FF"), content}) : tlv(0xA0, content);
        Anybuf *out = nullptr;
        EXPECT_EQ(KI_MakeContentToSequence(elements.get(), bytesOf("\x2A\x03").data(), 2, &out, 0), KACERT_Ok);
        const Chain frame(out);
        ASSERT_NE(frame, nullptr);
        EXPECT_TRUE(std::ranges::equal(seq({oid("2A 03"), tagged}), bytesOf(*frame))) << size;
    }
}

} // namespace
