// RSA keys of 1,024 to 4,096 bits, prepared by libcrypto, and the hooks by which the library reaches them.
#ifndef KARIL_TOOL_KEY_H
#define KARIL_TOOL_KEY_H

#include "crypto.h"
#include "failure.h"
#include "password.h"

#include <openssl/evp.h>
#include <string>
#include <vector>

namespace tool {

constexpr int LeastBits = 1024;
constexpr int MostBits = 4096;

// A digest as the command line, libcrypto and object identifiers have it.
struct Digest {
    const char *name;
    const EVP_MD *(*function)();
    karil::Bytes oid;
    karil::Bytes withRsa;
};
// Their names, the one that is taken by default first.
std::vector<std::string> digestNames();
const Digest &digestByName(const std::string &name);

KeyPtr makeKey(int bits);
// The file of a private key: PKCS#1 or PKCS#8, PEM or DER. If it is under a password, the first line of `passwordFile`
// has it, or without one the terminal is asked.
struct KeyFile {
    std::string path;
    std::string passwordFile;
};
KeyPtr readKey(const KeyFile &file);
// PEM, PKCS#1. Mode 0600; a file that is there stays unless it is forced.
void writeKey(const std::string &path, EVP_PKEY *key, bool force);

// RSAPublicKey, as the BIT STRING of a certificate holds it, and RSAPrivateKey.
karil::Octets publicOctets(EVP_PKEY *key);
Secret privateOctets(EVP_PKEY *key);
// The key of an RSAPrivateKey.
KeyPtr privateKey(karil::Bytes octets, const std::string &where);

// Whether a key is one of RSA, of a size that is used here.
bool isUsable(EVP_PKEY *key);

karil::Octets randomOctets(std::size_t count);

// Hands a hook to the library, which calls it while `callable` lives.
template <class Set, class Ctx, class Callable>
void setHook(Set set, Ctx *ctx, Callable &callable, const std::string &what) {
    const karil::Hook hook(callable);
    check(set(ctx, hook.function(), hook.parameter(), static_cast<std::int32_t>(hook.size())), what);
}

// What a hook returns if libcrypto refuses: no status of the library.
constexpr std::int32_t HookFailed = -1;

// What hooks call: each has the octets to work on, room for the result, which is null to ask for its length, and the
// length. The key must outlive the hook.

// Digests and signs: certificates, CRLs, requests.
struct Signs {
    EVP_PKEY *key;
    const Digest *digest;
    std::int32_t operator()(karil::Bytes input, std::uint8_t *output, std::uint32_t &length) const;
};
// Digests: messages.
struct Digests {
    const Digest *digest;
    std::int32_t operator()(karil::Bytes input, std::uint8_t *output, std::uint32_t &length) const;
};
// The key's operation with its padding alone: signs a DigestInfo, enciphers or opens the key of a message's content.
struct Operates {
    EVP_PKEY *key;
    int (*start)(EVP_PKEY_CTX *);
    int (*run)(EVP_PKEY_CTX *, unsigned char *, size_t *, const unsigned char *, size_t);
    std::int32_t operator()(karil::Bytes input, std::uint8_t *output, std::uint32_t &length) const;
};
inline Operates signsInfo(EVP_PKEY *key) {
    return {key, EVP_PKEY_sign_init, EVP_PKEY_sign};
}
inline Operates enciphersKey(EVP_PKEY *key) {
    return {key, EVP_PKEY_encrypt_init, EVP_PKEY_encrypt};
}
inline Operates opensKey(EVP_PKEY *key) {
    return {key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt};
}

} // namespace tool

#endif
