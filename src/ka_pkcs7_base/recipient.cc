// RecipientInfo: the context, its attributes, and the hooks that encipher and open the content's key.
#include "ka_pkcs7_base.h"

namespace karil {

namespace {

using Ctx = RecipientInfoCtx;

Status setDn(Ctx &ctx, Bytes value) {
    return setIssuerDn(ctx.issuerDn, ctx.dnSet, value);
}

Status setKey(Ctx &ctx, Bytes value) {
    return replaceSecret(ctx.key, value);
}

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW_AS(PKCS7_RECIPIENT_DN, "PKCS7_SIGNER_DN", setDn, nullptr),
    KA_ISSUER(PKCS7_RECIPIENT_ISSUER_COUNTRY, KA_NAME_COUNTRY),
    KA_ISSUER(PKCS7_RECIPIENT_ISSUER_STATEORPROVINCE, KA_NAME_STATEORPROVINCE),
    KA_ISSUER(PKCS7_RECIPIENT_ISSUER_LOCALITY, KA_NAME_LOCALITY),
    KA_ISSUER(PKCS7_RECIPIENT_ISSUER_ORGANIZATION, KA_NAME_ORGANIZATION),
    KA_ISSUER(PKCS7_RECIPIENT_ISSUER_ORGANIZATIONALUNIT, KA_NAME_ORGANIZATIONALUNIT),
    KA_ISSUER(PKCS7_RECIPIENT_ISSUER_COMMONNAME, KA_NAME_COMMONNAME),
    KA_ISSUER(PKCS7_RECIPIENT_ISSUER_EMAIL, KA_NAME_EMAIL),
    KA_ISSUER(PKCS7_RECIPIENT_ISSUER_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_ROW(PKCS7_RECIPIENT_SERIAL, (setField<TagInteger, &Ctx::serial>), (answerField<&Ctx::serial>)),
    KA_ROW(PKCS7_RECIPIENT_KEYENCRYPTION_ALGO,
           (setField<TagObjectId, &Ctx::keyEncryptionAlgorithm, &AlgorithmIdentifierRecord::oid>),
           (answerField<&Ctx::keyEncryptionAlgorithm, &AlgorithmIdentifierRecord::oid>)),
    KA_ROW(PKCS7_RECIPIENT_ENCRYPTED_KEY, (setField<TagOctetString, &Ctx::encryptedKey>),
           (answerField<&Ctx::encryptedKey>)),
    KA_ROW(PKCS7_RECIPIENT_KEY, setKey, (answerField<&Ctx::key>)),
};

void answerVersion(const Ctx &ctx, int32_t &value) {
    value = ctx.version;
}
constexpr IntAttribute<Ctx> IntRows[] = {
    KA_INT_ROW_AS(PKCS7_RECIPIENTINFO_VERSION, "", nullptr, answerVersion),
};

void noteSet(Ctx &ctx) {
    ctx.versionSet = 1;
    ctx.version = 0;
}

void clearDecoded(Ctx &ctx) {
    KI_FreeName(ctx.issuer.next);
    ctx.issuer.next = nullptr;
    KI_FreeAnybuf(ctx.issuerDn);
    ctx.issuerDn = nullptr;
    for (Anybuf *field :
         {&ctx.serial, &ctx.keyEncryptionAlgorithm.oid, &ctx.keyEncryptionAlgorithm.parameters, &ctx.encryptedKey})
        KI_ClearAnybuf(field);
    clearSecret(ctx.key);
    ctx.versionSet = 0;
    ctx.version = ctx.dnSet = 0;
    freeKept(ctx.kept);
    ctx.kept = nullptr;
}

constexpr uint32_t EncryptedKeyBound = 2000;

Status encryptedKey(const Ctx &ctx, HookArea &area, Bytes &out) {
    if (ctx.key.length == 0 && ctx.encryptedKey.length > 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>RecipientInfo Key is NULL");
    if (ctx.keyEncFunc != nullptr && ctx.key.length > 0) {
        const Hook hook = {ctx.keyEncFunc, ctx.keyEncFuncParam, static_cast<uint32_t>(ctx.keyEncFuncParamLen)};
        KA_PASS(callWithCopy(hook, bytesOf(ctx.key), EncryptedKeyBound, area, "------>Func"));
        out = area.octets();
        return KACERT_Ok;
    }
    if (ctx.encryptedKey.length == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>Key is null");
    out = bytesOf(ctx.encryptedKey);
    return KACERT_Ok;
}

Status writeFields(Writer &out, Ctx &ctx) {
    out.integer(static_cast<uint32_t>(ctx.version));
    KA_PASS(writeIssuerAndSerial(out, ctx.issuer, ctx.dnSet == 1 ? ctx.issuerDn : nullptr, ctx.serial));
    writeAlgorithm(out, bytesOf(ctx.keyEncryptionAlgorithm.oid));
    KA_PASS(out.status());
    HookArea area;
    Bytes key;
    KA_PASS(encryptedKey(ctx, area, key));
    out.octetString(key);
    return KACERT_Ok;
}

Status openKey(Ctx *ctx, uint8_t *result, uint32_t *resultLength) {
    KA_PASS(checkArguments({ctx}));
    if (ctx->encryptedKey.length == 0)
        return KA_FAIL(KACERT_InvalidItemErr, "------------>Encrypted key is NULL");
    if (ctx->keyDecFunc == nullptr)
        return KACERT_Ok;
    KA_PASS(checkArguments({result, resultLength}));
    HookArea area;
    const Hook hook = {ctx->keyDecFunc, ctx->keyDecFuncParam, static_cast<uint32_t>(ctx->keyDecFuncParamLen)};
    KA_PASS(callWithCopy(hook, bytesOf(ctx->encryptedKey), ctx->encryptedKey.length, area,
                         "------------>Function is Decode key error"));
    area.moveTo(ctx->key);
    handOut(ctx->key, result, resultLength);
    return KACERT_Ok;
}

Status setKeyHook(Ctx *ctx, bool isToOpen, KAHookFunc hook, const void *parameter, int32_t length) {
    KA_PASS(checkArguments({ctx}));
    if (isToOpen)
        KA_PASS(setHook(ctx->keyDecFunc, ctx->keyDecFuncParam, ctx->keyDecFuncParamLen, hook, parameter, length));
    else
        KA_PASS(setHook(ctx->keyEncFunc, ctx->keyEncFuncParam, ctx->keyEncFuncParamLen, hook, parameter, length));
    noteSet(*ctx);
    return KACERT_Ok;
}

Status createFor(Ctx **out) {
    KA_PASS(checkArguments({out}));
    RecipientPtr ctx;
    KA_PASS(createRecipient(ctx));
    *out = ctx.release();
    return KACERT_Ok;
}

Status setAttributeOf(Ctx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    KA_PASS(setAttribute(Rows, ctx, id, value, length, MessageRefusals));
    noteSet(*ctx);
    return KACERT_Ok;
}

} // namespace

Status createRecipient(RecipientPtr &out) {
    void *record = nullptr;
    KA_PASS(createRecord(&out, sizeof(Ctx), record));
    out.reset(static_cast<Ctx *>(record));
    out->keyEncryptionAlgorithm.id = 1;
    return KACERT_Ok;
}

void destroyRecipient(RecipientInfoCtx *ctx) {
    if (ctx == nullptr)
        return;
    clearDecoded(*ctx);
    freeParameter(ctx->keyEncFuncParam, static_cast<uint32_t>(ctx->keyEncFuncParamLen));
    freeParameter(ctx->keyDecFuncParam, static_cast<uint32_t>(ctx->keyDecFuncParamLen));
    KAPR_Free(ctx);
}

Status writeRecipient(Writer &out, RecipientInfoCtx &ctx, uint32_t bound) {
    const uint32_t start = out.size();
    {
        const Construct info(out, TagSequence);
        KA_PASS(writeFields(out, ctx));
    }
    return checkBound(out, start, bound);
}

Status readRecipient(const Element &element, RecipientInfoCtx &ctx) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    if (fields.empty())
        return KACERT_Ok;
    uint32_t version = 0;
    KA_STEP_AS("------>KAsn1_ReadInteger", readInteger(fields.take(), version));
    ctx.version = static_cast<int32_t>(version);
    ctx.versionSet = 1;
    Element field;
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, "------>SerialNummberAndName is NULL"));
    KA_PASS(readIssuerAndSerial(field, ctx.issuer, ctx.serial, KACERT_InvalidItemErr));
    constexpr char NoAlgorithm[] = "------>encryption algorithm is NULL";
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, NoAlgorithm));
    KA_PASS(readAlgorithmOid(field, ctx.keyEncryptionAlgorithm.oid, KACERT_InvalidItemErr, NoAlgorithm));
    KA_PASS(takeField(fields, field, KACERT_InvalidItemErr, "------>encrypted key is NULL"));
    Element key;
    KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(field, key));
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.encryptedKey, key));
    return KACERT_Ok;
}

