// karil key, karil request.
#include "request.h"

#include "command.h"
#include "decoded.h"
#include "der_write.h"
#include "options.h"

namespace tool {
namespace {

// A request that asks for a SubjectAltName. The library writes the value of every attribute as an OCTET STRING, which
// others do not take for extensions. So its attributes, none, are replaced, and what it signed is signed anew.
karil::Octets withNames(karil::Bytes request, const std::vector<std::string> &names, const Signs &signs) {
    const Elements parts(elementOf(request).content);
    const Elements fields(parts[0].content);
    const karil::Octets info =
        wrapped(TagSequence, {fields[0].whole, fields[1].whole, fields[2].whole, requestForNames(dnsAltNames(names))});
    karil::Octets signature(static_cast<std::size_t>(EVP_PKEY_get_size(signs.key)));
    std::uint32_t length = 0;
    if (signs(info, signature.data(), length) != KACERT_Ok)
        throw Failure{Exit::Unreadable, "the key does not sign"};
    const std::uint8_t unusedBits[] = {0};
    return wrapped(TagSequence, {info, parts[1].whole, wrapped(TagBitString, {unusedBits, signature})});
}

} // namespace

karil::Octets makeRequest(EVP_PKEY *key, const Digest &digest, const std::vector<NamePart> &subject,
                          const std::vector<std::string> &names) {
    const std::string what = "the new request";
    const auto request = valueOf(karil::CertificationRequest::make(), what);
    const struct {
        std::int32_t id;
        karil::Octets value;
    } values[] = {
        {CSR_OUTER_SIGNATUREALGORITHM, joined({digest.withRsa})},
        {CSR_PUBLICKEY_ALGORITHM, joined({KARIL_OID_RSA_ENCRYPTION})},
        {CSR_SUBJECTPUBLICKEYINFO, publicOctets(key)},
    };
    for (const auto &[id, value] : values)
        check(karil::call(KACert_SetCsrAttributeChar, request, id, value), what);
    setName(KACert_SetCsrAttributeChar, request, CSR_SUBJECT_COUNTRYNAME, subject);
    Signs signs{key, &digest};
    setHook(KACert_SetCsrSignFunc, request.get(), signs, what);
    const karil::Octets octets = valueOf(karil::ask(KACert_EncodeCsr, request), what);
    return names.empty() ? octets : withNames(octets, names, signs);
}

Wanted readRequest(const Document &document) {
    const karil::CertificationRequest request = decodeRequest(document.octets, document.file);
    const karil::Bytes info = bytesOf(request->tbs);
    const Elements fields(elementOf(info).content);
    if (!isUsable(publicKeyOf(fields[2]).get()))
        throw Failure{Exit::Unreadable, document.file + ": the request's key is no RSA key of 1,024 to 4,096 bits"};
    if (!isSignedBy(fields[2], bytesOf(request->outerSignatureAlgorithm.oid), info, bytesOf(request->signature)))
        throw Failure{Exit::BadVerdict, document.file + ": the request's signature is not by its own key"};
    Wanted wanted;
    wanted.publicKey =
        valueOf(karil::ask(KACert_GetCsrAttributeChar, request, CSR_SUBJECTPUBLICKEYINFO), document.file);
    wanted.subject = joined({fields[1].whole});
    wanted.dnsNames = requestedNames(fields[3].content);
    return wanted;
}

void addKey(CLI::App &app, Run &run) {
    struct Options {
        int bits = 2048;
        std::string out;
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *command = app.add_subcommand("key", "Makes an RSA key, as PEM (PKCS#1) with mode 0600");
    addBits(*command, options->bits);
    command->add_option("-o,--out", options->out, "The key's file")->required();
    command->add_flag("--force", options->force, "Replace a file that is there");
    command->callback([options, &run] {
        run = [options] {
            const KeyPtr key = makeKey(options->bits);
            writeKey(options->out, key.get(), options->force);
            return Exit::Good;
        };
    });
}

void addRequest(CLI::App &app, Run &run) {
    struct Options {
        KeyFile key;
        std::string subject;
        std::vector<std::string> names;
        std::string digest;
        std::string out;
    };
    const auto options = std::make_shared<Options>();
    CLI::App *command = app.add_subcommand("request", "Makes a certification request for a key");
    addKeyFile(*command, options->key, "The private key");
    command->add_option("--subject", options->subject, SubjectHelp)->required();
    addDnsNames(*command, options->names, "A DNS name to ask for");
    addDigest(*command, options->digest);
    addOut(*command, options->out, "the request");
    command->callback([options, &run] {
        run = [options] {
            const std::vector<NamePart> subject = readSubject(options->subject);
            const KeyPtr key = readKey(options->key);
            writePem(options->out, makeRequest(key.get(), digestByName(options->digest), subject, options->names),
                     Kind::Request);
            return Exit::Good;
        };
    });
}

} // namespace tool
