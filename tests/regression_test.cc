// Faults that were there once, a row each.
#include "signed.h"

#include <functional>

using namespace karil_test;

namespace {

// The caller frees and fills a name behind the context's back: the next attribute is hung behind what is there.
TEST(Regression, NamesOfTheCallersMaking) {
    const CertPtr cert = create<CertEncodeCtx>();
    const CrlPtr crl = create<CrlEncodeCtx>();
    const CsrPtr csr = create<CsrEncodeCtx>();
    CertExtensions &ext = cert->extensions;
    const std::pair<NameRecord &, std::function<int32_t()>> rows[] = {
        {cert->issuer, [&] { return set(*cert, CERT_ISSUER_COMMONNAME, "Value"); }},
        {cert->subject, [&] { return set(*cert, CERT_SUBJECT_COMMONNAME, "Value"); }},
        {ext.subjectAltName.names.directoryName, [&] { return set(*cert, CERT_SUBJECT_ALT_COMMONNAME, "Value"); }},
        {ext.issuerAltName.names.directoryName, [&] { return set(*cert, CERT_ISSUER_ALT_COMMONNAME, "Value"); }},
        {crl->issuer, [&] { return set(*crl, CRL_ISSUER_COMMONNAME, "Value"); }},
        {csr->subject, [&] { return set(*csr, CSR_SUBJECT_COMMONNAME, "Value"); }},
    };
    const Exact source(commonName("New"));
    for (const auto &[head, add] : rows) {
        EXPECT_EQ(add(), KACERT_Ok);
        KI_FreeName(std::exchange(head.next, nullptr));
        EXPECT_EQ(KI_DecodeIssuerSubject(&source.record, &head), KACERT_Ok);
        EXPECT_EQ(add(), KACERT_Ok);
        ASSERT_TRUE(head.next != nullptr && head.next->next != nullptr);
        EXPECT_EQ(toHex(head.next->next->value), toHex(text("Value")));
        EXPECT_EQ(head.next->next->next, nullptr);
    }
}

void give(Anybuf &record, const Octets &octets) {
    EXPECT_EQ(KI_SetAttributeCharValue(&record, octets.data(), sizeOf(octets)), KACERT_Ok);
}

// A record to be decoded may be a field of what it is decoded into. What is read after the field got its new value
// stands at the front of the old one, where a freed block no longer has its octets.
TEST(Regression, SourcesInTheirTarget) {
    AlgorithmRecord algorithm = {};
    CertExtensions cert = {};
    CrlExtensions crl = {};
    GeneralNameRecord names = {};
    uint8_t found = 0;
    const auto list = [](const char *first, const char *second) {
        return tlv(0xA0, seq({extension(first, hex("04 01 07")), extension(second, hex("03 02 05 A0"))}));
    };
    const struct {
        Anybuf &source;
        Octets octets;
        std::function<int32_t(const Anybuf *)> decode;
        Anybuf &last;
        const char *want;
    } rows[] = {
        {algorithm.oid, hex("30 0A 30 03 06 01 2A 03 03 00 AA BB"),
         [&](auto *from) { return KI_DecodePubKey(from, &algorithm, &names.iPAddress); }, names.iPAddress, "AA BB"},
        {cert.authorityKeyId.keyId, extension("55 1D 23", seq({hex("80 01 07"), hex("80 01 08")})),
         [&](auto *from) { return KI_Cert_DecodeExtension_AuthorityKeyIdentifyer(from, &cert); },
         cert.authorityKeyId.keyId, "08"},
        {cert.subjectKeyId.keyId, list("55 1D 0E", "55 1D 0F"),
         [&](auto *from) { return KI_Cert_DecodeExtensions(from, &cert); }, cert.keyUsage.bits, "05 A0"},
        {crl.crlNumber.value, list("55 1D 14", "55 1D 1B"),
         [&](auto *from) { return KI_Crl_DecodeExtensions(from, &crl); }, crl.deltaCrl.value, "05 A0"},
        {names.dNSName, hex("30 06 82 01 64 81 01 65"),
         [&](auto *from) { return KI_DecodeGeneralNameS(from, &names, &found); }, names.rfc822Name, "65"},
    };
    for (const auto &row : rows) {
        give(row.source, row.octets);
        EXPECT_EQ(row.decode(&row.source), KACERT_Ok) << row.want;
        EXPECT_EQ(toHex(row.last), row.want);
    }
    for (Anybuf *record :
         {&algorithm.oid, &names.iPAddress, &cert.authorityKeyId.keyId, &cert.subjectKeyId.keyId, &cert.keyUsage.bits,
          &crl.crlNumber.value, &crl.deltaCrl.value, &names.dNSName, &names.rfc822Name})
        KI_ClearAnybuf(record);
}

// A field before the dates has a length and no octets: that is the failure, not the negative date.
TEST(Regression, TheFirstFailureIsTheStatus) {
    const CertPtr ctx = filled<CertEncodeCtx>();
    KI_ClearAnybuf(&ctx->innerSignatureAlgorithm.oid);
    ctx->innerSignatureAlgorithm.oid.length = 3;
    EXPECT_EQ(KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDFROM, -1), KACERT_Ok);
    uint32_t length = 0;
    EXPECT_EQ(KACert_EncodeCert(ctx.get(), nullptr, &length), KACERT_InvalidParamErr);
}