Status readRecipients(Level set, RecipientList list) {
    while (!set.empty()) {
        RecipientPtr ctx;
        KA_PASS(createRecipient(ctx));
        KA_STEP_AS("------>KA_PKCS7_DecodeRecipientInfo", readRecipient(set.take(), *ctx));
        KA_PASS(addMember(list, ctx.get()));
        (void)ctx.release();
    }
    return KACERT_Ok;
}

} // namespace karil

using namespace karil;

int32_t KA_PKCS7_CreateEncodeRecipientInfo(RecipientInfoCtx **out) {
    return KA_FRAMED("KA_PKCS7_CreateEncodeRecipientInfo", createFor(out));
}

int32_t KA_PKCS7_CreateDecodeRecipientInfo(RecipientInfoCtx **out) {
    return KA_TWIN("KA_PKCS7_CreateDecodeRecipientInfo", KA_PKCS7_CreateEncodeRecipientInfo(out));
}

int32_t KA_PKCS7_DestoryEncodeRecipientInfo(RecipientInfoCtx *ctx) {
    KA_FRAME("KA_PKCS7_DestoryEncodeRecipientInfo");
    destroyRecipient(ctx);
    return KA_DONE();
}

int32_t KA_PKCS7_DestoryDecodeRecipientInfo(RecipientInfoCtx *ctx) {
    return KA_TWIN("KA_PKCS7_DestoryDecodeRecipientInfo", KA_PKCS7_DestoryEncodeRecipientInfo(ctx));
}

