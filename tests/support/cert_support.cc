#include "cert_support.h"

#include <algorithm>

namespace karil_test {

namespace {

struct Dump {
    std::string all;

    void add(const char *name, const std::string &value) {
        all += (all.empty() ? "" : ", ") + std::string(name) + '=' + value;
    }
    void put(const char *name, int64_t value) {
        if (value != 0) add(name, std::to_string(value));
    }
    void put(const char *name, const Anybuf &record) {
        if (record.data != nullptr) add(name, toHex(record));
    }
    void putTagged(const char *name, const Anybuf &record) {
        if (record.data != nullptr) add(name, toHex(record) + '#' + std::to_string(record.tag));
    }
    void put(const char *name, const NameRecord &head) {
        for (const NameRecord *node = head.next; node != nullptr; node = node->next)
            add(name, std::to_string(node->id) + ':' + toHex(node->oid) + ':' +
                          std::string(node->value.data, node->value.data + node->value.length) + '#' +
                          std::to_string(node->value.tag));
    }
    void put(const char *name, const CertTime &time) {
        if (time.isUtc != 0 || time.generalizedValue != 0 || time.utcValue != 0)
            add(name, std::to_string(time.isUtc) + ':' + std::to_string(time.generalizedValue) + ':' +
                          std::to_string(time.utcValue));
    }
    void put(const char *name, const GeneralNameRecord &names) {
        const Octets flags(names.present, names.present + 8);
        if (flags != Octets(8)) add(name, toHex(flags));
        put("kind", names.otherNameKind);
        put("type", names.otherNameType);
        put("other", names.otherNameValue);
        put("mail", names.rfc822Name);
        put("dns", names.dNSName);
        put("directory", names.directoryName);
        put("uri", names.uniformResourceIdentifier);
        put("ip", names.iPAddress);
    }
};

} // namespace

std::string dump(const CertExtensions &e) {
    Dump out;
    out.put("aki", e.hasAuthorityKeyId);
    out.put("aki.critical", e.authorityKeyId.critical);
    out.put("aki.hasId", e.authorityKeyId.hasKeyId);
    out.put("aki.id", e.authorityKeyId.keyId);
    out.put("ski", e.hasSubjectKeyId);
    out.put("ski.critical", e.subjectKeyId.critical);
    out.put("ski.id", e.subjectKeyId.keyId);
    out.put("ku", e.hasKeyUsage);
    out.put("ku.critical", e.keyUsage.critical);
    out.put("ku.bits", e.keyUsage.bits);
    out.put("ku.unused", e.keyUsage.bits.unusedBits);
    out.put("cp", e.hasCertPolicies);
    out.put("cp.critical", e.certPolicy.critical);
    if (e.certPolicy.policy != nullptr) {
        out.put("cp.oid", e.certPolicy.policy->oid);
        for (const auto *node = e.certPolicy.policy->cps; node != nullptr; node = node->next)
            out.put(node->isCps == 1 ? "cps" : "no cps", node->uri);
    }
    out.put("san", e.hasSubjectAltName);
    out.put("san.critical", e.subjectAltName.critical);
    out.put("san.names", e.subjectAltName.names);
    out.put("ian", e.hasIssuerAltName);
    out.put("ian.critical", e.issuerAltName.critical);
    out.put("ian.names", e.issuerAltName.names);
    out.put("bc", e.hasBasicConstraints);
    out.put("bc.critical", e.basicConstraints.critical);
    out.put("bc.ca", e.basicConstraints.isCa);
    out.put("bc.hasLen", e.basicConstraints.hasPathLen);
    out.put("bc.len", e.basicConstraints.pathLen);
    out.put("eku", e.hasExtKeyUsage);
    out.put("eku.critical", e.extKeyUsage.critical);
    out.put("eku.mask", e.extKeyUsage.mask);
    for (const auto *node = e.extKeyUsage.definedOids; node != nullptr; node = node->next)
        out.put("eku.oid", node->dotted);
    out.put("cdp", e.hasCrlDistPoints);
    out.put("cdp.critical", e.crlDistPoints.critical);
    for (const auto *node = e.crlDistPoints.first; node != nullptr; node = node->next) {
        out.add("point", std::to_string(node->hasDistributionPoint) + std::to_string(node->hasFullName));
        out.put("full", node->fullName);
    }
    out.put("aia", e.hasAuthorityInfo);
    out.put("aia.critical", e.authorityInfo.critical);
    for (const auto *node = e.authorityInfo.first; node != nullptr; node = node->next)
        out.add(node->method == 0x88 ? "ocsp" : node->method == 0x89 ? "issuers" : "unknown", toHex(node->location));
    out.put("private", e.hasPrivate);
    for (const auto *node = e.privateExtensions; node != nullptr; node = node->next)
        out.add("ext", std::to_string(node->id) + ':' + toHex(node->oid) + ':' + std::to_string(node->critical) + ':' +
                           toHex(node->value));
    return out.all;
}

std::string dump(const CertEncodeCtx &ctx) {
    Dump out;
    out.put("marked", ctx.hasExtensions);
    out.put("hasVersion", ctx.hasVersion);
    out.put("version", ctx.version);
    out.put("encoded", ctx.encoded.length);
    out.putTagged("serial", ctx.serialNumber);
    out.putTagged("inner", ctx.innerSignatureAlgorithm.oid);
    out.putTagged("outer", ctx.outerSignatureAlgorithm.oid);
    out.put("issuer", ctx.issuer);
    out.put("subject", ctx.subject);
    out.put("issuerDer", ctx.issuerDer);
    out.put("subjectDer", ctx.subjectDer);
    out.put("from", ctx.notBefore);
    out.put("to", ctx.notAfter);
    out.putTagged("algorithm", ctx.publicKeyAlgorithm.oid);
    out.putTagged("key", ctx.publicKey);
    out.putTagged("signature", ctx.signature);
    const std::string extensions = dump(ctx.extensions);
    return out.all + (extensions.empty() || out.all.empty() ? "" : ", ") + extensions;
}

Octets &CertParts::operator[](std::string_view name) {
    const std::map<std::string_view, Octets *> all = {
        {"version", &version},   {"serial", &serial},      {"inner", &inner}, {"issuer", &issuer},
        {"validity", &validity}, {"subject", &subject},    {"key", &key},     {"extensions", &extensions},
        {"outer", &outer},       {"signature", &signature}};
    const auto found = all.find(name);
    EXPECT_NE(found, all.end()) << "there is no part " << name;
    return found != all.end() ? *found->second : version;
}

CertPtr filledCert() {
    CertPtr ctx = newCert();
    fillCert(ctx);
    return ctx;
}

CertPtr decodedCert(const CertParts &parts) {
    CertPtr ctx = newCert();
    EXPECT_EQ(decode(ctx, parts.whole()), KACERT_Ok);
    return ctx;
}

int32_t take(const CertPtr &ctx, const Row &row, const std::string &step) {
    const size_t end = step.find('=');
    const std::string value = end != step.npos ? step.substr(end + 1) : "";
    if (step.rfind("int ", 0) == 0)
        return KACert_SetCertAttributeInt(ctx.get(), std::stoi(step.substr(4)), std::stoi(value));
    return setChar(ctx, std::stoi(step), row.parse(value));
}

int32_t takeAll(const CertPtr &ctx, const Row &row, std::string_view column) {
    int32_t status = KACERT_Ok;
    for (const std::string &step : row.list(column)) {
        EXPECT_EQ(status, KACERT_Ok) << "before " << step;
        status = take(ctx, row, step);
    }
    return status;
}

int32_t fixedSignature(const uint8_t *, uint32_t, uint8_t *output, uint32_t *outputLength, void *) {
    const Octets signature = hex("AA BB CC");
    if (output != nullptr) std::copy(signature.begin(), signature.end(), output);
    *outputLength = 3;
    return 0;
}

void fillCert(const CertPtr &ctx) {
    KACert_SetCertAttributeInt(ctx.get(), CERT_VERSION, 2);
    setChar(ctx, CERT_SERIALNUMBER, hex("05"));
    setChar(ctx, CERT_INNER_SIGNATUREALGORITHM, hex(Sha1WithRsa));
    setChar(ctx, CERT_OUTER_SIGNATUREALGORITHM, hex(Sha1WithRsa));
    setChar(ctx, CERT_PUBLICKEY_ALGORITHM, hex(RsaEncryption));
    setChar(ctx, CERT_SUBJECTPUBLICKEYINFO, hex("30 03 02 01"));
    setChar(ctx, CERT_ISSUER_COMMONNAME, "Root");
    setChar(ctx, CERT_SUBJECT_COMMONNAME, "Leaf");
    KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDFROM, 1577836800); // 2020-01-01 UTC
    KACert_SetCertAttributeInt(ctx.get(), CERT_VALIDTO, 1893456000);   // 2030-01-01 UTC
    KACert_SetCertSignFunc(ctx.get(), fixedSignature, nullptr, 0);
}

} // namespace karil_test
