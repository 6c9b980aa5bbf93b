// Data, SignedData, EnvelopedData, EncryptedData, and SignedAndEnvelopedData, which is made of the same parts.
#include "message_rows.h"

using namespace karil_test;

namespace {

template <class Use> void withMessage(const std::string &type, Use use) {
    type == "data"        ? use(*create<DataCtx>())
    : type == "signed"    ? use(*create<SignedDataCtx>())
    : type == "enveloped" ? use(*create<EnvelopedDataCtx>())
    : type == "digested"  ? use(*create<DigestedDataCtx>())
    : type == "encrypted" ? use(*create<EncryptedDataCtx>())
                          : use(*create<SignedAndEnvelopedDataCtx>());
}
// The case with everything.
const Row &firstOf(const std::string &section, const std::string &type) {
    static const auto encode = rowsOf("Pkcs7Message", "Encode"), decode = rowsOf("Pkcs7Message", "Decode");
    const std::vector<Row> &rows = section == "Encode" ? encode : decode;
    return *std::find_if(rows.begin(), rows.end(), [&](const Row &row) { return row("type") == type; });
}
template <class Ctx> Owner<Ctx> decoded(const char *type) {
    Owner<Ctx> ctx = create<Ctx>();
    EXPECT_EQ(decodeMessage(*ctx, firstOf("Decode", type).octets("der")), KACERT_Ok);
    return ctx;
}

// Twice: hooks that answer alike write the same octets, and the two automatic attributes come once.
SWEPT_ROWS(Pkcs7Message, Encode) {
    withMessage(row("type"), [&](auto &ctx) {
        const Trace trace;
        build(ctx, row, "set");
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(message(ctx), row.hex("want"));
        EXPECT_TRUE(trace.has(row("trace")));
    });
}

SWEPT_ROWS(Pkcs7Message, Decode) {
    withMessage(row("type"), [&](auto &ctx) {
        build(ctx, firstOf("Encode", row("type")), "set"); // what a decoder finds there goes
        decodeRow(row, ctx);
    });
}

ROWS(Pkcs7Message, Ids) {
    for (const std::string &id : row.list("ids"))
        withMessage(row("type"), [&]<class Ctx>(Ctx &ctx) {
            const int32_t number = std::stoi(id);
            EXPECT_EQ(answer(ctx, number), row("fresh")) << id;
            const std::pair<const uint8_t *, int32_t> values[] = {
                {bytesOf("ab").data(), 2}, {bytesOf("").data(), 0}, {nullptr, 1}, {bytesOf("").data(), -1}};
            std::string all;
            for (size_t i = 0; i < 4 && all.size() < row("set").size(); ++i) {
                const Owner<Ctx> fresh = create<Ctx>();
                Ctx &target = i == 0 ? ctx : *fresh;
                const int32_t status = Family<Ctx>::set(&target, number, values[i].first, values[i].second);
                all += (i > 0 ? " " : "") + std::to_string(status);
            }
            EXPECT_EQ(all, row("set")) << id;
            if (number == 40) // either of 40 and 41 is asked for first
                set(ctx, 41, "ab");
            if (number == 41)
                set(ctx, 40, "ab");
            EXPECT_EQ(answer(ctx, number, 1), row("after")) << id;
        });
}

template <class Ctx> void checkNumbers(int32_t version) {
    const Owner<Ctx> ctx = create<Ctx>();
    for (int32_t id = 37; id <= 66; ++id) {
        int32_t number = 7;
        EXPECT_EQ(Family<Ctx>::setInt(ctx.get(), id, -5), id == version ? 0 : 110) << id;
        EXPECT_EQ(Family<Ctx>::getInt(ctx.get(), id, &number), id == version ? 0 : 110) << id;
        EXPECT_EQ(number, id == version ? -5 : 7);
    }
}
TEST(Pkcs7Message, VersionsAreTheNumbers) {
    checkNumbers<SignedDataCtx>(38);
    checkNumbers<SignedAndEnvelopedDataCtx>(44);
    checkNumbers<EnvelopedDataCtx>(51);
    checkNumbers<EncryptedDataCtx>(58);
    checkNumbers<DigestedDataCtx>(61);
}

TEST(Pkcs7Message, OddAnswers) {
    const SignedPtr one = create<SignedDataCtx>();
    set(*one, 41, "");
    EXPECT_EQ(answer(*one, 41), "");
    EXPECT_EQ(answer(*one, 40), "") << "either of the two is asked for then";
    const EnvelopedPtr enveloped = create<EnvelopedDataCtx>();
    ContentPtr content = plainContent();
    set(*content, PKCS7_ENCRYPT_PARAMETER, "\x05");
    EXPECT_EQ(handOver(KA_PKCS7_SetEnvelopedData_EncryptedContent, *enveloped, std::move(content)), KACERT_Ok);
    EXPECT_EQ(answer(*enveloped, 55) + " / " + answer(*enveloped, 56) + " / " + answer(*enveloped, 57),
              "untouched / 2A 04 / 05");
    const EnvelopedPtr read = decoded<EnvelopedDataCtx>("enveloped");
    EXPECT_EQ(answer(*read, 55) + " / " + answer(*read, 52), "62 63 / untouched");
    const EncryptedPtr encrypted = decoded<EncryptedDataCtx>("encrypted");
    EXPECT_EQ(answer(*encrypted, 59) + " / " + answer(*encrypted, 60), "untouched / untouched");
    const SignedEnvelopedPtr both = decoded<SignedAndEnvelopedDataCtx>("both");
    set(*both, PKCS7_SIGNEDANDENVELOPED_RECIPIENT_KEY, "k");
    set(*both->signerInfos, PKCS7_SIGNER_CONTENT, "ab");
    EXPECT_EQ(message(*both), "status 121");
    EXPECT_EQ(toHex(both->signerInfos->content), "61 62") << "the content is missed before the signers are given it";
    const Trace trace;
    answer(*create<SignedAndEnvelopedDataCtx>(), 49);
    EXPECT_TRUE(trace.has("======>Get PKCS7_CONTENTTYPE"));
}

// Lists by their positions: each is answered, from wherever the last question was. CRLs of SignedData: the first.
template <class Ctx>
void checkPositions(std::initializer_list<std::pair<int32_t, int32_t (*)(const Ctx *, uint32_t *)>> lists) {
    const Owner<Ctx> ctx = create<Ctx>();
    for (const auto &[id, count] : lists) {
        for (uint8_t i = 1; i <= 50; ++i)
            EXPECT_EQ(set(*ctx, id, Bytes(&i, 1)), KACERT_Ok);
        for (const int32_t position : {3, 50, 1, 49, 49, 50, 2}) {
            const auto octet = static_cast<uint8_t>(id == PKCS7_SIGNEDDATA_CRL ? 1 : position);
            EXPECT_EQ(answer(*ctx, id, position), toHex(&octet, 1)) << id;
        }
        for (const int32_t position : {0, -1, 51, 1000000})
            EXPECT_EQ(answer(*ctx, id, position), "untouched") << id;
        uint32_t number = 0;
        EXPECT_EQ(count(ctx.get(), &number), KACERT_Ok);
        EXPECT_EQ(number, 50u);
    }
    EXPECT_EQ(ctx->certificates->tag * 100 + ctx->crls->tag, 1616u) << "as of one that was decoded";
}
TEST(Pkcs7Message, ListsByPosition) {
    checkPositions<SignedDataCtx>({{39, KA_PKCS7_GetSignedData_DigestAlgoNum},
                                   {42, KA_PKCS7_GetSignedData_CertificatesNum},
                                   {43, KA_PKCS7_GetSignedData_CrlsNum}});
    checkPositions<SignedAndEnvelopedDataCtx>(
        {{45, KA_PKCS7_GetSignedAndEnvelopedData_CertificatesNum}, {46, KA_PKCS7_GetSignedAndEnvelopedData_CrlsNum}});
}

// What the Get answers at -1, 0, 1, 2 and 3: a status, "none" or the head.
template <class Ctx, class Part>
std::string places(int32_t (*get)(const Ctx *, Part **, int32_t), const Ctx &ctx, const Part *head) {
    std::string all;
    for (const int32_t position : {-1, 0, 1, 2, 3}) {
        Part *part = nullptr;
        const int32_t status = get(&ctx, &part, position);
        all += (all.empty() ? "" : " ") + (status != KACERT_Ok ? std::to_string(status)
                                           : part == nullptr   ? "none"
                                           : part == head      ? "head"
                                                               : "another");
    }
    return all;
}
// The head for every position up to the number of parts, 0 too; none for a message that was not decoded, but for
// SignedAndEnvelopedData. A part that a message has stays its part.
TEST(Pkcs7Message, PartsByPosition) {
    constexpr char None[] = "none none none none none", Refused[] = "101 101 101 101 101";
    constexpr char Two[] = "101 head head head 101";
    const SignedPtr one = create<SignedDataCtx>(), other = create<SignedDataCtx>();
    const EnvelopedPtr sealed = create<EnvelopedDataCtx>();
    const SignedEnvelopedPtr both = create<SignedAndEnvelopedDataCtx>();
    const auto check = [&](const char *ofOne, const char *ofBoth) {
        EXPECT_EQ(places(KA_PKCS7_GetSignedData_SignerInfo, *one, one->signerInfos), ofOne);
        EXPECT_EQ(places(KA_PKCS7_GetEnvelopedData_RecipientInfo, *sealed, sealed->recipients), ofOne);
        EXPECT_EQ(places(KA_PKCS7_GetSignedAndEnvelopedData_SignerInfo, *both, both->signerInfos), ofBoth);
        EXPECT_EQ(places(KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfo, *both, both->recipients), ofBoth);
    };
    const auto counted = [&] {
        uint32_t counts[4] = {};
        EXPECT_EQ(KA_PKCS7_GetSignedData_SignerInfoNum(one.get(), &counts[0]), KACERT_Ok);
        EXPECT_EQ(KA_PKCS7_GetEnvelopedData_RecipientInfoNum(sealed.get(), &counts[1]), KACERT_Ok);
        EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedData_SignerInfoNum(both.get(), &counts[2]), KACERT_Ok);
        EXPECT_EQ(KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfoNum(both.get(), &counts[3]), KACERT_Ok);
        return counts[0] * 1000 + counts[1] * 100 + counts[2] * 10 + counts[3];
    };
    check(None, None);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedData_SignerInfo, *one, plainSigner()), KACERT_Ok);
        EXPECT_EQ(handOver(KA_PKCS7_SetEnvelopedData_RecipientInfo, *sealed, plainRecipient()), KACERT_Ok);
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo, *both, plainSigner()), KACERT_Ok);
        EXPECT_EQ(handOver(KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo, *both, plainRecipient()), KACERT_Ok);
    }
    check(Refused, Two);
    EXPECT_EQ(counted(), 222u);
    for (SignedDataCtx *ctx : {one.get(), other.get()})
        EXPECT_EQ(KA_PKCS7_SetSignedData_SignerInfo(ctx, one->signerInfos), KACERT_InvalidItemErr);
    EXPECT_EQ(KA_PKCS7_SetEnvelopedData_RecipientInfo(sealed.get(), sealed->recipients), KACERT_InvalidItemErr);
    EXPECT_EQ(decodeMessage(*one, firstOf("Encode", "signed").octets("want")), KACERT_Ok);
    EXPECT_EQ(decodeMessage(*sealed, firstOf("Encode", "enveloped").octets("want")), KACERT_Ok);
    check(Two, Two);
    EXPECT_EQ(counted(), 2222u);
}

