// Messages that karil writes, read by libcrypto, and the other way round, with RSA, SHA-1 and triple DES.
//
// Left out: DigestedData, whose digest covers the inner ContentInfo here and the content's octets there; contents of
// another type than data, whose digest covers the element here and its value there; and a SET of attributes of just
// 65,535 octets, whose length takes four octets here, while libcrypto digests it written anew, with three.
#include "crypto.h"

#include "message_rows.h"

#include <openssl/cms.h>
#include <openssl/pkcs7.h>

using namespace karil_test;

namespace {

constexpr std::string_view TripleDesOid = "\x2A\x86\x48\x86\xF7\x0D\x03\x07";
constexpr int32_t Sha1 = KA_DIGEST_SHA1;
using Bio = std::unique_ptr<BIO, By<BIO_free>>;
using P7 = Ssl<PKCS7_free>;

Bio readFrom(std::string_view text) {
    return Bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}
std::string textOf(BIO *bio) {
    char *data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return std::string(data, static_cast<size_t>(size));
}

// A certificate of Root's with serial number 5, and its key.
const Pkey &rsaKey() {
    static const Pkey key = keyOf(keyPair().secret);
    return key;
}
const Octets &certificate() {
    static const Octets der = [] {
        const CertPtr cert = filled<CertEncodeCtx>(signBySha1, &keyPair().secret, sizeof keyPair().secret);
        set(*cert, CERT_SUBJECTPUBLICKEYINFO, publicKeyOf(rsaKey()));
        return encode(*cert);
    }();
    return der;
}
X509 *x509() {
    static const auto parsedOne = parsed<d2i_X509, X509_free>(certificate());
    return parsedOne.get();
}

SignerPtr signer(bool hasAttributes) {
    SignerPtr ctx = plainSigner();
    set(*ctx, PKCS7_SIGNER_DN, commonName("Root"));
    set(*ctx, PKCS7_SIGNER_DIGEST_ALGO, Sha1Oid);
    set(*ctx, PKCS7_SIGNER_DIGEST_ENC_ALG, RsaEncryptionOid);
    if (hasAttributes)
        KA_PKCS7_SetSignerAttribute(ctx.get(), hex("2A 03").data(), 2, hex("0C 01 61").data(), 3);
    KA_PKCS7_SetSignerInfoDigestFunc(ctx.get(), KA_DigestFunc_Ref, &Sha1, sizeof Sha1);
    KA_PKCS7_SetSignerInfoEncSignFunc(ctx.get(), KA_PrivateKeyEncFunc_Ref, &keyPair().secret, sizeof keyPair().secret);
    return ctx;
}
int32_t verdictOf(SignerInfoCtx &ctx) {
    int32_t verdict = 0;
    KA_PKCS7_SetSignerInfoDigestFunc(&ctx, KA_DigestFunc_Ref, &Sha1, sizeof Sha1);
    KA_PKCS7_SetSignerInfoDecSignFunc(&ctx, KA_PublicKeyDecryptFunc_Ref, &keyPair().open, sizeof keyPair().open);
    EXPECT_EQ(KA_PKCS7_VerifySignerSignature(&ctx, &verdict), KACERT_Ok);
    return verdict;
}

// Triple DES, by libcrypto. The parameter: whether to encipher, key and IV.
struct Cipher {
    int isToEncipher = 1;
    uint8_t key[24] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24};
    uint8_t iv[8] = {8, 7, 6, 5, 4, 3, 2, 1};
};
int32_t runCipher(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                  void *parameter) {
    const auto &cipher = *static_cast<const Cipher *>(parameter);
    const Ssl<EVP_CIPHER_CTX_free> ctx(EVP_CIPHER_CTX_new());
    int first = 0, last = 0;
    if (EVP_CipherInit_ex(ctx.get(), EVP_des_ede3_cbc(), nullptr, cipher.key, cipher.iv, cipher.isToEncipher) != 1 ||
        EVP_CipherUpdate(ctx.get(), output, &first, input, static_cast<int>(inputLength)) != 1 ||
        EVP_CipherFinal_ex(ctx.get(), output + first, &last) != 1)
        return 9;
    *outputLength = static_cast<uint32_t>(first + last);
    return 0;
}
ContentPtr content() {
    const Cipher cipher;
    ContentPtr ctx = create<EncryptedContentCtx>();
    set(*ctx, PKCS7_ENCRYPT_ALGO, TripleDesOid);
    set(*ctx, PKCS7_ENCRYPT_PARAMETER, tlv(0x04, Octets(cipher.iv, cipher.iv + 8)));
    KA_PKCS7_SetEncryptContentEncFunc(ctx.get(), runCipher, &cipher, sizeof cipher);
    return ctx;
}
RecipientPtr recipient() {
    RecipientPtr ctx = plainRecipient();
    set(*ctx, PKCS7_RECIPIENT_DN, commonName("Root"));
    set(*ctx, PKCS7_RECIPIENT_KEYENCRYPTION_ALGO, RsaEncryptionOid);
    KA_PKCS7_SetRecipientInfoKeyEncFunc(ctx.get(), KA_PublicKeyEncryptFunc_Ref, &keyPair().open, sizeof keyPair().open);
    return ctx;
}
// The plain text, with the key of the recipient or the usual one.
std::string opened(EncryptedContentCtx &ctx, RecipientInfoCtx *from) {
    Cipher cipher;
    uint8_t key[256];
    uint32_t length = 0;
    if (from != nullptr) {
        KA_PKCS7_SetRecipientInfoKeyDecFunc(from, KA_PrivateKeyDecryptFunc_Ref, &keyPair().secret,
                                            sizeof keyPair().secret);
        EXPECT_EQ(KA_PKCS7_DecryptDesKey(from, key, &length), KACERT_Ok);
        EXPECT_EQ(length, 24u);
        std::copy_n(key, 24, cipher.key);
    }
    cipher.isToEncipher = 0;
    std::copy_n(ctx.encryptionAlgorithm.parameters.data + 2, 8, cipher.iv);
    KA_PKCS7_SetEncryptContentDecFunc(&ctx, runCipher, &cipher, sizeof cipher);
    std::string plain(ctx.encryptedContent.length, 0);
    EXPECT_EQ(KA_PKCS7_GetEncryptedContentInformation(&ctx, reinterpret_cast<uint8_t *>(plain.data()), &length), 0);
    return plain.substr(0, length);
}

