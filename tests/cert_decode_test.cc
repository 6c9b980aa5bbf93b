#include "cert_support.h"

#include <gtest/gtest.h>

#include <functional>

#include "karil/cert_ext.h"

using namespace karil_test;

namespace {

const Octets flagTrue = hex("01 01 FF");

// Gives the octets in a heap block of just their size.
int32_t decodeExact(const CertPtr &ctx, const Octets &der, uint32_t length) {
    const Exact exact(der);
    return KACert_DecodeCert(ctx.get(), exact.record.data, length);
}

int32_t decodeExact(const CertPtr &ctx, const Octets &der) {
    return decodeExact(ctx, der, static_cast<uint32_t>(der.size()));
}

TEST(CertDecode, TakesEachField) {
    const Zone utc("UTC");
    const CertParts parts;
    const CertPtr ctx = newCert();
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(toHex(ctx->encoded), toHex(parts.whole()));
    EXPECT_EQ(toHex(ctx->tbs), toHex(parts.tbs()));
    EXPECT_EQ(ctx->tbs.next, nullptr);
    EXPECT_EQ(ctx->hasVersion, 1);
    EXPECT_EQ(ctx->version, 2);
    EXPECT_EQ(toHex(ctx->serialNumber), "05");
    EXPECT_EQ(ctx->serialNumber.tag, 2u);
    EXPECT_EQ(toHex(ctx->innerSignatureAlgorithm.oid), Sha1WithRsa);
    EXPECT_EQ(toHex(ctx->outerSignatureAlgorithm.oid), Sha1WithRsa);
    EXPECT_EQ(toHex(ctx->issuerDer), toHex(parts.issuer));
    EXPECT_EQ(toHex(ctx->subjectDer), toHex(parts.subject));
    EXPECT_EQ(toHex(ctx->issuer.next->value), toHex(text("Root")));
    EXPECT_EQ(toHex(ctx->subject.next->value), toHex(text("Leaf")));
    EXPECT_EQ(ctx->notBefore.isUtc, 1u);
    EXPECT_EQ(ctx->notBefore.utcValue, 1577836800);
    EXPECT_EQ(ctx->notAfter.utcValue, 1893456000);
    EXPECT_EQ(toHex(ctx->publicKeyAlgorithm.oid), toHex(oid(RsaEncryption)));
    EXPECT_EQ(toHex(ctx->publicKey), "30 03 02 01");
    EXPECT_EQ(toHex(ctx->signature), "AA BB CC");
    EXPECT_EQ(ctx->hasExtensions, 0);
    // A decoded context hands out what it decoded.
    uint32_t length = 0;
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), nullptr, &length), KACERT_Ok);
    EXPECT_EQ(length, parts.whole().size());
}

TEST(CertDecode, LengthArgument) {
    const Octets der = CertParts().whole();
    const auto size = static_cast<uint32_t>(der.size());
    Octets longer = der;
    longer.insert(longer.end(), {0xDE, 0xAD});
    struct Row {
        const char *name;
        const Octets &octets;
        uint32_t length;
        int32_t status;
    };
    for (const Row &row :
         {Row{"exact", der, size, KACERT_Ok}, Row{"trusted header", der, 0, KACERT_Ok},
          Row{"octets behind", longer, size + 2, KACERT_Ok}, Row{"one short", der, size - 1, KACERT_LengthNotEqualErr},
          Row{"one octet", der, 1, KACERT_LengthNotEqualErr},
          Row{"header cut off", der, 3, KACERT_LengthNotEqualErr}}) {
        const CertPtr ctx = newCert();
        EXPECT_EQ(decodeExact(ctx, row.octets, row.length), row.status) << row.name;
        EXPECT_EQ(ctx->encoded.length, row.status == KACERT_Ok ? size : 0u) << row.name;
    }
    const CertPtr ctx = newCert();
    EXPECT_EQ(KACert_DecodeCert(nullptr, der.data(), size), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_DecodeCert(ctx.get(), nullptr, size), KACERT_InvalidParamErr);
}

struct StatusRow {
    const char *name;
    std::function<void(CertParts &)> change;
    int32_t status;
};

