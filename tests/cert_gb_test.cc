// National private extensions, digest lists, and certificate contexts seeded with an issuer.
#include "testkit.h"

#include <cstring>

using namespace karil_test;

namespace {

// "OID / critical / value" of the last private extension, or nothing.
std::string lastExtension(const CertPtr &ctx) {
    const PrivateExtensionNode *node = ctx->extensions.privateExtensions;
    while (node != nullptr && node->next != nullptr)
        node = node->next;
    return node == nullptr ? ""
                           : toHex(node->oid) + " / " + std::to_string(node->critical) + " / " + toHex(node->value);
}

TEST(CertGb, NumbersOfAPerson) {
    const struct {
        int32_t flags[3], lengths[3], want;
        std::string value; // of the extension, or the words of the failure
    } rows[] = {
        {{0, 0, 1}, {0, 0, 2}, KACERT_Ok, "31 04 82 02 50 31"},
        {{1, 1, 1}, {3, 5, 2}, KACERT_Ok, "31 11 80 03 52 31 32 81 06 E4 B8 AD 31 32 33 82 02 50 31"},
        {{2, 1, -1}, {0, 2, 0}, KACERT_Ok, "31 05 81 03 E4 B8 AD"},
        {{2, 0, 0}, {3, 5, 2}, KACERT_Ok, "31 00"},
        {{0, 0, 1}, {0, 0, 512}, KACERT_Ok, toHex(set({tlv(0x82, cat({text("P1"), Octets(510, 'x')}))}))},
        {{0, 0, 0}, {3, 5, 2}, KACERT_InvalidParamErr, "------>tag all is 0"},
        {{1, 0, 0}, {0, 0, 0}, KACERT_InvalidParamErr, "------>residenterCardNumberLen is Err"},
        {{1, 1, 0}, {3, -1, 0}, KACERT_InvalidParamErr, "------>militaryOfficerCardNumberLen is Err"},
        {{1, 1, 1}, {3, 5, 0}, KACERT_InvalidParamErr, "------>passportNumberLen is Err"},
        {{0, 1, 0}, {0, 513, 0}, KACERT_InvalidLengthErr, "------>militaryOfficerCardNumberLen is Err"},
        {{1, 0, 1}, {512, 0, 512}, KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr"},
    };
    for (const auto &[flags, lengths, want, value] : rows) {
        KA_GBPRIV_IDENTIFY record;
        memset(&record, 'x', sizeof record);
        memcpy(record.residenterCardNumber, "R12", 3);
        memcpy(record.militaryOfficerCardNumber, "\xD6\xD0\x31\x32\x33", 5); // U+4E2D in front
        memcpy(record.passportNumber, "P1", 2);
        memcpy(&record.residenterCardFlag, flags, sizeof flags);
        record.residenterCardNumberLen = lengths[0];
        record.militaryOfficerCardNumberLen = lengths[1];
        record.passportNumberLen = lengths[2];
        const CertPtr ctx = create<CertEncodeCtx>();
        Trace trace;
        EXPECT_EQ(KACert_SetCertPrivate_GB(ctx.get(), CERT_GBPRIV_IDENTIFY, &record, 1560, 1), want) << value;
        EXPECT_EQ(lastExtension(ctx), want == KACERT_Ok ? "2A 56 0B 07 01 / 1 / " + value : "");
        EXPECT_TRUE(want == KACERT_Ok || trace.has(value)) << value;
        EXPECT_EQ(KACert_SetCertPrivate_GB(ctx.get(), CERT_GBPRIV_IDENTIFY, &record, 1559, 1), KACERT_InvalidParamErr);
        EXPECT_EQ(trace.has("------>privDataLen != sizeof(KA_GBPRIV_IDENTIFY)"), value != "------>tag all is 0");
    }
}

TEST(CertGb, TextsAndArguments) {
    const CertPtr ctx = create<CertEncodeCtx>();
    const std::string value(1021, 'x');
    const struct {
        CertEncodeCtx *ctx;
        int32_t type;
        const char *data;
        int32_t length, critical, want;
        std::string last; // extension, or the words of the failure
    } rows[] = {
        {ctx.get(), 151, "a", 1, 0, KACERT_Ok, "2A 56 0B 07 02 / 0 / 13 01 61"},
        {ctx.get(), 152, "b", 1, 1, KACERT_Ok, "2A 56 0B 07 04 / 1 / 13 01 62"},
        {ctx.get(), 153, "\xD6", 1, 0, KACERT_Ok, "2A 56 0B 07 03 / 0 / 13 01 D6"},
        {ctx.get(), 154, value.data(), 1020, 0, KACERT_Ok,
         "2A 56 0B 07 05 / 0 / " + toHex(tlv(0x13, text(value.substr(1))))},
        {ctx.get(), 154, value.data(), 1021, 0, KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr"},
        {nullptr, 151, "a", 1, 0, KACERT_InvalidParamErr, "------>pCertEncodeCtx or privData  is NULL"},
        {ctx.get(), 150, nullptr, 0, 2, KACERT_InvalidParamErr, "------>pCertEncodeCtx or privData  is NULL"},
        {ctx.get(), 150, "a", 0, 2, KACERT_InvalidParamErr, "------>certAttributeType is Err"},
        {ctx.get(), 151, "a", 0, 2, KACERT_InvalidParamErr, "------>critical is Err"},
        {ctx.get(), 151, "a", 0, 0, KACERT_InvalidParamErr, "------>privDataLen is Err"},
    };
    for (const auto &row : rows) {
        Trace trace;
        const std::string before = lastExtension(ctx);
        EXPECT_EQ(KACert_SetCertPrivate_GB(row.ctx, row.type, row.data, row.length, row.critical), row.want);
        EXPECT_EQ(lastExtension(ctx), row.want == KACERT_Ok ? row.last : before);
        EXPECT_TRUE(row.want == KACERT_Ok || trace.has(row.last)) << row.last;
    }
    Trace trace;
    failAllocation(Pool::Library, 1, false);
    EXPECT_EQ(KACert_SetCertPrivate_GB(ctx.get(), 151, "a", 1, 0), KACERT_InvalidParamErr);
    EXPECT_TRUE(endFailing() && trace.has("------>KACert_EncodeChar"));
}

TEST(CertGb, DigestLists) {
    const auto sha1 = [](size_t n) { return seq({seq({oid("2B 0E 03 02 1A")}), tlv(4, Octets(n, 'v'))}); };
    const auto md5 = [](size_t n) { return seq({algorithm("2A 86 48 86 F7 0D 02 05"), tlv(4, Octets(n, 'v'))}); };
    // Algorithm and length of each digest.
    const std::tuple<std::vector<std::pair<int32_t, int32_t>>, int32_t, Octets> rows[] = {
        {{{1, 20}}, KACERT_Ok, seq({sha1(20)})},
        {{{2, 0}, {1, 1}, {-1, 3}, {0, 512}}, KACERT_Ok, seq({sha1(1), md5(512)})},
        {{{7, 20}}, KACERT_Ok, hex("30 00")},
        {{{1, 20}, {1, 0}}, KACERT_InvalidParamErr, {}},
        {{{0, 513}}, KACERT_InvalidLengthErr, {}},
    };
    for (const auto &[thumbs, want, der] : rows) {
        std::vector<KA_THUMBPRINT> list(thumbs.size());
        for (size_t i = list.size(); i-- > 0;) {
            memset(&list[i], 'v', sizeof list[i]);
            std::tie(list[i].algorithm, list[i].valueLen) = thumbs[i];
            list[i].next = i + 1 < list.size() ? &list[i + 1] : nullptr;
        }
        Octets result(der.size() + 1, 0xEE);
        uint32_t length = 0;
        EXPECT_EQ(EnCodeThums(list.data(), sizeof list[0], result.data(), &length), want);
        EXPECT_EQ(length, der.size());
        EXPECT_EQ(toHex(result), toHex(cat({der, hex("EE")})));
        EXPECT_EQ(EnCodeThums(list.data(), sizeof list[0] - 1, result.data(), &length), KACERT_InvalidParamErr);
    }
}

TEST(CertGb, ContextsSeededWithAnIssuer) {
    const auto nameOf = [](size_t size) { return commonName(std::string(size - 21, 'x')); }; // 21 octets of headers
    // The subject, how many of the certificate's octets are not given, and the status.
    const std::tuple<Octets, int32_t, int32_t> rows[] = {{hex("30 00"), 0, KACERT_Ok},
                                                         {nameOf(2048), 0, KACERT_Ok},
                                                         {nameOf(2049), 0, KACERT_InvalidLengthErr},
                                                         {nameOf(200), 1, KACERT_LengthNotEqualErr},
                                                         {{}, INT32_MAX, KACERT_InvalidParamErr}};
    for (const auto &[name, less, want] : rows) {
        CertParts parts;
        parts.subject = name;
        parts.setExtensions({extension("55 1D 0E", hex("04 01 03"))});
        const Octets der = parts.whole();
        CertEncodeCtx *raw = nullptr;
        const int32_t length = static_cast<int32_t>(der.size()) - less;
        EXPECT_EQ(KACert_CreateCertEncodeCtx_Ex(&raw, der.data(), length), want);
        const CertPtr ctx(raw);
        ASSERT_EQ(ctx != nullptr, want == KACERT_Ok);
        if (ctx == nullptr)
            continue;
        EXPECT_EQ(get(*ctx, CERT_ISSUER_DERDN), toHex(name));
        EXPECT_EQ(ctx->hasExtensions + ctx->serialNumber.length + ctx->subjectDer.length, 0u);
    }
}

} // namespace
