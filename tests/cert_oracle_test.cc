// libcrypto's own X.509 reads what karil writes and tells what karil must read.
#include "cert_support.h"

#include "karil/crypt.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <gtest/gtest.h>

#include <climits>

using namespace karil_test;

namespace {

struct FreeX509 {
    void operator()(X509 *cert) const { X509_free(cert); }
};
using X509Ptr = std::unique_ptr<X509, FreeX509>;

X509Ptr parse(const Octets &der) {
    const uint8_t *at = der.data();
    X509Ptr cert(d2i_X509(nullptr, &at, static_cast<long>(der.size())));
    return cert != nullptr && at == der.data() + der.size() ? std::move(cert) : nullptr;
}

// RSAPublicKey ::= SEQUENCE { modulus, publicExponent }, from the record.
Octets publicKeyDer(const RsaPublicKeyRecord &key) {
    const auto number = [](const uint8_t(&field)[256]) {
        Octets octets(field, field + 256);
        while (octets.size() > 1 && octets[0] == 0) octets.erase(octets.begin());
        if ((octets[0] & 0x80) != 0) octets.insert(octets.begin(), 0);
        return tlv(0x02, octets);
    };
    return seq({number(key.modulus), number(key.exponent)});
}

int32_t signSha1(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *parameter) {
    if (output == nullptr) return 0;
    return KA_PKCS7_SignedData(KA_DIGEST_SHA1, input, inputLength, output, outputLength,
                               static_cast<const RsaPrivateKeyRecord *>(parameter));
}

TEST(CertOracle, LibcryptoReadsAndVerifiesWhatIsWritten) {
    const Zone utc("UTC");
    RsaPublicKeyRecord publicKey;
    RsaPrivateKeyRecord privateKey;
    ASSERT_EQ(KA_PKCS7_GenRSAKeyPair(&publicKey, &privateKey), KACERT_Ok);
    const CertPtr ctx = newCert();
    fillCert(ctx);
    setChar(ctx, CERT_SUBJECTPUBLICKEYINFO, publicKeyDer(publicKey));
    for (const Row &row : rowsOf("Samples", "Oracle")) EXPECT_EQ(takeAll(ctx, row, "settings"), KACERT_Ok);
    ASSERT_EQ(KACert_SetCertSignFunc(ctx.get(), signSha1, &privateKey, sizeof privateKey), KACERT_Ok);
    const X509Ptr cert = parse(encoded(ctx));
    ASSERT_NE(cert, nullptr);

    EVP_PKEY *key = X509_get0_pubkey(cert.get());
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(EVP_PKEY_get_bits(key), 1024);
    EXPECT_EQ(X509_verify(cert.get(), key), 1);
    EXPECT_EQ(X509_get_version(cert.get()), 2);
    BIGNUM *serial = ASN1_INTEGER_to_BN(X509_get0_serialNumber(cert.get()), nullptr);
    EXPECT_EQ(BN_get_word(serial), 0xF10203u);
    BN_free(serial);
    EXPECT_EQ(X509_get_key_usage(cert.get()), static_cast<uint32_t>(KU_KEY_CERT_SIGN | KU_CRL_SIGN));
    EXPECT_EQ(X509_get_extended_key_usage(cert.get()) & XKU_SSL_SERVER, static_cast<uint32_t>(XKU_SSL_SERVER));
    EXPECT_EQ(X509_get_pathlen(cert.get()), 2);
    EXPECT_EQ(X509_check_host(cert.get(), "www.example.com", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_ip_asc(cert.get(), "127.0.0.1", 0), 1);
    EXPECT_EQ(toHex(X509_get0_subject_key_id(cert.get())->data, 2), "04 05");
    EXPECT_EQ(toHex(X509_get0_authority_key_id(cert.get())->data, 3), "01 02 03");
    int lastNid = X509_NAME_get_index_by_NID(X509_get_subject_name(cert.get()), NID_organizationName, -1);
    unsigned char *utf8 = nullptr;
    const int length = ASN1_STRING_to_UTF8(
        &utf8, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(X509_get_subject_name(cert.get()), lastNid)));
    EXPECT_EQ(std::string(reinterpret_cast<char *>(utf8), static_cast<size_t>(length)), "中国");
    OPENSSL_free(utf8);
    // All extensions parse: libcrypto marks a certificate with one that does not.
    EXPECT_EQ(X509_get_extension_flags(cert.get()) & EXFLAG_INVALID, 0u);
    for (const int nid : {NID_certificate_policies, NID_crl_distribution_points, NID_info_access, NID_ext_key_usage}) {
        int critical = 0;
        void *value = X509_get_ext_d2i(cert.get(), nid, &critical, nullptr);
        EXPECT_NE(value, nullptr) << nid;
        const X509V3_EXT_METHOD *method = X509V3_EXT_get_nid(nid);
        ASN1_item_free(static_cast<ASN1_VALUE *>(value), ASN1_ITEM_ptr(method->it));
    }
    EXPECT_EQ(ASN1_TIME_cmp_time_t(X509_get0_notBefore(cert.get()), 1577836800), 0);
    EXPECT_EQ(ASN1_TIME_cmp_time_t(X509_get0_notAfter(cert.get()), 1893456000), 0);
}

template <class T> std::string derOf(int (*write)(const T *, unsigned char **), const T *value) {
    unsigned char *der = nullptr;
    const int size = write(value, &der);
    const std::string octets = toHex(der, static_cast<size_t>(size));
    OPENSSL_free(der);
    return octets;
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
    const std::vector<Octets> &all = systemCertificates();
    ASSERT_GT(all.size(), 50u);
    size_t decodedCount = 0;
    for (const Octets &der : all) {
        const X509Ptr oracle = parse(der);
        ASSERT_NE(oracle, nullptr);
        const CertPtr ctx = newCert();
        const int32_t status = decode(ctx, der);
        // What does not decode has a date beyond 32 bits; the few with four-digit years end there, too.
        if (timeOf(X509_get0_notAfter(oracle.get())) > INT32_MAX) {
            EXPECT_NE(status, KACERT_Ok);
            continue;
        }
        ASSERT_EQ(status, KACERT_Ok) << toHex(der);
        ++decodedCount;
        EXPECT_EQ(getChar(ctx, CERT_ISSUER_DERDN), derOf(i2d_X509_NAME, X509_get_issuer_name(oracle.get())));
        EXPECT_EQ(getChar(ctx, CERT_SUBJECT_DERDN), derOf(i2d_X509_NAME, X509_get_subject_name(oracle.get())));
        BIGNUM *serial = ASN1_INTEGER_to_BN(X509_get0_serialNumber(oracle.get()), nullptr);
        Octets magnitude(static_cast<size_t>(BN_num_bytes(serial)));
        BN_bn2bin(serial, magnitude.data());
        BN_free(serial);
        EXPECT_EQ(getChar(ctx, CERT_SERIALNUMBER), magnitude.empty() ? "00" : toHex(magnitude));
        const ASN1_BIT_STRING *key = X509_get0_pubkey_bitstr(oracle.get());
        EXPECT_EQ(getChar(ctx, CERT_SUBJECTPUBLICKEYINFO), toHex(key->data, static_cast<size_t>(key->length)));
        const ASN1_BIT_STRING *signature = nullptr;
        X509_get0_signature(&signature, nullptr, oracle.get());
        EXPECT_EQ(getChar(ctx, CERT_CA_SIGNATURE), toHex(signature->data, static_cast<size_t>(signature->length)));
        EXPECT_EQ(ctx->notBefore.utcValue, timeOf(X509_get0_notBefore(oracle.get())));
        EXPECT_EQ(ctx->notAfter.utcValue, timeOf(X509_get0_notAfter(oracle.get())));
        const ASN1_OCTET_STRING *keyId = X509_get0_subject_key_id(oracle.get());
        EXPECT_EQ(getChar(ctx, CERTEX_SUBJECTKEYIDENTIFIER),
                  keyId == nullptr ? "" : toHex(keyId->data, static_cast<size_t>(keyId->length)));
        // Every extension is either one of the eight known ones or a private one.
        const CertExtensions &ext = ctx->extensions;
        int count = ext.hasAuthorityKeyId + ext.hasSubjectKeyId + ext.hasKeyUsage + ext.hasSubjectAltName +
                    ext.hasIssuerAltName + ext.hasBasicConstraints + ext.hasExtKeyUsage + ext.hasCrlDistPoints;
        for (const PrivateExtensionNode *node = ext.privateExtensions; node != nullptr; node = node->next) ++count;
        EXPECT_EQ(count, X509_get_ext_count(oracle.get()));
    }
    EXPECT_GT(decodedCount, 50u);
}

} // namespace
