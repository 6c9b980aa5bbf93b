#include "crypto.h"
#include "rows.h"
#include "signed.h"

using namespace karil_test;

namespace {

const Octets Key = CertParts().key;

int32_t setPrivate(const CsrPtr &ctx, std::string_view oid, std::string_view value) {
    const Octets id = hex(oid), octets = hex(value);
    return TRIED(KACert_SetCsrAttributePrivate(ctx.get(), id.data(), lengthOf(id), octets.data(), lengthOf(octets)));
}

// "count N" past the end, else "OID = value".
std::string getPrivate(const CsrPtr &ctx, uint32_t index) {
    uint32_t at = index, idLength = 0, length = 0;
    uint8_t id[64], value[256];
    EXPECT_EQ(KACert_GetCsrAttributePrivate(ctx.get(), &at, id, &idLength, value, &length), KACERT_Ok);
    if (idLength == 0)
        return "count " + std::to_string(at);
    return toHex(id, idLength) + (length > 0 ? " = " : " =") + toHex(value, length);
}

TEST(Csr, SetAndGetStatuses) {
    const Trace trace;
    const CsrPtr ctx = filled<CsrEncodeCtx>();
    const std::tuple<int32_t, int32_t, int32_t> rows[] = {
        {999, 0, KACERT_MemoryErr},
        {CSR_SUBJECT_EMAIL, -1, KACERT_MemoryErr},
        {999, 1, KACERT_AttributeNotSupportErr},
        {CSR_TBS_CSR, 1, KACERT_AttributeNotSupportErr},
        {CSR_SUBJECT_EMAIL, 1, KACERT_Ok},
    };
    for (const auto &[id, length, want] : rows)
        EXPECT_EQ(KACert_SetCsrAttributeChar(ctx.get(), id, bytesOf("a").data(), length), want) << id;
    EXPECT_EQ(KACert_SetCsrAttributeInt(ctx.get(), CSR_TBS_CSR, 1), KACERT_AttributeNotSupportErr);
    EXPECT_EQ(setPrivate(ctx, "", "01"), KACERT_InvalidLengthErr);
    EXPECT_EQ(setPrivate(ctx, "2A", ""), KACERT_InvalidLengthErr);
    EXPECT_EQ(getPrivate(ctx, 1), "count 0");
    EXPECT_EQ(get(*ctx, CSR_SUBJECT_EMAIL), "61");
    EXPECT_TRUE(trace.has("======>Set CSR_SUBJECT_EMAIL") && trace.has("======>Get CSR_SUBJECT_COMMONNAME"));
    EXPECT_EQ(get(*ctx, CSR_SUBJECT_COUNTRYNAME), "untouched");
    EXPECT_EQ(get(*ctx, CSR_VERSION), "status 110");
    checkHook<CsrEncodeCtx>(KACERT_MemoryErr);
}

// The attributes set, and the request's info that is signed.
SWEPT_ROWS(Csr, Encode) {
    const CsrPtr ctx = filled<CsrEncodeCtx>();
    if (!row("version").empty())
        KACert_SetCsrAttributeInt(ctx.get(), CSR_VERSION, row.number("version"));
    for (const auto &[id, value] : row.settings("attributes"))
        EXPECT_EQ(setPrivate(ctx, id, toHex(value)), KACERT_Ok);
    HookPlan plan;
    setPlan(*ctx, plan);
    const Octets der = encode(*ctx);
    EXPECT_EQ(toHex(plan.input), toHex(seq({row.octets("info")})));
}

// What was set comes back behind tag and length of its OCTET STRING, the algorithm as a whole element.
TEST(Csr, WhatWasSetComesBack) {
    const CsrPtr ctx = filled<CsrEncodeCtx>();
    KACert_SetCsrAttributeInt(ctx.get(), CSR_VERSION, 1);
    setPrivate(ctx, "2A 04", "30 00");
    setPrivate(ctx, "2A 03", "05");
    const Octets der = encode(*ctx);
    sweep(
        [&der] {
            const CsrPtr decoded = create<CsrDecodeCtx>();
            ASSERT_EQ(decode(*decoded, cat({der, hex("AA")})), KACERT_Ok);
            EXPECT_EQ(getPrivate(decoded, 0), "count 2");
            EXPECT_EQ(getPrivate(decoded, 1), "2A 04 = 04 02 30 00");
            EXPECT_EQ(getPrivate(decoded, 2), "2A 03 = 04 01 05");
            EXPECT_EQ(getPrivate(decoded, 3), "count 2");
            EXPECT_EQ(get(*decoded, CSR_PUBLICKEY_ALGORITHM), toHex(oid(RsaEncryption)));
            EXPECT_EQ(get(*decoded, CSR_SUBJECTPUBLICKEYINFO), "30 03 02 01");
            EXPECT_EQ(get(*decoded, CSR_OUTER_SIGNATUREALGORITHM), Sha1WithRsa);
            EXPECT_EQ(get(*decoded, CSR_SELF_SIGNATURE), "AA BB CC");
            int32_t version = 5;
            EXPECT_EQ(KACert_GetCsrAttributeInt(decoded.get(), CSR_VERSION, &version), KACERT_Ok);
            EXPECT_EQ(version, 1);
        },
        {{KACERT_MemoryErr}, false});
}

SWEPT_ROWS(Csr, Decode, {KACERT_MemoryErr}, false) {
    const CsrPtr ctx = create<CsrDecodeCtx>();
    const Exact der(wholeOf(seq({row.octets("info")})));
    EXPECT_EQ(decode(*ctx, der.bytes()), row.number("status"));
    EXPECT_EQ(row.number("status") == KACERT_Ok ? getPrivate(ctx, 1) : "", row("first"));
}

SWEPT_ROWS(Csr, PublicKeys) {
    const Exact source(row.octets("source"));
    AlgorithmRecord type = {7, {}};
    Anybuf key = {};
    const std::unique_ptr<Anybuf, By<KI_ClearAnybuf>> typeOwner(&type.oid), keyOwner(&key);
    EXPECT_EQ(TRIED(KI_DecodePubKey(&source.record, &type, &key)), row.number("status"));
    EXPECT_EQ(toHex(type.oid), row.hex("algorithm"));
    EXPECT_EQ(toHex(key), row.hex("key"));
    EXPECT_EQ(type.id, 7u);
}

TEST(Csr, TheInfoByItself) {
    const CsrPtr ctx = create<CsrDecodeCtx>();
    const Exact info(seq({hex("02 01 05"), commonName("Leaf"), Key}));
    const Exact attributes(tlv(0xA3, seq({oid("2A 03"), set({hex("05 00")})})));
    EXPECT_EQ(KI_CSR_DecodeTBS(ctx.get(), &info.record), KACERT_Ok);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(KI_CSR_DecodeAttributes(ctx.get(), &attributes.record), KACERT_Ok);
    EXPECT_EQ(get(*ctx, CSR_SUBJECT_COMMONNAME), toHex(text("Leaf")));
    EXPECT_EQ(getPrivate(ctx, 2), "2A 03 = 05 00");
}

ROWS(Csr, DecodeWhole) {
    EXPECT_EQ(decode(*create<CsrDecodeCtx>(), row.octets("request")), row.number("status"));
}

TEST(Csr, LibcryptoReadsWhatIsWrittenAndBack) {
    const Pkey key = keyOf(keyPair().secret);
    const CsrPtr ctx = filled<CsrEncodeCtx>(signBySha1, &keyPair().secret, sizeof keyPair().secret);
    set(*ctx, CSR_SUBJECTPUBLICKEYINFO, publicKeyOf(key));
    setPrivate(ctx, "2A 86 48 86 F7 0D 01 09 07", "61"); // challengePassword
    const auto request = parsed<d2i_X509_REQ, X509_REQ_free>(encode(*ctx));
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(X509_REQ_verify(request.get(), X509_REQ_get0_pubkey(request.get())), 1);
    EXPECT_EQ(X509_REQ_get_attr_count(request.get()), 1);

    // A request of libcrypto's with an extensionRequest: the whole SEQUENCE comes back.
    const Ssl<X509_REQ_free> theirs(X509_REQ_new());
    X509_REQ_set_pubkey(theirs.get(), key.get());
    X509_NAME_add_entry_by_txt(X509_REQ_get_subject_name(theirs.get()), "emailAddress", MBSTRING_ASC,
                               bytesOf("a@b").data(), 3, -1, 0);
    STACK_OF(X509_EXTENSION) *extensions = nullptr;
    const Ssl<X509_EXTENSION_free> constraint(X509V3_EXT_conf_nid(nullptr, nullptr, NID_basic_constraints, "CA:TRUE"));
    X509v3_add_ext(&extensions, constraint.get(), -1);
    X509_REQ_add_extensions(theirs.get(), extensions);
    sk_X509_EXTENSION_pop_free(extensions, X509_EXTENSION_free);
    ASSERT_GT(X509_REQ_sign(theirs.get(), key.get(), EVP_sha256()), 0);
    const CsrPtr decoded = create<CsrDecodeCtx>();
    EXPECT_EQ(decode(*decoded, derOf(i2d_X509_REQ, theirs.get())), KACERT_Ok);
    EXPECT_EQ(get(*decoded, CSR_SUBJECT_EMAIL), toHex(text("a@b")));
    EXPECT_EQ(getPrivate(decoded, 1),
              "2A 86 48 86 F7 0D 01 09 0E = " + toHex(seq({extension("55 1D 13", seq({hex("01 01 FF")}))})));
}

} // namespace