// The encrypted content that was given first stays, or the last; what is not taken stays the caller's.
template <class Ctx> void checkContents(bool isLast) {
    const Owner<Ctx> ctx = create<Ctx>(), other = create<Ctx>();
    EncryptedContentCtx *asked = nullptr;
    EXPECT_EQ(Family<Ctx>::getContent(ctx.get(), &asked), KACERT_Ok);
    EXPECT_EQ(asked, nullptr);
    ContentPtr contents[] = {plainContent(), plainContent()};
    for (const ContentPtr &content : contents)
        EXPECT_EQ(Family<Ctx>::setContent(ctx.get(), content.get()), KACERT_Ok);
    EXPECT_EQ(Family<Ctx>::getContent(ctx.get(), &asked), KACERT_Ok);
    EXPECT_EQ(asked, contents[isLast ? 1 : 0].get());
    EXPECT_EQ(Family<Ctx>::setContent(other.get(), asked), KACERT_InvalidItemErr);
    (void)contents[0].release(); // the message has it, or freed it
    if (isLast)
        (void)contents[1].release();
}
TEST(Pkcs7Message, EncryptedContentGivenTwice) {
    checkContents<EnvelopedDataCtx>(false);
    checkContents<SignedAndEnvelopedDataCtx>(true);
}

