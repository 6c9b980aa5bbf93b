#include "signed_support.h"

#include "rows.h"

#include "karil/asn1.h"

#include <openssl/x509v3.h>

#include <gtest/gtest.h>

using namespace karil_test;

namespace {

constexpr int32_t Y2020 = 1577836800;
constexpr int32_t Y2021 = 1609459200;
const Octets Time2020 = tlv(0x17, text("200101000000Z"));
const Octets Time2021 = tlv(0x17, text("210101000000Z"));
const Octets NoTime = tlv(0x18, text("700101000000Z"));

// Algorithms and issuer: nothing else is asked for.
CrlPtr bareCrl() {
    CrlPtr ctx = create<CrlEncodeCtx>();
    set(ctx, CRL_INNER_SIGNATUREALGORITHM, hex(Sha1WithRsa));
    set(ctx, CRL_OUTER_SIGNATUREALGORITHM, hex(Sha1WithRsa));
    set(ctx, CRL_ISSUER_COMMONNAME, "Root");
    return ctx;
}

void addEntry(const CrlPtr &ctx, std::string_view serial, int32_t date, std::string_view reason = "") {
    set(ctx, CRL_CERT_SERIALNUMBER, hex(serial));
    KACert_SetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, date);
    if (!reason.empty()) set(ctx, CRLEX_CRLREASON, hex(reason));
}

Octets entry(std::string_view serial, const Octets &date, const Octets &extensions = {}) {
    return seq({tlv(0x02, hex(serial)), date, extensions});
}
Octets reasonOf(std::string_view octets) { return seq({extension("55 1D 15", tlv(0x0A, hex(octets)))}); }

// TBSCertList of bareCrl() with what a case adds.
Octets tbsOf(const Octets &version, std::initializer_list<Octets> behind) {
    return seq({version, algorithm(Sha1WithRsa), commonName("Root"), cat(behind)});
}
Octets whole(const Octets &tbs) { return seq({tbs, algorithm(Sha1WithRsa), hex("03 02 00 AA")}); }

// Sets an id of either kind of function; the Int ids have four octets.
int32_t setAny(const CrlPtr &ctx, const std::string &id, const Octets &value) {
    const int32_t number = std::stoi(id);
    if (value.size() != 4) return set(ctx, number, value);
    uint32_t word = 0;
    for (const uint8_t octet : value) word = word << 8 | octet;
    return KACert_SetCrlAttributeInt(ctx.get(), number, static_cast<int32_t>(word));
}

ROWS(Crl, Set) {
    const Trace trace;
    const CrlPtr ctx = create<CrlEncodeCtx>();
    const auto settings = row.settings("set");
    for (size_t i = 0; i < settings.size(); ++i)
        EXPECT_EQ(setAny(ctx, settings[i].first, settings[i].second),
                  i + 1 < settings.size() ? KACERT_Ok : row.number("status"));
    EXPECT_TRUE(row("words").empty() || trace.has(row("words"))) << row("words");
}

ROWS(Crl, Encode) {
    const Zone utc("UTC");
    const Trace trace;
    const CrlPtr ctx = bareCrl();
    for (const auto &[id, value] : row.settings("set")) EXPECT_EQ(setAny(ctx, id, value), KACERT_Ok) << id;
    HookPlan plan = {};
    setPlan(ctx, plan);
    int32_t status = 0;
    encode(ctx, &status);
    EXPECT_EQ(status, row.number("status"));
    if (status != KACERT_Ok) {
        EXPECT_TRUE(trace.has(row("want")));
        return;
    }
    EXPECT_EQ(toHex(plan.input), toHex(seq({row.octets("want")})));
    EXPECT_EQ(get(ctx, CRL_TBS_CERTLIST), toHex(plan.input));
}

TEST(Crl, Hook) { checkHook(bareCrl, KACERT_InvalidLengthErr); }

ROWS(Crl, Decode) {
    const Zone utc("UTC");
    EXPECT_EQ(decode(create<CrlDecodeCtx>(), whole(seq({row.octets("tbs")}))), row.number("status"));
}

