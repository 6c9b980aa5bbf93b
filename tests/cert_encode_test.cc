#include "cert_support.h"

#include <gtest/gtest.h>

#include <functional>

#include "karil/cert_ext.h"

using namespace karil_test;

namespace {

// The encoded certificate, or no octets.
Octets encode(const CertPtr &ctx, int32_t *statusOut = nullptr) {
    uint32_t length = 0;
    const int32_t status = KACert_EncodeCert(ctx.get(), nullptr, &length);
    if (statusOut != nullptr) *statusOut = status;
    if (status != KACERT_Ok) return {};
    Octets der(length);
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), der.data(), &length), KACERT_Ok);
    return der;
}

int32_t encodeStatus(const CertPtr &ctx) {
    int32_t status = 0;
    encode(ctx, &status);
    return status;
}

CertPtr filled() {
    CertPtr ctx = newCert();
    fillCert(ctx);
    return ctx;
}

const Octets flagTrue = hex("01 01 FF");

TEST(CertEncode, MinimalCertificateOctetByOctet) {
    const Zone utc("UTC");
    const CertPtr ctx = filled();
    EXPECT_EQ(toHex(encode(ctx)), toHex(CertParts().whole()));
}

struct ExtensionRow {
    const char *name;
    std::vector<std::pair<int32_t, const char *>> attributes; // ids with their octets, in order
    Octets want;
};

void fill(const CertPtr &ctx, const ExtensionRow &row) {
    for (const auto &[id, value] : row.attributes) EXPECT_EQ(setChar(ctx, id, hex(value)), KACERT_Ok) << row.name;
    ctx->hasExtensions = 1; // directory names alone do not raise it
}

Octets keyPurpose(char last) { return oid(std::string("2B 06 01 05 05 07 03 0") + last); }

const std::vector<ExtensionRow> &extensionRows() {
    const Octets cps = oid("2B 06 01 05 05 07 02 01");
    const auto point = [](const char *uri) { return seq({tlv(0xA0, tlv(0xA0, hex(uri)))}); };
    static const std::vector<ExtensionRow> rows = {
        {"authority key id", {{65, "01 02"}}, extension("55 1D 23", seq({hex("80 02 01 02")}))},
        {"subject key id, critical", {{85, "01 02"}, {84, "02"}}, extension("55 1D 0E", hex("04 02 01 02"), flagTrue)},
        {"policy with two CPS",
         {{92, "2A 03"}, {93, "61"}, {93, "62"}},
         extension("55 1D 20",
                   seq({seq({oid("2A 03"), seq({seq({cps, hex("16 01 61")}), seq({cps, hex("16 01 62")})})})}))},
        {"issuer alternative name", {{114, "49"}}, extension("55 1D 12", seq({tlv(0xA4, commonName("I"))}))},
        {"subject alternative names",
         {{510, "7F 00 00 01"}, {505, "64"}, {504, "6D"}, {509, "75"}, {106, "53"}, {512, "01"}},
         extension("55 1D 11",
                   seq({hex("81 01 6D 82 01 64"), tlv(0xA4, commonName("S")), hex("86 01 75 87 04 7F 00 00 01")}),
                   flagTrue)},
        {"CA", {{120, "01"}}, extension("55 1D 13", seq({flagTrue}), flagTrue)},
        {"no CA", {{120, "00"}}, extension("55 1D 13", hex("30 00"), flagTrue)},
        {"path length alone, first octet only", {{121, "00 01"}}, extension("55 1D 13", hex("30 03 02 01 00"))},
        {"path length of 200", {{121, "C8"}}, extension("55 1D 13", hex("30 04 02 02 00 C8"))},
        {"CA without critical",
         {{120, "01"}, {121, "03"}, {119, "00"}},
         extension("55 1D 13", seq({flagTrue, hex("02 01 03")}))},
        {"key usage", {{87, "A0"}}, extension("55 1D 0F", hex("03 02 05 A0"), flagTrue)},
        {"key usage of two octets", {{87, "06 80"}, {86, "00"}}, extension("55 1D 0F", hex("03 03 07 06 80"))},
        {"server authentication", {{129, "40 00 00 00"}}, extension("55 1D 25", seq({keyPurpose('1')}))},
        {"all eight usages",
         {{129, "C0 3F 00 00"}},
         extension("55 1D 25", seq({keyPurpose('1'), keyPurpose('2'), keyPurpose('3'), keyPurpose('4'), keyPurpose('5'),
                                    keyPurpose('6'), keyPurpose('7'), keyPurpose('8')}))},
        {"mask of three octets starts at the second",
         {{129, "21 FF FF"}},
         extension("55 1D 25", seq({keyPurpose('3'), keyPurpose('8')}))},
        {"mask of two octets", {{129, "40 00"}}, extension("55 1D 25", hex("30 00"))},
        {"mask of five octets", {{129, "40 00 00 00 00"}}, extension("55 1D 25", hex("30 00"))},
        {"defined usage behind the mask",
         {{155, "31 2E 32 2E 33"}, {129, "40 00 00 00"}},
         extension("55 1D 25", seq({keyPurpose('1'), oid("2A 03")}))},
        {"distribution points",
         {{131, "61"}, {131, "62"}},
         extension("55 1D 1F", seq({point("86 01 61"), point("86 01 62")}))},
        {"access",
         {{137, "63"}, {136, "6F"}},
         extension("2B 06 01 05 05 07 01 01", seq({seq({oid("2B 06 01 05 05 07 30 02"), hex("86 01 63")}),
                                                   seq({oid("2B 06 01 05 05 07 30 01"), hex("86 01 6F")})}))},
    };
    return rows;
}

