// Certificates, names and text while allocations and hooks fail.
#include "allocation.h"
#include "samples.h"

#include "karil/cert_ext.h"
#include "karil/text.h"

using namespace karil_test;

namespace {

constexpr int32_t From = 1577836800; // 2020-01-01 UTC
constexpr int32_t To = 1893456000;   // 2030-01-01 UTC

CertPtr createIn(Run &run, int32_t (*create)(CertEncodeCtx **) = KACert_CreateCertEncodeCtx) {
    CertEncodeCtx *ctx = nullptr;
    run.step([&] { return create(&ctx); });
    return CertPtr(ctx);
}

void setIn(Run &run, const CertPtr &ctx, int32_t id, const Octets &value) {
    run.step([&] { return setChar(ctx, id, value); });
}

void setFramesIn(Run &run, const CertPtr &ctx) {
    run.step([&] { return KACert_SetCertAttributeInt(ctx.get(), CERT_VERSION, 2); });
    run.step([&] { return KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDFROM, From); });
    run.step([&] { return KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDTO, To); });
    run.step([&] { return KACert_SetCertSignFunc(ctx.get(), fixedSignature, "secret", 6); });
}

void encodeIn(Run &run, const CertPtr &ctx) {
    Octets der(4096);
    uint32_t length = 0;
    run.step([&] { return KACert_EncodeCert(ctx.get(), nullptr, &length); });
    run.step([&] { return KACert_EncodeCert(ctx.get(), der.data(), &length); });
    der.resize(length);
    run.answer("certificate", der);
}

void buildEverything(Run &run) {
    const CertPtr ctx = createIn(run);
    for (const Setting &setting : everySetting()) setIn(run, ctx, setting.id, setting.value);
    setFramesIn(run, ctx);
    const Octets oid = hex("2A 03 05");
    run.step([&] { return KACert_SetCertAttributePrivate(ctx.get(), oid.data(), 3, 1, oid.data(), 3); });
    run.step([&] { return KACert_SetCertAttributePrivate(ctx.get(), oid.data(), 3, 0, oid.data(), 2); });
    // A second value takes the place of the first.
    setIn(run, ctx, CERT_SERIALNUMBER, hex("07"));
    run.step([&] { return KACert_SetCertSignFunc(ctx.get(), fixedSignature, "another", 7); });
    encodeIn(run, ctx);
}

void buildWithDerNames(Run &run) {
    const CertPtr ctx = createIn(run);
    for (const int32_t id : {CERT_OUTER_SIGNATUREALGORITHM, CERT_INNER_SIGNATUREALGORITHM, CERT_PUBLICKEY_ALGORITHM})
        setIn(run, ctx, id, hex(Sha1WithRsa));
    setIn(run, ctx, CERT_SERIALNUMBER, hex("05"));
    setIn(run, ctx, CERT_SUBJECTPUBLICKEYINFO, hex("30 00"));
    setIn(run, ctx, CERT_ISSUER_DERDN, commonName("Root"));
    setIn(run, ctx, CERT_SUBJECT_DERDN, commonName("Leaf"));
    setFramesIn(run, ctx);
    encodeIn(run, ctx);
}

void buildPrivateFromValue(Run &run) {
    const CertPtr ctx = createIn(run);
    const Octets oid = hex("2A 03 05");
    const Octets value = text("value");
    for (const int32_t type : {4, 19})
        run.step([&] {
            return KACert_SetCertAttributePrivate_ForValue(ctx.get(), oid.data(), 3, 1, value.data(), 5, type);
        });
    Anybuf *extensions = nullptr;
    run.step([&] { return KI_Cert_EncodeExtensions(ctx.get(), &extensions); });
    const Chain owned(extensions);
    run.answer("extensions", extensions);
}

void makeValues(Run &run) {
    const Octets value = text("value");
    for (const auto make : {KACert_EncodeChar, UnsignedChar2OCTET}) {
        Anybuf *made = nullptr;
        run.step([&] { return make(value.data(), 5, &made); });
        const Chain owned(made);
        run.answer(make == KACert_EncodeChar ? "characters" : "octets", made);
    }
}

void decodeIn(Run &run, const Octets &der) {
    const CertPtr ctx = createIn(run, KACert_CreateCertDecodeCtx);
    run.step([&] { return decode(ctx, der); });
    for (const int32_t id : queries())
        for (int count = 0; count < (id == CERTEX_CRLDIST_FULLNAME ? 3 : 1); ++count) {
            Octets octets(4096);
            uint32_t length = 0;
            run.step([&] { return KACert_GetCertAttributeChar(ctx.get(), id, octets.data(), &length); });
            octets.resize(length);
            run.answer(std::to_string(id) + "." + std::to_string(count), octets);
        }
    for (uint32_t index = 1; index <= 4; ++index) {
        Octets octets(4096);
        uint32_t sizes[3] = {};
        uint32_t at = index;
        run.step([&] {
            return KACert_GetCertAttributePrivate(ctx.get(), &at, octets.data(), &sizes[0], &sizes[1],
                                                  octets.data() + 1024, &sizes[2]);
        });
        octets.push_back(static_cast<uint8_t>(at));
        run.answer("private " + std::to_string(index), octets);
    }
}

void decodeFull(Run &run) {
    static const Octets der = fullCertificate();
    decodeIn(run, der);
}

void decodePlain(Run &run) { decodeIn(run, CertParts().whole()); }

