#include "party.h"

#include <map>

namespace karil_bench {

namespace {

Octets issuerOf(X509 *x509) {
    uint8_t *der = nullptr;
    const int size = i2d_X509_NAME(X509_get_issuer_name(x509), &der);
    must(size > 0, "libcrypto writes the name");
    Octets octets(der, der + size);
    OPENSSL_free(der);
    return octets;
}

Octets serialOf(X509 *x509) {
    const ASN1_INTEGER *serial = X509_get0_serialNumber(x509);
    return Octets(serial->data, serial->data + serial->length);
}

Party makeParty() {
    const RsaPrivateKeyRecord *const secret = &keyPair().secret;
    Party made;
    uint32_t length = 0;
    Octets key(4096);
    must(KA_Encode_PublicKey(keyPair().open.modulus, key.data(), &length) == KACERT_Ok, "karil writes a key");
    made.publicKey = karil_test::copyOf(Bytes(key).first(length));
    const CertPtr ctx = buildWithKaril(signingHook, &secret, sizeof secret);
    must(karil_test::set(*ctx, CERT_SUBJECTPUBLICKEYINFO, made.publicKey) == KACERT_Ok, "karil takes a key");
    made.certificate = encodeWithKaril(ctx.get());
    const uint8_t *at = made.certificate.data();
    made.x509.reset(d2i_X509(nullptr, &at, static_cast<long>(made.certificate.size())));
    must(made.x509 != nullptr, "libcrypto decodes the certificate");
    must(KA_Encode_PrivateKey(secret->modulus, key.data(), &length) == KACERT_Ok, "karil writes a key");
    at = key.data();
    made.key.reset(d2i_PrivateKey(EVP_PKEY_RSA, nullptr, &at, static_cast<long>(length)));
    must(made.key != nullptr && X509_check_private_key(made.x509.get(), made.key.get()) == 1,
         "libcrypto takes the key");
    made.issuer = issuerOf(made.x509.get());
    made.serial = serialOf(made.x509.get());
    return made;
}

} // namespace

const Party &party() {
    static const Party one = makeParty();
    return one;
}

const Operation &operation(int (*prepare)(EVP_PKEY_CTX *), decltype(Operation::run) run) {
    static std::map<decltype(run), Operation> made;
    Operation &one = made[run];
    if (one.ctx == nullptr) {
        one.ctx.reset(EVP_PKEY_CTX_new(party().key.get(), nullptr));
        one.run = run;
        must(prepare(one.ctx.get()) == 1, "libcrypto prepares an operation");
    }
    return one;
}

int32_t runOperation(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                     void *parameter) {
    const Operation &one = **static_cast<const Operation **>(parameter);
    size_t size = *outputLength;
    if (one.run(one.ctx.get(), output, &size, input, inputLength) != 1)
        return KAPKCS7_RsaOperationErr;
    *outputLength = static_cast<uint32_t>(size);
    return KACERT_Ok;
}

} // namespace karil_bench
