// karil authority, karil issue.
#include "authority.h"
#include "command.h"
#include "crypto.h"
#include "dates.h"
#include "der_write.h"
#include "names.h"
#include "options.h"
#include "request.h"
#include "text.h"

#include <memory>

namespace tool {
namespace {

constexpr const char *What = "the new certificate";
constexpr std::size_t SerialOctets = 16;

// What a certificate is for. `keyUsage`: RFC 5280 4.2.1.3, first bit on top. `usages`: as ExtKeyUsageExtension has it.
struct Profile {
    const char *name;
    const char *purpose;
    std::uint32_t usages;
    std::uint8_t keyUsage;
    bool isAuthority;
};
constexpr std::uint8_t DigitalSignature = 0x80;
constexpr std::uint8_t NonRepudiation = 0x40;
constexpr std::uint8_t KeyEncipherment = 0x20;
constexpr std::uint8_t SignsCertificatesAndCrls = 0x06;
constexpr std::uint32_t ServerAuthentication = 0x40;
constexpr std::uint32_t ClientAuthentication = 0x80;
constexpr std::uint32_t EmailProtection = 0x200;
constexpr Profile Profiles[] = {
    {"server", "a TLS server", ServerAuthentication, DigitalSignature | KeyEncipherment, false},
    {"client", "a TLS client", ClientAuthentication, DigitalSignature, false},
    {"person", "mail, documents and logins", EmailProtection | ClientAuthentication,
     DigitalSignature | NonRepudiation | KeyEncipherment, false},
    {"ca", "an authority below this one, which issues to others than authorities", 0, SignsCertificatesAndCrls, true},
};
// That of the authority itself, without a limit to what stands below it.
constexpr Profile RootProfile = {"", "", 0, SignsCertificatesAndCrls, true};

// All that goes into a certificate.
struct Contents {
    const Profile *profile;
    Validity validity;
    karil::Octets serial;
    karil::Octets issuer;  // a whole Name
    karil::Octets subject; // a whole Name
    karil::Octets publicKey;
    karil::Octets authorityKeyId;
    std::vector<std::string> dnsNames;
};

karil::Octets keyIdOf(karil::Bytes publicKey) {
    return digestOf(EVP_sha1(), publicKey);
}

// Positive, and 16 octets on the wire.
karil::Octets makeSerial() {
    karil::Octets serial = randomOctets(SerialOctets);
    serial[0] = static_cast<std::uint8_t>((serial[0] & 0x3F) | 0x40);
    return serial;
}

karil::Octets makeCertificate(const Contents &contents, EVP_PKEY *key, const Digest &digest) {
    const Profile &profile = *contents.profile;
    const auto cert = valueOf(karil::Certificate::make(), What);
    const std::pair<std::int32_t, std::int32_t> numbers[] = {
        {CERT_VERSION, 2}, {CERT_VALIDFROM, contents.validity.from}, {CERT_VALIDTO, contents.validity.to}};
    for (const auto &[id, value] : numbers)
        check(karil::call(KACert_SetCertAttributeInt, cert, id, value), What);
    const std::uint8_t isAuthority[] = {static_cast<std::uint8_t>(profile.isAuthority ? 0xFF : 0)};
    const std::uint8_t keyUsage[] = {profile.keyUsage};
    const std::uint8_t usages[] = {static_cast<std::uint8_t>(profile.usages),
                                   static_cast<std::uint8_t>(profile.usages >> 8), 0, 0};
    const bool isLimited = profile.isAuthority && &profile != &RootProfile;
    const std::uint8_t none[] = {0};
    const karil::Octets subjectKeyId = keyIdOf(contents.publicKey);
    // An attribute without octets is left out.
    const std::pair<std::int32_t, karil::Bytes> values[] = {
        {CERT_SERIALNUMBER, contents.serial},
        {CERT_INNER_SIGNATUREALGORITHM, digest.withRsa},
        {CERT_OUTER_SIGNATUREALGORITHM, digest.withRsa},
        {CERT_ISSUER_DERDN, contents.issuer},
        {CERT_SUBJECT_DERDN, contents.subject},
        {CERT_PUBLICKEY_ALGORITHM, KARIL_OID_RSA_ENCRYPTION},
        {CERT_SUBJECTPUBLICKEYINFO, contents.publicKey},
        {CERTEX_SUBJECTKEYIDENTIFIER, subjectKeyId},
        {CERTEX_AUTHORITYKEYIDENTIFIER, contents.authorityKeyId},
        {CERTEX_AUTHORITY, isAuthority},
        {CERTEX_PATHLENCONSTRAINT, isLimited ? none : karil::Bytes()},
        {CERTEX_KEYUSAGE, keyUsage},
        {CERTEX_EXTKEY_USAGE, profile.usages != 0 ? usages : karil::Bytes()},
    };
    for (const auto &[id, value] : values)
        if (!value.empty())
            check(karil::call(KACert_SetCertAttributeChar, cert, id, value), What);
    // The library's own attribute holds one DNS name.
    if (!contents.dnsNames.empty()) {
        const std::uint8_t critical = 0;
        const karil::Octets names = dnsAltNames(contents.dnsNames);
        check(karil::call(KACert_SetCertAttributePrivate, cert, KARIL_OID_SUBJECT_ALT_NAME, critical, names), What);
    }
    Signs signs{key, &digest};
    setHook(KACert_SetCertSignFunc, cert.get(), signs, What);
    const DatesInUtc utc;
    return valueOf(karil::ask(KACert_EncodeCert, cert), What);
}

struct AuthorityOptions {
    std::string folder;
    std::string subject;
    int days = daysUpTo(3650);
    int bits = 2048;
    std::string digest;
};

Exit makeAuthority(const AuthorityOptions &options) {
    const std::vector<NamePart> subject = readSubject(options.subject);
    const Validity validity = validFor(options.days);
    const Digest &digest = digestByName(options.digest);
    const KeyPtr key = makeKey(options.bits);
    // Its name in DER is that of a request.
    const Wanted wanted = readRequest({makeRequest(key.get(), digest, subject, {}), "", "the new authority"});
    const Contents contents{&RootProfile,
                            validity,
                            makeSerial(),
                            wanted.subject,
                            wanted.subject,
                            wanted.publicKey,
                            keyIdOf(wanted.publicKey),
                            {}};
    Authority::create(options.folder, key.get(), makeCertificate(contents, key.get(), digest));
    say("made the authority, valid until " + timeText(validity.to), options.folder);
    return Exit::Good;
}

struct IssueOptions {
    std::string folder;
    std::string request;
    int days = daysUpTo(365);
    std::string profile = Profiles[0].name;
    std::vector<std::string> names;
    std::string digest;
    std::string out;
    std::string chain;
};

const Profile &profileOf(const std::string &name) {
    for (const Profile &profile : Profiles)
        if (name == profile.name)
            return profile;
    throw Failure{Exit::Misuse, "no profile of the name " + name};
}

Exit issue(const IssueOptions &options) {
    const Wanted wanted = readRequest(readDocument(options.request));
    if (Elements(elementOf(wanted.subject).content).size() == 0)
        throw Failure{Exit::Misuse, nameOf(options.request) + ": the request names no subject"};
    const Validity validity = validFor(options.days);
    Authority authority(options.folder);
    if (validity.to > authority.notAfter)
        throw Failure{Exit::Misuse, "the certificate would outlive its authority, which is valid until " +
                                        timeText(authority.notAfter)};
    const Contents contents{&profileOf(options.profile),
                            validity,
                            makeSerial(),
                            authority.name,
                            wanted.subject,
                            wanted.publicKey,
                            authority.keyId,
                            options.names.empty() ? wanted.dnsNames : options.names};
    const karil::Octets certificate = makeCertificate(contents, authority.key.get(), digestByName(options.digest));
    const std::string serial = hex(contents.serial);
    // What is not in the index could never be revoked, so that it comes first.
    authority.issued[serial] = {nameText(elementOf(wanted.subject)), validity.to, {}, 0};
    authority.save();
    writePem(authority.path("issued/" + serial + ".pem"), certificate, Kind::Certificate);
    writePem(options.out, certificate, Kind::Certificate);
    if (!options.chain.empty()) {
        const std::string pem = pemText(certificate, "CERTIFICATE") + pemText(authority.certificate, "CERTIFICATE");
        writeFile(options.chain, karil::bytesOf(pem), Mode::Public);
    }
    say("issued " + serial + ", valid until " + timeText(validity.to), options.out);
    return Exit::Good;
}

} // namespace

void addAuthority(CLI::App &app, Run &run) {
    const auto options = std::make_shared<AuthorityOptions>();
    CLI::App *command = app.add_subcommand("authority", "Makes a small authority in a folder: its key and certificate");
    command->add_option("FOLDER", options->folder, "Where it is to live; made if it is not there")->required();
    command->add_option("--subject", options->subject, SubjectHelp)->required();
    addDays(*command, options->days, "How long it is valid");
    addBits(*command, options->bits);
    addDigest(*command, options->digest);
    command->callback([options, &run] { run = [options] { return makeAuthority(*options); }; });
}

void addIssue(CLI::App &app, Run &run) {
    const auto options = std::make_shared<IssueOptions>();
    std::vector<std::string> names;
    std::string help = "What the certificate is for: ";
    for (const Profile &profile : Profiles) {
        help += std::string(names.empty() ? "" : "; ") + profile.name + ", " + profile.purpose;
        names.emplace_back(profile.name);
    }
    CLI::App *command =
        app.add_subcommand("issue", "Issues a certificate for the subject, the key and the DNS names of a request");
    command->add_option("REQUEST", options->request, "The request; - is standard input")->required();
    addFolder(*command, options->folder);
    command->add_option("--profile", options->profile, help)->check(CLI::IsMember(names))->capture_default_str();
    addDays(*command, options->days, "How long the certificate is valid");
    addDnsNames(*command, options->names, "A DNS name, in the place of those that the request asks for");
    addDigest(*command, options->digest);
    addOut(*command, options->out, "the certificate");
    command->add_option("--chain", options->chain, "A file for the certificate with the authority's after it");
    command->callback([options, &run] { run = [options] { return issue(*options); }; });
}

} // namespace tool
