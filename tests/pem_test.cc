// base64 and PEM text, beside libcrypto in both directions.
#include "karil/pem.h"
#include "support.h"

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <gtest/gtest.h>

namespace karil_test {
namespace {

constexpr char Begin[] = "-----BEGIN THING-----";
constexpr char End[] = "-----END THING-----";

Octets counted(size_t size) {
    Octets octets(size);
    for (size_t i = 0; i < size; ++i) octets[i] = static_cast<uint8_t>(i * 89 + size);
    return octets;
}

std::string toPem(const Octets &der, const char *header, const char *footer) {
    Octets pem(der.size() * 2 + 100);
    uint32_t size = 0;
    EXPECT_EQ(DER2PEM_data_format(der.data(), static_cast<uint32_t>(der.size()), pem.data(), &size, header, footer), 0);
    return {pem.begin(), pem.begin() + size};
}

// The octets in hex, or "refused". Source and area are blocks of just their size, so that ASan sees a step too far.
std::string read(bool isPem, std::string_view characters, size_t room) {
    const Exact source(text(isPem ? characters : std::string(characters) + '\0'));
    const Exact area((Octets(room)));
    const uint8_t *data = source.record.data;
    uint32_t size = 77;
    const int32_t status = isPem ? PEM2DER_data_format(data, source.record.length, area.record.data, &size)
                                 : base64_decode(reinterpret_cast<const char *>(data), area.record.data, &size);
    EXPECT_TRUE(status == 0 || (status == -1 && size == 77));
    return status == 0 ? toHex(area.record.data, size) : "refused";
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
    for (const size_t size : {1u, 47u, 48u, 49u, 5000u}) {
        SCOPED_TRACE(size);
        const Octets der = counted(size);
        const std::string ours = toPem(der, Begin, End);
        const std::unique_ptr<BIO, decltype(&BIO_free)> source(BIO_new_mem_buf(ours.data(), -1), BIO_free);
        const std::unique_ptr<BIO, decltype(&BIO_free)> sink(BIO_new(BIO_s_mem()), BIO_free);
        char *label = nullptr, *headers = nullptr, *theirs = nullptr;
        uint8_t *data = nullptr;
        long length = 0;
        ASSERT_EQ(PEM_read_bio(source.get(), &label, &headers, &data, &length), 1);
        EXPECT_STREQ(label, "THING");
        EXPECT_EQ(Octets(data, data + length), der);
        ASSERT_GT(PEM_write_bio(sink.get(), label, "", data, length), 0);
        for (void *block : {static_cast<void *>(label), static_cast<void *>(headers), static_cast<void *>(data)})
            OPENSSL_free(block);
        const auto theirSize = static_cast<size_t>(BIO_get_mem_data(sink.get(), &theirs));
        EXPECT_EQ(read(true, ours, size), toHex(der));
        EXPECT_EQ(read(true, {theirs, theirSize}, size), toHex(der));
    }
    const std::string line = "\r\n" + std::string(64, 'A') + "\r\n";
    EXPECT_EQ(toPem(Octets(48), Begin, End), Begin + line + End + "\r\n");
    EXPECT_EQ(toPem(Octets(49), Begin, End), Begin + line + "AA==\r\n" + End + "\r\n");
    EXPECT_EQ(toPem(Octets(48), "", ""), line.substr(2));
}

TEST(Pem, OddTexts) {
    const struct {
        const char *name;
        bool isPem;
        std::string_view text;
        const char *want;
    } rows[] = {
        {"nothing", false, "", ""},
        {"both ends of the alphabet", false, "AZaz09+/", "01 96 B3 D3 DF BF"},
        {"one character", false, "Q", "refused"},
        {"a cut group", false, "QUJDQUJ", "refused"},
        {"three = count as two", false, "Q===", "40"},
        {"bits left over", false, "QUJ=", "41 42"},
        {"= in the middle is A", false, "QQ==QUJD", "41 00 00 41 42 43"},
        {"a blank leaves its place as it was", false, "QUJDQ JE", "41 42 43 41 42 44"},
        {"a blank in the first group is A", false, " UJD", "01 42 43"},
        {"a blank keeps the padding", false, "QUI=QUJ ", "41 42 00 41 42"},
        {"octets above 127", false, "QUJD\xFF\x80\xC3\xBC", "41 42 43 41 42 43"},
        {"line ends count", false, "QUJD\r\n", "refused"},
        {"no label", true, "\nQUJD\r\nQ\rUJE\n", "41 42 43 41 42 44"},
        {"two blocks", true, "x-----A-----\nQUJD\n-----B-----\n-----A-----\nQUJE\n-----B-----\n", "41 42 43"},
        {"an empty body", true, "-----A-----\r\n-----B-----\r\n", ""},
        {"no second hyphen", true, "-----A QUJD", "refused"},
        {"hyphens at the end", true, "QUJD-----", "refused"},
        {"no footer", true, "-----A-----\nQUJD\n", "refused"},
        {"cut within the header", true, "-----A--", "refused"},
        {"a cut group in a body", true, "-----A-----\nQUJ\n-----B-----", "refused"},
        {"a zero ends the body", true, {"QUJD\0QUJE", 9}, "41 42 43"},
        {"a zero in the label", true, {"-----A\0-----\nQUJD\n-----", 23}, "41 42 43"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(read(row.isPem, row.text, hex(row.want).size()), row.want);
    }
}

TEST(Pem, NothingGivenAndNullPointers) {
    uint8_t octets[8] = {'Q', 'Q', '=', '='};
    uint32_t sizes[] = {77, 77, 77};
    EXPECT_EQ(DER2PEM_data_format(nullptr, 0, nullptr, &sizes[0], nullptr, nullptr), 0);
    EXPECT_EQ(PEM2DER_data_format(nullptr, 0, nullptr, &sizes[1]), 0);
    const int32_t refused[] = {
        base64_encode(nullptr, 1, octets),
        base64_encode(octets, 1, nullptr),
        base64_decode(nullptr, octets, &sizes[2]),
        base64_decode("", octets, nullptr),
        DER2PEM_data_format(octets, 1, nullptr, &sizes[2], "", ""),
        DER2PEM_data_format(octets, 1, octets, &sizes[2], nullptr, ""),
        DER2PEM_data_format(octets, 1, octets, &sizes[2], "", nullptr),
        PEM2DER_data_format(nullptr, 4, octets, &sizes[2]),
        PEM2DER_data_format(octets, 4, nullptr, &sizes[2]),
        PEM2DER_data_format(octets, 0, octets, nullptr),
    };
    for (const int32_t &status : refused) EXPECT_EQ(status, -1) << &status - refused;
    EXPECT_TRUE(sizes[0] == 0 && sizes[1] == 0 && sizes[2] == 77);
}

} // namespace
} // namespace karil_test
