// karil envelop, karil open.
#include "command.h"
#include "decoded.h"
#include "der_write.h"
#include "names.h"
#include "options.h"
#include "party.h"
#include "text.h"

#include <memory>

namespace tool {
namespace {

struct Cipher {
    const char *name;
    const EVP_CIPHER *(*function)();
    karil::Bytes oid;
};
constexpr Cipher Ciphers[] = {
    {"aes-256-cbc", EVP_aes_256_cbc, KARIL_OID_AES256_CBC},
    {"aes-128-cbc", EVP_aes_128_cbc, KARIL_OID_AES128_CBC},
    {"des-ede3-cbc", EVP_des_ede3_cbc, KARIL_OID_DES_EDE3_CBC},
};

// The hook of an encrypted content, for both directions.
struct Enciphers {
    const EVP_CIPHER *cipher;
    karil::Bytes key;
    karil::Bytes iv;
    bool isToEncipher;

    std::int32_t operator()(karil::Bytes input, std::uint8_t *output, std::uint32_t &length) const {
        int first = 0;
        int last = 0;
        const auto ctx =
            std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
        const bool isDone =
            ctx != nullptr && input.size() + EVP_MAX_BLOCK_LENGTH <= length &&
            EVP_CipherInit_ex(ctx.get(), cipher, nullptr, key.data(), iv.data(), isToEncipher) == 1 &&
            EVP_CipherUpdate(ctx.get(), output, &first, input.data(), static_cast<int>(input.size())) == 1 &&
            EVP_CipherFinal_ex(ctx.get(), output + first, &last) == 1;
        length = isDone ? static_cast<std::uint32_t>(first + last) : 0;
        return isDone ? KACERT_Ok : HookFailed;
    }
};

karil::Octets envelop(karil::Bytes content, const std::vector<Party> &recipients, const Cipher &cipher) {
    const std::string what = "the new message";
    const Secret key(randomOctets(static_cast<std::size_t>(EVP_CIPHER_get_key_length(cipher.function()))));
    const karil::Octets iv = randomOctets(static_cast<std::size_t>(EVP_CIPHER_get_iv_length(cipher.function())));
    std::vector<Operates> hooks;
    hooks.reserve(recipients.size());

    const auto message = valueOf(karil::EnvelopedData::make(), what);
    constexpr std::int32_t version = 0;
    check(karil::call(KA_PKCS7_SetEnvelopedDataAttributeInt, message, PKCS7_ENVELOPED_VERSION, version), what);
    const std::pair<std::int32_t, karil::Bytes> values[] = {{PKCS7_ENVELOPED_CONTENTTYPE, KARIL_OID_DATA},
                                                            {PKCS7_ENVELOPED_RECIPIENT_KEY, key.bytes()},
                                                            {PKCS7_ENVELOPED_ENCRYPTED_CONTENT, content}};
    for (const auto &[id, value] : values)
        check(karil::call(KA_PKCS7_SetEnvelopedDataAttributeChar, message, id, value), what);
    for (const Party &party : recipients) {
        if (party.publicKey == nullptr)
            throw Failure{Exit::Unreadable, party.file + ": no RSA key of 1,024 to 4,096 bits in this certificate"};
        auto info = valueOf(karil::Recipient::make(), what);
        const std::pair<std::int32_t, karil::Bytes> fields[] = {
            {PKCS7_RECIPIENT_DN, party.issuer},
            {PKCS7_RECIPIENT_SERIAL, party.serial},
            {PKCS7_RECIPIENT_KEYENCRYPTION_ALGO, KARIL_OID_RSA_ENCRYPTION}};
        for (const auto &[id, value] : fields)
            check(karil::call(KA_PKCS7_SetRecipientInfoAttributeChar, info, id, value), what);
        setHook(KA_PKCS7_SetRecipientInfoKeyEncFunc, info.get(),
                hooks.emplace_back(enciphersKey(party.publicKey.get())), what);
        check(karil::call(KA_PKCS7_SetEnvelopedData_RecipientInfo, message, info), what);
        info.release();
    }
    auto encrypted = valueOf(karil::EncryptedContent::make(), what);
    const karil::Octets parameter = wrapped(TagOctetString, {iv});
    const std::pair<std::int32_t, karil::Bytes> fields[] = {{PKCS7_ENCRYPT_ALGO, cipher.oid},
                                                            {PKCS7_ENCRYPT_PARAMETER, parameter}};
    for (const auto &[id, value] : fields)
        check(karil::call(KA_PKCS7_SetEncryptedContentAttributeChar, encrypted, id, value), what);
    Enciphers enciphers{cipher.function(), key.bytes(), iv, true};
    setHook(KA_PKCS7_SetEncryptContentEncFunc, encrypted.get(), enciphers, what);
    check(karil::call(KA_PKCS7_SetEnvelopedData_EncryptedContent, message, encrypted), what);
    encrypted.release();
    const auto octets = karil::ask(KA_PKCS7_EncodePKCS7EnvelopedData, message);
    if (octets.status() == KACERT_InvalidLengthErr)
        throw Failure{Exit::Misuse, "a content of " + std::to_string(content.size()) +
                                        " octets cannot be enveloped: the enciphered content with its algorithm may "
                                        "have 10,240 octets, which is room for about 10,100"};
    return valueOf(octets, what);
}

struct EnvelopOptions {
    std::vector<std::string> recipients;
    std::string cipher = Ciphers[0].name;
    std::string file;
    std::string out;
    bool isDer = false;
};

Exit runEnvelop(const EnvelopOptions &options) {
    std::vector<Party> recipients;
    for (const std::string &path : options.recipients)
        recipients.push_back(readParty(path));
    const Secret content(readFile(options.file));
    if (content.bytes().empty())
        throw Failure{Exit::Misuse, nameOf(options.file) + ": an empty content is not enveloped"};
    const Cipher &cipher =
        *std::ranges::find_if(Ciphers, [&](const Cipher &each) { return options.cipher == each.name; });
    writeMessage(options.out, envelop(content.bytes(), recipients, cipher), options.isDer);
    return Exit::Good;
}

struct OpenOptions {
    KeyFile key;
    std::string certificate;
    std::string file;
    std::string out;
};

// The recipient that the certificate is of.
RecipientInfoCtx *recipientOf(const karil::EnvelopedData &message, const Party &party, const std::string &where) {
    const Anybuf *whole = message->recipientSet;
    for (RecipientInfoCtx *each = message->recipients; each != nullptr && whole != nullptr;
         each = each->next, whole = whole->next) {
        // RecipientInfo { version, { issuer, serial number }, ... }
        const Elements fields(elementOf(bytesOf(*whole)).content);
        const Elements identity(fields[1].content);
        if (isSameName(identity[0], elementOf(party.issuer)) && isSame(magnitudeOf(identity[1]), party.serial))
            return each;
    }
    throw Failure{Exit::BadVerdict, where + ": not for the holder of " + party.file};
}

Secret openMessage(const Document &document, const KeyedParty &reader) {
    const std::string &where = document.file;
    const auto message = valueOf(karil::EnvelopedData::make(), where);
    check(karil::call(KA_PKCS7_DecodePKCS7EnvelopedData, message, document.octets), where);
    EncryptedContentCtx *encrypted = message->encryptedContent;
    if (encrypted == nullptr || encrypted->encryptedContent.length == 0)
        throw Failure{Exit::Unreadable, where + ": there is no enciphered content in it"};
    RecipientInfoCtx *recipient = recipientOf(message, reader.party, where);

    const karil::Bytes algorithm = bytesOf(encrypted->encryptionAlgorithm.oid);
    const auto *const cipher =
        std::ranges::find_if(Ciphers, [&](const Cipher &each) { return isSame(each.oid, algorithm); });
    if (cipher == std::end(Ciphers))
        throw Failure{Exit::Unreadable, where + ": enciphered by " + oidName(algorithm) + ", which is not read here"};
    const Element iv = elementOf(bytesOf(encrypted->encryptionAlgorithm.parameters));
    if (iv.tag != TagOctetString ||
        iv.content.size() != static_cast<std::size_t>(EVP_CIPHER_get_iv_length(cipher->function())))
        throw Failure{Exit::Unreadable, where + ": the cipher's parameters are no IV"};

    const karil::Bytes wrapping = bytesOf(recipient->keyEncryptionAlgorithm.oid);
    if (!isSame(wrapping, KARIL_OID_RSA_ENCRYPTION))
        throw Failure{Exit::Unreadable,
                      where + ": its key is enciphered by " + oidName(wrapping) + ", which is not read here"};
    Operates opens = opensKey(reader.key.get());
    setHook(KA_PKCS7_SetRecipientInfoKeyDecFunc, recipient, opens, where);
    auto key = karil::askWithRoom(recipient->encryptedKey.length, KA_PKCS7_DecryptDesKey, recipient);
    const Secret opened(key ? std::move(*key) : karil::Octets());
    if (opened.bytes().size() != static_cast<std::size_t>(EVP_CIPHER_get_key_length(cipher->function())))
        throw Failure{Exit::BadVerdict, where + ": the key does not open it"};
    Enciphers deciphers{cipher->function(), opened.bytes(), iv.content, false};
    setHook(KA_PKCS7_SetEncryptContentDecFunc, encrypted, deciphers, where);
    auto content =
        karil::askWithRoom(encrypted->encryptedContent.length, KA_PKCS7_GetEncryptedContentInformation, encrypted);
    if (!content)
        throw Failure{Exit::BadVerdict, where + ": the content does not decipher: it was changed"};
    return Secret(std::move(*content));
}

Exit runOpen(const OpenOptions &options) {
    const KeyedParty reader = readKeyedParty(options.certificate, options.key);
    const Secret content = openMessage(readDocument(options.file), reader);
    writeFile(options.out, content.bytes(), Mode::Private);
    return Exit::Good;
}

} // namespace

void addEnvelop(CLI::App &app, Run &run) {
    const auto options = std::make_shared<EnvelopOptions>();
    std::vector<std::string> names;
    for (const Cipher &cipher : Ciphers)
        names.emplace_back(cipher.name);
    CLI::App *command = app.add_subcommand("envelop", "Enciphers a file for others: a PKCS#7 EnvelopedData message");
    command->add_option("FILE", options->file, "What is enciphered; - is standard input")->required();
    command->add_option("--recipient", options->recipients, "A recipient's certificate; may be repeated")
        ->required()
        ->allow_extra_args(false);
    command->add_option("--cipher", options->cipher)->check(CLI::IsMember(names))->capture_default_str();
    addMessageOut(*command, options->out, options->isDer);
    command->callback([options, &run] { run = [options] { return runEnvelop(*options); }; });
}

void addOpen(CLI::App &app, Run &run) {
    const auto options = std::make_shared<OpenOptions>();
    CLI::App *command = app.add_subcommand("open", "Opens an enveloped message; the file has mode 0600");
    command->add_option("FILE", options->file, "The message; - is standard input")->required();
    addKeyFile(*command, options->key, "The recipient's private key");
    command->add_option("--cert", options->certificate, "The recipient's certificate")->required();
    addOut(*command, options->out, "the content");
    command->callback([options, &run] { run = [options] { return runOpen(*options); }; });
}

} // namespace tool
