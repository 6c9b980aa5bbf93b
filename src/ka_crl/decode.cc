#include "ka_crl.h"

namespace karil {

namespace {

constexpr char NotEnd[] = "------>KACERT_CrlNotEndErr";

Status takeField(Level &fields, Element &out) {
    return takeOr(fields, out, KACERT_CrlNotEndErr, NotEnd);
}

Status readCrlTime(const Element &element, LocalClock &clock, CertTime &time) {
    time.isUtc = readTime(element, TagUtcTime, clock, time.utcValue) == KACERT_Ok ? 1 : 0;
    if (time.isUtc == 0)
        KA_STEP_AS("------>KAsn1_ReadGeneralizedTime",
                   readTime(element, TagGeneralizedTime, clock, time.generalizedValue));
    return KACERT_Ok;
}

// What a node of the entry list takes from the wire.
struct Entry {
    Element serialNumber;
    int32_t date = 0;
    bool hasReason = false;
    Element reason;
};

// crlEntryExtensions ::= SEQUENCE OF Extension, of which the reason is taken
Status readEntryExtensions(const Element &element, Entry &out) {
    Level extensions;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, extensions));
    while (!extensions.empty()) {
        Element oid;
        Level fields;
        KA_PASS(readTyped(extensions.take(), oid, fields));
        if (!equal(oid.bytes, OidReason))
            continue;
        out.hasReason = true;
        Element field = fields.take();
        if (field.tag == TagBoolean)
            field = fields.take();
        if (!field.present())
            return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadOctetString");
        Element value;
        KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(field, value));
        KA_STEP_AS("------>KAsn1_ReadEnumerated", readValue(value, out.reason));
    }
    return KACERT_Ok;
}

// SEQUENCE { userCertificate INTEGER, revocationDate UTCTime, crlEntryExtensions OPTIONAL }
Status readEntry(const Element &element, LocalClock &clock, Entry &out) {
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    if (fields.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadIntegerArray");
    KA_STEP_AS("------>KAsn1_ReadIntegerArray", readValue(fields.take(), out.serialNumber));
    if (fields.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadUtcTime");
    KA_STEP_AS("------>KAsn1_ReadUtcTime", readTime(fields.take(), TagUtcTime, clock, out.date));
    if (!fields.empty())
        KA_PASS(readEntryExtensions(fields.take(), out));
    return KACERT_Ok;
}

Status appendEntry(const Entry &entry, CrlDecodeCtx &ctx) {
    EntryPtr node(KA_CREATE(RevokedEntry));
    if (node == nullptr)
        return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
    KA_STEP_AS("------>KI_CopyAnybuf", store(node->serialNumber, entry.serialNumber));
    if (entry.hasReason)
        KA_STEP_AS("------>KI_CopyAnybuf", store(node->reason, entry.reason));
    node->revocationDate.utcValue = entry.date;
    node->hasEntryExtensions = node->hasReason = entry.hasReason ? 1 : 0;
    if (ctx.firstRevoked == nullptr)
        ctx.currentRevoked = node.get();
    append<&RevokedEntry::next>(ctx.firstRevoked, ctx.revokedLast, node.release());
    return KACERT_Ok;
}

// Some three years: revocation dates of a list lie in about that time.
constexpr size_t KeptDays = 1024;

// revokedCertificates ::= SEQUENCE OF SEQUENCE
Status decodeEntries(const Element &list, CrlDecodeCtx &ctx) {
    Level entries;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(list, entries));
    DayOffset days[KeptDays] = {};
    LocalClock clock = {false, days};
    while (!entries.empty()) {
        Entry entry;
        KA_PASS(readEntry(entries.take(), clock, entry));
        KA_PASS(appendEntry(entry, ctx));
    }
    return KACERT_Ok;
}

// The extensions that are kept. CRLNumber, BaseCRLNumber ::= INTEGER
struct KnownExtension {
    Bytes oid;
    uint8_t CrlExtensions::*flag;
    CrlNumberExtension CrlExtensions::*field;
    const char *words;
};
constexpr KnownExtension Number = {OidCrlNumber, &CrlExtensions::hasCrlNumber, &CrlExtensions::crlNumber,
                                   "------>KI_Crl_DecodeCRLNumber"};
constexpr KnownExtension Delta = {OidDeltaCrl, &CrlExtensions::hasDeltaCrl, &CrlExtensions::deltaCrl,
                                  "------>KI_Crl_DecodeDelCRLIdentifier"};

Status decodeNumber(const Element &extension, const KnownExtension &known, CrlExtensions &block) {
    CrlNumberExtension &field = block.*known.field;
    Opened opened;
    KA_PASS(openOid(extension, known.oid, opened));
    if (!opened.isOwn)
        return KACERT_Ok;
    block.*known.flag = 1;
    KA_PASS(openValue(opened, Flag::ByTag, field.critical, KACERT_CertNotEndErr));
    Element number;
    KA_STEP_AS("------>KAsn1_ReadIntegerArray", readValue(opened.value, number));
    KA_STEP_AS("------>KI_CopyAnybuf", store(field.value, number));
    return KACERT_Ok;
}

Status decodeCrlNumber(const Element &extension, CrlExtensions &block) {
    return decodeNumber(extension, Number, block);
}

Status decodeDeltaCrl(const Element &extension, CrlExtensions &block) {
    return decodeNumber(extension, Delta, block);
}

Status decodeExtension(const Element &extension, CrlExtensions &block) {
    Element oid;
    Level fields;
    KA_PASS(readTyped(extension, oid, fields));
    for (const KnownExtension *known : {&Number, &Delta})
        if (block.*known->flag == 0 && equal(oid.bytes, known->oid))
            KA_STEP_AS(known->words, decodeNumber(extension, *known, block));
    return KACERT_Ok;
}

// crlExtensions ::= [0] EXPLICIT SEQUENCE OF Extension, with whatever tag
Status decodeCrlExtensions(const Element &element, CrlExtensions &block) {
    Element content;
    KA_STEP_AS("------>KAsn1_ReadExplicit", readValue(element, content));
    if (!content.present())
        return KACERT_Ok;
    Level extensions;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(content, extensions));
    while (!extensions.empty())
        KA_PASS(decodeExtension(extensions.take(), block));
    return KACERT_Ok;
}

