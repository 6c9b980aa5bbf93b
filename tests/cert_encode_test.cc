#include "rows.h"

using namespace karil_test;

namespace {

TEST(CertEncode, MinimalCertificateOctetByOctet) {
    const Zone utc("UTC");
    EXPECT_EQ(toHex(encode(*filled<CertEncodeCtx>())), toHex(CertParts().whole()));
}

SWEPT_ROWS(CertEncode, Extensions) {
    const Zone utc("UTC");
    const CertPtr ctx = filled<CertEncodeCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "steps"), KACERT_Ok);
    ctx->hasExtensions = 1; // directory names alone do not raise it
    CertParts parts;
    parts.setExtensions({row.octets("want")});
    EXPECT_EQ(toHex(encode(*ctx)), toHex(parts.whole()));
}

// Set backwards: the order on the wire is not that of the calls.
TEST(CertEncode, ExtensionsHaveAFixedOrder) {
    const Zone utc("UTC");
    const CertPtr ctx = filled<CertEncodeCtx>();
    const Octets id = hex("2A 03"), value = hex("05 00");
    ASSERT_EQ(KACert_SetCertAttributePrivate(ctx.get(), id.data(), 2, 1, value.data(), 2), KACERT_Ok);
    std::map<int, Row> ordered;
    for (const Row &row : rowsOf("CertEncode", "Extensions"))
        if (!row("order").empty())
            ordered.emplace(row.number("order"), row);
    ASSERT_EQ(ordered.size(), 10u);
    Octets all;
    for (const auto &[place, row] : ordered)
        all = cat({all, row.octets("want")});
    for (auto at = ordered.rbegin(); at != ordered.rend(); ++at)
        EXPECT_EQ(takeAll(*ctx, at->second, "steps"), KACERT_Ok);
    CertParts parts;
    parts.setExtensions({all, extension("2A 03", value, hex("01 01 FF"))});
    EXPECT_EQ(toHex(encode(*ctx)), toHex(parts.whole()));
}

ROWS(CertEncode, Fields) {
    const Zone utc("UTC");
    const CertPtr ctx = filled<CertEncodeCtx>();
    EXPECT_EQ(takeAll(*ctx, row, "steps"), KACERT_Ok);
    CertParts parts;
    Octets &part = row("part") == "serial" ? parts.serial : row("part") == "version" ? parts.version : parts.extensions;
    part = row.octets("want");
    EXPECT_EQ(toHex(encode(*ctx)), toHex(parts.whole()));
}

// Nothing but what must be: algorithms without an OID, times of the other kind; and names as the caller hands them
// over.
TEST(CertEncode, FieldsThatWereNotSet) {
    const Zone utc("UTC");
    sweep([] {
        const CertPtr ctx = create<CertEncodeCtx>();
        set(*ctx, CERT_SERIALNUMBER, hex("80"));
        set(*ctx, CERT_ISSUER_DERDN, hex("30 00"));
        set(*ctx, CERT_SUBJECT_DERDN, hex("05 00"));
        KACert_SetCertSignFunc(ctx.get(), fixedSignature, nullptr, 0);
        CertParts parts;
        parts.version = hex("A0 03 02 01 00");
        parts.serial = hex("02 02 00 80");
        parts.inner = parts.outer = hex("30 04 06 00 05 00");
        parts.issuer = hex("30 00");
        parts.subject = hex("05 00");
        parts.validity = seq({tlv(0x18, text("700101000000Z")), tlv(0x18, text("700101000000Z"))});
        parts.key = seq({hex("30 04 06 00 05 00"), bits({})});
        EXPECT_EQ(toHex(encode(*ctx)), toHex(parts.whole()));
    });
}

ROWS(CertEncode, Refusals) {
    const CertPtr ctx = filled<CertEncodeCtx>();
    const std::string &steps = row("steps");
    if (steps == "-serial")
        KI_ClearAnybuf(&ctx->serialNumber);
    for (NameRecord *head : {&ctx->issuer, &ctx->subject})
        if (steps == "-names")
            KI_FreeName(std::exchange(head->next, nullptr));
    if (steps == "-hook")
        KACert_SetCertSignFunc(ctx.get(), nullptr, nullptr, 0);
    EXPECT_EQ(steps[0] == '-' ? KACERT_Ok : takeAll(*ctx, row, "steps"), KACERT_Ok);
    const Trace trace;
    int32_t status = 0;
    encode(*ctx, &status);
    EXPECT_EQ(status, row.number("status"));
    EXPECT_TRUE(trace.has(row("words")));
    EXPECT_EQ(ctx->encoded.data, nullptr);
}

