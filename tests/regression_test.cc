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

} // namespace
