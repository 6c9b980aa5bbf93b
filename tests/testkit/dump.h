// A certificate's context as text.
#pragma once

#include "testkit.h"

namespace karil_test {

// All that is not 0, null or as it is in a fresh context: "name=value, name=octets#tag".
struct Dump {
    std::string all;

    explicit Dump(const CertExtensions &e) { add(e); }
    explicit Dump(const CertEncodeCtx &ctx) {
        add("marked", ctx.hasExtensions).add("hasVersion", ctx.hasVersion).add("version", ctx.version);
        add("encoded", ctx.encoded.length).tagged("serial", ctx.serialNumber);
        tagged("inner", ctx.innerSignatureAlgorithm.oid).tagged("outer", ctx.outerSignatureAlgorithm.oid);
        add("issuer", ctx.issuer).add("subject", ctx.subject);
        add("issuerDer", ctx.issuerDer).add("subjectDer", ctx.subjectDer);
        add("from", ctx.notBefore).add("to", ctx.notAfter);
        tagged("algorithm", ctx.publicKeyAlgorithm.oid).tagged("key", ctx.publicKey);
        tagged("signature", ctx.signature).add(ctx.extensions);
    }

    Dump &put(const std::string &name, const std::string &value) {
        all += (all.empty() ? "" : ", ") + name + '=' + value;
        return *this;
    }
    Dump &add(const char *name, int64_t number) { return number != 0 ? put(name, std::to_string(number)) : *this; }
    Dump &add(const char *name, const Anybuf &record) {
        return record.data != nullptr ? put(name, toHex(record)) : *this;
    }
    Dump &tagged(const char *name, const Anybuf &record) {
        return record.data != nullptr ? put(name, toHex(record) + '#' + std::to_string(record.tag)) : *this;
    }
    Dump &add(const char *name, const NameRecord &head) {
        for (const NameRecord *node = head.next; node != nullptr; node = node->next)
            put(name, std::to_string(node->id) + ':' + toHex(node->oid) + ':' +
                          std::string(node->value.data, node->value.data + node->value.length) + '#' +
                          std::to_string(node->value.tag));
        return *this;
    }
    Dump &add(const char *name, const CertTime &time) {
        const std::string value = std::to_string(time.isUtc) + ':' + std::to_string(time.generalizedValue) + ':' +
                                  std::to_string(time.utcValue);
        return value != "0:0:0" ? put(name, value) : *this;
    }
    Dump &add(const char *name, const GeneralNameRecord &n) {
        const Octets flags(n.present, n.present + 8);
        if (flags != Octets(8))
            put(name, toHex(flags));
        add("kind", n.otherNameKind).add("type", n.otherNameType).add("other", n.otherNameValue);
        add("mail", n.rfc822Name).add("dns", n.dNSName).add("directory", n.directoryName);
        return add("uri", n.uniformResourceIdentifier).add("ip", n.iPAddress);
    }
    void add(const CertExtensions &e) {
        add("aki", e.hasAuthorityKeyId).add("aki.critical", e.authorityKeyId.critical);
        add("aki.hasId", e.authorityKeyId.hasKeyId).add("aki.id", e.authorityKeyId.keyId);
        add("ski", e.hasSubjectKeyId).add("ski.critical", e.subjectKeyId.critical).add("ski.id", e.subjectKeyId.keyId);
        add("ku", e.hasKeyUsage).add("ku.critical", e.keyUsage.critical).add("ku.bits", e.keyUsage.bits);
        add("ku.unused", e.keyUsage.bits.unusedBits);
        add("cp", e.hasCertPolicies).add("cp.critical", e.certPolicy.critical);
        if (e.certPolicy.policy != nullptr)
            add("cp.oid", e.certPolicy.policy->oid);
        for (const auto *node = e.certPolicy.policy != nullptr ? e.certPolicy.policy->cps : nullptr; node != nullptr;
             node = node->next)
            add(node->isCps == 1 ? "cps" : "no cps", node->uri);
        add("san", e.hasSubjectAltName).add("san.critical", e.subjectAltName.critical);
        add("san.names", e.subjectAltName.names);
        add("ian", e.hasIssuerAltName).add("ian.critical", e.issuerAltName.critical);
        add("ian.names", e.issuerAltName.names);
        const BasicConstraintsExtension &bc = e.basicConstraints;
        add("bc", e.hasBasicConstraints).add("bc.critical", bc.critical).add("bc.ca", bc.isCa);
        add("bc.hasLen", bc.hasPathLen).add("bc.len", bc.pathLen);
        add("eku", e.hasExtKeyUsage).add("eku.critical", e.extKeyUsage.critical).add("eku.mask", e.extKeyUsage.mask);
        for (const auto *node = e.extKeyUsage.definedOids; node != nullptr; node = node->next)
            add("eku.oid", node->dotted);
        add("cdp", e.hasCrlDistPoints).add("cdp.critical", e.crlDistPoints.critical);
        for (const auto *node = e.crlDistPoints.first; node != nullptr; node = node->next)
            put("point", std::to_string(node->hasDistributionPoint) + std::to_string(node->hasFullName))
                .add("full", node->fullName);
        add("aia", e.hasAuthorityInfo).add("aia.critical", e.authorityInfo.critical);
        for (const auto *node = e.authorityInfo.first; node != nullptr; node = node->next)
            put(node->method == 0x88 ? "ocsp" : node->method == 0x89 ? "issuers" : "unknown", toHex(node->location));
        add("private", e.hasPrivate);
        for (const auto *node = e.privateExtensions; node != nullptr; node = node->next)
            put("ext", std::to_string(node->id) + ':' + toHex(node->oid) + ':' + std::to_string(node->critical) + ':' +
                           toHex(node->value));
    }
};
template <class T> std::string dump(const T &object) {
    return Dump(object).all;
}

} // namespace karil_test
