// Null pointers: what every export returns for each of its arguments that may not be null, its outputs left alone.
#include "testkit.h"

#include "karil/karil.h"

#include <dlfcn.h>

#include <array>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

using namespace karil_test;

namespace {

// A pointer, a hook or a number, of which a call takes what its parameter is.
struct Argument {
    void *pointer;
    KAHookFunc hook;
    int64_t number;
    template <class T> T as() const {
        if constexpr (std::is_function_v<std::remove_pointer_t<T>>)
            return reinterpret_cast<T>(reinterpret_cast<void (*)()>(hook)); // of another shape it is not called
        else if constexpr (std::is_pointer_v<T>)
            return static_cast<T>(pointer);
        else
            return static_cast<T>(number);
    }
};
enum class Kind : char { Number, Record, Parameter, Other };
template <class T> constexpr Kind kindOf() {
    return !std::is_pointer_v<T>                                              ? Kind::Number
           : std::is_same_v<T, Anybuf *> || std::is_same_v<T, const Anybuf *> ? Kind::Record
           : std::is_same_v<T, void *> || std::is_same_v<T, const uint32_t *> ? Kind::Parameter
                                                                              : Kind::Other;
}

// What depends on a function's type stays small: there are many types.
using Any = void (*)();
template <class R, class... A> struct Type {
    static constexpr std::array<Kind, sizeof...(A)> Kinds = {kindOf<A>()...};
    template <size_t... I> static int32_t call(Any function, const Argument *all, std::index_sequence<I...>) {
        const auto typed = reinterpret_cast<R (*)(A...)>(function);
        if constexpr (std::is_same_v<R, int32_t>)
            return typed(all[I].template as<A>()...);
        else
            return typed(all[I].template as<A>()...), 0;
    }
    static int32_t callAll(Any function, const Argument *all) {
        return call(function, all, std::index_sequence_for<A...>());
    }
};
struct Export {
    Any function;
    int32_t (*call)(Any, const Argument *);
    std::span<const Kind> kinds;

