// What PKCS#7 adds: the families of the messages' parts, and hooks that can be followed by hand. For tests and fuzz
// targets alike.
#pragma once

#include "objects.h"

namespace karil_test {

// Parts of messages are not set by number.
template <class Ctx> struct Part {
    static int32_t setInt(Ctx *, int32_t, int32_t) { return KACERT_AttributeNotSupportErr; }
};
template <> struct Family<EncryptedContentCtx> : Part<EncryptedContentCtx> {
    KIT_FAMILY(KA_PKCS7, EncryptedContent, CreateEnocdeEncryptedContent, DestoryEncodeEncryptedContent);
};
template <> struct Family<RecipientInfoCtx> : Part<RecipientInfoCtx> {
    KIT_FAMILY(KA_PKCS7, RecipientInfo, CreateEncodeRecipientInfo, DestoryEncodeRecipientInfo);
};
template <> struct Family<SignerInfoCtx> : Part<SignerInfoCtx> {
    KIT_FAMILY(KA_PKCS7, SignerInfo, CreateEncodeSignerInfo, DestoryEncodeSignerInfo);
};
using ContentPtr = Owner<EncryptedContentCtx>;
using RecipientPtr = Owner<RecipientInfoCtx>;
using SignerPtr = Owner<SignerInfoCtx>;

inline constexpr std::string_view DataOid = "\x2A\x86\x48\x86\xF7\x0D\x01\x07\x01";
inline constexpr std::string_view Sha1Oid = "\x2B\x0E\x03\x02\x1A";

template <class Ctx> int32_t decodeMessage(Ctx &ctx, Bytes der) {
    const Exact exact(der);
    return TRIED(Family<Ctx>::decode(&ctx, exact.data(), lengthOf(der)));
}

// Hooks by the first octet of their parameter. They write on the parameter and find a fresh one each time.
//     'c' copies the input; 's' shifts each octet by one; 'l' copies 8 octets too many; 'f' fails with 5;
//     'o' writes one octet more than the bound; 'n' writes nothing
inline int32_t plainHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                         void *parameter) {
    auto *kind = static_cast<uint8_t *>(parameter);
    const uint8_t how = kind != nullptr ? *kind : uint8_t{'c'};
    if (kind != nullptr)
        *kind = 'f';
    if (how == 'f')
        return 5;
    const uint32_t bound = *outputLength;
    const uint32_t size = how == 'o' ? bound + 1 : how == 'n' ? 0 : how == 'l' ? inputLength + 8 : inputLength;
    for (uint32_t i = 0; i < size; ++i)
        output[i] = static_cast<uint8_t>((i < inputLength ? input[i] : 0) + (how == 's' ? 1 : 0));
    *outputLength = size;
    return 0;
}

} // namespace karil_test
