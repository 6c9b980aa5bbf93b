#include "cert_support.h"

#include "karil/cert_ext.h"

using namespace karil_test;

namespace {

// The encoded certificate, or no octets.
Octets encode(const CertPtr &ctx, int32_t want = KACERT_Ok) {
    uint32_t length = 0;
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), nullptr, &length), want);
    Octets der(length);
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), der.data(), &length), want);
    return der;
}

void removeNames(const CertPtr &ctx) {
    KI_FreeName(ctx->issuer.next);
    KI_FreeName(ctx->subject.next);
    ctx->issuer.next = ctx->subject.next = nullptr;
}

TEST(CertEncode, MinimalCertificateOctetByOctet) {
    const Zone utc("UTC");
    EXPECT_EQ(toHex(encode(filledCert())), toHex(CertParts().whole()));
}

ROWS(CertEncode, Extensions) {
    const Zone utc("UTC");
    const CertPtr ctx = filledCert();
    EXPECT_EQ(takeAll(ctx, row, "steps"), KACERT_Ok);
    ctx->hasExtensions = 1; // directory names alone do not raise it
    CertParts parts;
    parts.setExtensions({row.octets("want")});
    EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole()));
    EXPECT_GE(row("order"), "");
}

// Set backwards: the order on the wire is not that of the calls.
TEST(CertEncode, ExtensionsHaveAFixedOrder) {
    const Zone utc("UTC");
    const CertPtr ctx = filledCert();
    const Octets id = hex("2A 03");
    const Octets value = hex("05 00");
    ASSERT_EQ(KACert_SetCertAttributePrivate(ctx.get(), id.data(), 2, 1, value.data(), 2), KACERT_Ok);
    std::map<int, Row> ordered;
    for (const Row &row : rowsOf("CertEncode", "Extensions"))
        if (!row("order").empty()) ordered.emplace(row.number("order"), row);
    ASSERT_EQ(ordered.size(), 10u);
    Octets all;
    for (const auto &[place, row] : ordered) all = cat({all, row.octets("want")});
    for (auto at = ordered.rbegin(); at != ordered.rend(); ++at)
        EXPECT_EQ(takeAll(ctx, at->second, "steps"), KACERT_Ok);
    CertParts parts;
    parts.setExtensions({all, extension("2A 03", value, hex("01 01 FF"))});
    EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole()));
}

ROWS(CertEncode, Fields) {
    const Zone utc("UTC");
    const CertPtr ctx = filledCert();
    EXPECT_EQ(takeAll(ctx, row, "steps"), KACERT_Ok);
    CertParts parts;
    parts[row("part")] = row.octets("want");
    EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole()));
}

// Nothing but what must be: algorithms without an OID, times of the other kind; and names as the caller gives them.
TEST(CertEncode, FieldsThatWereNotSet) {
    const Zone utc("UTC");
    const CertPtr ctx = newCert();
    setChar(ctx, CERT_SERIALNUMBER, hex("80"));
    setChar(ctx, CERT_ISSUER_DERDN, hex("30 00"));
    setChar(ctx, CERT_SUBJECT_DERDN, hex("05 00"));
    KACert_SetCertSignFunc(ctx.get(), fixedSignature, nullptr, 0);
    CertParts parts;
    parts.version = hex("A0 03 02 01 00");
    parts.serial = hex("02 02 00 80");
    parts.inner = parts.outer = hex("30 04 06 00 05 00");
    parts.issuer = hex("30 00");
    parts.subject = hex("05 00");
    parts.validity = seq({tlv(0x18, text("700101000000Z")), tlv(0x18, text("700101000000Z"))});
    parts.key = seq({hex("30 04 06 00 05 00"), hex("03 01 00")});
    EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole()));
}

ROWS(CertEncode, Refusals) {
    const CertPtr ctx = filledCert();
    const std::string &steps = row("steps");
    if (steps == "-serial")
        KI_ClearAnybuf(&ctx->serialNumber);
    else if (steps == "-names")
        removeNames(ctx);
    else if (steps == "-hook")
        KACert_SetCertSignFunc(ctx.get(), nullptr, nullptr, 0);
    else
        EXPECT_EQ(takeAll(ctx, row, "steps"), KACERT_Ok);
    const Trace trace;
    encode(ctx, row.number("status"));
    EXPECT_TRUE(trace.has(row("words")));
    EXPECT_EQ(ctx->encoded.data, nullptr);
    uint32_t length = 0;
    EXPECT_EQ(KACert_EncodeCert(nullptr, nullptr, &length), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), nullptr, nullptr), KACERT_InvalidParamErr);
}

