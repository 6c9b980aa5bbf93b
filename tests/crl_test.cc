#include "crypto.h"
#include "rows.h"
#include "signed.h"

using namespace karil_test;

namespace {

const Octets Time2020 = tlv(0x17, text("200101000000Z"));
const Octets Time2021 = tlv(0x17, text("210101000000Z"));
const Octets NoTime = tlv(0x18, text("700101000000Z"));

Octets entry(std::string_view serial, const Octets &date, const Octets &extensions = {}) {
    return seq({tlv(0x02, hex(serial)), date, extensions});
}

// TBSCertList of a filled context with what a case adds.
Octets tbsOf(const Octets &version, std::initializer_list<Octets> behind) {
    return seq({version, algorithm(Sha1WithRsa), commonName("Root"), cat(behind)});
}

ROWS(Crl, Set) {
    const Trace trace;
    const CrlPtr ctx = create<CrlEncodeCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "set"), row.number("status"));
    EXPECT_TRUE(trace.has(row("words"))) << row("words");
}

SWEPT_ROWS(Crl, Encode) {
    const Zone utc("UTC");
    const Trace trace;
    const CrlPtr ctx = filled<CrlEncodeCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "set"), KACERT_Ok);
    HookPlan plan;
    setPlan(*ctx, plan);
    int32_t status = 0;
    encode(*ctx, &status);
    EXPECT_EQ(status, row.number("status"));
    if (status != KACERT_Ok) {
        EXPECT_TRUE(trace.has(row("want")));
        return;
    }
    EXPECT_EQ(toHex(plan.input), toHex(seq({row.octets("want")})));
    EXPECT_EQ(get(*ctx, CRL_TBS_CERTLIST), toHex(plan.input));
}

TEST(Crl, Hook) {
    checkHook<CrlEncodeCtx>(KACERT_InvalidLengthErr);
}

SWEPT_ROWS(Crl, Decode, {KACERT_MemoryErr, KACERT_CrlNotEndErr}, false) {
    const Zone utc("UTC");
    const Exact der(wholeOf(seq({row.octets("tbs")})));
    EXPECT_EQ(decode(*create<CrlDecodeCtx>(), der.bytes()), row.number("status"));
}

ROWS(Crl, DecodeWhole) {
    EXPECT_EQ(decode(*create<CrlDecodeCtx>(), Exact(row.octets("crl")).bytes()), row.number("status"));
}

// What was read of an entry that cannot be read to its end stays in the list: serial number, date, flags and reason.
SWEPT_ROWS(Crl, Entries, {KACERT_MemoryErr}, false) {
    const Zone utc("UTC");
    const CrlPtr ctx = create<CrlDecodeCtx>();
    const Exact source(row.octets("list"));
    EXPECT_EQ(TRIED(KI_CRL_DecodeRevokedCerts(&source.record, ctx.get())), row.number("status"));
    std::string read;
    for (const RevokedEntry *entry = ctx->firstRevoked; entry != nullptr; entry = entry->next)
        read += (read.empty() ? "" : ", ") + toHex(entry->serialNumber) + '/' +
                std::to_string(entry->revocationDate.utcValue) + '/' + std::to_string(entry->hasEntryExtensions) +
                std::to_string(entry->hasReason) + '/' + toHex(entry->reason);
    EXPECT_EQ(read, row("want"));
    EXPECT_EQ(ctx->currentRevoked, ctx->firstRevoked);
}

