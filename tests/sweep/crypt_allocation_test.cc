// Keys, signatures and digests while libcrypto's allocations fail.
#include "allocation.h"

#include "karil/crypt.h"

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <cstring>

using namespace karil_test;

namespace {

struct Pair {
    RsaPublicKeyRecord open;
    RsaPrivateKeyRecord secret;
};

const Pair &shared() {
    static const Pair pair = [] {
        Pair made = {};
        EXPECT_EQ(KA_PKCS7_GenRSAKeyPair(&made.open, &made.secret), KACERT_Ok);
        return made;
    }();
    return pair;
}

const Octets Message = text("message");
constexpr uint32_t Size = 128; // octets of the modulus
constexpr uint32_t Untouched = 12345;

void signIn(Run &run) {
    Octets signature(256);
    uint32_t length = Untouched;
    run.step([&] {
        return KA_PKCS7_SignedData(KA_DIGEST_SHA1, Message.data(), 7, signature.data(), &length, &shared().secret);
    });
    EXPECT_TRUE(run.isWhole() ? length == Size : length == Untouched || length == UINT32_MAX) << length;
    run.answer("signature", signature);
}

void verifyIn(Run &run) {
    static const Octets signature = [] {
        Octets made(Size);
        uint32_t length = 0;
        EXPECT_EQ(KA_PKCS7_SignedData(KA_DIGEST_MD5, Message.data(), 7, made.data(), &length, &shared().secret), 0);
        return made;
    }();
    int32_t verdict = 2;
    run.step([&] {
        return KA_PKCS7_VerifySignature(KA_DIGEST_MD5, Message.data(), 7, signature.data(), Size, &shared().open,
                                        &verdict);
    });
    EXPECT_EQ(verdict == 2, !run.isWhole());
    run.answer("verdict", verdict == 0 ? Octets() : Octets{1});
}

// What one key closes the other opens; the public key's blocks are random, what comes out is not.
void closeAndOpenIn(Run &run) {
    Octets block(256);
    Octets opened(256);
    uint32_t closedLength = 0;
    uint32_t length = 0;
    run.step([&] { return KA_PKCS7_RSAPublicEncrypt(block.data(), &closedLength, Message.data(), 7, &shared().open); });
    run.step([&] { return KA_PKCS7_RSAPrivateDecrypt(opened.data(), &length, block.data(), Size, &shared().secret); });
    opened.resize(run.isWhole() ? length : 0);
    run.answer("by the private key", opened);
    opened.assign(256, 0);
    run.step(
        [&] { return KA_PKCS7_RSAPrivateEncrypt(block.data(), &closedLength, Message.data(), 7, &shared().secret); });
    run.step([&] { return KA_PKCS7_RSAPublicDecrypt(opened.data(), &length, block.data(), Size, &shared().open); });
    opened.resize(run.isWhole() ? length : 0);
    run.answer("by the public key", opened);
}

// With no generator of the thread's own yet.
void drawIn(Run &run) {
    OPENSSL_thread_stop();
    Octets drawn(32);
    const uint32_t length = 32;
    run.step([&] { return KA_PKCS7_GenerateBytes(drawn.data(), &length); });
    run.answer("is drawn", Octets{drawn != Octets(32)});
}

TEST(FailingAllocations, SignaturesAndKeys) {
    const Scenario scenarios[] = {
        {"sign", signIn, {KAPKCS7_SignErr, KAPKCS7_RsaOperationErr}},
        // A failed operation is a bad signature.
        {"verify", verifyIn, {KACERT_VerifySignatureErr, KACERT_Ok}, {"verdict"}},
        // libcrypto can do without some of what it asks for.
        {"close and open", closeAndOpenIn, {KAPKCS7_RsaOperationErr, KACERT_Ok}},
        {"draw random octets", drawIn, {KAPKCS7_RsaOperationErr, KACERT_Ok}},
    };
    for (const Scenario &scenario : scenarios) sweep(scenario, Pool::Crypto);
    // Whatever a run made is gone: a second round leaves no more blocks than the first.
    OPENSSL_thread_stop();
    const long before = liveBlocks(Pool::Crypto);
    for (const Scenario &scenario : scenarios) sweep(scenario, Pool::Crypto);
    OPENSSL_thread_stop();
    EXPECT_EQ(liveBlocks(Pool::Crypto), before);
}

void signAndVerify(const Pair &pair) {
    Octets signature(Size);
    uint32_t length = 0;
    int32_t verdict = 0;
    EXPECT_EQ(KA_PKCS7_SignedData(KA_DIGEST_SHA1, Message.data(), 7, signature.data(), &length, &pair.secret), 0);
    EXPECT_EQ(
        KA_PKCS7_VerifySignature(KA_DIGEST_SHA1, Message.data(), 7, signature.data(), length, &pair.open, &verdict), 0);
    EXPECT_EQ(verdict, 1);
}

// How many allocations a key takes is left to chance: the steps widen up to a number that none takes.
TEST(FailingAllocations, KeyGeneration) {
    // libcrypto does not recover where its very first use is one that runs out of memory.
    signAndVerify(shared());
    Pair untouched;
    memset(&untouched, 0x5A, sizeof untouched);
    for (const bool forGood : {false, true}) {
        bool failed = true;
        for (long nth = 1; nth < 1000000; nth += 1 + nth / 16) {
            SCOPED_TRACE("allocation " + std::to_string(nth));
            Pair pair = untouched;
            failAllocation(Pool::Crypto, nth, forGood);
            const int32_t status = KA_PKCS7_GenRSAKeyPair(&pair.open, &pair.secret);
            failed = endFailing();
            EXPECT_EQ(ERR_peek_error(), 0u);
            EXPECT_TRUE(status == KACERT_Ok || (failed && status == KAPKCS7_GenKeyErr)) << status;
            if (status == KACERT_Ok)
                signAndVerify(pair);
            else
                EXPECT_EQ(memcmp(&pair, &untouched, sizeof pair), 0) << "the records are as they were";
        }
        EXPECT_FALSE(failed);
    }
}

} // namespace
