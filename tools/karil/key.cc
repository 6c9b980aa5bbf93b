#include "key.h"

#include "der_write.h"
#include "options.h"

#include <openssl/decoder.h>
#include <openssl/err.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

namespace tool {
namespace {

struct FreeContexts {
    void operator()(EVP_PKEY_CTX *ctx) const { EVP_PKEY_CTX_free(ctx); }
    void operator()(EVP_MD_CTX *ctx) const { EVP_MD_CTX_free(ctx); }
    void operator()(OSSL_DECODER_CTX *ctx) const { OSSL_DECODER_CTX_free(ctx); }
};
template <class Ctx> using Context = std::unique_ptr<Ctx, FreeContexts>;

constexpr Digest Known[] = {
    {"sha256", EVP_sha256, KARIL_OID_SHA256, KARIL_OID_SHA256_WITH_RSA},
    {"sha384", EVP_sha384, KARIL_OID_SHA384, KARIL_OID_SHA384_WITH_RSA},
    {"sha512", EVP_sha512, KARIL_OID_SHA512, KARIL_OID_SHA512_WITH_RSA},
    {"sha1", EVP_sha1, KARIL_OID_SHA1, KARIL_OID_SHA1_WITH_RSA},
};

// How a hook ends.
std::int32_t finished(bool isDone, std::size_t size, std::uint32_t &length) {
    ERR_clear_error();
    length = isDone ? static_cast<std::uint32_t>(size) : 0;
    return isDone ? KACERT_Ok : HookFailed;
}

// A private key that was read.
KeyPtr checked(KeyPtr key, const std::string &where) {
    ERR_clear_error();
    if (key == nullptr)
        throw Failure{Exit::Unreadable, where + ": no private RSA key"};
    if (!isUsable(key.get()))
        throw Failure{Exit::Unreadable, where + ": a key of " + std::to_string(EVP_PKEY_get_bits(key.get())) +
                                            " bits; those of 1,024 to 4,096 bits can be used"};
    return key;
}

// What libcrypto asks for a password. It is told none; the question is noted.
int noteQuestion(char *, std::size_t, std::size_t *, const OSSL_PARAM *, void *isAsked) {
    *static_cast<bool *>(isAsked) = true;
    return 0;
}

// A key in whatever form, or null. Without a password `isAsked` tells whether it needs one.
KeyPtr keyIn(karil::Bytes text, const Secret *password, bool &isAsked) {
    const unsigned char *at = text.data();
    std::size_t size = text.size();
    EVP_PKEY *read = nullptr;
    const Context<OSSL_DECODER_CTX> ctx(
        OSSL_DECODER_CTX_new_for_pkey(&read, nullptr, nullptr, "RSA", EVP_PKEY_KEYPAIR, nullptr, nullptr));
    const bool isReady =
        ctx != nullptr && (password == nullptr ? OSSL_DECODER_CTX_set_passphrase_cb(ctx.get(), noteQuestion, &isAsked)
                                               : OSSL_DECODER_CTX_set_passphrase(ctx.get(), password->bytes().data(),
                                                                                 password->bytes().size())) == 1;
    const bool isRead = isReady && OSSL_DECODER_from_data(ctx.get(), &at, &size) == 1;
    KeyPtr key(read);
    return isRead ? std::move(key) : nullptr;
}

} // namespace

std::vector<std::string> digestNames() {
    std::vector<std::string> names;
    for (const Digest &digest : Known)
        names.emplace_back(digest.name);
    return names;
}

const Digest &digestByName(const std::string &name) {
    for (const Digest &digest : Known)
        if (name == digest.name)
            return digest;
    throw Failure{Exit::Misuse, "no digest of the name " + name};
}

KeyPtr makeKey(int bits) {
    KeyPtr key(EVP_RSA_gen(static_cast<unsigned>(bits)));
    if (key == nullptr)
        throw Failure{Exit::Unreadable, "libcrypto made no key"};
    return key;
}

KeyPtr readKey(const KeyFile &file) {
    const std::string name = nameOf(file.path);
    const Secret text(readFile(file.path));
    bool isAsked = false;
    KeyPtr key = keyIn(text.bytes(), nullptr, isAsked);
    if (key == nullptr && isAsked) {
        const Secret password =
            readPassword(file.passwordFile, "Password of " + name, Ask::Once, "--key-password-file");
        key = keyIn(text.bytes(), &password, isAsked);
        if (key == nullptr)
            throw Failure{Exit::BadVerdict, name + ": the password is wrong, or it is no RSA key"};
    }
    return checked(std::move(key), name);
}

void writeKey(const std::string &path, EVP_PKEY *key, bool force) {
    writePem(path, privateOctets(key).bytes(), Kind::RsaPrivateKey, force ? Existing::Replace : Existing::Refuse);
}

karil::Octets publicOctets(EVP_PKEY *key) {
    karil::Octets octets(static_cast<std::size_t>(i2d_PublicKey(key, nullptr)));
    unsigned char *at = octets.data();
    i2d_PublicKey(key, &at);
    return octets;
}

Secret privateOctets(EVP_PKEY *key) {
    Secret octets{karil::Octets(static_cast<std::size_t>(i2d_PrivateKey(key, nullptr)))};
    unsigned char *at = octets.octets().data();
    i2d_PrivateKey(key, &at);
    return octets;
}

bool isUsable(EVP_PKEY *key) {
    return key != nullptr && EVP_PKEY_get_base_id(key) == EVP_PKEY_RSA && EVP_PKEY_get_bits(key) >= LeastBits &&
           EVP_PKEY_get_bits(key) <= MostBits;
}

KeyPtr privateKey(karil::Bytes octets, const std::string &where) {
    const unsigned char *at = octets.data();
    KeyPtr key(d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &at, static_cast<long>(octets.size())));
    return checked(std::move(key), where);
}

karil::Octets randomOctets(std::size_t count) {
    karil::Octets octets(count);
    if (RAND_bytes(octets.data(), static_cast<int>(count)) != 1)
        throw Failure{Exit::Unreadable, "libcrypto has no random octets"};
    return octets;
}

std::int32_t Signs::operator()(karil::Bytes input, std::uint8_t *output, std::uint32_t &length) const {
    auto size = static_cast<std::size_t>(EVP_PKEY_get_size(key));
    if (output == nullptr)
        return finished(true, size, length);
    const Context<EVP_MD_CTX> ctx(EVP_MD_CTX_new());
    const bool isDone = ctx != nullptr &&
                        EVP_DigestSignInit(ctx.get(), nullptr, digest->function(), nullptr, key) == 1 &&
                        EVP_DigestSign(ctx.get(), output, &size, input.data(), input.size()) == 1;
    return finished(isDone, size, length);
}

std::int32_t Digests::operator()(karil::Bytes input, std::uint8_t *output, std::uint32_t &length) const {
    unsigned size = 0;
    const bool isDone = EVP_Digest(input.data(), input.size(), output, &size, digest->function(), nullptr) == 1;
    return finished(isDone, size, length);
}

std::int32_t Operates::operator()(karil::Bytes input, std::uint8_t *output, std::uint32_t &length) const {
    std::size_t size = length;
    const Context<EVP_PKEY_CTX> ctx(EVP_PKEY_CTX_new(key, nullptr));
    const bool isDone = ctx != nullptr && start(ctx.get()) == 1 &&
                        EVP_PKEY_CTX_set_rsa_padding(ctx.get(), RSA_PKCS1_PADDING) == 1 &&
                        run(ctx.get(), output, &size, input.data(), input.size()) == 1;
    return finished(isDone, size, length);
}

} // namespace tool
