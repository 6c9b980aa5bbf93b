// The whole road in eight threads at once, each with contexts of its own. scripts/threads.sh runs it under TSan.
#include "samples.h"

#include "karil/crypt.h"
#include "karil/text.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>

using namespace karil_test;

namespace {

constexpr int Threads = 8;
constexpr int Rounds = 20;

int32_t signWithRsa(const uint8_t *input, uint32_t size, uint8_t *output, uint32_t *outputLength, void *key) {
    return output == nullptr ? KACERT_Ok
                             : KA_PKCS7_SignedData(KA_DIGEST_SHA1, input, size, output, outputLength,
                                                   static_cast<const RsaPrivateKeyRecord *>(key));
}

// What the certificate answers to everything that can be asked of it.
Octets answersOf(const Octets &der) {
    const CertPtr ctx = newCert();
    Octets all;
    all.push_back(static_cast<uint8_t>(decode(ctx, der)));
    for (const int32_t id : queries()) {
        Octets octets(1 << 14);
        uint32_t length = 0;
        all.push_back(static_cast<uint8_t>(KACert_GetCertAttributeChar(ctx.get(), id, octets.data(), &length)));
        all.insert(all.end(), octets.begin(), octets.begin() + length);
    }
    return all;
}

// Signs the short certificate with a key of the thread's own and verifies it. True where all went well.
bool signAndVerify() {
    RsaPublicKeyRecord open = {};
    RsaPrivateKeyRecord secret = {};
    const CertPtr ctx = newCert();
    fillCert(ctx);
    if (KA_PKCS7_GenRSAKeyPair(&open, &secret) != KACERT_Ok ||
        KACert_SetCertSignFunc(ctx.get(), signWithRsa, &secret, sizeof secret) != KACERT_Ok)
        return false;
    const CertPtr read = newCert();
    Octets tbs(4096);
    Octets signature(256);
    uint32_t tbsLength = 0;
    uint32_t signatureLength = 0;
    int32_t verdict = 0;
    return decode(read, encoded(ctx)) == KACERT_Ok &&
           KACert_GetCertAttributeChar(read.get(), CERT_TBS_CERTIFICATE, tbs.data(), &tbsLength) == KACERT_Ok &&
           KACert_GetCertAttributeChar(read.get(), CERT_CA_SIGNATURE, signature.data(), &signatureLength) ==
               KACERT_Ok &&
           KA_PKCS7_VerifySignature(KA_DIGEST_SHA1, tbs.data(), tbsLength, signature.data(), signatureLength, &open,
                                    &verdict) == KACERT_Ok &&
           verdict == 1;
}

bool convertsText() {
    const Octets chinese = hex("D6 D0 CE C4");
    Octets utf8(64);
    Octets back(64);
    uint32_t size = 0;
    uint32_t backSize = 0;
    return KI_Chinese2UTF8String(chinese.data(), 4, utf8.data(), &size) == KACERT_Ok &&
           KI_UTF8String2Chinese(utf8.data(), static_cast<int32_t>(size), back.data(), &backSize) == KACERT_Ok &&
           Octets(back.begin(), back.begin() + backSize) == chinese;
}

struct Wanted {
    Octets full;
    std::vector<Octets> answers; // of allCertificates()
};

// Gives what went wrong, or nothing.
std::string walk(const Wanted &want, const std::vector<Octets> &certificates) {
    if (!signAndVerify()) return "the signed certificate";
    for (int round = 0; round < Rounds; ++round) {
        if (fullCertificate() != want.full) return "the encoding";
        if (!convertsText()) return "the text";
    }
    for (size_t i = 0; i < certificates.size(); ++i)
        if (answersOf(certificates[i]) != want.answers[i]) return "the answers of certificate " + std::to_string(i);
    return {};
}

TEST(Threads, WholeRoadAtOnce) {
    const Zone utc("UTC");
    const std::vector<Octets> certificates = allCertificates();
    Wanted want = {fullCertificate(), {}};
    for (const Octets &der : certificates) want.answers.push_back(answersOf(der));
    std::string found[Threads];
    std::latch start(Threads);
    std::vector<std::thread> threads;
    for (std::string &trouble : found)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            trouble = walk(want, certificates);
        });
    for (std::thread &thread : threads) thread.join();
    for (const std::string &trouble : found) EXPECT_EQ(trouble, "");
}

} // namespace
