#include "options.h"

#include "text.h"

#include <iostream>

namespace tool {

void addBits(CLI::App &command, int &bits) {
    command.add_option("--bits", bits, "Bits of the key: 1024, 2048, 3072 or 4096")
        ->check(CLI::IsMember({1024, 2048, 3072, 4096}))
        ->capture_default_str();
}

void addKeyFile(CLI::App &command, KeyFile &key, const std::string &what) {
    command.add_option("--key", key.path, what)->required();
    command.add_option("--key-password-file", key.passwordFile,
                       "The password of the key is the first line of this file; without it the terminal is asked");
}

void addDigest(CLI::App &command, std::string &digest) {
    digest = digestNames().front();
    command.add_option("--digest", digest, "Digest of the signature")
        ->check(CLI::IsMember(digestNames()))
        ->capture_default_str();
}

void addDays(CLI::App &command, int &days, const std::string &help) {
    command.add_option("--days", days, help)->check(CLI::PositiveNumber)->capture_default_str();
}

void addDnsNames(CLI::App &command, std::vector<std::string> &names, const std::string &help) {
    command.add_option("--dns", names, help + "; may be repeated")->allow_extra_args(false);
}

void addFolder(CLI::App &command, std::string &folder) {
    command.add_option("--authority", folder, "The authority's folder")->required();
}

void addPasswordFile(CLI::App &command, std::string &file) {
    command.add_option("--password-file", file,
                       "A file whose first line is the password; without it the terminal is asked");
}

void addOut(CLI::App &command, std::string &out, const std::string &what) {
    command.add_option("-o,--out", out, "The file for " + what + "; without it standard output");
}

void addMessageOut(CLI::App &command, std::string &out, bool &isDer) {
    addOut(command, out, "the message");
    command.add_flag("--der", isDer, "Write DER and not PEM");
}

void writePem(const std::string &path, karil::Bytes der, Kind kind, Existing existing) {
    const KindFacts &facts = factsOf(kind);
    std::string pem = pemText(der, facts.label);
    writeFile(path, karil::bytesOf(pem), facts.isSecret ? Mode::Private : Mode::Public, existing);
    if (facts.isSecret)
        OPENSSL_cleanse(pem.data(), pem.size());
}

void writeMessage(const std::string &path, karil::Bytes der, bool isDer) {
    if (isDer)
        writeFile(path, der, Mode::Public);
    else
        writePem(path, der, Kind::Message);
}

void say(const std::string &words, const std::string &out) {
    if (!out.empty() && out != "-")
        std::cout << escaped(words) << "\n";
}

} // namespace tool
