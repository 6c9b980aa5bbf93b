// What the rows of OCSP tests have in common.
#pragma once

#include "rows.h"

#include "ocsp.h"

namespace karil_test {

template <class Ctx> void setHash(Ctx &ctx, KAHookFunc hook) {
    EXPECT_EQ(TRIED(Family<Ctx>::hash(&ctx, hook, bytesOf("parameter").data(), 9)), KACERT_Ok);
}
template <class Ctx> void setSigning(Ctx &ctx, KAHookFunc hook) {
    EXPECT_EQ(TRIED(Family<Ctx>::hook(&ctx, hook, bytesOf("parameter").data(), 9)), KACERT_Ok);
}
template <class Ctx> void addSingles(Ctx &ctx, const Row &row) {
    for (const std::string &single : row.list("singles")) {
        const Octets octets = row.parse(single);
        EXPECT_EQ(TRIED(Family<Ctx>::add(&ctx, octets.data(), lengthOf(octets))), KACERT_Ok);
    }
}

// What is written is the column "wire", octet by octet, and DER to a printer that knows nothing of the library.
template <class Ctx> void checkWritten(Ctx &ctx, const Row &row) {
    const std::string octets = written(ctx);
    EXPECT_EQ(octets, row.hex("wire"));
    if (octets[0] == 's')
        return;
    EXPECT_EQ(printed(hex(octets)), printed(row.octets("wire")));
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

// Decodes the column "der", and asks: "15=octets", "int 33=3", "single 1=octets", or an answer in words.
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
template <class Ctx> void checkDecoding(Ctx &ctx, const Row &row) {
    const Exact der(row.octets("der"));
    EXPECT_EQ(decode(ctx, der.bytes()), row.number("status"));
    for (const std::string &answer : row.list("answers")) {
        const size_t end = answer.find('=');
        const std::string what = answer.substr(0, end);
        std::string want = answer.substr(end + 1);
        const bool isInWords =
            what.rfind("int ", 0) == 0 || what == "state" || (!want.empty() && want[0] >= 'a' && want[0] <= 'z');
        EXPECT_EQ(askFor(ctx, what), isInWords ? want : toHex(row.parse(want))) << answer;
    }
}

} // namespace karil_test