ROWS(Crl, DecodeWhole) { EXPECT_EQ(decode(create<CrlDecodeCtx>(), row.octets("crl")), row.number("status")); }

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
    const CrlPtr ctx = create<CrlDecodeCtx>();
    ASSERT_EQ(decode(ctx, seq({tbs, algorithm("2A 04 05"), hex("03 03 00 AA BB")})), KACERT_Ok);
    const struct {
        int32_t id;
        std::string want;
    } rows[] = {
        {CRL_TBS_CERTLIST, toHex(tbs)},
        {CRL_OUTER_SIGNATUREALGORITHM, "2A 03 00"}, // the inner one's octets, the outer one's length
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
    int32_t date = 5;
    EXPECT_EQ(KACert_GetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, &date), KACERT_Ok);
    EXPECT_EQ(date, 0);
    for (const auto &row : rows) EXPECT_EQ(get(ctx, row.id), row.want) << row.id;
    date = 5;
    EXPECT_EQ(KACert_GetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, &date), KACERT_Ok);
    EXPECT_EQ(date, 5);
    const std::pair<int32_t, int32_t> numbers[] = {{CRL_VERSION, 1}, {CRL_THISUPDATE, Y2020}, {CRL_NEXTUPDATE, Y2021}};
    for (const auto &[id, want] : numbers) {
        EXPECT_EQ(KACert_GetCrlAttributeInt(ctx.get(), id, &date), KACERT_Ok);
        EXPECT_EQ(date, want) << id;
    }
    EXPECT_EQ(ctx->hasRevoked, 0);
    // A reason of the last entry can be exchanged although it stands in the entry's block.
    EXPECT_EQ(set(ctx, CRLEX_CRLREASON, hex("06")), KACERT_Ok);
    EXPECT_EQ(decode(create<CrlDecodeCtx>(), encode(ctx)), KACERT_Ok);
}

TEST(Crl, SeededContexts) {
    const Zone utc("UTC");
    CertParts parts;
    parts.subject = commonName("Root");
    const Octets without = parts.whole();
    parts.setExtensions({extension("55 1D 0E", hex("04 02 07 08"))});
    const Octets with = parts.whole();
    parts.setExtensions({extension("55 1D 0E", tlv(0x04, Octets(513, 1)))});
    const Octets longKeyId = parts.whole();
    parts.subject = commonName(std::string(2048, 'a'));
    const struct {
        const char *name;
        Octets cert;
        int32_t want;
        std::string keyId;
    } rows[] = {
        {"with a key id", with, KACERT_Ok, "07 08"},
        {"without", without, KACERT_Ok, ""},
        {"key id too long", longKeyId, KACERT_InvalidLengthErr, ""},
        {"name too long", parts.whole(), KACERT_InvalidLengthErr, ""},
        {"no certificate", hex("30 03 02 01 05"), KACERT_InvalidTagErr, ""},
        {"nothing", {}, KACERT_InvalidParamErr, ""},
    };
    for (const auto &row : rows) {
        CrlEncodeCtx *raw = nullptr;
        const auto size = static_cast<int32_t>(row.cert.size());
        const int32_t status = KACert_CreateCrlEncodeCtx_Ex(&raw, row.cert.data(), size);
        EXPECT_EQ(status, row.want) << row.name;
        ASSERT_EQ(raw != nullptr, row.want == KACERT_Ok) << row.name;
        if (raw == nullptr) continue;
        const CrlPtr ctx(raw);
        EXPECT_EQ(toHex(ctx->issuerDer), toHex(commonName("Root"))) << row.name;
        EXPECT_EQ(toHex(ctx->extensions.authorityKeyId.keyId), row.keyId) << row.name;
        EXPECT_EQ(ctx->extensions.hasAuthorityKeyId, row.keyId.empty() ? 0 : 1) << row.name;
    }
    const Trace trace;
    const CrlPtr ctx = bareCrl();
    const Octets entries = seq({entry("01", Time2020)});
    const Octets empty = whole(tbsOf(hex("02 01 01"), {Time2020, tlv(0xA0, seq({}))}));
    const Octets earlier = whole(tbsOf(hex("02 01 01"), {Time2020, entries}));
    const auto carryOver = [&ctx](const Octets &der) {
        return setCRL2Context(ctx.get(), der.data(), static_cast<int32_t>(der.size()));
    };
    EXPECT_EQ(carryOver(empty), KACERT_Ok);
    EXPECT_EQ(ctx->revokedDer.data, nullptr);
    EXPECT_EQ(carryOver(earlier), KACERT_Ok);
    EXPECT_EQ(toHex(ctx->revokedDer), toHex(entries));
    EXPECT_TRUE(trace.has("=====>KACert_SetRevokedCert START") && trace.has("=====>KACert_SetRevokedCert END"));
    EXPECT_EQ(carryOver({}), KACERT_InvalidParamErr);
    EXPECT_EQ(carryOver(hex("30 00")), KACERT_CrlNotEndErr);
    EXPECT_EQ(toHex(ctx->revokedDer), toHex(entries));
}

