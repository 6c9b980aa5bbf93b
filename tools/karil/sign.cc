// karil sign.
#include "command.h"
#include "der_write.h"
#include "options.h"
#include "party.h"

#include <memory>

namespace tool {
namespace {

constexpr const char *What = "the new message";

struct Options {
    KeyFile key;
    std::string certificate;
    std::string chain;
    std::string digest;
    std::string file;
    std::string out;
    bool isDetached = false;
    bool isDer = false;
};

// The message without its content, which stays outside. The library does not write such a one.
karil::Octets detached(karil::Bytes message) {
    // ContentInfo { type, [0] SignedData { version, digest algorithms, ContentInfo { type, [0] }, ... } }
    const Elements frame(elementOf(message).content);
    const Elements parts(elementOf(frame[1].content).content);
    karil::Octets fields = joined({parts[0].whole, parts[1].whole});
    fields = joined({fields, wrapped(TagSequence, {elementOf(parts[2].content).whole})});
    for (std::size_t i = 3; i < parts.size(); ++i)
        fields = joined({fields, parts[i].whole});
    return wrapped(TagSequence, {frame[0].whole, wrapped(TagContext0, {wrapped(TagSequence, {fields})})});
}

// Without attributes, so that the signature covers the content itself.
karil::Octets sign(karil::Bytes content, const KeyedParty &signer, const std::vector<Party> &chain,
                   const Digest &digest) {
    const auto message = valueOf(karil::SignedData::make(), What);
    constexpr std::int32_t version = 1;
    check(karil::call(KA_PKCS7_SetSignedDataAttributeInt, message, PKCS7_SIGNEDDATA_VERSION, version), What);
    const auto set = [&](std::int32_t id, karil::Bytes value) {
        check(karil::call(KA_PKCS7_SetSignedDataAttributeChar, message, id, value), What);
    };
    set(PKCS7_SIGNEDDATA_DIGEST_ALGO, digest.oid);
    set(PKCS7_SIGNEDDATA_CONTENTTYPE, KARIL_OID_DATA);
    set(PKCS7_SIGNEDDATA_CONTENT, content);
    set(PKCS7_SIGNEDDATA_CERTIFICATE, signer.party.certificate);
    for (const Party &other : chain)
        set(PKCS7_SIGNEDDATA_CERTIFICATE, other.certificate);

    auto info = valueOf(karil::Signer::make(), What);
    const std::pair<std::int32_t, karil::Bytes> values[] = {{PKCS7_SIGNER_DN, signer.party.issuer},
                                                            {PKCS7_SIGNER_SERIAL, signer.party.serial},
                                                            {PKCS7_SIGNER_DIGEST_ALGO, digest.oid},
                                                            {PKCS7_SIGNER_DIGEST_ENC_ALG, KARIL_OID_RSA_ENCRYPTION}};
    for (const auto &[id, value] : values)
        check(karil::call(KA_PKCS7_SetSignerInfoAttributeChar, info, id, value), What);
    Digests digests{&digest};
    Operates signs = signsInfo(signer.key.get());
    setHook(KA_PKCS7_SetSignerInfoDigestFunc, info.get(), digests, What);
    setHook(KA_PKCS7_SetSignerInfoEncSignFunc, info.get(), signs, What);
    check(karil::call(KA_PKCS7_SetSignedData_SignerInfo, message, info), What);
    info.release();
    return valueOf(karil::ask(KA_PKCS7_EncodePKCS7SignedData, message), What);
}

Exit runSign(const Options &options) {
    const KeyedParty signer = readKeyedParty(options.certificate, options.key);
    const std::vector<Party> chain = readChain(options.chain);
    const karil::Octets content = readFile(options.file);
    if (content.empty())
        throw Failure{Exit::Misuse, nameOf(options.file) + ": an empty content is not signed"};
    const karil::Octets message = sign(content, signer, chain, digestByName(options.digest));
    writeMessage(options.out, options.isDetached ? detached(message) : message, options.isDer);
    return Exit::Good;
}

} // namespace

void addSign(CLI::App &app, Run &run) {
    const auto options = std::make_shared<Options>();
    CLI::App *command = app.add_subcommand("sign", "Signs a file: a PKCS#7 SignedData message");
    command->add_option("FILE", options->file, "What is signed; - is standard input")->required();
    addKeyFile(*command, options->key, "The signer's private key");
    command->add_option("--cert", options->certificate, "The signer's certificate")->required();
    command->add_option("--chain", options->chain, "Certificates that go into the message too");
    command->add_flag("--detached", options->isDetached, "Leave the file out of the message");
    addDigest(*command, options->digest);
    addMessageOut(*command, options->out, options->isDer);
    command->callback([options, &run] { run = [options] { return runSign(*options); }; });
}

} // namespace tool
