// karil pfx make, karil pfx open.
#include "command.h"
#include "crypto.h"
#include "der_write.h"
#include "options.h"
#include "party.h"
#include "password.h"
#include "pfx.h"
#include "text.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <sys/stat.h>

namespace tool {
namespace {

struct MakeOptions {
    KeyFile key;
    std::string certificate;
    std::string chain;
    std::string name;
    std::string passwordFile;
    std::string out;
};

// A BMPString element with a friendlyName.
karil::Octets friendlyName(const std::string &name) {
    const auto text = karil::ask(KI_UTF82BmpString, karil::bytesOf(name));
    if (!text || text->empty() || fromBmp(*text) != name)
        throw Failure{Exit::Misuse, "\"" + name + "\" is no name that a PFX can hold: UTF-8 of at most 1,024 octets"};
    return wrapped(TagBmp, {*text});
}

Exit makePfx(const MakeOptions &options) {
    const std::string what = "the new PFX";
    const auto [party, key] = readKeyedParty(options.certificate, options.key);
    const std::vector<Party> chain = readChain(options.chain);
    const karil::Octets name = options.name.empty() ? karil::Octets() : friendlyName(options.name);
    // The same identifier at key and certificate says that they belong together.
    const karil::Octets localKeyId = wrapped(TagOctetString, {digestOf(EVP_sha1(), party.certificate)});
    const Secret password =
        pfxPassword(readPassword(options.passwordFile, "Password of the new PFX", Ask::Twice).bytes());
    const Secret privateKey = privateOctets(key.get());

    const karil::Pfx pfx = valueOf(karil::Pfx::make(), what);
    check(karil::call(KA_PKCS12_SetPrivateKey, pfx, privateKey.bytes()), what);
    check(karil::call(KA_PKCS12_SetCertificate, pfx, party.certificate), what);
    for (const Party &other : chain)
        check(karil::call(KA_PKCS12_SetCertificate, pfx, other.certificate), what);
    constexpr std::int32_t first = 1;
    const std::pair<karil::Bytes, karil::Bytes> attributes[] = {{KARIL_OID_LOCAL_KEY_ID, localKeyId},
                                                                {KARIL_OID_FRIENDLY_NAME, name}};
    for (const auto &[oid, value] : attributes) {
        if (value.empty())
            continue;
        check(karil::call(KA_PKCS12_SetPrivateKeyBag_Attribute, pfx, oid, value), what);
        check(karil::call(KA_PKCS12_SetCertificateBag_Attribute, pfx, oid, value, first), what);
    }
    writeFile(options.out, valueOf(karil::ask(KA_PKCS12_EncodePFX, pfx, password.bytes()), what), Mode::Private);
    return Exit::Good;
}

struct OpenOptions {
    std::string file;
    std::string passwordFile;
    std::string folder = ".";
    bool force = false;
};

Exit openPfx(const OpenOptions &options) {
    const Document document = readDocument(options.file);
    const Secret password = readPassword(options.passwordFile, "Password of " + document.file);
    const karil::Pfx pfx = decodePfx(document.octets, password.bytes(), document.file);
    const Secret octets(valueOf(karil::ask(KA_PKCS12_GetPrivateKey, pfx), document.file));
    const KeyPtr key = octets.bytes().empty() ? nullptr : privateKey(octets.bytes(), document.file);
    karil::Octets own;
    std::string others;
    for (const PfxCertificate *each = pfx->firstCertificate; each != nullptr; each = each->next) {
        const karil::Bytes der(each->certificate.data, each->certificate.length);
        karil::Octets whole(der.begin(), der.end());
        if (own.empty() && key != nullptr && belongs(key.get(), partyOf({whole, "", document.file})))
            own = std::move(whole);
        else
            others += pemText(der, "CERTIFICATE");
    }
    if (mkdir(options.folder.c_str(), 0777) != 0 && errno != EEXIST)
        throw Failure{Exit::Unreadable, options.folder + " cannot be made: " + std::strerror(errno)};
    const auto path = [&](const char *name) { return options.folder + "/" + name; };
    if (key != nullptr)
        writeKey(path("key.pem"), key.get(), options.force);
    if (!own.empty())
        writePem(path("certificate.pem"), own, Kind::Certificate);
    if (!others.empty())
        writeFile(path("chain.pem"), karil::bytesOf(others), Mode::Public);
    say(std::string("wrote") + (key != nullptr ? " key.pem" : "") + (!own.empty() ? " certificate.pem" : "") +
            (!others.empty() ? " chain.pem" : "") + " to " + options.folder,
        options.folder);
    return Exit::Good;
}

} // namespace

void addPfx(CLI::App &app, Run &run) {
    CLI::App *pfx = app.add_subcommand("pfx", "Makes and opens PFX files: a key and its certificates under a password");
    pfx->require_subcommand(1);

    const auto made = std::make_shared<MakeOptions>();
    CLI::App *make = pfx->add_subcommand("make", "Makes a PFX, with mode 0600");
    addKeyFile(*make, made->key, "The private key");
    make->add_option("--cert", made->certificate, "Its certificate")->required();
    make->add_option("--chain", made->chain, "Certificates of authorities, one or more in a file");
    make->add_option("--name", made->name, "The name that programs show for the key and its certificate");
    addPasswordFile(*make, made->passwordFile);
    make->add_option("-o,--out", made->out, "The PFX's file")->required();
    make->callback([made, &run] { run = [made] { return makePfx(*made); }; });

    const auto opened = std::make_shared<OpenOptions>();
    CLI::App *open = pfx->add_subcommand("open", "Writes what is in a PFX: key.pem, certificate.pem and chain.pem");
    open->add_option("FILE", opened->file, "The PFX; - is standard input")->required();
    addPasswordFile(*open, opened->passwordFile);
    open->add_option("--out-folder", opened->folder, "Where to; made if it is not there")->capture_default_str();
    open->add_flag("--force", opened->force, "Replace a key that is there");
    open->callback([opened, &run] { run = [opened] { return openPfx(*opened); }; });
}

} // namespace tool
