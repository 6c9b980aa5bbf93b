// The attribute ids of the Char functions: a row each, with what Set and Get do.
#include "attribute_rows.h"

namespace karil {

namespace {

enum class NameList { Issuer, Subject, SubjectAlt, IssuerAlt };

Status setName(CertEncodeCtx &ctx, NameList list, uint32_t kind, Bytes value) {
    CertExtensions &ext = ctx.extensions;
    switch (list) {
    case NameList::Issuer:
        return appendName(ctx.issuer, ctx.issuerLast, kind, value);
    case NameList::Subject:
        return appendName(ctx.subject, ctx.subjectLast, kind, value);
    case NameList::SubjectAlt:
        KA_PASS(appendName(ext.subjectAltName.names.directoryName, ctx.subjectAltLast, kind, value));
        ext.subjectAltName.names.present[FormDirectoryName] = 1;
        ext.hasSubjectAltName = 1;
        return KACERT_Ok;
    case NameList::IssuerAlt:
        KA_PASS(appendName(ext.issuerAltName.names.directoryName, ctx.issuerAltLast, kind, value));
        ext.issuerAltName.names.present[FormDirectoryName] = 1;
        ext.hasIssuerAltName = 1;
        return KACERT_Ok;
    }
    return KACERT_Ok;
}

Status setPublicKey(CertEncodeCtx &ctx, Bytes value) {
    KA_PASS(setTagged(ctx.publicKey, value, TagSequence));
    ctx.publicKeyAlgorithm.oid.tag = NormalSequence;
    return KACERT_Ok;
}

constexpr char AltAlreadySet[] = "------>CERT_SUBJECT_ALT_DNSNAME KACERT_AttributeAlreadySet";

// A node of one value at the end of its list.
template <auto Field, class Node> Status appendNode(Node *&first, Node *&last, Bytes value, Node *&out) {
    NodePtr<Node> node(KA_CREATE(Node));
    if (node == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    KA_STEP_AS("------>KI_SetAttributeCharValue", replace(node.get()->*Field, value));
    out = node.release();
    append<&Node::next>(first, last, out);
    return KACERT_Ok;
}

Status setAuthorityKeyId(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    KA_PASS(setOnce(ext.hasAuthorityKeyId, ext.authorityKeyId.keyId, value));
    ext.authorityKeyId.hasKeyId = 1;
    ext.authorityKeyId.critical = 0;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setSubjectKeyId(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
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

Status setKeyUsage(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    KA_PASS(setOnce(ext.hasKeyUsage, ext.keyUsage.bits, value));
    ext.keyUsage.critical = 1;
    ctx.hasExtensions = 1;
    return setUnusedBits(ext.keyUsage.bits);
}

Status setPolicyId(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    if (ext.hasCertPolicies != 0)
        return KACERT_Ok;
    NodePtr<PolicyNode> policy(KA_CREATE(PolicyNode));
    if (policy == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    KA_PASS(setTagged(policy->oid, value, TagObjectId));
    ext.certPolicy.policy = policy.release();
    ext.hasCertPolicies = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setPolicyCps(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    if (ext.hasCertPolicies == 0)
        return KACERT_Ok;
    PolicyQualifierNode *node = nullptr;
    KA_PASS(appendNode<&PolicyQualifierNode::uri>(ext.certPolicy.policy->cps, ctx.cpsLast, value, node));
    node->isCps = 1;
    return KACERT_Ok;
}

Status setAuthority(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    ext.basicConstraints.isCa = value[0];
    ext.basicConstraints.critical = 1;
    ext.hasBasicConstraints = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setBasicConstraintsCritical(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    ctx.hasExtensions = 1;
    return setFlag(ext.basicConstraints.critical, value);
}

Status setPathLen(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    KA_PASS(setTagged(ext.basicConstraints.pathLen, value, TagInteger));
    ext.basicConstraints.hasPathLen = 1;
    ext.hasBasicConstraints = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setExtKeyUsage(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    // A defined usage raises the presence flag as well: the mask itself tells whether it was set.
    uint8_t isSet = ext.extKeyUsage.mask.data != nullptr ? 1 : 0;
    KA_PASS(setOnce(isSet, ext.extKeyUsage.mask, value));
    ext.extKeyUsage.critical = 0;
    ext.hasExtKeyUsage = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setDefinedUsage(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
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

Status setDistributionPoint(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    NodePtr<DistributionPointNode> node(KA_CREATE(DistributionPointNode));
    if (node == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
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

Status setAccess(CertEncodeCtx &ctx, CertExtensions &ext, uint8_t method, Bytes value) {
    AccessNode *node = nullptr;
    KA_PASS(appendNode<&AccessNode::location>(ext.authorityInfo.first, ctx.authorityInfoLast, value, node));
    node->method = method;
    node->locationChoice = FormUri;
    ext.authorityInfo.critical = 0;
    ext.hasAuthorityInfo = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status markAltName(CertEncodeCtx &ctx, CertExtensions &ext) {
    ext.hasSubjectAltName = 1;
    ctx.hasExtensions = 1;
    return KACERT_Ok;
}

Status setOtherName(CertEncodeCtx &ctx, CertExtensions &ext, Anybuf &field, Bytes value) {
    GeneralNameRecord &names = ext.subjectAltName.names;
    KA_PASS(setTagged(field, value, field.tag));
    names.otherNameKind = TagUtf8String;
    names.present[0] = 1;
    return markAltName(ctx, ext);
}

Status setOtherNameKind(CertEncodeCtx &ctx, CertExtensions &ext, Bytes value) {
    ext.subjectAltName.names.otherNameKind = value[0];
    ext.subjectAltName.names.present[0] = 1;
    return markAltName(ctx, ext);
}

Status setAltName(CertEncodeCtx &ctx, CertExtensions &ext, uint32_t form, Anybuf &field, Bytes value) {
    KA_PASS(setOnce(ext.subjectAltName.names.present[form], field, value,
                    form == FormRfc822Name ? AlreadySet : AltAlreadySet));
    return markAltName(ctx, ext);
}

Status giveFlag(uint8_t isThere, const Answer &answer, const uint8_t &flag) {
    return giveIf(isThere != 0, answer, Bytes(&flag, 1));
}

Status giveSubjectAltCommonName(const CertExtensions &ext, const Answer &answer) {
    const GeneralNameRecord &names = ext.subjectAltName.names;
    if (names.present[FormDirectoryName] == 1)
        return ext.hasSubjectAltName != 0 ? giveName(names.directoryName, KA_NAME_COMMONNAME, answer) : KACERT_Ok;
    return names.present[FormRfc822Name] != 0 ? giveFilled(answer, bytesOf(names.rfc822Name)) : KACERT_Ok;
}

Status giveAltName(const CertExtensions &ext, uint32_t form, const Answer &answer, const Anybuf &field) {
    return giveIf(ext.hasSubjectAltName != 0 && ext.subjectAltName.names.present[form] != 0 && field.length > 0, answer,
                  bytesOf(field));
}

Status giveDistributionPoint(CertExtensions &ext, const Answer &answer) {
    const DistributionPointNode *node = ext.crlDistPoints.cursor;
    if (ext.hasCrlDistPoints == 0 || node == nullptr || node->hasDistributionPoint == 0 || node->hasFullName == 0)
        return KACERT_Ok;
    KA_PASS(give(answer, bytesOf(node->fullName.uniformResourceIdentifier)));
    if (answer.result != nullptr)
        ext.crlDistPoints.cursor = node->next;
    return KACERT_Ok;
}

using Ctx = CertEncodeCtx;
using Ext = CertExtensions;

// The names: one row for each attribute of each list; the words of the issuer's alternative name are the subject's.
#define KA_NAME(ID, SET_WORDS, LIST, KIND, GET) KA_ROW_AS(ID, SET_WORDS, KA_SET(setName(ctx, LIST, KIND, value)), GET)
#define KA_ISSUER(ID, KIND) KA_NAME(ID, #ID, NameList::Issuer, KIND, KA_GET(giveName(ctx.issuer, KIND, answer)))
#define KA_SUBJECT(ID, KIND) KA_NAME(ID, #ID, NameList::Subject, KIND, KA_GET(giveName(ctx.subject, KIND, answer)))
#define KA_SUBJECT_ALT(REST, KIND, GET)                                                                                \
    KA_NAME(CERT_SUBJECT_ALT_##REST, "CERT_SUBJECT_ALT_" #REST, NameList::SubjectAlt, KIND, GET)
#define KA_ISSUER_ALT(REST, KIND, GET)                                                                                 \
    KA_NAME(CERT_ISSUER_ALT_##REST, "CERT_SUBJECT_ALT_" #REST, NameList::IssuerAlt, KIND, GET)
#define KA_ALT_SLOT(ID, FORM, FIELD)                                                                                   \
    KA_ROW(ID, KA_SET(setAltName(ctx, ext, FORM, ext.subjectAltName.names.FIELD, value)),                              \
           KA_GET(giveAltName(ext, FORM, answer, ext.subjectAltName.names.FIELD)))

constexpr Attribute<CertEncodeCtx> Rows[] = {
    KA_ROW(CERT_TBS_CERTIFICATE, nullptr, KA_GET(give(answer, bytesOf(ctx.tbs)))),
    KA_ROW(CERT_OUTER_SIGNATUREALGORITHM, KA_SET(setTagged(ctx.outerSignatureAlgorithm.oid, value, TagObjectId)),
           KA_GET(give(answer, bytesOf(ctx.outerSignatureAlgorithm.oid)))),
    KA_ROW(CERT_CA_SIGNATURE, KA_SET(setTagged(ctx.signature, value, TagBitString)),
           KA_GET(give(answer, bytesOf(ctx.signature)))),
    KA_ROW(CERT_SERIALNUMBER, KA_SET(setTagged(ctx.serialNumber, value, TagInteger)),
           KA_GET(give(answer, bytesOf(ctx.serialNumber)))),
    KA_ROW(CERT_INNER_SIGNATUREALGORITHM, KA_SET(setTagged(ctx.innerSignatureAlgorithm.oid, value, TagObjectId)),
           KA_GET(give(answer, bytesOf(ctx.innerSignatureAlgorithm.oid)))),
    KA_ROW(CERT_ISSUER_DERDN, KA_SET(setDerName(ctx.issuerDer, value)), KA_GET(give(answer, bytesOf(ctx.issuerDer)))),
    KA_ROW(CERT_ISSUER_DN, nullptr, KA_GET(giveText(ctx.issuerText, ctx.issuer, answer))),
    KA_ISSUER(CERT_ISSUER_COUNTRYNAME, KA_NAME_COUNTRY),
    KA_ISSUER(CERT_ISSUER_STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE),
    KA_ISSUER(CERT_ISSUER_LOCALITYNAME, KA_NAME_LOCALITY),
    KA_ISSUER(CERT_ISSUER_ORGANIZATIONNAME, KA_NAME_ORGANIZATION),
    KA_NAME(CERT_ISSUER_ORGANIZATIONALUNITNAME, "CERT_ISSUER_ORGANIZATIONALUNITNAME", NameList::Issuer,
            KA_NAME_ORGANIZATIONALUNIT, KA_GET(giveUnits(ctx.issuer, answer))),
    KA_ISSUER(CERT_ISSUER_COMMONNAME, KA_NAME_COMMONNAME),
    KA_ISSUER(CERT_ISSUER_EMAIL, KA_NAME_EMAIL),
    KA_ISSUER(CERT_ISSUER_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_ISSUER(CERT_ISSUER_POSTALCODE, KA_NAME_POSTALCODE),
    KA_ISSUER(CERT_ISSUER_TELEPHONE, KA_NAME_TELEPHONE),
    KA_ROW(CERT_SUBJECT_DERDN, KA_SET(setDerName(ctx.subjectDer, value)),
           KA_GET(give(answer, bytesOf(ctx.subjectDer)))),
    KA_ROW(CERT_SUBJECT_DN, nullptr, KA_GET(giveText(ctx.subjectText, ctx.subject, answer))),
    KA_SUBJECT(CERT_SUBJECT_COUNTRYNAME, KA_NAME_COUNTRY),
    KA_SUBJECT(CERT_SUBJECT_STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE),
    KA_SUBJECT(CERT_SUBJECT_LOCALITYNAME, KA_NAME_LOCALITY),
    KA_SUBJECT(CERT_SUBJECT_ORGANIZATIONNAME, KA_NAME_ORGANIZATION),
    KA_NAME(CERT_SUBJECT_ORGANIZATIONALUNITNAME, "CERT_SUBJECT_ORGANIZATIONALUNITNAME", NameList::Subject,
            KA_NAME_ORGANIZATIONALUNIT, KA_GET(giveUnits(ctx.subject, answer))),
    KA_SUBJECT(CERT_SUBJECT_COMMONNAME, KA_NAME_COMMONNAME),
    KA_SUBJECT(CERT_SUBJECT_EMAIL, KA_NAME_EMAIL),
    KA_SUBJECT(CERT_SUBJECT_POSTALADDRESS, KA_NAME_POSTALADDRESS),
    KA_SUBJECT(CERT_SUBJECT_POSTALCODE, KA_NAME_POSTALCODE),
    KA_SUBJECT(CERT_SUBJECT_TELEPHONE, KA_NAME_TELEPHONE),
    KA_ROW(CERT_PUBLICKEY_ALGORITHM, KA_SET(setTagged(ctx.publicKeyAlgorithm.oid, value, TagObjectId)),
           KA_GET(giveCrossed(answer, ctx.innerSignatureAlgorithm.oid, ctx.publicKeyAlgorithm.oid))),
    KA_ROW(CERT_SUBJECTPUBLICKEYINFO, KA_SET(setPublicKey(ctx, value)), KA_GET(give(answer, bytesOf(ctx.publicKey)))),

    KA_ROW(CERTEX_AUTHORITYKEYIDENTIFIER_CRITICAL, KA_SET(setFlag(ext.authorityKeyId.critical, value)), nullptr),
    KA_ROW_AS(CERTEX_AUTHORITYKEYIDENTIFIER, "CERTEX_AUTHORITY_KEYIDENTIFIER",
              KA_SET(setAuthorityKeyId(ctx, ext, value)),
              KA_GET(giveIf(ext.hasAuthorityKeyId != 0 && ext.authorityKeyId.hasKeyId != 0, answer,
                            bytesOf(ext.authorityKeyId.keyId)))),
    KA_ROW(CERTEX_SUBJECTKEYIDENTIFIER_CRITICAL, KA_SET(setFlag(ext.subjectKeyId.critical, value)), nullptr),
    KA_ROW_AS(CERTEX_SUBJECTKEYIDENTIFIER, "CERTEX_AUTHORITY_KEYIDENTIFIER", KA_SET(setSubjectKeyId(ctx, ext, value)),
              KA_GET(giveIf(ext.hasSubjectKeyId != 0, answer, bytesOf(ext.subjectKeyId.keyId)))),
    KA_ROW(CERTEX_KEYUSAGE_CRITICAL, KA_SET(setFlag(ext.keyUsage.critical, value)),
           KA_GET(giveFlag(ext.hasKeyUsage, answer, ext.keyUsage.critical))),
    KA_ROW(CERTEX_KEYUSAGE, KA_SET(setKeyUsage(ctx, ext, value)),
           KA_GET(giveIf(ext.hasKeyUsage != 0, answer, bytesOf(ext.keyUsage.bits)))),
    KA_ROW(CERTEX_CERTPOLICY_CRITICAL, KA_SET(setFlag(ext.certPolicy.critical, value)), nullptr),
    KA_ROW(CERTEX_CERTPOLICYID, KA_SET(setPolicyId(ctx, ext, value)), nullptr),
    KA_ROW(CERTEX_CERTPOLICY_CPS, KA_SET(setPolicyCps(ctx, ext, value)), nullptr),

    KA_SUBJECT_ALT(COUNTRYNAME, KA_NAME_COUNTRY, nullptr),
    KA_SUBJECT_ALT(STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE, nullptr),
    KA_SUBJECT_ALT(LOCALITYNAME, KA_NAME_LOCALITY, nullptr),
    KA_SUBJECT_ALT(ORGANIZATIONNAME, KA_NAME_ORGANIZATION, nullptr),
    KA_SUBJECT_ALT(ORGANIZATIONALUNITNAME, KA_NAME_ORGANIZATIONALUNIT, nullptr),
    KA_SUBJECT_ALT(COMMONNAME, KA_NAME_COMMONNAME, KA_GET(giveSubjectAltCommonName(ext, answer))),
    KA_SUBJECT_ALT(EMAIL, KA_NAME_EMAIL,
                   KA_GET(ext.hasSubjectAltName == 0
                              ? KACERT_Ok
                              : giveName(ext.issuerAltName.names.directoryName, KA_NAME_EMAIL, answer))),
    KA_ISSUER_ALT(COUNTRYNAME, KA_NAME_COUNTRY, nullptr),
    KA_ISSUER_ALT(STATEORPROVINCENAME, KA_NAME_STATEORPROVINCE, nullptr),
    KA_ISSUER_ALT(LOCALITYNAME, KA_NAME_LOCALITY, nullptr),
    KA_ISSUER_ALT(ORGANIZATIONNAME, KA_NAME_ORGANIZATION, nullptr),
    KA_ISSUER_ALT(ORGANIZATIONALUNITNAME, KA_NAME_ORGANIZATIONALUNIT, nullptr),
    KA_ISSUER_ALT(COMMONNAME, KA_NAME_COMMONNAME,
                  KA_GET(ext.hasIssuerAltName == 0
                             ? KACERT_Ok
                             : giveName(ext.issuerAltName.names.directoryName, KA_NAME_COMMONNAME, answer))),
    KA_ISSUER_ALT(EMAIL, KA_NAME_EMAIL,
                  KA_GET(ext.hasIssuerAltName == 0
                             ? KACERT_Ok
                             : giveName(ext.subjectAltName.names.directoryName, KA_NAME_EMAIL, answer))),

    KA_ROW(CERTEX_BASICCONSTRAINTS_CRITICAL, KA_SET(setBasicConstraintsCritical(ctx, ext, value)),
           KA_GET(giveFlag(ext.hasBasicConstraints, answer, ext.basicConstraints.critical))),
    KA_ROW(CERTEX_AUTHORITY, KA_SET(setAuthority(ctx, ext, value)),
           KA_GET(giveFlag(ext.hasBasicConstraints, answer, ext.basicConstraints.isCa))),
    KA_ROW(CERTEX_PATHLENCONSTRAINT, KA_SET(setPathLen(ctx, ext, value)),
           KA_GET(giveIf(ext.basicConstraints.hasPathLen != 0, answer, bytesOf(ext.basicConstraints.pathLen)))),
    KA_ROW(CERTEX_EXTKEY_CRITICAL, KA_SET(setFlag(ext.extKeyUsage.critical, value)), nullptr),
    KA_ROW(CERTEX_EXTKEY_USAGE, KA_SET(setExtKeyUsage(ctx, ext, value)),
           KA_GET(giveIf(ext.hasExtKeyUsage != 0, answer, bytesOf(ext.extKeyUsage.mask)))),
    KA_ROW(CERTEX_CRLDIST_CRITICAL, KA_SET(setFlag(ext.crlDistPoints.critical, value)), nullptr),
    KA_ROW(CERTEX_CRLDIST_FULLNAME, KA_SET(setDistributionPoint(ctx, ext, value)),
           KA_GET(giveDistributionPoint(ext, answer))),
    KA_ROW(CERTEX_AUTHORITYINFO_CRITICAL, KA_SET(setFlag(ext.authorityInfo.critical, value)), nullptr),
    KA_ROW(CERTEX_AUTHORITYINFO_OCSP, KA_SET(setAccess(ctx, ext, MethodOcsp, value)), nullptr),
    KA_ROW(CERTEX_AUTHORITYINFO_CAISSUERS, KA_SET(setAccess(ctx, ext, MethodCaIssuers, value)), nullptr),
    KA_ROW(CERTEX_EXTKEY_USAGE_OID_DEFINE, KA_SET(setDefinedUsage(ctx, ext, value)), nullptr),
    KA_ROW(CERT_SUBJECT_ALT_OTHERNAME_TYPEID,
           KA_SET(setOtherName(ctx, ext, ext.subjectAltName.names.otherNameType, value)), nullptr),
    KA_ROW(CERT_SUBJECT_ALT_OTHERNAME_VALUE,
           KA_SET(setOtherName(ctx, ext, ext.subjectAltName.names.otherNameValue, value)), nullptr),
    KA_ROW(CERT_SUBJECT_ALT_OTHERNAME_TYPE, KA_SET(setOtherNameKind(ctx, ext, value)), nullptr),
    KA_ALT_SLOT(CERT_SUBJECT_ALT_RFC822NAME, FormRfc822Name, rfc822Name),
    KA_ALT_SLOT(CERT_SUBJECT_ALT_DNSNAME, 2, dNSName),
    KA_ALT_SLOT(CERT_SUBJECT_ALT_URI, FormUri, uniformResourceIdentifier),
    KA_ALT_SLOT(CERT_SUBJECT_ALT_IPADDRESS, 7, iPAddress),
    KA_ROW(CERT_SUBJECT_ALT_CRITICAL, KA_SET(setFlag(ext.subjectAltName.critical, value)), nullptr),
};

} // namespace

Attributes<CertEncodeCtx> certAttributes() {
    return Rows;
}

} // namespace karil
