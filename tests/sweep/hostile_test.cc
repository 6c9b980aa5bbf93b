// Certificates that are cut off, changed in one octet, or wrong in a header: a status always, a fault never.
#include "samples.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace karil_test;

namespace {

bool isStatus(int32_t status) {
    return status == KACERT_Ok || (status >= KACERT_MemoryErr && status <= KACERT_InvalidSignatureAlgErr) ||
           status == KACERT_InvalidItemErr;
}

// Asks for everything. What was decoded before a failure is there; what was not is absent.
void askEverything(const CertPtr &ctx) {
    static Octets area(1 << 16);
    uint32_t length = 0;
    for (const int32_t id : queries()) {
        ASSERT_EQ(KACert_GetCertAttributeChar(ctx.get(), id, area.data(), &length), KACERT_Ok) << id;
        ASSERT_LE(length, area.size()) << id;
    }
    int32_t value = 0;
    for (const int32_t id : {CERT_VERSION, CERT_VALIDFROM, CERT_VALIDTO})
        ASSERT_EQ(KACert_GetCertAttributeInt(ctx.get(), id, &value), KACERT_Ok) << id;
    uint32_t index = 0;
    uint32_t flag = 0;
    for (uint32_t next = 1; index == next - 1; ++next) {
        index = next;
        ASSERT_EQ(KACert_GetCertAttributePrivate(ctx.get(), &index, area.data(), &length, &flag, area.data(), &length),
                  KACERT_Ok);
    }
}

// Decodes octets in a heap block of just their size, asks for everything and destroys the context.
int32_t tryDecode(const Octets &der) {
    const std::unique_ptr<uint8_t[]> block(new uint8_t[der.size()]);
    std::copy(der.begin(), der.end(), block.get());
    const CertPtr ctx = newCert();
    const int32_t status = KACert_DecodeCert(ctx.get(), block.get(), static_cast<uint32_t>(der.size()));
    EXPECT_TRUE(isStatus(status)) << status << " for " << toHex(der);
    askEverything(ctx);
    return status;
}

// One element in [from, to): where its content starts and ends, or 0 where it is none.
struct Span {
    size_t content;
    size_t end;
};
Span spanAt(const Octets &der, size_t from, size_t to) {
    if (from + 2 > to) return {};
    const uint8_t first = der[from + 1];
    const size_t more = first < 0x80 ? 0 : first & 0x7Fu;
    size_t size = first < 0x80 ? first : 0;
    if (more > 4 || from + 2 + more > to) return {};
    for (size_t i = 0; i < more; ++i) size = size << 8 | der[from + 2 + i];
    const size_t content = from + 2 + more;
    return size <= to - content ? Span{content, content + size} : Span{};
}

// Adds where tag and length octets stand, also those inside of OCTET STRINGs. False where [from, to) is no DER.
bool addHeaders(const Octets &der, size_t from, size_t to, std::vector<size_t> &places) {
    std::vector<size_t> found;
    while (from < to) {
        const Span span = spanAt(der, from, to);
        if (span.end == 0) return false;
        for (size_t at = from; at < span.content; ++at) found.push_back(at);
        if ((der[from] & 0x20) != 0 || der[from] == 0x04) addHeaders(der, span.content, span.end, found);
        from = span.end;
    }
    places.insert(places.end(), found.begin(), found.end());
    return true;
}

TEST(Hostile, NoStrictPrefixDecodes) {
    ASSERT_GT(systemCertificates().size(), 100u);
    size_t decoded = 0;
    for (const Octets &der : allCertificates()) {
        // Those that end past 2038 do not decode as a whole either.
        decoded += tryDecode(der) == KACERT_Ok ? 1 : 0;
        for (size_t size = 1; size < der.size(); ++size)
            ASSERT_NE(tryDecode(Octets(der.begin(), der.begin() + static_cast<ptrdiff_t>(size))), KACERT_Ok)
                << size << " octets of " << toHex(der);
    }
    EXPECT_GT(decoded, 50u);
}

// The outer lengths agree with what is left. A certificate may end behind its to-be-signed part or its algorithm, and
// that part behind the key.
TEST(Hostile, CutBehindAnAgreeingHeader) {
    for (const Octets &der : {shortCertificate(), fullCertificate()}) {
        const Span whole = spanAt(der, 0, der.size());
        const Span tbs = spanAt(der, whole.content, whole.end);
        const Octets rest(der.begin() + static_cast<ptrdiff_t>(tbs.end), der.end());
        const struct {
            const char *name;
            Span span;
            std::vector<size_t> accepted; // ends of which elements, 0 standing for none
        } rows[] = {{"certificate", whole, {0, 1, 2}}, {"to-be-signed part", tbs, {0, 7}}};
        for (const auto &row : rows) {
            size_t end = row.span.content;
            size_t elements = 0;
            for (size_t cut = row.span.content; cut < row.span.end; ++cut) {
                if (cut > row.span.content && cut == spanAt(der, end, row.span.end).end) {
                    end = cut;
                    ++elements;
                }
                const bool isAccepted =
                    cut == end && std::count(row.accepted.begin(), row.accepted.end(), elements) > 0;
                const Octets part(der.begin() + static_cast<ptrdiff_t>(row.span.content),
                                  der.begin() + static_cast<ptrdiff_t>(cut));
                const Octets made = row.span.content == whole.content ? seq({part}) : seq({seq({part}), rest});
                EXPECT_EQ(tryDecode(made) == KACERT_Ok, isAccepted) << row.name << " cut at " << cut;
            }
        }
    }
}

TEST(Hostile, EveryOctetChanged) {
    const Octets der = shortCertificate();
    ASSERT_FALSE(der.empty());
    for (size_t at = 0; at < der.size(); ++at)
        for (uint32_t change = 1; change < 256; ++change) {
            Octets changed = der;
            changed[at] = static_cast<uint8_t>(changed[at] ^ change);
            tryDecode(changed);
        }
}

TEST(Hostile, EveryHeaderChanged) {
    size_t decoded = 0;
    size_t refused = 0;
    for (const Octets &der : allCertificates()) {
        std::vector<size_t> places;
        ASSERT_TRUE(addHeaders(der, 0, der.size(), places));
        for (const size_t at : places) {
            Octets changed = der;
            for (const uint8_t value : hex("00 7F 80 81 84 FF")) {
                changed[at] = value;
                ++(tryDecode(changed) == KACERT_Ok ? decoded : refused);
            }
            // A length behind 80, which moves the content one octet past the element's end.
            if (at + 1 < der.size()) {
                changed[at] = 0x80;
                changed[at + 1] = der[at];
                tryDecode(changed);
            }
        }
    }
    // Most tags are not looked at; most lengths matter.
    EXPECT_GT(decoded, 0u);
    EXPECT_GT(refused, decoded);
}

} // namespace
