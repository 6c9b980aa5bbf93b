// The names of object identifiers that people meet.
#include "text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tool {
namespace {

constexpr std::pair<std::string_view, std::string_view> names[] = {
    // Names of people and places (X.520, RFC 4519, RFC 2985)
    {"2.5.4.3", "commonName"},
    {"2.5.4.4", "surname"},
    {"2.5.4.5", "serialNumber"},
    {"2.5.4.6", "countryName"},
    {"2.5.4.7", "localityName"},
    {"2.5.4.8", "stateOrProvinceName"},
    {"2.5.4.9", "streetAddress"},
    {"2.5.4.10", "organizationName"},
    {"2.5.4.11", "organizationalUnitName"},
    {"2.5.4.12", "title"},
    {"2.5.4.15", "businessCategory"},
    {"2.5.4.16", "postalAddress"},
    {"2.5.4.17", "postalCode"},
    {"2.5.4.20", "telephoneNumber"},
    {"2.5.4.42", "givenName"},
    {"2.5.4.97", "organizationIdentifier"},
    {"1.2.840.113549.1.9.1", "emailAddress"},
    {"0.9.2342.19200300.100.1.1", "userId"},
    {"0.9.2342.19200300.100.1.25", "domainComponent"},
    {"1.3.6.1.4.1.311.60.2.1.3", "jurisdictionCountryName"},
    // Keys and signatures
    {"1.2.840.113549.1.1.1", "rsaEncryption"},
    {"1.2.840.113549.1.1.2", "md2WithRSAEncryption"},
    {"1.2.840.113549.1.1.4", "md5WithRSAEncryption"},
    {"1.2.840.113549.1.1.5", "sha1WithRSAEncryption"},
    {"1.2.840.113549.1.1.7", "RSAES-OAEP"},
    {"1.2.840.113549.1.1.10", "RSASSA-PSS"},
    {"1.2.840.113549.1.1.11", "sha256WithRSAEncryption"},
    {"1.2.840.113549.1.1.12", "sha384WithRSAEncryption"},
    {"1.2.840.113549.1.1.13", "sha512WithRSAEncryption"},
    {"1.2.840.113549.1.1.14", "sha224WithRSAEncryption"},
    {"1.2.840.10040.4.1", "dsa"},
    {"1.2.840.10045.2.1", "ecPublicKey"},
    {"1.2.840.10045.3.1.7", "prime256v1"},
    {"1.3.132.0.34", "secp384r1"},
    {"1.3.132.0.35", "secp521r1"},
    {"1.2.840.10045.4.1", "ecdsa-with-SHA1"},
    {"1.2.840.10045.4.3.2", "ecdsa-with-SHA256"},
    {"1.2.840.10045.4.3.3", "ecdsa-with-SHA384"},
    {"1.2.840.10045.4.3.4", "ecdsa-with-SHA512"},
    {"1.2.156.10197.1.301", "sm2"},
    {"1.2.156.10197.1.501", "sm2-with-SM3"},
    {"1.3.101.112", "Ed25519"},
    // Digests
    {"1.2.840.113549.2.2", "md2"},
    {"1.2.840.113549.2.5", "md5"},
    {"1.3.14.3.2.26", "sha1"},
    {"2.16.840.1.101.3.4.2.1", "sha256"},
    {"2.16.840.1.101.3.4.2.2", "sha384"},
    {"2.16.840.1.101.3.4.2.3", "sha512"},
    {"2.16.840.1.101.3.4.2.4", "sha224"},
    {"1.2.156.10197.1.401", "sm3"},
    // Ciphers
    {"1.3.14.3.2.7", "des-cbc"},
    {"1.2.840.113549.3.2", "rc2-cbc"},
    {"1.2.840.113549.3.4", "rc4"},
    {"1.2.840.113549.3.7", "des-ede3-cbc"},
    {"2.16.840.1.101.3.4.1.2", "aes-128-cbc"},
    {"2.16.840.1.101.3.4.1.22", "aes-192-cbc"},
    {"2.16.840.1.101.3.4.1.42", "aes-256-cbc"},
    {"1.2.840.113549.1.5.13", "PBES2"},
    {"1.2.840.113549.1.12.1.1", "pbeWithSHA1And128BitRC4"},
    {"1.2.840.113549.1.12.1.2", "pbeWithSHA1And40BitRC4"},
    {"1.2.840.113549.1.12.1.3", "pbeWithSHA1And3-KeyTripleDES-CBC"},
    {"1.2.840.113549.1.12.1.4", "pbeWithSHA1And2-KeyTripleDES-CBC"},
    {"1.2.840.113549.1.12.1.5", "pbeWithSHA1And128BitRC2-CBC"},
    {"1.2.840.113549.1.12.1.6", "pbeWithSHA1And40BitRC2-CBC"},
    // Content types
    {"1.2.840.113549.1.7.1", "data"},
    {"1.2.840.113549.1.7.2", "signedData"},
    {"1.2.840.113549.1.7.3", "envelopedData"},
    {"1.2.840.113549.1.7.4", "signedAndEnvelopedData"},
    {"1.2.840.113549.1.7.5", "digestedData"},
    {"1.2.840.113549.1.7.6", "encryptedData"},
    {"1.2.840.113549.1.9.16.1.4", "TSTInfo"},
    // Attributes of signers, requests and bags
    {"1.2.840.113549.1.9.2", "unstructuredName"},
    {"1.2.840.113549.1.9.3", "contentType"},
    {"1.2.840.113549.1.9.4", "messageDigest"},
    {"1.2.840.113549.1.9.5", "signingTime"},
    {"1.2.840.113549.1.9.7", "challengePassword"},
    {"1.2.840.113549.1.9.14", "extensionRequest"},
    {"1.2.840.113549.1.9.15", "SMIMECapabilities"},
    {"1.2.840.113549.1.9.16.2.12", "signingCertificate"},
    {"1.2.840.113549.1.9.16.2.47", "signingCertificateV2"},
    {"1.2.840.113549.1.9.20", "friendlyName"},
    {"1.2.840.113549.1.9.21", "localKeyID"},
    {"1.3.6.1.4.1.311.17.1", "cspName"},
    // Extensions
    {"2.5.29.9", "subjectDirectoryAttributes"},
    {"2.5.29.14", "subjectKeyIdentifier"},
    {"2.5.29.15", "keyUsage"},
    {"2.5.29.17", "subjectAltName"},
    {"2.5.29.18", "issuerAltName"},
    {"2.5.29.19", "basicConstraints"},
    {"2.5.29.20", "cRLNumber"},
    {"2.5.29.21", "cRLReason"},
    {"2.5.29.27", "deltaCRLIndicator"},
    {"2.5.29.28", "issuingDistributionPoint"},
    {"2.5.29.30", "nameConstraints"},
    {"2.5.29.31", "cRLDistributionPoints"},
    {"2.5.29.32", "certificatePolicies"},
    {"2.5.29.32.0", "anyPolicy"},
    {"2.5.29.33", "policyMappings"},
    {"2.5.29.35", "authorityKeyIdentifier"},
    {"2.5.29.36", "policyConstraints"},
    {"2.5.29.37", "extKeyUsage"},
    {"2.5.29.46", "freshestCRL"},
    {"2.5.29.54", "inhibitAnyPolicy"},
    {"1.3.6.1.5.5.7.1.1", "authorityInfoAccess"},
    {"1.3.6.1.5.5.7.1.3", "qcStatements"},
    {"1.3.6.1.5.5.7.1.11", "subjectInfoAccess"},
    {"1.3.6.1.5.5.7.1.24", "tlsFeature"},
    {"1.3.6.1.4.1.11129.2.4.2", "signedCertificateTimestamps"},
    {"2.16.840.1.113730.1.1", "netscapeCertType"},
    {"2.16.840.1.113730.1.13", "netscapeComment"},
    // Usages, access methods, policy qualifiers
    {"2.5.29.37.0", "anyExtendedKeyUsage"},
    {"1.3.6.1.5.5.7.3.1", "serverAuth"},
    {"1.3.6.1.5.5.7.3.2", "clientAuth"},
    {"1.3.6.1.5.5.7.3.3", "codeSigning"},
    {"1.3.6.1.5.5.7.3.4", "emailProtection"},
    {"1.3.6.1.5.5.7.3.5", "ipsecEndSystem"},
    {"1.3.6.1.5.5.7.3.6", "ipsecTunnel"},
    {"1.3.6.1.5.5.7.3.7", "ipsecUser"},
    {"1.3.6.1.5.5.7.3.8", "timeStamping"},
    {"1.3.6.1.5.5.7.3.9", "OCSPSigning"},
    {"1.3.6.1.5.5.7.2.1", "cps"},
    {"1.3.6.1.5.5.7.2.2", "userNotice"},
    {"1.3.6.1.5.5.7.48.1", "ocsp"},
    {"1.3.6.1.5.5.7.48.1.1", "basicOCSPResponse"},
    {"1.3.6.1.5.5.7.48.1.2", "nonce"},
    {"1.3.6.1.5.5.7.48.1.5", "ocspNoCheck"},
    {"1.3.6.1.5.5.7.48.2", "caIssuers"},
    {"1.3.6.1.4.1.311.20.2.3", "userPrincipalName"},
};

} // namespace

std::string oidName(karil::Bytes oid) {
    const std::string digits = dotted(oid);
    const auto *found =
        std::find_if(std::begin(names), std::end(names), [&](const auto &row) { return row.first == digits; });
    return found == std::end(names) ? digits : std::string(found->second);
}

} // namespace tool