TEST(CertEncode, EachExtensionOctetByOctet) {
    const Zone utc("UTC");
    for (const ExtensionRow &row : extensionRows()) {
        const CertPtr ctx = filled();
        fill(ctx, row);
        CertParts parts;
        parts.setExtensions({row.want});
        EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole())) << row.name;
    }
}

TEST(CertEncode, ExtensionsHaveAFixedOrder) {
    const Zone utc("UTC");
    const CertPtr ctx = filled();
    // Set backwards: the order on the wire is not that of the calls.
    std::vector<Octets> want;
    const Octets id = hex("2A 03");
    const Octets value = hex("05 00");
    ASSERT_EQ(KACert_SetCertAttributePrivate(ctx.get(), id.data(), 2, 1, value.data(), 2), KACERT_Ok);
    want.push_back(extension("2A 03", value, flagTrue));
    for (const char *name :
         {"access", "distribution points", "server authentication", "key usage", "CA", "subject alternative names",
          "issuer alternative name", "policy with two CPS", "subject key id, critical", "authority key id"})
        for (const ExtensionRow &row : extensionRows())
            if (row.name == std::string_view(name)) {
                fill(ctx, row);
                want.insert(want.begin(), row.want);
            }
    ASSERT_EQ(want.size(), 11u);
    Octets list;
    for (const Octets &one : want) list.insert(list.end(), one.begin(), one.end());
    CertParts parts;
    parts.extensions = tlv(0xA3, tlv(0x30, list));
    EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole()));
}

TEST(CertEncode, ExtensionsFieldWithoutExtensions) {
    const Zone utc("UTC");
    struct Row {
        int32_t id;
        const char *extensions;
    };
    // A directory name alone does not mark the extensions; a critical flag marks them and raises no presence flag.
    for (const Row &row : {Row{CERT_SUBJECT_ALT_EMAIL, ""}, Row{CERT_ISSUER_ALT_EMAIL, ""},
                           Row{CERTEX_BASICCONSTRAINTS_CRITICAL, "A3 02 30 00"}, Row{CERTEX_KEYUSAGE_CRITICAL, ""}}) {
        const CertPtr ctx = filled();
        ASSERT_EQ(setChar(ctx, row.id, hex("01")), KACERT_Ok);
        CertParts parts;
        parts.extensions = hex(row.extensions);
        EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole())) << row.id;
    }
}

TEST(CertEncode, FieldsThatWereNotSet) {
    const Zone utc("UTC");
    CertPtr ctx = newCert();
    setChar(ctx, CERT_SERIALNUMBER, hex("80"));
    setChar(ctx, CERT_ISSUER_COMMONNAME, "Root");
    setChar(ctx, CERT_SUBJECT_COMMONNAME, "Leaf");
    KACert_SetCertSignFunc(ctx.get(), fixedSignature, nullptr, 0);
    CertParts parts;
    parts.version = hex("A0 03 02 01 00");
    parts.serial = hex("02 02 00 80");
    parts.inner = parts.outer = hex("30 04 06 00 05 00");
    parts.validity = seq({tlv(0x18, text("700101000000Z")), tlv(0x18, text("700101000000Z"))});
    parts.key = seq({hex("30 04 06 00 05 00"), hex("03 01 00")});
    EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole()));
}