void expectStatuses(const std::vector<StatusRow> &rows) {
    for (const StatusRow &row : rows) {
        CertParts parts;
        row.change(parts);
        const CertPtr ctx = newCert();
        EXPECT_EQ(decodeExact(ctx, parts.whole()), row.status) << row.name;
    }
}

TEST(CertDecode, FieldsThatAreOddOrMissing) {
    const Zone utc("UTC");
    const auto utcTime = [](const char *characters) { return tlv(0x17, text(characters)); };
    const Octets good = utcTime("200101000000Z");
    expectStatuses({
        {"no version", [](CertParts &p) { p.version = {}; }, KACERT_Ok},
        {"empty serial number", [](CertParts &p) { p.serial = hex("02 00"); }, KACERT_Ok},
        {"serial number of zero", [](CertParts &p) { p.serial = hex("02 01 00"); }, KACERT_Ok},
        {"inner algorithm of another tag", [](CertParts &p) { p.inner = hex("05 00"); }, KACERT_InvalidTagErr},
        {"empty inner algorithm", [](CertParts &p) { p.inner = hex("30 00"); }, KACERT_InvalidParamErr},
        {"empty names", [](CertParts &p) { p.issuer = p.subject = hex("30 00"); }, KACERT_Ok},
        {"issuer of another tag", [](CertParts &p) { p.issuer = hex("31 00"); }, KACERT_InvalidTagErr},
        {"RDN cut off", [](CertParts &p) { p.subject = hex("30 02 31 05"); }, KACERT_InvalidLengthErr},
        {"two GeneralizedTimes of the short form",
         [](CertParts &p) {
             p.validity = seq({tlv(0x18, text("200101000000Z")), tlv(0x18, text("300101000000Z"))});
         },
         KACERT_Ok},
        {"GeneralizedTime with a century",
         [&](CertParts &p) {
             p.validity = seq({tlv(0x18, text("20200101000000Z")), good});
         },
         KACERT_InvalidTagErr},
        {"one time", [&](CertParts &p) { p.validity = seq({good}); }, KACERT_InvalidParamErr},
        {"three times",
         [&](CertParts &p) {
             p.validity = seq({good, good, hex("05 00")});
         },
         KACERT_Ok},
        {"time without seconds",
         [&](CertParts &p) {
             p.validity = seq({utcTime("2001010000Z"), good});
         },
         KACERT_InvalidTimeEndErr},
        {"time with an offset",
         [&](CertParts &p) {
             p.validity = seq({utcTime("200101000000+0100"), good});
         },
         KACERT_InvalidTimeEndErr},
        {"time past 2038",
         [&](CertParts &p) {
             p.validity = seq({good, utcTime("380119031408Z")});
         },
         KACERT_MemoryErr},
        {"last second",
         [&](CertParts &p) {
             p.validity = seq({good, utcTime("380119031407Z")});
         },
         KACERT_Ok},
        {"key without bits", [](CertParts &p) { p.key = seq({algorithm(RsaEncryption)}); }, KACERT_InvalidParamErr},
        {"empty key", [](CertParts &p) { p.key = hex("30 00"); }, KACERT_InvalidParamErr},
        {"BIT STRING without its octet",
         [](CertParts &p) {
             p.key = seq({algorithm(RsaEncryption), hex("03 00")});
         },
         KACERT_InvalidLengthErr},
        {"unique identifier in the place of extensions", [](CertParts &p) { p.extensions = hex("81 02 00 AA"); },
         KACERT_InvalidTagErr},
        {"empty extensions field", [](CertParts &p) { p.extensions = hex("A3 00"); }, KACERT_Ok},
        {"no extension", [](CertParts &p) { p.setExtensions({}); }, KACERT_Ok},
        {"something behind the extensions",
         [](CertParts &p) {
             p.extensions = cat({tlv(0xA3, hex("30 00")), hex("05 00")});
         },
         KACERT_Ok},
        {"no signature", [](CertParts &p) { p.signature = {}; }, KACERT_Ok},
        {"nothing behind the to-be-signed part", [](CertParts &p) { p.signature = p.outer = {}; }, KACERT_Ok},
        {"outer algorithm of another tag", [](CertParts &p) { p.outer = hex("05 00"); }, KACERT_InvalidTagErr},
        {"a fourth element",
         [](CertParts &p) {
             p.signature = cat({p.signature, hex("05 00")});
         },
         KACERT_Ok},
        {"inner element longer than its parent", [](CertParts &p) { p.signature = hex("03 7F 00"); },
         KACERT_InvalidLengthErr},
        {"length of five octets", [](CertParts &p) { p.signature = hex("03 85 00 00 00 00 01 00"); },
         KACERT_InvalidLengthErr},
    });
}