// How a hook is called, and how it is to fail. Its parameter is 01 02.
struct HookNote {
    int failAt = 0;
    uint32_t length = 3;
    std::vector<Octets> inputs = {};
    uint32_t *lengthAt = nullptr; // the same variable in both calls
};
HookNote note;

int32_t notingHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                   void *parameter) {
    note.inputs.emplace_back(input, input + inputLength);
    const size_t calls = note.inputs.size();
    EXPECT_EQ(output == nullptr, calls == 1);
    EXPECT_TRUE(std::exchange(note.lengthAt, outputLength) == outputLength || calls == 1);
    EXPECT_EQ(parameter == nullptr, calls == 1);
    EXPECT_TRUE(parameter == nullptr || memcmp(parameter, "\1\2", 2) == 0);
    EXPECT_TRUE(output == nullptr || *outputLength == 512);
    if (note.failAt == static_cast<int>(calls))
        return 7;
    for (uint32_t i = 0; output != nullptr && i < note.length && i < 512; ++i)
        output[i] = static_cast<uint8_t>(i);
    *outputLength = note.length;
    return 0;
}

TEST(CertEncode, TheHookIsCalledTwice) {
    const Zone utc("UTC");
    note = {};
    const CertPtr ctx = filled<CertEncodeCtx>(notingHook, "\1\2", 2);
    set(*ctx, CERT_CA_SIGNATURE, "replaced");
    const Octets der = encode(*ctx);
    EXPECT_EQ(note.inputs, std::vector<Octets>(2, CertParts().tbs())); // asking again hands out what was kept
    EXPECT_EQ(get(*ctx, CERT_CA_SIGNATURE), "00 01 02");
    // Final: what is set later changes nothing.
    set(*ctx, CERT_SERIALNUMBER, hex("77"));
    EXPECT_EQ(encode(*ctx), der);
    EXPECT_EQ(note.inputs.size(), 2u);
}

ROWS(CertEncode, Hook) {
    const CertPtr ctx = filled<CertEncodeCtx>(notingHook, "\1\2", 2);
    note = {row.number("failAt"), row.number<uint32_t>("length")};
    uint32_t length = 12345;
    Octets area(4096, 0x5A);
    const Trace trace;
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), area.data(), &length), row.number("status"));
    EXPECT_TRUE(trace.has(row("words")));
    EXPECT_TRUE(length == 12345 && area == Octets(4096, 0x5A));
    note = {0, 512}; // the context can still be used
    EXPECT_FALSE(encode(*ctx).empty());
    EXPECT_EQ(ctx->signature.length, 512u);
}

// The exported encoders of fields by themselves, of a context with nothing in it.
TEST(CertEncode, SingleEncodersOfNothing) {
    const std::pair<int32_t (*)(CertEncodeCtx *, Anybuf **), const char *> rows[] = {
        {KI_Cert_EncodeExtensions, "nothing"},
        {KI_Cert_EncodeExtension_AuthorityKeyIdentifyer, "30 0B 06 03 55 1D 23 04 04 30 02 80 00"},
        {KI_Cert_EncodeExtension_CrlDistributePoint, "30 09 06 03 55 1D 1F 04 02 30 00"},
        {KI_Cert_EncodeExtension_AIA, "30 0E 06 08 2B 06 01 05 05 07 01 01 30 02 05 00"},
        {KI_Cert_EncodeExtension_Private, "nothing"},
        {[](CertEncodeCtx *, Anybuf **out) { return WriteNullSequence(out); }, "30 02 05 00"},
    };
    for (const auto &[encodeOne, want] : rows)
        sweep([&encodeOne = encodeOne, want = want] {
            const CertPtr ctx = create<CertEncodeCtx>();
            Anybuf *out = nullptr;
            const int32_t status = TRIED(encodeOne(ctx.get(), &out));
            // What an empty access list holds may be left out.
            const std::string answer = answerOf(status, out);
            EXPECT_TRUE(answer == want || (isHindered() && encodeOne == KI_Cert_EncodeExtension_AIA)) << answer;
        });
}

} // namespace