// The exported parts, by themselves, against what the whole writes and reads.
TEST(Crl, ThePartsByThemselves) {
    const Zone utc("UTC");
    const CrlPtr ctx = bareCrl();
    const auto written = [&ctx](int32_t (*write)(const CrlEncodeCtx *, Anybuf **)) {
        Anybuf *node = nullptr;
        EXPECT_EQ(write(ctx.get(), &node), KACERT_Ok);
        const Chain owned(node);
        return node != nullptr ? toHex(*node) : "nothing";
    };
    EXPECT_EQ(written(KI_Crl_EncodeExtensions), "nothing");
    addEntry(ctx, "05", Y2020, "01");
    set(ctx, CRL_RevokedCertificates_DER, seq({entry("01", NoTime), entry("02", NoTime)}));
    EXPECT_EQ(written(KI_CRL_EncodeRevokedCRL),
              toHex(seq({entry("01", NoTime), entry("02", NoTime), entry("05", Time2020, reasonOf("01"))})));
    Octets added = entry("09", NoTime);
    Anybuf *node = nullptr;
    Anybuf *chain = nullptr;
    Anybuf source = view(added);
    ASSERT_EQ(KAsn1_WriteSequence(&source, &node), KACERT_Ok);
    ASSERT_EQ(KI_CRL_AddRevokedCert(ctx.get(), node, &chain), KACERT_Ok);
    const Chain owned(chain);
    EXPECT_EQ(toHex(*chain), toHex(entry("01", NoTime)));
    EXPECT_EQ(chain->next->next, node);

    const CrlPtr decoded = create<CrlDecodeCtx>();
    const auto read = [](const Octets &octets, auto decodePart, auto *target) {
        const Exact element(octets);
        return decodePart(target, &element.record);
    };
    const auto list = [](CrlDecodeCtx *c, const Anybuf *e) { return KI_CRL_DecodeRevokedCerts(e, c); };
    const auto all = [](CrlExtensions *b, const Anybuf *e) { return KI_Crl_DecodeExtensions(e, b); };
    const auto number = [](CrlExtensions *b, const Anybuf *e) { return KI_Crl_DecodeCRLNumber(e, b); };
    const auto delta = [](CrlExtensions *b, const Anybuf *e) { return KI_Crl_DecodeDelCRLIdentifier(e, b); };
    CrlExtensions &block = decoded->extensions;
    EXPECT_EQ(read(seq({entry("03", Time2020)}), list, decoded.get()), KACERT_Ok);
    EXPECT_EQ(read(seq({entry("04", Time2020)}), list, decoded.get()), KACERT_Ok);
    EXPECT_EQ(get(decoded, CRL_CERT_SERIALNUMBER), "03");
    EXPECT_EQ(toHex(decoded->firstRevoked->next->serialNumber), "04");
    EXPECT_EQ(read(extension("55 1D 1B", hex("02 01 07")), number, &block), KACERT_Ok);
    EXPECT_EQ(block.hasCrlNumber, 0);
    EXPECT_EQ(read(seq({oid("55 1D 1B")}), delta, &block), KACERT_CertNotEndErr);
    EXPECT_EQ(read(extension("55 1D 1B", hex("02 01 07")), delta, &block), KACERT_Ok);
    EXPECT_EQ(toHex(block.deltaCrl.value), "07");
    EXPECT_EQ(read(tlv(0xA7, seq({extension("55 1D 14", hex("02 01 08"))})), all, &block), KACERT_Ok);
    EXPECT_EQ(toHex(block.crlNumber.value), "08");
    EXPECT_EQ(read(tbsOf(hex("02 01 01"), {Time2021, hex("30 00")}), KI_CRL_DecodeTBS, decoded.get()), KACERT_Ok);
    EXPECT_EQ(decoded->thisUpdate.utcValue, Y2021);
}

struct FreeCrl {
    void operator()(X509_CRL *crl) const { X509_CRL_free(crl); }
};
using X509CrlPtr = std::unique_ptr<X509_CRL, FreeCrl>;

