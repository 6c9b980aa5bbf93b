#include "samples.h"

#include <openssl/bio.h>
#include <openssl/pem.h>

namespace karil_test {

namespace {

constexpr char Chinese[] = "\xD6\xD0\xCE\xC4"; // two characters of code page 936

// The ten name attributes of one list from its first id on; text outside PrintableString where any is taken.
void addNames(std::vector<Setting> &all, int32_t first) {
    const char *const values[] = {"CN",    Chinese, "Locality", "Organization", "Unit",
                                  Chinese, "a@b",   "Street",   "100",          "1"};
    for (int32_t i = 0; i < 10; ++i) all.push_back({first + i, text(values[i])});
    all.push_back({first + 4, text("Second unit")});
}

void addAltNames(std::vector<Setting> &all, int32_t first) {
    const char *const values[] = {"CN", "State", Chinese, "Organization", "Unit", "Name", "alt@b"};
    for (int32_t i = 0; i < 7; ++i) all.push_back({first + i, text(values[i])});
}

struct FreeBio {
    void operator()(BIO *bio) const { BIO_free(bio); }
};

std::vector<Octets> readBundle() {
    std::vector<Octets> all;
    const std::unique_ptr<BIO, FreeBio> file(BIO_new_file("/etc/ssl/certs/ca-certificates.crt", "r"));
    char *name = nullptr;
    char *header = nullptr;
    uint8_t *data = nullptr;
    long size = 0;
    while (file != nullptr && PEM_read_bio(file.get(), &name, &header, &data, &size) == 1) {
        all.emplace_back(data, data + size);
        OPENSSL_free(name);
        OPENSSL_free(header);
        OPENSSL_free(data);
    }
    return all;
}

} // namespace

const std::vector<Setting> &everySetting() {
    static const std::vector<Setting> settings = [] {
        std::vector<Setting> all = {
            {CERT_OUTER_SIGNATUREALGORITHM, hex(Sha1WithRsa)},
            {CERT_CA_SIGNATURE, hex("01")},
            {CERT_SERIALNUMBER, hex("85 01")},
            {CERT_INNER_SIGNATUREALGORITHM, hex(Sha1WithRsa)},
            {CERT_PUBLICKEY_ALGORITHM, hex(RsaEncryption)},
            {CERT_SUBJECTPUBLICKEYINFO, hex("30 06 02 01 05 02 01 03")},
            {CERTEX_AUTHORITYKEYIDENTIFIER, hex("01 02 03")},
            {CERTEX_AUTHORITYKEYIDENTIFIER_CRITICAL, hex("01")},
            {CERTEX_SUBJECTKEYIDENTIFIER, hex("04 05 06")},
            {CERTEX_SUBJECTKEYIDENTIFIER_CRITICAL, hex("00")},
            {CERTEX_KEYUSAGE, hex("A0")},
            {CERTEX_KEYUSAGE_CRITICAL, hex("01")},
            {CERTEX_CERTPOLICYID, hex("2A 03 04")},
            {CERTEX_CERTPOLICY_CPS, text("http://cps/1")},
            {CERTEX_CERTPOLICY_CPS, text("http://cps/2")},
            {CERTEX_CERTPOLICY_CRITICAL, hex("01")},
            {CERTEX_AUTHORITY, hex("01")},
            {CERTEX_PATHLENCONSTRAINT, hex("03")},
            {CERTEX_BASICCONSTRAINTS_CRITICAL, hex("01")},
            {CERTEX_EXTKEY_USAGE, hex("C0 00 00 00")},
            {CERTEX_EXTKEY_USAGE_OID_DEFINE, text("1.2.3.4")},
            {CERTEX_EXTKEY_CRITICAL, hex("01")},
            {CERTEX_CRLDIST_FULLNAME, text("http://crl/1")},
            {CERTEX_CRLDIST_FULLNAME, text("http://crl/2")},
            {CERTEX_CRLDIST_CRITICAL, hex("01")},
            {CERTEX_AUTHORITYINFO_OCSP, text("http://ocsp")},
            {CERTEX_AUTHORITYINFO_CAISSUERS, text("http://issuer")},
            {CERTEX_AUTHORITYINFO_CRITICAL, hex("01")},
            {CERT_SUBJECT_ALT_OTHERNAME_TYPEID, text("1.3.6.1.4.1.311.20.2.3")},
            {CERT_SUBJECT_ALT_OTHERNAME_VALUE, text("user")},
            {CERT_SUBJECT_ALT_OTHERNAME_TYPE, hex("0C")},
            // As the alternative common name, in whose place it is answered where the directory name is lost.
            {CERT_SUBJECT_ALT_RFC822NAME, text("Name")},
            {CERT_SUBJECT_ALT_DNSNAME, text("host")},
            {CERT_SUBJECT_ALT_URI, text("http://host")},
            {CERT_SUBJECT_ALT_IPADDRESS, hex("7F 00 00 01")},
            {CERT_SUBJECT_ALT_CRITICAL, hex("01")},
        };
        addNames(all, CERT_ISSUER_COUNTRYNAME);
        addNames(all, CERT_SUBJECT_COUNTRYNAME);
        addAltNames(all, CERT_SUBJECT_ALT_COUNTRYNAME);
        addAltNames(all, CERT_ISSUER_ALT_COUNTRYNAME);
        return all;
    }();
    return settings;
}

const std::vector<int32_t> &queries() {
    static const std::vector<int32_t> ids = [] {
        std::vector<int32_t> all;
        const CertPtr ctx = newCert();
        uint32_t length = 0;
        for (int32_t id = 0; id <= 600; ++id)
            if (KACert_GetCertAttributeChar(ctx.get(), id, nullptr, &length) == KACERT_Ok) all.push_back(id);
        return all;
    }();
    return ids;
}

Octets shortCertificate() {
    const CertPtr ctx = newCert();
    fillCert(ctx);
    return encoded(ctx);
}

Octets fullCertificate() {
    const CertPtr ctx = newCert();
    for (const Setting &setting : everySetting()) setChar(ctx, setting.id, setting.value);
    KACert_SetCertAttributeInt(ctx.get(), CERT_VERSION, 2);
    KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDFROM, 1577836800); // 2020-01-01 UTC
    KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDTO, 1893456000);   // 2030-01-01 UTC
    const Octets oid = hex("2A 03 05");
    const Octets value = text("value");
    for (const int32_t type : {4, 19})
        KACert_SetCertAttributePrivate_ForValue(ctx.get(), oid.data(), 3, 1, value.data(), 5, type);
    KACert_SetCertSignFunc(ctx.get(), fixedSignature, nullptr, 0);
    return encoded(ctx);
}

const std::vector<Octets> &systemCertificates() {
    static const std::vector<Octets> all = readBundle();
    return all;
}

std::vector<Octets> allCertificates() {
    std::vector<Octets> all = systemCertificates();
    all.push_back(shortCertificate());
    all.push_back(fullCertificate());
    return all;
}

} // namespace karil_test
