#include "ka_crl.h"

#include <algorithm>
#include <bit>

namespace karil {

namespace {

constexpr char NotEnd[] = "------>KACERT_CrlNotEndErr";

Status takeField(Level &fields, Element &out) {
    return takeField(fields, out, KACERT_CrlNotEndErr, NotEnd);
}

void noteReason(RevokedEntry &entry) {
    entry.hasReason = 1;
    entry.hasEntryExtensions = 1;
}

// crlEntryExtensions ::= SEQUENCE OF Extension, of which the reason is taken
Status readEntryExtensions(const Element &element, RevokedEntry &entry) {
    Level extensions;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, extensions));
    while (!extensions.empty()) {
        Element oid;
        Level fields;
        KA_PASS(readTyped(extensions.take(), oid, fields));
        if (!equal(oid.bytes, OidReason))
            continue;
        noteReason(entry);
        Element field = fields.take();
        if (field.tag == TagBoolean)
            field = fields.take();
        if (!field.present())
            return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadOctetString");
        Element value;
        KA_STEP_AS("------>KAsn1_ReadOctetString", readValue(field, value));
        Element reason;
        KA_STEP_AS("------>KAsn1_ReadEnumerated", readValue(value, reason));
        KA_STEP_AS("------>KI_CopyAnybuf", store(entry.reason, reason));
    }
    return KACERT_Ok;
}

// The extensions of an entry that has a reason alone, up to the reason's one octet.
constexpr uint8_t ReasonHead[] = {TagSequence, 12,   TagSequence,    10, TagObjectId,   3, 0x55,
                                  0x1D,        0x15, TagOctetString, 3,  TagEnumerated, 1};

// The usual SEQUENCE { number, date } or SEQUENCE { number, date, SEQUENCE { reason } }, with lengths of one octet,
// whose levels need not be opened one by one. False for all others, which readEntry() reads.
struct ShortEntry {
    Element serialNumber;
    Element date;
    Element reason; // opened
};
bool takeShortEntry(const Element &element, ShortEntry &out) {
    Bytes rest = element.bytes;
    const Element whole = takeShort(rest);
    if (!whole.startsWith(TagSequence) || !rest.empty())
        return false;
    rest = whole.bytes.subspan(2);
    out.serialNumber = takeShort(rest);
    out.date = takeShort(rest);
    if (!out.serialNumber.startsWith(TagInteger) || !out.date.startsWith(TagUtcTime))
        return false;
    out.serialNumber.isKept = element.isKept;
    if (rest.empty())
        return true;
    out.reason = {TagEnumerated, rest.last(1), element.isKept};
    return equal(rest.first(rest.size() - 1), ReasonHead);
}

Status readNumberAndDate(const Element &number, const Element &date, LocalClock &clock, RevokedEntry &entry) {
    Element serialNumber;
    KA_STEP_AS("------>KAsn1_ReadIntegerArray", readValue(number, serialNumber));
    KA_STEP_AS("------>KI_CopyAnybuf", store(entry.serialNumber, serialNumber));
    if (!date.present())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadUtcTime");
    KA_STEP_AS("------>KAsn1_ReadUtcTime", readTime(date, TagUtcTime, clock, entry.revocationDate.utcValue));
    return KACERT_Ok;
}

// SEQUENCE { userCertificate INTEGER, revocationDate UTCTime, crlEntryExtensions OPTIONAL }
Status readEntry(const Element &element, LocalClock &clock, RevokedEntry &entry) {
    if (ShortEntry parts; takeShortEntry(element, parts)) {
        KA_PASS(readNumberAndDate(parts.serialNumber, parts.date, clock, entry));
        if (!parts.reason.present())
            return KACERT_Ok;
        noteReason(entry);
        KA_STEP_AS("------>KI_CopyAnybuf", store(entry.reason, parts.reason));
        return KACERT_Ok;
    }
    Level fields;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(element, fields));
    if (fields.empty())
        return KA_FAIL(KACERT_InvalidParamErr, "------>KAsn1_ReadIntegerArray");
    const Element number = fields.take();
    KA_PASS(readNumberAndDate(number, fields.take(), clock, entry));
    return fields.empty() ? KACERT_Ok : readEntryExtensions(fields.take(), entry);
}

