// Faults that were there once, a row each.
#include "testkit.h"

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

// isUtc tells of a UTCTime that was read.
TEST(Regression, KindOfATimeThatCannotBeRead) {
    const Octets utc = tlv(0x17, text("200101000000Z")), general = tlv(0x18, text("200101000000Z"));
    const Octets broken = tlv(0x17, text("200101000000"));
    const struct {
        Octets from, to;
        uint32_t wantFrom, wantTo;
        int32_t status;
    } rows[] = {
        {broken, utc, 0, 0, KACERT_InvalidTimeEndErr},
        {utc, broken, 1, 0, KACERT_InvalidTimeEndErr},
        {general, utc, 0, 1, KACERT_Ok},
    };
    for (const auto &row : rows) {
        CertParts parts;
        parts.validity = seq({row.from, row.to});
        const CertPtr ctx = create<CertEncodeCtx>();
        EXPECT_EQ(decode(*ctx, parts.whole()), row.status);
        EXPECT_EQ(ctx->notBefore.isUtc, row.wantFrom);
        EXPECT_EQ(ctx->notAfter.isUtc, row.wantTo);
    }
}

// Both calls of a hook have one length variable. A signature above the bound of a certificate's area does no harm.
std::vector<uint32_t *> lengths;
template <uint32_t Size> int32_t sign(const uint8_t *, uint32_t, uint8_t *output, uint32_t *outputLength, void *) {
    lengths.push_back(outputLength);
    *outputLength = Size;
    if (output != nullptr)
        std::fill_n(output, Size, uint8_t{0xAB});
    return 0;
}
TEST(Regression, CallsOfAHook) {
    const CertPtr cert = filled<CertEncodeCtx>(sign<1024>);
    const CrlPtr crl = filled<CrlEncodeCtx>(sign<3>);
    const CsrPtr csr = filled<CsrEncodeCtx>(sign<3>);
    uint32_t length = 0;
    const std::pair<int32_t, std::function<int32_t()>> rows[] = {
        {KACERT_InvalidLengthErr, [&] { return KACert_EncodeCert(cert.get(), nullptr, &length); }},
        {KACERT_Ok, [&] { return KACert_EncodeCrl(crl.get(), nullptr, &length); }},
        {KACERT_Ok, [&] { return KACert_EncodeCsr(csr.get(), nullptr, &length); }},
    };
    for (const auto &[status, encodeIt] : rows) {
        lengths.clear();
        EXPECT_EQ(encodeIt(), status);
        ASSERT_EQ(lengths.size(), 2u);
        EXPECT_EQ(lengths[0], lengths[1]);
    }
}

// What was read of an entry that cannot be read to its end stays in the list; a list that cannot be opened adds none.
TEST(Regression, EntriesThatCannotBeRead) {
    const Octets date = tlv(0x17, text("200101000000Z")), good = seq({hex("02 01 07"), date});
    const auto reason = [](const Octets &value) { return seq({seq({oid("55 1D 15"), value})}); };
    const struct {
        Octets entries;
        int32_t status;
        std::string want; // of each entry: serial number, date, flags, reason
    } rows[] = {
        {cat({good, seq({hex("02 01 08")})}), KACERT_InvalidParamErr, "07 1577836800 0 ;08 0 0 ;"},
        {seq({hex("02 01 08"), tlv(0x18, text("200101000000Z"))}), KACERT_InvalidTagErr, "08 0 0 ;"},
        {seq({hex("02 01 08"), date, reason({})}), KACERT_InvalidParamErr, "08 1577836800 1 ;"},
        {seq({hex("02 01 08"), date, reason(hex("04 01 0A"))}), KACERT_LengthNotEqualErr, "08 1577836800 1 ;"},
        {cat({good, hex("02 01 08")}), KACERT_InvalidTagErr, "07 1577836800 0 ; 0 0 ;"},
        {cat({good, hex("30 05 02")}), KACERT_InvalidLengthErr, ""},
    };
    const Zone utc("UTC");
    for (const auto &row : rows) {
        const CrlPtr ctx = create<CrlDecodeCtx>();
        const Exact source(seq({row.entries}));
        EXPECT_EQ(KI_CRL_DecodeRevokedCerts(&source.record, ctx.get()), row.status) << row.want;
        std::string got;
        for (const RevokedEntry *entry = ctx->firstRevoked; entry != nullptr; entry = entry->next)
            got += toHex(entry->serialNumber) + " " + std::to_string(entry->revocationDate.utcValue) + " " +
                   std::to_string(entry->hasReason * entry->hasEntryExtensions) + " " + toHex(entry->reason) + ";";
        EXPECT_EQ(got, row.want);
        EXPECT_EQ(ctx->currentRevoked, ctx->firstRevoked);
    }
}

TEST(Regression, DecodePubKey) {
    const Octets type = oid(RsaEncryption), key = hex("03 03 00 AA BB");
    const struct {
        Octets source;
        int32_t status;
        std::string algorithm, key;
    } rows[] = {
        {seq({seq({type, hex("05 00")}), key}), KACERT_Ok, toHex(type), "AA BB"},
        {seq({seq({type}), key}), KACERT_Ok, toHex(type), "AA BB"},
        {seq({}), KACERT_InvalidParamErr, "", ""},
        {seq({seq({}), key}), KACERT_InvalidParamErr, "", ""},
        {seq({seq({type})}), KACERT_InvalidParamErr, "", ""},
        {seq({seq({type}), hex("03 80")}), KACERT_InvalidLengthErr, "", ""},
        {tlv(0x31, {seq({type}), key}), KACERT_InvalidTagErr, "", ""},
    };
    for (const auto &row : rows) {
        const Exact source(row.source);
        AlgorithmRecord algorithm = {7, {}};
        Anybuf read = {};
        EXPECT_EQ(KI_DecodePubKey(&source.record, &algorithm, &read), row.status) << toHex(row.source);
        EXPECT_EQ(toHex(algorithm.oid) + " " + toHex(read), row.algorithm + " " + row.key) << toHex(row.source);
        EXPECT_EQ(algorithm.id, 7u);
        KI_ClearAnybuf(&algorithm.oid);
        KI_ClearAnybuf(&read);
    }
}

} // namespace
