// libcrypto for tests: objects read and written, keys both ways, signatures, the system's certificates.
#pragma once

#include "testkit.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/provider.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

namespace karil_test {

template <auto Free> struct Freed;
template <class T, void (*Free)(T *)> struct Freed<Free> { using Ptr = std::unique_ptr<T, By<Free>>; };
template <auto Free> using Ssl = typename Freed<Free>::Ptr;
using Pkey = Ssl<EVP_PKEY_free>;
using PkeyCtx = Ssl<EVP_PKEY_CTX_free>;
using TimePtr = Ssl<ASN1_TIME_free>;

// What a d2i function reads, or null unless it takes every octet.
template <auto Read, auto Free> Ssl<Free> parsed(const Octets &der) {
    const uint8_t *at = der.data();
    Ssl<Free> object(Read(nullptr, &at, static_cast<long>(der.size())));
    ERR_clear_error();
    return at == der.data() + der.size() ? std::move(object) : nullptr;
}
// What an i2d function writes.
template <class T> Octets derOf(int (*write)(const T *, unsigned char **), const T *value) {
    unsigned char *der = nullptr;
    const int size = write(value, &der);
    Octets octets(der, der + std::max(size, 0));
    OPENSSL_free(der);
    return octets;
}
inline Octets octetsOf(const ASN1_STRING *string) {
    const uint8_t *data = string != nullptr ? ASN1_STRING_get0_data(string) : nullptr;
    return data != nullptr ? Octets(data, data + ASN1_STRING_length(string)) : Octets();
}

struct KeyPair {
    RsaPublicKeyRecord open;
    RsaPrivateKeyRecord secret;
};
inline KeyPair generated(int32_t (*generate)(RsaPublicKeyRecord *, RsaPrivateKeyRecord *)) {
    KeyPair pair = {};
    generate(&pair.open, &pair.secret);
    return pair;
}
// A key's numbers one after another, as the functions of key.h take them.
template <class Record> Octets numbersOf(const Record &key) {
    const auto *octets = reinterpret_cast<const uint8_t *>(&key);
    return {octets + offsetof(Record, modulus), octets + sizeof key};
}
// One of 1,024 bits for all.
inline const KeyPair &keyPair() {
    static const KeyPair pair = generated(KA_PKCS7_GenRSAKeyPair);
    return pair;
}
// RSAPrivateKey ::= SEQUENCE { 0, n, e, d, p, q, d mod (p - 1), d mod (q - 1), q^-1 mod p } as libcrypto's key.
inline Pkey keyOf(const RsaPrivateKeyRecord &key) {
    const auto number = [](const auto &field) {
        const uint8_t *first = std::find_if(field, field + sizeof field, [](uint8_t octet) { return octet != 0; });
        return tlv(0x02, cat({Octets(*first >> 7), Octets(first, field + sizeof field)}));
    };
    return parsed<d2i_AutoPrivateKey, EVP_PKEY_free>(
        seq({hex("02 01 00"), number(key.modulus), number(key.publicExponent), number(key.exponent), number(key.prime1),
             number(key.prime2), number(key.primeExponent1), number(key.primeExponent2), number(key.coefficient)}));
}
inline Octets publicKeyOf(const Pkey &key) {
    return derOf(i2d_PublicKey, key.get());
}

// One of libcrypto's operations with PKCS#1 v1.5 padding and no digest of its own.
inline Octets evp(const Pkey &key, int (*init)(EVP_PKEY_CTX *),
                  int (*work)(EVP_PKEY_CTX *, unsigned char *, size_t *, const unsigned char *, size_t),
                  const Octets &input) {
    const PkeyCtx ctx(EVP_PKEY_CTX_new(key.get(), nullptr));
    Octets output(1024);
    size_t size = output.size();
    const bool isDone = init(ctx.get()) == 1 && work(ctx.get(), output.data(), &size, input.data(), input.size()) == 1;
    ERR_clear_error();
    output.resize(isDone ? size : 0);
    return output;
}
// PKCS#1 v1.5 over `input`, or, without a digest, over the octets as they are.
inline Octets signWith(const Pkey &key, const EVP_MD *md, const Octets &input) {
    if (md == nullptr)
        return evp(key, EVP_PKEY_sign_init, EVP_PKEY_sign, input);
    const Ssl<EVP_MD_CTX_free> ctx(EVP_MD_CTX_new());
    Octets signature(1024);
    size_t size = signature.size();
    const bool isDone = EVP_DigestSignInit(ctx.get(), nullptr, md, nullptr, key.get()) == 1 &&
                        EVP_DigestSign(ctx.get(), signature.data(), &size, input.data(), input.size()) == 1;
    signature.resize(isDone ? size : 0);
    return signature;
}

inline Octets pemOf(const char *name, const Octets &der) {
    const std::unique_ptr<BIO, By<BIO_free>> out(BIO_new(BIO_s_mem()));
    PEM_write_bio(out.get(), name, "", der.data(), static_cast<long>(der.size()));
    char *data = nullptr;
    const long size = BIO_get_mem_data(out.get(), &data);
    return Octets(data, data + size);
}
// libcrypto with its old ciphers, in a context of its own.
inline OSSL_LIB_CTX *legacy() {
    static OSSL_LIB_CTX *const context = [] {
        OSSL_LIB_CTX *made = OSSL_LIB_CTX_new();
        EXPECT_NE(OSSL_PROVIDER_load(made, "default"), nullptr);
        EXPECT_NE(OSSL_PROVIDER_load(made, "legacy"), nullptr);
        return made;
    }();
    return context;
}
// All of the ca-certificates package, in DER.
inline const std::vector<Octets> &systemCertificates() {
    static const std::vector<Octets> all = [] {
        std::vector<Octets> found;
        const std::unique_ptr<BIO, By<BIO_free>> file(BIO_new_file("/etc/ssl/certs/ca-certificates.crt", "r"));
        while (X509 *const cert = PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr)) {
            found.push_back(derOf(i2d_X509, cert));
            X509_free(cert);
        }
        ERR_clear_error();
        return found;
    }();
    return all;
}

} // namespace karil_test