// Revocation dates: those of small lists are few, and those of large ones lie within some twenty years.
constexpr size_t KeptDates = 2048;
size_t datesFor(size_t listSize) {
    constexpr size_t usualEntry = 32;
    return std::min(KeptDates, std::bit_ceil(listSize / usualEntry + 1));
}

// revokedCertificates ::= SEQUENCE OF SEQUENCE
// `clock` is a copy, which keeps days of its own.
Status readEntries(const Element &list, LocalClock clock, CrlDecodeCtx &ctx) {
    Level entries;
    KA_STEP_AS("------>KAsn1_ReadSequence", readSequence(list, entries));
    DaysOffset kept[KeptDates];
    clock.kept = {kept, datesFor(entries.rest.size())};
    std::fill(clock.kept.begin(), clock.kept.end(), DaysOffset{});
    EntryBlock block;
    while (!entries.empty()) {
        const size_t listSize = entries.rest.size();
        const Element element = entries.take();
        // What is read of an entry stays, also if the rest of it cannot be read.
        RevokedEntry *entry = takeEntry(block, listSize / element.bytes.size(), ctx.kept);
        if (entry == nullptr)
            return KA_FAIL(KACERT_MemoryErr, "------>KAPR_Malloc");
        if (ctx.firstRevoked == nullptr)
            ctx.currentRevoked = entry;
        append<&RevokedEntry::next>(ctx.firstRevoked, ctx.revokedLast, entry);
        KA_PASS(readEntry(element, clock, *entry));
    }
    return KACERT_Ok;
}

Status decodeEntries(const Element &list, CrlDecodeCtx &ctx) {
    return readEntries(list, {}, ctx);
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
    ExtensionParts parts;
    KA_PASS(readExtensionOid(extension, known.oid, parts));
    if (!parts.isOwn)
        return KACERT_Ok;
    block.*known.flag = 1;
    KA_PASS(readExtensionValue(parts, CriticalFlag::ByTag, field.critical, KACERT_CertNotEndErr));
    Element number;
    KA_STEP_AS("------>KAsn1_ReadIntegerArray", readValue(parts.value, number));
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
    Level extensions;
    KA_PASS(openExtensions(element, extensions));
    while (!extensions.empty())
        KA_PASS(decodeExtension(extensions.take(), block));
    return KACERT_Ok;
}

Status decodeDates(Level &fields, LocalClock &clock, CrlDecodeCtx &ctx, Element &behind) {
    Element field;
    KA_PASS(takeField(fields, field));
    KA_PASS(readEitherTime(field, TagUtcTime, clock, ctx.thisUpdate));
    KA_PASS(takeField(fields, behind));
    if (behind.bytes.size() < 3 || (!behind.startsWith(TagUtcTime) && !behind.startsWith(TagGeneralizedTime)))
        return KACERT_Ok;
    KA_PASS(readEitherTime(behind, TagUtcTime, clock, ctx.nextUpdate));
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
    LocalClock clock;
    KA_PASS(decodeDates(fields, clock, ctx, field));
    if (field.startsWith(TagSequence)) {
        KA_STEP_AS("------>KI_CRL_DecodeRevokedCerts", readEntries(field, clock, ctx));
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
    Level parts;
    KA_PASS(openObject(der, ctx.kept, ctx.encoded, parts, KACERT_CrlNotEndErr));
    Element part;
    KA_PASS(takeField(parts, part));
    KA_STEP_AS("------>KI_CRL_DecodeTBS", decodeTbs(part, ctx));
    KA_PASS(takeField(parts, part));
    KA_PASS(readAlgorithm(part, ctx.outerSignatureAlgorithm));
    KA_PASS(takeField(parts, part));
    return readBits(part, ctx.signature);
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