// A hook that notes how it is called and fails where it is told to.
struct HookNote {
    int calls = 0;
    int failAt = 0;
    uint32_t signatureLength = 3;
    Octets input[2];
    bool outputWasNull[2] = {};
    bool parameterWasNull[2] = {};
    uint32_t primed = 0;
};
HookNote *note = nullptr;

int32_t notingHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                   void *parameter) {
    const int call = note->calls++;
    if (call < 2) {
        note->input[call].assign(input, input + inputLength);
        note->outputWasNull[call] = output == nullptr;
        note->parameterWasNull[call] = parameter == nullptr;
    }
    if (note->failAt == note->calls) return 7;
    if (output != nullptr) note->primed = *outputLength;
    for (uint32_t i = 0; output != nullptr && i < note->signatureLength && i < 512; ++i)
        output[i] = static_cast<uint8_t>(i);
    *outputLength = note->signatureLength;
    return 0;
}

CertPtr hooked(HookNote &noted) {
    CertPtr ctx = filledCert();
    const uint8_t parameter[] = {1, 2};
    KACert_SetCertSignFunc(ctx.get(), notingHook, parameter, 2);
    note = &noted;
    return ctx;
}

TEST(CertEncode, TheHookIsCalledTwice) {
    const Zone utc("UTC");
    HookNote noted;
    const CertPtr ctx = hooked(noted);
    setChar(ctx, CERT_CA_SIGNATURE, "replaced");
    const Octets der = encode(ctx);
    EXPECT_EQ(noted.calls, 2); // the second Encode call hands out what was kept
    EXPECT_EQ(toHex(noted.input[0]), toHex(CertParts().tbs()));
    EXPECT_EQ(noted.input[0], noted.input[1]);
    EXPECT_TRUE(noted.outputWasNull[0] && noted.parameterWasNull[0]);
    EXPECT_FALSE(noted.outputWasNull[1] || noted.parameterWasNull[1]);
    EXPECT_EQ(noted.primed, 512u);
    EXPECT_EQ(getChar(ctx, CERT_CA_SIGNATURE), "00 01 02");
    // Final: what is set later changes nothing.
    setChar(ctx, CERT_SERIALNUMBER, hex("77"));
    EXPECT_EQ(encode(ctx), der);
    EXPECT_EQ(noted.calls, 2);
}

ROWS(CertEncode, Hook) {
    HookNote noted;
    const CertPtr ctx = hooked(noted);
    noted.failAt = row.number("failAt");
    noted.signatureLength = row.number<uint32_t>("length");
    uint32_t length = 0;
    const Trace trace;
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), nullptr, &length), row.number("status"));
    EXPECT_TRUE(trace.has(row("words")));
    noted.failAt = 0; // the context can still be used
    noted.signatureLength = 512;
    EXPECT_FALSE(encode(ctx).empty());
    EXPECT_EQ(ctx->signature.length, 512u);
}

TEST(CertEncode, SingleEncodersOfNothing) {
    const CertPtr ctx = newCert();
    const std::pair<int32_t (*)(CertEncodeCtx *, Anybuf **), const char *> rows[] = {
        {KI_Cert_EncodeExtensions, "nothing"},
        {KI_Cert_EncodeExtension_AuthorityKeyIdentifyer, "30 0B 06 03 55 1D 23 04 04 30 02 80 00"},
        {KI_Cert_EncodeExtension_CrlDistributePoint, "30 09 06 03 55 1D 1F 04 02 30 00"},
        {KI_Cert_EncodeExtension_AIA, "30 0E 06 08 2B 06 01 05 05 07 01 01 30 02 05 00"},
        {KI_Cert_EncodeExtension_Private, "nothing"}};
    for (const auto &[encodeOne, want] : rows) {
        Anybuf *out = nullptr;
        const int32_t status = encodeOne(ctx.get(), &out);
        EXPECT_EQ(answerOf(status, out), want);
        EXPECT_EQ(encodeOne(nullptr, &out), KACERT_InvalidParamErr) << want;
    }
}

} // namespace
