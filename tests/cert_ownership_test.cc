// Whose the octets of a context are. What a test leaves wrong here, the leak and address checks see as well.
#include "samples.h"

using namespace karil_test;

namespace {

CertPtr decodedSample() {
    CertPtr ctx = create<CertEncodeCtx>();
    EXPECT_EQ(decode(*ctx, fullCertificate()), KACERT_Ok);
    return ctx;
}

// The answers to all questions but one, the read position of distribution points and the key's algorithm, which
// answers the signature's.
std::string answersBut(const CertPtr &ctx, int32_t left) {
    std::string all;
    for (const int32_t id : queries<CertDecodeCtx>())
        all += id == left || id == CERTEX_CRLDIST_FULLNAME || id == CERT_PUBLICKEY_ALGORITHM ? "" : get(*ctx, id) + ";";
    return all;
}

TEST(CertOwnership, AValueSetAfterDecodingReplacesThatOneAlone) {
    const std::string longer = "A value that is longer than the one decoded";
    for (const int32_t id :
         {CERT_OUTER_SIGNATUREALGORITHM, CERT_CA_SIGNATURE, CERT_SERIALNUMBER, CERT_INNER_SIGNATUREALGORITHM,
          CERT_ISSUER_DERDN, CERT_SUBJECT_DERDN, CERT_SUBJECTPUBLICKEYINFO}) {
        const CertPtr ctx = decodedSample();
        const std::string others = answersBut(ctx, id);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(set(*ctx, id, longer), KACERT_Ok) << id;
        EXPECT_EQ(get(*ctx, id), toHex(text(longer))) << id;
        EXPECT_EQ(answersBut(ctx, id), others) << id;
    }
}

TEST(CertOwnership, AClearedFieldTakesNothingElseAlong) {
    const CertPtr ctx = decodedSample();
    const std::string all = answersBut(ctx, 0);
    KI_ClearAnybuf(&ctx->encoded);
    EXPECT_EQ(ctx->encoded.data, nullptr);
    EXPECT_EQ(answersBut(ctx, 0), all);
    KI_ClearAnybuf(&ctx->tbs);
    KI_ClearAnybuf(&ctx->serialNumber);
    KI_ClearAnybuf(&ctx->extensions.subjectKeyId.keyId);
    ASSERT_EQ(KI_SetAttributeCharValue(&ctx->serialNumber, text("7").data(), 1), KACERT_Ok);
    EXPECT_EQ(get(*ctx, CERT_SERIALNUMBER), "37");
    EXPECT_EQ(get(*ctx, CERT_SUBJECT_STATEORPROVINCENAME), "D6 D0 CE C4");
}

// Copies, and records read outside of a context, own their octets: the source may go.
TEST(CertOwnership, ACopyOutlivesItsSource) {
    CertPtr source = decodedSample();
    const CertPtr ctx = create<CertEncodeCtx>();
    ASSERT_EQ(KI_CopyAnybuf(&ctx->serialNumber, &source->extensions.subjectKeyId.keyId), KACERT_Ok);
    ASSERT_EQ(KI_CopyAlgorithm(&ctx->innerSignatureAlgorithm, &source->innerSignatureAlgorithm), KACERT_Ok);
    source.reset();
    for (int i = 0; i < 2; ++i) {
        const Exact name(commonName("Works"), 16), keyId(extension("55 1D 0E", hex("04 02 01 02")), 16);
        ASSERT_EQ(KI_DecodeIssuerSubject(&name.record, &ctx->subject), KACERT_Ok);
        ASSERT_EQ(KI_Cert_DecodeExtension_SubjectKeyIdentifier(&keyId.record, &ctx->extensions), KACERT_Ok);
    }
    EXPECT_EQ(get(*ctx, CERT_SERIALNUMBER), "04 05 06");
    EXPECT_EQ(get(*ctx, CERT_INNER_SIGNATUREALGORITHM), Sha1WithRsa);
    EXPECT_EQ(ctx->serialNumber.form + ctx->innerSignatureAlgorithm.oid.form, 4u);
    EXPECT_EQ(toHex(ctx->subject.next->next->value), toHex(text("Works")));
    EXPECT_EQ(get(*ctx, CERTEX_SUBJECTKEYIDENTIFIER), "01 02");
}

// Whether it was decoded or set, a record can be taken off its list and freed alone.
TEST(CertOwnership, ANameRecordIsFreedAlone) {
    CertPtr ctx = decodedSample();
    ASSERT_EQ(set(*ctx, CERT_SUBJECT_EMAIL, "a@b"), KACERT_Ok);
    while (ctx != nullptr) {
        NameRecord *first = ctx->subject.next;
        ctx->subject.next = std::exchange(first->next, nullptr);
        if (ctx->subject.next == nullptr)
            ctx.reset();
        EXPECT_GT(first->value.length, 0u);
        KI_FreeName(first);
    }
}

// The data of a written node goes with the node, may be cleared alone and may be replaced.
TEST(AnybufOwnership, AWrittenNodeIsClearedAndFilledAgain) {
    const Exact octets(hex("01 02 03"));
    for (const bool isFilled : {false, true}) {
        Anybuf *node = nullptr;
        ASSERT_EQ(KAsn1_WriteOctetString(&octets.record, &node), KACERT_Ok);
        ASSERT_EQ(KAsn1_WriteOctetString(&octets.record, &node->next), KACERT_Ok);
        const Chain owner(node);
        const Chain behind(node->next);
        KI_ClearAnybuf(node);
        EXPECT_EQ(node->data, nullptr);
        EXPECT_EQ(toHex(*behind), "04 03 01 02 03");
        const uint32_t filled = isFilled ? 2 : 0;
        ASSERT_EQ(KI_SetAttributeCharValue(node, octets.data(), filled), KACERT_Ok);
        EXPECT_EQ(toHex(*node), isFilled ? "01 02" : "");
    }
}

} // namespace
