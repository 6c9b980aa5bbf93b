// Objects that are cut off, changed in one octet, or wrong in a header: a status always, a fault never. And under
// failing allocations: a status, and nothing that stays.
#include "crypto.h"
#include "ocsp_rows.h"

using namespace karil_test;

namespace {

template <class Ctx> int32_t tryDecode(Bytes der) {
    const int32_t status = std::stoi(answersOf<Ctx>(der)[0]);
    EXPECT_TRUE(status == KACERT_Ok || (status >= KACERT_MemoryErr && status <= KACERT_InvalidItemErr)) << status;
    return status;
}

// One element in [from, to): where its content starts and ends, or 0 if it is none.
struct Span {
    size_t content;
    size_t end;
};
Span spanAt(Bytes der, size_t from, size_t to) {
    if (from + 2 > to)
        return {};
    const uint8_t first = der[from + 1];
    const size_t more = first < 0x80 ? 0 : first & 0x7Fu;
    size_t size = first < 0x80 ? first : 0;
    if (more > 4 || from + 2 + more > to)
        return {};
    for (size_t i = 0; i < more; ++i)
        size = size << 8 | der[from + 2 + i];
    const size_t content = from + 2 + more;
    return size <= to - content ? Span{content, content + size} : Span{};
}

// Where tag and length octets stand, also those inside of OCTET STRINGs; nothing if [from, to) is no DER.
std::vector<size_t> headersOf(Bytes der, size_t from, size_t to) {
    std::vector<size_t> found;
    while (from < to) {
        const Span span = spanAt(der, from, to);
        if (span.end == 0)
            return {};
        for (size_t at = from; at < span.content; ++at)
            found.push_back(at);
        std::vector<size_t> inner;
        if ((der[from] & 0x20) != 0 || der[from] == 0x04)
            inner = headersOf(der, span.content, span.end);
        found.insert(found.end(), inner.begin(), inner.end());
        from = span.end;
    }
    return found;
}

// No strict prefix decodes. Every header octet is changed, and a length moved to where 80 puts it.
template <class Ctx> size_t cutAndChange(const Octets &der) {
    for (size_t size = 1; size < der.size(); ++size)
        EXPECT_NE(tryDecode<Ctx>(Bytes(der).first(size)), KACERT_Ok) << size;
    size_t decoded = 0;
    size_t refused = 0;
    for (const size_t at : headersOf(der, 0, der.size())) {
        Octets changed = der;
        for (const uint8_t value : hex("00 7F 80 81 84 FF")) {
            changed[at] = value;
            ++(tryDecode<Ctx>(changed) == KACERT_Ok ? decoded : refused);
        }
        if (at + 1 < der.size()) {
            changed[at] = 0x80;
            changed[at + 1] = der[at];
            tryDecode<Ctx>(changed);
        }
    }
    EXPECT_GT(refused, decoded); // most tags are not looked at; most lengths matter
    return decoded;
}
template <class Ctx> void changeEveryOctet(const Octets &der) {
    ASSERT_EQ(tryDecode<Ctx>(der), KACERT_Ok);
    size_t decoded = cutAndChange<Ctx>(der);
    for (size_t at = 0; at < der.size(); ++at)
        for (uint32_t change = 1; change < 256; ++change) {
            Octets changed = der;
            changed[at] = static_cast<uint8_t>(changed[at] ^ change);
            decoded += tryDecode<Ctx>(changed) == KACERT_Ok ? 1 : 0;
        }
    EXPECT_GT(decoded, 0u);
}

TEST(Hostile, EveryOctetChanged) {
    changeEveryOctet<CertDecodeCtx>(CertParts().whole());
    changeEveryOctet<CrlDecodeCtx>(fullCrl());
    changeEveryOctet<CsrDecodeCtx>(fullRequest());
}

TEST(Hostile, EveryHeaderOfOcspMessages) {
    cutAndChange<RequestListCtx>(encodedId());
    cutAndChange<ResponseListCtx>(fullSingleResponse());
    cutAndChange<RequestCtx>(fullOcspRequest());
    cutAndChange<ResponseCtx>(fullOcspResponse());
}

TEST(Hostile, CertificatesOfTheSystem) {
    std::vector<Octets> all = systemCertificates();
    ASSERT_GT(all.size(), 100u);
    all.push_back(fullCertificate());
    size_t decoded = 0; // those that end past 2038 do not
    for (const Octets &der : all) {
        decoded += tryDecode<CertDecodeCtx>(der) == KACERT_Ok ? 1 : 0;
        cutAndChange<CertDecodeCtx>(der);
    }
    EXPECT_GT(decoded, 50u);
}

// The outer lengths agree with what is left. A certificate may end after its to-be-signed part or its algorithm, and
// that part after the key.
TEST(Hostile, CutAfterAnAgreeingHeader) {
    for (const Octets &der : {CertParts().whole(), fullCertificate()}) {
        const Span whole = spanAt(der, 0, der.size());
        const Span tbs = spanAt(der, whole.content, whole.end);
        const Octets rest = copyOf(Bytes(der).subspan(tbs.end));
        for (const Span &span : {whole, tbs}) {
            const bool isWhole = span.content == whole.content;
            // The ends of which elements are good, 0 standing for none.
            const std::vector<size_t> accepted = isWhole ? std::vector<size_t>{0, 1, 2} : std::vector<size_t>{0, 7};
            size_t end = span.content;
            size_t elements = 0;
            for (size_t cut = span.content; cut < span.end; ++cut) {
                elements += cut > span.content && cut == spanAt(der, end, span.end).end ? 1 : 0;
                end = cut > span.content && cut == spanAt(der, end, span.end).end ? cut : end;
                const bool isAccepted =
                    cut == end && std::find(accepted.begin(), accepted.end(), elements) != accepted.end();
                const Octets part = copyOf(Bytes(der).subspan(span.content, cut - span.content));
                const Octets made = isWhole ? seq({part}) : seq({seq({part}), rest});
                EXPECT_EQ(tryDecode<CertDecodeCtx>(made) == KACERT_Ok, isAccepted) << isWhole << " cut at " << cut;
            }
        }
    }
}

// `mayBeLost`: what decoding and asking may lose without a word: usages, alternative names, names as texts.
template <class Ctx>
void buildAndAsk(Octets (*build)(), const std::vector<int32_t> &mayBeLost, const std::vector<int32_t> &statuses) {
    const Zone utc("UTC");
    const Octets der = build();
    EXPECT_TRUE(sweep([&] { EXPECT_EQ(toHex(build()), toHex(der)); }, {statuses}));
    const std::vector<std::string> want = answersOf<Ctx>(der);
    const auto ask = [&] {
        const std::vector<std::string> answers = answersOf<Ctx>(der);
        for (size_t i = 0; i < answers.size(); ++i) {
            const int32_t id = i > 0 && !mayBeLost.empty() ? queries<Ctx>()[i - 1] : 0;
            const bool mayDiffer = isHindered() && std::count(mayBeLost.begin(), mayBeLost.end(), id) > 0;
            EXPECT_TRUE(mayDiffer || answers[i] == want[i]) << id << ' ' << answers[i];
        }
    };
    EXPECT_TRUE(sweep(ask, {statuses, false}));
}

TEST(FailingAllocations, EverythingBuiltAndAsked) {
    buildAndAsk<CertDecodeCtx>(fullCertificate, {8, 32, 106, 107, 114, 115, 129, 504, 505, 509, 510},
                               {KACERT_MemoryErr, -1});
    buildAndAsk<CrlDecodeCtx>(fullCrl, {CRL_ISSUER_DN}, {KACERT_MemoryErr, KACERT_CrlNotEndErr});
    buildAndAsk<CsrDecodeCtx>(fullRequest, {}, {KACERT_MemoryErr});
    buildAndAsk<RequestCtx>(fullOcspRequest, {}, {KACERT_MemoryErr, KACERT_InvalidParamErr, KACERT_InvalidItemErr});
    buildAndAsk<ResponseListCtx>(fullSingleResponse, {},
                                 {KACERT_MemoryErr, KACERT_InvalidParamErr, KACERT_InvalidItemErr});
    buildAndAsk<ResponseCtx>(fullOcspResponse, {}, {KACERT_MemoryErr, KACERT_InvalidParamErr, KACERT_InvalidItemErr});
}

} // namespace