TEST(Crl, QueriesAndTheWalk) {
    const Zone utc("UTC");
    const Octets flagged =
        seq({extension("55 1D 18", hex("05 00")), extension("55 1D 15", hex("0A 01 04"), hex("01 01 FF"))});
    const Octets entries = seq({entry("00 81", Time2020, flagged), entry("07", Time2021)});
    const Octets unit = hex("06 03 55 04 0B");
    const Octets issuer = seq({set({seq({unit, tlv(0x13, text("a"))})}), set({seq({unit, tlv(0x13, text("b"))})})});
    const Octets extensions =
        tlv(0xA0, seq({extension("55 1D 14", hex("02 02 00 90")), extension("55 1D 14", hex("02 01 01")),
                       extension("55 1D 1B", hex("02 01 03"), hex("01 01 FF")),
                       extension("55 1D 23", seq({hex("80 01 09")}))}));
    const Octets tbs = seq({hex("02 01 01"), algorithm("2A 03"), issuer, Time2020, Time2021, entries, extensions});
    const Octets der = seq({tbs, algorithm("2A 04 05"), bits(hex("AA BB"))});
    const std::pair<int32_t, std::string> rows[] = {
        {CRL_TBS_CERTLIST, toHex(tbs)},
        {CRL_OUTER_SIGNATUREALGORITHM, "2A 03 00"}, // the inner one's octets, the outer one's length, the rest zero
        {CRL_INNER_SIGNATUREALGORITHM, "2A 03"},
        {CRL_CA_SIGNATURE, "AA BB"},
        {CRL_ISSUER_DN, toHex(text("OU=a,OU=b"))},
        {CRL_ISSUER_ORGANIZATIONALUNITNAME, "61"},
        {CRL_ISSUER_EMAIL, "untouched"},
        {CRLEX_CRLNUMBER, "90"},
        {CRLEX_DELTACRLINDICATOR, "03"},
        {CRLEX_AUTHORITY_KEYIDENTIFIER, "status 110"},
        {CRL_ISSUER_DERDN, "status 110"},
        {CRL_RevokedCertificates_DER, toHex(entries)},
        {CRL_CERT_SERIALNUMBER, "81"},
        {CRLEX_CRLREASON, "04"},
        {CRL_CERT_NEXT, "untouched"},
        {CRL_CERT_SERIALNUMBER, "07"},
        {CRLEX_CRLREASON, "untouched"},
        {CRL_CERT_NEXT, "untouched"},
        {CRL_CERT_SERIALNUMBER, ""},
        {CRL_CERT_NEXT, "untouched"},
        {CRL_CERT_SERIALNUMBER, ""},
    };
    const std::pair<int32_t, int32_t> numbers[] = {{CRL_VERSION, 1}, {CRL_THISUPDATE, Y2020}, {CRL_NEXTUPDATE, Y2021}};
    sweep(
        [&] {
            const CrlPtr ctx = create<CrlDecodeCtx>();
            ASSERT_EQ(decode(*ctx, der), KACERT_Ok);
            int32_t date = 5;
            EXPECT_EQ(KACert_GetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, &date), KACERT_Ok);
            EXPECT_EQ(date, 0);
            for (const auto &[id, want] : rows) {
                const std::string answer = get(*ctx, id); // the name as a text may be lost without a word
                EXPECT_TRUE(answer == want || (isHindered() && id == CRL_ISSUER_DN)) << id << ' ' << answer;
            }
            date = 5;
            EXPECT_EQ(KACert_GetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, &date), KACERT_Ok);
            EXPECT_EQ(date, 5);
            for (const auto &[id, want] : numbers) {
                EXPECT_EQ(KACert_GetCrlAttributeInt(ctx.get(), id, &date), KACERT_Ok);
                EXPECT_EQ(date, want) << id;
            }
            EXPECT_EQ(ctx->hasRevoked, 0);
            // A reason of the last entry can be exchanged although it stands in the entry's block.
            EXPECT_EQ(set(*ctx, CRLEX_CRLREASON, hex("06")), KACERT_Ok);
            EXPECT_EQ(toHex(ctx->firstRevoked->next->reason), "06");
        },
        {{KACERT_MemoryErr, KACERT_CrlNotEndErr}, false});
}

