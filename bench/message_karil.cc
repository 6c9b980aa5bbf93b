// Signed messages by karil.
#include "crl.h"
#include "message.h"
#include "whole_messages.h"

#include <openssl/rsa.h>

#include <algorithm>

namespace karil_bench {

using namespace karil_test;

namespace {

constexpr std::string_view SigningTimeOid = "\x2A\x86\x48\x86\xF7\x0D\x01\x09\x05";
constexpr std::string_view MessageDigestOid = "\x2A\x86\x48\x86\xF7\x0D\x01\x09\x04";
constexpr std::string_view SigningTime = "\x17\x0D"
                                         "260101000000Z";
constexpr int32_t Sha1 = KA_DIGEST_SHA1;

void setDigest(SignerInfoCtx &ctx) {
    must(KA_PKCS7_SetSignerInfoDigestFunc(&ctx, KA_DigestFunc_Ref, &Sha1, sizeof Sha1) == KACERT_Ok, "a hook is set");
}

SignerPtr makeSigner() {
    SignerPtr ctx = create<SignerInfoCtx>();
    set(*ctx, PKCS7_SIGNER_DN, party().issuer);
    set(*ctx, PKCS7_SIGNER_SERIAL, party().serial);
    set(*ctx, PKCS7_SIGNER_DIGEST_ALGO, Sha1Oid);
    set(*ctx, PKCS7_SIGNER_DIGEST_ENC_ALG, RsaEncryptionOid);
    const Bytes oid = bytesOf(SigningTimeOid), value = bytesOf(SigningTime);
    must(KA_PKCS7_SetSignerAttribute(ctx.get(), oid.data(), lengthOf(oid), value.data(), lengthOf(value)) == KACERT_Ok,
         "an attribute is set");
    setDigest(*ctx);
    const Operation *const sign = &operation(EVP_PKEY_sign_init, EVP_PKEY_sign);
    must(KA_PKCS7_SetSignerInfoEncSignFunc(ctx.get(), runOperation, &sign, sizeof sign) == KACERT_Ok, "a hook is set");
    return ctx;
}

SignedPtr makeSigned(Bytes content) {
    SignedPtr ctx = create<SignedDataCtx>();
    must(KA_PKCS7_SetSignedDataAttributeInt(ctx.get(), PKCS7_SIGNEDDATA_VERSION, 1) == KACERT_Ok &&
             set(*ctx, PKCS7_SIGNEDDATA_DIGEST_ALGO, Sha1Oid) == KACERT_Ok &&
             set(*ctx, PKCS7_SIGNEDDATA_CONTENTTYPE, DataOid) == KACERT_Ok &&
             set(*ctx, PKCS7_SIGNEDDATA_CONTENT, content) == KACERT_Ok &&
             set(*ctx, PKCS7_SIGNEDDATA_CERTIFICATE, party().certificate) == KACERT_Ok &&
             handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, makeSigner()) == KACERT_Ok,
         "karil takes what a message is made of");
    return ctx;
}

// The content's digest is what the signer's attribute tells.
bool bindsContent(SignerInfoCtx &signer, Bytes content) {
    uint8_t digest[64];
    uint32_t digestLength = sizeof digest;
    must(KA_PKCS7_DigestMessage(Sha1, content.data(), sizeOf(content), digest, &digestLength) == KACERT_Ok,
         "karil digests");
    uint32_t count = 0;
    KA_PKCS7_GetSignerInfoAttributesNum(&signer, &count);
    for (int32_t i = 1; i <= static_cast<int32_t>(count); ++i) {
        uint8_t oid[64], value[64];
        uint32_t oidLength = 0, valueLength = 0;
        must(KA_PKCS7_GetSignerAttribute(&signer, i, oid, &oidLength, value, &valueLength) == KACERT_Ok,
             "an attribute is answered");
        if (std::ranges::equal(std::span(oid, oidLength), bytesOf(MessageDigestOid)))
            return std::ranges::equal(std::span(value, valueLength).subspan(2), std::span(digest, digestLength));
    }
    return false;
}

} // namespace

size_t signWithKaril(Bytes content, Octets &room) {
    uint32_t length = 0;
    must(KA_PKCS7_EncodePKCS7SignedData(makeSigned(content).get(), room.data(), &length) == KACERT_Ok && length > 0,
         "karil signs");
    return length;
}

void verifyWithKaril(Bytes message) {
    const SignedPtr ctx = create<SignedDataCtx>();
    must(decode(*ctx, message) == KACERT_Ok, "karil decodes the message");
    SignerInfoCtx &signer = *ctx->signerInfos;
    setDigest(signer);
    const Operation *const open = &operation(EVP_PKEY_verify_recover_init, EVP_PKEY_verify_recover);
    KA_PKCS7_SetSignerInfoDecSignFunc(&signer, runOperation, &open, sizeof open);
    int32_t verdict = 0;
    must(KA_PKCS7_VerifySignerSignature(&signer, &verdict) == KACERT_Ok && verdict == PKCS7_VERDICT_GOOD,
         "karil verifies the signer");
    must(bindsContent(signer, bytesOf(ctx->content)), "the signer signed the content");
}

Octets fullMessage() {
    const SignedPtr ctx = makeSigned(contentOf(Small));
    must(handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, makeSigner()) == KACERT_Ok &&
             set(*ctx, PKCS7_SIGNEDDATA_CERTIFICATE, corpus()[0]) == KACERT_Ok &&
             set(*ctx, PKCS7_SIGNEDDATA_CERTIFICATE, corpus()[1]) == KACERT_Ok &&
             set(*ctx, PKCS7_SIGNEDDATA_CRL, buildCrlWithKaril(10)) == KACERT_Ok,
         "karil takes what a message is made of");
    return encode(*ctx);
}

void decodeMessageWithKaril(Bytes message) {
    must(decode(*create<SignedDataCtx>(), message) == KACERT_Ok, "karil decodes the message");
}

void growSigners(int32_t count) {
    const SignedPtr ctx = create<SignedDataCtx>();
    KA_PKCS7_SetSignedDataAttributeInt(ctx.get(), PKCS7_SIGNEDDATA_VERSION, 1);
    set(*ctx, PKCS7_SIGNEDDATA_CONTENTTYPE, DataOid);
    set(*ctx, PKCS7_SIGNEDDATA_CONTENT, "a content");
    for (int32_t i = 0; i < count; ++i)
        handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, plainSigner());
    Octets message(static_cast<size_t>(count) * 128 + 1024);
    uint32_t length = 0;
    must(KA_PKCS7_EncodePKCS7SignedData(ctx.get(), message.data(), &length) == KACERT_Ok && length <= message.size(),
         "karil signs");
    message.resize(length);
    const SignedPtr again = create<SignedDataCtx>();
    must(decode(*again, message) == KACERT_Ok, "karil decodes the message");
    int32_t seen = 0;
    for (const SignerInfoCtx *signer = again->signerInfos; signer != nullptr; signer = signer->next)
        ++seen;
    must(seen == count, "all signers are there");
}

} // namespace karil_bench
