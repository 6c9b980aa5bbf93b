// What every family whose hook is asked for the size first has in common.
#pragma once

#include "testkit.h"

namespace karil_test {

// A hook that notes its calls and answers as it is told. Its parameter's octets are a pointer to the plan.
struct HookPlan {
    uint32_t size = 3;
    uint32_t written = 3; // the length after the second call
    int32_t status[2] = {0, 0};
    int calls = 0;
    Octets input = {};
    uint32_t *length = nullptr; // the same variable in both calls
};
inline int32_t plannedHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                           void *parameter) {
    HookPlan &plan = **static_cast<HookPlan **>(parameter);
    plan.input.assign(input, input + inputLength);
    const int call = output == nullptr ? 0 : plan.calls;
    if (std::exchange(plan.length, outputLength) != outputLength && call == 1)
        return 1;
    plan.calls = call + 1; // a call that is made again starts anew
    if (call == 1 && *outputLength != plan.size)
        return 2;
    *outputLength = call == 0 ? plan.size : plan.written;
    std::fill_n(output, call == 0 ? 0 : std::min(plan.written, plan.size), uint8_t{0xAB});
    return plan.status[call];
}
template <class Ctx> void setPlan(Ctx &ctx, HookPlan &plan) {
    plan.calls = 0;
    HookPlan *parameter = &plan;
    TRIED(Family<Ctx>::hook(&ctx, plannedHook, &parameter, sizeof parameter));
}

// `empty`: the status of a signature of no octets.
template <class Ctx> void checkHook(int32_t empty) {
    const struct {
        const char *name;
        HookPlan plan;
        int32_t want;
        int calls;
    } rows[] = {
        {"largest", {10239, 10239}, KACERT_Ok, 2},
        {"too large", {10240, 0}, KACERT_InvalidSignatureLenErr, 1},
        {"shorter than told", {8, 5}, KACERT_Ok, 2},
        {"longer than told", {3, 4}, KACERT_InvalidLengthErr, 2},
        {"no octets", {0, 0}, empty, 2},
        {"fails first", {3, 3, {7, 0}}, 7, 1},
        {"fails then", {3, 3, {0, -9}}, -9, 2},
    };
    for (const auto &row : rows) {
        const Owner<Ctx> ctx = filled<Ctx>();
        HookPlan plan = row.plan;
        setPlan(*ctx, plan);
        int32_t status = 0;
        const Octets der = encode(*ctx, &status);
        EXPECT_EQ(status, row.want) << row.name;
        EXPECT_EQ(plan.calls, row.calls) << row.name;
        const Octets signature = bits(Octets(plan.written, 0xAB));
        EXPECT_EQ(der, status == KACERT_Ok ? seq({plan.input, algorithm(Sha1WithRsa), signature}) : Octets());
    }
    int32_t status = 0;
    encode(*filled<Ctx>(nullptr), &status);
    EXPECT_EQ(status, KACERT_InvalidParamErr) << "no hook";
}

} // namespace karil_test
