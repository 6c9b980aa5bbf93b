#include "cert_support.h"

#include "karil/cert_ext.h"

#include <dlfcn.h>

using namespace karil_test;

namespace {

// Gives the octets in a heap block of just their size.
int32_t decodeExact(const CertPtr &ctx, const Octets &der, uint32_t length) {
    const Exact exact(der);
    return KACert_DecodeCert(ctx.get(), exact.record.data, length);
}
int32_t decodeExact(const CertPtr &ctx, const Octets &der) {
    return decodeExact(ctx, der, static_cast<uint32_t>(der.size()));
}

ROWS(CertDecode, Fields) {
    const Zone utc("UTC");
    CertParts parts;
    for (const auto &[name, octets] : row.settings("part")) parts[name] = octets;
    const CertPtr ctx = newCert();
    const Octets der = parts.whole();
    EXPECT_EQ(decodeExact(ctx, der), row.number("status"));
    const std::string all = ", " + dump(*ctx) + ", ";
    for (const std::string &item : row.list("want"))
        if (item[0] == '-')
            EXPECT_EQ(all.find(", " + item.substr(1) + '='), all.npos) << item << " in " << all;
        else
            EXPECT_NE(all.find(", " + item + ", "), all.npos) << item << " in " << all;
    if (row.number("status") != KACERT_Ok) return;
    EXPECT_EQ(toHex(ctx->encoded), toHex(der));
    EXPECT_EQ(toHex(ctx->tbs), toHex(parts.tbs()));
    EXPECT_EQ(ctx->tbs.next, nullptr);
    uint32_t length = 0; // a decoded context hands out what it decoded
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), nullptr, &length), KACERT_Ok);
    EXPECT_EQ(length, der.size());
}

ROWS(CertDecode, LengthArgument) {
    const Octets der = CertParts().whole();
    const Octets given = cat({der, row.octets("behind")});
    const auto size = static_cast<uint32_t>(given.size());
    const CertPtr ctx = newCert();
    const uint32_t length = row("length") == "all"    ? size
                            : row("length") == "less" ? size - 1
                                                      : row.number<uint32_t>("length");
    EXPECT_EQ(decodeExact(ctx, given, length), row.number("status"));
    EXPECT_EQ(ctx->encoded.length, row.number("status") == KACERT_Ok ? der.size() : 0);
    EXPECT_EQ(KACert_DecodeCert(nullptr, der.data(), size), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_DecodeCert(ctx.get(), nullptr, size), KACERT_InvalidParamErr);
}

TEST(CertDecode, AToBeSignedPartMayNotStopEarly) {
    const Zone utc("UTC");
    const CertParts parts;
    Octets fields;
    for (const Octets &field :
         {parts.version, parts.serial, parts.inner, parts.issuer, parts.validity, parts.subject}) {
        fields = cat({fields, field});
        const Trace trace;
        EXPECT_EQ(decodeExact(newCert(), seq({tlv(0x30, fields)})), KACERT_CertNotEndErr) << toHex(fields);
        EXPECT_TRUE(trace.has("------>KACERT_CertNotEndErr"));
        EXPECT_TRUE(trace.has("------>KI_Cert_DecodeTBS"));
    }
    for (const Octets &der : {hex("30 00"), hex("30 02 30 00")})
        EXPECT_EQ(decodeExact(newCert(), der), KACERT_Ok) << toHex(der);
}

ROWS(CertDecode, Extensions) {
    CertParts parts;
    parts.setExtensions({row.octets("extension")});
    const CertPtr ctx = newCert();
    EXPECT_EQ(decodeExact(ctx, parts.whole()), row.number("status"));
    EXPECT_EQ(dump(ctx->extensions), row("want"));
    // The same by the field alone.
    const CertPtr alone = newCert();
    const Exact field(parts["extensions"]);
    EXPECT_EQ(KI_Cert_DecodeExtensions(&field.record, &alone->extensions), row.number("status"));
    EXPECT_EQ(dump(alone->extensions), row("want"));
}

ROWS(CertDecode, SingleReaders) {
    using Reader = int32_t (*)(const Anybuf *, CertExtensions *);
    const auto read = reinterpret_cast<Reader>(dlsym(RTLD_DEFAULT, ("KI_Cert_DecodeExtension_" + row("call")).c_str()));
    ASSERT_NE(read, nullptr);
    const CertPtr ctx = newCert();
    const Exact other(extension("2A 03", hex("30 00")), 16);
    const Exact empty(hex("30 00"), 16);
    const Exact wrong(hex("31 00"), 17);
    EXPECT_EQ(read(&other.record, &ctx->extensions), row.number("other"));
    EXPECT_EQ(read(&wrong.record, &ctx->extensions), row.number("wrongTag"));
    EXPECT_EQ(read(&empty.record, &ctx->extensions), KACERT_CertNotEndErr);
    EXPECT_EQ(read(nullptr, &ctx->extensions), KACERT_InvalidParamErr);
    EXPECT_EQ(read(&other.record, nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(dump(ctx->extensions), row("left"));
}

TEST(CertDecode, EveryPrivateExtensionIsKept) {
    const CertPtr ctx = newCert();
    const Exact other(extension("2A 03", hex("30 00")), 16);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(KI_Cert_DecodeExtension_Private(&other.record, &ctx->extensions), KACERT_Ok);
    EXPECT_EQ(dump(ctx->extensions), "private=1, ext=0:2A 03:0:30 00, ext=0:2A 03:0:30 00");
}

TEST(CertDecode, ASecondDecodeAppendsNamesAndLeaksNothing) {
    CertParts parts;
    parts.setExtensions({extension("2A 03", hex("AA")), extension("55 1D 0E", hex("04 02 01 02"))});
    const CertPtr ctx = newCert();
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    parts.serial = hex("02 01 06");
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, CERT_SERIALNUMBER), "06");
    ASSERT_NE(ctx->issuer.next->next, nullptr);
    ASSERT_NE(ctx->extensions.privateExtensions->next, nullptr);
    // The octets may be the context's own, and no version is the first version again.
    ASSERT_EQ(KACert_DecodeCert(ctx.get(), ctx->encoded.data, ctx->encoded.length), KACERT_Ok);
    ASSERT_EQ(KI_Cert_DecodeTBS(ctx.get(), &ctx->tbs), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, CERT_TBS_CERTIFICATE), toHex(parts.tbs()));
    parts.version = {};
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(ctx->version, 0);
    // And a value that is set by hand goes behind the decoded ones.
    ASSERT_EQ(setChar(ctx, CERT_ISSUER_COUNTRYNAME, "CN"), KACERT_Ok);
    const NameRecord *last = ctx->issuer.next;
    while (last->next != nullptr) last = last->next;
    EXPECT_EQ(toHex(last->value), "43 4E");
}

} // namespace
