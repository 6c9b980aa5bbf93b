// Enveloped messages by karil, with the ciphers of libcrypto behind its hooks.
#include "message.h"
#include "whole_messages.h"

#include <openssl/rand.h>
#include <openssl/rsa.h>

#include <algorithm>

namespace karil_bench {

using namespace karil_test;

namespace {

constexpr std::string_view TripleDesOid = "\x2A\x86\x48\x86\xF7\x0D\x03\x07";

// The parameter of the cipher's hook.
struct CipherKey {
    const EVP_CIPHER *cipher;
    int isToEncipher;
    uint8_t key[32];
    uint8_t iv[16];
};

int32_t runCipher(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                  void *parameter) {
    const auto &key = *static_cast<const CipherKey *>(parameter);
    const Owned<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free> ctx(EVP_CIPHER_CTX_new());
    int first = 0, last = 0;
    if (EVP_CipherInit_ex(ctx.get(), key.cipher, nullptr, key.key, key.iv, key.isToEncipher) != 1 ||
        EVP_CipherUpdate(ctx.get(), output, &first, input, static_cast<int>(inputLength)) != 1 ||
        EVP_CipherFinal_ex(ctx.get(), output + first, &last) != 1)
        return KACERT_InvalidParamErr;
    *outputLength = static_cast<uint32_t>(first + last);
    return KACERT_Ok;
}

RecipientPtr makeRecipient() {
    RecipientPtr ctx = create<RecipientInfoCtx>();
    set(*ctx, PKCS7_RECIPIENT_DN, party().issuer);
    set(*ctx, PKCS7_RECIPIENT_SERIAL, party().serial);
    set(*ctx, PKCS7_RECIPIENT_KEYENCRYPTION_ALGO, RsaEncryptionOid);
    const Operation *const encipher = &operation(EVP_PKEY_encrypt_init, EVP_PKEY_encrypt);
    must(KA_PKCS7_SetRecipientInfoKeyEncFunc(ctx.get(), runOperation, &encipher, sizeof encipher) == KACERT_Ok,
         "a hook is set");
    return ctx;
}

ContentPtr makeContent(const CipherKey &key) {
    ContentPtr ctx = create<EncryptedContentCtx>();
    uint8_t iv[10] = {0x04, 8};
    std::copy_n(key.iv, 8, iv + 2);
    set(*ctx, PKCS7_ENCRYPT_ALGO, TripleDesOid);
    set(*ctx, PKCS7_ENCRYPT_PARAMETER, iv);
    must(KA_PKCS7_SetEncryptContentEncFunc(ctx.get(), runCipher, &key, sizeof key) == KACERT_Ok, "a hook is set");
    return ctx;
}

} // namespace

size_t envelopWithKaril(Bytes content, Octets &room) {
    CipherKey key = {EVP_des_ede3_cbc(), 1, {}, {}};
    must(RAND_bytes(key.key, 24) == 1 && RAND_bytes(key.iv, 8) == 1, "there is a key");
    const EnvelopedPtr ctx = create<EnvelopedDataCtx>();
    must(KA_PKCS7_SetEnvelopedDataAttributeInt(ctx.get(), PKCS7_ENVELOPED_VERSION, 0) == KACERT_Ok &&
             set(*ctx, PKCS7_ENVELOPED_ENCRYPTED_CONTENT, content) == KACERT_Ok &&
             set(*ctx, PKCS7_ENVELOPED_CONTENTTYPE, DataOid) == KACERT_Ok &&
             set(*ctx, PKCS7_ENVELOPED_RECIPIENT_KEY, Bytes(key.key, 24)) == KACERT_Ok &&
             handOver(KA_PKCS7_SetEnvelopedData_RecipientInfo, *ctx, makeRecipient()) == KACERT_Ok &&
             handOver(KA_PKCS7_SetEnvelopedData_EncryptedContent, *ctx, makeContent(key)) == KACERT_Ok,
         "karil takes what a message is made of");
    uint32_t length = 0;
    must(KA_PKCS7_EncodePKCS7EnvelopedData(ctx.get(), room.data(), &length) == KACERT_Ok && length > 0,
         "karil envelops");
    return length;
}

void openWithKaril(Bytes message, Bytes content) {
    const EnvelopedPtr ctx = create<EnvelopedDataCtx>();
    must(decode(*ctx, message) == KACERT_Ok, "karil decodes the message");
    RecipientInfoCtx &recipient = *ctx->recipients;
    must(std::ranges::equal(bytesOf(recipient.serial), party().serial), "the recipient is found");
    const Operation *const decipher = &operation(EVP_PKEY_decrypt_init, EVP_PKEY_decrypt);
    KA_PKCS7_SetRecipientInfoKeyDecFunc(&recipient, runOperation, &decipher, sizeof decipher);
    uint8_t opened[256];
    uint32_t length = 0;
    must(KA_PKCS7_DecryptDesKey(&recipient, opened, &length) == KACERT_Ok && length <= 32, "karil opens the key");
    EncryptedContentCtx &encrypted = *ctx->encryptedContent;
    const bool isDes = std::ranges::equal(bytesOf(encrypted.encryptionAlgorithm.oid), bytesOf(TripleDesOid));
    CipherKey key = {isDes ? EVP_des_ede3_cbc() : EVP_aes_128_cbc(), 0, {}, {}};
    std::copy_n(opened, length, key.key);
    std::copy_n(encrypted.encryptionAlgorithm.parameters.data + 2, isDes ? 8 : 16, key.iv);
    KA_PKCS7_SetEncryptContentDecFunc(&encrypted, runCipher, &key, sizeof key);
    Octets plain(encrypted.encryptedContent.length);
    must(KA_PKCS7_GetEncryptedContentInformation(&encrypted, plain.data(), &length) == KACERT_Ok, "karil opens it");
    must(std::ranges::equal(Bytes(plain).first(length), content), "the content is the same");
}

} // namespace karil_bench
