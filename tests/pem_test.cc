// base64 and PEM text, beside libcrypto in both directions.
#include "crypto.h"
#include "testkit.h"

using namespace karil_test;

namespace {

Octets counted(size_t size) {
    Octets octets(size);
    for (size_t i = 0; i < size; ++i)
        octets[i] = static_cast<uint8_t>(i * 89 + size);
    return octets;
}

std::string toPem(const Octets &der, const char *header, const char *footer) {
    Octets pem(der.size() * 2 + 100);
    uint32_t size = 0;
    EXPECT_EQ(TRIED(DER2PEM_data_format(der.data(), sizeOf(der), pem.data(), &size, header, footer)), 0);
    return {pem.begin(), pem.begin() + size};
}

// The octets in hex, or "refused". Source and area are blocks of just their size.
std::string read(bool isPem, std::string_view characters, size_t room) {
    const Exact source(text(isPem ? characters : std::string(characters) + '\0'));
    const Exact area(room);
    const uint8_t *data = source.data();
    uint32_t size = 77;
    const int32_t status = isPem ? TRIED(PEM2DER_data_format(data, source.record.length, area.data(), &size))
                                 : base64_decode(reinterpret_cast<const char *>(data), area.data(), &size);
    EXPECT_TRUE(status == 0 || (status == -1 && size == 77));
    return status == 0 ? toHex(area.data(), size) : "refused";
}

TEST(Pem, Base64AsLibcrypto) {
    for (size_t size = 0; size <= 100; ++size) {
        const Octets octets = counted(size);
        Octets want((size + 2) / 3 * 4 + 1);
        EVP_EncodeBlock(want.data(), octets.data(), static_cast<int>(size));
        Octets output(want.size(), 0xEE);
        EXPECT_EQ(base64_encode(octets.data(), static_cast<uint32_t>(size), output.data()), 0);
        EXPECT_EQ(output, want) << size;
        EXPECT_EQ(read(false, reinterpret_cast<const char *>(want.data()), size), toHex(octets));
    }
}

TEST(Pem, PemAsLibcrypto) {
    for (const size_t size : {1u, 47u, 48u, 49u, 5000u})
        sweep(
            [size] {
                const Octets der = counted(size);
                const Octets written = pemOf("THING", der);
                const std::string theirs(written.begin(), written.end());
                std::string ours = toPem(der, "-----BEGIN THING-----", "-----END THING-----");
                for (const std::string &pem : {ours, theirs})
                    EXPECT_EQ(read(true, pem, size), toHex(der));
                for (size_t at = 0; (at = ours.find("\r\n", at)) != ours.npos;)
                    ours.erase(at, 1);
                EXPECT_EQ(ours, theirs); // which has no CR
            },
            {{-1}});
    EXPECT_EQ(toPem(Octets(48), "", ""), std::string(64, 'A') + "\r\n");
    EXPECT_EQ(toPem(Octets(49), "A", "B"), "A\r\n" + std::string(64, 'A') + "\r\nAA==\r\nB\r\n");
    uint32_t sizes[] = {77, 77};
    EXPECT_EQ(DER2PEM_data_format(nullptr, 0, nullptr, &sizes[0], nullptr, nullptr), 0);
    EXPECT_EQ(PEM2DER_data_format(nullptr, 0, nullptr, &sizes[1]), 0);
    EXPECT_TRUE(sizes[0] == 0 && sizes[1] == 0);
}

TEST(Pem, OddTexts) {
    const std::pair<std::string_view, const char *> base64[] = {
        {"", ""},
        {"Q", "refused"},
        {"QUJDQUJ", "refused"},
        {"QUJD\r\n", "refused"},
        {"AZaz09+/", "01 96 B3 D3 DF BF"},
        {"Q===", "40"}, // a third is not counted
        {"QUJ=", "41 42"},
        {"QQ==QUJD", "41 00 00 41 42 43"}, // A in the middle
        {"QUJDQ JE", "41 42 43 41 42 44"}, // leaves what stood in its place
        {"QUJDRVZGQ WXQUJD", "41 42 43 45 56 46 41 55 97 41 42 43"},
        {"QUJDRVZGQQ==RVZGQUJD", "41 42 43 45 56 46 41 00 00 45 56 46 41 42 43"},
        {" UJD", "01 42 43"}, // A in the first group
        {"QUI=QUJ ", "41 42 00 41 42"},
        {"QUJD\xFF\x80\xC3\xBC", "41 42 43 41 42 43"},
    };
    for (const auto &[text, want] : base64)
        EXPECT_EQ(read(false, text, hex(want).size()), want) << text;
    const std::pair<std::string_view, const char *> pem[] = {
        {"\nQUJD\r\nQ\rUJE\n", "41 42 43 41 42 44"},
        {"-----A-----\r\n-----B-----\r\n", ""},
        {"-----ABCDE-----\nQUJD\n-----B-----\n", "41 42 43"}, // labels of 4, 5 and 6 octets
        {"-----ABCD-----\nQUJD\n-----B-----\n", "41 42 43"},
        {"-----ABCDEF-----\nQUJD\n-----B-----\n", "41 42 43"},
        {"----------\nQUJD\n-----", "41 42 43"},
        {"x-----A-----\nQUJD\n-----B-----\n-----A-----\nQUJE\n-----B-----\n", "41 42 43"},
        {"QUJD-----", "refused"},
        {"-----A QUJD", "refused"},
        {"-----A--", "refused"},
        {"-----A-----\nQUJD\n", "refused"},
        {"-----A-----\nQUJ\n-----B-----", "refused"},
        {{"-----A\0-----\nQUJD\n-----", 23}, "41 42 43"},
        {{"QUJD\0QUJE", 9}, "41 42 43"}, // a zero ends the body
    };
    for (const auto &[text, want] : pem)
        EXPECT_EQ(read(true, text, hex(want).size()), want) << text;
}

} // namespace
