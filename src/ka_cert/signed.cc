// What certificates, CRLs and requests write alike: names, keys, the signed frame around them.
#include "ka_cert.h"

#include <string.h>

namespace karil {

Status writeName(const NameRecord &head, const Anybuf &der, Anybuf **out) {
    const bool hasDer = der.data != nullptr && der.length > 0;
    if (hasDer == (head.next != nullptr))
        return KA_FAIL(KACERT_InvalidParamErr, "------>KI_EncodeIssuerSuject");
    if (hasDer)
        KA_STEP_AS("------>KI_CopyAnybuf", newNode(elementOf(der), out));
    else
        KA_STEP(KI_EncodeIssuerSuject(&head, out));
    return KACERT_Ok;
}

Status writePublicKey(const AlgorithmRecord &algorithm, const Anybuf &key, Anybuf **out) {
    Chain fields;
    KA_PASS(writeAlgorithm(algorithm, fields.slot()));
    KA_STEP(KAsn1_WriteBitString(&key, fields.slot()));
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

Status writeSigned(Chain &parts, const AlgorithmRecord &algorithm, const Anybuf &signature, Anybuf **out) {
    KA_PASS(writeAlgorithm(algorithm, parts.slot()));
    KA_STEP(KAsn1_WriteBitString(&signature, parts.slot()));
    KA_STEP(KAsn1_WriteSequence(parts.head(), out));
    return KACERT_Ok;
}

// A signature of this size or more is refused before anything is allocated.
constexpr uint32_t SignatureLimit = 10240;

Status signBySize(KAHookFunc hook, const Anybuf &key, const Anybuf &tbs, Signature &out) {
    if (hook == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KACertSignFunc");
    uint32_t size = 0;
    KA_STEP_AS("------>KACertSignFunc", hook(tbs.data, tbs.length, nullptr, &size, key.data));
    if (size >= SignatureLimit)
        return KA_FAIL(KACERT_InvalidSignatureLenErr, "------>KACERT_InvalidSignatureLenErr");
    out.octets = KA_BLOCK(size);
    if (out.octets == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    out.length = size;
    KA_STEP_AS("------>KACertSignFunc", hook(tbs.data, tbs.length, out.octets.get(), &out.length, key.data));
    if (out.length > size)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACertSignFunc");
    return KACERT_Ok;
}

void handOut(const Anybuf &source, uint8_t *result, uint32_t *resultLength) {
    *resultLength = source.length;
    if (result != nullptr && source.length > 0)
        memcpy(result, source.data, source.length);
}

} // namespace karil
