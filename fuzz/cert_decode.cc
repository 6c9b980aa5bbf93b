// A certificate is decoded and asked for everything; its names are written again.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

// The ids lie in these two ranges, the first and last included.
constexpr int32_t IdRanges[][2] = {{-1, 156}, {500, 513}};

// Units are joined by ",OU=", empty ones left out.
size_t sizeOfUnits(const NameRecord &head) {
    size_t size = 0;
    size_t count = 0;
    for (const NameRecord *record = head.next; record != nullptr; record = record->next)
        if (record->id == KA_NAME_ORGANIZATIONALUNIT && record->value.length > 0) {
            size += record->value.length;
            ++count;
        }
    return size + (count > 1 ? 4 * (count - 1) : 0);
}

// The size of an answer that has no length-only form.
size_t sizeOfAnswer(const CertDecodeCtx &ctx, int32_t id) {
    switch (id) {
    case CERT_ISSUER_ORGANIZATIONALUNITNAME:
        return sizeOfUnits(ctx.issuer);
    case CERT_SUBJECT_ORGANIZATIONALUNITNAME:
        return sizeOfUnits(ctx.subject);
    case CERT_SUBJECT_ALT_COMMONNAME:
        return ctx.extensions.subjectAltName.names.rfc822Name.length;
    default:
        must(false, "every other id has a length-only form");
        return 0;
    }
}

Octets ask(CertDecodeCtx &ctx, int32_t id) {
    uint32_t size = 0;
    const int32_t status = KACert_GetCertAttributeChar(&ctx, id, nullptr, &size);
    must(status == KACERT_Ok || size == 0, "a refused question has no length");
    if (status == KACERT_AttributeNotSupportErr)
        return {};
    const Area answer(status == KACERT_Ok ? size : sizeOfAnswer(ctx, id));
    uint32_t given = 0;
    must(KACert_GetCertAttributeChar(&ctx, id, answer.data(), &given) == KACERT_Ok, "a known id is answered");
    must(given == answer.bytes().size(), "asking and answering agree");
    return {answer.bytes().begin(), answer.bytes().end()};
}

void askDistributionPoints(CertDecodeCtx &ctx, size_t inputSize) {
    size_t whole = 0;
    for (;;) {
        const Octets element = ask(ctx, CERTEX_CRLDIST_FULLNAME);
        if (element.empty())
            break;
        whole += element.size();
    }
    must(whole < inputSize, "distribution points come out of the input");
}

void askNumbers(const CertDecodeCtx &ctx) {
    for (int32_t id = 0; id < 64; ++id) {
        int32_t value = 0;
        const bool isKnown = id == CERT_VERSION || id == CERT_VALIDFROM || id == CERT_VALIDTO;
        must(KACert_GetCertAttributeInt(&ctx, id, &value) == (isKnown ? KACERT_Ok : KACERT_AttributeNotSupportErr),
             "the three numbers are answered");
        must(id == CERT_VERSION || value >= 0, "a time is not before 1970");
    }
}

void askPrivate(const CertDecodeCtx &ctx) {
    uint32_t count = 0;
    must(KACert_GetCertAttributePrivate(&ctx, &count, nullptr, nullptr, nullptr, nullptr, nullptr) == KACERT_Ok,
         "extensions are counted");
    for (uint32_t index = 1; index <= count; ++index) {
        uint32_t number = index;
        uint32_t sizes[2] = {};
        uint32_t critical = 0;
        must(KACert_GetCertAttributePrivate(&ctx, &number, nullptr, &sizes[0], &critical, nullptr, &sizes[1]) ==
                     KACERT_Ok &&
                 number == index,
             "an extension's sizes are answered");
        const Area oid(sizes[0]);
        const Area value(sizes[1]);
        must(KACert_GetCertAttributePrivate(&ctx, &number, oid.data(), &sizes[0], &critical, value.data(), &sizes[1]) ==
                 KACERT_Ok,
             "an extension is answered");
        must(sizes[0] == oid.bytes().size() && sizes[1] == value.bytes().size(), "asking and answering agree");
    }
    uint32_t behind = count + 1;
    must(KACert_GetCertAttributePrivate(&ctx, &behind, nullptr, nullptr, nullptr, nullptr, nullptr) == KACERT_Ok &&
             behind == count,
         "past the end the count is answered");
}

void askEverything(CertDecodeCtx &ctx, size_t inputSize) {
    for (const auto &[first, last] : IdRanges)
        for (int32_t id = first; id <= last; ++id)
            ask(ctx, id);
    askDistributionPoints(ctx, inputSize);
    askNumbers(ctx);
    askPrivate(ctx);
}

// A name that was decoded can be written, unless it has text that is too long to convert, and read again.
void checkName(const NameRecord &head) {
    Chain encoded;
    const int32_t status = made(encoded, KI_EncodeIssuerSuject, &head);
    must(status == KACERT_Ok || status == KACERT_InvalidLengthErr, "a name can be written");
    Name again;
    must(!encoded || KI_DecodeIssuerSubject(encoded.get(), &again.head) == KACERT_Ok, "what was written can be read");
}

void checkPrefix(Bytes prefix) {
    const Area cut(prefix);
    const CertPtr ctx = create<CertDecodeCtx>();
    must(KACert_DecodeCert(ctx.get(), cut.data(), sizeOf(prefix)) == KACERT_LengthNotEqualErr, "a prefix is refused");
}

void checkWhole(CertDecodeCtx &ctx, Bytes input) {
    uint32_t total = 0;
    must(KAsn1_GetCertLength(input.data(), &total) == KACERT_Ok && total <= input.size(), "the element is all there");
    const Area encoded(total);
    uint32_t size = 0;
    must(KACert_EncodeCert(&ctx, encoded.data(), &size) == KACERT_Ok && size == total, "a certificate is handed out");
    must(equal(encoded.bytes(), input.first(total)), "as it was decoded");
    checkName(ctx.issuer);
    checkName(ctx.subject);
    checkPrefix(input.first(total - 1));
    checkPrefix(input.first(total / 2));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    // Without a length the caller vouches for the header.
    if (size == 0)
        return 0;
    const Area der(Bytes{data, size});
    const CertPtr ctx = create<CertDecodeCtx>();
    const int32_t status = KACert_DecodeCert(ctx.get(), der.data(), static_cast<uint32_t>(size));
    askEverything(*ctx, size);
    if (status == KACERT_Ok)
        checkWhole(*ctx, der.bytes());
    return 0;
}