// A list that was read by the exported reader grows, and what is set goes to its last entry.
TEST(Crl, EntriesAreReadAndSetInTurns) {
    const Zone utc("UTC");
    const CrlPtr ctx = filled<CrlEncodeCtx>();
    std::string serials;
    for (const char *serial : {"03", "04", "05"}) {
        const Exact list(seq({entry(serial, Time2020), entry("7F", Time2020)}));
        EXPECT_EQ(KI_CRL_DecodeRevokedCerts(&list.record, ctx.get()), KACERT_Ok);
        EXPECT_EQ(set(*ctx, CRLEX_CRLREASON, hex(serial)), KACERT_Ok);
        EXPECT_EQ(set(*ctx, CRL_CERT_SERIALNUMBER, hex(serial)), KACERT_Ok);
    }
    for (const RevokedEntry *node = ctx->firstRevoked; node != nullptr; node = node->next)
        serials += toHex(node->serialNumber) + '/' + toHex(node->reason) + ' ';
    EXPECT_EQ(serials, "03/ 7F/03 03/ 04/ 7F/04 04/ 05/ 7F/05 05/ ");
}

TEST(Crl, SeededContexts) {
    const auto certOf = [](const Octets &subject, const Octets &keyId) {
        CertParts parts;
        parts.subject = subject;
        if (!keyId.empty())
            parts.setExtensions({extension("55 1D 0E", tlv(0x04, keyId))});
        return parts.whole();
    };
    const Octets root = commonName("Root");
    const std::tuple<const char *, Octets, int32_t, std::string> rows[] = {
        {"with a key id", certOf(root, hex("07 08")), KACERT_Ok, "07 08"},
        {"without", certOf(root, {}), KACERT_Ok, ""},
        {"key id too long", certOf(root, Octets(513, 1)), KACERT_InvalidLengthErr, ""},
        {"name too long", certOf(commonName(std::string(2048, 'a')), {}), KACERT_InvalidLengthErr, ""},
        {"no certificate", hex("30 03 02 01 05"), KACERT_InvalidTagErr, ""},
        {"nothing", {}, KACERT_InvalidParamErr, ""},
    };
    for (const auto &[name, cert, want, keyId] : rows) {
        const std::vector<int32_t> statuses = {KACERT_MemoryErr, KACERT_CrlNotEndErr};
        sweep(
            [&, &der = cert, &status = want, &id = keyId, &about = name] {
                CrlEncodeCtx *raw = nullptr;
                EXPECT_EQ(TRIED(KACert_CreateCrlEncodeCtx_Ex(&raw, der.data(), lengthOf(der))), status) << about;
                const CrlPtr ctx(raw);
                ASSERT_EQ(raw != nullptr, status == KACERT_Ok) << about;
                EXPECT_EQ(raw != nullptr ? toHex(ctx->issuerDer) : toHex(root), toHex(root)) << about;
                EXPECT_EQ(raw != nullptr ? toHex(ctx->extensions.authorityKeyId.keyId) : "", id) << about;
                EXPECT_EQ(raw != nullptr ? ctx->extensions.hasAuthorityKeyId : 0, id.empty() ? 0 : 1) << about;
            },
            {statuses});
    }
    const Octets entries = seq({entry("01", Time2020)});
    const Octets empty = wholeOf(tbsOf(hex("02 01 01"), {Time2020, tlv(0xA0, seq({}))}));
    const Octets earlier = wholeOf(tbsOf(hex("02 01 01"), {Time2020, entries}));
    sweep(
        [&] {
            const Trace trace;
            const CrlPtr ctx = filled<CrlEncodeCtx>();
            const auto carryOver = [&ctx](const Octets &der) {
                return TRIED(setCRL2Context(ctx.get(), der.data(), lengthOf(der)));
            };
            EXPECT_EQ(carryOver(empty), KACERT_Ok);
            EXPECT_EQ(ctx->revokedDer.data, nullptr);
            EXPECT_EQ(carryOver(earlier), KACERT_Ok);
            EXPECT_EQ(toHex(ctx->revokedDer), toHex(entries));
            EXPECT_TRUE(trace.has("=====>KACert_SetRevokedCert START") && trace.has("=====>KACert_SetRevokedCert END"));
            EXPECT_EQ(carryOver({}), KACERT_InvalidParamErr);
            EXPECT_EQ(toHex(ctx->revokedDer), toHex(entries));
        },
        {{KACERT_MemoryErr, KACERT_CrlNotEndErr}});
    EXPECT_EQ(setCRL2Context(filled<CrlEncodeCtx>().get(), hex("30 00").data(), 2), KACERT_CrlNotEndErr);
}