TEST(CertEncode, NamesInDerForm) {
    const Zone utc("UTC");
    const CertPtr ctx = newCert();
    fillCert(ctx);
    KI_FreeName(ctx->issuer.next);
    KI_FreeName(ctx->subject.next);
    ctx->issuer.next = ctx->subject.next = nullptr;
    ctx->issuerLast = ctx->subjectLast = nullptr;
    // Whatever the caller gives is written as it stands.
    ASSERT_EQ(setChar(ctx, CERT_ISSUER_DERDN, hex("30 00")), KACERT_Ok);
    ASSERT_EQ(setChar(ctx, CERT_SUBJECT_DERDN, hex("05 00")), KACERT_Ok);
    CertParts parts;
    parts.issuer = hex("30 00");
    parts.subject = hex("05 00");
    EXPECT_EQ(toHex(encode(ctx)), toHex(parts.whole()));
}

struct RefusedRow {
    const char *name;
    std::function<void(const CertPtr &)> spoil;
    int32_t status;
    const char *words;
};

TEST(CertEncode, RefusalsWithTheirWords) {
    const RefusedRow rows[] = {
        {"both issuers", [](const CertPtr &c) { setChar(c, 7, hex("30 00")); }, KACERT_InvalidParamErr,
         "------>KI_EncodeIssuerSuject"},
        {"both subjects", [](const CertPtr &c) { setChar(c, 31, hex("30 00")); }, KACERT_InvalidParamErr,
         "------>KI_EncodeIssuerSuject"},
        {"no serial number", [](const CertPtr &c) { KI_ClearAnybuf(&c->serialNumber); }, KACERT_InvalidParamErr,
         "------>KAsn1_WriteIntegerArray"},
        {"policy without CPS", [](const CertPtr &c) { setChar(c, 92, hex("2A 03")); }, KACERT_InvalidParamErr,
         "------>NO CPS INFO"},
        {"negative start", [](const CertPtr &c) { KACert_SetCertAttributeInt(c.get(), 29, -1); }, KACERT_InvalidTimeErr,
         "------>KI_Cert_EncodeValidity"},
        {"negative end", [](const CertPtr &c) { KACert_SetCertAttributeInt(c.get(), 30, INT32_MIN); },
         KACERT_InvalidTimeErr, "------>invalid Time"},
        {"other name without value", [](const CertPtr &c) { setChar(c, 501, "1.2.3"); }, KACERT_InvalidParamErr,
         "------>KI_Cert_EncodeExtension_SubjectAltName"},
        {"no hook", [](const CertPtr &c) { KACert_SetCertSignFunc(c.get(), nullptr, nullptr, 0); },
         KACERT_InvalidParamErr, "------>KACertSignFunc"},
    };
    for (const RefusedRow &row : rows) {
        const CertPtr ctx = filled();
        row.spoil(ctx);
        Trace trace;
        EXPECT_EQ(encodeStatus(ctx), row.status) << row.name;
        EXPECT_TRUE(trace.has(row.words)) << row.name;
        EXPECT_EQ(ctx->encoded.data, nullptr) << row.name;
    }
    const CertPtr empty = newCert();
    setChar(empty, CERT_SERIALNUMBER, hex("01"));
    EXPECT_EQ(encodeStatus(empty), KACERT_InvalidParamErr);
    uint32_t length = 0;
    EXPECT_EQ(KACert_EncodeCert(nullptr, nullptr, &length), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_EncodeCert(empty.get(), nullptr, nullptr), KACERT_InvalidParamErr);
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

int32_t notingHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                   void *parameter) {
    static thread_local HookNote *note = nullptr;
    // The first call of a test hands the note over with null input; the encoder never does that.
    if (input == nullptr) {
        note = static_cast<HookNote *>(parameter);
        return 0;
    }
    const int call = note->calls++;
    if (call < 2) {
        note->input[call].assign(input, input + inputLength);
        note->outputWasNull[call] = output == nullptr;
        note->parameterWasNull[call] = parameter == nullptr;
    }
    if (note->failAt == note->calls) return 7;
    if (output != nullptr) {
        note->primed = *outputLength;
        for (uint32_t i = 0; i < note->signatureLength && i < 512; ++i) output[i] = static_cast<uint8_t>(i);
    }
    *outputLength = note->signatureLength;
    return 0;
}

