#include "crypto.h"

#include "failure.h"
#include "text.h"

#include <openssl/err.h>
#include <openssl/x509.h>

#include <algorithm>
#include <string_view>

namespace tool {

karil::Octets digestOf(const EVP_MD *digest, karil::Bytes octets) {
    karil::Octets result(EVP_MAX_MD_SIZE);
    unsigned length = 0;
    if (EVP_Digest(octets.data(), octets.size(), result.data(), &length, digest, nullptr) != 1)
        throw Failure{Exit::Unreadable, "libcrypto cannot digest"};
    result.resize(length);
    return result;
}

const EVP_MD *digestNamed(karil::Bytes oid) {
    const std::string name = oidName(oid);
    return name == "md2" ? nullptr : EVP_get_digestbyname(name.c_str());
}

KeyPtr publicKeyOf(const Element &info) {
    const unsigned char *octets = info.whole.data();
    KeyPtr key(info ? d2i_PUBKEY(nullptr, &octets, static_cast<long>(info.whole.size())) : nullptr);
    ERR_clear_error();
    return key;
}

namespace {

// Signature algorithms by their names: the kind of key, and the digest.
constexpr struct {
    std::string_view name;
    int key;
    const EVP_MD *(*digest)();
} algorithms[] = {
    {"md5WithRSAEncryption", EVP_PKEY_RSA, EVP_md5},
    {"sha1WithRSAEncryption", EVP_PKEY_RSA, EVP_sha1},
    {"sha224WithRSAEncryption", EVP_PKEY_RSA, EVP_sha224},
    {"sha256WithRSAEncryption", EVP_PKEY_RSA, EVP_sha256},
    {"sha384WithRSAEncryption", EVP_PKEY_RSA, EVP_sha384},
    {"sha512WithRSAEncryption", EVP_PKEY_RSA, EVP_sha512},
    {"ecdsa-with-SHA1", EVP_PKEY_EC, EVP_sha1},
    {"ecdsa-with-SHA256", EVP_PKEY_EC, EVP_sha256},
    {"ecdsa-with-SHA384", EVP_PKEY_EC, EVP_sha384},
    {"ecdsa-with-SHA512", EVP_PKEY_EC, EVP_sha512},
    {"Ed25519", EVP_PKEY_ED25519, nullptr},
};

} // namespace

// libcrypto compares the whole DigestInfo, which the library's own check leaves alone (karil/verify.h), and has keys
// and digests that the library does not have.
bool isSignedBy(const Element &publicKeyInfo, karil::Bytes algorithm, karil::Bytes octets, karil::Bytes signature) {
    const std::string name = oidName(algorithm);
    const auto *row =
        std::find_if(std::begin(algorithms), std::end(algorithms), [&](const auto &each) { return each.name == name; });
    if (row == std::end(algorithms))
        throw Failure{Exit::Unreadable, inWords(KACERT_InvalidSignatureAlgErr, name)};
    const KeyPtr key = publicKeyOf(publicKeyInfo);
    if (!key || EVP_PKEY_get_base_id(key.get()) != row->key)
        return false;
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    const EVP_MD *digest = row->digest == nullptr ? nullptr : row->digest();
    const bool isGood =
        ctx && EVP_DigestVerifyInit(ctx.get(), nullptr, digest, nullptr, key.get()) == 1 &&
        EVP_DigestVerify(ctx.get(), signature.data(), signature.size(), octets.data(), octets.size()) == 1;
    ERR_clear_error();
    return isGood;
}

} // namespace tool
