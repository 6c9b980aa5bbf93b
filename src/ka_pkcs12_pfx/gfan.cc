// Two certificates in a SafeContents and a plain KeyBag beside it.
#include "karil/pfx_foreign.h"

#include "ka_pkcs12_code.h"

namespace karil {

namespace {

// The certificate of the next bag. The type of the bag is not looked at. A bag that is not there is one that cannot be
// decoded.
Status takeCertificate(Level &bags, Bytes &out) {
    Element bag;
    KA_PASS(takeField(bags, bag, KACERT_InvalidParamErr, "------------>KA_PKCS12_DecodeSafeBag"));
    SafeBagParts parts;
    KA_STEP_AS("------------>KA_PKCS12_DecodeSafeBag", readSafeBag(bag, parts));
    CertBagParts certificate;
    KA_STEP_AS("------------>KA_PKCS12_ParseCertBag", readCertBag(parts.content, certificate));
    out = certificate.value.bytes;
    return KACERT_Ok;
}

Status readKey(const Element &bag, Bytes &out) {
    KeyBagParts parts;
    KA_STEP_AS("------------>KA_PKCS12_ParseKeyBag", readKeyBag(bag, parts));
    out = parts.key.bytes;
    return KACERT_Ok;
}

struct Output {
    uint8_t *octets;
    uint32_t *length;
};

Status readBundle(const uint8_t *safeContents, int32_t safeContentsLength, const uint8_t *keyBag, int32_t keyBagLength,
                  const Output (&outputs)[3]) {
    KA_PASS(checkArguments({safeContents}));
    KA_PASS(checkPointers({keyBag}));
    for (const Output &output : outputs)
        KA_PASS(checkPointers({output.octets, output.length}));
    Level bags;
    Bytes values[3];
    KA_STEP_AS("------------>KA_PKCS12_DecodeSafeContent",
               readSafeContents(exactElement(safeContents, safeContentsLength), bags));
    KA_PASS(takeCertificate(bags, values[2]));
    KA_PASS(takeCertificate(bags, values[1]));
    KA_PASS(readKey(exactElement(keyBag, keyBagLength), values[0]));
    for (size_t i = 0; i < 3; ++i) {
        *outputs[i].length = static_cast<uint32_t>(values[i].size());
        if (!values[i].empty())
            memcpy(outputs[i].octets, values[i].data(), values[i].size());
    }
    return KACERT_Ok;
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KA_PKCS12_Decode_GFAN(const uint8_t *safeContents, int32_t safeContentsLength, const uint8_t *keyBag,
                              int32_t keyBagLength, uint8_t *key, uint32_t *keyLength, uint8_t *second,
                              uint32_t *secondLength, uint8_t *first, uint32_t *firstLength) {
    return KA_FRAMED("KA_PKCS12_Decode_GFAN",
                     readBundle(safeContents, safeContentsLength, keyBag, keyBagLength,
                                {{key, keyLength}, {second, secondLength}, {first, firstLength}}));
}
