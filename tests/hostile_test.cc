// Objects that are cut off or changed in one octet: a status always, a fault never. And under failing allocations: a
// status, and nothing that stays.
#include "ocsp_rows.h"

using namespace karil_test;

namespace {

template <class Ctx> int32_t tryDecode(Bytes der) {
    const int32_t status = std::stoi(answersOf<Ctx>(der)[0]);
    EXPECT_TRUE(status == KACERT_Ok || (status >= KACERT_MemoryErr && status <= KACERT_InvalidItemErr)) << status;
    return status;
}

// The longest OCSP object of the rows that is decoded.
template <class Ctx> void changeLongest(const char *section, std::string_view type) {
    Octets der;
    for (const Row &row : rowsOf("OcspMessage", section))
        if (row("type") == type && row.number("status") == KACERT_Ok && row.octets("der").size() > der.size())
            der = row.octets("der");
    cutAndChange(der, tryDecode<Ctx>);
}

TEST(Hostile, EveryOctetChanged) {
    cutAndChange(CertParts().whole(), tryDecode<CertDecodeCtx>);
    cutAndChange(fullCertificate(), tryDecode<CertDecodeCtx>);
    cutAndChange(fullCrl(), tryDecode<CrlDecodeCtx>);
    cutAndChange(fullRequest(), tryDecode<CsrDecodeCtx>);
    changeLongest<RequestListCtx>("Decode", "question");
    changeLongest<ResponseListCtx>("Decode", "answer");
    changeLongest<RequestCtx>("DecodeRequest", "request");
    changeLongest<ResponseCtx>("Decode", "response");
}

// `mayBeLost`: what decoding and asking may lose without a word: usages, alternative names, names as texts.
template <class Ctx>
void buildAndAsk(Octets (*build)(), const std::vector<int32_t> &mayBeLost, const std::vector<int32_t> &statuses) {
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
}

} // namespace
