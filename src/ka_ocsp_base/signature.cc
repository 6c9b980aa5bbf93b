#include "ka_ocsp_base.h"

namespace karil {

Status addCertificate(OcspSignature &signature, Bytes certificate) {
    KA_PASS(addElement(signature.certs, signature.certMarks, {shortTag(certificate[0]), certificate}));
    signature.hasCerts = 1;
    return KACERT_Ok;
}

Status answerCertificates(const OcspSignature &signature, const Answer &answer) {
    Writer list;
    writeElements(list, signature.certs);
    KA_STEP_AS("------------>KAsn1_WriteSequence", list.status());
    return answerOctets(answer, list.since(0));
}

Status writeSignatureFields(Writer &out, OcspSignature &signature, Bytes value) {
    KA_PASS(setOctets(signature.value, value));
    out.objectId(bytesOf(signature.algorithm.oid));
    out.octetString(bytesOf(signature.value));
    if (signature.certs.next != nullptr) {
        const Construct certificates(out, 0xA0);
        writeElements(out, signature.certs);
    }
    return out.status();
}

Status readSignatureFields(Level &fields, OcspSignature &signature) {
    Element field;
    KA_PASS(takeItem(fields, field, "------------>The signature algorithm is null"));
    KA_PASS(readOid(field, signature.algorithm));
    KA_PASS(takeItem(fields, field));
    KA_PASS(readOctets(field, signature.value));
    if (fields.empty())
        return KACERT_Ok;
    field = fields.take();
    if (field.tag != 0xA0)
        return KACERT_Ok;
    Element list;
    KA_PASS(readOpened(field, list));
    KA_PASS(readElements(list, signature.certs, signature.certMarks));
    signature.hasCerts = 1;
    return KACERT_Ok;
}

Status writeSignature(Writer &out, OcspSignature &signature, Bytes octets) {
    if (signature.signFunc == nullptr || signature.algorithm.oid.length == 0)
        return refuseItem();
    HookArea area;
    KA_PASS(callWithCopy(hookOf(signature.signFunc, signature.signParameter), octets, SignatureBound, area,
                         "------------>The Function is error"));
    const uint32_t start = out.size();
    {
        const Construct sequence(out, TagSequence);
        KA_PASS(writeSignatureFields(out, signature, area.octets()));
    }
    KA_PASS(out.status());
    KA_STEP_AS("------------>KI_CopyAnybuf", store(signature.encoded, {NormalSequence, out.since(start)}));
    return KACERT_Ok;
}

void clearSignature(OcspSignature &signature) {
    for (Anybuf *field : {&signature.algorithm.oid, &signature.parameter, &signature.value, &signature.encoded})
        freeData(*field);
    clearSecret(signature.signParameter);
    freeElements(signature.certs);
}

} // namespace karil

using namespace karil;

int32_t KI_EncodeOCSPSignature(OcspSignature *signature, const Anybuf *octets) {
    KA_FRAME("KI_EncodeOCSPSignature");
    KA_PASS(checkSource(signature, octets));
    Writer element;
    KA_PASS(writeSignature(element, *signature, bytesOf(*octets)));
    return KA_DONE();
}
