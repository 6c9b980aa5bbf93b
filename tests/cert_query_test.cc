#include "rows.h"

using namespace karil_test;

namespace {

CertPtr decodedCert(const CertParts &parts) {
    CertPtr ctx = create<CertEncodeCtx>();
    EXPECT_EQ(decode(*ctx, parts.whole()), KACERT_Ok);
    return ctx;
}

SWEPT_ROWS(CertQuery, Answers, {KACERT_MemoryErr}, false) {
    const Zone utc("UTC");
    CertParts parts;
    parts.issuer = row.octets("issuer");
    parts.subject = row.parse("$A");
    parts.setExtensions({row.octets("extensions")});
    const CertPtr ctx = decodedCert(parts);
    const auto id = row.number("id");
    uint32_t length = 7;
    const int32_t status = TRIED(KACert_GetCertAttributeChar(ctx.get(), id, nullptr, &length));
    const std::string answer = get(*ctx, id);
    if (isHindered())
        return; // usages, alternative names and names as texts may be lost without a word
    EXPECT_EQ(status, row.number("nullBuffer"));
    EXPECT_EQ(length, row.number("nullBuffer") == 0 ? row.octets("want").size() : 0);
    EXPECT_EQ(answer, row.hex("want"));
    EXPECT_EQ(get(*ctx, CERT_TBS_CERTIFICATE), toHex(parts.tbs()));
}

TEST(CertQuery, AbsentAttributesAnswerNothing) {
    const CertPtr ctx = create<CertEncodeCtx>();
    for (int32_t id = 1; id <= 512; ++id) {
        const std::string answer = get(*ctx, id);
        EXPECT_TRUE(answer.empty() || answer == "status 110") << id << ' ' << answer;
    }
    uint32_t length = 7;
    const Trace trace;
    EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERT_SERIALNUMBER, nullptr, &length), KACERT_Ok);
    EXPECT_EQ(length, 0u);
    EXPECT_TRUE(trace.has("======>Get CERT_SERIALNUMBER LEN"));
    int32_t value = 0;
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_SERIALNUMBER, &value), KACERT_AttributeNotSupportErr);
}

ROWS(CertQuery, Built) {
    const CertPtr ctx = create<CertEncodeCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "steps"), KACERT_Ok);
    EXPECT_EQ(get(*ctx, row.number("id")), row.hex("want"));
}

ROWS(CertQuery, Ints) {
    const Zone utc("UTC");
    CertParts parts;
    parts.version = row.octets("version");
    parts.validity = row.octets("validity");
    int32_t value = 9;
    EXPECT_EQ(KACert_GetCertAttributeInt(decodedCert(parts).get(), row.number("id"), &value), KACERT_Ok);
    EXPECT_EQ(value, row.number("want"));
    EXPECT_EQ(KACert_GetCertAttributeInt(filled<CertEncodeCtx>().get(), CERT_VALIDFROM, &value), KACERT_Ok);
    EXPECT_EQ(value, 0);
}

TEST(CertQuery, DistributionPointsComeOneAfterTheOther) {
    CertParts parts;
    const auto point = [](const char *uri) { return seq({tlv(0xA0, tlv(0xA0, tlv(0x86, text(uri))))}); };
    parts.setExtensions({extension("55 1D 1F", seq({point("a"), point("b")}))});
    const CertPtr ctx = decodedCert(parts);
    for (const char *want : {"86 01 61", "86 01 62", "", ""}) {
        uint32_t length = 0; // asking for the length stays where it is
        EXPECT_EQ(KACert_GetCertAttributeChar(ctx.get(), CERTEX_CRLDIST_FULLNAME, nullptr, &length), KACERT_Ok);
        EXPECT_EQ(get(*ctx, CERTEX_CRLDIST_FULLNAME), want);
    }
}

// An index asked for and the one that comes back; past the last one nothing else is stored.
ROWS(CertQuery, PrivateExtensions) {
    CertParts parts;
    parts.setExtensions({row.octets("extensions")});
    const CertPtr ctx = decodedCert(parts);
    uint32_t sizes[2] = {77, 77};
    const Exact area(Octets(16, 0xEE));
    for (const bool isAsking : {true, false}) {
        auto index = row.number<uint32_t>("index");
        uint32_t critical = 77;
        uint8_t *oid = isAsking ? nullptr : area.data();
        uint8_t *value = isAsking ? nullptr : area.data() + 8;
        EXPECT_EQ(KACert_GetCertAttributePrivate(ctx.get(), &index, oid, &sizes[0], &critical, value, &sizes[1]),
                  KACERT_Ok);
        EXPECT_EQ(index, row.number<uint32_t>("after"));
        EXPECT_EQ(critical, row.number<uint32_t>("critical"));
    }
    const bool isThere = row.number("critical") != 77;
    EXPECT_EQ(isThere ? toHex(area.data(), sizes[0]) : std::to_string(sizes[0]), isThere ? row.hex("oid") : "77");
    EXPECT_EQ(isThere ? toHex(area.data() + 8, sizes[1]) : std::to_string(sizes[1]), isThere ? row.hex("value") : "77");
    auto index = row.number<uint32_t>("index");
    EXPECT_EQ(KACert_GetCertAttributePrivate(ctx.get(), &index, area.data(), nullptr, &sizes[1], area.data(), sizes),
              isThere ? KACERT_InvalidParamErr : KACERT_Ok);
}

} // namespace