TEST(CertDecode, AToBeSignedPartMayNotStopEarly) {
    const Zone utc("UTC");
    const CertParts parts;
    Octets fields;
    for (const Octets &field :
         {parts.version, parts.serial, parts.inner, parts.issuer, parts.validity, parts.subject}) {
        fields.insert(fields.end(), field.begin(), field.end());
        const CertPtr ctx = newCert();
        Trace trace;
        EXPECT_EQ(decodeExact(ctx, seq({tlv(0x30, fields)})), KACERT_CertNotEndErr) << toHex(fields);
        EXPECT_TRUE(trace.has("------>KACERT_CertNotEndErr"));
        EXPECT_TRUE(trace.has("------>KI_Cert_DecodeTBS"));
    }
    for (const Octets &der : {hex("30 00"), hex("30 02 30 00")})
        EXPECT_EQ(decodeExact(newCert(), der), KACERT_Ok) << toHex(der);
}

TEST(CertDecode, FirstVersion) {
    CertParts parts;
    parts.version = {};
    const CertPtr ctx = newCert();
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    int32_t version = 9;
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_VERSION, &version), KACERT_Ok);
    EXPECT_EQ(version, 0);
    EXPECT_EQ(ctx->hasVersion, 0);
    EXPECT_EQ(getChar(ctx, CERT_SERIALNUMBER), "05");
}

TEST(CertDecode, TimesByKind) {
    const Zone utc("UTC");
    CertParts parts;
    parts.validity = seq({tlv(0x18, text("200101000000Z")), tlv(0x17, text("300101000000Z"))});
    const CertPtr ctx = newCert();
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(ctx->notBefore.isUtc, 0u);
    EXPECT_EQ(ctx->notBefore.generalizedValue, 1577836800);
    int32_t time = 9;
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_VALIDFROM, &time), KACERT_Ok);
    EXPECT_EQ(time, 0);
    EXPECT_EQ(KACert_GetCertAttributeInt(ctx.get(), CERT_VALIDTO, &time), KACERT_Ok);
    EXPECT_EQ(time, 1893456000);
}

// What decoding one extension leaves in the block.
struct ExtensionRow {
    const char *name;
    Octets extension;
    int32_t status;
    std::function<std::string(const CertExtensions &)> answer; // of what was filled
    const char *want;
};

