// EncKeyBag: a private key that a password protects.
#include "bag.h"

#include "ka_pkcs12_base.h"

namespace karil {

namespace {

using Ctx = EncKeyBagCtx;

constexpr uint32_t LongestEncKey = 2000;
constexpr size_t LongestParameter = 100;
constexpr uint32_t CipherRoom = 1024; // beyond the input and the longest cipher text

void clearContext(Ctx &ctx) {
    for (Anybuf *field : {&ctx.algorithm.oid, &ctx.parameter, &ctx.encKey})
        KI_ClearAnybuf(field);
    ctx = {};
}

Status write(Writer &out, const Ctx &ctx) {
    if (ctx.algorithmSet == 0 || ctx.encKeySet == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>The field is not set");
    writeEncKeyBag(out, bytesOf(ctx.algorithm.oid), bytesOf(ctx.parameter), bytesOf(ctx.encKey));
    return KACERT_Ok;
}

Status fill(const Element &element, Ctx &ctx) {
    EncKeyBagParts parts;
    KA_PASS(readEncKeyBag(element, parts));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.algorithm.oid, parts.algorithm));
    if (parts.parameter.present())
        KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.parameter, parts.parameter));
    KA_STEP_AS("------------>KI_CopyAnybuf", store(ctx.encKey, parts.encKey));
    ctx.algorithm.id = 1;
    ctx.algorithmSet = ctx.encKeySet = 1;
    return KACERT_Ok;
}

Status decode(Ctx *ctx, const uint8_t *der, int32_t length) {
    KA_PASS(checkPointers({ctx, der}));
    return decodeBag<clearContext>(*ctx, exactElement(der, length), fill);
}

// An area for what a function writes that is not told the area's size. It is wiped before it is freed.
struct CipherArea {
    size_t size;
    Owned<uint8_t> block;
    uint32_t used = 0;

    explicit CipherArea(size_t input)
        : size((input > LongestEncKey ? input : LongestEncKey) + CipherRoom), block(KA_BLOCK(size)) {}
    CipherArea(const CipherArea &) = delete;
    CipherArea &operator=(const CipherArea &) = delete;
    ~CipherArea() { wipe(block.get(), size); }
    Bytes octets() const { return {block.get(), used}; }
};

struct Password {
    const uint8_t *octets;
    int32_t length;
};

// Runs the cipher with the fields of `key`, of which encKey is the input.
Status runCipher(KAPbeFunc cipher, const Password &password, const ShroudedKey &key, CipherArea &area) {
    if (area.block == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------------>KAPR_Malloc");
    const auto size = [](Bytes octets) { return static_cast<uint32_t>(octets.size()); };
    return cipher(key.algorithm.data(), size(key.algorithm), password.octets, static_cast<uint32_t>(password.length),
                  key.salt.data(), size(key.salt), key.iterations, key.encKey.data(), size(key.encKey),
                  area.block.get(), &area.used);
}

// `plain`: its encKey is the plain key.
Status generate(const ShroudedKey &plain, const Password &password, KAPbeFunc encrypt, uint8_t *result,
                uint32_t *resultLength) {
    CipherArea area(plain.encKey.size());
    KA_PASS(runCipher(encrypt, password, plain, area));
    if (area.used > LongestEncKey)
        return KA_FAIL(KACERT_InvalidLengthErr, "------------>KACERT_InvalidLengthErr");
    Writer parameter(LongestParameter);
    writeParameter(parameter, plain.salt, plain.iterations);
    KA_STEP_AS("------------>KA_PKCS12_EncodeParameter", parameter.status());
    if (parameter.size() > LongestParameter)
        return KA_FAIL(KACERT_InvalidLengthErr, "------------>KACERT_InvalidLengthErr");
    Writer out;
    writeEncKeyBag(out, plain.algorithm, parameter.since(0), area.octets());
    return handOut(out, result, resultLength);
}

Status parse(const Password &password, const uint8_t *der, int32_t length, KAPbeFunc decrypt) {
    KA_PASS(checkOctets(der, length, 1));
    if (decrypt == nullptr || password.length < 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KACERT_InvalidParamErr");
    ShroudedKey key;
    KA_PASS(readShroudedKey(exactElement(der, length), key));
    CipherArea area(key.encKey.size());
    return runCipher(decrypt, password, key, area);
}

} // namespace

void writeEncKeyBag(Writer &out, Bytes algorithm, Bytes parameter, Bytes encKey) {
    const Construct bag(out, TagSequence, encKey.size());
    {
        const Construct identifier(out, TagSequence);
        out.objectId(algorithm);
        if (parameter.empty())
            out.null();
        else
            out.octets(parameter);
    }
    out.octetString(encKey);
}

Status readEncKeyBag(const Element &element, EncKeyBagParts &out) {
    KA_PASS(checkHeader(element));
    Level fields;
    KA_STEP_AS("------------>KAsn1_ReadSequence", readSequence(element, fields));
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidParamErr, "------------>The content of Enckey bag is null"));
    Level rest;
    KA_PASS(readTyped(field, out.algorithm, rest));
    out.parameter = rest.take();
    KA_PASS(takeField(fields, field, KACERT_InvalidParamErr, "------------>The Enckey of enckey bag is null"));
    KA_STEP_AS("------------>KAsn1_ReadOctetString", readValue(field, out.encKey));
    return KACERT_Ok;
}