TEST(Regression, OcspSourcesInTheirTarget) {
    const Zone utc("UTC");
    const Octets id = seq({commonName("N"), tlv(4, {1, 2})}), nonceType = oid("2B 06 01 05 05 07 30 01 02");
    const Octets data = seq({hex("A0 03 02 01 00"), id, tlv(0x18, text("200101000000Z")), seq({})});
    OcspBasicResponse response = {};
    ResponseId &responder = response.data.responder;
    give(responder.derName, id);
    EXPECT_EQ(KI_DecodeResponseId(&responder, &responder.derName), KACERT_Ok);
    EXPECT_EQ(toHex(responder.keyHash), "01 02");
    KI_ClearAnybuf(&responder.keyHash);
    give(responder.keyHash, data);
    EXPECT_EQ(KI_DecodeResponseData(&response.data, &responder.keyHash), KACERT_Ok);
    EXPECT_EQ(response.data.producedAt.generalizedValue, Y2020);
    give(response.signedOctets, seq({data, oid("2A 04"), tlv(4, {9})}));
    EXPECT_EQ(KI_DecodeBasicResponse(&response, &response.signedOctets), KACERT_Ok);
    EXPECT_EQ(toHex(response.signature.value), "09");
    OcspExtension &extensions = response.data.extensions;
    give(extensions.nonce, seq({seq({nonceType, tlv(4, {1})}), seq({nonceType, tlv(4, {2})})}));
    EXPECT_EQ(KI_DecodeOCSPExtension(&extensions, &extensions.nonce), KACERT_Ok);
    EXPECT_EQ(toHex(extensions.nonce), "02");
    OcspCrlId &crlId = extensions.crlId;
    give(crlId.type.oid, seq({oid("2A 03"), tlv(4, tlv(0xA0, tlv(0x16, text("u"))))}));
    EXPECT_EQ(KI_DecodeOCSPCrlId(&crlId, &crlId.type.oid), KACERT_Ok);
    EXPECT_EQ(toHex(crlId.url), "75");
    KI_FreeOCSPExtension(&extensions);
    KI_FreeName(responder.name.next);
    for (Anybuf *record : {&responder.derName, &responder.keyHash, &response.signature.algorithm.oid,
                           &response.signature.value, &response.signedOctets})
        KI_ClearAnybuf(record);
}

// Of the allocations of a response without extensions, two leave no result and no failure: that of the signed octets
// and that of the hook's parameter. The area of the hook is between them.
TEST(Regression, OcspAllocationsWithoutAFailure) {
    const KAHookFunc sign = [](const uint8_t *, uint32_t, uint8_t *, uint32_t *length, void *) {
        *length = 0;
        return 0;
    };
    const Exact key(hex("01 02"));
    std::string statuses;
    for (long nth = 1; nth <= 6; ++nth) {
        OcspBasicResponse response = {};
        response.data.responder.hasKeyHash = 1;
        response.data.responder.keyHash = key.record;
        response.signature.signFunc = sign;
        response.signature.signParameter = key.record;
        Anybuf *out = nullptr;
        failAllocation(Pool::Library, nth, false);
        const int32_t status = KI_EncodeBasicResponse(&response, &out);
        EXPECT_TRUE(endFailing());
        EXPECT_EQ(out, nullptr);
        statuses += std::to_string(status) + ' ';
        KI_ClearAnybuf(&response.signedOctets);
        KI_ClearAnybuf(&response.signature.value);
    }
    EXPECT_EQ(statuses, "100 0 100 0 100 100 ");
}

TEST(Regression, OcspWordsOfWhatIsRefused) {
    const auto wordsOf = [](const std::function<int32_t()> &call) {
        const Trace trace;
        EXPECT_EQ(call(), KACERT_InvalidItemErr);
        return trace.lines().back();
    };
    const std::string usual = "------------>The input is invalid item";
    EXPECT_EQ(wordsOf([] { return KI_DecodeResponseId(nullptr, nullptr); }), usual);
    EXPECT_EQ(wordsOf([] { return KI_EncodeBasicResponse(nullptr, nullptr); }), usual);
    EXPECT_EQ(wordsOf([] { return KI_EncodeOCSPSignature(nullptr, nullptr); }), usual);
    EXPECT_EQ(wordsOf([] { return KI_DecodeOCSPCrlId(nullptr, nullptr); }), "------------>The input is Invalid Item");
}

} // namespace
