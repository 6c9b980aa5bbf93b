#include "cert_support.h"

#include <gtest/gtest.h>

using namespace karil_test;

namespace {

const Octets flagTrue = hex("01 01 FF");

Octets attribute(std::string_view id, std::string_view characters) {
    return set({seq({oid(id), tlv(0x13, text(characters))})});
}

CertPtr decoded(const CertParts &parts) {
    CertPtr ctx = newCert();
    EXPECT_EQ(decode(ctx, parts.whole()), KACERT_Ok);
    return ctx;
}

TEST(CertQuery, EveryIdOfADecodedCertificate) {
    const Zone utc("UTC");
    CertParts parts;
    parts.issuer =
        seq({attribute("55 04 06", "CN"), attribute("55 04 08", "S"), attribute("55 04 07", "L"),
             attribute("55 04 0A", "O1"), attribute("55 04 0A", "O2"), attribute("55 04 0B", "U1"),
             attribute("55 04 0B", "U2"), attribute("55 04 03", "N"), attribute("2A 86 48 86 F7 0D 01 09 01", "E"),
             attribute("55 04 10", "PA"), attribute("55 04 11", "PC"), attribute("55 04 14", "T")});
    parts.subject = parts.issuer;
    parts.setExtensions(
        {extension("55 1D 23", seq({hex("80 02 01 02")})), extension("55 1D 0E", hex("04 01 03")),
         extension("55 1D 0F", hex("03 02 05 A0"), flagTrue),
         extension("55 1D 11", seq({hex("81 01 6D"), hex("82 01 64"), tlv(0xA4, commonName("SA")), hex("86 01 75"),
                                    hex("87 04 7F 00 00 01")})),
         extension("55 1D 12",
                   seq({tlv(0xA4, seq({attribute("55 04 03", "IA"), attribute("2A 86 48 86 F7 0D 01 09 01", "IE")}))})),
         extension("55 1D 13", seq({flagTrue, hex("02 01 03")}), flagTrue),
         extension("55 1D 25", seq({oid("2B 06 01 05 05 07 03 02")}))});
    const CertPtr ctx = decoded(parts);
    const std::string name = toHex(text("C=CN,O=O2,OU=U1,OU=U2,CN=N,E=E,S=S,L=L,PA=PA,PC=PC,Phone=T"));
    const struct {
        int32_t id;
        std::string want;
    } rows[] = {
        {1, toHex(parts.tbs())},
        {2, Sha1WithRsa},
        {3, "AA BB CC"},
        {5, "05"},
        {6, Sha1WithRsa},
        {7, toHex(parts.issuer)},
        {8, name},
        {9, toHex(text("CN"))},
        {10, toHex(text("S"))},
        {11, toHex(text("L"))},
        {12, toHex(text("O1"))},
        {14, toHex(text("N"))},
        {15, toHex(text("E"))},
        {16, toHex(text("PA"))},
        {17, toHex(text("PC"))},
        {18, toHex(text("T"))},
        {31, toHex(parts.subject)},
        {32, name},
        {33, toHex(text("CN"))},
        {34, toHex(text("S"))},
        {35, toHex(text("L"))},
        {36, toHex(text("O1"))},
        {38, toHex(text("N"))},
        {39, toHex(text("E"))},
        {40, toHex(text("PA"))},
        {41, toHex(text("PC"))},
        {42, toHex(text("T"))},
        // The signature algorithm's nine octets with the length of the key algorithm's element.
        {53, std::string(Sha1WithRsa) + " 00 00"},
        {54, "30 03 02 01"},
        {65, "01 02"},
        {85, "03"},
        {86, "FF"},
        {87, "05 A0"},
        {106, toHex(text("SA"))},
        {107, toHex(text("IE"))},
        {114, toHex(text("IA"))},
        {115, ""},
        {119, "FF"},
        {120, "FF"},
        {121, "03"},
        {129, "80 00 00 00"},
        {131, ""},
        {504, "6D"},
        {505, "64"},
        {509, "75"},
        {510, "7F 00 00 01"},
    };
    for (const auto &row : rows) EXPECT_EQ(getChar(ctx, row.id), row.want) << row.id;
    for (const int32_t id : {-1,  0,   4,   19,  29,  30,  64,  84,  91,  92,  93,  101, 105,
                             109, 113, 128, 130, 135, 136, 137, 155, 501, 502, 503, 512}) {
        uint32_t length = 7;
        Trace trace;
        EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), id, nullptr, &length), KACERT_AttributeNotSupportErr) << id;
        EXPECT_EQ(length, 0u) << id;
        EXPECT_TRUE(trace.has("------>Get KACERT_AttributeNotSupportErr")) << id;
    }
}

