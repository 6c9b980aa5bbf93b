// The PFX under signatures.
#include "auth_safe.h"

#include "ka_pkcs7_SignedData.h"

namespace karil {

namespace {

using Ctx = AuthSafeCtx;

SignedDataCtx *signedOf(const Ctx &ctx) {
    return static_cast<SignedDataCtx *>(ctx.pkcs7);
}

Status prepareSigned(SignedDataCtx *message) {
    KA_STEP(KA_PKCS7_SetSignedDataAttributeInt(message, PKCS7_SIGNEDDATA_VERSION, 1));
    KA_STEP(KA_PKCS7_SetSignedDataAttributeChar(message, PKCS7_SIGNEDDATA_CONTENTTYPE,
                                                contentTypeOid(PKCS7_TYPE_DATA).data(), ContentTypeSize));
    return KACERT_Ok;
}

void destroySigned(void *message) {
    (void)KA_PKCS7_DestroySignedDataEncodeCtx(static_cast<SignedDataCtx *>(message));
}

Status createSigned(void **message) {
    SignedDataCtx *fresh = nullptr;
    KA_STEP(KA_PKCS7_CreateSignedDataEncodeCtx(&fresh));
    std::unique_ptr<SignedDataCtx, By<destroySigned>> owned(fresh);
    KA_PASS(prepareSigned(fresh));
    *message = owned.release();
    return KACERT_Ok;
}

// PFX ::= SEQUENCE { version INTEGER, authSafe ContentInfo }
Status writeUnderSignatures(Writer &out, Ctx &ctx) {
    SignedDataCtx &message = *signedOf(ctx);
    KA_PASS(setShared<false>(message, bytesOf(ctx.content)));
    message.contentSet = 1;
    // A failed decoding left nothing in the message.
    KA_STEP_AS("------------>KA_PKCS7_EncodePKCS7SignedData", checkFields(message));
    KA_STEP_AS("------------>KA_PKCS7_EncodePKCS7SignedData", giveSigners(message));
    const Construct pfx(out, TagSequence, ctx.content.length);
    out.integer(static_cast<uint32_t>(ctx.version));
    KA_STEP_AS("------------>KA_PKCS7_EncodePKCS7SignedData", writeSignedData(out, message));
    return KACERT_Ok;
}

Status readSigned(Ctx &ctx, const Element &message, Bytes &content) {
    KA_STEP(KA_PKCS7_DecodeSignedData(signedOf(ctx), message.bytes.data(), static_cast<int32_t>(message.bytes.size())));
    content = bytesOf(signedOf(ctx)->content);
    return KACERT_Ok;
}

Status setSignedOctets(Ctx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    KA_PASS(checkOctets(ctx, UnderSignatures, value, length));
    KA_STEP(KA_PKCS7_SetSignedDataAttributeChar(signedOf(*ctx), id, value, length));
    return KACERT_Ok;
}

Status getSignedOctets(Ctx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength, int32_t index) {
    KA_PASS(checkContext(ctx, UnderSignatures));
    KA_STEP(KA_PKCS7_GetSignedDataAttributeChar(signedOf(*ctx), id, result, resultLength, index));
    return KACERT_Ok;
}

Status setSigner(Ctx *ctx, SignerInfoCtx *signer) {
    KA_PASS(checkContext(ctx, UnderSignatures));
    KA_STEP(KA_PKCS7_SetSignedData_SignerInfo(signedOf(*ctx), signer));
    return KACERT_Ok;
}

Status getSigner(const Ctx *ctx, SignerInfoCtx **signer, int32_t index) {
    KA_PASS(checkContext(ctx, UnderSignatures));
    KA_STEP(KA_PKCS7_GetSignedData_SignerInfo(signedOf(*ctx), signer, index));
    return KACERT_Ok;
}

} // namespace

const AuthSafeKind UnderSignatures = {PKCS7_TYPE_SIGNEDDATA, createSigned, destroySigned,
                                      writeUnderSignatures,  readSigned,   KACERT_MemoryErr};

} // namespace karil

using namespace karil;

// Octets of the SignedData, by their id.
#define KA_SIGNED_OCTETS(FIELD, ID)                                                                                    \
    int32_t KA_PKCS12_SetAuthSafeOfSignedType_##FIELD(AuthSafeCtx *ctx, const uint8_t *value, int32_t length) {        \
        return KA_FRAMED("KA_PKCS12_SetAuthSafeOfSignedType_" #FIELD, setSignedOctets(ctx, ID, value, length));        \
    }                                                                                                                  \
    int32_t KA_PKCS12_GetAuthSafeOfSignedType_##FIELD(AuthSafeCtx *ctx, uint8_t *result, uint32_t *resultLength,       \
                                                      int32_t index) {                                                 \
        return KA_FRAMED("KA_PKCS12_GetAuthSafeOfSignedType_" #FIELD,                                                  \
                         getSignedOctets(ctx, ID, result, resultLength, index));                                       \
    }

KA_SIGNED_OCTETS(DigestAlgorithm, PKCS7_SIGNEDDATA_DIGEST_ALGO)
KA_SIGNED_OCTETS(Cert, PKCS7_SIGNEDDATA_CERTIFICATE)
KA_SIGNED_OCTETS(Crl, PKCS7_SIGNEDDATA_CRL)

int32_t KA_PKCS12_SetAuthSafeOfSignedType_SignerInfo(AuthSafeCtx *ctx, SignerInfoCtx *signer) {
    return KA_FRAMED("KA_PKCS12_SetAuthSafeOfSignedType_SignerInfo", setSigner(ctx, signer));
}

int32_t KA_PKCS12_GetAuthSafeOfSignedType_SignerInfo(AuthSafeCtx *ctx, SignerInfoCtx **signer, int32_t index) {
    return KA_FRAMED("KA_PKCS12_GetAuthSafeOfSignedType_SignerInfo", getSigner(ctx, signer, index));
}
