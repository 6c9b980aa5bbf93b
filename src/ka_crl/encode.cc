#include "ka_crl.h"

using namespace karil;

namespace {

// INTEGER in an Extension
Status writeNumber(Writer &out, Bytes oid, const CrlNumberExtension &field) {
    return writeExtension(out, oid, field.critical, [&]() -> Status {
        KA_STEP_AS("------>KAsn1_WriteIntegerArray", out.number(bytesOf(field.value)));
        return KACERT_Ok;
    });
}

Status writeCrlNumber(Writer &out, const CrlEncodeCtx &ctx) {
    return writeNumber(out, OidCrlNumber, ctx.extensions.crlNumber);
}

Status writeDeltaCrl(Writer &out, const CrlEncodeCtx &ctx) {
    return writeNumber(out, OidDeltaCrl, ctx.extensions.deltaCrl);
}

Status writeAuthority(Writer &out, const CrlEncodeCtx &ctx) {
    return writeAuthorityKeyId(out, ctx.extensions.authorityKeyId);
}

// IssuingDistributionPoint ::= SEQUENCE { distributionPoint [0] { fullName [0] { uniformResourceIdentifier [6] } } }
Status writeIssuingDist(Writer &out, const CrlEncodeCtx &ctx) {
    const IssuingDistExtension &field = ctx.extensions.issuingDist;
    return writeExtension(out, OidIssuingDist, field.critical, [&] {
        const Construct point(out, TagSequence);
        writeFullName(out, field.fullName);
        return out.status();
    });
}

// Extensions ::= [0] EXPLICIT SEQUENCE OF Extension
Status writeExtensions(Writer &out, const CrlEncodeCtx &ctx) {
    if (ctx.hasExtensions == 0)
        return KACERT_Ok;
    const CrlExtensions &ext = ctx.extensions;
    const Construct wrapper(out, 0xA0);
    const Construct extensions(out, TagSequence);
    if (ext.hasCrlNumber != 0)
        KA_STEP_AS("------>KI_Crl_EncodeCRLNumber", writeCrlNumber(out, ctx));
    if (ext.hasDeltaCrl != 0)
        KA_STEP_AS("------>KI_Crl_EncodeDelCRLIdentifier", writeDeltaCrl(out, ctx));
    if (ext.hasAuthorityKeyId != 0)
        KA_STEP_AS("------>KI_Crl_EncodeExtension_AuthorityKeyIdentifyer", writeAuthority(out, ctx));
    if (ext.hasIssuingDist != 0)
        KA_STEP_AS("------>KI_Crl_EncodeCRLDPs", writeIssuingDist(out, ctx));
    return KACERT_Ok;
}

// TBSCertList ::= SEQUENCE { version, signature, issuer, thisUpdate, nextUpdate OPTIONAL, revokedCertificates,
//                            crlExtensions [0] OPTIONAL }
Status writeTbs(Writer &out, const CrlEncodeCtx &ctx, uint32_t entriesSize) {
    const Construct tbs(out, TagSequence, entriesSize);
    LocalClock clock;
    out.integer(static_cast<uint32_t>(ctx.version));
    writeAlgorithm(out, ctx.innerSignatureAlgorithm);
    KA_PASS(writeName(out, ctx.issuer, ctx.issuerDer));
    KA_PASS(writeTime(out, ctx.thisUpdate.isUtc != 0, secondsOf(ctx.thisUpdate), clock));
    if (ctx.hasNextUpdate != 0)
        KA_PASS(writeTime(out, ctx.nextUpdate.isUtc != 0, secondsOf(ctx.nextUpdate), clock));
    KA_STEP_AS("------>KI_CRL_EncodeRevokedCRL", writeEntries(out, ctx, entriesSize));
    KA_STEP_AS("------>KI_Crl_EncodeExtensions", writeExtensions(out, ctx));
    return KACERT_Ok;
}

Status sign(CrlEncodeCtx &ctx, Bytes tbs) {
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.tbs, {NormalSequence, tbs}));
    HookOutput signature;
    KA_PASS(callForSize(ctx.signFunc, ctx.signKey, tbs, signature));
    KA_STEP(KACert_SetCrlAttributeChar(&ctx, CRL_CA_SIGNATURE, signature.octets.get(),
                                       static_cast<int32_t>(signature.length)));
    return KACERT_Ok;
}

// What a CRL has beside its entries, mostly.
constexpr uint32_t FrameRoom = 1024;

// CertificateList ::= SEQUENCE { tbsCertList, signatureAlgorithm, signatureValue BIT STRING }
Status writeCrl(Writer &out, CrlEncodeCtx &ctx) {
    const uint32_t entriesSize = sizeOfEntries(ctx);
    out.reserve(uint64_t{entriesSize} + FrameRoom);
    return writeSigned(
        out, ctx, [&] { return writeTbs(out, ctx, entriesSize); }, [&](Bytes tbs) { return sign(ctx, tbs); },
        entriesSize);
}

} // namespace

int32_t KACert_EncodeCrl(CrlEncodeCtx *ctx, uint8_t *result, uint32_t *resultLength) {
    return KA_FRAMED("KACert_EncodeCrl", encodeOnce(ctx, writeCrl, result, resultLength));
}

int32_t KI_Crl_EncodeExtensions(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Crl_EncodeExtensions", encodePart(ctx, out, writeExtensions));
}

int32_t KI_Crl_EncodeCRLNumber(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Crl_EncodeCRLNumber", encodePart(ctx, out, writeCrlNumber));
}

int32_t KI_Crl_EncodeDelCRLIdentifier(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Crl_EncodeDelCRLIdentifier", encodePart(ctx, out, writeDeltaCrl));
}

int32_t KI_Crl_EncodeExtension_AuthorityKeyIdentifyer(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Crl_EncodeExtension_AuthorityKeyIdentifyer", encodePart(ctx, out, writeAuthority));
}

int32_t KI_Crl_EncodeCRLDPs(const CrlEncodeCtx *ctx, Anybuf **out) {
    return KA_FRAMED("KI_Crl_EncodeCRLDPs", encodePart(ctx, out, writeIssuingDist));
}