TEST(CertQuery, AbsentAttributesAnswerNothing) {
    const CertPtr ctx = newCert();
    for (int32_t id = 1; id <= 512; ++id) {
        uint32_t length = 7;
        const int32_t status = KACert_GetCertAttributeChar(ctx.get(), id, nullptr, &length);
        EXPECT_TRUE(status == KACERT_Ok || status == KACERT_AttributeNotSupportErr) << id;
        EXPECT_EQ(length, 0u) << id;
    }
}

TEST(CertQuery, Arguments) {
    const CertPtr ctx = decoded(CertParts());
    uint32_t length = 0;
    int32_t value = 0;
    EXPECT_EQ(KACert_GetCertAttributeChar(nullptr, 1, nullptr, &length), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), 1, nullptr, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributeInt(nullptr, CERT_VERSION, &value), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_VERSION, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_SERIALNUMBER, &value), KACERT_AttributeNotSupportErr);
    Trace trace;
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERT_SERIALNUMBER, nullptr, &length), KACERT_Ok);
    EXPECT_EQ(length, 1u);
    EXPECT_TRUE(trace.has("======>Get CERT_SERIALNUMBER LEN"));
}

TEST(CertQuery, UnitsAreJoinedAndNeedABuffer) {
    CertParts parts;
    parts.issuer = seq({attribute("55 04 0B", ""), attribute("55 04 0B", "UnitA"), attribute("55 04 03", "N"),
                        attribute("55 04 0B", "UnitB")});
    const CertPtr ctx = decoded(parts);
    uint32_t length = 7;
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERT_ISSUER_ORGANIZATIONALUNITNAME, nullptr, &length),
              KACERT_InvalidParamErr);
    EXPECT_EQ(length, 0u);
    uint8_t buffer[64] = {};
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERT_ISSUER_ORGANIZATIONALUNITNAME, buffer, &length), KACERT_Ok);
    EXPECT_EQ(toHex(buffer, length), toHex(text("UnitA,OU=UnitB")));
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERT_SUBJECT_ORGANIZATIONALUNITNAME, nullptr, &length), KACERT_Ok);
    EXPECT_EQ(length, 0u);
}

TEST(CertQuery, AltCommonNameFallsBackToTheMailAddress) {
    CertParts parts;
    parts.setExtensions({extension("55 1D 11", seq({hex("81 01 6D")}))});
    const CertPtr ctx = decoded(parts);
    uint32_t length = 7;
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERT_SUBJECT_ALT_COMMONNAME, nullptr, &length),
              KACERT_InvalidParamErr);
    uint8_t buffer[8] = {};
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERT_SUBJECT_ALT_COMMONNAME, buffer, &length), KACERT_Ok);
    EXPECT_EQ(toHex(buffer, length), "6D");
}

TEST(CertQuery, TheAltMailIdsAreCrossed) {
    const CertPtr ctx = newCert();
    ASSERT_EQ(setChar(ctx, CERT_SUBJECT_ALT_EMAIL, "s"), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, CERT_SUBJECT_ALT_EMAIL), "");
    EXPECT_EQ(getChar(ctx, CERT_ISSUER_ALT_EMAIL), ""); // hasIssuerAltName is down
    ASSERT_EQ(setChar(ctx, CERT_ISSUER_ALT_EMAIL, "i"), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, CERT_SUBJECT_ALT_EMAIL), toHex(text("i")));
    EXPECT_EQ(getChar(ctx, CERT_ISSUER_ALT_EMAIL), toHex(text("s")));
}

