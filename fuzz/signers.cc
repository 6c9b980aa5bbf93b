// Decodes a signer, asks for everything, verifies it, signs it again, and decodes what was written.
#include "fuzz.h"

#include "messages.h"

using namespace karil_fuzz;

namespace {

void ask(SignerInfoCtx &ctx, int32_t id) {
    uint32_t length = 0;
    const int32_t status = KA_PKCS7_GetSignerInfoAttributeChar(&ctx, id, nullptr, &length);
    must(status == KACERT_Ok || status == KACERT_AttributeNotSupportErr, "an id is answered or not known");
    const Area area(length);
    KA_PKCS7_GetSignerInfoAttributeChar(&ctx, id, area.data(), &length);
    must(length == area.bytes().size(), "asking and answering agree");
}

// The attributes of one list, into another signer's. Those without octets are refused there.
template <auto Count, auto Get, auto Set> void copyAttributes(SignerInfoCtx &from, SignerInfoCtx &to) {
    uint32_t count = 0;
    must(Count(&from, &count) == KACERT_Ok, "attributes are counted");
    for (uint32_t index = 1; index <= count; ++index) {
        const auto position = static_cast<int32_t>(index);
        constexpr uint32_t Untouched = 0xFFFFFFFF;
        uint32_t sizes[2] = {Untouched, Untouched};
        must(Get(&from, position, nullptr, &sizes[0], nullptr, &sizes[1]) == KACERT_Ok && sizes[1] != Untouched,
             "an attribute is answered");
        const Area oid(sizes[0]), value(sizes[1]);
        Get(&from, position, oid.data(), &sizes[0], value.data(), &sizes[1]);
        const bool isWhole = sizes[0] > 0 && sizes[1] > 0;
        const int32_t status = Set(&to, oid.data(), lengthOf(oid.bytes()), value.data(), lengthOf(value.bytes()));
        must(status == (isWhole ? KACERT_Ok : KACERT_InvalidLengthErr), "an attribute is set");
    }
    uint32_t length = 7;
    must(Get(&from, static_cast<int32_t>(count) + 1, nullptr, &length, nullptr, &length) == KACERT_Ok && length == 7,
         "past the end there is none");
}

void setHooks(SignerInfoCtx &ctx) {
    // The digest is cut to what its area holds.
    const auto digest = [](const uint8_t *input, uint32_t length, uint8_t *output, uint32_t *outputLength, void *) {
        *outputLength = std::min<uint32_t>(length, 64);
        std::copy_n(input, *outputLength, output);
        return int32_t{0};
    };
    must(KA_PKCS7_SetSignerInfoDigestFunc(&ctx, digest, nullptr, 0) == KACERT_Ok &&
             KA_PKCS7_SetSignerInfoEncSignFunc(&ctx, plainHook, "c", 1) == KACERT_Ok,
         "hooks are set");
}

void signAgain(SignerInfoCtx &ctx, size_t inputSize) {
    const Area area(2 * inputSize + 4096);
    uint32_t length = 0;
    if (KA_PKCS7_EncodeSignerInfo(&ctx, area.data(), &length) != KACERT_Ok)
        return;
    int32_t verdict = 0;
    must(KA_PKCS7_VerifySignerSignature(&ctx, &verdict) == KACERT_Ok && verdict == PKCS7_VERDICT_GOOD,
         "what was signed verifies");
    const SignerPtr again = create<SignerInfoCtx>();
    must(KA_PKCS7_DecodeSignerInfo(again.get(), area.data(), static_cast<int32_t>(length)) == KACERT_Ok,
         "what was written can be read");
    uint32_t counts[2] = {};
    KA_PKCS7_GetSignerInfoAttributesNum(&ctx, &counts[0]);
    KA_PKCS7_GetSignerInfoAttributesNum(again.get(), &counts[1]);
    // A number under another tag keeps its zero in front of a set top bit, and loses it once it is an INTEGER.
    const bool isInteger = ctx.serial.tag == 2;
    must(counts[0] == counts[1], "it has the same attributes");
    must(!isInteger || equal(bytesOf(ctx.serial), bytesOf(again->serial)), "it is the same signer");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    const Area der(Bytes{data, size});
    const SignerPtr ctx = create<SignerInfoCtx>();
    const int32_t status = KA_PKCS7_DecodeSignerInfo(ctx.get(), der.data(), static_cast<int32_t>(size));
    for (int32_t id = PKCS7_SIGNER_DN; id <= PKCS7_SIGNER_CONTENT; ++id)
        ask(*ctx, id);
    const SignerPtr copy = create<SignerInfoCtx>();
    copyAttributes<KA_PKCS7_GetSignerInfoAttributesNum, KA_PKCS7_GetSignerAttribute, KA_PKCS7_SetSignerAttribute>(
        *ctx, *copy);
    copyAttributes<KA_PKCS7_GetSignerInfoUnAttributesNum, KA_PKCS7_GetSignerUnAttribute, KA_PKCS7_SetSignerUnAttribute>(
        *ctx, *copy);
    setHooks(*ctx);
    set(*ctx, PKCS7_SIGNER_CONTENTTYPE, DataOid);
    set(*ctx, PKCS7_SIGNER_CONTENT, "content");
    int32_t verdict = 77;
    const int32_t verified = KA_PKCS7_VerifySignerSignature(ctx.get(), &verdict);
    must(verified != KACERT_Ok || verdict == PKCS7_VERDICT_GOOD || verdict == PKCS7_VERDICT_BAD, "there is a verdict");
    if (status == KACERT_Ok)
        signAgain(*ctx, size);
    return 0;
}
