#include "support.h"

#include "karil/pem.h"

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <gtest/gtest.h>

using namespace karil_test;

namespace {

std::string asText(const Octets &octets) { return {octets.begin(), octets.end()}; }

// The octets in hex, or "-1". The area has just the size that the header names.
std::string decoded(const std::string &characters) {
    Octets octets(characters.size() / 4 * 3);
    uint8_t none = 0;
    uint32_t length = 0;
    if (base64_decode(characters.c_str(), octets.empty() ? &none : octets.data(), &length) != 0) return "-1";
    octets.resize(length);
    return toHex(octets);
}

TEST(Pem, Base64Text) {
    const struct {
        const char *text;
        const char *want;
    } rows[] = {
        {"", ""},
        {"TWFu", "4D 61 6E"}, // RFC 4648 calculations by hand
        {"TQ==", "4D"},
        {"TWE=", "4D 61"},
        {"+/8A", "FB FF 00"},
        {"TQ", "-1"},
        {"TWFuT", "-1"},
        {"====", "00"},                     // no more than two of them shorten
        {"TQ==TWFu", "4D 00 00 4D 61 6E"},  // padding counts in the last group alone
        {"TWFu \nFu", "4D 61 6E 4D 61 6E"}, // two places keep T and W
        {"!!!!", "00 00 00"},
        {"TWE=!!!!", "4D 61 00 4D 61"},
    };
    for (const auto &row : rows) EXPECT_EQ(decoded(row.text), row.want) << row.text;
    uint32_t length = 7;
    uint8_t area[8];
    EXPECT_EQ(base64_decode(nullptr, area, &length), -1);
    EXPECT_EQ(base64_decode("TQ", area, &length), -1);
    EXPECT_EQ(length, 7u);
    EXPECT_EQ(base64_encode(nullptr, 1, reinterpret_cast<char *>(area)), -1);
    EXPECT_EQ(base64_encode(area, -1, reinterpret_cast<char *>(area)), -1);
}

// Every length up to three lines of text: libcrypto encodes and reads the same.
TEST(Pem, AsLibcryptoDoes) {
    for (int32_t size = 1; size <= 150; ++size) {
        Octets der(static_cast<size_t>(size));
        for (size_t i = 0; i < der.size(); ++i) der[i] = static_cast<uint8_t>(i * 37 + static_cast<size_t>(size));
        Octets theirs(256);
        theirs.resize(static_cast<size_t>(EVP_EncodeBlock(theirs.data(), der.data(), size)));
        std::string ours(theirs.size() + 1, 'x');
        ASSERT_EQ(base64_encode(der.data(), size, ours.data()), 0);
        EXPECT_EQ(ours, asText(theirs) + '\0') << size;
        EXPECT_EQ(decoded(ours.c_str()), toHex(der)) << size;

        const size_t lines = (theirs.size() + 63) / 64;
        Octets pem(theirs.size() + 2 * lines + 23 + 21);
        uint32_t length = 0;
        ASSERT_EQ(
            DER2PEM_data_format(der.data(), size, pem.data(), &length, "-----BEGIN THING-----", "-----END THING-----"),
            0);
        EXPECT_EQ(length, pem.size()) << size;
        const std::unique_ptr<BIO, decltype(&BIO_free)> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())),
                                                            BIO_free);
        char *name = nullptr;
        char *header = nullptr;
        uint8_t *data = nullptr;
        long read = 0;
        ASSERT_EQ(PEM_read_bio(bio.get(), &name, &header, &data, &read), 1) << size;
        EXPECT_EQ(Octets(data, data + read), der) << size;
        OPENSSL_free(name);
        OPENSSL_free(header);
        OPENSSL_free(data);
    }
}

TEST(Pem, Lines) {
    for (const auto &[size, body] : {std::pair{48, 66}, std::pair{49, 72}, std::pair{0, -1}}) {
        const Octets der(64, 0);
        Octets pem(128, '.');
        uint32_t length = 99;
        ASSERT_EQ(DER2PEM_data_format(der.data(), size, pem.data(), &length, "H", "F"), 0);
        pem.resize(length);
        const std::string want = "H\r\n" + std::string(64, 'A') + "\r\n" + (size == 49 ? "AA==\r\n" : "") + "F\r\n";
        EXPECT_EQ(asText(pem), body < 0 ? "" : want) << size;
        EXPECT_EQ(length, static_cast<uint32_t>(body < 0 ? 0 : body + 6)) << size;
    }
}

TEST(Pem, TextToDer) {
    const std::string block = "-----BEGIN A-----\nTWFu\nTWFu\n-----END A-----\n";
    const struct {
        const char *name;
        std::string pem;
        std::string want;
    } rows[] = {
        {"LF", block, "4D 61 6E 4D 61 6E"},
        {"CR LF, other label, octets around", "x\r\n-----?-----\r\nTQ==\r\n-----y", "4D"},
        {"the first of two", "-----A-----\nTQ==\n-----B-----\n" + block, "4D"},
        {"no label", "TW\r\nFu\n", "4D 61 6E"},
        {"ends at a zero", std::string("TWFu\0!!!!", 9), "4D 61 6E"},
        {"a space is read as what stood there", "-----A-----\nTWFu FuT\n-----", "4D 61 6E 4C 5B 93"},
        {"no second row of hyphens", "-----BEGIN A", "-1"},
        {"no footer", "-----BEGIN A-----\nTWFu\n", "-1"},
        {"cut off in a row of hyphens", "---", "-1"},
        {"cut off in the second row", "-----A---", "-1"},
        {"no group of four", "-----A-----\nTWF\n-----", "-1"},
        {"an empty body", "-----A----------", ""},
    };
    for (const auto &row : rows) {
        const Exact source(text(row.pem));
        Octets der(row.pem.size() / 4 * 3 + 1);
        uint32_t length = 0;
        const int32_t status =
            PEM2DER_data_format(source.record.data, static_cast<int32_t>(row.pem.size()), der.data(), &length);
        der.resize(length);
        EXPECT_EQ(status == 0 ? toHex(der) : std::to_string(status), row.want) << row.name;
    }
    uint32_t length = 5;
    EXPECT_EQ(PEM2DER_data_format(nullptr, 0, nullptr, &length), 0);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(PEM2DER_data_format(nullptr, 4, nullptr, &length), -1);
}

} // namespace
