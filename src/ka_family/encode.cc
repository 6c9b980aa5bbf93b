#include "encode.h"

namespace karil {

void writeAlgorithm(Writer &out, Bytes oid) {
    const Construct sequence(out, TagSequence);
    out.objectId(oid);
    out.null();
}

// What failed before is not the failure of a name, a date or an extension.
Status writeName(Writer &out, const NameRecord &head, const Anybuf &der) {
    KA_PASS(out.status());
    const bool hasDer = der.data != nullptr && der.length > 0;
    if (hasDer == (head.next != nullptr))
        return KA_FAIL(KACERT_InvalidParamErr, "------>KI_EncodeIssuerSuject");
    if (hasDer)
        out.octets(bytesOf(der));
    else
        KA_STEP_AS("------>KI_EncodeIssuerSuject", encodeName(out, head));
    return KACERT_Ok;
}

void writePublicKey(Writer &out, const AlgorithmRecord &algorithm, const Anybuf &key) {
    const Construct sequence(out, TagSequence);
    writeAlgorithm(out, algorithm);
    out.bitString(bytesOf(key), key.unusedBits);
}

Status writeTime(Writer &out, bool isUtc, int32_t seconds, LocalClock &clock) {
    KA_PASS(out.status());
    uint8_t text[TimeLength];
    KA_STEP_AS(isUtc ? "------>KAsn1_WriteUtcTime" : "------>KAsn1_WriteGeneralizedTime",
               timeText(seconds, clock, text));
    out.element(isUtc ? TagUtcTime : TagGeneralizedTime, text);
    return KACERT_Ok;
}

void writeExtensionHead(Writer &out, Bytes oid, uint8_t critical) {
    out.objectId(oid);
    if (critical != 0)
        out.boolean(true);
}

Status writeAuthorityKeyId(Writer &out, const AuthorityKeyIdExtension &field) {
    return writeExtension(out, OidAuthorityKeyId, field.critical, [&] {
        const Construct identifier(out, TagSequence);
        out.element(0x80, bytesOf(field.keyId));
        return out.status();
    });
}

void writeFullName(Writer &out, const Anybuf &uri) {
    const Construct point(out, 0xA0);
    const Construct fullName(out, 0xA0);
    out.element(0x80 | FormUri, bytesOf(uri));
}

} // namespace karil