TEST(CertDecode, ExtensionsOneByOne) {
    using E = CertExtensions;
    const auto basic = [](const E &e) {
        return std::to_string(e.hasBasicConstraints) + " " + std::to_string(e.basicConstraints.critical) + " " +
               std::to_string(e.basicConstraints.isCa) + " " + std::to_string(e.basicConstraints.hasPathLen) + " " +
               toHex(e.basicConstraints.pathLen);
    };
    const auto authority = [](const E &e) {
        return std::to_string(e.hasAuthorityKeyId) + " " + std::to_string(e.authorityKeyId.hasKeyId) + " " +
               toHex(e.authorityKeyId.keyId);
    };
    const auto subjectKey = [](const E &e) {
        return std::to_string(e.hasSubjectKeyId) + " " + std::to_string(e.subjectKeyId.critical) + " " +
               toHex(e.subjectKeyId.keyId);
    };
    const auto usage = [](const E &e) {
        return std::to_string(e.hasKeyUsage) + " " + std::to_string(e.keyUsage.bits.unusedBits) + " " +
               toHex(e.keyUsage.bits);
    };
    const auto extUsage = [](const E &e) { return std::to_string(e.hasExtKeyUsage) + " " + toHex(e.extKeyUsage.mask); };
    const auto points = [](const E &e) {
        std::string all = std::to_string(e.hasCrlDistPoints);
        for (const DistributionPointNode *node = e.crlDistPoints.first; node != nullptr; node = node->next)
            all += " | " + std::to_string(node->hasDistributionPoint) + std::to_string(node->hasFullName) +
                   std::to_string(node->fullName.present[6]) + " " + toHex(node->fullName.uniformResourceIdentifier);
        return all;
    };
    const auto alt = [](const E &e) {
        return std::to_string(e.hasSubjectAltName) + " " + std::to_string(e.subjectAltName.critical) + " " +
               toHex(e.subjectAltName.names.dNSName);
    };
    const auto flags = [](const E &e) {
        return std::to_string(e.hasBasicConstraints + e.hasKeyUsage + e.hasSubjectKeyId + e.hasPrivate);
    };
    const auto uri = [](const Octets &names) { return seq({tlv(0xA0, tlv(0xA0, names))}); };
    const ExtensionRow rows[] = {
        {"CA with path length", extension("55 1D 13", seq({flagTrue, hex("02 01 03")}), flagTrue), KACERT_Ok, basic,
         "1 255 255 1 03"},
        {"no CA", extension("55 1D 13", hex("30 00")), KACERT_Ok, basic, "1 0 0 0 "},
        {"a lone path length is read as cA", extension("55 1D 13", seq({hex("02 01 03")})), KACERT_Ok, basic,
         "1 0 3 0 "},
        {"the critical octet is kept as it stands", extension("55 1D 13", hex("30 00"), hex("01 01 07")), KACERT_Ok,
         basic, "1 7 0 0 "},
        {"sign octet of the path length", extension("55 1D 13", seq({flagTrue, hex("02 02 00 80")})), KACERT_Ok, basic,
         "1 0 255 1 80"},
        {"constraints without octets", extension("55 1D 13", {}), KACERT_CertNotEndErr, basic, "1 0 0 0 "},
        {"empty BOOLEAN", extension("55 1D 13", seq({hex("01 00")})), KACERT_InvalidLengthErr, basic, "1 0 0 0 "},
        {"nothing behind the OID", seq({oid("55 1D 13")}), KACERT_CertNotEndErr, flags, "0"},
        {"nothing behind the flag", seq({oid("55 1D 13"), flagTrue}), KACERT_CertNotEndErr, basic, "1 255 0 0 "},
        {"key id alone", extension("55 1D 23", seq({hex("80 02 01 02")})), KACERT_Ok, authority, "1 1 01 02"},
        {"issuer and serial are dropped",
         extension("55 1D 23", seq({tlv(0xA1, tlv(0xA4, commonName("I"))), hex("82 01 05"), hex("80 01 07")})),
         KACERT_Ok, authority, "1 1 07"},
        {"a constructed key id gives its first element", extension("55 1D 23", seq({tlv(0xA0, hex("04 01 09"))})),
         KACERT_Ok, authority, "1 1 04 01 09"},
        {"a constructed key id without one", extension("55 1D 23", seq({hex("A0 00")})), KACERT_InvalidParamErr,
         authority, "1 0 "},
        {"the last key id stays", extension("55 1D 23", seq({hex("80 01 07"), hex("80 01 08")})), KACERT_Ok, authority,
         "1 1 08"},
        {"no part", extension("55 1D 23", hex("30 00")), KACERT_Ok, authority, "1 0 "},
        {"authority key id without octets", extension("55 1D 23", {}), KACERT_CertNotEndErr, authority, "1 0 "},
        {"subject key id", extension("55 1D 0E", hex("04 02 01 02"), flagTrue), KACERT_Ok, subjectKey, "1 255 01 02"},
        {"subject key id with nothing behind the flag", seq({oid("55 1D 0E"), flagTrue}), KACERT_InvalidParamErr,
         subjectKey, "1 255 "},
        {"subject key id of a wrong size", extension("55 1D 0E", hex("04 03 01 02")), KACERT_LengthNotEqualErr,
         subjectKey, "1 0 "},
        {"key usage keeps its unused-bits octet", extension("55 1D 0F", hex("03 02 05 A0")), KACERT_Ok, usage,
         "1 0 05 A0"},
        {"key usage without bits", extension("55 1D 0F", hex("03 01 00")), KACERT_Ok, usage, "1 0 00"},
        {"usages of the mask, others dropped",
         extension("55 1D 25", seq({oid("2B 06 01 05 05 07 03 01"), oid("2A 03"), oid("2B 06 01 05 05 07 03 08"),
                                    oid("2B 06 01 05 05 07 03 09"), oid("2B 06 01 05 05 07 03 00")})),
         KACERT_Ok, extUsage, "1 40 20 00 00"},
        {"no usage", extension("55 1D 25", hex("30 00")), KACERT_Ok, extUsage, "1 00 00 00 00"},
        {"distribution points as elements",
         extension("55 1D 1F", seq({uri(hex("86 01 61")), uri(hex("86 01 62 86 01 63"))})), KACERT_Ok, points,
         "1 | 111 86 01 61 | 111 86 01 62"},
        {"another kind of name", extension("55 1D 1F", seq({uri(hex("82 01 64"))})), KACERT_Ok, points,
         "1 | 111 82 01 64"},
        {"reasons and CRL issuer are dropped", extension("55 1D 1F", seq({seq({hex("81 02 00 80"), hex("A2 00")})})),
         KACERT_Ok, points, "1 | 100 "},
        {"a full name without a name", extension("55 1D 1F", seq({uri({})})), KACERT_InvalidParamErr, points, "1"},
        {"alternative name", extension("55 1D 11", seq({hex("82 01 64")})), KACERT_Ok, alt, "1 0 64"},
        {"whatever precedes the value is the flag", seq({oid("55 1D 11"), hex("04 01 05"), tlv(0x04, hex("30 00"))}),
         KACERT_Ok, alt, "0 5 "},
        {"alternative names that cannot be read", extension("55 1D 11", hex("31 00")), KACERT_Ok, alt, "1 0 "},
        {"no alternative name", extension("55 1D 11", hex("30 00")), KACERT_Ok, alt, "0 0 "},
    };
    for (const ExtensionRow &row : rows) {
        CertParts parts;
        parts.setExtensions({row.extension});
        const CertPtr ctx = newCert();
        EXPECT_EQ(decodeExact(ctx, parts.whole()), row.status) << row.name;
        EXPECT_EQ(row.answer(ctx->extensions), row.want) << row.name;
    }
}

