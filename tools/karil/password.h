// Passwords: from a file or from the terminal, wiped when they are no longer needed.
#ifndef KARIL_TOOL_PASSWORD_H
#define KARIL_TOOL_PASSWORD_H

#include "karil/karil.hpp"

#include <openssl/crypto.h>
#include <string>
#include <utility>

namespace tool {

// Octets that are wiped before their memory is given back.
class Secret {
public:
    Secret() = default;
    explicit Secret(karil::Octets taken) : held(std::move(taken)) {}
    ~Secret() { wipe(); }
    Secret(Secret &&other) noexcept : held(std::move(other.held)) {}
    Secret &operator=(Secret &&other) noexcept {
        wipe();
        held = std::move(other.held);
        return *this;
    }

    karil::Bytes bytes() const { return held; }
    karil::Octets &octets() { return held; }

private:
    // What a vector has given up at its end is wiped as well.
    void wipe() {
        held.resize(held.capacity());
        OPENSSL_cleanse(held.data(), held.size());
    }

    karil::Octets held;
};

enum class Ask { Once, Twice };

// The first line of `file` ("-" is standard input), or without a file what the user types at the terminal, unseen.
// `option` names the file on the command line.
Secret readPassword(const std::string &file, const std::string &prompt, Ask ask = Ask::Once,
                    const std::string &option = "--password-file");

} // namespace tool

#endif
