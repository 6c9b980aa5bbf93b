// The whole road in eight threads at once, each with contexts of its own. scripts/threads.sh runs it under TSan.
#include "crypto.h"
#include "samples.h"

#include <latch>
#include <thread>

using namespace karil_test;

namespace {

constexpr int Threads = 8;
constexpr int Rounds = 20;

// Signs the short certificate with a key of the thread's own and verifies it. True if all went well.
bool signAndVerify() {
    const KeyPair pair = generated(KA_PKCS7_GenRSAKeyPair);
    const CertPtr read = create<CertDecodeCtx>();
    decode(*read, encode(*filled<CertEncodeCtx>(signBySha1, &pair.secret, sizeof pair.secret)));
    int32_t verdict = 0;
    return KA_PKCS7_VerifySignature(KA_DIGEST_SHA1, read->tbs.data, read->tbs.length, read->signature.data,
                                    read->signature.length, &pair.open, &verdict) == KACERT_Ok &&
           verdict == 1;
}

struct Wanted {
    Octets full;
    std::vector<std::vector<std::string>> answers; // of the system's certificates
};

// Gives what went wrong, or nothing.
std::string walk(const Wanted &want, const std::vector<Octets> &certificates) {
    if (!signAndVerify())
        return "the signed certificate";
    for (int round = 0; round < Rounds; ++round) {
        if (fullCertificate() != want.full)
            return "the encoding";
    }
    for (size_t i = 0; i < certificates.size(); ++i)
        if (answersOf<CertDecodeCtx>(certificates[i]) != want.answers[i])
            return "the answers of certificate " + std::to_string(i);
    return {};
}

TEST(Threads, WholeRoadAtOnce) {
    const Zone utc("UTC");
    const std::vector<Octets> &certificates = systemCertificates();
    Wanted want = {fullCertificate(), {}};
    for (const Octets &der : certificates)
        want.answers.push_back(answersOf<CertDecodeCtx>(der));
    std::string found[Threads];
    std::latch start(Threads);
    std::vector<std::thread> threads;
    for (std::string &trouble : found)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            trouble = walk(want, certificates);
        });
    for (std::thread &thread : threads)
        thread.join();
    for (const std::string &trouble : found)
        EXPECT_EQ(trouble, "");
}

} // namespace
