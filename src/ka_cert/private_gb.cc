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

// The numbers of a person, by the tag that they get.
using Identify = KA_GBPRIV_IDENTIFY;
struct Number {
    int32_t Identify::*flag;
    uint8_t (Identify::*text)[512];
    int32_t Identify::*length;
    bool isUtf8;
    const char *badLength;
};
constexpr Number Numbers[] = {
    {&Identify::residenterCardFlag, &Identify::residenterCardNumber, &Identify::residenterCardNumberLen, false,
     "------>residenterCardNumberLen is Err"},
    {&Identify::militaryOfficerCardFlag, &Identify::militaryOfficerCardNumber, &Identify::militaryOfficerCardNumberLen,
     true, "------>militaryOfficerCardNumberLen is Err"},
    {&Identify::passportFlag, &Identify::passportNumber, &Identify::passportNumberLen, false,
     "------>passportNumberLen is Err"},
};

// [number] IMPLICIT PrintableString or UTF8String
Status writeNumber(Writer &out, const Identify &record, const Number &number, uint8_t tag) {
    const int32_t length = record.*number.length;
    if (length < 1)
        return KA_FAIL(KACERT_InvalidParamErr, number.badLength);
    if (static_cast<size_t>(length) > sizeof(record.*number.text))
        return KA_FAIL(KACERT_InvalidLengthErr, number.badLength);
    const Bytes text(record.*number.text, static_cast<size_t>(length));
    Converted utf8;
    if (number.isUtf8)
        KA_STEP_AS("------>KI_EnCodeUtf8", utf8.from(KI_Chinese2UTF8String, text));
    out.element(tag, number.isUtf8 ? utf8.bytes() : text);
    return KACERT_Ok;
}

// SET of the numbers that are flagged
Status writeIdentify(Writer &out, const void *data, int32_t length) {
    int32_t flags[3] = {1}; // the record starts with them
    if (length >= static_cast<int32_t>(sizeof flags))
        memcpy(flags, data, sizeof flags);
    if (flags[0] == 0 && flags[1] == 0 && flags[2] == 0)
        return KA_FAIL(KACERT_InvalidParamErr, "------>tag all is 0");
    if (length != static_cast<int32_t>(sizeof(Identify)))
        return KA_FAIL(KACERT_InvalidParamErr, "------>privDataLen != sizeof(KA_GBPRIV_IDENTIFY)");
    const Identify &record = *static_cast<const Identify *>(data);
    const Construct numbers(out, TagSet);
    uint8_t tag = 0x80;
    for (const Number &number : Numbers) {
        if (record.*number.flag == 1)
            KA_PASS(writeNumber(out, record, number, tag));
        ++tag;
    }
    return KACERT_Ok;
}

Status writeText(Writer &out, const void *data, int32_t length) {
    if (length < 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------>privDataLen is Err");
    out.element(TagPrintableString, {static_cast<const uint8_t *>(data), static_cast<size_t>(length)});
    return out.status() == KACERT_Ok ? KACERT_Ok : KA_FAIL(KACERT_InvalidParamErr, "------>KACert_EncodeChar");
}

struct Type {
    int32_t type;
    const char *oid;
    Status (*write)(Writer &out, const void *data, int32_t length);
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

// SEQUENCE { OBJECT IDENTIFIER, NULL if it has parameters }
Status writeThumbAlgorithm(Writer &out, const ThumbAlgorithm &algorithm) {
    Oid oid;
    KA_PASS(readOid(algorithm.oid, oid));
    const Construct identifier(out, TagSequence);
    out.objectId(oid.bytes());
    if (algorithm.hasParameters)
        out.null();
    return KACERT_Ok;
}

// SEQUENCE { algorithm, OCTET STRING value }
Status writeThumb(Writer &out, const KA_THUMBPRINT &thumb, const ThumbAlgorithm &algorithm) {
    if (thumb.valueLen > static_cast<int32_t>(sizeof thumb.value))
        return KA_FAIL(KACERT_InvalidLengthErr, "------>KACERT_InvalidLengthErr");
    const Construct sequence(out, TagSequence);
    KA_PASS(writeThumbAlgorithm(out, algorithm));
    if (thumb.valueLen < 1)
        return KA_FAIL(KACERT_InvalidParamErr, "------>UnsignedChar2OCTET");
    out.octetString({thumb.value, static_cast<size_t>(thumb.valueLen)});
    return KACERT_Ok;
}

// SEQUENCE OF the digests of the known algorithms
Status writeThumbs(Writer &out, const KA_THUMBPRINT *first) {
    const Construct list(out, TagSequence);
    for (const KA_THUMBPRINT *thumb = first; thumb != nullptr; thumb = thumb->next)
        for (const ThumbAlgorithm &algorithm : ThumbAlgorithms)
            if (algorithm.id == thumb->algorithm)
                KA_PASS(writeThumb(out, *thumb, algorithm));
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
    Writer value;
    KA_PASS(known->write(value, data, length));
    KA_PASS(value.status());
    const Bytes whole = value.since(0);
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
    Writer list;
    KA_PASS(writeThumbs(list, first));
    KA_PASS(handOut(list, result, resultLength));
    return KA_DONE();
}
