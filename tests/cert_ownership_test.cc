// Whose the octets of a context are. What a test leaves wrong here, the leak and address checks see as well.
#include "testkit.h"

using namespace karil_test;

namespace {

CertParts sampleParts() {
    CertParts parts;
    parts.subject = seq({set({seq({oid("55 04 06"), tlv(0x13, text("CN"))})}),
                         set({seq({oid("55 04 0A"), tlv(0x0C, text("Works"))})}),
                         set({seq({oid("55 04 03"), tlv(0x0C, hex("C3 A9"))})})});
    parts.setExtensions({extension("55 1D 0E", hex("04 02 01 02")), extension("55 1D 13", hex("30 03 01 01 FF")),
                         extension("55 1D 11", seq({hex("82 01 64")})), extension("2A 03", hex("AA BB"))});
    return parts;
}

CertPtr decodedSample() {
    CertPtr ctx = create<CertEncodeCtx>();
    EXPECT_EQ(decode(*ctx, sampleParts().whole()), KACERT_Ok);
    return ctx;
}

constexpr int32_t Asked[] = {CERT_TBS_CERTIFICATE,
                             CERT_OUTER_SIGNATUREALGORITHM,
                             CERT_CA_SIGNATURE,
                             CERT_SERIALNUMBER,
                             CERT_INNER_SIGNATUREALGORITHM,
                             CERT_ISSUER_DERDN,
                             CERT_ISSUER_COMMONNAME,
                             CERT_SUBJECT_DERDN,
                             CERT_SUBJECT_COUNTRYNAME,
                             CERT_SUBJECT_ORGANIZATIONNAME,
                             CERT_SUBJECT_COMMONNAME,
                             CERT_SUBJECTPUBLICKEYINFO,
                             CERTEX_SUBJECTKEYIDENTIFIER,
                             CERT_SUBJECT_ALT_DNSNAME};

// The answers to all of them but one.
std::string answersBut(const CertPtr &ctx, int32_t left) {
    std::string all;
    for (const int32_t id : Asked)
        all += id == left ? "" : get(*ctx, id) + ";";
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
    EXPECT_EQ(get(*ctx, CERT_SUBJECT_COMMONNAME), "A8 A6");
}

TEST(CertOwnership, ACopyOutlivesTheContext) {
    CertPtr ctx = decodedSample();
    Anybuf keyId = {};
    AlgorithmRecord algorithm = {};
    ASSERT_EQ(KI_CopyAnybuf(&keyId, &ctx->extensions.subjectKeyId.keyId), KACERT_Ok);
    ASSERT_EQ(KI_CopyAlgorithm(&algorithm, &ctx->innerSignatureAlgorithm), KACERT_Ok);
    ctx.reset();
    EXPECT_EQ(toHex(keyId), "01 02");
    EXPECT_EQ(toHex(algorithm.oid), Sha1WithRsa);
    EXPECT_EQ(keyId.form + algorithm.oid.form, 4u);
    KI_ClearAnybuf(&keyId);
    KI_ClearAnybuf(&algorithm.oid);
}

// Records read outside of a context own their octets: the source may go.
TEST(CertOwnership, SingleReadersCopy) {
    NameRecord head = {};
    const CertPtr ctx = create<CertEncodeCtx>();
    for (int i = 0; i < 2; ++i) {
        const Exact name(sampleParts().subject, 16), keyId(extension("55 1D 0E", hex("04 02 01 02")), 16);
        ASSERT_EQ(KI_DecodeIssuerSubject(&name.record, &head), KACERT_Ok);
        ASSERT_EQ(KI_Cert_DecodeExtension_SubjectKeyIdentifier(&keyId.record, &ctx->extensions), KACERT_Ok);
    }
    EXPECT_EQ(toHex(head.next->next->value), toHex(text("Works")));
    EXPECT_EQ(get(*ctx, CERTEX_SUBJECTKEYIDENTIFIER), "01 02");
    KI_FreeName(head.next);
}

// Whether it was decoded or set, a record can be taken off its list and freed alone.
TEST(CertOwnership, ANameRecordIsFreedAlone) {
    CertPtr ctx = decodedSample();
    ASSERT_EQ(set(*ctx, CERT_SUBJECT_EMAIL, "a@b"), KACERT_Ok);
    for (int left = 4; left > 0; --left) {
        NameRecord *first = ctx->subject.next;
        ctx->subject.next = first->next;
        first->next = nullptr;
        if (left == 1)
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
