#include "dump.h"
#include "rows.h"

using namespace karil_test;

namespace {

TEST(CertAttributes, CreationAndArguments) {
    const CertPtr ctx = create<CertEncodeCtx>();
    EXPECT_EQ(ctx->outerSignatureAlgorithm.id, 1u);
    EXPECT_EQ(ctx->innerSignatureAlgorithm.id, 1u);
    EXPECT_EQ(ctx->publicKeyAlgorithm.id, 1u);
    EXPECT_EQ(dump(*ctx), "");
    const uint8_t octet = 1;
    for (const int32_t id : {int32_t{CERT_SERIALNUMBER}, int32_t{CERT_ISSUER_EMAIL}, 99999})
        for (const int32_t length : {0, -1, INT32_MIN})
            EXPECT_EQ(KACert_SetCertAttributeChar(ctx.get(), id, &octet, length), KACERT_InvalidLengthErr) << id;
    EXPECT_EQ(KACert_SetCertAttributeInt(ctx.get(), CERT_SERIALNUMBER, 1), KACERT_AttributeNotSupportErr);
}

SWEPT_ROWS(CertAttributes, Sets) {
    const CertPtr ctx = create<CertEncodeCtx>();
    const Trace trace;
    EXPECT_EQ(takeAll(*ctx, row, "steps"), row.number("status"));
    EXPECT_EQ(dump(*ctx), row("want"));
    EXPECT_TRUE(trace.has(row("words")));
}

SWEPT_ROWS(CertAttributes, Names) {
    // The words of the issuer's alternative name are those of the subject's.
    const char *const words[] = {"ISSUER_", "SUBJECT_", "SUBJECT_ALT_", "SUBJECT_ALT_"};
    const char *const dumped[] = {"", "", "san=1, san.names=00 00 00 00 01 00 00 00, ",
                                  "ian=1, ian.names=00 00 00 00 01 00 00 00, "};
    const char *const lists[] = {"issuer=", "subject=", "directory=", "directory="};
    const std::vector<std::string> ids = row.list("ids");
    for (size_t list = 0; list < ids.size(); ++list) {
        const CertPtr ctx = create<CertEncodeCtx>();
        const Trace trace;
        for (const char *value : {"1", "2"})
            EXPECT_EQ(set(*ctx, std::stoi(ids[list]), value), KACERT_Ok);
        EXPECT_TRUE(trace.has(std::string("======>Set CERT_") + words[list] + row("words"))) << ids[list];
        const std::string one = lists[list] + row("kind") + ':' + row("oid") + ':';
        EXPECT_EQ(dump(*ctx), dumped[list] + one + "1#19, " + one + "2#19");         // no mark for the extensions
        const std::string answer = row("kind") == "30" ? "31 2C 4F 55 3D 32" : "31"; // units are joined
        EXPECT_EQ(list < 2 ? get(*ctx, std::stoi(ids[list])) : answer, answer) << ids[list];
    }
}

TEST(CertAttributes, ANameSlotWithAnEmptyBufferIsRefused) {
    const CertPtr ctx = create<CertEncodeCtx>();
    ASSERT_EQ(KI_SetAttributeCharValue(&ctx->issuerDer, nullptr, 0), KACERT_Ok);
    const Trace trace;
    EXPECT_EQ(set(*ctx, CERT_ISSUER_DERDN, hex("30 00")), KACERT_InvalidParamErr);
    EXPECT_TRUE(trace.has("======>KI_SetAttributeCharValue"));
}

// As they are, and written as a string of a type or, if the type is another, as an OCTET STRING.
TEST(CertAttributes, PrivateExtensions) {
    for (const int32_t type : {19, 4, 12, -3})
        sweep(
            [type] {
                const CertPtr ctx = create<CertEncodeCtx>();
                const Octets id = hex("2A 03"), value = hex("04 01 07");
                const auto add = [&](int32_t idLength, int32_t length) {
                    return TRIED(
                        KACert_SetCertAttributePrivate(ctx.get(), id.data(), idLength, 5, value.data(), length));
                };
                const auto write = [&](int32_t idLength, int32_t length) {
                    return TRIED(KACert_SetCertAttributePrivate_ForValue(ctx.get(), id.data(), idLength, 0,
                                                                         value.data(), length, type));
                };
                const Trace trace;
                EXPECT_EQ(add(0, 3), KACERT_InvalidLengthErr);
                EXPECT_EQ(add(2, 0), KACERT_InvalidLengthErr);
                EXPECT_EQ(add(-1, 3), KACERT_InvalidLengthErr);
                EXPECT_EQ(write(2, 0), KACERT_InvalidParamErr);
                EXPECT_TRUE(trace.has("------>certAttributiValue或者certAttributeValueLen Err"));
                EXPECT_EQ(write(0, 2), KACERT_InvalidLengthErr);
                EXPECT_EQ(dump(*ctx), "");
                EXPECT_EQ(add(1, 2), KACERT_Ok);
                EXPECT_EQ(write(2, 3), KACERT_Ok);
                EXPECT_EQ(dump(*ctx), std::string("marked=1, private=1, ext=52:2A:5:04 01, ext=52:2A 03:0:") +
                                          (type == 19 ? "13" : "04") + " 03 04 01 07");
            },
            {{KACERT_MemoryErr, -1}});
}

SWEPT_ROWS(CertAttributes, PlainElements, {-1}) {
    const auto write = row("call") == "Characters" ? KACert_EncodeChar : UnsignedChar2OCTET;
    const Octets value = row.octets("value");
    Anybuf *out = nullptr;
    const int32_t status = TRIED(write(value.empty() ? nullptr : value.data(), row.number("length"), &out));
    EXPECT_EQ(answerOf(status, out), row.hex("want"));
}

TEST(CertAttributes, TheHookParameterIsCopied) {
    sweep([] {
        Octets parameter = hex("01 02 03");
        const CertPtr ctx = filled<CertEncodeCtx>(fixedSignature, parameter.data(), 3);
        parameter[0] = 9;
        EXPECT_EQ(toHex(ctx->signKey), "01 02 03");
        ASSERT_EQ(TRIED(KACert_SetCertSignFunc(ctx.get(), nullptr, nullptr, 3)), KACERT_Ok);
        EXPECT_EQ(ctx->signFunc, nullptr);
        ASSERT_EQ(TRIED(KACert_SetCertSignFunc(ctx.get(), fixedSignature, parameter.data(), 2)), KACERT_Ok);
        EXPECT_EQ(toHex(ctx->signKey), "09 02");
    });
}

} // namespace
