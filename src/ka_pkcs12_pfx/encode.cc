// PFX files: writing.
#include "ka_pkcs12_pfx.h"

#include "cipher.h"
#include "ka_pkcs7_EncryptedData.h"

#include "karil/pkcs12_content_info.h"

namespace karil {

namespace {

constexpr uint32_t Rounds = 2000;
constexpr uint32_t CipherSaltSize = 8;
constexpr uint32_t MacSaltSize = 20;
constexpr uint32_t BagSize = 256; // what is around the octets of a bag, about

Status fillSalt(std::span<uint8_t> salt) {
    const auto size = static_cast<uint32_t>(salt.size());
    if (KA_PKCS7_GenerateBytes(salt.data(), &size) != KACERT_Ok)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KA_PKCS7_GenerateBytes");
    return KACERT_Ok;
}

// A bag takes no attribute without name or value.
Status checkAttributes(const AttributeRecord *first) {
    for (const AttributeRecord *node = first; node != nullptr; node = node->next)
        if (node->oid.length == 0 || node->value.length == 0)
            return KA_FAIL(KACERT_InvalidParamErr, "------------>KA_PKCS12_SetSafeBagAttribute");
    return KACERT_Ok;
}

struct CipherText {
    Owned<uint8_t> block;
    uint32_t length = 0;
};

// The key bag under the password.
Status encipherKey(const PfxCtx &ctx, Bytes password, Bytes salt, CipherText &out) {
    if (ctx.privateKey.data == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KA_PKCS12_SetKeyBagKey");
    Writer bag(BagSize, true);
    bag.reserve(uint64_t{ctx.privateKey.length} + BagSize);
    writeKeyBag(bag, 0, KARIL_OID_RSA_ENCRYPTION, bytesOf(ctx.privateKey), ctx.keyAttributes.next);
    KA_STEP_AS("------------>KA_PKCS12_EncodeKeyBag", bag.status());
    out.block = KA_BLOCK(uint64_t{bag.size()} + PbeBlock);
    if (out.block == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------------>KAPR_Malloc");
    KA_STEP(KA_PKCS12_PbeWithDigestAlgoAndEncrypt(KARIL_OID_PBE_SHA1_3DES, sizeof KARIL_OID_PBE_SHA1_3DES,
                                                  password.data(), static_cast<uint32_t>(password.size()), salt.data(),
                                                  static_cast<uint32_t>(salt.size()), Rounds, bag.since(0).data(),
                                                  bag.size(), out.block.get(), &out.length));
    return KACERT_Ok;
}

// The ContentInfo with the key's bag, as data.
Status writeKeyInfo(Writer &out, const PfxCtx &ctx, Bytes password) {
    uint8_t salt[CipherSaltSize];
    KA_PASS(fillSalt(salt));
    CipherText key;
    KA_PASS(encipherKey(ctx, password, salt, key));
    Writer parameter(64);
    writeParameter(parameter, salt, Rounds);
    KA_STEP_AS("------------>KA_PKCS12_EncodeParameter", parameter.status());
    KA_PASS(checkAttributes(ctx.bagAttributes.next));
    {
        const ContentFrame frame(out, contentTypeOid(PKCS7_TYPE_DATA), uint64_t{key.length} + BagSize);
        const Construct data(out, TagOctetString, uint64_t{key.length} + BagSize);
        const Construct contents(out, TagSequence, uint64_t{key.length} + BagSize);
        writeSafeBag(out, KARIL_OID_SHROUDED_KEY_BAG, ctx.bagAttributes.next, [&] {
            writeEncKeyBag(out, KARIL_OID_PBE_SHA1_3DES, parameter.since(0), {key.block.get(), key.length});
        });
    }
    KA_STEP_AS("------------>KA_PKCS12_EncodeContentInfoOfDataType", out.status());
    return KACERT_Ok;
}

// SafeContents with the certificates' bags, in the place of the content.
Status writeCertificates(const PfxCtx &ctx, Anybuf &content) {
    uint64_t expected = 0;
    for (const PfxCertificate *node = ctx.firstCertificate; node != nullptr; node = node->next) {
        KA_PASS(checkAttributes(node->attributes.next));
        expected += uint64_t{node->certificate.length} + BagSize;
    }
    if (ctx.firstCertificate == nullptr)
        return KA_FAIL(KACERT_InvalidItemErr, "------------>KA_PKCS12_EncodeSafeContent");
    Writer out(0, true);
    out.reserve(expected);
    {
        const Construct contents(out, TagSequence, expected);
        for (const PfxCertificate *node = ctx.firstCertificate; node != nullptr; node = node->next)
            writeSafeBag(out, KARIL_OID_CERT_BAG, node->attributes.next,
                         [&] { writeCertBag(out, KARIL_OID_X509_CERTIFICATE, bytesOf(node->certificate), false); });
    }
    KA_STEP_AS("------------>KA_PKCS12_EncodeSafeContent", out.moveTo(content));
    return KACERT_Ok;
}

using EncryptedInfo = std::unique_ptr<EncryptedDataCtx, By<KA_PKCS12_DestoryEncodeContentInfoOfEncryptedType>>;

// The ContentInfo with the certificates' bags, as encrypted data.
Status writeCertificatesInfo(Writer &out, const PfxCtx &ctx, Bytes password) {
    EncryptedDataCtx *created = nullptr;
    KA_STEP(KA_PKCS12_CreateEncodeContentInfoOfEncryptedType(&created));
    const EncryptedInfo info(created);
    KA_PASS(writeCertificates(ctx, info->content));
    uint8_t salt[CipherSaltSize];
    KA_PASS(fillSalt(salt));
    KA_STEP(KA_PKCS12_SetContentInfoOfEncryptedType_DesAlgorithm(info.get(), KARIL_OID_PBE_SHA1_RC2_40,
                                                                 sizeof KARIL_OID_PBE_SHA1_RC2_40));
    KA_STEP(KA_PKCs12_SetContentInfoOfEncryptedType_DesParameter(info.get(), salt, sizeof salt, Rounds));
    const PbeHookParam parameter = {KARIL_OID_PBE_SHA1_RC2_40,
                                    sizeof KARIL_OID_PBE_SHA1_RC2_40,
                                    password.data(),
                                    static_cast<uint32_t>(password.size()),
                                    salt,
                                    sizeof salt,
                                    Rounds};
    KA_STEP(KA_PKCS12_SetContentInfoOfEncryptedType_DecContentFunc(info.get(), KA_EncryptFunc_Ref, &parameter,
                                                                   sizeof parameter));
    KA_STEP_AS("------------>KA_PKCS12_EncodeContentInfoOfEncryptedType", writeEncryptedData(out, *info, NoBound));
    return KACERT_Ok;
}

// The key is the first to be enciphered, and the last to be written.
Status writeAuthenticatedSafe(Writer &out, const PfxCtx &ctx, Bytes password) {
    Writer key;
    KA_PASS(writeKeyInfo(key, ctx, password));
    const Construct safe(out, TagSequence);
    KA_PASS(writeCertificatesInfo(out, ctx, password));
    out.octets(key.since(0));
    return KACERT_Ok;
}

Status encode(const PfxCtx *ctx, const uint8_t *password, int32_t passwordLength, uint8_t *result,
              uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx, resultLength}));
    KA_PASS(checkArguments({ctx->authSafe}));
    KA_PASS(checkPassword(password, passwordLength));
    const Bytes secret = {password, static_cast<size_t>(passwordLength)};
    Writer safe;
    KA_PASS(writeAuthenticatedSafe(safe, *ctx, secret));
    KA_STEP_AS("------------>KAsn1_WriteSequence", safe.status());
    uint8_t salt[MacSaltSize];
    KA_PASS(fillSalt(salt));
    PfxMac mac;
    setPart(mac.record.digestAlgorithm.oid, KARIL_OID_SHA1, TagObjectId);
    setPart(mac.record.salt, salt, TagOctetString);
    setPart(mac.record.macInput, safe.since(0), TagOctetString);
    mac.record.iterations = Rounds;
    KA_PASS(setMacPassword(mac, KA_DIGEST_SHA1, secret));
    Writer pfx(0);
    KA_STEP_AS("------------>KA_PKCS12_EncodeAuthSafeOfDataType", writePfx(pfx, PfxVersion, mac.record));
    return handOut(pfx, result, resultLength);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_EncodePFX(PfxCtx *ctx, const uint8_t *password, int32_t passwordLength, uint8_t *result,
                            uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_EncodePFX", encode(ctx, password, passwordLength, result, resultLength));
}
