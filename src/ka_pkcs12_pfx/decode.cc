// PFX files: reading.
#include "ka_pkcs12_pfx.h"

#include "cipher.h"
#include "ka_pkcs7_EncryptedData.h"

#include "karil/pkcs12_content_info.h"

namespace karil {

namespace {

// The rounds that a file may still cost. A small file could otherwise hold a processor for hours.
class Rounds {
public:
    // What a derivation of `octets` costs.
    Status spend(int32_t digestId, uint32_t octets, uint32_t iterations) {
        const uint32_t digestSize = digestId == KA_DIGEST_SHA1 ? 20 : 16;
        const uint64_t cost = uint64_t{(octets + digestSize - 1) / digestSize} * iterations;
        if (cost > left)
            return KA_FAIL(KACERT_InvalidParamErr, "------------>KACERT_InvalidParamErr");
        left -= cost;
        return KACERT_Ok;
    }

private:
    uint64_t left = 100000000;
};

// What was deciphered. It is wiped before it is freed.
struct PlainText {
    Owned<uint8_t> block;
    uint32_t size = 0;
    uint32_t length = 0;

    PlainText() = default;
    PlainText(const PlainText &) = delete;
    PlainText &operator=(const PlainText &) = delete;
    ~PlainText() { wipe(block.get(), size); }
    Element element() const { return {NormalSequence, {block.get(), length}}; }
};

// What all parts of a file are opened with, and the key that was found last: the file and the password may be octets of
// the one that the context holds.
struct Opener {
    Bytes password;
    Rounds rounds = {};
    Anybuf key = {};
};

Status findAlgorithm(Bytes oid, const PbeAlgorithm *&algorithm) {
    algorithm = pbeAlgorithm(oid);
    return algorithm != nullptr ? KACERT_Ok
                                : KA_FAIL(KACERT_AlgorithmNotSupportErr, "------------>KACERT_AlgorithmNotSupportErr");
}

Status decipher(Opener &opener, const PbeAlgorithm &algorithm, Bytes salt, uint32_t iterations, Bytes cipherText,
                PlainText &out) {
    KA_PASS(opener.rounds.spend(algorithm.digestId, algorithm.keySize, iterations));
    if (algorithm.cipher != CipherKind::Rc4)
        KA_PASS(opener.rounds.spend(algorithm.digestId, PbeBlock, iterations));
    out.block = KA_BLOCK(cipherText.size());
    if (out.block == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------------>KAPR_Malloc");
    out.size = static_cast<uint32_t>(cipherText.size());
    KA_STEP(KA_PKCS12_PbeWithDigestAlgoAndDecrypt(algorithm.oid.data(), static_cast<uint32_t>(algorithm.oid.size()),
                                                  opener.password.data(), static_cast<uint32_t>(opener.password.size()),
                                                  salt.data(), static_cast<uint32_t>(salt.size()), iterations,
                                                  cipherText.data(), out.size, out.block.get(), &out.length));
    return KACERT_Ok;
}

// The digest of a MAC by its OID; 0 for none that a MAC is made with.
int32_t digestOf(const Anybuf &oid) {
    const Bytes octets = bytesOf(oid);
    return equal(octets, KARIL_OID_SHA1)  ? KA_DIGEST_SHA1
           : equal(octets, KARIL_OID_MD5) ? KA_DIGEST_MD5
           : equal(octets, KARIL_OID_MD2) ? KA_DIGEST_MD2
                                          : 0;
}

Status verify(const Element &macData, Bytes input, Opener &opener, int32_t &result) {
    if (!macData.present())
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KA_PKCS12_GetAuthSafeOfDataType_MacParameter");
    PfxMac mac;
    KA_STEP_AS("------------>KA_PKCS12_DecodeMac", readMac(macData, mac.record));
    const int32_t digestId = digestOf(mac.record.digestAlgorithm.oid);
    if (digestId != 0)
        KA_PASS(opener.rounds.spend(digestId, MacKeySize, mac.record.iterations));
    KA_PASS(setMacPassword(mac, digestId, opener.password));
    setPart(mac.record.macInput, input, TagOctetString);
    KA_STEP_AS("------------>KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult", checkMac(mac.record));
    result = mac.record.verified == 1 ? PKCS7_VERDICT_GOOD : PKCS7_VERDICT_BAD;
    return KACERT_Ok;
}

// SafeContents of a ContentInfo: borrowed, or deciphered.
struct SafeContents {
    PlainText plain;
    Element element;
};

Status openData(const Element &info, Element &out) {
    Element value;
    KA_STEP_AS("------------>KA_PKCS7_DecodePKCS7Data", openMessage(info, PKCS7_TYPE_DATA, value));
    KA_STEP_AS("------------>KA_PKCS7_DecodePKCS7Data", readValue(value, value));
    out = {NormalSequence, value.bytes};
    return KACERT_Ok;
}

using EncryptedInfo = std::unique_ptr<EncryptedDataCtx, By<KA_PKCS12_DestoryDecodeContentInfoOfEncryptedType>>;

Status openEncrypted(const ContentInfo &info, Opener &opener, SafeContents &out) {
    if (!hasContent(info))
        return KA_FAIL(KACERT_InvalidItemErr, "------------>KA_PKCS12_DecodeContentInfoOfEncryptedType");
    EncryptedDataCtx *created = nullptr;
    KA_STEP(KA_PKCS12_CreateDecodeContentInfoOfEncryptedType(&created));
    const EncryptedInfo message(created);
    Element content = info.content;
    content.isKept = true; // by the caller, longer than the message lives
    KA_STEP_AS("------------>KA_PKCS12_DecodeContentInfoOfEncryptedType", readEncryptedData(content, *message));
    const EncryptedContentCtx &encrypted = *message->encryptedContent;
    const PbeAlgorithm *algorithm = nullptr;
    KA_PASS(findAlgorithm(bytesOf(encrypted.encryptionAlgorithm.oid), algorithm));
    Bytes salt;
    uint32_t iterations = 0;
    KA_STEP_AS("------------>KA_PKCS12_GetContentInfoOfEncryptedType_DesParameter",
               readParameter(elementOf(encrypted.encryptionAlgorithm.parameters), salt, iterations));
    KA_PASS(decipher(opener, *algorithm, salt, iterations, bytesOf(encrypted.encryptedContent), out.plain));
    out.element = out.plain.element();
    return KACERT_Ok;
}

// Nothing comes of a ContentInfo that is missing, or of another type.
Status openContentInfo(const Element &element, Opener &opener, SafeContents &out) {
    if (!element.present())
        return KACERT_Ok;
    ContentInfo info;
    KA_STEP_AS("------------>KA_PKCS7_DecodePKCS7DerTypeData", readContentInfo(element, info));
    if (!info.content.present())
        return KA_FAIL(KAPKCS7_ContentTypeErr, "------------>KA_PKCS7_DecodePKCS7DerTypeData");
    if (info.is(PKCS7_TYPE_DATA))
        return openData(element, out.element);
    return info.is(PKCS7_TYPE_ENCRYPTEDDATA) ? openEncrypted(info, opener, out) : KACERT_Ok;
}

Status readCertificate(SafeBagParts &bag, PfxCtx &ctx) {
    CertBagParts parts;
    KA_STEP_AS("------------>KA_PKCS12_ParseCertBag", readCertBag(bag.content, parts));
    PfxCertificate *certificate = nullptr;
    KA_STEP_AS("------------>KA_PKCS12_SetCertificate", addCertificate(ctx, parts.value.bytes, &certificate));
    moveAttributes(bag.attributes.list(), attributesOf(*certificate));
    certificate->attributeCount = countOf(certificate->attributes.next);
    return KACERT_Ok;
}

Status readKey(SafeBagParts &bag, bool withAttributes, Opener &opener, PfxCtx &ctx) {
    EncKeyBagParts shrouded;
    KA_STEP_AS("------------>KA_PKCS12_DealWithEncKeyBag", readEncKeyBag(bag.content, shrouded));
    const PbeAlgorithm *algorithm = nullptr;
    KA_PASS(findAlgorithm(shrouded.algorithm.bytes, algorithm));
    ShroudedKey parts;
    KA_STEP_AS("------------>KA_PKCS12_DealWithEncKeyBag", readShroudedKey(bag.content, parts));
    PlainText plain;
    KA_PASS(decipher(opener, *algorithm, parts.salt, parts.iterations, parts.encKey, plain));
    KeyBagParts key;
    KA_STEP_AS("------------>KA_PKCS12_DecodeKeyBag", readKeyBag(plain.element(), key));
    KA_STEP_AS("------------>KA_PKCS12_SetPrivateKey", replaceSecret(opener.key, key.key.bytes));
    if (withAttributes) {
        moveAttributes(key.attributes.list(), keyAttributesOf(ctx));
        moveAttributes(bag.attributes.list(), bagAttributesOf(ctx));
        noteAttributes(ctx);
    }
    return KACERT_Ok;
}

// Bags that are neither certificates nor shrouded keys are skipped.
Status readBags(const Element &contents, bool withAttributes, Opener &opener, PfxCtx &ctx) {
    if (!contents.present())
        return KACERT_Ok;
    Level bags;
    KA_STEP_AS("------------>KA_PKCS12_DecodeSafeContent", readSafeContents(contents, bags));
    while (!bags.empty()) {
        SafeBagParts bag;
        KA_STEP_AS("------------>KA_PKCS12_DecodeSafeBag", readSafeBag(bags.take(), bag));
        if (equal(bag.id.bytes, KARIL_OID_CERT_BAG))
            KA_PASS(readCertificate(bag, ctx));
        else if (equal(bag.id.bytes, KARIL_OID_SHROUDED_KEY_BAG))
            KA_PASS(readKey(bag, withAttributes, opener, ctx));
    }
    return KACERT_Ok;
}

Status readFile(const Element &whole, Opener &opener, PfxCtx &ctx, int32_t &macResult) {
    PfxParts parts;
    KA_STEP_AS("------------>KA_PKCS12_DecodeAuthSafeOfDataType", readPfx(whole, parts));
    Element safe;
    KA_PASS(openData(parts.authSafe, safe));
    Level infos;
    KA_STEP_AS("------------>KA_PKCS12_DecodeAuthSafeOfDataType", readAuthenticatedSafe(safe, infos));
    KA_PASS(verify(parts.macData, safe.bytes, opener, macResult));
    SafeContents first;
    SafeContents second;
    KA_PASS(openContentInfo(infos.take(), opener, first));
    KA_PASS(openContentInfo(infos.take(), opener, second));
    KA_PASS(readBags(first.element, false, opener, ctx));
    return readBags(second.element, true, opener, ctx);
}

Status decode(PfxCtx *ctx, const uint8_t *password, int32_t passwordLength, const uint8_t *der, int32_t length,
              int32_t *macResult) {
    KA_PASS(checkArguments({ctx}));
    KA_PASS(checkPointers({der, macResult}));
    KA_PASS(checkPassword(password, passwordLength));
    Element whole;
    KA_STEP_AS("------------>KAsn1_GetCertLength", takeWhole(der, length, whole));
    Opener opener = {{password, static_cast<size_t>(passwordLength)}};
    const Status status = readFile(whole, opener, *ctx, *macResult);
    if (opener.key.data != nullptr) {
        clearSecret(ctx->privateKey);
        ctx->privateKey = opener.key;
    }
    return status;
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_DecodePFX(PfxCtx *ctx, const uint8_t *password, int32_t passwordLength, const uint8_t *der,
                            int32_t length, int32_t *macResult) {
    return KA_FRAMED("KA_PKCS12_DecodePFX", decode(ctx, password, passwordLength, der, length, macResult));
}