// The exported parts, by themselves, against what the whole writes and reads.
TEST(Crl, ThePartsByThemselves) {
    const Zone utc("UTC");
    sweep([] {
        const CrlPtr ctx = filled<CrlEncodeCtx>();
        Anybuf *node = nullptr;
        int32_t status = TRIED(KI_Crl_EncodeExtensions(ctx.get(), &node));
        EXPECT_EQ(answerOf(status, node), "nothing");
        set(*ctx, CRL_CERT_SERIALNUMBER, hex("05"));
        KACert_SetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, Y2020);
        set(*ctx, CRLEX_CRLREASON, hex("01"));
        set(*ctx, CRL_RevokedCertificates_DER, seq({entry("01", NoTime), entry("02", NoTime)}));
        const Octets reason = extension("55 1D 15", hex("0A 01 01"));
        node = nullptr;
        status = TRIED(KI_CRL_EncodeRevokedCRL(ctx.get(), &node));
        EXPECT_EQ(answerOf(status, node),
                  toHex(seq({entry("01", NoTime), entry("02", NoTime), entry("05", Time2020, seq({reason}))})));
        node = nullptr;
        status = TRIED(KI_CRL_WriteEntryExtension(ctx->firstRevoked, &node));
        EXPECT_EQ(answerOf(status, node), toHex(seq({reason})));
        Exact added(entry("09", NoTime));
        Anybuf *chain = nullptr;
        ASSERT_EQ(TRIED(KI_CRL_AddRevokedCert(ctx.get(), &added.record, &chain)), KACERT_Ok);
        EXPECT_EQ(chain->next->next, &added.record);
        chain->next->next = nullptr;
        EXPECT_EQ(answerOf(KACERT_Ok, chain), toHex(entry("01", NoTime)));
    });

    const CrlPtr decoded = create<CrlDecodeCtx>();
    CrlExtensions &block = decoded->extensions;
    const auto read = [](const Octets &octets, auto decodePart, auto *target) {
        const Exact element(octets);
        return decodePart(&element.record, target);
    };
    EXPECT_EQ(read(extension("55 1D 1B", hex("02 01 07")), KI_Crl_DecodeCRLNumber, &block), KACERT_Ok);
    EXPECT_EQ(block.hasCrlNumber, 0);
    EXPECT_EQ(read(seq({oid("55 1D 1B")}), KI_Crl_DecodeDelCRLIdentifier, &block), KACERT_CertNotEndErr);
    EXPECT_EQ(read(extension("55 1D 1B", hex("02 01 07")), KI_Crl_DecodeDelCRLIdentifier, &block), KACERT_Ok);
    EXPECT_EQ(toHex(block.deltaCrl.value), "07");
    EXPECT_EQ(read(tlv(0xA7, seq({extension("55 1D 14", hex("02 01 08"))})), KI_Crl_DecodeExtensions, &block),
              KACERT_Ok);
    EXPECT_EQ(toHex(block.crlNumber.value), "08");
    const Exact tbs(tbsOf(hex("02 01 01"), {Time2021, hex("30 00")}));
    EXPECT_EQ(KI_CRL_DecodeTBS(decoded.get(), &tbs.record), KACERT_Ok);
    EXPECT_EQ(decoded->thisUpdate.utcValue, Y2021);
}