const std::string Document = "A document\r\nof two lines";

TEST(Pkcs7Oracle, Signed) {
    const Octets crl = encode(*filled<CrlEncodeCtx>());
    for (const bool hasAttributes : {false, true}) {
        const SignedPtr ctx = create<SignedDataCtx>();
        KA_PKCS7_SetSignedDataAttributeInt(ctx.get(), 38, 1);
        set(*ctx, 39, Sha1Oid);
        set(*ctx, 40, DataOid);
        set(*ctx, 41, Document);
        set(*ctx, 42, certificate());
        set(*ctx, 43, crl);
        for (int i = 0; i < 2; ++i)
            handOver(KA_PKCS7_SetSignedData_SignerInfo, *ctx, signer(hasAttributes));
        Octets der = encode(*ctx);
        for (const bool isChanged : {false, true}) {
            if (isChanged)
                ++*std::search(der.begin(), der.end(), Document.begin(), Document.end());
            const P7 theirs = parsed<d2i_PKCS7, PKCS7_free>(der);
            ASSERT_NE(theirs, nullptr);
            const Bio out(BIO_new(BIO_s_mem()));
            EXPECT_EQ(PKCS7_verify(theirs.get(), nullptr, nullptr, nullptr, out.get(), PKCS7_NOVERIFY | PKCS7_BINARY),
                      isChanged ? 0 : 1);
            EXPECT_EQ(sk_X509_num(theirs->d.sign->cert) + sk_X509_CRL_num(theirs->d.sign->crl), 2);
            EXPECT_EQ(textOf(out.get()) == Document, !isChanged);
        }

        const Bio input = readFrom(Document);
        const P7 made(PKCS7_sign(nullptr, nullptr, nullptr, input.get(), PKCS7_PARTIAL | PKCS7_BINARY));
        PKCS7_sign_add_signer(made.get(), x509(), rsaKey().get(), EVP_sha1(),
                              PKCS7_BINARY | (hasAttributes ? 0 : PKCS7_NOATTR));
        PKCS7_add_crl(made.get(), parsed<d2i_X509_CRL, X509_CRL_free>(crl).get());
        ASSERT_EQ(PKCS7_final(made.get(), input.get(), PKCS7_BINARY), 1);
        EXPECT_EQ(decodeMessage(*ctx, derOf(i2d_PKCS7, made.get())), KACERT_Ok);
        EXPECT_EQ(toHex(ctx->content), toHex(text(Document)));
        EXPECT_EQ(answer(*ctx, 42) + answer(*ctx, 43), toHex(certificate()) + toHex(crl));
        EXPECT_EQ(verdictOf(*ctx->signerInfos), PKCS7_VERDICT_GOOD);
        ERR_clear_error();
    }
}