TEST(CertDecode, DuplicatesAndPrivateExtensions) {
    CertParts parts;
    parts.setExtensions({extension("55 1D 13", hex("30 00")), extension("55 1D 13", seq({flagTrue})),
                         extension("55 1D 20", hex("30 00")), extension("2A 03", hex("AA BB"), flagTrue),
                         extension("55 1D 13 01", hex("CC"))});
    const CertPtr ctx = newCert();
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(ctx->extensions.basicConstraints.isCa, 0);
    std::string all;
    for (const PrivateExtensionNode *node = ctx->extensions.privateExtensions; node != nullptr; node = node->next)
        all += toHex(node->oid) + " " + std::to_string(node->critical) + " " + toHex(node->value) + " " +
               std::to_string(node->id) + "; ";
    EXPECT_EQ(all, "55 1D 20 0 30 00 0; 2A 03 255 AA BB 0; 55 1D 13 01 0 CC 0; ");
    EXPECT_EQ(ctx->extensions.hasPrivate, 1);
}

TEST(CertDecode, SingleReadersOnAnotherExtension) {
    Octets other = extension("2A 03", hex("30 00"));
    const Anybuf source = view(other, 16);
    struct Row {
        int32_t (*decode)(const Anybuf *, CertExtensions *);
        int32_t status;
    };
    const Row rows[] = {{KI_Cert_DecodeExtension_BasicConstraint, KACERT_InvalidParamErr},
                        {KI_Cert_DecodeExtension_AuthorityKeyIdentifyer, KACERT_Ok},
                        {KI_Cert_DecodeExtension_SubjectKeyIdentifier, KACERT_Ok},
                        {KI_Cert_DecodeExtension_KeyUsage, KACERT_Ok},
                        {KI_Cert_DecodeExtension_ExtKeyUsage, KACERT_Ok},
                        {KI_Cert_DecodeExtension_CrlDistributionPoint, KACERT_Ok},
                        {KI_Cert_DecodeExtension_SubjectAltName, KACERT_Ok},
                        {KI_Cert_DecodeExtension_IssuerAltName, KACERT_Ok}};
    const CertPtr ctx = newCert();
    for (const Row &row : rows) {
        EXPECT_EQ(row.decode(&source, &ctx->extensions), row.status);
        EXPECT_EQ(row.decode(nullptr, &ctx->extensions), KACERT_InvalidParamErr);
        EXPECT_EQ(row.decode(&source, nullptr), KACERT_InvalidParamErr);
        Octets empty = hex("30 00");
        const Anybuf none = view(empty, 16);
        EXPECT_EQ(row.decode(&none, &ctx->extensions), KACERT_CertNotEndErr);
        Octets set = hex("31 00");
        const Anybuf wrong = view(set, 17);
        EXPECT_EQ(row.decode(&wrong, &ctx->extensions),
                  row.decode == KI_Cert_DecodeExtension_BasicConstraint ? KACERT_MemoryErr : KACERT_InvalidTagErr);
    }
    EXPECT_EQ(ctx->extensions.hasBasicConstraints + ctx->extensions.hasExtKeyUsage, 0);
    EXPECT_EQ(toHex(ctx->extensions.extKeyUsage.mask), "00 00 00 00");
    for (int i = 0; i < 2; ++i) EXPECT_EQ(KI_Cert_DecodeExtension_Private(&source, &ctx->extensions), KACERT_Ok);
    ASSERT_NE(ctx->extensions.privateExtensions, nullptr);
    EXPECT_NE(ctx->extensions.privateExtensions->next, nullptr);
    EXPECT_EQ(ctx->extensions.hasPrivate, 1);
}

