#include "cert_support.h"

#include <gtest/gtest.h>

using namespace karil_test;

namespace {

TEST(CertAttributes, CreationAndDestruction) {
    const CertPtr ctx = newCert();
    ASSERT_NE(ctx, nullptr);
    EXPECT_EQ(ctx->outerSignatureAlgorithm.id, 1u);
    EXPECT_EQ(ctx->innerSignatureAlgorithm.id, 1u);
    EXPECT_EQ(ctx->publicKeyAlgorithm.id, 1u);
    EXPECT_EQ(KACert_CreateCertEncodeCtx(nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_DestroyCertEncodeCtx(nullptr), KACERT_Ok);
    EXPECT_EQ(KACert_DestroyCertDecodeCtx(nullptr), KACERT_Ok);
}

TEST(CertAttributes, IdsThatAreNotSet) {
    const CertPtr ctx = newCert();
    for (const int32_t id : {-1, 0,   1,   4,   8,   19,  28,  29,  30,  32,  43,  52,  55,  66,  88,
                             94, 100, 108, 116, 122, 132, 138, 154, 156, 500, 506, 507, 508, 511, 513}) {
        Trace trace;
        EXPECT_EQ(setChar(ctx, id, "x"), KACERT_AttributeNotSupportErr) << id;
        EXPECT_TRUE(trace.has("------>Set KACERT_AttributeNotSupportErr")) << id;
    }
    EXPECT_EQ(KACert_SetCertAttributeInt(ctx.get(), CERT_SERIALNUMBER, 1), KACERT_AttributeNotSupportErr);
}

TEST(CertAttributes, BadArguments) {
    const CertPtr ctx = newCert();
    const uint8_t octet = 1;
    for (const int32_t id : {int32_t{CERT_SERIALNUMBER}, int32_t{CERT_ISSUER_EMAIL}, 99999})
        for (const int32_t length : {0, -1, INT32_MIN})
            EXPECT_EQ(KACert_SetCertAttributeChar(ctx.get(), id, &octet, length), KACERT_InvalidLengthErr) << id;
    EXPECT_EQ(KACert_SetCertAttributeChar(nullptr, CERT_SERIALNUMBER, &octet, 1), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertAttributeChar(ctx.get(), CERT_SERIALNUMBER, nullptr, 1), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertAttributeInt(nullptr, CERT_VERSION, 1), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertSignFunc(nullptr, fixedSignature, nullptr, 0), KACERT_InvalidParamErr);
}

TEST(CertAttributes, NamesAppendTheirAttribute) {
    struct Row {
        const char *name;
        uint32_t kind;
        const char *oid;
        int32_t ids[4]; // issuer, subject, their alternative names; 0: there is none
    };
    const Row rows[] = {
        {"COUNTRYNAME", 25, "55 04 06", {9, 33, 101, 109}},
        {"STATEORPROVINCENAME", 27, "55 04 08", {10, 34, 102, 110}},
        {"LOCALITYNAME", 26, "55 04 07", {11, 35, 103, 111}},
        {"ORGANIZATIONNAME", 29, "55 04 0A", {12, 36, 104, 112}},
        {"ORGANIZATIONALUNITNAME", 30, "55 04 0B", {13, 37, 105, 113}},
        {"COMMONNAME", 22, "55 04 03", {14, 38, 106, 114}},
        {"EMAIL", 13, "2A 86 48 86 F7 0D 01 09 01", {15, 39, 107, 115}},
        {"POSTALADDRESS", 34, "55 04 10", {16, 40, 0, 0}},
        {"POSTALCODE", 35, "55 04 11", {17, 41, 0, 0}},
        {"TELEPHONE", 38, "55 04 14", {18, 42, 0, 0}},
    };
    // The words of the issuer's alternative name are those of the subject's.
    const char *const lists[] = {"CERT_ISSUER_", "CERT_SUBJECT_", "CERT_SUBJECT_ALT_", "CERT_SUBJECT_ALT_"};
    for (const Row &row : rows)
        for (int list = 0; list < 4 && row.ids[list] != 0; ++list) {
            SCOPED_TRACE(row.ids[list]);
            const CertPtr ctx = newCert();
            Trace trace;
            ASSERT_EQ(setChar(ctx, row.ids[list], "first"), KACERT_Ok);
            ASSERT_EQ(setChar(ctx, row.ids[list], "second"), KACERT_Ok);
            EXPECT_TRUE(trace.has(std::string("======>Set ") + lists[list] + row.name));
            const CertExtensions &ext = ctx->extensions;
            const NameRecord *const heads[] = {&ctx->issuer, &ctx->subject, &ext.subjectAltName.names.directoryName,
                                               &ext.issuerAltName.names.directoryName};
            const NameRecord *first = heads[list]->next;
            ASSERT_NE(first, nullptr);
            EXPECT_EQ(first->id, row.kind);
            EXPECT_EQ(toHex(first->oid), row.oid);
            EXPECT_EQ(toHex(first->value), toHex(text("first")));
            EXPECT_EQ(first->value.tag, 19u);
            ASSERT_NE(first->next, nullptr);
            EXPECT_EQ(toHex(first->next->value), toHex(text("second")));
            EXPECT_EQ(ctx->hasExtensions, 0);
            EXPECT_EQ(ext.hasSubjectAltName * 2 + ext.hasIssuerAltName, list == 2 ? 2 : list == 3 ? 1 : 0);
            EXPECT_EQ(ext.subjectAltName.names.present[4] * 2 + ext.issuerAltName.names.present[4], list == 2   ? 2
                                                                                                    : list == 3 ? 1
                                                                                                                : 0);
        }
}

TEST(CertAttributes, ReplacedValuesAnswerTheLast) {
    struct Row {
        int32_t id;
        Anybuf CertEncodeCtx::*field;
        uint32_t tag;
    };
    const Row rows[] = {{3, &CertEncodeCtx::signature, 3},
                        {5, &CertEncodeCtx::serialNumber, 2},
                        {7, &CertEncodeCtx::issuerDer, 0},
                        {31, &CertEncodeCtx::subjectDer, 0},
                        {54, &CertEncodeCtx::publicKey, 48}};
    for (const Row &row : rows) {
        const CertPtr ctx = newCert();
        ASSERT_EQ(setChar(ctx, row.id, hex("01 02 03")), KACERT_Ok) << row.id;
        ASSERT_EQ(setChar(ctx, row.id, hex("80 04")), KACERT_Ok) << row.id;
        EXPECT_EQ(getChar(ctx, row.id), "80 04") << row.id;
        EXPECT_EQ((*ctx.*row.field).tag, row.tag) << row.id;
        EXPECT_EQ(ctx->hasExtensions, 0) << row.id;
    }
    const CertPtr ctx = newCert();
    for (const int32_t id : {2, 6, 53})
        for (const char *value : {"2A 03", "2A 04"}) ASSERT_EQ(setChar(ctx, id, hex(value)), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, 2), "2A 04");
    EXPECT_EQ(getChar(ctx, 6), "2A 04");
    EXPECT_EQ(ctx->publicKeyAlgorithm.oid.tag, 6u);
    ASSERT_EQ(setChar(ctx, 54, "key"), KACERT_Ok);
    EXPECT_EQ(ctx->publicKeyAlgorithm.oid.tag, 16u);
}

TEST(CertAttributes, ANameSlotWithAnEmptyBufferIsRefused) {
    const CertPtr ctx = newCert();
    ASSERT_EQ(KI_SetAttributeCharValue(&ctx->issuerDer, nullptr, 0), KACERT_Ok);
    Trace trace;
    EXPECT_EQ(setChar(ctx, CERT_ISSUER_DERDN, hex("30 00")), KACERT_InvalidParamErr);
    EXPECT_TRUE(trace.has("======>KI_SetAttributeCharValue"));
}

TEST(CertAttributes, OnceOnly) {
    struct Row {
        int32_t id;
        const char *words;
    };
    const Row rows[] = {{65, "------>KACERT_AttributeAlreadySet"},
                        {85, "------>KACERT_AttributeAlreadySet"},
                        {87, "------>KACERT_AttributeAlreadySet"},
                        {129, "------>KACERT_AttributeAlreadySet"},
                        {504, "------>KACERT_AttributeAlreadySet"},
                        {505, "------>CERT_SUBJECT_ALT_DNSNAME KACERT_AttributeAlreadySet"},
                        {509, "------>CERT_SUBJECT_ALT_DNSNAME KACERT_AttributeAlreadySet"},
                        {510, "------>CERT_SUBJECT_ALT_DNSNAME KACERT_AttributeAlreadySet"}};
    for (const Row &row : rows) {
        const CertPtr ctx = newCert();
        ASSERT_EQ(setChar(ctx, row.id, hex("80")), KACERT_Ok) << row.id;
        Trace trace;
        EXPECT_EQ(setChar(ctx, row.id, hex("40")), KACERT_AttributeAlreadySet) << row.id;
        EXPECT_TRUE(trace.has(row.words)) << row.id;
        EXPECT_EQ(getChar(ctx, row.id), "80") << row.id;
        EXPECT_EQ(ctx->hasExtensions, 1) << row.id;
    }
}

TEST(CertAttributes, KeyUsageUnusedBits) {
    struct Row {
        const char *value;
        uint32_t unusedBits;
    };
    for (const Row &row : {Row{"80", 7}, Row{"06", 1}, Row{"A0", 5}, Row{"01", 0}, Row{"00", 0}, Row{"10", 4},
                           Row{"06 80", 7}, Row{"00 01", 7}}) {
        const CertPtr ctx = newCert();
        ASSERT_EQ(setChar(ctx, CERTEX_KEYUSAGE, hex(row.value)), KACERT_Ok) << row.value;
        EXPECT_EQ(ctx->extensions.keyUsage.bits.unusedBits, row.unusedBits) << row.value;
        EXPECT_EQ(ctx->extensions.keyUsage.critical, 1);
    }
    const CertPtr ctx = newCert();
    Trace trace;
    EXPECT_EQ(setChar(ctx, CERTEX_KEYUSAGE, hex("01 02 03")), KACERT_AttributeAlreadySet);
    EXPECT_TRUE(trace.has("======>扩展密钥用法的长度不能大于2"));
    EXPECT_TRUE(trace.has("----->Set CertTex_KeyUsage_SetUnuseBit"));
    EXPECT_EQ(getChar(ctx, CERTEX_KEYUSAGE), "01 02 03");
    EXPECT_EQ(setChar(ctx, CERTEX_KEYUSAGE, hex("80")), KACERT_AttributeAlreadySet);
}

// Which ids mark the extensions, which presence flag they raise, and what becomes of a critical flag set before.
TEST(CertAttributes, FlagsAndMarks) {
    using Ext = CertExtensions;
    struct Row {
        int32_t id;
        const char *value;
        int marks;
        uint8_t Ext::*flag;
        int32_t criticalId; // 0: none
        uint8_t (*critical)(const Ext &);
        int criticalAfter; // where it was 9 before
    };
    const Row rows[] = {
        {64, "07", 0, nullptr, 64, [](const Ext &e) { return e.authorityKeyId.critical; }, 7},
        {65, "07", 1, &Ext::hasAuthorityKeyId, 64, [](const Ext &e) { return e.authorityKeyId.critical; }, 0},
        {84, "07", 0, nullptr, 84, [](const Ext &e) { return e.subjectKeyId.critical; }, 7},
        {85, "07", 1, &Ext::hasSubjectKeyId, 84, [](const Ext &e) { return e.subjectKeyId.critical; }, 0},
        {86, "07", 0, nullptr, 86, [](const Ext &e) { return e.keyUsage.critical; }, 7},
        {87, "07", 1, &Ext::hasKeyUsage, 86, [](const Ext &e) { return e.keyUsage.critical; }, 1},
        {91, "07", 0, nullptr, 91, [](const Ext &e) { return e.certPolicy.critical; }, 7},
        {92, "2A 03", 1, &Ext::hasCertPolicies, 91, [](const Ext &e) { return e.certPolicy.critical; }, 9},
        {119, "07", 1, nullptr, 119, [](const Ext &e) { return e.basicConstraints.critical; }, 7},
        {120, "01", 1, &Ext::hasBasicConstraints, 119, [](const Ext &e) { return e.basicConstraints.critical; }, 1},
        {121, "02", 1, &Ext::hasBasicConstraints, 119, [](const Ext &e) { return e.basicConstraints.critical; }, 9},
        {128, "07", 0, nullptr, 128, [](const Ext &e) { return e.extKeyUsage.critical; }, 7},
        {129, "40", 1, &Ext::hasExtKeyUsage, 128, [](const Ext &e) { return e.extKeyUsage.critical; }, 0},
        {155, "31 2E 32", 1, &Ext::hasExtKeyUsage, 128, [](const Ext &e) { return e.extKeyUsage.critical; }, 9},
        {130, "07", 0, nullptr, 130, [](const Ext &e) { return e.crlDistPoints.critical; }, 7},
        {131, "61", 1, &Ext::hasCrlDistPoints, 130, [](const Ext &e) { return e.crlDistPoints.critical; }, 0},
        {135, "07", 0, nullptr, 135, [](const Ext &e) { return e.authorityInfo.critical; }, 7},
        {136, "61", 1, &Ext::hasAuthorityInfo, 135, [](const Ext &e) { return e.authorityInfo.critical; }, 0},
        {137, "61", 1, &Ext::hasAuthorityInfo, 135, [](const Ext &e) { return e.authorityInfo.critical; }, 0},
        {501, "31", 1, &Ext::hasSubjectAltName, 512, [](const Ext &e) { return e.subjectAltName.critical; }, 9},
        {502, "31", 1, &Ext::hasSubjectAltName, 512, [](const Ext &e) { return e.subjectAltName.critical; }, 9},
        {503, "16", 1, &Ext::hasSubjectAltName, 512, [](const Ext &e) { return e.subjectAltName.critical; }, 9},
        {505, "61", 1, &Ext::hasSubjectAltName, 512, [](const Ext &e) { return e.subjectAltName.critical; }, 9},
        {512, "07", 0, nullptr, 512, [](const Ext &e) { return e.subjectAltName.critical; }, 7},
    };
    for (const Row &row : rows) {
        const CertPtr ctx = newCert();
        ASSERT_EQ(setChar(ctx, row.criticalId, hex("09")), KACERT_Ok) << row.id;
        ctx->hasExtensions = 0;
        ASSERT_EQ(setChar(ctx, row.id, hex(row.value)), KACERT_Ok) << row.id;
        EXPECT_EQ(ctx->hasExtensions, row.marks) << row.id;
        EXPECT_EQ(row.critical(ctx->extensions), row.criticalAfter) << row.id;
        // The eleven presence flags stand first in the block: just the one named is up.
        const auto *flags = reinterpret_cast<const uint8_t *>(&ctx->extensions);
        int up = 0;
        for (int i = 0; i < 11; ++i) up += flags[i];
        EXPECT_EQ(up, row.flag != nullptr ? 1 : 0) << row.id;
        if (row.flag != nullptr) { EXPECT_EQ(ctx->extensions.*row.flag, 1) << row.id; }
    }
}

TEST(CertAttributes, PolicyOrder) {
    const CertPtr ctx = newCert();
    EXPECT_EQ(setChar(ctx, CERTEX_CERTPOLICY_CPS, "lost"), KACERT_Ok);
    EXPECT_EQ(ctx->extensions.certPolicy.policy, nullptr);
    EXPECT_EQ(setChar(ctx, CERTEX_CERTPOLICYID, hex("2A 03")), KACERT_Ok);
    EXPECT_EQ(setChar(ctx, CERTEX_CERTPOLICYID, hex("2A 04")), KACERT_Ok);
    EXPECT_EQ(setChar(ctx, CERTEX_CERTPOLICY_CPS, "one"), KACERT_Ok);
    EXPECT_EQ(setChar(ctx, CERTEX_CERTPOLICY_CPS, "two"), KACERT_Ok);
    const PolicyNode *policy = ctx->extensions.certPolicy.policy;
    ASSERT_NE(policy, nullptr);
    EXPECT_EQ(toHex(policy->oid), "2A 03");
    ASSERT_NE(policy->cps, nullptr);
    EXPECT_EQ(toHex(policy->cps->uri), toHex(text("one")));
    EXPECT_EQ(policy->cps->isCps, 1);
    ASSERT_NE(policy->cps->next, nullptr);
    EXPECT_EQ(toHex(policy->cps->next->uri), toHex(text("two")));
}

TEST(CertAttributes, DefinedUsageIsChecked) {
    const CertPtr ctx = newCert();
    Trace trace;
    EXPECT_EQ(setChar(ctx, CERTEX_EXTKEY_USAGE_OID_DEFINE, "1.x"), KACERT_InvalidItemErr);
    EXPECT_TRUE(trace.has("------>CERTEX_EXTKEY_USAGE_OID_DEFINE: input oid is invalid."));
    EXPECT_EQ(ctx->extensions.hasExtKeyUsage, 0);
    EXPECT_EQ(setChar(ctx, CERTEX_EXTKEY_USAGE_OID_DEFINE, "1.2.3"), KACERT_Ok);
    EXPECT_EQ(setChar(ctx, CERTEX_EXTKEY_USAGE, hex("40 00 00 00")), KACERT_Ok);
}

TEST(CertAttributes, OtherNameKindIsResetByItsValues) {
    const CertPtr ctx = newCert();
    const GeneralNameRecord &names = ctx->extensions.subjectAltName.names;
    ASSERT_EQ(setChar(ctx, CERT_SUBJECT_ALT_OTHERNAME_TYPE, hex("16")), KACERT_Ok);
    EXPECT_EQ(names.otherNameKind, 22u);
    for (const int32_t id : {501, 502}) {
        ASSERT_EQ(setChar(ctx, 503, hex("16")), KACERT_Ok);
        ASSERT_EQ(setChar(ctx, id, "1.2.3"), KACERT_Ok);
        EXPECT_EQ(names.otherNameKind, 12u) << id;
        ASSERT_EQ(setChar(ctx, id, "1.2.4"), KACERT_Ok);
    }
    EXPECT_EQ(toHex(names.otherNameType), toHex(text("1.2.4")));
    EXPECT_EQ(names.present[0], 1);
}

TEST(CertAttributes, PrivateExtensions) {
    const CertPtr ctx = newCert();
    const Octets id = hex("2A 03");
    const Octets value = hex("04 01 07");
    const auto add = [&](int32_t idLength, int32_t valueLength) {
        return KACert_SetCertAttributePrivate(ctx.get(), id.data(), idLength, 5, value.data(), valueLength);
    };
    EXPECT_EQ(add(0, 3), KACERT_InvalidLengthErr);
    EXPECT_EQ(add(2, 0), KACERT_InvalidLengthErr);
    EXPECT_EQ(add(-1, 3), KACERT_InvalidLengthErr);
    EXPECT_EQ(ctx->hasExtensions, 0);
    EXPECT_EQ(KACert_SetCertAttributePrivate(nullptr, id.data(), 2, 0, value.data(), 3), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertAttributePrivate(ctx.get(), nullptr, 2, 0, value.data(), 3), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertAttributePrivate(ctx.get(), id.data(), 2, 0, nullptr, 3), KACERT_InvalidParamErr);
    ASSERT_EQ(add(2, 3), KACERT_Ok);
    ASSERT_EQ(add(1, 2), KACERT_Ok);
    const PrivateExtensionNode *node = ctx->extensions.privateExtensions;
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->id, 52u);
    EXPECT_EQ(node->critical, 5);
    EXPECT_EQ(toHex(node->oid), "2A 03");
    EXPECT_EQ(toHex(node->value), "04 01 07");
    ASSERT_NE(node->next, nullptr);
    EXPECT_EQ(toHex(node->next->value), "04 01");
    EXPECT_EQ(ctx->extensions.hasPrivate, 1);
    EXPECT_EQ(ctx->hasExtensions, 1);
}

