// The same messages by libcrypto and GnuTLS.
#include "message.h"

#include <gnutls/abstract.h>
#include <gnutls/pkcs7.h>
#include <openssl/cms.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace karil_bench {

namespace {

using CmsPtr = Owned<CMS_ContentInfo, CMS_ContentInfo_free>;
using BioPtr = Owned<BIO, BIO_free_all>;

BioPtr readFrom(Bytes octets) {
    BioPtr bio(BIO_new_mem_buf(octets.data(), static_cast<int>(octets.size())));
    must(bio != nullptr, "libcrypto reads octets");
    return bio;
}

CmsPtr parsed(Bytes message) {
    const uint8_t *at = message.data();
    CmsPtr cms(d2i_CMS_ContentInfo(nullptr, &at, static_cast<long>(message.size())));
    must(cms != nullptr, "libcrypto decodes the message");
    return cms;
}

size_t written(CMS_ContentInfo *cms, Octets &room) {
    uint8_t *out = room.data();
    const int size = i2d_CMS_ContentInfo(cms, &out);
    must(size > 0 && static_cast<size_t>(size) <= room.size(), "libcrypto writes the message");
    return static_cast<size_t>(size);
}

struct Parties {
    STACK_OF(X509) * all;
    Parties() : all(sk_X509_new_null()) { sk_X509_push(all, party().x509.get()); }
    Parties(const Parties &) = delete;
    Parties &operator=(const Parties &) = delete;
    ~Parties() { sk_X509_free(all); }
};

CmsPtr envelope(Bytes content, const EVP_CIPHER *cipher) {
    const Parties parties;
    CmsPtr cms(CMS_encrypt(parties.all, readFrom(content).get(), cipher, CMS_BINARY));
    must(cms != nullptr, "libcrypto envelops");
    return cms;
}

} // namespace

Bytes contentOf(Content content) {
    static std::map<size_t, Octets> made;
    Octets &octets = made[content.size];
    while (octets.size() < content.size)
        octets.push_back(static_cast<uint8_t>(octets.size() * 7 + octets.size() / 251));
    return octets;
}

size_t signWithLibcrypto(Bytes content, Octets &room) {
    constexpr unsigned Flags = CMS_BINARY | CMS_NOSMIMECAP | CMS_PARTIAL;
    const CmsPtr cms(CMS_sign(nullptr, nullptr, nullptr, nullptr, Flags));
    must(CMS_add1_signer(cms.get(), party().x509.get(), party().key.get(), EVP_sha1(), Flags) != nullptr &&
             CMS_final(cms.get(), readFrom(content).get(), nullptr, CMS_BINARY) == 1,
         "libcrypto signs");
    return written(cms.get(), room);
}

void verifyWithLibcrypto(Bytes message) {
    const Parties parties;
    must(CMS_verify(parsed(message).get(), parties.all, nullptr, nullptr, nullptr,
                    CMS_BINARY | CMS_NO_SIGNER_CERT_VERIFY | CMS_NOINTERN) == 1,
         "libcrypto verifies the message");
}

void decodeMessageWithLibcrypto(Bytes message) {
    parsed(message);
}

size_t envelopWithLibcrypto(Bytes content, Octets &room) {
    return written(envelope(content, EVP_des_ede3_cbc()).get(), room);
}

Octets envelopFor(Cipher cipher, Bytes content) {
    Octets room(content.size() + 4096);
    const EVP_CIPHER *const by = cipher == Cipher::Aes ? EVP_aes_128_cbc() : EVP_des_ede3_cbc();
    room.resize(written(envelope(content, by).get(), room));
    return room;
}

void openWithLibcrypto(Bytes message, Bytes content) {
    const BioPtr out(BIO_new(BIO_s_mem()));
    must(CMS_decrypt(parsed(message).get(), party().key.get(), party().x509.get(), nullptr, out.get(), CMS_BINARY) == 1,
         "libcrypto opens it");
    char *data = nullptr;
    const long size = BIO_get_mem_data(out.get(), &data);
    must(static_cast<size_t>(size) == content.size() && memcmp(data, content.data(), content.size()) == 0,
         "the content is the same");
}

namespace {

using Pkcs7 = Owned<gnutls_pkcs7_int, gnutls_pkcs7_deinit>;

gnutls_datum_t datumOf(Bytes octets) {
    return {const_cast<uint8_t *>(octets.data()), static_cast<unsigned>(octets.size())};
}

Pkcs7 emptyMessage() {
    gnutls_pkcs7_t raw = nullptr;
    must(gnutls_pkcs7_init(&raw) == 0, "GnuTLS makes a message");
    return Pkcs7(raw);
}

Pkcs7 importedMessage(Bytes message) {
    Pkcs7 imported = emptyMessage();
    const gnutls_datum_t der = datumOf(message);
    must(gnutls_pkcs7_import(imported.get(), &der, GNUTLS_X509_FMT_DER) == 0, "GnuTLS decodes the message");
    return imported;
}

// The party, as GnuTLS has it.
struct GnutlsParty {
    gnutls_x509_crt_t certificate = nullptr;
    gnutls_privkey_t key = nullptr;
};
const GnutlsParty &gnutlsParty() {
    static const GnutlsParty one = [] {
        GnutlsParty made;
        uint8_t *der = nullptr;
        const int size = i2d_PrivateKey(party().key.get(), &der);
        const gnutls_datum_t certificate = datumOf(party().certificate);
        const gnutls_datum_t key = {der, static_cast<unsigned>(std::max(size, 0))};
        must(gnutls_x509_crt_init(&made.certificate) == 0 &&
                 gnutls_x509_crt_import(made.certificate, &certificate, GNUTLS_X509_FMT_DER) == 0 &&
                 gnutls_privkey_init(&made.key) == 0 &&
                 gnutls_privkey_import_x509_raw(made.key, &key, GNUTLS_X509_FMT_DER, nullptr, 0) == 0,
             "GnuTLS takes certificate and key");
        OPENSSL_free(der);
        return made;
    }();
    return one;
}

} // namespace

size_t signWithGnutls(Bytes content, Octets &room) {
    const Pkcs7 message = emptyMessage();
    const gnutls_datum_t data = datumOf(content);
    must(gnutls_pkcs7_sign(message.get(), gnutlsParty().certificate, gnutlsParty().key, &data, nullptr, nullptr,
                           GNUTLS_DIG_SHA1,
                           GNUTLS_PKCS7_EMBED_DATA | GNUTLS_PKCS7_INCLUDE_TIME | GNUTLS_PKCS7_INCLUDE_CERT) == 0,
         "GnuTLS signs");
    size_t size = room.size();
    must(gnutls_pkcs7_export(message.get(), GNUTLS_X509_FMT_DER, room.data(), &size) == 0, "GnuTLS writes the message");
    return size;
}

void verifyWithGnutls(Bytes message) {
    const Pkcs7 imported = importedMessage(message);
    must(gnutls_pkcs7_verify_direct(imported.get(), gnutlsParty().certificate, 0, nullptr,
                                    GNUTLS_VERIFY_ALLOW_SIGN_WITH_SHA1 | GNUTLS_VERIFY_DISABLE_TIME_CHECKS) == 0,
         "GnuTLS verifies the message");
}

void decodeMessageWithGnutls(Bytes message) {
    importedMessage(message);
}

} // namespace karil_bench