TEST(Crl, LibcryptoReadsAndVerifiesWhatIsWritten) {
    const Zone utc("UTC");
    const CrlPtr ctx = filled<CrlEncodeCtx>(signBySha1, &keyPair().secret, sizeof keyPair().secret);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_VERSION, 1);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_THISUPDATE, Y2020);
    for (int i = 0; i < 300; ++i) {
        set(*ctx, CRL_CERT_SERIALNUMBER, hex(i % 2 == 0 ? "80 01" : "7F"));
        KACert_SetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, Y2021 + 86400 * i);
        if (i % 3 == 0)
            set(*ctx, CRLEX_CRLREASON, hex("04"));
    }
    set(*ctx, CRLEX_CRLNUMBER, hex("01 00"));
    set(*ctx, CRLEX_ISSUINGDIST_FULLNAME, "http://crl.example/a.crl");
    const auto crl = parsed<d2i_X509_CRL, X509_CRL_free>(encode(*ctx));
    ASSERT_NE(crl, nullptr);
    ASSERT_EQ(sk_X509_REVOKED_num(X509_CRL_get_REVOKED(crl.get())), 300);
    const X509_REVOKED *last = sk_X509_REVOKED_value(X509_CRL_get_REVOKED(crl.get()), 299);
    EXPECT_EQ(ASN1_TIME_cmp_time_t(X509_REVOKED_get0_revocationDate(last), Y2021 + 86400 * 299), 0);
    const Ssl<ISSUING_DIST_POINT_free> point(static_cast<ISSUING_DIST_POINT *>(
        X509_CRL_get_ext_d2i(crl.get(), NID_issuing_distribution_point, nullptr, nullptr)));
    EXPECT_NE(point, nullptr);
    EXPECT_EQ(X509_CRL_verify(crl.get(), keyOf(keyPair().secret).get()), 1);
}

TEST(Crl, ReadsWhatLibcryptoWrites) {
    const Zone utc("UTC");
    const Ssl<X509_CRL_free> crl(X509_CRL_new());
    X509_CRL_set_version(crl.get(), 1);
    const TimePtr when(ASN1_TIME_set(nullptr, Y2020));
    X509_CRL_set1_lastUpdate(crl.get(), when.get());
    X509_CRL_set1_nextUpdate(crl.get(), when.get());
    const Ssl<ASN1_ENUMERATED_free> reason(ASN1_ENUMERATED_new());
    ASN1_ENUMERATED_set(reason.get(), 3);
    for (long serial : {0x7FL, 0x80L, 0x123456L}) {
        X509_REVOKED *revoked = X509_REVOKED_new();
        const Ssl<ASN1_INTEGER_free> number(ASN1_INTEGER_new());
        ASN1_INTEGER_set(number.get(), serial);
        X509_REVOKED_set_serialNumber(revoked, number.get());
        X509_REVOKED_set_revocationDate(revoked, when.get());
        X509_REVOKED_add1_ext_i2d(revoked, NID_crl_reason, reason.get(), 0, 0);
        X509_CRL_add0_revoked(crl.get(), revoked);
    }
    ASSERT_GT(X509_CRL_sign(crl.get(), keyOf(keyPair().secret).get(), EVP_sha1()), 0);
    const CrlPtr ctx = create<CrlDecodeCtx>();
    EXPECT_EQ(decode(*ctx, derOf(i2d_X509_CRL, crl.get())), KACERT_Ok);
    for (const char *serial : {"7F", "80", "12 34 56", ""}) {
        EXPECT_EQ(get(*ctx, CRL_CERT_SERIALNUMBER), serial);
        EXPECT_EQ(get(*ctx, CRLEX_CRLREASON), *serial != '\0' ? "03" : "untouched");
        EXPECT_EQ(KACert_GetCrlAttributeChar(ctx.get(), CRL_CERT_NEXT, nullptr, nullptr), KACERT_Ok);
    }
    EXPECT_EQ(get(*ctx, CRL_INNER_SIGNATUREALGORITHM), Sha1WithRsa);
}

} // namespace