Status readShroudedKey(const Element &element, ShroudedKey &out) {
    EncKeyBagParts parts;
    KA_PASS(readEncKeyBag(element, parts));
    if (parts.parameter.bytes.size() > LongestParameter)
        return KA_FAIL(KACERT_InvalidLengthErr, "------------>KACERT_InvalidLengthErr");
    ShroudedKey fresh = {parts.algorithm.bytes, parts.encKey.bytes, {}, 0};
    if (readParameter(parts.parameter, fresh.salt, fresh.iterations) != KACERT_Ok)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KA_PKCS12_DecodeParameter");
    out = fresh;
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_CreateEncodeEncKeyBag(EncKeyBagCtx **out) {
    return KA_FRAMED("KA_PKCS12_CreateEncodeEncKeyBag", createContext(out, {&EncKeyBagCtx::algorithm}));
}
KA_ALIAS(KA_PKCS12_CreateDecodeEncKeyBag, KA_PKCS12_CreateEncodeEncKeyBag);

int32_t KA_PKCS12_DestoryEncodeEncKeyBag(EncKeyBagCtx *ctx) {
    return KA_FRAMED("KA_PKCS12_DestoryEncodeEncKeyBag", destroyBag(ctx, clearContext));
}
KA_ALIAS(KA_PKCS12_DestoryDecodeEncKeyBag, KA_PKCS12_DestoryEncodeEncKeyBag);

int32_t KA_PKCS12_SetEncKeyBagAlgo(EncKeyBagCtx *ctx, const uint8_t *oid, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetEncKeyBagAlgo", setOctets<&EncKeyBagCtx::algorithm, &AlgorithmRecord::oid>(
                                                       ctx, oid, length, 0, &EncKeyBagCtx::algorithmSet));
}

int32_t KA_PKCS12_GetEncKeyBagAlgo(const EncKeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetEncKeyBagAlgo",
                     getOctets<&EncKeyBagCtx::algorithm, &AlgorithmRecord::oid>(ctx, result, resultLength));
}

int32_t KA_PKCS12_SetEncKeyBagParameter(EncKeyBagCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetEncKeyBagParameter", setOctets<&EncKeyBagCtx::parameter>(ctx, der, length));
}

int32_t KA_PKCS12_GetEncKeyBagParameter(const EncKeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetEncKeyBagParameter", getOctets<&EncKeyBagCtx::parameter>(ctx, result, resultLength));
}

int32_t KA_PKCS12_SetEncKeyBagEncKey(EncKeyBagCtx *ctx, const uint8_t *octets, int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetEncKeyBagEncKey",
                     setOctets<&EncKeyBagCtx::encKey>(ctx, octets, length, 0, &EncKeyBagCtx::encKeySet));
}

int32_t KA_PKCS12_GetEncKeyBagEncKey(const EncKeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_GetEncKeyBagEncKey", getOctets<&EncKeyBagCtx::encKey>(ctx, result, resultLength));
}

int32_t KA_PKCS12_EncodeEncKeyBag(const EncKeyBagCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS12_EncodeEncKeyBag", encodeBag(ctx, result, resultLength, write));
}

int32_t KA_PKCS12_DecodeEncKeyBag(EncKeyBagCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS12_DecodeEncKeyBag", decode(ctx, der, length));
}

int32_t KA_PKCS12_GenEncKeyBag(const uint8_t *oid, int32_t oidLength, const uint8_t *key, int32_t keyLength,
                               const uint8_t *password, int32_t passwordLength, const uint8_t *salt, int32_t saltLength,
                               int32_t iterations, uint8_t *result, uint32_t *resultLength, KAPbeFunc encrypt) {
    KA_FRAME("KA_PKCS12_GenEncKeyBag");
    KA_PASS(checkOctets(oid, oidLength));
    KA_PASS(checkOctets(key, keyLength));
    KA_PASS(checkOctets(salt, saltLength));
    KA_PASS(checkPointers({result, resultLength}));
    if (encrypt == nullptr || passwordLength < 0 || iterations < 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KACERT_InvalidParamErr");
    KA_PASS(generate({octetsOf(oid, oidLength), octetsOf(key, keyLength), octetsOf(salt, saltLength),
                      static_cast<uint32_t>(iterations)},
                     {password, passwordLength}, encrypt, result, resultLength));
    return KA_DONE();
}

int32_t KA_PKCS12_ParseEncKeyBag(const uint8_t *password, int32_t passwordLength, const uint8_t *der, int32_t length,
                                 KAPbeFunc decrypt) {
    return KA_FRAMED("KA_PKCS12_ParseEncKeyBag", parse({password, passwordLength}, der, length, decrypt));
}

int32_t KA_PKCS12_DealWithEncKeyBag(uint8_t *oid, uint32_t *oidLength, uint8_t *encKey, uint32_t *encKeyLength,
                                    uint8_t *salt, uint32_t *saltLength, uint32_t *iterations, const uint8_t *der,
                                    int32_t length) {
    KA_FRAME("KA_PKCS12_DealWithEncKeyBag");
    KA_PASS(checkPointers({oid, oidLength, encKey, encKeyLength, salt, saltLength, iterations, der}));
    ShroudedKey key;
    KA_PASS(readShroudedKey(exactElement(der, length), key));
    handOut(borrow(key.algorithm), oid, oidLength);
    handOut(borrow(key.salt), salt, saltLength);
    *iterations = key.iterations;
    // The largest one comes last: it may go where the bag was.
    handOut(borrow(key.encKey), encKey, encKeyLength);
    return KA_DONE();
}