TEST(CertQuery, DistributionPointsComeOneByOne) {
    CertParts parts;
    const auto point = [](const char *name) { return seq({tlv(0xA0, tlv(0xA0, hex(name)))}); };
    parts.setExtensions({extension("55 1D 1F", seq({point("86 01 61"), point("86 01 62")}))});
    const CertPtr ctx = decoded(parts);
    uint8_t buffer[16];
    uint32_t length = 0;
    for (const char *want : {"86 01 61", "86 01 62", ""}) {
        EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERTEX_CRLDIST_FULLNAME, nullptr, &length), KACERT_Ok);
        EXPECT_EQ(length, hex(want).size()); // asking for the length stays where it is
        EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERTEX_CRLDIST_FULLNAME, buffer, &length), KACERT_Ok);
        EXPECT_EQ(toHex(buffer, length), want);
    }
    const CertPtr built = newCert();
    ASSERT_EQ(setChar(built, CERTEX_CRLDIST_FULLNAME, "a"), KACERT_Ok);
    EXPECT_EQ(getChar(built, CERTEX_CRLDIST_FULLNAME), ""); // only decoding sets the read position
}

TEST(CertQuery, PrivateExtensionsByIndex) {
    const CertPtr none = decoded(CertParts());
    uint32_t index = 5;
    uint32_t oidLength = 77;
    uint32_t critical = 77;
    uint32_t valueLength = 77;
    const auto query = [&](const CertPtr &ctx, uint8_t *id, uint8_t *value) {
        return KACert_GetCertAttributePrivate(ctx.get(), &index, id, &oidLength, &critical, value, &valueLength);
    };
    EXPECT_EQ(query(none, nullptr, nullptr), KACERT_Ok);
    EXPECT_EQ(index, 0u);
    CertParts parts;
    parts.setExtensions({extension("55 1D 20", hex("30 00")), extension("2A 03 04", hex("AA BB CC"), flagTrue)});
    const CertPtr ctx = decoded(parts);
    for (const uint32_t past : {0u, 3u, UINT32_MAX}) {
        index = past;
        EXPECT_EQ(query(ctx, nullptr, nullptr), KACERT_Ok);
        EXPECT_EQ(index, 2u) << past;
        EXPECT_EQ(oidLength + critical + valueLength, 3 * 77u);
    }
    EXPECT_EQ(query(ctx, nullptr, nullptr), KACERT_Ok);
    EXPECT_EQ(oidLength, 3u);
    EXPECT_EQ(critical, 255u);
    EXPECT_EQ(valueLength, 3u);
    uint8_t id[3];
    uint8_t value[3];
    EXPECT_EQ(query(ctx, id, value), KACERT_Ok);
    EXPECT_EQ(index, 2u);
    EXPECT_EQ(toHex(id, 3), "2A 03 04");
    EXPECT_EQ(toHex(value, 3), "AA BB CC");
    EXPECT_EQ(KACert_GetCertAttributePrivate(nullptr, &index, id, &oidLength, &critical, value, &valueLength),
              KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributePrivate(ctx.get(), nullptr, id, &oidLength, &critical, value, &valueLength),
              KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributePrivate(ctx.get(), &index, id, nullptr, &critical, value, &valueLength),
              KACERT_InvalidParamErr);
}

TEST(CertQuery, ANameTooLongForItsTextAnswersNothing) {
    const CertPtr ctx = newCert();
    ASSERT_EQ(setChar(ctx, CERT_ISSUER_COMMONNAME, std::string(1024, 'x')), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, CERT_ISSUER_DN), "");
    EXPECT_EQ(getChar(ctx, CERT_ISSUER_COMMONNAME), toHex(text(std::string(1024, 'x'))));
}

// What is set and not encoded answers as it was set.
TEST(CertQuery, ABuiltContext) {
    const CertPtr ctx = newCert();
    fillCert(ctx);
    ASSERT_EQ(setChar(ctx, CERTEX_KEYUSAGE, hex("A0")), KACERT_Ok);
    ASSERT_EQ(setChar(ctx, CERTEX_AUTHORITY, hex("01")), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, CERTEX_KEYUSAGE), "A0");
    EXPECT_EQ(getChar(ctx, CERTEX_AUTHORITY), "01");
    EXPECT_EQ(getChar(ctx, CERT_PUBLICKEY_ALGORITHM), Sha1WithRsa);
    EXPECT_EQ(getChar(ctx, CERT_SUBJECT_DN), toHex(text("CN=Leaf")));
    int32_t time = 9;
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_VALIDFROM, &time), KACERT_Ok);
    EXPECT_EQ(time, 0);
}

} // namespace