// Lengths of 0, which trusts the header, and -1; then a frame whose identifier has 20 octets, 21 and 1,000: the latter
// two cannot be split, which most families tell from another type.
TEST(Pkcs7Message, FramesOfOddLengths) {
    const std::pair<const char *, const char *> rows[] = {
        {"data", "121 101 122 101 101"},     {"signed", "121 101 122 101 101"},    {"enveloped", "122 101 122 101 101"},
        {"digested", "101 101 122 101 101"}, {"encrypted", "121 121 121 121 121"}, {"both", "121 122 122 122 122"},
    };
    for (const auto &[type, want] : rows)
        withMessage(type, [&, &wanted = want]<class Ctx>(Ctx &ctx) {
            std::string all;
            for (const int32_t length : {0, -1})
                all += std::to_string(Family<Ctx>::decode(&ctx, hex("30 00").data(), length)) + ' ';
            EXPECT_EQ(held(ctx), "");
            for (const size_t size : {20u, 21u, 1000u})
                all += std::to_string(decodeMessage(ctx, seq({tlv(0x06, Octets(size, 0x2A)), hex("A0 02 30 00")}))) +
                       (size < 1000 ? " " : "");
            EXPECT_EQ(all, wanted);
        });
}

// An EncryptedContentInfo, RecipientInfo or SignerInfo of 10,240 octets goes in, one more does not.
TEST(Pkcs7Message, Bounds) {
    const Octets large(10240 - 25, 0x41); // beside the SEQUENCE, content type, algorithm and cipher text's header
    for (const size_t more : {0u, 1u}) {
        const Octets content = cat({large, Octets(more)});
        for (const auto &[type, id] : {std::pair("enveloped", 52), {"encrypted", 60}, {"both", 48}})
            withMessage(type, [&, type = type, id = id]<class Ctx>(Ctx &ctx) {
                build(ctx, firstOf("Encode", type), "set");
                if constexpr (hasSigners<Ctx>)
                    for (SignerInfoCtx *signer = ctx.signerInfos; signer != nullptr; signer = signer->next)
                        KA_PKCS7_SetSignerInfoDigestFunc(signer, plainHook, "n", 1);
                set(ctx, id, content);
                EXPECT_EQ(message(ctx) == "status 101", more == 1) << type;
            });

        // The issuer's name fills the other two up.
        const auto fillUp = [&](auto &part, int32_t name) {
            set(part, name, Octets(1000));
            set(part, name, Octets(10240 + more + 1000 - hex(written(part, 20000)).size()));
            EXPECT_EQ(hex(written(part, 20000)).size(), 10240 + more);
        };
        RecipientPtr recipient = plainRecipient();
        set(*recipient, PKCS7_RECIPIENT_KEY, "k");
        fillUp(*recipient, PKCS7_RECIPIENT_DN);
        const EnvelopedPtr enveloped = create<EnvelopedDataCtx>();
        build(*enveloped, firstOf("Encode", "enveloped"), "set");
        handOver(KA_PKCS7_SetEnvelopedData_RecipientInfo, *enveloped, std::move(recipient));
        EXPECT_EQ(message(*enveloped) == "status 101", more == 1);
        const SignedPtr ctx = create<SignedDataCtx>();
        build(*ctx, firstOf("Encode", "signed"), "set");
        SignerPtr signer = plainSigner();
        set(*signer, PKCS7_SIGNER_CONTENTTYPE, DataOid);
        set(*signer, PKCS7_SIGNER_CONTENT, "ab");
        fillUp(*signer, PKCS7_SIGNER_DN);
        handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, std::move(signer));
        EXPECT_EQ(message(*ctx) == "status 101", more == 1);
    }
}

