// Keys, national extensions and the three checks of a signature while allocations fail.
#include "allocation.h"
#include "samples.h"

#include "karil/cert_gb.h"
#include "karil/crypt.h"
#include "karil/key.h"
#include "karil/verify.h"

#include "pkey.h"

#include <malloc.h>

#include <algorithm>
#include <cstring>

using namespace karil_test;

namespace {

const RsaPrivateKeyRecord &secret() {
    static const RsaPrivateKeyRecord record = [] {
        RsaPublicKeyRecord open;
        RsaPrivateKeyRecord made;
        EXPECT_EQ(KA_PKCS7_GenRSAKeyPair(&open, &made), KACERT_Ok);
        return made;
    }();
    return record;
}

void encodeKeys(Run &run) {
    Octets der(1024), wrapped(1024);
    uint32_t size = 0, wrappedSize = 0;
    run.step([&] { return KA_Encode_PrivateKey(secret().modulus, der.data(), &size); });
    run.step([&] { return KI_PKCS1to8KEY(der.data(), 600, wrapped.data(), &wrappedSize); });
    run.answer("key", der);
    run.answer("wrapped", wrapped);
    run.step([&] { return KA_Encode_PublicKey(secret().modulus, der.data(), &size); });
    run.answer("public", der);
}

void setNational(Run &run) {
    CertEncodeCtx *raw = nullptr;
    const Octets issuer = CertParts().whole();
    run.step([&] { return KACert_CreateCertEncodeCtx_Ex(&raw, issuer.data(), static_cast<int32_t>(issuer.size())); });
    const CertPtr ctx(raw);
    KA_GBPRIV_IDENTIFY record = {1, 1, 1, {'r'}, 1, {'m'}, 1, {'p'}, 1};
    run.step([&] { return KACert_SetCertPrivate_GB(raw, CERT_GBPRIV_IDENTIFY, &record, sizeof record, 1); });
    run.step([&] { return KACert_SetCertPrivate_GB(raw, CERT_GBPRIV_7_2, "text", 4, 0); });
    if (!run.isWhole()) return;
    run.answer("issuer", ctx->issuerDer);
    run.answer("numbers", ctx->extensions.privateExtensions->value);
    run.answer("text", ctx->extensions.privateExtensions->next->value);
}

void listDigests(Run &run) {
    KA_THUMBPRINT sha1 = {1, {1}, 20, nullptr};
    const KA_THUMBPRINT md5 = {0, {2}, 16, &sha1};
    Octets result(128);
    uint32_t size = 0;
    run.step([&] { return EnCodeThums(&md5, sizeof md5, result.data(), &size); });
    run.answer("list", result);
}

const Octets &selfSigned() {
    static const Octets der = [] {
        const Pkey key(EVP_RSA_gen(1024));
        CertParts parts;
        const auto bits = [](const Octets &octets) { return tlv(0x03, cat({hex("00"), octets})); };
        parts.subject = parts.issuer;
        parts.validity = seq({tlv(0x17, text("200101000000Z")), tlv(0x17, text("371231000000Z"))});
        parts.key = seq({algorithm(RsaEncryption), bits(derOf(i2d_PublicKey, key.get()))});
        parts.signature = bits(signWith(key, EVP_sha1(), parts.tbs()));
        return parts.whole();
    }();
    return der;
}

void verifyIn(Run &run) {
    const Octets &der = selfSigned();
    const auto size = static_cast<uint32_t>(der.size());
    run.step([&] { return KA_VerifyCert(der.data(), size, der.data(), size); });
}

void verifyRequestIn(Run &run) {
    static const Octets pem = [] {
        const Pkey key(EVP_RSA_gen(1024));
        const auto bits = [](const Octets &octets) { return tlv(0x03, cat({hex("00"), octets})); };
        const Octets spki = seq({algorithm(RsaEncryption), bits(derOf(i2d_PublicKey, key.get()))});
        const Octets tbs = seq({hex("02 01 00"), commonName("Leaf"), spki, hex("A0 00")});
        const Octets der = seq({tbs, algorithm(Sha1WithRsa), bits(signWith(key, EVP_sha1(), tbs))});
        Octets lines(der.size() * 2);
        lines.resize(static_cast<size_t>(EVP_EncodeBlock(lines.data(), der.data(), static_cast<int>(der.size()))));
        return lines;
    }();
    run.step([&] { return KA_VerifyCsr_Sign(pem.data(), static_cast<int32_t>(pem.size())); });
}

TEST(FailingAllocations, KeysAndChecks) {
    const Zone utc("UTC");
    const Scenario scenarios[] = {
        {"encode keys", encodeKeys},
        {"seed and set national extensions", setNational, {KACERT_MemoryErr, KACERT_InvalidParamErr}},
        {"digest lists", listDigests},
        {"verify a certificate", verifyIn},
        {"verify a request in PEM", verifyRequestIn, {KACERT_MemoryErr, -1}},
    };
    for (const Scenario &scenario : scenarios) sweep(scenario, Pool::Library);
    // libcrypto's want of memory is a signature that does not verify.
    sweep({"verify a certificate", verifyIn, {KACERT_VerifySignatureErr, KACERT_Ok}}, Pool::Crypto);
    sweep({"verify a request in PEM", verifyRequestIn, {KACERT_VerifySignatureErr, KACERT_Ok}}, Pool::Crypto);
}

// What was released of a private key has none of its numbers left.
TEST(FailingAllocations, KeysAreWiped) {
    static const Octets prime(secret().prime1 + 64, secret().prime1 + 128);
    static int blocks = 0, found = 0;
    onRelease([](const void *block) {
        const auto *first = static_cast<const uint8_t *>(block);
        const uint8_t *last = first + malloc_usable_size(const_cast<void *>(block));
        ++blocks;
        found += std::search(first, last, prime.begin(), prime.end()) != last ? 1 : 0;
    });
    karil_test::Run run(false);
    encodeKeys(run);
    // The copy of a hook's parameter, where it is replaced and where its context goes.
    const CertPtr ctx = newCert();
    for (int i = 0; i < 2; ++i)
        KACert_SetCertSignFunc(ctx.get(), fixedSignature, prime.data(), static_cast<uint32_t>(prime.size()));
    CertPtr other = newCert();
    KACert_SetCertSignFunc(other.get(), fixedSignature, prime.data(), static_cast<uint32_t>(prime.size()));
    other.reset();
    onRelease(nullptr);
    EXPECT_GE(blocks, 6); // both keys, and four copies of a parameter
    EXPECT_EQ(found, 0);
}

} // namespace