Status decodeDates(Level &fields, CrlDecodeCtx &ctx, Element &behind) {
    LocalClock clock;
    Element field;
    KA_PASS(takeField(fields, field));
    KA_PASS(readCrlTime(field, clock, ctx.thisUpdate));
    KA_PASS(takeField(fields, behind));
    if (behind.bytes.size() < 3 || (!behind.startsWith(TagUtcTime) && !behind.startsWith(TagGeneralizedTime)))
        return KACERT_Ok;
    KA_PASS(readCrlTime(behind, clock, ctx.nextUpdate));
    ctx.hasNextUpdate = 1;
    return takeField(fields, behind);
}

// TBSCertList ::= SEQUENCE { version, signature, issuer, thisUpdate, nextUpdate OPTIONAL,
//                            revokedCertificates OPTIONAL, crlExtensions [0] OPTIONAL }
Status decodeTbs(const Element &tbs, CrlDecodeCtx &ctx) {
    KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.tbs, tbs));
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(tbs, fields));
    Element field;
    KA_PASS(takeField(fields, field));
    uint32_t version = 0;
    KA_STEP_AS("------>KAsn1_ReadInteger", readInteger(field, version));
    ctx.version = static_cast<int32_t>(version);
    ctx.hasVersion = 1;
    KA_PASS(takeField(fields, field));
    KA_PASS(readAlgorithm(field, ctx.innerSignatureAlgorithm));
    KA_PASS(takeField(fields, field));
    KA_STEP_AS("------>KI_DecodeIssuerSubject", decodeName(field, ctx.issuer));
    KA_PASS(decodeDates(fields, ctx, field));
    if (field.startsWith(TagSequence)) {
        KA_STEP_AS("------>KI_CRL_DecodeRevokedCerts", decodeEntries(field, ctx));
        KA_STEP_AS("------>KI_CopyAnybuf", store(ctx.revokedDer, field));
        if (fields.empty())
            return KACERT_Ok;
        field = fields.take();
    }
    ctx.hasExtensions = 1;
    KA_STEP_AS("------>KI_Crl_DecodeExtensions", decodeCrlExtensions(field, ctx.extensions));
    return KACERT_Ok;
}

// CertificateList ::= SEQUENCE { tbsCertList, signatureAlgorithm, signatureValue BIT STRING }
Status decodeCrl(Bytes der, CrlDecodeCtx &ctx) {
    constexpr SignedFrame Frame = {KACERT_CrlNotEndErr, NotEnd, "------>KI_CRL_DecodeTBS", KACERT_CrlNotEndErr};
    return decodeSigned(der, ctx, Frame, decodeTbs);
}

} // namespace

} // namespace karil

using namespace karil;

int32_t KACert_DecodeCrl(CrlDecodeCtx *ctx, const uint8_t *der, uint32_t length) {
    return KA_FRAMED("KACert_DecodeCrl", decodeWhole(ctx, der, length, decodeCrl));
}

int32_t KI_CRL_DecodeTBS(CrlDecodeCtx *ctx, const Anybuf *tbs) {
    return KA_FRAMED("KI_CRL_DecodeTBS", decodeKept(tbs, ctx, decodeTbs));
}

int32_t KI_CRL_DecodeRevokedCerts(const Anybuf *list, CrlDecodeCtx *ctx) {
    return KA_FRAMED("KI_CRL_DecodeRevokedCerts", decodeKept(list, ctx, decodeEntries));
}

int32_t KI_Crl_DecodeExtensions(const Anybuf *extensions, CrlExtensions *block) {
    return KA_FRAMED("KI_Crl_DecodeExtensions", decodePart(extensions, block, decodeCrlExtensions));
}

int32_t KI_Crl_DecodeCRLNumber(const Anybuf *extension, CrlExtensions *block) {
    return KA_FRAMED("KI_Crl_DecodeCRLNumber", decodePart(extension, block, decodeCrlNumber));
}

int32_t KI_Crl_DecodeDelCRLIdentifier(const Anybuf *extension, CrlExtensions *block) {
    return KA_FRAMED("KI_Crl_DecodeDelCRLIdentifier", decodePart(extension, block, decodeDeltaCrl));
}