TEST(Crl, LibcryptoReadsAndVerifiesWhatIsWritten) {
    const Zone utc("UTC");
    RsaPublicKeyRecord publicKey;
    RsaPrivateKeyRecord privateKey;
    ASSERT_EQ(KA_PKCS7_GenRSAKeyPair_2048(&publicKey, &privateKey), KACERT_Ok);
    const CrlPtr ctx = bareCrl();
    KACert_SetCrlAttributeInt(ctx.get(), CRL_VERSION, 1);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_THISUPDATE, Y2020);
    for (int i = 0; i < 300; ++i) addEntry(ctx, i % 2 == 0 ? "80 01" : "7F", Y2021 + 86400 * i, i % 3 == 0 ? "04" : "");
    set(ctx, CRLEX_CRLNUMBER, hex("01 00"));
    set(ctx, CRLEX_ISSUINGDIST_FULLNAME, "http://crl.example/a.crl");
    KACert_SetCrlSignFunc(ctx.get(), signBySha1, &privateKey, sizeof privateKey);
    const Octets der = encode(ctx);
    const uint8_t *at = der.data();
    const X509CrlPtr crl(d2i_X509_CRL(nullptr, &at, static_cast<long>(der.size())));
    ASSERT_NE(crl, nullptr);
    EXPECT_EQ(sk_X509_REVOKED_num(X509_CRL_get_REVOKED(crl.get())), 300);
    const X509_REVOKED *last = sk_X509_REVOKED_value(X509_CRL_get_REVOKED(crl.get()), 299);
    const std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> when(ASN1_TIME_set(nullptr, Y2021 + 86400 * 299),
                                                                     ASN1_TIME_free);
    EXPECT_EQ(ASN1_TIME_compare(X509_REVOKED_get0_revocationDate(last), when.get()), 0);
    const std::unique_ptr<ISSUING_DIST_POINT, decltype(&ISSUING_DIST_POINT_free)> point(
        static_cast<ISSUING_DIST_POINT *>(
            X509_CRL_get_ext_d2i(crl.get(), NID_issuing_distribution_point, nullptr, nullptr)),
        ISSUING_DIST_POINT_free);
    EXPECT_NE(point, nullptr);
    const X509_ALGOR *outer = nullptr;
    const ASN1_BIT_STRING *signature = nullptr;
    X509_CRL_get0_signature(crl.get(), &signature, &outer);
    int32_t verdict = 0;
    uint8_t *tbs = nullptr;
    const int size = i2d_re_X509_CRL_tbs(crl.get(), &tbs);
    EXPECT_EQ(KA_PKCS7_VerifySignature(KA_DIGEST_SHA1, tbs, static_cast<uint32_t>(size), signature->data,
                                       static_cast<uint32_t>(signature->length), &publicKey, &verdict),
              KACERT_Ok);
    EXPECT_EQ(verdict, 1);
    OPENSSL_free(tbs);
}

TEST(Crl, ReadsWhatLibcryptoWrites) {
    const Zone utc("UTC");
    const X509CrlPtr crl(X509_CRL_new());
    X509_CRL_set_version(crl.get(), 1);
    const std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> when(ASN1_TIME_set(nullptr, Y2020), ASN1_TIME_free);
    X509_CRL_set1_lastUpdate(crl.get(), when.get());
    X509_CRL_set1_nextUpdate(crl.get(), when.get());
    for (long serial : {0x7FL, 0x80L, 0x123456L}) {
        X509_REVOKED *revoked = X509_REVOKED_new();
        const std::unique_ptr<ASN1_INTEGER, decltype(&ASN1_INTEGER_free)> number(ASN1_INTEGER_new(), ASN1_INTEGER_free);
        ASN1_INTEGER_set(number.get(), serial);
        X509_REVOKED_set_serialNumber(revoked, number.get());
        X509_REVOKED_set_revocationDate(revoked, when.get());
        const std::unique_ptr<ASN1_ENUMERATED, decltype(&ASN1_ENUMERATED_free)> reason(ASN1_ENUMERATED_new(),
                                                                                       ASN1_ENUMERATED_free);
        ASN1_ENUMERATED_set(reason.get(), 3);
        X509_REVOKED_add1_ext_i2d(revoked, NID_crl_reason, reason.get(), 0, 0);
        X509_CRL_add0_revoked(crl.get(), revoked);
    }
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_RSA_gen(2048), EVP_PKEY_free);
    ASSERT_GT(X509_CRL_sign(crl.get(), key.get(), EVP_sha1()), 0);
    uint8_t *der = nullptr;
    const int size = i2d_X509_CRL(crl.get(), &der);
    ASSERT_GT(size, 0);
    const CrlPtr ctx = create<CrlDecodeCtx>();
    EXPECT_EQ(decode(ctx, Octets(der, der + size)), KACERT_Ok);
    OPENSSL_free(der);
    for (const char *serial : {"7F", "80", "12 34 56", ""}) {
        EXPECT_EQ(get(ctx, CRL_CERT_SERIALNUMBER), serial);
        EXPECT_EQ(get(ctx, CRLEX_CRLREASON), *serial != '\0' ? "03" : "untouched");
        EXPECT_EQ(KACert_GetCrlAttributeChar(ctx.get(), CRL_CERT_NEXT, nullptr, nullptr), KACERT_Ok);
    }
    EXPECT_EQ(get(ctx, CRL_INNER_SIGNATUREALGORITHM), Sha1WithRsa);
}

} // namespace
