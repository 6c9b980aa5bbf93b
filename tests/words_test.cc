// What headers say in words and numbers: identifiers, statuses, the version.
#include "crypto.h"
#include "karil/oids.h"
#include "karil/status.h"
#include "karil/version.h"

#include <fstream>
#include <regex>
#include <set>

using namespace karil_test;

namespace {

struct Named {
    Bytes octets;
    int nid; // by which libcrypto knows it
};
constexpr Named Identifiers[] = {
    {KARIL_OID_RSA_ENCRYPTION, NID_rsaEncryption},
    {KARIL_OID_MD2_WITH_RSA, NID_md2WithRSAEncryption},
    {KARIL_OID_MD5_WITH_RSA, NID_md5WithRSAEncryption},
    {KARIL_OID_SHA1_WITH_RSA, NID_sha1WithRSAEncryption},
    {KARIL_OID_SHA256_WITH_RSA, NID_sha256WithRSAEncryption},
    {KARIL_OID_SHA384_WITH_RSA, NID_sha384WithRSAEncryption},
    {KARIL_OID_SHA512_WITH_RSA, NID_sha512WithRSAEncryption},
    {KARIL_OID_EC_PUBLIC_KEY, NID_X9_62_id_ecPublicKey},
    {KARIL_OID_ECDSA_WITH_SHA256, NID_ecdsa_with_SHA256},
    {KARIL_OID_MD2, NID_md2},
    {KARIL_OID_MD5, NID_md5},
    {KARIL_OID_SHA1, NID_sha1},
    {KARIL_OID_SHA256, NID_sha256},
    {KARIL_OID_SHA384, NID_sha384},
    {KARIL_OID_SHA512, NID_sha512},
    {KARIL_OID_RC2_CBC, NID_rc2_cbc},
    {KARIL_OID_RC4, NID_rc4},
    {KARIL_OID_DES_EDE3_CBC, NID_des_ede3_cbc},
    {KARIL_OID_AES128_CBC, NID_aes_128_cbc},
    {KARIL_OID_AES256_CBC, NID_aes_256_cbc},
    {KARIL_OID_PBE_SHA1_RC4_128, NID_pbe_WithSHA1And128BitRC4},
    {KARIL_OID_PBE_SHA1_RC4_40, NID_pbe_WithSHA1And40BitRC4},
    {KARIL_OID_PBE_SHA1_3DES, NID_pbe_WithSHA1And3_Key_TripleDES_CBC},
    {KARIL_OID_PBE_SHA1_2DES, NID_pbe_WithSHA1And2_Key_TripleDES_CBC},
    {KARIL_OID_PBE_SHA1_RC2_128, NID_pbe_WithSHA1And128BitRC2_CBC},
    {KARIL_OID_PBE_SHA1_RC2_40, NID_pbe_WithSHA1And40BitRC2_CBC},
    {KARIL_OID_DATA, NID_pkcs7_data},
    {KARIL_OID_SIGNED_DATA, NID_pkcs7_signed},
    {KARIL_OID_ENVELOPED_DATA, NID_pkcs7_enveloped},
    {KARIL_OID_SIGNED_AND_ENVELOPED_DATA, NID_pkcs7_signedAndEnveloped},
    {KARIL_OID_DIGESTED_DATA, NID_pkcs7_digest},
    {KARIL_OID_ENCRYPTED_DATA, NID_pkcs7_encrypted},
    {KARIL_OID_KEY_BAG, NID_keyBag},
    {KARIL_OID_SHROUDED_KEY_BAG, NID_pkcs8ShroudedKeyBag},
    {KARIL_OID_CERT_BAG, NID_certBag},
    {KARIL_OID_CRL_BAG, NID_crlBag},
    {KARIL_OID_SECRET_BAG, NID_secretBag},
    {KARIL_OID_SAFE_CONTENTS_BAG, NID_safeContentsBag},
    {KARIL_OID_X509_CERTIFICATE, NID_x509Certificate},
    {KARIL_OID_X509_CRL, NID_x509Crl},
    {KARIL_OID_FRIENDLY_NAME, NID_friendlyName},
    {KARIL_OID_LOCAL_KEY_ID, NID_localKeyID},
    {KARIL_OID_CONTENT_TYPE, NID_pkcs9_contentType},
    {KARIL_OID_MESSAGE_DIGEST, NID_pkcs9_messageDigest},
    {KARIL_OID_SIGNING_TIME, NID_pkcs9_signingTime},
    {KARIL_OID_CHALLENGE_PASSWORD, NID_pkcs9_challengePassword},
    {KARIL_OID_EXTENSION_REQUEST, NID_ext_req},
    {KARIL_OID_SUBJECT_KEY_ID, NID_subject_key_identifier},
    {KARIL_OID_KEY_USAGE, NID_key_usage},
    {KARIL_OID_SUBJECT_ALT_NAME, NID_subject_alt_name},
    {KARIL_OID_ISSUER_ALT_NAME, NID_issuer_alt_name},
    {KARIL_OID_BASIC_CONSTRAINTS, NID_basic_constraints},
    {KARIL_OID_CRL_NUMBER, NID_crl_number},
    {KARIL_OID_CRL_DIST_POINTS, NID_crl_distribution_points},
    {KARIL_OID_CERT_POLICIES, NID_certificate_policies},
    {KARIL_OID_AUTHORITY_KEY_ID, NID_authority_key_identifier},
    {KARIL_OID_EXT_KEY_USAGE, NID_ext_key_usage},
    {KARIL_OID_AUTHORITY_INFO, NID_info_access},
    {KARIL_OID_OCSP_BASIC, NID_id_pkix_OCSP_basic},
};

TEST(Words, IdentifiersAreThoseOfLibcrypto) {
    for (const Named &named : Identifiers) {
        const ASN1_OBJECT *object = OBJ_nid2obj(named.nid);
        EXPECT_EQ(toHex(named.octets), toHex({OBJ_get0_data(object), OBJ_length(object)})) << OBJ_nid2sn(named.nid);
    }
}

// Every status of base.h has a name and a sentence of its own, and no other number has.
TEST(Words, StatusesOfTheHeader) {
    std::ifstream file(KARIL_BASE_PATH);
    const std::string header(std::istreambuf_iterator<char>(file), {});
    const std::regex row("\n    (KA(?:CERT|PKCS7)_\\w+) = (\\d+)");
    std::map<int32_t, std::string> names;
    for (std::sregex_iterator at(header.begin(), header.end(), row), end; at != end; ++at)
        names[std::stoi((*at)[2])] = (*at)[1];
    EXPECT_GE(names.size(), 29u);
    std::set<std::string> sentences;
    for (int32_t status = -300; status <= 300; ++status) {
        const auto found = names.find(status);
        EXPECT_EQ(karil_status_name(status), found != names.end() ? found->second : "unknown status");
        sentences.insert(karil_status_text(status));
    }
    EXPECT_EQ(sentences.size(), names.size() + 1);
}

TEST(Words, VersionIsOneNumber) {
    const std::string parts = std::to_string(KARIL_VERSION_MAJOR) + '.' + std::to_string(KARIL_VERSION_MINOR) + '.' +
                              std::to_string(KARIL_VERSION_PATCH);
    EXPECT_EQ(parts, KARIL_VERSION);
    EXPECT_EQ(parts, KARIL_BUILT_VERSION);
}

} // namespace