// The library's own copies of the input, keys and contents: status 0, and nothing done. An inner encoder's is 100.
TEST(Pkcs7Message, NoMemoryOfItsOwn) {
    const EnvelopedPtr read = decoded<EnvelopedDataCtx>("enveloped");
    failAllocation(Pool::Library, 1, false);
    EXPECT_EQ(KA_PKCS7_DecodePKCS7EnvelopedData(read.get(), hex("30 00").data(), 2), KACERT_Ok);
    EXPECT_TRUE(endFailing());
    EXPECT_EQ(held(*read), "");
    uint32_t length = 7;
    const EnvelopedPtr enveloped = create<EnvelopedDataCtx>();
    build(*enveloped, firstOf("Encode", "enveloped"), "set");
    failAllocation(Pool::Library, 2, false);
    EXPECT_EQ(KA_PKCS7_EncodePKCS7EnvelopedData(enveloped.get(), nullptr, &length), KACERT_Ok);
    EXPECT_TRUE(endFailing());
    EXPECT_EQ(length, 0u);
    const SignedPtr ctx = create<SignedDataCtx>();
    build(*ctx, firstOf("Encode", "signed"), "set");
    std::string all;
    for (long nth = 1;; ++nth) {
        length = 7;
        failAllocation(Pool::Library, nth, false);
        const int32_t status = KA_PKCS7_EncodePKCS7SignedData(ctx.get(), nullptr, &length);
        if (!endFailing())
            break;
        EXPECT_EQ(length, status == KACERT_Ok ? 0u : 7u);
        all += std::to_string(status) + ' ';
    }
    EXPECT_EQ(all.substr(0, 6), "0 0 10") << all;
    EXPECT_EQ(all.find_first_not_of("01 "), all.npos) << all;
}

