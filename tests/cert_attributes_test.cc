#include "cert_support.h"

using namespace karil_test;

namespace {

TEST(CertAttributes, CreationAndArguments) {
    const CertPtr ctx = newCert();
    ASSERT_NE(ctx, nullptr);
    EXPECT_EQ(ctx->outerSignatureAlgorithm.id, 1u);
    EXPECT_EQ(ctx->innerSignatureAlgorithm.id, 1u);
    EXPECT_EQ(ctx->publicKeyAlgorithm.id, 1u);
    EXPECT_EQ(dump(*ctx), "");
    EXPECT_EQ(KACert_CreateCertEncodeCtx(nullptr), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_DestroyCertEncodeCtx(nullptr), KACERT_Ok);
    EXPECT_EQ(KACert_DestroyCertDecodeCtx(nullptr), KACERT_Ok);
    const uint8_t octet = 1;
    for (const int32_t id : {int32_t{CERT_SERIALNUMBER}, int32_t{CERT_ISSUER_EMAIL}, 99999})
        for (const int32_t length : {0, -1, INT32_MIN})
            EXPECT_EQ(KACert_SetCertAttributeChar(ctx.get(), id, &octet, length), KACERT_InvalidLengthErr) << id;
    EXPECT_EQ(KACert_SetCertAttributeChar(nullptr, CERT_SERIALNUMBER, &octet, 1), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertAttributeChar(ctx.get(), CERT_SERIALNUMBER, nullptr, 1), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertAttributeInt(nullptr, CERT_VERSION, 1), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertAttributeInt(ctx.get(), CERT_SERIALNUMBER, 1), KACERT_AttributeNotSupportErr);
    EXPECT_EQ(KACert_SetCertSignFunc(nullptr, fixedSignature, nullptr, 0), KACERT_InvalidParamErr);
}

ROWS(CertAttributes, IdsThatAreNotSet) {
    const CertPtr ctx = newCert();
    for (const std::string &id : row.list("ids")) {
        const Trace trace;
        EXPECT_EQ(setChar(ctx, std::stoi(id), "x"), KACERT_AttributeNotSupportErr) << id;
        EXPECT_TRUE(trace.has("------>Set KACERT_AttributeNotSupportErr")) << id;
    }
}

ROWS(CertAttributes, Sets) {
    const CertPtr ctx = newCert();
    const Trace trace;
    EXPECT_EQ(takeAll(ctx, row, "steps"), row.number("status"));
    EXPECT_EQ(dump(*ctx), row("want"));
    EXPECT_TRUE(row("words").empty() || trace.has(row("words")));
}

ROWS(CertAttributes, Names) {
    // The words of the issuer's alternative name are those of the subject's.
    const char *const words[] = {"ISSUER_", "SUBJECT_", "SUBJECT_ALT_", "SUBJECT_ALT_"};
    const char *const dumped[] = {"", "", "san=1, san.names=00 00 00 00 01 00 00 00, ",
                                  "ian=1, ian.names=00 00 00 00 01 00 00 00, "};
    const char *const lists[] = {"issuer=", "subject=", "directory=", "directory="};
    const std::vector<std::string> ids = row.list("ids");
    for (size_t list = 0; list < ids.size(); ++list) {
        const CertPtr ctx = newCert();
        const Trace trace;
        EXPECT_EQ(setChar(ctx, std::stoi(ids[list]), "1"), KACERT_Ok);
        EXPECT_EQ(setChar(ctx, std::stoi(ids[list]), "2"), KACERT_Ok);
        EXPECT_TRUE(trace.has(std::string("======>Set CERT_") + words[list] + row("words"))) << ids[list];
        const std::string one = lists[list] + row("kind") + ':' + row("oid") + ':';
        EXPECT_EQ(dump(*ctx), dumped[list] + one + "1#19, " + one + "2#19"); // no mark for the extensions
    }
}

TEST(CertAttributes, ANameSlotWithAnEmptyBufferIsRefused) {
    const CertPtr ctx = newCert();
    ASSERT_EQ(KI_SetAttributeCharValue(&ctx->issuerDer, nullptr, 0), KACERT_Ok);
    const Trace trace;
    EXPECT_EQ(setChar(ctx, CERT_ISSUER_DERDN, hex("30 00")), KACERT_InvalidParamErr);
    EXPECT_TRUE(trace.has("======>KI_SetAttributeCharValue"));
}

TEST(CertAttributes, PrivateExtensions) {
    const CertPtr ctx = newCert();
    const Octets id = hex("2A 03");
    const Octets value = hex("04 01 07");
    const auto add = [&](const uint8_t *idOctets, int32_t idLength, const uint8_t *octets, int32_t length) {
        return KACert_SetCertAttributePrivate(ctx.get(), idOctets, idLength, 5, octets, length);
    };
    EXPECT_EQ(add(id.data(), 0, value.data(), 3), KACERT_InvalidLengthErr);
    EXPECT_EQ(add(id.data(), 2, value.data(), 0), KACERT_InvalidLengthErr);
    EXPECT_EQ(add(id.data(), -1, value.data(), 3), KACERT_InvalidLengthErr);
    EXPECT_EQ(add(nullptr, 2, value.data(), 3), KACERT_InvalidParamErr);
    EXPECT_EQ(add(id.data(), 2, nullptr, 3), KACERT_InvalidParamErr);
    EXPECT_EQ(KACert_SetCertAttributePrivate(nullptr, id.data(), 2, 0, value.data(), 3), KACERT_InvalidParamErr);
    EXPECT_EQ(dump(*ctx), "");
    EXPECT_EQ(add(id.data(), 2, value.data(), 3), KACERT_Ok);
    EXPECT_EQ(add(id.data(), 1, value.data(), 2), KACERT_Ok);
    EXPECT_EQ(dump(*ctx), "marked=1, private=1, ext=52:2A 03:5:04 01 07, ext=52:2A:5:04 01");
}

TEST(CertAttributes, PrivateExtensionsFromPlainValues) {
    const Octets id = hex("2A 03");
    const Octets value = text("AB");
    for (const int32_t type : {19, 4, 12, -3}) {
        const CertPtr ctx = newCert();
        const auto add = [&](int32_t idLength, const uint8_t *octets, int32_t length) {
            return KACert_SetCertAttributePrivate_ForValue(ctx.get(), id.data(), idLength, 0, octets, length, type);
        };
        EXPECT_EQ(add(2, value.data(), 2), KACERT_Ok);
        const std::string want = std::string("marked=1, private=1, ext=52:2A 03:0:") + (type == 19 ? "13" : "04");
        const Trace trace;
        EXPECT_EQ(add(2, nullptr, 2), KACERT_InvalidParamErr);
        EXPECT_EQ(add(2, value.data(), 0), KACERT_InvalidParamErr);
        EXPECT_TRUE(trace.has("------>certAttributiValue或者certAttributeValueLen Err"));
        EXPECT_EQ(add(0, value.data(), 2), KACERT_InvalidLengthErr);
        EXPECT_EQ(dump(*ctx), want + " 02 41 42");
    }
}

ROWS(CertAttributes, PlainElements) {
    const auto write = row("call") == "Characters" ? KACert_EncodeChar : UnsignedChar2OCTET;
    ASSERT_TRUE(write == KACert_EncodeChar || row("call") == "Octets");
    const Octets value = row.octets("value");
    Anybuf *out = nullptr;
    EXPECT_EQ(write(value.empty() ? nullptr : value.data(), row.number("length"), &out), row.number("status"));
    const Chain owned(out);
    EXPECT_EQ(out != nullptr ? toHex(*out) : "", row.hex("want"));
    EXPECT_EQ(write(hex("41").data(), 1, nullptr), -1);
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