TEST(Pkcs7Oracle, Enveloped) {
    const EnvelopedPtr ctx = create<EnvelopedDataCtx>();
    const Cipher cipher;
    KA_PKCS7_SetEnvelopedDataAttributeInt(ctx.get(), 51, 0);
    set(*ctx, 52, Document);
    set(*ctx, 53, DataOid);
    set(*ctx, 54, Bytes(cipher.key, 24));
    handOver(KA_PKCS7_SetEnvelopedData_RecipientInfo, *ctx, recipient());
    handOver(KA_PKCS7_SetEnvelopedData_EncryptedContent, *ctx, content());
    const P7 theirs = parsed<d2i_PKCS7, PKCS7_free>(encode(*ctx));
    ASSERT_NE(theirs, nullptr);
    const Bio out(BIO_new(BIO_s_mem()));
    EXPECT_EQ(PKCS7_decrypt(theirs.get(), rsaKey().get(), x509(), out.get(), PKCS7_BINARY), 1);
    EXPECT_EQ(textOf(out.get()), Document);

    const std::string large(100000, 'x');
    STACK_OF(X509) *const to = sk_X509_new_null();
    sk_X509_push(to, x509());
    const P7 made(PKCS7_encrypt(to, readFrom(large).get(), EVP_des_ede3_cbc(), PKCS7_BINARY));
    sk_X509_free(to);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(decodeMessage(*ctx, derOf(i2d_PKCS7, made.get())), KACERT_Ok);
    EXPECT_EQ(opened(*ctx->encryptedContent, ctx->recipients), large);
    ERR_clear_error();
}

TEST(Pkcs7Oracle, Encrypted) {
    const EncryptedPtr ctx = create<EncryptedDataCtx>();
    const Cipher cipher;
    KA_PKCS7_SetEncryptedDataAttributeInt(ctx.get(), 58, 0);
    set(*ctx, 59, DataOid);
    set(*ctx, 60, Document);
    handOver(KA_PKCS7_SetEncrytpedData_EncryptedContent, *ctx, content());
    const auto theirs = parsed<d2i_CMS_ContentInfo, CMS_ContentInfo_free>(encode(*ctx));
    ASSERT_NE(theirs, nullptr);
    const Bio out(BIO_new(BIO_s_mem()));
    EXPECT_EQ(CMS_EncryptedData_decrypt(theirs.get(), cipher.key, 24, nullptr, out.get(), CMS_BINARY), 1);
    EXPECT_EQ(textOf(out.get()), Document);

    const Ssl<CMS_ContentInfo_free> made(
        CMS_EncryptedData_encrypt(readFrom(Document).get(), EVP_des_ede3_cbc(), cipher.key, 24, CMS_BINARY));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(decodeMessage(*ctx, derOf(i2d_CMS_ContentInfo, made.get())), KACERT_Ok);
    EXPECT_EQ(opened(*ctx->encryptedContent, nullptr), Document);
    ERR_clear_error();
}

TEST(Pkcs7Oracle, SignedAndEnveloped) {
    const SignedEnvelopedPtr ctx = create<SignedAndEnvelopedDataCtx>();
    const Cipher cipher;
    KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt(ctx.get(), 44, 1);
    set(*ctx, 45, certificate());
    set(*ctx, 47, Sha1Oid);
    set(*ctx, 48, Document);
    set(*ctx, 49, DataOid);
    set(*ctx, 50, Bytes(cipher.key, 24));
    handOver(KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo, *ctx, recipient());
    handOver(KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo, *ctx, signer(false));
    handOver(KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent, *ctx, content());
    const P7 theirs = parsed<d2i_PKCS7, PKCS7_free>(encode(*ctx));
    ASSERT_NE(theirs, nullptr);
    const std::unique_ptr<BIO, By<BIO_free_all>> plain(PKCS7_dataDecode(theirs.get(), rsaKey().get(), nullptr, x509()));
    ASSERT_NE(plain, nullptr);
    std::string got(200, '\0');
    const int size = BIO_read(plain.get(), got.data(), 200);
    EXPECT_EQ(got.substr(0, static_cast<size_t>(std::max(size, 0))), Document);
    PKCS7_SIGNER_INFO *info = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(theirs.get()), 0);
    EXPECT_EQ(PKCS7_signatureVerify(plain.get(), theirs.get(), info, x509()), 1);

    const P7 made(PKCS7_new());
    PKCS7_set_type(made.get(), NID_pkcs7_signedAndEnveloped);
    PKCS7_set_cipher(made.get(), EVP_des_ede3_cbc());
    PKCS7_add_certificate(made.get(), x509());
    PKCS7_add_signature(made.get(), x509(), rsaKey().get(), EVP_sha1());
    PKCS7_add_recipient(made.get(), x509());
    const std::unique_ptr<BIO, By<BIO_free_all>> data(PKCS7_dataInit(made.get(), nullptr));
    ASSERT_NE(data, nullptr);
    BIO_write(data.get(), Document.data(), static_cast<int>(Document.size()));
    (void)BIO_flush(data.get());
    ASSERT_EQ(PKCS7_dataFinal(made.get(), data.get()), 1);
    EXPECT_EQ(decodeMessage(*ctx, derOf(i2d_PKCS7, made.get())), KACERT_Ok);
    EXPECT_EQ(opened(*ctx->encryptedContent, ctx->recipients), Document);
    set(*ctx->signerInfos, PKCS7_SIGNER_CONTENT, Document);
    EXPECT_EQ(verdictOf(*ctx->signerInfos), PKCS7_VERDICT_GOOD);
    ERR_clear_error();
}

} // namespace
