// ContentInfos of PKCS#12: the PKCS#7 families under names of their own.
#include "karil/pkcs12_content_info.h"

#include "ka_pkcs12_base.h"
#include "ka_pkcs7_base.h"

namespace karil {

namespace {

// Null if there is none: the functions of the encrypted content refuse that.
template <class Ctx> EncryptedContentCtx *contentOf(const Ctx *ctx) {
    return ctx != nullptr ? ctx->encryptedContent : nullptr;
}

// A context with version 0 and an encrypted content of its own.
template <auto Create, auto Destroy, auto SetInt, auto Attach, class Ctx, class Finish>
Status createPrepared(Ctx **out, int32_t version, const Finish &finish) {
    Ctx *ctx = nullptr;
    KA_PASS(Create(out != nullptr ? &ctx : nullptr));
    std::unique_ptr<Ctx, By<Destroy>> owned(ctx);
    KA_PASS(SetInt(ctx, version, 0));
    EncryptedContentPtr content;
    KA_PASS(createEncryptedContent(content));
    KA_PASS(Attach(ctx, content.get()));
    (void)content.release();
    KA_PASS(finish(ctx));
    *out = owned.release();
    return KACERT_Ok;
}

Status createEnveloped(EnvelopedDataCtx **out) {
    return createPrepared<KA_PKCS7_CreateEnvelopedDataEncodeCtx, KA_PKCS7_DestroyEnvelopedDataEncodeCtx,
                          KA_PKCS7_SetEnvelopedDataAttributeInt, KA_PKCS7_SetEnvelopedData_EncryptedContent>(
        out, PKCS7_ENVELOPED_VERSION, [](EnvelopedDataCtx *) { return Status{KACERT_Ok}; });
}

Status createEncrypted(EncryptedDataCtx **out) {
    return createPrepared<KA_PKCS7_CreateEncryptedDataEncodeCtx, KA_PKCS7_DestoryEncryptedDataEncodeCtx,
                          KA_PKCS7_SetEncryptedDataAttributeInt, KA_PKCS7_SetEncrytpedData_EncryptedContent>(
        out, PKCS7_ENCRYPTEDDATA_VERSION, [](EncryptedDataCtx *ctx) {
            return KA_PKCS7_SetEncryptedDataAttributeChar(ctx, PKCS7_ENCRYPTEDDATA_CONTENTTYPE,
                                                          contentTypeOid(PKCS7_TYPE_DATA).data(), ContentTypeSize);
        });
}

Status setEnvelopedContent(EnvelopedDataCtx *ctx, const uint8_t *value, int32_t length) {
    KA_PASS(checkValue(ctx, value, length, MessageRefusals));
    const Bytes type = contentTypeOid(PKCS7_TYPE_DATA);
    KA_STEP(KA_PKCS7_SetEnvelopedDataAttributeChar(ctx, PKCS7_ENVELOPED_CONTENTTYPE, type.data(), ContentTypeSize));
    KA_STEP(KA_PKCS7_SetEnvelopedDataAttributeChar(ctx, PKCS7_ENVELOPED_ENCRYPTED_CONTENT, value, length));
    return KACERT_Ok;
}

Status setParameter(EncryptedContentCtx *content, const uint8_t *salt, uint32_t saltLength, uint32_t iterations) {
    KA_PASS(checkArguments({content}));
    if (salt == nullptr && saltLength > 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KA_PKCS12_EncodeParameter");
    Writer parameter(saltLength > UINT32_MAX - 32 ? UINT32_MAX : saltLength + 32);
    writeParameter(parameter, {salt, saltLength}, iterations);
    if (parameter.status() != KACERT_Ok || parameter.size() > INT32_MAX)
        return KA_FAIL(KACERT_InvalidParamErr, "------------>KA_PKCS12_EncodeParameter");
    const Bytes der = parameter.since(0);
    KA_STEP(KA_PKCS7_SetEncryptedContentAttributeChar(content, PKCS7_ENCRYPT_PARAMETER, der.data(),
                                                      static_cast<int32_t>(der.size())));
    return KACERT_Ok;
}

Status getParameter(const EncryptedContentCtx *content, uint8_t *salt, uint32_t *saltLength, uint32_t *iterations) {
    KA_PASS(checkArguments({content, salt, saltLength, iterations}));
    const Anybuf &parameter = content->encryptionAlgorithm.parameters;
    if (parameter.length == 0)
        return KA_FAIL(KACERT_LengthNotEqualErr, "------------>KA_PKCS12_DecodeParameter");
    KA_STEP(KA_PKCS12_DecodeParameter(salt, saltLength, iterations, parameter.data, parameter.length));
    return KACERT_Ok;
}

} // namespace

} // namespace karil

using namespace karil;

// Data.

int32_t KA_PKCS12_CreateEncodeContentInfoOfDataType(DataCtx **out) {
    return KA_PKCS7_CreateDataEncodeCtx(out);
}

int32_t KA_PKCS12_CreateDecodeContentInfoOfDataType(DataCtx **out) {
    return KA_PKCS7_CreateDataDecodeCtx(out);
}

int32_t KA_PKCS12_SetContentInfoOfDataType_SafeContent(DataCtx *ctx, const uint8_t *value, int32_t length) {
    return KA_PKCS7_SetDataContent(ctx, value, length);
}

int32_t KA_PKCS12_GetContentInfoOfDataType_SafeContent(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_PKCS7_GetDataContent(ctx, result, resultLength);
}

int32_t KA_PKCS12_EncodeContentInfoOfDataType(const DataCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_PKCS7_EncodePKCS7Data(ctx, result, resultLength);
}

int32_t KA_PKCS12_DecodeContentInfoOfDataType(DataCtx *ctx, const uint8_t *der, int32_t length) {
    return KA_PKCS7_DecodePKCS7Data(ctx, der, length);
}

int32_t KA_PKCS12_DestoryEncodeContentInfoOfDataType(DataCtx *ctx) {
    return KA_PKCS7_DestoryDataEncodeCtx(ctx);
}

int32_t KA_PKCS12_DestoryDecodeContentInfoOfDataType(DataCtx *ctx) {
    return KA_PKCS7_DestoryDataDecodeCtx(ctx);
}

// What enveloped and encrypted data do alike. DESTROY, SET_PARAMETER: one of the two has a spelling of its own.
#define KA_CONTENT_INFO(TYPE, MESSAGE, DESTROY, SET_PARAMETER)                                                         \
    int32_t KA_PKCS12_GetContentInfoOf##TYPE##_SafeContent(MESSAGE##Ctx *ctx, uint8_t *result,                         \
                                                           uint32_t *resultLength) {                                   \
        return KA_PKCS7_GetEncryptedContentInformation(contentOf(ctx), result, resultLength);                          \
    }                                                                                                                  \
    int32_t KA_PKCS12_SetContentInfoOf##TYPE##_EncContentFunc(MESSAGE##Ctx *ctx, KAHookFunc hook,                      \
                                                              const void *parameter, int32_t length) {                 \
        return KA_PKCS7_SetEncryptContentEncFunc(contentOf(ctx), hook, parameter, length);                             \
    }                                                                                                                  \
    int32_t KA_PKCS12_SetContentInfoOf##TYPE##_DesAlgorithm(MESSAGE##Ctx *ctx, const uint8_t *oid, int32_t length) {   \
        return KA_PKCS7_SetEncryptedContentAttributeChar(contentOf(ctx), PKCS7_ENCRYPT_ALGO, oid, length);             \
    }                                                                                                                  \
    int32_t KA_PKCS12_GetContentInfoOf##TYPE##_DesAlgorithm(MESSAGE##Ctx *ctx, uint8_t *result,                        \
                                                            uint32_t *resultLength) {                                  \
        return KA_PKCS7_GetEncryptedContentAttributeChar(contentOf(ctx), PKCS7_ENCRYPT_ALGO, result, resultLength);    \
    }                                                                                                                  \
    int32_t SET_PARAMETER(MESSAGE##Ctx *ctx, const uint8_t *salt, uint32_t saltLength, uint32_t iterations) {          \
        return KA_FRAMED(#SET_PARAMETER, setParameter(contentOf(ctx), salt, saltLength, iterations));                  \
    }                                                                                                                  \
    int32_t KA_PKCS12_GetContentInfoOf##TYPE##_DesParameter(MESSAGE##Ctx *ctx, uint8_t *salt, uint32_t *saltLength,    \
                                                            uint32_t *iterations) {                                    \
        return KA_FRAMED("KA_PKCS12_GetContentInfoOf" #TYPE "_DesParameter",                                           \
                         getParameter(contentOf(ctx), salt, saltLength, iterations));                                  \
    }                                                                                                                  \
    int32_t KA_PKCS12_CreateDecodeContentInfoOf##TYPE(MESSAGE##Ctx **out) {                                            \
        return KA_PKCS7_Create##MESSAGE##DecodeCtx(out);                                                               \
    }                                                                                                                  \
    int32_t KA_PKCS12_EncodeContentInfoOf##TYPE(MESSAGE##Ctx *ctx, uint8_t *result, uint32_t *resultLength) {          \
        return KA_PKCS7_EncodePKCS7##MESSAGE(ctx, result, resultLength);                                               \
    }                                                                                                                  \
    int32_t KA_PKCS12_DecodeContentInfoOf##TYPE(MESSAGE##Ctx *ctx, const uint8_t *der, int32_t length) {               \
        return KA_PKCS7_DecodePKCS7##MESSAGE(ctx, der, length);                                                        \
    }                                                                                                                  \
    int32_t KA_PKCS12_DestoryEncodeContentInfoOf##TYPE(MESSAGE##Ctx *ctx) {                                            \
        return KA_PKCS7_##DESTROY##MESSAGE##EncodeCtx(ctx);                                                            \
    }                                                                                                                  \
    KA_ALIAS(KA_PKCS12_DestoryDecodeContentInfoOf##TYPE, KA_PKCS12_DestoryEncodeContentInfoOf##TYPE)

KA_CONTENT_INFO(EnvelopedType, EnvelopedData, Destroy, KA_PKCS12_SetContentInfoOfEnvelopedType_DesParameter);
KA_CONTENT_INFO(EncryptedType, EncryptedData, Destory, KA_PKCs12_SetContentInfoOfEncryptedType_DesParameter);

// Enveloped data.

int32_t KA_PKCS12_CreateEncodeContentInfoOfEnvelopedType(EnvelopedDataCtx **out) {
    return KA_FRAMED("KA_PKCS12_CreateEncodeContentInfoOfEnvelopedType", createEnveloped(out));
}

int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_SafeContent(EnvelopedDataCtx *ctx, const uint8_t *value,
                                                            int32_t length) {
    return KA_FRAMED("KA_PKCS12_SetContentInfoOfEnvelopedType_SafeContent", setEnvelopedContent(ctx, value, length));
}

int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_RecipientInfo(EnvelopedDataCtx *ctx, RecipientInfoCtx *recipient) {
    return KA_PKCS7_SetEnvelopedData_RecipientInfo(ctx, recipient);
}

int32_t KA_PKCS12_SetContentInfoOfEnvelopedType_EncContentKey(EnvelopedDataCtx *ctx, const uint8_t *key,
                                                              int32_t length) {
    return KA_PKCS7_SetEnvelopedDataAttributeChar(ctx, PKCS7_ENVELOPED_RECIPIENT_KEY, key, length);
}

// Encrypted data.

int32_t KA_PKCS12_CreateEncodeContentInfoOfEncryptedType(EncryptedDataCtx **out) {
    return KA_FRAMED("KA_PKCS12_CreateEncodeContentInfoOfEncryptedType", createEncrypted(out));
}

int32_t KA_PKCS12_SetContentInfoOfEncryptedType_SafeContent(EncryptedDataCtx *ctx, const uint8_t *value,
                                                            int32_t length) {
    return KA_PKCS7_SetEncryptedDataAttributeChar(ctx, PKCS7_ENCRYPTEDDATA_CONTENTENCRYPTION_PARAMETER, value, length);
}

KA_ALIAS(KA_PKCS12_SetContentInfoOfEncryptedType_DecContentFunc,
         KA_PKCS12_SetContentInfoOfEncryptedType_EncContentFunc);
