// What karil takes of memory for a large signed message over its content, as one JSON object. A program of its own: its
// counting functions stand in place of the library's and would slow the measures of time down.
#include "bench.h"
#include "whole_messages.h"

#include <algorithm>
#include <cstddef>

namespace {

struct Count {
    size_t now;
    size_t peak;
};
Count karilCount;

// Each block stands behind its size.
constexpr size_t HeadSize = alignof(std::max_align_t);

void *allocate(Count &count, size_t size) {
    auto *head = static_cast<uint8_t *>(std::calloc(1, HeadSize + size));
    if (head == nullptr)
        return nullptr;
    *reinterpret_cast<size_t *>(head) = size;
    count.now += size;
    count.peak = std::max(count.peak, count.now);
    return head + HeadSize;
}

size_t sizeOf(const void *block) {
    return *reinterpret_cast<const size_t *>(static_cast<const uint8_t *>(block) - HeadSize);
}

void release(Count &count, void *block) {
    if (block == nullptr)
        return;
    count.now -= sizeOf(block);
    std::free(static_cast<uint8_t *>(block) - HeadSize);
}

} // namespace

void *KAPR_Malloc(const char *, int32_t, uint32_t size) {
    return allocate(karilCount, size);
}

void KAPR_Free(void *block) {
    release(karilCount, block);
}

namespace {

using namespace karil_bench;

// The caller's own octets are not counted.
struct MessagePeaks {
    double made;
    double decoded;
};

MessagePeaks measureMessage() {
    constexpr int32_t Sha1 = KA_DIGEST_SHA1;
    const Octets content(100 << 20, 'x');
    Octets message(content.size() + 4096);
    uint32_t length = 0;
    const auto size = static_cast<double>(content.size());
    MessagePeaks peaks = {};
    karilCount = {};
    {
        const karil_test::SignedPtr ctx = karil_test::create<SignedDataCtx>();
        karil_test::SignerPtr signer = karil_test::plainSigner();
        KA_PKCS7_SetSignerInfoDigestFunc(signer.get(), KA_DigestFunc_Ref, &Sha1, sizeof Sha1);
        KA_PKCS7_SetSignerAttribute(signer.get(), reinterpret_cast<const uint8_t *>("\x2A\x03"), 2,
                                    reinterpret_cast<const uint8_t *>("\x05\0"), 2);
        KA_PKCS7_SetSignedDataAttributeInt(ctx.get(), PKCS7_SIGNEDDATA_VERSION, 1);
        must(karil_test::set(*ctx, PKCS7_SIGNEDDATA_CONTENTTYPE, karil_test::DataOid) == KACERT_Ok &&
                 karil_test::set(*ctx, PKCS7_SIGNEDDATA_CONTENT, content) == KACERT_Ok &&
                 karil_test::handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, std::move(signer)) == KACERT_Ok &&
                 KA_PKCS7_EncodePKCS7SignedData(ctx.get(), message.data(), &length) == KACERT_Ok && length > size,
             "karil signs");
        peaks.made = static_cast<double>(karilCount.peak) / size;
    }
    must(karilCount.now == 0, "what was allocated is freed");
    karilCount = {};
    const karil_test::SignedPtr ctx = karil_test::create<SignedDataCtx>();
    must(karil_test::decode(*ctx, Bytes(message).first(length)) == KACERT_Ok, "karil decodes the message");
    int32_t verdict = 0;
    KA_PKCS7_SetSignerInfoDigestFunc(ctx->signerInfos, KA_DigestFunc_Ref, &Sha1, sizeof Sha1);
    KA_PKCS7_SetSignerInfoDecSignFunc(ctx->signerInfos, karil_test::plainHook, nullptr, 0);
    must(KA_PKCS7_VerifySignerSignature(ctx->signerInfos, &verdict) == KACERT_Ok && verdict == PKCS7_VERDICT_GOOD,
         "karil verifies the signer");
    peaks.decoded = static_cast<double>(karilCount.peak) / size;
    return peaks;
}

} // namespace

int main() {
    const MessagePeaks peaks = measureMessage();
    std::printf("{\"memory-sign/karil\": %.6f, \"memory-sign/content\": 1,\n", peaks.made);
    std::printf(" \"memory-verify/karil\": %.6f, \"memory-verify/content\": 1}\n", peaks.decoded);
    return 0;
}
