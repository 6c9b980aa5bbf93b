// Whole PKCS#7 messages for tests: the families behind one set of names, their parts with hooks that can be followed by
// hand, and what a message holds as text.
#pragma once

#include "rows.h"

#include "messages.h"

namespace karil_test {

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
template <auto Get, class Ctx> int32_t anywhere(Ctx *ctx, int32_t id, uint8_t *result, uint32_t *length, int32_t) {
    return Get(ctx, id, result, length);
}
template <> struct Family<DigestedDataCtx> {
    static constexpr auto create = KA_PKCS7_CreateDigestedDataEncodeCtx;
    static constexpr auto destroy = KA_PKCS7_DestoryDigestedDataEncodeCtx;
    static constexpr auto set = KA_PKCS7_SetDigestedDataAttributeChar;
    static constexpr auto setInt = KA_PKCS7_SetDigestedDataAttributeInt;
    static constexpr auto get = anywhere<KA_PKCS7_GetDigestedDataAttributeChar, DigestedDataCtx>;
    static constexpr auto getInt = KA_PKCS7_GetDigestedDataAttributeInt;
    static constexpr auto encode = KA_PKCS7_EncodePKCS7DigestedData;
    static constexpr auto decode = KA_PKCS7_DecodePKCS7DigestedData;
};
template <> struct Family<EncryptedDataCtx> {
    static constexpr auto create = KA_PKCS7_CreateEncryptedDataEncodeCtx;
    static constexpr auto destroy = KA_PKCS7_DestoryEncryptedDataEncodeCtx;
    static constexpr auto set = KA_PKCS7_SetEncryptedDataAttributeChar;
    static constexpr auto setInt = KA_PKCS7_SetEncryptedDataAttributeInt;
    static constexpr auto get = anywhere<KA_PKCS7_GetEncryptedDataAttributeChar, EncryptedDataCtx>;
    static constexpr auto getInt = KA_PKCS7_GetEncryptedDataAttributeInt;
    static constexpr auto encode = KA_PKCS7_EncodePKCS7EncryptedData;
    static constexpr auto decode = KA_PKCS7_DecodePKCS7EncryptedData;
    static constexpr auto setContent = KA_PKCS7_SetEncrytpedData_EncryptedContent;
    static constexpr auto getContent = KA_PKCS7_GetEncrytpedData_EncryptedContent;
};
template <> struct Family<EnvelopedDataCtx> {
    static constexpr auto create = KA_PKCS7_CreateEnvelopedDataEncodeCtx;
    static constexpr auto destroy = KA_PKCS7_DestroyEnvelopedDataEncodeCtx;
    static constexpr auto set = KA_PKCS7_SetEnvelopedDataAttributeChar;
    static constexpr auto setInt = KA_PKCS7_SetEnvelopedDataAttributeInt;
    static constexpr auto get = anywhere<KA_PKCS7_GetEnvelopedDataAttributeChar, EnvelopedDataCtx>;
    static constexpr auto getInt = KA_PKCS7_GetEnvelopedDataAttributeInt;
    static constexpr auto encode = KA_PKCS7_EncodePKCS7EnvelopedData;
    // Without memory for the input's copy the status is 0, and nothing is filled.
    static int32_t decode(EnvelopedDataCtx *ctx, const uint8_t *der, int32_t length) {
        const int32_t status = KA_PKCS7_DecodePKCS7EnvelopedData(ctx, der, length);
        return status == KACERT_Ok && ctx->versionSet == 0 ? KACERT_MemoryErr : status;
    }
    static constexpr auto setContent = KA_PKCS7_SetEnvelopedData_EncryptedContent;
    static constexpr auto getContent = KA_PKCS7_GetEnvelopedData_EncryptedContent;
    static constexpr auto setRecipient = KA_PKCS7_SetEnvelopedData_RecipientInfo;
    static constexpr auto getRecipient = KA_PKCS7_GetEnvelopedData_RecipientInfo;
};
template <> struct Family<SignedDataCtx> {
    static constexpr auto create = KA_PKCS7_CreateSignedDataEncodeCtx;
    static constexpr auto destroy = KA_PKCS7_DestroySignedDataEncodeCtx;
    static constexpr auto set = KA_PKCS7_SetSignedDataAttributeChar;
    static constexpr auto setInt = KA_PKCS7_SetSignedDataAttributeInt;
    static constexpr auto get = KA_PKCS7_GetSignedDataAttributeChar;
    static constexpr auto getInt = KA_PKCS7_GetSignedDataAttributeInt;
    static constexpr auto encode = KA_PKCS7_EncodePKCS7SignedData;
    static constexpr auto decode = KA_PKCS7_DecodeSignedData;
    static constexpr auto setSigner = KA_PKCS7_SetSignedData_SignerInfo;
    static constexpr auto getSigner = KA_PKCS7_GetSignedData_SignerInfo;
};
template <> struct Family<SignedAndEnvelopedDataCtx> {
    static constexpr auto create = KA_PKCS7_CreateSignedAndEnvelopedDataEncodeCtx;
    static constexpr auto destroy = KA_PKCS7_DestorySignedAndEnvelopedDataEncodeCtx;
    static constexpr auto set = KA_PKCS7_SetSignedAndEnvelopedDataAttributeChar;
    static constexpr auto setInt = KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt;
    static constexpr auto get = KA_PKCS7_GetSignedAndEnvelopedDataAttributeChar;
    static constexpr auto getInt = KA_PKCS7_GetSignedAndEnvelopedDataAttributeInt;
    static constexpr auto encode = KA_PKCS7_EncodeSignedAndEnvelopedData;
    static constexpr auto decode = KA_PKCS7_DecodeSignedAndEnvelopedData;
    static constexpr auto setContent = KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent;
    static constexpr auto getContent = KA_PKCS7_GetSignedAndEnvelopedData_EncryptedContent;
    static constexpr auto setRecipient = KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo;
    static constexpr auto getRecipient = KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfo;
    static constexpr auto setSigner = KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo;
    static constexpr auto getSigner = KA_PKCS7_GetSignedAndEnvelopedData_SignerInfo;
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

// "status N", "untouched", or the octets, in hex.
template <class Ctx> std::string answer(Ctx &ctx, int32_t id, int32_t position = 1) {
    const Exact area(4096);
    uint32_t length = 12345;
    const int32_t status = TRIED(Family<Ctx>::get(&ctx, id, area.data(), &length, position));
    return status != KACERT_Ok ? "status " + std::to_string(status)
           : length == 12345   ? "untouched"
                               : toHex(area.data(), length);
}

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

// Takes the steps of a column: "id=octets", "int id=number", and the parts "signer", "attributes" for one with an
// attribute 2A05=0500, "recipient", "content", each with the kinds of its hooks behind it: "signer=cc".
template <class Ctx> void build(Ctx &ctx, const Row &row, std::string_view column) {
    for (const std::string &step : row.list(column)) {
        const size_t at = step.find('=');
        const std::string name = step.substr(0, at);
        const std::string value = at < step.size() ? step.substr(at + 1) : "";
        const auto kind = [&](size_t i, std::string_view usual) {
            return std::string(i < value.size() ? value.substr(i, 1) : usual);
        };
        int32_t status = KACERT_Ok;
        if (name == "signer" || name == "attributes") {
            SignerPtr signer = plainSigner(kind(0, "c"), kind(1, "c"));
            if (name == "attributes")
                TRIED(KA_PKCS7_SetSignerAttribute(signer.get(), hex("2A 05").data(), 2, hex("05 00").data(), 2));
            if constexpr (hasSigners<Ctx>)
                status = handOver(Family<Ctx>::setSigner, ctx, std::move(signer));
        } else if (name == "recipient") {
            if constexpr (hasRecipients<Ctx>)
                status = handOver(Family<Ctx>::setRecipient, ctx, plainRecipient(kind(0, "s")));
        } else if (name == "content") {
            if constexpr (hasEncrypted<Ctx>)
                status = handOver(Family<Ctx>::setContent, ctx, plainContent(kind(0, "s")));
        } else if (name.rfind("int ", 0) == 0) {
            status = TRIED(Family<Ctx>::setInt(&ctx, std::stoi(name.substr(4)), std::stoi(value)));
        } else {
            status = set(ctx, std::stoi(name), row.parse(value));
        }
        EXPECT_EQ(status, KACERT_Ok) << step;
    }
}

// The message, asked for as a caller does it; "status N" if it cannot be written. What a loop of the library's cannot
// get memory for is status 0 without octets.
template <class Ctx> std::string message(Ctx &ctx) {
    uint32_t length = 12345;
    const auto encode = [&](uint8_t *result) {
        const int32_t status = Family<Ctx>::encode(&ctx, result, &length);
        return status == KACERT_Ok && length == 0 ? KACERT_MemoryErr : status;
    };
    const int32_t status = TRIED(encode(nullptr));
    if (status != KACERT_Ok)
        return "status " + std::to_string(status) + (length != 12345 && !isHindered() ? " and a length" : "");
    const Exact area(length);
    EXPECT_EQ(TRIED(encode(area.data())), KACERT_Ok);
    EXPECT_EQ(length, area.record.length);
    return toHex(area.bytes());
}

inline void list(std::string &all, const char *name, const std::string &value) {
    if (!value.empty())
        all += std::string(all.empty() ? "" : ", ") + name + ' ' + value;
}
inline std::string chainOf(const Anybuf *first, uint32_t count) {
    std::string all;
    for (const Anybuf *node = first; node != nullptr; node = node->next, --count)
        all += (all.empty() ? "" : " + ") + toHex(*node);
    EXPECT_EQ(count, 0u);
    return all;
}
// "pkcs7-1" for data; other identifiers in hex.
inline std::string typeName(Bytes oid) {
    const Octets arc = hex("2A 86 48 86 F7 0D 01 07");
    const bool isContent = oid.size() == 9 && std::equal(arc.begin(), arc.end(), oid.begin());
    return isContent ? "pkcs7-" + std::to_string(oid.back()) : toHex(oid);
}
// What the message holds after decoding: "version 1, type 2A .., content ..", names of parts with their octets.
template <class Ctx> std::string held(Ctx &ctx) {
    std::string all;
    if constexpr (requires { ctx.versionSet; })
        list(all, "version", ctx.versionSet != 0 ? std::to_string(ctx.version) : "");
    if constexpr (hasRecipients<Ctx>) {
        uint32_t count = 0;
        for (const RecipientInfoCtx *node = ctx.recipients; node != nullptr; node = node->next, ++count)
            list(all, "key", toHex(node->encryptedKey));
        EXPECT_EQ(count, ctx.recipientCount2);
        list(all, "recipients", ctx.recipientsSet != 0 ? std::to_string(ctx.recipientCount) : "");
    }
    if constexpr (hasSigners<Ctx>) {
        uint32_t count = ctx.digestAlgorithmCount;
        for (const DigestAlgorithmNode *node = ctx.digestAlgorithms; node != nullptr; node = node->next, --count)
            list(all, "digest", toHex(node->oid));
        EXPECT_EQ(count, 0u);
    }
    if constexpr (requires { ctx.contentType; })
        list(all, "type", typeName(bytesOf(ctx.contentType.oid)));
    if constexpr (requires { ctx.content; })
        list(all, "content", toHex(ctx.content));
    if constexpr (hasEncrypted<Ctx>)
        list(all, "text", ctx.encryptedContent != nullptr ? toHex(ctx.encryptedContent->encryptedContent) : "");
    if constexpr (hasSigners<Ctx>) {
        list(all, "certificates",
             ctx.certificatesSet != 0 ? chainOf(ctx.certificates, ctx.certificateCount) + '.' : "");
        list(all, "crls", ctx.crlsSet != 0 ? chainOf(ctx.crls, ctx.crlCount) + '.' : "");
        for (const SignerInfoCtx *node = ctx.signerInfos; node != nullptr; node = node->next)
            list(all, "signature", toHex(node->encryptedDigest) + " over " + toHex(node->content));
        list(all, "signers", ctx.signerInfosSet != 0 ? std::to_string(ctx.signerCount) : "");
    }
    return all;
}
// A row of decoding: the status, what the message holds then, and that a second one leaves nothing of the first.
template <class Ctx> void decodeRow(const Row &row, Ctx &ctx) {
    const Octets der = row.octets("der");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(decodeMessage(ctx, der), row.number("status"));
        EXPECT_EQ(held(ctx), row("holds")) << i;
    }
}

} // namespace karil_test