TEST(CertAttributes, PrivateExtensionsFromPlainValues) {
    const Octets id = hex("2A 03");
    struct Row {
        int32_t type;
        const char *want;
    };
    for (const Row &row :
         {Row{19, "13 02 41 42"}, Row{4, "04 02 41 42"}, Row{12, "04 02 41 42"}, Row{-3, "04 02 41 42"}}) {
        const CertPtr ctx = newCert();
        const Octets value = text("AB");
        ASSERT_EQ(KACert_SetCertAttributePrivate_ForValue(ctx.get(), id.data(), 2, 0, value.data(), 2, row.type), 0);
        EXPECT_EQ(toHex(ctx->extensions.privateExtensions->value), row.want);
        Trace trace;
        EXPECT_EQ(KACert_SetCertAttributePrivate_ForValue(ctx.get(), id.data(), 2, 0, nullptr, 2, row.type),
                  KACERT_InvalidParamErr);
        EXPECT_EQ(KACert_SetCertAttributePrivate_ForValue(ctx.get(), id.data(), 2, 0, value.data(), 0, row.type),
                  KACERT_InvalidParamErr);
        EXPECT_TRUE(trace.has("------>certAttributiValue或者certAttributeValueLen Err"));
        EXPECT_EQ(KACert_SetCertAttributePrivate_ForValue(ctx.get(), id.data(), 0, 0, value.data(), 2, row.type),
                  KACERT_InvalidLengthErr);
    }
}

