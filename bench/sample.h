// The certificate that karil and libcrypto both build: 12 name attributes and every extension.
#pragma once

#include <karil/cert.h>

#include <openssl/asn1.h>
#include <openssl/obj_mac.h>

#include <string_view>

namespace karil_bench::sample {

struct NameValue {
    int32_t id; // for karil
    int nid;    // for libcrypto
    int type;   // on the wire
    std::string_view text;
};
inline constexpr NameValue Issuer[] = {
    {CERT_ISSUER_COUNTRYNAME, NID_countryName, V_ASN1_PRINTABLESTRING, "CN"},
    {CERT_ISSUER_ORGANIZATIONNAME, NID_organizationName, V_ASN1_PRINTABLESTRING, "Example Company"},
    {CERT_ISSUER_ORGANIZATIONALUNITNAME, NID_organizationalUnitName, V_ASN1_PRINTABLESTRING, "Certificates"},
    {CERT_ISSUER_COMMONNAME, NID_commonName, V_ASN1_PRINTABLESTRING, "Example Root 2"},
    {CERT_ISSUER_EMAIL, NID_pkcs9_emailAddress, V_ASN1_IA5STRING, "root@example.com"},
};
inline constexpr NameValue Subject[] = {
    {CERT_SUBJECT_COUNTRYNAME, NID_countryName, V_ASN1_PRINTABLESTRING, "CN"},
    {CERT_SUBJECT_STATEORPROVINCENAME, NID_stateOrProvinceName, V_ASN1_PRINTABLESTRING, "Zhejiang"},
    {CERT_SUBJECT_LOCALITYNAME, NID_localityName, V_ASN1_PRINTABLESTRING, "Hangzhou"},
    {CERT_SUBJECT_ORGANIZATIONNAME, NID_organizationName, V_ASN1_PRINTABLESTRING, "Example Company"},
    {CERT_SUBJECT_ORGANIZATIONALUNITNAME, NID_organizationalUnitName, V_ASN1_PRINTABLESTRING, "Research"},
    {CERT_SUBJECT_COMMONNAME, NID_commonName, V_ASN1_PRINTABLESTRING, "www.example.com"},
    {CERT_SUBJECT_EMAIL, NID_pkcs9_emailAddress, V_ASN1_IA5STRING, "web@example.com"},
};
inline constexpr NameValue IssuerAlt = {CERT_ISSUER_ALT_COMMONNAME, NID_commonName, V_ASN1_PRINTABLESTRING, "Root"};

inline constexpr uint8_t Serial[] = {0x51, 2, 3, 4, 5, 6, 7, 8};
inline constexpr int32_t NotBefore = 1700000000;
inline constexpr int32_t NotAfter = 1900000000;
inline constexpr uint8_t Sha1WithRsa[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x05};
inline constexpr uint8_t RsaEncryption[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01};
inline constexpr uint8_t AnyPolicy[] = {0x55, 0x1D, 0x20, 0x00};
inline constexpr uint8_t KeyId[20] = {1, 2, 3};
inline constexpr uint8_t IssuerKeyId[20] = {4, 5, 6};
inline constexpr uint8_t KeyUsage = 0xA0;        // digitalSignature, keyEncipherment
inline constexpr uint8_t ServerAndClient = 0xC0; // of the extended usages
inline constexpr uint8_t PathLength = 1;
inline constexpr uint8_t Address[] = {192, 0, 2, 1};
inline constexpr uint8_t PrivateOid[] = {0x88, 0x37, 0x01};
inline constexpr std::string_view PrivateDer = "\x13\x0Aof our own";
inline constexpr std::string_view Cps = "http://www.example.com/cps";
inline constexpr std::string_view Dns = "www.example.com";
inline constexpr std::string_view Mail = "web@example.com";
inline constexpr std::string_view Uri = "http://www.example.com/";
inline constexpr std::string_view CrlUri = "http://crl.example.com/root.crl";
inline constexpr std::string_view OcspUri = "http://ocsp.example.com/";
inline constexpr std::string_view CaIssuersUri = "http://www.example.com/root.der";

// What stands in the BIT STRING: 270 octets, as the key of 2,048 bits takes. No one looks into them.
inline constexpr uint8_t PublicKey[270] = {0x30, 0x82, 0x01, 0x0A, 0x02, 0x82, 0x01, 0x01};

} // namespace karil_bench::sample
