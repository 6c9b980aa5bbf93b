// What the rows of OCSP tests have in common.
#pragma once

#include "samples.h"

#include "ocsp.h"

namespace karil_test {

template <class Ctx> void setHash(Ctx &ctx, KAHookFunc hook) {
    EXPECT_EQ(TRIED(Family<Ctx>::hash(&ctx, hook, bytesOf("parameter").data(), 9)), KACERT_Ok);
}
template <class Ctx> void setSigning(Ctx &ctx, KAHookFunc hook) {
    EXPECT_EQ(TRIED(Family<Ctx>::hook(&ctx, hook, bytesOf("parameter").data(), 9)), KACERT_Ok);
}
// "none", or what is stored: the state, its time, its octets.
inline std::string stateOf(ResponseListCtx &ctx) {
    int32_t status = 0;
    int32_t time = 0;
    uint32_t lengths[2] = {777, 777};
    uint8_t octets[2][64];
    EXPECT_EQ(KA_OCSP_GetResponseListCertSatus(&ctx, &status, &time, octets[0], &lengths[0], octets[1], &lengths[1]),
              KACERT_Ok);
    std::string all = status == 1 ? "good" : status == 2 ? "revoked" : status == 3 ? "unknown" : "none";
    all += time != 0 ? ' ' + std::to_string(time) : "";
    for (int i = 0; i < 2; ++i)
        all += lengths[i] == 777 || lengths[i] == 0 ? "" : ' ' + toHex(octets[i], lengths[i]);
    return all;
}

// Asks as the column "answers" says: "15=octets", "int 33=3", "single 1=octets", or an answer in words.
template <class Ctx> std::string askFor(Ctx &ctx, const std::string &what) {
    if constexpr (std::is_same_v<Ctx, ResponseListCtx>)
        if (what == "state")
            return stateOf(ctx);
    if (what.rfind("int ", 0) == 0)
        return askNumber(ctx, std::stoi(what.substr(4)));
    if constexpr (requires { Family<Ctx>::single; })
        if (what.rfind("single ", 0) == 0)
            return askSingle(ctx, static_cast<uint32_t>(std::stoul(what.substr(7))));
    return ask(ctx, std::stoi(what));
}
template <class Ctx> void checkAnswers(Ctx &ctx, const Row &row) {
    for (const std::string &answer : row.list("answers")) {
        const size_t end = answer.find('=');
        const std::string what = answer.substr(0, end);
        std::string want = answer.substr(end + 1);
        const bool isInWords =
            what.rfind("int ", 0) == 0 || what == "state" || (!want.empty() && want[0] >= 'a' && want[0] <= 'z');
        EXPECT_EQ(askFor(ctx, what), isInWords ? want : toHex(row.parse(want))) << answer;
    }
}

// All answers of an object that was decoded.
template <class Ctx>
concept OcspObject = std::is_same_v<Ctx, RequestListCtx> || std::is_same_v<Ctx, RequestCtx> ||
    std::is_same_v<Ctx, ResponseListCtx> || std::is_same_v<Ctx, ResponseCtx>;
template <OcspObject Ctx> std::vector<std::string> answersOf(Bytes der) {
    const Zone utc("UTC");
    const Exact exact(der);
    const Owner<Ctx> ctx = create<Ctx>();
    std::vector<std::string> all = {std::to_string(decode(*ctx, exact.bytes()))};
    for (int32_t id = 0; id < 64; ++id) {
        all.push_back(ask(*ctx, id));
        all.push_back(askNumber(*ctx, id));
    }
    if constexpr (std::is_same_v<Ctx, ResponseListCtx>)
        all.push_back(stateOf(*ctx));
    if constexpr (requires { Family<Ctx>::single; })
        for (uint32_t index = 0; index < 4; ++index)
            all.push_back(askSingle(*ctx, index));
    return all;
}

} // namespace karil_test
