// Decoders read the usual forms of names and entries without opening each level. With its lengths written longer an
// object takes the general way, and says the same.
#include "crypto.h"
#include "memory.h"

using namespace karil_test;

namespace {

// `der` with every length of a constructed element written longer than it need be.
Octets withLongLengths(Bytes der) {
    Octets out;
    while (der.size() >= 2) {
        size_t header = 2;
        size_t length = der[1];
        if (length > 0x80) {
            header += length & 0x7F;
            length = 0;
            for (size_t i = 2; i < header; ++i)
                length = length << 8 | der[i];
        }
        const Bytes content = der.subspan(header, length);
        const bool isConstructed = (der[0] & 0x20) != 0;
        const Octets inner = isConstructed ? withLongLengths(content) : Octets(content.begin(), content.end());
        out.push_back(der[0]);
        if (inner.size() > 0xFF)
            out.insert(out.end(), {0x83, static_cast<uint8_t>(inner.size() >> 16),
                                   static_cast<uint8_t>(inner.size() >> 8), static_cast<uint8_t>(inner.size())});
        else if (isConstructed || inner.size() > 0x7F)
            out.insert(out.end(), {0x81, static_cast<uint8_t>(inner.size())});
        else
            out.push_back(static_cast<uint8_t>(inner.size()));
        out.insert(out.end(), inner.begin(), inner.end());
        der = der.subspan(header + length);
    }
    return out;
}

std::string wordsOf(const Anybuf &record) {
    return std::to_string(record.tag) + ':' + toHex(bytesOf(record)) + ' ';
}

std::string wordsOf(const NameRecord &head) {
    std::string words;
    for (const NameRecord *record = head.next; record != nullptr; record = record->next)
        words += std::to_string(record->id) + ' ' + wordsOf(record->oid) + wordsOf(record->value);
    return words;
}

TEST(ShortForms, NamesOfSystemCertificates) {
    const Zone utc("UTC");
    size_t attributes = 0;
    for (const Octets &der : systemCertificates()) {
        const CertPtr usual = create<CertEncodeCtx>();
        const CertPtr general = create<CertEncodeCtx>();
        EXPECT_EQ(decode(*usual, der), decode(*general, withLongLengths(der)));
        for (const auto name : {&CertEncodeCtx::issuer, &CertEncodeCtx::subject})
            EXPECT_EQ(wordsOf((*usual).*name), wordsOf((*general).*name)) << toHex(der);
        for (const NameRecord *record = usual->subject.next; record != nullptr; record = record->next)
            ++attributes;
    }
    EXPECT_GE(attributes, systemCertificates().size());
}

// Numbers with and without a sign's zero, reasons, dates in summer and in winter.
TEST(ShortForms, EntriesOfLists) {
    const Zone zone("Europe/Berlin");
    const CrlPtr list = filled<CrlEncodeCtx>();
    for (int32_t i = 0; i < 3000; ++i) {
        EXPECT_EQ(set(*list, CRL_CERT_SERIALNUMBER, hex(i % 2 == 0 ? "80 01" : "7F")), KACERT_Ok);
        EXPECT_EQ(KACert_SetCrlAttributeInt(list.get(), CRL_CERT_REVOCATIONDATE, i * 650000 + 1), KACERT_Ok);
        EXPECT_EQ(i % 3 == 0 ? set(*list, CRLEX_CRLREASON, hex("03")) : KACERT_Ok, KACERT_Ok);
    }
    const Octets der = encode(*list);
    const CrlPtr usual = create<CrlEncodeCtx>();
    const CrlPtr general = create<CrlEncodeCtx>();
    ASSERT_EQ(decode(*usual, der), KACERT_Ok);
    ASSERT_EQ(decode(*general, withLongLengths(der)), KACERT_Ok);
    const RevokedEntry *other = general->firstRevoked;
    const RevokedEntry *given = list->firstRevoked;
    for (const RevokedEntry *entry = usual->firstRevoked; entry != nullptr; entry = entry->next) {
        ASSERT_NE(other, nullptr);
        EXPECT_EQ(wordsOf(entry->serialNumber) + wordsOf(entry->reason),
                  wordsOf(other->serialNumber) + wordsOf(other->reason));
        EXPECT_EQ(entry->hasReason + 2 * entry->hasEntryExtensions, other->hasReason + 2 * other->hasEntryExtensions);
        EXPECT_EQ(entry->revocationDate.utcValue, other->revocationDate.utcValue);
        EXPECT_EQ(wordsOf(entry->serialNumber), wordsOf(given->serialNumber));
        EXPECT_EQ(entry->hasReason, given->hasReason);
        other = other->next;
        given = given->next;
    }
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(given, nullptr);
}

// Any octet inside may be another one: both ways refuse it alike, or read the same. Only the outermost length is
// written longer here.
template <class Decode> void expectAlike(const Octets &inner, uint8_t tag, const Decode &decode) {
    for (size_t at = 0; at < inner.size(); ++at)
        for (int value = 0; value < 256; ++value) {
            Octets changed = inner;
            changed[at] = static_cast<uint8_t>(value);
            const auto size = static_cast<uint8_t>(changed.size());
            EXPECT_EQ(decode(seq({cat({{tag, size}, changed})})), decode(seq({cat({{tag, 0x81, size}, changed})})))
                << toHex(changed);
        }
}

TEST(ShortForms, ChangedOctets) {
    const Zone utc("UTC");
    expectAlike(hex("30 09 06 03 55 04 03 0C 02 41 42"), 0x31, [](const Octets &der) {
        NameList name;
        const Exact source(der, 16);
        const int32_t status = KI_DecodeIssuerSubject(&source.record, &name.head);
        return std::to_string(status) + ' ' + wordsOf(name.head);
    });
    for (const char *extensions : {"", "30 0C 30 0A 06 03 55 1D 15 04 03 0A 01 05"})
        expectAlike(cat({hex("02 02 00 81 17 0D"), text("250101120000Z"), hex(extensions)}), 0x30,
                    [](const Octets &der) {
                        const CrlPtr ctx = create<CrlEncodeCtx>();
                        const Exact source(der, 16);
                        std::string words = std::to_string(KI_CRL_DecodeRevokedCerts(&source.record, ctx.get()));
                        for (const RevokedEntry *entry = ctx->firstRevoked; entry != nullptr; entry = entry->next)
                            words += ' ' + wordsOf(entry->serialNumber) + wordsOf(entry->reason) +
                                     std::to_string(entry->revocationDate.utcValue) +
                                     std::to_string(entry->hasReason + 2 * entry->hasEntryExtensions);
                        return words;
                    });
}

} // namespace
