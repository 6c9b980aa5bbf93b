// Private extensions of the national profile, and lists of digests.
#include "ka_cert.h"

#include "karil/cert_gb.h"

#include <string.h>

using namespace karil;

namespace {

// The area that the value of an extension must fit.
constexpr uint32_t LargestValue = 1024;

// The content octets of an object identifier of the library's own, from its text.
struct Oid {
    uint8_t octets[32];
    uint32_t length = 0;

    Bytes bytes() const { return {octets, length}; }
};

Status readOid(const char *text, Oid &out) {
    uint32_t length = 0;
    const auto size = static_cast<int32_t>(strlen(text));
    if (KACert_GetOIDValue(text, size, nullptr, &length) != KACERT_Ok || length > sizeof out.octets ||
        KACert_GetOIDValue(text, size, out.octets, &out.length) != KACERT_Ok)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KACert_GetOIDValue");
    return KACERT_Ok;
}

Status writeCharacters(const uint8_t *text, int32_t length, Anybuf **out) {
    if (KACert_EncodeChar(text, length, out) != KACERT_Ok)
        return KA_FAIL(KACERT_InvalidParamErr, "------>KACert_EncodeChar");
    return KACERT_Ok;
}

Status writeUtf8(const uint8_t *text, int32_t length, Anybuf **out) {
    KA_STEP(KI_EnCodeUtf8(text, length, out));
    return KACERT_Ok;
}

// The numbers of a person, by the tag that they get.
using Identify = KA_GBPRIV_IDENTIFY;
struct Number {
    int32_t Identify::*flag;
    uint8_t (Identify::*text)[512];
    int32_t Identify::*length;
    Status (*write)(const uint8_t *text, int32_t length, Anybuf **out);
    const char *badLength;
};
constexpr Number Numbers[] = {
    {&Identify::residenterCardFlag, &Identify::residenterCardNumber, &Identify::residenterCardNumberLen,
     writeCharacters, "------>residenterCardNumberLen is Err"},
    {&Identify::militaryOfficerCardFlag, &Identify::militaryOfficerCardNumber, &Identify::militaryOfficerCardNumberLen,
     writeUtf8, "------>militaryOfficerCardNumberLen is Err"},
    {&Identify::passportFlag, &Identify::passportNumber, &Identify::passportNumberLen, writeCharacters,
     "------>passportNumberLen is Err"},
};

// [tag] IMPLICIT of the number's string
Status writeNumber(const Identify &record, const Number &number, uint32_t tag, Anybuf **out) {
    const int32_t length = record.*number.length;
    if (length < 1)
        return KA_FAIL(KACERT_InvalidParamErr, number.badLength);
    if (static_cast<size_t>(length) > sizeof(record.*number.text))
        return KA_FAIL(KACERT_InvalidLengthErr, number.badLength);
    Chain string;
    KA_PASS(number.write(record.*number.text, length, string.slot()));
    KA_STEP(KAsn1_WriteImplicit(string.head(), tag, out));
    return KACERT_Ok;
}

// SET of the numbers that are flagged
Status writeIdentify(const void *data, int32_t length, Anybuf **out) {
    if (length != static_cast<int32_t>(sizeof(Identify)))
        return KA_FAIL(KACERT_InvalidParamErr, "------>privDataLen != sizeof(KA_GBPRIV_IDENTIFY)");
    const Identify &record = *static_cast<const Identify *>(data);
    if (record.residenterCardFlag == 0 && record.militaryOfficerCardFlag == 0 && record.passportFlag == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>tag all is 0");
    Chain numbers;
    uint32_t tag = 0;
    for (const Number &number : Numbers) {
        if (record.*number.flag == 1)
            KA_PASS(writeNumber(record, number, tag, numbers.slot()));
        ++tag;
    }
    KA_STEP(KAsn1_WriteSet(numbers.head(), out));
    return KACERT_Ok;
}

Status writeText(const void *data, int32_t length, Anybuf **out) {
    if (length < 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------>privDataLen is Err");
    return writeCharacters(static_cast<const uint8_t *>(data), length, out);
}

struct Type {
    int32_t type;
    const char *oid;
    Status (*write)(const void *data, int32_t length, Anybuf **out);
};
constexpr Type Types[] = {
    {CERT_GBPRIV_IDENTIFY, "1.2.86.11.7.1", writeIdentify}, {CERT_GBPRIV_7_2, "1.2.86.11.7.2", writeText},
    {CERT_GBPRIV_7_3, "1.2.86.11.7.3", writeText},          {CERT_GBPRIV_7_4, "1.2.86.11.7.4", writeText},
    {CERT_GBPRIV_7_5, "1.2.86.11.7.5", writeText},
};

const Type *findType(int32_t number) {
    for (const Type &type : Types)
        if (type.type == number)
            return &type;
    return nullptr;
}

struct ThumbAlgorithm {
    int32_t id;
    const char *oid;
    bool hasParameters;
};
constexpr ThumbAlgorithm ThumbAlgorithms[] = {{0, "1.2.840.113549.2.5", true}, {1, "1.3.14.3.2.26", false}};

// SEQUENCE { OBJECT IDENTIFIER, NULL where it has parameters }
Status writeThumbAlgorithm(const ThumbAlgorithm &algorithm, Anybuf **out) {
    Oid oid;
    KA_PASS(readOid(algorithm.oid, oid));
    if (algorithm.hasParameters)
        return writeAlgorithm(borrowOid(oid.bytes()), out);
    Chain identifier;
    KA_STEP_AS("------>KAsn1_WriteObjectId", writeOid(oid.bytes(), identifier.slot()));
    KA_STEP(KAsn1_WriteSequence(identifier.head(), out));
    return KACERT_Ok;
}

// SEQUENCE { algorithm, OCTET STRING value }
Status writeThumb(const KA_THUMBPRINT &thumb, const ThumbAlgorithm &algorithm, Anybuf **out) {
    if (thumb.valueLen > static_cast<int32_t>(sizeof thumb.value))
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    Chain fields;
    KA_PASS(writeThumbAlgorithm(algorithm, fields.slot()));
    const Status status = UnsignedChar2OCTET(thumb.value, thumb.valueLen, fields.slot());
    if (status != KACERT_Ok)
        return KA_FAIL(status == KACERT_InvalidParamErr ? status : KACERT_MemoryErr, "------>UnsignedChar2OCTET");
    KA_STEP(KAsn1_WriteSequence(fields.head(), out));
    return KACERT_Ok;
}

} // namespace

int32_t KACert_SetCertPrivate_GB(CertEncodeCtx *ctx, int32_t type, const void *data, int32_t length, int32_t critical) {
    KA_FRAME("KACert_SetCertPrivate_GB");
    if (ctx == nullptr || data == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>pCertEncodeCtx or privData  is NULL");
    const Type *known = findType(type);
    if (known == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "------>certAttributeType is Err");
    if (critical != 0 && critical != 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------>critical is Err");
    Chain value;
    KA_PASS(known->write(data, length, value.slot()));
    const Bytes whole = bytesOf(*value.head());
    if (whole.size() > LargestValue)
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    Oid oid;
    KA_PASS(readOid(known->oid, oid));
    KA_STEP(KACert_SetCertAttributePrivate(ctx, oid.octets, static_cast<int32_t>(oid.length),
                                           static_cast<uint8_t>(critical), whole.data(),
                                           static_cast<int32_t>(whole.size())));
    return KA_DONE();
}

int32_t EnCodeThums(const KA_THUMBPRINT *first, uint32_t recordSize, uint8_t *result, uint32_t *resultLength) {
    KA_FRAME("EnCodeThums");
    if (first == nullptr || recordSize != sizeof(KA_THUMBPRINT) || result == nullptr || resultLength == nullptr)
        return KA_FAIL(KACERT_InvalidParamErr, "----->input error");
    Chain thumbs;
    for (const KA_THUMBPRINT *thumb = first; thumb != nullptr; thumb = thumb->next)
        for (const ThumbAlgorithm &algorithm : ThumbAlgorithms)
            if (algorithm.id == thumb->algorithm)
                KA_PASS(writeThumb(*thumb, algorithm, thumbs.slot()));
    Chain list;
    KA_STEP(KAsn1_WriteSequence(thumbs.head(), list.slot()));
    handOut(*list.head(), result, resultLength);
    return KA_DONE();
}
