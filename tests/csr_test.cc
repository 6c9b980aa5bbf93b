#include "rows.h"
#include "signed_support.h"

#include <openssl/x509v3.h>

using namespace karil_test;

namespace {

const Octets Key = seq({algorithm(RsaEncryption), hex("03 05 00 30 03 02 01")});

CsrPtr bareCsr() {
    CsrPtr ctx = create<CsrEncodeCtx>();
    set(ctx, CSR_OUTER_SIGNATUREALGORITHM, hex(Sha1WithRsa));
    set(ctx, CSR_PUBLICKEY_ALGORITHM, hex(RsaEncryption));
    set(ctx, CSR_SUBJECTPUBLICKEYINFO, hex("30 03 02 01"));
    set(ctx, CSR_SUBJECT_COMMONNAME, "Leaf");
    return ctx;
}

int32_t setPrivate(const CsrPtr &ctx, std::string_view oid, std::string_view value) {
    const Octets id = hex(oid);
    const Octets octets = hex(value);
    return KACert_SetCsrAttributePrivate(ctx.get(), id.data(), static_cast<int32_t>(id.size()), octets.data(),
                                         static_cast<int32_t>(octets.size()));
}

// "count N" past the end, else "OID = value".
std::string getPrivate(const CsrPtr &ctx, uint32_t index) {
    uint32_t at = index;
    uint8_t id[64];
    uint8_t value[256];
    uint32_t idLength = 0;
    uint32_t length = 0;
    EXPECT_EQ(KACert_GetCsrAttributePrivate(ctx.get(), &at, id, &idLength, value, &length), KACERT_Ok);
    if (idLength == 0) return "count " + std::to_string(at);
    return toHex(id, idLength) + " = " + toHex(value, length);
}

Octets whole(const Octets &info) { return seq({info, algorithm(Sha1WithRsa), hex("03 02 00 AA")}); }

TEST(Csr, SetAndGetStatuses) {
    const Trace trace;
    const CsrPtr ctx = bareCsr();
    const Octets value = hex("61");
    const struct {
        int32_t id, length, want;
    } rows[] = {
        {999, 0, KACERT_MemoryErr},
        {CSR_SUBJECT_EMAIL, -1, KACERT_MemoryErr},
        {999, 1, KACERT_AttributeNotSupportErr},
        {CSR_TBS_CSR, 1, KACERT_AttributeNotSupportErr},
        {CSR_SUBJECT_EMAIL, 1, KACERT_Ok},
    };
    for (const auto &row : rows)
        EXPECT_EQ(KACert_SetCsrAttributeChar(ctx.get(), row.id, value.data(), row.length), row.want) << row.id;
    EXPECT_EQ(KACert_SetCsrAttributeInt(ctx.get(), CSR_TBS_CSR, 1), KACERT_AttributeNotSupportErr);
    EXPECT_EQ(setPrivate(ctx, "", "01"), KACERT_InvalidLengthErr);
    EXPECT_EQ(setPrivate(ctx, "2A", ""), KACERT_InvalidLengthErr);
    EXPECT_EQ(getPrivate(ctx, 1), "count 0");
    EXPECT_EQ(get(ctx, CSR_SUBJECT_EMAIL), "61");
    EXPECT_TRUE(trace.has("======>Set CSR_SUBJECT_EMAIL") && trace.has("======>Get CSR_SUBJECT_COMMONNAME"));
    EXPECT_EQ(get(ctx, CSR_SUBJECT_COUNTRYNAME), "untouched");
    EXPECT_EQ(get(ctx, CSR_VERSION), "status 110");
}

TEST(Csr, TheRequestInfo) {
    const Octets subject = commonName("Leaf");
    const CsrPtr plain = bareCsr();
    HookPlan plan = {};
    setPlan(plain, plan);
    encode(plain);
    EXPECT_EQ(plan.input, seq({hex("02 01 00"), subject, Key, hex("A0 00")}));

    const CsrPtr ctx = bareCsr();
    KACert_SetCsrAttributeInt(ctx.get(), CSR_VERSION, 1);
    EXPECT_EQ(setPrivate(ctx, "2A 04", "30 00"), KACERT_Ok);
    EXPECT_EQ(setPrivate(ctx, "2A 03", "05"), KACERT_Ok);
    plan = {};
    setPlan(ctx, plan);
    const Octets der = encode(ctx);
    const Octets first = seq({oid("2A 04"), set({hex("04 02 30 00")})});
    const Octets second = seq({oid("2A 03"), set({hex("04 01 05")})});
    EXPECT_EQ(plan.input, seq({hex("02 01 01"), subject, Key, tlv(0xA0, {first, second})}));
    checkHook(bareCsr, KACERT_MemoryErr);

    // What was set comes back behind tag and length of its OCTET STRING, the algorithm as a whole element.
    const CsrPtr decoded = create<CsrDecodeCtx>();
    ASSERT_EQ(decode(decoded, cat({der, hex("AA")})), KACERT_Ok);
    EXPECT_EQ(getPrivate(decoded, 0), "count 2");
    EXPECT_EQ(getPrivate(decoded, 1), "2A 04 = 04 02 30 00");
    EXPECT_EQ(getPrivate(decoded, 2), "2A 03 = 04 01 05");
    EXPECT_EQ(getPrivate(decoded, 3), "count 2");
    EXPECT_EQ(get(decoded, CSR_TBS_CSR), toHex(plan.input));
    EXPECT_EQ(get(decoded, CSR_PUBLICKEY_ALGORITHM), toHex(oid(RsaEncryption)));
    EXPECT_EQ(get(decoded, CSR_SUBJECTPUBLICKEYINFO), "30 03 02 01");
    EXPECT_EQ(get(decoded, CSR_OUTER_SIGNATUREALGORITHM), Sha1WithRsa);
    EXPECT_EQ(get(decoded, CSR_SELF_SIGNATURE), "AB AB AB");
    int32_t version = 5;
    EXPECT_EQ(KACert_GetCsrAttributeInt(decoded.get(), CSR_VERSION, &version), KACERT_Ok);
    EXPECT_EQ(version, 1);
}

ROWS(Csr, Decode) {
    const CsrPtr ctx = create<CsrDecodeCtx>();
    EXPECT_EQ(decode(ctx, whole(seq({row.octets("info")}))), row.number("status"));
    const std::string first = row.number("status") == KACERT_Ok ? getPrivate(ctx, 1) : "";
    EXPECT_EQ(first.substr(0, first.find_last_not_of(' ') + 1), row("first"));
}

TEST(Csr, TheInfoByItself) {
    const CsrPtr ctx = create<CsrDecodeCtx>();
    const Exact info(seq({hex("02 01 05"), commonName("Leaf"), Key}));
    const Exact attributes(tlv(0xA3, seq({oid("2A 03"), set({hex("05 00")})})));
    EXPECT_EQ(KI_CSR_DecodeTBS(ctx.get(), &info.record), KACERT_Ok);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(KI_CSR_DecodeAttributes(ctx.get(), &attributes.record), KACERT_Ok);
    EXPECT_EQ(get(ctx, CSR_SUBJECT_COMMONNAME), toHex(text("Leaf")));
    EXPECT_EQ(getPrivate(ctx, 2), "2A 03 = 05 00");
    EXPECT_EQ(KI_CSR_DecodeTBS(ctx.get(), nullptr), KACERT_InvalidParamErr);
}

ROWS(Csr, DecodeWhole) { EXPECT_EQ(decode(create<CsrDecodeCtx>(), row.octets("request")), row.number("status")); }

struct FreeReq {
    void operator()(X509_REQ *request) const { X509_REQ_free(request); }
};
using X509ReqPtr = std::unique_ptr<X509_REQ, FreeReq>;

TEST(Csr, LibcryptoReadsWhatIsWrittenAndBack) {
    RsaPublicKeyRecord publicKey;
    RsaPrivateKeyRecord privateKey;
    ASSERT_EQ(KA_PKCS7_GenRSAKeyPair_2048(&publicKey, &privateKey), KACERT_Ok);
    const CsrPtr ctx = bareCsr();
    const Octets modulus(publicKey.modulus, publicKey.modulus + 256);
    set(ctx, CSR_SUBJECTPUBLICKEYINFO, seq({tlv(0x02, cat({hex("00"), modulus})), hex("02 03 01 00 01")}));
    KACert_SetCsrSignFunc(ctx.get(), signBySha1, &privateKey, sizeof privateKey);
    setPrivate(ctx, "2A 86 48 86 F7 0D 01 09 07", "61"); // challengePassword
    const Octets der = encode(ctx);
    const uint8_t *at = der.data();
    const X509ReqPtr request(d2i_X509_REQ(nullptr, &at, static_cast<long>(der.size())));
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(X509_REQ_verify(request.get(), X509_REQ_get0_pubkey(request.get())), 1);
    EXPECT_EQ(X509_REQ_get_attr_count(request.get()), 1);

    // A request of libcrypto's with an extensionRequest: the whole SEQUENCE comes back.
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(EVP_RSA_gen(2048), EVP_PKEY_free);
    const X509ReqPtr theirs(X509_REQ_new());
    X509_REQ_set_pubkey(theirs.get(), key.get());
    X509_NAME_add_entry_by_txt(X509_REQ_get_subject_name(theirs.get()), "emailAddress", MBSTRING_ASC,
                               reinterpret_cast<const uint8_t *>("a@b"), -1, -1, 0);
    STACK_OF(X509_EXTENSION) *extensions = nullptr;
    X509_EXTENSION *constraint = X509V3_EXT_conf_nid(nullptr, nullptr, NID_basic_constraints, "CA:TRUE");
    X509v3_add_ext(&extensions, constraint, -1);
    X509_REQ_add_extensions(theirs.get(), extensions);
    X509_EXTENSION_free(constraint);
    sk_X509_EXTENSION_pop_free(extensions, X509_EXTENSION_free);
    ASSERT_GT(X509_REQ_sign(theirs.get(), key.get(), EVP_sha256()), 0);
    uint8_t *octets = nullptr;
    const int size = i2d_X509_REQ(theirs.get(), &octets);
    const CsrPtr decoded = create<CsrDecodeCtx>();
    EXPECT_EQ(decode(decoded, Octets(octets, octets + size)), KACERT_Ok);
    OPENSSL_free(octets);
    EXPECT_EQ(get(decoded, CSR_SUBJECT_EMAIL), toHex(text("a@b")));
    EXPECT_EQ(getPrivate(decoded, 1),
              "2A 86 48 86 F7 0D 01 09 0E = " + toHex(seq({extension("55 1D 13", seq({hex("01 01 FF")}))})));
}

} // namespace
