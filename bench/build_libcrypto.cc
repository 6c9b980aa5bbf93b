// The sample certificate, built by libcrypto, as far as its to-be-signed part.
#include "bench.h"
#include "sample.h"

#include <openssl/x509.h>
#include <openssl/x509v3.h>

namespace karil_bench {

namespace {

void addNames(X509_NAME *name, std::span<const sample::NameValue> values) {
    for (const sample::NameValue &value : values)
        must(X509_NAME_add_entry_by_NID(name, value.nid, value.type, bytesOf(value.text).data(),
                                        static_cast<int>(value.text.size()), -1, 0) == 1,
             "libcrypto takes a name attribute");
}

void setOctets(ASN1_STRING *string, Bytes octets) {
    must(ASN1_STRING_set(string, octets.data(), static_cast<int>(octets.size())) == 1, "libcrypto takes octets");
}

void addExtension(X509 *certificate, int nid, int critical, void *value) {
    must(X509_add1_ext_i2d(certificate, nid, value, critical, X509V3_ADD_APPEND) == 1, "libcrypto takes an extension");
}

GENERAL_NAME *generalName(int form, int type, Bytes octets) {
    GENERAL_NAME *name = GENERAL_NAME_new();
    ASN1_STRING *string = ASN1_STRING_type_new(type);
    must(name != nullptr && string != nullptr, "libcrypto has memory");
    setOctets(string, octets);
    GENERAL_NAME_set0_value(name, form, string);
    return name;
}

GENERAL_NAME *uriName(std::string_view uri) {
    return generalName(GEN_URI, V_ASN1_IA5STRING, bytesOf(uri));
}

void addKeyIds(X509 *certificate) {
    Owned<AUTHORITY_KEYID, AUTHORITY_KEYID_free> authority(AUTHORITY_KEYID_new());
    authority->keyid = ASN1_OCTET_STRING_new();
    setOctets(authority->keyid, sample::IssuerKeyId);
    addExtension(certificate, NID_authority_key_identifier, 0, authority.get());
    Owned<ASN1_OCTET_STRING, ASN1_OCTET_STRING_free> own(ASN1_OCTET_STRING_new());
    setOctets(own.get(), sample::KeyId);
    addExtension(certificate, NID_subject_key_identifier, 0, own.get());
}

void freePolicies(CERTIFICATEPOLICIES *policies) {
    CERTIFICATEPOLICIES_free(policies);
}

void addPolicies(X509 *certificate) {
    POLICYQUALINFO *qualifier = POLICYQUALINFO_new();
    qualifier->pqualid = OBJ_nid2obj(NID_id_qt_cps);
    qualifier->d.cpsuri = ASN1_IA5STRING_new();
    setOctets(qualifier->d.cpsuri, bytesOf(sample::Cps));
    POLICYINFO *policy = POLICYINFO_new();
    policy->policyid = OBJ_nid2obj(NID_any_policy);
    policy->qualifiers = sk_POLICYQUALINFO_new_null();
    sk_POLICYQUALINFO_push(policy->qualifiers, qualifier);
    Owned<CERTIFICATEPOLICIES, freePolicies> policies(CERTIFICATEPOLICIES_new());
    sk_POLICYINFO_push(policies.get(), policy);
    addExtension(certificate, NID_certificate_policies, 0, policies.get());
}

void addAltNames(X509 *certificate) {
    GENERAL_NAME *directory = GENERAL_NAME_new();
    X509_NAME *name = X509_NAME_new();
    addNames(name, {&sample::IssuerAlt, 1});
    GENERAL_NAME_set0_value(directory, GEN_DIRNAME, name);
    Owned<GENERAL_NAMES, GENERAL_NAMES_free> issuer(GENERAL_NAMES_new());
    sk_GENERAL_NAME_push(issuer.get(), directory);
    addExtension(certificate, NID_issuer_alt_name, 0, issuer.get());

    Owned<GENERAL_NAMES, GENERAL_NAMES_free> subject(GENERAL_NAMES_new());
    sk_GENERAL_NAME_push(subject.get(), generalName(GEN_EMAIL, V_ASN1_IA5STRING, bytesOf(sample::Mail)));
    sk_GENERAL_NAME_push(subject.get(), generalName(GEN_DNS, V_ASN1_IA5STRING, bytesOf(sample::Dns)));
    sk_GENERAL_NAME_push(subject.get(), uriName(sample::Uri));
    sk_GENERAL_NAME_push(subject.get(), generalName(GEN_IPADD, V_ASN1_OCTET_STRING, sample::Address));
    addExtension(certificate, NID_subject_alt_name, 0, subject.get());
}

void addConstraintsAndUsages(X509 *certificate) {
    Owned<BASIC_CONSTRAINTS, BASIC_CONSTRAINTS_free> constraints(BASIC_CONSTRAINTS_new());
    constraints->ca = 0xFF;
    constraints->pathlen = ASN1_INTEGER_new();
    must(ASN1_INTEGER_set(constraints->pathlen, sample::PathLength) == 1, "libcrypto takes the path length");
    addExtension(certificate, NID_basic_constraints, 1, constraints.get());

    Owned<ASN1_BIT_STRING, ASN1_BIT_STRING_free> usage(ASN1_BIT_STRING_new());
    setOctets(usage.get(), {&sample::KeyUsage, 1});
    addExtension(certificate, NID_key_usage, 1, usage.get());

    Owned<EXTENDED_KEY_USAGE, EXTENDED_KEY_USAGE_free> purposes(EXTENDED_KEY_USAGE_new());
    sk_ASN1_OBJECT_push(purposes.get(), OBJ_nid2obj(NID_server_auth));
    sk_ASN1_OBJECT_push(purposes.get(), OBJ_nid2obj(NID_client_auth));
    addExtension(certificate, NID_ext_key_usage, 0, purposes.get());
}

void addDistributionPoint(X509 *certificate) {
    DIST_POINT *point = DIST_POINT_new();
    point->distpoint = DIST_POINT_NAME_new();
    point->distpoint->type = 0;
    point->distpoint->name.fullname = GENERAL_NAMES_new();
    sk_GENERAL_NAME_push(point->distpoint->name.fullname, uriName(sample::CrlUri));
    Owned<CRL_DIST_POINTS, CRL_DIST_POINTS_free> points(CRL_DIST_POINTS_new());
    sk_DIST_POINT_push(points.get(), point);
    addExtension(certificate, NID_crl_distribution_points, 0, points.get());
}

ACCESS_DESCRIPTION *access(int method, std::string_view uri) {
    ACCESS_DESCRIPTION *description = ACCESS_DESCRIPTION_new();
    GENERAL_NAME_free(description->location);
    description->method = OBJ_nid2obj(method);
    description->location = uriName(uri);
    return description;
}

void addAuthorityInfo(X509 *certificate) {
    Owned<AUTHORITY_INFO_ACCESS, AUTHORITY_INFO_ACCESS_free> info(AUTHORITY_INFO_ACCESS_new());
    sk_ACCESS_DESCRIPTION_push(info.get(), access(NID_ad_OCSP, sample::OcspUri));
    sk_ACCESS_DESCRIPTION_push(info.get(), access(NID_ad_ca_issuers, sample::CaIssuersUri));
    addExtension(certificate, NID_info_access, 0, info.get());
}

void addPrivate(X509 *certificate) {
    static const ASN1_OBJECT *const oid = OBJ_txt2obj("2.999.1", 1);
    Owned<ASN1_OCTET_STRING, ASN1_OCTET_STRING_free> value(ASN1_OCTET_STRING_new());
    setOctets(value.get(), bytesOf(sample::PrivateDer));
    Owned<X509_EXTENSION, X509_EXTENSION_free> extension(X509_EXTENSION_create_by_OBJ(nullptr, oid, 0, value.get()));
    must(X509_add_ext(certificate, extension.get(), -1) == 1, "libcrypto takes a private extension");
}

// libcrypto keeps the block: it comes from its own memory.
void setPublicKey(X509 *certificate) {
    void *octets = OPENSSL_memdup(sample::PublicKey, sizeof sample::PublicKey);
    must(X509_PUBKEY_set0_param(X509_get_X509_PUBKEY(certificate), OBJ_nid2obj(NID_rsaEncryption), V_ASN1_NULL, nullptr,
                                static_cast<uint8_t *>(octets), sizeof sample::PublicKey) == 1,
         "libcrypto takes the key");
}

// Signing sets this field elsewhere; without signing there is no other way to it.
void setSignatureAlgorithm(X509 *certificate) {
    auto *algorithm = const_cast<X509_ALGOR *>(X509_get0_tbs_sigalg(certificate));
    must(X509_ALGOR_set0(algorithm, OBJ_nid2obj(NID_sha1WithRSAEncryption), V_ASN1_NULL, nullptr) == 1,
         "libcrypto takes the algorithm");
}

} // namespace

Octets encodeTbsWithLibcrypto() {
    Owned<X509, X509_free> owner(X509_new());
    X509 *certificate = owner.get();
    must(X509_set_version(certificate, X509_VERSION_3) == 1, "libcrypto takes the version");
    setOctets(X509_get_serialNumber(certificate), sample::Serial);
    setSignatureAlgorithm(certificate);
    addNames(X509_get_issuer_name(certificate), sample::Issuer);
    ASN1_TIME_set(X509_getm_notBefore(certificate), sample::NotBefore);
    ASN1_TIME_set(X509_getm_notAfter(certificate), sample::NotAfter);
    addNames(X509_get_subject_name(certificate), sample::Subject);
    setPublicKey(certificate);
    addKeyIds(certificate);
    addPolicies(certificate);
    addAltNames(certificate);
    addConstraintsAndUsages(certificate);
    addDistributionPoint(certificate);
    addAuthorityInfo(certificate);
    addPrivate(certificate);
    uint8_t *der = nullptr;
    const int length = i2d_re_X509_tbs(certificate, &der);
    must(length > 0, "libcrypto encodes");
    Octets octets(der, der + length);
    OPENSSL_free(der);
    return octets;
}

} // namespace karil_bench
