// Prints subject, issuer and dates of a certificate, and verifies it against its issuer's certificate, with
// karil/karil.hpp: handles that free themselves, results that carry a status.
//
//     show_certificate CERTIFICATE ISSUER        DER or PEM; run it with TZ=UTC
#include <karil/karil.hpp>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>

namespace {

// An empty file has no octets, which a decoder would take for a header to trust.
karil::Result<karil::Octets> readCertificate(const char *path) {
    std::ifstream file(path, std::ios::binary);
    karil::Octets octets{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (octets.empty())
        return karil::StatusCode(KACERT_CertNotEndErr);
    if (octets[0] == 0x30)
        return octets;
    return karil::askWithRoom(static_cast<std::uint32_t>(octets.size()), PEM2DER_data_format, octets);
}

// The text of a name is in code page 936, and is printed in UTF-8.
karil::StatusCode printName(const char *label, const karil::Certificate &cert, std::int32_t id) {
    const auto local = karil::ask(KACert_GetCertAttributeChar, cert, id);
    if (!local)
        return local.status();
    const auto utf8 = karil::ask(KI_Chinese2UTF8String, *local);
    if (utf8)
        std::printf("%s: %s\n", label, karil::textOf(*utf8).c_str());
    return utf8.status();
}

karil::StatusCode printDate(const char *label, const karil::Certificate &cert, std::int32_t id) {
    std::int32_t seconds = 0;
    const karil::StatusCode status = karil::call(KACert_GetCertAttributeInt, cert, id, &seconds);
    const std::time_t date = seconds;
    char text[32];
    if (status && std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::gmtime(&date)) > 0)
        std::printf("%s: %s\n", label, text);
    return status;
}

karil::StatusCode show(const karil::Octets &der, const karil::Octets &issuer) {
    karil::Result<karil::Certificate> made = karil::Certificate::make();
    if (!made)
        return made.status();
    const karil::Certificate &cert = *made;
    if (const auto status = karil::call(KACert_DecodeCert, cert, der); !status)
        return status;
    if (const auto status = printName("subject", cert, CERT_SUBJECT_DN); !status)
        return status;
    if (const auto status = printName("issuer", cert, CERT_ISSUER_DN); !status)
        return status;
    if (const auto status = printDate("valid from", cert, CERT_VALIDFROM); !status)
        return status;
    if (const auto status = printDate("valid to", cert, CERT_VALIDTO); !status)
        return status;
    return karil::call(KA_VerifyCert, issuer, der);
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s CERTIFICATE ISSUER\n", argv[0]);
        return 2;
    }
    const auto certificate = readCertificate(argv[1]);
    const auto issuer = readCertificate(argv[2]);
    if (!certificate || !issuer) {
        std::fprintf(stderr, "%s: neither DER nor PEM\n", certificate ? argv[2] : argv[1]);
        return 1;
    }
    const karil::StatusCode status = show(*certificate, *issuer);
    std::printf("%s: %s\n", status ? "verified" : status.name(), status.text());
    return status ? 0 : 1;
}