CertPtr hooked(HookNote &note) {
    CertPtr ctx = filled();
    const uint8_t parameter[] = {1, 2};
    KACert_SetCertSignFunc(ctx.get(), notingHook, parameter, 2);
    notingHook(nullptr, 0, nullptr, nullptr, &note);
    return ctx;
}

TEST(CertEncode, TheHookIsCalledTwice) {
    const Zone utc("UTC");
    HookNote note;
    const CertPtr ctx = hooked(note);
    setChar(ctx, CERT_CA_SIGNATURE, "replaced");
    const Octets der = encode(ctx);
    ASSERT_FALSE(der.empty());
    EXPECT_EQ(note.calls, 2); // the second Encode call hands out what was kept
    EXPECT_EQ(toHex(note.input[0]), toHex(CertParts().tbs()));
    EXPECT_EQ(note.input[0], note.input[1]);
    EXPECT_TRUE(note.outputWasNull[0]);
    EXPECT_TRUE(note.parameterWasNull[0]);
    EXPECT_FALSE(note.outputWasNull[1]);
    EXPECT_FALSE(note.parameterWasNull[1]);
    EXPECT_EQ(note.primed, 512u);
    EXPECT_EQ(getChar(ctx, CERT_CA_SIGNATURE), "00 01 02");
    // Final: what is set later changes nothing.
    setChar(ctx, CERT_SERIALNUMBER, hex("77"));
    EXPECT_EQ(encode(ctx), der);
    EXPECT_EQ(note.calls, 2);
}

TEST(CertEncode, HookFailuresAndSignatureLengths) {
    struct Row {
        int failAt;
        uint32_t signatureLength;
        int32_t status;
        const char *words;
    };
    for (const Row &row : {Row{1, 3, 7, "------>KACertSignFunc"}, Row{2, 3, 7, "------>KACertSignFunc"},
                           Row{0, 0, KACERT_InvalidLengthErr, "------>KACert_SetCertAttributeChar"},
                           Row{0, 513, KACERT_InvalidLengthErr, "------>KACertSignFunc"}}) {
        HookNote note;
        const CertPtr ctx = hooked(note);
        note.failAt = row.failAt;
        note.signatureLength = row.signatureLength;
        Trace trace;
        EXPECT_EQ(encodeStatus(ctx), row.status);
        EXPECT_TRUE(trace.has(row.words)) << row.words;
        // The context can still be used.
        note.failAt = 0;
        note.signatureLength = 512;
        EXPECT_EQ(encodeStatus(ctx), KACERT_Ok);
        EXPECT_EQ(ctx->signature.length, 512u);
    }
}

TEST(CertEncode, SingleEncodersOfNothing) {
    const CertPtr ctx = newCert();
    const std::pair<int32_t (*)(CertEncodeCtx *, Anybuf **), const char *> rows[] = {
        {KI_Cert_EncodeExtensions, ""},
        {KI_Cert_EncodeExtension_AuthorityKeyIdentifyer, "30 0B 06 03 55 1D 23 04 04 30 02 80 00"},
        {KI_Cert_EncodeExtension_CrlDistributePoint, "30 09 06 03 55 1D 1F 04 02 30 00"},
        {KI_Cert_EncodeExtension_AIA, "30 0E 06 08 2B 06 01 05 05 07 01 01 30 02 05 00"},
        {KI_Cert_EncodeExtension_Private, ""},
    };
    for (const auto &[encodeOne, want] : rows) {
        Anybuf *out = nullptr;
        EXPECT_EQ(encodeOne(ctx.get(), &out), KACERT_Ok) << want;
        const Chain owned(out);
        EXPECT_EQ(out != nullptr ? toHex(*out) : "", want);
        EXPECT_EQ(encodeOne(nullptr, &out), KACERT_InvalidParamErr) << want;
    }
}

} // namespace