// PrintableString, BMPString, UTF8String, IA5String, an attribute of no known kind, and a multi-valued RDN.
Octets mixedName() {
    const auto attribute = [](std::string_view id, uint8_t tag, const Octets &value) {
        return seq({oid(id), tlv(tag, value)});
    };
    return seq({set({attribute("55 04 06", 0x13, text("CN"))}),
                set({attribute("55 04 0A", 0x1E, hex("4E 2D 65 87")), attribute("55 04 0B", 0x13, text("dropped"))}),
                set({attribute("55 04 0B", 0x0C, text("\xE4\xB8\xAD"))}),
                set({attribute("2A 86 48 86 F7 0D 01 09 01", 0x16, text("a@b"))}),
                set({attribute("55 04 05", 0x13, text("7"))})});
}

void nameBothWays(Run &run) {
    Exact source(mixedName(), 16);
    NameRecord head = {};
    run.step([&] {
        KI_FreeName(head.next);
        head = {};
        return KI_DecodeIssuerSubject(&source.record, &head);
    });
    Anybuf line = {};
    run.step([&] { return KI_GetDN(&line, &head); });
    Anybuf *element = nullptr;
    run.step([&] { return KI_EncodeIssuerSuject(&head, &element); });
    const Chain owned(element);
    run.answer("line", line);
    run.answer("element", element);
    KI_ClearAnybuf(&line);
    KI_FreeName(head.next);
}

void generalNamesBothWays(Run &run) {
    const Octets type = text("1.2.3");
    const Octets value = text("\xD6\xD0");
    for (const uint32_t kind : {3u, 4u, 12u, 19u, 22u, 30u})
        for (const auto encode : {KI_EncodeGeneralName, KI_EncodeGeneralNameS}) {
            GeneralNameRecord names = {};
            std::fill(std::begin(names.present), std::end(names.present), uint8_t{1});
            names.otherNameKind = kind;
            Octets typeOctets = type;
            Octets valueOctets = value;
            names.otherNameType = view(typeOctets);
            for (Anybuf *field : {&names.otherNameValue, &names.rfc822Name, &names.dNSName,
                                  &names.uniformResourceIdentifier, &names.iPAddress})
                *field = view(valueOctets);
            Anybuf *element = nullptr;
            run.step([&] { return encode(&names, &element); });
            const Chain owned(element);
            run.answer(std::to_string(kind) + (encode == KI_EncodeGeneralName ? " alone" : " and all"), element);
        }
}

void decodeGeneralNames(Run &run) {
    Exact source(seq({tlv(0x81, text("m")), tlv(0x82, text("d")), tlv(0xA4, mixedName()), tlv(0x86, text("u")),
                      tlv(0x87, text("1234"))}),
                 16);
    GeneralNameRecord names = {};
    uint8_t found = 0;
    run.step([&] { return KI_DecodeGeneralNameS(&source.record, &names, &found); });
    EXPECT_EQ(found == 1, run.isWhole());
    for (Anybuf *field : {&names.rfc822Name, &names.dNSName, &names.uniformResourceIdentifier, &names.iPAddress}) {
        run.answer(std::to_string(field - &names.otherNameType), *field);
        KI_ClearAnybuf(field);
    }
    KI_FreeName(names.directoryName.next);
}

void writeUtf8(Run &run) {
    const Octets chinese = text("\xD6\xD0");
    Anybuf *element = nullptr;
    run.step([&] { return KI_EnCodeUtf8(chinese.data(), 2, &element); });
    const Chain owned(element);
    run.answer("element", element);
}

TEST(FailingAllocations, CertificatesAndNames) {
    const Zone utc("UTC");
    // What decoding and asking may lose without a word: usages, alternative names, and the name as a text.
    const std::vector<std::string> lost = {"8.0",   "32.0",  "106.0", "107.0", "114.0", "115.0",
                                           "129.0", "504.0", "505.0", "509.0", "510.0"};
    const Scenario scenarios[] = {
        {"build with every attribute", buildEverything},
        {"build with names as DER", buildWithDerNames},
        {"private extensions from values", buildPrivateFromValue, {KACERT_MemoryErr, -1}},
        {"values for private extensions", makeValues, {-1}},
        {"decode and ask, every extension", decodeFull, {KACERT_MemoryErr, KACERT_Ok}, lost, false},
        {"decode and ask, no extension", decodePlain, {KACERT_MemoryErr, KACERT_Ok}, {"8.0", "32.0"}, false},
        {"a name both ways", nameBothWays},
        {"general names, encode", generalNamesBothWays},
        {"general names, decode", decodeGeneralNames, {KACERT_MemoryErr}, {}, false},
        {"local text as a UTF8String", writeUtf8},
    };
    for (const Scenario &scenario : scenarios) sweep(scenario, Pool::Library);
}

thread_local int hookCalls = 0;
thread_local int failingHookCall = 0;

int32_t failingHook(const uint8_t *input, uint32_t size, uint8_t *output, uint32_t *outputLength, void *parameter) {
    return ++hookCalls == failingHookCall ? 7 : fixedSignature(input, size, output, outputLength, parameter);
}

TEST(FailingHooks, TheirStatusComesBack) {
    const Zone utc("UTC");
    const Octets want = shortCertificate();
    for (failingHookCall = 1; failingHookCall <= 2; ++failingHookCall) {
        const CertPtr ctx = newCert();
        fillCert(ctx);
        ASSERT_EQ(KACert_SetCertSignFunc(ctx.get(), failingHook, nullptr, 0), KACERT_Ok);
        Octets der(4096, 0x5A);
        uint32_t length = 12345;
        hookCalls = 0;
        EXPECT_EQ(KACert_EncodeCert(ctx.get(), der.data(), &length), 7);
        EXPECT_EQ(hookCalls, failingHookCall);
        EXPECT_EQ(length, 12345u);
        EXPECT_EQ(der, Octets(4096, 0x5A));
        EXPECT_EQ(encoded(ctx), want) << "the next encoding";
    }
}

} // namespace
