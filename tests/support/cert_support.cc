#include "cert_support.h"

#include <algorithm>

namespace karil_test {

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
