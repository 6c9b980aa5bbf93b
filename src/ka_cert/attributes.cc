// The ids of the Char functions: a row each, with what Set and Get do.
#include "ka_cert.h"

namespace karil {

namespace {

using Ctx = CertEncodeCtx;
using Ext = CertExtensions;
using Names = GeneralNameRecord;

// An attribute of a directory name, which does not by itself cause extensions to be written.
template <uint32_t Kind, AltNameExtension Ext::*Field, uint8_t Ext::*Flag> Status addToAltName(Ctx &ctx, Bytes value) {
    Names &names = (ctx.extensions.*Field).names;
    KA_PASS(appendName(names.directoryName, Kind, value));
    names.present[FormDirectoryName] = 1;
    ctx.extensions.*Flag = 1;
    return KACERT_Ok;
}

Status setPublicKey(Ctx &ctx, Bytes value) {
    KA_PASS(setTagged(ctx.publicKey, value, TagSequence));
    ctx.publicKeyAlgorithm.oid.tag = NormalSequence;
    return KACERT_Ok;
}

// A node of one value at the end of its list.
template <auto Field, class Node> Status appendNode(Node *&first, Node *&last, Bytes value, Node *&out) {
    NodePtr<Node> node;
    KA_PASS(createNode(node));
    KA_STEP_AS("------>KI_SetAttributeCharValue", replace(node.get()->*Field, value));
    out = node.release();
    append<&Node::next>(first, last, out);
    return KACERT_Ok;
}

Status setAuthorityKeyId(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    KA_PASS(setOnce(ext.hasAuthorityKeyId, ext.authorityKeyId.keyId, value));
    ext.authorityKeyId.hasKeyId = 1;
    ext.authorityKeyId.critical = 0;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setSubjectKeyId(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    KA_PASS(setOnce(ext.hasSubjectKeyId, ext.subjectKeyId.keyId, value));
    ext.subjectKeyId.critical = 0;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setUnusedBits(Anybuf &bits) {
    if (bits.length > 2) {
        KA_TRACE("======>扩展密钥用法的长度不能大于2");
        return KA_FAIL(KACERT_AttributeAlreadySet, "----->Set CertTex_KeyUsage_SetUnuseBit");
    }
    const uint8_t octet = bits.data[0];
    if (bits.length == 2)
        bits.unusedBits = 7;
    else if (octet != 0)
        bits.unusedBits = static_cast<uint32_t>(__builtin_ctz(octet));
    return KACERT_Ok;
}

Status setKeyUsage(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    KA_PASS(setOnce(ext.hasKeyUsage, ext.keyUsage.bits, value));
    ext.keyUsage.critical = 1;
    ctx.hasExtensions = 1;
    return setUnusedBits(ext.keyUsage.bits);
}

Status setPolicyId(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    if (ext.hasCertPolicies != 0)
        return KACERT_Ok;
    NodePtr<PolicyNode> policy;
    KA_PASS(createNode(policy));
    KA_PASS(setTagged(policy->oid, value, TagObjectId));
    ext.certPolicy.policy = policy.release();
    ext.hasCertPolicies = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status addPolicyCps(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    if (ext.hasCertPolicies == 0)
        return KACERT_Ok;
    PolicyQualifierNode *node = nullptr;
    KA_PASS(appendNode<&PolicyQualifierNode::uri>(ext.certPolicy.policy->cps, ctx.cpsLast, value, node));
    node->isCps = 1;
    return KACERT_Ok;
}

Status setAuthority(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    ext.basicConstraints.isCa = value[0];
    ext.basicConstraints.critical = 1;
    ext.hasBasicConstraints = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setBasicConstraintsCritical(Ctx &ctx, Bytes value) {
    ctx.hasExtensions = 1;
    return setCritical<&Ext::basicConstraints>(ctx, value);
}

Status setPathLen(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    KA_PASS(setTagged(ext.basicConstraints.pathLen, value, TagInteger));
    ext.basicConstraints.hasPathLen = 1;
    ext.hasBasicConstraints = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setExtKeyUsage(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    // A defined usage raises the presence flag as well: the mask itself tells whether it was set.
    uint8_t isSet = ext.extKeyUsage.mask.data != nullptr ? 1 : 0;
    KA_PASS(setOnce(isSet, ext.extKeyUsage.mask, value));
    ext.extKeyUsage.critical = 0;
    ext.hasExtKeyUsage = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status addDefinedUsage(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    uint32_t size = 0;
    if (KACert_GetOIDValue(reinterpret_cast<const char *>(value.data()), static_cast<int32_t>(value.size()), nullptr,
                           &size) != KACERT_Ok)
        return KA_FAIL(KACERT_InvalidItemErr, "------>CERTEX_EXTKEY_USAGE_OID_DEFINE: input oid is invalid.");
    DefinedUsageNode *node = nullptr;
    KA_PASS(appendNode<&DefinedUsageNode::dotted>(ext.extKeyUsage.definedOids, ctx.definedOidsLast, value, node));
    ext.hasExtKeyUsage = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status addDistributionPoint(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    NodePtr<DistributionPointNode> node;
    KA_PASS(createNode(node));
    KA_STEP_AS("------>KI_SetAttributeCharValue", replace(node->fullName.uniformResourceIdentifier, value));
    node->fullName.present[FormUri] = 1;
    node->hasDistributionPoint = 1;
    node->hasFullName = 1;
    append<&DistributionPointNode::next>(ext.crlDistPoints.first, ctx.crlDistPointsLast, node.release());
    ext.crlDistPoints.critical = 0;
    ext.hasCrlDistPoints = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

template <uint8_t Method> Status addAccess(Ctx &ctx, Bytes value) {
    Ext &ext = ctx.extensions;
    AccessNode *node = nullptr;
    KA_PASS(appendNode<&AccessNode::location>(ext.authorityInfo.first, ctx.authorityInfoLast, value, node));
    node->method = Method;
    node->locationChoice = FormUri;
    ext.authorityInfo.critical = 0;
    ext.hasAuthorityInfo = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Names &markAltName(Ctx &ctx) {
    ctx.extensions.hasSubjectAltName = 1;
    ctx.hasExtensions = 1;
    return ctx.extensions.subjectAltName.names;
}

template <Anybuf Names::*Field> Status setOtherName(Ctx &ctx, Bytes value) {
    Anybuf &field = ctx.extensions.subjectAltName.names.*Field;
    KA_PASS(setTagged(field, value, field.tag));
    Names &names = markAltName(ctx);
    names.otherNameKind = TagUtf8String;
    names.present[0] = 1;
    return KACERT_Ok;
}

Status setOtherNameKind(Ctx &ctx, Bytes value) {
    Names &names = markAltName(ctx);
    names.otherNameKind = value[0];
    names.present[0] = 1;
    return KACERT_Ok;
}

template <uint32_t Form, Anybuf Names::*Field> Status setAltName(Ctx &ctx, Bytes value) {
    Names &names = ctx.extensions.subjectAltName.names;
    KA_PASS(
        setOnce(names.present[Form], names.*Field, value,
                Form == FormRfc822Name ? AlreadySet : "------>CERT_SUBJECT_ALT_DNSNAME KACERT_AttributeAlreadySet"));
    markAltName(ctx);
    return KACERT_Ok;
}

template <uint32_t Form, Anybuf Names::*Field> Status answerAltName(Ctx &ctx, const Answer &answer) {
    const Names &names = ctx.extensions.subjectAltName.names;
    const Bytes value = bytesOf(names.*Field);
    return answerIf(ctx.extensions.hasSubjectAltName != 0 && names.present[Form] != 0 && !value.empty(), answer, value);
}

// The flag that is looked at need not be that of the name that is asked.
template <uint8_t Ext::*Flag, AltNameExtension Ext::*Field, uint32_t Kind>
Status answerFromAltName(Ctx &ctx, const Answer &answer) {
    const Ext &ext = ctx.extensions;
    return ext.*Flag != 0 ? answerName((ext.*Field).names.directoryName, Kind, answer) : KACERT_Ok;
}

Status answerSubjectAltCommonName(Ctx &ctx, const Answer &answer) {
    const Names &names = ctx.extensions.subjectAltName.names;
    if (names.present[FormDirectoryName] == 1)
        return answerFromAltName<&Ext::hasSubjectAltName, &Ext::subjectAltName, KA_NAME_COMMONNAME>(ctx, answer);
    return names.present[FormRfc822Name] != 0 ? answerIntoBuffer(answer, bytesOf(names.rfc822Name)) : KACERT_Ok;
}

// A field of an extension that is there, octets or a flag.
Bytes octetsOf(const Anybuf &field) {
    return bytesOf(field);
}
Bytes octetsOf(const uint8_t &flag) {
    return {&flag, 1};
}
template <uint8_t Ext::*Flag, auto... Path> Status answerExtension(Ctx &ctx, const Answer &answer) {
    const Ext &ext = ctx.extensions;
    return answerIf(ext.*Flag != 0, answer, octetsOf(fieldOf<Path...>(ext)));
}

Status answerAuthorityKeyId(Ctx &ctx, const Answer &answer) {
    const AuthorityKeyIdExtension &field = ctx.extensions.authorityKeyId;
    return answerIf(ctx.extensions.hasAuthorityKeyId != 0 && field.hasKeyId != 0, answer, bytesOf(field.keyId));
}

Status answerPathLen(Ctx &ctx, const Answer &answer) {
    const BasicConstraintsExtension &field = ctx.extensions.basicConstraints;
    return answerIf(field.hasPathLen != 0, answer, bytesOf(field.pathLen));
}

Status answerDistributionPoint(Ctx &ctx, const Answer &answer) {
    CrlDistPointsExtension &points = ctx.extensions.crlDistPoints;
    const DistributionPointNode *node = points.cursor;
    if (ctx.extensions.hasCrlDistPoints == 0 || node == nullptr || node->hasDistributionPoint == 0 ||
        node->hasFullName == 0)
        return KACERT_Ok;
    KA_PASS(answerOctets(answer, bytesOf(node->fullName.uniformResourceIdentifier)));
    if (answer.result != nullptr)
        points.cursor = node->next;
    return KACERT_Ok;
}

Status answerKeyAlgorithm(Ctx &ctx, const Answer &answer) {
    return answerWithLengthOf(ctx.publicKeyAlgorithm.oid, answer, ctx.innerSignatureAlgorithm.oid);
}

template <auto Name> Status answerUnitsOf(Ctx &ctx, const Answer &answer) {
    return answerUnits(ctx.*Name, answer);
}

// An algorithm, a name attribute, a slot of the alternative names. The words of the issuer's are the subject's.
#define KA_ALGORITHM(ID, FIELD, GET) KA_ROW(ID, (setField<TagObjectId, FIELD, &AlgorithmRecord::oid>), GET)
#define KA_NAME(ID, NAME, KIND) KA_ROW(ID, (addToName<KIND, NAME>), (answerFromName<KIND, NAME>))
#define KA_SUBJECT_ALT(REST, KIND, GET)                                                                                \
    KA_ROW(CERT_SUBJECT_ALT_##REST, (addToAltName<KIND, &Ext::subjectAltName, &Ext::hasSubjectAltName>), GET)
#define KA_ISSUER_ALT(REST, KIND, GET)                                                                                 \
    KA_ROW_AS(CERT_ISSUER_ALT_##REST, "CERT_SUBJECT_ALT_" #REST,                                                       \
              (addToAltName<KIND, &Ext::issuerAltName, &Ext::hasIssuerAltName>), GET)
#define KA_ALT_SLOT(ID, FORM, FIELD) KA_ROW(ID, (setAltName<FORM, FIELD>), (answerAltName<FORM, FIELD>))

constexpr Attribute<Ctx> Rows[] = {
    KA_ROW(CERT_TBS_CERTIFICATE, nullptr, answerField<&Ctx::tbs>),
    KA_ALGORITHM(CERT_OUTER_SIGNATUREALGORITHM, &Ctx::outerSignatureAlgorithm,
                 (answerField<&Ctx::outerSignatureAlgorithm, &AlgorithmRecord::oid>)),
    KA_ROW(CERT_CA_SIGNATURE, (setField<TagBitString, &Ctx::signature>), answerField<&Ctx::signature>),
    KA_ROW(CERT_SERIALNUMBER, (setField<TagInteger, &Ctx::serialNumber>), answerField<&Ctx::serialNumber>),
    KA_ALGORITHM(CERT_INNER_SIGNATUREALGORITHM, &Ctx::innerSignatureAlgorithm,
                 (answerField<&Ctx::innerSignatureAlgorithm, &AlgorithmRecord::oid>)),
    KA_ROW(CERT_ISSUER_DERDN, setNameElement<&Ctx::issuerDer>, answerField<&Ctx::issuerDer>),
    KA_ROW(CERT_ISSUER_DN, nullptr, (answerLine<&Ctx::issuerText, &Ctx::issuer>)),
    KA_NAME(CERT_ISSUER_COUNTRYNAME, &Ctx::issuer, KA_NAME_COUNTRY),
    KA_NAME(CERT_ISSUER_STATEORPROVINCENAME, &Ctx::issuer, KA_NAME_STATEORPROVINCE),
    KA_NAME(CERT_ISSUER_LOCALITYNAME, &Ctx::issuer, KA_NAME_LOCALITY),
    KA_NAME(CERT_ISSUER_ORGANIZATIONNAME, &Ctx::issuer, KA_NAME_ORGANIZATION),
    KA_ROW(CERT_ISSUER_ORGANIZATIONALUNITNAME, (addToName<KA_NAME_ORGANIZATIONALUNIT, &Ctx::issuer>),
           answerUnitsOf<&Ctx::issuer>),
    KA_NAME(CERT_ISSUER_COMMONNAME, &Ctx::issuer, KA_NAME_COMMONNAME),
    KA_NAME(CERT_ISSUER_EMAIL, &Ctx::issuer, KA_NAME_EMAIL),
    KA_NAME(CERT_ISSUER_POSTALADDRESS, &Ctx::issuer, KA_NAME_POSTALADDRESS),
    KA_NAME(CERT_ISSUER_POSTALCODE, &Ctx::issuer, KA_NAME_POSTALCODE),
    KA_NAME(CERT_ISSUER_TELEPHONE, &Ctx::issuer, KA_NAME_TELEPHONE),
    KA_ROW(CERT_SUBJECT_DERDN, setNameElement<&Ctx::subjectDer>, answerField<&Ctx::subjectDer>),
    KA_ROW(CERT_SUBJECT_DN, nullptr, (answerLine<&Ctx::subjectText, &Ctx::subject>)),
    KA_NAME(CERT_SUBJECT_COUNTRYNAME, &Ctx::subject, KA_NAME_COUNTRY),
    KA_NAME(CERT_SUBJECT_STATEORPROVINCENAME, &Ctx::subject, KA_NAME_STATEORPROVINCE),
    KA_NAME(CERT_SUBJECT_LOCALITYNAME, &Ctx::subject, KA_NAME_LOCALITY),
    KA_NAME(CERT_SUBJECT_ORGANIZATIONNAME, &Ctx::subject, KA_NAME_ORGANIZATION),
    KA_ROW(CERT_SUBJECT_ORGANIZATIONALUNITNAME, (addToName<KA_NAME_ORGANIZATIONALUNIT, &Ctx::subject>),
           answerUnitsOf<&Ctx::subject>),
    KA_NAME(CERT_SUBJECT_COMMONNAME, &Ctx::subject, KA_NAME_COMMONNAME),
    KA_NAME(CERT_SUBJECT_EMAIL, &Ctx::subject, KA_NAME_EMAIL),
    KA_NAME(CERT_SUBJECT_POSTALADDRESS, &Ctx::subject, KA_NAME_POSTALADDRESS),
    KA_NAME(CERT_SUBJECT_POSTALCODE, &Ctx::subject, KA_NAME_POSTALCODE),
    KA_NAME(CERT_SUBJECT_TELEPHONE, &Ctx::subject, KA_NAME_TELEPHONE),
    KA_ALGORITHM(CERT_PUBLICKEY_ALGORITHM, &Ctx::publicKeyAlgorithm, answerKeyAlgorithm),
    KA_ROW(CERT_SUBJECTPUBLICKEYINFO, setPublicKey, answerField<&Ctx::publicKey>),

    KA_ROW(CERTEX_AUTHORITYKEYIDENTIFIER_CRITICAL, setCritical<&Ext::authorityKeyId>, nullptr),
    KA_ROW_AS(CERTEX_AUTHORITYKEYIDENTIFIER, "CERTEX_AUTHORITY_KEYIDENTIFIER", setAuthorityKeyId, answerAuthorityKeyId),
    KA_ROW(CERTEX_SUBJECTKEYIDENTIFIER_CRITICAL, setCritical<&Ext::subjectKeyId>, nullptr),
    KA_ROW_AS(CERTEX_SUBJECTKEYIDENTIFIER, "CERTEX_AUTHORITY_KEYIDENTIFIER", setSubjectKeyId,
              (answerExtension<&Ext::hasSubjectKeyId, &Ext::subjectKeyId, &SubjectKeyIdExtension::keyId>)),
    KA_ROW(CERTEX_KEYUSAGE_CRITICAL, setCritical<&Ext::keyUsage>,
           (answerExtension<&Ext::hasKeyUsage, &Ext::keyUsage, &KeyUsageExtension::critical>)),
    KA_ROW(CERTEX_KEYUSAGE, setKeyUsage,
           (answerExtension<&Ext::hasKeyUsage, &Ext::keyUsage, &KeyUsageExtension::bits>)),
    KA_ROW(CERTEX_CERTPOLICY_CRITICAL, setCritical<&Ext::certPolicy>, nullptr),
    KA_ROW(CERTEX_CERTPOLICYID, setPolicyId, nullptr),
    KA_ROW(CERTEX_CERTPOLICY_CPS, addPolicyCps, nullptr),

    KA_SUBJECT_ALT(COUNTRYNAME, KA_NAME_COUNTRY, nullptr),
    KA_SUBJECT_ALT(STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE, nullptr),
    KA_SUBJECT_ALT(LOCALITYNAME, KA_NAME_LOCALITY, nullptr),
    KA_SUBJECT_ALT(ORGANIZATIONNAME, KA_NAME_ORGANIZATION, nullptr),
    KA_SUBJECT_ALT(ORGANIZATIONALUNITNAME, KA_NAME_ORGANIZATIONALUNIT, nullptr),
    KA_SUBJECT_ALT(COMMONNAME, KA_NAME_COMMONNAME, answerSubjectAltCommonName),
    KA_SUBJECT_ALT(EMAIL, KA_NAME_EMAIL,
                   (answerFromAltName<&Ext::hasSubjectAltName, &Ext::issuerAltName, KA_NAME_EMAIL>)),
    KA_ISSUER_ALT(COUNTRYNAME, KA_NAME_COUNTRY, nullptr),
    KA_ISSUER_ALT(STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE, nullptr),
    KA_ISSUER_ALT(LOCALITYNAME, KA_NAME_LOCALITY, nullptr),
    KA_ISSUER_ALT(ORGANIZATIONNAME, KA_NAME_ORGANIZATION, nullptr),
    KA_ISSUER_ALT(ORGANIZATIONALUNITNAME, KA_NAME_ORGANIZATIONALUNIT, nullptr),
    KA_ISSUER_ALT(COMMONNAME, KA_NAME_COMMONNAME,
                  (answerFromAltName<&Ext::hasIssuerAltName, &Ext::issuerAltName, KA_NAME_COMMONNAME>)),
    KA_ISSUER_ALT(EMAIL, KA_NAME_EMAIL,
                  (answerFromAltName<&Ext::hasIssuerAltName, &Ext::subjectAltName, KA_NAME_EMAIL>)),

    KA_ROW(CERTEX_BASICCONSTRAINTS_CRITICAL, setBasicConstraintsCritical,
           (answerExtension<&Ext::hasBasicConstraints, &Ext::basicConstraints, &BasicConstraintsExtension::critical>)),
    KA_ROW(CERTEX_AUTHORITY, setAuthority,
           (answerExtension<&Ext::hasBasicConstraints, &Ext::basicConstraints, &BasicConstraintsExtension::isCa>)),
    KA_ROW(CERTEX_PATHLENCONSTRAINT, setPathLen, answerPathLen),
    KA_ROW(CERTEX_EXTKEY_CRITICAL, setCritical<&Ext::extKeyUsage>, nullptr),
    KA_ROW(CERTEX_EXTKEY_USAGE, setExtKeyUsage,
           (answerExtension<&Ext::hasExtKeyUsage, &Ext::extKeyUsage, &ExtKeyUsageExtension::mask>)),
    KA_ROW(CERTEX_CRLDIST_CRITICAL, setCritical<&Ext::crlDistPoints>, nullptr),
    KA_ROW(CERTEX_CRLDIST_FULLNAME, addDistributionPoint, answerDistributionPoint),
    KA_ROW(CERTEX_AUTHORITYINFO_CRITICAL, setCritical<&Ext::authorityInfo>, nullptr),
    KA_ROW(CERTEX_AUTHORITYINFO_OCSP, addAccess<MethodOcsp>, nullptr),
    KA_ROW(CERTEX_AUTHORITYINFO_CAISSUERS, addAccess<MethodCaIssuers>, nullptr),
    KA_ROW(CERTEX_EXTKEY_USAGE_OID_DEFINE, addDefinedUsage, nullptr),
    KA_ROW(CERT_SUBJECT_ALT_OTHERNAME_TYPEID, setOtherName<&Names::otherNameType>, nullptr),
    KA_ROW(CERT_SUBJECT_ALT_OTHERNAME_VALUE, setOtherName<&Names::otherNameValue>, nullptr),
    KA_ROW(CERT_SUBJECT_ALT_OTHERNAME_TYPE, setOtherNameKind, nullptr),
    KA_ALT_SLOT(CERT_SUBJECT_ALT_RFC822NAME, FormRfc822Name, &Names::rfc822Name),
    KA_ALT_SLOT(CERT_SUBJECT_ALT_DNSNAME, 2, &Names::dNSName),
    KA_ALT_SLOT(CERT_SUBJECT_ALT_URI, FormUri, &Names::uniformResourceIdentifier),
    KA_ALT_SLOT(CERT_SUBJECT_ALT_IPADDRESS, 7, &Names::iPAddress),
    KA_ROW(CERT_SUBJECT_ALT_CRITICAL, setCritical<&Ext::subjectAltName>, nullptr),
};

} // namespace

} // namespace karil

using namespace karil;

int32_t KACert_SetCertAttributeChar(CertEncodeCtx *ctx, int32_t id, const uint8_t *value, int32_t length) {
    return KA_FRAMED("KACert_SetCertAttributeChar", setAttribute(Rows, ctx, id, value, length));
}

int32_t KACert_GetCertAttributeChar(CertDecodeCtx *ctx, int32_t id, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("KACert_GetCertAttributeChar");
    if (resultLength != nullptr)
        *resultLength = 0;
    KA_PASS(getAttribute(Rows, ctx, id, result, resultLength));
    return KA_DONE();
}
