// libcrypto's own X.509 reads what karil writes and tells what karil must read.
#include "crypto.h"
#include "rows.h"

using namespace karil_test;

namespace {

constexpr auto parse = parsed<d2i_X509, X509_free>;

TEST(CertOracle, LibcryptoReadsAndVerifiesWhatIsWritten) {
    const Zone utc("UTC");
    const CertPtr ctx = filled<CertEncodeCtx>(signBySha1, &keyPair().secret, sizeof keyPair().secret);
    set(*ctx, CERT_SUBJECTPUBLICKEYINFO, publicKeyOf(keyOf(keyPair().secret)));
    for (const Row &row : rowsOf("Samples", "Oracle"))
        EXPECT_EQ(takeAll(*ctx, row, "settings"), KACERT_Ok);
    const auto cert = parse(encode(*ctx));
    ASSERT_NE(cert, nullptr);
    EVP_PKEY *key = X509_get0_pubkey(cert.get());
    EXPECT_EQ(EVP_PKEY_get_bits(key), 1024);
    EXPECT_EQ(X509_verify(cert.get(), key), 1);
    EXPECT_EQ(X509_get_version(cert.get()), 2);
    EXPECT_EQ(toHex(octetsOf(X509_get0_serialNumber(cert.get()))), "F1 02 03");
    EXPECT_EQ(X509_get_key_usage(cert.get()), static_cast<uint32_t>(KU_KEY_CERT_SIGN | KU_CRL_SIGN));
    EXPECT_EQ(X509_get_extended_key_usage(cert.get()) & XKU_SSL_SERVER, static_cast<uint32_t>(XKU_SSL_SERVER));
    EXPECT_EQ(X509_get_pathlen(cert.get()), 2);
    EXPECT_EQ(X509_check_host(cert.get(), "www.example.com", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_ip_asc(cert.get(), "127.0.0.1", 0), 1);
    EXPECT_EQ(toHex(octetsOf(X509_get0_subject_key_id(cert.get()))), "04 05");
    EXPECT_EQ(toHex(octetsOf(X509_get0_authority_key_id(cert.get()))), "01 02 03");
    X509_NAME *subject = X509_get_subject_name(cert.get());
    const int at = X509_NAME_get_index_by_NID(subject, NID_organizationName, -1);
    EXPECT_EQ(toHex(octetsOf(X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, at)))), "4E 2D 56 FD");
    // All extensions parse: libcrypto marks a certificate with one that does not.
    EXPECT_EQ(X509_get_extension_flags(cert.get()) & EXFLAG_INVALID, 0u);
    for (const int nid : {NID_certificate_policies, NID_crl_distribution_points, NID_info_access, NID_ext_key_usage}) {
        void *value = X509_get_ext_d2i(cert.get(), nid, nullptr, nullptr);
        EXPECT_NE(value, nullptr) << nid;
        ASN1_item_free(static_cast<ASN1_VALUE *>(value), ASN1_ITEM_ptr(X509V3_EXT_get_nid(nid)->it));
    }
    EXPECT_EQ(ASN1_TIME_cmp_time_t(X509_get0_notBefore(cert.get()), Y2020), 0);
    EXPECT_EQ(ASN1_TIME_cmp_time_t(X509_get0_notAfter(cert.get()), Y2030), 0);
}

// In 64 bits, whatever a time_t has.
int64_t timeOf(const ASN1_TIME *time) {
    const std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> epoch(ASN1_TIME_set(nullptr, 0), ASN1_TIME_free);
    int days = 0;
    int seconds = 0;
    ASN1_TIME_diff(&days, &seconds, epoch.get(), time);
    return days * int64_t{86400} + seconds;
}

TEST(CertOracle, SystemCertificatesDecodeAsLibcryptoReadsThem) {
    const Zone utc("UTC");
    size_t decodedCount = 0;
    for (const Octets &der : systemCertificates()) {
        const auto theirs = parse(der);
        const CertPtr ctx = create<CertEncodeCtx>();
        const int32_t status = decode(*ctx, der);
        // What does not decode has a date beyond 32 bits; the few with four-digit years end there, too.
        if (timeOf(X509_get0_notAfter(theirs.get())) > INT32_MAX) {
            EXPECT_NE(status, KACERT_Ok);
            continue;
        }
        ASSERT_EQ(status, KACERT_Ok) << toHex(der);
        ++decodedCount;
        const ASN1_BIT_STRING *signature = nullptr;
        X509_get0_signature(&signature, nullptr, theirs.get());
        const std::pair<int32_t, Octets> answers[] = {
            {CERT_ISSUER_DERDN, derOf(i2d_X509_NAME, X509_get_issuer_name(theirs.get()))},
            {CERT_SUBJECT_DERDN, derOf(i2d_X509_NAME, X509_get_subject_name(theirs.get()))},
            {CERT_SERIALNUMBER, octetsOf(X509_get0_serialNumber(theirs.get()))},
            {CERT_SUBJECTPUBLICKEYINFO, octetsOf(X509_get0_pubkey_bitstr(theirs.get()))},
            {CERT_CA_SIGNATURE, octetsOf(signature)},
            {CERTEX_SUBJECTKEYIDENTIFIER, octetsOf(X509_get0_subject_key_id(theirs.get()))},
        };
        for (const auto &[id, want] : answers)
            EXPECT_EQ(get(*ctx, id), toHex(want)) << id;
        EXPECT_EQ(ctx->notBefore.utcValue, timeOf(X509_get0_notBefore(theirs.get())));
        EXPECT_EQ(ctx->notAfter.utcValue, timeOf(X509_get0_notAfter(theirs.get())));
        // Every extension is either one of the eight known ones or a private one.
        const CertExtensions &ext = ctx->extensions;
        int count = ext.hasAuthorityKeyId + ext.hasSubjectKeyId + ext.hasKeyUsage + ext.hasSubjectAltName +
                    ext.hasIssuerAltName + ext.hasBasicConstraints + ext.hasExtKeyUsage + ext.hasCrlDistPoints;
        for (const PrivateExtensionNode *node = ext.privateExtensions; node != nullptr; node = node->next)
            ++count;
        EXPECT_EQ(count, X509_get_ext_count(theirs.get()));
    }
    EXPECT_GT(decodedCount, 50u);
}

} // namespace