// A content that changes between two encodings: messageDigest stays that of the first, the signature is the second's.
TEST(Pkcs7Message, ContentChangedAfterEncoding) {
    const SignedPtr ctx = create<SignedDataCtx>();
    build(*ctx, firstOf("Encode", "signed"), "set");
    message(*ctx);
    set(*ctx, PKCS7_SIGNEDDATA_CONTENT, "other");
    EXPECT_EQ(decodeMessage(*ctx, hex(message(*ctx))), KACERT_Ok);
    EXPECT_EQ(toHex(ctx->signerInfos->encryptedDigest),
              toHex(seq({seq({oid("2A 03"), hex("05 00")}), tlv(0x04, text("other"))})));
    EXPECT_EQ(toHex(ctx->signerInfos->next->attributes->next->value), toHex(tlv(0x04, text("ab"))));
    EXPECT_EQ(ctx->signerInfos->content.data, ctx->content.data) << "the signers share the message's";
    // A ready encoding goes out as it is, until something is decoded.
    KI_SetAttributeCharValue(&ctx->encoded, bytesOf("ready").data(), 5);
    EXPECT_EQ(message(*ctx), toHex(text("ready")));
    EXPECT_EQ(decodeMessage(*ctx, hex("30 00")), KACERT_InvalidItemErr);
    EXPECT_EQ(ctx->encoded.length, 0u);
}

// Keys, plain contents and hooks' parameters are gone from the blocks that are given back.
TEST(Pkcs7Message, SecretsAreWiped) {
    constexpr std::string_view Key = "secret key", Content = "secret content", Parameter = "secret parameter";
    static int found;
    found = 0;
    onRelease([](const void *block, size_t size) {
        found += std::string_view(static_cast<const char *>(block), size).find("secret") != std::string_view::npos;
    });
    const auto flip = [](const uint8_t *input, uint32_t size, uint8_t *output, uint32_t *length, void *) {
        std::transform(input, input + size, output, [](uint8_t octet) { return static_cast<uint8_t>(octet ^ 0x80); });
        *length = size;
        return 0;
    };
    {
        const SignedEnvelopedPtr ctx = create<SignedAndEnvelopedDataCtx>();
        KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt(ctx.get(), 44, 1);
        for (int i = 0; i < 2; ++i) {
            set(*ctx, 48, Content);
            set(*ctx, 49, DataOid);
            set(*ctx, 50, Key);
        }
        handOver(KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo, *ctx, plainRecipient());
        handOver(KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo, *ctx, plainSigner("n"));
        handOver(KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent, *ctx, plainContent());
        for (int i = 0; i < 2; ++i) {
            KA_PKCS7_SetRecipientInfoKeyEncFunc(ctx->recipients, flip, Parameter.data(), 16);
            KA_PKCS7_SetEncryptContentEncFunc(ctx->encryptedContent, flip, Parameter.data(), 16);
        }
        EXPECT_EQ(decodeMessage(*ctx, hex(message(*ctx))), KACERT_Ok);
        uint8_t opened[64];
        uint32_t length = 0;
        KA_PKCS7_SetRecipientInfoKeyDecFunc(ctx->recipients, flip, Parameter.data(), 16);
        EXPECT_EQ(KA_PKCS7_DecryptDesKey(ctx->recipients, opened, &length), KACERT_Ok);
        EXPECT_EQ(toHex(opened, length), toHex(text(Key)));
        KA_PKCS7_SetEncryptContentDecFunc(ctx->encryptedContent, flip, Parameter.data(), 16);
        EXPECT_EQ(KA_PKCS7_GetEncryptedContentInformation(ctx->encryptedContent, opened, &length), KACERT_Ok);
        EXPECT_EQ(toHex(opened, length), toHex(text(Content)));
        set(*ctx->encryptedContent, PKCS7_ENCRYPT_CONTENT, Content);
    }
    onRelease(nullptr);
    EXPECT_EQ(found, 0);
}

} // namespace