TEST(CertDecode, ASecondDecodeAppendsNamesAndLeaksNothing) {
    CertParts parts;
    parts.setExtensions({extension("2A 03", hex("AA")), extension("55 1D 0E", hex("04 02 01 02"))});
    const CertPtr ctx = newCert();
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    parts.serial = hex("02 01 06");
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, CERT_SERIALNUMBER), "06");
    ASSERT_NE(ctx->issuer.next->next, nullptr);
    ASSERT_NE(ctx->extensions.privateExtensions->next, nullptr);
    // The octets may be the context's own, and no version is the first version again.
    ASSERT_EQ(KACert_DecodeCert(ctx.get(), ctx->encoded.data, ctx->encoded.length), KACERT_Ok);
    ASSERT_EQ(KI_Cert_DecodeTBS(ctx.get(), &ctx->tbs), KACERT_Ok);
    EXPECT_EQ(getChar(ctx, CERT_TBS_CERTIFICATE), toHex(parts.tbs()));
    parts.version = {};
    ASSERT_EQ(decodeExact(ctx, parts.whole()), KACERT_Ok);
    EXPECT_EQ(ctx->version, 0);
    // And a value that is set by hand goes behind the decoded ones.
    ASSERT_EQ(setChar(ctx, CERT_ISSUER_COUNTRYNAME, "CN"), KACERT_Ok);
    const NameRecord *last = ctx->issuer.next;
    while (last->next != nullptr) last = last->next;
    EXPECT_EQ(toHex(last->value), toHex(text("CN")));
}

// Strict prefixes never decode, whether they are given with their own length or as a shorter element.
TEST(CertDecode, EveryPrefixIsRefused) {
    CertParts parts;
    parts.setExtensions({extension("55 1D 13", seq({flagTrue, hex("02 01 03")}), flagTrue),
                         extension("55 1D 11", seq({hex("82 01 64"), tlv(0xA4, commonName("S"))})),
                         extension("2A 03", hex("AA"))});
    const Octets der = parts.whole();
    for (size_t size = 1; size < der.size(); ++size) {
        const CertPtr ctx = newCert();
        const Octets prefix(der.begin(), der.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_EQ(decodeExact(ctx, prefix), KACERT_LengthNotEqualErr) << size;
    }
}

} // namespace
