// OCSP messages by libcrypto.
// A method of a key's own is in the deprecated low-level interface alone.
#define OPENSSL_SUPPRESS_DEPRECATED
#include "ocsp_messages.h"

#include <openssl/ocsp.h>
#include <openssl/rsa.h>

#include <algorithm>

namespace karil_bench {

namespace {

using RequestPtr = Owned<OCSP_REQUEST, OCSP_REQUEST_free>;
using BasicPtr = Owned<OCSP_BASICRESP, OCSP_BASICRESP_free>;
using ResponsePtr = Owned<OCSP_RESPONSE, OCSP_RESPONSE_free>;
using IdPtr = Owned<OCSP_CERTID, OCSP_CERTID_free>;

template <class T> Octets written(int (*write)(const T *, uint8_t **), const T *object) {
    uint8_t *der = nullptr;
    const int size = write(object, &der);
    must(size > 0, "libcrypto encodes");
    Octets octets(der, der + size);
    OPENSSL_free(der);
    return octets;
}

IdPtr identity(int32_t index) {
    const Octets octets = serialOf(index);
    const Owned<BIGNUM, BN_free> number(BN_bin2bn(octets.data(), static_cast<int>(octets.size()), nullptr));
    const Owned<ASN1_INTEGER, ASN1_INTEGER_free> serial(BN_to_ASN1_INTEGER(number.get(), nullptr));
    IdPtr id(OCSP_cert_id_new(EVP_sha1(), X509_get_issuer_name(party().x509.get()),
                              X509_get0_pubkey_bitstr(party().x509.get()), serial.get()));
    must(id != nullptr, "libcrypto makes an identity");
    return id;
}

int copyingMethod(int size, const uint8_t *input, uint8_t *output, RSA *, int) {
    std::copy_n(input, size, output);
    return static_cast<int>(SignatureSize);
}

// The party's key, whose private operation copies.
EVP_PKEY *copyingKey() {
    static const Owned<EVP_PKEY, EVP_PKEY_free> key = [] {
        RSA_METHOD *const method = RSA_meth_dup(RSA_PKCS1_OpenSSL());
        RSA_meth_set_priv_enc(method, copyingMethod);
        RSA *const rsa = EVP_PKEY_get1_RSA(party().key.get());
        must(RSA_set_method(rsa, method) == 1, "libcrypto takes a method");
        Owned<EVP_PKEY, EVP_PKEY_free> made(EVP_PKEY_new());
        must(EVP_PKEY_assign_RSA(made.get(), rsa) == 1, "libcrypto takes the key");
        return made;
    }();
    return key.get();
}

} // namespace

Octets requestByLibcrypto(int32_t count) {
    const RequestPtr request(OCSP_REQUEST_new());
    for (int32_t i = 0; i < count; ++i)
        must(OCSP_request_add0_id(request.get(), identity(i).release()) != nullptr, "libcrypto takes an identity");
    const Bytes nonce = bytesOf(Nonce);
    must(OCSP_request_set1_name(request.get(), X509_get_issuer_name(party().x509.get())) == 1 &&
             OCSP_request_add1_nonce(request.get(), const_cast<uint8_t *>(nonce.data()),
                                     static_cast<int>(nonce.size())) == 1,
         "libcrypto takes name and nonce");
    char cutoff[] = "20200913122640Z";
    must(OCSP_REQUEST_add_ext(
             request.get(), Owned<X509_EXTENSION, X509_EXTENSION_free>(OCSP_archive_cutoff_new(cutoff)).get(), -1) == 1,
         "libcrypto takes an extension");
    return written(i2d_OCSP_REQUEST, request.get());
}

void readRequestWithLibcrypto(Bytes der) {
    const uint8_t *at = der.data();
    must(RequestPtr(d2i_OCSP_REQUEST(nullptr, &at, static_cast<long>(der.size()))) != nullptr,
         "libcrypto decodes the request");
}

Octets responseByLibcrypto(int32_t count) {
    static std::vector<IdPtr> identities;
    for (int32_t i = static_cast<int32_t>(identities.size()); i < count; ++i)
        identities.push_back(identity(i));
    const BasicPtr basic(OCSP_BASICRESP_new());
    for (int32_t i = 0; i < count; ++i) {
        const Owned<ASN1_TIME, ASN1_TIME_free> first(ASN1_GENERALIZEDTIME_set(nullptr, ThisUpdate));
        const Owned<ASN1_TIME, ASN1_TIME_free> next(ASN1_GENERALIZEDTIME_set(nullptr, NextUpdate));
        must(OCSP_basic_add1_status(basic.get(), identities[static_cast<size_t>(i)].get(), V_OCSP_CERTSTATUS_GOOD, 0,
                                    nullptr, first.get(), next.get()) != nullptr,
             "libcrypto takes a status");
    }
    must(OCSP_basic_sign(basic.get(), party().x509.get(), copyingKey(), EVP_sha1(), nullptr, 0) == 1,
         "libcrypto signs");
    const ResponsePtr response(OCSP_response_create(OCSP_RESPONSE_STATUS_SUCCESSFUL, basic.get()));
    must(response != nullptr, "libcrypto makes the response");
    return written(i2d_OCSP_RESPONSE, response.get());
}

void readResponseWithLibcrypto(Bytes der) {
    const uint8_t *at = der.data();
    const ResponsePtr response(d2i_OCSP_RESPONSE(nullptr, &at, static_cast<long>(der.size())));
    must(response != nullptr && BasicPtr(OCSP_response_get1_basic(response.get())) != nullptr,
         "libcrypto decodes the response");
}

} // namespace karil_bench
