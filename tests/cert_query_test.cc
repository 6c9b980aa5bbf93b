#include "cert_support.h"

using namespace karil_test;

namespace {

// A certificate with extensions of the data file.
CertPtr decodedWith(const Row &row, std::string_view extensions) {
    CertParts parts;
    parts.setExtensions({row.parse(extensions)});
    return decodedCert(parts);
}

ROWS(CertQuery, Answers) {
    const Zone utc("UTC");
    CertParts parts;
    parts.issuer = row.octets("issuer");
    parts.subject = row.parse("$A");
    parts.setExtensions({row.octets("extensions")});
    const CertPtr ctx = decodedCert(parts);
    const auto id = row.number("id");
    uint32_t length = 7;
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), id, nullptr, &length), row.number("nullBuffer"));
    EXPECT_EQ(length, row.number("nullBuffer") == 0 ? row.octets("want").size() : 0);
    Octets octets(4096);
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), id, octets.data(), &length), KACERT_Ok);
    EXPECT_EQ(toHex(octets.data(), length), row.hex("want"));
    EXPECT_EQ(getChar(ctx, CERT_TBS_CERTIFICATE), toHex(parts.tbs()));
}

ROWS(CertQuery, IdsThatAreNotAsked) {
    const CertPtr ctx = newCert();
    for (const std::string &id : row.list("ids")) {
        uint32_t length = 7;
        const Trace trace;
        EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), std::stoi(id), nullptr, &length),
                  KACERT_AttributeNotSupportErr)
            << id;
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
    const CertPtr ctx = decodedCert(CertParts());
    uint32_t length = 0;
    int32_t value = 0;
    EXPECT_EQ(KACert_GetCertAttributeChar(nullptr, 1, nullptr, &length), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), 1, nullptr, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributeInt(nullptr, CERT_VERSION, &value), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_VERSION, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_SERIALNUMBER, &value), KACERT_AttributeNotSupportErr);
    const Trace trace;
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERT_SERIALNUMBER, nullptr, &length), KACERT_Ok);
    EXPECT_EQ(length, 1u);
    EXPECT_TRUE(trace.has("======>Get CERT_SERIALNUMBER LEN"));
}

ROWS(CertQuery, Built) {
    const CertPtr ctx = newCert();
    EXPECT_EQ(takeAll(ctx, row, "steps"), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, row.number("id")), row.hex("want"));
}

ROWS(CertQuery, Ints) {
    const Zone utc("UTC");
    CertParts parts;
    parts.version = row.octets("version");
    parts.validity = row.octets("validity");
    int32_t value = 9;
    EXPECT_EQ(KACert_GetCertAttributeInt(decodedCert(parts).get(), row.number("id"), &value), KACERT_Ok);
    EXPECT_EQ(value, row.number("want"));
    const CertPtr built = filledCert();
    EXPECT_EQ(KACert_GetCertAttributeInt(built.get(), CERT_VALIDFROM, &value), KACERT_Ok);
    EXPECT_EQ(value, 0);
}

ROWS(CertQuery, DistributionPoints) {
    const CertPtr ctx = decodedWith(row, "$Points");
    uint32_t length = 0;
    for (const std::string &want : row.list("want")) {
        EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERTEX_CRLDIST_FULLNAME, nullptr, &length), KACERT_Ok);
        EXPECT_EQ(length, hex(want).size()); // asking for the length stays where it is
        uint8_t buffer[16];
        EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERTEX_CRLDIST_FULLNAME, buffer, &length), KACERT_Ok);
        EXPECT_EQ(toHex(buffer, length), want);
    }
}

// An index asked for and the one that comes back; past the last one nothing else is stored.
ROWS(CertQuery, PrivateExtensions) {
    const CertPtr ctx = decodedWith(row, row("extensions"));
    auto index = row.number<uint32_t>("index");
    uint32_t oidLength = 77;
    uint32_t critical = 77;
    uint32_t valueLength = 77;
    const auto query = [&](CertDecodeCtx *from, uint32_t *at, uint32_t *size, uint8_t *id, uint8_t *value) {
        return KACert_GetCertAttributePrivate(from, at, id, size, &critical, value, &valueLength);
    };
    EXPECT_EQ(query(ctx.get(), &index, &oidLength, nullptr, nullptr), KACERT_Ok);
    EXPECT_EQ(index, row.number<uint32_t>("after"));
    EXPECT_EQ(critical, row.number<uint32_t>("critical"));
    const bool isThere = critical != 77;
    EXPECT_EQ(oidLength, isThere ? row.octets("oid").size() : 77);
    EXPECT_EQ(valueLength, isThere ? row.octets("value").size() : 77);
    uint8_t id[8];
    uint8_t value[8];
    EXPECT_EQ(query(ctx.get(), nullptr, &oidLength, id, value), KACERT_InvalidParamErr);
    EXPECT_EQ(query(nullptr, &index, &oidLength, id, value), KACERT_InvalidParamErr);
    if (!isThere) return;
    EXPECT_EQ(query(ctx.get(), &index, nullptr, id, value), KACERT_InvalidParamErr);
    EXPECT_EQ(query(ctx.get(), &index, &oidLength, id, value), KACERT_Ok);
    EXPECT_EQ(index, row.number<uint32_t>("after"));
    EXPECT_EQ(toHex(id, oidLength), row.hex("oid"));
    EXPECT_EQ(toHex(value, valueLength), row.hex("value"));
}

} // namespace