TEST(CertAttributes, PlainElements) {
    struct Row {
        int32_t (*write)(const uint8_t *, int32_t, Anybuf **);
        bool hasValue;
        int32_t length;
        int32_t status;
        const char *want;
    };
    const Row rows[] = {{KACert_EncodeChar, true, 2, 0, "13 02 41 42"},
                        {KACert_EncodeChar, false, 0, 0, "13 00"},
                        {KACert_EncodeChar, false, 1, -1, ""},
                        {KACert_EncodeChar, true, 0, -1, ""},
                        {KACert_EncodeChar, true, -1, -1, ""},
                        {UnsignedChar2OCTET, true, 2, 0, "04 02 41 42"},
                        {UnsignedChar2OCTET, false, 0, KACERT_InvalidParamErr, ""},
                        {UnsignedChar2OCTET, true, 0, KACERT_InvalidParamErr, ""}};
    const Octets value = text("AB");
    for (const Row &row : rows) {
        Anybuf *out = nullptr;
        EXPECT_EQ(row.write(row.hasValue ? value.data() : nullptr, row.length, &out), row.status);
        const Chain owned(out);
        EXPECT_EQ(out != nullptr ? toHex(*out) : "", row.want);
    }
    EXPECT_EQ(KACert_EncodeChar(value.data(), 2, nullptr), -1);
    EXPECT_EQ(UnsignedChar2OCTET(value.data(), 2, nullptr), -1);
}

TEST(CertAttributes, TheHookParameterIsCopied) {
    const CertPtr ctx = newCert();
    Octets parameter = hex("01 02 03");
    ASSERT_EQ(KACert_SetCertSignFunc(ctx.get(), fixedSignature, parameter.data(), 3), KACERT_Ok);
    parameter[0] = 9;
    EXPECT_EQ(toHex(ctx->signKey), "01 02 03");
    ASSERT_EQ(KACert_SetCertSignFunc(ctx.get(), nullptr, nullptr, 3), KACERT_Ok);
    EXPECT_EQ(ctx->signFunc, nullptr);
    ASSERT_EQ(KACert_SetCertSignFunc(ctx.get(), fixedSignature, parameter.data(), 2), KACERT_Ok);
    EXPECT_EQ(toHex(ctx->signKey), "09 02");
}

} // namespace