    template <class R, class... A>
    Export(R (*typed)(A...))
        : function(reinterpret_cast<Any>(typed)), call(Type<R, A...>::callAll), kinds(Type<R, A...>::Kinds) {}
    const void *address() const { return reinterpret_cast<const void *>(function); }
};

// The statuses in the arguments' order, "-" for one that may be null; the functions; the numbers that stand beside the
// pointers, if they are not 1.
struct Group {
    std::string want;
    std::vector<Export> exports;
    std::vector<int64_t> numbers = {};
};

// What the pointers point to: zeros, but for records over an empty SEQUENCE and a hook's parameter, which starts
// with 1.
using Area = std::array<uint8_t, 8192>;
alignas(16) Area areas[32];

void fill(std::span<const Kind> kinds, std::vector<int64_t> numbers, Argument *all) {
    static uint8_t sequence[] = {0x30, 0};
    const Anybuf record = {sequence, 2, 0, 0, 16, nullptr, nullptr};
    constexpr uint32_t Parameter = KA_DIGEST_SHA1;
    numbers.resize(kinds.size(), 1);
    auto number = numbers.begin();
    for (size_t i = 0; i < kinds.size(); ++i) {
        areas[i] = {};
        if (kinds[i] == Kind::Record)
            memcpy(areas[i].data(), &record, sizeof record);
        if (kinds[i] == Kind::Parameter)
            memcpy(areas[i].data(), &Parameter, sizeof Parameter);
        all[i] = {areas[i].data(), fixedSignature, kinds[i] == Kind::Number ? *number++ : 0};
    }
}

// Calls with one argument after the other null, but for those that may be.
std::string answers(const Export &one, const Group &group) {
    std::istringstream words(group.want);
    std::string all;
    for (size_t null = 0; null < one.kinds.size(); ++null) {
        if (one.kinds[null] == Kind::Number)
            continue;
        std::string answer;
        words >> answer;
        if (answer != "-") {
            Argument arguments[std::size(areas)];
            fill(one.kinds, group.numbers, arguments);
            arguments[null] = {};
            const std::vector<Area> before(std::begin(areas), std::begin(areas) + one.kinds.size());
            answer = std::to_string(one.call(one.function, arguments));
            EXPECT_TRUE(std::equal(before.begin(), before.end(), areas)) << "an output is changed";
        }
        all += (all.empty() ? "" : " ") + answer;
    }
    return all;
}

template <auto... F> std::vector<Export> of() {
    return {F...};
}
const Group groups[] = {
    {"108", of<KAsn1_Low_CreateAnyBuf, KAsn1_WriteNull, WriteNullSequence, KAsn1_WriteInteger, KAsn1_Low_WriteLongTime,
               KAsn1_Low_TimeIntToChar, KACert_CreateCertEncodeCtx, KACert_CreateCertDecodeCtx,
               KACert_CreateCrlEncodeCtx, KACert_CreateCrlDecodeCtx, KACert_CreateCsrEncodeCtx,
               KACert_CreateCsrDecodeCtx, KACert_SetCertAttributeInt, KACert_SetCrlAttributeInt,
               KACert_SetCsrAttributeInt, KA_PKCS7_CreateSignedDataEncodeCtx, KA_PKCS7_CreateSignedDataDecodeCtx>()},
    {"108 108",
     of<KI_CopyAnybuf, KI_SetAttributeCharValue, KI_CopyAlgorithm, KAsn1_GetCertLength, KAsn1_Low_IntToChar,
        KAsn1_Low_CharToInt, KAsn1_Low_TimeCharToInt, KAsn1_Low_ItoCTime, KAsn1_Low_CtoITime, KAsn1_Low_ReadLongTime,
        KAsn1_WriteUtcTime, KAsn1_WriteGeneralizedTime, KAsn1_ReadUtcTime, KAsn1_ReadGeneralizedTime,
        KAsn1_WriteIntegerArray, KAsn1_WriteOctetString, KAsn1_WriteBitString, KAsn1_WriteCharString,
        KAsn1_WriteBmpString, KAsn1_WriteUTF8String, KAsn1_WriteEnumerated, KAsn1_WriteIa5String,
        KAsn1_WritePrintableString, KAsn1_WriteBoolean, KAsn1_WriteObjectId, KAsn1_ReadOctetString, KAsn1_ReadBitString,
        KAsn1_ReadCharString, KAsn1_ReadBmpString, KAsn1_ReadUTF8String, KAsn1_ReadPrintableString,
        KAsn1_ReadEnumerated, KAsn1_ReadIa5String, KAsn1_ReadIntegerArray, KAsn1_ReadInteger, KAsn1_ReadBoolean,
        KAsn1_ReadObjectId, KAsn1_ReadSequence, KAsn1_ReadSet, KAsn1_WriteExplicit, KAsn1_WriteImplicit,
        KI_GetNumberFromImpOrExplicit, KI_EnCodeUtf8, KI_EncodeIssuerSuject, KI_DecodeIssuerSubject, KI_GetDN,
        KI_EncodeGeneralName, KI_EncodeGeneralNameS, KACert_CreateCertEncodeCtx_Ex, KI_Cert_EncodeValidity,
        KI_Cert_EncodeExtensions, KI_Cert_EncodeExtension_AuthorityKeyIdentifyer,
        KI_Cert_EncodeExtension_SubjectKeyIdentifier, KI_Cert_EncodeExtension_CertificatePolicies,
        KI_Cert_EncodeExtension_IssuerAltName, KI_Cert_EncodeExtension_SubjectAltName,
        KI_Cert_EncodeExtension_BasicConstraint, KI_Cert_EncodeExtension_KeyUsage, KI_Cert_EncodeExtension_ExtKeyUsage,
        KI_Cert_EncodeExtension_CrlDistributePoint, KI_Cert_EncodeExtension_AIA, KI_Cert_EncodeExtension_Private,
        KACert_DecodeCert, KI_Cert_DecodeTBS, KI_Cert_DecodeExtensions, KI_Cert_DecodeExtension_BasicConstraint,
        KI_Cert_DecodeExtension_AuthorityKeyIdentifyer, KI_Cert_DecodeExtension_SubjectKeyIdentifier,
        KI_Cert_DecodeExtension_KeyUsage, KI_Cert_DecodeExtension_ExtKeyUsage,
        KI_Cert_DecodeExtension_CrlDistributionPoint, KI_Cert_DecodeExtension_SubjectAltName,
        KI_Cert_DecodeExtension_IssuerAltName, KI_Cert_DecodeExtension_Private, KACert_CreateCrlEncodeCtx_Ex,
        setCRL2Context, KI_CRL_EncodeRevokedCRL, KI_CRL_WriteEntryExtension, KI_Crl_EncodeExtensions,
        KI_Crl_EncodeCRLNumber, KI_Crl_EncodeDelCRLIdentifier, KI_Crl_EncodeExtension_AuthorityKeyIdentifyer,
        KI_Crl_EncodeCRLDPs, KACert_DecodeCrl, KI_CRL_DecodeTBS, KI_CRL_DecodeRevokedCerts, KI_Crl_DecodeExtensions,
        KI_Crl_DecodeCRLNumber, KI_Crl_DecodeDelCRLIdentifier, KI_Csr_EncodeAttributes, KACert_DecodeCsr,
        KI_CSR_DecodeTBS, KI_CSR_DecodeAttributes, KACert_GetCertAttributeInt, KACert_GetCrlAttributeInt,
        KACert_GetCsrAttributeInt, KACert_SetCertAttributeChar, KACert_SetCrlAttributeChar,
        KACert_SetCsrAttributeChar>()},
    {"108 108 108",
     of<KAsn1_Low_GetTagInfo, KAsn1_Low_GetLengthInfo, KAsn1_GetLengthInfo, KAsn1_Low_WriteTagAndLength,
        KAsn1_ReadExplicit, KAsn1_ReadImplicit, KI_DecodePubKey, KI_DecodeGeneralNameS, KACert_SetCertAttributePrivate,
        KACert_SetCertAttributePrivate_ForValue, KACert_SetCsrAttributePrivate>()},
    {"108 108 108 108", of<KAsn1_Low_ReadTagAndLength>()},
    {"106 106", of<KAsn1_Low_ReadDNTag>()},
    {"- 108", of<KAsn1_WriteSequence, KAsn1_WriteSet, KI_CERT_EncodeDiscriptList>()},
    {"108 - 108",
     of<KACert_GetOIDValue, KI_Chinese2BmpString, KI_BmpString2Chinese, KI_BmpString2UTF8, KI_UTF82BmpString,
        KI_Chinese2UTF8String, KI_UTF8String2Chinese, KACert_EncodeCert, KACert_EncodeCrl, KACert_EncodeCsr,
        KI_CRL_AddRevokedCert, KACert_GetCertAttributeChar, KACert_GetCrlAttributeChar, KACert_GetCsrAttributeChar>()},
    {"- 0", of<KACert_OidTextToDer>()},
    {"- - -", of<KI_DecodeGeneralName>()},
    {"-",
     of<KI_InitAnybuf, KI_ClearAnybuf, KI_FreeAnybuf, KI_FreeName, KACert_DestroyCertEncodeCtx,
        KACert_DestroyCertDecodeCtx, KACert_DestroyCrlEncodeCtx, KACert_DestroyCrlDecodeCtx, KACert_DestroyCsrEncodeCtx,
        KACert_DestroyCsrDecodeCtx, KA_PKCS7_DestoryEncodeEncryptedContent, KA_PKCS7_DestoryDecodeEncryptedContent,
        KA_PKCS7_DestoryEncodeRecipientInfo, KA_PKCS7_DestoryDecodeRecipientInfo, KA_PKCS7_DestoryEncodeSignerInfo,
        KA_PKCS7_DestoryDecodeSignerInfo, KA_PKCS7_DestoryDataEncodeCtx, KA_PKCS7_DestoryDataDecodeCtx,
        KA_PKCS7_DestoryDigestedDataEncodeCtx, KA_PKCS7_DestoryDigestedDataDecodeCtx,
        KA_PKCS7_DestroySignedDataEncodeCtx, KA_PKCS7_DestroySignedDataDecodeCtx,
        KA_PKCS7_DestroyEnvelopedDataEncodeCtx, KA_PKCS7_DestroyEnvelopedDataDecodeCtx,
        KA_PKCS7_DestoryEncryptedDataEncodeCtx, KA_PKCS7_DestoryEncryptedDataDecodeCtx,
        KA_PKCS7_DestorySignedAndEnvelopedDataEncodeCtx, KA_PKCS7_DestorySignedAndEnvelopedDataDecodeCtx>()},
    {"123 123 123", of<KAsn1_IndefiniteToDefinite>()},
    {"-1 -1", of<base64_encode, KACert_EncodeChar>()},
    {"-1 -1 -1", of<base64_decode, PEM2DER_data_format>()},
    {"-1 -1 -1 -1 -1", of<DER2PEM_data_format>()},
    {"-1 -1 -1 -1 -1 -1 -1 -1 -1 -1 - -1", of<KA_GenerateDN>()},
    {"-1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 - -1", of<KA_GenerateDN_ForMultOu>()},
    {"- -1 - -1 - -1 - -1 - -1 - -1 - -1 - -1 - -1 - -1 -1", of<KA_ParseDN>()},
    {"- -1 - -1 - -1 - -1 - -1 - -1 - -1 - -1 - -1 - -1 - -1 -1", of<KA_ParseDN_ForMultOu>()},
    {"108 - -", of<KACert_SetCertSignFunc, KACert_SetCrlSignFunc, KACert_SetCsrSignFunc>()},
    {"108 108 - - - - -", of<KACert_GetCertAttributePrivate>()},
    {"108 108 - - - -", of<KACert_GetCsrAttributePrivate>()},
    {"108 -1", of<UnsignedChar2OCTET>()},
    {"108 108", of<KACert_SetCertPrivate_GB>(), {CERT_GBPRIV_7_2, 1, 0}},
    {"108 108 108", of<EnCodeThums>(), {sizeof(KA_THUMBPRINT)}},
    {"108 108 108", of<KA_PKCS12_ACIItoUNI, KA_PKCS12_AddPad, KA_PKCS12_DecPad, KA_PKCS12_EncodeParameter>()},
    {"108 108 108", of<KA_PKCS12_GenRandomFromPassword>(), {KA_DIGEST_SHA1}},
    {"- 108 108 108", of<KA_PKCS12_HMAC>(), {KA_DIGEST_SHA1}},
    {"108 139 139 139 139 139", of<KA_PKCS12_PbeWithDigestAlgoAndEncrypt, KA_PKCS12_PbeWithDigestAlgoAndDecrypt,
                                   KA_PKCS12_DESEncrypt, KA_PKCS12_DESDecrypt>()},
    {"108 108 108 108 108", of<KA_PKCS12_AESEncrypt, KA_PKCS12_AESDecrypt>(), {2, 16, 16, 16}},
    {"139 139 139 121", of<KA_EncryptFunc_Ref, KA_DecryptFunc_Ref>()},
    {"108 108 108 121", of<KA_HMACFunc_Ref>()},
    {"108 108", of<KA_PKCS12_EncodeMac, KA_PKCS12_DecodeMac>()},
    {"108 108 108 108", of<KA_PKCS12_DecodeParameter>()},
    {"-1 -1 -1 -1 -1 -1", of<KA_PKCS12_GetKeyAndCertFromNspP12>()},
    {"121 108 108 108 108 108 108 108", of<KA_PKCS12_Decode_GFAN>()},
    {"121 121",
     of<KA_PKCS7_GenRSAKeyPair, KA_PKCS7_GenRSAKeyPair_2048, KA_PKCS7_GenerateBytes,
        KA_PKCS7_SetEncryptedContentAttributeChar, KA_PKCS7_SetRecipientInfoAttributeChar,
        KA_PKCS7_SetSignerInfoAttributeChar, KA_PKCS7_GetRecipientInfoAttributeInt, KA_PKCS7_GetSignerInfoAttributesNum,
        KA_PKCS7_GetSignerInfoUnAttributesNum, KA_PKCS7_DecodeEncryptedContent, KA_PKCS7_DecodeRecipientInfo,
        KA_PKCS7_DecodeSignerInfo, KA_PKCS7_GetDigestedDataAttributeInt, KA_PKCS7_GetSignedDataAttributeInt,
        KA_PKCS7_GetEnvelopedDataAttributeInt, KA_PKCS7_GetEncryptedDataAttributeInt,
        KA_PKCS7_GetSignedAndEnvelopedDataAttributeInt, KA_PKCS7_SetDataContent, KA_PKCS7_SetDigestedDataAttributeChar,
        KA_PKCS7_SetSignedDataAttributeChar, KA_PKCS7_SetEnvelopedDataAttributeChar,
        KA_PKCS7_SetEncryptedDataAttributeChar, KA_PKCS7_SetSignedAndEnvelopedDataAttributeChar,
        KA_PKCS7_GetDigestedDataHashResult, KA_PKCS7_GetSignedData_SignerInfoNum, KA_PKCS7_GetSignedData_DigestAlgoNum,
        KA_PKCS7_GetSignedData_CertificatesNum, KA_PKCS7_GetSignedData_CrlsNum,
        KA_PKCS7_GetEnvelopedData_RecipientInfoNum, KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfoNum,
        KA_PKCS7_GetSignedAndEnvelopedData_SignerInfoNum, KA_PKCS7_GetSignedAndEnvelopedData_CertificatesNum,
        KA_PKCS7_GetSignedAndEnvelopedData_CrlsNum, KA_PKCS7_SetSignedData_SignerInfo,
        KA_PKCS7_GetSignedData_SignerInfo, KA_PKCS7_SetEnvelopedData_RecipientInfo,
        KA_PKCS7_GetEnvelopedData_RecipientInfo, KA_PKCS7_SetEnvelopedData_EncryptedContent,
        KA_PKCS7_GetEnvelopedData_EncryptedContent, KA_PKCS7_SetEncrytpedData_EncryptedContent,
        KA_PKCS7_GetEncrytpedData_EncryptedContent, KA_PKCS7_SetSignedAndEnvelopedData_RecipientInfo,
        KA_PKCS7_SetSignedAndEnvelopedData_SignerInfo, KA_PKCS7_SetSignedAndEnvelopedData_EncryptedContent,
        KA_PKCS7_GetSignedAndEnvelopedData_RecipientInfo, KA_PKCS7_GetSignedAndEnvelopedData_SignerInfo,
        KA_PKCS7_GetSignedAndEnvelopedData_EncryptedContent, KA_PKCS7_DecodePKCS7Data, KA_PKCS7_DecodeSignedData,
        KA_PKCS7_DecodePKCS7EnvelopedData, KA_PKCS7_DecodePKCS7EncryptedData, KA_PKCS7_DecodeSignedAndEnvelopedData,
        KI_DecodeOCSPExtension, KI_EncodeOCSPCrlId, KI_DecodeOCSPCrlId, KI_EncodeResponseId, KI_DecodeResponseId,
        KI_EncodeResponseData, KI_DecodeResponseData, KI_EncodeBasicResponse, KI_DecodeBasicResponse,
        KI_EncodeOCSPSignature, KI_DecodeCertStatus, KA_OCSP_DecodeRequestList, KA_OCSP_SetRequestSingleRequest,
        KA_OCSP_DecodeRequest, KA_OCSP_GetRequestSingleRequestNum, KA_OCSP_DecodeResponseList, KA_OCSP_DecodeResponse,
        KA_OCSP_SetResponseList_CertStatusUnInfo>()},
    {"121 121 121 121",
     of<KA_PKCS7_RSAPublicEncrypt, KA_PKCS7_RSAPublicDecrypt, KA_PKCS7_RSAPrivateEncrypt, KA_PKCS7_RSAPrivateDecrypt,
        KA_PrivateKeyEncFunc_Ref, KA_PrivateKeyDecryptFunc_Ref, KA_PublicKeyDecryptFunc_Ref,
        KA_PublicKeyEncryptFunc_Ref, KA_DigestFunc_Ref, KI_MakeDigestInfo, KA_PKCS7_DecodePKCS7DerTypeData>()},
    {"121 121 121", of<KA_PKCS7_DigestMessage>(), {KA_DIGEST_MD5}},
    {"121 121 121 121", of<KA_PKCS7_SignedData, KA_PKCS7_VerifySignature>(), {KA_DIGEST_SHA1}},
    {"100 - 100", of<KA_Encode_PublicKey, KA_Encode_PrivateKey, KI_PKCS1to8KEY>()},
    {"100 100", of<KA_Decode_PublicKey, KA_Decode_PrivateKey>()},
    {"109 109", of<KA_VerifyCert, KA_VerifyCrl>()},
    {"109", of<KA_VerifyCsr_Sign>()},
    {"121",
     of<KA_PKCS7_CreateEnocdeEncryptedContent, KA_PKCS7_CreateDeocdeEncryptedContent,
        KA_PKCS7_CreateEncodeRecipientInfo, KA_PKCS7_CreateDecodeRecipientInfo, KA_PKCS7_CreateEncodeSignerInfo,
        KA_PKCS7_CreateDecodeSignerInfo, KA_PKCS7_CreateDataEncodeCtx, KA_PKCS7_CreateDataDecodeCtx,
        KA_PKCS7_CreateDigestedDataEncodeCtx, KA_PKCS7_CreateDigestedDataDecodeCtx,
        KA_PKCS7_CreateEnvelopedDataEncodeCtx, KA_PKCS7_CreateEnvelopedDataDecodeCtx,
        KA_PKCS7_CreateEncryptedDataEncodeCtx, KA_PKCS7_CreateEncryptedDataDecodeCtx,
        KA_PKCS7_CreateSignedAndEnvelopedDataEncodeCtx, KA_PKCS7_CreateSignedAndEnvelopedDataDecodeCtx,
        KA_PKCS7_SetDigestedDataAttributeInt, KA_PKCS7_SetSignedDataAttributeInt, KA_PKCS7_SetEnvelopedDataAttributeInt,
        KA_PKCS7_SetEncryptedDataAttributeInt, KA_PKCS7_SetSignedAndEnvelopedDataAttributeInt, KI_InitOCSPExtension,
        KI_FreeOCSPExtension, KA_OCSP_CreateEncodeRequestList, KA_OCSP_CreateDecodeRequestList,
        KA_OCSP_DestroyEncodeRequestList, KA_OCSP_DestroyDecodeRequestList, KA_OCSP_CreateEncodeRequest,
        KA_OCSP_CreateDecodeRequest, KA_OCSP_DestoryEncodeRequest, KA_OCSP_DestoryDecodeRequest,
        KA_OCSP_CreateEncodeResponseList, KA_OCSP_CreateDecodeResponseList, KA_OCSP_DestroyEncodeResponseList,
        KA_OCSP_DestroyDecodeResponseList, KA_OCSP_CreateEncodeResponse, KA_OCSP_CreateDecodeResponse,
        KA_OCSP_DestoryEncodeResponse, KA_OCSP_DestoryDecodeResponse, KA_OCSP_SetResponseList_CertStatusGood>()},
    {"- 121 121", of<KI_MakeContentToSequence>()},
    {"121 121 121 121 121", of<KI_MakeSequenceToContent>(), {0}},
    {"- 121", of<KI_PKCS7_EncodeAttributes, KI_PKCS7_DecodeAttributes, KA_PKCS7_VerifySignerSignature>()},
    {"- - 121", of<KA_PKCS7_EncodePKCS7DerTypeData>(), {1, PKCS7_TYPE_DATA}},
    {"121 121 121",
     of<KA_PKCS7_GetEncryptedContentAttributeChar, KA_PKCS7_SetSignerAttribute, KA_PKCS7_SetSignerUnAttribute,
        KA_PKCS7_EncodeEncryptedContent, KA_PKCS7_EncodeRecipientInfo, KA_PKCS7_GetEncryptedContentInformation,
        KA_PKCS7_DecryptDesKey, KA_PKCS7_GetDataContent, KA_PKCS7_GetDigestedDataAttributeChar,
        KA_PKCS7_GetEnvelopedDataAttributeChar, KA_PKCS7_GetEncryptedDataAttributeChar,
        KA_PKCS7_GetSignedAndEnvelopedDataAttributeChar, KA_OCSP_SetRequestListHashFunc, KA_OCSP_EncodeRequestList,
        KA_OCSP_SetRequestSignFunc, KA_OCSP_SetRequestPrivateAttribute, KA_OCSP_EncodeRequest,
        KA_OCSP_GetRequestSingleRequest, KA_OCSP_EncodeResponseList, KA_OCSP_SetResponseSignFunc,
        KA_OCSP_SetResponseHashFunc, KA_OCSP_EncodeResponse, KA_OCSP_GetResponseSingleResponse>()},
    {"121 - 121",
     of<KA_PKCS7_GetRecipientInfoAttributeChar, KA_PKCS7_SetEncryptContentEncFunc, KA_PKCS7_SetEncryptContentDecFunc,
        KA_PKCS7_SetRecipientInfoKeyEncFunc, KA_PKCS7_SetRecipientInfoKeyDecFunc, KA_PKCS7_SetSignerInfoEncSignFunc,
        KA_PKCS7_EncodePKCS7Data, KA_PKCS7_EncodePKCS7DigestedData, KA_PKCS7_EncodePKCS7SignedData,
        KA_PKCS7_EncodePKCS7EncryptedData, KA_PKCS7_EncodeSignedAndEnvelopedData>()},
    {"- - 121", of<KA_PKCS7_GetSignerInfoAttributeChar>()},
    {"121 - 121 - 121", of<KA_PKCS7_GetSignerAttribute, KA_PKCS7_GetSignerUnAttribute>()},
    {"0 - 121", of<KA_PKCS7_SetSignerInfoDecSignFunc, KA_PKCS7_SetSignerInfoDigestFunc>()},
    {"108 121 121", of<KA_PKCS7_EncodeSignerInfo>()},
    {"121 101 101", of<KA_PKCS7_GetSignedDataAttributeChar>()},
    {"121 - -", of<KA_PKCS7_SetDigestedDataHashFunc>()},
    {"121 101", of<KA_PKCS7_DecodePKCS7DigestedData>()},
    {"101 - 121", of<KA_PKCS7_EncodePKCS7EnvelopedData>()},
    {"0 121", of<KI_EncodeOCSPExtension>()},
    {"0 0", of<KA_OCSP_SetResponseSingleResponse>()},
    {"0 0 121", of<KA_OCSP_SetResponseListHashFunc>()},
    {"121 -", of<KA_OCSP_SetResponseList_CertStatusRevoke>()},
    {"121", of<KA_OCSP_SetRequestAttributeInt>(), {OCSP_REQUEST_VERSION}},
    {"121", of<KA_OCSP_SetResponseListAttributeInt>(), {OCSP_RESPONDERLIST_THISUPDATE}},
    {"121", of<KA_OCSP_SetResponseAttributeInt>(), {OCSP_RESPONSE_VERSION}},
    {"121 121", of<KA_OCSP_GetRequestAttributeInt>(), {OCSP_REQUEST_VERSION}},
    {"121 121", of<KA_OCSP_GetResponseListAttributeInt>(), {OCSP_RESPONDERLIST_THISUPDATE}},
    {"121 121", of<KA_OCSP_GetResponseAttributeInt>(), {OCSP_RESPONSE_VERSION}},
    {"121 121", of<KA_OCSP_SetRequestListAttributeChar>(), {OCSP_REQUESTLIST_PARAM, 1}},
    {"121 121", of<KA_OCSP_SetRequestAttributeChar>(), {OCSP_EXT_NONCE, 1}},
    {"121 121", of<KA_OCSP_SetResponseListAttributeChar>(), {OCSP_RESPONDERLIST_PARAM, 1}},
    {"121 121", of<KA_OCSP_SetResponseAttributeChar>(), {OCSP_RESPONSE_STATUS, 1}},
    {"121 121 121", of<KA_OCSP_GetRequestListAttributeChar>(), {OCSP_REQUESTLIST_PARAM}},
    {"121 121 121", of<KA_OCSP_GetRequestAttributeChar>(), {OCSP_REQUEST_REQUESTOR_DN}},
    {"121 121 121", of<KA_OCSP_GetResponseListAttributeChar>(), {OCSP_RESPONDERLIST_PARAM}},
    {"121 121 121", of<KA_OCSP_GetResponseAttributeChar>(), {OCSP_RESPONSE_STATUS}},
    {"121 121 - - - - -", of<KA_OCSP_GetResponseListCertSatus>()},
    {"121", of<KA_PKCS12_CreateEncodeContentInfoOfDataType, KA_PKCS12_CreateDecodeContentInfoOfDataType,
               KA_PKCS12_CreateEncodeContentInfoOfEnvelopedType, KA_PKCS12_CreateDecodeContentInfoOfEnvelopedType,
               KA_PKCS12_CreateEncodeContentInfoOfEncryptedType, KA_PKCS12_CreateDecodeContentInfoOfEncryptedType,
               KA_PKCS12_CreateEncodePfx, KA_PKCS12_CreateDecodePfx, KA_PKCS12_DestroyEncodePFX,
               KA_PKCS12_DestroyDecodePFX>()},
    {"108", of<KA_PKCS12_CreateEncodeAuthSafeOfDataType, KA_PKCS12_CreateDecodeAuthSafeOfDataType,
               KA_PKCS12_CreateEncodeAuthSafeOfSignedType, KA_PKCS12_CreateDecodeAuthSafeOfSignedType>()},
    {"-", of<KA_PKCS12_DestoryEncodeContentInfoOfDataType, KA_PKCS12_DestoryDecodeContentInfoOfDataType,
             KA_PKCS12_DestoryEncodeContentInfoOfEnvelopedType, KA_PKCS12_DestoryDecodeContentInfoOfEnvelopedType,
             KA_PKCS12_DestoryEncodeContentInfoOfEncryptedType, KA_PKCS12_DestoryDecodeContentInfoOfEncryptedType,
             KA_PKCS12_DestoryEncodeAuthSafeOfDataType, KA_PKCS12_DestoryDecodeAuthSafeOfDataType,
             KA_PKCS12_DestoryEncodeAuthSafeOfSignedType, KA_PKCS12_DestoryDecodeAuthSafeOfSignedType>()},
    {"121 121",
     of<KA_PKCS12_SetContentInfoOfDataType_SafeContent, KA_PKCS12_SetContentInfoOfEnvelopedType_SafeContent,
        KA_PKCS12_SetContentInfoOfEncryptedType_SafeContent, KA_PKCS12_SetContentInfoOfEnvelopedType_DesAlgorithm,
        KA_PKCS12_SetContentInfoOfEncryptedType_DesAlgorithm, KA_PKCS12_SetContentInfoOfEnvelopedType_DesParameter,
        KA_PKCs12_SetContentInfoOfEncryptedType_DesParameter, KA_PKCS12_SetContentInfoOfEnvelopedType_RecipientInfo,
        KA_PKCS12_SetContentInfoOfEnvelopedType_EncContentKey, KA_PKCS12_DecodeContentInfoOfDataType,
        KA_PKCS12_DecodeContentInfoOfEnvelopedType, KA_PKCS12_DecodeContentInfoOfEncryptedType, KA_PKCS12_SetPrivateKey,
        KA_PKCS12_SetCertificate>()},
    {"121 121 121",
     of<KA_PKCS12_GetContentInfoOfDataType_SafeContent, KA_PKCS12_GetContentInfoOfEnvelopedType_SafeContent,
        KA_PKCS12_GetContentInfoOfEncryptedType_SafeContent, KA_PKCS12_SetContentInfoOfEnvelopedType_EncContentFunc,
        KA_PKCS12_SetContentInfoOfEncryptedType_EncContentFunc, KA_PKCS12_SetContentInfoOfEncryptedType_DecContentFunc,
        KA_PKCS12_GetContentInfoOfEnvelopedType_DesAlgorithm, KA_PKCS12_GetContentInfoOfEncryptedType_DesAlgorithm,
        KA_PKCS12_SetPrivateKey_Attribute, KA_PKCS12_SetPrivateKeyBag_Attribute,
        KA_PKCS12_SetCertificateBag_Attribute>()},
    {"121 121 121 121",
     of<KA_PKCS12_GetContentInfoOfEnvelopedType_DesParameter, KA_PKCS12_GetContentInfoOfEncryptedType_DesParameter>()},
    {"121 121 108 108", of<KA_PKCS12_DecodePFX>()},
    {"121 - 121", of<KA_PKCS12_EncodeContentInfoOfDataType, KA_PKCS12_EncodeContentInfoOfEncryptedType,
                     KA_PKCS12_GetPrivateKey, KA_PKCS12_GetCertificate>()},
    {"101 - 121", of<KA_PKCS12_EncodeContentInfoOfEnvelopedType>()},
    {"108 108", of<KA_PKCS12_SetAuthSafeOfDataType_ContentInfo, KA_PKCS12_SetAuthSafeOfSignedType_ContentInfo,
                   KA_PKCS12_SetAuthSafeOfDataType_DigestAlgorithm, KA_PKCS12_SetAuthSafeOfDataType_MacParameter,
                   KA_PKCS12_DecodeAuthSafeOfDataType, KA_PKCS12_SetAuthSafeOfSignedType_DigestAlgorithm,
                   KA_PKCS12_SetAuthSafeOfSignedType_Cert, KA_PKCS12_SetAuthSafeOfSignedType_Crl,
                   KA_PKCS12_SetAuthSafeOfSignedType_SignerInfo, KA_PKCS12_GetAuthSafeOfSignedType_SignerInfo,
                   KA_PKCS12_DecodeAuthSafeOfSignedType>()},
    {"108 108 108", of<KA_PKCS12_GetAuthSafeOfDataType_ContentInfo, KA_PKCS12_GetAuthSafeOfSignedType_ContentInfo,
                       KA_PKCS12_GetAuthSafeOfDataType_DigestAlgorithm, KA_PKCS12_SetAuthSafeOfDataType_GenMacFunc,
                       KA_PKCS12_SetAuthSafeOfDataType_ParseMacFunc, KA_PKCS12_EncodeAuthSafeOfDataType,
                       KA_PKCS12_EncodeAuthSafeOfSignedType, KA_PKCS12_GetAuthSafeOfSignedType_DigestAlgorithm,
                       KA_PKCS12_GetAuthSafeOfSignedType_Cert, KA_PKCS12_GetAuthSafeOfSignedType_Crl>()},
    {"108 108 108 108", of<KA_PKCS12_GetAuthSafeOfDataType_MacParameter>()},
    {"- 108", of<KA_PKCS12_GetAuthSafeOfDataType_MACVerifyResult>()},
    {"121 121 - 121", of<KA_PKCS12_EncodePFX>()},
    {"121 121 121 121 121", of<KA_PKCS12_GetPrivateKey_Attribute, KA_PKCS12_GetPrivateKeyBag_Attribute,
                               KA_PKCS12_GetCertificateBag_Attribute>()},
    {"108", of<KA_PKCS12_CreateEncodeKeyBag, KA_PKCS12_DestroyEncodeKeyBag, KA_PKCS12_SetKeyBagVersion,
               KA_PKCS12_CreateEncodeEncKeyBag, KA_PKCS12_DestoryEncodeEncKeyBag, KA_PKCS12_CreateEncodeCertBag,
               KA_PKCS12_DestoryEncodeCertBag, KA_PKCS12_CreateEncodeSafeBag, KA_PKCS12_DestoryEncodeSafeBag>()},
    {"121", of<KA_PKCS12_CreateEncodeSafeContents, KA_PKCS12_DestoryEncodeSafeContents>()},
    {"108 108",
     of<KA_PKCS12_GetKeyBagVersion, KA_PKCS12_SetKeyBagAlgorithm, KA_PKCS12_SetKeyBagKey,
        KA_PKCS12_GetKeyBagAttributeNum, KA_PKCS12_DecodeKeyBag, KA_PKCS12_SetEncKeyBagAlgo,
        KA_PKCS12_SetEncKeyBagParameter, KA_PKCS12_SetEncKeyBagEncKey, KA_PKCS12_DecodeEncKeyBag,
        KA_PKCS12_SetCertBagCertificate, KA_PKCS12_SetCertBagID, KA_PKCS12_DecodeCertBag, KA_PKCS12_SetCrlBagCrl,
        KA_PKCS12_SetCrlBagID, KA_PKCS12_DecodeCrlBag, KA_PKCS12_SetSecretContentsBagContents,
        KA_PKCS12_SetSecretContentsBagID, KA_PKCS12_DecodeSecretContentsBag, KA_PKCS12_SetSafeBagOID,
        KA_PKCS12_SetSafeBagContent, KA_PKCS12_GetSafeBagAttributeNum, KA_PKCS12_DecodeSafeBag>()},
    {"121 121",
     of<KA_PKCS12_SetSafeContents_SafeBag, KA_PKCS12_GetSafeContents_SafeBagNum, KA_PKCS12_DecodeSafeContent>()},
    {"108 108 108",
     of<KA_PKCS12_GetKeyBagAlgorithm, KA_PKCS12_GetKeyBagKey, KA_PKCS12_SetKeyBagAttribute, KA_PKCS12_EncodeKeyBag,
        KA_PKCS12_GetEncKeyBagAlgo, KA_PKCS12_GetEncKeyBagParameter, KA_PKCS12_GetEncKeyBagEncKey,
        KA_PKCS12_EncodeEncKeyBag, KA_PKCS12_GetCertBagID, KA_PKCS12_EncodeCertBag, KA_PKCS12_GetCrlBagCrl,
        KA_PKCS12_GetCrlBagID, KA_PKCS12_EncodeCrlBag, KA_PKCS12_GetSecretContentsBagContents,
        KA_PKCS12_GetSecretContentsBagID, KA_PKCS12_EncodeSecretContentsBag, KA_PKCS12_GetSafeBagOID,
        KA_PKCS12_GetSafeBagContent, KA_PKCS12_SetSafeBagAttribute, KA_PKCS12_EncodeSafeBag>()},
    {"121 121 121", of<KA_PKCS12_GetSafeContents_SafeBag, KA_PKCS12_EncodeSafeContent>()},
    {"108 108 108 108", of<KA_PKCS12_GetCertBagCertificate, KA_PKCS12_GenKeyBag, KA_PKCS12_GenCertBag,
                           KA_PKCS12_GenCrlBag, KA_PKCS12_GenSecretContentsBag>()},
    {"108 108 108 108 108", of<KA_PKCS12_GetKeyBagAttribute, KA_PKCS12_GetSafeBagAttribute, KA_PKCS12_ParseCrlBag,
                               KA_PKCS12_ParseSecretContentsBag>()},
    {"108 108 108 108 108 108", of<KA_PKCS12_ParseKeyBag, KA_PKCS12_ParseCertBag>()},
    {"108 108 - 108 108 108 108", of<KA_PKCS12_GenEncKeyBag>()},
    {"- 108 108", of<KA_PKCS12_ParseEncKeyBag>()},
    {"108 108 108 108 108 108 108 108", of<KA_PKCS12_DealWithEncKeyBag>()},
    {"", of<KAsn1_Low_Count_LengthOfSize, KI_EncodeCertStatus, KA_OCSP_GetRequestPrivateAttribute,
            KA_OCSP_SetResponsePrivateAttribute, KA_OCSP_GetResponsePrivateAttribute>()},
};

TEST(Null, EveryExportIsAsked) {
    std::set<const void *> asked;
    for (const Group &group : groups)
        for (const Export &one : group.exports) {
            Dl_info info = {};
            dladdr(one.address(), &info);
            EXPECT_EQ(answers(one, group), group.want) << info.dli_sname;
            asked.insert(one.address());
        }
    std::ifstream exports(KARIL_EXPORTS);
    size_t count = 0;
    for (std::string name; std::getline(exports >> std::ws, name, ';'); ++count) {
        const void *const address = name.rfind("KAPR_", 0) == 0 ? nullptr : dlsym(RTLD_DEFAULT, name.c_str());
        EXPECT_EQ(asked.count(address), address != nullptr ? 1u : 0u) << name;
    }
    EXPECT_GT(count, 200u);
}

} // namespace