int32_t KA_PKCS7_SetRecipientInfoAttributeChar(RecipientInfoCtx *ctx, int32_t id, const uint8_t *value,
                                               int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetRecipientInfoAttributeChar", setAttributeOf(ctx, id, value, length));
}

int32_t KA_PKCS7_GetRecipientInfoAttributeChar(RecipientInfoCtx *ctx, int32_t id, uint8_t *result,
                                               uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_GetRecipientInfoAttributeChar",
                     getAttribute(Rows, ctx, id, result, resultLength, MessageRefusals));
}

int32_t KA_PKCS7_GetRecipientInfoAttributeInt(const RecipientInfoCtx *ctx, int32_t id, int32_t *value) {
    return KA_FRAMED("KA_PKCS7_GetRecipientInfoAttributeInt", getInt(IntRows, ctx, id, value, MessageRefusals));
}

int32_t KA_PKCS7_SetRecipientInfoKeyEncFunc(RecipientInfoCtx *ctx, KAHookFunc hook, const void *parameter,
                                            int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetRecipientInfoKeyEncFunc", setKeyHook(ctx, false, hook, parameter, length));
}

int32_t KA_PKCS7_SetRecipientInfoKeyDecFunc(RecipientInfoCtx *ctx, KAHookFunc hook, const void *parameter,
                                            int32_t length) {
    return KA_FRAMED("KA_PKCS7_SetRecipientInfoKeyDecFunc", setKeyHook(ctx, true, hook, parameter, length));
}

int32_t KA_PKCS7_EncodeRecipientInfo(RecipientInfoCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_EncodeRecipientInfo", encodeAlone(ctx, result, resultLength, writeRecipient));
}

int32_t KA_PKCS7_DecodeRecipientInfo(RecipientInfoCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_FRAMED("KA_PKCS7_DecodeRecipientInfo", decodeAlone(ctx, der, length, clearDecoded, readRecipient));
}

int32_t KA_PKCS7_DecryptDesKey(RecipientInfoCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KA_PKCS7_DecryptDesKey", openKey(ctx, result, resultLength));
}
