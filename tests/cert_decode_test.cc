#include "dump.h"
#include "rows.h"

#include <dlfcn.h>

using namespace karil_test;

namespace {

// What may get lost without a word when an allocation fails is not looked at then: usages and alternative names.
SWEPT_ROWS(CertDecode, Fields, {KACERT_MemoryErr}, false) {
    const Zone utc("UTC");
    CertParts parts;
    const std::map<std::string, Octets *> names = {{"version", &parts.version},   {"serial", &parts.serial},
                                                   {"inner", &parts.inner},       {"issuer", &parts.issuer},
                                                   {"validity", &parts.validity}, {"subject", &parts.subject},
                                                   {"key", &parts.key},           {"extensions", &parts.extensions},
                                                   {"outer", &parts.outer},       {"signature", &parts.signature}};
    for (const auto &[name, octets] : row.settings("part"))
        *names.at(name) = octets;
    const CertPtr ctx = create<CertEncodeCtx>();
    const Exact der(parts.whole());
    EXPECT_EQ(decode(*ctx, der.bytes()), row.number("status"));
    const std::string all = ", " + dump(*ctx) + ", ";
    for (const std::string &item : row.list("want"))
        if (item[0] == '-')
            EXPECT_EQ(all.find(", " + item.substr(1) + '='), all.npos) << item << " in " << all;
        else
            EXPECT_NE(all.find(", " + item + ", "), all.npos) << item << " in " << all;
    if (row.number("status") != KACERT_Ok)
        return;
    EXPECT_EQ(toHex(ctx->encoded), toHex(der.bytes()));
    EXPECT_EQ(toHex(ctx->tbs), toHex(parts.tbs()));
    EXPECT_EQ(ctx->tbs.next, nullptr);
    EXPECT_EQ(toHex(encode(*ctx)), toHex(der.bytes())); // a decoded context hands out what it decoded
}

ROWS(CertDecode, LengthArgument) {
    const Octets der = CertParts().whole();
    const Exact given(cat({der, row.octets("behind")}));
    const CertPtr ctx = create<CertEncodeCtx>();
    const uint32_t length = row("length") == "all"    ? given.record.length
                            : row("length") == "less" ? given.record.length - 1
                                                      : row.number<uint32_t>("length");
    EXPECT_EQ(KACert_DecodeCert(ctx.get(), given.data(), length), row.number("status"));
    EXPECT_EQ(ctx->encoded.length, row.number("status") == KACERT_Ok ? der.size() : 0);
}

TEST(CertDecode, AToBeSignedPartMayNotStopEarly) {
    const Zone utc("UTC");
    const CertParts parts;
    Octets fields;
    for (const Octets &field :
         {parts.version, parts.serial, parts.inner, parts.issuer, parts.validity, parts.subject}) {
        fields = cat({fields, field});
        const Trace trace;
        EXPECT_EQ(decode(*create<CertEncodeCtx>(), seq({tlv(0x30, fields)})), KACERT_CertNotEndErr) << toHex(fields);
        EXPECT_TRUE(trace.has("------>KACERT_CertNotEndErr"));
        EXPECT_TRUE(trace.has("------>KI_Cert_DecodeTBS"));
    }
    for (const Octets &der : {hex("30 00"), hex("30 02 30 00")})
        EXPECT_EQ(decode(*create<CertEncodeCtx>(), der), KACERT_Ok) << toHex(der);
}

SWEPT_ROWS(CertDecode, Extensions, {KACERT_MemoryErr}, false) {
    const Exact field(tlv(0xA3, {seq({row.octets("extension")})}));
    CertParts parts;
    parts.extensions = copyOf(field.bytes());
    const CertPtr ctx = create<CertEncodeCtx>();
    EXPECT_EQ(decode(*ctx, Exact(parts.whole()).bytes()), row.number("status"));
    EXPECT_TRUE(isHindered() || dump(ctx->extensions) == row("want")) << dump(ctx->extensions);
    // The same by the field alone.
    const CertPtr alone = create<CertEncodeCtx>();
    EXPECT_EQ(TRIED(KI_Cert_DecodeExtensions(&field.record, &alone->extensions)), row.number("status"));
    EXPECT_TRUE(isHindered() || dump(alone->extensions) == row("want")) << dump(alone->extensions);
}

ROWS(CertDecode, SingleReaders) {
    using Reader = int32_t (*)(const Anybuf *, CertExtensions *);
    const auto read = reinterpret_cast<Reader>(dlsym(RTLD_DEFAULT, ("KI_Cert_DecodeExtension_" + row("call")).c_str()));
    ASSERT_NE(read, nullptr);
    const CertPtr ctx = create<CertEncodeCtx>();
    const Exact other(extension("2A 03", hex("30 00")), 16), empty(hex("30 00"), 16), wrong(hex("31 00"), 17);
    EXPECT_EQ(read(&other.record, &ctx->extensions), row.number("other"));
    EXPECT_EQ(read(&wrong.record, &ctx->extensions), row.number("wrongTag"));
    EXPECT_EQ(read(&empty.record, &ctx->extensions), KACERT_CertNotEndErr);
    EXPECT_EQ(dump(ctx->extensions), row("left"));
}

TEST(CertDecode, EveryPrivateExtensionIsKept) {
    sweep([] {
        const CertPtr ctx = create<CertEncodeCtx>();
        const Exact other(extension("2A 03", hex("30 00")), 16);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(TRIED(KI_Cert_DecodeExtension_Private(&other.record, &ctx->extensions)), KACERT_Ok);
        EXPECT_EQ(dump(ctx->extensions), "private=1, ext=0:2A 03:0:30 00, ext=0:2A 03:0:30 00");
    });
}

TEST(CertDecode, ASecondDecodeAppendsNamesAndLeaksNothing) {
    CertParts parts;
    parts.setExtensions({extension("2A 03", hex("AA")), extension("55 1D 0E", hex("04 02 01 02"))});
    const CertPtr ctx = create<CertEncodeCtx>();
    ASSERT_EQ(decode(*ctx, parts.whole()), KACERT_Ok);
    parts.serial = hex("02 01 06");
    ASSERT_EQ(decode(*ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(get(*ctx, CERT_SERIALNUMBER), "06");
    ASSERT_NE(ctx->issuer.next->next, nullptr);
    ASSERT_NE(ctx->extensions.privateExtensions->next, nullptr);
    // The octets may be the context's own, and no version is the first version again.
    ASSERT_EQ(KACert_DecodeCert(ctx.get(), ctx->encoded.data, ctx->encoded.length), KACERT_Ok);
    ASSERT_EQ(KI_Cert_DecodeTBS(ctx.get(), &ctx->tbs), KACERT_Ok);
    EXPECT_EQ(get(*ctx, CERT_TBS_CERTIFICATE), toHex(parts.tbs()));
    parts.version = hex("A0 00"); // cannot be read, so that the one before stays
    EXPECT_EQ(decode(*ctx, parts.whole()), KACERT_LengthNotEqualErr);
    EXPECT_EQ(ctx->version, 2);
    parts.version = {};
    ASSERT_EQ(decode(*ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(ctx->version, 0);
    // And a value that is set by hand goes after the decoded ones.
    ASSERT_EQ(set(*ctx, CERT_ISSUER_COUNTRYNAME, "CN"), KACERT_Ok);
    const NameRecord *last = ctx->issuer.next;
    while (last->next != nullptr)
        last = last->next;
    EXPECT_EQ(toHex(last->value), "43 4E");
}

} // namespace
