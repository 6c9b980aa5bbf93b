// Signing, verifying, decoding, enveloping and opening PKCS#7 messages.
#include "message.h"

#include <benchmark/benchmark.h>

namespace karil_bench {

namespace {

using Make = size_t (*)(Bytes content, Octets &room);
using Read = void (*)(Bytes message);
using Open = void (*)(Bytes message, Bytes content);

// The room is there before: each library writes into it.
void make(benchmark::State &state, Content content, Make make) {
    const Bytes octets = contentOf(content);
    Octets room(octets.size() + 4096);
    for (auto _ : state)
        benchmark::DoNotOptimize(make(octets, room));
}

Octets madeBy(Make make, Content content) {
    Octets room(content.size + 4096);
    room.resize(make(contentOf(content), room));
    return room;
}

void verify(benchmark::State &state, Content content, Read verify) {
    const Octets message = madeBy(signWithLibcrypto, content);
    for (auto _ : state)
        verify(message);
}

void decode(benchmark::State &state, Read decode) {
    const Octets message = fullMessage();
    for (auto _ : state)
        decode(message);
}

void open(benchmark::State &state, Cipher cipher, Open open) {
    const Octets message = envelopFor(cipher, contentOf(Small));
    for (auto _ : state)
        open(message, contentOf(Small));
}

void grow(benchmark::State &state, int32_t count) {
    for (auto _ : state)
        growSigners(count);
    state.counters["items"] = count;
}

// What the hooks do is most of these: they take turns more often than the others do.
template <class... Arguments>
void often(const std::string &measure, const char *who, void (*function)(benchmark::State &, Arguments...),
           Arguments... arguments) {
    benchmark::RegisterBenchmark((measure + '/' + who).c_str(), function, arguments...)->Repetitions(21)->MinTime(0.1);
}

// Each reads what another one makes. GnuTLS sorts attributes before it verifies them, so it refuses karil's.
void checkAgreement() {
    verifyWithLibcrypto(madeBy(signWithKaril, Small));
    verifyWithKaril(madeBy(signWithLibcrypto, Small));
    verifyWithKaril(madeBy(signWithGnutls, Small));
    verifyWithGnutls(madeBy(signWithLibcrypto, Small));
    openWithLibcrypto(madeBy(envelopWithKaril, Small), contentOf(Small));
}

} // namespace

void registerMessages() {
    checkAgreement();
    for (const Content content : {Small, Middle, Large}) {
        const std::string name = content.name;
        often("sign-message-" + name, "karil", make, content, signWithKaril);
        often("sign-message-" + name, "libcrypto", make, content, signWithLibcrypto);
        often("verify-message-" + name, "karil", verify, content, verifyWithKaril);
        often("verify-message-" + name, "libcrypto", verify, content, verifyWithLibcrypto);
    }
    often("sign-message-1k", "gnutls", make, Small, signWithGnutls);
    often("verify-message-1k", "gnutls", verify, Small, verifyWithGnutls);
    for (const Content content : {Small, Eight}) {
        const std::string name = content.name;
        often("envelop-" + name, "karil", make, content, envelopWithKaril);
        often("envelop-" + name, "libcrypto", make, content, envelopWithLibcrypto);
    }
    for (const auto &[name, cipher] : {std::pair("open-des", Cipher::TripleDes), std::pair("open-aes", Cipher::Aes)}) {
        often(name, "karil", open, cipher, openWithKaril);
        often(name, "libcrypto", open, cipher, openWithLibcrypto);
    }
    benchmark::RegisterBenchmark("decode-message/karil", decode, decodeMessageWithKaril);
    benchmark::RegisterBenchmark("decode-message/libcrypto", decode, decodeMessageWithLibcrypto);
    benchmark::RegisterBenchmark("decode-message/gnutls", decode, decodeMessageWithGnutls);
    benchmark::RegisterBenchmark("growth-signers/karil", grow, 10000);
    benchmark::RegisterBenchmark("growth-signers/itself", grow, 100);
}

} // namespace karil_bench
