// Rows of whole messages: how they are built, and what they hold as text.
#pragma once

#include "rows.h"

#include "whole_messages.h"

namespace karil_test {

// "status N", "untouched", or the octets, in hex.
template <class Ctx> std::string answer(Ctx &ctx, int32_t id, int32_t position = 1) {
    return stored(
        [&](uint8_t *result, uint32_t *length) { return Family<Ctx>::get(&ctx, id, result, length, position); });
}

inline int32_t addAttribute(SignerInfoCtx &ctx, bool isAuthenticated, const Octets &id, const Octets &value) {
    const auto add = isAuthenticated ? KA_PKCS7_SetSignerAttribute : KA_PKCS7_SetSignerUnAttribute;
    return TRIED(add(&ctx, id.data(), lengthOf(id), value.data(), lengthOf(value)));
}

// Takes the steps of a column: "id=octets", "int id=number"; for a signer "+OID=octets" and "-OID=octets", attributes
// of either list; for a message the parts "signer", "attributes" for one with an attribute 2A05=0500, "recipient",
// "content", each with the kinds of its hooks behind it: "signer=cc".
template <class Ctx> void build(Ctx &ctx, const Row &row, std::string_view column) {
    for (const std::string &step : row.list(column)) {
        const size_t at = step.find('=');
        const std::string name = step.substr(0, at);
        const std::string value = at < step.size() ? step.substr(at + 1) : "";
        const auto kind = [&](size_t i, const char *usual) { return i < value.size() ? value.substr(i, 1) : usual; };
        int32_t status = KACERT_Ok;
        if (name[0] == '+' || name[0] == '-') {
            if constexpr (std::is_same_v<Ctx, SignerInfoCtx>)
                status = addAttribute(ctx, name[0] == '+', row.parse(name.substr(1)), row.parse(value));
        } else if (name == "signer" || name == "attributes") {
            SignerPtr signer = plainSigner(kind(0, "c"), kind(1, "c"));
            if (name == "attributes")
                addAttribute(*signer, true, hex("2A 05"), hex("05 00"));
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
