// Whole PKCS#7 messages behind one set of names, and their parts with hooks that can be followed by hand. For tests and
// fuzz targets alike.
#pragma once

#include "messages.h"

namespace karil_test {

// What the families' functions are called; NAME is part of most names.
#define KIT_MESSAGE(NAME, DESTROY, ENCODE, DECODE)                                                                     \
    static constexpr auto create = KA_PKCS7_Create##NAME##EncodeCtx;                                                   \
    static constexpr auto destroy = KA_PKCS7_##DESTROY##NAME##EncodeCtx;                                               \
    static constexpr auto set = KA_PKCS7_Set##NAME##AttributeChar;                                                     \
    static constexpr auto setInt = KA_PKCS7_Set##NAME##AttributeInt;                                                   \
    static constexpr auto getInt = KA_PKCS7_Get##NAME##AttributeInt;                                                   \
    static constexpr auto encode = KA_PKCS7_##ENCODE;                                                                  \
    static constexpr auto decode = KA_PKCS7_##DECODE
#define KIT_PART(PART, NAME)                                                                                           \
    static constexpr auto set##PART = KA_PKCS7_Set##NAME;                                                              \
    static constexpr auto get##PART = KA_PKCS7_Get##NAME
template <auto Get, class Ctx> int32_t anywhere(Ctx *ctx, int32_t id, uint8_t *result, uint32_t *length, int32_t) {
    return Get(ctx, id, result, length);
}
template <> struct Family<DataCtx> : Part<DataCtx> {
    static constexpr auto create = KA_PKCS7_CreateDataEncodeCtx;
    static constexpr auto destroy = KA_PKCS7_DestoryDataEncodeCtx;
    static constexpr auto encode = KA_PKCS7_EncodePKCS7Data;
    static constexpr auto decode = KA_PKCS7_DecodePKCS7Data;
    static int32_t set(DataCtx *ctx, int32_t, const uint8_t *value, int32_t length) {
        return KA_PKCS7_SetDataContent(ctx, value, length);
    }
    static int32_t get(DataCtx *ctx, int32_t, uint8_t *result, uint32_t *length, int32_t) {
        return KA_PKCS7_GetDataContent(ctx, result, length);
    }
};
template <> struct Family<DigestedDataCtx> {
    KIT_MESSAGE(DigestedData, Destory, EncodePKCS7DigestedData, DecodePKCS7DigestedData);
    static constexpr auto get = anywhere<KA_PKCS7_GetDigestedDataAttributeChar, DigestedDataCtx>;
};
template <> struct Family<EncryptedDataCtx> {
    KIT_MESSAGE(EncryptedData, Destory, EncodePKCS7EncryptedData, DecodePKCS7EncryptedData);
    KIT_PART(Content, EncrytpedData_EncryptedContent);
    static constexpr auto get = anywhere<KA_PKCS7_GetEncryptedDataAttributeChar, EncryptedDataCtx>;
};
// Without memory for the input's copy the status is 0, and nothing is filled.
inline int32_t KA_PKCS7_DecodeOrNothing(EnvelopedDataCtx *ctx, const uint8_t *der, int32_t length) {
    const int32_t status = KA_PKCS7_DecodePKCS7EnvelopedData(ctx, der, length);
    return status == KACERT_Ok && ctx->versionSet == 0 ? KACERT_MemoryErr : status;
}
template <> struct Family<EnvelopedDataCtx> {
    KIT_MESSAGE(EnvelopedData, Destroy, EncodePKCS7EnvelopedData, DecodeOrNothing);
    KIT_PART(Content, EnvelopedData_EncryptedContent);
    KIT_PART(Recipient, EnvelopedData_RecipientInfo);
    static constexpr auto get = anywhere<KA_PKCS7_GetEnvelopedDataAttributeChar, EnvelopedDataCtx>;
};
template <> struct Family<SignedDataCtx> {
    KIT_MESSAGE(SignedData, Destroy, EncodePKCS7SignedData, DecodeSignedData);
    KIT_PART(Signer, SignedData_SignerInfo);
    static constexpr auto get = KA_PKCS7_GetSignedDataAttributeChar;
};
template <> struct Family<SignedAndEnvelopedDataCtx> {
    KIT_MESSAGE(SignedAndEnvelopedData, Destory, EncodeSignedAndEnvelopedData, DecodeSignedAndEnvelopedData);
    KIT_PART(Content, SignedAndEnvelopedData_EncryptedContent);
    KIT_PART(Recipient, SignedAndEnvelopedData_RecipientInfo);
    KIT_PART(Signer, SignedAndEnvelopedData_SignerInfo);
    static constexpr auto get = KA_PKCS7_GetSignedAndEnvelopedDataAttributeChar;
};
using DataPtr = Owner<DataCtx>;
using DigestedPtr = Owner<DigestedDataCtx>;
using EncryptedPtr = Owner<EncryptedDataCtx>;
using EnvelopedPtr = Owner<EnvelopedDataCtx>;
using SignedPtr = Owner<SignedDataCtx>;
using SignedEnvelopedPtr = Owner<SignedAndEnvelopedDataCtx>;

template <class Ctx> constexpr bool hasSigners = requires {
    Family<Ctx>::setSigner;
};
template <class Ctx> constexpr bool hasRecipients = requires {
    Family<Ctx>::setRecipient;
};
template <class Ctx> constexpr bool hasEncrypted = requires {
    Family<Ctx>::setContent;
};

// Parts with hooks of plainHook(): a signer whose signature is the DigestInfo, with the content as digest.
inline SignerPtr plainSigner(std::string_view digest = "c", std::string_view sign = "c") {
    SignerPtr ctx = create<SignerInfoCtx>();
    set(*ctx, PKCS7_SIGNER_ISSUER_COMMONNAME, "A");
    set(*ctx, PKCS7_SIGNER_SERIAL, "\x05");
    set(*ctx, PKCS7_SIGNER_DIGEST_ALGO, "\x2A\x03");
    set(*ctx, PKCS7_SIGNER_DIGEST_ENC_ALG, "\x2A\x04");
    TRIED(KA_PKCS7_SetSignerInfoDigestFunc(ctx.get(), plainHook, digest.data(), 1));
    TRIED(KA_PKCS7_SetSignerInfoEncSignFunc(ctx.get(), plainHook, sign.data(), 1));
    return ctx;
}
// One whose encrypted key is the key, each octet shifted by one.
inline RecipientPtr plainRecipient(std::string_view hook = "s") {
    RecipientPtr ctx = create<RecipientInfoCtx>();
    set(*ctx, PKCS7_RECIPIENT_ISSUER_COMMONNAME, "A");
    set(*ctx, PKCS7_RECIPIENT_SERIAL, "\x05");
    set(*ctx, PKCS7_RECIPIENT_KEYENCRYPTION_ALGO, "\x2A\x03");
    TRIED(KA_PKCS7_SetRecipientInfoKeyEncFunc(ctx.get(), plainHook, hook.data(), 1));
    return ctx;
}
// One whose cipher text is the content, shifted in the same way.
inline ContentPtr plainContent(std::string_view hook = "s") {
    ContentPtr ctx = create<EncryptedContentCtx>();
    set(*ctx, PKCS7_ENCRYPT_ALGO, "\x2A\x04");
    TRIED(KA_PKCS7_SetEncryptContentEncFunc(ctx.get(), plainHook, hook.data(), 1));
    return ctx;
}
// Hands a part over; one that is refused stays the caller's.
template <class Ctx, class Part> int32_t handOver(int32_t (*give)(Ctx *, Part *), Ctx &ctx, Owner<Part> part) {
    const int32_t status = TRIED(give(&ctx, part.get()));
    if (status == KACERT_Ok)
        (void)part.release();
    return status;
}

// What a decoded message was asked and did.
struct Use {
    int32_t status;            // of decoding
    bool isVerdictKept = true; // each signer's mark agrees with its verdict
};
// Everything that can be asked of a decoded message, whatever came of the decoding; then it is written again.
template <class Ctx> Use useAll(Bytes der) {
    const Owner<Ctx> ctx = create<Ctx>();
    const Exact exact(der);
    Use use = {TRIED(Family<Ctx>::decode(ctx.get(), exact.data(), lengthOf(der)))};
    Octets room(der.size() + 4096);
    uint8_t *const area = room.data();
    uint32_t length = 0;
    for (int32_t id = 38; id <= 65; ++id)
        for (const int32_t position : {1, 2})
            (void)Family<Ctx>::get(ctx.get(), id, area, &length, position);
    if constexpr (hasRecipients<Ctx>) {
        RecipientInfoCtx *recipient = nullptr;
        (void)Family<Ctx>::getRecipient(ctx.get(), &recipient, 1);
        for (; recipient != nullptr; recipient = recipient->next) {
            KA_PKCS7_SetRecipientInfoKeyDecFunc(recipient, plainHook, "n", 1);
            const std::string name = get(*recipient, PKCS7_RECIPIENT_ISSUER_COMMONNAME);
            (void)KA_PKCS7_DecryptDesKey(recipient, area, &length);
        }
    }
    if constexpr (hasEncrypted<Ctx>) {
        EncryptedContentCtx *content = nullptr;
        (void)Family<Ctx>::getContent(ctx.get(), &content);
        if (content != nullptr) {
            KA_PKCS7_SetEncryptContentDecFunc(content, plainHook, "c", 1);
            (void)KA_PKCS7_GetEncryptedContentInformation(content, area, &length);
        }
    }
    if constexpr (hasSigners<Ctx>) {
        for (SignerInfoCtx *signer = ctx->signerInfos; signer != nullptr; signer = signer->next) {
            int32_t verdict = 0;
            KA_PKCS7_SetSignerInfoDigestFunc(signer, plainHook, "n", 1);
            KA_PKCS7_SetSignerInfoDecSignFunc(signer, plainHook, "n", 1);
            (void)KA_PKCS7_VerifySignerSignature(signer, &verdict);
            use.isVerdictKept &= signer->verified == (verdict == PKCS7_VERDICT_GOOD ? 1 : 0);
        }
    }
    if (Family<Ctx>::encode(ctx.get(), nullptr, &length) == KACERT_Ok && length > 0) {
        const Exact again(length);
        (void)Family<Ctx>::encode(ctx.get(), again.data(), &length);
    }
    return use;
}

} // namespace karil_test
