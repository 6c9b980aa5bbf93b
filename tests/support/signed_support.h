// What the tests of CRLs and requests share: contexts behind one set of names, hooks that tell the size first.
#pragma once

#include "karil/crl.h"
#include "karil/crypt.h"
#include "karil/csr.h"

#include "cert_support.h"

#include <gtest/gtest.h>

namespace karil_test {

template <class Ctx> struct Family;
template <> struct Family<CrlEncodeCtx> {
    static constexpr auto create = KACert_CreateCrlEncodeCtx;
    static constexpr auto destroy = KACert_DestroyCrlEncodeCtx;
    static constexpr auto set = KACert_SetCrlAttributeChar;
    static constexpr auto get = KACert_GetCrlAttributeChar;
    static constexpr auto hook = KACert_SetCrlSignFunc;
    static constexpr auto encode = KACert_EncodeCrl;
    static constexpr auto decode = KACert_DecodeCrl;
};
template <> struct Family<CsrEncodeCtx> {
    static constexpr auto create = KACert_CreateCsrEncodeCtx;
    static constexpr auto destroy = KACert_DestroyCsrEncodeCtx;
    static constexpr auto set = KACert_SetCsrAttributeChar;
    static constexpr auto get = KACert_GetCsrAttributeChar;
    static constexpr auto hook = KACert_SetCsrSignFunc;
    static constexpr auto encode = KACert_EncodeCsr;
    static constexpr auto decode = KACert_DecodeCsr;
};

template <class Ctx> struct DestroyCtx {
    void operator()(Ctx *ctx) const { Family<Ctx>::destroy(ctx); }
};
template <class Ctx> using CtxPtr = std::unique_ptr<Ctx, DestroyCtx<Ctx>>;
using CrlPtr = CtxPtr<CrlEncodeCtx>;
using CsrPtr = CtxPtr<CsrEncodeCtx>;

template <class Ctx> CtxPtr<Ctx> create() {
    Ctx *ctx = nullptr;
    return Family<Ctx>::create(&ctx) == KACERT_Ok ? CtxPtr<Ctx>(ctx) : nullptr;
}

template <class Ctx> int32_t set(const CtxPtr<Ctx> &ctx, int32_t id, const Octets &value) {
    return Family<Ctx>::set(ctx.get(), id, value.data(), static_cast<int32_t>(value.size()));
}
template <class Ctx> int32_t set(const CtxPtr<Ctx> &ctx, int32_t id, std::string_view characters) {
    return set(ctx, id, text(characters));
}

// What the context answers: the octets in hex, "status N", or "untouched" where the length stays as it was.
template <class Ctx> std::string get(const CtxPtr<Ctx> &ctx, int32_t id) {
    constexpr uint32_t Untouched = 12345;
    uint32_t length = Untouched;
    const int32_t status = Family<Ctx>::get(ctx.get(), id, nullptr, &length);
    if (status != KACERT_Ok) return "status " + std::to_string(status);
    if (length == Untouched) return "untouched";
    Octets octets(length);
    Family<Ctx>::get(ctx.get(), id, octets.data(), &length);
    return toHex(octets);
}

template <class Ctx> int32_t decode(const CtxPtr<Ctx> &ctx, const Octets &der) {
    return Family<Ctx>::decode(ctx.get(), der.data(), static_cast<uint32_t>(der.size()));
}

// The object, or nothing where the status is not 0. It asks for the length first.
template <class Ctx> Octets encode(const CtxPtr<Ctx> &ctx, int32_t *status = nullptr) {
    uint32_t length = 0;
    int32_t result = Family<Ctx>::encode(ctx.get(), nullptr, &length);
    Octets der(result == KACERT_Ok ? length : 0);
    if (result == KACERT_Ok) result = Family<Ctx>::encode(ctx.get(), der.data(), &length);
    if (status != nullptr) *status = result;
    return der;
}

// A hook that notes its calls and answers as it is told. Its parameter's octets are a pointer to the plan.
struct HookPlan {
    uint32_t size = 3;
    uint32_t written = 3; // the length after the second call
    int32_t status[2] = {0, 0};
    int calls = 0;
    Octets input = {};
};
inline int32_t plannedHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                           void *parameter) {
    HookPlan &plan = **static_cast<HookPlan **>(parameter);
    plan.input.assign(input, input + inputLength);
    const int call = plan.calls++;
    if ((output == nullptr) != (call == 0)) return 1;
    if (call == 1 && *outputLength != plan.size) return 2;
    *outputLength = call == 0 ? plan.size : plan.written;
    for (uint32_t i = 0; call == 1 && i < plan.written && i < plan.size; ++i) output[i] = 0xAB;
    return plan.status[call];
}
template <class Ctx> void setPlan(const CtxPtr<Ctx> &ctx, HookPlan &plan) {
    HookPlan *parameter = &plan;
    Family<Ctx>::hook(ctx.get(), plannedHook, &parameter, sizeof parameter);
}

struct HookRow {
    const char *name;
    HookPlan plan = {};
    int32_t want;
    int calls;
};
// What both families answer; `empty`: to a signature of no octets.
template <class Fill> void checkHook(Fill fill, int32_t empty) {
    const HookRow rows[] = {
        {"largest", {10239, 10239}, KACERT_Ok, 2},
        {"too large", {10240, 0}, KACERT_InvalidSignatureLenErr, 1},
        {"shorter than told", {8, 5}, KACERT_Ok, 2},
        {"longer than told", {3, 4}, KACERT_InvalidLengthErr, 2},
        {"no octets", {0, 0}, empty, 2},
        {"fails first", {3, 3, {7, 0}}, 7, 1},
        {"fails then", {3, 3, {0, -9}}, -9, 2},
    };
    for (HookRow row : rows) {
        const auto ctx = fill();
        setPlan(ctx, row.plan);
        int32_t status = 0;
        const Octets der = encode(ctx, &status);
        EXPECT_EQ(status, row.want) << row.name;
        EXPECT_EQ(row.plan.calls, row.calls) << row.name;
        if (status != KACERT_Ok) continue;
        const Octets bits = tlv(0x03, cat({hex("00"), Octets(row.plan.written, 0xAB)}));
        EXPECT_EQ(der, seq({row.plan.input, algorithm(Sha1WithRsa), bits})) << row.name;
    }
    const auto ctx = fill();
    int32_t status = 0;
    encode(ctx, &status);
    EXPECT_EQ(status, KACERT_InvalidParamErr) << "no hook";
}

// RSA with SHA-1 by a key record.
inline int32_t signBySha1(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                          void *parameter) {
    *outputLength = 256;
    return output == nullptr ? 0
                             : KA_PKCS7_SignedData(KA_DIGEST_SHA1, input, inputLength, output, outputLength,
                                                   static_cast<const RsaPrivateKeyRecord *>(parameter));
}

} // namespace karil_test
