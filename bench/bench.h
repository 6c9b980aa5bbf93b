// What the benchmarks share: the certificates they read, the certificate they build, and what stops them.
#pragma once

#include "objects.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace karil_bench {

using karil_test::By;
using karil_test::Bytes;
using karil_test::bytesOf;
using karil_test::CertPtr;
using karil_test::create;
using karil_test::CrlPtr;
using karil_test::CsrPtr;
using karil_test::Octets;
template <class T, auto Free> using Owned = std::unique_ptr<T, By<Free>>;

// A figure counts only where what was measured did its work.
inline void must(bool holds, const char *claim) {
    if (holds)
        return;
    std::fprintf(stderr, "this does not hold: %s\n", claim);
    std::exit(1);
}

// One certificate, decoded and destroyed. False where it does not decode.
using Decode = bool (*)(Bytes der);
bool decodeWithKaril(Bytes der);
bool decodeWithLibcrypto(Bytes der);
bool decodeWithMbedtls(Bytes der);
bool decodeWithMbedtlsAndMktime(Bytes der);
bool decodeWithGnutls(Bytes der);

// The certificates of the ca-certificates package that karil and all its peers decode.
const std::vector<Octets> &corpus();

// The same certificate by both, from sample.h. libcrypto's stops at the to-be-signed part.
CertPtr buildWithKaril(KACertSignFunc hook, const void *parameter, uint32_t length);
Octets encodeWithKaril(CertEncodeCtx *ctx);
Octets tbsOf(Bytes certificate);
Octets encodeTbsWithLibcrypto();
int32_t copyingHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength, void *);

// A key of 2,048 bits, and the hook that signs with it; its parameter is the private record's address.
struct KeyPair {
    RsaPublicKeyRecord open;
    RsaPrivateKeyRecord secret;
};
const KeyPair &keyPair();
int32_t signingHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                    void *parameter);

// Each file registers its own as "measure/who"; the counter "items" says among how many the time is divided. These two
// are for any time zone. The others compare with what libcrypto makes, which takes dates for UTC.
void registerDecode();
void registerDecodeCrl();
void registerQuery();
void registerEncode();
void registerSign();
void registerVerify();
void registerPem();
void registerGrowth();
void registerCrl();
void registerCsr();
void registerPkcs12Crypt();
void registerPfx();
void registerBags();
void registerMessages();
void registerOcsp();

} // namespace karil_bench
